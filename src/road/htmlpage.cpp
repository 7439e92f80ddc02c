#include "road/htmlpage.h"

#include <QRegularExpression>

namespace tessera {

namespace {

/// Whether a cell is a number, "-", "12.3", "12.3(4)" or "45 %", and is to be aligned to the right.
bool isNumber(const QString& strText)
{
    static const QRegularExpression number(QRegularExpression::anchoredPattern(
        QStringLiteral("-|[-+]?[0-9][0-9.,e+-]*(\\([0-9.]+\\))?( ?(%|°|Å|px|s))?")));
    return number.match(strText).hasMatch();
}

/// A name of a Laue class, such as "-3", is not a number.
bool isColumnOfNumbers(const std::vector<QStringList>& listRow, int nColumn)
{
    bool bAny = false;
    for (const QStringList& listCell : listRow) {
        const QString strCell = listCell.value(nColumn);
        if (!strCell.isEmpty() && !isNumber(strCell)) {
            return false;
        }
        bAny = bAny || !strCell.isEmpty();
    }
    return bAny;
}

}  // namespace

QString plainXmlText(const QString& strText)
{
    QString strPlain = strText;
    for (int n = 0; n < strPlain.size(); ++n) {
        const QChar c = strPlain.at(n);
        if (c.isHighSurrogate() && n + 1 < strPlain.size() && strPlain.at(n + 1).isLowSurrogate()) {
            ++n;
            continue;
        }
        const bool bBreak = c == QLatin1Char('\n') || c == QLatin1Char('\t');
        const bool bControl = c.unicode() < 0x20 || (c.unicode() >= 0x7f && c.unicode() < 0xa0);
        if ((bControl && !bBreak) || c.isSurrogate() || c.unicode() >= 0xfffe) {
            strPlain[n] = QChar::ReplacementCharacter;
        }
    }
    return strPlain;
}

CHtmlPage::CHtmlPage(const QString& strTitle, const QString& strStyle) : m_buffer(&m_bytes), m_xml(&m_buffer)
{
    m_buffer.open(QIODevice::WriteOnly);
    m_xml.setCodec("UTF-8");
    m_xml.writeDTD(QStringLiteral("<!DOCTYPE html>"));
    m_xml.writeCharacters(QStringLiteral("\n"));
    open("html");
    attribute("lang", QStringLiteral("en"));
    open("head");
    open("meta");
    attribute("charset", QStringLiteral("utf-8"));
    close();
    open("meta");
    attribute("name", QStringLiteral("viewport"));
    attribute("content", QStringLiteral("width=device-width, initial-scale=1"));
    close();
    element("title", strTitle);
    element("style", strStyle);
    close();
    open("body");
}

void CHtmlPage::open(const char* pszElement, const char* pszClass)
{
    m_xml.writeStartElement(QLatin1String(pszElement));
    if (*pszClass != '\0') {
        attribute("class", QLatin1String(pszClass));
    }
}

void CHtmlPage::close()
{
    m_xml.writeEndElement();
}

void CHtmlPage::attribute(const char* pszName, const QString& strValue)
{
    m_xml.writeAttribute(QLatin1String(pszName), plainXmlText(strValue));
}

void CHtmlPage::attribute(const char* pszName, double dfValue)
{
    attribute(pszName, QString::number(dfValue, 'g', 6));
}

void CHtmlPage::text(const QString& strText)
{
    m_xml.writeCharacters(plainXmlText(strText));
}

void CHtmlPage::element(const char* pszElement, const QString& strText, const char* pszClass)
{
    open(pszElement, pszClass);
    text(strText);  // even an empty text avoids "<td/>", which HTML treats as an opening tag
    close();
    m_xml.writeCharacters(QStringLiteral("\n"));
}

void CHtmlPage::table(const QStringList& listHead, const std::vector<QStringList>& listRow,
                      const QString& strCaption)
{
    open("div", "scroll");
    open("table");
    if (!strCaption.isEmpty()) {
        element("caption", strCaption);
    }
    open("thead");
    open("tr");
    std::vector<const char*> listClass;
    for (int n = 0; n < listHead.size(); ++n) {
        listClass.push_back(isColumnOfNumbers(listRow, n) ? "number" : "");
        element("th", listHead[n], listClass.back());
    }
    close();
    close();
    open("tbody");
    for (const QStringList& listCell : listRow) {
        open("tr");
        for (int n = 0; n < listCell.size(); ++n) {
            element("td", listCell[n], size_t(n) < listClass.size() ? listClass[n] : "");
        }
        close();
    }
    close();
    close();
    close();
}

QByteArray CHtmlPage::end()
{
    m_xml.writeEndDocument();
    m_buffer.close();
    return m_bytes;
}

}  // namespace tessera
