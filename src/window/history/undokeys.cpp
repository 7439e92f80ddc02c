#include "window/history/undokeys.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

namespace tessera {

namespace {

/// The line that is typed into where a widget has the keyboard; null where there is none.
const QLineEdit* lineOf(const QWidget* pWidget)
{
    if (const auto* pLine = qobject_cast<const QLineEdit*>(pWidget)) {
        return pLine;
    }
    if (const auto* pCombo = qobject_cast<const QComboBox*>(pWidget)) {
        return pCombo->lineEdit();
    }
    return qobject_cast<const QAbstractSpinBox*>(pWidget) ? pWidget->findChild<QLineEdit*>() : nullptr;
}

}  // namespace

UndoKeys::UndoKeys(QObject* pParent) : QObject(pParent)
{
    QApplication::instance()->installEventFilter(this);
}

bool UndoKeys::eventFilter(QObject* pObject, QEvent* pEvent)
{
    const QWidget* pFocus = QApplication::focusWidget();
    if (pEvent->type() == QEvent::FocusIn) {
        m_bTyped = false;
    } else if (pEvent->type() == QEvent::KeyPress && pObject == pFocus && lineOf(pFocus)) {
        const auto* pKey = static_cast<QKeyEvent*>(pEvent);
        if (pKey->key() == Qt::Key_Return || pKey->key() == Qt::Key_Enter) {
            m_bTyped = false;
        } else if (!pKey->text().isEmpty() && !(pKey->modifiers() & Qt::ControlModifier)) {
            m_bTyped = true;
        }
    } else if (pEvent->type() == QEvent::ShortcutOverride) {
        const QLineEdit* pLine = lineOf(pFocus);
        const auto* pKey = static_cast<QKeyEvent*>(pEvent);
        const bool bUndo = pKey->matches(QKeySequence::Undo);
        if (pLine && (bUndo || pKey->matches(QKeySequence::Redo)) &&
            !(m_bTyped && (bUndo ? pLine->isUndoAvailable() : pLine->isRedoAvailable()))) {
            pEvent->ignore();
            return true;
        }
    }
    return QObject::eventFilter(pObject, pEvent);
}

}  // namespace tessera
