// BaseImgScene: a scene that shows one of the images of a frame through a palette.
#pragma once

#include "imaging/imagelist.h"
#include "imaging/imgobj.h"

#include <QGraphicsScene>
#include <QRgb>
#include <QSize>
#include <QVector>

#include <memory>
#include <utility>
#include <vector>

class QGraphicsPixmapItem;

namespace tessera {

class TextItem;

using ByteImageList = std::vector<std::unique_ptr<CImgObj<unsigned char>>>;
using RangeList = std::vector<std::pair<double, double>>;  ///< (low, high), one for each image

/// Turns float images into display bytes and shows one of them, with an overlay and a pixel label on top.
///
/// Scene coordinates are pixels of the frame: pixel (x, y) covers x to x + 1 and y to y + 1. The scene
/// keeps the display bytes alone; the float values stay with the caller.
class BaseImgScene : public QGraphicsScene {
    Q_OBJECT

public:
    /// @param pParent  parent of the scene and of its progress dialog
    explicit BaseImgScene(QWidget* pParent = nullptr);
    ~BaseImgScene() override;

    /// Index of the palette in force (palettes.h).
    int palette() const { return m_nPalette; }
    /// Redraws through another palette (palettes.h); an index without a table changes nothing.
    /// @return the index in force afterwards
    int setPalette(int nPalette);

    /// Index of the image shown, −1 for none.
    int currentIndex() const { return m_nCurrentIndex; }
    /// Size of the image shown, (−1, −1) when there is none.
    QSize imageSize() const;
    /// The display bytes of all images of the frame.
    const ByteImageList& images() const { return m_vecImage; }

    /// Whether the conversion of images shows its progress in a dialog.
    void setShowProgress(bool bShow) { m_bShowProgress = bShow; }

    /// Text of the pixel label and the scene position of its top left corner.
    void setLabel(int x, int y, const QString& strText);
    /// Shows or hides the pixel label.
    void setLabelVisible(bool bVisible);
    /// Whether the pixel label is shown.
    bool isLabelVisible() const { return m_bLabelVisible; }

    /// Alpha of the overlay's colours. @return false outside 0 to 255; then nothing changes
    bool setOverlayAlpha(int nAlpha);

    /// Forgets all images. What is drawn stays until another image is shown.
    void clearImages();
    /// Appends a copy; the first image after clearImages is shown at once.
    void addImage(const CImgObj<unsigned char>& image);

    /// Whether setImagesLimits() draws by the logarithm (FloatToByteLog) from its next call on, over all
    /// bytes.
    void setLogarithmic(bool bLogarithmic) { m_bLogarithmic = bLogarithmic; }
    bool isLogarithmic() const { return m_bLogarithmic; }  ///< not at first

    /// Replaces the images, each converted with limits that cut off 0.001 of its samples at both ends.
    /// The first image is shown. A null or empty image keeps its place in the list and shows nothing.
    void setImagesAuto(const ImageList& vecImage);
    /// The same with given limits for each image.
    ///
    /// @param vecLimit     (low, high) values for each image; another count than that of the images
    ///                     changes nothing
    /// @param vecOutRange  the bytes that low and high become; 0 and 255 with another count of entries
    void setImagesLimits(const ImageList& vecImage, const RangeList& vecLimit,
                         const RangeList& vecOutRange = {});

signals:
    /// The pointer moved over the scene, with or without a button held.
    void mouseMoving(QPointF posF);

public slots:
    /// Draws the image in force anew; with no valid index the scene stays as it is.
    virtual void updateScene();
    /// Shows another image of the frame. @return false for an index outside the list
    virtual bool switchToIndex(int nIndex);
    /// Shows or hides the overlay of the image in force.
    virtual void updateOverlay();

protected:
    void mouseMoveEvent(QGraphicsSceneMouseEvent* pEvent) override;

    QWidget* m_pParentWidget;  ///< parent of the progress dialog
    int m_nPalette = 0;
    const QVector<QRgb>* m_pPalette;
    int m_nOverlayAlpha = 160;
    QVector<QRgb> m_vecOverlayColor;
    bool m_bLabelVisible = false;
    int m_nCurrentIndex = -1;
    bool m_bOverlay = false;
    QGraphicsPixmapItem* m_pImageItem;
    QGraphicsPixmapItem* m_pOverlayItem;
    ByteImageList m_vecImage;
    ByteImageList m_vecOverlay;
    bool m_bShowProgress = true;
    bool m_bLogarithmic = false;
    TextItem* m_pLabelItem;

private:
    template <typename TConvert>
    void convertImages(const ImageList& vecImage, const TConvert& convert);
    void appendImage(std::unique_ptr<CImgObj<unsigned char>> pImage);

    unsigned m_nConversion = 0;  ///< counts the replacements of the images, to notice one inside another
};

}  // namespace tessera
