#include "crystal/spacegroupoperations.h"

#include "crystal/spacegrouptable.h"
#include "crystal/symtable.h"

#include <cmath>
#include <cstdint>
#include <unordered_set>
#include <utility>

namespace tessera {

namespace {

// Rotation elements are -1, 0 or 1 and translations are multiples of 1/24 in all tabulated groups, so an
// operation fits in one whole number: nine digits of base 3, three of base 24. Two operations have the same
// number exactly if their elements agree within 1e-6, the translations up to a lattice vector.
struct ExactOp {
    int nRotation[9];
    int nTranslation[3];  // 24ths, 0 to 23

    std::uint64_t key() const
    {
        std::uint64_t nKey = 0;
        for (int n : nRotation) {
            nKey = nKey * 3 + std::uint64_t(n + 1);
        }
        for (int n : nTranslation) {
            nKey = nKey * 24 + std::uint64_t(n);
        }
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
    for (int n = 0; n < 9; ++n) {
        exact.nRotation[n] = int(std::lround(op.dfRotation[n]));
    }
    for (int n = 0; n < 3; ++n) {
        exact.nTranslation[n] = moduloPositive(int(std::lround(op.dfTranslation[n] * 24)), 24);
    }
    return exact;
}

ExactOp multiplied(const ExactOp& first, const ExactOp& second)
{
    ExactOp product;
    for (int i = 0; i < 3; ++i) {
        const int* pRow = first.nRotation + 3 * i;
        for (int j = 0; j < 3; ++j) {
            product.nRotation[3 * i + j] = pRow[0] * second.nRotation[j] + pRow[1] * second.nRotation[3 + j] +
                                           pRow[2] * second.nRotation[6 + j];
        }
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
        if (!m_setKey.insert(product.key()).second) {
            return;
        }
        m_vecOperation.push_back(tessera::multiplied(m_vecOperation[nFirst], m_vecOperation[nSecond]));
        m_vecExact.push_back(product);
    }

    std::vector<CSymOp> takeOperations() { return std::move(m_vecOperation); }

private:
    std::vector<CSymOp> m_vecOperation;
    std::vector<ExactOp> m_vecExact;
    std::unordered_set<std::uint64_t> m_setKey;
};

}  // namespace

std::vector<CSymOp> generatorsOfCode(const std::string& strCode)
{
    static const CSymTable table;
    constexpr int nNoShift = 'H' - 'A';
    std::vector<CSymOp> vecGenerator{table.operation(0, nNoShift, nNoShift, nNoShift)};
    if (strCode.empty()) {
        return vecGenerator;
    }
    if (strCode[0] == '1') {
        vecGenerator.push_back(table.operation('h' - 'a', nNoShift, nNoShift, nNoShift));
    }
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

std::vector<CSymOp> operationsOfSpaceGroup(int nNumber)
{
    ClosingList list(generatorsOfCode(correctedSpaceGroupCode(nNumber)));
    // Pairs of an earlier pass have their products in the list, so a later pass only visits the pairs
    // whose second member came after the first one's turn.
    std::vector<std::size_t> vecVisited;  // per i, the pairs (i, j) with j below this are done
    for (std::size_t nBefore = 0; nBefore != list.size();) {
        nBefore = list.size();
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (i == vecVisited.size()) {
                vecVisited.push_back(i);
            }
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

}  // namespace tessera
