// Section picture: a section of reciprocal space drawn with axes, indices, rings and a scale.
#pragma once

#include "integration/reciprocalsection.h"

#include <QImage>
#include <QPointF>
#include <QRect>

#include <utility>

namespace tessera {

/// How a section is drawn.
struct SectionLook {
    bool bLogarithmic = false;
    bool bDark = false;      ///< bright spots on dark ground; else dark ones on white, as a film has them
    bool bIndices = true;    ///< of some lattice points along the axes
    bool bLattice = false;   ///< a mark round each lattice point
    bool bRings = true;      ///< of resolution, labelled with d
    double dfDarkest = 1;    ///< per cent of the pixels that are below the limits of contrast
    double dfBrightest = 1;  ///< and above
    int nZoom = 0;           ///< picture pixels per pixel of the section; 0: until it fills a page
};

/// Counts at the two ends of the scale of greys: percentiles of what was seen away from the direct beam.
std::pair<float, float> sectionContrast(const ReciprocalSection& section, const SectionLook& look);

/// Where the section itself lies in its picture.
struct SectionLayout {
    int nZoom = 1;
    QSize sizePicture;
    QRect rcField;

    /// Columns and rows of the section, whole numbers are centres of pixels.
    QPointF toSection(const QPointF& ptPicture) const;
    QPointF toPicture(const QPointF& ptSection) const;
};
SectionLayout sectionLayout(const ReciprocalSection& section, const SectionLook& look);

/// The picture, the same with and without a display. What no frame has seen is hatched.
/// @return a null image of a section without pixels, or where memory is short
QImage drawSection(const ReciprocalSection& section, const SectionLook& look);

}  // namespace tessera
