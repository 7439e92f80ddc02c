// What the window offers at the start: menus, bars, keys, docks, groups of the pages; and that each button
// of a page and each action leads somewhere.
#include "windowtest.h"

#include <QMetaMethod>

namespace {

/// What a menu or bar shows, in its order: texts, "-" for separators, class names of widgets; behind a text
/// its key.
QString contents(const QWidget* pBar)
{
    QStringList listText;
    for (const QAction* pAction : pBar->actions()) {
        const auto* pWidget = qobject_cast<const QWidgetAction*>(pAction);
        if (pWidget)
            listText += pWidget->defaultWidget()->metaObject()->className();
        else if (pAction->isSeparator())
            listText += "-";
        else if (pAction->isVisible() || pAction->menu())
            listText += (pAction->text() + ' ' + pAction->shortcut().toString()).trimmed();
    }
    return listText.join(" | ");
}

/// Whether anything listens to a signal of the object, seen by its name.
bool isHeard(const QObject* pObject, const char* pszSignal)
{
    struct Open : QObject {
        static auto isConnected() { return &Open::isSignalConnected; }  // which is protected
    };
    const QMetaObject* pMeta = pObject->metaObject();
    for (int i = 0; i < pMeta->methodCount(); ++i)
        if (pMeta->method(i).methodType() == QMetaMethod::Signal && pMeta->method(i).name() == pszSignal &&
            (pObject->*Open::isConnected())(pMeta->method(i)))
            return true;
    return false;
}

void appendGroups(const QLayout* pLayout, QStringList& listTitle)
{
    for (int i = 0; pLayout && i < pLayout->count(); ++i) {
        const QWidget* pWidget = pLayout->itemAt(i)->widget();
        if (const auto* pGroup = qobject_cast<const QGroupBox*>(pWidget))
            listTitle += pGroup->title();
        appendGroups(pWidget ? pWidget->layout() : pLayout->itemAt(i)->layout(), listTitle);
    }
}

QImage picture(const QIcon& icon)
{
    return icon.pixmap(32).toImage();
}

typedef WindowTest Menus;

}  // namespace

TEST_F(Menus, StandInTheirOrderWithTheirKeys)
{
    const QString strPalette = "Grey Ctrl+G | Inversed Grey Ctrl+I | Blue-red Ctrl+B | Red-blue Ctrl+R",
                  strDocks = "Control Ctrl+N | Messages Ctrl+M | Intensity Ctrl+P | Text Data Ctrl+T",
                  strZoom = "Zoom &In Ctrl++ | Zoom &Out Ctrl+-";
    const QMap<QString, QString> mapMenu = {
        {"&File",
         "&New Project... Ctrl+Shift+N | &Open... Ctrl+O | &Save Current Image Ctrl+S | &Save Image Series "
         "Ctrl+Shift+S | &Export "
         "Frames for Movie... Ctrl+Shift+M | &Export Scaled Frames... Ctrl+Shift+B | &Export "
         "Reciprocal Space... Ctrl+Shift+R | Export S&MV Images... Ctrl+Shift+M | - | - | - | E&xit "
         "Ctrl+Q"},
        {"&Edit", "Copy Window Ctrl+C"},
        {"&View", strZoom + " | - | " + strPalette},
        {"&Window", strDocks},
        {"&Tools",
         "&Intensity Extraction... | &Extract Intensities | - | &Fit Direct Beam | Refine &Direct "
         "Beam Position | Test Rotation &Axis | - | Refine &Basis Vectors | Refine Cell by Frame "
         "&Numbers | - | Export &Peaks... | Test &Runs | - | &Stop"},
        {"&Help", "&Guide F1 | What's This? Shift+F1 | - | A&bout Tessera... Ctrl+P | - | About Qt..."}};
    EXPECT_EQ(contents(m_pWindow->menuBar()), "&File | &Edit | &View | &Window | &Tools | - | &Help");
    for (const QAction* pAction : m_pWindow->menuBar()->actions())
        if (pAction->menu()) {
            EXPECT_EQ(contents(pAction->menu()), mapMenu[pAction->text()]);
        }
    EXPECT_EQ(contents(m_pWindow->findChild<QToolBar*>("ToolBar")),
              "&Open... Ctrl+O | &Save Current Image Ctrl+S | &Save Image Series Ctrl+Shift+S | - | " +
                  strZoom + " | QComboBox | - | " + strPalette + " | - | QSlider | QSpinBox | - | " +
                  strDocks);
    EXPECT_EQ(contents(m_pShift->findChild<QToolBar*>()),
              "Select None Ctrl+0 | Select 64×64 Ctrl+1 | Select 128×128 Ctrl+2 | Select 256×256 Ctrl+3 | "
              "Select 512×512 Ctrl+4 | Select 1024×1024 Ctrl+5");
    EXPECT_EQ(contents(m_pPanel->m_pTablePeakGroups), "Reset Del | Merge Selections | Reset All | Export...");
    EXPECT_EQ(contents(m_pWindow->findChild<QDockWidget*>("Intensity")->widget()),
              "Copy Data Ctrl+D | Copy Window Ctrl+X");
    EXPECT_EQ(contents(m_pView) + ", " + contents(m_pTable) + ", " + contents(m_pRaw),
              "Show Peak Labels F5, Copy Selected | Copy All, Background Color... | Canvas Grid Color...");

    for (const QList<QAction*>& listAction : {m_pActions->m_listPalette, m_pActions->m_listSelection})
        for (const QAction* pAction : listAction) {
            EXPECT_TRUE(pAction->isCheckable() && pAction->actionGroup()->isExclusive());
            EXPECT_EQ(pAction->isChecked(), pAction == listAction[0]);
        }
}

