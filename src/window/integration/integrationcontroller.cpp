#include "window/integration/integrationcontroller.h"

#include "frameview/baseimgview.h"
#include "frameview/discitem.h"
#include "frameview/replacemarks.h"
#include "integration/reflectionflags.h"
#include "window/integration/profilewindow.h"
#include "window/integration/qualityplots.h"
#include "window/integration/qualitytab.h"
#include "window/pages/integrationpage.h"
#include "window/plotpanel.h"
#include "window/reciprocal/peaktableview.h"

#include <QApplication>
#include <QCheckBox>
#include <QMouseEvent>
#include <QPushButton>

#include <algorithm>

namespace tessera {

namespace {

const double g_dfDiscZ = 150;  // above the crosses, below the labels

std::shared_ptr<const CIntegratedPeaks> peaksOf(const IntegrationResult& result)
{
    auto pPeaks = std::make_shared<CIntegratedPeaks>();
    const std::vector<Observation>& listObservation = result.integrated.listObservation;
    for (size_t n = 0; n < listObservation.size(); ++n) {
        const Observation& observation = listObservation[n];
        IntegratedPeak peak;
        peak.dfFrame = observation.dfFrame;
        peak.dfIntensity = observation.corrected();
        peak.dfSigma = observation.correctedSigma();
        peak.strFlags = reflectionFlagNames(observation.nFlags).join(QStringLiteral(", "));
        peak.nObservation = int(n);
        pPeaks->add(observation.anIndex, peak);
    }
    return pPeaks;
}

QStringList namesOf(const SpaceGroupRanking& ranking)
{
    QStringList listName;
    for (const SpaceGroupCandidate& candidate : ranking.listCandidate) {
        listName.append(candidate.strName);
    }
    return listName;
}

}  // namespace

IntegrationController::IntegrationController(const IntegrationHost& host, QObject* pParent)
    : QObject(pParent), m_host(host)
{
    const IntegrationPage* pPage = m_host.pPage;
    connect(pPage->m_pButtonIntegrate, &QPushButton::clicked, this, &IntegrationController::run);
    connect(pPage->m_pButtonExport, &QPushButton::clicked, this, &IntegrationController::exportFiles);
    connect(pPage->m_pCheckPredicted, &QCheckBox::toggled, this,
            [this] { showDiscs(m_host.fnFrameInView()); });
    connect(m_host.pTab, &QualityTab::notSaved, this,
            [this](const QString& strReason) { m_host.fnComplain(strReason); });
    connect(m_host.pTable, &QTableView::clicked, this,
            [this](const QModelIndex& index) { showChosen(index, ClosedWindow::Opens); });
    // The keyboard goes on with the window that a click has opened.
    connect(m_host.pTable->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& index) {
                if (QApplication::mouseButtons() == Qt::NoButton && !m_host.pTable->isBeingSet()) {
                    showChosen(index, ClosedWindow::Stays);
                }
            });
    m_host.pFrameView->viewport()->installEventFilter(this);
}

void IntegrationController::run()
{
    m_host.fnRun(m_host.pPage->m_pButtonIntegrate, [this](CRunReport& report) {
        QString strReason;
        const std::optional<IntensityOptions> options = m_host.pPage->options(&strReason);
        if (!options) {
            report.fail(strReason);
            return;
        }
        auto pResult = std::make_shared<IntegrationResult>();
        if (m_host.fnIntegrate(*options, report, *pResult).finished()) {
            take(pResult);
        }
    });
}

void IntegrationController::exportFiles()
{
    if (!m_pResult) {
        m_host.fnComplain(tr("Nothing is integrated yet."));
        return;
    }
    m_host.fnRun(m_host.pPage->m_pButtonExport, [this](CRunReport& report) {
        QString strReason;
        const std::optional<IntensityOptions> options = m_host.pPage->options(&strReason);
        if (!options || !m_host.fnWrite(*m_pResult, *options, report, &strReason)) {
            report.fail(strReason);
        }
    });
}

void IntegrationController::take(const std::shared_ptr<const IntegrationResult>& pResult)
{
    const bool bFirst = !m_pResult;
    showDiscs(-1);  // those of the former result have its numbers, and can be clicked while events run here
    m_pResult = pResult;
    m_pPeaks = peaksOf(*pResult);
    m_listCell = cellOf(pResult);
    m_host.pPage->showResult(summaryOf(*pResult));
    m_host.pPage->offerSpaceGroups(namesOf(pResult->spaceGroups));
    breathe();
    m_host.pTab->setResult(*pResult, fileStem());
    breathe();
    if (m_pProfile) {
        m_pProfile->clear();
    }
    m_host.pTable->setIntegrated(peaksOfTable());
    breathe();
    if (bFirst) {  // later it is the user who has chosen the columns
        m_host.pTable->checkIntegratedColumns(true);
        breathe();
    }
    showDiscs(m_host.fnFrameInView());
}

QList<Vec3D> IntegrationController::cellOf(const std::shared_ptr<const IntegrationResult>& pResult)
{
    std::vector<CellOfResult>& list = m_listCellOfResult;
    list.erase(std::remove_if(list.begin(), list.end(),
                              [](const CellOfResult& entry) { return entry.pResult.expired(); }),
               list.end());
    const auto it = std::find_if(list.begin(), list.end(),
                                 [&](const CellOfResult& entry) { return entry.pResult.lock() == pResult; });
    if (it != list.end()) {
        return it->listCell;
    }
    list.push_back({pResult, m_host.pData->m_listCell});
    return list.back().listCell;
}

