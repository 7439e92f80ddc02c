#include "window/crystal/latticesdialog.h"

#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>

namespace tessera {

namespace {

const int g_nRowsSeen = 6;       // of the types: a cubic lattice has up to a dozen, of which the first count
const int g_nLinesSeen = 2;      // of each list, of two lines of text at most
const int g_nIconEdge = 12;      // pixels, of the colours
const int g_nWidestTable = 720;  // pixels: beside the views; what has more is scrolled

enum Column {
    ColumnType,
    ColumnSystem,
    ColumnLengths,
    ColumnAngles,
    ColumnMisfitLengths,
    ColumnMisfitAngles,
    ColumnObliquity,
    ColumnAxes,
    ColumnCount
};

QString columnTip(int nColumn)
{
    switch (nColumn) {
        case ColumnType:
        case ColumnSystem:
            return LatticesDialog::tr(
                "Bravais type. A star marks the one that is proposed: the highest symmetry whose misfit is "
                "hardly larger than that of its subgroups.");
        case ColumnLengths:
        case ColumnAngles:
            return LatticesDialog::tr("The conventional cell of the type, made to obey it: Å and degrees.");
        case ColumnMisfitLengths:
            return LatticesDialog::tr("How far the worst edge of the measured cell is from that, per cent.");
        case ColumnMisfitAngles:
            return LatticesDialog::tr("How far the worst angle is from that, degrees.");
        case ColumnObliquity:
            return LatticesDialog::tr(
                "How far the worst twofold axis is from the normal of its net plane, degrees.");
        default:
            return LatticesDialog::tr("The new axes by those of the cell in force, in real space.");
    }
}

QStringList titles()
{
    return {LatticesDialog::tr("Type"),        LatticesDialog::tr("System"),
            QStringLiteral("a, b, c (Å)"),     QStringLiteral("α, β, γ (°)"),
            LatticesDialog::tr("Edges (%)"),   LatticesDialog::tr("Angles (°)"),
            LatticesDialog::tr("Twofold (°)"), LatticesDialog::tr("New Axes")};
}

QStringList cellsOf(const LatticeType& type, bool bProposed)
{
    const LatticeSymmetry& symmetry = type.symmetry;
    const CellParameters& cell = symmetry.cellConstrained;
    const QLocale locale = QLocale::system();
    const auto numbers = [&](std::initializer_list<double> listNumber, int nDecimals) {
        QStringList list;
        for (const double df : listNumber) {
            list.append(locale.toString(df, 'f', nDecimals));
        }
        return list.join(QStringLiteral("  "));
    };
    return {bravaisSymbol(symmetry) + (bProposed ? QStringLiteral(" *") : QString()),
            nameOf(symmetry.system),
            numbers({cell.a, cell.b, cell.c}, 3),
            numbers({cell.alpha, cell.beta, cell.gamma}, 2),
            numbers({symmetry.dfMisfitLengths}, 2),
            numbers({symmetry.dfMisfitAngles}, 2),
            numbers({symmetry.dfObliquity}, 2),
            axesText(type.matTransform)};
}

QListWidget* makeList(QWidget* pParent)
{
    auto* pList = new QListWidget(pParent);
    pList->setWordWrap(true);
    pList->setTextElideMode(Qt::ElideNone);
    pList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    pList->setResizeMode(QListView::Adjust);
    pList->setMinimumHeight(g_nLinesSeen * 2 * pList->fontMetrics().lineSpacing());
    return pList;
}

QPushButton* makeButton(const QString& strText, QWidget* pParent)
{
    auto* pButton = new QPushButton(strText, pParent);
    pButton->setAutoDefault(false);  // Return in a list presses nothing
    return pButton;
}

/// An icon for a colour.
QIcon swatch(const QColor& color)
{
    QPixmap pixmap(g_nIconEdge, g_nIconEdge);
    pixmap.fill(color);
    return QIcon(pixmap);
}

}  // namespace

LatticesDialog::LatticesDialog(QWidget* pParent) : QDialog(pParent, Qt::Tool)
{
    m_pButtonRun = makeRunButton(this, tr("Run"), tr("Look at the lattice of the cell in force"),
                                 ButtonText::Bold);
    m_pButtonRun->setAutoDefault(false);
    explain(m_pButtonRun, tr("Repeats the analysis of the cell in force: its symmetry, its agreement with "
                             "the peaks, and further lattices in the remaining peaks. \"Stop\" keeps what is "
                             "found so far."));
    auto* pBottom = new QHBoxLayout;
    pBottom->addStretch(1);
    pBottom->addWidget(m_pButtonRun);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(makeTypes(), 2);
    pLayout->addWidget(makePoints(), 1);
    pLayout->addWidget(makeLattices(), 1);
    pLayout->addLayout(pBottom);

    connect(m_pTableTypes, &QTableWidget::itemSelectionChanged, this, &LatticesDialog::updateButtons);
    connect(m_pListPoints, &QListWidget::itemSelectionChanged, this, &LatticesDialog::updateButtons);
    connect(m_pListLattices, &QListWidget::itemSelectionChanged, this, &LatticesDialog::updateButtons);
    connect(m_pButtonCopy, &QPushButton::clicked, this, &LatticesDialog::copyText);
    setLook(LatticeLook());
}

/// A stack of two pages: the result, and a note that the result is out of date.
QStackedWidget* LatticesDialog::besideNote(QWidget* pContent)
{
    auto* pStack = new QStackedWidget(pContent->parentWidget());
    auto* pNote = new QLabel(pStack);
    pNote->setAlignment(Qt::AlignCenter);
    pNote->setWordWrap(true);
    pStack->addWidget(pContent);
    pStack->addWidget(pNote);
    return pStack;
}

QGroupBox* LatticesDialog::makeTypes()
{
    auto* pGroup = new QGroupBox(tr("Bravais Types"), this);
    m_pTableTypes = new QTableWidget(0, ColumnCount, pGroup);
    m_pTableTypes->setHorizontalHeaderLabels(titles());
    for (int nColumn = 0; nColumn < ColumnCount; ++nColumn) {
        m_pTableTypes->horizontalHeaderItem(nColumn)->setToolTip(columnTip(nColumn));
    }
    m_pTableTypes->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_pTableTypes->setSelectionMode(QAbstractItemView::SingleSelection);
    m_pTableTypes->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_pTableTypes->setTextElideMode(Qt::ElideNone);
    m_pTableTypes->setWordWrap(false);
    m_pTableTypes->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_pTableTypes->horizontalHeader()->setHighlightSections(false);
    m_pTableTypes->verticalHeader()->hide();
    explain(
        m_pTableTypes,
        tr("The types that the lattice fits within 3 % and 3°, the highest symmetry first. The star marks "
           "the proposed one. A metric can be more symmetric than the crystal: the intensities decide."));
    m_pButtonFillMatrix = makeButton(tr("Fill Matrix"), pGroup);
    explain(m_pButtonFillMatrix,
            tr("Puts the matrix that leads to the conventional cell of the selected type into \"Unit Cell "
               "Transformation\", for the space that is chosen there. \"Test\" and \"Transform\" do the "
               "rest."));
    m_pButtonCopy = makeButton(tr("Copy"), pGroup);
    explain(m_pButtonCopy, tr("Copies table and lists as text."));
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pButtonFillMatrix);
    pButtons->addWidget(m_pButtonCopy);
    pButtons->addStretch(1);
    auto* pLayout = new QVBoxLayout(pGroup);
    m_pStackTypes = besideNote(m_pTableTypes);
    pLayout->addWidget(m_pStackTypes);
    pLayout->addLayout(pButtons);
    return pGroup;
}

