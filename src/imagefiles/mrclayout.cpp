#include "imagefiles/mrclayout.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace tessera {

namespace {

constexpr int64_t g_nImagesTrusted = 65536;  ///< up to this many sections are read even if they are tiny
constexpr uint64_t g_nImageOverhead = 96;    ///< memory of an image besides its pixels, bytes

/// The fields of a header in one byte order.
class CFields {
public:
    CFields(const uint8_t* pHeader, bool bBigEndian) : m_pHeader(pHeader), m_bBigEndian(bBigEndian) {}

    int32_t integer(int nOffset) const
    {
        return m_bBigEndian ? qFromBigEndian<int32_t>(m_pHeader + nOffset)
                            : qFromLittleEndian<int32_t>(m_pHeader + nOffset);
    }
    float real(int nOffset) const
    {
        const int32_t nBits = integer(nOffset);
        float f;
        std::memcpy(&f, &nBits, sizeof(f));
        return f;
    }
    bool hasText(int nOffset, const char* pText) const
    {
        return std::memcmp(m_pHeader + nOffset, pText, std::strlen(pText)) == 0;
    }
    bool isPossible() const
    {
        constexpr int32_t nMost = 1 << 20;
        const int32_t anMode[] = {0, 1, 2, 3, 4, 6, 12, 16, 101};
        const auto isSize = [&](int nOffset) { return integer(nOffset) > 0 && integer(nOffset) <= nMost; };
        return std::find(std::begin(anMode), std::end(anMode), integer(12)) != std::end(anMode) &&
               isSize(0) && isSize(4) && isSize(8);
    }
    /// Whether a flag of IMOD is set; false in files of other programs.
    bool hasImodFlag(int nFlag) const { return hasImodStamp() && (integer(156) & nFlag) != 0; }
    bool hasImodStamp() const { return integer(152) == 1146047817; }

private:
    const uint8_t* m_pHeader;
    bool m_bBigEndian;
};

bool isBigEndian(const uint8_t* pHeader)
{
    const bool bStamp = pHeader[212] == 0x11 && pHeader[213] == 0x11;
    return CFields(pHeader, bStamp).isPossible() || !CFields(pHeader, !bStamp).isPossible() ? bStamp
                                                                                            : !bStamp;
}

/// Decides whether MODE 0 is signed, as it is in MRC2014, or unsigned, as in much older software. The flag
/// of IMOD tells it, or else the extreme values. Where these are impossible, MRC2014 is followed.
void decideSign(const CFields& fields, MrcLayout& layout)
{
    if (fields.hasImodStamp()) {
        layout.bUnsigned = !fields.hasImodFlag(1);
        return;
    }
    const float fMin = fields.real(76), fMax = fields.real(80);
    const bool bTold = fMin < fMax && fMin >= -128 && fMax <= 255;
    layout.bSignGuessed = !bTold || (fMin < 0 && fMax >= 128);
    layout.bUnsigned = bTold && fMax >= 128 && fMax - 127 > -fMin;
}

/// Whether a program has halved NX and stored two pixels in each byte of MODE 0.
bool isPackedMode0(const uint8_t* pHeader, const CFields& fields)
{
    const char* const pMark = "4 bits packed";
    const uint8_t* pLabels = pHeader + 224;
    const uint8_t* pEnd = pHeader + g_nMrcHeaderSize;
    return fields.hasImodFlag(32) || std::search(pLabels, pEnd, pMark, pMark + std::strlen(pMark)) != pEnd;
}

/// The bytes per pixel; 0 for a mode that is not read, or whose pixels are no whole bytes.
size_t pixelSize(int nMode)
{
    switch (nMode) {
        case 0:
            return 1;
        case 1:
        case 6:
        case 12:
            return 2;
        case 2:
            return 4;
        default:
            return 0;
    }
}

/// The name of a mode that is not read; empty for an unknown mode.
QString pixelName(int nMode)
{
    switch (nMode) {
        case 3:
        case 4:
            return QStringLiteral(" (complex)");
        case 16:
            return QStringLiteral(" (colour)");
        default:
            return {};
    }
}

/// The length of the extended header; 0 if the file is shorter than NSYMBT claims.
uint64_t extendedSize(const CFields& fields, const MrcLayout& layout, uint64_t nFileSize)
{
    const int32_t nTold = fields.integer(92);
    if (nTold <= 0 || static_cast<uint64_t>(nTold) > nFileSize - g_nMrcHeaderSize) {
        return 0;
    }
    for (const char* pKind : {"FEI", "SERI", "AGAR", "MRCO", "CCP4", "HDF5"}) {
        if (fields.hasText(104, pKind)) {
            return static_cast<uint64_t>(nTold);
        }
    }
    const bool bSizes = layout.nX > 0 && layout.nY > 0 && layout.nZ > 0;
    const uint64_t nRows = bSizes ? static_cast<uint64_t>(layout.nY) * static_cast<uint64_t>(layout.nZ) : 0;
    const uint64_t nRoom = nFileSize - g_nMrcHeaderSize;
    // Checked by division, as the product of all sizes may overflow.
    const bool bWithout = nRows > 0 && layout.rowBytes() > 0 && nRoom % nRows == 0 &&
                          nRoom / nRows == layout.rowBytes();
    return bWithout ? 0 : static_cast<uint64_t>(nTold);
}

}  // namespace

