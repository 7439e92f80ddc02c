// Section marks: axes, rings, lattice points and indices on the picture of a section.
#pragma once

#include "exchange/sectionpicture.h"

class QPainter;

namespace tessera {

/// Draws the wanted marks onto the field of the picture, and the names of the axes beside it.
void drawSectionMarks(const ReciprocalSection& section, const SectionLook& look, const SectionLayout& layout,
                      QPainter& painter);

}  // namespace tessera
