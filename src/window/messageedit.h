// MessageEdit: the message log of the window.
#pragma once

#include <QColor>
#include <QString>
#include <QTextBrowser>
#include <QTextCharFormat>
#include <QTextCursor>

#include <functional>
#include <vector>

namespace tessera {

/// Of lines that say that a result is doubtful: amber, dark enough to be read on the ground of the log.
const QColor g_colorDoubt(166, 98, 0);

/// A log of coloured lines on a light ground, whatever the colours of the desktop. Long tables can be folded
/// away, and a line can have a link that does something.
class MessageEdit : public QTextBrowser {
    Q_OBJECT

public:
    /// An empty log.
    explicit MessageEdit(QWidget* pParent = nullptr);

    /// Appends a paragraph in that colour and moves the cursor to the end.
    void addMessage(const QString& strText, const QColor& color = Qt::black);
    /// Puts HTML text at the end, without a new paragraph. Links open in the user's browser.
    void addHtml(const QString& strText, const QColor& color = Qt::black);
    /// Appends a paragraph with a link behind it; a click on that calls `fn`, as often as it comes.
    void addOffer(const QString& strText, const QString& strLink, const std::function<void()>& fn);

    /// Begins a fold: what is appended until endFold() can be hidden below its title.
    void beginFold(const QString& strTitle);
    /// Closes it; its red lines stay in view. A click on the title opens and closes it from then on.
    void endFold();

protected:
    /// Keeps the copy key for selected text; without one the window has it.
    bool event(QEvent* pEvent) override;

private:
    struct Fold {
        QTextCursor cursorTitle, cursorEnd;  ///< these go along with what is inserted before them
        bool bOpen = true;
    };
    QTextCursor newParagraph();
    void appendLink(QTextCursor& cursor, const QString& strText, const QString& strAddress);
    void openLink(const QUrl& url);
    void showFold(Fold& fold);

    std::vector<Fold> m_listFold;
    std::vector<std::function<void()>> m_listOffer;
    bool m_bAtEnd = true;  ///< the last line is in view
    QTextCharFormat m_format;
    QString m_strFontFamily;
};

}  // namespace tessera
