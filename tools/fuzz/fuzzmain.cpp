// A fuzz target of libFuzzer for the reader TESSERA_FUZZ_READER.
#include "tools/fuzz/fuzzreader.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tessera {

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize)
{
    static const FuzzReader& s_reader = *std::find_if(
        fuzzReaders().begin(), fuzzReaders().end(), [](const FuzzReader& reader) {
            return QLatin1String(reader.pName) == QLatin1String(TESSERA_FUZZ_READER);
        });
    const QString strWrong = readAsFile(
        s_reader, QByteArray::fromRawData(reinterpret_cast<const char*>(pData), int(nSize)));
    if (!strWrong.isEmpty()) {
        std::fprintf(stderr, "%s: %s\n", s_reader.pName, qPrintable(strWrong));
        std::abort();
    }
    return 0;
}

}  // namespace tessera
