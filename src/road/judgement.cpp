#include "road/judgement.h"

#include "frames/shiftjumps.h"
#include "reciprocal/rotationsense.h"
#include "road/stagejudgement.h"

namespace tessera {

namespace {

const double g_dfShiftJump = 10;  ///< pixels

}  // namespace

QList<int> judgeShifts(const QList<QPointF>& listShift, CRunReport& report)
{
    QList<int> listNumber;
    for (const int nFrame : findShiftJumps(listShift, g_dfShiftJump)) {
        report.addMessage(QStringLiteral("Warning: the shift of frame #%1, (%2, %3), stands apart from its "
                                         "neighbours.")
                              .arg(nFrame + 1)
                              .arg(listShift[nFrame].x(), 0, 'f', 2)
                              .arg(listShift[nFrame].y(), 0, 'f', 2),
                          Severity::Warning);
        listNumber.append(nFrame + 1);
    }
    return listNumber;
}

std::optional<CentreOffset> judgeCentre(const IndexingResult& result, const DataSet& dataSet,
                                        CRunReport& report)
{
    std::optional<CentreOffset> offset;
    QString strWhich = QStringLiteral("indexed");
    if (2 * result.listIndexed.size() >= result.listSelection.size()) {
        offset = fitCentreOffset(result.listIndexed, dataSet.m_dfPixelSize, dataSet.m_dfRotationAxis);
    }
    if (!offset) {
        strWhich = QStringLiteral("selected, not only the indexed,");
        offset = fitCentreOffset(result.listSelection, dataSet.m_dfPixelSize, dataSet.m_dfRotationAxis);
    }
    if (!offset) {
        report.addMessage(QStringLiteral("The reflections do not determine the direct beam."));
        return {};
    }
    report.addMessage(QStringLiteral("The %1 reflections fit best with the direct beam moved by "
                                     "(%2, %3) pixels, err=(%4, %5).")
                          .arg(strWhich)
                          .arg(offset->dfX, 0, 'f', 2)
                          .arg(offset->dfY, 0, 'f', 2)
                          .arg(offset->dfErrorX, 0, 'f', 2)
                          .arg(offset->dfErrorY, 0, 'f', 2));
    if (isBeamWrong(*offset)) {
        report.addMessage(QStringLiteral("Warning: the direct beam may be wrong by more than one pixel."),
                          Severity::Warning);
    }
    return offset;
}

bool isBeamWrong(const CentreOffset& offset)
{
    return offset.length() > 1 && offset.length() > 3 * offset.lengthError();
}

bool judgeRotation(const QList<Peak3D>& listIndexed, const DataSet& dataSet, CRunReport& report)
{
    const std::optional<RotationSense> sense = judgeRotationSense(listIndexed, dataSet);
    const bool bOpposite = sense && sense->bOpposite;
    if (bOpposite) {
        report.addMessage(
            QStringLiteral(
                "Warning: the rotation seems to go the other way, and the indices to be those of the mirror "
                "image: turned round they fit the tilts of the reflections with a sum of squares of %1 "
                "degrees² instead of %2. Add 180 to the rotation axis and see whether this line goes.")
                .arg(sense->dfSquaresAfter, 0, 'f', 1)
                .arg(sense->dfSquaresBefore, 0, 'f', 1),
            Severity::Warning);
    }
    return bOpposite;
}

double indexedShareOf(const IndexingResult& result)
{
    return result.listSelection.isEmpty() ? 0
                                          : double(result.listIndexed.size()) / result.listSelection.size();
}

void judgeIndexedShare(const IndexingResult& result, CRunReport& report)
{
    const double dfShare = indexedShareOf(result);
    if (dfShare < g_dfShareExpected) {
        report.addMessage(QStringLiteral("Warning: only %1 of %2 reflections (%3%) were indexed; axis, beam, "
                                         "pixel size or cell may be wrong.")
                              .arg(result.listIndexed.size())
                              .arg(result.listSelection.size())
                              .arg(100 * dfShare, 0, 'f', 1),
                          Severity::Warning);
    }
}

bool pairsDisagree(const DifferenceVectorRefinement& found)
{
    return 9 * found.nGroupsRejected > found.listDifference.size();
}

void judgePairs(const DifferenceVectorRefinement& found, const QString& strPairs, CRunReport& report)
{
    if (pairsDisagree(found)) {
        report.addMessage(
            QStringLiteral("Warning: %1 of %2 groups of pairs disagree; the %3 are not to be trusted. Try "
                           "--constant-background or a greater --refine-intensity-low.")
                .arg(found.nGroupsRejected)
                .arg(found.nGroupsRejected + found.listDifference.size())
                .arg(strPairs),
            Severity::Warning);
    }
}

}  // namespace tessera
