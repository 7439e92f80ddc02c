#include "window/guidewindow.h"

#include "window/pages/controltips.h"

#include <QAbstractTextDocumentLayout>
#include <QAction>
#include <QCoreApplication>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QIcon>
#include <QLineEdit>
#include <QScreen>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTextBlock>
#include <QTextFrame>
#include <QTextTable>
#include <QToolButton>
#include <QVBoxLayout>

namespace tessera {

namespace {

const int g_nMargin = 12;       // pixels, of the text
const int g_nCellPadding = 4;   // pixels
const int g_nSettleTime = 100;  // ms between the last resizing and new pictures
const char g_szGuide[] = "tessera/doc/guide.md";

// What a link to a heading is called on the web: small letters, hyphens for blanks, no punctuation.
QString linkName(const QString& strHeading)
{
    QString strName;
    for (const QChar c : strHeading.trimmed().toLower()) {
        if (c.isLetterOrNumber() || c == QLatin1Char('-') || c == QLatin1Char('_')) {
            strName += c;
        } else if (c == QLatin1Char(' ')) {
            strName += QLatin1Char('-');
        }
    }
    return strName;
}

void formatTables(QTextFrame* pFrame)
{
    for (QTextFrame* pChild : pFrame->childFrames()) {
        if (auto* pTable = qobject_cast<QTextTable*>(pChild)) {
            QTextTableFormat format = pTable->format();
            format.setBorder(1);
            format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
            format.setBorderBrush(Qt::lightGray);
            format.setBorderCollapse(true);
            format.setCellSpacing(0);
            format.setCellPadding(g_nCellPadding);
            format.setBottomMargin(g_nMargin);
            pTable->setFormat(format);
        }
        formatTables(pChild);
    }
}

}  // namespace

GuideBrowser::GuideBrowser(QWidget* pParent) : QTextBrowser(pParent)
{
    setOpenExternalLinks(true);
    document()->setDocumentMargin(g_nMargin);
    m_timerFit.setSingleShot(true);
    m_timerFit.setInterval(g_nSettleTime);
    connect(&m_timerFit, &QTimer::timeout, this, &GuideBrowser::fitPictures);
    connect(this, &QTextBrowser::sourceChanged, this, [this](const QUrl& url) {
        m_nHeading = -1;
        formatDocument();
        if (url.hasFragment()) {
            showHeading(url.fragment());
        }
    });
}

QVariant GuideBrowser::loadResource(int nType, const QUrl& url)
{
    const QVariant loaded = QTextBrowser::loadResource(nType, url);
    if (nType != QTextDocument::ImageResource) {
        return loaded;
    }
    const QImage image = loaded.type() == QVariant::ByteArray ? QImage::fromData(loaded.toByteArray())
                                                              : loaded.value<QImage>();
    if (image.isNull()) {
        return loaded;
    }
    m_hashPicture[url] = image;
    return fitted(image);
}

QImage GuideBrowser::fitted(const QImage& image) const
{
    const int nRoom = qMax(100, viewport()->width() - 2 * g_nMargin - 2);
    return image.width() > nRoom ? image.scaledToWidth(nRoom, Qt::SmoothTransformation) : image;
}

void GuideBrowser::fitPictures()
{
    // The text at the top of the window stays there, however much the pictures above it have grown. A
    // heading that was asked for before the window had its size is brought to the top once more.
    const bool bUntouched = m_nHeading >= 0 && verticalScrollBar()->value() == m_nHeadingValue;
    const int nPlace = bUntouched ? m_nHeading : cursorForPosition(QPoint(g_nMargin, 1)).position();
    for (auto it = m_hashPicture.cbegin(); it != m_hashPicture.cend(); ++it) {
        document()->addResource(QTextDocument::ImageResource, it.key(), fitted(it.value()));
    }
    document()->markContentsDirty(0, document()->characterCount());
    const QTextBlock block = document()->findBlock(nPlace);
    if (block.isValid() && (bUntouched || verticalScrollBar()->value() > 0)) {
        scrollTo(block);
    }
}

void GuideBrowser::scrollTo(const QTextBlock& block)
{
    verticalScrollBar()->setValue(int(document()->documentLayout()->blockBoundingRect(block).top()));
    m_nHeadingValue = verticalScrollBar()->value();
}

void GuideBrowser::resizeEvent(QResizeEvent* pEvent)
{
    QTextBrowser::resizeEvent(pEvent);
    m_timerFit.start();
}

void GuideBrowser::formatDocument()
{
    formatTables(document()->rootFrame());
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0) {
            continue;
        }
        QTextBlockFormat format = block.blockFormat();
        format.setTopMargin(g_nMargin);
        QTextCursor(block).setBlockFormat(format);
    }
}

