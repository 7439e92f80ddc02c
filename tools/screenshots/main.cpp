// tessera-screenshots: drives the window through a series, as a user would, and keeps a picture of each
// stage in two sizes. scripts/screenshots runs it on the simulated demo series.
//
//   tessera-screenshots PROJECT.ed3d MASK.msk FOLDER
#include "tools/screenshots/camera.h"
#include "tools/screenshots/solvepictures.h"
#include "window/knowncelldialog.h"
#include "window/mainwindow.h"
#include "window/newproject/directionsbox.h"
#include "window/newproject/pixelsizebox.h"
#include "window/newproject/projectfilerow.h"
#include "window/newproject/tiltsbox.h"
#include "window/newprojectdialog.h"
#include "window/pages/framespage.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QGraphicsView>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBox>
#include <QWindow>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace tessera {

namespace {

const QPointF g_ptSpot(256, 256);  // near the direct beam of the demo series
const int g_nDialogTries = 50;
const int g_nIntensityColumn = 7;
const int g_nCurveRow = 3;        // the strongest reflection that lies on more than one frame
const double g_dfWrongAxis = 15;  // degrees

}  // namespace

void answerFileDialog(const QString& strFile)
{
    auto* pTimer = new QTimer(qApp);
    QObject::connect(pTimer, &QTimer::timeout, pTimer, [pTimer, strFile, nTry = 0]() mutable {
        auto* pDialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (pDialog) {
            pTimer->deleteLater();
            auto* pEdit = pDialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            pEdit->setText(strFile);
            QTest::keyClick(pEdit, Qt::Key_Return);
        } else if (++nTry > g_nDialogTries) {
            std::fprintf(stderr, "No file dialog came for %s\n", qPrintable(strFile));
            std::exit(1);
        }
    });
    pTimer->start(g_nSettleTime);
}

}  // namespace tessera

