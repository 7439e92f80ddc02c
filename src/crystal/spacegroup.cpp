#include "crystal/spacegroup.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace {

struct SpaceGroupEntry {
    char szSymbol[12];
    char szCode[40];
};

// Position n - 1 holds space group n. The codes are the explicit symbols of Shmueli, International Tables
// for Crystallography, Vol. B, with the translations lettered A to K in their published order.
constexpr SpaceGroupEntry g_aSpaceGroup[230] = {
    {"P 1", "000"},
    {"P -1", "100"},
    {"P 2", "01cHHH0"},
    {"P 21", "01cHDH0"},
    {"C 2", "02aDDHcHHH0"},
    {"P m", "01jHHH0"},
    {"P c", "01jHHD0"},
    {"C m", "02aDDHjHHH0"},
    {"C c", "02aDDHjHHD0"},
    {"P 2/m", "11cHHH0"},  // 10
    {"P 21/m", "11cHDH0"},
    {"C 2/m", "12aDDHcHHH0"},
    {"P 2/c", "11cHHD0"},
    {"P 21/c", "11cHDD0"},
    {"C 2/c", "12aDDHcHHD0"},
    {"P 2 2 2", "02bHHHcHHH0"},
    {"P 2 2 21", "02bHHDcHHD0"},
    {"P 21 21 2", "02bHHHcDDH0"},
    {"P 21 21 21", "02bDHDcHDD0"},
    {"C 2 2 21", "03aDDHbHHDcHHD0"},  // 20
    {"C 2 2 2", "03aDDHbHHHcHHH0"},
    {"F 2 2 2", "04aHDDaDHDbHHHcHHH0"},
    {"I 2 2 2", "03aDDDbHHHcHHH0"},
    {"I 21 21 21", "03aDDDbDHDcHDD0"},
    {"P m m 2", "02bHHHjHHH0"},
    {"P m c 21", "02bHHDjHHD0"},
    {"P c c 2", "02bHHHjHHD0"},
    {"P m a 2", "02bHHHjDHH0"},
    {"P c a 21", "02bHHDjDHH0"},
    {"P n c 2", "02bHHHjHDD0"},  // 30
    {"P m n 21", "02bDHDjDHD0"},
    {"P b a 2", "02bHHHjDDH0"},
    {"P n a 21", "02bHHDjDDH0"},
    {"P n n 2", "02bHHHjDDD0"},
    {"C m m 2", "03aDDHbHHHjHHH0"},
    {"C m c 21", "03aDDHbHHDjHHD0"},
    {"C c c 2", "03aDDHbHHHjHHD0"},
    {"A m m 2", "03aHDDbHHHjHHH0"},
    {"A b m 2", "03aHDDbHHHcHDH0"},
    {"A m a 2", "03aHDDbHHHjDHH0"},  // 40
    {"A b a 2", "03aHDDbHHHjDDH0"},
    {"F m m 2", "04aHDDaDHDbHHHjHHH0"},
    {"F d d 2", "04aHDDaDHDbHHHjBBB0"},
    {"I m m 2", "03aDDDbHHHjHHH0"},
    {"I b a 2", "03aDDDbHHHjDDH0"},
    {"I m a 2", "03aDDDbHHHjDHH0"},
    {"P m m m", "12bHHHcHHH0"},
    {"P n n n", "03bHHHcHHHhDDD1BBB"},
    {"P c c m", "12bHHHcHHD0"},
    {"P b a n", "03bHHHcHHHhDDH1BBH"},  // 50
    {"P m m a", "12bDHHcHHH0"},
    {"P n n a", "12bDHHcDDD0"},
    {"P m n a", "12bDHDcDHD0"},
    {"P c c a", "12bDHHcHHD0"},
    {"P b a m", "12bHHHcDDH0"},
    {"P c c n", "12bDDHcHDD0"},
    {"P b c m", "12bHHDcHDD0"},
    {"P n n m", "12bHHHcDDD0"},
    {"P m m n", "03bHHHcDDHhDDH1BBH"},
    {"P b c n", "12bDDDcHHD0"},  // 60
    {"P b c a", "12bDHDcHDD0"},
    {"P n m a", "12bDHDcHDH0"},
    {"C m c m", "13aDDHbHHDcHHD0"},
    {"C m c a", "13aDDHbHDDcHDD0"},
    {"C m m m", "13aDDHbHHHcHHH0"},
    {"C c c m", "13aDDHbHHHcHHD0"},
    {"C m m a", "13aDDHbHDHcHDH0"},
    {"C c c a", "04aDDHbDDHcHHHhHDD1HBB"},
    {"F m m m", "14aHDDaDHDbHHHcHHH0"},
    {"F d d d", "05aHDDaDHDbHHHcHHHhBBB1KKK"},  // 70
    {"I m m m", "13aDDDbHHHcHHH0"},
    {"I b a m", "13aDDDbHHHcDDH0"},
    {"I b c a", "13aDDDbDHDcHDD0"},
    {"I m m a", "13aDDDbHDHcHDH0"},
    {"P 4", "02bHHHgHHH0"},
    {"P 41", "02bHHDgHHB0"},
    {"P 42", "02bHHHgHHD0"},
    {"P 43", "02bHHDgHHF0"},
    {"I 4", "03aDDDbHHHgHHH0"},
    {"I 41", "03aDDDbDDDgHDB0"},  // 80
    {"P -4", "02bHHHmHHH0"},
    {"I -4", "03aDDDbHHHmHHH0"},
    {"P 4/m", "12bHHHgHHH0"},
    {"P 42/m", "12bHHHgHHD0"},
    {"P 4/n", "03bHHHgDDHhDDH1JBH"},
    {"P 42/n", "03bHHHgDDDhDDD1JJJ"},
    {"I 4/m", "13aDDDbHHHgHHH0"},
    {"I 41/a", "04aDDDbDDDgHDBhHDB1HJK"},
    {"P 4 2 2", "03bHHHgHHHcHHH0"},
    {"P 4 21 2", "03bHHHgDDHcDDH0"},  // 90
    {"P 41 2 2", "03bHHDgHHBcHHH0"},
    {"P 41 21 2", "03bHHDgDDBcDDB0"},
    {"P 42 2 2", "03bHHHgHHDcHHH0"},
    {"P 42 21 2", "03bHHHgDDDcDDD0"},
    {"P 43 2 2", "03bHHDgHHFcHHH0"},
    {"P 43 21 2", "03bHHDgDDFcDDF0"},
    {"I 4 2 2", "04aDDDbHHHgHHHcHHH0"},
    {"I 41 2 2", "04aDDDbDDDgHDBcDHF0"},
    {"P 4 m m", "03bHHHgHHHjHHH0"},
    {"P 4 b m", "03bHHHgHHHjDDH0"},  // 100
    {"P 42 c m", "03bHHHgHHDjHHD0"},
    {"P 42 n m", "03bHHHgDDDjDDD0"},
    {"P 4 c c", "03bHHHgHHHjHHD0"},
    {"P 4 n c", "03bHHHgHHHjDDD0"},
    {"P 42 m c", "03bHHHgHHDjHHH0"},
    {"P 42 b c", "03bHHHgHHDjDDH0"},
    {"I 4 m m", "04aDDDbHHHgHHHjHHH0"},
    {"I 4 c m", "04aDDDbHHHgHHHjHHD0"},
    {"I 41 m d", "04aDDDbDDDgHDBjHHH0"},
    {"I 41 c d", "04aDDDbDDDgHDBjHHD0"},  // 110
    {"P -4 2 m", "03bHHHmHHHcHHH0"},
    {"P -4 2 c", "03bHHHmHHHcHHD0"},
    {"P -4 21 m", "03bHHHmHHHcDDH0"},
    {"P -4 21 c", "03bHHHmHHHcDDD0"},
    {"P -4 m 2", "03bHHHmHHHjHHH0"},
    {"P -4 c 2", "03bHHHmHHHjHHD0"},
    {"P -4 b 2", "03bHHHmHHHjDDH0"},
    {"P -4 n 2", "03bHHHmHHHjDDD0"},
    {"I -4 m 2", "04aDDDbHHHmHHHjHHH0"},
    {"I -4 c 2", "04aDDDbHHHmHHHjHHD0"},  // 120
    {"I -4 2 m", "04aDDDbHHHmHHHcHHH0"},
    {"I -4 2 d", "04aDDDbHHHmHHHcDHF0"},
    {"P 4/m m m", "13bHHHgHHHcHHH0"},
    {"P 4/m c c", "13bHHHgHHHcHHD0"},
    {"P 4/n b m", "04bHHHgHHHcHHHhDDH1JJH"},
    {"P 4/n n c", "04bHHHgHHHcHHHhDDD1JJJ"},
    {"P 4/m b m", "13bHHHgHHHcDDH0"},
    {"P 4/m n c", "13bHHHgHHHcDDD0"},
    {"P 4/n m m", "04bHHHgDDHcDDHhDDH1JBH"},
    {"P 4/n c c", "04bHHHgDDHcDDDhDDH1JBH"},  // 130
    {"P 42/m m c", "13bDDHgDHHcHDD0"},
    {"P 42/m c m", "13bHHHgHHDcHHD0"},
    {"P 42/n b c", "04bHHHgDDDcHHDhDDD1JBJ"},
    {"P 42/n n m", "04bHHHgDDDcHHHhDDD1JBJ"},
    {"P 42/m b c", "13bHHHgHHDcDDH0"},
    {"P 42/m n m", "13bHHHgDDDcDDD0"},
    {"P 42/n m c", "04bHHHgDDDcDDDhDDD1JBJ"},
    {"P 42/n c m", "04bHHHgDDDcDDHhDDD1JBJ"},
    {"I 4/m m m", "14aDDDbHHHgHHHcHHH0"},
    {"I 4/m c m", "14aDDDbHHHgHHHcHHD0"},  // 140
    {"I 41/a m d", "05aDDDbDDDgHDBcDHFhHDB1HBK"},
    {"I 41/a c d", "05aDDDbDDDgHDBcDHBhHDB1HBK"},
    {"P 3", "01nHHH0"},
    {"P 31", "01nHHC0"},
    {"P 32", "01nHHE0"},
    {"R 3", "02aECCnHHH0"},
    {"P -3", "11nHHH0"},
    {"R -3", "12aECCnHHH0"},
    {"P 3 1 2", "02nHHHfHHH0"},
    {"P 3 2 1", "02nHHHeHHH0"},  // 150
    {"P 31 1 2", "02nHHCfHHE0"},
    {"P 31 2 1", "02nHHCeHHH0"},
    {"P 32 1 2", "02nHHEfHHC0"},
    {"P 32 2 1", "02nHHEeHHH0"},
    {"R 3 2", "03aECCnHHHeHHH0"},
    {"P 3 m 1", "02nHHHkHHH0"},
    {"P 3 1 m", "02nHHHlHHH0"},
    {"P 3 c 1", "02nHHHkHHD0"},
    {"P 3 1 c", "02nHHHlHHD0"},
    {"R 3 m", "03aECCnHHHkHHH0"},  // 160
    {"R 3 c", "03aECCnHHHkHHD0"},
    {"P -3 1 m", "12nHHHfHHH0"},
    {"P -3 1 c", "12nHHHfHHD0"},
    {"P -3 m 1", "12nHHHeHHH0"},
    {"P -3 c 1", "12nHHHeHHD0"},
    {"R -3 m", "13aECCnHHHeHHH0"},
    {"R -3 c", "13aECCnHHHeHHD0"},
    {"P 6", "02nHHHbHHH0"},
    {"P 61", "02nHHCbHHD0"},
    {"P 65", "02nHHEbHHD0"},  // 170
    {"P 62", "02nHHEbHHH0"},
    {"P 64", "02nHHCbHHH0"},
    {"P 63", "02nHHHbHHD0"},
    {"P -6", "02nHHHiHHH0"},
    {"P 6/m", "12nHHHbHHH0"},
    {"P 63/m", "12nHHHbHHD0"},
    {"P 6 2 2", "03nHHHbHHHeHHH0"},
    {"P 61 2 2", "03nHHCbHHDeHHC0"},
    {"P 65 2 2", "03nHHEbHHDeHHE0"},
    {"P 62 2 2", "03nHHEbHHHeHHE0"},  // 180
    {"P 64 2 2", "03nHHCbHHHeHHC0"},
    {"P 63 2 2", "03nHHHbHHDeHHH0"},
    {"P 6 m m", "03nHHHbHHHkHHH0"},
    {"P 6 c c", "03nHHHbHHHkHHD0"},
    {"P 63 c m", "03nHHHbHHDkHHD0"},
    {"P 63 m c", "03nHHHbHHDkHHH0"},
    {"P -6 m 2", "03nHHHiHHHkHHH0"},
    {"P -6 c 2", "03nHHHiHHDkHHD0"},
    {"P -6 2 m", "03nHHHiHHHeHHH0"},
    {"P -6 2 c", "03nHHHiHHDeHHH0"},  // 190
    {"P 6/m m m", "13nHHHbHHHeHHH0"},
    {"P 6/m c c", "13nHHHbHHHeHHD0"},
    {"P 63/m c m", "13nHHHbHHDeHHD0"},
    {"P 63/m m c", "13nHHHbHHDeHHH0"},
    {"P 2 3", "03bHHHcHHHdHHH0"},
    {"F 2 3", "05aHDDaDHDbHHHcHHHdHHH0"},
    {"I 2 3", "04aDDDbHHHcHHHdHHH0"},
    {"P 21 3", "03bDHDcHDDdHHH0"},
    {"I 21 3", "04aDDDbDHDcHDDdHHH0"},
    {"P m -3", "13bHHHcHHHdHHH0"},  // 200
    {"P n -3", "04bHHHcHHHdHHHhDDD1JJJ"},
    {"F m -3", "15aHDDaDHDbHHHcHHHdHHH0"},
    {"F d -3", "06aHDDaDHDbHHHcHHHdHHHhBBB1KKK"},
    {"I m -3", "14aDDDbHHHcHHHdHHH0"},
    {"P a -3", "13bDHDcHDDdHHH0"},
    {"I a -3", "14aDDDbDHDcHDDdHHH0"},
    {"P 4 3 2", "04bHHHcHHHdHHHeHHH0"},
    {"P 42 3 2", "04bHHHcHHHdHHHeDDD0"},
    {"F 4 3 2", "06aHDDaDHDbHHHcHHHdHHHeHHH0"},
    {"F 41 3 2", "06aHDDaDHDbHDDcDDHdHHHeFBF0"},  // 210
    {"I 4 3 2", "05aDDDbHHHcHHHdHHHeHHH0"},
    {"P 43 3 2", "04bDHDcHDDdHHHeBFF0"},
    {"P 41 3 2", "04bDHDcHDDdHHHeFBB0"},
    {"I 41 3 2", "05aDDDbDHDcHDDdHHHeFBB0"},
    {"P -4 3 m", "04bHHHcHHHdHHHlHHH0"},
    {"F -4 3 m", "06aHDDaDHDbHHHcHHHdHHHlHHH0"},
    {"I -4 3 m", "05aDDDbHHHcHHHdHHHlHHH0"},
    {"P -4 3 n", "04bHHHcHHHdHHHlDDD0"},
    {"F -4 3 c", "06aHDDaDHDbHHHcHHHdHHHlDDD0"},
    {"I -4 3 d", "05aDDDbDHDcHDDdHHHlBBB0"},  // 220
    {"P m -3 m", "14bHHHcHHHdHHHeHHH0"},
    {"P n -3 n", "14bDDHcDHDdHHHeHHD1JJJ"},
    {"P m -3 n", "14bHHHcHHHdHHHeDDD0"},
    {"P n -3 m", "05bHHHcHHHdHHHeDDDhDDD1JJJ"},
    {"F m -3 m", "16aHDDaDHDbHHHcHHHdHHHeHHH0"},
    {"F m -3 c", "16aHDDaDHDbHHHcHHHdHHHeDDD0"},
    {"F d -3 m", "07aHDDaDHDbHDDcDDHdHHHeFBFhBBB1KKK"},
    {"F d -3 c", "07aHDDaDHDbHDDcDDHdHHHeFBFhFFF1III"},
    {"I m -3 m", "15aDDDbHHHcHHHdHHHeHHH0"},
    {"I a -3 d", "15aDDDbDHDcHDDdHHHeFBB0"},  // 230
};

