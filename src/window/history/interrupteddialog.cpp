#include "window/history/interrupteddialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessera {

InterruptedDialog::InterruptedDialog(std::vector<Leftover> listLeftover, const FnRestore& fnRestore,
                                     const QDate& today, const QLocale& locale, QWidget* pParent)
    : QDialog(pParent),
      m_pList(new QListWidget(this)),
      m_listLeftover(std::move(listLeftover)),
      m_fnRestore(fnRestore),
      m_today(today),
      m_locale(locale),
      m_pLabel(new QLabel(this))
{
    setWindowTitle(tr("Interrupted Work"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setAttribute(Qt::WA_DeleteOnClose);
    m_pLabel->setWordWrap(true);
    m_pLabel->setTextFormat(Qt::PlainText);
    m_pLabel->setMinimumWidth(fontMetrics().averageCharWidth() * 60);
    auto* pButtons = new QDialogButtonBox(this);
    m_pRestoreButton = pButtons->addButton(tr("Restore"), QDialogButtonBox::AcceptRole);
    m_pLaterButton = pButtons->addButton(tr("Later"), QDialogButtonBox::RejectRole);
    m_pDiscardButton = pButtons->addButton(tr("Discard"), QDialogButtonBox::DestructiveRole);
    m_pRestoreButton->setDefault(true);
    m_pRestoreButton->setToolTip(tr("Shows the series with all results up to this step"));
    m_pLaterButton->setToolTip(tr("Keeps it and asks again at the next start"));
    m_pDiscardButton->setToolTip(tr("Removes it for good; files of results stay"));

    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(m_pLabel);
    pLayout->addWidget(m_pList);
    pLayout->addWidget(pButtons);
    for (const Leftover& leftover : m_listLeftover) {
        m_pList->addItem(text(leftover));
    }
    m_pList->setCurrentRow(0);
    connect(m_pRestoreButton, &QPushButton::clicked, this, &InterruptedDialog::restore);
    connect(m_pList, &QListWidget::itemActivated, this, &InterruptedDialog::restore);
    connect(m_pLaterButton, &QPushButton::clicked, this, &InterruptedDialog::close);
    connect(m_pDiscardButton, &QPushButton::clicked, this, &InterruptedDialog::discard);
    fit();
}

QString InterruptedDialog::text(const Leftover& leftover) const
{
    return interruptedText(leftover.work, m_today, m_locale);
}

/// The sentence alone for one work, the list under a heading for several.
void InterruptedDialog::fit()
{
    const bool bSeveral = m_listLeftover.size() > 1;
    m_pLabel->setText(bSeveral ? tr("Work was interrupted. Choose what to restore:")
                               : text(m_listLeftover.front()));
    m_pList->setVisible(bSeveral);
    m_pList->setMinimumWidth(m_pList->sizeHintForColumn(0) + 2 * m_pList->frameWidth() + 8);
    adjustSize();
}

void InterruptedDialog::restore()
{
    const int nRow = m_pList->currentRow();
    if (nRow >= 0 && m_fnRestore(m_listLeftover[nRow])) {
        m_listLeftover.erase(m_listLeftover.begin() + nRow);
        close();
    }
}

void InterruptedDialog::discard()
{
    const int nRow = m_pList->currentRow();
    if (nRow < 0) {
        return;
    }
    Leftover& leftover = m_listLeftover[nRow];
    if (leftover.remove()) {
        removeRow(nRow);
    } else {
        emit notRemoved(leftover.work.strFile);
    }
}

void InterruptedDialog::removeRow(int nRow)
{
    m_listLeftover.erase(m_listLeftover.begin() + nRow);
    delete m_pList->takeItem(nRow);
    if (m_listLeftover.empty()) {
        close();
        return;
    }
    m_pList->setCurrentRow(qMin(nRow, m_pList->count() - 1));
    fit();
}

}  // namespace tessera
