// What the window keeps of a project: the same numbers come back, and nothing of a file that is not whole.
#include "workstate/windowfile.h"
#include "tests/formatsdoc.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace {

using namespace tessera;

WindowMemory someMemory()
{
    WindowMemory memory;
    memory.mapping.m_dfResolutionMin = 0.12;
    memory.mapping.m_dfIntensityMin = -7;
    memory.merging.m_dfMin3DDistance = 6.25;
    memory.merging.m_bIntegrateThroughFrames = true;
    memory.cell.m_dfCellRangeMax = 41.3;
    memory.cell.m_method = CellSearchMethod::BestOfBoth;
    memory.cell.m_bAutoRange = true;
    memory.indexing.m_dfIndexThreshold = 0.11;
    memory.indexing.m_nSpaceGroup = 230;
    memory.hunted = HuntedMemory{{}, 0xfedcba9876543210ULL};
    memory.hunted->hunting.m_dfPeakThreshold = 3.5;
    memory.merged = MergedMemory{2, 5, 0x8000000000000001ULL};
    return memory;
}

TEST(WindowFile, NumbersComeBack)
{
    const QByteArray bytes = windowFileText(someMemory());
    WindowMemory read;
    QString strReason;
    ASSERT_TRUE(readWindowFileText(bytes, read, &strReason)) << qPrintable(strReason);
    EXPECT_EQ(windowFileText(read), bytes);
    EXPECT_EQ(read.mapping.m_dfResolutionMin, 0.12);
    EXPECT_EQ(read.cell.m_method, CellSearchMethod::BestOfBoth);
    EXPECT_EQ(read.indexing.m_nSpaceGroup, 230);
    ASSERT_TRUE(read.hunted);
    ASSERT_TRUE(read.merged);
    EXPECT_EQ(read.hunted->nPeaks, 0xfedcba9876543210ULL);
    EXPECT_EQ(read.hunted->hunting.m_dfPeakThreshold, 3.5);
    EXPECT_EQ(read.merged->nMerged, 0x8000000000000001ULL);

    // A file of a version with fewer numbers leaves the others as they are.
    QByteArray bytesFew = bytes;
    bytesFew.replace("\"cell-max\"", "\"something else\"");
    WindowMemory other;
    other.cell.m_dfCellRangeMax = 77;
    ASSERT_TRUE(readWindowFileText(bytesFew, other));
    EXPECT_EQ(other.cell.m_dfCellRangeMax, 77);
}

// The paths of all keys, "pages.cell-max".
QSet<QString> keyPaths(const QJsonObject& object, const QString& strBefore = {})
{
    QSet<QString> setPath;
    for (auto it = object.begin(); it != object.end(); ++it) {
        setPath.insert(strBefore + it.key());
        setPath += keyPaths(it.value().toObject(), strBefore + it.key() + QLatin1Char('.'));
    }
    return setPath;
}

TEST(WindowFile, KeysAreThoseOfTheDocumentation)
{
    const QSet<QString> setWritten = keyPaths(QJsonDocument::fromJson(windowFileText(someMemory())).object());
    const QStringList listTold = wordsOfFormat(QStringLiteral("keys: window"));
    const QSet<QString> setTold(listTold.begin(), listTold.end());
    const auto sorted = [](const QSet<QString>& set) {
        QStringList list = set.values();
        list.sort();
        return list.join(QLatin1Char(' ')).toStdString();
    };
    EXPECT_EQ(sorted(setWritten - setTold), "") << "not told";
    EXPECT_EQ(sorted(setTold - setWritten), "") << "told, but not written";
}

TEST(WindowFile, DamagedAndForeignFilesAreRefused)
{
    const QByteArray bytes = windowFileText(someMemory());
    const WindowMemory before;
    const auto refused = [&](const QByteArray& bytesBad) {
        WindowMemory memory;
        QString strReason;
        const bool bRead = readWindowFileText(bytesBad, memory, &strReason);
        return !bRead && !strReason.isEmpty() && windowFileText(memory) == windowFileText(before);
    };
    for (int nSize = 0; nSize < bytes.trimmed().size(); ++nSize) {
        EXPECT_TRUE(refused(bytes.left(nSize))) << nSize;
    }
    const struct {
        const char* pszFrom;
        const char* pszTo;
    } aCase[] = {{"Tessera window", "Other window"},
                 {"\"version\": 1", "\"version\": 2"},
                 {"41.3", "1e9"},
                 {"41.3", "\"41.3\""},
                 {"41.3", "null"},
                 {": 230", ": 231"},
                 {": 230", ": 1.5e300"},
                 {"\"cell-auto\": true", "\"cell-auto\": 1"},
                 {"\"cell-method\": 2", "\"cell-method\": 3"},
                 {"\"group\": 2", "\"group\": 2.5"},
                 {"fedcba98", "xyz"}};
    for (const auto& test : aCase) {
        QByteArray bytesBad = bytes;
        ASSERT_TRUE(bytesBad.contains(test.pszFrom)) << test.pszFrom;
        EXPECT_TRUE(refused(bytesBad.replace(test.pszFrom, test.pszTo))) << test.pszTo;
    }
    EXPECT_TRUE(refused("[1, 2]"));
    EXPECT_TRUE(refused("{}"));
}

}  // namespace
