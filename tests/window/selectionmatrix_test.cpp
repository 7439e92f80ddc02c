// One selection in all views with an integration beside it: from the disc of a
// prediction, the profile, and each view, to all of the others.
#include "frameview/spotring.h"
#include "tests/window/integrationtest.h"
#include "window/frames/curveplot.h"
#include "window/reciprocal/peaktableview.h"
#include "window/selection/selectioncontroller.h"

#include <qwt_plot_canvas.h>

namespace tessera {

namespace {

/// Two indexed reflections of a simulated series that lie apart from the others
/// in both 3D views. Each has a prediction of its own at a place of its frame
/// where no peak lies.
class SelectionMatrix : public IntegrationWindow {
protected:
    struct Chosen {
        int nID = -1;
        int nFrame = -1;                   ///< where it is strongest, from 0
        int nRawPoint = -1, nMerged = -1;  ///< in the views
        std::vector<QPointF> vecSpot;      ///< raw pixels, on that frame
        QString strIndices;                ///< as the profile tells them
    };

    void SetUp() override
    {
        IntegrationWindow::SetUp();
        m_pWindow->resize(1920, 1200);  // room between the points for a click
        m_pSelection = m_pWindow->findChild<SelectionController*>();
        m_pPeaks = static_cast<PeakTableView*>(m_pTable);
        m_pPlot = m_pWindow->findChild<CurvePlot*>();
        m_pMerging->m_pButtonMerge->click();
        m_pCell->m_pButtonIndexMergedPeaks->click();
        ASSERT_GT(table()->rowCount(), 20) << log().right(500).toStdString();
        m_result.integrated.listObservation.resize(2);
        findReflections();
        ASSERT_EQ(m_vecChosen.size(), 2u);
        integrate();
        m_pPage->m_pCheckPredicted->setChecked(true);
    }
    /// How far the nearest point of another reflection lies from a point, pixels
    /// of the screen.
    static double distanceToOthers(const ED3DWidget* pView, int nPoint, const QSet<int>& setOwn)
    {
        double dfLeast = HUGE_VAL;
        for (int i = 0; i < pView->points().size(); ++i) {
            if (!setOwn.contains(pView->points()[i].nID)) {
                const QPointF off = pView->placeOfPoint(i) - pView->placeOfPoint(nPoint);
                dfLeast = std::min(dfLeast, std::hypot(off.x(), off.y()));
            }
        }
        return dfLeast;
    }
    /// A place of a frame without a peak around it.
    QPointF freePlace(int nFrame) const
    {
        for (int y = 30; y < 180; y += 7) {
            for (int x = 30; x < 180; x += 7) {
                double dfLeast = HUGE_VAL;
                for (const Peak3D& peak : m_pRaw->points()) {
                    if (peak.nFrame == nFrame) {
                        dfLeast = std::min(dfLeast, std::hypot(peak.dfX2D - x, peak.dfY2D - y));
                    }
                }
                if (dfLeast > 20) {
                    return QPointF(x, y);
                }
            }
        }
        return {};
    }
    void findReflections()
    {
        for (int nRow = 0; nRow < table()->rowCount() && m_vecChosen.size() < 2; ++nRow) {
            const auto number = [&](int nColumn) { return table()->index(nRow, nColumn).data().toInt(); };
            Chosen chosen;
            chosen.nID = number(0);
            m_pSelection->chooseReflection(chosen.nID);
            chosen.nFrame = m_pSelection->model().current().nFrame;
            chosen.nRawPoint = m_pRaw->ringedPoint();
            chosen.nMerged = m_pMerged->ringedPoint();
            if (chosen.nRawPoint < 0 || chosen.nMerged < 0 || m_pRaw->selectedPoints().size() < 3) {
                continue;
            }
            QSet<int> setPeak;
            for (int nPoint : m_pRaw->selectedPoints()) {
                const Peak3D& peak = m_pRaw->points()[nPoint];
                setPeak.insert(peak.nID);
                if (peak.nFrame == chosen.nFrame) {
                    chosen.vecSpot.emplace_back(peak.dfX2D, peak.dfY2D);
                }
            }
            if (distanceToOthers(m_pRaw, chosen.nRawPoint, setPeak) < 14 ||
                distanceToOthers(m_pMerged, chosen.nMerged, {chosen.nID}) < 14 ||
                (!m_vecChosen.empty() && std::abs(m_vecChosen[0].nFrame - chosen.nFrame) < 4)) {
                continue;
            }
            chosen.strIndices =
                QStringLiteral("h k l = %1 %2 %3").arg(number(4)).arg(number(5)).arg(number(6));
            Observation& observation = m_result.integrated.listObservation[m_vecChosen.size()];
            observation.anIndex = {number(4), number(5), number(6)};
            observation.dfFrame = chosen.nFrame;
            observation.nFirstFrame = std::max(chosen.nFrame - 1, 0);
            observation.nLastFrame = std::min(chosen.nFrame + 1, g_nFrames - 1);
            const QPointF ptFree = freePlace(chosen.nFrame);
            observation.place = {ptFree.x(), ptFree.y()};
            m_vecChosen.push_back(chosen);
        }
        m_pSelection->model().clear(nullptr);
    }
    static std::vector<int> idsOf(const ED3DWidget* pView)
    {
        std::vector<int> vecId;
        for (int nPoint : pView->selectedPoints()) {
            vecId.push_back(pView->points().at(nPoint).nID);
        }
        return vecId;
    }
    void clickFrame(const QPointF& ptRaw)
    {
        QTest::mouseClick(m_pView->viewport(), Qt::LeftButton, {},
                          m_pView->mapFromScene(ptRaw + QPointF(0.5, 0.5)));
        QCoreApplication::processEvents();
    }
    void goToFrame(int nFrame)
    {
        m_pTabs->setCurrentIndex(0);
        m_pSpin->setValue(nFrame + 1);
    }
    void clickPoint(ED3DWidget* pView, int nTab, int nPoint)
    {
        m_pTabs->setCurrentIndex(nTab);
        QTest::mouseClick(pView, Qt::LeftButton, {}, pView->placeOfPoint(nPoint).toPoint());
    }
    void clickRow(int nID)
    {
        m_pTabs->setCurrentIndex(3);
        for (int nRow = 0; nRow < table()->rowCount(); ++nRow) {
            const QModelIndex index = table()->index(nRow, 0);
            if (index.data().toInt() == nID) {
                m_pTable->scrollTo(index);
                QTest::mouseClick(m_pTable->viewport(), Qt::LeftButton, {},
                                  m_pTable->visualRect(index).center());
            }
        }
    }
    /// Number of the frame and intensity of a point of the curve.
    QList<double> numbersOfCurve(int nPoint) const
    {
        QList<double> listNumber;
        for (const QString& strWord : m_pPlot->text().split('\n').value(nPoint).simplified().split(' ')) {
            listNumber.append(QLocale::system().toDouble(strWord));
        }
        return listNumber;
    }
    void clickCurve(int nPoint)
    {
        const double dfX = numbersOfCurve(nPoint).value(0), dfY = numbersOfCurve(nPoint).value(1);
        QTest::mouseClick(m_pPlot->canvas(), Qt::LeftButton, {},
                          QPoint(qRound(m_pPlot->transform(QwtPlot::xBottom, dfX)),
                                 qRound(m_pPlot->transform(QwtPlot::yLeft, dfY))));
    }
    /// Nothing else is chosen in any view; the frame comes to the front.
    void expectChosen(const Chosen& chosen, const char* pszFrom)
    {
        SCOPED_TRACE(pszFrom);
        EXPECT_EQ(m_pSelection->model().reflections(), std::vector<int>({chosen.nID}));
        EXPECT_EQ(idsOf(m_pMerged), std::vector<int>({chosen.nID}));
        EXPECT_EQ(m_pMerged->ringedPoint(), chosen.nMerged);
        EXPECT_EQ(m_pPeaks->selectedIds(), std::vector<int>({chosen.nID}));
        EXPECT_EQ(m_pPeaks->currentId(), chosen.nID);
        EXPECT_TRUE(m_pTable->viewport()->rect().intersects(m_pTable->visualRect(m_pTable->currentIndex())) ||
                    !m_pTable->isVisible());
        EXPECT_EQ(m_pPlot->reflection(), chosen.nID);
        // Each point of the curve is a peak of the raw view.
        EXPECT_EQ(m_pRaw->selectedPoints().size(), m_pPlot->text().count('\n') - 1);
        ASSERT_GE(m_pRaw->ringedPoint(), 0);
        const int nFrame = m_pSelection->model().current().nFrame;
        EXPECT_EQ(m_pRaw->points()[m_pRaw->ringedPoint()].nFrame, nFrame);
        m_pTabs->setCurrentIndex(0);
        EXPECT_EQ(m_pSpin->value(), nFrame + 1);
        const auto listRing = marks<SpotRing>();
        ASSERT_EQ(listRing.size(), 1);
        const Peak3D& peak = m_pRaw->points()[m_pRaw->ringedPoint()];
        EXPECT_EQ(listRing[0]->pos(), QPointF(peak.dfX2D + 0.5, peak.dfY2D + 0.5));
        if (profile() && profile()->isVisible()) {
            EXPECT_EQ(profile()->text()->text().section('\n', 0, 0).left(chosen.strIndices.size()),
                      chosen.strIndices);
        }
    }

