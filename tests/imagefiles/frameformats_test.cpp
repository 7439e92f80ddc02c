#include "imagefiles/frameformats.h"

#include "tests/imagefiles/testfiles.h"

#include <QDir>
#include <QSize>

#include <algorithm>

namespace tessera {

namespace {

class FrameFormats : public FileTest {
protected:
    /// The bytes of all test files of a format.
    static QList<QByteArray> samples(const FrameFormat& format)
    {
        const bool bPicture = format.fnRead == frameFormats().back().fnRead;
        const QString strName = bPicture ? frameFormats().back().strName : format.strName;
        QList<QByteArray> listBytes;
        for (const QDir& dir :
             {QDir(TESSERA_TEST_DATA, "*." + format.listSuffix.value(0)),
              QDir(QString(TESSERA_TEST_DATA "/../../fuzzcases/%1").arg(strName.toLower()), "seed_*")}) {
            for (const QString& strFile : dir.entryList(QDir::Files)) {
                listBytes.append(readBytes(dir.filePath(strFile)));
            }
        }
        return listBytes;
    }
    static bool hasMagic(const FrameFormat& format, const QByteArray& bytes)
    {
        return std::any_of(format.vecMagic.begin(), format.vecMagic.end(), [&](const FileMagic& magic) {
            return bytes.mid(magic.nOffset, magic.bytes.size()) == magic.bytes;
        });
    }
};

}  // namespace

TEST_F(FrameFormats, TheSuffixDecidesWhereTheContentDoesNot)
{
    const std::pair<const char*, const char*> aRow[] = {
        {"/d.mrc/a.b.MRC", "MRC"}, {"x.Dm3", "DM3"},        {"x.jpeg", "JPEG"}, {"x.TIFF", "TIFF"},
        {"x.ppm", "Picture"},      {"/d.mrc/x", "Picture"}, {"mrc", "Picture"}, {"x.mrc.bak", "Picture"}};
    for (const auto& [pName, pFormat] : aRow) {
        EXPECT_EQ(frameFormatOf(pName).strName, pFormat) << pName;
    }
    // Users see this order, and "Add Folder" goes by it.
    EXPECT_TRUE(frameNameFilters().startsWith("*.dm3 *.mrc *."));
    EXPECT_TRUE(frameNameFilters().endsWith(" *.bmp *.jpg *.jpeg *.gif *.tif *.tiff *.png"));
    QStringList listSuffix = frameSuffixes();
    EXPECT_EQ(listSuffix.removeDuplicates(), 0);
}

TEST_F(FrameFormats, EveryRowKnowsAndReadsItsFiles)
{
    for (const FrameFormat& format : frameFormats()) {
        if (&format == &frameFormats().back()) {
            continue;
        }
        SCOPED_TRACE(qPrintable(format.strName));
        const QString strFile = m_dir.filePath("frame." + format.listSuffix.value(0).toUpper());
        int nRead = 0;
        for (const QByteArray& bytes : samples(format)) {
            if (!hasMagic(format, bytes)) {
                continue;
            }
            for (const FrameFormat& other : frameFormats()) {
                EXPECT_TRUE(&other == &format || !hasMagic(other, bytes)) << qPrintable(other.strName);
            }
            writeBytes(strFile, bytes);
            ImageList vecImage;
            QString strReason;
            if (!frameFormatOf(strFile).fnRead(strFile, 0, 1, vecImage, strReason) || vecImage.size() != 1) {
                continue;
            }
            ++nRead;
            const QSize size(vecImage[0]->Width(), vecImage[0]->Height());
            EXPECT_EQ(size, format.fnReadHeader(strFile, 0).size);
        }
        EXPECT_GT(nRead, 0);
        if (format.fnReadHeader) {  // no file, and what is none
            QFile::remove(strFile);
            EXPECT_FALSE(format.fnReadHeader(strFile, 0).size.isValid());
            EXPECT_FALSE(format.fnReadHeader(QStringLiteral("/dev/zero"), 0).size.isValid());
        }
    }
}

}  // namespace tessera
