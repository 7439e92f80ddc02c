// CNumberText: numbers in columns, formatted as by QString::arg(), for tables with many rows.
#pragma once

#include <QString>

namespace tessera {

/// Builds a text from numbers in the C locale. Each number is padded with blanks on the left to its width,
/// and all but the first of a row get a blank before them.
class CNumberText {
public:
    /// Appends a whole number.
    CNumberText& whole(qint64 nValue, int nWidth) { return column(QString::number(nValue), nWidth); }
    /// Appends a number with `nDecimals` decimals.
    CNumberText& fixed(double dfValue, int nWidth, int nDecimals)
    {
        return column(QString::number(dfValue, 'f', nDecimals), nWidth);
    }
    /// Appends a text as it is, such as the end of a row.
    CNumberText& text(const char* pszText)
    {
        m_strText += QLatin1String(pszText);
        return *this;
    }
    /// Returns the text so far and starts a new one.
    QString take()
    {
        QString strText;
        strText.swap(m_strText);
        return strText;
    }

private:
    CNumberText& column(const QString& strNumber, int nWidth)
    {
        if (!m_strText.isEmpty() && !m_strText.endsWith(QLatin1Char('\n'))) {
            m_strText += QLatin1Char(' ');
        }
        for (int n = strNumber.size(); n < nWidth; ++n) {
            m_strText += QLatin1Char(' ');
        }
        m_strText += strNumber;
        return *this;
    }

    QString m_strText;
};

}  // namespace tessera
