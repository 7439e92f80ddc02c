// That each button of a page and each action leads somewhere, and how the pages are leafed through.
#include "tests/window/windowtest.h"
#include "window/pages/integrationpage.h"

#include <QMetaMethod>

namespace tessera {

namespace {

/// Whether anything listens to a signal of the object, seen by its name.
bool isHeard(const QObject* pObject, const char* pszSignal)
{
    struct Open : QObject {
        static auto isConnected() { return &Open::isSignalConnected; }  // which is protected
    };
    const QMetaObject* pMeta = pObject->metaObject();
    for (int i = 0; i < pMeta->methodCount(); ++i) {
        if (pMeta->method(i).methodType() == QMetaMethod::Signal && pMeta->method(i).name() == pszSignal &&
            (pObject->*Open::isConnected())(pMeta->method(i))) {
            return true;
        }
    }
    return false;
}

QImage picture(const QIcon& icon)
{
    return icon.pixmap(32).toImage();
}

typedef WindowTest Menus;

}  // namespace

TEST_F(Menus, EachButtonAndActionLeadsSomewhere)
{
    int nButtons = 0;
    for (const QWidget* pPage :
         QList<QWidget*>{m_pFrames, m_pShift, m_pSearch, m_pMerging, m_pCell, m_pRefine, m_pPanel,
                         m_pExtraction, m_pWindow->findChild<IntegrationPage*>()}) {
        for (const QPushButton* pButton : pPage->findChildren<QPushButton*>()) {
            ++nButtons;
            EXPECT_TRUE(isHeard(pButton, pButton->isCheckable() ? "toggled" : "clicked"))
                << pButton->text().toStdString() << " of " << pPage->metaObject()->className();
        }
    }
    EXPECT_GT(nButtons, 30);
    for (const QAction* pAction : m_pActions->findChildren<QAction*>()) {
        EXPECT_TRUE(isHeard(pAction, "triggered") || isHeard(pAction, "toggled"))
            << qPrintable(pAction->text());
        EXPECT_FALSE(pAction->associatedWidgets().isEmpty()) << "in no menu: " << qPrintable(pAction->text());
    }
}

TEST_F(Menus, TheOpenPageHasItsArrowAndABoldTitle)
{
    auto* pToolBox = m_pWindow->findChild<QToolBox*>();
    QList<QWidget*> listHeader;
    for (QWidget* pChild : pToolBox->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (pChild->inherits("QToolBoxButton")) {
            listHeader += pChild;
        }
    }
    ASSERT_EQ(listHeader.size(), 8);
    for (int nOpen : {0, 4, 7, 1}) {
        pToolBox->setCurrentIndex(nOpen);
        for (int i = 0; i < 8; ++i) {
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
    for (QWidget* pEach = pSpin; pEach && !pScroll; pEach = pEach->parentWidget()) {
        if (auto* pArea = qobject_cast<QScrollArea*>(pEach)) {
            pScroll = pArea->verticalScrollBar();
        }
    }
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

}  // namespace tessera
