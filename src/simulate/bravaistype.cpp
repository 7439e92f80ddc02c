#include "simulate/bravaistype.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace tessera {

namespace {
using IntMatrix = std::array<std::array<int, 3>, 3>;
using IntVector = std::array<int, 3>;

// Dot products of lattice vectors that differ by less than this, relative to the lengths, are equal: far
// above rounding errors, and far below the differences in cells that only resemble a higher symmetry.
constexpr double g_dfTolerance = 1e-6;

// Adds vectors of a basis to one another, or subtracts them, until none gets shorter. The factor keeps
// rounding errors from making steps without end among vectors of equal lengths.
Matrix3 shortened(Matrix3 mat)
{
    for (bool bShorter = true; bShorter;) {
        bShorter = false;
        for (size_t i = 0; i < 3; ++i) {
            for (int n = -1; n <= 1; ++n) {
                for (int m = -1; m <= 1; ++m) {
                    const Vector3 vec = mat[i] + double(n) * mat[(i + 1) % 3] + double(m) * mat[(i + 2) % 3];
                    if (dotProduct(vec, vec) < (1 - 1e-9) * dotProduct(mat[i], mat[i])) {
                        mat[i] = vec;
                        bShorter = true;
                    }
                }
            }
        }
    }
    return mat;
}

int determinantOf(const IntVector& a, const IntVector& b, const IntVector& c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
           a[2] * (b[0] * c[1] - b[1] * c[0]);
}

// The image of a vector, a row of indices, under a matrix of rows.
IntVector imageOf(const IntVector& vec, const IntMatrix& mat)
{
    IntVector vecImage{};
    for (size_t i = 0; i < 3; ++i) {
        for (size_t j = 0; j < 3; ++j) {
            vecImage[j] += vec[i] * mat[i][j];
        }
    }
    return vecImage;
}

int traceOf(const IntMatrix& mat)
{
    return mat[0][0] + mat[1][1] + mat[2][2];
}

// The proper rotations of the lattice, as matrices that take row vectors of indices to their images. The rows
// are thus the images of the basis vectors. On a basis that cannot be shortened all elements are -1, 0 or 1.
std::vector<IntMatrix> rotationsOf(const Matrix3& matBasis)
{
    std::vector<IntVector> listRow;
    listRow.reserve(27);
    for (int n = 0; n < 27; ++n) {
        listRow.push_back({n / 9 - 1, n / 3 % 3 - 1, n % 3 - 1});
    }
    const auto vectorOf = [&](const IntVector& vec) {
        return Vector3{double(vec[0]), double(vec[1]), double(vec[2])} * matBasis;
    };
    // Whether images a and b of the basis vectors i and j have the same dot product as these.
    const auto hasSameProduct = [&](const IntVector& a, const IntVector& b, size_t i, size_t j) {
        const double dfScale = lengthOf(matBasis[i]) * lengthOf(matBasis[j]);
        return std::abs(dotProduct(vectorOf(a), vectorOf(b)) - dotProduct(matBasis[i], matBasis[j])) <
               g_dfTolerance * dfScale;
    };
    std::vector<IntMatrix> listRotation;
    for (const IntVector& a : listRow) {
        for (const IntVector& b : listRow) {
            if (!hasSameProduct(a, a, 0, 0) || !hasSameProduct(b, b, 1, 1) || !hasSameProduct(a, b, 0, 1)) {
                continue;
            }
            for (const IntVector& c : listRow) {
                if (hasSameProduct(c, c, 2, 2) && hasSameProduct(a, c, 0, 2) && hasSameProduct(b, c, 1, 2) &&
                    determinantOf(a, b, c) == 1) {
                    listRotation.push_back({a, b, c});
                }
            }
        }
    }
    return listRotation;
}

// Lattice vectors that a rotation leaves as they are (nSign 1) or reverses (nSign -1), the shortest first. Of
// each direction there is one, without its multiples and its opposite. In indices on a reduced basis, axes
// and the shortest vectors across them are within ±3.
std::vector<IntVector> primitiveEigenvectors(const Matrix3& matBasis, const IntMatrix& mat, int nSign)
{
    std::vector<IntVector> listVector;
    for (int n = 0; n < 7 * 7 * 7; ++n) {
        const IntVector vec{n / 49 - 3, n / 7 % 7 - 3, n % 7 - 3};
        const IntVector vecImage = imageOf(vec, mat);
        const bool bFirstOfTwo = vec > IntVector{0, 0, 0};  // of the vector and its opposite
        if (bFirstOfTwo && std::gcd(std::gcd(vec[0], vec[1]), vec[2]) == 1 &&
            vecImage == IntVector{nSign * vec[0], nSign * vec[1], nSign * vec[2]}) {
            listVector.push_back(vec);
        }
    }
    const auto squareOf = [&](const IntVector& vec) {
        const Vector3 v = Vector3{double(vec[0]), double(vec[1]), double(vec[2])} * matBasis;
        return dotProduct(v, v);
    };
    std::stable_sort(listVector.begin(), listVector.end(),
                     [&](const IntVector& a, const IntVector& b) { return squareOf(a) < squareOf(b); });
    return listVector;
}

// The conventional axes of cubic, tetragonal, orthorhombic and monoclinic lattices; none for a triclinic one.
// They lie along the fourfold axes of a cubic lattice and along the twofold axes of an orthorhombic one. A
// tetragonal or monoclinic lattice has one such axis, to which the two shortest vectors across it are added.
std::vector<IntVector> conventionalAxes(const Matrix3& matBasis, const std::vector<IntMatrix>& listRotation)
{
    const bool bCubic = listRotation.size() == 24, bTetragonal = listRotation.size() == 8;
    std::vector<IntVector> listAxis;
    for (const IntMatrix& mat : listRotation) {
        // A twofold axis has the trace -1, a fourfold one 1.
        if (traceOf(mat) != (bCubic || bTetragonal ? 1 : -1)) {
            continue;
        }
        const std::vector<IntVector> listAlong = primitiveEigenvectors(matBasis, mat, 1);
        if (!listAlong.empty() &&
            std::find(listAxis.begin(), listAxis.end(), listAlong[0]) == listAxis.end()) {
            listAxis.push_back(listAlong[0]);
        }
        if (bTetragonal || listRotation.size() == 2) {
            // Vectors across the axis are reversed by a rotation by 180 degrees, the square of the fourfold.
            const IntMatrix matTwofold = bTetragonal ? IntMatrix{imageOf(mat[0], mat), imageOf(mat[1], mat),
                                                                 imageOf(mat[2], mat)}
                                                     : mat;
            const std::vector<IntVector> listAcross = primitiveEigenvectors(matBasis, matTwofold, -1);
            listAxis.insert(
                listAxis.end(), listAcross.begin(),
                listAcross.begin() + std::min<std::ptrdiff_t>(2, std::ptrdiff_t(listAcross.size())));
            break;
        }
    }
    return listAxis;
}
}  // namespace

