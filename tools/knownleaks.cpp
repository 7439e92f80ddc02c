// The leak check of address-sanitized programs with widgets reads these suppressions: memory that these
// libraries keep to the end, and guards in frames of Qt, which is built without clean-up and loses them (16
// bytes) when a slot throws through it.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libdbus\nleak:swrast_dri\n"
           "leak:QtSharedPointer::ExternalRefCountData::getAndRef\n";
}
