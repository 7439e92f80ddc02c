// What moves the points of the 3D views, and the page that steers the views.
#include "records/pi.h"
#include "tests/window/reciprocaltest.h"

namespace tessera {

namespace {

/// Where the points of a view lie.
std::vector<float> places(const ED3DWidget* pView)
{
    std::vector<float> vec;
    for (const Peak3D& peak : pView->points()) {
        vec.insert(vec.end(), {peak.fX3D, peak.fY3D, peak.fZ3D});
    }
    return vec;
}

typedef std::function<double(const ED3DWidget*)> Getter;

Getter rangeOf(int nAxis)
{
    return [nAxis](const ED3DWidget* pView) {
        int an[3];
        pView->getLatticeRange(an[0], an[1], an[2]);
        return an[nAxis];
    };
}

/// A control of the page and what it sets.
struct ViewControl {
    QWidget* pControl;
    double dfRaw, dfMerged;  ///< what is set while each of the views is shown
    Getter fnGet;
    double dfScale = 1, dfOffset = 0;  ///< from the control to the view

    const char* property() const { return pControl->property("checked").isValid() ? "checked" : "value"; }
    double value() const { return pControl->property(property()).toDouble(); }
    void set(int nView) const { pControl->setProperty(property(), wanted(nView)); }
    double wanted(int nView) const { return nView == 0 ? dfRaw : dfMerged; }
};

class View3DPanel : public Reciprocal {
protected:
    std::vector<ViewControl> controls() const
    {
        const View3DPage& p = *m_pPanel;
        return {{p.m_pSpinPointSize, 3.5, 0, [](const ED3DWidget* v) { return v->pointSizeRatio(); }},
                {p.m_pSpinPointTransparency, 45, 100, [](const ED3DWidget* v) { return v->pointAlpha(); },
                 -0.01, 1},
                {p.m_pGroupCanvasGrid, 0, 1, [](const ED3DWidget* v) { return v->showCanvasGrid(); }},
                {p.m_pSpinCanvasGridTransparency, 29, 57,
                 [](const ED3DWidget* v) { return v->canvasGridAlpha(); }, -0.01, 1},
                {p.m_pCheckLatticePoints, 1, 0, [](const ED3DWidget* v) { return v->showLatticePoints(); }},
                {p.m_pCheckLatticeLines, 1, 0, [](const ED3DWidget* v) { return v->showLatticeLines(); }},
                {p.m_pSpinLatticeH, 7, 0, rangeOf(0)},
                {p.m_pSpinLatticeK, 5, 3, rangeOf(1)},
                {p.m_pSpinLatticeL, 0, 2, rangeOf(2)}};
    }
    /// What all controls stand for in both views.
    std::vector<double> allOfViews() const
    {
        std::vector<double> vec;
        for (const ViewControl& row : controls()) {
            for (const ED3DWidget* pView : {m_pRaw, m_pMerged}) {
                vec.push_back(row.fnGet(pView));
            }
        }
        return vec;
    }
    /// From the scene to the screen.
    Mat rotation() const
    {
        float af[16], fPanX, fPanY, fZoom;
        m_pRaw->getCamera(af, fPanX, fPanY, fZoom);
        Mat m;
        for (size_t i = 0; i < 9; ++i) {
            m[i / 3][i % 3] = double(af[i / 3 + 4 * (i % 3)]);
        }
        return m;
    }
    float zoom() const
    {
        float af[16], fPanX = 0, fPanY = 0, fZoom = 0;
        m_pRaw->getCamera(af, fPanX, fPanY, fZoom);
        return fZoom;
    }
    /// Opens the series with the page in front, which has to be scrolled.
    void openPage()
    {
        open();
        ASSERT_NO_FATAL_FAILURE(activate());
        m_pWindow->findChild<QToolBox*>()->setCurrentIndex(6);
        m_pWindow->resize(1100, 600);
        QCoreApplication::processEvents();
    }
    /// Selects points of the raw view by a band over all of it.
    void band()
    {
        QTest::mousePress(m_pRaw, Qt::LeftButton, Qt::ControlModifier, {2, 2});
        const QPoint ptEnd(m_pRaw->width() - 3, m_pRaw->height() - 3);
        QMouseEvent move(QEvent::MouseMove, ptEnd, m_pRaw->mapToGlobal(ptEnd), Qt::NoButton, Qt::LeftButton,
                         Qt::ControlModifier);
        QApplication::sendEvent(m_pRaw, &move);
        QTest::mouseRelease(m_pRaw, Qt::LeftButton, Qt::ControlModifier, ptEnd);
    }
};

}  // namespace

TEST_F(Reciprocal, PointsFollowWhatIsTypedAndMergedOnesWait)
{
    open();
    m_pMerging->m_pButtonMerge->click();
    m_pMerging->m_pSpinStretchAmplitude->setValue(2);
    const struct {
        QWidget* pControl;
        QString strText;  ///< none: switched on for good
        bool bLive = true;
    } aRow[] = {{m_pFrames->m_pWavelengthSpin, "0.0197"},
                {m_pFrames->m_pPixelSizeSpin, "0.0123"},
                {m_pFrames->m_pRotationAxisSpin, "-12.3"},
                {m_pFrames->m_pTiltRelaxationSpin, "7.5"},
                {m_pMerging->m_pSpinResolutionMin, "0.35"},
                {m_pMerging->m_pSpinResolutionMax, "0.62"},
                {m_pMerging->m_pSpinIntensityMin, "200"},
                {m_pMerging->m_pSpinIntensityMax, "200"},
                {m_pMerging->m_pGroupApplyStretching, {}},
                {m_pMerging->m_pSpinStretchAmplitude, "1.25", false},
                {m_pMerging->m_pSpinStretchAzimuth, "33.5", false}};
    const std::vector<float> vecMerged = places(m_pMerged);
    for (const auto& row : aRow) {
        SCOPED_TRACE(&row - aRow);
        const std::vector<float> vecBefore = places(m_pRaw);
        if (row.strText.isEmpty()) {
            row.pControl->setProperty("checked", true);
            EXPECT_NE(places(m_pRaw), vecBefore);
            continue;
        }
        const double dfBefore = row.pControl->property("value").toDouble();
        ASSERT_NO_FATAL_FAILURE(typeOver(row.pControl, row.strText));
        EXPECT_EQ(places(m_pRaw) == vecBefore, !row.bLive);
        QTest::keyClick(row.pControl, Qt::Key_Return);
        EXPECT_EQ(row.pControl->property("value").toDouble(), row.strText.toDouble());
        EXPECT_NE(places(m_pRaw), vecBefore);
        row.pControl->setProperty("value", dfBefore);
        EXPECT_EQ(places(m_pRaw), vecBefore);
    }
    EXPECT_EQ(places(m_pMerged), vecMerged);
}

TEST_F(Reciprocal, ALengthTypedByHandScalesItsVector)
{
    m_pCell->m_pRadioCellManual->setChecked(true);
    loadCell(g_matCell);
    const CellPage& c = *m_pCell;
    QWidget* apLength[] = {c.m_pSpinManualLengthA, c.m_pSpinManualLengthB, c.m_pSpinManualLengthC};
    Mat matWanted = g_matCell;
    for (size_t i = 0; i < 3; ++i) {
        ASSERT_NO_FATAL_FAILURE(typeOver(apLength[i], "0.0623"));
        QTest::keyClick(apLength[i], Qt::Key_Return);
        matWanted[i] = 0.0623 / lengthOf(g_matCell[i]) * g_matCell[i];
        expectNear(cell(), matWanted);
    }
}

TEST_F(View3DPanel, EachControlSetsTheViewInFrontAlone)
{
    EXPECT_FALSE(m_pPanel->isEnabled());
    EXPECT_EQ(m_pPanel->m_pSpinCanvasGridTransparency->value(), 95);
    const std::vector<ViewControl> vecControl = controls();
    for (int nView : {0, 1}) {
        m_pTabs->setCurrentIndex(1 + nView);
        EXPECT_TRUE(m_pPanel->isEnabled());
        for (int nRow = 0; nRow < int(vecControl.size()); ++nRow) {
            const ViewControl& row = vecControl[nRow];
            std::vector<double> vecWanted = allOfViews();
            vecWanted[2 * nRow + nView] = row.wanted(nView) * row.dfScale + row.dfOffset;
            row.set(nView);
            for (size_t i = 0; i < vecWanted.size(); ++i) {
                EXPECT_NEAR(allOfViews()[i], vecWanted[i], 1e-6) << i << " by control " << nRow;
            }
        }
    }
}

TEST_F(View3DPanel, ShowsTheNumbersOfTheViewInFront)
{
    const std::vector<ViewControl> vecControl = controls();
    for (int nView : {0, 1}) {
        m_pTabs->setCurrentIndex(1 + nView);
        for (const ViewControl& row : vecControl) {
            row.set(nView);
        }
    }
    for (int nView : {0, 1, 0}) {
        m_pTabs->setCurrentIndex(3);
        m_pTabs->setCurrentIndex(1 + nView);
        for (const ViewControl& row : vecControl) {
            EXPECT_NEAR(row.value(), row.wanted(nView), 1e-6) << &row - vecControl.data();
        }
    }
}

TEST_F(View3DPanel, ACellThatIsLoadedShowsItsLatticeInBothViews)
{
    m_pTabs->setCurrentIndex(1);
    m_pRaw->setLatticeRange(4, 4, 4);
    loadCell(g_matCell);
    for (const ED3DWidget* pView : {m_pRaw, m_pMerged}) {
        EXPECT_TRUE(pView->showLatticeLines());
        EXPECT_EQ(rangeOf(0)(pView), 1);
        EXPECT_EQ(rangeOf(2)(pView), 1);
    }
    EXPECT_TRUE(m_pPanel->m_pCheckLatticeLines->isChecked());
    EXPECT_EQ(m_pPanel->m_pSpinLatticeH->value(), 1);
}

TEST_F(View3DPanel, LooksAlongEachVectorOfTheCell)
{
    const View3DPage& p = *m_pPanel;
    m_pTabs->setCurrentIndex(1);
    loadCell(g_matCell);
    QPushButton* apAlong[] = {p.m_pButtonAlongRA, p.m_pButtonAlongRB, p.m_pButtonAlongRC,
                              p.m_pButtonAlongA,  p.m_pButtonAlongB,  p.m_pButtonAlongC};
    const auto view = [&] {
        const Vec3D v = m_pRaw->getViewDirection();
        return Vec{double(v.x), double(v.y), double(v.z)};
    };
    for (size_t i = 0; i < 6; ++i) {
        apAlong[i]->click();
        const Vec v = i < 3 ? g_matCell[i] : dual(g_matCell)[i - 3];
        EXPECT_NEAR(dotProduct(view(), v) / lengthOf(v), 1, 1e-6) << i;
    }
}

TEST_F(View3DPanel, AStepTurnsTheSceneOnTheScreen)
{
    const View3DPage& p = *m_pPanel;
    m_pTabs->setCurrentIndex(1);
    loadCell(g_matCell);
    p.m_pButtonAlongC->click();  // askew
    // Where a step brings what lay at `vecFrom` on the screen (x right, y up, z to the viewer): towards
    // `vecTo`.
    const struct {
        QPushButton* pButton;
        Vec vecFrom, vecTo;
    } aTurn[] = {{p.m_pButtonRotateUp, {0, 0, 1}, {0, 1, 0}},
                 {p.m_pButtonRotateDown, {0, 0, 1}, {0, -1, 0}},
                 {p.m_pButtonRotateLeft, {0, 0, 1}, {-1, 0, 0}},
                 {p.m_pButtonRotateRight, {0, 0, 1}, {1, 0, 0}},
                 {p.m_pButtonRotateClockwise, {0, 1, 0}, {1, 0, 0}},
                 {p.m_pButtonRotateCounterClockwise, {0, 1, 0}, {-1, 0, 0}}};
    for (bool bNumber : {true, false}) {
        for (const auto& turn : aTurn) {
            const double dfStep = bNumber ? 22.5 * g_dfPi / 180 : 0;
            const Vec vecScene = turn.vecFrom * rotation();  // which lies at vecFrom now
            p.m_pComboRotationStep->setEditText(bNumber ? QLocale::system().toString(22.5) : "1x");
            turn.pButton->click();
            const Vec vecWanted = std::cos(dfStep) * turn.vecFrom + std::sin(dfStep) * turn.vecTo;
            EXPECT_LT(lengthOf(rotation() * vecScene - vecWanted), 1e-5) << &turn - aTurn;
        }
    }
    EXPECT_EQ(lines("Unknown numeric format for the rotation step."), 6);
}

// A group is made by the button or by its keys, and the hand can go on where it was.
TEST_F(View3DPanel, AddingAGroupKeepsFocusAndPlace)
{
    ASSERT_NO_FATAL_FAILURE(openPage());
    QPushButton* pAdd = m_pPanel->m_pButtonAddGroup;
    auto* pArea = qobject_cast<QScrollArea*>(m_pPanel->parentWidget()->parentWidget());
    ASSERT_TRUE(pArea);
    for (bool bMouse : {true, false}) {
        band();
        ASSERT_GT(m_pRaw->selectedPoints().size(), 10);
        pArea->ensureWidgetVisible(pAdd, 0, 0);
        const int nGroups = m_pRaw->groupLabels().size(), nPlace = pArea->verticalScrollBar()->value();
        if (bMouse) {
            QTest::mouseClick(pAdd, Qt::LeftButton);
        } else {
            pAdd->setFocus();
            QTest::keyClick(pAdd, Qt::Key_Space);
        }
        EXPECT_EQ(m_pRaw->groupLabels().size(), nGroups + 1);
        EXPECT_FALSE(pAdd->isEnabled());
        EXPECT_EQ(QApplication::focusWidget(), m_pRaw) << bMouse;
        EXPECT_EQ(pArea->verticalScrollBar()->value(), nPlace) << bMouse;
    }
}

// Whichever is let go first; A alone, or with more keys, is nothing.
TEST_F(View3DPanel, ControlAndAAddAGroup)
{
    ASSERT_NO_FATAL_FAILURE(openPage());
    for (Qt::Key eFirst : {Qt::Key_A, Qt::Key_Control}) {
        band();
        const int nGroups = m_pRaw->groupLabels().size();
        QTest::keyPress(m_pRaw, Qt::Key_Control);
        QTest::keyPress(m_pRaw, Qt::Key_A, Qt::ControlModifier);
        QTest::keyRelease(m_pRaw, eFirst, Qt::ControlModifier);
        QTest::keyRelease(m_pRaw, eFirst == Qt::Key_A ? Qt::Key_Control : Qt::Key_A);
        EXPECT_EQ(m_pRaw->groupLabels().size(), nGroups + 1) << int(eFirst);
        band();
        QTest::keyClick(m_pRaw, Qt::Key_A);
        QTest::keyPress(m_pRaw, Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
        QTest::keyRelease(m_pRaw, Qt::Key_A);
        EXPECT_EQ(m_pRaw->groupLabels().size(), nGroups + 1);
        m_pRaw->clearSelection();
    }
}

// However far the wheel goes, one key brings the view back, also from the page.
TEST_F(View3DPanel, ControlAndHomeBringTheViewBack)
{
    ASSERT_NO_FATAL_FAILURE(openPage());
    for (int i = 0; i < 40; ++i) {
        QWheelEvent wheel({9, 9}, {9, 9}, {}, {0, 120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(m_pRaw, &wheel);
    }
    EXPECT_GT(zoom(), -2.f);
    m_pPanel->m_pButtonRotateUp->setFocus();
    QTest::keyClick(m_pPanel->m_pButtonRotateUp, Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(zoom(), 0.f);
    EXPECT_EQ(m_pRaw->getViewDirection(), (Vec3D{0, 0, 1}));
}

}  // namespace tessera
