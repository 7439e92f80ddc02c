// Stroke font: letters made of lines, for pictures that are the same with and without a display.
#pragma once

#include <QPointF>
#include <QString>

class QPainter;

namespace tessera {

/// The width of a text in the unit of its height. The fonts of a desktop differ from one to another and are
/// missing without a desktop, so letters are drawn as lines.
/// @param dfHeight  of a capital letter or a digit
double strokeTextWidth(const QString& strText, double dfHeight);

/// Draws a text with the pen of a painter, which should have round ends.
///
/// The font has digits, small letters, Å, the superscripts of ⁻¹, and signs of formulas. Any other
/// character is an empty box.
/// @param pt  left end of the base line
void drawStrokeText(QPainter& painter, const QPointF& pt, const QString& strText, double dfHeight);

}  // namespace tessera