struct CorrectedEntry {
    int nNumber;
    const char* pszCode;
};

// Entries whose tabulated code does not generate the group of the symbol; the header gives the source.
constexpr CorrectedEntry g_aCorrected[] = {
    {39, "03aHDDbHHHjHDH0"},
    {131, "12gHHDcHHH0"},
};

bool isSpaceGroupNumber(int nNumber)
{
    return nNumber >= 1 && nNumber <= 230;
}

// Brings one translation component into [0, 1). One step each way is enough, as the components of a product
// of reduced operations lie between -1 and 2.
double reducedTranslation(double df)
{
    if (df < 0)
        df += 1;
    if (df >= 1)
        df -= 1;
    if (std::fabs(df - 1) < 1e-6)
        df = 0;
    return df;
}

// Rotation elements are -1, 0 or 1 and translations are multiples of 1/24 in all tabulated groups, so an
// operation fits in one whole number: nine digits of base 3, three of base 24. Two operations have the same
// number exactly if their elements agree within 1e-6, the translations up to a lattice vector.
struct ExactOp {
    int nRotation[9];
    int nTranslation[3];  // 24ths, 0 to 23

    std::uint64_t key() const
    {
        std::uint64_t nKey = 0;
        for (int n : nRotation)
            nKey = nKey * 3 + std::uint64_t(n + 1);
        for (int n : nTranslation)
            nKey = nKey * 24 + std::uint64_t(n);
        return nKey;
    }
};

