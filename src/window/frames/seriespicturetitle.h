// SeriesPictureTitle: says over the frame view that what it shows is made of all frames, and the actions for
// it.
#pragma once

#include "frames/seriespicture.h"

#include <QAction>
#include <QLabel>
#include <QList>

#include <optional>

namespace tessera {

/// What a picture of a series is, in words: "Maximum of 566 frames, moved back by their shifts".
QString seriesPictureText(const SeriesPicture& picture);

/// A line at the upper left corner of a view, which lets the pointer through, and four exclusive actions: one
/// frame, or all of them as their maximum, sum or mean.
class SeriesPictureTitle : public QLabel {
    Q_OBJECT

public:
    /// Hidden, with the action of one frame checked. The view owns it.
    explicit SeriesPictureTitle(QWidget* pView);

    /// The picture has come into view.
    void begin(const SeriesPicture& picture);
    /// A frame has come into view again, or the picture did not come to be.
    void end();
    /// Whether a picture of the series is in view.
    bool isBegun() const { return m_shown.has_value(); }
    /// Checks the action of what is shown again, after another one led to nothing.
    void recheck();

    /// One frame, maximum, sum, mean.
    const QList<QAction*>& actions() const { return m_listAction; }

signals:
    /// The user asked for one frame again.
    void frameWanted();
    /// The user asked for a picture of all frames.
    void pictureWanted(tessera::SeriesPictureKind kind);

private:
    QList<QAction*> m_listAction;
    std::optional<SeriesPictureKind> m_shown;
};

}  // namespace tessera
