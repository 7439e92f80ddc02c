// Sizes and numbers of frame files before there is a project, and whether they agree.
#include "frames/framesummary.h"

#include "imagefiles/mrcfile.h"
#include "tests/imagefiles/dm3builder.h"
#include "tests/imagefiles/testfiles.h"

#include <QImage>

namespace tessera {

namespace {

class Summary : public FileTest {
protected:
    void dm3File(const char* pName, int nWidth, int nHeight, float fKilovolts)
    {
        const QByteArray pixels = dm3::array("Data", 4, quint32(nWidth * nHeight),
                                             QByteArray(2 * nWidth * nHeight, '\1'));
        QByteArray image = dm3::image(nWidth, nHeight, 10, pixels);
        image.replace(5, 4, dm3::big(3));  // one more tag in its group
        image += dm3::group("Microscope Info",
                            {dm3::entry("Voltage", {6}, dm3::number(1000 * fKilovolts, 1))});
        writeBytes(path(pName), dm3::file({dm3::group("ImageList", {image})}));
    }
    void mrcFile(const char* pName, int nWidth, int nHeight, int nSections)
    {
        ImageList vecImage(static_cast<size_t>(nSections));
        for (auto& pImage : vecImage) {
            pImage = std::make_unique<CImgObj<float>>();
            pImage->Create(nWidth, nHeight);
            pImage->Clear();
        }
        ASSERT_EQ(WriteMRC(vecImage, path(pName)), 1);
    }
    void picture(const char* pName, const char* pFormat, int nWidth, int nHeight)
    {
        QImage image(nWidth, nHeight, QImage::Format_Grayscale8);
        image.fill(nWidth);
        ASSERT_TRUE(image.save(path(pName), pFormat));
    }
};

}  // namespace

TEST_F(Summary, SizeFormatAndWhatTheHeaderTells)
{
    dm3File("a.dm3", 4, 3, 300);
    mrcFile("a.mrc", 5, 2, 2);
    picture("a.Jpg", "JPG", 7, 6);
    const struct {
        const char* pName;
        FrameSummary wanted;
    } aRow[] = {
        {"a.dm3", {4, 3, "DM3", 300, 0}}, {"a.mrc", {5, 2, "MRC", 0, 0}}, {"a.Jpg", {7, 6, "JPEG", 0, 0}}};
    for (const auto& row : aRow) {
        SCOPED_TRACE(row.pName);
        const std::optional<FrameSummary> summary = readFrameSummary(path(row.pName));
        ASSERT_TRUE(summary);
        EXPECT_EQ(summary->nWidth, row.wanted.nWidth);
        EXPECT_EQ(summary->nHeight, row.wanted.nHeight);
        EXPECT_EQ(summary->strFormat, row.wanted.strFormat);
        EXPECT_EQ(summary->dfKilovolts, row.wanted.dfKilovolts);
        EXPECT_EQ(summary->dfPixelSize, row.wanted.dfPixelSize);
    }
    QString strReason;
    writeBytes(path("cut.dm3"), readBytes(path("a.dm3")).left(60));
    EXPECT_FALSE(readFrameSummary(path("cut.dm3"), &strReason));
    EXPECT_TRUE(strReason.startsWith(path("cut.dm3") + ": ")) << qPrintable(strReason);
}

TEST_F(Summary, FramesOfASeriesAreAlike)
{
    dm3File("a.dm3", 4, 3, 300);
    dm3File("tall.dm3", 4, 5, 300);
    mrcFile("a.mrc", 4, 3, 1);
    mrcFile("stack.mrc", 4, 3, 2);
    mrcFile("tall.mrc", 4, 5, 1);
    picture("a.png", "PNG", 4, 3);
    picture("wide.png", "PNG", 800, 3);
    picture("picture.mrc", "PNG", 4, 3);  // the content counts
    const QString strTall = ": 4 × 5 pixels, but the first frame has 4 × 3";
    const struct {
        QStringList listName;
        QString strReason;  // its beginning behind the name of the last file; null if all are alike
    } aRow[] = {{{"a.mrc", "stack.mrc", "a.dm3", "a.png", "picture.mrc"}, {}},
                {{"a.mrc", "tall.mrc"}, strTall},
                {{"a.dm3", "tall.dm3"}, strTall},
                {{"a.png", "wide.png"}, ": 800 × 3 pixels, but the first frame has 4 × 3"},
                {{"a.mrc", "absent.mrc"}, ": no such file"}};
    for (const auto& row : aRow) {
        QStringList listFile;
        for (const QString& strName : row.listName) {
            listFile.append(m_dir.filePath(strName));
        }
        QString strReason;
        EXPECT_EQ(areFramesAlike(listFile, &strReason), row.strReason.isNull());
        EXPECT_TRUE(row.strReason.isNull() ? strReason.isEmpty()
                                           : strReason.startsWith(listFile.last() + row.strReason))
            << qPrintable(strReason);
    }
}

}  // namespace tessera
