#include "workstate/workstatus.h"

#include "dataset/pagerounding.h"
#include "reciprocal/mapping.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

QString number(double df, int nDecimals)
{
    return QString::number(df, 'f', nDecimals);
}

/// A phrase for each parameter that differs between two records, both rounded as on the pages.
/// @param listName  names of the members for the phrases
template <typename TRecord>
QStringList changedNumbers(TRecord then, TRecord now, const std::vector<QString>& listName,
                           const std::vector<double TRecord::*>& listMember)
{
    roundToPages(then);
    roundToPages(now);
    QStringList listChange;
    for (size_t i = 0; i < listMember.size(); ++i) {
        const double dfThen = then.*listMember[i];
        const double dfNow = now.*listMember[i];
        if (dfThen != dfNow) {
            const int nDecimals = parameterOf(listMember[i]).box.nDecimals;
            listChange.append(QStringLiteral("the %1 was changed from %2 to %3")
                                  .arg(listName[i], number(dfThen, nDecimals), number(dfNow, nDecimals)));
        }
    }
    return listChange;
}

/// The changes as one phrase, which names two of them at most: there is no room for more beside a stage.
QString inWords(const QStringList& listChange)
{
    return listChange.size() > 2
               ? listChange.mid(0, 2).join(QStringLiteral(", ")) + QStringLiteral(" and more")
               : listChange.join(QStringLiteral(" and "));
}

QString huntingChange(const PeakHuntingParameters& then, const PeakHuntingParameters& now)
{
    using Hunt = PeakHuntingParameters;
    return inWords(changedNumbers<Hunt>(
        then, now,
        {"peak radius", "background radius", "smooth radius", "threshold", "integration radius",
         "integration background"},
        {&Hunt::m_dfPeakRadius, &Hunt::m_dfBackgroundRadius, &Hunt::m_dfSmoothRadius,
         &Hunt::m_dfPeakThreshold, &Hunt::m_dfIntegrationRadius, &Hunt::m_dfIntegrationBackground}));
}

QString mergingChange(const MergedMade& then, const WorkNumbers& now)
{
    using Limits = MappingParameters;
    using Merge = PeakMergingParameters;
    QStringList listChange;
    if (then.limits) {
        listChange += changedNumbers<Limits>(
            *then.limits, now.mapping,
            {"least resolution", "greatest resolution", "least intensity", "greatest intensity"},
            {&Limits::m_dfResolutionMin, &Limits::m_dfResolutionMax, &Limits::m_dfIntensityMin,
             &Limits::m_dfIntensityMax});
    }
    listChange += changedNumbers<Merge>(
        then.merging, now.merging,
        {"distance in 3D", "distance on the frame", "least length of a chain", "greatest length of a chain"},
        {&Merge::m_dfMin3DDistance, &Merge::m_dfMax2DDistance, &Merge::m_dfMin2DLength,
         &Merge::m_dfMax3DLength});
    if (then.merging.m_bIntegrate2D != now.merging.m_bIntegrate2D ||
        then.merging.m_bIntegrateThroughFrames != now.merging.m_bIntegrateThroughFrames) {
        listChange.append(QStringLiteral("the kind of intensity was changed"));
    }
    return inWords(listChange);
}

/// The greatest distance between former and present shift of a frame, pixels; 0 without frames.
double greatestMove(const QList<QPointF>& listThen, const QList<QPointF>& listNow)
{
    double dfMost = 0;
    for (int i = 0; i < std::min(listThen.size(), listNow.size()); ++i) {
        const QPointF ptMove = listNow[i] - listThen[i];
        dfMost = std::max(dfMost, std::hypot(ptMove.x(), ptMove.y()));
    }
    return dfMost;
}

/// Finds the states of the stages one after the other, as later ones depend on earlier ones.
class CWorkStatus {
public:
    CWorkStatus(const DataSet& dataSet, const WorkNumbers& numbers)
        : m_data(dataSet),
          m_numbers(numbers),
          m_mapping(currentPeakMapping(dataSet, numbers.mapping)),
          m_nPeaksHash(printOfPeaks(dataSet.m_listPeakFrame)),
          m_nMergedHash(printOfReflections(dataSet.m_listPeakMerged))
    {}

