#include "dataset/peaklistfile.h"

#include "dataset/fixednumber.h"
#include "dataset/textlines.h"
#include "dataset/textscanner.h"
#include "records/groupmask.h"
#include "records/progress.h"
#include "records/regularfile.h"
#include "records/wholefile.h"

#include <QFile>

#include <cmath>
#include <optional>
#include <vector>

namespace tessera {

namespace {

const qint64 g_nMaxPeakList = 2000000000;  ///< bytes, the most that a QByteArray holds: 28 million peaks

const int g_nMaxPeakLine = 1000;  ///< bytes, far longer than any line with a peak

struct PeakLine {
    int nSerial;
    int nFrame;
    float fX;
    float fY;
    float fI;
    float fI2D;
    quint64 nMask;
};

int countWords(const char* pBegin, const char* pEnd)
{
    int nWord = 0;
    bool bSpace = true;
    for (const char* p = pBegin; p != pEnd; ++p) {
        const bool bNow = CTextScanner::isSpace(*p);
        nWord += bSpace && !bNow;
        bSpace = bNow;
    }
    return nWord;
}

bool scanPeakLine(const char* pBegin, const char* pEnd, PeakLine& line)
{
    const int nWord = countWords(pBegin, pEnd);
    if (nWord < 6 || nWord > 8) {
        return false;
    }
    CTextScanner scanner(pBegin, pEnd);
    // A number must end at white space. Two numbers that touch ("512.0-100000.0") could be scanned one after
    // the other, but the words of the line would then be taken for the wrong columns.
    const auto readInt = [&](int& n) { return scanner.readInt(n) && scanner.atWordEnd(); };
    const auto readFloat = [&](float& f) { return scanner.readFloat(f) && scanner.atWordEnd(); };
    int nIndexOnFrame;
    if (!readInt(line.nSerial) || !readInt(line.nFrame) || !readInt(nIndexOnFrame) || !readFloat(line.fX) ||
        !readFloat(line.fY) || !readFloat(line.fI)) {
        return false;
    }
    line.fI2D = line.fI;
    line.nMask = 0;
    if (nWord == 8 && !readFloat(line.fI2D)) {
        return false;
    }
    if (nWord >= 7) {
        QByteArray strMask;
        if (!scanner.readWord(strMask, 16)) {
            return false;
        }
        line.nMask = maskOfText(strMask);
    }
    return line.nFrame >= 0 && std::isfinite(line.fX) && std::isfinite(line.fY) && std::isfinite(line.fI) &&
           std::isfinite(line.fI2D);
}

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

int countLines(const QByteArray& bytesText)
{
    int nLine = 0;
    bool bEnd = true;
    for (char c : bytesText) {
        const bool bNow = isLineEnd(c);
        nLine += bEnd && !bNow;
        bEnd = bNow;
    }
    return nLine;
}

struct PeakLines {
    std::vector<PeakLine> vec;
    bool bRefused = false;  // a serial number is out of order: none of the lines may be used
};

// Reads the lines up to the end or to the first that is wrong, which a reason then names.
PeakLines readPeakLines(const QByteArray& bytesText, const QString& strFileName, CRunReport& report,
                        QString* pstrReason)
{
    const int nLines = countLines(bytesText);
    PeakLines lines;
    // The shortest line with a peak has 12 characters, so a file cannot have more peaks than that.
    lines.vec.reserve(size_t(qMin(nLines, bytesText.size() / 12)));

    CProgress progress(report, QStringLiteral("%p%"), 1, nLines / 1000);
    int nLine = 0;
    const char* const pEnd = bytesText.constData() + bytesText.size();
    for (const char* p = bytesText.constData(); p != pEnd;) {
        if (isLineEnd(*p)) {
            ++p;
            continue;
        }
        const char* const pLine = p;
        while (p != pEnd && !isLineEnd(*p)) {
            ++p;
        }
        if (++nLine % 1000 == 0) {
            progress.set(nLine / 1000);
            report.goOn();
        }
        if (*pLine == '#') {
            continue;
        }
        PeakLine line;
        if (!scanPeakLine(pLine, p, line)) {
            report.addMessage(QStringLiteral("Wrong file format for peak list: %1").arg(strFileName),
                              Severity::Error);
            giveReason(pstrReason, strFileName,
                       QStringLiteral("non-empty line %1 holds no peak: \"%2\"")
                           .arg(nLine)
                           .arg(QString::fromLatin1(pLine, int(qMin<ptrdiff_t>(p - pLine, 100)))));
            break;
        }
        if (size_t(line.nSerial) != lines.vec.size() + 1) {
            giveReason(pstrReason, strFileName,
                       QStringLiteral("non-empty line %1 has the serial %2 where %3 should be")
                           .arg(nLine)
                           .arg(line.nSerial)
                           .arg(lines.vec.size() + 1));
            lines.bRefused = true;
            break;
        }
        lines.vec.push_back(line);
    }
    return lines;
}

// How many peaks each frame of the data set has; nothing, with a red line and the reason, where a peak lies
// on a frame beyond them.
std::optional<std::vector<int>> countPeaksOfFrames(const std::vector<PeakLine>& vecLine, int nFrames,
                                                   const QString& strFileName, CRunReport& report,
                                                   QString* pstrReason)
{
    std::vector<int> vecCount(nFrames, 0);
    for (const PeakLine& line : vecLine) {
        if (line.nFrame >= nFrames) {
            report.addMessage(QStringLiteral("This peak list file does not match the current ed3d file in "
                                             "frame numbers."),
                              Severity::Error);
            giveReason(pstrReason, strFileName,
                       QStringLiteral("peaks on frame %1, counted from 0, of a data set of %2 frames")
                           .arg(line.nFrame)
                           .arg(nFrames));
            return std::nullopt;
        }
        ++vecCount[line.nFrame];
    }
    return vecCount;
}

// Puts the peaks and their groups into the lists of their frames.
void distributePeaks(const std::vector<PeakLine>& vecLine, const std::vector<int>& vecCount, DataSet& data)
{
    const int nFrames = int(vecCount.size());
    QList<QList<Peak3D>> listPeakFrame;
    QVector<QVector<QList<int>>> vecPeakGroup(nFrames);
    listPeakFrame.reserve(nFrames);
    for (int nFrame = 0; nFrame < nFrames; ++nFrame) {
        listPeakFrame.append(QList<Peak3D>());
        listPeakFrame.last().reserve(vecCount[nFrame]);
        vecPeakGroup[nFrame].reserve(vecCount[nFrame]);
    }
    // Most peaks have the same mask as the peak before them, whose list of groups they can then share.
    quint64 nMask = 0;
    QList<int> listGroup;
    Peak3D peak;
    for (size_t i = 0; i < vecLine.size(); ++i) {
        const PeakLine& line = vecLine[i];
        peak.dfX2D = line.fX;
        peak.dfY2D = line.fY;
        peak.nFrame = line.nFrame;
        peak.dfIPoint = line.fI;
        peak.dfI2D = line.fI2D;
        peak.nID = int(i);
        listPeakFrame[line.nFrame].append(peak);
        if (line.nMask != nMask) {
            nMask = line.nMask;
            listGroup = groupsOfMask(nMask);
        }
        vecPeakGroup[line.nFrame].append(listGroup);
    }
    data.m_listPeakFrame = listPeakFrame;
    data.m_peakMapping.reset();
    data.m_vecPeakGroup = vecPeakGroup;
}

}  // namespace

int readPeakListBytes(DataSet& data, const QByteArray& bytesFile, const QString& strFileName,
                      CRunReport& report, QString* pstrReason)
{
    const PeakLines lines = readPeakLines(withoutByteOrderMark(bytesFile), strFileName, report, pstrReason);
    if (lines.bRefused) {
        return 0;
    }
    if (lines.vec.empty()) {
        if (pstrReason && pstrReason->isEmpty()) {
            giveReason(pstrReason, strFileName, QStringLiteral("no peak"));
        }
        return 0;
    }
    const std::optional<std::vector<int>> vecCount = countPeaksOfFrames(
        lines.vec, data.m_listFrameFile.size(), strFileName, report, pstrReason);
    if (!vecCount) {
        return 0;
    }
    distributePeaks(lines.vec, *vecCount, data);
    return 1;
}

int readPeakList(DataSet& data, const QString& strFileName, CRunReport& report, QString* pstrReason)
{
    if (pstrReason) {
        pstrReason->clear();
    }
    const std::optional<QByteArray> bytesFile = readFileBytes(strFileName, g_nMaxPeakList, pstrReason);
    if (!bytesFile) {
        return 0;
    }
    return readPeakListBytes(data, *bytesFile, strFileName, report, pstrReason);
}

int writePeakList(const DataSet& data, const QString& strFileName, QString* pstrReason)
{
    if (pstrReason) {
        pstrReason->clear();
    }
    CWholeFile file;
    if (!file.open(strFileName)) {
        giveReason(pstrReason, file.reason());
        return 0;
    }
    const QVector<QVector<QList<int>>> vecPeakGroup = groupsMatchPeaks(data.m_vecPeakGroup,
                                                                       data.m_listPeakFrame)
                                                          ? data.m_vecPeakGroup
                                                          : QVector<QVector<QList<int>>>();
    const int nChunk = 1 << 20;
    QByteArray strText;
    strText.reserve(nChunk + 4096);
    int nSerial = 0;
    int nTooWide = 0;
    quint64 nMask = 0;
    QByteArray strMask(17, '0');
    strMask[0] = ' ';
    for (int nFrame = 0; nFrame < data.m_listPeakFrame.size(); ++nFrame) {
        const QList<Peak3D>& listPeak = data.m_listPeakFrame[nFrame];
        for (int nPeak = 0; nPeak < listPeak.size(); ++nPeak) {
            const Peak3D& peak = listPeak[nPeak];
            appendInt(strText, ++nSerial, 8);
            bool bFits = appendInt(strText, nFrame, 5) < 5;
            bFits &= appendInt(strText, nPeak, 6) < 6;
            bFits &= appendFixed(strText, peak.dfX2D, 1, 7) < 7;
            bFits &= appendFixed(strText, peak.dfY2D, 1, 7) < 7;
            bFits &= appendFixed(strText, peak.dfIPoint, 1, 9) < 9;
            bFits &= appendFixed(strText, peak.dfI2D, 1, 12) < 12;
            nTooWide += !bFits;
            const quint64 nPeakMask = peakGroupMask(vecPeakGroup, nFrame, nPeak);
            if (nPeakMask != nMask) {
                nMask = nPeakMask;
                strMask = ' ' + peakGroupMaskText(vecPeakGroup, nFrame, nPeak).toLatin1();
            }
            strText.append(strMask);
            strText.append('\n');
            if (strText.size() >= nChunk) {
                if (!file.write(strText)) {
                    giveReason(pstrReason, file.reason());
                    return 0;
                }
                strText.resize(0);
            }
        }
    }
    file.write(strText);
    if (!file.commit(pstrReason)) {
        return 0;
    }
    if (nTooWide > 0) {
        giveReason(pstrReason, strFileName,
                   QStringLiteral("%1 lines hold a number as wide as its field and cannot be read back")
                       .arg(nTooWide));
    }
    return 1;
}

int countPeaksOfFile(const QString& strFileName)
{
    QFile file(strFileName);
    QString strWhat;
    if (!openRegularFile(file, QIODevice::ReadOnly, strWhat)) {
        return 0;
    }
    int nPeaks = 0;
    while (!file.atEnd()) {
        const QByteArray strLine = file.readLine(g_nMaxPeakLine);
        if (strLine.isEmpty()) {
            break;  // a read error
        }
        nPeaks += !isLineEnd(strLine[0]) && strLine[0] != '#';
    }
    return nPeaks;
}

}  // namespace tessera
