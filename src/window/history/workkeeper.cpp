#include "window/history/workkeeper.h"

#include <QMetaObject>
#include <QStandardPaths>

namespace tessera {

WorkKeeper::WorkKeeper(const QString& strFolder, QObject* pParent)
    : QObject(pParent),
      m_strFolder(strFolder),
      m_writer(strFolder, [this](const QString& strStep, const QString& strReason) {
          QMetaObject::invokeMethod(
              this, [this, strStep, strReason] { told(strStep, strReason); }, Qt::QueuedConnection);
      })
{}

QString WorkKeeper::usualFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
           QStringLiteral("/interrupted");
}

std::vector<Leftover> WorkKeeper::leftovers(QStringList& listReason) const
{
    return takeLeftovers(m_strFolder, listReason);
}

void WorkKeeper::keep(const WorkState& state, const QString& strStep)
{
    if (!state.series.m_listFrameFile.isEmpty()) {
        emit taken(state, strStep);
        m_writer.write(state, strStep);
    }
}

void WorkKeeper::keepInPlaceOf(const WorkState& state, const QString& strStep, Leftover leftover)
{
    emit taken(state, strStep);
    m_writer.writeInPlaceOf(state, strStep, std::move(leftover));
}

void WorkKeeper::told(const QString& strStep, const QString& strReason)
{
    if (strReason.isEmpty()) {
        m_setReason.clear();  // it works again: what fails from now on is new
        emit kept(strStep);
    } else if (!m_setReason.contains(strReason)) {
        m_setReason.insert(strReason);
        emit failed(strReason);
    }
}

}  // namespace tessera
