#include "imagefiles/toldtilt.h"

#include <cmath>
#include <limits>

namespace tessera {

double tiltWithin(double df, double dfMost, const char* pszName, FrameHeader& header)
{
    if (!(std::abs(df) > dfMost)) {
        return df;
    }
    header.listDoubt.append(QStringLiteral("%1 %2 is beyond %3 degrees and was not used")
                                .arg(QLatin1String(pszName))
                                .arg(df)
                                .arg(dfMost));
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace tessera
