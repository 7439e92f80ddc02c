#include "exchange/exchangeframes.h"

#include "exchange/exchangegeometry.h"
#include "exchange/untrustedareas.h"
#include "frames/firstimage.h"
#include "frames/frametargets.h"
#include "frames/smvexport.h"
#include "frames/wholepixels.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"
#include "integration/pixelmask.h"
#include "records/runends.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Pixels, the greatest distance of a frame's beam from the middle of all.
double beamRange(const SeriesGeometry& series)
{
    FramePlace middle;
    for (const FramePlace& beam : series.listBeam) {
        middle.dfX += beam.dfX / double(series.listBeam.size());
        middle.dfY += beam.dfY / double(series.listBeam.size());
    }
    double dfWorst = 0;
    for (const FramePlace& beam : series.listBeam) {
        dfWorst = std::max(dfWorst, std::hypot(beam.dfX - middle.dfX, beam.dfY - middle.dfY));
    }
    return dfWorst;
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

/// The numbering of names that count the turns.
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

ExchangeFrames chooseExchangeFrames(const ExchangeSource& source)
{
    const DataSet& dataSet = *source.pData;
    const QStringList& listFrame = dataSet.m_listFrameFile;
    const std::vector<double> listAngle = anglesOf(source.series);
    const double dfStill = 1;  // pixels
    ExchangeFrames frames;
    if (beamRange(source.series) <= dfStill && areSmv(listFrame)) {
        if (const auto numbering = countingTurns(namesOf(listFrame), listAngle)) {
            frames.strFolder = QFileInfo(listFrame.first()).absolutePath();
            frames.numbering = *numbering;
            frames.bOriginal = true;
            return frames;
        }
    }
    for (const QPointF& ptShift : dataSet.m_listShift) {
        frames.listMoved.push_back({-double(wholePixels(ptShift.x())), -double(wholePixels(ptShift.y()))});
    }
    QStringList listTarget;
    for (const QString& strFrame : listFrame) {
        listTarget.append(smvImageFile(source.strFolder, strFrame));
    }
    const auto numbering = countingTurns(namesOf(listTarget), listAngle);
    if (numbering && frameAmongTargets(listTarget, listFrame).isEmpty()) {
        frames.strFolder = source.strFolder;
        frames.numbering = *numbering;
    } else {
        frames.strFolder = source.strFolder + QLatin1Char('/') + plainName(dataSet) + QStringLiteral("_smv");
        frames.numbering = numberingOfAngles(listAngle);
        frames.numbering.strSuffix = QStringLiteral(".img");
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
    return exportSMVImages(
        *source.pData, frames.strFolder, [&](const QString& strFrame) { return mapTarget.value(strFrame); },
        report);
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
