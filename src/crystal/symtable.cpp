#include "crystal/symtable.h"

#include <stdexcept>

namespace tessera {

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
    if (nPoint < 0 || nPoint >= int(vecPoint.size())) {
        throw std::out_of_range("Point symmetry index out of range!");
    }
    for (int nIndex : {nX, nY, nZ}) {
        if (nIndex < 0 || nIndex >= int(vecTranslation.size())) {
            throw std::out_of_range("Translation vector index out of range!");
        }
    }
    CSymOp op;
    for (int n = 0; n < 9; ++n) {
        op.dfRotation[n] = vecPoint[nPoint][n];
    }
    op.dfTranslation[0] = vecTranslation[nX];
    op.dfTranslation[1] = vecTranslation[nY];
    op.dfTranslation[2] = vecTranslation[nZ];
    return op;
}

}  // namespace tessera
