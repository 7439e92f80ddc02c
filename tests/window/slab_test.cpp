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

}  // namespace

TEST_F(Reciprocal, LooksAlongTypedDirectionsAndToTheNearest)
{
    m_pTabs->setCurrentIndex(1);
    const View3DPage& p = *m_pPanel;
    p.m_pEditZone->setText("1 1 0");
    p.m_pButtonAlongZone->click();
    EXPECT_EQ(lines("There is no cell yet to look along [1 1 0]."), 1);
    loadCell(g_matCell);
    const Mat matDirect = dual(g_matCell);
    const auto along = [&](int u, int v, int w) {
        return u * matDirect[0] + v * matDirect[1] + w * matDirect[2];
    };
    const auto isAlong = [&](const Vec& v) { return dotProduct(viewOf(m_pRaw), v) / lengthOf(v); };
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

    // From near a direction to it; the menu and the keys do what the buttons do.
    p.m_pButtonAlongB->click();
    m_pRaw->rotateAroundScreenX(3);
    p.m_pButtonNearest->click();
    EXPECT_NEAR(isAlong(along(0, 1, 0)), 1, 1e-6);
    p.m_pButtonAlongRC->click();
    m_pRaw->rotateAroundScreenY(-2);
    press(m_pRaw, Qt::Key_N);
    EXPECT_NEAR(isAlong(g_matCell[2]), 1, 1e-6);
    p.m_pButtonMeasure->click();
    EXPECT_TRUE(m_pRaw->isMeasuring() && !m_pMerged->isMeasuring());
    m_pTabs->setCurrentIndex(2);
    EXPECT_FALSE(p.m_pButtonMeasure->isChecked());
    m_pTabs->setCurrentIndex(1);
    EXPECT_TRUE(p.m_pButtonMeasure->isChecked());
    press(m_pRaw, Qt::Key_M);
    EXPECT_FALSE(m_pRaw->isMeasuring());
    QList<QAction*> listAction;
    for (const QMenu* pMenu : m_pWindow->findChildren<QMenu*>()) {
        if (pMenu->title() == "3&D View") {
            listAction = pMenu->actions();
        }
    }
    ASSERT_GT(listAction.size(), 10);
    listAction[3]->trigger();
    EXPECT_NEAR(isAlong(along(1, 0, 0)), 1, 1e-6);
    p.m_pButtonReset->click();
    EXPECT_NEAR(viewOf(m_pRaw)[2], 1, 1e-6);
    m_pTabs->setCurrentIndex(3);
    EXPECT_FALSE(listAction[3]->isEnabled());
}

TEST_F(Reciprocal, ASlabFollowsThePageAndThePageItsView)
{
    open();
    loadCell(g_matCell);
    m_pTabs->setCurrentIndex(1);
    const View3DPage& p = *m_pPanel;
    EXPECT_FALSE(p.m_pGroupSlab->isChecked());
    EXPECT_FALSE(m_pRaw->slab());
    const Mat matDirect = dual(g_matCell);
    // How many points of the view are in a layer, by the cell as the test knows it.
    const auto truth = [&](const ED3DWidget* pView, const Vec& vecNormal, double dfLevel) {
        QList<int> listIn;
        for (int i = 0; i < pView->points().size(); ++i) {
            const Vec3D v = pView->points()[i].point();
            const double df = dotProduct(vecNormal, Vec{double(v.x), double(v.y), double(v.z)});
            if (std::abs(df - dfLevel) <= 0.2) {
                listIn.append(i);
            }
        }
        return listIn;
    };
    const auto band = [this](ED3DWidget* pView) {
        QTest::mousePress(pView, Qt::LeftButton, Qt::ControlModifier, {1, 1});
        const QPoint ptEnd(pView->width() - 2, pView->height() - 2);
        QMouseEvent move(QEvent::MouseMove, ptEnd, Qt::NoButton, Qt::LeftButton, Qt::ControlModifier);
        QApplication::sendEvent(pView, &move);
        QTest::mouseRelease(pView, Qt::LeftButton, Qt::ControlModifier, ptEnd);
        return pView->selectedPoints();
    };
    const int nAll = band(m_pRaw).size();
    p.m_pGroupSlab->setChecked(true);
    EXPECT_EQ(band(m_pRaw), truth(m_pRaw, matDirect[2], 0));
    EXPECT_LT(m_pRaw->selectedPoints().size(), nAll);
    EXPECT_LT(p.m_pSliderLayer->minimum(), 0);
    p.m_pSliderLayer->setValue(1);
    EXPECT_EQ(p.m_pSpinLayer->value(), 1);
    EXPECT_EQ(band(m_pRaw), truth(m_pRaw, matDirect[2], 1));
    press(m_pRaw, Qt::Key_PageDown);
    press(m_pRaw, Qt::Key_PageDown);
    EXPECT_EQ(p.m_pSliderLayer->value(), -1);
    EXPECT_EQ(band(m_pRaw), truth(m_pRaw, matDirect[2], -1));
    p.m_pComboLayer->lineEdit()->setText("1 0 -1");
    QTest::keyClick(p.m_pComboLayer->lineEdit(), Qt::Key_Return);
    p.m_pSpinLayer->setValue(2);
    EXPECT_EQ(band(m_pRaw), truth(m_pRaw, matDirect[0] - matDirect[2], 2));
    EXPECT_GT(m_pRaw->selectedPoints().size(), 0);
    p.m_pComboLayer->lineEdit()->setText("x");
    QTest::keyClick(p.m_pComboLayer->lineEdit(), Qt::Key_Return);
    EXPECT_EQ(lines("\"x\" names no layers: "), 1);
    EXPECT_EQ(p.m_pComboLayer->currentText(), "[1 0 -1]");

    // Each view has its own; another cell has other layers.
    m_pTabs->setCurrentIndex(2);
    EXPECT_FALSE(p.m_pGroupSlab->isChecked());
    EXPECT_FALSE(m_pMerged->slab());
    m_pTabs->setCurrentIndex(1);
    EXPECT_TRUE(p.m_pGroupSlab->isChecked());
    EXPECT_EQ(p.m_pSpinLayer->value(), 2);
    loadCell({g_matCell[1], g_matCell[0], g_matCell[2]});
    p.m_pSpinLayer->setValue(1);
    EXPECT_EQ(band(m_pRaw), truth(m_pRaw, matDirect[1] - matDirect[2], 1));
    press(m_pRaw, Qt::Key_S);
    EXPECT_FALSE(m_pRaw->slab());
    EXPECT_EQ(band(m_pRaw).size(), nAll);
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
