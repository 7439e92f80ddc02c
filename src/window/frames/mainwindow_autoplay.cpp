// MainWindow: the auto play of the frames.
#include "window/mainwindow.h"

#include "window/pages/framespage.h"

#include <QCheckBox>
#include <QSpinBox>

namespace tessera {

void MainWindow::playImageForward()
{
    m_timerPlay.stop();
    if (m_dataSet.m_listFrameFile.isEmpty() || refuseDuringRun(tr("Playing the frames"))) {
        return;
    }
    m_nPlayDirection = 1;
    m_timerPlay.start(m_pFramesPage->m_pPlayDelaySpin->value());
}

void MainWindow::playImageBackward()
{
    m_timerPlay.stop();
    if (m_dataSet.m_listFrameFile.isEmpty() || refuseDuringRun(tr("Playing the frames"))) {
        return;
    }
    m_nPlayDirection = -1;
    m_timerPlay.start(m_pFramesPage->m_pPlayDelaySpin->value());
}

void MainWindow::stopImagePlay()
{
    m_timerPlay.stop();
    m_nPlayDirection = 0;
}

void MainWindow::playOneImage()
{
    if (isPumping()) {  // a run shows its own frames
        stopImagePlay();
        return;
    }
    if (m_nPlayDirection == 0) {
        return;
    }
    const int nNext = m_pFrameSpin->value() + m_nPlayDirection;
    if (nNext < m_pFrameSpin->minimum() || nNext > m_pFrameSpin->maximum()) {
        m_pFramesPage->m_pPlayLoopCheck->isChecked() ? playFromOtherEnd() : stopImagePlay();
    } else {
        m_pFrameSpin->setValue(nNext);
    }
}

void MainWindow::playFromOtherEnd()
{
    if (m_pFrameSpin->minimum() == m_pFrameSpin->maximum()) {
        stopImagePlay();  // one frame does not move
    } else {
        m_pFrameSpin->setValue(m_nPlayDirection > 0 ? m_pFrameSpin->minimum() : m_pFrameSpin->maximum());
    }
}

void MainWindow::imagePlayIntervalChanged(int nNewInterval)
{
    m_timerPlay.setInterval(nNewInterval);
}

}  // namespace tessera
