#include "window/start/startpage.h"

#include "dataset/displayname.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QAbstractButton>
#include <QCommandLinkButton>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <new>

namespace tessera {

namespace {

const int g_nWidest = 1000;    // pixels: beyond it the eye loses the line of a row
const int g_nRowsAtLeast = 4;  // of the list in a low window

enum Column { ColumnName, ColumnCell, ColumnLattice, ColumnFrames, ColumnUsed, ColumnFolder, ColumnCount };

QString cellText(const CellParameters& cell)
{
    const QLocale locale = QLocale::system();
    QStringList listNumber;
    for (const double df : cell.numbers()) {
        listNumber.append(locale.toString(df, 'f', listNumber.size() < 3 ? 2 : 1));
    }
    return QStringLiteral("%1  %2  %3 Å   %4  %5  %6°")
        .arg(listNumber[0], listNumber[1], listNumber[2], listNumber[3], listNumber[4], listNumber[5]);
}

QCommandLinkButton* makeWay(QWidget* pParent, const QString& strText, const QString& strWhat,
                            const QString& strTip)
{
    auto* pButton = new QCommandLinkButton(strText, strWhat, pParent);
    pButton->setAccessibleName(strText);
    pButton->setAccessibleDescription(strWhat);
    pButton->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    explain(pButton, strTip);
    return pButton;
}

}  // namespace

StartPage::StartPage(QWidget* pView) : QScrollArea(pView), m_pView(pView)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setAutoFillBackground(true);
    setContextMenuPolicy(Qt::PreventContextMenu);  // that of the view is of frames
    setFocusPolicy(Qt::NoFocus);

    auto* pContent = new QWidget;
    auto* pHeading = new QLabel(tr("Begin with a series"), pContent);
    makeHeading(pHeading);
    auto* pColumn = new QWidget(pContent);
    pColumn->setMaximumWidth(g_nWidest);
    auto* pLayout = new QVBoxLayout(pColumn);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(pHeading);
    pLayout->addWidget(makeWaysIn());
    pLayout->addWidget(makeDemoRow());
    pLayout->addWidget(makeRecent(), 1);
    pLayout->addStretch(0);
    auto* pMiddle = new QHBoxLayout(pContent);
    pMiddle->setContentsMargins(20, 16, 20, 16);
    pMiddle->addStretch(1);
    pMiddle->addWidget(pColumn, 1000);
    pMiddle->addStretch(1);
    setWidget(pContent);

    setAccessibleName(tr("Start"));
    m_pView->installEventFilter(this);
    setGeometry(m_pView->rect());
    showDemo(false);
    setRecent({});
}

StartPage::~StartPage()
{
    m_pRecentList->disconnect(this);  // as it is destroyed after the members that its signals use
}

QWidget* StartPage::makeWaysIn()
{
    auto* pRow = new QWidget(this);
    m_pOpenButton = makeWay(pRow, tr("Open..."), tr("A project or frames; or drop them here"),
                            tr("Asks for a project file, or for frames. They can be dropped here, too."));
    m_pNewButton = makeWay(pRow, tr("New from Frames..."), tr("A project with tilts and calibration"),
                           tr("Makes a project file from the frames of a series, and asks for tilts, "
                              "wavelength and pixel size if the frames do not give them."));
    m_pDemoButton = makeWay(pRow, tr("Demo"), tr("A simulated series, made here"),
                            tr("Makes a series of 120 simulated frames of natrolite (60 MB) in your data "
                               "folder, and opens it; an existing one is only opened."));
    auto* pLayout = new QHBoxLayout(pRow);
    pLayout->setContentsMargins(0, 0, 0, 0);
    for (QCommandLinkButton* pButton : {m_pOpenButton, m_pNewButton, m_pDemoButton}) {
        pLayout->addWidget(pButton, 1);
    }
    return pRow;
}

QWidget* StartPage::makeDemoRow()
{
    m_pDemoRow = new QWidget(this);
    auto* pLabel = new QLabel(tr("Making the demo"), m_pDemoRow);
    m_pDemoProgress = new QProgressBar(m_pDemoRow);
    m_pDemoProgress->setAccessibleName(tr("Making the demo"));
    m_pDemoProgress->setFormat(QStringLiteral("%v/%m"));
    m_pStopDemoButton = new QPushButton(tr("Stop"), m_pDemoRow);
    explain(m_pStopDemoButton, tr("Stops making the demo; its files are removed."));
    auto* pLayout = new QHBoxLayout(m_pDemoRow);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(pLabel);
    pLayout->addWidget(m_pDemoProgress, 1);
    pLayout->addWidget(m_pStopDemoButton);
    return m_pDemoRow;
}

