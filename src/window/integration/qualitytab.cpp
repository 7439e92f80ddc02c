#include "window/integration/qualitytab.h"

#include "window/integration/qualityplots.h"
#include "window/integration/qualitytables.h"
#include "window/integration/tablepanel.h"
#include "window/pages/controltips.h"
#include "window/plotpanel.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace tessera {

QualityTab::QualityTab(QWidget* pParent) : QWidget(pParent), m_pStack(new QStackedWidget(this))
{
    auto* pEmpty = new QLabel(
        tr("Nothing is integrated yet. The page \"Integration\" does so, with the cell in force."), m_pStack);
    pEmpty->setAlignment(Qt::AlignCenter);
    pEmpty->setWordWrap(true);
    auto* pFull = new QWidget(m_pStack);
    m_pLabelSummary = new QLabel(pFull);
    m_pLabelSummary->setWordWrap(true);
    m_pLabelSummary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_pPages = new QTabWidget(pFull);
    m_pPages->setDocumentMode(true);
    auto* pFullLayout = new QVBoxLayout(pFull);
    pFullLayout->addWidget(m_pLabelSummary);
    pFullLayout->addWidget(m_pPages, 1);
    m_pStack->addWidget(pEmpty);
    m_pStack->addWidget(pFull);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(m_pStack);
    explainArea(this, tr("Agreement and completeness of equivalent reflections, and the symmetry of the "
                         "intensities. Each plot and table can be copied, and saved as SVG and CSV."));
}

void QualityTab::setResult(const IntegrationResult& result, const QString& strFileStem)
{
    fill(result, strFileStem, Source::OneSeries);
}

void QualityTab::setMerged(const IntegrationResult& result, const QString& strFileStem)
{
    fill(result, strFileStem, Source::ManyCrystals);
}

void QualityTab::fill(const IntegrationResult& result, const QString& strFileStem, Source source)
{
    const int nPage = m_pPages->currentIndex();
    clear();
    m_strFileStem = strFileStem;
    m_pLabelSummary->setText(summaryOf(result).join(QLatin1Char('\n')));
    addPlots(tr("Resolution"), shellPlots(result), 2);
    addTables(tr("Shells"), {shellTable(result)});
    if (source == Source::OneSeries) {
        addPlots(tr("Frames"), framePlots(result), 2);
        addPlots(tr("Wilson and Tilt"), seriesPlots(result), 2);
    }
    addTables(tr("Laue Class"), laueTables(result));
    addTables(tr("Space Group"), spaceGroupTables(result));
    m_pPages->setCurrentIndex(qBound(0, nPage, m_pPages->count() - 1));
    m_pStack->setCurrentIndex(1);
}

void QualityTab::clear()
{
    m_pStack->setCurrentIndex(0);
    while (m_pPages->count() > 0) {
        delete m_pPages->widget(0);
    }
}

bool QualityTab::isEmpty() const
{
    return m_pPages->count() == 0;
}

QVector<PlotPanel*> QualityTab::plots() const
{
    return m_pPages->findChildren<PlotPanel*>().toVector();
}

QVector<TablePanel*> QualityTab::tables() const
{
    return m_pPages->findChildren<TablePanel*>().toVector();
}

QGridLayout* QualityTab::addPage(const QString& strPage)
{
    // On a small screen a page scrolls, instead of making the whole window larger.
    auto* pArea = new QScrollArea(m_pPages);
    pArea->setWidgetResizable(true);
    pArea->setFrameShape(QFrame::NoFrame);
    auto* pPage = new QWidget(pArea);
    auto* pGrid = new QGridLayout(pPage);
    pGrid->setContentsMargins(2, 2, 2, 2);
    pArea->setWidget(pPage);
    m_pPages->addTab(pArea, strPage);
    return pGrid;
}

void QualityTab::addPlots(const QString& strPage, const std::vector<QualityPlot>& listPlot, int nColumns)
{
    QGridLayout* pGrid = addPage(strPage);
    int nPlot = 0;
    for (const QualityPlot& plot : listPlot) {
        auto* pPanel = new PlotPanel(pGrid->parentWidget());
        pPanel->setObjectName(plot.strName);
        pPanel->setMinimumSize(200, 140);  // two rows on a screen of 800 lines
        pPanel->setTitles(QString(), plot.strX, plot.strY);
        for (const PlotSeries& series : plot.vecSeries) {
            pPanel->addSeries(series);
        }
        for (const double dfLevel : plot.vecLevel) {
            pPanel->addLevel(dfLevel);
        }
        pPanel->showSeries();
        pGrid->addWidget(card(pPanel, plot.strTitle, plot.strName), nPlot / nColumns, nPlot % nColumns);
        pGrid->setColumnStretch(nPlot % nColumns, 1);
        ++nPlot;
    }
}

void QualityTab::addTables(const QString& strPage, const std::vector<QualityTable>& listTable)
{
    QGridLayout* pGrid = addPage(strPage);
    for (const QualityTable& table : listTable) {
        auto* pPanel = new TablePanel(pGrid->parentWidget());
        pPanel->setObjectName(table.strName);
        pPanel->setTable(table);
        pGrid->addWidget(card(pPanel, table.strTitle, table.strName), pGrid->count(), 0);
    }
}

template <class TPanel>
QWidget* QualityTab::card(TPanel* pPanel, const QString& strTitle, const QString& strName)
{
    auto* pCard = new QWidget(pPanel->parentWidget());
    pPanel->setFileStem(m_strFileStem + QLatin1Char('_') + strName);
    connect(pPanel, &TPanel::notSaved, this, &QualityTab::notSaved);
    auto* pTitle = new QLabel(strTitle, pCard);
    QFont fontTitle = pTitle->font();
    fontTitle.setBold(true);
    pTitle->setFont(fontTitle);
    auto* pHead = new QHBoxLayout;
    pHead->addWidget(pTitle, 1);
    const auto addButton = [&](const QString& strText, const QString& strTip, auto slot) {
        auto* pButton = new QToolButton(pCard);
        pButton->setText(strText);
        pButton->setAutoRaise(true);
        explain(pButton, strTip);
        connect(pButton, &QToolButton::clicked, pPanel, slot);
        pHead->addWidget(pButton);
    };
    addButton(tr("Copy"),
              tr("Puts the picture on the clipboard. The menu of the right button also copies "
                 "the numbers."),
              &TPanel::copyPicture);
    addButton(QStringLiteral("SVG"), tr("Saves the picture."), &TPanel::askAndSavePicture);
    addButton(QStringLiteral("CSV"), tr("Saves the numbers."), &TPanel::askAndSaveNumbers);
    auto* pLayout = new QVBoxLayout(pCard);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->setSpacing(0);
    pLayout->addLayout(pHead);
    pLayout->addWidget(pPanel, 1);
    return pCard;
}

}  // namespace tessera
