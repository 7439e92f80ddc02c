// MainWindow: indexing of the merged reflections, and lists of reflections that are loaded for a look.
#include "window/mainwindow.h"

#include "crystal/hkl3d.h"
#include "reciprocal/indexing.h"
#include "view3d/ed3dwidget.h"
#include "view3d/quietview.h"
#include "window/alivedata.h"
#include "window/guards.h"
#include "window/pages/cellpage.h"
#include "window/pages/view3dpage.h"
#include "window/windowreport.h"

#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QPushButton>

namespace tessera {

void MainWindow::runIndexing()
{
    if (refuseDuringRun(tr("Indexing"))) {
        return;
    }
    syncParametersWithControls(true);
    QList<Peak3D> listSelection;
    // Without a cell the run says so before anything is chosen.
    if (cellInForce(m_dataSet) && !selectReflectionsForProcessing(listSelection)) {
        return;
    }
    CRunScope scope(*this);
    WindowReport report(*this);
    const CWaitCursor wait;
    const CDisabledWidget disabled(m_pCellPage->m_pButtonIndexMergedPeaks);
    const IndexingParameters indexing = m_indexing;
    guarded([&] {
        computeAlive(report, [&](CAliveData& alive) {
            tessera::runIndexing(
                alive.dataSet(), listSelection, indexing, alive.report(),
                [&](const IndexingResult& result) { alive.show([&] { showIndexing(result); }); });
        });
    });
}

void MainWindow::showIndexing(const IndexingResult& result)
{
    m_pView3DMerged->setIndices(result.listSelection);
    const struct {
        QString strLabel;
        const QList<int>& listId;
        Qt::GlobalColor color;
    } aGroup[] = {{QStringLiteral("Duplicated"), result.listDuplicatedID, Qt::green},
                  {QStringLiteral("Unindexed"), result.listUnindexedID, Qt::red},
                  {QStringLiteral("On edge"), result.listOnEdgeID, Qt::magenta}};
    for (const auto& group : aGroup) {
        if (!group.listId.isEmpty()) {
            m_pView3DMerged->insertPointGroupById(m_pView3DMerged->groupLabels().size(), group.strLabel,
                                                  group.listId, group.color);
        }
    }
    update3DViewControls();
    updatePeakTable(result.listIndexed);
    showPeakText();
    showEstimatedPeakPosition();
}

void MainWindow::showInMergedView(const QList<Peak3D>& listPeak, const QList<int>& listStreak)
{
    const bool bColors = m_colorsMerged.isShown() || m_colorsRaw.isShown();
    m_colorsMerged.forget();  // groups of the reflections that go
    const QuietView quiet(*m_pView3DMerged);
    m_pView3DMerged->setPointSizeRatio(m_pView3DPage->m_pSpinPointSize->value());
    m_pView3DMerged->setPoints(listPeak);
    if (!listStreak.isEmpty()) {
        m_pView3DMerged->insertPointGroup(1, QStringLiteral("Streaks"), listStreak, Qt::cyan);
    }
    float afRotation[16];
    float fPanX = 0, fPanY = 0, fZoom = 0;
    m_pView3DRaw->getCamera(afRotation, fPanX, fPanY, fZoom);
    m_pView3DMerged->setCamera(afRotation, fPanX, fPanY, fZoom);
    if (bColors) {
        applyLatticeColors();
    }
}

bool MainWindow::loadShelxFile()
{
    if (refuseDuringRun(tr("Loading reflections"))) {
        return false;
    }
    QString strFile;
    if (cellInForce(m_dataSet)) {  // without a cell the reader says so
        syncParametersWithControls(true);
        strFile = QFileDialog::getOpenFileName(this, tr("Load an HKL file"), m_strWorkingDir,
                                               tr("HKL File (*.hkl);;All Files (*.*)"));
        if (strFile.isEmpty()) {
            return false;
        }
    }
    WindowReport report(*this);
    QList<Peak3D> listPeak;
    bool bShown = false;
    bool bLoaded = false;
    guarded([&] {
        bLoaded = tessera::loadShelxFile(strFile, cellInForce(m_dataSet), listPeak, report, &bShown);
        if (bShown) {
            showReflectionList(listPeak);
        }
    });
    return bLoaded;
}

void MainWindow::showReflectionList(const QList<Peak3D>& listPeak)
{
    m_dataSet.m_listPeakMerged = listPeak;
    m_dataSet.m_listPeakMergedShown = listPeak;
    // The chains belong to the former reflections, whose numbers the new ones have now.
    m_dataSet.m_listPeakChain.clear();
    showInMergedView(listPeak, {});
    updatePeakTable(listPeak);
}

}  // namespace tessera
