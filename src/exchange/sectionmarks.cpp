#include "exchange/sectionmarks.h"

#include "exchange/strokefont.h"
#include "reciprocal/resolutionrings.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfText = 9;        // height of letters, pixels
const double g_dfLabelRoom = 95;  // distance of labels along an axis, pixels
const double g_dfMarkRoom = 10;   // least distance of lattice points for marks, pixels
const int g_nMostMarks = 40000;

struct Colors {
    QColor axis, ring, mark, label, halo;
};

Colors colorsOf(const SectionLook& look)
{
    if (look.bDark) {
        return {QColor(255, 160, 60), QColor(70, 190, 190), QColor(110, 170, 255), QColor(255, 220, 120),
                QColor(0, 0, 0, 170)};
    }
    return {QColor(200, 80, 0), QColor(0, 120, 120), QColor(20, 80, 220), QColor(160, 30, 30),
            QColor(255, 255, 255, 200)};
}

void setPen(QPainter& painter, const QColor& color, double dfWidth, Qt::PenStyle style = Qt::SolidLine)
{
    painter.setPen(QPen(color, dfWidth, style, Qt::RoundCap, Qt::RoundJoin));
}

/// Draws a text that can be read over spots, too.
void drawLabel(QPainter& painter, const QPointF& pt, const QString& strText, const QColor& color,
               const QColor& colorHalo)
{
    setPen(painter, colorHalo, 4);
    drawStrokeText(painter, pt, strText, g_dfText);
    setPen(painter, color, 1.3);
    drawStrokeText(painter, pt, strText, g_dfText);
}

QString nameOf(const std::array<int, 3>& anVector)
{
    const QString astrName[] = {QStringLiteral("a*"), QStringLiteral("b*"), QStringLiteral("c*")};
    for (size_t n = 0; n < 3; ++n) {
        if (anVector[n] == 1 && std::abs(anVector[0]) + std::abs(anVector[1]) + std::abs(anVector[2]) == 1) {
            return astrName[n];
        }
    }
    return QStringLiteral("%1 %2 %3").arg(anVector[0]).arg(anVector[1]).arg(anVector[2]);
}

/// A direction of the plane on the picture, of length 1 along the first axis or upwards, and the length of
/// the vector.
struct Direction {
    QPointF ptUnit;
    double dfPixels = 0;
};

Direction directionOf(const ReciprocalSection& section, const SectionLayout& layout,
                      const std::array<int, 3>& anVector)
{
    double dfRight = 0, dfUp = 0;
    for (size_t n = 0; n < 3; ++n) {
        dfRight += anVector[n] * dot(section.basis[n], section.frame.vecRight);
        dfUp += anVector[n] * dot(section.basis[n], section.frame.vecUp);
    }
    const double dfLength = std::hypot(dfRight, dfUp);
    return {QPointF(dfRight, -dfUp) / dfLength, dfLength / section.dfStep * layout.nZoom};
}

void drawAxis(const ReciprocalSection& section, const SectionLayout& layout, const Colors& colors,
              const std::array<int, 3>& anVector, QPainter& painter)
{
    const QPointF ptOrigin = layout.toPicture({double(section.centre()), double(section.centre())});
    const QPointF ptUnit = directionOf(section, layout, anVector).ptUnit;
    const double dfHalf = layout.rcField.width() / 2.0;
    const double dfReach = dfHalf / std::max(std::fabs(ptUnit.x()), std::fabs(ptUnit.y()));
    const QPointF ptEnd = ptOrigin + dfReach * ptUnit;
    QColor faint = colors.axis;
    faint.setAlpha(110);
    setPen(painter, faint, 1);
    painter.drawLine(ptOrigin - dfReach * ptUnit, ptEnd);
    // The arrowhead is in the margin, with the name beside it.
    setPen(painter, colors.axis, 1.6);
    const QPointF ptTip = ptEnd + 14 * ptUnit, ptSide(-ptUnit.y(), ptUnit.x());
    painter.drawLine(ptEnd, ptTip);
    painter.drawLine(ptTip, ptTip - 7 * ptUnit + 3.5 * ptSide);
    painter.drawLine(ptTip, ptTip - 7 * ptUnit - 3.5 * ptSide);
    const QString strName = nameOf(anVector);
    const double dfWidth = strokeTextWidth(strName, g_dfText);
    const bool bRight = std::fabs(ptUnit.x()) > std::fabs(ptUnit.y());
    const QPointF ptName = bRight ? QPointF(std::min(ptTip.x() - 8, layout.sizePicture.width() - dfWidth - 4),
                                            ptTip.y() - 10)
                                  : QPointF(ptTip.x() + 10, ptTip.y() + g_dfText / 2);
    drawStrokeText(painter, ptName, strName, g_dfText);
}

