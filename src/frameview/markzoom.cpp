#include "frameview/markzoom.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfWideLines = 4.0;  // zoom from which a line of one pixel is lost beside large spots
const double g_dfFadePerDoubling = 1.0 / 12;
const double g_dfLeastOpacity = 0.7;

}  // namespace

CMarkZoom::CMarkZoom(const QPainter& painter)
    : CMarkZoom(std::sqrt(std::abs(painter.worldTransform().determinant())))
{}

CMarkZoom::CMarkZoom(double dfZoom) : m_dfZoom(dfZoom > 0 && std::isfinite(dfZoom) ? dfZoom : 1.0) {}

double CMarkZoom::penWidth() const
{
    return (m_dfZoom >= g_dfWideLines ? 1.5 : 1.0) / m_dfZoom;
}

double CMarkZoom::gap(double dfReach) const
{
    return m_dfZoom > 1.0 ? dfReach * (1.0 - 1.0 / m_dfZoom) : 0.0;
}

double CMarkZoom::opacity() const
{
    return std::clamp(1.0 - g_dfFadePerDoubling * std::log2(m_dfZoom), g_dfLeastOpacity, 1.0);
}

}  // namespace tessera