namespace {

using namespace tessera;

/// The widgets that several pictures need.
struct Stage {
    CCamera& camera;
    MainWindow& window;
    QTabWidget* pTabs = nullptr;
    QWidget* pFrames = nullptr;
    QTableWidget* pFrameTable = nullptr;
    QCheckBox* pFoundPeaks = nullptr;
};

/// The dialog for a new project of the demo series, with the numbers of the demo.
void shootNewProject(CCamera& camera, const QString& strFolder)
{
    NewProjectDialog dialog(strFolder);
    dialog.addFrames({strFolder});
    dialog.m_pTilts->m_pTiltStartSpin->setValue(-51);
    dialog.m_pTilts->m_pTiltStepSpin->setValue(0.85);
    dialog.m_pPixels->m_pPixelSizeSpin->setValue(0.004);
    dialog.m_pDirections->m_pRotationAxisSpin->setValue(-38.5);
    dialog.m_pFile->m_pFileEdit->setText(QStringLiteral("/data/demo/demo.ed3d"));
    dialog.show();
    QTest::qWait(g_nSettleTime);
    camera.keep(QStringLiteral("newproject"), dialog.grab());
    dialog.close();
}

void shootShifts(Stage& stage)
{
    QWidget* pShift = stage.camera.openPage(QStringLiteral("Shift Evaluation"));
    find<QAction>(&stage.window, QStringLiteral("Select 128×128"))->trigger();
    stage.camera.shoot(QStringLiteral("region"));
    find<QPushButton>(pShift, QStringLiteral("Run"))->click();
    stage.camera.shoot(QStringLiteral("shifts"));
}

void shootPeaks(Stage& stage, const QString& strMaskFile)
{
    QWidget* pSearch = stage.camera.openPage(QStringLiteral("Peak Search"));
    find<QAction>(&stage.window, QStringLiteral("Select None"))->trigger();
    answerFileDialog(strMaskFile);
    find<QPushButton>(pSearch, QStringLiteral("Load..."))->click();
    find<QCheckBox>(pSearch, QStringLiteral("Show"))->setChecked(true);
    stage.pFoundPeaks = find<QCheckBox>(pSearch, QStringLiteral("Show Found Peaks"));
    stage.pFoundPeaks->setChecked(true);
    stage.camera.shoot(QStringLiteral("marks"));
    find<QPushButton>(pSearch, QStringLiteral("Run"))->click();
    stage.pTabs = stage.window.findChild<QTabWidget*>();
    stage.pTabs->setCurrentIndex(0);
    find<QCheckBox>(stage.pFrames, QStringLiteral("Show On EDP"))->setChecked(true);
    stage.pFrameTable = stage.pFrames->findChild<QTableWidget*>();
    stage.pFrameTable->selectRow(stage.pFrameTable->rowCount() / 2);
    stage.camera.shoot(QStringLiteral("peaks"));
}

/// The numbers of the pixels in place of the curve. Their place follows the pressed right button.
void shootTextData(Stage& stage)
{
    stage.camera.openPage(QStringLiteral("Frames"));
    find<QAction>(&stage.window, QStringLiteral("Intensity"))->trigger();
    auto* pView = qobject_cast<QGraphicsView*>(stage.pTabs->widget(0));
    stage.camera.shoot(QStringLiteral("textdata"), [&] {
        stage.pFrameTable->scrollTo(stage.pFrameTable->currentIndex());
        const QPoint ptSpot = pView->viewport()->mapTo(&stage.window, pView->mapFromScene(g_ptSpot));
        QTest::mousePress(stage.window.windowHandle(), Qt::RightButton, {}, ptSpot + QPoint(8, 8));
        QTest::mouseMove(stage.window.windowHandle(), ptSpot);
    });
    const QPoint ptCorner = pView->viewport()->mapTo(&stage.window, pView->mapFromScene(20, 20));
    QTest::mouseRelease(stage.window.windowHandle(), Qt::RightButton, {}, ptCorner);
    QTest::mouseMove(stage.window.windowHandle(), ptCorner + QPoint(2, 2));
    find<QAction>(&stage.window, QStringLiteral("Intensity"))->trigger();
}

/// Merging, the search of the cell, and the dialog of a known cell, with the cell of the demo's crystal.
void shootCell(Stage& stage)
{
    CCamera& camera = stage.camera;
    QWidget* pMerging = camera.openPage(QStringLiteral("3D Peak Merging"));
    find<QPushButton>(pMerging, QStringLiteral("Merge"))->click();
    camera.shoot(QStringLiteral("merging"));

    QWidget* pCell = camera.openPage(QStringLiteral("Unit Cell Determination and Indexing"));
    find<QPushButton>(pCell, QStringLiteral("Search for Unit Cell"))->click();
    camera.shoot(QStringLiteral("cell"));
    QTimer::singleShot(0, [&camera] {
        auto* pDialog = qobject_cast<KnownCellDialog*>(QApplication::activeModalWidget());
        if (!pDialog) {
            std::fprintf(stderr, "No dialog came for the known cell\n");
            std::exit(1);
        }
        pDialog->setCell({18.272, 18.613, 6.593, 90, 90, 90});
        pDialog->m_pButtonSearch->click();
        QTest::qWait(g_nSettleTime);
        camera.keep(QStringLiteral("knowncell"), pDialog->grab());
        pDialog->reject();
    });
    find<QPushButton>(pCell, QStringLiteral("Known Cell..."))->click();
    find<QPushButton>(pCell, QStringLiteral("Index Merged Peaks"))->click();
}

/// The merged peaks along an axis, with the groups that the indexing made and the lattice of the cell.
void shootLattice(Stage& stage)
{
    QWidget* p3D = stage.camera.openPage(QStringLiteral("3D View Control"));
    stage.pTabs->setCurrentIndex(2);
    find<QPushButton>(p3D, QStringLiteral("a*"))->click();
    const QList<QSpinBox*> listRange =
        find<QGroupBox>(p3D, QStringLiteral("HKL Range"))->findChildren<QSpinBox*>();
    for (QSpinBox* pSpin : listRange) {
        pSpin->setValue(pSpin == listRange.first() ? 0 : 4);
    }
    stage.camera.shoot(QStringLiteral("lattice"));
}

/// The raw peaks, with a group made by a rubber band, while another band is drawn.
void shootGroups(Stage& stage)
{
    QWidget* p3D = stage.camera.openPage(QStringLiteral("3D View Control"));
    stage.pTabs->setCurrentIndex(1);
    find<QPushButton>(p3D, QStringLiteral("a*"))->click();
    bool bGroup = false;
    stage.camera.shoot(QStringLiteral("groups"), [&] {
        QWidget* pCloud = stage.pTabs->currentWidget();
        const auto place = [&](double dfX, double dfY) {
            return pCloud->mapTo(&stage.window,
                                 QPoint(int(dfX * pCloud->width()), int(dfY * pCloud->height())));
        };
        QWindow* pHandle = stage.window.windowHandle();
        const auto band = [&](const QPoint& ptFrom, const QPoint& ptTo) {
            QTest::mouseRelease(pHandle, Qt::LeftButton, Qt::ControlModifier, ptFrom);
            QTest::mousePress(pHandle, Qt::LeftButton, Qt::ControlModifier, ptFrom);
            QTest::mouseMove(pHandle, ptTo);
        };
        if (!bGroup) {
            band(place(0.3, 0.35), place(0.48, 0.65));
            QTest::mouseRelease(pHandle, Qt::LeftButton, Qt::ControlModifier, place(0.48, 0.65));
            find<QPushButton>(p3D, QStringLiteral("Add"))->click();
        }
        bGroup = true;
        band(place(0.52, 0.35), place(0.7, 0.6));
    });
    QTest::mouseRelease(stage.window.windowHandle(), Qt::LeftButton, Qt::ControlModifier, {1, 1});
}

/// The table of peaks, and the curve of a strong reflection that lies on several frames.
void shootTable(Stage& stage)
{
    stage.pTabs->setCurrentIndex(3);
    auto* pTable = qobject_cast<QTableView*>(stage.pTabs->currentWidget());
    pTable->sortByColumn(g_nIntensityColumn, Qt::DescendingOrder);
    QTest::qWait(g_nSettleTime);
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, {},
                      pTable->visualRect(pTable->model()->index(g_nCurveRow, g_nIntensityColumn)).center());
    stage.camera.shoot(QStringLiteral("table"));
}