size_t MrcLayout::rowBytes() const
{
    const size_t nColumns = static_cast<size_t>(std::max(nX, 0));
    return nMode == 101 ? nColumns / 2 + nColumns % 2 : nColumns * pixelSize(nMode);
}

MrcLayout mrcLayout(const uint8_t* pHeader, uint64_t nFileSize)
{
    MrcLayout layout;
    layout.bBigEndian = isBigEndian(pHeader);
    const CFields fields(pHeader, layout.bBigEndian);
    layout.nX = fields.integer(0);
    layout.nY = fields.integer(4);
    layout.nZ = fields.integer(8);
    layout.nMode = fields.integer(12);
    layout.nWidth = layout.nX;
    layout.bPacked = layout.nMode == 101;
    if (layout.nMode == 0) {
        layout.bPacked = isPackedMode0(pHeader, fields) && layout.nX <= std::numeric_limits<int>::max() / 2;
        if (layout.bPacked) {
            layout.nWidth = 2 * layout.nX;
        } else {
            decideSign(fields, layout);
        }
    }
    layout.nExtended = extendedSize(fields, layout, nFileSize);
    const bool bInvertedAxis = fields.integer(64) == 1 && fields.integer(68) == -2 && fields.integer(72) == 3;
    const bool bFei = fields.hasText(104, "FEI") && fields.integer(108) == 20140 && !fields.hasImodStamp();
    layout.bTopDown = bInvertedAxis || bFei;
    return layout;
}

MrcSections mrcSections(const MrcLayout& layout, uint64_t nFileSize, int nFirst, int nMaxSections,
                        QString& strReason)
{
    MrcSections sections;
    if (pixelSize(layout.nMode) == 0 && layout.nMode != 101) {
        strReason = QStringLiteral("MODE %1%2 is not read").arg(layout.nMode).arg(pixelName(layout.nMode));
        return sections;
    }
    if (layout.nZ < 1) {
        strReason = QStringLiteral("%1 sections").arg(layout.nZ);
        return sections;
    }
    if (layout.nX < 1 || layout.nY < 1) {
        strReason = QStringLiteral("%1 x %2 pixels").arg(layout.nX).arg(layout.nY);
        return sections;
    }
    if (static_cast<int64_t>(layout.nWidth) * layout.nY > std::numeric_limits<int>::max()) {
        strReason = QStringLiteral("%1 x %2 pixels; fewer than 2147483648 can be read")
                        .arg(layout.nWidth)
                        .arg(layout.nY);
        return sections;
    }
    if (nFirst >= layout.nZ) {
        strReason = QStringLiteral("image %1 of %2").arg(qint64(nFirst) + 1).arg(layout.nZ);
        return sections;
    }
    sections.nBytes = layout.rowBytes() * static_cast<size_t>(layout.nY);
    const int64_t nEnd = std::min<int64_t>(layout.nZ, int64_t(nFirst) + std::max(nMaxSections, 0));
    const int64_t nWhole = static_cast<int64_t>((nFileSize - layout.begin()) / sections.nBytes);
    sections.nInFile = std::min<int64_t>(layout.nZ, nWhole);
    sections.nCount = std::max<int64_t>(std::min(nEnd, nWhole) - nFirst, 0);
    if (nWhole < nEnd) {
        strReason = QStringLiteral("truncated: %1 bytes hold %2 of %3 sections of %4 x %5 pixels")
                        .arg(nFileSize)
                        .arg(nWhole)
                        .arg(layout.nZ)
                        .arg(layout.nWidth)
                        .arg(layout.nY);
    }
    if (sections.nCount > g_nImagesTrusted &&
        static_cast<uint64_t>(sections.nCount) * g_nImageOverhead > 4 * nFileSize) {
        strReason = QStringLiteral("%1 sections of %2 bytes").arg(sections.nCount).arg(sections.nBytes);
        sections.nCount = 0;
    }
    return sections;
}

}  // namespace tessera
