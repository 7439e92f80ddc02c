// Page rounding: the parameters as the pages of the window hold them.
#pragma once

#include "dataset/parametertable.h"

#include <type_traits>

namespace tessera {

/// A number as a spin box shows and gives it back: rounded to decimals, halves away from zero as in
/// QString::number(), then held within the range. NaN becomes 0, held within the range.
double spinBoxValue(double dfValue, int nDecimals, double dfMinimum, double dfMaximum);
double spinBoxValue(double dfValue, const NumberBox& box);

/// An azimuth in degrees as a rotation axis can have it: -180 to 180, which both stay.
double wrappedAxis(double dfDegrees);

/// How many decimals an axis is to be held with, so that a refined one does not lose what it gained: those of
/// its box, or four where these would change it.
int axisDecimals(double dfAxis);

/// An azimuth in degrees modulo 180: 0 or more, below 180; 180 itself stays.
double wrappedAzimuth(double dfDegrees);

/// Every run reads the pages before its work, and so computes with what they hold. This does the same for
/// window and batch driver alike: each number of the records that has a row in the table of parameters is
/// rounded and held as its box does it. Rounding twice changes nothing.
void roundRecords(const ParameterRecords& records);

void roundDataSet(DataSet& data);

/// The same for one record. A data set brings its distortions with it, and holds its axis with
/// m_nAxisDecimals.
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
