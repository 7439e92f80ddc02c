// The application that widgets need; it comes with the first benchmark that has one.
#pragma once

#include <QApplication>

namespace tessera {

inline void needApplication()
{
    if (qApp) {
        return;
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    static int nArgument = 1;
    static char aName[] = "tessera-bench";
    static char* aArgument[] = {aName, nullptr};
    static const QApplication* const pApplication = new QApplication(nArgument, aArgument);
    Q_UNUSED(pApplication)  // it lives to the end: screens and fonts go down with the process
}

}  // namespace tessera
