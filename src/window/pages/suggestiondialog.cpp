#include "window/pages/suggestiondialog.h"

#include "window/pages/controltips.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tessera {

namespace {

const int g_nWidth = 760;  // pixels: room for the reasons, on any screen that the window fits on

}  // namespace

SuggestionDialog::SuggestionDialog(const QString& strTitle, const QList<Row>& listRow, QWidget* pParent)
    : QDialog(pParent), m_pTable(new QTableWidget(0, 4, this))
{
    setWindowTitle(strTitle);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(new QLabel(tr("These numbers follow from the data. Checked ones are set."), this));
    m_pTable->setHorizontalHeaderLabels({tr("Number"), tr("Now"), tr("Suggested"), tr("Why")});
    m_pTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_pTable->setSelectionMode(QAbstractItemView::NoSelection);
    m_pTable->verticalHeader()->hide();
    m_pTable->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_pTable->horizontalHeader()->setSectionResizeMode(3, QHeaderView::Stretch);
    explain(m_pTable, tr("Checked numbers are set to the suggested value. A number that already has this "
                         "value cannot be checked."));
    for (const Row& row : listRow) {
        addRow(row);
    }
    pLayout->addWidget(m_pTable);
    auto* pButtons = new QDialogButtonBox(QDialogButtonBox::Apply | QDialogButtonBox::Cancel, this);
    m_pApplyButton = pButtons->button(QDialogButtonBox::Apply);
    m_pApplyButton->setDefault(true);
    explain(m_pApplyButton, tr("Sets the checked numbers on the page."));
    explain(pButtons->button(QDialogButtonBox::Cancel), tr("Leaves the page as it is."));
    connect(m_pApplyButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(pButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    pLayout->addWidget(pButtons);
    const auto update = [this] { m_pApplyButton->setEnabled(!chosen().isEmpty()); };
    connect(m_pTable, &QTableWidget::itemChanged, this, update);
    update();
    resize(g_nWidth, sizeHint().height());
}

void SuggestionDialog::addRow(const Row& row)
{
    const int nRow = m_pTable->rowCount();
    m_pTable->insertRow(nRow);
    auto* pName = new QTableWidgetItem(row.strName);
    const bool bNew = row.strNow != row.strSuggested;
    pName->setFlags(bNew ? Qt::ItemIsEnabled | Qt::ItemIsUserCheckable : Qt::ItemFlags());
    pName->setCheckState(bNew ? Qt::Checked : Qt::Unchecked);
    m_pTable->setItem(nRow, 0, pName);
    const QString astrText[] = {row.strNow, row.strSuggested, row.strWhy};
    for (int i = 0; i < 3; ++i) {
        auto* pItem = new QTableWidgetItem(astrText[i]);
        pItem->setFlags(Qt::ItemIsEnabled);
        pItem->setTextAlignment((i < 2 ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
        m_pTable->setItem(nRow, i + 1, pItem);
    }
}

/// All rows in sight, each as high as its reason needs in the column as wide as it has come to be.
void SuggestionDialog::showEvent(QShowEvent* pEvent)
{
    QDialog::showEvent(pEvent);
    m_pTable->resizeRowsToContents();
    m_pTable->setMinimumHeight(m_pTable->verticalHeader()->length() +
                               m_pTable->horizontalHeader()->sizeHint().height() +
                               2 * m_pTable->frameWidth());
    layout()->activate();
    resize(width(), minimumSizeHint().height());
}

QList<int> SuggestionDialog::chosen() const
{
    QList<int> list;
    for (int nRow = 0; nRow < m_pTable->rowCount(); ++nRow) {
        if (m_pTable->item(nRow, 0)->checkState() == Qt::Checked) {
            list.append(nRow);
        }
    }
    return list;
}

}  // namespace tessera
