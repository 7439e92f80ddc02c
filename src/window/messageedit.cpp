#include "window/messageedit.h"

#include <QFont>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextCursor>

namespace tessera {

MessageEdit::MessageEdit(QWidget* pParent) : QTextBrowser(pParent)
{
    setOpenExternalLinks(true);
    QFont fontLog = font();
    fontLog.setFamily(QStringLiteral("Courier"));
    fontLog.setStyleHint(QFont::TypeWriter);  // columns of numbers line up whatever stands in for it
    setFont(fontLog);
    m_strFontFamily = fontLog.family();

    // The lines are black, blue and red: a dark desktop must not darken what they stand on.
    QPalette paletteLog = palette();
    paletteLog.setColor(QPalette::Base, QColor(248, 248, 248));
    paletteLog.setColor(QPalette::Text, Qt::black);
    paletteLog.setColor(QPalette::Link, Qt::blue);
    paletteLog.setColor(QPalette::LinkVisited, Qt::darkMagenta);
    setPalette(paletteLog);

    // Who reads the last line goes on seeing it when a narrower log breaks more lines; the layout, and
    // with it the range, follows a change of size step by step.
    QScrollBar* pBar = verticalScrollBar();
    connect(pBar, &QScrollBar::valueChanged, this,
            [this, pBar](int nValue) { m_bAtEnd = nValue == pBar->maximum(); });
    connect(pBar, &QScrollBar::rangeChanged, this, [this, pBar](int, int nMaximum) {
        if (m_bAtEnd)
            pBar->setValue(nMaximum);
    });

    setFontWeight(QFont::Normal);
    m_format = currentCharFormat();
}

void MessageEdit::addMessage(const QString& strText, const QColor& color)
{
    const QColor colorBefore = textColor();
    setTextColor(color);
    m_format.setForeground(color);
    // As plain text, where append() would take what looks like a tag for one and close up the blanks.
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    if (!document()->isEmpty())
        cursor.insertBlock(QTextBlockFormat(), m_format);
    cursor.insertText(strText, m_format);
    setTextColor(colorBefore);
    moveCursor(QTextCursor::End);
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
