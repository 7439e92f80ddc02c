#include "reciprocal/rotationsense.h"

#include "reciprocal/tiltrefinement.h"

namespace tessera {

// With the right sense the gain is below 10, even with the axis some degrees off; with the wrong one it is 10
// to 70.
const double g_dfLeastGain = 10;

namespace {

bool isTurnedRound(const ReciprocalBasis& basis, const ReciprocalBasis& other)
{
    return dot(basis.a, other.a) < 0 && dot(basis.b, other.b) < 0 && dot(basis.c, other.c) < 0;
}

}  // namespace

std::optional<RotationSense> judgeRotationSense(const QList<Peak3D>& listPeak, const DataSet& dataSet)
{
    CRunReport silent;
    TiltRefinementOptions options;
    options.dfWavelength = dataSet.m_dfWavelength;
    const std::optional<TiltRefinement> fit = refineBasisVectors(listPeak, dataSet, silent, options);
    if (!fit || fit->nInfo <= 0) {
        return std::nullopt;
    }
    return RotationSense{fit->dfSquaresBefore, fit->dfSquaresAfter,
                         isTurnedRound(fit->basisBefore, fit->basis) &&
                             fit->dfSquaresBefore > g_dfLeastGain * fit->dfSquaresAfter};
}

}  // namespace tessera
