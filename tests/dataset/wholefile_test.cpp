#include "records/wholefile.h"

#include "dataset/peaklistfile.h"
#include "records/fileset.h"
#include "tests/dataset/textfiles.h"
#include "tests/imagefiles/filesizelimit.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>

namespace tessera {

TEST(WholeFile, AFullDiskLeavesTheFormerFileAndTellsWhy)
{
    DataSet data;
    setFrames(data, 1);
    data.m_listPeakFrame = {{}};
    for (int i = 0; i < 20000; ++i) {
        data.m_listPeakFrame[0].append(Peak3D());
    }
    const auto writeList = [&](const QString& strFile, QString* p) {
        return writePeakList(data, strFile, p) == 1;
    };
    struct {
        int nRoom;
        std::function<bool(const QString&, QString*)> fnWrite;
    } const aCase[] = {
        {5, [](const QString& strFile, QString* p) { return writeWholeFile(strFile, "abcdef", p); }},
        {5, [](const QString& strFile,
               QString* p) { return writeWholeFile(strFile, QByteArray(100000, 'a'), p); }},
        {5, writeList},
        {1200000, writeList},  // the last piece of the list finds room for a part of it
    };
    for (const auto& write : aCase) {
        QTemporaryDir folder;
        const QString strFile = writeBytes(folder.filePath("f"), "old");
        QString strReason;
        {
            const CFileSizeLimit limit(rlim_t(write.nRoom));
            EXPECT_FALSE(write.fnWrite(strFile, &strReason));
        }
        EXPECT_EQ(strReason.toStdString(), strFile.toStdString() + ": " + std::strerror(EFBIG));
        EXPECT_EQ(readBytes(strFile), "old");
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("f"));  // nothing lies beside
        EXPECT_TRUE(write.fnWrite(strFile, &strReason));                          // it was the disk
        EXPECT_NE(readBytes(strFile), "old");
    }
}

TEST(WholeFile, TakesTheLongestNameFollowsLinksAndWritesIntoPipes)
{
    const QTemporaryDir folder;
    const QString strLong = folder.filePath(QStringLiteral("ü").repeated(126) + "abc");
    EXPECT_EQ(QFileInfo(strLong).fileName().toUtf8().size(), 255);
    for (const char* pszText : {"one", "another"}) {
        QString strReason;
        EXPECT_TRUE(writeWholeFile(strLong, pszText, &strReason)) << strReason.toStdString();
        EXPECT_EQ(readBytes(strLong), pszText);
    }
    // Links, one to the other and that to a file which is not there yet.
    ASSERT_TRUE(QDir(folder.path()).mkdir("sub"));
    ASSERT_TRUE(QFile::link("sub/far", folder.filePath("near")));
    ASSERT_TRUE(QFile::link("../real", folder.filePath("sub/far")));
    for (const char* pszText : {"one", "another"}) {
        EXPECT_TRUE(writeWholeFile(folder.filePath("near"), pszText));
        EXPECT_EQ(readBytes(folder.filePath("real")), pszText);
        EXPECT_TRUE(QFileInfo(folder.filePath("near")).isSymLink());
        EXPECT_TRUE(QFileInfo(folder.filePath("sub/far")).isSymLink());
    }
    EXPECT_TRUE(QFile::setPermissions(folder.filePath("real"), QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_TRUE(writeWholeFile(folder.filePath("near"), "private"));
    struct stat info = {};
    EXPECT_EQ(::stat(folder.filePath("real").toUtf8().constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_FALSE(writeWholeFile(folder.filePath("sub"), "text"));

    const QByteArray strPipe = folder.filePath("pipe").toUtf8();
    ASSERT_EQ(::mkfifo(strPipe.constData(), 0600), 0);
    EXPECT_FALSE(writeWholeFile(folder.filePath("pipe"), "nobody reads"));
    const int nReader = ::open(strPipe.constData(), O_RDONLY | O_NONBLOCK);
    EXPECT_TRUE(writeWholeFile(folder.filePath("pipe"), "text"));
    char szRead[10] = {};
    EXPECT_EQ(::read(nReader, szRead, sizeof(szRead)), 4);
    EXPECT_STREQ(szRead, "text");
    ::close(nReader);
    EXPECT_EQ(QDir(folder.path()).entryList({"*.??????"}, QDir::Files), QStringList());
}

TEST(FileSet, GoesIntoPlaceTogetherOrNotAtAll)
{
    const auto names = [](const QTemporaryDir& folder) {
        return QDir(folder.path()).entryList(QDir::Files).join(' ').toStdString();
    };
    for (const char* pszTrouble : {"none", "no commit", "folder at first", "folder later"}) {
        SCOPED_TRACE(pszTrouble);
        const QTemporaryDir folder;
        const QString strLast = folder.filePath("last");
        writeBytes(folder.filePath("a"), "old a");
        const bool bAtFirst = QByteArray(pszTrouble) == "folder at first";
        ASSERT_TRUE(!bAtFirst || QDir().mkdir(strLast));
        QString strReason;
        bool bCommitted = false;
        {
            CFileSet set;
            EXPECT_TRUE(set.add(folder.filePath("a"), "new a"));
            EXPECT_TRUE(set.addCopy(folder.filePath("a"), folder.filePath("b")));
            EXPECT_EQ(set.add(strLast, "new"), !bAtFirst);
            EXPECT_EQ(set.holds(strLast), !bAtFirst);
            EXPECT_EQ(readBytes(folder.filePath("a")), "old a");
            const bool bLater = QByteArray(pszTrouble) == "folder later";
            ASSERT_TRUE(!bLater || QDir().mkdir(strLast));
            if (QByteArray(pszTrouble) != "no commit") {
                bCommitted = set.commit(&strReason);
            }
        }
        const bool bGood = QByteArray(pszTrouble) == "none";
        EXPECT_EQ(bCommitted, bGood) << strReason.toStdString();
        EXPECT_EQ(strReason.contains(strLast), QByteArray(pszTrouble).startsWith("folder"));
        EXPECT_EQ(names(folder), bGood ? "a b last" : "a");
        EXPECT_EQ(readBytes(folder.filePath("a")), bGood ? "new a" : "old a");
        EXPECT_EQ(readBytes(folder.filePath("b")), bGood ? "old a" : "");
    }
}

}  // namespace tessera
