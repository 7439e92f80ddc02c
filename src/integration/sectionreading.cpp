#include "integration/reciprocalsection.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

DoubleVector indicesOf(const SectionBasis& basis, const DoubleVector& point)
{
    const double dfVolume = dot(basis[0], cross(basis[1], basis[2]));
    return {dot(point, cross(basis[1], basis[2])) / dfVolume,
            dot(point, cross(basis[2], basis[0])) / dfVolume,
            dot(point, cross(basis[0], basis[1])) / dfVolume};
}

DoubleVector pointOf(const SectionBasis& basis, const DoubleVector& indices)
{
    DoubleVector point;
    for (size_t n = 0; n < 3; ++n) {
        point[n] = indices[0] * basis[0][n] + indices[1] * basis[1][n] + indices[2] * basis[2][n];
    }
    return point;
}

/// A lattice point in the layer; one exists, as u, v, w have no common factor.
std::array<int, 3> startOfLayer(const SectionPlane& plane)
{
    const auto& [u, v, w] = plane.anZone;
    const int nMost = std::max({std::abs(u), std::abs(v), std::abs(w), 1});
    for (int h = -nMost; h <= nMost; ++h) {
        for (int k = -nMost; k <= nMost; ++k) {
            for (int l = -nMost; l <= nMost; ++l) {
                if (u * h + v * k + w * l == 1) {
                    return {plane.nLayer * h, plane.nLayer * k, plane.nLayer * l};
                }
            }
        }
    }
    return {0, 0, 0};
}

}  // namespace

SectionReading readSection(const ReciprocalSection& section, const QPointF& ptPixel)
{
    const double dfRight = (ptPixel.x() - section.centre()) * section.dfStep;
    const double dfUp = (section.centre() - ptPixel.y()) * section.dfStep;
    const DoubleVector point = pointOnSection(section.frame, dfRight, dfUp);
    SectionReading reading;
    reading.indices = indicesOf(section.basis, point);
    reading.dfDStar = std::sqrt(dot(point, point));
    const double dfColumn = std::floor(ptPixel.x() + 0.5), dfRow = std::floor(ptPixel.y() + 0.5);
    if (dfColumn >= 0 && dfRow >= 0 && dfColumn < section.nSide && dfRow < section.nSide) {
        const float f = section.listValue[size_t(dfRow) * size_t(section.nSide) + size_t(dfColumn)];
        if (std::isfinite(f)) {
            reading.fValue = f;
        }
    }
    return reading;
}

std::optional<QPointF> placeOnSection(const ReciprocalSection& section, const DoubleVector& indices)
{
    return placeOfPoint(section, pointOf(section.basis, indices));
}

std::optional<QPointF> placeOfPoint(const ReciprocalSection& section, const DoubleVector& point)
{
    const QPointF pt(section.centre() + dot(section.frame.vecRight, point) / section.dfStep,
                     section.centre() - dot(section.frame.vecUp, point) / section.dfStep);
    const auto within = [&](double df) { return df >= -0.5 && df <= section.nSide - 0.5; };
    return within(pt.x()) && within(pt.y()) ? std::optional<QPointF>(pt) : std::nullopt;
}

int nearestReflection(const ReciprocalSection& section, const QList<Peak3D>& listReflection,
                      const QPointF& ptPixel)
{
    const SectionFrame& frame = section.frame;
    double dfNearest = HUGE_VAL;
    for (const std::array<int, 3>& an : {frame.anFirst, frame.anSecond}) {
        const DoubleVector point = pointOf(section.basis, {double(an[0]), double(an[1]), double(an[2])});
        dfNearest = std::min(dfNearest, std::sqrt(dot(point, point)) / section.dfStep / 2);
    }
    int nNearest = -1;
    for (int n = 0; n < listReflection.size(); ++n) {
        const DoubleVector point = widened(listReflection[n].point());
        const std::optional<QPointF> pt = placeOfPoint(section, point);
        if (!pt || !(std::fabs(dot(point, frame.vecNormal) - frame.dfHeight) < frame.dfSpacing / 2)) {
            continue;
        }
        const double dfDistance = std::hypot(pt->x() - ptPixel.x(), pt->y() - ptPixel.y());
        if (dfDistance < dfNearest) {
            dfNearest = dfDistance;
            nNearest = n;
        }
    }
    return nNearest;
}

