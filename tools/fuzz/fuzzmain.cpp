// A fuzz target of libFuzzer for the reader TESSERA_FUZZ_READER.
#include "tools/fuzz/fuzzreader.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tessera {

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    static const auto s_it = std::find_if(
        fuzzReaders().begin(), fuzzReaders().end(),
        [](const FuzzReader& reader) { return reader.strName == QLatin1String(TESSERA_FUZZ_READER); });
    if (s_it == fuzzReaders().end()) {
        std::fputs("no reader of this name: " TESSERA_FUZZ_READER "\n", stderr);
        std::abort();
    }
    const QString strWrong = readAsFile(
        *s_it, QByteArray::fromRawData(reinterpret_cast<const char*>(pData), int(nSize)));
    if (!strWrong.isEmpty()) {
        std::fprintf(stderr, "%s: %s\n", TESSERA_FUZZ_READER, qPrintable(strWrong));
        std::abort();
    }
    return 0;
}

}  // namespace tessera
