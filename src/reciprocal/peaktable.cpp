#include "reciprocal/peaktable.h"

#include "crystal/reflectionindices.h"
#include "geometry/angles.h"
#include "reciprocal/mapping.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace tessera {

namespace {

const double g_dfNothing = std::numeric_limits<double>::quiet_NaN();

/// How a column shows its numbers, if not with a fixed number of decimals in the format of the locale. The
/// values are negative, as a column has either a number of decimals or one of these.
enum Form {
    Whole = -1,            ///< a whole number without separators of thousands
    SixDigits = -2,        ///< six significant digits, in the format of the locale
    FrameNumber = -3,      ///< two decimals in the format of the locale, none for a whole number
    Index = -4,            ///< a whole number, or "*" if the record is not indexed
    Words = -5,            ///< the flags of the integration
    PlainHundredths = -6,  ///< two decimals with a point, whatever the locale
};

}  // namespace

struct CPeakTable::Cells {
    /// An index of a record, rounded; not a number if any index of the record is too far from a whole one.
    static double index(const CPeakTable& table, const Peak3D& peak, double dfIndex)
    {
        return isCloseToInteger(peak, table.m_fIndexThreshold) ? roundIndex(dfIndex) : g_dfNothing;
    }

    /// Whether the space group allows the reflection. True also for a record that isn't indexed, of which
    /// nothing is known, and for 0 0 0, the direct beam.
    static bool isAllowed(const CPeakTable& table, const Peak3D& peak)
    {
        if (!isCloseToInteger(peak, table.m_fIndexThreshold)) {
            return true;
        }
        const int nH = roundIndex(peak.dfH), nK = roundIndex(peak.dfK), nL = roundIndex(peak.dfL);
        return (nH == 0 && nK == 0 && nL == 0) || !table.m_spaceGroup.isAbsent(nH, nK, nL);
    }

    /// The measured place on the frame relative to its direct beam, pixels, y down.
    static QPointF centred(const CPeakTable& table, const Peak3D& peak)
    {
        return calPeak2DPosCenterCorrected(table.m_centres, peak.nFrame, {peak.dfX2D, peak.dfY2D});
    }

    /// Distance of the measured place from the rotation axis, pixels.
    static double axisDistance(const CPeakTable& table, const Peak3D& peak)
    {
        return double(calDistanceToRotationAxis(table.m_centres, table.m_dfRotationAxis, peak.nFrame,
                                                {peak.dfX2D, peak.dfY2D}));
    }

    /// Azimuth of the measured place about the direct beam: degrees, 0 to 360, counter-clockwise on the
    /// screen from 3 o'clock.
    static double azimuth(const CPeakTable& table, const Peak3D& peak)
    {
        const QPointF pt = centred(table, peak);
        return screenAzimuth360(pt.x(), pt.y());
    }

    /// Angle between the rotation axis and the line from the direct beam to the measured place, degrees, 0 to
    /// 90.
    static double axisAngle(const CPeakTable& table, const Peak3D& peak)
    {
        return double(calAngleToRotationAxis(table.m_centres, table.m_dfRotationAxis, peak.nFrame, peak));
    }

