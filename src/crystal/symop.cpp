#include "crystal/symop.h"

#include <cmath>

namespace tessera {

namespace {

// Brings one translation component into [0, 1). One step each way is enough, as the components of a product
// of reduced operations lie between -1 and 2.
double reducedTranslation(double df)
{
    if (df < 0) {
        df += 1;
    }
    if (df >= 1) {
        df -= 1;
    }
    if (std::fabs(df - 1) < 1e-6) {
        df = 0;
    }
    return df;
}

}  // namespace

CSymOp multiplied(const CSymOp& first, const CSymOp& second)
{
    CSymOp product;
    for (int i = 0; i < 3; ++i) {
        const double* pRow = first.dfRotation + 3 * i;
        for (int j = 0; j < 3; ++j) {
            product.dfRotation[3 * i + j] = pRow[0] * second.dfRotation[j] +
                                            pRow[1] * second.dfRotation[3 + j] +
                                            pRow[2] * second.dfRotation[6 + j];
        }
        product.dfTranslation[i] = reducedTranslation(
            pRow[0] * second.dfTranslation[0] + pRow[1] * second.dfTranslation[1] +
            pRow[2] * second.dfTranslation[2] + first.dfTranslation[i]);
    }
    return product;
}

}  // namespace tessera
