#include "window/crystal/geometrydialog.h"

#include "road/geometrytable.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/palettecolors.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStatusTipEvent>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace tessera {

namespace {

enum Column { Name, Before, After, Error, Why, ColumnsEnd };
enum CellColumn { CellName, CellBefore, CellFree, CellFreeError, CellHeld, CellHeldError, CellColumnsEnd };

QTableWidget* makeTable(const QStringList& listTitle, QWidget* pParent)
{
    auto* pTable = new QTableWidget(0, listTitle.size(), pParent);
    pTable->setHorizontalHeaderLabels(listTitle);
    pTable->setSelectionMode(QAbstractItemView::NoSelection);
    pTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    pTable->setWordWrap(false);
    pTable->verticalHeader()->hide();
    pTable->horizontalHeader()->setHighlightSections(false);
    setLowRows(pTable);
    return pTable;
}

QPushButton* makeButton(const QString& strText, QWidget* pParent)
{
    auto* pButton = new QPushButton(strText, pParent);
    pButton->setAutoDefault(false);  // Return in a table presses nothing
    return pButton;
}

QString numberText(double df, int nDecimals)
{
    return QLocale::system().toString(df, 'f', nDecimals);
}

bool holds(const std::vector<int>& listNumber, int nNumber)
{
    return std::find(listNumber.begin(), listNumber.end(), nNumber) != listNumber.end();
}

QString whyFixed(const GeometryRefinement& refinement, int nNumber)
{
    for (const FixedNumber& fixed : refinement.listFixed) {
        if (fixed.nNumber == nNumber) {
            return fixed.strWhy;
        }
    }
    return GeometryDialog::tr("was not fitted");
}

/// A table that shows all of its rows.
void setHeightOfRows(QTableWidget* pTable)
{
    pTable->setMinimumHeight(pTable->horizontalHeader()->sizeHint().height() +
                             pTable->verticalHeader()->length() +
                             pTable->horizontalScrollBar()->sizeHint().height() + 2 * pTable->frameWidth());
}

}  // namespace

GeometryDialog::GeometryDialog(QWidget* pParent) : QDialog(pParent, Qt::Tool)
{
    auto* pSplitter = new QSplitter(Qt::Horizontal, this);
    pSplitter->addWidget(makeNumbers());
    pSplitter->addWidget(makePlots());
    pSplitter->setChildrenCollapsible(false);
    pSplitter->setStretchFactor(1, 1);
    m_pLabelMessage = new QLabel(this);
    m_pLabelMessage->setWordWrap(true);
    m_pLabelMessage->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(pSplitter, 1);
    pLayout->addWidget(m_pLabelMessage);
    pLayout->addWidget(makeButtons());
    connect(m_pComboCell, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        fillNumbers();
        showResiduals();
    });
    connect(m_pComboShown, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { showResiduals(); });
    connect(m_pTable, &QTableWidget::itemChanged, this,
            [this](const QTableWidgetItem* pItem) { linkBoxes(pItem->row()); });
    resize(1200, 720);  // with its frame on a screen of 1280
    setLook({});
    setReady(false, false);
    setMessage(
        tr("\"Refine\" fits the ticked numbers and the cell to the indexed peaks. Nothing is changed before "
           "\"Apply\"."));
}

