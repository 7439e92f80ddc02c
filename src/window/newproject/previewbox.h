// PreviewBox: a frame of a new project with its beam and axis, and the doubts about what the headers tell.
#pragma once

#include "dataset/seriesfacts.h"
#include "window/backgroundjob.h"

#include <QGroupBox>
#include <QStringList>

#include <optional>

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;

namespace tessera {

class FramePreview;

/// Frames are read and their beams found in the background.
class PreviewBox : public QGroupBox {
    Q_OBJECT

public:
    /// Shows no frame yet.
    explicit PreviewBox(QWidget* pParent = nullptr);

    /// The frames that can be shown; look() shows one of them.
    void setFrames(const QStringList& listFrame);
    /// Begins to read the frame that is chosen; without frames shows none.
    void look();
    /// Shows the beam and the doubts that the headers tell.
    void setFacts(const SeriesFacts& facts);
    /// Shows the axis, degrees, or none; also where the beam is.
    void showAxis(const std::optional<double>& dfAxis, const SeriesFacts& facts);

    FramePreview* m_pPreview = nullptr;          ///< a frame with beam and axis
    QSpinBox* m_pPreviewSpin = nullptr;          ///< which one, from 1
    QPushButton* m_pOtherFrameButton = nullptr;  ///< goes on by a fifth of the series
    QLabel* m_pBeamLabel = nullptr;              ///< where the beam was found, and where it is told
    QPlainTextEdit* m_pDoubtText = nullptr;      ///< what is doubtful of the facts; hidden when nothing is

signals:
    /// Another frame has been read, or none is there any more: showAxis() is due.
    void looked();

private:
    void explainControls();
    void stepOn();

    QStringList m_listFrame;
    BackgroundJob m_job;
};

}  // namespace tessera