int moduloPositive(int n, int nModulus)
{
    const int nRest = n % nModulus;
    return nRest < 0 ? nRest + nModulus : nRest;
}

ExactOp exactForm(const CSymOp& op)
{
    ExactOp exact;
    for (int n = 0; n < 9; ++n)
        exact.nRotation[n] = int(std::lround(op.dfRotation[n]));
    for (int n = 0; n < 3; ++n)
        exact.nTranslation[n] = moduloPositive(int(std::lround(op.dfTranslation[n] * 24)), 24);
    return exact;
}

ExactOp multiplied(const ExactOp& first, const ExactOp& second)
{
    ExactOp product;
    for (int i = 0; i < 3; ++i) {
        const int* pRow = first.nRotation + 3 * i;
        for (int j = 0; j < 3; ++j)
            product.nRotation[3 * i + j] = pRow[0] * second.nRotation[j] + pRow[1] * second.nRotation[3 + j] +
                                           pRow[2] * second.nRotation[6 + j];
        const int nSum = pRow[0] * second.nTranslation[0] + pRow[1] * second.nTranslation[1] +
                         pRow[2] * second.nTranslation[2] + first.nTranslation[i];
        product.nTranslation[i] = moduloPositive(nSum, 24);
    }
    return product;
}

// The list under closing, with the exact form of each operation beside it.
class ClosingList {
public:
    explicit ClosingList(const std::vector<CSymOp>& vecGenerator) : m_vecOperation(vecGenerator)
    {
        m_vecOperation.reserve(192);
        m_setKey.reserve(512);
        for (const CSymOp& op : vecGenerator) {
            m_vecExact.push_back(exactForm(op));
            m_setKey.insert(m_vecExact.back().key());
        }
    }

