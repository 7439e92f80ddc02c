// Job lines: the lines of the log, and the texts, in which a merging of many crystals tells its results.
#pragma once

#include "crystals/crystalsjob.h"
#include "records/runreport.h"

#include <QStringList>

namespace tessera {

/// Reports how many crystals were read, and what was not read, with the reasons.
/// @param nFolders  folders of results that were looked through
void tellRead(int nFolders, const CrystalsJobResult& result, CRunReport& report);

/// Reports the crystals that are in no group, and each group with its lattice, its compound, what was merged
/// and what was left out.
void tellGroups(const CrystalsJobResult& result, CRunReport& report);

/// The last lines of the log: one for each group, and one with the numbers of crystals read, merged and not
/// read. Where there are more than twenty groups, those of a single crystal are only counted.
QStringList summaryOf(const CrystalsJobResult& result);

/// A sentence on how the lattice of a group is related to that of the first group, where it is: a
/// superlattice or a sublattice within the tolerance, or the same lattice within twice the tolerance. Empty
/// where it is not related, for the first group itself, and for a group that is a known compound.
QString relationLine(const CompoundGroup& compound, const CrystalsJobResult& result);

/// Crystals that were left out of the merging of a group, but agree among themselves: a line for each such
/// set.
QStringList otherKindLines(const CompoundGroup& compound, const CrystalsJobResult& result);

/// A count with its noun: "1 crystal", "3 crystals".
/// @param pszWhat  the noun in the singular; its plural has to end in "s"
QString counted(int nCount, const char* pszWhat);

/// How the indices h, k, l of a crystal's own cell become those of the conventional cell of its merged group:
/// "h,k,l", "-h,h+k,-l", "1/2h-1/2k,k,l".
/// @param compound  a group that was merged
QString settingText(const CompoundGroup& compound, const SettledCrystal& settled);

}  // namespace tessera
