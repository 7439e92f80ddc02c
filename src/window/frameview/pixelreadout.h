// CPixelReadout: the value of the pixel that the user points at.
#pragma once

#include "imaging/imagelist.h"

#include <QPointF>
#include <QString>

class QStatusBar;

namespace tessera {

class BaseImgView;
class OriginalImgScene;
class TextDataWidget;

/// Tells a pixel of the frame in view in the status bar and, where it is asked for, by a label beside it and
/// in the table of the pixels around it.
///
/// Places are pixels of the frame, its upper left corner at (0, 0); values are those of the image in memory
/// that the scene shows. A place without a value takes status text and label away.
class CPixelReadout {
public:
    /// Shows nothing yet.
    CPixelReadout(OriginalImgScene& scene, BaseImgView& view, TextDataWidget& textData,
                  QStatusBar& statusBar);  ///< none of them is owned

    /// Reads a pixel.
    /// @param bLabel  with the label beside it, and the table
    void show(const ImageList& vecImage, const QPointF& ptF, bool bLabel);
    /// Reads the same pixel again where it is in sight, after another frame has come into view.
    void renew(const ImageList& vecImage);
    /// Takes label and status text away; what else the status bar says stays.
    void clear();

private:
    void hideLabel();
    /// Whether the status bar shows the pixel that was read last.
    bool showsStatus() const;

    OriginalImgScene& m_scene;
    BaseImgView& m_view;
    TextDataWidget& m_textData;
    QStatusBar& m_statusBar;
    QPointF m_ptRead;     ///< the place that was read last
    QString m_strStatus;  ///< the text of the status bar for this place
};

}  // namespace tessera
