// MainWindow: the whole of reciprocal space as a volume.
#include "window/mainwindow.h"

#include "reciprocal/volumeexport.h"
#include "window/alivedata.h"
#include "window/pages/framespage.h"
#include "window/windowreport.h"

#include <QDoubleSpinBox>
#include <QInputDialog>

namespace tessera {

void MainWindow::export3DReciprocalVolmue()
{
    if (refuseDuringRun(tr("Exporting reciprocal space"))) {
        return;
    }
    if (m_dataSet.m_listFrameFile.size() != m_dataSet.m_listShift.size()) {
        WindowReport(*this).addMessage(
            QStringLiteral("No shift correction data. Run shift evaluation first."), Severity::Error);
        return;
    }
    VolumeExportParameters parameters;
    bool bOk = false;
    parameters.nEdge = QInputDialog::getInt(this, tr("Volume Dimensions"), tr("Dimension (pixels):"), 500, 10,
                                            2000, 10, &bOk);
    if (!bOk) {
        return;
    }
    const QStringList listType = {tr("Raw"), tr("Scaled")};
    const QString strType = QInputDialog::getItem(this, tr("Data Type Selection"), tr("Output Data Type"),
                                                  listType, 0, false, &bOk);
    if (!bOk || strType.isEmpty()) {
        return;
    }
    parameters.bScaled = strType != listType.first();
    runExport([&](CRunReport& report) {
        parameters.dfContrastMin = m_pFramesPage->m_pContrastMinSpin->value();
        parameters.dfContrastMax = m_pFramesPage->m_pContrastMaxSpin->value();
        computeAlive(report, [&](CAliveData& alive) {
            exportReciprocalVolume(alive.dataSet(), parameters, alive.report());
        });
    });
}

}  // namespace tessera
