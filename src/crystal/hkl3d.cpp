#include "crystal/hkl3d.h"

#include "crystal/cellarithmetic.h"
#include "crystal/hklfile.h"

namespace tessera {

bool showHKL3D(const QList<HKL5>& listHKL, const std::optional<ReciprocalBasis>& basis,
               QList<Peak3D>& listPeak, CRunReport& report)
{
    if (!basis) {
        report.addMessage(QStringLiteral("Unit cell is not ready. Stop."), Severity::Error);
        return false;
    }
    if (!reciprocalToDirectBasis(*basis)) {
        report.addMessage(QStringLiteral("Warning: co-planar reciprocal basis vectors!"), Severity::Warning);
        return false;
    }
    QList<Peak3D> listNew;
    listNew.reserve(listHKL.size());
    for (const HKL5& hkl : listHKL) {
        const Vec3D g = basis->point(hkl.nH, hkl.nK, hkl.nL);
        Peak3D peak;
        peak.setPoint(g);
        peak.dfDStar = double(length(g));
        peak.setHKL(hkl.nH, hkl.nK, hkl.nL);
        peak.dfIPoint = double(hkl.fI);
        peak.nFrame = 0;
        peak.nID = listNew.size();
        listNew.append(peak);
    }
    listPeak = listNew;
    return true;
}

bool loadShelxFile(const QString& strFileName, const std::optional<ReciprocalBasis>& basis,
                   QList<Peak3D>& listPeak, CRunReport& report, bool* pbShown)
{
    if (pbShown) {
        *pbShown = false;
    }
    if (!basis) {
        report.addMessage(QStringLiteral("Unit cell is not ready. Stop."), Severity::Error);
        return false;
    }
    if (strFileName.isEmpty()) {
        return false;
    }
    bool bOpened = false;
    const QList<HKL5> listHKL = readHKLFile(strFileName, &bOpened);
    if (!bOpened) {
        report.addMessage(QStringLiteral("Failed to open %1 for reading.").arg(strFileName), Severity::Error);
        return false;
    }
    report.addMessage(QStringLiteral("%L1 reflections loaded from %2.").arg(listHKL.size()).arg(strFileName));
    const bool bShown = showHKL3D(listHKL, basis, listPeak, report);
    if (pbShown) {
        *pbShown = bShown;
    }
    return true;
}

}  // namespace tessera
