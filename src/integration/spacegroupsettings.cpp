#include "integration/spacegroupsettings.h"

#include <algorithm>
#include <set>

namespace tessera {

namespace {

std::set<gemmi::Op::Rot> rotationsWithInversion(const gemmi::GroupOps& group)
{
    std::set<gemmi::Op::Rot> setRotation;
    for (const gemmi::Op& op : group.sym_ops) {
        setRotation.insert(op.rot);
        setRotation.insert(op.negated_rot());
    }
    return setRotation;
}

/// Operations that differ only by a centring translation count as equal.
bool hasCentring(const gemmi::GroupOps& group, const gemmi::GroupOps& other)
{
    std::vector<gemmi::Op::Tran> listOne = group.cen_ops;
    std::vector<gemmi::Op::Tran> listOther = other.cen_ops;
    std::sort(listOne.begin(), listOne.end());
    std::sort(listOther.begin(), listOther.end());
    return listOne == listOther;
}

}  // namespace

std::vector<const gemmi::SpaceGroup*> spaceGroupSettings(const gemmi::GroupOps& laue)
{
    const gemmi::GroupOps ops = laue.sym_ops.empty() ? gemmi::symops_from_hall("-P 1") : laue;
    const std::set<gemmi::Op::Rot> setRotation = rotationsWithInversion(ops);
    std::vector<const gemmi::SpaceGroup*> list;
    for (const gemmi::SpaceGroup& group : gemmi::spacegroup_tables::main) {
        if (group.ext == '1') {
            continue;
        }
        const gemmi::GroupOps own = group.operations();
        if (hasCentring(own, ops) && rotationsWithInversion(own) == setRotation) {
            list.push_back(&group);
        }
    }
    return list;
}

}  // namespace tessera
