// CShortMemory: the exception for a lack of memory.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <new>

namespace tessera {

/// Thrown where memory runs out or would run out. It has a line for the log.
class CShortMemory : public std::bad_alloc {
public:
    /// @param strWhat  what was being done, with the name of the file
    /// @param nBytes   about how much memory it takes
    CShortMemory(const QString& strWhat, std::uint64_t nBytes);
    /// "WHAT takes about N MB, which cannot be had.", followed by advice.
    QString text() const { return QString::fromUtf8(m_bytesText); }
    const char* what() const noexcept override { return m_bytesText.constData(); }

private:
    QByteArray m_bytesText;
};

}  // namespace tessera
