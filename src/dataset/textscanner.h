// CTextScanner: takes numbers and words off a line, whatever the locale of the process.
#pragma once

#include <QByteArray>

namespace tessera {

/// Reads the items of one line from left to right, as scanf does in the C locale.
///
/// scanf itself goes by the locale of the process, where a decimal comma would make "1.5" a 1. Each
/// item skips the white space before it and takes the longest text that is such a number: decimal or
/// hexadecimal, "inf" and "nan" included; what follows it need not be white space. A number too large for
/// double or float becomes infinite, one too small 0, as with scanf; an integer that does not fit an
/// int is no item, where scanf's answer is left open. An item that fails leaves its target as it was.
class CTextScanner {
public:
    explicit CTextScanner(const QByteArray& strLine) : CTextScanner(strLine.begin(), strLine.end()) {}
    CTextScanner(const char* pBegin, const char* pEnd) : m_p(pBegin), m_pEnd(pEnd) {}

    bool readInt(int& nValue);
    bool readDouble(double& dfValue);
    /// Rounds the decimal number to single precision once.
    bool readFloat(float& fValue);
    /// The next characters up to white space, at most nMax of them if that is not 0.
    bool readWord(QByteArray& strWord, int nMax = 0);
    /// Whether the item just read ends at white space or at the end of the line.
    bool atWordEnd() const { return m_p == m_pEnd || isSpace(*m_p); }
    /// The place behind the item just read.
    const char* position() const { return m_p; }

    /// The white space of the C locale.
    static bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

private:
    void skipSpace()
    {
        while (m_p != m_pEnd && isSpace(*m_p)) {
            ++m_p;
        }
    }
    template <typename T>
    bool readReal(T& value);

    const char* m_p;
    const char* m_pEnd;
};

}  // namespace tessera
