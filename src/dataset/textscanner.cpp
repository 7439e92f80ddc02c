#include "dataset/textscanner.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// The value of a number for which from_chars reports that it is out of range without telling whether it is
// too large or too small.
template <typename T>
T outOfRangeValue(const char* pBegin, const char* pEnd)
{
    const double df = std::abs(QByteArray(pBegin, int(pEnd - pBegin)).toDouble());
    if (df > double(std::numeric_limits<T>::max())) {
        return std::numeric_limits<T>::infinity();
    }
    return T(df);
}

}  // namespace

template <typename T>
bool CTextScanner::readReal(T& value)
{
    skipSpace();
    const char* p = m_p;
    const bool bNegative = p != m_pEnd && *p == '-';
    if (p != m_pEnd && (*p == '+' || *p == '-')) {
        ++p;
    }
    if (p == m_pEnd || *p == '-') {  // from_chars would accept a second sign
        return false;
    }
    std::chars_format format = std::chars_format::general;
    if (m_pEnd - p >= 2 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
        p += 2;
        const char* const pDigit = p != m_pEnd && *p == '.' ? p + 1 : p;
        if (pDigit == m_pEnd || !isHexDigit(*pDigit)) {
            return false;
        }
        format = std::chars_format::hex;
    }
    T read = 0;
    const std::from_chars_result result = std::from_chars(p, m_pEnd, read, format);
    if (result.ec == std::errc::invalid_argument) {
        return false;
    }
    if (result.ec == std::errc::result_out_of_range) {
        read = outOfRangeValue<T>(p, result.ptr);
    }
    value = bNegative ? -read : read;
    m_p = result.ptr;
    return true;
}

bool CTextScanner::readInt(int& nValue)
{
    skipSpace();
    const char* p = m_p;
    if (p != m_pEnd && *p == '+') {
        ++p;
        if (p != m_pEnd && *p == '-') {
            return false;
        }
    }
    const std::from_chars_result result = std::from_chars(p, m_pEnd, nValue);
    if (result.ec != std::errc()) {
        return false;
    }
    m_p = result.ptr;
    return true;
}

bool CTextScanner::readDouble(double& dfValue)
{
    return readReal(dfValue);
}

bool CTextScanner::readFloat(float& fValue)
{
    return readReal(fValue);
}

bool CTextScanner::readWord(QByteArray& strWord, int nMax)
{
    skipSpace();
    const char* const pBegin = m_p;
    while (m_p != m_pEnd && !isSpace(*m_p) && (nMax == 0 || m_p - pBegin < nMax)) {
        ++m_p;
    }
    if (m_p == pBegin) {
        return false;
    }
    strWord = QByteArray(pBegin, int(m_p - pBegin));
    return true;
}

}  // namespace tessera
