#include "crystal/spacegrouptable.h"

namespace tessera {

namespace {

struct SpaceGroupEntry {
    char szSymbol[12];
    char szCode[40];
};

// Position n - 1 holds space group n. The codes are the explicit symbols of Shmueli, International Tables
// for Crystallography, Vol. B, with the translations lettered A to K in their published order.
constexpr SpaceGroupEntry g_aSpaceGroup[g_nSpaceGroups] = {
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

}  // namespace

bool isSpaceGroupNumber(int nNumber)
{
    return nNumber >= 1 && nNumber <= g_nSpaceGroups;
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
    for (const CorrectedEntry& entry : g_aCorrected) {
        if (entry.nNumber == nNumber) {
            return entry.pszCode;
        }
    }
    return spaceGroupCode(nNumber);
}

int laueGroupNumber(int nNumber)
{
    if (!isSpaceGroupNumber(nNumber)) {
        return -1;
    }
    // The two classes of trigonal groups alternate from 149 to 167.
    if (nNumber >= 149 && nNumber <= 167) {
        for (int n31m : {149, 151, 153, 157, 159, 162, 163}) {
            if (nNumber == n31m) {
                return 162;
            }
        }
        return 164;
    }
    static constexpr int aRange[][2] = {// last group of the range, Laue group
                                        {2, 2},     {15, 10},   {74, 47},   {88, 83},   {142, 123},
                                        {148, 147}, {176, 175}, {194, 191}, {206, 200}, {230, 221}};
    for (const auto& range : aRange) {
        if (nNumber <= range[0]) {
            return range[1];
        }
    }
    return -1;
}

}  // namespace tessera
