// Read by the leak check of an address-sanitized build of a program with widgets: what these libraries keep
// to the end, and the guards of Qt's own frames, which are built without clean-up and lose them (16 bytes)
// when a slot throws through them.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libdbus\nleak:swrast_dri\n"
           "leak:QtSharedPointer::ExternalRefCountData::getAndRef\n";
}
