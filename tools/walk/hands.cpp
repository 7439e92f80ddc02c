#include "tools/walk/hands.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QWindow>

#include <algorithm>

namespace tessera {

namespace {

QString plainText(const QAction* pAction)
{
    return QString(pAction->text()).remove(QLatin1Char('&'));
}

QAction* actionOf(const QList<QAction*>& listAction, const QString& strText)
{
    const auto it = std::find_if(listAction.begin(), listAction.end(), [&](const QAction* pAction) {
        return pAction->isVisible() && plainText(pAction) == strText;
    });
    return it == listAction.end() ? nullptr : *it;
}

}  // namespace

CHands::CHands(FILE* pLog) : m_pLog(pLog)
{
    m_clock.start();
}

void CHands::note(const QString& strText)
{
    std::fprintf(m_pLog, "%7.2f s  %s\n", seconds(), qPrintable(strText));
    std::fflush(m_pLog);
}

void CHands::fail(const QString& strText)
{
    if (m_strFailure.isEmpty()) {
        m_strFailure = strText;
    }
    note(strText);
}

void CHands::clickAt(QWidget* pWidget, const QPoint& pt, const QString& strName)
{
    QWidget* pTop = pWidget->window();
    const QPoint ptTop = pWidget->mapTo(pTop, pt);
    QWidget* pHit = pTop->childAt(ptTop);
    const bool bHit = pTop == pWidget || (pHit && (pHit == pWidget || pWidget->isAncestorOf(pHit)));
    if (!pWidget->isVisible() || !pTop->rect().contains(ptTop) || !bHit || !pWidget->isEnabled() ||
        !pTop->windowHandle()) {
        fail(QStringLiteral("%1 is out of reach").arg(strName));
        return;
    }
    ++m_nClicks;
    note(QStringLiteral("click %1: %2").arg(m_nClicks).arg(strName));
    QTest::mouseClick(pTop->windowHandle(), Qt::LeftButton, {}, ptTop);
}

void CHands::click(QWidget* pWidget, const QString& strName)
{
    if (pWidget) {
        clickAt(pWidget, pWidget->rect().center(), strName);
    } else {
        fail(QStringLiteral("there is no %1").arg(strName));
    }
}

void CHands::clickMenu(QMenuBar* pBar, const QString& strTitle)
{
    if (QAction* pAction = actionOf(pBar->actions(), strTitle)) {
        clickAt(pBar, pBar->actionGeometry(pAction).center(), QStringLiteral("menu \"%1\"").arg(strTitle));
    } else {
        fail(QStringLiteral("there is no menu \"%1\"").arg(strTitle));
    }
}

void CHands::clickEntry(QMenu* pMenu, const QString& strEntry)
{
    QAction* pAction = actionOf(pMenu->actions(), strEntry);
    if (pAction && pAction->isEnabled()) {
        clickAt(pMenu, pMenu->actionGeometry(pAction).center(), QStringLiteral("entry \"%1\"").arg(strEntry));
    } else {
        fail(QStringLiteral("there is no entry \"%1\", or it is grey").arg(strEntry));
    }
}

void CHands::type(QWidget* pWindow, const QString& strText)
{
    note(QStringLiteral("%1 keys: %2").arg(strText.size()).arg(strText));
    for (const QChar c : strText) {
        if (!pWindow->windowHandle()) {
            return fail(QStringLiteral("the window that was typed into is gone"));
        }
        ++m_nKeys;
        QTest::keyClick(pWindow->windowHandle(), c.toLatin1());
    }
}

void CHands::press(QWidget* pWindow, Qt::Key nKey, Qt::KeyboardModifiers modifiers)
{
    if (!pWindow->windowHandle()) {
        return fail(QStringLiteral("the window that was typed into is gone"));
    }
    ++m_nKeys;
    note(QStringLiteral("key %1").arg(QKeySequence(int(nKey) | int(modifiers)).toString()));
    QTest::keyClick(pWindow->windowHandle(), nKey, modifiers);
}

}  // namespace tessera
