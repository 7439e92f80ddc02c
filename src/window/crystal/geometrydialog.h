// GeometryDialog: the numbers of a refined geometry, before and after, and what they leave of the peaks.
#pragma once

#include "refinement/spotresiduals.h"
#include "window/crystal/residualplots.h"

#include <QDialog>

#include <optional>
#include <vector>

class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace tessera {

/// A refinement with what its plots show.
struct GeometryLook {
    GeometryRefinement refinement;
    CellParameters cellBefore;
    std::vector<SpotResidual> listBefore;  ///< of the peaks that the model keeps
    std::vector<SpotResidual> listAfter;
    FrameBounds bounds;
};

/// Shows a refinement beside the views, to which it leaves the mouse. It holds controls alone; a
/// CGeometryControl connects and fills it.
class GeometryDialog : public QDialog {
    Q_OBJECT

public:
    /// Shows no refinement yet.
    explicit GeometryDialog(QWidget* pParent = nullptr);

    /// Shows a refinement; none: empty columns and plots. Which numbers are to be free stays as it is.
    void setLook(const std::optional<GeometryLook>& look);
    /// A line on the state of things, under the table.
    /// @param bBad  in red
    void setMessage(const QString& strText, bool bBad = false);
    /// @param bApply  whether there is something to take; likewise to undo
    void setReady(bool bApply, bool bUndo);

    /// The numbers that the user wants to stay as they are: GeometryNumber.
    std::vector<int> fixedNumbers() const;
    /// The refinement that is shown; null: none is.
    const GeometryRefinement* refinement() const { return m_look ? &m_look->refinement : nullptr; }
    /// The model that is chosen; null without a refinement.
    const GeometryModel* model() const;

    QTableWidget* m_pTable;      ///< a row for each number
    QTableWidget* m_pTableCell;  ///< a row for each number of the cell
    QComboBox* m_pComboCell;     ///< the cell that "Apply" takes
    QComboBox* m_pComboShown;    ///< residuals after or before
    ResidualPlots* m_pPlots;
    QLabel* m_pLabelMessage;
    QPushButton* m_pButtonRun;
    QPushButton* m_pButtonApply;
    QPushButton* m_pButtonUndo;
    QPushButton* m_pButtonSaveProject;
    QPushButton* m_pButtonSaveCalibration;
    QPushButton* m_pButtonLoadCalibration;

protected:
    /// Hands status tips on to the main window, which has the status bar.
    bool event(QEvent* pEvent) override;

private:
    QWidget* makeNumbers();
    QWidget* makePlots();
    QWidget* makeButtons();
    void makeRows();
    void fillNumbers();
    void fillCell();
    void showResiduals();
    void linkBoxes(int nRow);

    std::optional<GeometryLook> m_look;
};

}  // namespace tessera
