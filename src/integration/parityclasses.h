// CParityClasses: how strong reflections with even and odd indices are, where no zone forbids anything.
#pragma once

#include <gemmi/symmetry.hpp>

#include <array>
#include <vector>

namespace tessera {

/// The means of E² of general reflections by the parities of h, k and l.
///
/// In a structure that is nearly centred, or nearly has a shorter cell, whole classes are weak, and the part
/// of them that lies in a zone is no sign of a glide plane. Held against its own class it is as strong as
/// others. Classes are averaged over the equivalents of each reflection, so that those which the Laue class
/// makes equal have one mean.
class CParityClasses {
public:
    explicit CParityClasses(const gemmi::GroupOps& laue);

    void add(const std::array<int, 3>& anIndex, double dfSquare);

    /// The mean of the class over that of all: 0.02 to 1, as a class that is stronger than the rest excuses
    /// nothing; 1 where fewer than 20 reflections are known of it.
    double strength(const std::array<int, 3>& anIndex) const;

private:
    struct Class {
        double dfCount = 0;
        double dfSum = 0;
    };
    std::vector<gemmi::Op> m_listOperation;
    std::array<Class, 8> m_aClass = {};
    Class m_all;
};

}  // namespace tessera
