// The lower part of the page "3D View Control": directions that are typed, slabs, and the first fit.
#include "tests/window/reciprocaltest.h"
#include "window/view3d/view3dcontrol.h"

namespace tessera {

namespace {

Vec viewOf(const ED3DWidget* pView)
{
    const Vec3D v = pView->getViewDirection();
    return {double(v.x), double(v.y), double(v.z)};
}

std::array<float, 3> panAndZoom(const ED3DWidget* pView)
{
    float afRotation[16];
    std::array<float, 3> af;
    pView->getCamera(afRotation, af[0], af[1], af[2]);
    return af;
}

/// Presses the key of an action of the view.
void press(ED3DWidget* pView, const QKeySequence& key)
{
    for (QAction* pAction : pView->actions()) {
        if (pAction->shortcut() == key) {
            pAction->trigger();
        }
    }
}

/// The raw view in front, and a cell.
class DirectionsOfTheView : public Reciprocal {
protected:
    /// A direct-space direction.
    static Vec along(int u, int v, int w)
    {
        const Mat matDirect = dual(g_matCell);
        return u * matDirect[0] + v * matDirect[1] + w * matDirect[2];
    }
    /// The cosine of the angle between the view and a direction.
    double isAlong(const Vec& v) const { return dotProduct(viewOf(m_pRaw), v) / lengthOf(v); }
    void SetUp() override
    {
        Reciprocal::SetUp();
        m_pTabs->setCurrentIndex(1);
    }
};

}  // namespace

TEST_F(DirectionsOfTheView, AreTyped)
{
    const View3DPage& p = *m_pPanel;
    p.m_pEditZone->setText("1 1 0");
    p.m_pButtonAlongZone->click();
    EXPECT_EQ(lines("There is no cell yet to look along [1 1 0]."), 1);
    loadCell(g_matCell);
    p.m_pEditZone->setText("[1-12]");
    p.m_pButtonAlongZone->click();
    EXPECT_NEAR(isAlong(along(1, -1, 2)), 1, 1e-6);
    p.m_pEditZone->setText("3 0 -1");
    QTest::keyClick(p.m_pEditZone, Qt::Key_Return);
    EXPECT_NEAR(isAlong(along(3, 0, -1)), 1, 1e-6);
    for (const char* pszBad : {"1 1", "(110)", "000", "abc"}) {
        p.m_pEditZone->setText(pszBad);
        p.m_pButtonAlongZone->click();
        EXPECT_EQ(lines(QString("\"%1\" cannot be looked along: ").arg(pszBad)), 1);
    }
    EXPECT_NEAR(isAlong(along(3, 0, -1)), 1, 1e-6) << "what is refused leaves the view";
    p.m_pButtonAlongAxis->click();
    EXPECT_NEAR(viewOf(m_pRaw)[0], 1, 1e-6);
}

// The keys do what the buttons do.
TEST_F(DirectionsOfTheView, TheNearestIsTurnedTo)
{
    const View3DPage& p = *m_pPanel;
    loadCell(g_matCell);
    p.m_pButtonAlongB->click();
    m_pRaw->rotateAroundScreenX(3);
    p.m_pButtonNearest->click();
    EXPECT_NEAR(isAlong(along(0, 1, 0)), 1, 1e-6);
    p.m_pButtonAlongRC->click();
    m_pRaw->rotateAroundScreenY(-2);
    press(m_pRaw, Qt::Key_N);
    EXPECT_NEAR(isAlong(g_matCell[2]), 1, 1e-6);
}

TEST_F(DirectionsOfTheView, EachViewMeasuresByItself)
{
    const View3DPage& p = *m_pPanel;
    p.m_pButtonMeasure->click();
    EXPECT_TRUE(m_pRaw->isMeasuring());
    EXPECT_FALSE(m_pMerged->isMeasuring());
    m_pTabs->setCurrentIndex(2);
    EXPECT_FALSE(p.m_pButtonMeasure->isChecked());
    m_pTabs->setCurrentIndex(1);
    EXPECT_TRUE(p.m_pButtonMeasure->isChecked());
    press(m_pRaw, Qt::Key_M);
    EXPECT_FALSE(m_pRaw->isMeasuring());
}

TEST_F(DirectionsOfTheView, AreInTheMenuWhileAViewIsInFront)
{
    loadCell(g_matCell);
    QList<QAction*> listAction;
    for (const QMenu* pMenu : m_pWindow->findChildren<QMenu*>()) {
        if (pMenu->title() == "3&D View") {
            listAction = pMenu->actions();
        }
    }
    ASSERT_GT(listAction.size(), 10);
    listAction[3]->trigger();
    EXPECT_NEAR(isAlong(along(1, 0, 0)), 1, 1e-6);
    m_pPanel->m_pButtonReset->click();
    EXPECT_NEAR(viewOf(m_pRaw)[2], 1, 1e-6);
    m_pTabs->setCurrentIndex(3);
    EXPECT_FALSE(listAction[3]->isEnabled());
}

class SlabOfThePage : public Reciprocal {
protected:
    void SetUp() override
    {
        Reciprocal::SetUp();
        m_pTabs->setCurrentIndex(1);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_pWindow.get()));
        QCoreApplication::processEvents();  // laid out before its points are fitted into it
        open();
        loadCell(g_matCell);
        m_pTabs->setCurrentIndex(1);
    }
    /// The points of the raw view that are in a layer, by the cell as the test knows it.
    QList<int> truth(const Vec& vecNormal, double dfLevel) const
    {
        QList<int> listIn;
        for (int i = 0; i < m_pRaw->points().size(); ++i) {
            const Vec3D v = m_pRaw->points()[i].point();
            const double df = dotProduct(vecNormal, Vec{double(v.x), double(v.y), double(v.z)});
            if (std::abs(df - dfLevel) <= 0.2) {
                listIn.append(i);
            }
        }
        return listIn;
    }
    /// Those that a band over the whole view selects.
    QList<int> band()
    {
        QTest::mousePress(m_pRaw, Qt::LeftButton, Qt::ControlModifier, {1, 1});
        const QPoint ptEnd(m_pRaw->width() - 2, m_pRaw->height() - 2);
        QMouseEvent move(QEvent::MouseMove, ptEnd, Qt::NoButton, Qt::LeftButton, Qt::ControlModifier);
        QApplication::sendEvent(m_pRaw, &move);
        QTest::mouseRelease(m_pRaw, Qt::LeftButton, Qt::ControlModifier, ptEnd);
        return m_pRaw->selectedPoints();
    }
    void nameLayers(const char* pszNormal)
    {
        m_pPanel->m_pComboLayer->lineEdit()->setText(pszNormal);
        QTest::keyClick(m_pPanel->m_pComboLayer->lineEdit(), Qt::Key_Return);
    }

    const Mat matDirect = dual(g_matCell);
};

