#include "records/beamtiltbreak.h"

#include <cmath>

namespace tessera {

QList<int> beamTiltBreaks(const QList<double>& listBeamTilt)
{
    QList<int> listBreak;
    const int n = listBeamTilt.size();
    listBreak.reserve(n);
    for (int i = 0; i < n; ++i) {
        if (n < 3 || i == 1) {
            listBreak.append(0);
        } else if (i == 0) {
            listBreak.append(1);
        } else {
            listBreak.append(std::abs(listBeamTilt[i] - listBeamTilt[i - 1]) >
                                     1.5 * std::abs(listBeamTilt[i - 1] - listBeamTilt[i - 2])
                                 ? 1
                                 : 0);
        }
    }
    return listBreak;
}

}  // namespace tessera
