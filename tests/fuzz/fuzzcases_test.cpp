// Every reader on its folder of fuzzcases: seeds of the fuzzers, and what fuzzers have found.
#include "tests/printtexts.h"
#include "tools/fuzz/fuzzreader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <algorithm>
#include <ostream>

namespace tessera {

void PrintTo(const FuzzReader& reader, std::ostream* pStream);
void PrintTo(const FuzzReader& reader, std::ostream* pStream)
{
    *pStream << reader.strName.toStdString();
}

namespace {

class FuzzCases : public testing::TestWithParam<FuzzReader> {};

TEST_P(FuzzCases, HoldForEveryCase)
{
    const QDir folder(QDir::cleanPath(QStringLiteral(TESSERA_TEST_DATA "/../../fuzzcases/")) +
                      QLatin1Char('/') + GetParam().strName);
    const QStringList listCase = folder.entryList(QDir::Files, QDir::Name);
    EXPECT_FALSE(listCase.isEmpty()) << folder.path().toStdString();
    for (const QString& strCase : listCase) {
        QFile file(folder.filePath(strCase));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        // Whole, and cut anywhere.
        const int nStep = std::max(97, bytes.size() / 40);  // a child process reads some of them
        for (int nSize = bytes.size(); nSize >= 0; nSize -= nSize > 300 ? nStep : 7) {
            EXPECT_EQ(readAsFile(GetParam(), bytes.left(nSize)), QString())
                << strCase.toStdString() << " of " << nSize << " bytes";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Reader, FuzzCases, testing::ValuesIn(fuzzReaders()),
                         [](const auto& reader) { return reader.param.strName.toStdString(); });

}  // namespace

}  // namespace tessera