TEST_F(SlabOfThePage, HasThePointsOfItsLayerAndFollowsTheKeys)
{
    const View3DPage& p = *m_pPanel;
    EXPECT_FALSE(p.m_pGroupSlab->isChecked());
    EXPECT_FALSE(m_pRaw->slab());
    const int nAll = band().size();
    p.m_pGroupSlab->setChecked(true);
    EXPECT_EQ(band(), truth(matDirect[2], 0));
    EXPECT_LT(m_pRaw->selectedPoints().size(), nAll);
    EXPECT_LT(p.m_pSliderLayer->minimum(), 0);
    p.m_pSliderLayer->setValue(1);
    EXPECT_EQ(p.m_pSpinLayer->value(), 1);
    EXPECT_EQ(band(), truth(matDirect[2], 1));
    press(m_pRaw, Qt::Key_PageDown);
    press(m_pRaw, Qt::Key_PageDown);
    EXPECT_EQ(p.m_pSliderLayer->value(), -1);
    EXPECT_EQ(band(), truth(matDirect[2], -1));
    press(m_pRaw, Qt::Key_S);
    EXPECT_FALSE(m_pRaw->slab());
    EXPECT_EQ(band().size(), nAll);
}

TEST_F(SlabOfThePage, ItsLayersAreTyped)
{
    const View3DPage& p = *m_pPanel;
    p.m_pGroupSlab->setChecked(true);
    nameLayers("1 0 -1");
    p.m_pSpinLayer->setValue(2);
    EXPECT_EQ(band(), truth(matDirect[0] - matDirect[2], 2));
    EXPECT_GT(m_pRaw->selectedPoints().size(), 0);
    nameLayers("x");
    EXPECT_EQ(lines("\"x\" names no layers: "), 1);
    EXPECT_EQ(p.m_pComboLayer->currentText(), "[1 0 -1]");
}

// Another cell has other layers.
TEST_F(SlabOfThePage, EachViewHasItsOwn)
{
    const View3DPage& p = *m_pPanel;
    p.m_pGroupSlab->setChecked(true);
    nameLayers("1 0 -1");
    p.m_pSpinLayer->setValue(2);
    m_pTabs->setCurrentIndex(2);
    EXPECT_FALSE(p.m_pGroupSlab->isChecked());
    EXPECT_FALSE(m_pMerged->slab());
    m_pTabs->setCurrentIndex(1);
    EXPECT_TRUE(p.m_pGroupSlab->isChecked());
    EXPECT_EQ(p.m_pSpinLayer->value(), 2);
    loadCell({g_matCell[1], g_matCell[0], g_matCell[2]});
    p.m_pSpinLayer->setValue(1);
    EXPECT_EQ(band(), truth(matDirect[1] - matDirect[2], 1));
}

TEST_F(Reciprocal, TheFirstPointsOfASeriesFillTheView)
{
    open();
    EXPECT_EQ(panAndZoom(m_pMerged), (std::array<float, 3>{}));
    m_pTabs->setCurrentIndex(1);
    QCoreApplication::processEvents();
    const std::array<float, 3> afFitted = panAndZoom(m_pRaw);
    double dfFarthest = 0;  // Å⁻¹
    for (int i = 0; i < m_pRaw->points().size(); ++i) {
        EXPECT_TRUE(m_pRaw->rect().contains(m_pRaw->placeOfPoint(i).toPoint())) << i;
        dfFarthest = std::max(dfFarthest, double(length(m_pRaw->points()[i].point())));
    }
    // At zoom z the longer side of the view is 2·(2 + z) Å⁻¹.
    const double dfSides = double(std::max(m_pRaw->width(), m_pRaw->height())) /
                           std::min(m_pRaw->width(), m_pRaw->height());
    EXPECT_NEAR(dfFarthest * dfSides / (2 + double(afFitted[2])), 0.95, 0.03);
    // New points of the same series, and a zoom of the user, stay as they are.
    m_pMerging->m_pSpinResolutionMax->setValue(0.3);
    EXPECT_EQ(panAndZoom(m_pRaw), afFitted);
    float afRotation[16], fPanX, fPanY, fZoom;
    m_pRaw->getCamera(afRotation, fPanX, fPanY, fZoom);
    m_pRaw->setCamera(afRotation, 0.1f, 0, -1);
    open();
    EXPECT_EQ(panAndZoom(m_pRaw), (std::array<float, 3>{0.1f, 0, -1}));
    m_pPanel->m_pButtonFit->click();
    EXPECT_LT(panAndZoom(m_pRaw)[2], -1);
    EXPECT_EQ(panAndZoom(m_pRaw)[0], 0);
}

}  // namespace tessera