QWidget* GeometryDialog::makeNumbers()
{
    auto* pBox = new QGroupBox(tr("Numbers"), this);
    m_pTable = makeTable({tr("Refine"), tr("Before"), tr("After"), tr("e.s.d."), tr("Why Fixed")}, pBox);
    explain(m_pTable,
            tr("The numbers of the geometry. A number with a tick is refined if the peaks determine it; "
               "without one it is fixed. e.s.d. is the estimated standard deviation."));
    makeRows();
    m_pTable->horizontalHeader()->setStretchLastSection(true);
    m_pTable->setMinimumWidth(560);
    setHeightOfRows(m_pTable);

    m_pTableCell = makeTable({tr("Cell"), tr("Before"), tr("Free"), tr("e.s.d."), tr("Held"), tr("e.s.d.")},
                             pBox);
    explain(m_pTableCell,
            tr("The cell before and after, with all six numbers free, and constrained to the Bravais type "
               "that raises the residual by no more than 2 %. The size of a pixel is not "
               "refined: its error is common to all lengths."));
    const std::array<QString, 6> astrName = {QStringLiteral("a (Å)"), QStringLiteral("b (Å)"),
                                             QStringLiteral("c (Å)"), QStringLiteral("α (°)"),
                                             QStringLiteral("β (°)"), QStringLiteral("γ (°)")};
    m_pTableCell->setRowCount(int(astrName.size()));
    for (int nRow = 0; nRow < m_pTableCell->rowCount(); ++nRow) {
        m_pTableCell->setItem(nRow, CellName, new QTableWidgetItem(astrName[nRow]));
    }
    m_pTableCell->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    setHeightOfRows(m_pTableCell);

    m_pComboCell = new QComboBox(pBox);
    explain(m_pComboCell,
            tr("The cell, with the numbers that were fitted beside it, that the table above shows "
               "and \"Apply\" takes."));
    auto* pRow = new QHBoxLayout;
    pRow->addWidget(new QLabel(tr("Take"), pBox));
    pRow->addWidget(m_pComboCell, 1);
    auto* pLayout = new QVBoxLayout(pBox);
    pLayout->addWidget(m_pTable);
    pLayout->addWidget(m_pTableCell);
    pLayout->addLayout(pRow);
    pLayout->addStretch(1);
    return pBox;
}

void GeometryDialog::makeRows()
{
    const std::vector<GeometryRow> listRow = geometryRows();
    m_pTable->setRowCount(int(listRow.size()));
    for (int nRow = 0; nRow < m_pTable->rowCount(); ++nRow) {
        const GeometryRow& row = listRow[nRow];
        QString strName = QString::fromUtf8(row.pszName);
        strName[0] = strName[0].toUpper();
        if (*row.pszUnit) {
            strName += QStringLiteral(" (%1)").arg(QString::fromUtf8(row.pszUnit));
        }
        auto* pItem = new QTableWidgetItem(strName);
        pItem->setData(Qt::UserRole, int(row.number));
        // The offset of the tilts and a turn of the crystal are the same thing: there is no choice.
        const bool bChoice = row.number != TiltOffset;
        pItem->setFlags(bChoice ? Qt::ItemIsEnabled | Qt::ItemIsUserCheckable : Qt::ItemIsEnabled);
        if (bChoice) {
            pItem->setCheckState(Qt::Checked);
        }
        m_pTable->setItem(nRow, Name, pItem);
    }
}

QWidget* GeometryDialog::makePlots()
{
    auto* pBox = new QGroupBox(tr("Residuals"), this);
    m_pComboShown = new QComboBox(pBox);
    m_pComboShown->addItems({tr("After"), tr("Before")});
    explain(m_pComboShown, tr("Whether the plots show the residuals of the refined geometry or of the one "
                              "before. Both show the peaks that were kept in the refinement."));
    m_pPlots = new ResidualPlots(pBox);
    connect(m_pPlots, &ResidualPlots::notSaved, this,
            [this](const QString& strReason) { setMessage(strReason, true); });
    auto* pRow = new QHBoxLayout;
    pRow->addWidget(m_pComboShown);
    auto* pHint = new QLabel(tr("Right click: copy or save picture and numbers"), pBox);
    pHint->setEnabled(false);
    pRow->addWidget(pHint);
    pRow->addStretch(1);
    auto* pLayout = new QVBoxLayout(pBox);
    pLayout->addLayout(pRow);
    pLayout->addWidget(m_pPlots, 1);
    return pBox;
}

