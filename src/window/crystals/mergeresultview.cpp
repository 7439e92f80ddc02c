#include "window/crystals/mergeresultview.h"

#include "crystals/jobtrees.h"
#include "window/crystals/crystaltables.h"
#include "window/crystals/treeview.h"
#include "window/integration/qualitytab.h"
#include "window/integration/tablepanel.h"
#include "window/pages/controltips.h"
#include "window/pages/palettecolors.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QTabWidget>
#include <QTextBrowser>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace tessera {

namespace {

QPixmap patchOf(const QColor& color)
{
    QPixmap pixmap(12, 12);
    pixmap.fill(color);
    return pixmap;
}

TablePanel* makeTable(QWidget* pParent)
{
    auto* pTable = new TablePanel(pParent);
    pTable->setSelectionMode(QAbstractItemView::SingleSelection);
    return pTable;
}

}  // namespace

MergeResultView::MergeResultView(QWidget* pParent) : QWidget(pParent)
{
    m_pLabelSummary = new QLabel(this);
    m_pLabelSummary->setWordWrap(true);
    m_pLabelSummary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* pSplitter = new QSplitter(Qt::Vertical, this);
    m_pTableGroups = makeTable(pSplitter);
    explainArea(m_pTableGroups, tr("Crystals with the same lattice, the largest group first. The parts below "
                                   "show the group that is chosen here."));
    m_pPages = new QTabWidget(pSplitter);
    m_pPages->setDocumentMode(true);
    m_pTableMembers = makeTable(m_pPages);
    explainArea(m_pTableMembers, tr("The crystals of the group: how each was turned, scaled and judged."));
    m_pTreeLattices = new TreeView(m_pPages);
    explainArea(m_pTreeLattices, tr("All crystals by their lattices. What is joined left of the broken line "
                                    "is one group; groups have colours. A click chooses a crystal."));
    m_pTreeCorrelations = new TreeView(m_pPages);
    explainArea(m_pTreeCorrelations, tr("The crystals of the group by their intensities: crystals joined far "
                                        "to the left agree well. Struck through: left out."));
    m_pQuality = new QualityTab(m_pPages);
    m_pTableUnread = makeTable(m_pPages);
    explainArea(m_pTableUnread, tr("Inputs that gave no crystal, or the same one again, with the reason."));
    m_pFiles = new QTextBrowser(m_pPages);
    m_pFiles->setOpenLinks(false);
    explainArea(m_pFiles, tr("What was written. A click opens a file with the program for it."));
    m_pPages->addTab(m_pTableMembers, tr("Crystals"));
    m_pPages->addTab(makeTreePage(m_pTreeLattices), tr("Lattices"));
    m_pPages->addTab(makeTreePage(m_pTreeCorrelations), tr("Correlations"));
    m_pPages->addTab(m_pQuality, tr("Quality"));
    m_pPages->addTab(m_pFiles, tr("Files"));
    m_pPages->addTab(m_pTableUnread, tr("Not Read"));
    pSplitter->setStretchFactor(0, 1);
    pSplitter->setStretchFactor(1, 3);
    pSplitter->setChildrenCollapsible(false);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->setContentsMargins(0, 6, 0, 0);
    pLayout->addWidget(m_pLabelSummary);
    pLayout->addWidget(pSplitter, 1);
    connect(m_pTableGroups, &QTableWidget::currentCellChanged, this, [this](int nRow) { showGroup(nRow); });
    connect(m_pTableMembers, &QTableWidget::currentCellChanged, this, [this](int nRow) {
        if (m_pResult && !m_bChoosing && nRow >= 0) {
            chooseCrystal(m_pResult->listGroup[size_t(chosenGroup())].group.listMember[nRow]);
        }
    });
    connect(m_pTreeLattices, &TreeView::leafClicked, this,
            [this](int nLeaf) { chooseCrystal(m_pResult->groups.listInTree[nLeaf]); });
    connect(m_pTreeCorrelations, &TreeView::leafClicked, this, [this](int nLeaf) {
        const MergedCrystals& merged = m_pResult->listGroup[size_t(chosenGroup())].merged;
        chooseCrystal(merged.listSettled[nLeaf].nCrystal);
    });
    connect(m_pQuality, &QualityTab::notSaved, this, &MergeResultView::notSaved);
    for (TablePanel* pTable : {m_pTableGroups, m_pTableMembers, m_pTableUnread}) {
        connect(pTable, &TablePanel::notSaved, this, &MergeResultView::notSaved);
    }
    connect(m_pFiles, &QTextBrowser::anchorClicked, this,
            [this](const QUrl& url) { emit openWished(url.toLocalFile()); });
}

QWidget* MergeResultView::makeTreePage(TreeView* pView)
{
    auto* pPage = new QWidget(m_pPages);
    auto* pRow = new QHBoxLayout;
    const auto add = [&](const QString& strText, const QString& strTip, auto slot) {
        auto* pButton = new QToolButton(pPage);
        pButton->setText(strText);
        pButton->setAutoRaise(true);
        explain(pButton, strTip);
        connect(pButton, &QToolButton::clicked, pView, slot);
        pRow->addWidget(pButton);
    };
    pRow->addStretch(1);
    add(tr("Larger"), tr("Higher rows; so does the wheel with Ctrl."), &TreeView::zoomIn);
    add(tr("Smaller"), tr("Lower rows; labels that would overlap are hidden."), &TreeView::zoomOut);
    add(tr("Fit"), tr("All rows in the view."), &TreeView::fit);
    auto* pLayout = new QVBoxLayout(pPage);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->setSpacing(0);
    pLayout->addLayout(pRow);
    pLayout->addWidget(pView, 1);
    return pPage;
}

