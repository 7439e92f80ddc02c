#include "exchange/sectionpicture.h"

#include "crystal/cellarithmetic.h"
#include "exchange/sectionmarks.h"
#include "exchange/strokefont.h"
#include "imaging/logcontrast.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

// Least size of the field, pixels; up to one and a half times as much after zooming.
const int g_nPage = 1000;
const int g_nMargin = 44;     // beside the field, pixels, for the names of the axes
const int g_nTop = 64;        // above the field, for the title
const int g_nBottom = 92;     // below the field, for scale and caption
const double g_dfTitle = 20;  // height of letters, pixels
const double g_dfText = 11;
const double g_dfBeam = 0.12;  // share of the extent; the halo of the direct beam is left out of the contrast
const int g_nHatch = 8;        // distance of lines, pixels

float percentileOf(std::vector<float>& listValue, double dfPerCent)
{
    const double dfPlace = std::clamp(dfPerCent / 100, 0.0, 1.0) * double(listValue.size() - 1);
    const auto it = listValue.begin() + std::ptrdiff_t(dfPlace);
    std::nth_element(listValue.begin(), it, listValue.end());
    return *it;
}

/// The grey value of each pixel of the section.
std::vector<unsigned char> greysOf(const ReciprocalSection& section, const SectionLook& look)
{
    const auto [fLow, fHigh] = sectionContrast(section, look);
    std::vector<unsigned char> listByte(section.listValue.size());
    if (look.bLogarithmic) {
        FloatToByteLog(section.listValue.data(), listByte.data(), int(listByte.size()), fLow, fHigh);
    } else {
        for (size_t n = 0; n < listByte.size(); ++n) {
            const float f = 255 * (section.listValue[n] - fLow) / (fHigh - fLow);
            listByte[n] = f > 0 ? static_cast<unsigned char>(std::min(f, 255.f)) : 0;
        }
    }
    if (!look.bDark) {
        for (unsigned char& nByte : listByte) {
            nByte = static_cast<unsigned char>(255 - nByte);
        }
    }
    return listByte;
}

/// Draws each pixel of the section as a square. Pixels without a measurement are hatched.
void drawField(const ReciprocalSection& section, const SectionLook& look, const SectionLayout& layout,
               QImage& image)
{
    const std::vector<unsigned char> listGrey = greysOf(section, look);
    const QRgb rgbGround = look.bDark ? qRgb(34, 42, 56) : qRgb(226, 233, 243);
    const QRgb rgbLine = look.bDark ? qRgb(58, 70, 90) : qRgb(190, 202, 220);
    for (int y = 0; y < layout.rcField.height(); ++y) {
        auto* pLine = reinterpret_cast<QRgb*>(image.scanLine(layout.rcField.top() + y)) +
                      layout.rcField.left();
        const size_t nRow = size_t(y / layout.nZoom) * size_t(section.nSide);
        for (int x = 0; x < layout.rcField.width(); ++x) {
            const size_t nPixel = nRow + size_t(x / layout.nZoom);
            const int nGrey = listGrey[nPixel];
            const bool bSeen = std::isfinite(section.listValue[nPixel]);
            const QRgb rgbUnseen = (x + y) % g_nHatch == 0 ? rgbLine : rgbGround;
            pLine[x] = bSeen ? qRgb(nGrey, nGrey, nGrey) : rgbUnseen;
        }
    }
}

QString numberText(double df, int nDecimals)
{
    return QString::number(df, 'f', nDecimals);
}

QString cellText(const ReciprocalSection& section)
{
    const auto narrow = [](const DoubleVector& v) { return Vec3D{float(v[0]), float(v[1]), float(v[2])}; };
    const std::optional<CellParameters> cell = cellParameters(
        {narrow(section.basis[0]), narrow(section.basis[1]), narrow(section.basis[2])});
    if (!cell) {
        return {};
    }
    return QStringLiteral("a b c  %1 %2 %3 Å,  %4 %5 %6°")
        .arg(numberText(cell->a, 2), numberText(cell->b, 2), numberText(cell->c, 2),
             numberText(cell->alpha, 1), numberText(cell->beta, 1), numberText(cell->gamma, 1));
}

/// The greatest of one, two or five times a power of ten within a length.
double roundLength(double dfMost)
{
    const double dfPower = std::pow(10.0, std::floor(std::log10(dfMost)));
    for (const double dfFactor : {5.0, 2.0}) {
        if (dfFactor * dfPower <= dfMost) {
            return dfFactor * dfPower;
        }
    }
    return dfPower;
}

