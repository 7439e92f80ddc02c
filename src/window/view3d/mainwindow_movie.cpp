// MainWindow: pictures of the 3D view all the way round, for a movie.
#include "window/mainwindow.h"

#include "frames/frametargets.h"
#include "frames/somenames.h"
#include "records/progress.h"
#include "records/timestamp.h"
#include "records/wholefile.h"
#include "view3d/ed3dwidget.h"
#include "window/pages/view3dpage.h"
#include "window/windowreport.h"

#include <QBuffer>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>

namespace tessera {

namespace {

const double g_dfMostPictures = 100000;  // a step too small to be meant

bool savePicture(const QImage& image, const QString& strFile, QString& strReason)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") && writeWholeFile(strFile, bytes, &strReason);
}

// NAME0000.png, NAME0001.png and so on, beside the file that was asked for.
QStringList pictureNames(const QString& strFile, int nPictures)
{
    const QString strStem = QFileInfo(strFile).absolutePath() + QLatin1Char('/') +
                            QFileInfo(strFile).baseName();
    QStringList listName;
    for (int i = 0; i < nPictures; ++i) {
        listName.append(strStem + QStringLiteral("%1.png").arg(i, 4, 10, QLatin1Char('0')));
    }
    return listName;
}

}  // namespace

void MainWindow::grab3DMovieFrames()
{
    if (refuseDuringRun(tr("Exporting pictures for a movie"))) {
        return;
    }
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export Image Files"), m_strWorkingDir,
                                                         tr("Image Files (*.png);;All Files (*.*)"));
    if (strFile.isEmpty()) {
        return;
    }
    bool bOk = false;
    const double dfStep = m_locale.toDouble(m_pView3DPage->m_pComboRotationStep->currentText().trimmed(),
                                            &bOk);
    if (!bOk) {
        WindowReport(*this).addMessage(QStringLiteral("Unknown numberic format."), Severity::Error);
        return;
    }
    if (!(dfStep > 360 / g_dfMostPictures)) {
        WindowReport(*this).addMessage(tr("The rotation step of a movie must be above 0.0036°."),
                                       Severity::Error);
        return;
    }
    if (!m_pView3DCurrent) {
        return;
    }
    const QStringList listName = pictureNames(strFile, int(360 / dfStep));
    const QString strFrame = frameAmongTargets(listName, m_dataSet.allFiles());
    if (!strFrame.isEmpty()) {
        WindowReport(*this).addMessage(
            tr("%1 is a frame of this series and would be overwritten. Nothing was exported.").arg(strFrame),
            Severity::Error);
        return;
    }
    runExport([&](CRunReport& report) { writeMovie(listName, dfStep, report); });
}

/// Writes a picture of the current 3D view under each name, and turns the view by a step, degrees, after
/// each.
void MainWindow::writeMovie(const QStringList& listName, double dfStep, CRunReport& report)
{
    const QPointer<ED3DWidget> pView = m_pView3DCurrent;
    const int nPictures = listName.size();
    QStringList listFailed;
    CProgress progress(report, QStringLiteral("%v/%m"), 0, nPictures, ProgressPlace::TaskBarToo);
    for (int i = 0; i < nPictures && pView; ++i) {
        progress.set(i + 1);
        if (!report.goOn()) {  // the view repaints meanwhile
            report.addMessage(tr("%1>The movie was stopped after %2 of %3 pictures.")
                                  .arg(currentTimeStamp())
                                  .arg(i)
                                  .arg(nPictures),
                              Severity::Error);
            break;
        }
        const QImage image = pView->grabFrameBuffer();
        QString strReason;
        if (image.isNull()) {
            report.addMessage(tr("The 3D view gives no picture."), Severity::Error);
            break;
        }
        if (!savePicture(image, listName[i], strReason)) {
            listFailed.append(strReason.isEmpty() ? listName[i] : strReason);
        }
        pView->rotateAroundScreenY(dfStep);
    }
    progress.end();
    if (!listFailed.isEmpty()) {
        report.addMessage(
            tr("%1 of %2 pictures could not be written: %3")
                .arg(QString::number(listFailed.size()), QString::number(nPictures), someNames(listFailed)),
            Severity::Error);
    }
    report.goOn();
}

}  // namespace tessera
