// LatticesDialog: the Bravais types of the cell in force, what the points say of it, and further lattices.
#pragma once

#include "window/crystal/latticelook.h"

#include <QColor>
#include <QDialog>

class QCheckBox;
class QGroupBox;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QTableWidget;

namespace tessera {

/// Whether a look at the lattice is still of the cell and the peaks in memory.
enum class LookAge {
    Current,       ///< cell and peaks are those that were looked at
    EarlierCell,   ///< another cell is in force: types and points are of the former one
    EarlierPeaks,  ///< the peaks are others or lie elsewhere: all of it is out of date
};

/// Shows a LatticeLook beside the views, to which it leaves the mouse.
///
/// It holds controls alone, and puts its texts on the clipboard; MainWindow connects and fills it.
class LatticesDialog : public QDialog {
    Q_OBJECT

public:
    /// Shows no look yet.
    explicit LatticesDialog(QWidget* pParent = nullptr);

    /// Fills tables and lists and selects the type that is proposed; of nothing looked at: empties them.
    void setLook(const LatticeLook& look);
    /// Shows a line in the place of what is out of date; that comes back when it is current again.
    void setAge(LookAge age);

    /// Number of the type in the row that is selected, from 0; −1: none.
    int selectedType() const;
    /// Of longerCells(); −1: none.
    int selectedCoset() const;
    /// Of the lattices; −1: none.
    int selectedLattice() const;

    /// The colour of a lattice in list and views; they differ for as many as are searched.
    static QColor colorOf(int nLattice);

    QTableWidget* m_pTableTypes;  ///< a row for each type, the highest symmetry first
    QPushButton* m_pButtonFillMatrix;
    QPushButton* m_pButtonCopy;
    QListWidget* m_pListPoints;  ///< centring, then cosets
    QPushButton* m_pButtonLongerCell;
    QListWidget* m_pListLattices;
    QPushButton* m_pButtonChoose;
    QCheckBox* m_pCheckColors;
    QPushButton* m_pButtonRun;

protected:
    /// Hands status tips on to the main window, which has the status bar.
    bool event(QEvent* pEvent) override;

private:
    QStackedWidget* besideNote(QWidget* pContent);
    QGroupBox* makeTypes();
    QGroupBox* makePoints();
    QGroupBox* makeLattices();
    void fillTypes(const LatticeAnalysis& analysis);
    void updateButtons();
    void copyText() const;

    QStackedWidget *m_pStackTypes, *m_pStackPoints, *m_pStackLattices;  ///< what is known, or the note
    QStringList m_listText;                                             ///< what "Copy" copies
    int m_nLinesBeforeCosets = 0;
    int m_nCosets = 0;
};

}  // namespace tessera
