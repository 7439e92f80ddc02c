#include "window/crystals/mergedialog.h"

#include "window/crystals/mergeinput.h"
#include "window/crystals/mergeresultview.h"
#include "window/messageedit.h"
#include "window/pages/controltips.h"
#include "window/pages/palettecolors.h"
#include "window/severitycolor.h"
#include "window/timeleft.h"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

namespace tessera {

MergeDialog::MergeDialog(QWidget* pParent) : QDialog(pParent, Qt::Window)
{
    setObjectName(QStringLiteral("MergeCrystals"));
    setWindowTitle(tr("Merge Crystals"));
    setAcceptDrops(true);
    m_pTabs = new QTabWidget(this);
    m_pInput = new MergeInput(m_pTabs);
    m_pResult = new MergeResultView(m_pTabs);
    m_pLog = new MessageEdit(m_pTabs);
    m_pTabs->addTab(m_pInput, tr("Crystals"));
    m_pTabs->addTab(m_pResult, tr("Result"));
    m_pTabs->addTab(m_pLog, tr("Log"));
    m_pLabelState = new QLabel(this);
    m_pLabelState->setWordWrap(true);
    m_pLabelState->setTextFormat(Qt::PlainText);
    m_pLabelState->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_pProgress = new QProgressBar(this);
    m_pProgress->setMinimumWidth(260);
    m_pProgress->hide();
    const auto makeButton = [this](const QString& strText, const QString& strTip) {
        auto* pButton = new QPushButton(strText, this);
        pButton->setAutoDefault(false);
        explain(pButton, strTip);
        return pButton;
    };
    m_pButtonMerge = makeButton(tr("Merge"),
                                tr("Distinguishes the compounds, transforms their crystals to one setting "
                                   "and one scale, merges them, and writes the files. The open project is "
                                   "not changed. Another click stops it; then no file is written."));
    m_pButtonReport = makeButton(tr("Report"), tr("Opens the report of the merging in the browser."));
    m_pButtonClose = makeButton(tr("Close"), tr("Closes the window. A merging under way is stopped; the list "
                                                "of the crystals stays."));
    auto* pRow = new QHBoxLayout;
    pRow->addWidget(m_pLabelState, 1);
    pRow->addWidget(m_pProgress);
    pRow->addWidget(m_pButtonMerge);
    pRow->addWidget(m_pButtonReport);
    pRow->addWidget(m_pButtonClose);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(m_pTabs, 1);
    pLayout->addLayout(pRow);
    connect(m_pButtonClose, &QPushButton::clicked, this, &MergeDialog::reject);
    m_pResult->clear();
    shareTips(this);
    setReady(false, false);
    resize(1200, 740);
}

void MergeDialog::setMerging(bool bMerging)
{
    m_bMerging = bMerging;
    m_pButtonMerge->setText(bMerging ? tr("Stop") : tr("Merge"));
    m_pInput->setChoosable(!bMerging);
    m_pProgress->setVisible(bMerging);
}

void MergeDialog::showProgress(const QString& strFormat, int nDone, int nAll)
{
    const bool bKnown = nAll > 1;  // of one thing there is nothing to see between its start and its end
    if (nDone == 0) {
        m_clock.start();
    }
    m_pProgress->setRange(0, bKnown ? nAll : 0);
    m_pProgress->setValue(nDone);
    const QString strLeft = bKnown && m_clock.isValid()
                                ? timeLeftText(double(m_clock.elapsed()) / 1000, double(nDone) / nAll)
                                : QString();
    m_pProgress->setFormat(strLeft.isEmpty() ? strFormat : strFormat + QStringLiteral(", ") + strLeft);
}

void MergeDialog::showState(const QString& strText)
{
    m_pLabelState->setPalette(palette());
    m_pLabelState->setText(strText);
}

void MergeDialog::showFault(const QString& strText)
{
    QPalette paletteState = palette();
    paletteState.setColor(QPalette::WindowText, readableOn(palette(), Qt::red));
    m_pLabelState->setPalette(paletteState);
    m_pLabelState->setText(strText);
}

void MergeDialog::addLine(const QString& strText, Severity severity)
{
    m_pLog->addMessage(strText, severityColor(severity));
}

void MergeDialog::setReady(bool bMerge, bool bReport)
{
    m_pButtonMerge->setEnabled(bMerge);
    m_pButtonReport->setEnabled(bReport);
}

void MergeDialog::dragEnterEvent(QDragEnterEvent* pEvent)
{
    if (!m_bMerging && pEvent->mimeData()->hasUrls()) {
        pEvent->acceptProposedAction();
    }
}

void MergeDialog::dropEvent(QDropEvent* pEvent)
{
    QStringList listPath;
    const QList<QUrl> listUrl = pEvent->mimeData()->urls();
    for (const QUrl& url : listUrl) {
        if (url.isLocalFile()) {
            listPath.append(url.toLocalFile());
        }
    }
    // A source that believes in a move deletes its files.
    pEvent->setDropAction(Qt::CopyAction);
    pEvent->accept();
    m_pTabs->setCurrentWidget(m_pInput);
    emit dropped(listPath);
}

bool MergeDialog::event(QEvent* pEvent)
{
    if (pEvent->type() == QEvent::StatusTip && parentWidget()) {
        return QCoreApplication::sendEvent(parentWidget(), pEvent);
    }
    return QDialog::event(pEvent);
}

}  // namespace tessera
