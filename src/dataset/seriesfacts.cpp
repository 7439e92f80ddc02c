#include "dataset/seriesfacts.h"

#include "crystal/electronwavelength.h"
#include "dataset/newproject.h"
#include "dataset/sidetexts.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// Number of headers that are read if the frames have no tilt: enough to notice frames of several sessions.
constexpr int g_nMaxLookedAt = 200;
// Relative. A wavelength with four decimals is up to 0.2 per cent off.
constexpr double g_dfSameWavelength = 0.005;
constexpr double g_dfSamePixelSize = 0.02;  // relative; calibrations of one camera length differ by this
constexpr double g_dfSameNumber = 1e-3;     // relative, between two frames

/// A number of a header, its name, and whether it may change from frame to frame.
struct ComparedRow {
    ToldNumber FrameHeader::*pNumber;
    const char* pszName;
    const char* pszUnit;
};

const ComparedRow g_aCompared[] = {{&FrameHeader::kilovolts, "The voltage", "kV"},
                                   {&FrameHeader::wavelength, "The wavelength", "Å"},
                                   {&FrameHeader::pixelSize, "The pixel size", "Å⁻¹"},
                                   {&FrameHeader::cameraLength, "The camera length", "mm"},
                                   {&FrameHeader::detectorPixel, "The detector pixel", "µm"},
                                   {&FrameHeader::exposure, "The exposure", "s"},
                                   {&FrameHeader::rotationAxis, "The rotation axis", "degrees"}};

QString nameOf(const QString& strFrame)
{
    return QFileInfo(strFrame).fileName();
}

/// The frames whose headers are read.
QList<int> framesLookedAt(const QStringList& listFrame, const FrameHeader& first, const FrameHeader& last)
{
    const auto tells = [](const FrameHeader& header) {
        return header.tilt.isTold() || header.tiltStart.isTold() || header.tiltStep.isTold();
    };
    const int nFrames = listFrame.size();
    const bool bAll = nFrames <= g_nMaxLookedAt || tells(first) || tells(last);
    const int nLooks = bAll ? nFrames : g_nMaxLookedAt;
    QList<int> listLook;
    for (int i = 0; i < nLooks; ++i) {
        listLook.append(bAll ? i : int(qint64(i) * (nFrames - 1) / (nLooks - 1)));
    }
    return listLook;
}

bool isOther(const ToldNumber& number, const ToldNumber& first)
{
    return number.isTold() && first.isTold() &&
           std::abs(number.df - first.df) > g_dfSameNumber * std::abs(first.df);
}

/// Finds numbers that differ from those of the first frame although they should not.
void compareFrames(const std::vector<FrameHeader>& vecHeader, const QStringList& listName,
                   QStringList& listDoubt)
{
    const FrameHeader& first = vecHeader.front();
    for (const ComparedRow& row : g_aCompared) {
        const ToldNumber& number = first.*row.pNumber;
        for (size_t i = 1; i < vecHeader.size(); ++i) {
            const ToldNumber& other = vecHeader[i].*row.pNumber;
            if (isOther(other, number)) {
                listDoubt.append(QStringLiteral("%1 is %2 %3 on the first frame, but %4 %3 on %5.")
                                     .arg(QLatin1String(row.pszName), QString::number(number.df, 'g', 6),
                                          QString::fromUtf8(row.pszUnit), QString::number(other.df, 'g', 6),
                                          listName.value(int(i))));
                break;
            }
        }
    }
    for (size_t i = 1; i < vecHeader.size(); ++i) {
        const QSize size = vecHeader[i].size;
        if (size.isValid() && first.size.isValid() && size != first.size) {
            listDoubt.append(QStringLiteral("%1 has %2 × %3 pixels, but the first frame has %4 × %5.")
                                 .arg(listName.value(int(i)))
                                 .arg(size.width())
                                 .arg(size.height())
                                 .arg(first.size.width())
                                 .arg(first.size.height()));
            break;
        }
    }
}

void addOnce(QStringList& listDoubt, const QStringList& listMore)
{
    for (const QString& strDoubt : listMore) {
        if (!listDoubt.contains(strDoubt)) {
            listDoubt.append(strDoubt);
        }
    }
}

