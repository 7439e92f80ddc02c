// The main of the tests that need an application object.
#include <gtest/gtest.h>

#ifdef TESSERA_TEST_OF_WINDOW
#include "window/application.h"
typedef tessera::Application TestApplication;
#else
#include <QApplication>
typedef QApplication TestApplication;
#endif

namespace tessera {

// Read by the leak check of an address-sanitized build: what these keep to the end, and the guards of Qt's
// own frames, which are built without clean-up and lose them (16 bytes) when a slot throws through them.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libdbus\nleak:swrast_dri\n"
           "leak:QtSharedPointer::ExternalRefCountData::getAndRef\n";
}

}  // namespace tessera

int main(int argc, char** argv)
{
    using namespace tessera;
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Kept to the end: the offscreen platform loses track of its screen when the application goes.
    static const QApplication* pApp = new TestApplication(argc, argv);
    Q_UNUSED(pApp)
    return RUN_ALL_TESTS();
}
