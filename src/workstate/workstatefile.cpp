#include "workstate/workstatefile.h"

#include "workstate/statereader.h"
#include "workstate/statewriter.h"

#include <QCryptographicHash>

namespace tessera {

namespace {

constexpr int g_nVersionBytes = int(sizeof(quint32));
constexpr int g_nSumBytes = 16;

QByteArray mark()
{
    return QByteArrayLiteral("TesseraWorkState");
}

QByteArray sumOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5);
}

std::nullopt_t refused(QString* pstrReason, const QString& strWhy)
{
    if (pstrReason) {
        *pstrReason = strWhy;
    }
    return std::nullopt;
}

}  // namespace

QByteArray workStateHead(const QByteArray& bytesValues)
{
    QByteArray bytesVersion(g_nVersionBytes, 0);
    qToLittleEndian(g_nWorkStateVersion, bytesVersion.data());
    return mark() + bytesVersion + sumOf(bytesValues);
}

QByteArray workStateBytes(const WorkState& state)
{
    CStateWriter writer;
    writer.put(state);
    const QByteArray bytes = writer.bytes();
    return bytes.isEmpty() ? bytes : workStateHead(bytes) + bytes;
}

std::optional<WorkState> workStateFromBytes(const QByteArray& bytes, QString* pstrReason)
{
    const int nHead = mark().size() + g_nVersionBytes + g_nSumBytes;
    if (!bytes.startsWith(mark()) || bytes.size() < nHead) {
        return refused(pstrReason, QStringLiteral("It was not saved by this program, or is truncated."));
    }
    const auto nVersion = qFromLittleEndian<quint32>(bytes.constData() + mark().size());
    if (nVersion != g_nWorkStateVersion) {
        return refused(pstrReason,
                       QStringLiteral("It is of another version of the program (%1 instead of %2).")
                           .arg(nVersion)
                           .arg(g_nWorkStateVersion));
    }
    const QByteArray bytesValues = QByteArray::fromRawData(bytes.constData() + nHead, bytes.size() - nHead);
    if (bytes.mid(nHead - g_nSumBytes, g_nSumBytes) != sumOf(bytesValues)) {
        return refused(pstrReason, QStringLiteral("It is damaged: the check sum is wrong."));
    }
    CStateReader reader(bytesValues);
    WorkState state;
    reader.take(state);
    if (!reader.isWhole()) {
        return refused(pstrReason, QStringLiteral("It is damaged: a value is missing, or not of its kind."));
    }
    return state;
}

}  // namespace tessera
