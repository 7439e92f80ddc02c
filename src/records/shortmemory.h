// CShortMemory: a lack of memory that tells what needed how much.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <new>

namespace tessera {

/// What is thrown where memory runs out, or would, with words for the log.
class CShortMemory : public std::bad_alloc {
public:
    /// @param strWhat  what was being done, with the name of the file
    /// @param nBytes   about what it takes
    CShortMemory(const QString& strWhat, std::uint64_t nBytes);
    /// "WHAT takes about N MB, which cannot be had.", and what helps.
    QString text() const { return QString::fromUtf8(m_bytesText); }
    const char* what() const noexcept override { return m_bytesText.constData(); }

private:
    QByteArray m_bytesText;
};

}  // namespace tessera
