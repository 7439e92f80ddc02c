// MainWindow: what it shows without a data set, and how it comes back to that.
#include "window/mainwindow.h"

#include "frames/frameloader.h"
#include "frameview/baseimgview.h"
#include "window/messageedit.h"
#include "window/road/roaddock.h"
#include "window/start/startcontroller.h"

#include <QSettings>

namespace tessera {

void MainWindow::createStart()
{
    StartHost host;
    host.fnSettings = [] { return std::unique_ptr<QSettings>(makeSettings()); };
    host.fnOpen = [this] { open(); };
    host.fnNewProject = [this] { newProject(); };
    host.fnOpenFiles = [this](const QStringList& listFile) { openFiles(listFile); };
    host.fnListChanged = [this] { recentListChanged(); };
    host.fnSay = [this](const QString& strText) { m_pMessageEdit->addMessage(strText); };
    host.fnComplain = [this](const QString& strText) { m_pMessageEdit->addMessage(strText, Qt::red); };
    m_pStart = new StartController(std::move(host), m_pFrameView, DemoOptions::ofUser(), this);
}

void MainWindow::closeDataSet()
{
    if (m_dataSet.m_listFrameFile.isEmpty() || refuseDuringRun(tr("Closing the project"))) {
        return;
    }
    stopImagePlay();
    syncParametersWithControls(true);
    CRunScope scope(*this);
    {
        const CQuietPages quiet(*this);
        SeriesData none;
        // The numbers of the instrument stay, as they do when frames are opened without a project.
        none.m_dfWavelength = m_dataSet.m_dfWavelength;
        none.m_dfPixelSize = m_dataSet.m_dfPixelSize / m_dataSet.m_reading.choice.nBin;
        none.m_dfRotationAxis = m_dataSet.m_dfRotationAxis;
        none.m_dfStretchAmplitude = m_dataSet.m_dfStretchAmplitude;
        none.m_dfStretchAzimuth = m_dataSet.m_dfStretchAzimuth;
        m_dataSet.takeSeries(none);
        releaseFrameImages(m_dataSet.m_vecFrameImage);
        m_pRoadWork.reset();
        m_roadRows = CRoadRows();
        m_pRoad->setRows(m_roadRows.rows());
        m_pRoad->setClosingText({});
        showDataSetAnew();
    }
    setWindowFilePath({});
    showFirstFrame();
    showOpenedCell();
}

}  // namespace tessera
