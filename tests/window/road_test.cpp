// "Solve": the road of the driver in the window, its files, its rows, and the way back into it.
#include "tests/window/twinseries.h"
#include "window/crystal/geometrydialog.h"
#include "window/frames/exchangedialog.h"
#include "window/road/roaddock.h"
#include "window/timeleft.h"

namespace tessera {

namespace {

class Road : public TwinSeries {
protected:
    void SetUp() override
    {
        TwinSeries::SetUp();
        m_pRoad = m_pWindow->findChild<RoadDock*>();
    }
    QStringList filesOf(const QString& strFolder) const
    {
        QStringList list = QDir(path(strFolder)).entryList(QDir::Files, QDir::Name);
        list.removeAll("w.window.json");  // is the window's alone
        return list;
    }
    QByteArray bytesOf(const QString& strName) const
    {
        QFile file(path(strName));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
    }
    /// The buttons of a row, by their text.
    QToolButton* button(RoadRowKind kind, const QString& strText) const
    {
        QList<QToolButton*> list;
        for (QToolButton* pButton : m_pRoad->findChildren<QToolButton*>()) {
            if (pButton->text() == strText) {
                list.append(pButton);
            }
        }
        return list.value(int(kind));
    }
    /// Name and sentence of each row.
    QStringList rowTexts() const
    {
        QStringList list;
        const QList<QLabel*> listLabel = m_pRoad->findChildren<QLabel*>();
        for (int n = 0; n < listLabel.size(); ++n) {
            if (listLabel[n]->text().startsWith("<b>")) {
                list.append(listLabel[n]->text() + ' ' + listLabel.value(n + 1)->text());
            }
        }
        return list;
    }

