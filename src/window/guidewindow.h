// GuideWindow: the guide, as a window of the program.
#pragma once

#include <QHash>
#include <QImage>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>

class QLineEdit;

namespace tessera {

/// A browser of Markdown files: links go by the names that headings have on the web, pictures are made as
/// wide as the window has room for.
class GuideBrowser : public QTextBrowser {
    Q_OBJECT

public:
    /// Shows no text yet.
    explicit GuideBrowser(QWidget* pParent = nullptr);

    /// Pictures come in the size that the window has room for.
    QVariant loadResource(int nType, const QUrl& url) override;
    /// Brings the first heading of that name to the top, named as in the text or as in a link.
    /// @return false when there is none; the text then stays where it is
    bool showHeading(const QString& strName);

protected:
    void resizeEvent(QResizeEvent* pEvent) override;

private:
    void formatDocument();
    void fitPictures();
    void scrollTo(const QTextBlock& block);
    QImage fitted(const QImage& image) const;

    QHash<QUrl, QImage> m_hashPicture;  ///< by the names in the text, in full size
    QTimer m_timerFit;                  ///< runs while the window is being resized
    int m_nHeading = -1;                ///< place of the heading asked for last; -1 none
    int m_nHeadingValue = 0;  ///< of the scroll bar when it was shown; another one: the user went on
};

/// The guide with a field that searches in it.
class GuideWindow : public QWidget {
    Q_OBJECT

public:
    /// @param strFile  the Markdown file, as guideFile() gives it
    explicit GuideWindow(const QString& strFile);

    /// The guide as installed beside the program, or as in the folder of its sources; empty when there is
    /// none.
    static QString guideFile();
    /// Opens the window at a heading, or at the top when there is none of that name.
    void showAt(const QString& strHeading);
    /// Goes to the next place, or the one before, of the text in the search field.
    void find(bool bBackward = false);

    GuideBrowser* m_pBrowser = nullptr;  ///< the text
    QLineEdit* m_pSearchEdit = nullptr;  ///< what is searched for

private:
    QUrl m_urlGuide;
};

}  // namespace tessera
