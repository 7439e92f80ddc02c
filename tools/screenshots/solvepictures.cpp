#include "tools/screenshots/solvepictures.h"

#include "frameview/baseimgview.h"
#include "window/pages/framespage.h"
#include "window/road/roaddock.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QWindow>

namespace tessera {

namespace {

enum Tab { FrameTab, RawTab, MergedTab, TableTab, QualityTab };

constexpr int g_nIntensityColumn = 7;
constexpr int g_nChosenRow = 3;  // a strong reflection on several frames
constexpr double g_dfDegreesOff = 10;

void showTab(CCamera& camera, Tab tab)
{
    camera.window().findChild<QTabWidget*>()->setCurrentIndex(tab);
}

void raiseDock(CCamera& camera, const QString& strTitle)
{
    for (QDockWidget* pDock : camera.window().findChildren<QDockWidget*>()) {
        if (pDock->windowTitle() == strTitle) {
            pDock->show();
            pDock->raise();
        }
    }
}

/// Closes the profile of a reflection, which opens with a click and would cover the picture.
void closeOtherWindows(CCamera& camera)
{
    for (QWidget* pWidget : QApplication::topLevelWidgets()) {
        if (pWidget != &camera.window() && pWidget->isVisible()) {
            pWidget->close();
        }
    }
}

/// Presses a button in a row of the road.
void pressOfRow(CCamera& camera, RoadRowKind kind, const QString& strButton)
{
    QList<QToolButton*> listButton;
    for (QToolButton* pButton : camera.window().findChild<RoadDock*>()->findChildren<QToolButton*>()) {
        if (pButton->text() == strButton) {
            listButton.append(pButton);
        }
    }
    listButton.at(int(kind))->click();
}

}  // namespace

void shootSolve(CCamera& camera)
{
    find<QAction>(&camera.window(), QStringLiteral("S&olve"))->trigger();  // returns at the end of the run
    pressOfRow(camera, RoadRowKind::Cell, QStringLiteral("Show"));
    camera.shoot(QStringLiteral("solve"));
}

void shootSelection(CCamera& camera)
{
    raiseDock(camera, QStringLiteral("Control"));
    camera.openPage(QStringLiteral("3D View Control"));
    showTab(camera, TableTab);
    auto* pTable = qobject_cast<QTableView*>(camera.window().findChild<QTabWidget*>()->currentWidget());
    pTable = pTable ? pTable
                    : camera.window().findChild<QTabWidget*>()->currentWidget()->findChild<QTableView*>();
    pTable->sortByColumn(g_nIntensityColumn, Qt::DescendingOrder);
    QTest::qWait(g_nSettleTime);
    const QModelIndex index = pTable->model()->index(g_nChosenRow, g_nIntensityColumn);
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, {}, pTable->visualRect(index).center());
    QTest::qWait(g_nSettleTime);
    closeOtherWindows(camera);
    camera.shootSmall(QStringLiteral("selection_table"));
    showTab(camera, FrameTab);
    camera.shootSmall(QStringLiteral("selection_frame"));
    showTab(camera, RawTab);
    camera.shootSmall(QStringLiteral("selection_raw"));
    showTab(camera, MergedTab);
    camera.shootSmall(QStringLiteral("selection_merged"));
}

void shootRings(CCamera& camera)
{
    MainWindow& window = camera.window();
    camera.openPage(QStringLiteral("Frames"));
    showTab(camera, FrameTab);
    auto* pRings = find<QAction>(&window, QStringLiteral("Resolution Rings"));
    pRings->trigger();
    auto* pView = window.findChild<BaseImgView*>();
    camera.shootSmall(QStringLiteral("rings"), [&] {
        // Drags from one spot to another, and on to a place that the status bar shows.
        QWidget* pPort = pView->viewport();
        const QPoint ptFrom = pPort->mapTo(&window, pPort->rect().center() + QPoint(-60, 40)),
                     ptTo = pPort->mapTo(&window, pPort->rect().center() + QPoint(90, -70));
        QWindow* pHandle = window.windowHandle();
        QTest::mousePress(pHandle, Qt::LeftButton, Qt::ShiftModifier, ptFrom);
        QTest::mouseMove(pHandle, (ptFrom + ptTo) / 2);
        QTest::mouseMove(pHandle, ptTo);
        QTest::mouseRelease(pHandle, Qt::LeftButton, Qt::ShiftModifier, ptTo);
    });
    pRings->trigger();
}

void shootQuality(CCamera& camera)
{
    camera.openPage(QStringLiteral("Integration"));
    showTab(camera, QualityTab);
    camera.shoot(QStringLiteral("quality"));
}

void saveReport(CCamera& camera, const QString& strFile)
{
    answerFileDialog(strFile);
    find<QAction>(&camera.window(), QStringLiteral("Repor&t..."))->trigger();
}

void shootDock(CCamera& camera, const QString& strTitle, const QString& strName)
{
    for (QDockWidget* pDock : camera.window().findChildren<QDockWidget*>()) {
        if (pDock->windowTitle() == strTitle) {
            raiseDock(camera, strTitle);
            camera.shootSmall(strName);
        }
    }
}

void shootWrongAxis(CCamera& camera)
{
    QDoubleSpinBox* pAxis = camera.window().findChild<FramesPage*>()->m_pRotationAxisSpin;
    const double dfAxis = pAxis->value();
    pAxis->setValue(dfAxis + g_dfDegreesOff);
    raiseDock(camera, QStringLiteral("Road"));
    pressOfRow(camera, RoadRowKind::Axis, QStringLiteral("From here"));
    showTab(camera, MergedTab);
    camera.shoot(QStringLiteral("solve_doubtful"));
    pAxis->setValue(dfAxis);
}

}  // namespace tessera
