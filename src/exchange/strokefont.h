// Stroke font: letters for pictures that come out alike with and without a display.
#pragma once

#include <QPointF>
#include <QString>

class QPainter;

namespace tessera {

/// The width of a text, in the unit of its height. The fonts of a desktop are not at hand where there is no
/// desktop, and differ from one to the next; these letters are lines.
/// @param dfHeight  of a capital letter or a digit
double strokeTextWidth(const QString& strText, double dfHeight);

/// Draws a text with the painter's pen, whose ends should be round.
///
/// There are digits, small letters, Å, superscripts of ⁻¹, and signs of formulas; a character that is not
/// there is an empty box.
/// @param pt  the left end of the line that the letters stand on
void drawStrokeText(QPainter& painter, const QPointF& pt, const QString& strText, double dfHeight);

}  // namespace tessera
