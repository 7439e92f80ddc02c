// SymmetryJudgement: compares Laue class and space groups in a summary of tessera-batch with those of the
// simulated crystal.
#pragma once

#include <QJsonObject>
#include <QString>

namespace tessera {

/// What the object "quality" of a summary says of the symmetry, and whether it is right.
struct SymmetryJudgement {
    bool bRead = false;    ///< the object tells a Laue class, and the crystal is known
    QString strTrueClass;  ///< Laue class of the simulated crystal
    QString strClass;      ///< Laue class that the summary has chosen
    bool bClassRight = false;
    /// Place of the true class among the candidates, from 1; 1 also where it is the chosen class, wherever it
    /// stands among them; 0: not among them.
    int nClassRank = 0;
    QString strTrueGroup;  ///< space group of the simulated crystal
    QString strGroup;      ///< the first space group of the summary
    int nGroupRank = 0;    ///< place of the true space group from 1; 0: not among them
    double dfRInt = 0;     ///< Rint of the summary; NaN where it has none
    QJsonObject told;      ///< all keys of the object whose value is a number, as they are
};

/// Judges the symmetry that a summary tells of a simulated crystal.
///
/// Space groups are compared by their numbers where the summary has these, else by their symbols. Either of
/// two enantiomorphic groups is right. "-3m1" and "-31m" both count as "-3m", as the Laue class of the
/// crystal is known without the orientation of its twofold axes.
///
/// The summary has the chosen class as "laueClass", the candidates, the most likely first, as "laueClasses",
/// and the space groups, in the same order, as "spaceGroups". Each class or group is a string, or an object
/// with its symbol as "class" (of classes only), "name" or "symbol"; a group may have its "number", too.
/// @param strCrystal  name of the simulated crystal; where no structure has it, nothing is read
SymmetryJudgement judgeSymmetry(const QJsonObject& quality, const QString& strCrystal);

/// The judgement as JSON, for scripts; an empty object where nothing was read.
QJsonObject symmetryToJson(const SymmetryJudgement& judgement);
/// The judgement as a line of text, for the user; empty where nothing was read.
QString symmetryToText(const SymmetryJudgement& judgement);

}  // namespace tessera
