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

const QPointF g_ptSpot(256, 256);  // beside the direct beam of the demo series
const int g_nDialogTries = 50;
const int g_nIntensityColumn = 7;
const int g_nCurveRow = 3;
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

int main(int argc, char** argv)
{
    using namespace tessera;
    Q_INIT_RESOURCE(tessera);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    const QStringList listArgument = QCoreApplication::arguments();
    if (listArgument.size() != 4) {
        std::fprintf(stderr, "Usage: tessera-screenshots PROJECT.ed3d MASK.msk FOLDER\n");
        return 2;
    }
    // A user's settings neither show in the pictures nor suffer from them.
    QTemporaryDir dirSettings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dirSettings.path());
    if (!QDir().mkpath(listArgument[3])) {
        return 1;
    }

    MainWindow window;
    CCamera camera(window, QDir(listArgument[3]));
    window.show();
    camera.shoot(QStringLiteral("start"));

    // The dialog as it stands when the series of the demo is given, with the demo's own numbers.
    NewProjectDialog dialog(QFileInfo(listArgument[1]).absolutePath());
    dialog.addFrames({QFileInfo(listArgument[1]).absolutePath()});
    dialog.m_pTilts->m_pTiltStartSpin->setValue(-51);
    dialog.m_pTilts->m_pTiltStepSpin->setValue(0.85);
    dialog.m_pPixels->m_pPixelSizeSpin->setValue(0.004);
    dialog.m_pDirections->m_pRotationAxisSpin->setValue(-38.5);
    dialog.m_pFile->m_pFileEdit->setText(QStringLiteral("/data/demo/demo.ed3d"));
    dialog.show();
    QTest::qWait(g_nSettleTime);
    camera.keep(QStringLiteral("newproject"), dialog.grab());
    dialog.close();

    window.openFiles({QFileInfo(listArgument[1]).absoluteFilePath()});
    QWidget* pFrames = camera.openPage(QStringLiteral("Frames"));
    camera.shoot(QStringLiteral("frames"));

    QWidget* pShift = camera.openPage(QStringLiteral("Shift Evaluation"));
    find<QAction>(&window, QStringLiteral("Select 128×128"))->trigger();
    camera.shoot(QStringLiteral("region"));
    find<QPushButton>(pShift, QStringLiteral("Run"))->click();
    camera.shoot(QStringLiteral("shifts"));

    QWidget* pSearch = camera.openPage(QStringLiteral("Peak Search"));
    find<QAction>(&window, QStringLiteral("Select None"))->trigger();
    answerFileDialog(QFileInfo(listArgument[2]).absoluteFilePath());
    find<QPushButton>(pSearch, QStringLiteral("Load..."))->click();
    find<QCheckBox>(pSearch, QStringLiteral("Show"))->setChecked(true);
    find<QCheckBox>(pSearch, QStringLiteral("Show Found Peaks"))->setChecked(true);
    camera.shoot(QStringLiteral("marks"));
    find<QPushButton>(pSearch, QStringLiteral("Run"))->click();
    auto* pTabs = window.findChild<QTabWidget*>();
    pTabs->setCurrentIndex(0);
    find<QCheckBox>(pFrames, QStringLiteral("Show On EDP"))->setChecked(true);
    auto* pFrameTable = pFrames->findChild<QTableWidget*>();
    pFrameTable->selectRow(pFrameTable->rowCount() / 2);
    camera.shoot(QStringLiteral("peaks"));

    // The grid of numbers follows the right button, and gets the room of the curve.
    camera.openPage(QStringLiteral("Frames"));
    find<QAction>(&window, QStringLiteral("Intensity"))->trigger();
    auto* pView = qobject_cast<QGraphicsView*>(pTabs->widget(0));
    camera.shoot(QStringLiteral("textdata"), [&] {
        pFrameTable->scrollTo(pFrameTable->currentIndex());
        const QPoint ptSpot = pView->viewport()->mapTo(&window, pView->mapFromScene(g_ptSpot));
        QTest::mousePress(window.windowHandle(), Qt::RightButton, {}, ptSpot + QPoint(8, 8));
        QTest::mouseMove(window.windowHandle(), ptSpot);
    });
    const QPoint ptCorner = pView->viewport()->mapTo(&window, pView->mapFromScene(20, 20));
    QTest::mouseRelease(window.windowHandle(), Qt::RightButton, {}, ptCorner);
    QTest::mouseMove(window.windowHandle(), ptCorner + QPoint(2, 2));

    find<QAction>(&window, QStringLiteral("Intensity"))->trigger();
    QWidget* pMerging = camera.openPage(QStringLiteral("3D Peak Merging"));
    find<QPushButton>(pMerging, QStringLiteral("Merge"))->click();
    camera.shoot(QStringLiteral("merging"));

    QWidget* pCell = camera.openPage(QStringLiteral("Unit Cell Determination and Indexing"));
    find<QPushButton>(pCell, QStringLiteral("Search for Unit Cell"))->click();
    camera.shoot(QStringLiteral("cell"));
    // The dialog as it stands when the cell of the demo's crystal was found.
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

    // The merged cloud along an axis, with the groups that the indexing made and the lattice of the cell.
    QWidget* p3D = camera.openPage(QStringLiteral("3D View Control"));
    pTabs->setCurrentIndex(2);
    find<QPushButton>(p3D, QStringLiteral("a*"))->click();
    const QList<QSpinBox*> listRange =
        find<QGroupBox>(p3D, QStringLiteral("HKL Range"))->findChildren<QSpinBox*>();
    for (QSpinBox* pSpin : listRange) {
        pSpin->setValue(pSpin == listRange.first() ? 0 : 4);
    }
    camera.shoot(QStringLiteral("lattice"));

    // The raw cloud: a group made by a rubber band, and another band under way.
    pTabs->setCurrentIndex(1);
    find<QPushButton>(p3D, QStringLiteral("a*"))->click();
    bool bGroup = false;
    camera.shoot(QStringLiteral("groups"), [&] {
        QWidget* pCloud = pTabs->currentWidget();
        const auto place = [&](double dfX, double dfY) {
            return pCloud->mapTo(&window, QPoint(int(dfX * pCloud->width()), int(dfY * pCloud->height())));
        };
        QWindow* pHandle = window.windowHandle();
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
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::ControlModifier, {1, 1});

    // The table, and the curve of the strongest reflection that is not alone on its frame.
    pTabs->setCurrentIndex(3);
    auto* pTable = qobject_cast<QTableView*>(pTabs->currentWidget());
    pTable->sortByColumn(g_nIntensityColumn, Qt::DescendingOrder);
    QTest::qWait(g_nSettleTime);
    QTest::mouseClick(pTable->viewport(), Qt::LeftButton, {},
                      pTable->visualRect(pTable->model()->index(g_nCurveRow, g_nIntensityColumn)).center());
    camera.shoot(QStringLiteral("table"));

    // The integration: its page with the discs on a frame, and what came out.
    QWidget* pIntegration = camera.openPage(QStringLiteral("Integration"));
    find<QPushButton>(pIntegration, QStringLiteral("Integrate"))->click();
    auto* pCrosses = find<QCheckBox>(pSearch, QStringLiteral("Show Found Peaks"));
    pCrosses->setChecked(false);  // the discs lie on the same spots
    find<QCheckBox>(pIntegration, QStringLiteral("Show Predicted"))->setChecked(true);
    pTabs->setCurrentIndex(0);
    camera.shoot(QStringLiteral("integration"));
    find<QCheckBox>(pIntegration, QStringLiteral("Show Predicted"))->setChecked(false);
    pCrosses->setChecked(true);

    pTabs->setCurrentIndex(0);
    camera.openPage(QStringLiteral("Unit Cell Refinement"));
    find<QAction>(&window, QStringLiteral("Show Peak Labels"))->trigger();
    camera.shoot(QStringLiteral("labels"));

    // Where the cell expects reflections, on the peaks of a frame; then with the axis 15 degrees off.
    find<QAction>(&window, QStringLiteral("Show Peak Labels"))->trigger();
    find<QAction>(&window, QStringLiteral("&Intensity Extraction..."))->trigger();
    QWidget* pExtraction =
        find<QCheckBox>(&window, QStringLiteral("Show Estimated Peak Position"))->parentWidget();
    camera.keep(QStringLiteral("extraction"), pExtraction->grab());
    find<QCheckBox>(pExtraction, QStringLiteral("Show Estimated Peak Position"))->setChecked(true);
    pExtraction->close();
    camera.openPage(QStringLiteral("Frames"));
    camera.shoot(QStringLiteral("predicted"));
    QDoubleSpinBox* pAxis = window.findChild<FramesPage*>()->m_pRotationAxisSpin;
    pAxis->setValue(pAxis->value() + g_dfWrongAxis);
    camera.shoot(QStringLiteral("predicted_wrong_axis"));
    pAxis->setValue(pAxis->value() - g_dfWrongAxis);
    find<QCheckBox>(pExtraction, QStringLiteral("Show Estimated Peak Position"))->setChecked(false);
    pCrosses->setChecked(false);

    shootSolve(camera);
    shootSelection(camera);
    shootRings(camera);
    shootQuality(camera);
    saveReport(camera, QFileInfo(listArgument[1]).absolutePath() + QStringLiteral("/report.html"));
    shootWrongAxis(camera);
    shootDock(camera, QStringLiteral("Steps"), QStringLiteral("steps"));
    find<QAction>(&window, QStringLiteral("A&bout Tessera..."))->trigger();
    camera.shoot(QStringLiteral("about"));
    return 0;
}
