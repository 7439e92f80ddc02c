#include "exchange/exchangeframes.h"

#include "exchange/exchangegeometry.h"
#include "exchange/untrustedareas.h"
#include "frames/firstimage.h"
#include "frames/frametargets.h"
#include "frames/smvexport.h"
#include "frames/wholepixels.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"
#include "imagefiles/smvfile.h"
#include "integration/pixelmask.h"
#include "records/runends.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The greatest distance of the beam of a frame from the middle of all, pixels.
double beamRange(const std::vector<FramePlace>& listBeam)
{
    FramePlace middle;
    for (const FramePlace& beam : listBeam) {
        middle.dfX += beam.dfX / double(listBeam.size());
        middle.dfY += beam.dfY / double(listBeam.size());
    }
    double dfWorst = 0;
    for (const FramePlace& beam : listBeam) {
        dfWorst = std::max(dfWorst, std::hypot(beam.dfX - middle.dfX, beam.dfY - middle.dfY));
    }
    return dfWorst;
}

/// The whole pixels by which exportSMVImages() moves each frame.
std::vector<FramePlace> movesOf(const DataSet& dataSet)
{
    std::vector<FramePlace> listMoved;
    for (const QPointF& ptShift : dataSet.m_listShift) {
        listMoved.push_back({-double(wholePixels(ptShift.x())), -double(wholePixels(ptShift.y()))});
    }
    return listMoved;
}

/// Whether moved copies would be no better than the frames themselves. A refined beam may drift where the
/// shifts, by which frames are moved, do not.
bool isStillEnough(const std::vector<FramePlace>& listBeam, const std::vector<FramePlace>& listMoved)
{
    const double dfStill = 1;  // pixels
    std::vector<FramePlace> listAfter = listBeam;
    for (size_t n = 0; n < std::min(listAfter.size(), listMoved.size()); ++n) {
        listAfter[n].dfX += listMoved[n].dfX;
        listAfter[n].dfY += listMoved[n].dfY;
    }
    const double dfRange = beamRange(listBeam);
    return dfRange <= dfStill || dfRange <= beamRange(listAfter);
}

/// Writes a blank image. All its pixels are saturated, so that no program takes them for measured.
bool writeBlank(const QSize& size, const QString& strFile, QString& strReason)
{
    CImgObj<float> image;
    if (!image.Create(size.width(), size.height())) {
        strReason = QStringLiteral("%1: no memory for an image.").arg(strFile);
        return false;
    }
    std::fill(image.Data(), image.Data() + qint64(image.Width()) * image.Height(), 65535.f);
    QString strHeader = smvHeaderTemplate();
    replaceSmvItem(strHeader, QStringLiteral("SIZE1"), image.Width(), 0);
    replaceSmvItem(strHeader, QStringLiteral("SIZE2"), image.Height(), 0);
    replaceSmvItem(strHeader, QStringLiteral("PIXEL_SIZE"), g_dfSmvPixelSize, 6);
    return writeSmvImage(strHeader, image, strFile, &strReason);
}

RunOutcome writeBlanks(const ExchangeSource& source, const ExchangeFrames& frames, CRunReport& report)
{
    const QStringList listFile = frames.blankFiles();
    if (overwritesFrames(listFile, source.pData->allFiles(), report)) {
        return {RunEnd::Refused, report.reason()};
    }
    for (const QString& strFile : listFile) {
        QString strReason;
        if (!report.goOn()) {
            return {RunEnd::Stopped, {}};
        }
        if (!writeBlank(source.series.sizeFrame, strFile, strReason)) {
            return failRun(report, strReason);
        }
    }
    if (!listFile.isEmpty()) {
        report.addMessage(QStringLiteral("Gaps in the numbers are filled by blank images, whose pixels are "
                                         "all marked as saturated: %L1, the first of them %2.")
                              .arg(listFile.size())
                              .arg(QFileInfo(listFile.first()).fileName()),
                          Severity::Milestone);
    }
    return {};
}

bool areSmv(const QStringList& listFrame)
{
    const QString strFolder = QFileInfo(listFrame.first()).absolutePath();
    return std::all_of(listFrame.begin(), listFrame.end(), [&](const QString& strFrame) {
        return !frameName(strFrame).bPart && QFileInfo(strFrame).absolutePath() == strFolder &&
               frameFormatOf(strFrame).strName == QLatin1String("SMV");
    });
}

QStringList namesOf(const QStringList& listFile)
{
    QStringList listName;
    for (const QString& strFile : listFile) {
        listName.append(QFileInfo(strFile).fileName());
    }
    return listName;
}

/// The numbering of names whose numbers are proportional to the angle; nothing for other names.
std::optional<FrameNumbering> countingTurns(const QStringList& listName, const std::vector<double>& listAngle)
{
    std::optional<FrameNumbering> numbering = numberingOfNames(listName);
    if (numbering && !followsNumbers(angleLine(numbering->listNumber, listAngle))) {
        numbering.reset();
    }
    return numbering;
}

}  // namespace

