#include "imagefiles/mrcheader.h"

#include "imagefiles/mrcextended.h"
#include "imagefiles/mrcfile.h"
#include "imagefiles/mrclayout.h"
#include "records/regularfile.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace tessera {

namespace {

MrcExtended extendedOf(const uint8_t* pHeader, const MrcLayout& layout)
{
    const auto count = [&](int nOffset) {  // numbers of 16 bits
        return int(layout.bBigEndian ? qFromBigEndian<qint16>(pHeader + nOffset)
                                     : qFromLittleEndian<qint16>(pHeader + nOffset));
    };
    MrcExtended extended;
    extended.bytesKind = QByteArray(reinterpret_cast<const char*>(pHeader) + 104, 4);
    extended.nBytes = layout.nExtended;
    extended.nIntegers = count(128);
    extended.nReals = count(130);
    extended.nSections = layout.nZ;
    extended.bBigEndian = layout.bBigEndian;
    return extended;
}

void tellGuesses(const MrcLayout& layout, const MrcSections& sections, FrameHeader& header)
{
    if (layout.bTopDown) {
        header.listDoubt += QStringLiteral(
            "The first row of the file is taken as the top of the image, as files "
            "of this kind have it; in other MRC files it is the bottom");
    }
    if (layout.bSignGuessed) {
        header.listDoubt += layout.bUnsigned
                                ? QStringLiteral("The pixels of 8 bits are taken as counts from 0 to 255")
                                : QStringLiteral("The pixels of 8 bits are taken as counts from -128 to 127");
    }
    if (sections.nInFile < layout.nZ) {
        header.listDoubt += QStringLiteral("The file is truncated: it has %1 of %2 images")
                                .arg(sections.nInFile)
                                .arg(layout.nZ);
    }
}

}  // namespace

bool readMrcFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason)
{
    const size_t nFormer = vecImage.size();
    return readMrcSections(strFileName, nFirst, nMaxImages, vecImage, strReason) == 1 &&
           (nFirst == 0 || vecImage.size() > nFormer);
}

FrameHeader readMrcHeader(const QString& strFileName, int nImage)
{
    FrameHeader header;
    QFile file(strFileName);
    QString strReason;
    uint8_t aHeader[g_nMrcHeaderSize];
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason) ||
        file.read(reinterpret_cast<char*>(aHeader), g_nMrcHeaderSize) != qint64(g_nMrcHeaderSize)) {
        return header;
    }
    const uint64_t nFileSize = std::max(static_cast<uint64_t>(file.size()),
                                        static_cast<uint64_t>(g_nMrcHeaderSize));
    const MrcLayout layout = mrcLayout(aHeader, nFileSize);
    const MrcSections sections = mrcSections(layout, nFileSize, 0, std::numeric_limits<int>::max(),
                                             strReason);
    if (nImage < 0 || nImage >= sections.nCount) {
        return header;
    }
    header.size = QSize(layout.nWidth, layout.nY);
    header.nImages = static_cast<int>(sections.nCount);
    tellMrcExtended(file, extendedOf(aHeader, layout), nImage, header);
    tellGuesses(layout, sections, header);
    return header;
}

}  // namespace tessera
