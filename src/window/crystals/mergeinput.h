// MergeInput: the part of the window "Merge Crystals" that says which results are to be merged, and how.
#pragma once

#include "crystals/crystalsjob.h"
#include "window/crystals/crystaltables.h"

#include <QString>
#include <QStringList>
#include <QWidget>

#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSettings;

namespace tessera {

class TablePanel;

/// Shows the crystals in the folders of the list, and holds the options of the merging. It reads no folder
/// itself: it emits foldersGiven(), and its owner returns what was read by takeFolder() and showFolders().
class MergeInput : public QWidget {
    Q_OBJECT

public:
    explicit MergeInput(QWidget* pParent = nullptr);

    /// Asks by foldersGiven() for folders to be read. If the folder for the merged files is empty and the
    /// user has not typed one, "merged" beside the first of these folders is proposed. The proposal goes with
    /// the last folder beside it or below that is taken off the list.
    void giveFolders(const QStringList& listFolder);
    /// Takes what was read of a folder; it replaces what was read of the same folder before. The tables are
    /// brought up to date by showFolders().
    void takeFolder(const ListedFolder& folder);
    /// Fills the tables from the list of folders and emits changed(). This is apart from takeFolder(), as it
    /// is slow and is enough once after many folders.
    void showFolders();
    /// Takes the folders of the selected rows of both tables off the list, with all their crystals.
    void removeChosen();
    const std::vector<ListedFolder>& folders() const { return m_listFolder; }

    /// The options as the controls show them, with the folders of the list.
    CrystalsJobOptions options() const;
    /// The absolute path of the folder for the merged files; empty if none is named.
    QString outFolder() const;
    /// Enables or disables all controls that change the folders or options, as while a merging is under way.
    void setChoosable(bool bChoosable);
    /// Takes the tolerances and the file of known cells from the settings.
    void restore(const QSettings& settings);
    /// Writes the tolerances and the file of known cells into the settings.
    void keep(QSettings& settings) const;

    TablePanel* m_pTable = nullptr;        ///< a row for each crystal
    TablePanel* m_pTableUnread = nullptr;  ///< what gives no crystal, and why; hidden while it is empty
    QLabel* m_pLabelState = nullptr;       ///< how many crystals there are, or what to do first
    QPushButton* m_pButtonAdd = nullptr;
    QPushButton* m_pButtonSeries = nullptr;  ///< the results of the open project
    QPushButton* m_pButtonRemove = nullptr;
    QPushButton* m_pButtonClear = nullptr;
    QDoubleSpinBox* m_pSpinLengths = nullptr;
    QDoubleSpinBox* m_pSpinAngles = nullptr;
    QComboBox* m_pComboClass = nullptr;
    QCheckBox* m_pCheckKeepAll = nullptr;
    QLineEdit* m_pEditKnown = nullptr;
    QLineEdit* m_pEditOut = nullptr;

signals:
    /// These folders of results, or folders that hold folders of results, shall be read.
    void foldersGiven(const QStringList& listFolder);
    /// The list of folders or the folder for the merged files has changed. Changes of the other options are
    /// not told: they do not decide whether a merging can start.
    void changed();

private:
    QWidget* makeFolders();
    QWidget* makeOptions();
    void dropProposal();
    void askForFolders();
    void askForKnownCells();
    void askForOutFolder();

    std::vector<ListedFolder> m_listFolder;  ///< in the natural order of their paths
    std::vector<QWidget*> m_listChoice;      ///< controls that are disabled during a merging
    bool m_bOutTyped = false;                ///< the user has named the folder for the files
};

}  // namespace tessera
