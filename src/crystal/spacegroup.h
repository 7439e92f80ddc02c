// CSpaceGroup: the space group in use, and what it forbids.
#pragma once

#include "crystal/symop.h"

#include <vector>

namespace tessera {

/// The space group in use.
class CSpaceGroup {
public:
    int nNumber = 0;                   ///< 1 to 230; 0 until a group was set
    std::vector<CSymOp> vecOperation;  ///< all operations, identity first; empty until a group was set

    /// @return false, with nothing changed, outside 1 to 230
    bool setSpaceGroup(int nNewNumber);

    /// True if reflection (h, k, l) is forbidden by an operation of the group, a centring included.
    /// Nothing is absent as long as no group is set.
    bool isAbsent(int h, int k, int l) const;
};

}  // namespace tessera