void drawRings(const ReciprocalSection& section, const SectionLayout& layout, const Colors& colors,
               QPainter& painter)
{
    const QPointF ptOrigin = layout.toPicture({double(section.centre()), double(section.centre())});
    const double dfHeight = section.frame.dfHeight;
    for (const double dfSpacing : ringSpacings(section.dfMaxDStar)) {
        const double dfSquare = 1 / (dfSpacing * dfSpacing) - dfHeight * dfHeight;
        const double dfRadius = std::sqrt(std::max(dfSquare, 0.0)) / section.dfStep * layout.nZoom;
        if (dfRadius < g_dfLabelRoom / 2) {
            continue;
        }
        QColor faint = colors.ring;
        faint.setAlpha(150);
        setPen(painter, faint, 1, Qt::DotLine);
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(ptOrigin, dfRadius, dfRadius);
        // The label is on the diagonal, away from the axes and inside the field.
        const QPointF pt = ptOrigin + dfRadius * QPointF(-0.7071, -0.7071);
        drawLabel(painter, pt + QPointF(4, 4), QStringLiteral("%1 Å").arg(dfSpacing, 0, 'g', 3), colors.ring,
                  colors.halo);
    }
}

void drawLattice(const ReciprocalSection& section, const SectionLayout& layout, const Colors& colors,
                 QPainter& painter)
{
    const double dfNearest = std::min(directionOf(section, layout, section.frame.anFirst).dfPixels,
                                      directionOf(section, layout, section.frame.anSecond).dfPixels);
    if (dfNearest < g_dfMarkRoom) {
        return;
    }
    setPen(painter, colors.mark, 0.9);
    painter.setBrush(Qt::NoBrush);
    const double dfRadius = std::clamp(0.3 * dfNearest, 3.0, 9.0);
    for (const std::array<int, 3>& an : latticeOfSection(section, g_nMostMarks)) {
        const auto pt = placeOnSection(section, {double(an[0]), double(an[1]), double(an[2])});
        if (pt) {
            painter.drawEllipse(layout.toPicture(*pt), dfRadius, dfRadius);
        }
    }
}

/// The step of labels along an axis: one, two or five times a power of ten, so that the labels have space.
int stepOfLabels(double dfPixels)
{
    int nPower = 1;
    while (true) {
        for (const int nFactor : {1, 2, 5}) {
            if (nFactor * nPower * dfPixels >= g_dfLabelRoom) {
                return nFactor * nPower;
            }
        }
        nPower *= 10;
    }
}

void drawIndices(const ReciprocalSection& section, const SectionLayout& layout, const Colors& colors,
                 QPainter& painter)
{
    const std::vector<std::array<int, 3>> listIndex = latticeOfSection(section, g_nMostMarks);
    if (listIndex.empty()) {
        return;
    }
    // Labels count from the lattice point next to the middle.
    const auto placeOf = [&](const std::array<int, 3>& an) {
        return placeOnSection(section, {double(an[0]), double(an[1]), double(an[2])});
    };
    const QPointF ptCentre(section.centre(), section.centre());
    const auto farFromCentre = [&](const std::array<int, 3>& an) {
        const std::optional<QPointF> pt = placeOf(an);
        return pt ? std::hypot(pt->x() - ptCentre.x(), pt->y() - ptCentre.y()) : HUGE_VAL;
    };
    const std::array<int, 3> anStart = *std::min_element(
        listIndex.begin(), listIndex.end(),
        [&](const auto& one, const auto& other) { return farFromCentre(one) < farFromCentre(other); });
    for (const std::array<int, 3>& anVector : {section.frame.anFirst, section.frame.anSecond}) {
        const int nStep = stepOfLabels(directionOf(section, layout, anVector).dfPixels);
        const int nMost = 2 * section.nSide * layout.nZoom / int(g_dfLabelRoom);
        for (int n = -nMost; n <= nMost; ++n) {
            std::array<int, 3> an = anStart;
            for (size_t i = 0; i < 3; ++i) {
                an[i] += n * nStep * anVector[i];
            }
            const std::optional<QPointF> pt = placeOf(an);
            const QString strText = QStringLiteral("%1 %2 %3").arg(an[0]).arg(an[1]).arg(an[2]);
            const QPointF ptMark = layout.toPicture(pt.value_or(QPointF()));
            const bool bRoom = ptMark.x() + 11 + strokeTextWidth(strText, g_dfText) < layout.rcField.right();
            const bool bOrigin = an == std::array<int, 3>{0, 0, 0};  // which is visible as the direct beam
            if (!pt || !bRoom || bOrigin || (n == 0 && anVector == section.frame.anSecond)) {
                continue;
            }
            setPen(painter, colors.label, 1);
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(ptMark, 6, 6);
            drawLabel(painter, ptMark + QPointF(9, -7), strText, colors.label, colors.halo);
        }
    }
}

}  // namespace

void drawSectionMarks(const ReciprocalSection& section, const SectionLook& look, const SectionLayout& layout,
                      QPainter& painter)
{
    const Colors colors = colorsOf(look);
    painter.save();
    painter.setClipRect(layout.rcField);
    if (look.bRings) {
        drawRings(section, layout, colors, painter);
    }
    if (look.bLattice) {
        drawLattice(section, layout, colors, painter);
    }
    if (look.bIndices) {
        drawIndices(section, layout, colors, painter);
    }
    painter.restore();
    drawAxis(section, layout, colors, section.frame.anFirst, painter);
    drawAxis(section, layout, colors, section.frame.anSecond, painter);
}

}  // namespace tessera
