// OriginalImgScene: the frame scene, with the rectangle that selects a region of the frame.
#pragma once

#include "frameview/baseimgscene.h"

#include <QList>
#include <QRectF>

namespace tessera {

class SelRectItem;

/// The scene of the current frame. One of a list of preset rectangles may be in force; each preset
/// keeps its own place, so that going back to a size brings the rectangle back to where it stood.
class OriginalImgScene : public BaseImgScene {
    Q_OBJECT

public:
    /// No presets yet; the first one to be added means no rectangle.
    explicit OriginalImgScene(QWidget* pParent = nullptr);

    /// Appends a preset of w × h pixels, centred on the scene's origin until a frame is shown.
    void addSelectionRect(int w, int h);
    /// Puts a preset into force. Index 0, an index outside the list, or a preset that is larger than the
    /// image in view puts none into force and hides the rectangle.
    void setSelectionIndex(int nIndex);
    /// Index of the preset in force, 0 for none.
    int selectionIndex() const { return m_nSelectionIndex; }
    /// The presets with their places, for a caller that shows something else meanwhile.
    QList<QRectF> selectionRects() const { return m_listSelectionRect; }
    /// Puts presets back; does nothing for another number of them, or while one is in force.
    void setSelectionRects(const QList<QRectF>& listRect);
    /// The rectangle in force in whole pixels, as selRectPosChanged() tells it: its item's position less half
    /// its size, rounded down. Empty without one.
    QRectF selectionRect() const;

signals:
    /// The rectangle was moved; whole pixels of the frame.
    void selRectPosChanged(QRectF rectSel);

public slots:
    /// Keeps the rectangle's frame one screen pixel wide. @param scale  the view's factor, above 0
    void updateViewScale(double scale);
    /// Takes over the area of another frame: keeps the rectangle inside and centres all presets on the
    /// scene. A preset in force that no longer fits is put out of force.
    void updateSelRectBoundingBox(QRectF rect);
    /// Tells of a move of the rectangle by selRectPosChanged().
    void reemitSelRectPosChanged(QRectF rectSel);

protected:
    int m_nSelectionIndex = 0;
    SelRectItem* m_pSelRectItem;
    QList<QRectF> m_listSelectionRect;

private:
    bool isPreset(int nIndex) const;
};

}  // namespace tessera
