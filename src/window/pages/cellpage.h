// CellPage: the tool box page "Unit Cell Determination and Indexing".
#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTableWidget;

namespace tessera {

/// The search for the unit cell, the cell in force and its transformation, and the indexing.
///
/// The page holds controls alone; MainWindow connects them and fills the table and the six cell fields.
class CellPage : public QWidget {
    Q_OBJECT

public:
    /// Builds the controls with the start values of the parameters.
    explicit CellPage(QWidget* pParent = nullptr);

    /// Swaps the range and the search button for the groups of the manual assignment, or back.
    void showManual(bool bManual);
    /// With the automatic range the boxes only show numbers; those that stood there come back afterwards.
    void showAutoRange(bool bAuto);
    /// Names rows and columns of the matrix after the space that is checked; then unchecks "Test".
    void updateCellTransformMatrixLabels();

    QTableWidget* m_pTableReflectionSelection;  ///< Label, Count, colour; groups of the merged 3D view

    QRadioButton* m_pRadioCellAuto;  ///< checked at start
    QRadioButton* m_pRadioCellManual;
    QComboBox* m_pComboMethod;  ///< the item data is the CellSearchMethod
    QGroupBox* m_pGroupCellRange;
    QDoubleSpinBox* m_pSpinCellRangeMin;  ///< Å
    QDoubleSpinBox* m_pSpinCellRangeMax;  ///< Å
    QCheckBox* m_pCheckAutoRange;         ///< the range comes from the spots
    QPushButton* m_pButtonSuggest;
    QPushButton* m_pButtonSearchCell;
    QPushButton* m_pButtonKnownCell;
    QGroupBox* m_pGroupAssignViewingDirection;  ///< hidden at start
    QPushButton* m_pButtonAssignRA;             ///< "a*"
    QPushButton* m_pButtonAssignRB;
    QPushButton* m_pButtonAssignRC;
    QDoubleSpinBox* m_pSpinManualLengthA;  ///< length of a*, Å⁻¹
    QDoubleSpinBox* m_pSpinManualLengthB;
    QDoubleSpinBox* m_pSpinManualLengthC;

    QLineEdit* m_apEditCell[6];  ///< a, b, c in Å, α, β, γ in degrees; read-only
    QLabel* m_pLabelCellFit;     ///< how many of the peaks fit it; empty without cell or peaks
    QPushButton* m_pButtonLoadCell;
    QPushButton* m_pButtonExportCell;

    QRadioButton* m_pRadioSpaceReciprocal;  ///< checked at start
    QRadioButton* m_pRadioSpaceReal;
    QLineEdit* m_apEditMatrix[3][3];  ///< [row][column]; 1 on the diagonal, else 0
    QPushButton* m_pButtonTest;       ///< checkable
    QPushButton* m_pButtonTransform;
    QPushButton* m_pButtonLattices;

    QDoubleSpinBox* m_pSpinIndexThreshold;  ///< largest distance of an index from a whole number
    QCheckBox* m_pCheckOutputIndexing;
    QCheckBox* m_pCheckOutputStatistics;
    QCheckBox* m_pCheckOutputRefinedCell;
    QPushButton* m_pButtonIndexMergedPeaks;
    QComboBox* m_pComboReflectionGrouping;  ///< 230 space groups; the item data is the number

protected:
    void changeEvent(QEvent* pEvent) override;

private:
    void colorAxes();
    void showMatrixLabels();
    QGroupBox* makeSelection();
    QGroupBox* makeDetermination();
    QWidget* makeMethod(QWidget* pParent);
    QGroupBox* makeRange(QWidget* pParent);
    QGroupBox* makeDirections(QWidget* pParent);
    QGroupBox* makeCell();
    QGroupBox* makeTransformation();
    QGroupBox* makeIndexing();

    QWidget* m_pMethod;          // label and list
    double m_dfOwnRangeMin = 0;  // Å, without the automatic range
    double m_dfOwnRangeMax = 0;
    QLabel* m_apLabelColumn[3];
    QLabel* m_apLabelRow[3];
};

}  // namespace tessera
