// Section picture: draws a section of reciprocal space with axes, indices, rings and a scale.
#pragma once

#include "integration/reciprocalsection.h"

#include <QImage>
#include <QPointF>
#include <QRect>

#include <utility>

namespace tessera {

/// How a section is drawn.
struct SectionLook {
    bool bLogarithmic = false;  ///< grey values are logarithmic
    bool bDark = false;         ///< bright spots on a dark background; else dark ones on white, as on film
    bool bIndices = true;       ///< indices of some lattice points along the axes
    bool bLattice = false;      ///< a mark around each lattice point
    bool bRings = true;         ///< rings of resolution, labelled with d
    double dfDarkest = 1;       ///< per cent of the pixels below the limits of contrast
    double dfBrightest = 1;     ///< per cent of the pixels above them
    int nZoom = 0;              ///< pixels of the picture per pixel of the section; 0: until it fills a page
};

/// The counts at both ends of the grey scale: percentiles of the pixels that were measured away from the
/// direct beam.
std::pair<float, float> sectionContrast(const ReciprocalSection& section, const SectionLook& look);

/// The place of the section in its picture.
struct SectionLayout {
    int nZoom = 1;      ///< pixels of the picture per pixel of the section
    QSize sizePicture;  ///< of the whole picture
    QRect rcField;      ///< of the section in the picture

    /// Column and row of the section at a place of the picture; whole numbers are centres of pixels.
    QPointF toSection(const QPointF& ptPicture) const;
    /// The inverse.
    QPointF toPicture(const QPointF& ptSection) const;
};
/// The layout of the picture of a section.
SectionLayout sectionLayout(const ReciprocalSection& section, const SectionLook& look);

/// Draws the picture, which is the same with and without a display. Areas that no frame has covered are
/// hatched.
/// @return a null image for a section without pixels, or where memory is short
QImage drawSection(const ReciprocalSection& section, const SectionLook& look);

}  // namespace tessera