QWidget* StartPage::makeRecent()
{
    m_pRecentGroup = new QWidget(this);
    auto* pHeading = new QLabel(tr("Opened before"), m_pRecentGroup);
    makeHeading(pHeading);
    m_pRecentList = new QTreeWidget(m_pRecentGroup);
    m_pRecentList->setRootIsDecorated(false);
    m_pRecentList->setUniformRowHeights(true);
    m_pRecentList->setAllColumnsShowFocus(true);
    m_pRecentList->setTextElideMode(Qt::ElideMiddle);
    m_pRecentList->setAccessibleName(tr("Opened before"));
    m_pRecentList->setHeaderLabels(
        {tr("Series"), tr("Cell"), tr("Lattice"), tr("Frames"), tr("Last Used"), tr("Folder")});
    m_pRecentList->headerItem()->setTextAlignment(ColumnFrames, int(Qt::AlignRight | Qt::AlignVCenter));
    m_pRecentList->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_pRecentList->header()->setStretchLastSection(true);
    m_pRecentList->setMinimumHeight(m_pRecentList->header()->sizeHint().height() +
                                    (g_nRowsAtLeast + 1) * m_pRecentList->fontMetrics().lineSpacing());
    explain(m_pRecentList,
            tr("Series that were opened before, with their cells. Return or a double click opens "
               "the selected one, Delete takes it off the list; its files stay."));
    m_pOpenRecentButton = new QPushButton(tr("Open Selected"), m_pRecentGroup);
    explain(m_pOpenRecentButton, tr("Opens the selected series."));
    m_pRemoveButton = new QPushButton(tr("Remove from List"), m_pRecentGroup);
    explain(m_pRemoveButton, tr("Takes the selected series off this list. Its files stay."));
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pOpenRecentButton);
    pButtons->addWidget(m_pRemoveButton);
    pButtons->addStretch(1);
    auto* pLayout = new QVBoxLayout(m_pRecentGroup);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(pHeading);
    pLayout->addWidget(m_pRecentList, 1);
    pLayout->addLayout(pButtons);
    connect(m_pRecentList, &QTreeWidget::itemActivated, this, &StartPage::openSelected);
    connect(m_pRecentList, &QTreeWidget::itemSelectionChanged, this, &StartPage::updateButtons);
    connect(m_pOpenRecentButton, &QPushButton::clicked, this, &StartPage::openSelected);
    connect(m_pRemoveButton, &QPushButton::clicked, this, &StartPage::removeSelected);
    return m_pRecentGroup;
}

void StartPage::setRecent(const QList<RecentSeries>& listRecent)
{
    m_job.stop();
    const int nRow = m_pRecentList->indexOfTopLevelItem(m_pRecentList->currentItem());
    m_listRecent = listRecent;
    m_listMissing.clear();
    m_pRecentList->clear();
    for (const RecentSeries& series : listRecent) {
        auto* pItem = new QTreeWidgetItem(m_pRecentList);
        const QString strFolder = QDir::toNativeSeparators(QFileInfo(series.listFile.first()).absolutePath());
        pItem->setText(ColumnName, displayName(series.listFile));
        if (series.lastUse.isValid()) {
            pItem->setText(ColumnUsed,
                           QLocale::system().toString(series.lastUse.date(), QLocale::ShortFormat));
        }
        pItem->setText(ColumnFolder, strFolder);
        pItem->setToolTip(ColumnFolder, strFolder);
        pItem->setTextAlignment(ColumnFrames, int(Qt::AlignRight | Qt::AlignVCenter));
        m_listMissing.append(false);
    }
    m_pRecentGroup->setVisible(!listRecent.isEmpty());
    if (nRow >= 0 && !listRecent.isEmpty()) {  // the keyboard goes on from the row that was removed
        m_pRecentList->setCurrentItem(m_pRecentList->topLevelItem(qMin(nRow, listRecent.size() - 1)));
    }
    updateButtons();
    if (isVisible()) {
        readCards();
    }
}

