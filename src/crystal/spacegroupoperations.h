// Operations of a space group: the generators of its code, closed to the whole group.
#pragma once

#include "crystal/symop.h"

#include <string>
#include <vector>

namespace tessera {

/// The identity, the inversion where the explicit symbol `strCode` asks for it, and its generators; the
/// identity alone for an empty code. The form of the code is not tested.
std::vector<CSymOp> generatorsOfCode(const std::string& strCode);

/// The generators of the tabulated code, without the corrections that operationsOfSpaceGroup() makes.
/// Outside 1 to 230 the identity alone.
std::vector<CSymOp> generatorsOfSpaceGroup(int nNumber);

/// All operations of the group by correctedSpaceGroupCode(), centring translations included, identity first,
/// translations in [0, 1); 192 at the most. Outside 1 to 230 the identity alone.
///
/// The order is that of closing the generators pass by pass: for every i, for every j from i on, the
/// products i·j and j·i are appended if new, until a pass adds nothing. No. 222 stands in origin
/// choice 2; the groups with two origins otherwise stand as their codes tell.
std::vector<CSymOp> operationsOfSpaceGroup(int nNumber);

}  // namespace tessera