QGroupBox* LatticesDialog::makePoints()
{
    auto* pGroup = new QGroupBox(tr("What the Peaks Say"), this);
    m_pListPoints = makeList(pGroup);
    explain(m_pListPoints, tr("Conditions that all reflections fulfil, and places between the lattice points "
                              "with more peaks than expected by chance: the cell may be too short."));
    m_pButtonLongerCell = makeButton(tr("Take Longer Cell"), pGroup);
    explain(m_pButtonLongerCell, tr("Makes the cell whose reflections lie on the selected places, too, the "
                                    "cell in force, and writes the .uc file. Index again afterwards."));
    auto* pLayout = new QGridLayout(pGroup);
    m_pStackPoints = besideNote(m_pListPoints);
    pLayout->addWidget(m_pStackPoints, 0, 0, 1, 2);
    pLayout->addWidget(m_pButtonLongerCell, 1, 0);
    pLayout->setColumnStretch(1, 1);
    return pGroup;
}

QGroupBox* LatticesDialog::makeLattices()
{
    auto* pGroup = new QGroupBox(tr("Lattices in the Peaks"), this);
    m_pListLattices = makeList(pGroup);
    explain(m_pListLattices,
            tr("The cell that was analysed, and lattices in the remaining peaks, such as twins and other "
               "crystals, with their share of the peaks, cell, and rotation relative to the first."));
    m_pButtonChoose = makeButton(tr("Choose"), pGroup);
    explain(m_pButtonChoose, tr("Makes the selected lattice the cell in force and writes the .uc file. Index "
                                "again afterwards."));
    m_pCheckColors = new QCheckBox(tr("Colours"), pGroup);
    explain(m_pCheckColors,
            tr("Shows the peaks of each lattice as a group of its own in both 3D views. They can be merged "
               "as any group. Off, the former groups come back."));
    auto* pLayout = new QGridLayout(pGroup);
    m_pStackLattices = besideNote(m_pListLattices);
    pLayout->addWidget(m_pStackLattices, 0, 0, 1, 3);
    pLayout->addWidget(m_pButtonChoose, 1, 0);
    pLayout->addWidget(m_pCheckColors, 1, 1);
    pLayout->setColumnStretch(2, 1);
    return pGroup;
}

