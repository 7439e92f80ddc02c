// CHtmlPage: writes a self-contained HTML page.
#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QXmlStreamWriter>

#include <vector>

namespace tessera {

/// Writes HTML5 that is also well-formed XML. All text is escaped, and characters that XML does not allow are
/// replaced by U+FFFD, so that a file name cannot break the page.
class CHtmlPage {
public:
    /// Begins the page.
    /// @param strStyle  CSS without the characters & < > and quotes, which XML and HTML escape differently
    CHtmlPage(const QString& strTitle, const QString& strStyle);
    CHtmlPage(const CHtmlPage&) = delete;             ///< its writer refers to its buffer
    CHtmlPage& operator=(const CHtmlPage&) = delete;  ///< its writer refers to its buffer

    /// Starts an element, with a class unless that is empty.
    void open(const char* pszElement, const char* pszClass = "");
    /// Ends the innermost open element.
    void close();
    /// Adds an attribute to the element that was just opened.
    void attribute(const char* pszName, const QString& strValue);
    /// The same with a number, written in the C locale.
    void attribute(const char* pszName, double dfValue);
    /// Adds text to the open element.
    void text(const QString& strText);
    /// Writes an element that contains only text.
    void element(const char* pszElement, const QString& strText, const char* pszClass = "");
    /// Writes a table, which scrolls by itself in a narrow window. Numbers are aligned to the right.
    void table(const QStringList& listHead, const std::vector<QStringList>& listRow,
               const QString& strCaption = {});

    /// Ends the page and returns it.
    QByteArray end();

private:
    QByteArray m_bytes;
    QBuffer m_buffer;
    QXmlStreamWriter m_xml;
};

/// The text with characters that XML does not allow replaced by U+FFFD: control characters except line breaks
/// and tabulators, unpaired surrogates, U+FFFE and U+FFFF.
QString plainXmlText(const QString& strText);

}  // namespace tessera
