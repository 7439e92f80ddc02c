// What the parts of the 3D view's drawing share.
#pragma once

#include "records/vec3d.h"

#include <qopengl.h>
#include <QColor>

#include <algorithm>
#include <vector>

namespace tessera {

/// The colour of what is drawn next, with an opacity of its own.
inline void setGlColor(const QColor& color, float fAlpha)
{
    glColor4f(float(color.redF()), float(color.greenF()), float(color.blueF()), fAlpha);
}

/// Draws the arrays that are set, a thousand at a time: smooth points of one call cost Mesa's software
/// renderer more, the more they are.
inline void drawInBatches(GLenum eMode, size_t nCount)
{
    const size_t nBatch = 1024;
    for (size_t nFirst = 0; nFirst < nCount; nFirst += nBatch) {
        glDrawArrays(eMode, GLint(nFirst), GLsizei(std::min(nBatch, nCount - nFirst)));
    }
}

/// A list of coordinates in the colour that is set.
inline void drawArray(GLenum eMode, const std::vector<Vec3D>& vecPoint)
{
    static_assert(sizeof(Vec3D) == 3 * sizeof(float), "three floats in a row");
    if (vecPoint.empty()) {
        return;
    }
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, vecPoint.data());
    drawInBatches(eMode, vecPoint.size());
    glDisableClientState(GL_VERTEX_ARRAY);
}

}  // namespace tessera
