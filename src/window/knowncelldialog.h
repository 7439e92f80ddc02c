// KnownCellDialog: asks for a cell that is known, has its orientation looked for, and which form of it to
// take.
#pragma once

#include "road/knowncellsearch.h"

#include <QDialog>

#include <functional>

class QDialogButtonBox;
class QDoubleSpinBox;
class QGroupBox;
class QLabel;
class QPushButton;

namespace tessera {

/// Ends accepted with the form that was chosen, else rejected. A change of the numbers takes the result away.
class KnownCellDialog : public QDialog {
    Q_OBJECT

public:
    /// Looks for the orientation while the dialog lives; a flag that is cleared is the wish to stop.
    using FnSearch =
        std::function<KnownCellSearchResult(const CellParameters&, const KnownCellOptions&, const bool&)>;

    /// @param strFolder  where the file dialog starts
    KnownCellDialog(const FnSearch& fnSearch, const QString& strFolder, QWidget* pParent = nullptr);

    /// What the six boxes say.
    CellParameters cell() const;
    /// Puts a cell into the six boxes: Å and degrees.
    void setCell(const CellParameters& cell);
    /// The result of the last search with the numbers as they are now.
    const KnownCellSearchResult& result() const { return m_result; }
    /// The form that was chosen, of a dialog that was accepted.
    KnownCellForm form() const { return m_form; }
    /// The folder of the file that was read last.
    const QString& folder() const { return m_strFolder; }
    /// Stops a search as well.
    void reject() override;

    QDoubleSpinBox* m_apSpin[6];                 ///< a, b, c in Å, α, β, γ in degrees
    QPushButton* m_pButtonCif = nullptr;         ///< asks for a CIF file
    QDoubleSpinBox* m_pSpinTolerance = nullptr;  ///< of the lengths, per cent
    QPushButton* m_pButtonSearch = nullptr;      ///< "Stop" while it searches
    QLabel* m_apLabelFit[3];         ///< of the cell rotated, scaled and refined: how many peaks fit
    QLabel* m_apLabelCell[3];        ///< its lengths and angles, or its scale
    QLabel* m_pLabelSays = nullptr;  ///< what is missing, why nothing was found, or which form fits better
    QPushButton* m_pButtonTakeRotated = nullptr;
    QPushButton* m_pButtonTakeRefined = nullptr;
    QDialogButtonBox* m_pButtons = nullptr;

private:
    QGroupBox* makeCell();
    QGroupBox* makeResult();
    void makeButtons();
    void readCif();
    void search();
    void enableNumbers(bool bEnable);
    void take(KnownCellForm form);
    void numbersChanged();
    void showResult();

    FnSearch m_fnSearch;
    QString m_strFolder;
    KnownCellSearchResult m_result;
    KnownCellForm m_form = KnownCellForm::Rotated;
    bool m_bSearching = false;
};

}  // namespace tessera