void takeIfLacking(ToldNumber& number, const ToldNumber& other)
{
    if (!number.isTold()) {
        number = other;
    }
}

void takeHeader(SeriesFacts& facts, const FrameHeader& header)
{
    takeIfLacking(facts.kilovolts, header.kilovolts);
    takeIfLacking(facts.wavelength, header.wavelength);
    takeIfLacking(facts.pixelSize, header.pixelSize);
    takeIfLacking(facts.cameraLength, header.cameraLength);
    takeIfLacking(facts.detectorPixel, header.detectorPixel);
    takeIfLacking(facts.rotationAxis, header.rotationAxis);
    takeIfLacking(facts.exposure, header.exposure);
    takeIfLacking(facts.saturation, header.saturation);
}

/// Takes the tilts if a text has the step, and the start or the end or none of them.
void takeStep(SeriesFacts& facts, const SideTexts& texts)
{
    const ToldNumber& step = texts.tiltStep;
    const ToldNumber& bound = texts.tiltStart.isTold() ? texts.tiltStart : texts.tiltEnd;
    const double dfWay = facts.listFrame.size() * step.df;
    const double dfStart = texts.tiltStart.isTold() ? bound.df : bound.isTold() ? bound.df - dfWay : 0;
    facts.tilts = tiltsOfRange(facts.listFrame.size(), dfStart, dfStart + dfWay, NAN, facts.listDoubt);
    facts.tilts.strSource = step.strSource;
    if (bound.isTold()) {
        facts.tilts.strSource = QStringLiteral("%1, %2").arg(bound.strSource, step.strSource);
    } else {
        facts.listDoubt.append(
            QStringLiteral("%1: neither start nor end is given; the first frame is assumed to start at 0°.")
                .arg(step.strSource));
    }
    if (step.df > 0) {  // programs that write a sign write it for decreasing tilts
        facts.listDoubt.append(
            QStringLiteral("The sign of %1 is not reliable: the tilt is assumed to increase.")
                .arg(step.strSource));
    }
}

/// Takes from the texts what no header has.
void takeTexts(SeriesFacts& facts, const SideTexts& texts, const QStringList& listName)
{
    const int nFrames = facts.listFrame.size();
    takeIfLacking(facts.kilovolts, texts.kilovolts);
    if (!facts.kilovolts.isTold()) {
        takeIfLacking(facts.wavelength, texts.wavelength);
    }
    takeIfLacking(facts.pixelSize, texts.pixelSize);
    takeIfLacking(facts.cameraLength, texts.cameraLength);
    takeIfLacking(facts.detectorPixel, texts.detectorPixel);
    takeIfLacking(facts.rotationAxis, texts.rotationAxis);
    takeIfLacking(facts.exposure, texts.exposure);
    if (facts.tilts.isTold()) {
        return;
    }
    QList<double> listTilt;
    for (const QString& strName : listName) {
        const auto it = texts.hashTilt.find(strName);
        const auto itStack = it != texts.hashTilt.end() ? it : texts.hashTilt.find(strName + "#1");
        if (itStack != texts.hashTilt.end()) {
            listTilt.append(itStack.value());
        }
    }
    if (listTilt.size() == nFrames && areEvenTilts(listTilt)) {
        facts.tilts = {listTilt, texts.strTiltSource};
    } else if (listTilt.size() == nFrames) {
        facts.tilts = {listTilt, texts.strTiltSource};
        doubtTilts(listTilt, listName, facts.listDoubt);
    } else if (texts.tiltStart.isTold() && texts.tiltEnd.isTold()) {
        facts.tilts = tiltsOfRange(nFrames, texts.tiltStart.df, texts.tiltEnd.df, texts.tiltStep.df,
                                   facts.listDoubt);
        facts.tilts.strSource = QStringLiteral("%1 to %2, the middle of each frame")
                                    .arg(texts.tiltStart.strSource, texts.tiltEnd.strSource);
    } else if (texts.tiltStep.isTold() && texts.tiltStep.df != 0) {
        takeStep(facts, texts);
    }
}

