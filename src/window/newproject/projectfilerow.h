// ProjectFileRow: the file that a new project is written to.
#pragma once

#include <QStringList>
#include <QWidget>

class QLineEdit;
class QPushButton;

namespace tessera {

/// A line for the name, and a button that asks for it.
class ProjectFileRow : public QWidget {
    Q_OBJECT

public:
    /// The name is empty.
    explicit ProjectFileRow(QWidget* pParent = nullptr);

    /// The file to be written, with its suffix; empty while there is no name.
    /// @param strFolder  that a name without a folder is in
    QString file(const QString& strFolder) const;
    /// Names the file after the frames, unless the user has typed a name.
    void propose(const QStringList& listFrame);
    /// Asks for the file.
    void ask(const QString& strFolder);

    QLineEdit* m_pFileEdit = nullptr;        ///< the file to be written
    QPushButton* m_pBrowseButton = nullptr;  ///< asks for it

signals:
    /// The user gave another name.
    void changed();

private:
    bool m_bTyped = false;  ///< the name is the user's own, which new frames leave as it is
};

}  // namespace tessera
