// CFileKeeper: result files as they were before a stage, until it has reached its end.
#pragma once

#include <QString>
#include <QStringList>

/// A stage that writes several files may fail at the last one, and files that do not belong together
/// would stay. The keeper holds a second link to each former file (a copy where the file system has no
/// links) and puts them back unless the stage says that it is done.
class CFileKeeper {
public:
    explicit CFileKeeper(const QStringList& listFile);
    ~CFileKeeper();
    CFileKeeper(const CFileKeeper&) = delete;
    CFileKeeper& operator=(const CFileKeeper&) = delete;

    /// Whether every file has been written since the keeper was made.
    bool allReplaced(QString& strMissing) const;
    /// The new files stay.
    void done() { m_bDone = true; }

private:
    struct Kept {
        QString strFile;
        QString strLink;  ///< empty: there was no such file
    };
    QList<Kept> m_listKept;
    bool m_bDone = false;
};
