#include "road/filefacts.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonObject>

#include <openssl/evp.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

namespace tessera {

namespace {

struct DigestFree {
    void operator()(EVP_MD_CTX* pContext) const { EVP_MD_CTX_free(pContext); }
};

// SHA-256 by OpenSSL, which uses the instructions of the processor. Qt's implementation takes longer for the
// frames of a series than peak hunting.
class CSha256 {
public:
    CSha256() : m_pContext(EVP_MD_CTX_new())
    {
        m_bGood = m_pContext && EVP_DigestInit_ex(m_pContext.get(), EVP_sha256(), nullptr) == 1;
    }
    void add(const char* pBytes, qint64 nBytes)
    {
        m_bGood = m_bGood && EVP_DigestUpdate(m_pContext.get(), pBytes, size_t(nBytes)) == 1;
    }
    /// @return empty if OpenSSL failed, for lack of memory or because a policy of the system forbids it
    QByteArray result()
    {
        QByteArray bytes(32, Qt::Uninitialized);
        m_bGood = m_bGood && EVP_DigestFinal_ex(m_pContext.get(),
                                                reinterpret_cast<unsigned char*>(bytes.data()), nullptr) == 1;
        return m_bGood ? bytes : QByteArray();
    }

private:
    std::unique_ptr<EVP_MD_CTX, DigestFree> m_pContext;
    bool m_bGood = false;
};

/// @return empty if the file cannot be read to its end, or reading was stopped
QByteArray sha256Of(const QString& strFile, const std::atomic<bool>& bStop)
{
    const qint64 nPiece = 1 << 20;
    QFile file(strFile);
    // Opening a pipe would wait for a writer.
    if (!QFileInfo(strFile).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return {};
    }
    CSha256 hash;
    QByteArray bytes(int(nPiece), Qt::Uninitialized);
    for (;;) {
        const qint64 nRead = file.read(bytes.data(), nPiece);
        if (nRead < 0 || bStop) {
            return {};
        }
        if (nRead == 0) {
            return hash.result();
        }
        hash.add(bytes.constData(), nRead);
    }
}

FileFacts factsWithoutHash(const QString& strFile)
{
    const QFileInfo info(strFile);
    FileFacts facts{info.absoluteFilePath(), -1, {}, {}};
    if (info.exists()) {
        facts.nSize = info.size();
        facts.changed = info.lastModified().toUTC();
    }
    return facts;
}

}  // namespace

std::vector<FileFacts> factsOfFiles(const QStringList& listFile, int nJobs,
                                    const std::function<bool(int)>& fnGoOn)
{
    std::vector<FileFacts> listFacts(listFile.size());
    std::atomic<size_t> nNext{0}, nDone{0};
    std::atomic<bool> bStop{false};
    std::mutex mutex;
    std::condition_variable done;
    const auto work = [&] {
        for (size_t n = nNext++; n < listFacts.size(); n = nNext++) {
            try {
                listFacts[n] = factsWithoutHash(listFile[int(n)]);
                if (!bStop) {
                    listFacts[n].bytesSha256 = sha256Of(listFile[int(n)], bStop);
                }
            } catch (const std::bad_alloc&) {
                listFacts[n].bytesSha256.clear();  // as for a file that cannot be read
            }
            const std::lock_guard<std::mutex> lock(mutex);
            if (++nDone == listFacts.size()) {
                done.notify_all();
            }
        }
    };
    std::vector<std::thread> listThread;
    const size_t nThreads = std::min(size_t(std::max(1, nJobs)), listFacts.size());
    for (size_t n = 0; n < nThreads; ++n) {
        try {
            listThread.emplace_back(work);
        } catch (const std::exception&) {
            break;  // no memory or no thread left: the existing threads do the work
        }
    }
    if (listThread.empty()) {
        work();
    }
    {
        std::unique_lock<std::mutex> lock(mutex);
        while (nDone < listFacts.size()) {
            done.wait_for(lock, std::chrono::milliseconds(100));
            lock.unlock();
            bStop = bStop || (fnGoOn && !fnGoOn(int(nDone)));
            lock.lock();
        }
    }
    for (std::thread& thread : listThread) {
        thread.join();
    }
    return listFacts;
}

QJsonArray factsArray(const std::vector<FileFacts>& listFacts)
{
    QJsonArray array;
    for (const FileFacts& facts : listFacts) {
        QJsonObject object{{QStringLiteral("path"), facts.strFile}};
        if (facts.nSize >= 0) {
            object[QStringLiteral("size")] = double(facts.nSize);
            object[QStringLiteral("changed")] = facts.changed.toString(Qt::ISODateWithMs);
        }
        if (!facts.bytesSha256.isEmpty()) {
            object[QStringLiteral("sha256")] = QString::fromLatin1(facts.bytesSha256.toHex());
        }
        array.append(object);
    }
    return array;
}

}  // namespace tessera
