// MainWindow: what it remembers between sessions.
#include "app/mainwindow.h"
#include "crystal/cellmessage.h"
#include "view3d/ed3dwidget.h"
#include "view3d/pages/view3dpage.h"

#include <QDockWidget>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QSpinBox>
#include <QToolBox>

#include <cmath>

namespace {

struct StoredValue {
    QString strKey;
    double* pdfValue;
};

QList<StoredValue> storedValues(PeakHuntingParameters& hunting, double& dfCanvasGridAlpha)
{
    return {{QStringLiteral("3DView/CanvasGridAlpha"), &dfCanvasGridAlpha},
            {QStringLiteral("PeakSearch/PeakRadius"), &hunting.m_dfPeakRadius},
            {QStringLiteral("PeakSearch/BackgroundAveragingRadius"), &hunting.m_dfBackgroundRadius},
            {QStringLiteral("PeakSearch/PeakBGDiffThreshold"), &hunting.m_dfPeakThreshold},
            {QStringLiteral("PeakSearch/Peak2DIntegrationRadious"), &hunting.m_dfIntegrationRadius},
            {QStringLiteral("PeakSearch/Peak2DIntegrationBG"), &hunting.m_dfIntegrationBackground}};
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

void MainWindow::readSettings()
{
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    // A first start: everything has room, on any screen that is large enough.
    const QScreen* pScreen = QGuiApplication::primaryScreen();
    const QSize sizeScreen = pScreen ? pScreen->availableSize() : QSize(1280, 800);
    resize(QSize(1400, 900).boundedTo(sizeScreen));
    restoreGeometry(pSettings->value(QStringLiteral("geometry")).toByteArray());
    if (!restoreState(pSettings->value(QStringLiteral("windowState")).toByteArray()))
        arrangeDocks();
    m_dataSet.m_strWorkingDir =
        pSettings->value(QStringLiteral("workingDir"), QStringLiteral("./")).toString();

    // A value that is no number, from a damaged file, leaves the default.
    for (const StoredValue& stored : storedValues(m_hunting, m_dfCanvasGridAlpha)) {
        bool bOk = false;
        const double dfValue = pSettings->value(stored.strKey, *stored.pdfValue).toDouble(&bOk);
        if (bOk && std::isfinite(dfValue))
            *stored.pdfValue = dfValue;
    }
    m_dfCanvasGridAlpha = qBound(0.0, m_dfCanvasGridAlpha, 1.0);
    m_pView3DPage->m_pSpinCanvasGridTransparency->setValue(qRound(100 * (1 - m_dfCanvasGridAlpha)));
    for (ED3DWidget* pView : views3D())
        pView->setCanvasGridAlpha(float(m_dfCanvasGridAlpha));
    m_strLatticeHost = pSettings->value(latticeHostKey(), latticeServiceHost()).toString();
}

// The docks of a first start: the tool box as wide as its pages need, the frame as much as it can have.
void MainWindow::arrangeDocks()
{
    resizeDocks({m_listDock[0]}, {m_pToolBox->minimumWidth()}, Qt::Horizontal);
    resizeDocks(m_listDock.mid(1), {200, 200, 200}, Qt::Vertical);
    resizeDocks(m_listDock.mid(1), {400, 300, 200}, Qt::Horizontal);
}

void MainWindow::writeSettings()
{
    finishTyping();
    syncParametersWithControls(true);
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    pSettings->setValue(QStringLiteral("geometry"), saveGeometry());
    pSettings->setValue(QStringLiteral("windowState"), saveState());
    pSettings->setValue(QStringLiteral("workingDir"), m_dataSet.m_strWorkingDir);
    pSettings->setValue(latticeHostKey(), m_strLatticeHost);
    for (const StoredValue& stored : storedValues(m_hunting, m_dfCanvasGridAlpha))
        pSettings->setValue(stored.strKey, *stored.pdfValue);
}
