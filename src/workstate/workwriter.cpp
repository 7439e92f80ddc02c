#include "workstate/workwriter.h"

#include "records/whatwasthrown.h"
#include "records/wholefile.h"

#include <QDir>
#include <QFile>
#include <QUuid>

namespace tessera {

CWorkWriter::CWorkWriter(const QString& strFolder, const FnTold& fnTold)
    : m_strFolder(strFolder),
      m_strStem(QUuid::createUuid().toString(QUuid::WithoutBraces)),
      m_fnTold(fnTold),
      m_thread([this] { work(); })
{}

CWorkWriter::~CWorkWriter()
{
    end();
}

void CWorkWriter::write(const WorkState& state, const QString& strStep)
{
    ask({state, strStep, QDateTime::currentDateTimeUtc()});
}

void CWorkWriter::writeInPlaceOf(const WorkState& state, const QString& strStep, Leftover leftover)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_listFormer.push_back(std::move(leftover));
    }
    write(state, strStep);
}

void CWorkWriter::remove()
{
    ask({});
}

void CWorkWriter::ask(Wish wish)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_bEnd) {
            return;
        }
        m_wish = std::move(wish);
    }
    m_changed.notify_all();
}

void CWorkWriter::wait()
{
    std::unique_lock<std::mutex> guard(m_mutex);
    m_changed.wait(guard, [this] { return !m_wish && !m_bBusy; });
}

void CWorkWriter::end()
{
    if (!m_thread.joinable()) {
        return;
    }
    remove();
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bEnd = true;
    }
    m_changed.notify_all();
    m_thread.join();
    m_lock.remove();
}

void CWorkWriter::work()
{
    std::unique_lock<std::mutex> guard(m_mutex);
    for (;;) {
        m_changed.wait(guard, [this] { return m_wish || m_bEnd; });
        if (!m_wish) {
            return;
        }
        std::optional<Wish> wish;
        wish.swap(m_wish);
        m_bBusy = true;
        guard.unlock();
        fulfil(*wish);
        wish.reset();  // frees large lists, so do it outside the lock
        guard.lock();
        m_bBusy = false;
        m_changed.notify_all();
    }
}

void CWorkWriter::fulfil(const Wish& wish)
{
    std::vector<Leftover> listFormer;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        listFormer.swap(m_listFormer);
    }
    QString strReason;
    bool bDone = false;
    if (wish.state) {
        try {
            bDone = writeState(wish, strReason);
        } catch (...) {  // out of memory: the window goes on, and the file of the last step is kept
            strReason = whatWasThrown();
        }
    } else {
        bDone = !m_lock.isTaken() || !QFile::exists(keptFile(m_strFolder, m_strStem)) ||
                QFile::remove(keptFile(m_strFolder, m_strStem));
    }
    if (bDone) {
        for (Leftover& leftover : listFormer) {
            static_cast<void>(leftover.remove());  // if that fails, it is offered again at the next start
        }
    } else {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_listFormer.insert(m_listFormer.end(), std::make_move_iterator(listFormer.begin()),
                            std::make_move_iterator(listFormer.end()));
    }
    if (wish.state) {
        m_fnTold(wish.strStep, strReason);
    }
}

bool CWorkWriter::writeState(const Wish& wish, QString& strReason)
{
    if (!prepare(strReason)) {
        return false;
    }
    const QByteArray bytes = keptWorkBytes(keptWorkOf(*wish.state, wish.strStep, wish.when), *wish.state);
    if (bytes.isEmpty()) {
        strReason = QStringLiteral("It would take more than 2 GB.");
        return false;
    }
    const QString strFile = keptFile(m_strFolder, m_strStem);
    if (!writeWholeFile(strFile, bytes, &strReason)) {
        return false;
    }
    QFile::setPermissions(strFile, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    return true;
}

/// Prepares folder and lock. This is done for each state, as the user may have removed them meanwhile.
bool CWorkWriter::prepare(QString& strReason)
{
    if (!QDir().mkpath(m_strFolder)) {
        strReason = m_strFolder + QStringLiteral(": The folder cannot be made.");
        return false;
    }
    // Before anything is written: other users must not be able to read the names of the frames.
    QFile::setPermissions(m_strFolder,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return m_lock.isTaken() || m_lock.take(lockFile(m_strFolder, m_strStem), &strReason);
}

}  // namespace tessera
