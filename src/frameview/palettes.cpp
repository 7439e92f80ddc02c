#include "frameview/palettes.h"

#include <array>

namespace tessera {

namespace {

std::array<QVector<QRgb>, 4> makePalettes()
{
    std::array<QVector<QRgb>, 4> aPalette;
    for (QVector<QRgb>& palette : aPalette) {
        palette.resize(256);
    }
    for (int i = 0; i < 256; ++i) {
        const int k = 4 * (i % 64);
        const QRgb aRamp[4] = {qRgb(0, k, 255), qRgb(0, 255, 255 - k), qRgb(k, 255, 0),
                               qRgb(255, 255 - k, 0)};
        aPalette[0][i] = qRgb(i, i, i);
        aPalette[1][i] = qRgb(255 - i, 255 - i, 255 - i);
        aPalette[2][i] = aRamp[i / 64];
        aPalette[3][255 - i] = aRamp[i / 64];
    }
    return aPalette;
}

const std::array<QVector<QRgb>, 4> g_aPalette = makePalettes();

}  // namespace

const QVector<QRgb>* paletteTable(int nIndex)
{
    return nIndex >= 0 && nIndex < int(g_aPalette.size()) ? &g_aPalette[nIndex] : nullptr;
}

QVector<QRgb> overlayColorTable(int nAlpha)
{
    QVector<QRgb> vecColor(256, 0);
    for (int i = 1; i < 254; ++i) {
        vecColor[i] = qRgba(0, i, 0, nAlpha);
    }
    vecColor[254] = 0xFFFF0000;
    vecColor[255] = 0xFF00FFFF;
    return vecColor;
}

}  // namespace tessera
