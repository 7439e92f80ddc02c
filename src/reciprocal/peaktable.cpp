#include "reciprocal/peaktable.h"

#include "crystal/reflectionindices.h"
#include "geometry/angles.h"
#include "reciprocal/mapping.h"

#include <cmath>
#include <iterator>

namespace tessera {

struct CPeakTable::Cells {
    /// The index of a record, rounded; "*" where the record isn't indexed.
    static QString index(const CPeakTable& table, const Peak3D& peak, double dfIndex)
    {
        return isCloseToInteger(peak, table.m_fIndexThreshold) ? QString::number(roundIndex(dfIndex))
                                                               : QStringLiteral("*");
    }

    static bool isAllowed(const CPeakTable& table, const Peak3D& peak)
    {
        if (!isCloseToInteger(peak, table.m_fIndexThreshold))
            return true;
        const int nH = roundIndex(peak.dfH), nK = roundIndex(peak.dfK), nL = roundIndex(peak.dfL);
        return (nH == 0 && nK == 0 && nL == 0) || !table.m_spaceGroup.isAbsent(nH, nK, nL);
    }

    static QString fixed(const CPeakTable& table, double df, int nDecimals)
    {
        return table.m_locale.toString(df, 'f', nDecimals);
    }

    /// Two decimals, none for a frame number that is whole to within a thousandth.
    static QString frame(const CPeakTable& table, double dfFrame)
    {
        return fixed(table, dfFrame, std::fabs(dfFrame - std::trunc(dfFrame)) > 0.001 ? 2 : 0);
    }

    static QPointF centred(const CPeakTable& table, const Peak3D& peak)
    {
        return calPeak2DPosCenterCorrected(table.m_centres, peak.nFrame, {peak.dfX2D, peak.dfY2D});
    }

    static double axisDistance(const CPeakTable& table, const Peak3D& peak)
    {
        return double(calDistanceToRotationAxis(table.m_centres, table.m_dfRotationAxis, peak.nFrame,
                                                {peak.dfX2D, peak.dfY2D}));
    }

    static double azimuth(const CPeakTable& table, const Peak3D& peak)
    {
        const QPointF pt = centred(table, peak);
        return screenAzimuth360(pt.x(), pt.y());
    }

    static double axisAngle(const CPeakTable& table, const Peak3D& peak)
    {
        return double(calAngleToRotationAxis(table.m_centres, table.m_dfRotationAxis, peak.nFrame, peak));
    }

    /// The passage that is this peak; null where the peak isn't indexed or was not integrated.
    static const IntegratedPeak* integrated(const CPeakTable& table, const Peak3D& peak)
    {
        if (!table.m_pIntegrated || !isCloseToInteger(peak, table.m_fIndexThreshold)) {
            return nullptr;
        }
        return table.m_pIntegrated->nearest(
            {roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL)}, peak.nFrame);
    }

    static QString measured(const CPeakTable& table, const Peak3D& peak, double IntegratedPeak::*pNumber)
    {
        const IntegratedPeak* pPeak = integrated(table, peak);
        return pPeak && pPeak->dfSigma > 0 ? fixed(table, pPeak->*pNumber, 1) : QString();
    }

    typedef QString (*Text)(const CPeakTable& t, const Peak3D& p);
    static constexpr Text aText[] = {
        [](const CPeakTable&, const Peak3D& p) { return QString::number(p.nID); },
        [](const CPeakTable&, const Peak3D& p) { return QString::number(p.dfH, 'f', 2); },
        [](const CPeakTable&, const Peak3D& p) { return QString::number(p.dfK, 'f', 2); },
        [](const CPeakTable&, const Peak3D& p) { return QString::number(p.dfL, 'f', 2); },
        [](const CPeakTable& t, const Peak3D& p) { return index(t, p, p.dfH); },
        [](const CPeakTable& t, const Peak3D& p) { return index(t, p, p.dfK); },
        [](const CPeakTable& t, const Peak3D& p) { return index(t, p, p.dfL); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, p.dfIPoint, 1); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, p.dfIntFit, 1); },
        [](const CPeakTable& t, const Peak3D& p) {
            return fixed(t, p.dfDStar == 0 ? 0.0 : 1 / p.dfDStar, 2);
        },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, p.dfDStar, 3); },
        [](const CPeakTable&, const Peak3D& p) { return QString::number(p.nFrame + 1); },
        [](const CPeakTable& t, const Peak3D& p) { return frame(t, p.dfFrameFit); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, p.dfHalfWidth, 2); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, axisDistance(t, p), 1); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, axisDistance(t, p) * p.dfHalfWidth, 1); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, azimuth(t, p), 1); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, axisAngle(t, p), 1); },
        [](const CPeakTable& t, const Peak3D& p) { return t.m_locale.toString(p.dfX2D, 'g', 6); },
        [](const CPeakTable& t, const Peak3D& p) { return t.m_locale.toString(p.dfY2D, 'g', 6); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, centred(t, p).x(), 2); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, centred(t, p).y(), 2); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, p.dfX2DCorrected, 2); },
        [](const CPeakTable& t, const Peak3D& p) { return fixed(t, p.dfY2DCorrected, 2); },
        [](const CPeakTable& t, const Peak3D& p) { return QString::number(isAllowed(t, p) ? 1 : 0); },
        [](const CPeakTable&, const Peak3D& p) { return QString::number(p.nRGroup); },
        [](const CPeakTable& t, const Peak3D& p) { return measured(t, p, &IntegratedPeak::dfIntensity); },
        [](const CPeakTable& t, const Peak3D& p) { return measured(t, p, &IntegratedPeak::dfSigma); },
        [](const CPeakTable& t, const Peak3D& p) {
            const IntegratedPeak* pPeak = integrated(t, p);
            return pPeak ? pPeak->strFlags : QString();
        }};
    static_assert(std::size(aText) == g_nPeakTableColumns, "each column has its text");
};

CPeakTable::CPeakTable(const QList<Peak3D>& listPeak, const DataSet& dataSet, double dfIndexThreshold,
                       const QLocale& locale, const std::shared_ptr<const CIntegratedPeaks>& pIntegrated)
    : m_listPeak(listPeak),
      m_centres(beamCentres(dataSet)),
      m_dfRotationAxis(dataSet.m_dfRotationAxis),
      m_spaceGroup(dataSet.m_spaceGroup),
      m_fIndexThreshold(float(dfIndexThreshold)),
      m_locale(locale),
      m_pIntegrated(pIntegrated)
{}

QString CPeakTable::text(int nRow, int nColumn) const
{
    return Cells::aText[nColumn](*this, m_listPeak.at(nRow));
}

CPeakTable CPeakTable::withIntegrated(const std::shared_ptr<const CIntegratedPeaks>& pIntegrated) const
{
    CPeakTable table = *this;
    table.m_pIntegrated = pIntegrated;
    return table;
}

const IntegratedPeak* CPeakTable::integrated(int nRow) const
{
    return Cells::integrated(*this, m_listPeak.at(nRow));
}

}  // namespace tessera
