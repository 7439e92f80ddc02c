// MainWindow: exports for other programs.
#include "road/exchangekinds.h"
#include "window/alivedata.h"
#include "window/crystal/geometrycontrol.h"
#include "window/frames/exchangedialog.h"
#include "window/integration/integrationcontroller.h"
#include "window/mainwindow.h"
#include "window/windowreport.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

namespace tessera {

namespace {

QString missingFor(ExportKind kind, const DataSet& dataSet, bool bIntegrated)
{
    if (dataSet.m_listShift.size() != dataSet.m_listFrameFile.size()) {
        return ExchangeDialog::tr("The shifts are not known: run the shift evaluation first.");
    }
    if (kind == ExportKind::Dials && (!cellInForce(dataSet) || !holdsIndicesOfCell(dataSet))) {
        return ExchangeDialog::tr("No peaks are indexed with the cell in force: index first.");
    }
    if (kind == ExportKind::DynamicCif && !bIntegrated) {
        return ExchangeDialog::tr("Nothing is integrated yet.");
    }
    return {};
}

}  // namespace

void MainWindow::exportForOtherPrograms()
{
    if (refuseDuringRun(tr("Exporting for other programs"))) {
        return;
    }
    stopImagePlay();
    syncParametersWithControls(true);
    const auto fnExport = [this](ExportKind kind, const QString& strFolder, const bool& bGoOn) {
        CRunScope scope(*this, FrameAfterRun::Reload);
        WindowReport report(*this, &bGoOn);
        bool bDone = false;
        guarded([&] {
            FoundOfSeries found;
            found.pGeometry = m_pGeometry->refinement();
            found.pIntegration = m_pIntegration->result();
            found.strFolder = QFileInfo(strFolder).absoluteFilePath();
            if (!QDir().mkpath(found.strFolder)) {
                report.fail(tr("%1: the folder cannot be made.").arg(found.strFolder));
                return;
            }
            const MappingParameters mapping = m_mapping;
            computeAlive(report, [&](CAliveData& alive) {
                bDone = writeForOtherProgram(kind, alive.dataSet(), mapping, found,
                                             QThread::idealThreadCount(), alive.report());
            });
        });
        if (bDone) {
            return QString();
        }
        return report.reason().isEmpty() ? tr("not finished.") : report.reason();
    };
    const bool bIntegrated = m_pIntegration->result() != nullptr;
    ExchangeDialog dialog(
        fnExport, m_dataSet.m_strProjectDir,
        [&](ExportKind kind) { return missingFor(kind, m_dataSet, bIntegrated); }, this);
    dialog.exec();
}

}  // namespace tessera
