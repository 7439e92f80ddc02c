#include "imagefiles/smvreader.h"

#include "imagefiles/plainpixels.h"
#include "imagefiles/smvheader.h"
#include "imagefiles/smvtelling.h"
#include "records/regularfile.h"

#include <QFile>

#include <memory>
#include <utility>

namespace tessera {

namespace {

std::optional<SmvHeader> openSmv(QFile& file, QString& strReason)
{
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        return {};
    }
    return readSmvHeaderText(file, strReason);
}

}  // namespace

bool readSmvFrames(const QString& strFileName, int nFirst, int, ImageList& vecImage, QString& strReason)
{
    strReason.clear();
    if (nFirst > 0) {
        strReason = QStringLiteral("image %1 of 1").arg(qint64(nFirst) + 1);
        return false;
    }
    QFile file(strFileName);
    const std::optional<SmvHeader> smv = openSmv(file, strReason);
    if (!smv || !holdsSmvPixels(*smv, file.size(), strReason)) {
        return false;
    }
    std::unique_ptr<CImgObj<float>> pImage = readPlainPixels(file, smv->pixels, strReason);
    if (!pImage) {
        return false;
    }
    const int nPedestal = smvPedestal(*smv);
    if (nPedestal > 0) {
        float* pf = pImage->Data();
        for (qint64 n = smv->pixels.nWidth * smv->pixels.nHeight; n > 0; --n) {
            *pf++ -= static_cast<float>(nPedestal);
        }
    }
    vecImage.push_back(std::move(pImage));
    return true;
}

FrameHeader readSmvHeader(const QString& strFileName, int nImage)
{
    QFile file(strFileName);
    QString strReason;
    const std::optional<SmvHeader> smv = nImage == 0 ? openSmv(file, strReason) : std::nullopt;
    if (!smv) {
        return {};
    }
    FrameHeader header = frameHeaderOfSmv(*smv);
    if (holdsSmvPixels(*smv, file.size(), strReason)) {
        header.size = QSize(static_cast<int>(smv->pixels.nWidth), static_cast<int>(smv->pixels.nHeight));
    }
    return header;
}

}  // namespace tessera
