// MainWindow: the 3D view in the current tab and the page that steers it.
#include "window/mainwindow.h"

#include "crystal/cellarithmetic.h"
#include "view3d/ed3dwidget.h"
#include "window/pages/controltips.h"
#include "window/pages/view3dpage.h"
#include "window/tabwidget.h"
#include "window/view3d/view3dcontrol.h"
#include "window/windowactions.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>

#include <list>

namespace tessera {

namespace {

// Per cent of transparency; the thousandth keeps single precision from taking one off.
int transparency(float fAlpha)
{
    return int((1 - double(fAlpha) + 0.001) * 100);
}

float alphaOf(int nTransparency)
{
    return float((100 - nTransparency) / 100.0);
}

}  // namespace

void MainWindow::create3DView(ED3DWidget*& pView, const QString& strTab)
{
    pView = new ED3DWidget(m_pTabWidget);
    explainArea(
        pView,
        tr("Reciprocal space. Left drag turns, with Shift it moves, right drag or wheel zooms, with Ctrl it "
           "selects points."));
    connect(pView, &ED3DWidget::textMessage, this, &MainWindow::statusBarMessage);
    connect(pView, &ED3DWidget::contextFailed, this, [this](const QString& strMessage) {
        for (ED3DWidget* pEach : views3D()) {  // both views lack the same OpenGL, so one message is enough
            disconnect(pEach, &ED3DWidget::contextFailed, this, nullptr);
        }
        WindowReport(*this).addMessage(strMessage, Severity::Error);
    });
    m_pTabWidget->addTab(pView, strTab);
}

/// The buttons of the page and the menu of its table; its other controls belong to connectPanelSignals().
void MainWindow::connect3DPage()
{
    const View3DPage& page = *m_pView3DPage;
    const auto onClick = [this](QPushButton* pButton, void (MainWindow::*pSlot)()) {
        connect(pButton, &QPushButton::clicked, this, pSlot);
    };
    onClick(page.m_pButtonAddGroup, &MainWindow::addSelectedAsNewGroup);
    onClick(page.m_pButtonAlongRA, &MainWindow::rotateAlongRA);
    onClick(page.m_pButtonAlongRB, &MainWindow::rotateAlongRB);
    onClick(page.m_pButtonAlongRC, &MainWindow::rotateAlongRC);
    onClick(page.m_pButtonAlongA, &MainWindow::rotateAlongA);
    onClick(page.m_pButtonAlongB, &MainWindow::rotateAlongB);
    onClick(page.m_pButtonAlongC, &MainWindow::rotateAlongC);
    onClick(page.m_pButtonRotateLeft, &MainWindow::rotate3DViewLeft);
    onClick(page.m_pButtonRotateRight, &MainWindow::rotate3DViewRight);
    onClick(page.m_pButtonRotateUp, &MainWindow::rotate3DViewUp);
    onClick(page.m_pButtonRotateDown, &MainWindow::rotate3DViewDown);
    onClick(page.m_pButtonRotateClockwise, &MainWindow::rotate3DViewClockwise);
    onClick(page.m_pButtonRotateCounterClockwise, &MainWindow::rotate3DViewCounterClockwise);
    connect(page.m_pButtonLoadHKL, &QPushButton::clicked, this, [this] { loadShelxFile(); });
    page.m_pTablePeakGroups->addActions({m_pActions->m_pGroupReset, m_pActions->m_pGroupMerge,
                                         m_pActions->m_pGroupResetAll, m_pActions->m_pGroupExport});
    page.m_pTablePeakGroups->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void MainWindow::create3DControl()
{
    View3DHost host;
    host.pPage = m_pView3DPage;
    host.listView = views3D();
    host.fnCurrent = [this] { return qobject_cast<ED3DWidget*>(m_pTabWidget->currentWidget()); };
    host.fnSay = [this](const QString& strText) { statusBarMessage(strText); };
    host.fnComplain = [this](const QString& strText) {
        WindowReport(*this).addMessage(strText, Severity::Error);
    };
    m_pView3DControl = new View3DControl(host, this);
    connect(m_pTabWidget, &TabWidget::currentChanged, m_pView3DControl, &View3DControl::refresh);
    m_pViewMenu->addSeparator();
    m_pViewMenu->addMenu(m_pView3DControl->makeMenu(m_pViewMenu));
}

/// Brings the page into line with the view that it acts on.
void MainWindow::update3DViewControls()
{
    if (!m_pView3DCurrent) {
        return;
    }
    const View3DPage& page = *m_pView3DPage;
    int anRange[3];
    m_pView3DCurrent->getLatticeRange(anRange[0], anRange[1], anRange[2]);
    {
        std::list<QSignalBlocker> listBlocker;
        for (QWidget* pControl : std::initializer_list<QWidget*>{
                 page.m_pSpinPointSize, page.m_pSpinPointTransparency, page.m_pGroupCanvasGrid,
                 page.m_pSpinCanvasGridTransparency, page.m_pCheckLatticePoints, page.m_pCheckLatticeLines,
                 page.m_pSpinLatticeH, page.m_pSpinLatticeK, page.m_pSpinLatticeL}) {
            listBlocker.emplace_back(pControl);
        }
        page.m_pSpinPointSize->setValue(m_pView3DCurrent->pointSizeRatio());
        page.m_pSpinPointTransparency->setValue(transparency(m_pView3DCurrent->pointAlpha()));
        page.m_pGroupCanvasGrid->setChecked(m_pView3DCurrent->showCanvasGrid());
        page.m_pSpinCanvasGridTransparency->setValue(transparency(m_pView3DCurrent->canvasGridAlpha()));
        page.m_pCheckLatticePoints->setChecked(m_pView3DCurrent->showLatticePoints());
        page.m_pCheckLatticeLines->setChecked(m_pView3DCurrent->showLatticeLines());
        page.m_pSpinLatticeH->setValue(anRange[0]);
        page.m_pSpinLatticeK->setValue(anRange[1]);
        page.m_pSpinLatticeL->setValue(anRange[2]);
    }
    buildGroupTable(page.m_pTablePeakGroups, m_pView3DCurrent, true);
    const int nSelected = m_pView3DCurrent->selectedPoints().size();
    page.m_pEditSelectedCount->setText(QStringLiteral("%L1").arg(nSelected));
    // A button that is disabled gives the keyboard to the next control and scrolls the page there. The view
    // takes it instead, where the next selection is made.
    if (nSelected == 0 && page.window()->focusWidget() == page.m_pButtonAddGroup) {
        m_pView3DCurrent->setFocus();
    }
    page.m_pButtonAddGroup->setEnabled(nSelected >= 1);
}

void MainWindow::pointSize3DChanged(double dfNewSize)
{
    if (m_pView3DCurrent) {
        m_pView3DCurrent->setPointSizeRatio(dfNewSize);
    }
}

void MainWindow::pointAlpha3DChanged(int nTransparency)
{
    if (m_pView3DCurrent) {
        m_pView3DCurrent->setPointAlpha(alphaOf(nTransparency));
    }
}

void MainWindow::canvasGridTransparencyChanged(int nTransparency)
{
    if (!m_pView3DCurrent) {
        return;
    }
    m_pView3DCurrent->setCanvasGridAlpha(alphaOf(nTransparency));
    m_dfCanvasGridAlpha = (100 - nTransparency) / 100.0;  // what the next start begins with
}

void MainWindow::canvasGridToggled(bool bEnable)
{
    if (m_pView3DCurrent) {
        m_pView3DCurrent->setShowCanvasGrid(bEnable);
    }
}

void MainWindow::unitCellLatticePointsToggled(bool bEnable)
{
    if (m_pView3DCurrent) {
        m_pView3DCurrent->setShowLatticePoints(bEnable);
    }
}

void MainWindow::unitCellLatticeLinesToggled(bool bEnable)
{
    if (m_pView3DCurrent) {
        m_pView3DCurrent->setShowLatticeLines(bEnable);
    }
}

void MainWindow::unitCellLatticeRangeChanged()
{
    if (m_pView3DCurrent) {
        m_pView3DCurrent->setLatticeRange(m_pView3DPage->m_pSpinLatticeH->value(),
                                          m_pView3DPage->m_pSpinLatticeK->value(),
                                          m_pView3DPage->m_pSpinLatticeL->value());
    }
}

/// Turns the view to look along an edge of the cell in force; nVector 0 is a* or a, 1 b* or b, 2 c* or c.
void MainWindow::rotateAlong(CellEdges edges, int nVector)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(m_dataSet);
    if (!m_pView3DCurrent || !basis) {
        return;
    }
    std::array<Vec3D, 3> aVector = basis->vectors();
    if (edges == CellEdges::Direct) {
        const std::optional<DirectBasis> direct = reciprocalToDirectBasis(*basis);
        if (!direct) {
            return;
        }
        aVector = {direct->a, direct->b, direct->c};
    }
    m_pView3DCurrent->viewAlong(aVector[nVector]);
}

void MainWindow::rotateAlongRA()
{
    rotateAlong(CellEdges::Reciprocal, 0);
}

void MainWindow::rotateAlongRB()
{
    rotateAlong(CellEdges::Reciprocal, 1);
}

void MainWindow::rotateAlongRC()
{
    rotateAlong(CellEdges::Reciprocal, 2);
}

void MainWindow::rotateAlongA()
{
    rotateAlong(CellEdges::Direct, 0);
}

void MainWindow::rotateAlongB()
{
    rotateAlong(CellEdges::Direct, 1);
}

void MainWindow::rotateAlongC()
{
    rotateAlong(CellEdges::Direct, 2);
}

/// Degrees of one rotation step; 0 with a red line for a text that is no number.
double MainWindow::rotationStep()
{
    bool bOk = false;
    const double dfStep = m_locale.toDouble(m_pView3DPage->m_pComboRotationStep->currentText().trimmed(),
                                            &bOk);
    if (!bOk) {
        WindowReport(*this).addMessage(QStringLiteral("Unknown numeric format for the rotation step."),
                                       Severity::Error);
    }
    return bOk ? dfStep : 0;
}

/// Turns the view by one step of the page, forwards or back.
void MainWindow::turn3DView(void (ED3DWidget::*pTurn)(double), int nSign)
{
    if (m_pView3DCurrent) {
        (m_pView3DCurrent->*pTurn)(nSign * rotationStep());
    }
}

void MainWindow::rotate3DViewUp()
{
    turn3DView(&ED3DWidget::rotateAroundScreenX, -1);
}

void MainWindow::rotate3DViewDown()
{
    turn3DView(&ED3DWidget::rotateAroundScreenX, 1);
}

void MainWindow::rotate3DViewLeft()
{
    turn3DView(&ED3DWidget::rotateAroundScreenY, -1);
}

void MainWindow::rotate3DViewRight()
{
    turn3DView(&ED3DWidget::rotateAroundScreenY, 1);
}

void MainWindow::rotate3DViewClockwise()
{
    turn3DView(&ED3DWidget::rotateAroundScreenZ, -1);
}

void MainWindow::rotate3DViewCounterClockwise()
{
    turn3DView(&ED3DWidget::rotateAroundScreenZ, 1);
}

}  // namespace tessera
