// WorkKeeper: keeps the work of a window on the disk, so that a crash costs the step under way at most.
#pragma once

#include "workstate/workwriter.h"

#include <QObject>
#include <QSet>
#include <QString>

namespace tessera {

/// Writes each state that it is given to a file in the user's own folder, never to that of the project, and
/// lets the window go on meanwhile. The file goes with a clean end.
class WorkKeeper : public QObject {
    Q_OBJECT

public:
    /// @param strFolder  of all windows; made when there is something to keep
    explicit WorkKeeper(const QString& strFolder, QObject* pParent = nullptr);

    /// The user's folder for interrupted work.
    static QString usualFolder();

    /// Works in the folder that no living window holds; see takeLeftovers().
    std::vector<Leftover> leftovers(QStringList& listReason) const;

public slots:
    /// Keeps a state; returns at once.
    void keep(const tessera::WorkState& state, const QString& strStep);

public:
    /// Keeps what was restored, and removes what it came from when that has reached the disk.
    void keepInPlaceOf(const WorkState& state, const QString& strStep, Leftover leftover);
    /// The project has been closed: there is nothing to restore.
    void forget() { m_writer.remove(); }
    /// Until all states are on the disk.
    void wait() { m_writer.wait(); }
    /// The clean end of the window.
    void end() { m_writer.end(); }

signals:
    /// A state is on its way to the disk.
    void taken(const tessera::WorkState& state, const QString& strStep);
    /// A state is on the disk.
    void kept(const QString& strStep);
    /// A state could not be kept; the one before it still is. Each reason comes once.
    void failed(const QString& strReason);

private:
    void told(const QString& strStep, const QString& strReason);

    const QString m_strFolder;
    QSet<QString> m_setReason;  ///< that have been reported
    CWorkWriter m_writer;       ///< the last member: its thread goes first
};

}  // namespace tessera
