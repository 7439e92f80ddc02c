#include "window/application.h"

#include "records/whatwasthrown.h"
#include "window/mainwindow.h"
#include "window/windowreport.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

#include <new>

namespace tessera {

namespace {

/// The window that the receiver of an event belongs to; dialogs belong to the window that opened them. Of
/// other objects, such as timers, any window.
MainWindow* windowOf(QObject* pReceiver)
{
    for (QObject* pObject = pReceiver; pObject; pObject = pObject->parent()) {
        if (auto* pWindow = qobject_cast<MainWindow*>(pObject)) {
            return pWindow;
        }
    }
    for (QWidget* pWidget : QApplication::topLevelWidgets()) {
        if (auto* pWindow = qobject_cast<MainWindow*>(pWidget)) {
            return pWindow;
        }
    }
    return nullptr;
}

void say(const QString& strText, QObject* pReceiver)
{
    try {
        if (MainWindow* pWindow = windowOf(pReceiver)) {
            WindowReport(*pWindow).addMessage(strText, Severity::Error);
        } else {
            QMessageBox::warning(nullptr, QApplication::applicationDisplayName(), strText);
        }
    } catch (const std::bad_alloc&) {  // not even for the line: the program goes on without it
    }
}

}  // namespace

bool Application::notify(QObject* pReceiver, QEvent* pEvent)
{
    const QPointer<QObject> pAlive(pReceiver);  // it may be deleted while it handles the event
    try {
        return QApplication::notify(pReceiver, pEvent);
    } catch (...) {
        say(whatWasThrown(), pAlive);
    }
    return true;
}

}  // namespace tessera
