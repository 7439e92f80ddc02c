#include "workstate/keptwork.h"

#include "dataset/displayname.h"
#include "imagefiles/framename.h"
#include "workstate/workstatefile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessera {

namespace {

// The head is a line and a JSON text; the state follows. The line has four words: "TesseraKeptWork", the
// version of the head, MD5 of the text in hexadecimal, and the length of the text in bytes.
constexpr int g_nHeadVersion = 1;
// A damaged file shall not cost more time or memory than this. Both in bytes, and far more than a head has.
constexpr int g_nLongestLine = 100;
constexpr int g_nLongestText = 1 << 16;

/// What the file begins with.
QByteArray magicWord()
{
    return QByteArrayLiteral("TesseraKeptWork ");
}

/// MD5 in hexadecimal.
QByteArray sumOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex();
}

/// MD5 of a file in hexadecimal; empty if the file cannot be opened.
QByteArray sumOfFile(const QString& strFile)
{
    QFile file(strFile);
    return !strFile.isEmpty() && file.open(QIODevice::ReadOnly) ? sumOf(file.readAll()) : QByteArray();
}

/// The JSON text of the head.
QByteArray headText(const KeptWork& work)
{
    const QJsonObject object{{QStringLiteral("name"), work.strName},
                             {QStringLiteral("project"), work.strProject},
                             {QStringLiteral("projectSum"), QString::fromLatin1(work.bytesProjectSum)},
                             {QStringLiteral("when"), work.when.toUTC().toString(Qt::ISODateWithMs)},
                             {QStringLiteral("step"), work.strStep}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// Returns a condition and sets the reason for it, if that is wanted.
KeptWorkHead withReason(KeptWorkHead head, QString* pstrReason, const QString& strReason)
{
    if (pstrReason) {
        *pstrReason = strReason;
    }
    return head;
}

/// Reads the head of an open file; the file is then positioned at the state.
/// @param work  left as it was if the head is not good
KeptWorkHead readHead(QFile& file, KeptWork& work, QString* pstrReason)
{
    const QString strName = file.fileName();
    const QByteArray bytesLine = file.readLine(g_nLongestLine);
    const QList<QByteArray> listWord = bytesLine.trimmed().split(' ');
    if (!bytesLine.startsWith(magicWord()) || !bytesLine.endsWith('\n') || listWord.size() < 2) {
        return withReason(KeptWorkHead::Damaged, pstrReason, strName + QStringLiteral(": damaged"));
    }
    if (listWord[1] != QByteArray::number(g_nHeadVersion)) {
        return withReason(KeptWorkHead::Unreadable, pstrReason,
                          strName + QStringLiteral(": of another version of the program"));
    }
    const int nText = listWord.value(3).toInt();  // 0 if the word is missing or no number
    if (listWord.size() != 4 || nText < 1 || nText > g_nLongestText) {
        return withReason(KeptWorkHead::Damaged, pstrReason, strName + QStringLiteral(": damaged"));
    }
    const QByteArray bytesText = file.read(nText);
    if (sumOf(bytesText) != listWord[2]) {
        return withReason(KeptWorkHead::Damaged, pstrReason, strName + QStringLiteral(": damaged"));
    }
    const QJsonObject object = QJsonDocument::fromJson(bytesText).object();
    work.strFile = strName;
    work.strName = object[QStringLiteral("name")].toString();
    work.strProject = object[QStringLiteral("project")].toString();
    work.bytesProjectSum = object[QStringLiteral("projectSum")].toString().toLatin1();
    work.when = QDateTime::fromString(object[QStringLiteral("when")].toString(), Qt::ISODateWithMs);
    work.strStep = object[QStringLiteral("step")].toString();
    return KeptWorkHead::Good;
}

/// The project file of a series, whose suffix may be in any case, as it is opened so.
QString projectFileOf(const SeriesData& series)
{
    const QDir dir(series.m_strProjectDir);
    const QString strUsual = series.m_strProjectName + QStringLiteral(".ed3d");
    if (!dir.exists(strUsual)) {
        for (const QFileInfo& info : dir.entryInfoList(QDir::Files)) {
            if (info.completeBaseName() == series.m_strProjectName &&
                info.suffix().compare(QLatin1String("ed3d"), Qt::CaseInsensitive) == 0) {
                return info.filePath();
            }
        }
    }
    return dir.filePath(strUsual);
}

}  // namespace

KeptWork keptWorkOf(const WorkState& state, const QString& strStep, const QDateTime& when)
{
    KeptWork work;
    const SeriesData& series = state.series;
    const QString strProject = projectFileOf(series);
    // Without a project file the frames were opened as images, and the name of the project is made from them.
    work.bytesProjectSum = sumOfFile(strProject);
    const bool bProject = !work.bytesProjectSum.isEmpty();
    work.strProject = bProject ? strProject : QString();
    work.strName = bProject ? QFileInfo(strProject).fileName() : displayName(series.m_listFrameFile);
    work.when = when.toUTC();
    work.strStep = strStep;
    return work;
}

QByteArray keptWorkBytes(const KeptWork& work, const WorkState& state)
{
    const QByteArray bytesState = workStateBytes(state);
    if (bytesState.isEmpty()) {  // it is too large
        return bytesState;
    }
    const QByteArray bytesText = headText(work);
    return magicWord() + QByteArray::number(g_nHeadVersion) + ' ' + sumOf(bytesText) + ' ' +
           QByteArray::number(bytesText.size()) + '\n' + bytesText + bytesState;
}

KeptWorkHead readKeptWork(const QString& strFile, KeptWork& work, QString* pstrReason)
{
    QFile file(strFile);
    if (!file.open(QIODevice::ReadOnly)) {
        return withReason(KeptWorkHead::Unreadable, pstrReason,
                          strFile + QStringLiteral(": ") + file.errorString());
    }
    return readHead(file, work, pstrReason);
}

std::optional<WorkState> readKeptState(const KeptWork& work, QString* pstrReason)
{
    QFile file(work.strFile);
    if (!file.open(QIODevice::ReadOnly)) {
        withReason(KeptWorkHead::Unreadable, pstrReason,
                   work.strFile + QStringLiteral(": ") + file.errorString());
        return {};
    }
    KeptWork headAgain;  // read only to get to the state behind it
    if (readHead(file, headAgain, pstrReason) != KeptWorkHead::Good) {
        return {};
    }
    QString strReason;
    std::optional<WorkState> state = workStateFromBytes(file.readAll(), &strReason);
    if (!state) {
        withReason(KeptWorkHead::Damaged, pstrReason, work.strFile + QStringLiteral(": ") + strReason);
    }
    return state;
}

QString interruptedText(const KeptWork& work, const QDate& today, const QLocale& locale)
{
    const QDateTime when = work.when.toLocalTime();
    QString strWhen = locale.toString(when.time(), QLocale::ShortFormat);
    if (when.date() != today) {
        strWhen = locale.toString(when.date(), QLocale::LongFormat) + QStringLiteral(", ") + strWhen;
    }
    return QStringLiteral("The work on %1 of %2 was interrupted after \"%3\".")
        .arg(work.strName, strWhen, work.strStep);
}

QStringList changesSince(const KeptWork& work, const WorkState& state)
{
    QStringList listLine;
    if (!work.strProject.isEmpty()) {
        const QByteArray bytesSum = sumOfFile(work.strProject);
        if (bytesSum.isEmpty()) {
            listLine.append(
                QStringLiteral("%1 is no longer there. The work is shown as it was.").arg(work.strProject));
        } else if (bytesSum != work.bytesProjectSum) {
            listLine.append(QStringLiteral("%1 has been changed since. The work is shown as it was; open the "
                                           "project to see its present content.")
                                .arg(work.strProject));
        }
    }
    QStringList listFile;
    for (const QString& strFrame : state.series.allFiles()) {
        listFile.append(frameName(strFrame).strFile);
    }
    listFile.removeDuplicates();  // frames of one stack have the same file
    QStringList listMissing;
    for (const QString& strFile : qAsConst(listFile)) {
        if (!QFileInfo::exists(strFile)) {
            listMissing.append(strFile);
        }
    }
    if (!listMissing.isEmpty()) {
        listLine.append(QStringLiteral("%1 of the frames' files are no longer there, the first is %2.")
                            .arg(listMissing.size())
                            .arg(listMissing.first()));
    }
    return listLine;
}

}  // namespace tessera
