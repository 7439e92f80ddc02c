#include "app/records/wholefile.h"

#include "app/dataset/peaklistfile.h"
#include "app/dataset/shiftfile.h"
#include "app/dataset/unitcellfile.h"
#include "imagefiles/filesizelimit.h"
#include "textfiles.h"

#include <QDir>
#include <QTemporaryDir>

#include <functional>

TEST(WholeFile, AFullDiskLeavesTheFormerFile)
{
    DataSet data;
    setFrames(data, 1);
    data.m_listPeakFrame = {{Peak3D()}};
    data.m_listCell = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    using TWrite = std::function<bool(const QString&, QString*)>;
    const struct {
        const char* pName;
        TWrite write;
    } aRow[] = {
        {"short",
         [](const QString& strFile, QString* p) { return writeWholeFile(strFile, "abcdef", false, p); }},
        {"long",  // more than a file object gathers before it writes
         [](const QString& strFile, QString* p) {
             return writeWholeFile(strFile, QByteArray(100000, 'a'), true, p);
         }},
        {"peaks", [&](const QString& strFile, QString* p) { return writePeakList(data, strFile, p) == 1; }},
        {"shifts",
         [](const QString& strFile, QString* p) {
             return writeShiftFile(strFile, {1, 2, {{3, 4}}}, p);
         }},
        {"cell", [&](const QString& strFile, QString* p) { return saveUnitCellFile(data, strFile, p); }}};
    for (const auto& row : aRow) {
        SCOPED_TRACE(row.pName);
        QTemporaryDir folder;
        const QString strFile = putFile(folder.filePath("f"), "old");
        QString strReason;
        bool bWritten = true;
        {
            const CFileSizeLimit limit(5);
            bWritten = row.write(strFile, &strReason);
        }
        EXPECT_FALSE(bWritten);
        EXPECT_TRUE(strReason.contains(strFile)) << strReason.toStdString();
        EXPECT_EQ(bytesOf(strFile), "old");
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("f"));  // nothing lies beside
        EXPECT_EQ(data.m_strWorkingDir, "");
        EXPECT_TRUE(row.write(strFile, &strReason));  // it was the disk
        EXPECT_NE(bytesOf(strFile), "old");
        data.m_strWorkingDir.clear();
    }
}