void setPen(QPainter& painter, const QColor& color, double dfWidth)
{
    painter.setPen(QPen(color, dfWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

void drawScale(const ReciprocalSection& section, const SectionLayout& layout, QPainter& painter)
{
    const QRect& rc = layout.rcField;
    const double dfLength = roundLength(0.25 * section.nSide * section.dfStep);
    const double dfPixels = dfLength / section.dfStep * layout.nZoom;
    const double dfY = rc.bottom() + g_nMargin;
    setPen(painter, Qt::black, 2.5);
    painter.drawLine(QPointF(rc.left(), dfY), QPointF(rc.left() + dfPixels, dfY));
    for (const double dfX : {double(rc.left()), rc.left() + dfPixels}) {
        painter.drawLine(QPointF(dfX, dfY - 5), QPointF(dfX, dfY + 5));
    }
    setPen(painter, Qt::black, 1.4);
    drawStrokeText(painter, {rc.left() + dfPixels + 14, dfY + g_dfText / 2},
                   QStringLiteral("%1 Å⁻¹").arg(dfLength), g_dfText);
}

void drawTexts(const ReciprocalSection& section, const SectionLook& look, const SectionLayout& layout,
               QPainter& painter)
{
    const QRect& rc = layout.rcField;
    setPen(painter, Qt::black, 2.2);
    drawStrokeText(painter, {double(rc.left()), 38}, section.plane.strName, g_dfTitle);
    setPen(painter, Qt::black, 1.3);
    const QString strCell = cellText(section);
    drawStrokeText(painter, {rc.right() - strokeTextWidth(strCell, g_dfText), 38}, strCell, g_dfText);
    const auto [fLow, fHigh] = sectionContrast(section, look);
    QString strText = QStringLiteral("%1 Å⁻¹ thick,  %2 to %3 counts%4,  hatched: not seen")
                          .arg(numberText(section.dfThickness, 4), numberText(double(fLow), 1),
                               numberText(double(fHigh), 1),
                               look.bLogarithmic ? QStringLiteral(" (log)") : QString());
    if (!section.strLaueClass.isEmpty()) {
        strText += QStringLiteral(",  averaged by ") + section.strLaueClass;
    }
    drawStrokeText(painter, {double(rc.left()), rc.bottom() + g_nMargin + 34.0}, strText, g_dfText);
    drawScale(section, layout, painter);
}

}  // namespace

std::pair<float, float> sectionContrast(const ReciprocalSection& section, const SectionLook& look)
{
    std::vector<float> listValue;
    for (int nRow = 0; nRow < section.nSide; ++nRow) {
        for (int nColumn = 0; nColumn < section.nSide; ++nColumn) {
            const double dfRight = (nColumn - section.centre()) * section.dfStep;
            const double dfUp = (nRow - section.centre()) * section.dfStep;
            const double dfDStar = std::hypot(dfRight, dfUp, section.frame.dfHeight);
            const float f = section.listValue[size_t(nRow) * size_t(section.nSide) + size_t(nColumn)];
            if (std::isfinite(f) && dfDStar > g_dfBeam * section.dfMaxDStar &&
                dfDStar <= section.dfMaxDStar) {
                listValue.push_back(f);
            }
        }
    }
    if (listValue.empty()) {
        return {0.f, 1.f};
    }
    const float fLow = percentileOf(listValue, look.dfDarkest);
    const float fHigh = percentileOf(listValue, 100 - look.dfBrightest);
    return {fLow, fHigh > fLow ? fHigh : fLow + 1};
}

QPointF SectionLayout::toSection(const QPointF& ptPicture) const
{
    return (ptPicture - rcField.topLeft()) / nZoom - QPointF(0.5, 0.5);
}

QPointF SectionLayout::toPicture(const QPointF& ptSection) const
{
    return (ptSection + QPointF(0.5, 0.5)) * nZoom + rcField.topLeft();
}

SectionLayout sectionLayout(const ReciprocalSection& section, const SectionLook& look)
{
    SectionLayout layout;
    const int nSide = std::max(section.nSide, 1);
    layout.nZoom = look.nZoom > 0 ? look.nZoom : std::max(1, (g_nPage + nSide / 2) / nSide);
    const int nField = nSide * layout.nZoom;
    layout.rcField = QRect(g_nMargin, g_nTop, nField, nField);
    layout.sizePicture = QSize(nField + 2 * g_nMargin, nField + g_nTop + g_nBottom);
    return layout;
}

QImage drawSection(const ReciprocalSection& section, const SectionLook& look)
{
    const SectionLayout layout = sectionLayout(section, look);
    QImage image(section.nSide > 0 ? layout.sizePicture : QSize(), QImage::Format_RGB32);
    if (image.isNull()) {
        return image;
    }
    // The resolution of a new image would depend on the screen; this is 96 dots per inch.
    image.setDotsPerMeterX(3780);
    image.setDotsPerMeterY(3780);
    image.setDevicePixelRatio(1);
    image.fill(Qt::white);
    drawField(section, look, layout, image);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawSectionMarks(section, look, layout, painter);
    setPen(painter, QColor(60, 60, 60), 1);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(layout.rcField).adjusted(-0.5, -0.5, 0.5, 0.5));
    drawTexts(section, look, layout, painter);
    return image;
}

}  // namespace tessera
