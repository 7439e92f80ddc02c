// MainWindow: parameters of a project that are saved when it is closed, and restored when it is opened.
#include "reciprocal/merging.h"
#include "reciprocal/peakgroups.h"
#include "records/wholefile.h"
#include "window/mainwindow.h"
#include "window/windowreport.h"
#include "workstate/windowfile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <tuple>

namespace tessera {

namespace {

const char g_szKept[] = "windowOfSeries";  // of projects in folders that cannot be written
constexpr int g_nMostKept = 50;            // the one that was changed longest ago goes first

/// Each entry is the project's path, a line feed, and the text of its file.
QString pathOf(const QString& strEntry)
{
    return strEntry.section(QLatin1Char('\n'), 0, 0);
}

void keepInSettings(QSettings& settings, const QString& strProject, const QByteArray& bytes)
{
    QStringList listEntry = settings.value(QLatin1String(g_szKept)).toStringList();
    for (int i = listEntry.size() - 1; i >= 0; --i) {
        if (pathOf(listEntry[i]) == strProject) {
            listEntry.removeAt(i);
        }
    }
    const QString strNow = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    listEntry.prepend(QStringList{strProject, strNow, QString::fromUtf8(bytes)}.join(QLatin1Char('\n')));
    settings.setValue(QLatin1String(g_szKept), QStringList(listEntry.mid(0, g_nMostKept)));
}

/// The numbers of a project, if they were kept after that time; else nothing.
QByteArray keptInSettings(const QSettings& settings, const QString& strProject, const QDateTime& after)
{
    for (const QString& strEntry : settings.value(QLatin1String(g_szKept)).toStringList()) {
        if (pathOf(strEntry) == strProject) {
            const QDateTime when = QDateTime::fromString(strEntry.section(QLatin1Char('\n'), 1, 1),
                                                         Qt::ISODateWithMs);
            return when > after ? strEntry.section(QLatin1Char('\n'), 2).toUtf8() : QByteArray();
        }
    }
    return {};
}

}  // namespace

void MainWindow::withPageNumbers(const std::function<void()>& fn)
{
    const SeriesData series = m_dataSet;
    const auto kept = std::make_tuple(m_hunting, m_mapping, m_merging, m_cellHunting, m_indexing,
                                      m_extraction, m_refinement);
    syncParametersWithControls(true);
    guarded(fn);
    m_dataSet.takeSeries(series);
    std::tie(m_hunting, m_mapping, m_merging, m_cellHunting, m_indexing, m_extraction, m_refinement) = kept;
}

WindowMemory MainWindow::windowMemory()
{
    WindowMemory memory;
    withPageNumbers([&] { memory = {m_hunting, m_mapping, m_merging, m_cellHunting, m_indexing, {}, {}}; });
    const MadeWith& made = m_dataSet.m_made;
    const quint64 nPeaks = printOfPeaks(m_dataSet.m_listPeakFrame);
    if (made.peaks && made.peaks->nPeaks == nPeaks && nPeaks != 0) {
        memory.hunted = {made.peaks->hunting, nPeaks};
    }
    if (made.merged && made.merged->nPeaks == nPeaks &&
        made.merged->nMerged == printOfReflections(m_dataSet.m_listPeakMerged)) {
        memory.merged = {m_nMergedGroup, nPeaks, quint64(m_dataSet.m_listPeakMerged.size())};
    }
    return memory;
}

void MainWindow::keepWindowMemory()
{
    const QString strProject = projectFile();
    if (isRunning() || !QFileInfo(strProject).isFile()) {
        return;
    }
    const QByteArray bytes = windowFileText(windowMemory());
    if (bytes == m_bytesKept) {
        return;
    }
    m_bytesKept = bytes;
    const QString strFile = fileOfProject(m_dataSet, QStringLiteral(".window.json"));
    if (QFileInfo(m_dataSet.m_strProjectDir).isWritable() && writeWholeFile(strFile, bytes)) {
        return;
    }
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    keepInSettings(*pSettings, QDir::cleanPath(strProject), bytes);
}

/// To be called with the signals of the pages cut, before the peaks are shown.
WindowMemory MainWindow::takeWindowMemory(CRunReport& report)
{
    WindowMemory memory = {m_hunting, m_mapping, m_merging, m_cellHunting, m_indexing, {}, {}};
    const QString strName = fileOfProject(m_dataSet, QStringLiteral(".window.json"));
    QFile file(strName);
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    // Where the file could not be written, the settings have the newer numbers.
    const QFileInfo info(strName);
    QByteArray bytes = keptInSettings(*pSettings, QDir::cleanPath(projectFile()),
                                      info.isFile() ? info.lastModified() : QDateTime::fromSecsSinceEpoch(0));
    if (bytes.isEmpty() && info.isFile() && file.open(QIODevice::ReadOnly)) {
        const qint64 nMost = 1 << 20;  // a thousand times what is written
        bytes = file.read(nMost);
    }
    QString strReason;
    if (bytes.isEmpty()) {
        return memory;
    }
    if (!readWindowFileText(bytes, memory, &strReason)) {
        report.addMessage(tr("%1 is not used: %2.").arg(strName, strReason), Severity::Error);
        return memory;
    }
    m_hunting = memory.hunting;
    m_mapping = memory.mapping;
    m_merging = memory.merging;
    m_cellHunting = memory.cell;
    m_indexing = memory.indexing;
    syncParametersWithControls(false);
    if (memory.hunted && memory.hunted->nPeaks == printOfPeaks(m_dataSet.m_listPeakFrame)) {
        notePeaksMade(m_dataSet, memory.hunted->hunting);  // its mask is not kept, and not missed
    }
    return memory;
}

/// Merges anew, which takes less time than reading the chains from a file would and needs no file that could
/// be out of date. The peak list is rounded to tenths of a pixel, so a few chains may differ from those of
/// the last time: a number of reflections within two in a hundred of the former one counts as the same
/// result, any other as none.
void MainWindow::mergeAsBefore(const WindowMemory& memory, CRunReport& report)
{
    if (!memory.merged || !m_dataSet.m_peakMapping) {
        return;
    }
    if (memory.merged->nPeaks != printOfPeaks(m_dataSet.m_listPeakFrame)) {
        report.addMessage(
            tr("The reflections that were merged before are not shown: the peaks beside the project have "
               "changed. Merge again."));
        return;
    }
    const int nGroup = memory.merged->nGroup;
    const std::vector<char> vecFlag = nGroup < 0 ? std::vector<char>() : flagsOfPeakGroup(m_dataSet, nGroup);
    CRunReport silent;
    const PeakMergingResult result = tessera::peakReduction3D(m_dataSet, m_merging,
                                                              nGroup < 0 ? nullptr : &vecFlag, silent);
    if (!result.outcome.finished()) {
        return;
    }
    std::optional<MergedMade>& made = m_dataSet.m_made.merged;
    const double dfNow = m_dataSet.m_listPeakMerged.size(), dfBefore = double(memory.merged->nMerged);
    if (made && std::abs(dfNow - dfBefore) <= 0.02 * dfBefore) {
        m_nMergedGroup = nGroup;
        showInMergedView(m_dataSet.m_listPeakMergedShown, result.listStreakIndex);
        updatePeakTable(m_dataSet.m_listPeakMerged);
        report.addMessage(tr("%L1 reflections are merged as before.").arg(m_dataSet.m_listPeakMerged.size()));
        return;
    }
    made.reset();
    m_dataSet.m_listPeakMerged.clear();
    m_dataSet.m_listPeakMergedShown.clear();
    m_dataSet.m_listPeakChain.clear();
    report.addMessage(
        tr("The reflections that were merged before are not shown: with the geometry of the project "
           "they are others. Merge anew."));
}

}  // namespace tessera
