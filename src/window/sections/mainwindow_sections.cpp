// MainWindow: the sections of reciprocal space, which have a controller of their own.
#include "road/sections.h"
#include "window/crystal/geometrycontrol.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/sections/sectionscontroller.h"
#include "window/selection/selectioncontroller.h"
#include "window/windowactions.h"

#include <QAction>
#include <QSettings>
#include <QThread>

namespace tessera {

void MainWindow::createSections()
{
    SectionsHost host;
    host.pData = &m_dataSet;
    host.pParent = this;
    host.fnRun = [this](QPushButton* pButton, const std::function<void(CRunReport&)>& fn) {
        runWithButton(m_bRunning, pButton, fn);
    };
    host.fnMake = [this](const SectionPlane& plane, const SectionOptions& options, CRunReport& report) {
        return findSections(m_dataSet, m_mapping, m_pGeometry->refinement(), {plane}, options,
                            QThread::idealThreadCount(), report);
    };
    host.fnChoose = [this](int nReflection) { m_pSelection->chooseReflection(nReflection); };
    host.fnComplain = [this](const QString& strReason) { m_pMessageEdit->addMessage(strReason, Qt::red); };
    host.fnSettings = [] { return std::unique_ptr<QSettings>(makeSettings()); };
    m_pSections = new SectionsController(host, this);
    connect(m_pActions->m_pSections, &QAction::triggered, m_pSections, &SectionsController::showWindow);
    m_pActions->setReady(m_pActions->m_pSections);
    m_pActions->setInForce(m_pActions->m_pSections, true);
}

}  // namespace tessera
