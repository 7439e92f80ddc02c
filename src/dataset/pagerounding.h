// Page rounding: the parameters as the pages of the window hold them.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

namespace tessera {

/// The greatest coordinate of the direct beam that a page holds, pixels; the least is 0.
constexpr double g_dfMaxCenter = 100000;

/// A number as a spin box shows and gives it back: rounded to decimals, halves away from zero as in
/// QString::number(), then held within the range. NaN becomes 0, held within the range.
double spinBoxValue(double dfValue, int nDecimals, double dfMinimum, double dfMaximum);

/// An azimuth in degrees as a rotation axis can have it: -180 to 180, which both stay.
double wrappedAxis(double dfDegrees);

/// An azimuth in degrees modulo 180: 0 or more, below 180; 180 itself stays.
double wrappedAzimuth(double dfDegrees);

/// Every run reads the pages before its work, and so computes with what they hold. These do the same for
/// window and batch driver alike; rounding twice changes nothing.
///
/// Of a data set: centre to 2 decimals (0 to 100000 pixels), rotation axis and tilt relaxation to 1 (-180 to
/// 180 degrees), pixel size and wavelength to 6 (0 to 10000), stretching amplitude (-1000 to 1000
/// per cent) and azimuth (0 to 180 degrees) to 2.
void roundToPages(DataSet& data);
/// 2 decimals; the integration disc and ring 1. Radii 0 to 1000 pixels, threshold -100000 to 1000000.
void roundToPages(PeakHuntingParameters& parameters);
/// 2 decimals. Resolution 0 to 100 Å⁻¹, intensity -100000 to 1000000.
void roundToPages(MappingParameters& parameters);
/// 2 decimals. 0 to 1000 pixels, the least 2D length from -1.
void roundToPages(PeakMergingParameters& parameters);
/// 1 decimal. 1 to 1000 Å.
void roundToPages(CellHuntingParameters& parameters);
/// Radius and ring 0 to 10000 pixels; limit 0 to 100 Å⁻¹, 1 decimal.
void roundToPages(ExtractionParameters& parameters);
/// 2 decimals. Index threshold 0.01 to 0.5; space group 1 to 230.
void roundToPages(IndexingParameters& parameters);
/// Intensities 1 decimal, -10⁷ to 10⁷; d* 3 decimals, 0 to 1000 Å⁻¹.
void roundToPages(RefinementParameters& parameters);

}  // namespace tessera
