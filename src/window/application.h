// Application: the application object of the workbench, which no exception of a slot ends.
#pragma once

#include <QApplication>

namespace tessera {

/// What an event's handlers throw, as when memory runs out, becomes a red line in the log of the window that
/// the event was for, and the program goes on. Where something has to be put back, the slot does so by a
/// guard or by MainWindow::guarded().
class Application : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* pReceiver, QEvent* pEvent) override;
};

}  // namespace tessera
