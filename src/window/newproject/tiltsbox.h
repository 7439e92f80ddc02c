// TiltsBox: the tilts of the frames of a new project.
#pragma once

#include "dataset/frametilts.h"
#include "dataset/seriesfacts.h"

#include <QGroupBox>

#include <optional>

class QDoubleSpinBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace tessera {

class FactFields;

/// Tilts by start and step, by start and end, or by a list. Degrees.
class TiltsBox : public QGroupBox {
    Q_OBJECT

public:
    /// @param facts  gets the fields that the frames can tell; outlives this
    explicit TiltsBox(FactFields& facts, QWidget* pParent = nullptr);

    /// The tilts of so many frames.
    /// @param pstrReason  may be null; what is wrong with the list, in a sentence
    /// @return none when the list cannot be read
    std::optional<FrameTilts> tilts(int nFrames, QString* pstrReason = nullptr) const;
    /// Enables the boxes in use, and shows in the others what follows from them.
    void showDerivedTilts(int nFrames);
    /// Takes the tilts that the frames tell, where the user has set none.
    void fill(const SeriesFacts& facts);
    /// Asks for a file of tilts and puts its text into the list.
    /// @param strFolder  where the dialog starts
    void askFile(const QString& strFolder);
    /// Whether the list holds a text, which is lost with the dialog.
    bool hasList() const;

    QRadioButton* m_pStepRadio = nullptr;        ///< tilts by start and step
    QRadioButton* m_pEndRadio = nullptr;         ///< tilts by start and end
    QRadioButton* m_pListRadio = nullptr;        ///< tilts by a list
    QDoubleSpinBox* m_pTiltStartSpin = nullptr;  ///< degrees, of the first frame
    QDoubleSpinBox* m_pTiltStepSpin = nullptr;   ///< degrees from frame to frame
    QDoubleSpinBox* m_pTiltEndSpin = nullptr;    ///< degrees, of the last frame
    QSpinBox* m_pBeamTiltSpin = nullptr;         ///< frames per step of the goniometer
    QPlainTextEdit* m_pTiltEdit = nullptr;       ///< the list of tilts
    QLabel* m_pTiltLabel = nullptr;              ///< what was understood of the list
    QPushButton* m_pLoadTiltsButton = nullptr;   ///< asks for a file of tilts

private:
    QWidget* makeEven();
    QWidget* makeList();
    double step(int nFrames) const;
    void fillEven(const QList<double>& listTilt);

    FactFields& m_facts;
};

}  // namespace tessera
