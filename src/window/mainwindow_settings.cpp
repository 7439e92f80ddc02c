// MainWindow: the settings that are saved from one start to the next.
#include "window/mainwindow.h"

#include "crystal/cellmessage.h"
#include "view3d/ed3dwidget.h"
#include "window/messageedit.h"
#include "window/pages/view3dpage.h"
#include "window/reciprocal/peaktableview.h"
#include "window/settingsfile.h"

#include <QCryptographicHash>
#include <QDockWidget>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <QSettings>
#include <QSpinBox>
#include <QToolBox>

#include <cmath>
#include <utility>

namespace tessera {

namespace {

// The number of a setting; the default where a damaged file has no number.
double storedNumber(const QSettings& settings, const QString& strKey, double dfDefault)
{
    bool bOk = false;
    const double dfValue = settings.value(strKey, dfDefault).toDouble(&bOk);
    return bOk && std::isfinite(dfValue) ? dfValue : dfDefault;
}

const char g_szGridAlpha[] = "3DView/CanvasGridAlpha";

// "h,k,l; h,k,l ...", with any separators. False for a text that is no list of whole triples.
bool readReflections(const QString& strText, QList<HKLRef>& listReflection)
{
    QList<int> listIndex;
    for (const QString& str :
         strText.split(QRegularExpression(QStringLiteral("[\\s,;]+")), Qt::SkipEmptyParts)) {
        bool bOk = false;
        listIndex.append(str.toInt(&bOk));
        if (!bOk) {
            return false;
        }
    }
    if (listIndex.size() % 3 != 0) {
        return false;
    }
    for (int i = 0; i < listIndex.size(); i += 3) {
        listReflection.append({listIndex[i], listIndex[i + 1], listIndex[i + 2], 0});
    }
    return true;
}

// Six numbers, or one for the edge of a cubic cell; 0 for none.
bool readCell(const QString& strText, std::optional<CellParameters>& cell)
{
    QList<double> listNumber;
    for (const QString& str :
         strText.split(QRegularExpression(QStringLiteral("[\\s,;]+")), Qt::SkipEmptyParts)) {
        bool bOk = false;
        listNumber.append(str.toDouble(&bOk));
        if (!bOk || !std::isfinite(listNumber.last()) || listNumber.last() < 0) {
            return false;
        }
    }
    if (listNumber.isEmpty() || listNumber == QList<double>{0}) {
        return true;
    }
    if (listNumber.contains(0) || (listNumber.size() != 1 && listNumber.size() != 6)) {
        return false;
    }
    if (listNumber.size() == 1) {
        cell = {listNumber[0], listNumber[0], listNumber[0], 90, 90, 90};
    } else {
        cell = {listNumber[0], listNumber[1], listNumber[2], listNumber[3], listNumber[4], listNumber[5]};
    }
    return true;
}

const int g_nTitleBar = 50;    // pixels: the title bar and the lower edge of a window on common desktops
const int g_nSideFrames = 10;  // pixels: its left and its right edge

const char g_szExcluded[] = "excludedReflections", g_szReference[] = "referenceCell",
           g_szBackground[] = "constantBackground", g_szTestRuns[] = "showTestRuns";

const char g_szAutoRadii[] = "PeakSearch/AutoRadii";

const char g_szChecksum[] = "windowChecksum";

// Qt does not check what it has saved: a changed byte may end the process.
QByteArray windowChecksum(const QByteArray& bytesGeometry, const QByteArray& bytesState)
{
    return QCryptographicHash::hash(bytesGeometry + bytesState, QCryptographicHash::Sha1).toHex();
}

// Where another service of the same kind can be named.
QString latticeHostKey()
{
    return QStringLiteral("latticeServiceHost");
}

}  // namespace

QSettings* MainWindow::makeSettings(QObject* pParent)
{
    return new QSettings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera"), pParent);
}

void MainWindow::checkSettings()
{
    const QString strText = putBadSettingsAside(settingsFile());
    if (!strText.isEmpty()) {
        m_pMessageEdit->addMessage(strText, Qt::red);
    }
}

void MainWindow::readSettings()
{
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    // A first start: everything has room, on any screen that is large enough. How thick the frame will be is
    // not known before the window is shown.
    const QScreen* pScreen = QGuiApplication::primaryScreen();
    const QSize sizeScreen = pScreen ? pScreen->availableSize() : QSize(1280, 800);
    resize(QSize(1400, 900).boundedTo(sizeScreen - QSize(g_nSideFrames, g_nTitleBar)));
    const QByteArray bytesGeometry = pSettings->value(QStringLiteral("geometry")).toByteArray();
    const QByteArray bytesState = pSettings->value(QStringLiteral("windowState")).toByteArray();
    const QByteArray bytesChecksum = pSettings->value(QLatin1String(g_szChecksum)).toByteArray();
    const bool bWhole = bytesChecksum.isEmpty() || bytesChecksum == windowChecksum(bytesGeometry, bytesState);
    if (!bWhole) {
        m_pMessageEdit->addMessage(
            tr("What the settings hold of the window's place and docks is damaged and not used."), Qt::red);
    } else {
        restoreGeometry(bytesGeometry);
    }
    if (!bWhole || !restoreState(bytesState)) {
        arrangeDocks();
    }
    setWindowState(windowState() & ~Qt::WindowFullScreen);  // which is for the moment
    m_strWorkingDir = pSettings->value(QStringLiteral("workingDir"), QStringLiteral("./")).toString();

    for (const Parameter& row : parameterTable()) {
        if (row.pszSettingsKey) {
            row.setValue(parameterRecords(), storedNumber(*pSettings, QLatin1String(row.pszSettingsKey),
                                                          row.value(parameterRecords())));
        }
    }
    m_hunting.m_bAutoRadii = pSettings->value(QLatin1String(g_szAutoRadii), false).toBool();
    m_dfCanvasGridAlpha = qBound(
        0.0, storedNumber(*pSettings, QLatin1String(g_szGridAlpha), m_dfCanvasGridAlpha), 1.0);
    m_pView3DPage->m_pSpinCanvasGridTransparency->setValue(qRound(100 * (1 - m_dfCanvasGridAlpha)));
    for (ED3DWidget* pView : views3D()) {
        pView->setCanvasGridAlpha(float(m_dfCanvasGridAlpha));
    }
    m_strLatticeHost = pSettings->value(latticeHostKey(), latticeServiceHost()).toString();

    // Commas part the entries of a list in the file, so that a text with commas can come as a list.
    const auto text = [&](const char* pszKey) {
        const QVariant value = pSettings->value(QLatin1String(pszKey));
        return value.type() == QVariant::StringList ? value.toStringList().join(QLatin1Char(','))
                                                    : value.toString();
    };
    const auto complain = [&](const char* pszKey) {
        m_pMessageEdit->addMessage(
            tr("The setting %1 is not understood and not used: %2").arg(QLatin1String(pszKey), text(pszKey)),
            Qt::red);
    };
    if (!readReflections(text(g_szExcluded), m_refinement.m_listExcluded)) {
        complain(g_szExcluded);
    }
    if (!readCell(text(g_szReference), m_refinement.m_referenceCell)) {
        complain(g_szReference);
    }
    m_bConstantBackground = pSettings->value(QLatin1String(g_szBackground), false).toBool();
    m_pPeakTableView->readColumns(*pSettings);
}

// The docks of a first start: the tool box as wide as its pages need, the frame as much as it can have.
void MainWindow::arrangeDocks()
{
    resizeDocks({m_listDock[0]}, {m_pToolBox->minimumWidth()}, Qt::Horizontal);
    resizeDocks(m_listDock.mid(1, 3), {200, 200, 200}, Qt::Vertical);
    resizeDocks(m_listDock.mid(1, 3), {400, 300, 200}, Qt::Horizontal);
}

void MainWindow::writeSettings()
{
    finishTyping();
    syncParametersWithControls(true);
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    const QByteArray bytesGeometry = saveGeometry(), bytesState = saveState();
    pSettings->setValue(QStringLiteral("geometry"), bytesGeometry);
    pSettings->setValue(QStringLiteral("windowState"), bytesState);
    pSettings->setValue(QLatin1String(g_szChecksum), windowChecksum(bytesGeometry, bytesState));
    pSettings->setValue(QStringLiteral("workingDir"), m_strWorkingDir);
    pSettings->setValue(latticeHostKey(), m_strLatticeHost);
    for (const Parameter& row : parameterTable()) {
        if (row.pszSettingsKey) {
            pSettings->setValue(QLatin1String(row.pszSettingsKey), row.value(parameterRecords()));
        }
    }
    pSettings->setValue(QLatin1String(g_szAutoRadii), m_hunting.m_bAutoRadii);
    pSettings->setValue(QLatin1String(g_szGridAlpha), m_dfCanvasGridAlpha);
    m_pPeakTableView->writeColumns(*pSettings);
    // Only the file changes these; written once, so that they can be found there.
    const std::pair<const char*, QVariant> aDefault[] = {
        {g_szExcluded, QString()}, {g_szReference, 0}, {g_szBackground, false}, {g_szTestRuns, false}};
    for (const auto& entry : aDefault) {
        if (!pSettings->contains(QLatin1String(entry.first))) {
            pSettings->setValue(QLatin1String(entry.first), entry.second);
        }
    }
}

}  // namespace tessera
