// SymmetryJudgement: Laue class and space groups of a driver's summary against the truth.
#pragma once

#include <QJsonObject>
#include <QString>

namespace tessera {

/// The object "quality" of a summary, judged.
struct SymmetryJudgement {
    bool bRead = false;  ///< there is such an object, with a Laue class
    QString strTrueClass, strClass;
    bool bClassRight = false;
    int nClassRank = 0;  ///< place of the true class among the proposed ones from 1; 0: not among them
    QString strTrueGroup, strGroup;
    int nGroupRank = 0;  ///< place of the true space group from 1; 0: not among them
    double dfRInt = 0;   ///< as told; not finite where it is not
    QJsonObject told;    ///< the numbers of the object that are no lists
};

/// Judges by the crystal's name: groups by their number where the summary has it, else by symbol; of groups
/// that differ by the hand alone either is right. "-3m1" and "-31m" are both "-3m".
/// The summary tells the class as "laueClass" and all candidates as "laueClasses", the groups as
/// "spaceGroups"; each is a string or an object with "class" or "name" and "number".
SymmetryJudgement judgeSymmetry(const QJsonObject& quality, const QString& strCrystal);

/// For scripts and for reading; empty where nothing was read.
QJsonObject symmetryToJson(const SymmetryJudgement& judgement);
QString symmetryToText(const SymmetryJudgement& judgement);

}  // namespace tessera