void IntegrationController::putBack(const std::shared_ptr<const IntegrationResult>& pResult)
{
    if (!pResult) {
        if (m_pResult) {
            forget();
        }
    } else if (pResult != m_pResult) {
        take(pResult);
    } else {
        m_host.pTable->setIntegrated(peaksOfTable());  // the table's indices may be others now
    }
}

void IntegrationController::breathe() const
{
    if (m_host.fnBreathe) {
        m_host.fnBreathe();
    }
}

void IntegrationController::forget()
{
    m_pResult.reset();
    m_pPeaks.reset();
    m_host.pPage->showResult({});
    m_host.pPage->offerSpaceGroups({});
    m_host.pTab->clear();
    m_host.pTable->setIntegrated({});
    m_host.pTable->checkIntegratedColumns(false);
    if (m_pProfile) {
        m_pProfile->clear();
    }
    showDiscs(-1);
}

QString IntegrationController::fileStem() const
{
    return fileOfProject(*m_host.pData, QString());
}

std::shared_ptr<const CIntegratedPeaks> IntegrationController::peaksOfTable() const
{
    return m_host.pData->m_listCellIndexed == m_listCell ? m_pPeaks : nullptr;
}

void IntegrationController::showDiscs(int nFrame)
{
    m_listDisc.clear();
    QList<DiscItem*> listItem;
    if (m_pResult && nFrame >= 0 && m_host.pPage->m_pCheckPredicted->isChecked()) {
        m_listDisc = discsOnFrame(*m_pResult, nFrame, QLocale::system());
        const double dfRadius = discRadius(*m_pResult);
        for (const PredictedDisc& disc : m_listDisc) {
            listItem.append(new DiscItem(disc.ptCentre, dfRadius, disc.color, disc.strTip));
            listItem.last()->setZValue(g_dfDiscZ);
        }
    }
    replaceMarks(m_host.pFrameView->scene(), m_listItem, listItem);
}

void IntegrationController::showProfile(int nObservation)
{
    if (!m_pResult || nObservation < 0 || nObservation >= int(m_pResult->integrated.listObservation.size())) {
        return;
    }
    const std::shared_ptr<const IntegrationResult> pResult = m_pResult;
    m_host.fnLook([&](CRunReport& report) {
        const Observation& observation = pResult->integrated.listObservation[nObservation];
        ObservationProfile profile;
        if (!m_host.fnProfile(*pResult, observation, report, profile)) {
            return;  // the report has the reason
        }
        if (!m_pProfile) {
            m_pProfile = new ProfileWindow(m_host.pPage->window());
            connect(m_pProfile->plot(), &PlotPanel::notSaved, this,
                    [this](const QString& strReason) { m_host.fnComplain(strReason); });
        }
        m_pProfile->showProfile(observation, profile, fileStem() + QStringLiteral("_rocking"));
    });
}

void IntegrationController::showProfileOf(const std::array<int, 3>& anIndex, double dfFrame)
{
    const std::shared_ptr<const CIntegratedPeaks> pPeaks = peaksOfTable();
    const IntegratedPeak* pPeak = pPeaks ? pPeaks->nearest(anIndex, dfFrame) : nullptr;
    if (pPeak && m_pProfile && m_pProfile->isVisible()) {
        showProfile(pPeak->nObservation);
    }
}

std::optional<std::array<int, 3>> IntegrationController::indicesOfDiscAt(const QPointF& ptScene) const
{
    const int nObservation = m_pResult ? observationAt(m_listDisc, ptScene, discRadius(*m_pResult)) : -1;
    if (nObservation < 0) {
        return {};
    }
    return m_pResult->integrated.listObservation[nObservation].anIndex;
}

/// Shows the profile of a row of the peak table.
void IntegrationController::showChosen(const QModelIndex& index, ClosedWindow window)
{
    const IntegratedPeak* pPeak = m_pResult ? m_host.pTable->integratedPeak(index) : nullptr;
    if (pPeak && (window == ClosedWindow::Opens || (m_pProfile && m_pProfile->isVisible()))) {
        showProfile(pPeak->nObservation);
    }
}

/// A click on a disc, which must not take the drag from the frame.
bool IntegrationController::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pEvent->type() == QEvent::MouseButtonPress || pEvent->type() == QEvent::MouseButtonRelease) {
        const auto* pMouse = static_cast<const QMouseEvent*>(pEvent);
        if (pMouse->button() != Qt::LeftButton || m_listDisc.empty()) {
            m_ptPressed.reset();
        } else if (pEvent->type() == QEvent::MouseButtonPress) {
            m_ptPressed = pMouse->pos();
        } else if (m_ptPressed &&
                   (pMouse->pos() - *m_ptPressed).manhattanLength() < QApplication::startDragDistance()) {
            const QPointF ptScene = m_host.pFrameView->mapToScene(pMouse->pos());
            m_ptPressed.reset();
            // After the view has had the event.
            const int nObservation = observationAt(m_listDisc, ptScene, discRadius(*m_pResult));
            QMetaObject::invokeMethod(
                this, [this, nObservation] { showProfile(nObservation); }, Qt::QueuedConnection);
        }
    }
    return QObject::eventFilter(pObject, pEvent);
}

}  // namespace tessera
