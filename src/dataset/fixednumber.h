// Fixed numbers: appends numbers to text files, right aligned, in the C locale.
#pragma once

#include <QByteArray>

namespace tessera {

/// Appends a number with nDecimals decimals, right aligned to at least nWidth characters. The digits are
/// those of printf in the C locale: the exact value is rounded, a tie to the even digit.
/// @return the number of characters before alignment
int appendFixed(QByteArray& strText, double dfValue, int nDecimals, int nWidth = 0);

/// Appends a whole number likewise.
int appendInt(QByteArray& strText, int nValue, int nWidth = 0);

}  // namespace tessera
