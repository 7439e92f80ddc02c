#include "reciprocal/rotationsense.h"

#include "reciprocal/tiltrefinement.h"

namespace tessera {

// A right sense gains less than 10 even with the axis some degrees off, a wrong one 10 to 70.
static const double g_dfLeastGain = 10;

static bool isTurnedRound(const QList<Vec3D>& listCell, const QList<Vec3D>& listOther)
{
    if (listCell.size() != 3 || listOther.size() != 3)
        return false;
    for (int i = 0; i < 3; ++i)
        if (!(dot(listCell[i], listOther[i]) < 0))
            return false;
    return true;
}

RotationSense judgeRotationSense(const QList<Peak3D>& listPeak, const DataSet& dataSet)
{
    CRunReport silent;
    TiltRefinementOptions options;
    options.dfWavelength = dataSet.m_dfWavelength;
    const TiltRefinement fit = refineBasisVectors(listPeak, dataSet, silent, options);
    RotationSense sense{fit.dfSquaresBefore, fit.dfSquaresAfter};
    sense.bOpposite = fit.bDone && fit.nInfo > 0 && isTurnedRound(fit.listCellBefore, fit.listCell) &&
                      fit.dfSquaresBefore > g_dfLeastGain * fit.dfSquaresAfter;
    return sense;
}

}  // namespace tessera
