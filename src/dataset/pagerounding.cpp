#include "dataset/pagerounding.h"

#include <QString>

#include <cmath>

namespace tessera {

double spinBoxValue(double dfValue, int nDecimals, double dfMinimum, double dfMaximum)
{
    const double dfRounded = std::isnan(dfValue) ? 0 : QString::number(dfValue, 'f', nDecimals).toDouble();
    return qBound(dfMinimum, dfRounded, dfMaximum);
}

double spinBoxValue(double dfValue, const NumberBox& box)
{
    return spinBoxValue(dfValue, box.nDecimals, box.dfMinimum, box.dfMaximum);
}

double wrappedAxis(double dfDegrees)
{
    return std::abs(dfDegrees) <= 180 ? dfDegrees : std::remainder(dfDegrees, 360.0);
}

double wrappedAzimuth(double dfDegrees)
{
    if (dfDegrees == 180) {  // 180 is kept, so that 90 in a file, plus 90, shows as 180 and not as 0
        return dfDegrees;
    }
    const double df = std::fmod(dfDegrees, 180.0);
    const double dfPositive = df < 0 ? df + 180 : df;
    return dfPositive < 180 ? dfPositive + 0.0 : 0;  // a tiny negative angle rounds to 180; -0 becomes 0
}

int axisDecimals(double dfAxis)
{
    const int nFine = 4;
    const int nUsual = parameterOf(&DataSet::m_dfRotationAxis).box.nDecimals;
    const auto rounded = [&](int nDecimals) { return spinBoxValue(dfAxis, nDecimals, -360, 360); };
    return rounded(nUsual) == rounded(nFine) ? nUsual : nFine;
}

void roundDataSet(DataSet& data)
{
    ParameterRecords records{};
    std::get<DataSet*>(records) = &data;
    std::get<SeriesDistortion*>(records) = &data.m_distortion;
    const double dfAxis = data.m_dfRotationAxis;
    roundRecords(records);
    const NumberBox& box = parameterOf(&DataSet::m_dfRotationAxis).box;
    if (data.m_nAxisDecimals > box.nDecimals) {
        data.m_dfRotationAxis = spinBoxValue(dfAxis, data.m_nAxisDecimals, box.dfMinimum, box.dfMaximum);
    }
}

void roundRecords(const ParameterRecords& records)
{
    for (const Parameter& row : parameterTable()) {
        if (row.isIn(records)) {
            row.setValue(records, spinBoxValue(row.value(records), row.box));
        }
    }
}

}  // namespace tessera
