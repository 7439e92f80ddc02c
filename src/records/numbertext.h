// CNumberText: numbers in columns, as QString::arg() would write them, for tables of many rows.
#pragma once

#include <QString>

namespace tessera {

/// Appends numbers to one text. Each is filled with blanks on the left to its width, in the C locale.
class CNumberText {
public:
    CNumberText& whole(qint64 nValue, int nWidth) { return column(QString::number(nValue), nWidth); }
    CNumberText& fixed(double dfValue, int nWidth, int nDecimals)
    {
        return column(QString::number(dfValue, 'f', nDecimals), nWidth);
    }
    CNumberText& text(const char* pszText)
    {
        m_strText += QLatin1String(pszText);
        return *this;
    }
    /// The text so far; nothing is left.
    QString take()
    {
        QString strText;
        strText.swap(m_strText);
        return strText;
    }

private:
    // All columns but the first of a row have a blank before them.
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