    /// The integrated passage through the Ewald sphere with the indices of a peak that is nearest to its
    /// frame; null where the peak isn't indexed or was not integrated.
    static const IntegratedPeak* integrated(const CPeakTable& table, const Peak3D& peak)
    {
        if (!table.m_pIntegrated || !isCloseToInteger(peak, table.m_fIndexThreshold)) {
            return nullptr;
        }
        return table.m_pIntegrated->nearest(
            {roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL)}, peak.nFrame);
    }

    /// Intensity or sigma of the passage; not a number where the integration has not measured it.
    static double measured(const CPeakTable& table, const Peak3D& peak, double IntegratedPeak::*pNumber)
    {
        const IntegratedPeak* pPeak = integrated(table, peak);
        return pPeak && pPeak->dfSigma > 0 ? pPeak->*pNumber : g_dfNothing;
    }

    struct Column {
        int nForm;  ///< decimals, or a Form
        double (*fnNumber)(const CPeakTable& t, const Peak3D& p);
    };
    static constexpr Column aColumn[] = {
        // 0: number of the reflection
        {Whole, [](const CPeakTable&, const Peak3D& p) { return double(p.nID); }},
        // 1 to 3: h, k, l as measured
        {PlainHundredths, [](const CPeakTable&, const Peak3D& p) { return p.dfH; }},
        {PlainHundredths, [](const CPeakTable&, const Peak3D& p) { return p.dfK; }},
        {PlainHundredths, [](const CPeakTable&, const Peak3D& p) { return p.dfL; }},
        // 4 to 6: h, k, l as whole numbers
        {Index, [](const CPeakTable& t, const Peak3D& p) { return index(t, p, p.dfH); }},
        {Index, [](const CPeakTable& t, const Peak3D& p) { return index(t, p, p.dfK); }},
        {Index, [](const CPeakTable& t, const Peak3D& p) { return index(t, p, p.dfL); }},
        // 7 and 8: merged intensity; that of the curve through the frames
        {1, [](const CPeakTable&, const Peak3D& p) { return p.dfIPoint; }},
        {1, [](const CPeakTable&, const Peak3D& p) { return p.dfIntFit; }},
        // 9 and 10: d, Å, and d*, Å⁻¹
        {2, [](const CPeakTable&, const Peak3D& p) { return p.dfDStar == 0 ? 0.0 : 1 / p.dfDStar; }},
        {3, [](const CPeakTable&, const Peak3D& p) { return p.dfDStar; }},
        // 11 to 13: frame; centre of the curve, both counted from 1; its half width, frames
        {Whole, [](const CPeakTable&, const Peak3D& p) { return p.nFrame + 1.0; }},
        {FrameNumber, [](const CPeakTable&, const Peak3D& p) { return p.dfFrameFit; }},
        {2, [](const CPeakTable&, const Peak3D& p) { return p.dfHalfWidth; }},
        // 14 to 17: distance from the rotation axis; the same times the half width; azimuth; angle to the
        // axis
        {1, [](const CPeakTable& t, const Peak3D& p) { return axisDistance(t, p); }},
        {1, [](const CPeakTable& t, const Peak3D& p) { return axisDistance(t, p) * p.dfHalfWidth; }},
        {1, [](const CPeakTable& t, const Peak3D& p) { return azimuth(t, p); }},
        {1, [](const CPeakTable& t, const Peak3D& p) { return axisAngle(t, p); }},
        // 18 to 23, pixels: place on the frame; relative to the direct beam; the same freed of distortions
        {SixDigits, [](const CPeakTable&, const Peak3D& p) { return p.dfX2D; }},
        {SixDigits, [](const CPeakTable&, const Peak3D& p) { return p.dfY2D; }},
        {2, [](const CPeakTable& t, const Peak3D& p) { return centred(t, p).x(); }},
        {2, [](const CPeakTable& t, const Peak3D& p) { return centred(t, p).y(); }},
        {2, [](const CPeakTable&, const Peak3D& p) { return p.dfX2DCorrected; }},
        {2, [](const CPeakTable&, const Peak3D& p) { return p.dfY2DCorrected; }},
        // 24 and 25: 1 if the space group allows it, else 0; group of symmetry equivalents
        {Whole, [](const CPeakTable& t, const Peak3D& p) { return isAllowed(t, p) ? 1.0 : 0.0; }},
        {Whole, [](const CPeakTable&, const Peak3D& p) { return double(p.nRGroup); }},
        // 26 to 28: intensity, sigma and flags of the integration
        {1,
         [](const CPeakTable& t, const Peak3D& p) { return measured(t, p, &IntegratedPeak::dfIntensity); }},
        {1, [](const CPeakTable& t, const Peak3D& p) { return measured(t, p, &IntegratedPeak::dfSigma); }},
        {Words, [](const CPeakTable&, const Peak3D&) { return g_dfNothing; }}};
    static_assert(std::size(aColumn) == g_nPeakTableColumns, "each column has its number");

    static QString formatted(const CPeakTable& table, int nForm, double df)
    {
        switch (nForm) {
            case Whole:
                return QString::number(qint64(df));
            case Index:
                return std::isnan(df) ? QStringLiteral("*") : QString::number(qint64(df));
            case SixDigits:
                return table.m_locale.toString(df, 'g', 6);
            case FrameNumber:  // two decimals, none for a frame number that is whole to within a thousandth
                return table.m_locale.toString(df, 'f', std::fabs(df - std::trunc(df)) > 0.001 ? 2 : 0);
            case PlainHundredths:
                return QString::number(df, 'f', 2);
            default:
                return table.m_locale.toString(df, 'f', nForm);
        }
    }
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
    const Peak3D& peak = m_listPeak.at(nRow);
    const Cells::Column& column = Cells::aColumn[nColumn];
    if (nColumn < g_nFirstIntegratedColumn) {  // these have a text in each row, also for "not a number"
        return Cells::formatted(*this, column.nForm, column.fnNumber(*this, peak));
    }
    if (column.nForm == Words) {
        const IntegratedPeak* pPeak = Cells::integrated(*this, peak);
        return pPeak ? pPeak->strFlags : QString();
    }
    const double df = column.fnNumber(*this, peak);
    return std::isnan(df) ? QString() : Cells::formatted(*this, column.nForm, df);
}