QWidget* GeometryDialog::makeButtons()
{
    auto* pBar = new QWidget(this);
    m_pButtonRun = makeRunButton(pBar, tr("Refine"), tr("Refine the geometry against the indexed peaks"),
                                 ButtonText::Bold);
    m_pButtonRun->setAutoDefault(false);
    m_pButtonApply = makeButton(tr("Apply"), pBar);
    m_pButtonUndo = makeButton(tr("Undo"), pBar);
    m_pButtonSaveProject = makeButton(tr("Save Project..."), pBar);
    m_pButtonSaveCalibration = makeButton(tr("Save Calibration..."), pBar);
    m_pButtonLoadCalibration = makeButton(tr("Load Calibration..."), pBar);
    explain(m_pButtonRun,
            tr("Fits the cell and the ticked numbers to the indexed peaks. \"Stop\" leaves all as it was."));
    explain(m_pButtonApply,
            tr("Takes the refined axis, distortion, tilts, direct beam and cell, and maps, merges and "
               "indexes the peaks anew with them. Files stay as they are."));
    explain(m_pButtonUndo, tr("Puts back all that was before the last \"Apply\" or \"Load Calibration\"."));
    explain(m_pButtonSaveProject,
            tr("Writes a project of these frames with the geometry in force, and beside it the "
               "files of shifts, peaks and cell that are found when it is opened."));
    explain(m_pButtonSaveCalibration,
            tr("Writes axis and distortion in force, which belong to the microscope, to a file "
               "for other crystals."));
    explain(m_pButtonLoadCalibration,
            tr("Takes axis and distortion from such a file, and maps, merges and indexes the "
               "peaks anew."));
    auto* pLayout = new QHBoxLayout(pBar);
    pLayout->setContentsMargins(0, 0, 0, 0);
    for (QPushButton* pButton : {m_pButtonLoadCalibration, m_pButtonSaveCalibration, m_pButtonSaveProject}) {
        pLayout->addWidget(pButton);
    }
    pLayout->addStretch(1);
    for (QPushButton* pButton : {m_pButtonUndo, m_pButtonApply, m_pButtonRun}) {
        pLayout->addWidget(pButton);
    }
    return pBar;
}

/// Third order and second order come in as a pair, or not at all.
void GeometryDialog::linkBoxes(int nRow)
{
    const auto isPair = [](int nOne, int nOther) {
        return (nOne == ThirdOrderRadial && nOther == ThirdOrderSpiral) ||
               (nOne == ThirdOrderSpiral && nOther == ThirdOrderRadial);
    };
    const QTableWidgetItem* pChanged = m_pTable->item(nRow, Name);
    for (int n = 0; pChanged && n < m_pTable->rowCount(); ++n) {
        QTableWidgetItem* pItem = m_pTable->item(n, Name);
        if (pItem && isPair(pChanged->data(Qt::UserRole).toInt(), pItem->data(Qt::UserRole).toInt()) &&
            pItem->checkState() != pChanged->checkState()) {
            const QSignalBlocker blocker(m_pTable);
            pItem->setCheckState(pChanged->checkState());
        }
    }
}

std::vector<int> GeometryDialog::fixedNumbers() const
{
    std::vector<int> listFixed;
    for (int nRow = 0; nRow < m_pTable->rowCount(); ++nRow) {
        const QTableWidgetItem* pItem = m_pTable->item(nRow, Name);
        if ((pItem->flags() & Qt::ItemIsUserCheckable) && pItem->checkState() != Qt::Checked) {
            listFixed.push_back(pItem->data(Qt::UserRole).toInt());
        }
    }
    return listFixed;
}

const GeometryModel* GeometryDialog::model() const
{
    if (!m_look) {
        return nullptr;
    }
    const GeometryRefinement& refinement = m_look->refinement;
    return refinement.constrained && m_pComboCell->currentIndex() == 0 ? &*refinement.constrained
                                                                       : &refinement.free;
}

void GeometryDialog::setLook(const std::optional<GeometryLook>& look)
{
    m_look = look;
    {
        const QSignalBlocker blocker(m_pComboCell);
        m_pComboCell->clear();
        if (m_look && m_look->refinement.constrained) {
            m_pComboCell->addItem(tr("the cell held to %1")
                                      .arg(m_look->refinement.constrained->fit.form.constraint()->strSymbol));
        }
        m_pComboCell->addItem(tr("the free cell"));
        m_pComboCell->setEnabled(m_pComboCell->count() > 1);
    }
    fillNumbers();
    fillCell();
    showResiduals();
}

