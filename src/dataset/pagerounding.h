// Page rounding: rounds parameters as the pages of the window do.
#pragma once

#include "dataset/parametertable.h"

#include <type_traits>

namespace tessera {

/// The number that a spin box would show and return: rounded to its decimals, halves away from zero as in
/// QString::number(), then limited to its range. NaN becomes 0, limited to the range.
double spinBoxValue(double dfValue, int nDecimals, double dfMinimum, double dfMaximum);
/// Does the same for a box of the table of parameters.
double spinBoxValue(double dfValue, const NumberBox& box);

/// Wraps an azimuth in degrees into the range of the rotation axis, -180 to 180 including both.
double wrappedAxis(double dfDegrees);

/// The number of decimals with which an axis is stored, so that a refined one keeps its precision: that of
/// its box, or four where rounding to the box would change it.
int axisDecimals(double dfAxis);

/// Wraps an azimuth in degrees into 0 to 180; 180 itself stays.
double wrappedAzimuth(double dfDegrees);

/// Rounds every number of the records that has a row in the table of parameters as its box does. Runs of
/// the window read the pages first, so they compute with rounded numbers; this gives the batch driver the
/// same ones. Rounding twice changes nothing.
void roundRecords(const ParameterRecords& records);

/// Does the same for a data set, with its distortions, and with m_nAxisDecimals decimals of its axis.
void roundDataSet(DataSet& data);

/// Does the same for one record.
template <typename TRecord>
void roundToPages(TRecord& record)
{
    if constexpr (std::is_same_v<TRecord, DataSet>) {
        roundDataSet(record);
    } else {
        ParameterRecords records{};
        std::get<TRecord*>(records) = &record;
        roundRecords(records);
    }
}

}  // namespace tessera