    std::size_t size() const { return m_vecOperation.size(); }

    // Appends the product of two members if it is new.
    void addProduct(std::size_t nFirst, std::size_t nSecond)
    {
        const ExactOp product = multiplied(m_vecExact[nFirst], m_vecExact[nSecond]);
        if (!m_setKey.insert(product.key()).second)
            return;
        m_vecOperation.push_back(::multiplied(m_vecOperation[nFirst], m_vecOperation[nSecond]));
        m_vecExact.push_back(product);
    }

    std::vector<CSymOp> takeOperations() { return std::move(m_vecOperation); }

private:
    std::vector<CSymOp> m_vecOperation;
    std::vector<ExactOp> m_vecExact;
    std::unordered_set<std::uint64_t> m_setKey;
};

}  // namespace

CSymTable::CSymTable()
    : vecPoint{
          {1, 0, 0, 0, 1, 0, 0, 0, 1},     // a: identity
          {-1, 0, 0, 0, -1, 0, 0, 0, 1},   // b: 2 along z
          {-1, 0, 0, 0, 1, 0, 0, 0, -1},   // c: 2 along y
          {0, 0, 1, 1, 0, 0, 0, 1, 0},     // d: 3 along [111]
          {0, 1, 0, 1, 0, 0, 0, 0, -1},    // e: 2 along [110]
          {0, -1, 0, -1, 0, 0, 0, 0, -1},  // f: 2 along [1-10]
          {0, -1, 0, 1, 0, 0, 0, 0, 1},    // g: 4 along z
          {-1, 0, 0, 0, -1, 0, 0, 0, -1},  // h: inversion
          {1, 0, 0, 0, 1, 0, 0, 0, -1},    // i: mirror normal to z
          {1, 0, 0, 0, -1, 0, 0, 0, 1},    // j: mirror normal to y
          {0, -1, 0, -1, 0, 0, 0, 0, 1},   // k: mirror normal to [110]
          {0, 1, 0, 1, 0, 0, 0, 0, 1},     // l: mirror normal to [1-10]
          {0, 1, 0, -1, 0, 0, 0, 0, -1},   // m: -4 along z
          {0, -1, 0, 1, -1, 0, 0, 0, 1},   // n: 3 along z, hexagonal axes
      },
      vecTranslation{1.0 / 6, 0.25, 1.0 / 3, 0.5, 2.0 / 3, 0.75, 5.0 / 6, 0.0, -0.375, -0.25, -0.125}
{}