void GeometryDialog::fillNumbers()
{
    const QSignalBlocker blocker(m_pTable);
    const std::vector<GeometryRow> listRow = geometryRows();
    const GeometryModel* pModel = model();
    for (int nRow = 0; nRow < int(listRow.size()); ++nRow) {
        const GeometryRow& row = listRow[nRow];
        const size_t n = size_t(row.number);
        QStringList listText = {QString(), QString(), QString(), QString()};
        if (pModel) {
            const DiffractionGeometry& before = m_look->refinement.before;
            const auto text = [&](double df) { return numberText(row.dfFactor * df, row.nDecimals); };
            const bool bFree = holds(pModel->fit.listFree, row.number);
            listText = QStringList{text(numbersOf(before, before.plane.axis)[n]),
                                   text(pModel->fit.numbers[n]), bFree ? text(pModel->errors[n]) : QString(),
                                   bFree ? QString() : whyFixed(m_look->refinement, row.number)};
        }
        for (int nColumn = Before; nColumn < Why; ++nColumn) {
            setRightItem(m_pTable, nRow, nColumn, listText[nColumn - Before]);
        }
        auto* pWhy = new QTableWidgetItem(listText[Why - Before]);
        pWhy->setToolTip(listText[Why - Before]);
        m_pTable->setItem(nRow, Why, pWhy);
    }
    for (int nColumn = Name; nColumn < Why; ++nColumn) {
        m_pTable->resizeColumnToContents(nColumn);
    }
}

void GeometryDialog::fillCell()
{
    const auto fill = [this](int nColumn, const CellParameters* pCell, int nMoreDecimals = 0) {
        for (int nRow = 0; nRow < 6; ++nRow) {
            const int nDecimals = (nRow < 3 ? 4 : 3) + nMoreDecimals;
            setRightItem(m_pTableCell, nRow, nColumn,
                         pCell ? numberText(pCell->numbers()[nRow], nDecimals) : QString());
        }
    };
    const GeometryRefinement* pRefinement = m_look ? &m_look->refinement : nullptr;
    const GeometryModel* pHeld = pRefinement && pRefinement->constrained ? &*pRefinement->constrained
                                                                         : nullptr;
    fill(CellBefore, m_look ? &m_look->cellBefore : nullptr);
    fill(CellFree, pRefinement ? &pRefinement->free.cell : nullptr);
    fill(CellFreeError, pRefinement ? &pRefinement->free.cellErrors : nullptr);
    fill(CellHeld, pHeld ? &pHeld->cell : nullptr);
    fill(CellHeldError, pHeld ? &pHeld->cellErrors : nullptr);
    m_pTableCell->horizontalHeaderItem(CellHeld)->setText(
        pHeld ? tr("Held, %1").arg(pHeld->fit.form.constraint()->strSymbol) : tr("Held"));
}

void GeometryDialog::showResiduals()
{
    if (m_look) {
        m_pPlots->setResiduals(m_pComboShown->currentIndex() == 0 ? m_look->listAfter : m_look->listBefore,
                               m_look->bounds);
    } else {
        m_pPlots->setResiduals({}, {});
    }
}

void GeometryDialog::setMessage(const QString& strText, bool bBad)
{
    m_pLabelMessage->setText(strText);
    m_pLabelMessage->setStyleSheet(
        bBad ? QStringLiteral("color: %1").arg(readableOn(palette(), QColor(Qt::red)).name()) : QString());
}

void GeometryDialog::setReady(bool bApply, bool bUndo)
{
    m_pButtonApply->setEnabled(bApply);
    m_pButtonUndo->setEnabled(bUndo);
}

bool GeometryDialog::event(QEvent* pEvent)
{
    // A status tip goes no further up than to a window, such as this dialog, so it is handed on.
    if (pEvent->type() == QEvent::StatusTip && parentWidget()) {
        return QCoreApplication::sendEvent(parentWidget(), pEvent);
    }
    return QDialog::event(pEvent);
}

}  // namespace tessera
