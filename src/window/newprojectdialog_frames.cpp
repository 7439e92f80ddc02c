// NewProjectDialog: the list of frames.
#include "window/newprojectdialog.h"

#include "dataset/framefiles.h"
#include "imagefiles/frameformats.h"

#include <QDir>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>
#include <QUrl>

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

}  // namespace

void NewProjectDialog::dragEnterEvent(QDragEnterEvent* pEvent)
{
    if (pEvent->mimeData()->hasUrls()) {
        pEvent->setDropAction(Qt::CopyAction);
        pEvent->accept();
    }
}

void NewProjectDialog::dropEvent(QDropEvent* pEvent)
{
    QStringList listPath;
    for (const QUrl& url : pEvent->mimeData()->urls()) {
        if (url.isLocalFile()) {
            listPath.append(url.toLocalFile());
        }
    }
    // A source that believes in a move deletes its files.
    pEvent->setDropAction(Qt::CopyAction);
    pEvent->accept();
    addFrames(listPath);
}

QStringList NewProjectDialog::frames() const
{
    QStringList listFile;
    for (int i = 0; i < m_pFrameList->count(); ++i) {
        listFile.append(pathOf(m_pFrameList->item(i)));
    }
    return listFile;
}

void NewProjectDialog::setFrames(const QStringList& listFile)
{
    m_pFrameList->clear();
    for (const QString& strFile : listFile) {
        auto* pItem = new QListWidgetItem(QFileInfo(strFile).fileName(), m_pFrameList);
        pItem->setData(Qt::UserRole, strFile);
        pItem->setToolTip(QDir::toNativeSeparators(strFile));
        pItem->setFlags(pItem->flags() & ~Qt::ItemIsDropEnabled);
    }
    framesChanged();
}

void NewProjectDialog::addFrames(const QStringList& listPath)
{
    QStringList listFile = frames();
    QSet<QString> setKnown(listFile.begin(), listFile.end());
    QStringList listSorted = listFile, listNew;
    sortFrames(listSorted);
    for (const QString& strPath : listPath) {
        const QFileInfo info(strPath);
        QStringList listFound = info.isDir()           ? framesInFolder(strPath)
                                : isFrameFile(strPath) ? framesOfFiles({info.absoluteFilePath()})
                                                       : QStringList();
        if (info.isDir()) {
            askSize(listFound);
        }
        for (const QString& strFile : qAsConst(listFound)) {
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

/// A series has frames of one size: of a folder with several the user says which.
void NewProjectDialog::askSize(QStringList& listFrame)
{
    const QList<SizedFrames> listSized = framesBySize(listFrame);
    if (listSized.size() < 2) {
        return;
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
        this, tr("Frames of Several Sizes"),
        tr("The folder has frames of several sizes. Each size is a series, and a project of its own. Add:"),
        listText, nCommonest, false, &bChosen);
    listFrame = bChosen ? listSized[qMax(0, listText.indexOf(strChosen))].listFrame : QStringList();
}

void NewProjectDialog::askFiles()
{
    addFrames(QFileDialog::getOpenFileNames(this, tr("Add Frames"), m_strFolder,
                                            tr("Images(%1);;All Files (*.*)").arg(frameNameFilters())));
}

void NewProjectDialog::askFolder()
{
    const QString strFolder = QFileDialog::getExistingDirectory(this, tr("Add Frames of a Folder"),
                                                                m_strFolder);
    if (strFolder.isEmpty()) {
        return;
    }
    if (framesInFolder(strFolder).isEmpty()) {
        QMessageBox::information(this, windowTitle(), tr("There are no frames in %1.").arg(strFolder));
    }
    addFrames({strFolder});
}

void NewProjectDialog::removeSelected()
{
    QStringList listFile;
    for (int i = 0; i < m_pFrameList->count(); ++i) {
        if (!m_pFrameList->item(i)->isSelected()) {
            listFile.append(pathOf(m_pFrameList->item(i)));
        }
    }
    setFrames(listFile);
}

void NewProjectDialog::sortByName()
{
    QStringList listFile = frames();
    sortFrames(listFile);
    setFrames(listFile);
}

void NewProjectDialog::moveSelected(int nStep)
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

/// The first frame tells of the size of all; what the headers of all tell is read in the background.
void NewProjectDialog::framesChanged()
{
    m_timerMoved.stop();
    const QStringList listFile = frames();
    const bool bOther = listFile.value(0) != m_strFirstFrame;
    m_strFirstFrame = listFile.value(0);
    if (bOther) {
        m_firstFrame = {};
        m_strFirstFrameError.clear();
        if (!listFile.isEmpty() && !readFrameSummary(m_strFirstFrame, m_firstFrame, &m_strFirstFrameError) &&
            m_strFirstFrameError.isEmpty()) {
            m_strFirstFrameError = m_strFirstFrame;
        }
    }
    QString strText = listFile.isEmpty()     ? tr("No frames yet: add files or a folder, or drop them here")
                      : listFile.size() == 1 ? tr("1 frame")
                                             : tr("%L1 frames").arg(listFile.size());
    if (m_firstFrame.nWidth > 0) {
        strText += tr("; the first: %1 × %2 pixels, %3")
                       .arg(QString::number(m_firstFrame.nWidth), QString::number(m_firstFrame.nHeight),
                            m_firstFrame.strFormat);
    }
    if (m_firstFrame.dfKilovolts > 0) {
        strText += tr(", %1 kV").arg(m_firstFrame.dfKilovolts);
    }
    if (m_firstFrame.dfPixelSize > 0) {
        strText += tr(", %1 Å⁻¹ per pixel").arg(m_firstFrame.dfPixelSize);
    }
    m_pFrameLabel->setText(strText + QLatin1Char('.'));
    if (listFile.isEmpty()) {
        m_setTouched.clear();
    }
    gatherFacts();
    if (bOther) {
        lookAtPreview();
    }
    if (!m_bFileTyped) {
        m_pFileEdit->setText(QDir::toNativeSeparators(proposedProjectFile(listFile)));
    }
    selectionChanged();
    refresh();
}

void NewProjectDialog::selectionChanged()
{
    const bool bSelected = !m_pFrameList->selectedItems().isEmpty();
    for (QPushButton* pButton : {m_pRemoveButton, m_pUpButton, m_pDownButton}) {
        pButton->setEnabled(bSelected);
    }
    m_pSortButton->setEnabled(m_pFrameList->count() > 1);
}

}  // namespace tessera