void settleWavelength(SeriesFacts& facts)
{
    ToldNumber& wavelength = facts.wavelength;
    if (wavelength.isTold() && !isElectronWavelength(wavelength.df)) {
        facts.listDoubt.append(
            QStringLiteral(
                "%1 is %2 Å, which is not a wavelength of electrons in a microscope: it is not used.")
                .arg(wavelength.strSource)
                .arg(wavelength.df));
        wavelength = {};
    }
    const double dfOfVoltage = facts.kilovolts.isTold() ? electronWavelength(facts.kilovolts.df) : 0;
    if (!isElectronWavelength(dfOfVoltage)) {
        return;
    }
    const bool bSame = wavelength.isTold() &&
                       std::abs(wavelength.df - dfOfVoltage) <= g_dfSameWavelength * dfOfVoltage;
    if (wavelength.isTold() && !bSame) {
        facts.listDoubt.append(
            QStringLiteral("%1 is %2 Å, but %3 of %4 kV would be %5 Å: the former is used.")
                .arg(wavelength.strSource, QString::number(wavelength.df), facts.kilovolts.strSource,
                     QString::number(facts.kilovolts.df), QString::number(dfOfVoltage, 'g', 5)));
        return;
    }
    facts.bOfVoltage = true;
    wavelength = {
        dfOfVoltage,
        QStringLiteral("%1, %2 kV").arg(facts.kilovolts.strSource, QString::number(facts.kilovolts.df))};
}

/// Determines the pixel size.
/// @param dfGiven  Å, a wavelength to be used instead of the one found; NaN: none
void settlePixelSize(SeriesFacts& facts, double dfGiven)
{
    const double dfWavelength = std::isfinite(dfGiven) ? dfGiven : facts.wavelength.df;
    const double dfFollows = pixelSizeFromCameraLength(facts.cameraLength.df, facts.detectorPixel.df,
                                                       dfWavelength);
    ToldNumber& pixelSize = facts.pixelSize;
    if (pixelSize.isTold() && !isPixelSize(pixelSize.df)) {
        facts.listDoubt.append(
            QStringLiteral("%1 is %2 Å⁻¹, which cannot be the size of one pixel: it is not used.")
                .arg(pixelSize.strSource)
                .arg(pixelSize.df));
        pixelSize = {};
    }
    if (!isPixelSize(dfFollows)) {
        return;
    }
    QString strFollows = QStringLiteral("%1 of %2 mm and %3 of %4 µm")
                             .arg(facts.cameraLength.strSource, QString::number(facts.cameraLength.df),
                                  facts.detectorPixel.strSource, QString::number(facts.detectorPixel.df));
    if (std::isfinite(dfGiven)) {
        strFollows += QStringLiteral(" at %1 Å").arg(QString::number(dfGiven, 'g', 6));
    }
    if (!pixelSize.isTold()) {
        pixelSize = {dfFollows, strFollows};
        facts.bOfCameraLength = true;
    } else if (std::abs(pixelSize.df - dfFollows) > g_dfSamePixelSize * dfFollows) {
        facts.listDoubt.append(QStringLiteral("%1 is %2 Å⁻¹, but %3 give %4 Å⁻¹: the former is used.")
                                   .arg(pixelSize.strSource, QString::number(pixelSize.df, 'g', 5),
                                        strFollows, QString::number(dfFollows, 'g', 5)));
    }
}

/// The beginning of a file name, before the number at its end.
QString nameStem(const QString& strFrame)
{
    static const QRegularExpression s_reNumber(QStringLiteral("[-+]?[0-9.]+$"));
    return QFileInfo(frameName(strFrame).strFile).completeBaseName().remove(s_reNumber);
}

