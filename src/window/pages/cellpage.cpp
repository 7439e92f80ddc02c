#include "window/pages/cellpage.h"

#include "crystal/spacegrouptable.h"
#include "records/runparameters.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/palettecolors.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDoubleValidator>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <array>

namespace tessera {

namespace {

const int g_nSearchButtonHeight = 30;     // pixels
const int g_nSelectionTableHeight = 110;  // pixels: the groups that an indexing makes fit in
const int g_nVisibleSpaceGroups = 30;
const int g_nSymbolLength = 6;  // letters; the stretched box is wider

/// The colour of an axis of reciprocal space, as the 3D views have it, in a text on that palette.
QString axisColor(int nAxis, const QPalette& palette)
{
    const std::array<const char*, 3> apszColor = {"red", "green", "blue"};
    const QString strColor = QLatin1String(apszColor[nAxis]);
    return isDark(palette) ? readableOn(palette, QColor(strColor)).name() : strColor;
}

}  // namespace

CellPage::CellPage(QWidget* pParent) : QWidget(pParent)
{
    auto* pPageLayout = new QVBoxLayout(this);
    pPageLayout->addWidget(makeSelection());
    pPageLayout->addWidget(makeDetermination());
    pPageLayout->addWidget(makeCell());
    pPageLayout->addWidget(makeTransformation());
    pPageLayout->addWidget(makeIndexing());

    m_pComboReflectionGrouping = new QComboBox(this);
    for (int nNumber = 1; nNumber <= g_nSpaceGroups; ++nNumber) {
        m_pComboReflectionGrouping->addItem(
            QStringLiteral("%1  %2").arg(nNumber, 3).arg(QString::fromStdString(spaceGroupSymbol(nNumber))),
            nNumber);
    }
    m_pComboReflectionGrouping->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_pComboReflectionGrouping->setMinimumContentsLength(g_nSymbolLength);
    m_pComboReflectionGrouping->setMaxVisibleItems(g_nVisibleSpaceGroups);
    explain(m_pComboReflectionGrouping,
            QString::fromUtf8(parameterOf(&IndexingParameters::m_nSpaceGroup).pszTip));
    auto* pGroupingLayout = new QHBoxLayout;
    pGroupingLayout->addWidget(new QLabel(tr("Reflection Grouping"), this));
    pGroupingLayout->addWidget(m_pComboReflectionGrouping, 1);
    pPageLayout->addLayout(pGroupingLayout);
    pPageLayout->addStretch(1);

    colorAxes();

    // What a toggle changes on the page is connected here; what else it does, by MainWindow.
    connect(m_pRadioCellManual, &QRadioButton::toggled, this, &CellPage::showManual);
    connect(m_pCheckAutoRange, &QCheckBox::toggled, this, &CellPage::showAutoRange);
    connect(m_pRadioSpaceReal, &QRadioButton::toggled, this, &CellPage::updateCellTransformMatrixLabels);
}

QGroupBox* CellPage::makeSelection()
{
    auto* pGroupSelection = new QGroupBox(tr("Selection Used for Processing"), this);
    m_pTableReflectionSelection = makeGroupTable(pGroupSelection);
    m_pTableReflectionSelection->setFixedHeight(g_nSelectionTableHeight);
    explain(m_pTableReflectionSelection,
            tr("The group of the view \"3D View Merged\" that cell search and indexing take."));
    auto* pLayout = new QVBoxLayout(pGroupSelection);
    pLayout->addWidget(m_pTableReflectionSelection);
    return pGroupSelection;
}

QGroupBox* CellPage::makeDetermination()
{
    auto* pGroupDetermination = new QGroupBox(tr("Unit Cell Determination"), this);
    auto* pLayout = new QVBoxLayout(pGroupDetermination);

    m_pRadioCellAuto = new QRadioButton(tr("Auto"), pGroupDetermination);
    m_pRadioCellManual = new QRadioButton(tr("Manual"), pGroupDetermination);
    m_pRadioCellAuto->setChecked(true);
    explain(m_pRadioCellAuto, tr("Looks for the cell in the reflections or peaks."));
    explain(m_pRadioCellManual, tr("Builds the cell from directions of view."));
    auto* pRadioLayout = new QHBoxLayout;
    pRadioLayout->addWidget(m_pRadioCellAuto);
    pRadioLayout->addWidget(m_pRadioCellManual);
    pLayout->addLayout(pRadioLayout);

    m_pMethod = makeMethod(pGroupDetermination);
    pLayout->addWidget(m_pMethod);
    pLayout->addWidget(makeRange(pGroupDetermination));

    m_pButtonSearchCell = new QPushButton(tr("Search for Unit Cell"), pGroupDetermination);
    m_pButtonSearchCell->setMinimumHeight(g_nSearchButtonHeight);
    m_pButtonSearchCell->setStatusTip(tr("Hunting peaks in diffraction patterns"));
    explain(m_pButtonSearchCell,
            tr("Finds a*, b*, c* by the method above, shows the lattice in both views and writes the .uc "
               "file."));
    m_pButtonKnownCell = new QPushButton(tr("Known Cell..."), pGroupDetermination);
    explain(
        m_pButtonKnownCell,
        tr("Asks for the cell of a crystal that is known and looks for its orientation among the peaks."));
    m_pButtonKnownCell->setMinimumHeight(g_nSearchButtonHeight);
    auto* pSearchLayout = new QHBoxLayout;
    pSearchLayout->addWidget(m_pButtonSearchCell, 1);
    pSearchLayout->addWidget(m_pButtonKnownCell);
    pLayout->addLayout(pSearchLayout);
    pLayout->addWidget(makeDirections(pGroupDetermination));
    return pGroupDetermination;
}

QWidget* CellPage::makeMethod(QWidget* pParent)
{
    auto* pMethod = new QWidget(pParent);
    m_pComboMethod = new QComboBox(pMethod);
    m_pComboMethod->addItem(tr("Difference Vectors"), int(CellSearchMethod::DifferenceVectors));
    m_pComboMethod->addItem(tr("Directions"), int(CellSearchMethod::Directions));
    m_pComboMethod->addItem(tr("Best of Both"), int(CellSearchMethod::BestOfBoth));
    explain(m_pComboMethod,
            tr("How the cell is searched: by differences of the chosen reflections, by directions in which "
               "all peaks of the frames lie in planes of even spacing, or by both, of which the cell is "
               "taken that explains more of the peaks. Directions are suited to long edges and much noise."));
    auto* pLayout = new QHBoxLayout(pMethod);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(new QLabel(tr("Method"), pMethod));
    pLayout->addWidget(m_pComboMethod, 1);
    return pMethod;
}

QGroupBox* CellPage::makeRange(QWidget* pParent)
{
    m_pGroupCellRange = new QGroupBox(tr("Unit Cell Range"), pParent);
    m_pSpinCellRangeMin = makeSpin(m_pGroupCellRange, &CellHuntingParameters::m_dfCellRangeMin);
    m_pSpinCellRangeMax = makeSpin(m_pGroupCellRange, &CellHuntingParameters::m_dfCellRangeMax);
    m_pCheckAutoRange = new QCheckBox(tr("Auto"), m_pGroupCellRange);
    explain(m_pCheckAutoRange, tr("Takes the range from the distances of the spots; the boxes show it."));
    auto* pRangeLayout = new QGridLayout(m_pGroupCellRange);
    pRangeLayout->addWidget(new QLabel(tr("Min."), m_pGroupCellRange), 0, 0);
    pRangeLayout->addWidget(m_pSpinCellRangeMin, 0, 1);
    pRangeLayout->addWidget(new QLabel(tr("Max."), m_pGroupCellRange), 1, 0);
    pRangeLayout->addWidget(m_pSpinCellRangeMax, 1, 1);
    m_pButtonSuggest = new QPushButton(tr("Suggest..."), m_pGroupCellRange);
    explain(m_pButtonSuggest, tr("Suggests a range from the shortest distances of spots, with the reason. "
                                 "Nothing is set before you agree."));
    pRangeLayout->addWidget(m_pCheckAutoRange, 0, 2);
    pRangeLayout->addWidget(m_pButtonSuggest, 1, 2);
    pRangeLayout->setColumnStretch(1, 1);
    m_pSpinCellRangeMin->setAccessibleName(tr("Unit Cell Range, Min."));
    m_pSpinCellRangeMax->setAccessibleName(tr("Unit Cell Range, Max."));
    return m_pGroupCellRange;
}

QGroupBox* CellPage::makeDirections(QWidget* pParent)
{
    m_pGroupAssignViewingDirection = new QGroupBox(tr("Assign Viewing Direction To"), pParent);
    auto* pAssignLayout = new QGridLayout(m_pGroupAssignViewingDirection);
    const struct {
        QString strText;
        QPushButton*& pButton;
        QDoubleSpinBox*& pSpin;
    } aRow[] = {{tr("a*"), m_pButtonAssignRA, m_pSpinManualLengthA},
                {tr("b*"), m_pButtonAssignRB, m_pSpinManualLengthB},
                {tr("c*"), m_pButtonAssignRC, m_pSpinManualLengthC}};
    for (int i = 0; i < 3; ++i) {
        aRow[i].pButton = new QPushButton(aRow[i].strText, m_pGroupAssignViewingDirection);
        aRow[i].pButton->setMinimumWidth(15);
        aRow[i].pSpin = makeDoubleSpin(m_pGroupAssignViewingDirection, 0, 99.99, 5, 0.0001, 0.1,
                                       QStringLiteral(" Å⁻¹"));
        aRow[i].pSpin->setGroupSeparatorShown(true);
        // A length that begins with "0" while it is typed would make the vector 0, without a direction.
        aRow[i].pSpin->setKeyboardTracking(false);
        explain(aRow[i].pButton,
                tr("Gives %1 the direction of view of the 3D view, and the length beside it.")
                    .arg(aRow[i].strText));
        explain(aRow[i].pSpin,
                tr("Length of %1, Å⁻¹. Adjust it until the nodes of the lattice lie on the points.")
                    .arg(aRow[i].strText));
        pAssignLayout->addWidget(aRow[i].pButton, i, 0);
        pAssignLayout->addWidget(aRow[i].pSpin, i, 1);
    }
    pAssignLayout->setColumnStretch(1, 1);
    m_pGroupAssignViewingDirection->hide();
    return m_pGroupAssignViewingDirection;
}

QGroupBox* CellPage::makeCell()
{
    auto* pGroup = new QGroupBox(tr("Unit Cell"), this);
    auto* pGrid = new QGridLayout(pGroup);
    pGrid->addWidget(new QLabel(QStringLiteral("a,b,c(Å)"), pGroup), 0, 0);
    pGrid->addWidget(new QLabel(QStringLiteral("α,β,γ(°)"), pGroup), 1, 0);
    for (int i = 0; i < 6; ++i) {
        m_apEditCell[i] = new QLineEdit(pGroup);
        m_apEditCell[i]->setReadOnly(true);
        explain(m_apEditCell[i],
                i < 3 ? tr("Edge of the cell in force, Å.") : tr("Angle of the cell in force, degrees."));
        m_apEditCell[i]->setAlignment(Qt::AlignRight);
        pGrid->addWidget(m_apEditCell[i], i / 3, 1 + i % 3);
    }
    m_pLabelCellFit = new QLabel(pGroup);
    m_pLabelCellFit->setWordWrap(true);
    explain(m_pLabelCellFit, tr("Share of the peaks with whole indices, each peak indexed by itself, and the "
                                "share for other orientations of the cell. Good: far above that by chance."));
    pGrid->addWidget(m_pLabelCellFit, 2, 0, 1, 4);
    m_pButtonLoadCell = new QPushButton(tr("Load..."), pGroup);
    m_pButtonExportCell = new QPushButton(tr("Export..."), pGroup);
    auto* pButtonLayout = new QHBoxLayout;
    pButtonLayout->addWidget(m_pButtonLoadCell);
    pButtonLayout->addWidget(m_pButtonExportCell);
    explain(m_pButtonLoadCell, tr("Reads a*, b*, c* from a .uc file and makes them the cell in force."));
    explain(m_pButtonExportCell, tr("Writes a*, b*, c* of the cell in force to a .uc file."));
    pGrid->addLayout(pButtonLayout, 3, 0, 1, 4);
    return pGroup;
}

QGroupBox* CellPage::makeTransformation()
{
    auto* pGroupTransformation = new QGroupBox(tr("Unit Cell Transformation"), this);
    auto* pLayout = new QVBoxLayout(pGroupTransformation);

    auto* pSpace = new QGroupBox(tr("Apply To Space"), pGroupTransformation);
    m_pRadioSpaceReciprocal = new QRadioButton(tr("Reciprocal"), pSpace);
    m_pRadioSpaceReal = new QRadioButton(tr("Real"), pSpace);
    m_pRadioSpaceReciprocal->setChecked(true);
    explain(m_pRadioSpaceReciprocal, tr("The matrix acts on a*, b*, c*."));
    explain(m_pRadioSpaceReal, tr("The matrix acts on a, b, c."));
    auto* pSpaceLayout = new QHBoxLayout(pSpace);
    pSpaceLayout->addWidget(m_pRadioSpaceReciprocal);
    pSpaceLayout->addWidget(m_pRadioSpaceReal);
    pLayout->addWidget(pSpace);

    auto* pGrid = new QGridLayout;
    for (int nRow = 0; nRow < 3; ++nRow) {
        m_apLabelRow[nRow] = new QLabel(pGroupTransformation);
        m_apLabelColumn[nRow] = new QLabel(pGroupTransformation);
        m_apLabelColumn[nRow]->setAlignment(Qt::AlignCenter);
        pGrid->addWidget(m_apLabelRow[nRow], nRow + 1, 0);
        pGrid->addWidget(m_apLabelColumn[nRow], 0, nRow + 1);
        for (int nColumn = 0; nColumn < 3; ++nColumn) {
            auto* pEdit = new QLineEdit(nRow == nColumn ? QStringLiteral("1") : QStringLiteral("0"),
                                        pGroupTransformation);
            pEdit->setAlignment(Qt::AlignRight);
            pEdit->setValidator(new QDoubleValidator(pEdit));
            pGrid->addWidget(pEdit, nRow + 1, nColumn + 1);
            explain(pEdit,
                    tr("Share that the axis above has in the new axis to the left. Whole numbers keep the "
                       "lattice, fractions add nodes or leave nodes out."));
            m_apEditMatrix[nRow][nColumn] = pEdit;
        }
    }
    pLayout->addLayout(pGrid);

    m_pButtonTest = new QPushButton(tr("Test"), pGroupTransformation);
    m_pButtonTest->setCheckable(true);
    m_pButtonTransform = new QPushButton(tr("Transform"), pGroupTransformation);
    auto* pButtonLayout = new QHBoxLayout;
    pButtonLayout->addWidget(m_pButtonTest);
    pButtonLayout->addWidget(m_pButtonTransform);
    pLayout->addLayout(pButtonLayout);
    m_pButtonLattices = new QPushButton(tr("Lattices..."), pGroupTransformation);
    explain(m_pButtonLattices, tr("Analyses the lattice of the cell in force: the Bravais types that fit it, "
                                  "each with the matrix to its conventional cell, whether a longer cell is "
                                  "needed, and lattices of other crystals in the peaks."));
    pLayout->addWidget(m_pButtonLattices);

    explain(m_pButtonTest,
            tr("Shows the transformed cell in both views without taking it; another click shows "
               "the cell in force again."));
    explain(m_pButtonTransform,
            tr("Makes the transformed cell the cell in force and writes the .uc file. Index "
               "again afterwards."));
    return pGroupTransformation;
}

QGroupBox* CellPage::makeIndexing()
{
    auto* pGroupIndexing = new QGroupBox(tr("Peak Indexing"), this);
    m_pSpinIndexThreshold = makeSpin(pGroupIndexing, &IndexingParameters::m_dfIndexThreshold);
    m_pCheckOutputIndexing = new QCheckBox(tr("Output Indexing Results"), pGroupIndexing);
    m_pCheckOutputStatistics = new QCheckBox(tr("Output Reflection Statistics"), pGroupIndexing);
    m_pCheckOutputRefinedCell = new QCheckBox(tr("Output Refined Unit Cell"), pGroupIndexing);
    m_pButtonIndexMergedPeaks = new QPushButton(tr("Index Merged Peaks"), pGroupIndexing);

    explain(m_pCheckOutputIndexing,
            tr("Lists the reflections in the log and writes the .hkl, .p4p and .ipf files."));
    explain(m_pCheckOutputStatistics,
            tr("Counts reflection conditions and tries the reflections against all space groups,"
               " in the log."));
    explain(m_pCheckOutputRefinedCell,
            tr("Refines the cell against d* of the indexed reflections, in the log; needs seven "
               "at least."));
    explain(m_pButtonIndexMergedPeaks,
            tr("Gives each reflection h, k, l by the cell in force, spreading from the origin "
               "outwards. Good: over 90 % indexed."));
    auto* pGrid = new QGridLayout(pGroupIndexing);
    pGrid->addWidget(new QLabel(tr("Index Threshold"), pGroupIndexing), 0, 0);
    pGrid->addWidget(m_pSpinIndexThreshold, 0, 1);
    pGrid->addWidget(m_pCheckOutputIndexing, 1, 0, 1, 2);
    pGrid->addWidget(m_pCheckOutputStatistics, 2, 0, 1, 2);
    pGrid->addWidget(m_pCheckOutputRefinedCell, 3, 0, 1, 2);
    pGrid->addWidget(m_pButtonIndexMergedPeaks, 4, 0, 1, 2);
    pGrid->setColumnStretch(1, 1);
    return pGroupIndexing;
}

void CellPage::showManual(bool bManual)
{
    for (QWidget* pWidget :
         {m_pMethod, static_cast<QWidget*>(m_pGroupCellRange), static_cast<QWidget*>(m_pButtonSearchCell),
          static_cast<QWidget*>(m_pButtonKnownCell)}) {
        pWidget->setVisible(!bManual);
    }
    m_pGroupAssignViewingDirection->setVisible(bManual);
}

void CellPage::showAutoRange(bool bAuto)
{
    if (bAuto) {
        m_dfOwnRangeMin = m_pSpinCellRangeMin->value();
        m_dfOwnRangeMax = m_pSpinCellRangeMax->value();
    } else {
        m_pSpinCellRangeMin->setValue(m_dfOwnRangeMin);
        m_pSpinCellRangeMax->setValue(m_dfOwnRangeMax);
    }
    m_pSpinCellRangeMin->setEnabled(!bAuto);
    m_pSpinCellRangeMax->setEnabled(!bAuto);
}

/// The axes have the colours of the lattice in the 3D views.
void CellPage::colorAxes()
{
    QPushButton* const apButton[] = {m_pButtonAssignRA, m_pButtonAssignRB, m_pButtonAssignRC};
    for (int i = 0; i < 3; ++i) {
        apButton[i]->setStyleSheet(QStringLiteral("color: %1").arg(axisColor(i, palette())));
    }
    showMatrixLabels();
}

void CellPage::changeEvent(QEvent* pEvent)
{
    QWidget::changeEvent(pEvent);
    if (pEvent->type() == QEvent::PaletteChange) {
        colorAxes();
    }
}

void CellPage::updateCellTransformMatrixLabels()
{
    showMatrixLabels();
    m_pButtonTest->setChecked(false);  // the test that is shown was made in the other space
}

void CellPage::showMatrixLabels()
{
    const bool bReal = m_pRadioSpaceReal->isChecked();
    for (int i = 0; i < 3; ++i) {
        const QString strAxis(QChar('a' + i));
        if (bReal) {
            m_apLabelColumn[i]->setText(QStringLiteral("<b>%1</b>").arg(strAxis));
            m_apLabelRow[i]->setText(QStringLiteral("<b>%1'</b> =").arg(strAxis));
            continue;
        }
        const QString strColor = axisColor(i, palette());
        m_apLabelColumn[i]->setText(
            QStringLiteral("<b><span style=\"color:%1\">%2*</span></b>").arg(strColor, strAxis));
        m_apLabelRow[i]->setText(
            QStringLiteral("<b><span style=\"color:%1\">%2*'</span></b>=").arg(strColor, strAxis));
    }
}

}  // namespace tessera
