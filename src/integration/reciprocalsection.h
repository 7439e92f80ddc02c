// ReciprocalSection: a plane of reciprocal space as a picture, from the pixels of all frames.
#pragma once

#include "dataset/dataset.h"
#include "integration/sectionplane.h"
#include "integration/seriesgeometry.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QPointF>
#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// What sections are made with; what is 0 comes from the data.
struct SectionOptions {
    double dfMaxDStar = 0;  ///< Å⁻¹; 0: a little further than the indexed peaks, else as far as the frame
    double dfThickness = 0;  ///< Å⁻¹, of the slab; 0: the width of the spots, at most half a layer
    bool bWithoutRings =
        false;             ///< from each pixel the median of its ring about the direct beam is taken off
    QString strLaueClass;  ///< equivalent planes are averaged; empty: this plane alone
};

/// One section. Its pixel (column, row), from 0 at the upper left, is at ((column - centre)·step,
/// (centre - row)·step) along the first and the second axis, with centre = (nSide - 1)/2.
struct ReciprocalSection {
    SectionPlane plane;
    SectionFrame frame;
    SectionBasis basis;      ///< that the indices are of
    int nSide = 0;           ///< pixels, odd
    double dfStep = 0;       ///< Å⁻¹, of a pixel: that of a pixel of the frames
    double dfMaxDStar = 0;   ///< Å⁻¹, that it reaches to
    double dfThickness = 0;  ///< Å⁻¹
    bool bWithoutRings = false;
    QString strLaueClass;
    int nFrames = 0;               ///< that could be read
    std::vector<float> listValue;  ///< row by row, mean counts of a pixel; NaN where no frame has been

    int centre() const { return (nSide - 1) / 2; }
};

/// Makes sections from one reading of the frames.
///
/// A pixel of a frame stands for the arc of reciprocal space that it passes while the crystal turns to half
/// way to the neighbouring frames. The part of the arc that lies within the slab is laid into the section by
/// its place in the plane, and a pixel of the section is the mean of what was laid into it, weighted by the
/// share of the arc. So there are no gaps between frames where there are none between their tilts, and a
/// reflection comes to its place even where the middle of its frame is half a step beside it. Frames that
/// leave gaps of the series leave gaps here. Left out: what the mask has, hot pixels, pixels without a
/// number.
/// @param series       that the indices count in; its basis is the cell
/// @param listSection  replaced when the run finished, else as it was
/// @return the same sections for any number of jobs
RunOutcome makeSections(const DataSet& dataSet, const SeriesGeometry& series,
                        const std::vector<SectionPlane>& listPlane, const SectionOptions& options, int nJobs,
                        CRunReport& report, std::vector<ReciprocalSection>& listSection);

/// A place of a section.
struct SectionReading {
    DoubleVector indices = {};    ///< h, k, l
    double dfDStar = 0;           ///< Å⁻¹
    std::optional<float> fValue;  ///< none where no frame has been, or beside the section
};
/// @param ptPixel  columns and rows, whole numbers are centres of pixels
SectionReading readSection(const ReciprocalSection& section, const QPointF& ptPixel);

/// Where a point of the lattice lies in its section, columns and rows; none beside the section.
std::optional<QPointF> placeOnSection(const ReciprocalSection& section, const DoubleVector& indices);

/// The same of a point in the laboratory frame at tilt 0, Å⁻¹, moved onto the plane along its normal.
std::optional<QPointF> placeOfPoint(const ReciprocalSection& section, const DoubleVector& point);

/// The place in the list of the reflection that is nearest to a place of a section: within half of the
/// shortest vector of its lattice and, across, half the distance of the layers.
/// @return -1 if there is none
int nearestReflection(const ReciprocalSection& section, const QList<Peak3D>& listReflection,
                      const QPointF& ptPixel);

/// The lattice points of a section with whole indices, up to its d*.
/// @return empty where there are more than nMost
std::vector<std::array<int, 3>> latticeOfSection(const ReciprocalSection& section, int nMost);

/// The share of the section's disc up to d* that some frame has seen, 0 to 1.
double seenShare(const ReciprocalSection& section);

/// The section in words: size, slab, share that was seen.
QString describeSection(const ReciprocalSection& section);

}  // namespace tessera
