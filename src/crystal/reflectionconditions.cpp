#include "crystal/reflectionconditions.h"

#include "crystal/reflectionindices.h"
#include "crystal/spacegrouptable.h"
#include "records/hklref.h"
#include "records/progress.h"

#include <QString>

#include <vector>

namespace tessera {

namespace {

// A class keeps the reflections whose marked indices are 0; a test sums the marked indices.
struct ParityTest {
    const char* pszLabel;
    bool bH, bK, bL;
};

struct ReflectionClass {
    const char* pszTitle;
    bool bHIsZero, bKIsZero, bLIsZero;
    std::vector<ParityTest> vecTest;
};

const std::vector<ReflectionClass>& reflectionClasses()
{
    static const std::vector<ReflectionClass> vecClass{
        {"Reflection condition for hkl:",
         false,
         false,
         false,
         {{"h+k+l:", true, true, true},
          {"h+k:", true, true, false},
          {"k+l:", false, true, true},
          {"h+l:", true, false, true}}},
        {"\nReflection condition for 0kl:",
         true,
         false,
         false,
         {{"k+l:", false, true, true}, {"k:", false, true, false}, {"l:", false, false, true}}},
        {"\nReflection condition for h0l:",
         false,
         true,
         false,
         {{"h+l:", true, false, true}, {"h:", true, false, false}, {"l:", false, false, true}}},
        {"\nReflection condition for hk0:",
         false,
         false,
         true,
         {{"h+k:", true, true, false}, {"h:", true, false, false}, {"k:", false, true, false}}},
        {"\nReflection condition for h00:", false, true, true, {{"h:", true, false, false}}},
        {"\nReflection condition for 0k0:", true, false, true, {{"k:", false, true, false}}},
        {"\nReflection condition for 00l:", true, true, false, {{"l:", false, false, true}}}};
    return vecClass;
}

// The reflections that a space group can allow or forbid: near-integer ones but (0, 0, 0), in list order.
struct Candidate {
    HKLRef hkl;
    const Peak3D* pPeak;
};

std::vector<Candidate> candidates(const QList<Peak3D>& listPeak, double dfThreshold)
{
    std::vector<Candidate> vecCandidate;
    for (const Peak3D& peak : listPeak) {
        if (!isCloseToInteger(peak, float(dfThreshold))) {
            continue;
        }
        const HKLRef hkl{roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL), peak.dfIPoint};
        if (hkl.nH != 0 || hkl.nK != 0 || hkl.nL != 0) {
            vecCandidate.push_back({hkl, &peak});
        }
    }
    return vecCandidate;
}

// Count and intensities of one side of a group, summed in list order.
struct Side {
    int nCount = 0;
    double dfSum = 0;
    double mean() const { return nCount > 0 ? dfSum / nCount : 0; }
};

}  // namespace

void outputReflectionStatistics(const QList<Peak3D>& listPeak, double dfIntensityMin, CRunReport& report)
{
    const QList<HKLRef> listHKL = getRoundedHKLRef(listPeak);
    const QString strHead = QString::asprintf("%8s %5s %5s %5s\n", " ", "2n", "2n+1", "Total") +
                            QString(26, QLatin1Char('-'));
    for (const ReflectionClass& reflectionClass : reflectionClasses()) {
        report.addMessage(QString::fromLatin1(reflectionClass.pszTitle));
        report.addMessage(strHead);
        for (const ParityTest& test : reflectionClass.vecTest) {
            int nTotal = 0, nOdd = 0;
            for (const HKLRef& hkl : listHKL) {
                if ((reflectionClass.bHIsZero && hkl.nH != 0) || (reflectionClass.bKIsZero && hkl.nK != 0) ||
                    (reflectionClass.bLIsZero && hkl.nL != 0)) {
                    continue;
                }
                ++nTotal;
                // The parity of a sum is that of the lowest bits, which can't overflow.
                const int nParity = (test.bH ? hkl.nH & 1 : 0) ^ (test.bK ? hkl.nK & 1 : 0) ^
                                    (test.bL ? hkl.nL & 1 : 0);
                if (hkl.dfI >= dfIntensityMin && nParity != 0) {
                    ++nOdd;
                }
            }
            const int nEven = nTotal - nOdd;
            report.addMessage(QString::asprintf("%8s %5d %5d %5d", test.pszLabel, nEven, nOdd, nTotal),
                              nEven / (nOdd + 0.1) > 2.0 ? Severity::Error : Severity::Info);
        }
    }
}

