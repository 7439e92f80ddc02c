// ReciprocalSection: the image of a plane of reciprocal space, computed from the pixels of all frames.
#pragma once

#include "dataset/dataset.h"
#include "integration/sectionplane.h"
#include "integration/seriesgeometry.h"
#include "records/runreport.h"
#include "records/runresult.h"

#include <QPointF>
#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// How sections are computed. A value of 0 is chosen from the data.
struct SectionOptions {
    double dfMaxDStar = 0;   ///< Å⁻¹; 0: slightly beyond the indexed peaks, else the whole frame
    double dfThickness = 0;  ///< thickness of the slab, Å⁻¹; 0: width of the spots, at most half a layer
    bool bWithoutRings = false;  ///< subtract from each pixel the median of its ring about the direct beam
    QString strLaueClass;        ///< average equivalent planes of this Laue class; empty: this plane alone
};

/// A section. Pixel (column, row), counted from 0 at the upper left, is at ((column - centre)·step,
/// (centre - row)·step) along the first and the second axis, with centre = (nSide - 1)/2.
struct ReciprocalSection {
    SectionPlane plane;
    SectionFrame frame;
    SectionBasis basis;      ///< reciprocal basis of the indices
    int nSide = 0;           ///< pixels, odd
    double dfStep = 0;       ///< size of a pixel, Å⁻¹; the same as on the frames
    double dfMaxDStar = 0;   ///< radius of the section, Å⁻¹
    double dfThickness = 0;  ///< Å⁻¹
    bool bWithoutRings = false;
    QString strLaueClass;
    int nFrames = 0;               ///< frames that could be read
    std::vector<float> listValue;  ///< row by row, mean counts of a pixel; NaN where no frame contributes

    int centre() const { return (nSide - 1) / 2; }  ///< column and row of the origin of the plane
};

/// Computes sections; all frames are read once.
///
/// A pixel of a frame represents the arc of reciprocal space that it sweeps while the crystal rotates half
/// way to the neighbouring frames. The part of the arc within the slab is added to the section at its place
/// in the plane, and a pixel of the section is the mean of what was added, weighted by the lengths of the
/// parts. There are therefore no gaps between frames whose tilts follow one another, and a reflection appears
/// at its place even if it was recorded half a step off the middle of its frame. Gaps of the series remain
/// gaps. Masked pixels, hot pixels and pixels without a number are left out. The result is the same for every
/// number of jobs.
/// @param series  geometry of the series; its basis is the cell of the indices
RunResult<std::vector<ReciprocalSection>> makeSections(const DataSet& dataSet, const SeriesGeometry& series,
                                                       const std::vector<SectionPlane>& listPlane,
                                                       const SectionOptions& options, int nJobs,
                                                       CRunReport& report);

/// Indices and value at a place of a section.
struct SectionReading {
    DoubleVector indices = {};    ///< h, k, l
    double dfDStar = 0;           ///< Å⁻¹
    std::optional<float> fValue;  ///< none outside the section or where no frame contributes
};
/// Reads a section at a place.
/// @param ptPixel  column and row; whole numbers are centres of pixels
SectionReading readSection(const ReciprocalSection& section, const QPointF& ptPixel);

/// The place of a lattice point in its section, column and row; none if it is outside.
std::optional<QPointF> placeOnSection(const ReciprocalSection& section, const DoubleVector& indices);

/// The place of a point of the laboratory frame at tilt 0 (Å⁻¹), projected onto the plane; none if it is
/// outside.
std::optional<QPointF> placeOfPoint(const ReciprocalSection& section, const DoubleVector& point);

/// The index in the list of the reflection nearest to a place of a section. It must be within half the
/// shortest lattice vector of the section and, across it, half the distance of the layers.
/// @return -1 if there is none
int nearestReflection(const ReciprocalSection& section, const QList<Peak3D>& listReflection,
                      const QPointF& ptPixel);

/// The lattice points of a section, up to its d*.
/// @return empty if there are more than nMost
std::vector<std::array<int, 3>> latticeOfSection(const ReciprocalSection& section, int nMost);

/// The fraction of the section's disc up to d* to which frames contribute, 0 to 1.
double seenShare(const ReciprocalSection& section);

/// A description of the section for the user: size, thickness, measured fraction.
QString describeSection(const ReciprocalSection& section);

}  // namespace tessera
