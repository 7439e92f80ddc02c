#include "workstate/workdifferences.h"

#include "crystal/cellarithmetic.h"
#include "dataset/parametertable.h"
#include "workstate/samework.h"

#include <QLocale>
#include <QStringList>

#include <cmath>
#include <type_traits>

namespace tessera {

namespace {

QString text(const char* psz)
{
    return QString::fromUtf8(psz);
}

QString counted(const char* pszName, int nCount)
{
    return QStringLiteral("%1: %L2").arg(text(pszName)).arg(nCount);
}

int countOf(const QList<QList<Peak3D>>& list)
{
    int nCount = 0;
    for (const QList<Peak3D>& listPeak : list) {
        nCount += listPeak.size();
    }
    return nCount;
}

/// A number with as many decimals as its box shows, but without trailing zeros, and with the unit of the box.
QString numberText(double dfValue, const NumberBox& box)
{
    QString str = QString::number(dfValue, 'f', box.nDecimals);
    int nDecimals = box.nDecimals;
    for (; nDecimals > 0 && str.endsWith(QLatin1Char('0')); --nDecimals) {
        str.chop(1);
    }
    return QLocale().toString(dfValue, 'f', nDecimals) + QString::fromUtf8(box.pszSuffix);
}

/// Reads the numbers of the pages from a state, by the rows of parameterTable().
class CNumbers {
public:
    explicit CNumbers(const WorkState& state) : m_state(state) { m_dataSet.takeSeries(state.series); }
    double value(const Parameter& row)
    {
        const auto record = [](const auto& rec) {
            using Record = std::remove_const_t<std::remove_reference_t<decltype(rec)>>;
            return const_cast<Record*>(&rec);  // the rows are also used for writing; value() only reads
        };
        return row.value({&m_dataSet, record(m_state.hunting), record(m_state.mapping),
                          record(m_state.merging), record(m_state.cellHunting), record(m_state.indexing),
                          record(m_state.extraction), record(m_state.refinement), &m_dataSet.m_distortion});
    }

private:
    const WorkState& m_state;
    DataSet m_dataSet;
};

struct NumberChange {
    int nRow = -1;    ///< row of parameterTable()
    QString strText;  ///< "NAME BEFORE to AFTER"
};

QList<NumberChange> numberChanges(const WorkState& before, const WorkState& after)
{
    QList<NumberChange> list;
    CNumbers numbersBefore(before);
    CNumbers numbersAfter(after);
    for (int nRow = 0; nRow < int(parameterTable().size()); ++nRow) {
        const Parameter& row = parameterTable()[nRow];
        const double dfBefore = numbersBefore.value(row);
        const double dfAfter = numbersAfter.value(row);
        if (!areSame(dfBefore, dfAfter)) {
            NumberBox box = row.box;
            // The page shows the axis with as many decimals as it was given.
            if (row.member == ParameterMember(&DataSet::m_dfRotationAxis)) {
                box.nDecimals = std::max(before.series.m_nAxisDecimals, after.series.m_nAxisDecimals);
            }
            list.append(
                {nRow, QStringLiteral("%1 %2 to %3")
                           .arg(nameOfNumber(nRow), numberText(dfBefore, box), numberText(dfAfter, box))});
        }
    }
    return list;
}

QString switched(const char* pszName, bool bBefore, bool bAfter)
{
    return bBefore == bAfter ? QString()
                             : text(pszName) + (bAfter ? text(" switched on") : text(" switched off"));
}

/// The check boxes and lists of the pages that differ.
QStringList choiceChanges(const WorkState& before, const WorkState& after)
{
    QStringList list = {
        switched("Automatic radii", before.hunting.m_bAutoRadii, after.hunting.m_bAutoRadii),
        switched("Stretching", before.mapping.m_bApplyStretching, after.mapping.m_bApplyStretching),
        switched("2D integration", before.merging.m_bIntegrate2D, after.merging.m_bIntegrate2D),
        switched("3D integration", before.merging.m_bIntegrateThroughFrames,
                 after.merging.m_bIntegrateThroughFrames),
        switched("Automatic range of edges", before.cellHunting.m_bAutoRange, after.cellHunting.m_bAutoRange),
        before.cellHunting.m_method == after.cellHunting.m_method ? QString()
                                                                  : text("Method of the cell search"),
        switched("Output of the indexing", before.indexing.m_bOutputIndexing,
                 after.indexing.m_bOutputIndexing),
        switched("Output of statistics", before.indexing.m_bOutputStatistics,
                 after.indexing.m_bOutputStatistics),
        switched("Output of the refined cell", before.indexing.m_bOutputRefinedCell,
                 after.indexing.m_bOutputRefinedCell),
        switched("Refinement of positions", before.refinement.m_bRefine2D, after.refinement.m_bRefine2D),
        switched("Output of the peak list", before.refinement.m_bOutputPeakList,
                 after.refinement.m_bOutputPeakList),
        switched("Constant background", before.bConstantBackground, after.bConstantBackground),
        before.series.m_rotation == after.series.m_rotation ? QString() : text("Kind of the rotation"),
    };
    list.removeAll(QString());
    return list;
}

/// How the peaks of the frames differ. Mapped: only in what later steps find, such as points and indices.
enum class PeakChange { None, Mapped, Replaced };

PeakChange peakChange(const QList<QList<Peak3D>>& listBefore, const QList<QList<Peak3D>>& listAfter)
{
    if (listBefore.isSharedWith(listAfter)) {
        return PeakChange::None;
    }
    if (listBefore.size() != listAfter.size()) {
        return PeakChange::Replaced;
    }
    PeakChange change = PeakChange::None;
    for (int nFrame = 0; nFrame < listBefore.size(); ++nFrame) {
        const QList<Peak3D>& frameBefore = listBefore[nFrame];
        const QList<Peak3D>& frameAfter = listAfter[nFrame];
        if (frameBefore.isSharedWith(frameAfter)) {
            continue;
        }
        if (frameBefore.size() != frameAfter.size()) {
            return PeakChange::Replaced;
        }
        for (int n = 0; n < frameBefore.size(); ++n) {
            if (!areSameOnFrame(frameBefore[n], frameAfter[n])) {
                return PeakChange::Replaced;
            }
            if (change == PeakChange::None && !areSame(frameBefore[n], frameAfter[n])) {
                change = PeakChange::Mapped;
            }
        }
    }
    return change;
}

/// The cell in words: a, b, c in Å and the angles. Of a*, b*, c* in Å⁻¹; other lists are no cell.
QString cellName(const QList<Vec3D>& listCell)
{
    const std::optional<CellParameters> cell = cellParametersFromList(listCell);
    if (!cell) {
        return text("No cell");
    }
    QStringList listNumber;
    for (const double dfNumber : cell->numbers()) {
        listNumber.append(QLocale().toString(dfNumber, 'f', listNumber.size() < 3 ? 2 : 1));
    }
    return QStringLiteral("Cell %1 Å, %2°")
        .arg(listNumber.mid(0, 3).join(QStringLiteral(" × ")), listNumber.mid(3).join(QStringLiteral("°, ")));
}

/// Which of a*, b*, c* (0, 1, 2) is the only one that has changed, and only in length; −1 if none is.
int vectorOfOtherLength(const QList<Vec3D>& listBefore, const QList<Vec3D>& listAfter)
{
    int nVector = -1;
    if (listBefore.size() != 3 || listAfter.size() != 3) {
        return -1;
    }
    for (int n = 0; n < 3; ++n) {
        const Vec3D &a = listBefore[n], &b = listAfter[n];
        if (areSame(a, b)) {
            continue;
        }
        const float fDirection = 1e-5f;  // radians; single precision has errors of about 1e-7
        if (nVector >= 0 || length(cross(a, b)) > fDirection * length(a) * length(b) || dot(a, b) < 0) {
            return -1;
        }
        nVector = n;
    }
    return nVector;
}

/// Names a change of the cell. While a transformation of the cell is tested, m_listCell is the cell under
/// test and m_listCellFound is the one that it comes from; otherwise they are equal.
void nameCell(const SeriesData& before, const SeriesData& after, WorkDifferences& result)
{
    const bool bOtherFound = !areSame(before.m_listCellFound, after.m_listCellFound);
    if (!bOtherFound && areSame(before.m_listCell, after.m_listCell)) {
        return;
    }
    const int nVector = vectorOfOtherLength(before.m_listCellFound, after.m_listCellFound);
    if (nVector >= 0) {
        result.strName = QStringLiteral("Length of %1* %2 to %3 Å⁻¹")
                             .arg(QLatin1Char(char('a' + nVector)))
                             .arg(QLocale().toString(double(length(before.m_listCellFound[nVector])), 'f', 4),
                                  QLocale().toString(double(length(after.m_listCellFound[nVector])), 'f', 4));
        result.strKey = QStringLiteral("length %1").arg(nVector);
    } else if (bOtherFound) {
        result.strName = cellName(after.m_listCellFound);
    } else if (areSame(after.m_listCell, after.m_listCellFound)) {
        result.strName = text("Test of a cell ended");
    } else {
        result.strName = text("Test: ") + cellName(after.m_listCell);
    }
}

QString quoted(const QString& str)
{
    return QStringLiteral("\"%1\"").arg(str);
}

/// The name of a change of the groups of a view: that of the first group that differs; empty if none does.
QString groupsName(const QList<PointGroup>& listBefore, const QList<PointGroup>& listAfter)
{
    if (areSame(listBefore, listAfter)) {
        return {};
    }
    if (listAfter.size() == listBefore.size() + 1) {
        // The others keep their order, and group 0, which may lose points, has no list of them in a state.
        for (int g = 0; g < listAfter.size(); ++g) {
            if (g == listBefore.size() || !areSame(listBefore[g], listAfter[g])) {
                return text("Groups: new, ") + quoted(listAfter[g].strLabel);
            }
        }
    }
    if (listAfter.size() != listBefore.size()) {
        return counted("Groups", listAfter.size());
    }
    for (int g = 0; g < listAfter.size(); ++g) {
        const PointGroup &before = listBefore[g], &after = listAfter[g];
        if (before.strLabel != after.strLabel) {
            return text("Groups: ") + quoted(before.strLabel) + text(" is now ") + quoted(after.strLabel);
        }
        if (before.bVisible != after.bVisible) {
            return text("Groups: ") + quoted(after.strLabel) +
                   (after.bVisible ? text(" shown") : text(" hidden"));
        }
        if (before.color != after.color) {
            return text("Groups: colour of ") + quoted(after.strLabel);
        }
    }
    return text("Groups");  // only the points of groups differ
}

bool isOtherSeries(const SeriesData& before, const SeriesData& after)
{
    return before.m_strProjectDir != after.m_strProjectDir ||
           before.m_strProjectName != after.m_strProjectName ||
           before.m_listFrameFile != after.m_listFrameFile ||
           before.m_reading.choice != after.m_reading.choice;
}

bool haveSameTilts(const SeriesData& before, const SeriesData& after)
{
    return before.m_listStageTilt == after.m_listStageTilt && before.m_listBeamTilt == after.m_listBeamTilt &&
           before.m_listOverallTilt == after.m_listOverallTilt &&
           before.m_listBeamTiltBreak == after.m_listBeamTiltBreak;
}

/// The name of the change made by a run: that of the earliest stage; empty if nothing has changed.
QString runName(const WorkState& stateBefore, const WorkState& stateAfter)
{
    const SeriesData &before = stateBefore.series, &after = stateAfter.series;
    if (before.m_listHotPixel != after.m_listHotPixel) {
        return counted("Hot pixels", after.m_listHotPixel.size());
    }
    if (before.m_maskPeakHunting.fillRule != after.m_maskPeakHunting.fillRule ||
        before.m_maskPeakHunting.listPolygon != after.m_maskPeakHunting.listPolygon) {
        return counted("Areas of the mask", after.m_maskPeakHunting.listPolygon.size());
    }
    if (peakChange(before.m_listPeakFrame, after.m_listPeakFrame) == PeakChange::Replaced) {
        return counted("Peaks", countOf(after.m_listPeakFrame));
    }
    if (before.m_listShift != after.m_listShift) {
        return counted("Shifts", after.m_listShift.size());
    }
    if (!haveSameTilts(before, after)) {
        return text("Tilts");
    }
    if (!areSame(before.m_listPeakMergedShown, after.m_listPeakMergedShown) ||
        !areSame(before.m_listPeakMerged, after.m_listPeakMerged) ||
        !areSame(before.m_listPeakChain, after.m_listPeakChain)) {
        return counted("Reflections", after.m_listPeakMerged.size());
    }
    return {};
}

/// The name of a change of the results that depend on the cell; empty if there is none.
QString resultName(const WorkState& before, const WorkState& after)
{
    if (!areSame(before.series.m_listReflectionIndexed, after.series.m_listReflectionIndexed) ||
        !areSame(before.series.m_listCellIndexed, after.series.m_listCellIndexed)) {
        return counted("Indexed", after.series.m_listReflectionIndexed.size());
    }
    if (before.pGeometry != after.pGeometry) {
        return after.pGeometry ? text("Geometry refined") : text("No refined geometry");
    }
    if (before.pIntegration != after.pIntegration) {
        return after.pIntegration
                   ? counted("Integrated", int(after.pIntegration->integrated.listObservation.size()))
                   : text("Nothing integrated");
    }
    // They differ after a fit on the frames. With another cell they differ too, but that has been named.
    return areSame(before.series.m_vecPeakIndexedOnFrame, after.series.m_vecPeakIndexedOnFrame)
               ? QString()
               : text("Positions of indexed peaks");
}

bool isSameCell(const std::optional<CellParameters>& before, const std::optional<CellParameters>& after)
{
    return before.has_value() == after.has_value() && (!before || before->numbers() == after->numbers());
}

/// Names changes on the pages: the first check box or list that differs, or else the first number, and how
/// many more there are. Only a single number gets a key, since the user may go on typing it.
void nameNumbers(const WorkState& before, const WorkState& after, WorkDifferences& result)
{
    const QList<NumberChange> listNumber = numberChanges(before, after);
    const QStringList listChoice = choiceChanges(before, after);
    const int nAll = listNumber.size() + listChoice.size();
    if (nAll == 0) {
        return;
    }
    result.strName = listChoice.isEmpty() ? listNumber.first().strText : listChoice.first();
    if (nAll > 1) {
        result.strName += QStringLiteral(" and %1 more").arg(nAll - 1);
    } else if (listChoice.isEmpty()) {
        result.strKey = QStringLiteral("number %1").arg(listNumber.first().nRow);
    }
}

/// Names all other changes: cells and matrix that the user entered, groups, mapping of the peaks.
void nameOthers(const WorkState& before, const WorkState& after, WorkDifferences& result)
{
    if (!isSameCell(before.knownCell, after.knownCell)) {
        result.strName = text("Known cell");
        return;
    }
    if (!isSameCell(before.refinement.m_referenceCell, after.refinement.m_referenceCell)) {
        result.strName = text("Reference cell");
        return;
    }
    if (!std::equal(std::begin(before.matTransformation.m_dfElement),
                    std::end(before.matTransformation.m_dfElement), after.matTransformation.m_dfElement,
                    [](double a, double b) { return areSame(a, b); })) {
        result.strName = text("Matrix of the cell");
        result.strKey = QStringLiteral("matrix");
        return;
    }
    const QString strRaw = groupsName(before.listRawGroup, after.listRawGroup);
    result.strName = strRaw.isEmpty() ? groupsName(before.listMergedGroup, after.listMergedGroup) : strRaw;
    if (!result.isStep() &&
        peakChange(before.series.m_listPeakFrame, after.series.m_listPeakFrame) == PeakChange::Mapped) {
        result.strName = text("Peaks mapped anew");
    }
}

}  // namespace

WorkDifferences differences(const WorkState& before, const WorkState& after)
{
    WorkDifferences result;
    if (isOtherSeries(before.series, after.series)) {
        result.bOtherSeries = true;
        result.strName = text("Opened ") + after.series.m_strProjectName;
        return result;
    }
    result.strName = runName(before, after);
    if (!result.isStep()) {
        nameCell(before.series, after.series, result);
    }
    if (!result.isStep()) {
        result.strName = resultName(before, after);
    }
    if (!result.isStep()) {
        nameNumbers(before, after, result);
    }
    if (!result.isStep()) {
        nameOthers(before, after, result);
    }
    return result;
}

}  // namespace tessera
