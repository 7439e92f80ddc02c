#include "window/pages/view3dpage.h"

#include "cloud/cloudslab.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDoubleValidator>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

#include <initializer_list>

namespace tessera {

namespace {

const int g_nPeaksHeight = 200;  // pixels
const int g_nNarrowButton = 15;  // pixels
const int g_nTransparency = 20;  // per cent, at start
const double g_dfPointSize = 2;  // at start
const int g_nLatticeRange = 1;   // at start
const int g_nLatticeRangeMax = 1000;

/// Takes a number with blanks around it, as the items of the step box have them. Without this the box
/// would refuse to have its own items edited.
class StepValidator : public QDoubleValidator {
public:
    using QDoubleValidator::QDoubleValidator;
    State validate(QString& str, int&) const override
    {
        QString strNumber = str.trimmed();
        int nPos = strNumber.size();
        return QDoubleValidator::validate(strNumber, nPos);
    }
};

/// Shows no zeros behind the decimals that count: "2", "0.5".
class ShortSpin : public QDoubleSpinBox {
public:
    ShortSpin(QWidget* pParent, double dfLow, double dfHigh, double dfStep, double dfStart)
        : QDoubleSpinBox(pParent)
    {
        setAlignment(Qt::AlignRight);
        setDecimals(2);
        setRange(dfLow, dfHigh);
        setSingleStep(dfStep);
        setValue(dfStart);
    }
    QString textFromValue(double df) const override { return locale().toString(df, 'g', 6); }
};

struct NarrowButton {
    QString strText;
    QPushButton*& pButton;
};

/// Makes the buttons, side by side in the first row. A place marker in the tip stands for the button's text.
void addNarrowButtons(QGridLayout* pGrid, QWidget* pParent, const QString& strTip,
                      std::initializer_list<NarrowButton> buttons)
{
    int nColumn = 0;
    for (const NarrowButton& button : buttons) {
        button.pButton = new QPushButton(button.strText, pParent);
        button.pButton->setMinimumWidth(g_nNarrowButton);
        explain(button.pButton, QString(strTip).replace(QStringLiteral("%1"), button.strText));
        pGrid->addWidget(button.pButton, 0, nColumn++);
    }
}

QSpinBox* makeTransparency(QWidget* pParent)
{
    return makeIntSpin(pParent, 0, 100, 5, g_nTransparency, QStringLiteral("%"));
}

}  // namespace

View3DPage::View3DPage(QWidget* pParent) : QWidget(pParent)
{
    auto* pPageLayout = new QVBoxLayout(this);
    pPageLayout->addWidget(makeAppearance());
    pPageLayout->addWidget(makeCanvasGrid());
    pPageLayout->addWidget(makeLattice());
    pPageLayout->addWidget(makePeaks(), 1);
    pPageLayout->addWidget(makeViewAlong());
    pPageLayout->addWidget(makeRotation());
    m_pButtonLoadHKL = new QPushButton(tr("Load HKL..."), this);
    explain(m_pButtonLoadHKL,
            tr("Shows the reflections of an .hkl file in the merged view, in the place of the "
               "merged ones. Needs a cell."));
    pPageLayout->addWidget(m_pButtonLoadHKL);
    pPageLayout->addWidget(makeSlab());
}

QGroupBox* View3DPage::makeAppearance()
{
    auto* pGroup = new QGroupBox(tr("Reflection Appearance"), this);
    m_pSpinPointSize = makeDoubleSpin(pGroup, 0, 1000, 2, 0.1, g_dfPointSize);
    m_pSpinPointTransparency = makeTransparency(pGroup);
    explain(m_pSpinPointSize, tr("Size of the points of the view; stronger reflections have larger ones."));
    explain(m_pSpinPointTransparency,
            tr("Transparency of the points, per cent: more of it shows what lies behind."));
    auto* pGrid = new QGridLayout(pGroup);
    pGrid->addWidget(new QLabel(tr("Size"), pGroup), 0, 0);
    pGrid->addWidget(m_pSpinPointSize, 0, 1);
    pGrid->addWidget(new QLabel(tr("Transparency"), pGroup), 1, 0);
    pGrid->addWidget(m_pSpinPointTransparency, 1, 1);
    pGrid->setColumnStretch(1, 1);
    return pGroup;
}

QGroupBox* View3DPage::makeCanvasGrid()
{
    m_pGroupCanvasGrid = new QGroupBox(tr("Canvas Grid"), this);
    m_pGroupCanvasGrid->setCheckable(true);
    m_pGroupCanvasGrid->setChecked(true);
    m_pSpinCanvasGridTransparency = makeTransparency(m_pGroupCanvasGrid);
    explain(m_pGroupCanvasGrid, tr("Shows a grid in the background."));
    explain(m_pSpinCanvasGridTransparency, tr("Transparency of the grid in the background, per cent."));
    auto* pGrid = new QGridLayout(m_pGroupCanvasGrid);
    pGrid->addWidget(new QLabel(tr("Transparency"), m_pGroupCanvasGrid), 0, 0);
    pGrid->addWidget(m_pSpinCanvasGridTransparency, 0, 1);
    pGrid->setColumnStretch(1, 1);
    return m_pGroupCanvasGrid;
}

QGroupBox* View3DPage::makeLattice()
{
    auto* pGroup = new QGroupBox(tr("Unit Cell Grid"), this);
    m_pCheckLatticePoints = new QCheckBox(tr("Show Points"), pGroup);
    m_pCheckLatticeLines = new QCheckBox(tr("Show Lines"), pGroup);
    explain(m_pCheckLatticePoints, tr("Shows the nodes of the lattice of the cell in force."));
    explain(m_pCheckLatticeLines,
            tr("Shows lines along a* (red), b* (green) and c* (blue) through the nodes."));
    auto* pRange = new QGroupBox(tr("HKL Range"), pGroup);
    auto* pRangeLayout = new QHBoxLayout(pRange);
    const struct {
        QString strLabel;
        QSpinBox*& pSpin;
    } aRange[] = {{tr("H"), m_pSpinLatticeH}, {tr("K"), m_pSpinLatticeK}, {tr("L"), m_pSpinLatticeL}};
    for (const auto& range : aRange) {
        range.pSpin = makeIntSpin(pRange, 0, g_nLatticeRangeMax, 1, g_nLatticeRange);
        explain(range.pSpin,
                tr("Orders %1 of the lattice that are shown on either side of the origin; with 0 in one "
                   "box a plane is left.")
                    .arg(range.strLabel));
        pRangeLayout->addWidget(new QLabel(range.strLabel, pRange));
        pRangeLayout->addWidget(range.pSpin, 1);
    }
    auto* pGrid = new QGridLayout(pGroup);
    pGrid->addWidget(m_pCheckLatticePoints, 0, 0);
    pGrid->addWidget(m_pCheckLatticeLines, 0, 1);
    pGrid->addWidget(pRange, 1, 0, 1, 2);
    return pGroup;
}

QGroupBox* View3DPage::makePeaks()
{
    auto* pGroup = new QGroupBox(tr("Peaks"), this);
    pGroup->setMinimumHeight(g_nPeaksHeight);
    m_pTablePeakGroups = makeGroupTable(pGroup);
    m_pTablePeakGroups->setColumnCount(4);
    m_pTablePeakGroups->setHorizontalHeaderItem(
        2, new QTableWidgetItem(QIcon(QStringLiteral(":/images/bluered.png")), QString()));
    m_pTablePeakGroups->setHorizontalHeaderItem(
        3, new QTableWidgetItem(QIcon(QStringLiteral(":/images/icon_eye.png")), QString()));
    setNarrowColumn(m_pTablePeakGroups, 3);
    m_pTablePeakGroups->setToolTip(tr("Groups of peaks"));
    m_pTablePeakGroups->setEditTriggers(QAbstractItemView::DoubleClicked);
    m_pTablePeakGroups->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_pTablePeakGroups->setContextMenuPolicy(Qt::ActionsContextMenu);

    m_pEditSelectedCount = new QLineEdit(QStringLiteral("%L1").arg(0), pGroup);
    m_pEditSelectedCount->setReadOnly(true);
    m_pEditSelectedCount->setAlignment(Qt::AlignRight);
    m_pButtonAddGroup = new QPushButton(tr("Add"), pGroup);
    m_pButtonAddGroup->setEnabled(false);

    explain(m_pTablePeakGroups,
            tr("The groups of points of the view: a double click on a label renames, a click on "
               "the colour changes it, a click in the last column hides or shows. More by the "
               "right button."));
    explain(m_pEditSelectedCount,
            tr("Number of selected points. Select with the left button and Ctrl held."));
    explain(m_pButtonAddGroup, tr("Makes the selected points a group."));
    auto* pGrid = new QGridLayout(pGroup);
    pGrid->addWidget(m_pTablePeakGroups, 0, 0, 1, 3);
    pGrid->addWidget(new QLabel(tr("No. Selected"), pGroup), 1, 0);
    pGrid->addWidget(m_pEditSelectedCount, 1, 1);
    pGrid->addWidget(m_pButtonAddGroup, 1, 2);
    pGrid->setColumnStretch(1, 1);
    return pGroup;
}

QGroupBox* View3DPage::makeViewAlong()
{
    auto* pGroup = new QGroupBox(tr("View Along"), this);
    auto* pGrid = new QGridLayout(pGroup);
    addNarrowButtons(pGrid, pGroup, tr("Looks along %1 of the cell in force."),
                     {{tr("a*"), m_pButtonAlongRA},
                      {tr("b*"), m_pButtonAlongRB},
                      {tr("c*"), m_pButtonAlongRC},
                      {tr("a"), m_pButtonAlongA},
                      {tr("b"), m_pButtonAlongB},
                      {tr("c"), m_pButtonAlongC}});
    m_pEditZone = new QLineEdit(pGroup);
    m_pEditZone->setPlaceholderText(QStringLiteral("1 1 0"));
    m_pEditZone->setMinimumWidth(60);
    explain(m_pEditZone, tr("A direction [u v w] of the crystal, such as \"1 -1 0\", \"[1-10]\" or \"110\". "
                            "Enter looks along it."));
    const auto addButton = [&](QPushButton*& pButton, const QString& strText, int nRow, int nColumn,
                               const QString& strTip) {
        pButton = new QPushButton(strText, pGroup);
        pButton->setMinimumWidth(g_nNarrowButton);
        explain(pButton, strTip);
        pGrid->addWidget(pButton, nRow, nColumn, 1, 2);
    };
    pGrid->addWidget(m_pEditZone, 1, 0, 1, 2);
    addButton(m_pButtonAlongZone, QStringLiteral("[uvw]"), 1, 2,
              tr("Looks along the direction on the left."));
    addButton(m_pButtonAlongAxis, tr("Axis"), 1, 4, tr("Looks along the rotation axis."));
    addButton(
        m_pButtonNearest, tr("Nearest"), 2, 0,
        tr("Turns to the zone that the view names in its corner, on the shortest way. Key N in the view."));
    addButton(m_pButtonFit, tr("Fit"), 2, 2,
              tr("Zooms so that the points shown fill the view. Key F in the view."));
    addButton(m_pButtonReset, tr("Reset"), 2, 4, tr("Resets rotation, shift and zoom. Ctrl+Home."));
    addButton(
        m_pButtonMeasure, tr("Measure"), 3, 0,
        tr("While it is pressed, a left drag from one point to another shows their distance. Key M in the "
           "view; the middle button measures at any time."));
    m_pButtonMeasure->setCheckable(true);
    return pGroup;
}

QGroupBox* View3DPage::makeRotation()
{
    auto* pGroup = new QGroupBox(tr("Rotation Control"), this);
    auto* pGrid = new QGridLayout(pGroup);
    addNarrowButtons(pGrid, pGroup, tr("Turns the view by one step in the direction of the arrow."),
                     {{QStringLiteral("←"), m_pButtonRotateLeft},
                      {QStringLiteral("→"), m_pButtonRotateRight},
                      {QStringLiteral("↑"), m_pButtonRotateUp},
                      {QStringLiteral("↓"), m_pButtonRotateDown},
                      {QStringLiteral("↻"), m_pButtonRotateClockwise},
                      {QStringLiteral("↺"), m_pButtonRotateCounterClockwise}});

    m_pComboRotationStep = new QComboBox(pGroup);
    m_pComboRotationStep->setEditable(true);
    m_pComboRotationStep->setInsertPolicy(QComboBox::NoInsert);
    const QLocale locale = QLocale::system();
    for (double dfStep : {0.1, 0.2, 0.5, 1.0, 2.0, 5.0}) {
        m_pComboRotationStep->addItem(locale.toString(dfStep, 'f', 1));
    }
    for (const char* pszStep : {" 10", " 20", " 30", " 45", " 60", " 90"}) {
        m_pComboRotationStep->addItem(QString::fromLatin1(pszStep));
    }
    m_pComboRotationStep->setCurrentIndex(m_pComboRotationStep->count() - 1);
    m_pComboRotationStep->setValidator(new StepValidator(m_pComboRotationStep));
    explain(m_pComboRotationStep, tr("Angle of one step, degrees. Another one can be typed."));
    pGrid->addWidget(new QLabel(tr("Step(°)"), pGroup), 1, 0, 1, 2);
    pGrid->addWidget(m_pComboRotationStep, 1, 2, 1, 4);
    return pGroup;
}

QGroupBox* View3DPage::makeSlab()
{
    m_pGroupSlab = new QGroupBox(tr("Slab"), this);
    m_pGroupSlab->setCheckable(true);
    m_pGroupSlab->setChecked(false);
    explain(m_pGroupSlab, tr("Shows only the points near one layer of the lattice of the cell in force. The "
                             "others are neither drawn nor selected in the view."));
    m_pComboLayer = new QComboBox(m_pGroupSlab);
    m_pComboLayer->setEditable(true);
    m_pComboLayer->setInsertPolicy(QComboBox::NoInsert);
    m_pComboLayer->addItems({QStringLiteral("h"), QStringLiteral("k"), QStringLiteral("l")});
    m_pComboLayer->setCurrentIndex(2);
    m_pComboLayer->setMinimumContentsLength(4);
    explain(m_pComboLayer, tr("The index that is constant in a layer. A typed direction [u v w], such as "
                              "\"1 -1 0\", gives the layers u h + v k + w l = n."));
    const CloudSlab slab;
    m_pSpinLayer = new ShortSpin(m_pGroupSlab, -999, 999, 1, slab.dfLevel);
    m_pSpinThickness = new ShortSpin(m_pGroupSlab, 0.01, 9, 0.05, slab.dfHalfThickness);
    explain(m_pSpinLayer, tr("Number n of the layer. Page Up and Page Down in the view change it."));
    explain(
        m_pSpinThickness,
        tr("Largest deviation of the index from n, on either side. Below 0.5 the layers do not overlap."));
    m_pSliderLayer = new QSlider(Qt::Horizontal, m_pGroupSlab);
    m_pSliderLayer->setPageStep(1);
    explain(m_pSliderLayer, tr("The layers that the points reach, from the first to the last."));
    auto* pGrid = new QGridLayout(m_pGroupSlab);
    pGrid->addWidget(m_pComboLayer, 0, 0);
    pGrid->addWidget(new QLabel(QStringLiteral("="), m_pGroupSlab), 0, 1);
    pGrid->addWidget(m_pSpinLayer, 0, 2);
    pGrid->addWidget(new QLabel(QStringLiteral("±"), m_pGroupSlab), 0, 3);
    pGrid->addWidget(m_pSpinThickness, 0, 4);
    pGrid->addWidget(m_pSliderLayer, 1, 0, 1, 5);
    for (int nColumn : {0, 2, 4}) {
        pGrid->setColumnStretch(nColumn, 1);
    }
    return m_pGroupSlab;
}

}  // namespace tessera