TEST_F(Menus, EachButtonAndActionLeadsSomewhere)
{
    int nButtons = 0;
    for (const QWidget* pPage : QList<QWidget*>{m_pFrames, m_pShift, m_pSearch, m_pMerging, m_pCell,
                                                m_pRefine, m_pPanel, m_pExtraction})
        for (const QPushButton* pButton : pPage->findChildren<QPushButton*>()) {
            ++nButtons;
            EXPECT_TRUE(isHeard(pButton, pButton->isCheckable() ? "toggled" : "clicked"))
                << pButton->text().toStdString() << " of " << pPage->metaObject()->className();
        }
    EXPECT_GT(nButtons, 30);
    for (const QAction* pAction : m_pActions->findChildren<QAction*>())
        EXPECT_TRUE(isHeard(pAction, "triggered") || isHeard(pAction, "toggled"))
            << qPrintable(pAction->text());
}

TEST_F(Menus, DocksAndPagesStandInTheirOrder)
{
    QStringList listDock;
    for (const QDockWidget* pDock : m_pWindow->findChildren<QDockWidget*>()) {
        listDock += pDock->objectName();
        EXPECT_EQ(pDock->windowTitle(), pDock->objectName());
        EXPECT_EQ(pDock->allowedAreas(), Qt::AllDockWidgetAreas);
        EXPECT_EQ(m_pWindow->dockWidgetArea(const_cast<QDockWidget*>(pDock)),
                  listDock.size() == 1 ? Qt::LeftDockWidgetArea : Qt::BottomDockWidgetArea);
    }
    EXPECT_EQ(listDock, QStringList({"Control", "Messages", "Intensity", "Text Data"}));
    EXPECT_EQ(m_pWindow->corner(Qt::BottomLeftCorner), Qt::LeftDockWidgetArea);
    EXPECT_EQ(m_pWindow->corner(Qt::TopRightCorner), Qt::RightDockWidgetArea);

    const char* const aszPage[] = {
        "Frames: Files, Intensity Range for Contrast Scaling, Auto Play",
        "Shift Evaluation: Reference Region, Shift (Pixels), Center (Direct Beam) At",
        "Peak Search: Peak Search && Intensity Extraction, Mask, 2D Integration",
        "3D Peak Merging: Apply Stretching, Resolution Range, Intensity Range, Peak Merging, Target Peaks, "
        "Intensity In Frames, Intensity Through Frames",
        "Unit Cell Determination and Indexing: Selection Used for Processing, Unit Cell Determination, Unit "
        "Cell Range, Assign Viewing Direction To, Unit Cell, Unit Cell Transformation, Apply To Space, Peak "
        "Indexing",
        "Unit Cell Refinement: Intensity Range, d* Range",
        "3D View Control: Reflection Appearance, Canvas Grid, Unit Cell Grid, HKL Range, Peaks, View Along, "
        "Rotation Control"};
    auto* pToolBox = m_pWindow->findChild<QToolBox*>();
    QList<QWidget*> listHeader;
    for (QWidget* pChild : pToolBox->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (pChild->inherits("QToolBoxButton"))
            listHeader += pChild;
    ASSERT_EQ(listHeader.size(), 7);
    for (int i = 0; i < 7; ++i) {
        QStringList listGroup;
        appendGroups(pToolBox->widget(i)->layout(), listGroup);
        EXPECT_EQ(pToolBox->itemText(i) + ": " + listGroup.join(", "), aszPage[i]);
    }
    for (int nOpen : {0, 4, 6, 1}) {
        pToolBox->setCurrentIndex(nOpen);
        for (int i = 0; i < 7; ++i) {
            const QString strIcon = i == nOpen ? ":/images/arrowdown4.png" : ":/images/arrowright4.png";
            EXPECT_EQ(picture(pToolBox->itemIcon(i)), picture(QIcon(strIcon))) << i << " of " << nOpen;
            EXPECT_EQ(listHeader[i]->font().weight(), i == nOpen ? 75 : 50);
        }
    }
}

// The wheel moves the page; a number changes only under the keyboard.
TEST_F(Menus, TheWheelOverAPageChangesNoNumberInPassing)
{
    m_pWindow->resize(1200, 500);
    m_pWindow->show();
    ASSERT_NO_FATAL_FAILURE(activate());
    m_pWindow->findChild<QToolBox*>()->setCurrentWidget(m_pCell);
    QDoubleSpinBox* pSpin = m_pCell->m_pSpinCellRangeMax;
    QScrollBar* pScroll = nullptr;
    for (QWidget* pEach = pSpin; pEach && !pScroll; pEach = pEach->parentWidget())
        if (auto* pArea = qobject_cast<QScrollArea*>(pEach))
            pScroll = pArea->verticalScrollBar();
    ASSERT_NE(pScroll, nullptr);
    QTest::qWait(20);
    ASSERT_GT(pScroll->maximum(), 0);
    const auto turn = [&](QWidget* pWidget, int nDelta) {
        const QPointF pt = pWidget->mapTo(m_pWindow.get(), pWidget->rect().center());
        QWheelEvent event(pt, m_pWindow->mapToGlobal(pt.toPoint()), {}, {0, nDelta}, {}, {},
                          Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);  // others don't go on to the page
        qApp->notify(m_pWindow->windowHandle(), &event);
    };
    for (QWidget* pWidget :
         {static_cast<QWidget*>(pSpin), static_cast<QWidget*>(m_pCell->m_pComboReflectionGrouping)}) {
        static_cast<QScrollArea*>(pScroll->parentWidget()->parentWidget())->ensureWidgetVisible(pWidget);
        const int nBefore = pScroll->value();
        turn(pWidget, nBefore > 0 ? 120 : -120);
        EXPECT_NE(pScroll->value(), nBefore);
        EXPECT_FALSE(pWidget->hasFocus());
    }
    EXPECT_EQ(pSpin->value(), 30);
    EXPECT_EQ(m_pCell->m_pComboReflectionGrouping->currentIndex(), 0);
    static_cast<QScrollArea*>(pScroll->parentWidget()->parentWidget())->ensureWidgetVisible(pSpin);
    pSpin->setFocus();
    turn(pSpin, 120);
    EXPECT_GT(pSpin->value(), 30);
}
