// The integration in the window: its page, its run, the tab "Quality", and the files.
#include "tests/window/integrationtest.h"
#include "window/integration/tablepanel.h"

namespace tessera {

TEST_F(IntegrationWindow, APageAsItStartsChoosesNothing)
{
    integrate();
    ASSERT_EQ(m_listChoices.size(), 1u);
    const IntensityOptions& start = m_listChoices[0];
    EXPECT_FALSE(start.rotation);
    EXPECT_EQ(start.dfDMin, 0);
    EXPECT_EQ(start.dfDiscRadius, 0);
    EXPECT_EQ(start.dfRockingWidth, 0);
    EXPECT_TRUE(start.bProfileFit);
    EXPECT_TRUE(start.bScale);
    EXPECT_TRUE(start.bDecay);
    EXPECT_EQ(start.dfRejection, ScalingOptions().dfRejection);
    EXPECT_EQ(start.strLaueClass, QString());
    EXPECT_EQ(start.nSpaceGroup, 0);
    EXPECT_TRUE(start.formula.isEmpty());
}

TEST_F(IntegrationWindow, TheChoicesOfThePageReachTheRun)
{
    m_pPage->m_pComboRotation->setCurrentIndex(3);
    m_pPage->m_pSpinPrecession->setValue(0.9);
    m_pPage->m_pSpinResolution->setValue(0.8);
    m_pPage->m_pSpinDiscRadius->setValue(5.5);
    m_pPage->m_pSpinRockingWidth->setValue(0.0035);
    m_pPage->m_pCheckProfile->click();
    m_pPage->m_pCheckScale->click();
    m_pPage->m_pCheckDecay->click();
    m_pPage->m_pSpinRejection->setValue(4.5);
    m_pPage->m_pComboLaue->setCurrentText("4/mmm");
    m_pPage->m_pComboSpaceGroup->setEditText("P 43 21 2");
    m_pPage->m_pEditFormula->setText(" Si O2 ");
    integrate();
    m_pPage->m_pComboRotation->setCurrentIndex(2);
    integrate();
    ASSERT_EQ(m_listChoices.size(), 2u);
    const IntensityOptions& chosen = m_listChoices[0];
    ASSERT_TRUE(chosen.rotation);
    EXPECT_EQ(chosen.rotation->kind, RotationKind::Precession);
    EXPECT_DOUBLE_EQ(chosen.rotation->dfPrecessionAngle, 0.9);
    EXPECT_DOUBLE_EQ(chosen.dfDMin, 0.8);
    EXPECT_DOUBLE_EQ(chosen.dfDiscRadius, 5.5);
    EXPECT_DOUBLE_EQ(chosen.dfRockingWidth, 0.0035);
    EXPECT_FALSE(chosen.bProfileFit);
    EXPECT_FALSE(chosen.bScale);
    EXPECT_FALSE(chosen.bDecay);
    EXPECT_DOUBLE_EQ(chosen.dfRejection, 4.5);
    EXPECT_EQ(chosen.strLaueClass, "4/mmm");
    EXPECT_EQ(chosen.nSpaceGroup, 96);
    EXPECT_EQ(hillFormula(chosen.formula), "O2 Si");
    ASSERT_TRUE(m_listChoices[1].rotation);
    EXPECT_EQ(m_listChoices[1].rotation->kind, RotationKind::Stepped);
    EXPECT_EQ(m_listChoices[1].rotation->dfPrecessionAngle, 0);
}

TEST_F(IntegrationWindow, AnUnknownElementOrSpaceGroupIsToldAndNothingBegins)
{
    m_pPage->m_pEditFormula->setText("Si O2 Qq");
    integrate();
    m_pPage->m_pEditFormula->setText("");
    m_pPage->m_pComboSpaceGroup->setEditText("P 7 nonsense");
    integrate();
    EXPECT_TRUE(m_listChoices.empty());
    EXPECT_EQ(lines("Qq"), 1);
    EXPECT_EQ(lines("P 7 nonsense is no space group that is known."), 1);
}

TEST_F(IntegrationWindow, AResultFillsTheTabAndAnotherSeriesEmptiesIt)
{
    EXPECT_TRUE(m_pTab->isEmpty());
    EXPECT_FALSE(m_pPage->m_pButtonExport->isEnabled());
    integrate();
    ASSERT_FALSE(m_pTab->isEmpty());
    EXPECT_TRUE(m_pPage->m_pButtonExport->isEnabled());
    EXPECT_TRUE(m_pPage->m_pLabelResult->text().contains("Laue class -3m1, space group P 31 2 1"));
    EXPECT_GE(m_pPage->m_pComboSpaceGroup->findText("P 3 2 1"), 1);
    // The numbers of the records, point by point.
    ASSERT_NE(plot("rint_by_resolution"), nullptr);
    EXPECT_EQ(plot("rint_by_resolution")->csv(),
              "series,\"1/d, Å⁻¹\",Rint\nafter rejection,0.19166666666666665,0.04\n"
              "after rejection,0.375,0.08\nafter rejection,0.45833333333333337,0.16\n"
              "before scaling,0.19166666666666665,0.1\nbefore scaling,0.375,0.2\n"
              "before scaling,0.45833333333333337,0.4\n");
    EXPECT_EQ(plot("cchalf_by_resolution")->series().first().vecPoint.size(), 2) << "one is not known";
    EXPECT_EQ(plot("scale_by_frame")->series().first().vecPoint.value(30), QPointF(31, 1.3));
    EXPECT_EQ(plot("decay_by_frame"), nullptr) << "there is none";
    EXPECT_EQ(plot("observations_by_frame")->series().first().vecPoint.value(4), QPointF(5, 14));
    EXPECT_EQ(plot("completeness_by_tilt")->series().first().vecPoint.last(), QPointF(30, 50));
    EXPECT_EQ(plot("completeness_by_tilt")->series().value(1).vecPoint.value(1), QPointF(42, 90));
    // The line of the Wilson plot has the slope −2B that the points were made with.
    const QVector<QPointF> vecLine = plot("wilson")->series().value(1).vecPoint;
    ASSERT_EQ(vecLine.size(), 2);
    EXPECT_NEAR((vecLine[1].y() - vecLine[0].y()) / (vecLine[1].x() - vecLine[0].x()), -3, 1e-9);
    const auto* pOperations = m_pTab->findChild<TablePanel*>("laue_operations");
    ASSERT_NE(pOperations, nullptr);
    EXPECT_EQ(pOperations->csv().section('\n', 1, 1), "\"-y,x-y,z\",3,80,0.99,0.03,0.98");

    QFile::copy(file("w.ed3d"), path("w.ed3d"));
    m_pWindow->openFiles({path("w.ed3d")});
    EXPECT_TRUE(m_pTab->isEmpty());
    EXPECT_EQ(m_pController->result(), nullptr);
    EXPECT_FALSE(m_pPage->m_pButtonExport->isEnabled());
    EXPECT_EQ(m_pPage->m_pLabelResult->text(), QString());
    EXPECT_EQ(m_pPage->m_pComboSpaceGroup->count(), 1);
}

TEST_F(IntegrationWindow, ARunThatIsStoppedOrFailsLeavesAllAsItWas)
{
    integrate();
    const IntegrationResult* pBefore = m_pController->result();
    const QString strBefore = m_pPage->m_pLabelResult->text();
    for (const bool bStop : {true, false}) {
        m_pController->host().fnIntegrate = [&](const IntensityOptions&, CRunReport& report,
                                                IntegrationResult& result) {
            result.chosen.strClass = "mmm";
            if (bStop) {
                while (report.goOn()) {
                    ;
                }
                return RunOutcome{RunEnd::Stopped, {}};
            }
            report.fail("Frame 7 cannot be read.");
            return RunOutcome{RunEnd::Failed, report.reason()};
        };
        if (bStop) {
            during([this] { integrate(); },
                   [this] {
                       if (m_pPage->m_pButtonIntegrate->text() != "Stop") {
                           return false;
                       }
                       m_pWindow->openFiles({file("w.ed3d")});
                       integrate();
                       return true;
                   });
        } else {
            integrate();
        }
        EXPECT_EQ(m_pPage->m_pButtonIntegrate->text(), "Integrate");
        EXPECT_EQ(m_pController->result(), pBefore);
        EXPECT_EQ(m_pPage->m_pLabelResult->text(), strBefore);
        EXPECT_FALSE(m_pTab->isEmpty());
    }
    EXPECT_EQ(lines("Opening files has to wait"), 1);
    EXPECT_EQ(lines("Frame 7 cannot be read."), 1);
}

/// The series itself, which the host of the window integrates.
class IntegrationOfSeries : public IntegrationWindow {
protected:
    void SetUp() override
    {
        IntegrationWindow::SetUp();
        m_pController->host() = m_hostOfWindow;
    }
    void indexAndIntegrate()
    {
        m_pMerging->m_pButtonMerge->click();
        m_pCell->m_pButtonIndexMergedPeaks->click();
        integrate();
    }
};

TEST_F(IntegrationOfSeries, DiscsLieOnTheSpots)
{
    integrate();
    EXPECT_EQ(lines("No peaks are indexed with the cell in force"), 1) << "only mapped as yet";
    indexAndIntegrate();
    ASSERT_NE(m_pController->result(), nullptr) << log().right(1500).toStdString();
    EXPECT_FALSE(m_pTab->isEmpty());
    EXPECT_GT(plot("rint_by_resolution")->series().first().vecPoint.size(), 3);
    EXPECT_EQ(plot("scale_by_frame")->series().first().vecPoint.size(), g_nFrames);
    // The discs of the strongest reflections lie on spots: bright in the middle, dark beside the disc.
    m_pPage->m_pCheckPredicted->click();
    const IntegrationResult& result = *m_pController->result();
    std::vector<Observation> listStrong;
    for (const Observation& observation : result.integrated.listObservation) {
        if (observation.nFlags == 0) {
            listStrong.push_back(observation);
        }
    }
    ASSERT_GT(listStrong.size(), 50u);
    std::sort(listStrong.begin(), listStrong.end(), [](const Observation& one, const Observation& other) {
        return one.dfIntensity > other.dfIntensity;
    });
    for (size_t n = 0; n < 5; ++n) {
        const auto nFrame = int(std::lround(listStrong[n].dfFrame));
        m_pSpin->setValue(nFrame + 1);
        for (const PredictedDisc& disc : discsOnFrame(result, nFrame, QLocale::c())) {
            if (result.integrated.listObservation[disc.nObservation].anIndex != listStrong[n].anIndex) {
                continue;
            }
            const CImgObj<unsigned char>& pixels = *m_pScene->images()[0];
            const auto at = [&](double dfX) {
                return int(
                    pixels.Data()[int(disc.ptCentre.y()) * pixels.Width() + int(disc.ptCentre.x() + dfX)]);
            };
            EXPECT_GT(at(0), 5 + 1.2 * at(discRadius(result) + 1)) << n;
        }
    }
}

TEST_F(IntegrationOfSeries, EachDiscOfAFrameHasItsProfile)
{
    indexAndIntegrate();
    ASSERT_NE(m_pController->result(), nullptr) << log().right(1500).toStdString();
    m_pPage->m_pCheckPredicted->click();
    m_pSpin->setValue(16);
    const auto listDisc = discsOnFrame(*m_pController->result(), 15, QLocale::c());
    EXPECT_EQ(marks<DiscItem>().size(), int(listDisc.size()));
    m_pController->showProfile(listDisc.front().nObservation);
    ASSERT_NE(profile(), nullptr);
    EXPECT_GT(profile()->plot()->series().first().vecPoint.size(), 1);
}

// In the middle of the frames.
TEST_F(IntegrationOfSeries, ASecondClickLeavesTheFormerResult)
{
    indexAndIntegrate();
    const IntegrationResult* pFormer = m_pController->result();
    ASSERT_NE(pFormer, nullptr);
    during([this] { integrate(); },
           [this] {
               if (m_pPage->m_pButtonIntegrate->text() != "Stop") {
                   return false;
               }
               integrate();
               return true;
           });
    EXPECT_EQ(m_pController->result(), pFormer);
    EXPECT_EQ(m_pPage->m_pButtonIntegrate->text(), "Integrate");
}

// The driver's files, from the same peaks, are those of "Export" to the byte.
TEST_F(IntegrationOfSeries, ExportsWhatTheDriverWrites)
{
    ASSERT_NO_FATAL_FAILURE(copySeries("driver"));
    const BatchOutcome outcome = runBatch({"--window-defaults", "--from", "merge", "--to", "integrate",
                                           "--cell", path("driver/w.uc"), "--formula", "Si O2", "--accept",
                                           path("driver/w.ed3d")});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.right(2000).toStdString();
    m_pPage->m_pEditFormula->setText("Si O2");
    indexAndIntegrate();
    m_pPage->m_pButtonExport->click();
    EXPECT_EQ(lines("Intensities written", Qt::black), 1) << log().right(1000).toStdString();
    for (const char* pszSuffix : {"_integrated.hkl", "_merged.hkl", ".ins", ".cif", ".mtz"}) {
        const QByteArray bytes = readBytes(file(QLatin1String("w") + pszSuffix));
        EXPECT_FALSE(bytes.isEmpty()) << pszSuffix;
        EXPECT_EQ(bytes, readBytes(path("driver/w") + pszSuffix)) << pszSuffix;
    }
}

}  // namespace tessera
