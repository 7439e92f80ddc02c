// CTextScanner: reads numbers and words from a line, independent of the locale.
#pragma once

#include <QByteArray>

namespace tessera {

/// Reads the items of a line from left to right, as scanf does in the C locale.
///
/// scanf itself uses the locale of the process, in which "1.5" may be read as 1. Each function skips white
/// space and reads the longest text that is a number of its type: decimal or hexadecimal, "inf" and "nan"
/// included. It need not be followed by white space. A number too large for double or float becomes
/// infinite and one too small 0, as with scanf. An integer that does not fit into an int is refused, where
/// the behaviour of scanf is undefined. A function that returns false leaves its target as it was.
class CTextScanner {
public:
    /// @param strLine  must outlive the scanner
    explicit CTextScanner(const QByteArray& strLine) : CTextScanner(strLine.begin(), strLine.end()) {}
    /// Scans the characters from pBegin to pEnd.
    CTextScanner(const char* pBegin, const char* pEnd) : m_p(pBegin), m_pEnd(pEnd) {}

    /// Reads an integer.
    bool readInt(int& nValue);
    /// Reads a number.
    bool readDouble(double& dfValue);
    /// Reads a number that is rounded to single precision only once.
    bool readFloat(float& fValue);
    /// Reads a word up to white space, at most nMax characters if nMax is not 0.
    bool readWord(QByteArray& strWord, int nMax = 0);
    /// Whether the last item ends at white space or at the end of the line.
    bool atWordEnd() const { return m_p == m_pEnd || isSpace(*m_p); }
    /// The place after the last item.
    const char* position() const { return m_p; }

    /// Whether a character is white space in the C locale.
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