QList<QList<Peak3D>> classifyReflections(const CSpaceGroup& spaceGroup, const QList<Peak3D>& listPeak,
                                         double dfThreshold)
{
    if (listPeak.isEmpty()) {
        return {};
    }
    QList<Peak3D> listAllowed, listForbidden;
    for (const Candidate& candidate : candidates(listPeak, dfThreshold)) {
        const HKLRef& hkl = candidate.hkl;
        (spaceGroup.isAbsent(hkl.nH, hkl.nK, hkl.nL) ? listForbidden : listAllowed).append(*candidate.pPeak);
    }
    return {listAllowed, listForbidden};
}

void testReflectionConditions(const QList<Peak3D>& listPeak, double dfIndexThreshold, CSpaceGroup& spaceGroup,
                              CRunReport& report)
{
    if (listPeak.isEmpty()) {
        report.addMessage(QStringLiteral(
            "Reflection conditions will not be tested because the number of reflections is 0."));
        return;
    }
    CProgress progress(report, QStringLiteral("%v/%m"), 0, g_nSpaceGroups);
    const QString strHead = QStringLiteral("\n%1 %2   %3 (%4/%5)   %6 (%7/%8)")
                                .arg(QStringLiteral("No."), 3)
                                .arg(QStringLiteral("SG.Symbol"), 10)
                                .arg(QStringLiteral("Ratio.cnt"), 13)
                                .arg(QStringLiteral("Alwd"), 4)
                                .arg(QStringLiteral("Fbdn"), 4)
                                .arg(QStringLiteral("Ratio.Avg.Int"), 0)
                                .arg(QStringLiteral("Alwd"), 10)
                                .arg(QStringLiteral("Fbdn"), 10);
    report.addMessage(strHead);
    report.addMessage(QString(strHead.size(), QLatin1Char('-')));

    // The reflections are rounded once; no list is copied for a group, as only counts and means are shown.
    const std::vector<Candidate> vecCandidate = candidates(listPeak, dfIndexThreshold);
    for (int n = 1; n <= g_nSpaceGroups; ++n) {
        progress.set(n);
        report.goOn();  // lets the window live; the loop can't be stopped
        spaceGroup.setSpaceGroup(n);
        Side allowed, forbidden;
        for (const Candidate& candidate : vecCandidate) {
            const HKLRef& hkl = candidate.hkl;
            Side& side = spaceGroup.isAbsent(hkl.nH, hkl.nK, hkl.nL) ? forbidden : allowed;
            ++side.nCount;
            side.dfSum += hkl.dfI;
        }
        QString strCountRatio, strIntensityRatio;
        if (forbidden.nCount > 0) {
            strCountRatio = QStringLiteral("%1").arg(double(allowed.nCount) / forbidden.nCount, 13, 'f', 1);
            strIntensityRatio = QStringLiteral("%1").arg(allowed.mean() / forbidden.mean(), 13, 'f', 1);
        } else {
            strCountRatio = strIntensityRatio = QStringLiteral("%1").arg(QStringLiteral("∞"), 13);
        }
        report.addMessage(QStringLiteral("%L1 %L2   %L3 (%L4/%L5)   %L6 (%L7/%L8)")
                              .arg(n, 3)
                              .arg(QString::fromStdString(spaceGroupSymbol(n)), 10)
                              .arg(strCountRatio)
                              .arg(allowed.nCount, 4)
                              .arg(forbidden.nCount, 4)
                              .arg(strIntensityRatio)
                              .arg(allowed.mean(), 10, 'f', 1)
                              .arg(forbidden.mean(), 10, 'f', 1));
    }
}

}  // namespace tessera