void LatticesDialog::setAge(LookAge age)
{
    const QString strNote =
        age == LookAge::EarlierCell
            ? tr("What was found is of an earlier cell. \"Run\" looks at the one in force.")
            : tr("What was found is of earlier peaks. \"Run\" looks at those of now.");
    const bool bCell = age == LookAge::Current, bPeaks = age != LookAge::EarlierPeaks;
    for (const auto& [pStack, bHolds] : {std::pair<QStackedWidget*, bool>{m_pStackTypes, bCell},
                                         {m_pStackPoints, bCell},
                                         {m_pStackLattices, bPeaks}}) {
        static_cast<QLabel*>(pStack->widget(1))->setText(strNote);
        pStack->setCurrentIndex(bHolds ? 0 : 1);
    }
}

void LatticesDialog::setLook(const LatticeLook& look)
{
    const LatticeAnalysis& analysis = look.analysis;
    fillTypes(analysis);

    const QStringList listSaid = tellWholeLattice(analysis.whole);
    m_nLinesBeforeCosets = linesWithoutCosets(analysis.whole).size();
    m_nCosets = listSaid.size() - m_nLinesBeforeCosets;
    m_pListPoints->clear();
    m_pListPoints->addItems(listSaid);
    if (listSaid.isEmpty() && !look.listCell.isEmpty()) {
        m_pListPoints->addItem(tr("Nothing beside the cell."));
    }
    const QStringList listLattice = tellLattices(analysis.lattices);
    m_pListLattices->clear();
    for (int n = 0; n < listLattice.size(); ++n) {
        m_pListLattices->addItem(new QListWidgetItem(swatch(colorOf(n)), listLattice[n]));
    }
    m_listText = (look.listCell.isEmpty() ? QStringList() : tableOfTypes(analysis)) + listSaid + listLattice;
    setAge(LookAge::Current);
    updateButtons();
}

