// The window "Geometry Refinement": what it says of nothing, refines, takes, gives back, and keeps in files.
#include "dataset/calibration.h"
#include "window/crystal/geometrycontrol.h"
#include "window/crystal/geometrydialog.h"
#include "window/plotpanel.h"

#include "tests/window/seriestest.h"

namespace tessera {

namespace {

const double g_dfTrueAxis = -38.5;  // of the simulation

class GeometryWindow : public SeriesTest {
protected:
    static void SetUpTestSuite()
    {
        makeSeries("--frames 40 --size 320 --pixel-size 0.008 --tilt-start -20 --tilt-step 1 --axis -38.5",
                   "cell");
    }
    void SetUp() override
    {
        SeriesTest::SetUp();
        m_pWindow->show();
        open();
        m_pTabs->setCurrentIndex(0);
        m_pDialog = m_pWindow->findChild<GeometryDialog*>();
        ASSERT_NE(m_pDialog, nullptr);
        m_pRefine->m_pButtonGeometry->click();
        ASSERT_TRUE(m_pDialog->isVisible());
    }
    void index()
    {
        m_pWindow->peakReduction3D();
        m_pWindow->runIndexing();
        m_pTabs->setCurrentIndex(0);
    }
    /// Indexes with an axis that is off by a degree.
    void indexOffTheAxis()
    {
        m_pFrames->m_pRotationAxisSpin->setValue(g_dfTrueAxis + 1);
        index();
        m_pTabs->setCurrentIndex(1);  // so that the page of the 3D view shows one of them
        m_pTabs->setCurrentIndex(0);
    }
    QTableWidgetItem* nameItem(GeometryNumber number) const
    {
        for (int nRow = 0; nRow < m_pDialog->m_pTable->rowCount(); ++nRow) {
            if (m_pDialog->m_pTable->item(nRow, 0)->data(Qt::UserRole).toInt() == number) {
                return m_pDialog->m_pTable->item(nRow, 0);
            }
        }
        return nullptr;
    }
    QString text(GeometryNumber number, int nColumn) const
    {
        return m_pDialog->m_pTable->item(nameItem(number)->row(), nColumn)->text();
    }
    double numberIn(GeometryNumber number, int nColumn) const
    {
        return QLocale::system().toDouble(text(number, nColumn));
    }
    /// All that a geometry has to do with, as far as the window shows and exports it.
    QByteArray stateOfWindow() const
    {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        for (const ED3DWidget* pView : {m_pRaw, m_pMerged}) {
            for (const Peak3D& peak : pView->points()) {
                stream << peak.fX3D << peak.fY3D << peak.fZ3D << peak.dfDStar << peak.dfX2DCorrected
                       << peak.dfH << peak.dfK << peak.dfL << peak.nID << peak.dfIPoint;
            }
            stream << pView->groupLabels();
        }
        const QAbstractItemModel* pModel = m_pTable->model();
        for (int nRow = 0; nRow < pModel->rowCount(); ++nRow) {
            for (int nColumn = 0; nColumn < pModel->columnCount(); ++nColumn) {
                stream << pModel->index(nRow, nColumn).data().toString();
            }
        }
        for (const QDoubleSpinBox* pSpin : m_pWindow->findChildren<QDoubleSpinBox*>()) {
            stream << pSpin->text();
        }
        for (int nRow = 0; nRow < m_pFrames->m_pFileTable->rowCount(); ++nRow) {
            stream << m_pFrames->m_pFileTable->item(nRow, 3)->text()
                   << m_pShift->m_pShiftTable->item(nRow, 1)->text();
        }
        answered({path("cell.uc")}, [this] { m_pWindow->exportUnitCell(); });
        stream << readBytes(path("cell.uc"));
        return bytes;
    }
    QByteArray filesOfSeries() const
    {
        QByteArray bytes;
        for (const QFileInfo& info : QDir(file("")).entryInfoList({"w.*"}, QDir::Files, QDir::Name)) {
            if (!info.fileName().endsWith(QLatin1String(".window.json"))) {  // numbers of the pages, kept
                bytes += info.fileName().toUtf8() + readBytes(info.filePath());
            }
        }
        return bytes;
    }

