// MainWindow: the tool box and the other docks.
#include "frameview/textdatawidget.h"
#include "window/crystal/geometrycontrol.h"
#include "window/crystal/latticesdialog.h"
#include "window/frames/curveplot.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/pages/cellpage.h"
#include "window/pages/controltips.h"
#include "window/pages/extractionpage.h"
#include "window/pages/framespage.h"
#include "window/pages/integrationpage.h"
#include "window/pages/mergingpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/refinementpage.h"
#include "window/pages/shiftpage.h"
#include "window/pages/view3dpage.h"
#include "window/pages/wheelguard.h"
#include "window/windowactions.h"

#include <QDockWidget>
#include <QIcon>
#include <QStyle>
#include <QToolBox>

namespace tessera {

namespace {

QIcon imageIcon(const char* pchName)
{
    return QIcon(QStringLiteral(":/images/%1.png").arg(QLatin1String(pchName)));
}

}  // namespace

void MainWindow::createControlDock()
{
    m_pToolBox = new QToolBox(this);
    m_pFramesPage = new FramesPage(m_pToolBox);
    m_pShiftPage = new ShiftPage(m_pActions->m_listSelection, m_pToolBox);
    m_pPeakSearchPage = new PeakSearchPage(m_pToolBox);
    m_pMergingPage = new MergingPage(m_pToolBox);
    m_pCellPage = new CellPage(m_pToolBox);
    m_pRefinementPage = new RefinementPage(m_pToolBox);
    m_pView3DPage = new View3DPage(m_pToolBox);
    auto* pIntegrationPage = new IntegrationPage(m_pToolBox);

    // Entry 5 of the names is a group that is in a window of its own instead of on a page.
    m_pExtractionPage = new ExtractionPage(this);
    m_pExtractionPage->setWindowTitle(m_mapPageName[5]);
    m_pLatticesDialog = new LatticesDialog(this);
    m_pLatticesDialog->setWindowTitle(tr("Lattices"));
    m_pGeometry = new GeometryControl(*this);
    m_pLatticeLook = std::make_unique<LatticeLook>();
    const struct {
        QWidget* pPage;
        int nName;
    } aPage[] = {{m_pFramesPage, 0}, {m_pShiftPage, 1},      {m_pPeakSearchPage, 2}, {m_pMergingPage, 3},
                 {m_pCellPage, 4},   {m_pRefinementPage, 6}, {m_pView3DPage, 7},     {pIntegrationPage, 8}};
    // The tool box puts each page into a scroll area, so that pages taller than the window can be scrolled.
    int nWidth = m_pFramesPage->sizeHint().width();
    for (const auto& page : aPage) {
        m_pToolBox->addItem(page.pPage, imageIcon("arrowright4"), m_mapPageName[page.nName]);
        nWidth = qMax(nWidth, page.pPage->minimumSizeHint().width());
        new WheelGuard(page.pPage);
    }
    m_pToolBox->setMinimumWidth(nWidth + style()->pixelMetric(QStyle::PM_ScrollBarExtent) +
                                2 * m_pToolBox->frameWidth());
    toolBoxPageChanged(0);
    connect(m_pToolBox, &QToolBox::currentChanged, this, &MainWindow::toolBoxPageChanged);
    addDock(m_pToolBox, QStringLiteral("Control"), Qt::LeftDockWidgetArea, imageIcon("icon_gear3"),
            QStringLiteral("Ctrl+N"));
}

void MainWindow::toolBoxPageChanged(int nIndex)
{
    QList<QWidget*> listHeader;
    for (QWidget* pChild : m_pToolBox->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (pChild->inherits("QToolBoxButton")) {
            listHeader.append(pChild);
        }
    }
    const auto mark = [&](int nPage, const char* pchIcon, int nWeight) {
        if (nPage < 0 || nPage >= m_pToolBox->count()) {
            return;
        }
        m_pToolBox->setItemIcon(nPage, imageIcon(pchIcon));
        if (nPage < listHeader.size()) {
            QFont fontHeader = listHeader[nPage]->font();
            fontHeader.setWeight(nWeight);
            listHeader[nPage]->setFont(fontHeader);
        }
    };
    mark(m_nToolBoxPage, "arrowright4", QFont::Normal);
    mark(nIndex, "arrowdown4", QFont::Bold);
    m_nToolBoxPage = nIndex;
}

void MainWindow::createOtherDocks()
{
    m_pMessageEdit = new MessageEdit(this);
    explainArea(m_pMessageEdit, tr("The log of all runs: blue for start and end, red for what went wrong."));
    addDock(m_pMessageEdit, QStringLiteral("Messages"), Qt::BottomDockWidgetArea, imageIcon("messages"),
            QStringLiteral("Ctrl+M"));

    createCurvePlot();
    explainArea(m_pCurvePlot,
                tr("Intensity of the reflection that is chosen in the peak table, through the frames. Good: "
                   "one hump that falls to nothing at both ends."));
    QDockWidget* pIntensity = addDock(m_pCurvePlot, QStringLiteral("Intensity"), Qt::BottomDockWidgetArea,
                                      imageIcon("ampphaxp"), QStringLiteral("Ctrl+P"));
    m_pActions->watch(pIntensity->toggleViewAction());  // shares its key with the about box

    m_pTextData = new TextDataWidget(this);
    m_pTextData->setAcceptDrops(false);
    m_pTextData->viewport()->setAcceptDrops(false);
    explainArea(m_pTextData,
                tr("Pixel values around the pointer while the right button is held on a frame."));
    addDock(m_pTextData, QStringLiteral("Text Data"), Qt::BottomDockWidgetArea, imageIcon("textdata"),
            QStringLiteral("Ctrl+T"));
}

QDockWidget* MainWindow::addDock(QWidget* pContent, const QString& strTitle, Qt::DockWidgetArea area,
                                 const QIcon& icon, const QString& strKey)
{
    auto* pDock = new QDockWidget(strTitle, this);
    pDock->setObjectName(strTitle);  // by which a saved state finds it
    pDock->setAllowedAreas(Qt::AllDockWidgetAreas);
    pDock->setWidget(pContent);
    pDock->toggleViewAction()->setIcon(icon);
    explain(pDock->toggleViewAction(), tr("Shows or hides \"%1\".").arg(strTitle));
    pDock->toggleViewAction()->setShortcut(QKeySequence(strKey));
    addDockWidget(area, pDock);
    m_listDock.append(pDock);
    return pDock;
}

}  // namespace tessera
