// SeriesChoiceBox: which frames of a series are taken, and how many become one.
#pragma once

#include "dataset/serieschoice.h"

#include <QWidget>

#include <optional>

class QLineEdit;
class QSpinBox;

namespace tessera {

/// Two lines of controls. The numbers of the frames are those of the list, from 1.
class SeriesChoiceBox : public QWidget {
    Q_OBJECT

public:
    /// All frames as they are.
    explicit SeriesChoiceBox(QWidget* pParent = nullptr);

    /// Puts a choice into the controls.
    void setChoice(const SeriesChoice& choice);
    /// What the controls say.
    /// @param nFrames     of the series
    /// @param pstrReason  may be null; what is wrong, in a sentence
    /// @return none where that is no choice, or leaves no frame
    std::optional<SeriesChoice> choice(int nFrames, QString* pstrReason = nullptr) const;
    /// How many frames come of a series, "56 of 113 frames"; empty for all, and where the controls are wrong.
    QString outcomeText(int nFrames) const;

    QLineEdit* m_pFramesEdit;  ///< those that are taken; empty: all
    QLineEdit* m_pSkipEdit;    ///< of these, those that are left out
    QSpinBox* m_pSumSpin;      ///< neighbours that become one frame
    QSpinBox* m_pBinSpin;      ///< pixels along the side of a block that becomes one

signals:
    /// One of the controls was changed.
    void changed();
};

}  // namespace tessera