    std::vector<StageStatus> stages()
    {
        drift();
        peaks();
        axis();
        mapping();
        merging();
        cell();
        indexing();
        result(WorkStage::Geometry, m_data.m_made.geometry, QStringLiteral("refined"));
        result(WorkStage::Integration, m_data.m_made.integration, QStringLiteral("integrated"));
        return m_listStatus;
    }

private:
    void add(WorkStage stage, StageState state, const QString& strReason)
    {
        m_listStatus.push_back({stage, state, strReason});
    }
    /// Adds a stage that has a result: stale if something has changed, else done.
    /// @param strChange  a phrase; empty if nothing has changed
    /// @param strDone    what the result is; used if nothing has changed
    void add(WorkStage stage, const QString& strChange, const QString& strDone)
    {
        if (strChange.isEmpty()) {
            add(stage, StageState::Done, strDone);
        } else {
            add(stage, StageState::Stale, since(strChange));
        }
    }
    static QString since(const QString& strChange) { return strChange + QStringLiteral(" since"); }
    /// Whether a stage is stale that was added already.
    bool isStale(WorkStage stage) const
    {
        return std::any_of(m_listStatus.begin(), m_listStatus.end(), [stage](const StageStatus& status) {
            return status.stage == stage && status.state == StageState::Stale;
        });
    }
    /// What has changed since a result was made with a mapping; empty if nothing has, or for no mapping.
    QString changeOfMapping(const std::optional<PeakMapping>& then) const
    {
        return then ? mappingChange(*then, m_mapping) : QString();
    }
    int frames() const { return m_data.m_listFrameFile.size(); }

    void drift()
    {
        const int nShifts = m_data.m_listShift.size();
        if (nShifts == 0) {
            add(WorkStage::Drift, StageState::Missing, QStringLiteral("the shifts are not evaluated"));
        } else if (nShifts != frames()) {
            add(WorkStage::Drift, StageState::Stale,
                QStringLiteral("there are shifts of %1 frames, and %2 frames").arg(nShifts).arg(frames()));
        } else {
            add(WorkStage::Drift, StageState::Done, QStringLiteral("shifts of %1 frames").arg(nShifts));
        }
    }

    void peaks()
    {
        const int nLists = m_data.m_listPeakFrame.size();
        int nPeaks = 0;
        for (const QList<Peak3D>& listPeak : m_data.m_listPeakFrame) {
            nPeaks += listPeak.size();
        }
        if (nPeaks == 0) {
            add(WorkStage::Peaks, StageState::Missing, QStringLiteral("no peaks were searched"));
            return;
        }
        if (nLists != frames()) {
            m_strStalePeaks =
                QStringLiteral("there are peaks of %1 frames, and %2 frames").arg(nLists).arg(frames());
            add(WorkStage::Peaks, StageState::Stale, m_strStalePeaks);
            return;
        }
        const std::optional<PeaksMade>& made = m_data.m_made.peaks;
        QString strChange;
        const QString strDone = QStringLiteral("%L1 peaks").arg(nPeaks);
        if (!made || made->nPeaks != m_nPeaksHash) {  // the record is about other peaks
            add(WorkStage::Peaks, strChange, strDone + QStringLiteral(", from a file"));
            return;
        }
        strChange = huntingChange(made->hunting, m_numbers.hunting);
        const bool bNumbers = !strChange.isEmpty();
        if (strChange.isEmpty() && made->nAreas != printOfAreas(m_data.m_maskPeakHunting)) {
            strChange = QStringLiteral("the mask was changed");
        }
        if (strChange.isEmpty() && made->nHotPixels != printOfPixels(m_data.m_listHotPixel)) {
            strChange = QStringLiteral("the list of hot pixels was changed");
        }
        m_strStalePeaks = since(bNumbers ? QStringLiteral("numbers of the peak search were changed")
                                         : strChange);
        add(WorkStage::Peaks, strChange, strDone);
    }