QString BravaisType::symbol() const
{
    static const QHash<QString, QString> hash = [] {
        const std::pair<const char*, const char*> aRow[] = {
            {"aP", "triclinicP anorthicP"},
            {"mP", "monoclinicP"},
            // "S" stands for a centring of one face, whichever it is. Other letters are other settings.
            {"mC", "monoclinicC monoclinicA monoclinicB monoclinicI monoclinicS"},
            {"oP", "orthorhombicP"},
            {"oC", "orthorhombicC orthorhombicA orthorhombicB orthorhombicS"},
            {"oI", "orthorhombicI"},
            {"oF", "orthorhombicF"},
            {"tP", "tetragonalP tetragonalC"},
            {"tI", "tetragonalI tetragonalF"},
            {"hP", "hexagonalP trigonalP"},
            {"hR", "hexagonalR trigonalR rhombohedralR rhombohedralP"},
            {"cP", "cubicP"},
            {"cI", "cubicI"},
            {"cF", "cubicF"}};
        QHash<QString, QString> hashAll;
        for (const auto& [pSymbol, pNames] : aRow) {
            for (const QString& strName : QString::fromLatin1(pNames).split(QLatin1Char(' '))) {
                hashAll[strName] = QLatin1String(pSymbol);
            }
        }
        return hashAll;
    }();
    return hash.value(strSystem.toLower() + strCentring.toUpper());
}

