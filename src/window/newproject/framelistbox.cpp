#include "window/newproject/framelistbox.h"

#include "dataset/framefiles.h"
#include "imagefiles/frameformats.h"
#include "window/newproject/formrows.h"
#include "window/newproject/headerreading.h"
#include "window/pages/controltips.h"
#include "window/serieschoicebox.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSet>
#include <QShortcut>
#include <QVBoxLayout>

#include <algorithm>

namespace tessera {

namespace {

QString pathOf(const QListWidgetItem* pItem)
{
    return pItem->data(Qt::UserRole).toString();
}

// By the content, or by the suffix where that says nothing.
bool isFrameFile(const QString& strPath)
{
    return !frameFormatOf(strPath).listSuffix.isEmpty();
}

QString firstFrameText(const FrameSummary& frame)
{
    QString strText;
    if (frame.nWidth > 0) {
        strText += FrameListBox::tr("; the first: %1 × %2 pixels, %3")
                       .arg(QString::number(frame.nWidth), QString::number(frame.nHeight), frame.strFormat);
    }
    if (frame.dfKilovolts > 0) {
        strText += FrameListBox::tr(", %1 kV").arg(frame.dfKilovolts);
    }
    if (frame.dfPixelSize > 0) {
        strText += FrameListBox::tr(", %1 Å⁻¹ per pixel").arg(frame.dfPixelSize);
    }
    return strText;
}

}  // namespace

FrameListBox::FrameListBox(const QString& strFolder, QWidget* pParent)
    : QGroupBox(tr("Frames"), pParent), m_strFolder(strFolder)
{
    m_pFrameList = new QListWidget(this);
    m_pFrameList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_pFrameList->setDragDropMode(QAbstractItemView::InternalMove);
    m_pFrameList->setTextElideMode(Qt::ElideLeft);
    m_pFrameList->setMinimumWidth(240);
    explain(m_pFrameList,
            tr("The frames of the series, in the order in which they were taken. Drop files or a "
               "folder here; drag rows to another place; Del removes them."));
    QGridLayout* pButtons = makeButtons();
    m_pFrameLabel = makePlainLabel(this, LabelLines::Wrapped);
    m_pHeaders = new HeaderReading(this);
    m_pChoice = new SeriesChoiceBox(this);
    m_pChoiceLabel = makePlainLabel(this, LabelLines::Wrapped);
    m_pChoiceLabel->hide();
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addLayout(pButtons);
    pLayout->addWidget(m_pFrameList, 1);
    pLayout->addWidget(m_pFrameLabel);
    pLayout->addWidget(m_pChoice);
    pLayout->addWidget(m_pChoiceLabel);
    pLayout->addWidget(m_pHeaders);
    connectControls();
}

QGridLayout* FrameListBox::makeButtons()
{
    const struct {
        QPushButton*& pButton;
        QString strText, strTip;
    } aButton[] = {
        {m_pAddFilesButton, tr("Add Files..."),
         tr("Chooses frame files and adds them, sorted by the numbers in "
            "their names.")},
        {m_pAddFolderButton, tr("Add Folder..."),
         tr("Adds the frames of a folder, sorted by the numbers in their "
            "names. If there are several formats, the one with the most files is used.")},
        {m_pRemoveButton, tr("Remove"), tr("Takes the selected frames off the list. The files stay.")},
        {m_pUpButton, tr("Up"), tr("Moves the selected frames towards the start of the series.")},
        {m_pDownButton, tr("Down"), tr("Moves the selected frames towards the end of the series.")},
        {m_pSortButton, tr("Sort"), tr("Sorts all frames by the numbers in their names: 9 is before 10.")}};
    auto* pButtons = new QGridLayout;
    for (int i = 0; i < 6; ++i) {
        aButton[i].pButton = makeFormButton(aButton[i].strText, this);
        explain(aButton[i].pButton, aButton[i].strTip);
        if (i < 2) {
            pButtons->addWidget(aButton[i].pButton, 0, 2 * i, 1, 2);
        } else {
            pButtons->addWidget(aButton[i].pButton, 1, i - 2);
        }
    }
    return pButtons;
}

void FrameListBox::connectControls()
{
    connect(m_pAddFilesButton, &QPushButton::clicked, this, &FrameListBox::askFiles);
    connect(m_pAddFolderButton, &QPushButton::clicked, this, &FrameListBox::askFolder);
    connect(m_pRemoveButton, &QPushButton::clicked, this, &FrameListBox::removeSelected);
    auto* pDelete = new QShortcut(QKeySequence::Delete, m_pFrameList, nullptr, nullptr, Qt::WidgetShortcut);
    connect(pDelete, &QShortcut::activated, this, &FrameListBox::removeSelected);
    connect(m_pUpButton, &QPushButton::clicked, this, [this] { moveSelected(-1); });
    connect(m_pDownButton, &QPushButton::clicked, this, [this] { moveSelected(1); });
    connect(m_pSortButton, &QPushButton::clicked, this, &FrameListBox::sortByName);
    // Rows that are dragged to another place are in both while they leave the old one, one by one.
    m_timerMoved.setSingleShot(true);
    connect(m_pFrameList->model(), &QAbstractItemModel::rowsRemoved, &m_timerMoved,
            QOverload<>::of(&QTimer::start));
    connect(&m_timerMoved, &QTimer::timeout, this, &FrameListBox::framesChanged);
    connect(m_pFrameList, &QListWidget::itemSelectionChanged, this, &FrameListBox::enableButtons);
}

QStringList FrameListBox::frames() const
{
    QStringList listFile;
    for (int i = 0; i < m_pFrameList->count(); ++i) {
        listFile.append(pathOf(m_pFrameList->item(i)));
    }
    return listFile;
}

int FrameListBox::count() const
{
    return m_pFrameList->count();
}

QString FrameListBox::firstFrameError() const
{
    return count() > 0 ? m_strFirstFrameError : QString();
}

void FrameListBox::setFrames(const QStringList& listFile)
{
    m_pFrameList->clear();
    for (const QString& strFile : listFile) {
        auto* pItem = new QListWidgetItem(QFileInfo(strFile).fileName(), m_pFrameList);
        pItem->setData(Qt::UserRole, strFile);
        pItem->setToolTip(QDir::toNativeSeparators(strFile));
        pItem->setFlags(pItem->flags() & ~Qt::ItemIsDropEnabled);
    }
    emit framesChanged();
}

void FrameListBox::addFrames(const QStringList& listPath)
{
    QStringList listFile = frames();
    QSet<QString> setKnown(listFile.begin(), listFile.end());
    QStringList listSorted = listFile, listNew;
    sortFrames(listSorted);
    for (const QString& strPath : listPath) {
        const QFileInfo info(strPath);
        const QStringList listFound = info.isDir()           ? framesOfOneSize(framesInFolder(strPath))
                                      : isFrameFile(strPath) ? framesOfFiles({info.absoluteFilePath()})
                                                             : QStringList();
        for (const QString& strFile : listFound) {
            if (!setKnown.contains(strFile)) {
                setKnown.insert(strFile);
                listNew.append(strFile);
            }
        }
    }
    sortFrames(listNew);
    const bool bSorted = listSorted == listFile;
    listFile += listNew;
    if (bSorted) {
        sortFrames(listFile);
    }
    if (!listFile.isEmpty()) {
        m_strFolder = QFileInfo(listFile.first()).absolutePath();
    }
    setFrames(listFile);
}

/// A series has frames of one size: of a folder with several the user says which. None when he does not.
QStringList FrameListBox::framesOfOneSize(const QStringList& listFrame)
{
    const QList<SizedFrames> listSized = framesBySize(listFrame);
    if (listSized.size() < 2) {
        return listFrame;
    }
    QStringList listText;
    int nCommonest = 0;
    for (const SizedFrames& sized : listSized) {
        listText.append(tr("%1 × %2 pixels: %L3 frames, %4 and further")
                            .arg(QString::number(sized.size.width()), QString::number(sized.size.height()))
                            .arg(sized.listFrame.size())
                            .arg(QFileInfo(sized.listFrame.first()).fileName()));
        if (sized.listFrame.size() > listSized[nCommonest].listFrame.size()) {
            nCommonest = listText.size() - 1;
        }
    }
    bool bChosen = false;
    const QString strChosen = QInputDialog::getItem(
        window(), tr("Frames of Several Sizes"),
        tr("The folder has frames of several sizes. Each size is a series, and a project of its own. Add:"),
        listText, nCommonest, false, &bChosen);
    return bChosen ? listSized[qMax(0, listText.indexOf(strChosen))].listFrame : QStringList();
}

void FrameListBox::askFiles()
{
    addFrames(QFileDialog::getOpenFileNames(window(), tr("Add Frames"), m_strFolder,
                                            tr("Images(%1);;All Files (*.*)").arg(frameNameFilters())));
}

void FrameListBox::askFolder()
{
    const QString strFolder = QFileDialog::getExistingDirectory(window(), tr("Add Frames of a Folder"),
                                                                m_strFolder);
    if (strFolder.isEmpty()) {
        return;
    }
    if (framesInFolder(strFolder).isEmpty()) {
        QMessageBox::information(window(), window()->windowTitle(),
                                 tr("There are no frames in %1.").arg(strFolder));
    }
    addFrames({strFolder});
}

void FrameListBox::removeSelected()
{
    QStringList listFile;
    for (int i = 0; i < m_pFrameList->count(); ++i) {
        if (!m_pFrameList->item(i)->isSelected()) {
            listFile.append(pathOf(m_pFrameList->item(i)));
        }
    }
    setFrames(listFile);
}

void FrameListBox::sortByName()
{
    QStringList listFile = frames();
    sortFrames(listFile);
    setFrames(listFile);
}

void FrameListBox::moveSelected(int nStep)
{
    QList<int> listRow;
    for (const QListWidgetItem* pItem : m_pFrameList->selectedItems()) {
        listRow.append(m_pFrameList->row(pItem));
    }
    std::sort(listRow.begin(), listRow.end());
    if (listRow.isEmpty() || listRow.first() + nStep < 0 || listRow.last() + nStep >= m_pFrameList->count()) {
        return;
    }
    QStringList listFile = frames();
    if (nStep > 0) {
        std::reverse(listRow.begin(), listRow.end());
    }
    for (int nRow : listRow) {
        listFile.move(nRow, nRow + nStep);
    }
    setFrames(listFile);
    for (int nRow : listRow) {
        m_pFrameList->item(nRow + nStep)->setSelected(true);
    }
    m_pFrameList->scrollToItem(m_pFrameList->item(listRow.first() + nStep));
}

bool FrameListBox::readFirstFrame()
{
    m_timerMoved.stop();
    const QStringList listFile = frames();
    const bool bOther = listFile.value(0) != m_strFirstFrame;
    m_strFirstFrame = listFile.value(0);
    if (bOther) {
        m_firstFrame = {};
        m_strFirstFrameError.clear();
        const auto summary = listFile.isEmpty() ? std::nullopt
                                                : readFrameSummary(m_strFirstFrame, &m_strFirstFrameError);
        if (summary) {
            m_firstFrame = *summary;
        } else if (!listFile.isEmpty() && m_strFirstFrameError.isEmpty()) {
            m_strFirstFrameError = m_strFirstFrame;
        }
    }
    const QString strCount = listFile.isEmpty()
                                 ? tr("No frames yet: add files or a folder, or drop them here")
                             : listFile.size() == 1 ? tr("1 frame")
                                                    : tr("%L1 frames").arg(listFile.size());
    m_pFrameLabel->setText(strCount + firstFrameText(m_firstFrame) + QLatin1Char('.'));
    enableButtons();
    return bOther;
}

void FrameListBox::enableButtons()
{
    const bool bSelected = !m_pFrameList->selectedItems().isEmpty();
    for (QPushButton* pButton : {m_pRemoveButton, m_pUpButton, m_pDownButton}) {
        pButton->setEnabled(bSelected);
    }
    m_pSortButton->setEnabled(m_pFrameList->count() > 1);
}

void FrameListBox::showChoice()
{
    const QString strOutcome = m_pChoice->outcomeText(count());
    m_pChoiceLabel->setText(strOutcome + QLatin1Char('.'));
    m_pChoiceLabel->setVisible(!strOutcome.isEmpty());
}

}  // namespace tessera
