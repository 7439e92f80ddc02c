// MergeInput: which results are to be merged, and how.
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

/// Lists what was read of the folders, and holds the choices. It reads nothing itself: it asks for it, and is
/// told what came out.
class MergeInput : public QWidget {
    Q_OBJECT

public:
    explicit MergeInput(QWidget* pParent = nullptr);

    /// Asks for some folders to be read. The folder for the files is proposed by the first of them.
    void giveFolders(const QStringList& listFolder);
    /// Takes what was read of a folder, in the place of what was known of it.
    void takeFolder(const ListedFolder& folder);
    /// Shows what was taken; it costs more than the taking.
    void showFolders();
    /// Takes the folders of the chosen rows off the list.
    void removeChosen();
    const std::vector<ListedFolder>& folders() const { return m_listFolder; }

    /// The choices, with the folders of the list.
    CrystalsJobOptions options() const;
    QString outFolder() const;
    /// What is chosen stays, but for the buttons, while a merging is under way.
    void setChoosable(bool bChoosable);
    void restore(const QSettings& settings);
    void keep(QSettings& settings) const;

    TablePanel* m_pTable = nullptr;        ///< a row for each crystal
    TablePanel* m_pTableUnread = nullptr;  ///< what gives none; hidden while there is nothing
    QLabel* m_pLabelState = nullptr;       ///< how many there are, or what to do
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
    /// Folders, or folders that hold such, were named and shall be read.
    void foldersGiven(const QStringList& listFolder);
    /// What is chosen or listed is another.
    void changed();

private:
    QWidget* makeFolders();
    QWidget* makeOptions();
    void askForFolders();
    void askForKnownCells();
    void askForOutFolder();

    std::vector<ListedFolder> m_listFolder;  ///< by name
    std::vector<QWidget*> m_listChoice;      ///< all that a merging must not change
    bool m_bOutTyped = false;                ///< the folder for the files is the user's
};

}  // namespace tessera
