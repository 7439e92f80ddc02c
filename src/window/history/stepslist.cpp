#include "window/history/stepslist.h"

#include "window/history/workhistory.h"
#include "window/pages/controltips.h"

#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QVBoxLayout>

namespace tessera {

StepsList::StepsList(WorkHistory& history, QWidget* pParent)
    : QWidget(pParent), m_pList(new QListWidget(this)), m_pLabelDropped(new QLabel(this)), m_history(history)
{
    m_pList->setTextElideMode(Qt::ElideRight);
    m_pList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_pList->setUniformItemSizes(true);
    explainArea(m_pList,
                tr("What you have changed, step by step; a click goes back or forth to a step. Camera, "
                   "contrast and selection are not changed. Files on disk are not undone: results that "
                   "a run has written stay as it wrote them until a run writes them again."));
    m_pLabelDropped->setWordWrap(true);
    m_pLabelDropped->hide();
    auto* pLayout = new QVBoxLayout(this);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(m_pList);
    pLayout->addWidget(m_pLabelDropped);
    connect(m_pList, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* pItem) { m_history.goTo(m_pList->row(pItem)); });
    connect(m_pList, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* pItem) { m_history.goTo(m_pList->row(pItem)); });
    connect(&history, &WorkHistory::changed, this, &StepsList::renew);
    renew();
}

void StepsList::renew()
{
    const CWorkSteps& steps = m_history.steps();
    while (m_pList->count() > steps.count()) {
        delete m_pList->takeItem(m_pList->count() - 1);
    }
    for (int n = 0; n < steps.count(); ++n) {
        if (n == m_pList->count()) {
            m_pList->addItem(QString());
        }
        QListWidgetItem* pItem = m_pList->item(n);
        pItem->setText(steps.name(n));
        pItem->setToolTip(steps.name(n));
        QFont font = m_pList->font();
        font.setBold(n == steps.current());
        pItem->setFont(font);
        pItem->setForeground(
            palette().brush(n > steps.current() ? QPalette::Disabled : QPalette::Active, QPalette::Text));
    }
    m_pList->setCurrentRow(steps.current());
    m_pList->setEnabled(!m_history.isBusy());
    m_pLabelDropped->setVisible(steps.dropped() > 0);
    m_pLabelDropped->setText(tr("%L1 older steps were given up: all may hold %2.")
                                 .arg(steps.dropped())
                                 .arg(QLocale().formattedDataSize(qint64(steps.mostBytes()), 0,
                                                                  QLocale::DataSizeTraditionalFormat)));
}

}  // namespace tessera
