// Space groups: symbols, generators, closed lists of operations, systematic absences, Laue classes.
#pragma once

#include <array>
#include <string>
#include <vector>

/// One symmetry operation x' = R·x + t as a 4×4 affine matrix, in fractional coordinates of the
/// standard setting; rhombohedral groups stand on hexagonal axes.
struct CSymOp {
    double dfRotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};  ///< point part R, row by row
    double dfBottom[3] = {0, 0, 0};                      ///< always 0
    double dfOne = 1;                                    ///< always 1
    double dfTranslation[3] = {0, 0, 0};                 ///< t, fractions of the cell
};

/// The point parts (letters a to n) and translations (letters A to K) of the explicit symbols.
///
/// Source: Shmueli, International Tables for Crystallography, Vol. B, Table A1.4.2.1.
class CSymTable {
public:
    CSymTable();

    /// The operation with point part `nPoint` (0 to 13) and translation components of the indices
    /// `nX`, `nY`, `nZ` (0 to 10).
    /// @throws std::out_of_range "Point symmetry index out of range!", which is tested first, or
    ///         "Translation vector index out of range!"
    CSymOp operation(int nPoint, int nX, int nY, int nZ) const;

    std::vector<std::array<double, 9>> vecPoint;  ///< 14 rotations
    std::vector<double> vecTranslation;           ///< 11 numbers
};

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

/// The product first·second with its translation brought into [0, 1).
CSymOp multiplied(const CSymOp& first, const CSymOp& second);

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
