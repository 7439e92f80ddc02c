#include "app/records/wholefile.h"

#include "app/dataset/peaklistfile.h"
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
    using TWrite = std::function<bool(const QString&, QString*)>;
    // 100000 bytes are more than a file object gathers before it writes; the peak list is written in pieces
    for (const TWrite& write :
         {TWrite(
              [](const QString&strFile, QString*p) { return writeWholeFile(strFile, "abcdef", false, p); }),
          TWrite([](const QString&strFile, QString*p) {
              return writeWholeFile(strFile, QByteArray(100000, 'a'), true, p);
          }),
          TWrite([&](const QString&strFile, QString*p) { return writePeakList(data, strFile, p) == 1; })}) {
        QTemporaryDir folder;
        const QString strFile = writeBytes(folder.filePath("f"), "old");
        QString strReason;
        {
            const CFileSizeLimit limit(5);
            EXPECT_FALSE(write(strFile, &strReason));
        }
        EXPECT_TRUE(strReason.contains(strFile)) << strReason.toStdString();
        EXPECT_EQ(readBytes(strFile), "old");
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("f"));  // nothing lies beside
        EXPECT_TRUE(write(strFile, &strReason));                                  // it was the disk
        EXPECT_NE(readBytes(strFile), "old");
    }
}