double CPeakTable::number(int nRow, int nColumn) const
{
    return Cells::aColumn[nColumn].fnNumber(*this, m_listPeak.at(nRow));
}

bool CPeakTable::isText(int nColumn)
{
    return Cells::aColumn[nColumn].nForm == Words;
}

int CPeakTable::decimals(int nColumn)
{
    const int nForm = Cells::aColumn[nColumn].nForm;
    return nForm >= 0                                                               ? nForm
           : nForm == SixDigits || nForm == FrameNumber || nForm == PlainHundredths ? 2
                                                                                    : 0;
}

QStringList CPeakTable::longestTexts(int nColumn, int nMaxRows) const
{
    const Cells::Column& column = Cells::aColumn[nColumn];
    const int nStep = 1 + (rowCount() - 1) / std::max(1, nMaxRows);
    // The longest text is usually that of the least or the greatest number. It need not be where words or
    // significant digits are shown, so all these texts are looked at. Texts that differ in digits alone count
    // once.
    if (column.nForm == Words || column.nForm == SixDigits) {
        QSet<QString> setPattern;
        for (int nRow = 0; nRow < rowCount(); nRow += nStep) {
            QString strText = text(nRow, nColumn);
            for (QChar& ch : strText) {
                ch = ch.isDigit() ? QLatin1Char('0') : ch;
            }
            setPattern.insert(strText);
        }
        return setPattern.values();
    }
    double dfLeast = g_dfNothing, dfGreatest = g_dfNothing;
    bool bNothing = false;
    for (int nRow = 0; nRow < rowCount(); nRow += nStep) {
        const double df = number(nRow, nColumn);
        if (std::isnan(df)) {
            bNothing = true;
            continue;
        }
        dfLeast = df >= dfLeast ? dfLeast : df;  // takes the first number, too: no comparison with NaN holds
        dfGreatest = df <= dfGreatest ? dfGreatest : df;
    }
    QStringList listText;
    if (bNothing && column.nForm == Index) {
        listText.append(QStringLiteral("*"));
    }
    if (!std::isnan(dfLeast)) {
        // The numbers between may have decimals where the extreme ones are whole.
        const int nForm = column.nForm == FrameNumber ? 2 : column.nForm;
        listText.append(Cells::formatted(*this, nForm, dfLeast));
        listText.append(Cells::formatted(*this, nForm, dfGreatest));
    }
    return listText;
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
