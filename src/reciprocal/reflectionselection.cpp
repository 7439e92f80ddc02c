#include "reciprocal/reflectionselection.h"

#include <algorithm>
#include <vector>

namespace tessera {

bool selectReflectionsForProcessing(const QList<Peak3D>& listPeakMerged, const QList<Peak3D>& listViewPoint,
                                    const QList<int>& listGroupIndex, QList<Peak3D>& listPeak,
                                    CRunReport& report)
{
    if (listViewPoint.isEmpty()) {
        return false;
    }
    std::vector<int> vecID;
    for (int nIndex : listGroupIndex) {
        if (nIndex < 0 || nIndex >= listViewPoint.size()) {
            continue;
        }
        const int nID = listViewPoint[nIndex].nID;
        if (nID < 0) {
            report.addMessage(QStringLiteral("ID: %L1 out of range.").arg(nID), Severity::Error);
        } else {
            vecID.push_back(nID);
        }
    }
    // A sorted list, not one flag per ID: a huge ID from a file would need as much memory.
    std::sort(vecID.begin(), vecID.end());
    QList<Peak3D> listChosen;
    for (const Peak3D& peak : listPeakMerged) {
        if (std::binary_search(vecID.begin(), vecID.end(), peak.nID)) {
            listChosen.append(peak);
        }
    }
    listPeak = listChosen;
    return true;
}

}  // namespace tessera
