// The visible points of a cloud as an array for drawing and picking.
#pragma once

#include "app/records/peak3d.h"
#include "view3d/cloud/camera.h"
#include "view3d/cloud/pointgroups.h"

#include <vector>

/// A point as it goes to OpenGL.
struct CloudVertex {
    float x, y, z;     ///< Å⁻¹
    float r, g, b, a;  ///< 0 to 1
    float fSize;       ///< pixels before zoom
};

/// The visible points in their order; a vertex's place is its pick name.
struct CloudVertices {
    std::vector<CloudVertex> vecVertex;
    std::vector<int> m_pnPickName;  ///< pick name to point index
};

/// Points at a place that is no number are left out, as no driver has to know what to do with them.
///
/// @param fScale  factor on the coordinates
CloudVertices makeCloudVertices(const QList<Peak3D>& listPoint, const std::vector<float>& vecSize,
                                const PointDisplay& display, float fAlpha, float fScale);

/// A rectangle of the viewport, both in device pixels with y upwards, as of gluPickMatrix.
struct PickRegion {
    int aViewport[4] = {0, 0, 1, 1};  ///< left, bottom, width, height
    double dfX = 0;                   ///< centre
    double dfY = 0;
    double dfWidth = 0;
    double dfHeight = 0;
};

/// The square of the greater side about the middle of a widget, or with bKeepAspect false all of it.
/// Device pixels: left, bottom, width, height.
void squareViewport(int nWidth, int nHeight, bool bKeepAspect, int* pViewport);

/// The region of a rubber band between two corners, device pixels from the widget's upper left corner.
PickRegion bandRegion(int nStartX, int nStartY, int nEndX, int nEndY, const int* pViewport);

/// Projection that blows the region up to the whole viewport: gluPickMatrix times the projection.
Matrix4 pickProjection(const PickRegion& region, const Matrix4& projection);

/// The point indices, in drawing order, that a selection render would hit: those within the view volume and
/// the region, edges included. Plain arithmetic in the matrices' single precision, which asks no driver.
QList<int> pickPoints(const CloudVertices& vertices, const CCamera& camera, const PickRegion& region);
