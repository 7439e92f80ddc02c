// Picking: which points of a cloud a rubber band holds.
#pragma once

#include "cloud/camera.h"
#include "cloud/cloudvertices.h"

#include <QList>

namespace tessera {

/// A rectangle of the viewport, both in device pixels with y upwards, as of gluPickMatrix.
struct PickRegion {
    int aViewport[4] = {0, 0, 1, 1};  ///< left, bottom, width, height
    double dfX = 0;                   ///< centre
    double dfY = 0;                   ///< centre, upwards
    double dfWidth = 0;               ///< whole width
    double dfHeight = 0;              ///< whole height
};

/// The region of a rubber band between two corners, device pixels from the widget's upper left corner.
PickRegion bandRegion(int nStartX, int nStartY, int nEndX, int nEndY, const int* pViewport);

/// The point indices, in drawing order, that a selection render would hit: those within the view volume and
/// the region, edges included. Plain arithmetic in the matrices' single precision, which asks no driver.
QList<int> pickPoints(const CloudVertices& vertices, const CCamera& camera, const PickRegion& region);

}  // namespace tessera
