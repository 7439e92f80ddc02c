// CParityClasses: mean intensities of general reflections by the parities of their indices.
#pragma once

#include <gemmi/symmetry.hpp>

#include <array>
#include <vector>

namespace tessera {

/// The mean E² of general reflections by the parities of h, k and l.
///
/// In a structure that is nearly centred, or nearly has a shorter cell, whole parity classes are weak. Weak
/// reflections of such a class in a zone do not indicate a glide plane; compared with their own class they
/// are as strong as others. Each reflection is added with all its equivalents, so that classes which the Laue
/// class makes equivalent have the same mean.
class CParityClasses {
public:
    /// @param laue  operations of the Laue class
    explicit CParityClasses(const gemmi::GroupOps& laue);

    /// Adds a general reflection.
    /// @param dfSquare  E²
    void add(const std::array<int, 3>& anIndex, double dfSquare);

    /// The mean of the class of a reflection divided by the mean of all, limited to 0.02 to 1 (a strong class
    /// does not explain absences); 1 if the class has fewer than 20 reflections.
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
