#include "integration/asymmetricunit.h"

#include <algorithm>

namespace tessera {

gemmi::Op::Rot wholeRotation(const gemmi::Op::Rot& rot)
{
    gemmi::Op::Rot whole = rot;
    for (auto& row : whole) {
        for (int& n : row) {
            n /= gemmi::Op::DEN;
        }
    }
    return whole;
}

CAsymmetricUnit::CAsymmetricUnit(const gemmi::GroupOps& ops)
    : m_ops(ops.sym_ops.empty() ? gemmi::symops_from_hall("-P 1") : ops)
{
    m_pGroup = gemmi::find_spacegroup_by_ops(m_ops);
    for (const gemmi::Op& op : m_ops.sym_ops) {
        if (op.det_rot() > 0) {
            m_listRotation.push_back(wholeRotation(op.rot));
        }
    }
}

std::array<int, 3> CAsymmetricUnit::image(const gemmi::Op::Rot& rot, const std::array<int, 3>& anIndex) const
{
    // Indices are a row that is multiplied by the rotation from the left: h' = h R.
    std::array<int, 3> anImage = {};
    for (size_t n = 0; n < 3; ++n) {
        anImage[n] = anIndex[0] * rot[0][n] + anIndex[1] * rot[1][n] + anIndex[2] * rot[2][n];
    }
    return anImage;
}

CAsymmetricUnit::Image CAsymmetricUnit::representative(const std::array<int, 3>& anIndex) const
{
    const auto minus = [](const std::array<int, 3>& an) {
        return std::array<int, 3>{-an[0], -an[1], -an[2]};
    };
    if (m_pGroup) {
        // Rotations of the reflection itself come first, so that it is a mate only where none leads there.
        const gemmi::ReciprocalAsu asu(m_pGroup);
        for (const bool bMate : {false, true}) {
            for (const gemmi::Op::Rot& rot : m_listRotation) {
                const std::array<int, 3> anImage = image(rot, bMate ? minus(anIndex) : anIndex);
                if (asu.is_in(anImage)) {
                    return {anImage, bMate};
                }
            }
        }
    }
    // The greatest equivalent. An image of the reflection itself is preferred to an equal one of its Friedel
    // mate.
    Image best = {anIndex, false};
    for (const bool bMate : {false, true}) {
        for (const gemmi::Op::Rot& rot : m_listRotation) {
            const std::array<int, 3> anImage = image(rot, bMate ? minus(anIndex) : anIndex);
            if (anImage > best.anIndex) {
                best = {anImage, bMate};
            }
        }
    }
    return best;
}

bool CAsymmetricUnit::isAbsent(const std::array<int, 3>& anIndex) const
{
    // The product of h, k, l with a centring vector has to be a whole number; gemmi stores the vector in
    // units of 1/24.
    return std::any_of(m_ops.cen_ops.begin(), m_ops.cen_ops.end(), [&](const gemmi::Op::Tran& tran) {
        return (anIndex[0] * tran[0] + anIndex[1] * tran[1] + anIndex[2] * tran[2]) % gemmi::Op::DEN != 0;
    });
}

int CAsymmetricUnit::epsilon(const std::array<int, 3>& anIndex) const
{
    return int(std::count_if(m_listRotation.begin(), m_listRotation.end(),
                             [&](const gemmi::Op::Rot& rot) { return image(rot, anIndex) == anIndex; }));
}

std::vector<std::array<int, 3>> CAsymmetricUnit::equivalents(const std::array<int, 3>& anIndex) const
{
    std::vector<std::array<int, 3>> list;
    for (const gemmi::Op::Rot& rot : m_listRotation) {
        list.push_back(image(rot, anIndex));
        list.push_back(image(rot, {-anIndex[0], -anIndex[1], -anIndex[2]}));
    }
    return list;
}

bool CAsymmetricUnit::contains(const std::array<int, 3>& anIndex) const
{
    if (m_pGroup) {
        return gemmi::ReciprocalAsu(m_pGroup).is_in(anIndex);
    }
    return representative(anIndex).anIndex == anIndex;
}

}  // namespace tessera