QStringList ExchangeFrames::files() const
{
    QStringList list;
    for (size_t n = 0; n < numbering.listNumber.size(); ++n) {
        list.append(strFolder + QLatin1Char('/') + numbering.name(n));
    }
    return list;
}

QStringList ExchangeFrames::blankFiles() const
{
    QStringList list;
    if (bBlanks) {
        for (const auto& [nFrom, nTo] : numbering.missing()) {
            for (int n = nFrom; n <= nTo; ++n) {
                list.append(strFolder + QLatin1Char('/') + numbering.nameOf(n));
            }
        }
    }
    return list;
}

QString plainName(const DataSet& dataSet)
{
    QString strName = dataSet.m_strProjectName;
    for (QChar& ch : strName) {
        const bool bPlain = ch.unicode() < 128 &&
                            (ch.isLetterOrNumber() || QStringLiteral("._-+").contains(ch));
        if (!bPlain) {
            ch = QLatin1Char('_');
        }
    }
    return strName.isEmpty() ? QStringLiteral("series") : strName;
}

ExchangeFrames chooseExchangeFrames(const ExchangeSource& source, FrameGaps gaps)
{
    const DataSet& dataSet = *source.pData;
    const QStringList& listFrame = dataSet.m_listFrameFile;
    const std::vector<double> listAngle = anglesOf(source.series);
    const auto countsAll = [&](const QStringList& listFile) {
        std::optional<FrameNumbering> numbering = countingTurns(namesOf(listFile), listAngle);
        if (numbering && gaps == FrameGaps::Filled && !numbering->missing().empty()) {
            numbering.reset();
        }
        return numbering;
    };
    ExchangeFrames frames;
    const std::vector<FramePlace> listMoved = movesOf(dataSet);
    const SeriesReading& reading = dataSet.m_reading;
    const bool bAsTheyCome = reading.isPlain() || reading.pixelCount() == 1;
    if (bAsTheyCome && isStillEnough(source.series.listBeam, listMoved) && areSmv(listFrame)) {
        if (const auto numbering = countsAll(listFrame)) {
            frames.strFolder = QFileInfo(listFrame.first()).absolutePath();
            frames.numbering = *numbering;
            frames.bOriginal = true;
            return frames;
        }
    }
    frames.listMoved = listMoved;
    QStringList listTarget;
    for (const QString& strFrame : listFrame) {
        listTarget.append(smvImageFile(source.strFolder, strFrame));
    }
    const auto numbering = countsAll(listTarget);
    // The numbers of summed frames count files, and each file has only a part of the turn of a frame.
    if (numbering && reading.choice.nSum == 1 &&
        frameAmongTargets(listTarget, dataSet.allFiles()).isEmpty()) {
        frames.strFolder = source.strFolder;
        frames.numbering = *numbering;
    } else {
        frames.strFolder = source.strFolder + QLatin1Char('/') + plainName(dataSet) + QStringLiteral("_smv");
        frames.numbering = numberingOfAngles(listAngle);
        frames.numbering.strSuffix = QStringLiteral(".img");
        frames.bBlanks = gaps == FrameGaps::Filled;
    }
    return frames;
}

RunOutcome writeExchangeFrames(const ExchangeSource& source, const ExchangeFrames& frames, CRunReport& report)
{
    if (frames.bOriginal) {
        report.addMessage(QStringLiteral("The frames are SMV files themselves, and are read as they are."));
        return {};
    }
    if (!QDir().mkpath(frames.strFolder)) {
        return failRun(report, QStringLiteral("%1: the folder cannot be made.").arg(frames.strFolder));
    }
    const QStringList listTarget = frames.files();
    QHash<QString, QString> mapTarget;
    for (int n = 0; n < listTarget.size(); ++n) {
        mapTarget.insert(source.pData->m_listFrameFile[n], listTarget[n]);
    }
    const RunOutcome written = exportSMVImages(
        *source.pData, frames.strFolder, [&](const QString& strFrame) { return mapTarget.value(strFrame); },
        report);
    return written.finished() ? writeBlanks(source, frames, report) : written;
}

std::vector<QRect> untrustedOf(const ExchangeSource& source, const ExchangeFrames& frames, CRunReport& report)
{
    const QSize& size = source.series.sizeFrame;
    std::vector<char> listMask = pixelMask(size, source.pData->m_maskPeakHunting, {});
    const auto pImage = firstImage(SeriesSnapshot(*source.pData), 0, {}, report);
    if (pImage && QSize(pImage->Width(), pImage->Height()) == size) {
        for (size_t n = 0; n < listMask.size(); ++n) {
            if (!std::isfinite(pImage->Data()[n])) {
                listMask[n] = 1;
            }
        }
    }
    return rectanglesOfMask(movedMask(listMask, size, frames.listMoved), size);
}

}  // namespace tessera
