// Integration of a series: measures the intensities of predicted reflections on the frames.
#pragma once

#include "dataset/dataset.h"
#include "frames/trustedrange.h"
#include "integration/observation.h"
#include "integration/prediction.h"
#include "records/runreport.h"
#include "records/runresult.h"

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// Properties of spots and detector that were learned from the frames and the strong reflections.
struct SpotModel {
    double dfSigma = 0;         ///< sigma of the spots, pixels
    double dfSigmaAtEdge = 0;   ///< sigma of the spots at the greatest d*, pixels
    double dfDiscRadius = 0;    ///< radius of the disc that is summed, pixels
    double dfRockingWidth = 0;  ///< sigma of the rocking curve, Å⁻¹
    double dfMosaicity = 0;     ///< sigma, degrees
    double dfRockingOff = 0;    ///< mean excitation error at the maximum of the rocking curves, Å⁻¹
    double dfGain = 1;          ///< counts per electron
    double dfReadNoise = 0;     ///< counts, per pixel and frame
    double dfSaturation = 0;    ///< counts from which a pixel is saturated; 0: no pixel is
    TrustedRange trusted;       ///< range according to the headers of the frames
    int nStrong = 0;            ///< strong reflections from which the model was learned
};

/// How a series is integrated.
struct IntegrationOptions {
    double dfMaxDStar = 0;      ///< Å⁻¹; 0: as far as reflections are observed
    bool bProfileFit = true;    ///< use profile fitting for weak reflections
    double dfDiscRadius = 0;    ///< pixels; 0: learned
    double dfRockingWidth = 0;  ///< Å⁻¹; 0: learned
    char chCentring = 'P';      ///< centring of the cell in force
    /// Range of the detector. Pixels are saturated from its end on, or from a lower plateau that the counts
    /// themselves show.
    TrustedRange trusted;
};

/// The observations of a series.
struct IntegratedSeries {
    std::vector<Observation> listObservation;  ///< all predicted passages, in the order of the prediction
    SpotModel model;
    double dfMaxDStar = 0;  ///< resolution limit of the observations, Å⁻¹
};

/// Predicts and integrates the reflections of a series. The frames are read in order, at most twice (once to
/// learn the model, once to integrate), in memory that does not depend on their number. The result is the
/// same for every number of jobs.
/// @param dataSet  supplies frames, hot pixels and mask
RunResult<IntegratedSeries> integrateSeries(const DataSet& dataSet, const SeriesGeometry& series,
                                            const IntegrationOptions& options, int nJobs, CRunReport& report);

/// The pixels of one observation, to be displayed.
struct ObservationProfile {
    int nFirstFrame = 0;                         ///< number of the first frame, from 0
    int nSide = 0;                               ///< side of the windows, pixels, odd
    std::vector<std::vector<float>> listWindow;  ///< counts, one window per frame, row by row
    std::vector<double> listRocking;             ///< counts above the background, one per frame
    std::vector<double> listModel;               ///< counts by the learned rocking curve, one per frame
    std::vector<double> listExcitation;          ///< excitation error at the middle of each frame, Å⁻¹
    std::vector<char> listInDisc;                ///< row by row, 1 for the pixels of the disc
};
/// Reads the pixels of an observation from the frames.
/// @return nothing, with the reason in the report, if a frame cannot be read
std::optional<ObservationProfile> lookAtObservation(const DataSet& dataSet, const SeriesGeometry& series,
                                                    const SpotModel& model, const Observation& observation,
                                                    CRunReport& report);

}  // namespace tessera
