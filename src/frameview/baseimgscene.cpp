#include "frameview/baseimgscene.h"

#include "frameview/palettes.h"
#include "frameview/textitem.h"
#include "imaging/contrast.h"
#include "imaging/logcontrast.h"

#include <QCoreApplication>
#include <QGraphicsPixmapItem>
#include <QGraphicsSceneMouseEvent>
#include <QImage>
#include <QPen>
#include <QPixmap>
#include <QProgressDialog>

namespace tessera {

namespace {

// The picture of display bytes; null for an empty image. The bytes are read in place: their rows follow
// one another without padding, which QImage would otherwise expect for widths that are no multiple of 4.
QPixmap pixmapOf(const CImgObj<unsigned char>& image, const QVector<QRgb>& vecColor)
{
    if (!image.Data()) {
        return {};
    }
    QImage picture(image.Data(), image.Width(), image.Height(), image.Width(), QImage::Format_Indexed8);
    picture.setColorTable(vecColor);
    return QPixmap::fromImage(picture);
}

bool isIndexOf(const ByteImageList& vecImage, int nIndex)
{
    return nIndex >= 0 && nIndex < int(vecImage.size());
}

}  // namespace

BaseImgScene::BaseImgScene(QWidget* pParent)
    : QGraphicsScene(pParent),
      m_pParentWidget(pParent),
      m_pPalette(paletteTable(0)),
      m_vecOverlayColor(overlayColorTable(m_nOverlayAlpha)),
      m_pImageItem(new QGraphicsPixmapItem),
      m_pOverlayItem(new QGraphicsPixmapItem),
      m_pLabelItem(new TextItem)
{
    // Nothing asks for the outline of the picture: without this it would be traced pixel by pixel.
    m_pImageItem->setShapeMode(QGraphicsPixmapItem::BoundingRectShape);
    m_pOverlayItem->setShapeMode(QGraphicsPixmapItem::BoundingRectShape);
    m_pOverlayItem->setVisible(false);
    addItem(m_pImageItem);
    addItem(m_pOverlayItem);

    m_pLabelItem->setBrushColor(Qt::green);
    m_pLabelItem->setPen(QPen(Qt::black, 0.2));
    m_pLabelItem->setFontSize(5.0);
    m_pLabelItem->setZValue(200.0);
    m_pLabelItem->setVisible(false);
    addItem(m_pLabelItem);
}

BaseImgScene::~BaseImgScene() = default;

int BaseImgScene::setPalette(int nPalette)
{
    const QVector<QRgb>* pPalette = paletteTable(nPalette);
    if (nPalette != m_nPalette && pPalette) {
        m_nPalette = nPalette;
        m_pPalette = pPalette;
        updateScene();
    }
    return m_nPalette;
}

QSize BaseImgScene::imageSize() const
{
    if (!isIndexOf(m_vecImage, m_nCurrentIndex)) {
        return {-1, -1};
    }
    const auto& image = *m_vecImage[m_nCurrentIndex];
    return {image.Width(), image.Height()};
}

void BaseImgScene::setLabel(int x, int y, const QString& strText)
{
    m_pLabelItem->setText(strText);
    m_pLabelItem->setPos(x, y);
}

void BaseImgScene::setLabelVisible(bool bVisible)
{
    m_bLabelVisible = bVisible;
    m_pLabelItem->setVisible(bVisible);
}

bool BaseImgScene::setOverlayAlpha(int nAlpha)
{
    if (nAlpha < 0 || nAlpha > 255) {
        return false;
    }
    m_nOverlayAlpha = nAlpha;
    m_vecOverlayColor = overlayColorTable(nAlpha);
    updateOverlay();
    return true;
}

void BaseImgScene::clearImages()
{
    ++m_nConversion;
    m_vecImage.clear();
    m_nCurrentIndex = -1;
}

void BaseImgScene::addImage(const CImgObj<unsigned char>& image)
{
    auto pImage = std::make_unique<CImgObj<unsigned char>>();
    pImage->Copy(image);
    appendImage(std::move(pImage));
}

void BaseImgScene::appendImage(std::unique_ptr<CImgObj<unsigned char>> pImage)
{
    m_vecImage.push_back(std::move(pImage));
    if (m_nCurrentIndex == -1) {
        m_nCurrentIndex = 0;
        updateScene();
    }
}

// Runs convert(index, float image, byte image of its size) for each image. The byte images of the frame
// before serve again: of the same size as a rule, they cost no memory that must first be mapped in.
template <typename TConvert>
void BaseImgScene::convertImages(const ImageList& vecImage, const TConvert& convert)
{
    ByteImageList vecFormer = std::move(m_vecImage);
    clearImages();
    const unsigned nConversion = m_nConversion;

    std::unique_ptr<QProgressDialog> pProgress;  // nobody would see one that is never updated
    if (m_bShowProgress) {
        pProgress = std::make_unique<QProgressDialog>(QStringLiteral("Preparing display..."), QString(), 0,
                                                      int(vecImage.size()) - 1, m_pParentWidget,
                                                      Qt::CustomizeWindowHint);
    }
    for (std::size_t i = 0; i < vecImage.size(); ++i) {
        if (pProgress) {
            pProgress->setValue(int(i));
            QCoreApplication::processEvents();
            // Another frame may have come in meanwhile, or the images may be gone.
            if (nConversion != m_nConversion || i >= vecImage.size()) {
                return;
            }
        }
        auto pByte = i < vecFormer.size() ? std::move(vecFormer[i])
                                          : std::make_unique<CImgObj<unsigned char>>();
        const CImgObj<float>* pImage = vecImage[i].get();
        if (pImage && pByte->Create(pImage->Width(), pImage->Height())) {
            convert(i, *pImage, *pByte);
        } else {
            pByte->Release();
        }
        appendImage(std::move(pByte));
    }
}

void BaseImgScene::setImagesAuto(const ImageList& vecImage)
{
    convertImages(vecImage, [](std::size_t, const CImgObj<float>& image, CImgObj<unsigned char>& imgByte) {
        FloatToByteScaled(image.Data(), imgByte.Data(), image.Width() * image.Height(), 0.001f, 0.001f, 1000,
                          0.f, 255.f);
    });
}

void BaseImgScene::setImagesLimits(const ImageList& vecImage, const RangeList& vecLimit,
                                   const RangeList& vecOutRange)
{
    if (vecLimit.size() != vecImage.size()) {
        return;
    }
    const RangeList vecOut = vecOutRange.size() == vecImage.size() ? vecOutRange
                                                                   : RangeList(vecImage.size(), {0.0, 255.0});
    convertImages(vecImage, [&](std::size_t i, const CImgObj<float>& image, CImgObj<unsigned char>& imgByte) {
        if (i >= vecOut.size()) {
            return imgByte.Clear();  // an image that joined the list while events were processed
        }
        const int nCount = image.Width() * image.Height();
        if (m_bLogarithmic) {
            FloatToByteLog(image.Data(), imgByte.Data(), nCount, float(vecLimit[i].first),
                           float(vecLimit[i].second));
            return;
        }
        FloatToByte(image.Data(), imgByte.Data(), nCount, float(vecLimit[i].first), float(vecLimit[i].second),
                    float(vecOut[i].first), float(vecOut[i].second));
    });
}

void BaseImgScene::updateScene()
{
    if (!isIndexOf(m_vecImage, m_nCurrentIndex)) {
        return;
    }
    const auto& image = *m_vecImage[m_nCurrentIndex];
    if (image.Data()) {
        setSceneRect(0.0, 0.0, image.Width(), image.Height());
    }
    m_pImageItem->setPixmap(pixmapOf(image, *m_pPalette));
    updateOverlay();
}

bool BaseImgScene::switchToIndex(int nIndex)
{
    if (!isIndexOf(m_vecImage, nIndex)) {
        return false;
    }
    if (nIndex != m_nCurrentIndex) {
        m_nCurrentIndex = nIndex;
        updateScene();
    }
    return true;
}

void BaseImgScene::updateOverlay()
{
    const bool bShow = m_bOverlay && isIndexOf(m_vecOverlay, m_nCurrentIndex) &&
                       m_vecOverlay[m_nCurrentIndex];  // an image need not have one
    if (bShow) {
        m_pOverlayItem->setPixmap(pixmapOf(*m_vecOverlay[m_nCurrentIndex], m_vecOverlayColor));
    }
    m_pOverlayItem->setVisible(bShow);
}

void BaseImgScene::mouseMoveEvent(QGraphicsSceneMouseEvent* pEvent)
{
    emit mouseMoving(pEvent->scenePos());
    QGraphicsScene::mouseMoveEvent(pEvent);
}

}  // namespace tessera
