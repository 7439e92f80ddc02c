#include "window/pages/palettecolors.h"

#include <QPalette>

#include <algorithm>

namespace tessera {

namespace {

// Pure blue needs as much to have four and a half times the luminance of a dark grey ground, which the Web
// Content Accessibility Guidelines 2.1 ask of texts; other hues have it sooner.
const double g_dfPaleLightness = 0.8;

}  // namespace

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

QColor readableOn(const QPalette& palette, const QColor& color)
{
    return isDark(palette) ? QColor::fromHslF(std::max(0.0, color.hslHueF()), color.hslSaturationF(),
                                              std::max(g_dfPaleLightness, color.lightnessF()))
                           : color;
}

}  // namespace tessera
