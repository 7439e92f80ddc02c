// The main of the tests that need an application object.
#include <gtest/gtest.h>

#ifdef TESSERA_TEST_OF_WINDOW
#include "window/application.h"
typedef tessera::Application TestApplication;
#else
#include <QApplication>
typedef QApplication TestApplication;
#endif

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // Kept to the end: the offscreen platform loses track of its screen when the application goes.
    static const QApplication* pApp = new TestApplication(argc, argv);
    Q_UNUSED(pApp)
    return RUN_ALL_TESTS();
}