    void axis()
    {
        if (m_data.m_bRotationAxisKnown) {
            add(WorkStage::Axis, StageState::Done,
                QStringLiteral("at %1°").arg(number(m_data.m_dfRotationAxis, m_data.m_nAxisDecimals)));
        } else {
            add(WorkStage::Axis, StageState::Missing, QStringLiteral("it was neither given nor found"));
        }
    }

    void mapping()
    {
        if (!m_data.m_peakMapping || m_nPeaksHash == 0) {
            add(WorkStage::Mapping, StageState::Missing, QStringLiteral("the peaks are not mapped"));
        } else if (isStale(WorkStage::Peaks)) {
            add(WorkStage::Mapping, StageState::Stale, m_strStalePeaks);
        } else {
            add(WorkStage::Mapping, changeOfMapping(m_data.m_peakMapping),
                QStringLiteral("with the geometry in force"));
        }
    }

    void merging()
    {
        const std::optional<MergedMade>& made = m_data.m_made.merged;
        const int nMerged = m_data.m_listPeakMerged.size();
        if (nMerged == 0 || !made || made->nMerged != m_nMergedHash) {
            add(WorkStage::Merging, StageState::Missing, QStringLiteral("the peaks are not merged"));
            return;
        }
        if (isStale(WorkStage::Peaks)) {
            add(WorkStage::Merging, StageState::Stale, m_strStalePeaks);
            return;
        }
        QString strChange = changeOfMapping(made->mapping);
        if (made->nPeaks != m_nPeaksHash) {
            strChange = QStringLiteral("the peaks were searched or loaded anew");
        } else if (strChange.isEmpty()) {
            strChange = mergingChange(*made, m_numbers);
        }
        add(WorkStage::Merging, strChange, QStringLiteral("%L1 reflections").arg(nMerged));
    }

    void cell()
    {
        if (!cellInForce(m_data)) {
            add(WorkStage::Cell, StageState::Missing, QStringLiteral("there is none"));
            return;
        }
        const std::optional<CellMade>& made = m_data.m_made.cell;
        if (!made || made->listCell != m_data.m_listCellFound) {
            add(WorkStage::Cell, QString(), QStringLiteral("from a file or by hand"));
            return;
        }
        QString strChange = changeOfMapping(made->mapping);
        if (strChange.isEmpty() && isStale(WorkStage::Merging)) {
            strChange = QStringLiteral("the peaks to be merged were changed");
        } else if (strChange.isEmpty() && made->nMerged != m_nMergedHash && m_nMergedHash != 0) {
            // The hash 0 is that of no reflections: if they were only dropped, the cell is as good as it was.
            strChange = QStringLiteral("the reflections were merged anew");
        }
        add(WorkStage::Cell, strChange, QStringLiteral("found with the geometry in force"));
    }

    void indexing()
    {
        std::optional<IndexedMade> made = m_data.m_made.indexed;
        if (made && made->nIndexed != printOfReflections(m_data.m_listReflectionIndexed)) {
            made.reset();  // the record is about other indices
        }
        const int nIndexed = m_data.m_listReflectionIndexed.size();
        if (nIndexed == 0) {
            add(WorkStage::Indexing, StageState::Missing, QStringLiteral("no reflection has indices"));
            return;
        }
        QString strChange;
        if (!holdsIndicesOfCell(m_data)) {
            strChange = QStringLiteral("the unit cell was changed");
        } else if (isStale(WorkStage::Cell)) {
            strChange = QStringLiteral("the data behind the unit cell were changed");
        } else if (isStale(WorkStage::Merging)) {
            strChange = QStringLiteral("the peaks to be merged were changed");
        } else if (made && made->nMerged != m_nMergedHash) {
            strChange = QStringLiteral("the reflections were merged anew");
        } else if (made && made->dfThreshold != m_numbers.indexing.m_dfIndexThreshold) {
            strChange = QStringLiteral("the threshold was changed from %1 to %2")
                            .arg(number(made->dfThreshold, 2),
                                 number(m_numbers.indexing.m_dfIndexThreshold, 2));
        }
        add(WorkStage::Indexing, strChange, QStringLiteral("%L1 reflections have indices").arg(nIndexed));
    }

