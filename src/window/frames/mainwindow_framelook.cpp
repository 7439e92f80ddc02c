// MainWindow: how the frames are looked at - their contrast, all of them in one picture, the whole screen.
#include "window/mainwindow.h"

#include "frames/frameloader.h"
#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "records/timestamp.h"
#include "window/alivedata.h"
#include "window/frames/contrastcontrol.h"
#include "window/frames/seriespicturetitle.h"
#include "window/pages/controltips.h"
#include "window/pages/framespage.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"

#include <QDir>
#include <QMenu>
#include <QSettings>
#include <QShortcut>
#include <QSpinBox>
#include <QThread>

namespace tessera {

void MainWindow::createFrameLook()
{
    ContrastHost host;
    host.fnImage = [this]() -> const CImgObj<float>* {
        return isPumping() || m_dataSet.m_vecFrameImage.empty() ? nullptr
                                                                : m_dataSet.m_vecFrameImage.front().get();
    };
    host.fnRedraw = [this] { refreshImageView(); };
    host.fnSetLogarithmic = [this](bool bOn) { m_pFrameScene->setLogarithmic(bOn); };
    host.fnSettings = [] { return std::unique_ptr<QSettings>(makeSettings()); };
    m_pContrast = new ContrastControl(*m_pFramesPage, host, this);

    m_pSeriesTitle = new SeriesPictureTitle(m_pFrameView);
    connect(m_pSeriesTitle, &SeriesPictureTitle::pictureWanted, this, &MainWindow::showSeriesPicture);
    connect(m_pSeriesTitle, &SeriesPictureTitle::frameWanted, this, [this] {
        if (!m_dataSet.m_listFrameFile.isEmpty()) {
            switchToImgIndex(m_pFrameSpin->value());
        }
    });
    m_pViewMenu->addSeparator();
    m_pViewMenu->addActions(m_pSeriesTitle->actions());

    auto* pFullScreen = new QAction(tr("F&ull Screen"), this);
    pFullScreen->setShortcut(QKeySequence(Qt::Key_F11));
    pFullScreen->setCheckable(true);
    pFullScreen->setStatusTip(tr("Give the window the whole screen, or take it back"));
    explain(pFullScreen, tr("Gives the window the whole screen. F11 again or Escape leaves it."));
    m_pViewMenu->addSeparator();
    m_pViewMenu->addAction(pFullScreen);
    // Escape is taken in full screen only, because it means other things elsewhere.
    auto* pEscape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    pEscape->setEnabled(false);
    connect(pEscape, &QShortcut::activated, pFullScreen, [pFullScreen] { pFullScreen->setChecked(false); });
    connect(pFullScreen, &QAction::toggled, this, [this, pEscape](bool bOn) {
        pEscape->setEnabled(bOn);
        setWindowState(windowState().setFlag(Qt::WindowFullScreen, bOn));
    });
}

void MainWindow::beginSeriesLook()
{
    const QString strProject = projectFile();
    m_pContrast->beginSeries(strProject.isEmpty() ? QString() : QDir::cleanPath(strProject));
}

void MainWindow::setAutoContrast()
{
    if (!m_dataSet.m_vecFrameImage.empty() && m_pContrast->takeFirst(*m_dataSet.m_vecFrameImage.front())) {
        m_bAutoContrastOnLoad = false;  // the limits just set are kept for the series
    }
}

void MainWindow::showSeriesPicture(SeriesPictureKind kind)
{
    const bool bStops = stopsRun();
    if (bStops || refuseDuringRun(tr("A picture of the series")) || !holdsFrames()) {
        m_pSeriesTitle->recheck();
        return;
    }
    std::optional<SeriesPicture> picture;
    const bool bBegun = runOnFrames(nullptr, [&](CRunReport& report) {
        computeAlive(report, [&](CAliveData& alive) {
            picture =
                makeSeriesPicture(alive.dataSet(), kind, alive.report(), QThread::idealThreadCount()).made;
        });
        if (picture) {
            report.addMessage(tr("%1>%2.").arg(currentTimeStamp(), seriesPictureText(*picture)));
        } else {
            report.addMessage(tr("%1>The picture of the series did not finish.").arg(currentTimeStamp()),
                              Severity::Error);
        }
    });
    if (!bBegun || !picture) {
        m_pSeriesTitle->recheck();
        return;
    }
    m_pTabWidget->setCurrentIndex(0);
    guarded([&] {
        auto pImage = std::make_unique<CImgObj<float>>(std::move(picture->image));
        clearFrameMarks();
        releaseFrameImages(m_dataSet.m_vecFrameImage);
        m_dataSet.m_vecFrameImage.push_back(std::move(pImage));
        m_pContrast->beginOther(*m_dataSet.m_vecFrameImage.front());
        m_pSeriesTitle->begin(*picture);
        refreshImageView();
    });
}

void MainWindow::leaveSeriesPicture()
{
    m_pSeriesTitle->end();
    m_pContrast->endOther();
}

}  // namespace tessera
