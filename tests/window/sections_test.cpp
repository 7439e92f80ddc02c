// Sections in the window: the driver's bytes, the reading under the pointer, and the choice that goes
// everywhere.
#include "exchange/sectionfiles.h"
#include "tests/window/twinseries.h"
#include "window/sections/sectionscontroller.h"
#include "window/sections/sectionview.h"
#include "window/sections/sectionwindow.h"
#include "window/selection/selectioncontroller.h"

namespace tessera {

namespace {

class Sections : public TwinSeries {
protected:
    void SetUp() override
    {
        TwinSeries::SetUp();
        m_pSections = m_pWindow->findChild<SectionsController*>();
    }
    SectionWindow* showWindow()
    {
        m_pActions->m_pSections->trigger();
        return m_pSections->window();
    }
    void make(int nPlane, int nLayer)
    {
        SectionWindow* pWindow = m_pSections->window();
        pWindow->m_pPlane->setCurrentIndex(nPlane);
        pWindow->m_pLayer->setValue(nLayer);
        pWindow->m_pButtonMake->click();
        ASSERT_TRUE(m_pSections->section()) << log().toStdString();
    }

    SectionsController* m_pSections = nullptr;
};

}  // namespace

TEST_F(Sections, FilesAreTheDrivers)
{
    ASSERT_NO_FATAL_FAILURE(runDriver({"--sections", "hk0,h1l"}));
    open();
    solve();
    SectionWindow* pWindow = showWindow();
    EXPECT_FALSE(pWindow->m_pButtonSave->isEnabled());
    const struct {
        int nPlane, nLayer;
        const char* pszName;
    } aSection[] = {{1, 1, "h1l"}, {0, 0, "hk0"}};
    for (const auto& section : aSection) {
        ASSERT_NO_FATAL_FAILURE(make(section.nPlane, section.nLayer));
        pWindow->m_pZoom->setCurrentIndex(2);  // the zoom of the screen is none of the file
        for (const char* pszEnding : {".mrc", ".png"}) {
            QString strReason;
            const QString strName = QStringLiteral("w_%1%2").arg(section.pszName, pszEnding);
            ASSERT_TRUE(m_pSections->save(file(strName), &strReason)) << strReason.toStdString();
            EXPECT_FALSE(readBytes(path("driver/" + strName)).isEmpty());
            EXPECT_EQ(readBytes(file(strName)), readBytes(path("driver/" + strName)))
                << strName.toStdString();
        }
    }
    EXPECT_EQ(lines("", Qt::red), 0) << log().toStdString();
}

// At a lattice point that was found as a reflection.
TEST_F(Sections, ThePointerReadsIndicesAndAClickChoosesTheReflection)
{
    open();
    solve();
    SectionWindow* pWindow = showWindow();
    ASSERT_NO_FATAL_FAILURE(make(0, 0));
    pWindow->m_pZoom->setCurrentIndex(2);
    const ReciprocalSection& section = *m_pSections->section();
    SectionView* pView = pWindow->m_pView;
    int nChosen = 0;
    for (const std::array<int, 3>& an : latticeOfSection(section, 10000)) {
        const auto pt = placeOnSection(section, {double(an[0]), double(an[1]), double(an[2])});
        const QPoint ptView = pView->placing().toPicture(pt.value_or(QPointF())).toPoint();
        if (!pt || !pView->placing().rcField.contains(ptView)) {
            continue;
        }
        QTest::mouseMove(pView, ptView);
        QMouseEvent event(QEvent::MouseMove, ptView, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(pView, &event);
        const QString strText = pWindow->m_pReading->text();
        const QStringList listWord = strText.split(' ', Qt::SkipEmptyParts);
        ASSERT_GT(listWord.size(), 6) << strText.toStdString();
        EXPECT_NEAR(listWord[1].toDouble(), an[0], 0.1);
        EXPECT_NEAR(listWord[3].toDouble(), an[1], 0.1);
        QTest::mouseClick(pView, Qt::LeftButton, Qt::NoModifier, ptView);
        if (pWindow->m_pReading->text().startsWith("No merged")) {
            continue;
        }
        const std::vector<int>& vecChosen =
            m_pWindow->findChild<SelectionController*>()->model().reflections();
        ASSERT_EQ(vecChosen.size(), 1U);
        ++nChosen;
    }
    EXPECT_GT(nChosen, 5);
}

TEST_F(Sections, WhatIsMissingIsToldAndTheChoicesAreKept)
{
    open();
    SectionWindow* pWindow = showWindow();
    pWindow->m_pButtonMake->click();
    EXPECT_EQ(lines("needs a unit cell"), 1) << log().toStdString();
    EXPECT_FALSE(m_pSections->section());
    EXPECT_EQ(pWindow->m_pButtonMake->text(), "Make");
    QString strReason;
    EXPECT_FALSE(m_pSections->save(path("x.png"), &strReason));
    EXPECT_FALSE(strReason.isEmpty());
    pWindow->m_pPlane->setCurrentIndex(2);
    pWindow->m_pLayer->setValue(-3);
    pWindow->m_pLogarithmic->setChecked(true);
    pWindow->m_pBrightest->setValue(1.5);
    EXPECT_EQ(pWindow->plane().strName, "-3kl");
    pWindow->close();
    newWindow();
    m_pSections = m_pWindow->findChild<SectionsController*>();
    pWindow = showWindow();
    EXPECT_EQ(pWindow->plane().strName, "-3kl");
    EXPECT_TRUE(pWindow->look().bLogarithmic);
    EXPECT_DOUBLE_EQ(pWindow->look().dfBrightest, 1.5);
}

}  // namespace tessera
