// FrameListBox: the frames of a new project, in the order of the series.
#pragma once

#include "frames/framesummary.h"

#include <QGroupBox>
#include <QStringList>
#include <QTimer>

class QGridLayout;
class QLabel;
class QListWidget;
class QPushButton;

namespace tessera {

class HeaderReading;
class SeriesChoiceBox;

/// The list, its buttons, which of the frames are taken, and what the first frame and the headers tell.
class FrameListBox : public QGroupBox {
    Q_OBJECT

public:
    /// @param strFolder  where the file dialogs start
    explicit FrameListBox(const QString& strFolder, QWidget* pParent = nullptr);

    /// Adds files, and the frames of folders, that are not in the list yet. A list that was sorted stays so.
    void addFrames(const QStringList& listPath);
    /// Paths of the frames in the order of the list.
    QStringList frames() const;
    /// How many they are.
    int count() const;
    /// Folder of the first frame, or where the dialogs started.
    const QString& folder() const { return m_strFolder; }
    /// Why the first frame cannot be read; empty if it can, or there is none.
    QString firstFrameError() const;
    /// Shows what comes of the choice of frames, where not all are taken as they are.
    void showChoice();
    /// Takes the list as it is now, after a change of it: reads the first frame and shows what it tells.
    /// @return whether that is another frame than before
    bool readFirstFrame();

    QListWidget* m_pFrameList = nullptr;        ///< the path of a frame is the item's Qt::UserRole
    QPushButton* m_pAddFilesButton = nullptr;   ///< asks for files
    QPushButton* m_pAddFolderButton = nullptr;  ///< asks for a folder
    QPushButton* m_pRemoveButton = nullptr;     ///< takes the selected frames off the list
    QPushButton* m_pUpButton = nullptr;         ///< moves them one place up
    QPushButton* m_pDownButton = nullptr;       ///< moves them one place down
    QPushButton* m_pSortButton = nullptr;       ///< sorts by name
    QLabel* m_pFrameLabel = nullptr;            ///< count, size and format
    SeriesChoiceBox* m_pChoice = nullptr;       ///< which of them are taken, summed and binned
    QLabel* m_pChoiceLabel = nullptr;           ///< the resulting frames; hidden while all are used unchanged
    HeaderReading* m_pHeaders = nullptr;        ///< reads what the headers of all frames tell

signals:
    /// The list is another one.
    void framesChanged();

private:
    QGridLayout* makeButtons();
    void connectControls();
    void setFrames(const QStringList& listFile);
    QStringList framesOfOneSize(const QStringList& listFrame);
    void askFiles();
    void askFolder();
    void removeSelected();
    void sortByName();
    void moveSelected(int nStep);
    void enableButtons();

    QString m_strFolder;
    QTimer m_timerMoved;        ///< from a row that was dragged to the list that it leaves
    QString m_strFirstFrame;    ///< that the next two are of
    FrameSummary m_firstFrame;  ///< empty if it cannot be read
    QString m_strFirstFrameError;
};

}  // namespace tessera