CSymOp CSymTable::operation(int nPoint, int nX, int nY, int nZ) const
{
    if (nPoint < 0 || nPoint >= int(vecPoint.size()))
        throw std::out_of_range("Point symmetry index out of range!");
    for (int nIndex : {nX, nY, nZ})
        if (nIndex < 0 || nIndex >= int(vecTranslation.size()))
            throw std::out_of_range("Translation vector index out of range!");
    CSymOp op;
    for (int n = 0; n < 9; ++n)
        op.dfRotation[n] = vecPoint[std::size_t(nPoint)][std::size_t(n)];
    op.dfTranslation[0] = vecTranslation[std::size_t(nX)];
    op.dfTranslation[1] = vecTranslation[std::size_t(nY)];
    op.dfTranslation[2] = vecTranslation[std::size_t(nZ)];
    return op;
}

std::string spaceGroupSymbol(int nNumber)
{
    return isSpaceGroupNumber(nNumber) ? g_aSpaceGroup[nNumber - 1].szSymbol : std::string();
}

std::string spaceGroupCode(int nNumber)
{
    return isSpaceGroupNumber(nNumber) ? g_aSpaceGroup[nNumber - 1].szCode : std::string();
}

std::string correctedSpaceGroupCode(int nNumber)
{
    for (const CorrectedEntry& entry : g_aCorrected)
        if (entry.nNumber == nNumber)
            return entry.pszCode;
    return spaceGroupCode(nNumber);
}

