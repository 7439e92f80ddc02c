// The picture of a section: places, greys, hatching and marks, looked at pixel by pixel.
#include "exchange/sectionfiles.h"
#include "exchange/strokefont.h"
#include "tests/filebytes.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>
#include <QPainter>
#include <QTemporaryDir>

#include <cmath>
#include <limits>

namespace tessera {

namespace {

/// hk0 of a cell of 10 Å: spots of 100 counts on all lattice points over 10, the upper half not seen.
ReciprocalSection handmade()
{
    ReciprocalSection section;
    section.plane = axisPlane(2, 0);
    section.basis = {DoubleVector{0.1, 0, 0}, {0, 0.1, 0}, {0, 0, 0.1}};
    section.frame = *sectionFrame(section.plane, section.basis);
    section.dfStep = 0.005;
    section.dfMaxDStar = 0.5;
    section.nSide = 201;
    section.listValue.assign(201 * 201, 10.f);
    for (int nRow = 0; nRow < 201; ++nRow) {
        for (int nColumn = 0; nColumn < 201; ++nColumn) {
            float& f = section.listValue[201 * nRow + nColumn];
            if (nRow % 20 == 0 && nColumn % 20 == 0) {
                f = 100;
            }
            if (nRow < 95) {
                f = std::numeric_limits<float>::quiet_NaN();
            }
        }
    }
    return section;
}

QRgb at(const QImage& image, const SectionLayout& layout, double dfColumn, double dfRow)
{
    const QPointF pt = layout.toPicture({dfColumn, dfRow});
    return image.pixel(int(pt.x()), int(pt.y()));
}

}  // namespace

TEST(SectionPicture, EachPixelIsWhereAndAsGreyAsItShould)
{
    const ReciprocalSection section = handmade();
    SectionLook look;
    look.bIndices = look.bRings = false;
    look.nZoom = 4;
    const SectionLayout layout = sectionLayout(section, look);
    EXPECT_EQ(layout.rcField.size(), QSize(804, 804));
    EXPECT_EQ(layout.toSection(layout.toPicture({17.25, 90})), QPointF(17.25, 90));
    for (const bool bDark : {false, true}) {
        look.bDark = bDark;
        const QImage image = drawSection(section, look);
        ASSERT_EQ(image.size(), layout.sizePicture);
        EXPECT_EQ(qGray(at(image, layout, 120, 120)), bDark ? 255 : 0) << "a spot";
        EXPECT_EQ(qGray(at(image, layout, 128, 128)), bDark ? 0 : 255) << "ground";
        const QRgb rgbUnseen = at(image, layout, 40, 33);
        EXPECT_NE(qRed(rgbUnseen), qBlue(rgbUnseen)) << "no grey where nothing was seen";
    }
    // The logarithm lifts what is faint.
    ReciprocalSection faint = section;
    faint.listValue[201 * 130 + 130] = 30;
    look.bDark = true;
    look.dfDarkest = look.dfBrightest = 0;
    const int nLinear = qGray(at(drawSection(faint, look), layout, 130, 130));
    look.bLogarithmic = true;
    const int nLogarithmic = qGray(at(drawSection(faint, look), layout, 130, 130));
    EXPECT_NEAR(nLinear, 255 * 20 / 90, 1);
    EXPECT_NEAR(nLogarithmic, 255 * std::log(21) / std::log(91), 1.5);
}

TEST(SectionPicture, MarksAreOnWhatTheyMark)
{
    const ReciprocalSection section = handmade();
    SectionLook look;
    look.nZoom = 4;
    look.bIndices = look.bRings = false;
    const QImage without = drawSection(section, look);
    const SectionLayout layout = sectionLayout(section, look);
    const auto changed = [&](const QImage& image, const QPointF& ptSection, int nReach) {
        int nChanged = 0;
        const QPoint pt = layout.toPicture(ptSection).toPoint();
        for (int y = -nReach; y <= nReach; ++y) {
            for (int x = -nReach; x <= nReach; ++x) {
                nChanged += image.pixel(pt + QPoint(x, y)) != without.pixel(pt + QPoint(x, y));
            }
        }
        return nChanged;
    };
    look.bLattice = true;
    const QImage lattice = drawSection(section, look);
    EXPECT_GT(changed(lattice, {140, 120}, 12), 20);
    EXPECT_EQ(changed(lattice, {140, 120}, 4), 0) << "the spot itself stays bare";
    EXPECT_EQ(changed(lattice, {130, 130}, 12), 0) << "between the points";
    look.bLattice = false;
    look.bRings = true;
    const QImage rings = drawSection(section, look);
    const double dfFive = 0.2 / 0.005;  // pixels, of the ring of 5 Å
    int nOnRing = 0;
    for (int n = 10; n < 80; ++n) {
        const double dfAngle = n * 3.14159265 / 180;
        nOnRing += changed(rings, {100 + dfFive * std::cos(dfAngle), 100 + dfFive * std::sin(dfAngle)}, 2) >
                   0;
    }
    EXPECT_GT(nOnRing, 30);
    look.bRings = false;
    look.bIndices = true;
    EXPECT_GT(changed(drawSection(section, look), {142, 97}, 20), 40);
}

TEST(SectionPicture, LettersHaveTheirWidthAndStandOnTheLine)
{
    // All characters of labels have strokes; a missing character would be a box, which has four straight
    // corners.
    for (const QString& strText : {QStringLiteral("hk0"), QStringLiteral("0123456789"), QStringLiteral("Å⁻¹"),
                                   QStringLiteral("a* b* c*")}) {
        QImage image(400, 60, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setPen(QPen(Qt::black, 1.5, Qt::SolidLine, Qt::RoundCap));
        drawStrokeText(painter, {10, 40}, strText, 18);
        painter.end();
        int nLeft = 400, nRight = 0, nBottom = 0;
        for (int y = 0; y < 60; ++y) {
            for (int x = 0; x < 400; ++x) {
                if (qGray(image.pixel(x, y)) < 128) {
                    nLeft = std::min(nLeft, x);
                    nRight = std::max(nRight, x);
                    nBottom = std::max(nBottom, y);
                }
            }
        }
        EXPECT_NEAR(nLeft, 10, 1.5) << strText.toStdString();
        EXPECT_NEAR(nRight, 10 + strokeTextWidth(strText, 18), 1.5) << strText.toStdString();
        EXPECT_LE(nBottom, 41) << strText.toStdString();
    }
    EXPECT_EQ(strokeTextWidth({}, 18), 0);
}

TEST(SectionFiles, NoFrameIsOverwrittenAndNoHalfIsWritten)
{
    QTemporaryDir dir;
    DataSet dataSet;
    dataSet.m_strProjectDir = dir.path();
    dataSet.m_strProjectName = "s";
    QStringList listWritten;
    CRecordingReport report;
    ASSERT_TRUE(writeSections(dataSet, {handmade()}, {}, report, &listWritten).finished());
    EXPECT_EQ(listWritten, (QStringList{dir.filePath("s_hk0.mrc"), dir.filePath("s_hk0.png")}));
    EXPECT_TRUE(report.said("0.5"));
    // The same bytes again, and the picture that the program shows.
    const QByteArray bytes = readBytes(listWritten[1]);
    EXPECT_EQ(bytes, sectionPng(handmade(), {}));
    QImage image;
    ASSERT_TRUE(image.loadFromData(bytes, "PNG"));
    EXPECT_EQ(image, drawSection(handmade(), {}).convertToFormat(image.format()));

    dataSet.m_listFrameFile = QStringList{dir.filePath("s_hk0.mrc")};
    const QByteArray bytesFrame = readBytes(dir.filePath("s_hk0.mrc"));
    CRecordingReport refused;
    EXPECT_EQ(writeSections(dataSet, {handmade()}, {}, refused, nullptr).end, RunEnd::Refused);
    EXPECT_EQ(readBytes(dir.filePath("s_hk0.mrc")), bytesFrame);
    dataSet.m_listFrameFile.clear();
    dataSet.m_strProjectDir = dir.filePath("nowhere");
    CRecordingReport failed;
    EXPECT_EQ(writeSections(dataSet, {handmade()}, {}, failed, nullptr).end, RunEnd::Failed);
}

}  // namespace tessera