    RoadDock* m_pRoad = nullptr;
};

}  // namespace

TEST_F(Road, OnePressMakesTheFilesOfTheDriver)
{
    ASSERT_NO_FATAL_FAILURE(runDriver({}));
    open();
    solve();
    EXPECT_EQ(lines("", Qt::red), 0) << log().toStdString();
    const QStringList listFile = filesOf("driver");
    ASSERT_GT(listFile.size(), 41 + 12);
    EXPECT_EQ(filesOf("series"), listFile);
    for (const QString& strFile : listFile) {
        if (!strFile.endsWith(".log") && !strFile.endsWith(".run.json")) {  // name the folder, and times
            EXPECT_EQ(bytesOf("series/" + strFile), bytesOf("driver/" + strFile)) << qPrintable(strFile);
        }
    }

    EXPECT_EQ(answered({path("r.html")}, [&] { m_pActions->m_pReport->trigger(); }).value(0), "Report");
    EXPECT_TRUE(bytesOf("r.html").contains("<pre>tessera-batch " + file("w.ed3d").toUtf8()));
    EXPECT_TRUE(bytesOf("r.html").contains("Bravais types"));

    for (const QString& strText : rowTexts()) {
        EXPECT_FALSE(strText.contains("not done")) << qPrintable(strText);
        EXPECT_FALSE(strText.contains("did not")) << qPrintable(strText);
    }
    EXPECT_GT(m_pRaw->points().size(), 500);
    EXPECT_GT(m_pMerged->points().size(), 100);
    EXPECT_GT(m_pTable->model()->rowCount(), 100);
    button(RoadRowKind::Integration, "Show")->click();
    EXPECT_EQ(m_pTabs->tabText(m_pTabs->currentIndex()), "Quality");
    button(RoadRowKind::Peaks, "Settings")->click();
    EXPECT_EQ(m_pWindow->findChild<QToolBox*>()->currentWidget(), m_pSearch);
}

TEST_F(Road, AMaskOfTheWindowIsThatOfTheDriversOption)
{
    QFile mask(path("a.msk"));
    ASSERT_TRUE(mask.open(QIODevice::WriteOnly));
    for (const char* psz : {"1 20 20\n", "1 60 20\n", "1 60 120.25\n", "1 20 120\n"}) {
        mask.write(psz);
    }
    mask.close();
    ASSERT_NO_FATAL_FAILURE(runDriver({"--mask", path("a.msk"), "--to", "index"}));
    open();
    answered({path("a.msk")}, [&] { m_pWindow->loadPeakHuntingMask(); });
    solve();
    for (const char* pszFile : {"/w.sc", "/w.pk", "/w.uc", "/w.hkl"}) {
        EXPECT_EQ(bytesOf(QString("series") + pszFile), bytesOf(QString("driver") + pszFile)) << pszFile;
    }
    EXPECT_FALSE(QFile::exists(file("w_window.msk")));
    const QByteArray bytesPeaks = bytesOf("series/w.pk");

    // One that no file has is written for the road, and gives the same again.
    ASSERT_TRUE(QFile::remove(path("a.msk")));
    solve();
    EXPECT_TRUE(QFile::exists(file("w_window.msk")));
    EXPECT_EQ(bytesOf("series/w.pk"), bytesPeaks);
}

TEST_F(Road, AStepGoesOnWithTheNumbersThatWereChanged)
{
    open();
    EXPECT_FALSE(button(RoadRowKind::Peaks, "From here")->isEnabled());
    solve();
    const int nPeaks = m_pRaw->points().size();
    const double dfThreshold = m_pSearch->m_pThresholdSpin->value();
    const QByteArray bytesShifts = bytesOf("series/w.sc");
    m_pSearch->m_pThresholdSpin->setValue(4 * dfThreshold);
    button(RoadRowKind::Peaks, "From here")->click();
    EXPECT_LT(m_pRaw->points().size(), nPeaks);
    EXPECT_GT(m_pRaw->points().size(), nPeaks / 10);
    EXPECT_DOUBLE_EQ(m_pSearch->m_pThresholdSpin->value(), 4 * dfThreshold);
    EXPECT_EQ(bytesOf("series/w.sc"), bytesShifts);
    EXPECT_TRUE(rowTexts().value(0).contains("Drift"));
}

TEST_F(Road, StopKeepsWhatIsDoneAndTheWindowAnswersMeanwhile)
{
    open();
    m_pWindow->show();
    during([&] { solve(); },
           [&] {
               if (m_pRaw->points().isEmpty()) {
                   return false;
               }
               // A change of what the road has in use is refused, and a second press stops it.
               open();
               m_pRoad->m_pSolveButton->click();
               return true;
           });
    EXPECT_GE(lines("has to wait"), 1);
    EXPECT_TRUE(QFile::exists(file("w.sc")));
    EXPECT_TRUE(QFile::exists(file("w.pk")));
    EXPECT_FALSE(QFile::exists(file("w_integrated.hkl")));
    EXPECT_EQ(m_pRoad->m_pSolveButton->text(), "Solve");
    EXPECT_TRUE(rowTexts().last().contains("not done yet")) << qPrintable(rowTexts().last());
}

TEST_F(Road, AReportOfWhatWasDoneByHand)
{
    open();
    const auto report = [this] {
        answered({path("r.html")}, [&] { m_pActions->m_pReport->trigger(); });
        return QString::fromUtf8(bytesOf("r.html"));
    };
    // Of frames alone.
    const QString strBare = report();
    EXPECT_TRUE(strBare.contains("<h1>w</h1>"));
    EXPECT_TRUE(strBare.contains("41 frames over 40.0"));
    EXPECT_FALSE(strBare.contains("Cell and lattice"));
    EXPECT_FALSE(strBare.contains("Intensities</h2>"));
    EXPECT_FALSE(strBare.contains("tessera-batch")) << "no command makes that again";

    m_pTabs->setCurrentIndex(0);
    m_pActions->m_listSelection[2]->trigger();
    m_pShift->m_pRunButton->click();
    m_pSearch->m_pThresholdSpin->setValue(15);
    m_pSearch->m_pRunButton->click();
    m_pCell->m_pButtonSearchCell->click();
    m_pCell->m_pButtonIndexMergedPeaks->click();
    m_pWindow->findChild<GeometryDialog*>()->m_pButtonRun->click();
    const int nIndexed = m_pTable->model()->rowCount();
    ASSERT_GT(nIndexed, 20) << log().toStdString();
    const QString strWorked = report();
    EXPECT_TRUE(strWorked.contains(QString("%1 reflections, ").arg(nIndexed))) << nIndexed;
    EXPECT_TRUE(strWorked.contains("as found"));
    EXPECT_TRUE(strWorked.contains("refined with the geometry"));
    EXPECT_TRUE(strWorked.contains("Residuals of the refined geometry"));
    EXPECT_GT(strWorked.count("<svg"), strBare.count("<svg"));
}

TEST_F(Road, ExportsAfterItHaveTheGeometryThatItRefined)
{
    ASSERT_NO_FATAL_FAILURE(runDriver({"--export", "xds,pets"}));
    open();
    solve();
    // The texts for both programs, as if of the driver's folder.
    const auto exported = [this] {
        QTimer::singleShot(0, [this] {
            auto* pDialog = qobject_cast<ExchangeDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(pDialog);
            EXPECT_EQ(pDialog->folder(), path("series"));
            pDialog->m_listCheck[0]->setChecked(true);
            pDialog->m_listCheck[2]->setChecked(true);
            pDialog->m_pButtonExport->click();
            EXPECT_EQ(pDialog->m_pLabelSays->text(), "XDS: written.\nPETS: written.");
            pDialog->reject();
        });
        m_pActions->m_pOtherPrograms->trigger();
        return bytesOf("series/XDS.INP").replace("/series/", "/driver/") + bytesOf("series/w.pts");
    };
    const QByteArray bytesFresh = exported();
    EXPECT_TRUE(bytesFresh.contains("ROTATION_AXIS"));
    EXPECT_EQ(bytesFresh, bytesOf("driver/XDS.INP") + bytesOf("driver/w.pts"));
}

TEST(RoadRows, TimeThatIsLeft)
{
    EXPECT_EQ(timeLeftText(10, 0.5), "0:10 left");
    EXPECT_EQ(timeLeftText(60, 0.25), "3:00 left");
    for (const double dfShare : {0.0, 0.01, 1.0, 2.0}) {
        EXPECT_EQ(timeLeftText(10, dfShare), "") << dfShare;
    }
    EXPECT_EQ(timeLeftText(0.5, 0.5), "") << "too little to go by";
}

}  // namespace tessera