int laueGroupNumber(int nNumber)
{
    if (!isSpaceGroupNumber(nNumber))
        return -1;
    // The two classes of trigonal groups alternate from 149 to 167.
    if (nNumber >= 149 && nNumber <= 167) {
        for (int n31m : {149, 151, 153, 157, 159, 162, 163})
            if (nNumber == n31m)
                return 162;
        return 164;
    }
    static constexpr int aRange[][2] = {// last group of the range, Laue group
                                        {2, 2},     {15, 10},   {74, 47},   {88, 83},   {142, 123},
                                        {148, 147}, {176, 175}, {194, 191}, {206, 200}, {230, 221}};
    for (const auto& range : aRange)
        if (nNumber <= range[0])
            return range[1];
    return -1;
}

std::vector<CSymOp> generatorsOfCode(const std::string& strCode)
{
    static const CSymTable table;
    constexpr int nNoShift = 'H' - 'A';
    std::vector<CSymOp> vecGenerator{table.operation(0, nNoShift, nNoShift, nNoShift)};
    if (strCode.empty())
        return vecGenerator;
    if (strCode[0] == '1')
        vecGenerator.push_back(table.operation('h' - 'a', nNoShift, nNoShift, nNoShift));
    const int nCount = strCode[1] - '0';
    for (int i = 0; i < nCount; ++i) {
        const char* p = strCode.data() + 2 + 4 * i;
        vecGenerator.push_back(table.operation(p[0] - 'a', p[1] - 'A', p[2] - 'A', p[3] - 'A'));
    }
    return vecGenerator;
}

