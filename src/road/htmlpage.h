// CHtmlPage: a page for a browser, one file that refers to nothing outside.
#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QXmlStreamWriter>

#include <vector>

namespace tessera {

/// Writes HTML5 that is well-formed XML as well. All text is escaped; characters that XML has no place for
/// become U+FFFD, so that no name of a file can end or change the page.
class CHtmlPage {
public:
    /// Begins the page.
    /// @param strStyle  CSS without the characters & < > and quotes, which XML and HTML escape differently
    CHtmlPage(const QString& strTitle, const QString& strStyle);
    CHtmlPage(const CHtmlPage&) = delete;
    CHtmlPage& operator=(const CHtmlPage&) = delete;

    /// Opens an element, with a class unless that is empty; close() ends it.
    void open(const char* pszElement, const char* pszClass = "");
    void close();
    void attribute(const char* pszName, const QString& strValue);
    void attribute(const char* pszName, double dfValue);
    void text(const QString& strText);
    /// A whole element with a text.
    void element(const char* pszElement, const QString& strText, const char* pszClass = "");
    /// A table that scrolls in itself where the window is narrow. Cells that hold a number stand to the
    /// right.
    void table(const QStringList& listHead, const std::vector<QStringList>& listRow,
               const QString& strCaption = {});

    /// Ends the page and hands it out.
    QByteArray end();

private:
    QByteArray m_bytes;
    QBuffer m_buffer;
    QXmlStreamWriter m_xml;
};

/// The text with U+FFFD in the place of characters that no XML may hold: control characters but for line
/// breaks and tabulators, halves of surrogate pairs, U+FFFE and U+FFFF.
QString plainXmlText(const QString& strText);

}  // namespace tessera