void LatticesDialog::fillTypes(const LatticeAnalysis& analysis)
{
    m_pTableTypes->clearSelection();
    m_pTableTypes->setRowCount(int(analysis.listType.size()));
    for (int nRow = 0; nRow < m_pTableTypes->rowCount(); ++nRow) {
        const LatticeType& type = analysis.listType[nRow];
        const bool bProposed = isProposed(analysis, type);
        const QStringList listCell = cellsOf(type, bProposed);
        for (int nColumn = 0; nColumn < ColumnCount; ++nColumn) {
            auto* pItem = new QTableWidgetItem(listCell[nColumn]);
            const bool bNumber = nColumn >= ColumnLengths && nColumn < ColumnAxes;
            pItem->setTextAlignment(int(Qt::AlignVCenter) | int(bNumber ? Qt::AlignRight : Qt::AlignLeft));
            QFont font = pItem->font();
            font.setBold(bProposed);
            pItem->setFont(font);
            m_pTableTypes->setItem(nRow, nColumn, pItem);
        }
        if (bProposed) {
            m_pTableTypes->selectRow(nRow);
        }
    }
    m_pTableTypes->resizeColumnsToContents();
    m_pTableTypes->resizeRowsToContents();
    const int nFrame = 2 * m_pTableTypes->frameWidth();
    m_pTableTypes->setMinimumWidth(std::min(m_pTableTypes->horizontalHeader()->length() + nFrame +
                                                m_pTableTypes->verticalScrollBar()->sizeHint().width(),
                                            g_nWidestTable));
    m_pTableTypes->setMinimumHeight(m_pTableTypes->horizontalHeader()->sizeHint().height() + nFrame +
                                    g_nRowsSeen * m_pTableTypes->verticalHeader()->defaultSectionSize());
}

int LatticesDialog::selectedType() const
{
    const QModelIndexList list = m_pTableTypes->selectionModel()->selectedRows();
    return list.isEmpty() ? -1 : list.first().row();
}

int LatticesDialog::selectedCoset() const
{
    const QList<QListWidgetItem*> list = m_pListPoints->selectedItems();
    const int nRow = list.isEmpty() ? -1 : m_pListPoints->row(list.first()) - m_nLinesBeforeCosets;
    return nRow >= 0 && nRow < m_nCosets ? nRow : -1;
}

int LatticesDialog::selectedLattice() const
{
    const QList<QListWidgetItem*> list = m_pListLattices->selectedItems();
    return list.isEmpty() ? -1 : m_pListLattices->row(list.first());
}

QColor LatticesDialog::colorOf(int nLattice)
{
    // None is white, the colour of points of no lattice, or red, that of selected points.
    const std::array<QColor, 6> aColor = {QColor(90, 200, 255),  QColor(255, 170, 50), QColor(120, 235, 120),
                                          QColor(235, 120, 235), QColor(250, 235, 90), QColor(150, 140, 255)};
    return aColor[size_t(std::max(nLattice, 0)) % aColor.size()];
}

void LatticesDialog::updateButtons()
{
    m_pButtonFillMatrix->setEnabled(selectedType() >= 0);
    m_pButtonCopy->setEnabled(!m_listText.isEmpty());
    m_pButtonLongerCell->setEnabled(selectedCoset() >= 0);
    m_pButtonChoose->setEnabled(selectedLattice() >= 0);
    m_pCheckColors->setEnabled(m_pListLattices->count() > 0);
}

void LatticesDialog::copyText() const
{
    QApplication::clipboard()->setText(m_listText.join(QLatin1Char('\n')));
}

bool LatticesDialog::event(QEvent* pEvent)
{
    // A status tip goes no further up than to a window, such as this dialog, so it is handed on.
    if (pEvent->type() == QEvent::StatusTip && parentWidget()) {
        return QCoreApplication::sendEvent(parentWidget(), pEvent);
    }
    return QDialog::event(pEvent);
}

}  // namespace tessera
