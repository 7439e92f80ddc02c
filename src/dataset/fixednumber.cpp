#include "dataset/fixednumber.h"

#include <charconv>

namespace tessera {

namespace {

int appendAligned(QByteArray& strText, const char* pBegin, const char* pEnd, int nWidth)
{
    const int nLength = int(pEnd - pBegin);
    if (nLength < nWidth) {
        strText.append(nWidth - nLength, ' ');
    }
    strText.append(pBegin, nLength);
    return nLength;
}

}  // namespace

int appendFixed(QByteArray& strText, double dfValue, int nDecimals, int nWidth)
{
    char aText[400];  // at most 309 digits before the point
    const std::to_chars_result result = std::to_chars(aText, aText + sizeof(aText), dfValue,
                                                      std::chars_format::fixed, qMin(nDecimals, 80));
    return appendAligned(strText, aText, result.ptr, nWidth);
}

int appendInt(QByteArray& strText, int nValue, int nWidth)
{
    char aText[16];
    return appendAligned(strText, aText, std::to_chars(aText, aText + sizeof(aText), nValue).ptr, nWidth);
}

}  // namespace tessera
