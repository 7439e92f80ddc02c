// Integration of a series: the intensities of predicted reflections from the frames.
#pragma once

#include "dataset/dataset.h"
#include "frames/trustedrange.h"
#include "integration/observation.h"
#include "integration/prediction.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

#include <vector>

namespace tessera {

/// What was learned from the frames and the strong reflections.
struct SpotModel {
    double dfSigma = 0;         ///< pixels, of the spots
    double dfSigmaAtEdge = 0;   ///< pixels, at the greatest d*
    double dfDiscRadius = 0;    ///< pixels, of the disc that is summed
    double dfRockingWidth = 0;  ///< Å⁻¹, sigma
    double dfMosaicity = 0;     ///< degrees, sigma
    double dfRockingOff = 0;  ///< Å⁻¹, by which reflections lie off the sphere where they should cross it
    double dfGain = 1;        ///< counts per electron
    double dfReadNoise = 0;   ///< counts, per pixel and frame
    double dfSaturation = 0;  ///< counts, from which on a pixel is saturated; 0: none is
    TrustedRange trusted;     ///< what the frames' header told of it
    int nStrong = 0;          ///< reflections that it was learned from
};

struct IntegrationOptions {
    double dfMaxDStar = 0;      ///< Å⁻¹; 0: as far as reflections are seen
    bool bProfileFit = true;    ///< weak reflections by a fit of the profile
    double dfDiscRadius = 0;    ///< pixels; 0: learned
    double dfRockingWidth = 0;  ///< Å⁻¹; 0: learned
    char chCentring = 'P';      ///< of the cell in force
    /// Of the detector. A pixel is full from there on, or from the plateau on that the counts themselves show
    /// where that lies lower.
    TrustedRange trusted;
};

struct IntegratedSeries {
    std::vector<Observation> listObservation;  ///< all that were predicted, in the order of the prediction
    SpotModel model;
    double dfMaxDStar = 0;  ///< Å⁻¹, that it was done to
};

/// Predicts and integrates. Frames are read in order, twice at most (once to learn, once to integrate), in
/// memory that does not grow with their number; the same result for any number of jobs.
/// @param dataSet  frames, hot pixels and mask
/// @param result   replaced when the run finished, else as it was
RunOutcome integrateSeries(const DataSet& dataSet, const SeriesGeometry& series,
                           const IntegrationOptions& options, int nJobs, CRunReport& report,
                           IntegratedSeries& result);

/// One observation looked at closely: for its picture.
struct ObservationProfile {
    int nFirstFrame = 0;
    int nSide = 0;                               ///< pixels, of the windows, odd
    std::vector<std::vector<float>> listWindow;  ///< one per frame, row by row, counts
    std::vector<double> listRocking;             ///< counts above the background, one per frame
    std::vector<double> listModel;               ///< what the learned rocking curve makes of the whole
    std::vector<double> listExcitation;          ///< Å⁻¹, at the middle of each frame
    std::vector<char> listInDisc;                ///< 1 for the pixels of the disc, row by row
};
/// @return false with a reason where a frame cannot be read
bool lookAtObservation(const DataSet& dataSet, const SeriesGeometry& series, const SpotModel& model,
                       const Observation& observation, CRunReport& report, ObservationProfile& profile);

}  // namespace tessera