bool GuideBrowser::showHeading(const QString& strName)
{
    const QString strLink = linkName(strName);
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0 || linkName(block.text()) != strLink) {
            continue;
        }
        setTextCursor(QTextCursor(block));
        m_nHeading = block.position();
        scrollTo(block);
        return true;
    }
    return false;
}

GuideWindow::GuideWindow(const QString& strFile) : m_urlGuide(QUrl::fromLocalFile(strFile))
{
    setWindowTitle(tr("Guide"));
    setWindowIcon(QIcon(QStringLiteral(":/images/tessera.png")));
    m_pBrowser = new GuideBrowser(this);
    m_pSearchEdit = new QLineEdit(this);
    m_pSearchEdit->setPlaceholderText(tr("Search"));
    m_pSearchEdit->setClearButtonEnabled(true);
    explain(m_pSearchEdit,
            tr("Text to look for; Return goes to the next place, Shift+Return to the one before."));
    explainArea(m_pBrowser,
                tr("The guide. Links lead to other sections; those to other sites open in your browser."));

    auto* pTop = new QHBoxLayout;
    const auto addButton = [&](const QString& strText, const QString& strTip, const QKeySequence& key,
                               const auto& fnClicked) {
        auto* pButton = new QToolButton(this);
        pButton->setText(strText);
        pButton->setShortcut(key);
        pButton->setAutoRaise(true);
        explain(pButton, strTip);
        connect(pButton, &QToolButton::clicked, this, fnClicked);
        pTop->addWidget(pButton);
        return pButton;
    };
    auto* pBack = addButton(tr("Back"), tr("The place before the last link."), QKeySequence::Back,
                            [this] { m_pBrowser->backward(); });
    auto* pForward = addButton(tr("Forward"), tr("The place before going back."), QKeySequence::Forward,
                               [this] { m_pBrowser->forward(); });
    addButton(tr("Contents"), tr("The list of sections."), {}, [this] { m_pBrowser->setSource(m_urlGuide); });
    pTop->addStretch(1);
    pTop->addWidget(m_pSearchEdit, 1);
    pBack->setEnabled(false);
    pForward->setEnabled(false);
    connect(m_pBrowser, &QTextBrowser::backwardAvailable, pBack, &QWidget::setEnabled);
    connect(m_pBrowser, &QTextBrowser::forwardAvailable, pForward, &QWidget::setEnabled);
    connect(m_pSearchEdit, &QLineEdit::returnPressed, this, [this] { find(); });
    const auto addKey = [this](const QList<QKeySequence>& listKey, const auto& fn) {
        auto* pAction = new QAction(this);
        pAction->setShortcuts(listKey);
        connect(pAction, &QAction::triggered, this, fn);
        addAction(pAction);
    };
    addKey({QKeySequence(Qt::SHIFT + Qt::Key_Return)}, [this] { find(true); });
    addKey(QKeySequence::keyBindings(QKeySequence::FindNext), [this] { find(); });
    addKey(QKeySequence::keyBindings(QKeySequence::Find), [this] {
        m_pSearchEdit->setFocus();
        m_pSearchEdit->selectAll();
    });
    addKey({QKeySequence(Qt::Key_Escape)}, [this] { close(); });

    auto* pLayout = new QVBoxLayout(this);
    pLayout->setContentsMargins(4, 4, 4, 4);
    pLayout->addLayout(pTop);
    pLayout->addWidget(m_pBrowser, 1);
    const QSize sizeScreen = screen() ? screen()->availableSize() : QSize(1280, 800);
    resize(QSize(900, 900).boundedTo(sizeScreen * 0.9));
    m_pBrowser->setSource(m_urlGuide);
}

QString GuideWindow::guideFile()
{
    // The guide is in ../share, seen from the program: bin and share have the same parent folder, also in the
    // build.
    const QFileInfo info(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/") +
                         QLatin1String(g_szGuide));
    return info.isFile()
               ? info.absoluteFilePath()
               : QStandardPaths::locate(QStandardPaths::GenericDataLocation, QLatin1String(g_szGuide));
}

void GuideWindow::showAt(const QString& strHeading)
{
    if (isMinimized()) {
        showNormal();
    }
    show();
    raise();
    activateWindow();
    if (m_pBrowser->source().adjusted(QUrl::RemoveFragment) != m_urlGuide) {
        m_pBrowser->setSource(m_urlGuide);
    }
    if (!m_pBrowser->showHeading(strHeading)) {
        m_pBrowser->setSource(m_urlGuide);
    }
}

void GuideWindow::find(bool bBackward)
{
    const QString strText = m_pSearchEdit->text();
    const auto options = bBackward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    if (strText.isEmpty() || m_pBrowser->find(strText, options)) {
        return;
    }
    m_pBrowser->moveCursor(bBackward ? QTextCursor::End : QTextCursor::Start);  // on from the other end
    m_pBrowser->find(strText, options);
}

}  // namespace tessera