/// The page of the integration, with the discs on a frame and the results.
void shootIntegration(Stage& stage)
{
    QWidget* pIntegration = stage.camera.openPage(QStringLiteral("Integration"));
    find<QPushButton>(pIntegration, QStringLiteral("Integrate"))->click();
    stage.pFoundPeaks->setChecked(false);  // the discs lie on the same spots
    find<QCheckBox>(pIntegration, QStringLiteral("Show Predicted"))->setChecked(true);
    stage.pTabs->setCurrentIndex(0);
    stage.camera.shoot(QStringLiteral("integration"));
    find<QCheckBox>(pIntegration, QStringLiteral("Show Predicted"))->setChecked(false);
    stage.pFoundPeaks->setChecked(true);
}

/// The reflections that the cell predicts, on the peaks of a frame; then with the axis 15 degrees off.
void shootPredicted(Stage& stage)
{
    stage.pTabs->setCurrentIndex(0);
    stage.camera.openPage(QStringLiteral("Unit Cell Refinement"));
    find<QAction>(&stage.window, QStringLiteral("Show Peak Labels"))->trigger();
    stage.camera.shoot(QStringLiteral("labels"));
    find<QAction>(&stage.window, QStringLiteral("Show Peak Labels"))->trigger();

    find<QAction>(&stage.window, QStringLiteral("&Intensity Extraction..."))->trigger();
    auto* pEstimated = find<QCheckBox>(&stage.window, QStringLiteral("Show Estimated Peak Position"));
    QWidget* pExtraction = pEstimated->parentWidget();
    stage.camera.keep(QStringLiteral("extraction"), pExtraction->grab());
    pEstimated->setChecked(true);
    pExtraction->close();
    stage.camera.openPage(QStringLiteral("Frames"));
    stage.camera.shoot(QStringLiteral("predicted"));
    QDoubleSpinBox* pAxis = stage.window.findChild<FramesPage*>()->m_pRotationAxisSpin;
    pAxis->setValue(pAxis->value() + g_dfWrongAxis);
    stage.camera.shoot(QStringLiteral("predicted_wrong_axis"));
    pAxis->setValue(pAxis->value() - g_dfWrongAxis);
    pEstimated->setChecked(false);
    stage.pFoundPeaks->setChecked(false);
}

}  // namespace

int main(int argc, char** argv)
{
    Q_INIT_RESOURCE(tessera);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    const QStringList listArgument = QCoreApplication::arguments();
    if (listArgument.size() != 4) {
        std::fprintf(stderr, "Usage: tessera-screenshots PROJECT.ed3d MASK.msk FOLDER\n");
        return 2;
    }
    // Settings of its own: the user's must neither show in the pictures nor be changed.
    QTemporaryDir dirSettings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dirSettings.path());
    if (!QDir().mkpath(listArgument[3])) {
        return 1;
    }
    const QFileInfo infoProject(listArgument[1]);

    MainWindow window;
    CCamera camera(window, QDir(listArgument[3]));
    window.show();
    camera.shoot(QStringLiteral("start"));
    shootNewProject(camera, infoProject.absolutePath());

    window.openFiles({infoProject.absoluteFilePath()});
    Stage stage{camera, window};
    stage.pFrames = camera.openPage(QStringLiteral("Frames"));
    camera.shoot(QStringLiteral("frames"));
    shootShifts(stage);
    shootPeaks(stage, QFileInfo(listArgument[2]).absoluteFilePath());
    shootTextData(stage);
    shootCell(stage);
    shootLattice(stage);
    shootGroups(stage);
    shootTable(stage);
    shootIntegration(stage);
    shootPredicted(stage);

    shootSolve(camera);
    shootSelection(camera);
    shootRings(camera);
    shootQuality(camera);
    saveReport(camera, infoProject.absolutePath() + QStringLiteral("/report.html"));
    shootWrongAxis(camera);
    shootDock(camera, QStringLiteral("Steps"), QStringLiteral("steps"));
    find<QAction>(&window, QStringLiteral("A&bout Tessera..."))->trigger();
    camera.shoot(QStringLiteral("about"));
    return 0;
}
