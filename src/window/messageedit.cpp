#include "window/messageedit.h"

#include <QDesktopServices>
#include <QFont>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QUrl>

namespace tessera {

namespace {

bool isRed(const QTextBlock& block)
{
    return !block.begin().atEnd() &&
           block.begin().fragment().charFormat().foreground().color() == QColor(Qt::red);
}

}  // namespace

MessageEdit::MessageEdit(QWidget* pParent) : QTextBrowser(pParent)
{
    setOpenLinks(false);  // some are the log's own
    connect(this, &QTextBrowser::anchorClicked, this, &MessageEdit::openLink);
    QFont fontLog = font();
    fontLog.setFamily(QStringLiteral("Courier"));
    fontLog.setStyleHint(QFont::TypeWriter);  // substitutes are monospaced, too: columns align
    setFont(fontLog);
    m_strFontFamily = fontLog.family();

    // The lines are black, blue and red, so the ground stays light on a dark desktop, too.
    QPalette paletteLog = palette();
    paletteLog.setColor(QPalette::Base, QColor(248, 248, 248));
    paletteLog.setColor(QPalette::Text, Qt::black);
    paletteLog.setColor(QPalette::Link, Qt::blue);
    paletteLog.setColor(QPalette::LinkVisited, Qt::darkMagenta);
    setPalette(paletteLog);

    // The last line stays in view when a narrower log breaks more lines. The layout, and with it the range
    // of the scroll bar, follows a change of size step by step.
    QScrollBar* pBar = verticalScrollBar();
    connect(pBar, &QScrollBar::valueChanged, this,
            [this, pBar](int nValue) { m_bAtEnd = nValue == pBar->maximum(); });
    connect(pBar, &QScrollBar::rangeChanged, this, [this, pBar](int, int nMaximum) {
        if (m_bAtEnd) {
            pBar->setValue(nMaximum);
        }
    });

    setFontWeight(QFont::Normal);
    m_format = currentCharFormat();
}

void MessageEdit::addMessage(const QString& strText, const QColor& color)
{
    const QColor colorBefore = textColor();
    setTextColor(color);
    m_format.setForeground(color);
    QTextCursor cursor = newParagraph();
    cursor.insertText(strText, m_format);
    setTextColor(colorBefore);
    moveCursor(QTextCursor::End);
}

/// Inserts plain text. append() would take "<...>" for a tag and close up the blanks.
QTextCursor MessageEdit::newParagraph()
{
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    if (!document()->isEmpty()) {
        cursor.insertBlock(QTextBlockFormat(), m_format);
    }
    cursor.block().setVisible(true);  // whatever the one before it is
    return cursor;
}

void MessageEdit::appendLink(QTextCursor& cursor, const QString& strText, const QString& strAddress)
{
    QTextCharFormat format = m_format;
    format.setAnchor(true);
    format.setAnchorHref(strAddress);
    format.setForeground(palette().link());
    format.setFontUnderline(true);
    cursor.insertText(strText, format);
}

void MessageEdit::addOffer(const QString& strText, const QString& strLink, const std::function<void()>& fn)
{
    addMessage(strText + QLatin1Char(' '), Qt::blue);
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    appendLink(cursor, strLink, QStringLiteral("offer:%1").arg(m_listOffer.size()));
    m_listOffer.push_back(fn);
    moveCursor(QTextCursor::End);
}

void MessageEdit::beginFold(const QString& strTitle)
{
    m_format.setForeground(Qt::black);
    QTextCursor cursor = newParagraph();
    Fold fold;
    fold.cursorTitle = cursor;
    fold.cursorTitle.setKeepPositionOnInsert(true);
    appendLink(cursor, QStringLiteral("▾ %1").arg(strTitle),
               QStringLiteral("fold:%1").arg(m_listFold.size()));
    m_listFold.push_back(fold);
    moveCursor(QTextCursor::End);
}

void MessageEdit::endFold()
{
    if (m_listFold.empty()) {
        return;
    }
    Fold& fold = m_listFold.back();
    fold.cursorEnd = QTextCursor(document());
    fold.cursorEnd.movePosition(QTextCursor::End);
    fold.cursorEnd.setKeepPositionOnInsert(true);
    fold.bOpen = false;
    showFold(fold);
}

void MessageEdit::showFold(Fold& fold)
{
    if (fold.cursorEnd.isNull()) {
        return;  // its run is under way
    }
    const QTextBlock blockTitle = fold.cursorTitle.block();
    for (QTextBlock block = blockTitle.next();
         block.isValid() && block.position() <= fold.cursorEnd.position(); block = block.next()) {
        block.setVisible(fold.bOpen || isRed(block));
    }
    QTextCursor cursor(blockTitle);
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    const QTextCharFormat format = cursor.charFormat();
    cursor.insertText(fold.bOpen ? QStringLiteral("▾") : QStringLiteral("▸"), format);
    document()->markContentsDirty(blockTitle.position(), fold.cursorEnd.position() - blockTitle.position());
}

void MessageEdit::openLink(const QUrl& url)
{
    const size_t nPlace = url.path().toUInt();
    if (url.scheme() == QLatin1String("offer") && nPlace < m_listOffer.size()) {
        const std::function<void()> fn = m_listOffer[nPlace];  // it may add an offer
        fn();
    } else if (url.scheme() == QLatin1String("fold") && nPlace < m_listFold.size()) {
        m_listFold[nPlace].bOpen = !m_listFold[nPlace].bOpen;
        showFold(m_listFold[nPlace]);
    } else if (url.scheme().startsWith(QLatin1String("http"))) {
        QDesktopServices::openUrl(url);
    }
}

void MessageEdit::addHtml(const QString& strText, const QColor& color)
{
    moveCursor(QTextCursor::End);
    insertHtml(QStringLiteral("<html><font face=\"%1\" color=\"%2\">%3</font></html>")
                   .arg(m_strFontFamily, color.name(), strText));
}

bool MessageEdit::event(QEvent* pEvent)
{
    if (pEvent->type() == QEvent::ShortcutOverride && textCursor().hasSelection() &&
        static_cast<QKeyEvent*>(pEvent)->matches(QKeySequence::Copy)) {
        pEvent->accept();
        return true;
    }
    return QTextBrowser::event(pEvent);
}

}  // namespace tessera
