// IntensityJudgement: the intensities of an .hkl file held against the true |F|².
#pragma once

#include "simulate/reflectionlines.h"
#include "simulate/simulatedseries.h"

#include <QJsonObject>
#include <QString>

#include <vector>

namespace tessera {

/// An intensity beside its truth, on the scale of the file.
struct JudgedReflection {
    std::array<int, 3> anIndex{};  ///< on the true cell
    double dfIntensity = 0, dfSigma = 0, dfTrue = 0;
    double deviation() const { return (dfIntensity - dfTrue) / dfSigma; }  ///< in standard deviations
};

/// Numbers that the lines do not tell are not finite. "Observed" are those with I > 2 sigma.
struct IntensityJudgement {
    bool bRead = false;
    QString strWhy;  ///< where the file is there and could not be judged
    int nLines = 0;  ///< with a sigma above 0, the only ones that are judged
    int nWithoutSigma = 0;
    int nObserved = 0;
    int nOffTruth = 0;         ///< lines on no reflection of the truth: absent there or beside the lattice
    Matrix3 matToTrue{};       ///< row of indices of the file times this = indices on the true cell
    double dfScale = 0;        ///< what the true values are multiplied by, weighted by 1/sigma²
    double dfCorrelation = 0;  ///< of the observed with |F|² times the area of the rocking curve
    double dfCorrelationBare = 0;  ///< of the observed with |F|² alone
    /// sum |Fo - k Fc| / sum Fo of the observed, k = sum Fo Fc / sum Fc², whatever deviates included.
    double dfR = 0;
    /// What R would be if each intensity deviated from its truth as its sigma says: see foretoldR().
    double dfRForetold = 0;
    double dfMeanSquare = 0;    ///< mean ((I - true) / sigma)² of all lines
    double dfMedianSquare = 0;  ///< their median over that of a normal distribution, 0.4549
    double dfMedianRatio = 0;   ///< of I / sigma of all lines
    double dfDecayLeft = 0;  ///< Å², by which intensities above 10 sigma fall beyond the truth, exp(-B d*²/2)
    double dfDMin = 0;       ///< Å, of the lines
    int nCrossed = 0;        ///< reflections with a passage recorded as a whole
    int nCrossedMeasured = 0;  ///< of these, with a line
    int nCrossedObserved = 0;  ///< of these, observed
    int nExpected = 0;         ///< with such a passage whose expected I / sigma is 2 and more
    int nExpectedMeasured = 0;
    int nWithin = 0;  ///< with such a passage, expected or not, no farther out than the lines go
    int nWithinMeasured = 0;
    std::vector<JudgedReflection> listWorst;  ///< the ten largest deviations

    double completeness() const { return nExpected > 0 ? double(nExpectedMeasured) / nExpected : 0; }
    double completenessWithin() const { return nWithin > 0 ? double(nWithinMeasured) / nWithin : 0; }
    double completenessOfAll() const { return nCrossed > 0 ? double(nCrossedMeasured) / nCrossed : 0; }
    double observedShare() const { return nCrossed > 0 ? double(nCrossedObserved) / nCrossed : 0; }
};

/// R on F that counting alone gives: with I normal about its truth, the expectation of sum |√I - √true| over
/// that of sum √I, both over I > 2 sigma, integrated numerically for each reflection.
/// @param listTrueAndSigma  on one scale
double foretoldR(const std::vector<std::array<double, 2>>& listTrueAndSigma);

/// What is one reflection of a list.
enum class ListedReflections {
    EachIndex,  ///< each h, k, l
    Merged,     ///< equivalents under the crystal's Laue class together
};

/// Judges lines whose indices are of a cell of six numbers, which may lie on the true lattice in several
/// ways. Of these the best correlation counts, as a program cannot tell them apart by the metric; of those
/// that are equivalent by the symmetry of the crystal the one that holds most of the reflections that
/// crossed.
/// @param nLattice  which of the crystals was measured
IntensityJudgement judgeIntensities(const std::vector<ReflectionLine>& listLine,
                                    const std::array<double, 6>& adfCell, const SimulatedSeries& truth,
                                    int nLattice, ListedReflections listed);

/// Reads the .hkl and the cell beside it, BASE.ins or else BASE.cif, and judges. A file that is not there
/// leaves all as it is in a new judgement.
IntensityJudgement judgeIntensityFile(const QString& strHklFile, const QString& strBase,
                                      const SimulatedSeries& truth, int nLattice, ListedReflections listed);

/// For scripts and for reading; empty where nothing was read.
QJsonObject intensitiesToJson(const IntensityJudgement& judgement);
QString intensitiesToText(const QString& strHead, const IntensityJudgement& judgement);

}  // namespace tessera
