// Colours of texts that can be read on light desktops and on dark ones.
#pragma once

#include <QColor>

class QPalette;

namespace tessera {

/// Whether the ground is darker than the texts on it.
bool isDark(const QPalette& palette);

/// A colour for text on the ground of a window: as it is on a light one, and a pale one of the same hue on a
/// dark one.
QColor readableOn(const QPalette& palette, const QColor& color);

}  // namespace tessera
