// MessageEdit: the message log of the window.
#pragma once

#include <QColor>
#include <QString>
#include <QTextBrowser>
#include <QTextCharFormat>

namespace tessera {

/// Of lines that say that a result is doubtful: amber, dark enough to be read on the ground of the log.
const QColor g_colorDoubt(166, 98, 0);

/// A log of coloured lines on a light ground, whatever the colours of the desktop.
class MessageEdit : public QTextBrowser {
    Q_OBJECT

public:
    explicit MessageEdit(QWidget* pParent = nullptr);

    /// Appends a paragraph in that colour and moves the cursor to the end.
    void addMessage(const QString& strText, const QColor& color = Qt::black);
    /// Puts HTML text at the end, without a new paragraph. Links open in the user's browser.
    void addHtml(const QString& strText, const QColor& color = Qt::black);

protected:
    /// Keeps the copy key for selected text; without one the window has it.
    bool event(QEvent* pEvent) override;

private:
    bool m_bAtEnd = true;  ///< the last line is in view
    QTextCharFormat m_format;
    QString m_strFontFamily;
};

}  // namespace tessera