/// Adds a doubt if the names are those of two series: more than one beginning, each for several frames.
void doubtNames(const QStringList& listFrame, QStringList& listDoubt)
{
    QStringList listStem;
    QHash<QString, int> hashFrames;
    for (const QString& strFrame : listFrame) {
        const QString strStem = nameStem(strFrame);
        if (hashFrames[strStem]++ == 0) {
            listStem.append(strStem);
        }
    }
    const bool bSeveral = std::all_of(hashFrames.begin(), hashFrames.end(), [](int n) { return n > 1; });
    if (listStem.size() > 1 && bSeveral) {
        listDoubt.append(QStringLiteral("The names of %1 frames begin with \"%2\" and those of %3 with "
                                        "\"%4\": are these two series?")
                             .arg(hashFrames[listStem[0]])
                             .arg(listStem[0])
                             .arg(hashFrames[listStem[1]])
                             .arg(listStem[1]));
    }
}

}  // namespace

bool isDoubtful(const ToldNumber& told, const QStringList& listDoubt)
{
    // A source can have several keys, each after the name of its file or record.
    static const QRegularExpression s_reBetween(
        QStringLiteral(" \\+ | / 2|, | of [-+0-9.e]+ \\S+| and | from frame to frame"));
    for (const QString& strPart : told.strSource.split(s_reBetween, Qt::SkipEmptyParts)) {
        QString strKey = strPart.mid(strPart.lastIndexOf(QLatin1String(": ")) + 1).trimmed();
        if (strKey.endsWith(QLatin1String(" X"))) {  // the doubt is about both directions
            strKey.chop(2);
        }
        const QRegularExpression reKey(
            QStringLiteral("(?<!\\w)%1(?!\\w)").arg(QRegularExpression::escape(strKey)),
            QRegularExpression::CaseInsensitiveOption);
        const bool bNamed = std::any_of(listDoubt.begin(), listDoubt.end(), [&](const QString& strDoubt) {
            return reKey.match(strDoubt).hasMatch();
        });
        if (!strKey.isEmpty() && bNamed) {
            return true;
        }
    }
    return false;
}

void followWavelength(SeriesFacts& facts, double dfWavelength)
{
    if (!facts.pixelSize.isTold()) {
        settlePixelSize(facts, dfWavelength);
    }
}

SeriesFacts factsOfSeries(const QStringList& listFrame, const FnFactsGoOn& fnGoOn, double dfWavelength)
{
    SeriesFacts facts;
    facts.listFrame = listFrame;
    if (listFrame.isEmpty()) {
        return facts;
    }
    const FrameHeader first = frameHeader(listFrame.first());
    const FrameHeader last = listFrame.size() > 1 ? frameHeader(listFrame.last()) : first;
    std::vector<FrameHeader> vecHeader;
    QStringList listLooked, listName;
    const QList<int> listLook = framesLookedAt(listFrame, first, last);
    for (const int nFrame : listLook) {
        if (fnGoOn && !fnGoOn(int(vecHeader.size()))) {
            facts.bWhole = false;
            return facts;
        }
        const bool bEnd = nFrame == 0 || nFrame == listFrame.size() - 1;
        vecHeader.push_back(bEnd ? (nFrame == 0 ? first : last) : frameHeader(listFrame[nFrame]));
        listLooked.append(nameOf(listFrame[nFrame]));
    }
    for (const QString& strFrame : listFrame) {
        listName.append(nameOf(strFrame));
    }
    facts.strFormat = frameFormatOf(listFrame.first()).strName;
    facts.size = first.size;
    facts.strDetector = first.strDetector;
    facts.beamX = first.beamX;
    facts.beamY = first.beamY;
    for (const FrameHeader& header : vecHeader) {  // of the first frame that has the number
        takeHeader(facts, header);
        addOnce(facts.listDoubt, header.listDoubt);
    }
    doubtNames(listFrame, facts.listDoubt);
    compareFrames(vecHeader, listLooked, facts.listDoubt);
    if (listLook.size() == listFrame.size()) {
        facts.tilts = tiltsOfHeaders(vecHeader, listLooked, facts.listDoubt);
    }
    const SideTexts texts = readSideTexts(listFrame);
    takeTexts(facts, texts, listName);
    addOnce(facts.listDoubt, texts.listDoubt);
    settleWavelength(facts);
    settlePixelSize(facts, dfWavelength);
    return facts;
}

}  // namespace tessera