/// Reads the cards in the background, because the files may be on a slow network or on a disk that has to
/// start.
void StartPage::readCards()
{
    m_job.start([this, listRecent = m_listRecent](const BackgroundJob::Stop& bStop,
                                                  const BackgroundJob::FnShow& fnShow) {
        try {
            for (int i = 0; i < listRecent.size() && !bStop; ++i) {
                const SeriesCard card = seriesCard(listRecent[i].listFile);
                fnShow([this, i, card] { showCard(i, card); });
            }
        } catch (const std::exception&) {  // the rows stay without what could not be read
        }
    });
}

void StartPage::showCard(int nRow, const SeriesCard& card)
{
    QTreeWidgetItem* pItem = m_pRecentList->topLevelItem(nRow);
    m_listMissing[nRow] = !card.bThere;
    if (!card.bThere) {
        pItem->setText(ColumnCell, tr("not found"));
        const QBrush brush = m_pRecentList->palette().brush(QPalette::Disabled, QPalette::Text);
        for (int nColumn = 0; nColumn < ColumnCount; ++nColumn) {
            pItem->setForeground(nColumn, brush);
        }
    } else {
        pItem->setText(ColumnCell, card.cell ? cellText(*card.cell) : QString());
        pItem->setText(ColumnLattice, card.strLattice);
        pItem->setText(ColumnFrames, card.nFrames > 0 ? QLocale::system().toString(card.nFrames) : QString());
    }
    updateButtons();
}

void StartPage::openSelected()
{
    const int nRow = m_pRecentList->indexOfTopLevelItem(m_pRecentList->currentItem());
    if (nRow >= 0 && !m_listMissing[nRow]) {
        const QStringList listFile = m_listRecent[nRow].listFile;  // the list may change while it opens
        emit seriesWanted(listFile);
    }
}

void StartPage::removeSelected()
{
    const int nRow = m_pRecentList->indexOfTopLevelItem(m_pRecentList->currentItem());
    if (nRow >= 0) {
        const QStringList listFile = m_listRecent[nRow].listFile;
        emit removalWanted(listFile);
    }
}

void StartPage::updateButtons()
{
    const int nRow = m_pRecentList->indexOfTopLevelItem(m_pRecentList->currentItem());
    const bool bSelected = nRow >= 0 && !m_pRecentList->selectedItems().isEmpty();
    m_pOpenRecentButton->setEnabled(bSelected && !m_listMissing[nRow]);
    m_pRemoveButton->setEnabled(bSelected);
}

void StartPage::showDemo(bool bRunning)
{
    const bool bHadFocus = m_pDemoButton->hasFocus();
    m_pDemoRow->setVisible(bRunning);
    m_pDemoButton->setEnabled(!bRunning);
    if (bRunning && bHadFocus) {
        m_pStopDemoButton->setFocus();
    }
}

void StartPage::setDemoProgress(int nFrames, int nAll)
{
    m_pDemoProgress->setRange(0, nFrames > 0 ? nAll : 0);  // busy until the first frame is written
    m_pDemoProgress->setValue(nFrames);
}

bool StartPage::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pObject == m_pView && pEvent->type() == QEvent::Resize) {
        setGeometry(m_pView->rect());
    }
    return QScrollArea::eventFilter(pObject, pEvent);
}

void StartPage::showEvent(QShowEvent* pEvent)
{
    QScrollArea::showEvent(pEvent);
    setGeometry(m_pView->rect());
    readCards();
}

void StartPage::hideEvent(QHideEvent* pEvent)
{
    m_job.stop();
    QScrollArea::hideEvent(pEvent);
}

void StartPage::keyPressEvent(QKeyEvent* pEvent)
{
    auto* pButton = qobject_cast<QAbstractButton*>(focusWidget());
    if ((pEvent->key() == Qt::Key_Return || pEvent->key() == Qt::Key_Enter) && pButton) {
        pButton->click();
    } else if (pEvent->key() == Qt::Key_Delete && m_pRecentList->hasFocus()) {
        removeSelected();
    } else {
        QScrollArea::keyPressEvent(pEvent);
    }
}

void StartPage::wheelEvent(QWheelEvent* pEvent)
{
    QScrollArea::wheelEvent(pEvent);
    pEvent->accept();  // an ignored event would zoom the view below
}

}  // namespace tessera
