// SeriesChoiceDialog: how the frames of the open project are read.
#pragma once

#include "dataset/serieschoice.h"

#include <QDialog>

class QDialogButtonBox;
class QLabel;

namespace tessera {

class SeriesChoiceBox;

/// Can be accepted with a choice that leaves frames, and is another one than before.
class SeriesChoiceDialog : public QDialog {
    Q_OBJECT

public:
    /// @param nFrames  of the project
    /// @param before   how they are read now
    SeriesChoiceDialog(int nFrames, const SeriesChoice& before, QWidget* pParent = nullptr);

    /// What was accepted.
    SeriesChoice choice() const;

    SeriesChoiceBox* m_pChoice;
    QLabel* m_pOutcomeLabel;  ///< the resulting frames, or the error
    QDialogButtonBox* m_pButtons;

private:
    void refresh();

    int m_nFrames;
    SeriesChoice m_before;
};

}  // namespace tessera