BravaisType bravaisTypeOf(const Matrix3& matPrimitive)
{
    const auto type = [](const char* pSystem, const char* pCentring) {
        return BravaisType{QString::fromLatin1(pSystem), QString::fromLatin1(pCentring)};
    };
    const Matrix3 matBasis = shortened(matPrimitive);
    const std::vector<IntMatrix> listRotation = rotationsOf(matBasis);
    // The numbers of rotations in the seven lattice systems all differ: 1, 2, 4, 8, 6, 12 and 24, from
    // triclinic to monoclinic, orthorhombic, tetragonal, rhombohedral, hexagonal and cubic.
    const size_t nOrder = listRotation.size();
    if (nOrder == 12) {
        return type("hexagonal", "P");
    }
    if (nOrder == 6) {
        return type("rhombohedral", "R");
    }
    const std::vector<IntVector> listAxis = conventionalAxes(matBasis, listRotation);
    if (nOrder == 1 || listAxis.size() < 3) {
        return type("triclinic", "P");
    }
    // Lattice points in the conventional cell.
    const int nVolume = std::abs(determinantOf(listAxis[0], listAxis[1], listAxis[2]));
    const char* const pSystem = nOrder == 24  ? "cubic"
                                : nOrder == 8 ? "tetragonal"
                                : nOrder == 4 ? "orthorhombic"
                                              : "monoclinic";
    if (nVolume == 1) {
        return type(pSystem, "P");
    }
    if (nVolume == 4) {
        return type(pSystem, "F");
    }
    // Two lattice points: I or the centring of one face. Only for I is half the body diagonal a lattice
    // vector. In a monoclinic lattice, whose axes were chosen as the shortest, both are settings of C.
    bool bHalfDiagonal = true;
    for (size_t i = 0; i < 3; ++i) {
        bHalfDiagonal = bHalfDiagonal && (listAxis[0][i] + listAxis[1][i] + listAxis[2][i]) % 2 == 0;
    }
    return type(pSystem, bHalfDiagonal && nOrder != 2 ? "I" : "C");
}

Matrix3 primitiveIndicesOf(const QString& strCentring)
{
    const QString str = strCentring.toUpper();
    if (str == QLatin1String("A")) {
        return {Vector3{1, 0, 0}, Vector3{0, 1, 1}, Vector3{0, -1, 1}};
    }
    if (str == QLatin1String("B")) {
        return {Vector3{1, 0, 1}, Vector3{0, 1, 0}, Vector3{-1, 0, 1}};
    }
    if (str == QLatin1String("C")) {
        return {Vector3{1, 1, 0}, Vector3{-1, 1, 0}, Vector3{0, 0, 1}};
    }
    if (str == QLatin1String("I")) {
        return {Vector3{1, 1, 0}, Vector3{0, 1, 1}, Vector3{1, 0, 1}};
    }
    if (str == QLatin1String("F")) {
        return {Vector3{1, 1, -1}, Vector3{1, -1, 1}, Vector3{-1, 1, 1}};
    }
    if (str == QLatin1String("R")) {
        return {Vector3{1, 0, 1}, Vector3{-1, 1, 1}, Vector3{0, -1, 1}};
    }
    return {Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}};
}

}  // namespace tessera