std::vector<CSymOp> generatorsOfSpaceGroup(int nNumber)
{
    return generatorsOfCode(spaceGroupCode(nNumber));
}

CSymOp multiplied(const CSymOp& first, const CSymOp& second)
{
    CSymOp product;
    for (int i = 0; i < 3; ++i) {
        const double* pRow = first.dfRotation + 3 * i;
        for (int j = 0; j < 3; ++j)
            product.dfRotation[3 * i + j] = pRow[0] * second.dfRotation[j] +
                                            pRow[1] * second.dfRotation[3 + j] +
                                            pRow[2] * second.dfRotation[6 + j];
        product.dfTranslation[i] = reducedTranslation(
            pRow[0] * second.dfTranslation[0] + pRow[1] * second.dfTranslation[1] +
            pRow[2] * second.dfTranslation[2] + first.dfTranslation[i]);
    }
    return product;
}

std::vector<CSymOp> operationsOfSpaceGroup(int nNumber)
{
    ClosingList list(generatorsOfCode(correctedSpaceGroupCode(nNumber)));
    // Pairs of an earlier pass have their products in the list, so a later pass only visits the pairs
    // whose second member came after the first one's turn.
    std::vector<std::size_t> vecVisited;  // per i, the pairs (i, j) with j below this are done
    for (std::size_t nBefore = 0; nBefore != list.size();) {
        nBefore = list.size();
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (i == vecVisited.size())
                vecVisited.push_back(i);
            std::size_t j = vecVisited[i];
            for (; j < list.size(); ++j) {
                list.addProduct(i, j);
                list.addProduct(j, i);
            }
            vecVisited[i] = j;
        }
    }
    return list.takeOperations();
}

bool CSpaceGroup::setSpaceGroup(int nNewNumber)
{
    if (!isSpaceGroupNumber(nNewNumber))
        return false;
    if (nNewNumber == nNumber)
        return true;
    vecOperation = operationsOfSpaceGroup(nNewNumber);
    nNumber = nNewNumber;
    return true;
}

bool CSpaceGroup::isAbsent(int h, int k, int l) const
{
    const double dfH = h, dfK = k, dfL = l;
    for (const CSymOp& op : vecOperation) {
        const double* t = op.dfTranslation;
        if (t[0] == 0 && t[1] == 0 && t[2] == 0)
            continue;
        // The elements are whole, so the products are exact and truncation could change nothing.
        const double* r = op.dfRotation;
        if (dfH * r[0] + dfK * r[3] + dfL * r[6] != dfH || dfH * r[1] + dfK * r[4] + dfL * r[7] != dfK ||
            dfH * r[2] + dfK * r[5] + dfL * r[8] != dfL)
            continue;
        const double dfPhase = dfH * t[0] + dfK * t[1] + dfL * t[2];
        if (std::fabs(dfPhase - std::round(dfPhase)) > 1e-7)
            return true;
    }
    return false;
}
