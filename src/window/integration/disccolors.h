// Disc colours: the colour of a predicted reflection on the frame, by what is wrong with it.
#pragma once

#include "integration/observation.h"

#include <QColor>
#include <QString>

#include <vector>

namespace tessera {

/// Flags that share a colour, with the words of the legend.
struct DiscClass {
    unsigned nFlags = 0;  ///< any of them; 0: none is set
    QColor color;
    QString strName;
};

/// The gravest first: an observation belongs to the first class of which it has a flag, and to the last one,
/// the measured ones, where it has none. All flags are in one of them.
const std::vector<DiscClass>& discClasses();

/// The colour of an observation with these flags.
QColor discColor(unsigned nFlags);

/// Colours and words, as rich text.
QString discLegend();

}  // namespace tessera
