// ShiftPage: the tool box page "Shift Evaluation" with the reference region, the shifts and the centre.
#pragma once

#include <QList>
#include <QWidget>

class QAction;
class QDoubleSpinBox;
class QPushButton;
class QTableWidget;

namespace tessera {

/// The controls of the shift evaluation; MainWindow connects them and fills the table.
class ShiftPage : public QWidget {
    Q_OBJECT

public:
    /// @param listSizeAction  the actions that choose the size of the reference region, "none" first;
    ///                        they stand in the page's tool bar and belong to someone else
    explicit ShiftPage(const QList<QAction*>& listSizeAction, QWidget* pParent = nullptr);

    QPushButton* m_pRunButton;       ///< disabled until a region is chosen
    QTableWidget* m_pShiftTable;     ///< x and y in pixels; a row per frame
    QDoubleSpinBox* m_pCenterXSpin;  ///< direct beam on the first frame, pixels
    QDoubleSpinBox* m_pCenterYSpin;
    QPushButton* m_pLoadButton;
    QPushButton* m_pExportButton;
};

}  // namespace tessera
