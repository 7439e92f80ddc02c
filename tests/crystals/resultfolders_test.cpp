// Finding folders of results: folders given twice, reached by links, nested, and those of merging itself.
#include "crystals/resultfolders.h"

#include "tests/filebytes.h"

#include <QDir>
#include <QTemporaryDir>

#include <unistd.h>

namespace tessera {
namespace {

class ResultFoldersOfUser : public testing::Test {
protected:
    void SetUp() override
    {
        for (const char* pszName : {"r/k10", "r/k2", "r/empty", "merged", "deep/er/k3"}) {
            QDir(m_strRoot).mkpath(pszName);
        }
        for (const char* pszName : {"r/k10/a.run.json", "r/k2/a.run.json", "r/k2/b.run.json",
                                    "merged/m.merge.json", "deep/er/k3/a.run.json", "file"}) {
            writeBytes(path(pszName), "{}");
        }
        EXPECT_EQ(::symlink(QFile::encodeName(path("r/k2")).constData(),
                            QFile::encodeName(path("link")).constData()),
                  0);
    }
    QString path(const QString& strName) const { return m_strRoot + QLatin1Char('/') + strName; }
    QString found(const QStringList& listGiven, const QString& strOut = QStringLiteral("/nowhere")) const
    {
        const ResultFolders folders = findResultFolders(listGiven, strOut);
        QStringList list = folders.listFolder;
        for (const UnreadCrystal& unread : folders.listUnread) {
            list.append(QStringLiteral("!") + unread.strName + QLatin1Char(' ') +
                        unread.strReason.section(' ', 0, 2));
        }
        return (list + folders.listNote).join(QLatin1Char('\n')).remove(m_strRoot + QLatin1Char('/'));
    }
    QTemporaryDir m_dir;
    const QString m_strRoot = QFileInfo(m_dir.path()).canonicalFilePath();
};

}  // namespace

TEST_F(ResultFoldersOfUser, countOnceHoweverTheyAreGiven)
{
    EXPECT_EQ(found({path("r")}), "r/k2\nr/k10\n!r/empty There is no");
    EXPECT_EQ(found({path("r/k10"), path("r/k2/../k2/")}), "r/k2\nr/k10");
    // Twice by name is told; a folder and one that it is found in, or several records of one, are no mistake.
    EXPECT_EQ(found({path("r/k2"), path("link")}), "r/k2\nr/k2 is given more than once: it is used once.");
    EXPECT_EQ(found({path("r/k2"), path("r")}), "r/k2\nr/k10\n!r/empty There is no");
    EXPECT_EQ(found({path("r/k2/a.run.json"), path("r/k2/b.run.json")}), "r/k2");
}

TEST_F(ResultFoldersOfUser, AreToldWhereTheyHoldNone)
{
    EXPECT_EQ(found({path("nothing"), path("./nothing"), path("file"), path("r/empty"), path("deep"),
                     path("deep/er"), ""}),
              "deep/er/k3\n!\"\" It has no\n!deep There is no\n!file It is no\n!nothing There is no\n"
              "!r/empty There is no");
    EXPECT_TRUE(found({path("merged"), path("r/k2")}).startsWith("r/k2\nmerged contains merged intensities"));
    EXPECT_TRUE(
        found({path("r/empty"), path("r/k2")}, path("r/empty")).startsWith("r/k2\nr/empty contains merged"));
}

/// A series that was lost is one of few; a folder full of others is no list of hundreds.
TEST_F(ResultFoldersOfUser, AreToldBesideThoseWithRecords)
{
    for (int n = 1; n <= 13; ++n) {
        QDir(m_strRoot).mkpath(QStringLiteral("r/none%1").arg(n));
    }
    for (const char* pszMerged : {"r/merged", "r/out"}) {  // what merging has written is no series
        QDir(m_strRoot).mkpath(pszMerged);
    }
    writeBytes(path("r/merged/m.merge.json"), "{}");
    const ResultFolders folders = findResultFolders({path("r")}, path("r/out"));
    EXPECT_EQ(folders.listFolder, (QStringList{path("r/k2"), path("r/k10")}));
    ASSERT_EQ(folders.listUnread.size(), 11u);
    EXPECT_EQ(folders.listUnread[0].strName, path("r"));
    EXPECT_EQ(folders.listUnread[0].strReason, "4 more folders in it have no record of a run.");
    EXPECT_EQ(folders.listUnread[1].strName, path("r/empty"));
}

}  // namespace tessera
