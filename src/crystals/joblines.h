// Job lines: what a merging of many crystals says.
#pragma once

#include "crystals/crystalsjob.h"
#include "records/runreport.h"

#include <QStringList>

namespace tessera {

/// What was read, and what was not, with the reasons.
void tellRead(int nFolders, const CrystalsJobResult& result, CRunReport& report);

/// Each group with its lattice, its compound, what was merged and what was left out.
void tellGroups(const CrystalsJobResult& result, CRunReport& report);

/// The last lines: one for each group, and what is not in any. Of more than twenty groups those of one
/// crystal are only counted.
QStringList summaryOf(const CrystalsJobResult& result);

/// How the lattice of a group that is no known compound lies to that of the first, where it is related to it:
/// a multiple, a part, or within twice the tolerance. Else empty.
QString relationLine(const CompoundGroup& compound, const CrystalsJobResult& result);

/// Crystals that were left out of a group, but agree among themselves: a line for each such kind.
QStringList otherKindLines(const CompoundGroup& compound, const CrystalsJobResult& result);

/// "1 crystal", "3 crystals".
QString counted(int nCount, const char* pszWhat);

/// The setting of a crystal as text: the conventional indices from its own, "h,k,l", "-h,h+k,-l",
/// "1/2h-1/2k,k,l".
QString settingText(const CompoundGroup& compound, const SettledCrystal& settled);

}  // namespace tessera
