#include "dataset/seriesreading.h"

#include "imagefiles/frameformats.h"
#include "records/beamtiltbreak.h"
#include "records/reason.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

double meanOf(const QList<double>& list, int nFirst, int nCount)
{
    double dfSum = 0;
    for (int n = nFirst; n < nFirst + nCount; ++n) {
        dfSum += list.value(n);
    }
    return dfSum / nCount;
}

void tellFrames(const SeriesChoice& choice, int nFrames, int nTaken, int nSums, CRunReport& report)
{
    if (nTaken < nFrames) {
        report.addMessage(QStringLiteral("%L1 of %L2 frames are used (%3).")
                              .arg(nTaken)
                              .arg(nFrames)
                              .arg(choiceText(choice)));
    }
    const int nLeft = nTaken - nSums * choice.nSum;
    if (choice.nSum > 1) {
        report.addMessage(
            QStringLiteral("%L1 frames of the sums of %2 neighbours.").arg(nSums).arg(choice.nSum) +
            (nLeft > 0
                 ? QStringLiteral(" Left over before a gap or at the end, and not used: %L1.").arg(nLeft)
                 : QString()));
    }
}

void tellBins(int nBin, const QSize& size, CRunReport& report)
{
    if (nBin == 1 || !size.isValid()) {
        return;
    }
    QString strText = QStringLiteral("%L1 × %L2 pixels are binned to %L3 × %L4.")
                          .arg(size.width())
                          .arg(size.height())
                          .arg(size.width() / nBin)
                          .arg(size.height() / nBin);
    if (size.width() % nBin != 0 || size.height() % nBin != 0) {
        strText += QStringLiteral(" %1 columns on the right and %2 rows at the bottom are left over.")
                       .arg(size.width() % nBin)
                       .arg(size.height() % nBin);
    }
    report.addMessage(strText);
}

/// Whether a polygon is an upright rectangle.
bool isUpright(const QPolygonF& polygon)
{
    const QRectF rc = polygon.boundingRect();
    const int nCorners = polygon.isClosed() ? polygon.size() - 1 : polygon.size();
    if (nCorners != 4) {
        return false;
    }
    for (int n = 0; n < 4; ++n) {
        const QPointF& pt = polygon[n];
        const QPointF& ptNext = polygon[(n + 1) % 4];
        const bool bCorner = (pt.x() == rc.left() || pt.x() == rc.right()) &&
                             (pt.y() == rc.top() || pt.y() == rc.bottom());
        if (!bCorner || ((pt.x() == ptNext.x()) == (pt.y() == ptNext.y()))) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool takeSeriesChoice(DataSet& data, const SeriesChoice& choice, CRunReport& report, QString* pstrReason)
{
    if (choice.isPlain()) {
        data.m_reading = {};
        return true;
    }
    const QStringList listFile = data.m_listFrameFile;
    const QList<int> listTaken = takenFrames(choice, listFile.size(), pstrReason);
    if (listTaken.isEmpty()) {
        return false;
    }
    const QList<int> listFirst = sumStarts(listTaken, choice.nSum);
    if (listFirst.isEmpty()) {
        return giveReason(pstrReason,
                          QStringLiteral("there are no %1 successive frames among the %2 that are used")
                              .arg(choice.nSum)
                              .arg(listTaken.size()));
    }
    const FrameHeader header = frameHeader(listFile[listFirst.first()]);
    if (header.size.isValid() && std::min(header.size.width(), header.size.height()) < choice.nBin) {
        return giveReason(pstrReason, QStringLiteral("frames of %1 × %2 pixels cannot be binned %3 × %3")
                                          .arg(header.size.width())
                                          .arg(header.size.height())
                                          .arg(choice.nBin));
    }
    SeriesReading reading;
    reading.choice = choice;
    reading.listFile = listFile;
    reading.tilts = {data.m_listStageTilt, data.m_listBeamTilt, data.m_listOverallTilt};
    reading.listFirst = listFirst;
    const bool bSaturation = header.saturation.isTold() && header.saturation.df > 0;
    reading.dfSaturation = bSaturation ? header.saturation.df : 0;
    data.m_listFrameFile.clear();
    FrameTilts tilts;
    for (const int nFirst : listFirst) {
        data.m_listFrameFile.append(listFile[nFirst]);
        tilts.append(meanOf(reading.tilts.listStage, nFirst, choice.nSum),
                     meanOf(reading.tilts.listBeam, nFirst, choice.nSum),
                     meanOf(reading.tilts.listOverall, nFirst, choice.nSum));
    }
    data.m_listStageTilt = tilts.listStage;
    data.m_listBeamTilt = tilts.listBeam;
    data.m_listOverallTilt = tilts.listOverall;
    data.m_listBeamTiltBreak = beamTiltBreaks(data.m_listBeamTilt);
    data.m_dfPixelSize *= choice.nBin;
    data.m_distortion.dfRadius /= choice.nBin;
    if (choice.nSum > 1 && data.m_rotation.kind == RotationKind::Stepped) {
        data.m_rotation.kind = RotationKind::Continuous;
    }
    data.m_reading = reading;
    tellFrames(choice, listFile.size(), listTaken.size(), listFirst.size(), report);
    tellBins(choice.nBin, header.size, report);
    return true;
}

SourceSeries sourceSeries(const SeriesData& data)
{
    SourceSeries source = {data.m_listFrameFile,
                           {data.m_listStageTilt, data.m_listBeamTilt, data.m_listOverallTilt},
                           data.m_dfPixelSize,
                           data.m_distortion,
                           {}};
    const SeriesReading& reading = data.m_reading;
    if (!reading.isPlain()) {
        source.listFrame = reading.listFile;
        source.tilts = reading.tilts;
        source.dfPixelSize /= reading.choice.nBin;
        source.distortion.dfRadius *= reading.choice.nBin;
    }
    int nFrame = 0;
    for (int n = 0; n < source.listFrame.size(); ++n) {
        if (reading.isPlain()) {
            nFrame = n;
        } else if (nFrame + 1 < reading.listFirst.size() && n >= reading.listFirst[nFrame + 1]) {
            ++nFrame;
        }
        source.listFrameOf.append(nFrame);
    }
    return source;
}

double placeInBins(double dfPlace, int nBin)
{
    return (dfPlace + 0.5) / nBin - 0.5;
}

double placeInFile(double dfPlace, int nBin)
{
    return (dfPlace + 0.5) * nBin - 0.5;
}

MaskData maskInBins(const MaskData& mask, int nBin)
{
    MaskData result = mask;
    if (nBin == 1) {
        return result;
    }
    for (QPolygonF& polygon : result.listPolygon) {
        const bool bUpright = isUpright(polygon);
        const QPointF ptMiddle = polygon.boundingRect().center();
        for (QPointF& pt : polygon) {
            const auto place = [&](double dfPlace, double dfMiddle) {
                const double df = placeInBins(dfPlace, nBin);
                if (!bUpright) {
                    return df;
                }
                return (dfPlace < dfMiddle ? std::floor(df + 0.5) : std::ceil(df + 0.5)) - 0.5;
            };
            pt = {place(pt.x(), ptMiddle.x()), place(pt.y(), ptMiddle.y())};
        }
    }
    return result;
}

MaskData maskInFile(const MaskData& mask, int nBin)
{
    MaskData result = mask;
    if (nBin == 1) {
        return result;
    }
    for (QPolygonF& polygon : result.listPolygon) {
        for (QPointF& pt : polygon) {
            pt = {placeInFile(pt.x(), nBin), placeInFile(pt.y(), nBin)};
        }
    }
    return result;
}

}  // namespace tessera