std::vector<std::array<int, 3>> latticeOfSection(const ReciprocalSection& section, int nMost)
{
    const SectionFrame& frame = section.frame;
    const auto vectorOf = [&](const std::array<int, 3>& an) {
        return pointOf(section.basis, {double(an[0]), double(an[1]), double(an[2])});
    };
    const DoubleVector first = vectorOf(frame.anFirst), second = vectorOf(frame.anSecond);
    const std::array<int, 3> anStart = startOfLayer(section.plane);
    const DoubleVector start = vectorOf(anStart);
    const double dfFirst = dot(first, frame.vecRight), dfShear = dot(second, frame.vecRight);
    const double dfUp = dot(second, frame.vecUp);
    const double dfRadius = std::sqrt(
        std::max(0.0, section.dfMaxDStar * section.dfMaxDStar - frame.dfHeight * frame.dfHeight));
    std::vector<std::array<int, 3>> listIndex;
    // Rows along the first axis, each within the circle.
    const double dfStartUp = dot(start, frame.vecUp), dfStartRight = dot(start, frame.vecRight);
    const int nLow = int(std::ceil((-dfRadius - dfStartUp) / dfUp));
    const int nHigh = int(std::floor((dfRadius - dfStartUp) / dfUp));
    for (int j = nLow; j <= nHigh; ++j) {
        const double dfRowUp = dfStartUp + j * dfUp, dfRowRight = dfStartRight + j * dfShear;
        const double dfHalf = std::sqrt(std::max(0.0, dfRadius * dfRadius - dfRowUp * dfRowUp));
        const int nLast = int(std::floor((dfHalf - dfRowRight) / dfFirst));
        for (int i = int(std::ceil((-dfHalf - dfRowRight) / dfFirst)); i <= nLast; ++i) {
            if (int(listIndex.size()) >= nMost) {
                return {};
            }
            listIndex.push_back({});
            for (size_t n = 0; n < 3; ++n) {
                listIndex.back()[n] = anStart[n] + i * frame.anFirst[n] + j * frame.anSecond[n];
            }
        }
    }
    return listIndex;
}

double seenShare(const ReciprocalSection& section)
{
    const double dfRadius = std::sqrt(std::max(
        0.0, section.dfMaxDStar * section.dfMaxDStar - section.frame.dfHeight * section.frame.dfHeight));
    qint64 nInside = 0, nSeen = 0;
    for (int nRow = 0; nRow < section.nSide; ++nRow) {
        for (int nColumn = 0; nColumn < section.nSide; ++nColumn) {
            if (std::hypot(nColumn - section.centre(), nRow - section.centre()) * section.dfStep <=
                dfRadius) {
                ++nInside;
                nSeen += std::isfinite(
                    section.listValue[size_t(nRow) * size_t(section.nSide) + size_t(nColumn)]);
            }
        }
    }
    return nInside > 0 ? double(nSeen) / double(nInside) : 0;
}

QString describeSection(const ReciprocalSection& section)
{
    QString strText = QStringLiteral("Section %1: %2 × %2 pixels of %3 Å⁻¹ to d* = %4 Å⁻¹, %5 Å⁻¹ thick, ")
                          .arg(section.plane.strName)
                          .arg(section.nSide)
                          .arg(section.dfStep, 0, 'f', 5)
                          .arg(section.dfMaxDStar, 0, 'f', 3)
                          .arg(section.dfThickness, 0, 'f', 4);
    if (!section.strLaueClass.isEmpty()) {
        strText += QStringLiteral("averaged by %1, ").arg(section.strLaueClass);
    }
    return strText + QStringLiteral("%1 % seen.").arg(100 * seenShare(section), 0, 'f', 1);
}

}  // namespace tessera