    GeometryDialog* m_pDialog = nullptr;
};

}  // namespace

TEST_F(GeometryWindow, SaysWhatIsMissing)
{
    m_pDialog->m_pButtonRun->click();
    EXPECT_EQ(lines("No indexed peaks are available. Do merging and indexing first."), 1);
    EXPECT_TRUE(m_pDialog->m_pLabelMessage->text().contains("Do merging and indexing first"));
    EXPECT_FALSE(m_pDialog->m_pButtonApply->isEnabled());
    EXPECT_FALSE(m_pDialog->m_pButtonUndo->isEnabled());
    EXPECT_EQ(m_pDialog->m_pButtonRun->text(), "Refine");

    // A handful of peaks: those of two frames.
    m_pMerging->m_pSpinResolutionMax->setValue(0.12);
    index();
    m_pDialog->m_pButtonRun->click();
    EXPECT_TRUE(m_pDialog->m_pLabelMessage->text().startsWith("The geometry stays as it is."))
        << m_pDialog->m_pLabelMessage->text().toStdString();
    EXPECT_FALSE(m_pDialog->m_pButtonApply->isEnabled());

    const auto refused = [this](const QString& strFile) {
        answered({strFile}, [this] { m_pDialog->m_pButtonLoadCalibration->click(); });
        return m_pDialog->m_pLabelMessage->text();
    };
    EXPECT_TRUE(
        refused(write("bad.calib.json", "{\"format\": 1}")).contains("bad.calib.json: no calibration"));
    EXPECT_FALSE(m_pDialog->m_pButtonUndo->isEnabled());
}

TEST_F(GeometryWindow, RefinesTheChosenNumbersAndShowsThem)
{
    indexOffTheAxis();
    const QByteArray bytesBefore = stateOfWindow();
    nameItem(CentreX)->setCheckState(Qt::Unchecked);
    nameItem(ThirdOrderSpiral)->setCheckState(Qt::Unchecked);
    EXPECT_EQ(nameItem(ThirdOrderRadial)->checkState(), Qt::Unchecked) << "they come in together";
    m_pDialog->m_pButtonRun->click();
    ASSERT_TRUE(m_pDialog->m_pButtonApply->isEnabled()) << m_pDialog->m_pLabelMessage->text().toStdString();
    EXPECT_EQ(stateOfWindow(), bytesBefore) << "nothing changes before it is taken";
    EXPECT_NEAR(numberIn(Axis, 1), g_dfTrueAxis + 1, 1e-6);
    EXPECT_NEAR(numberIn(Axis, 2), g_dfTrueAxis, 0.1);
    EXPECT_GT(numberIn(Axis, 3), 0);
    EXPECT_TRUE(text(Axis, 4).isEmpty());
    EXPECT_TRUE(text(CentreX, 3).isEmpty());
    EXPECT_FALSE(text(CentreX, 4).isEmpty());
    EXPECT_EQ(text(CentreX, 2), text(CentreX, 1));
    EXPECT_TRUE(text(ThirdOrderRadial, 3).isEmpty());
    EXPECT_FALSE(m_pDialog->m_pPlots->m_pPlotFrame->series().isEmpty());
    EXPECT_GT(m_pDialog->m_pPlots->m_pPlotRadius->series()[0].vecPoint.size(), 100);
    const QString strAfter = m_pDialog->m_pPlots->m_pPlotRadius->csv();
    m_pDialog->m_pComboShown->setCurrentIndex(1);
    EXPECT_NE(m_pDialog->m_pPlots->m_pPlotRadius->csv(), strAfter);
}

TEST_F(GeometryWindow, TakesWhatItRefinedAndGivesItBackToTheBit)
{
    indexOffTheAxis();
    const QByteArray bytesFiles = filesOfSeries(), bytesBefore = stateOfWindow();
    nameItem(CentreX)->setCheckState(Qt::Unchecked);
    m_pDialog->m_pButtonRun->click();
    m_pDialog->m_pButtonApply->click();
    EXPECT_NEAR(m_pFrames->m_pRotationAxisSpin->value(), g_dfTrueAxis, 0.1);
    EXPECT_NE(stateOfWindow(), bytesBefore);
    EXPECT_EQ(filesOfSeries(), bytesFiles);
    EXPECT_EQ(m_pTabs->currentIndex(), 0);
    EXPECT_FALSE(m_pDialog->m_pButtonApply->isEnabled());
    ASSERT_TRUE(m_pDialog->m_pButtonUndo->isEnabled());
    // The indices are those of the refined cell: it can be refined again, and stays where it is.
    m_pDialog->m_pButtonRun->click();
    EXPECT_NEAR(numberIn(Axis, 2), numberIn(Axis, 1), 0.1);
    EXPECT_EQ(lines("another one than the reflections were indexed with"), 0);

    m_pDialog->m_pButtonUndo->click();
    EXPECT_EQ(stateOfWindow(), bytesBefore);
    EXPECT_FALSE(m_pDialog->m_pButtonUndo->isEnabled());
    EXPECT_EQ(filesOfSeries(), bytesFiles);
}

TEST_F(GeometryWindow, KeepsTheGeometryInProjectAndCalibration)
{
    m_pFrames->m_pRotationAxisSpin->setValue(g_dfTrueAxis + 1);
    index();
    m_pDialog->m_pButtonRun->click();
    answered({path("m.calib.json")}, [this] { m_pDialog->m_pButtonSaveCalibration->click(); });
    const std::optional<Calibration> calibration = readCalibration(path("m.calib.json"));
    ASSERT_TRUE(calibration) << log().toStdString();
    EXPECT_NEAR(calibration->dfRotationAxis, g_dfTrueAxis, 0.1);
    m_pDialog->m_pButtonApply->click();
    const double dfAxis = m_pFrames->m_pRotationAxisSpin->value();
    answered({file("w.ed3d")}, [this] { m_pDialog->m_pButtonSaveProject->click(); });
    EXPECT_TRUE(m_pDialog->m_pLabelMessage->text().contains("keeps what it was told"));
    answered({file("saved")}, [this] { m_pDialog->m_pButtonSaveProject->click(); });
    ASSERT_TRUE(QFile::exists(file("saved.ed3d"))) << log().toStdString();

    m_pWindow->openFiles({file("saved.ed3d")});
    EXPECT_NEAR(m_pFrames->m_pRotationAxisSpin->value(), dfAxis, 1e-4) << "with its decimals";
    EXPECT_FALSE(m_pDialog->m_pButtonUndo->isEnabled()) << "of another data set";
    EXPECT_TRUE(text(Axis, 2).isEmpty());

    open();
    m_pFrames->m_pRotationAxisSpin->setValue(-30);
    answered({path("m.calib.json")}, [this] { m_pDialog->m_pButtonLoadCalibration->click(); });
    EXPECT_NEAR(m_pFrames->m_pRotationAxisSpin->value(), calibration->dfRotationAxis, 1e-4);
    m_pDialog->m_pButtonUndo->click();
    EXPECT_EQ(m_pFrames->m_pRotationAxisSpin->value(), -30);
}

TEST_F(GeometryWindow, AStopLeavesAllAsItWasAndNothingElseBeginsMeanwhile)
{
    index();
    const QByteArray bytesBefore = stateOfWindow();
    bool bRefused = false;
    during([this] { m_pDialog->m_pButtonRun->click(); },
           [&] {
               if (m_pDialog->m_pButtonRun->text() != "Stop") {
                   return false;
               }
               m_pWindow->peakReduction3D();
               bRefused = log().contains("Merging has to wait");
               m_pDialog->m_pButtonRun->click();
               return true;
           });
    EXPECT_TRUE(bRefused);
    EXPECT_TRUE(m_pDialog->m_pLabelMessage->text().contains("did not finish"));
    EXPECT_EQ(m_pDialog->m_pButtonRun->text(), "Refine");
    EXPECT_EQ(stateOfWindow(), bytesBefore);
    EXPECT_FALSE(m_pDialog->m_pButtonApply->isEnabled());

    // A geometry that was changed since is not that of the refinement.
    m_pDialog->m_pButtonRun->click();
    ASSERT_TRUE(m_pDialog->m_pButtonApply->isEnabled());
    m_pFrames->m_pRotationAxisSpin->setValue(10);
    m_pDialog->m_pButtonApply->click();
    EXPECT_EQ(lines("Geometry, beam or cell have changed since the refinement. Refine again."), 1);
    EXPECT_EQ(m_pFrames->m_pRotationAxisSpin->value(), 10);
}

}  // namespace tessera