    /// Adds a stage whose result depends only on the mapping and the cell in force.
    /// @param strDone  what was done: "refined"
    void result(WorkStage stage, const std::optional<GeometryMade>& made, const QString& strDone)
    {
        if (!made) {
            add(stage, StageState::Missing, QStringLiteral("not %1").arg(strDone));
            return;
        }
        QString strChange = changeOfMapping(made->mapping);
        if (strChange.isEmpty() && made->listCell != m_data.m_listCell) {
            strChange = QStringLiteral("the unit cell was changed");
        }
        add(stage, strChange, QStringLiteral("%1 with the cell in force").arg(strDone));
    }

    const DataSet& m_data;
    const WorkNumbers& m_numbers;
    PeakMapping m_mapping;    ///< the one that peaks would be mapped with now
    quint64 m_nPeaksHash;     ///< of the present peaks; 0: there are none
    quint64 m_nMergedHash;    ///< of the present reflections; 0: there are none
    QString m_strStalePeaks;  ///< why what was made of the peaks is stale, if they are
    std::vector<StageStatus> m_listStatus;
};

}  // namespace

std::vector<StageStatus> workStatus(const DataSet& dataSet, const WorkNumbers& numbers)
{
    return CWorkStatus(dataSet, numbers).stages();
}

QString mappingChange(const PeakMapping& then, const PeakMapping& now)
{
    QStringList listChange;
    const auto changed = [&](double dfThen, double dfNow, const char* pszName, int nDecimals,
                             const char* pszUnit) {
        if (dfThen != dfNow) {
            listChange.append(QStringLiteral("the %1 was changed from %2 to %3%4")
                                  .arg(QLatin1String(pszName), number(dfThen, nDecimals),
                                       number(dfNow, nDecimals), QString::fromUtf8(pszUnit)));
        }
    };
    if (then.dfRotationAxis != now.dfRotationAxis) {
        // Azimuths of −179° and 179° are 2° apart. Small turns need more decimals, to be seen at all.
        const double dfTurn = std::abs(std::remainder(now.dfRotationAxis - then.dfRotationAxis, 360.0));
        listChange.append(
            QStringLiteral("the rotation axis was turned by %1°").arg(number(dfTurn, dfTurn < 0.05 ? 3 : 1)));
    }
    changed(then.dfWavelength, now.dfWavelength, "wavelength", 6, " Å");
    changed(then.dfPixelSize, now.dfPixelSize, "pixel size", 6, " Å⁻¹");
    changed(then.dfTiltRelaxation, now.dfTiltRelaxation, "tilt relaxation", 1, "°");
    if (then.dfStretchAmplitude != now.dfStretchAmplitude || then.dfStretchAzimuth != now.dfStretchAzimuth) {
        listChange.append(QStringLiteral("the stretching was changed"));
    }
    if (then.distortion != now.distortion) {
        listChange.append(QStringLiteral("the lens distortion was changed"));
    }
    const double dfBeam = std::hypot(now.dfCenterX - then.dfCenterX, now.dfCenterY - then.dfCenterY);
    if (dfBeam > 0) {
        listChange.append(QStringLiteral("the direct beam was moved by %1 pixels").arg(number(dfBeam, 2)));
    }
    if (then.listShift != now.listShift) {
        listChange.append(QStringLiteral("the shifts were changed by up to %1 pixels")
                              .arg(number(greatestMove(then.listShift, now.listShift), 2)));
    }
    if (then.listOverallTilt != now.listOverallTilt) {
        listChange.append(QStringLiteral("the tilts were changed"));
    }
    return inWords(listChange);
}

}  // namespace tessera