void MergeResultView::clear()
{
    m_pResult.reset();
    m_pLabelSummary->setText(tr("Nothing is merged yet."));
    m_pTableGroups->setTable({});
    m_pTableMembers->setTable({});
    m_pTreeLattices->setPlot({});
    m_pTreeCorrelations->setPlot({});
    m_pQuality->clear();
    m_pFiles->clear();
    m_pTableUnread->setTable({});
    m_pPages->setTabVisible(m_pPages->indexOf(m_pTableUnread), false);
}

void MergeResultView::setResult(const std::shared_ptr<const CrystalsJobResult>& pResult,
                                const CellTolerance& tolerance)
{
    clear();
    m_pResult = pResult;
    m_pLabelSummary->setText(mergedSummary(*pResult));
    m_pTreeLattices->setPlot(latticeTree(*pResult, tolerance));
    m_pTableGroups->setTable(groupTable(*pResult));
    for (int nRow = 0; nRow < m_pTableGroups->rowCount(); ++nRow) {
        m_pTableGroups->item(nRow, 0)->setIcon(patchOf(readableOn(palette(), colorOfGroup(nRow))));
    }
    m_pTableUnread->setTable(unreadTable(pResult->listUnread));
    m_pPages->setTabVisible(m_pPages->indexOf(m_pTableUnread), !pResult->listUnread.empty());
    showFiles();
    chooseGroup(0);
}

int MergeResultView::chosenGroup() const
{
    return m_pTableGroups->currentRow();
}

void MergeResultView::chooseGroup(int nGroup)
{
    m_pTableGroups->setCurrentCell(nGroup, 0);
}

void MergeResultView::showGroup(int nGroup)
{
    if (!m_pResult || nGroup < 0 || size_t(nGroup) >= m_pResult->listGroup.size()) {
        return;
    }
    const QScopedValueRollback<bool> choosing(m_bChoosing, true);
    const CompoundGroup& compound = m_pResult->listGroup[nGroup];
    m_pTableMembers->setTable(memberTable(*m_pResult, size_t(nGroup)));
    for (int nRow = 0; nRow < m_pTableMembers->rowCount(); ++nRow) {
        const int nMember = compound.group.listMember[nRow];
        if (!m_pResult->listFate[nMember].bUsed) {
            m_pTableMembers->item(nRow, 1)->setForeground(readableOn(palette(), Qt::red));
        }
    }
    TreePlot plot = correlationTree(*m_pResult, compound);
    for (TreeLeaf& leaf : plot.listLeaf) {
        leaf.nColour = leaf.nColour < 0 ? -1 : nGroup;  // as in the tree of the lattices
    }
    m_pTreeCorrelations->setPlot(plot);
    m_pTreeLattices->ringLeaf(-1);
    const QString strStem = m_pResult->listFile.isEmpty()
                                ? QString()
                                : QFileInfo(m_pResult->listFile.first()).dir().filePath(compound.strName);
    m_pTableMembers->setFileStem(strStem + QStringLiteral("_members"));
    if (compound.isMerged()) {
        m_pQuality->setMerged(compound.merged.result, strStem);
    } else {
        m_pQuality->clear();
    }
}

void MergeResultView::chooseCrystal(int nCrystal)
{
    if (!m_pResult || nCrystal < 0) {
        return;
    }
    const int nGroup = m_pResult->listFate[nCrystal].nGroup;
    if (nGroup >= 0 && nGroup != chosenGroup()) {
        chooseGroup(nGroup);
    }
    const QScopedValueRollback<bool> choosing(m_bChoosing, true);
    const auto placeIn = [&](const std::vector<int>& list) {
        const auto it = std::find(list.begin(), list.end(), nCrystal);
        return it == list.end() ? -1 : int(it - list.begin());
    };
    m_pTreeLattices->ringLeaf(placeIn(m_pResult->groups.listInTree));
    if (nGroup >= 0) {
        m_pTreeCorrelations->ringLeaf(m_pResult->listFate[nCrystal].nSettled);
        m_pTableMembers->setCurrentCell(placeIn(m_pResult->listGroup[nGroup].group.listMember), 0);
    }
}

void MergeResultView::showFiles()
{
    const QLocale locale = QLocale::system();
    QString strHtml;
    if (m_pResult->listFile.isEmpty()) {
        strHtml = tr("No file was written.").toHtmlEscaped();
    } else {
        const QString strFolder = QFileInfo(m_pResult->listFile.first()).absolutePath();
        const auto link = [](const QString& strFile, const QString& strText) {
            return QStringLiteral("<a href=\"%1\">%2</a>")
                .arg(QUrl::fromLocalFile(strFile).toString(QUrl::FullyEncoded), strText.toHtmlEscaped());
        };
        strHtml = QStringLiteral("<p>%1</p><table cellpadding=\"2\">")
                      .arg(link(strFolder, QDir::toNativeSeparators(strFolder)));
        for (const QString& strFile : m_pResult->listFile) {
            const QFileInfo info(strFile);
            strHtml += QStringLiteral("<tr><td>%1</td><td align=\"right\">%2</td></tr>")
                           .arg(link(info.absoluteFilePath(), info.fileName()),
                                locale.formattedDataSize(info.size()));
        }
        strHtml += QStringLiteral("</table>");
    }
    m_pFiles->setHtml(strHtml);
}

}  // namespace tessera