    std::vector<Chosen> m_vecChosen;
    SelectionController* m_pSelection = nullptr;
    PeakTableView* m_pPeaks = nullptr;
    CurvePlot* m_pPlot = nullptr;
};

}  // namespace

TEST_F(SelectionMatrix, FromEachViewToAllOthers)
{
    const Chosen &a = m_vecChosen[0], &b = m_vecChosen[1];
    const auto disc = [this](size_t n) {
        goToFrame(m_vecChosen[n].nFrame);
        const FramePlace& place = observations()[n].place;
        clickFrame({place.dfX, place.dfY});
    };
    // The disc of a prediction opens the profile, and chooses its reflection;
    // from then on the profile is that of each choice.
    disc(0);
    expectChosen(a, "disc");
    ASSERT_TRUE(profile());
    ASSERT_TRUE(profile()->isVisible());
    clickPoint(m_pMerged, 2, b.nMerged);
    expectChosen(b, "merged view");
    disc(0);
    expectChosen(a, "disc beside the open profile");
    clickPoint(m_pRaw, 1, b.nRawPoint);
    expectChosen(b, "raw view");
    clickRow(a.nID);
    expectChosen(a, "row");
    goToFrame(b.nFrame);
    clickFrame(b.vecSpot.front());
    expectChosen(b, "spot of the frame");
    disc(0);
    m_pTabs->setCurrentIndex(2);
    clickCurve(1);
    EXPECT_EQ(m_pSelection->model().current().nFrame + 1, numbersOfCurve(1).value(0));
    expectChosen(a, "curve");
    m_pSelection->chooseReflection(b.nID);
    expectChosen(b, "a step of the keys");

    // A profile that was closed stays closed until it is asked for.
    profile()->close();
    clickPoint(m_pMerged, 2, a.nMerged);
    expectChosen(a, "without a profile");
    EXPECT_FALSE(profile()->isVisible());
    clickRow(b.nID);
    EXPECT_TRUE(profile()->isVisible()) << "of the row";
    expectChosen(b, "row that opens the profile");
}

TEST_F(SelectionMatrix, APredictionWithoutAReflectionChoosesNothing)
{
    m_pSelection->chooseReflection(m_vecChosen[1].nID);
    m_result.integrated.listObservation[0].anIndex = {41, 42, 43};
    integrate();
    goToFrame(m_vecChosen[0].nFrame);
    const FramePlace& place = observations()[0].place;
    clickFrame({place.dfX, place.dfY});
    EXPECT_EQ(m_pSelection->model().reflections(), std::vector<int>({m_vecChosen[1].nID}));
    EXPECT_TRUE(m_pWindow->statusBar()->currentMessage().contains("(41, 42, 43) is predicted here"))
        << m_pWindow->statusBar()->currentMessage().toStdString();
}

}  // namespace tessera
