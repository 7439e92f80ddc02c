// CReciprocalVolume: all pixels of a series in a grid of voxels of reciprocal space.
#pragma once

#include "geometry/matrix3.h"
#include "geometry/seriesdistortion.h"
#include "imaging/imgobj.h"

#include <QList>
#include <QPointF>
#include <QString>

#include <functional>

namespace tessera {

/// A voxel holds the greatest pixel value that any frame put into it, 0 where none came.
///
/// The grid's centre is the origin of reciprocal space: voxel index = coordinate/m_dfPixelSize + half the
/// edge, in the laboratory frame (x rotation axis, z beam). Voxel (ix, iy, iz) is element iy × NX + ix of
/// slice iz.
class CReciprocalVolume {
public:
    /// Without voxels; create() makes them.
    CReciprocalVolume() = default;
    ~CReciprocalVolume();
    CReciprocalVolume(const CReciprocalVolume&) = delete;
    CReciprocalVolume& operator=(const CReciprocalVolume&) = delete;

    /// Frees the old slices and makes nZ slices of nX × nY zeros.
    /// @return false, with no slices left, when the machine has not the memory (see hasMemoryFor()) or for a
    ///         side below 1 or above 2^24
    bool create(int nX, int nY, int nZ);

    void setWavelength(double dfWavelength) { m_dfWavelength = dfWavelength; }  ///< Å
    void setPixelSize(double dfPixelSize) { m_dfPixelSize = dfPixelSize; }  ///< Å⁻¹, of pixel and voxel
    void setRotationAxis(double dfDegrees);  ///< counter-clockwise on the screen from 3 o'clock
    /// What the lens and the axis do; each frame gets it.
    void setDistortion(const SeriesDistortion& distortion) { m_distortion = distortion; }

    /// Maps each pixel of a frame to reciprocal space, as the peaks are mapped but without stretching and
    /// tilt relaxation, and puts it into the voxel that it falls into. Pixels outside the grid are dropped.
    /// The coordinates are rounded as in mapping one pixel after the other with rotated() and ewaldPoint().
    /// Where the lens or the axis does something the mapping of a pixel takes some ten times as long.
    ///
    /// @param ptCenter  direct beam on the frame, raw pixels
    /// @param dfTilt    degrees
    /// @return false without an image
    bool addFrame(const CImgObj<float>* pImage, const QPointF& ptCenter, double dfTilt);

    /// Asked before each slice whether to go on with a file; false gives it up.
    using FnGoOn = std::function<bool()>;

    /// Writes the slices as the sections of an MRC file of floats, whole or not at all.
    /// @return false for an empty grid, when the file can't be written, or when fnGoOn said no
    bool saveRaw(const QString& strFileName, const FnGoOn& fnGoOn = {}, QString* pstrReason = nullptr) const;
    /// Same with the values from dfLow to dfHigh scaled to 0 to 255 and cut off, as 16-bit numbers.
    bool saveScaled(const QString& strFileName, double dfLow, double dfHigh, const FnGoOn& fnGoOn = {},
                    QString* pstrReason = nullptr) const;

    double m_dfWavelength = 0.0251;
    double m_dfPixelSize = 1.0;
    double m_dfRotationAxis = 0;
    CMatrix3 m_matRotationAxis = CMatrix3::identity();  ///< of m_dfRotationAxis
    QList<CImgObj<float>*> m_listSlice;                 ///< owned, all of one size

private:
    void release();
    void addDistortedFrame(const CImgObj<float>& image, const QPointF& ptCenter, double dfTilt);

    SeriesDistortion m_distortion;
};

}  // namespace tessera
