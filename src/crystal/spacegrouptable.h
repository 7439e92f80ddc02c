// Table of the 230 space groups: symbols, codes of the generators, Laue classes.
#pragma once

#include <string>

namespace tessera {

constexpr int g_nSpaceGroups = 230;

/// 1 to 230.
bool isSpaceGroupNumber(int nNumber);

/// Hermann-Mauguin symbol of space group `nNumber`, parts separated by single blanks, overlined axes
/// with a leading minus; empty outside 1 to 230.
std::string spaceGroupSymbol(int nNumber);

/// Explicit symbol of space group `nNumber` in letters, as tabulated; empty outside 1 to 230.
///
/// The tabulated entries of 39 and 131 do not generate the groups of their symbols. They are given
/// here as they stand; correctedSpaceGroupCode() gives what the operations are made from.
std::string spaceGroupCode(int nNumber);

/// The code that operationsOfSpaceGroup() closes: spaceGroupCode() but for the corrected entries.
///
/// 39 (A b m 2): the third generator is the mirror b normal to y, not a twofold axis along y, which
/// would make a group of the class 222. 131 (P 42/m m c): 42 along z and 2 along y, both without a shift
/// in the plane; the tabulated shifts make the plane normal to z a glide plane n.
/// Source: International Tables for Crystallography, Vol. A, general positions of Nos. 39 (now A e m 2)
/// and 131.
std::string correctedSpaceGroupCode(int nNumber);

/// Number of the space group that stands for the Laue class of group `nNumber`; -1 outside 1 to 230.
int laueGroupNumber(int nNumber);

}  // namespace tessera
