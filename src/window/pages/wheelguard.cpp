#include "window/pages/wheelguard.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>

namespace tessera {

WheelGuard::WheelGuard(QWidget* pPage) : QObject(pPage)
{
    for (QWidget* pWidget : pPage->findChildren<QWidget*>()) {
        if (!qobject_cast<QAbstractSpinBox*>(pWidget) && !qobject_cast<QComboBox*>(pWidget)) {
            continue;
        }
        pWidget->setFocusPolicy(Qt::StrongFocus);  // the wheel alone would give it the keyboard
        pWidget->installEventFilter(this);
    }
}

bool WheelGuard::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pEvent->type() == QEvent::Wheel && !static_cast<QWidget*>(pObject)->hasFocus()) {
        pEvent->ignore();  // goes on to the page
        return true;
    }
    return QObject::eventFilter(pObject, pEvent);
}

}  // namespace tessera
