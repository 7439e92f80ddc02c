#include "window/windowactions.h"

#include "window/actiontable.h"
#include "window/pages/controltips.h"

#include <QActionGroup>
#include <QApplication>
#include <QIcon>
#include <QKeySequence>
#include <QMenu>
#include <QShortcutEvent>
#include <QWidget>

namespace tessera {

namespace {

constexpr int g_nRecent = 20;  // data sets, the most that the list of recent ones can have

QAction* makeAction(QObject* pParent, const ActionRow& row)
{
    auto* pAction = new QAction(QString::fromUtf8(row.pszText), pParent);
    if (row.pszStatusTip) {
        pAction->setStatusTip(QString::fromUtf8(row.pszStatusTip));
    }
    if (row.pszIcon) {
        pAction->setIcon(QIcon(QStringLiteral(":/images/%1.png").arg(QLatin1String(row.pszIcon))));
    }
    if (row.key.pszText) {
        pAction->setShortcut(QKeySequence(QLatin1String(row.key.pszText)));
    } else if (row.key.nStandard != QKeySequence::UnknownKey) {
        pAction->setShortcuts(row.key.nStandard);
    }
    if (row.pszExplanation) {
        explain(pAction, QString::fromUtf8(row.pszExplanation));
    }
    pAction->setEnabled(false);
    return pAction;
}

// Whether Qt listens to the keys of an action: one of the widgets that show it is in a state to hear them.
bool listens(const QAction* pAction)
{
    const QWidget* pFocus = QApplication::focusWidget();
    for (const QWidget* pWidget : pAction->associatedWidgets()) {
        if (qobject_cast<const QMenu*>(pWidget)) {
            return true;
        }
        if (!pWidget->isVisible() || !pWidget->isEnabled()) {
            continue;
        }
        switch (pAction->shortcutContext()) {
            case Qt::WidgetShortcut:
                if (pWidget == pFocus) {
                    return true;
                }
                break;
            case Qt::WidgetWithChildrenShortcut:
                if (pFocus && (pWidget == pFocus || pWidget->isAncestorOf(pFocus))) {
                    return true;
                }
                break;
            default:
                return true;
        }
    }
    return false;
}

// Whether a widget that the action belongs to has the keyboard. Bars and menus do not count.
bool hasFocus(const QAction* pAction)
{
    const QWidget* pFocus = QApplication::focusWidget();
    if (!pFocus) {
        return false;
    }
    for (const QWidget* pWidget : pAction->associatedWidgets()) {
        if (!pWidget->isWindow() && (pWidget == pFocus || pWidget->isAncestorOf(pFocus))) {
            return true;
        }
    }
    return false;
}

}  // namespace

WindowActions::WindowActions(QObject* pParent) : QObject(pParent)
{
    for (const ActionRow& row : singleActions()) {
        this->*row.pMember = makeAction(this, row);
        watch(this->*row.pMember);
    }
    m_pAbout->setText(m_pAbout->text().arg(QStringLiteral("Tessera")));
    m_pShowPeakLabels->setCheckable(true);
    // The key deletes, so it must work only in its own part of the window.
    m_pGroupReset->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_listPalette = makeExclusive(paletteActions());
    m_listSelection = makeExclusive(selectionActions());
    for (int i = 0; i < g_nRecent; ++i) {
        m_listRecent.append(makeAction(this, {nullptr, "", nullptr, nullptr, {}, nullptr}));
        m_listRecent.last()->setVisible(false);
    }
}

QList<QAction*> WindowActions::makeExclusive(const ActionRows& rows)
{
    QList<QAction*> listAction;
    auto* pGroup = new QActionGroup(this);
    for (const ActionRow& row : rows) {
        QAction* pAction = makeAction(this, row);
        pAction->setCheckable(true);
        pGroup->addAction(pAction);
        watch(pAction);
        listAction.append(pAction);
    }
    listAction.first()->setChecked(true);
    return listAction;
}

void WindowActions::setReady(QAction* pAction)
{
    m_listReady.append(pAction);
    pAction->setEnabled(true);
}

void WindowActions::setInForce(QAction* pAction, bool bInForce)
{
    pAction->setEnabled(bInForce && m_listReady.contains(pAction));
}

void WindowActions::watch(QAction* pAction)
{
    m_listWatched.append(pAction);
    pAction->installEventFilter(this);
}

QAction* WindowActions::actionForKey(const QKeySequence& key) const
{
    QAction* pBest = nullptr;
    int nBest = -1;
    for (QAction* pAction : m_listWatched) {
        if (!pAction->isEnabled() || !pAction->isVisible() || !pAction->shortcuts().contains(key) ||
            !listens(pAction)) {
            continue;
        }
        const int nScore = (pAction->shortcuts().size() == 1 ? 100 : 0) + (hasFocus(pAction) ? 10 : 0) +
                           rank(pAction);
        if (nScore > nBest) {
            pBest = pAction;
            nBest = nScore;
        }
    }
    return pBest;
}

bool WindowActions::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pEvent->type() == QEvent::Shortcut) {
        const auto* pShortcut = static_cast<QShortcutEvent*>(pEvent);
        if (pShortcut->isAmbiguous()) {
            if (QAction* pAction = actionForKey(pShortcut->key())) {
                pAction->trigger();
            }
            return true;
        }
    }
    return QObject::eventFilter(pObject, pEvent);
}

int WindowActions::checkedIndex(const QList<QAction*>& listAction)
{
    for (int i = 0; i < listAction.size(); ++i) {
        if (listAction[i]->isChecked()) {
            return i;
        }
    }
    return 0;
}

// Which action gets a key that several enabled ones share: 3 the frames of a movie, which are enabled in a 3D
// view alone; 2 an action in a menu; 1 any other, such as the switch of a dock; 0 the about box, which is
// reached by its menu.
int WindowActions::rank(const QAction* pAction) const
{
    if (pAction == m_pAbout) {
        return 0;
    }
    if (pAction == m_pMovieFrames) {
        return 3;
    }
    for (const QWidget* pWidget : pAction->associatedWidgets()) {
        if (qobject_cast<const QMenu*>(pWidget)) {
            return 2;
        }
    }
    return 1;
}

}  // namespace tessera
