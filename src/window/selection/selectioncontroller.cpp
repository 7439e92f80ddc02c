#include "window/selection/selectioncontroller.h"

#include "crystal/reflectionindices.h"
#include "view3d/ed3dwidget.h"
#include "window/frames/curveplot.h"
#include "window/frameview/frameguides.h"
#include "window/reciprocal/peaktableview.h"

#include <QItemSelectionModel>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfReach = 8;  // pixels between a click and its spot: of the screen, and as many of the frame

SelectionModel::Way wayOf(Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::ControlModifier) {
        return SelectionModel::Way::Toggle;
    }
    return modifiers & Qt::ShiftModifier ? SelectionModel::Way::Add : SelectionModel::Way::Replace;
}

}  // namespace

SelectionController::SelectionController(const SelectionHost& host, QObject* pParent)
    : QObject(pParent), m_host(host), m_model(this)
{
    for (ED3DWidget* pView : {m_host.pRaw, m_host.pMerged}) {
        connect(pView, &ED3DWidget::pointClicked, this, &SelectionController::choosePoint);
        connect(pView, &ED3DWidget::selectionChanged, this, &SelectionController::chooseBand);
        connect(pView, &ED3DWidget::pointDisplayDataChanged, this, &SelectionController::checkData);
        connect(pView, &ED3DWidget::selectionDropped, this, [this](ED3DWidget* pDropped) {
            if (!m_host.fnBusy()) {
                m_model.clear(pDropped);
            }
        });
    }
    connect(m_host.pFrame, &FrameGuides::clicked, this, &SelectionController::chooseSpot);
    connect(m_host.pTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SelectionController::chooseRows);
    connect(m_host.pCurve, &CurvePlot::frameClicked, this, &SelectionController::chooseOnCurve);
    connect(&m_model, &SelectionModel::changed, this, &SelectionController::show);
    createActions();
}

const CReflectionLinks& SelectionController::links()
{
    if (!m_links.isOf(*m_host.pData)) {
        m_links = CReflectionLinks(*m_host.pData);
    }
    return m_links;
}

void SelectionController::checkData()
{
    if (m_bShowing || m_model.isEmpty() || m_links.isOf(*m_host.pData)) {
        return;
    }
    m_model.clear(nullptr);
    m_links = {};  // which held what has been replaced in memory
}

/// The merged view may show other points, as of a lattice that was calculated.
bool SelectionController::holdsReflections(ED3DWidget* pView) const
{
    const QList<Peak3D>& listPoint = pView->points();
    const QList<Peak3D>& listReflection = m_host.pData->m_listPeakMergedShown;
    const auto isSame = [](const Peak3D& a, const Peak3D& b) {
        return a.nID == b.nID && a.point() == b.point();
    };
    return listPoint.size() == listReflection.size() &&
           (listPoint.isEmpty() || (isSame(listPoint.first(), listReflection.first()) &&
                                    isSame(listPoint.last(), listReflection.last())));
}

CurrentSpot SelectionController::bestSpot(int nReflection)
{
    CurrentSpot spot{nReflection, -1, -1};
    if (const Peak3D* pReflection = links().reflection(nReflection)) {
        spot.nFrame = pReflection->nFrame;
        for (const FrameSpot& each : links().spotsOf(nReflection)) {
            if (each.nFrame == spot.nFrame) {
                spot.nPeak = each.nPeak;
            }
        }
    }
    return spot;
}

void SelectionController::chooseReflection(int nReflection)
{
    if (m_host.fnBusy()) {
        return;
    }
    if (!links().reflection(nReflection)) {
        m_host.fnSay(tr("There is no reflection %L1.").arg(nReflection));
        return;
    }
    m_model.choose({nReflection}, {}, bestSpot(nReflection), SelectionModel::Way::Replace, nullptr);
}

/// The last of the peaks is looked at.
void SelectionController::choosePeaks(const std::vector<int>& vecPeak, SelectionModel::Way way,
                                      const QObject* pSource)
{
    std::vector<int> vecReflection, vecLone;
    for (int nPeak : vecPeak) {
        const int nReflection = links().reflectionOf(nPeak);
        (nReflection >= 0 ? vecReflection : vecLone).push_back(nReflection >= 0 ? nReflection : nPeak);
    }
    CurrentSpot current;
    if (!vecPeak.empty()) {
        const Peak3D* pPeak = links().peak(vecPeak.back());
        current = {links().reflectionOf(vecPeak.back()), vecPeak.back(), pPeak ? pPeak->nFrame : -1};
    }
    m_model.choose(vecReflection, vecLone, current, way, pSource);
}

void SelectionController::choosePoint(ED3DWidget* pView, int nPoint, Qt::KeyboardModifiers modifiers)
{
    if (nPoint < 0 || m_host.fnBusy()) {
        return;
    }
    const int nID = pView->points().at(nPoint).nID;
    const SelectionModel::Way way = wayOf(modifiers);
    if (pView == m_host.pRaw && m_host.fnRawHoldsPeaks()) {
        choosePeaks({nID}, way, nullptr);
    } else if (pView == m_host.pMerged && holdsReflections(pView)) {
        m_model.choose({nID}, {}, bestSpot(nID), way, nullptr);
    }
}

/// The view keeps the points of its band, which may be a part of a reflection's peaks.
void SelectionController::chooseBand(ED3DWidget* pView)
{
    if (m_bShowing || m_host.fnBusy()) {
        return;
    }
    std::vector<int> vecId;
    for (int nPoint : pView->selectedPoints()) {
        vecId.push_back(pView->points().at(nPoint).nID);
    }
    if (pView == m_host.pRaw && m_host.fnRawHoldsPeaks()) {
        choosePeaks(vecId, SelectionModel::Way::Replace, pView);
    } else if (pView == m_host.pMerged && holdsReflections(pView)) {
        m_model.choose(vecId, {}, vecId.empty() ? CurrentSpot() : bestSpot(vecId.back()),
                       SelectionModel::Way::Replace, pView);
    }
}

void SelectionController::chooseSpot(const QPointF& ptRaw, Qt::KeyboardModifiers modifiers)
{
    const int nFrame = m_host.fnFrameInView();
    if (nFrame < 0 || m_host.fnBusy()) {
        return;
    }
    const double dfReach = g_dfReach / std::min(m_host.fnFrameScale(), 1.0);
    const int nPeak = links().peakAt(nFrame, ptRaw, dfReach);
    const auto disc = m_host.fnDiscAt(ptRaw);
    m_bOnDisc = disc.has_value();
    if (nPeak >= 0) {
        choosePeaks({nPeak}, wayOf(modifiers), m_host.pFrame);
        return;
    }
    if (!disc) {
        return;
    }
    const auto [nH, nK, nL] = *disc;
    int nBest = -1, nOff = 0;
    for (const Peak3D& peak : m_host.pData->m_listReflectionIndexed) {
        const bool bSame = roundIndex(peak.dfH) == nH && roundIndex(peak.dfK) == nK &&
                           roundIndex(peak.dfL) == nL && links().holds(peak);
        if (bSame && (nBest < 0 || std::abs(peak.nFrame - nFrame) < nOff)) {
            nBest = peak.nID;
            nOff = std::abs(peak.nFrame - nFrame);
        }
    }
    if (nBest >= 0) {
        m_model.choose({nBest}, {}, bestSpot(nBest), wayOf(modifiers), m_host.pFrame);
    } else {
        m_host.fnSay(tr("(%1, %2, %3) is predicted here, but no merged reflection has these indices.")
                         .arg(nH)
                         .arg(nK)
                         .arg(nL));
    }
}

void SelectionController::chooseRows()
{
    if (m_bShowing || m_host.pTable->isBeingSet() || m_host.fnBusy()) {
        return;
    }
    std::vector<int> vecId;
    for (int nID : m_host.pTable->selectedIds()) {
        if (links().reflection(nID)) {
            vecId.push_back(nID);
        }
    }
    const int nCurrent = m_host.pTable->currentId();
    const bool bCurrent = std::find(vecId.begin(), vecId.end(), nCurrent) != vecId.end();
    CurrentSpot current;
    if (!vecId.empty()) {
        current = bestSpot(bCurrent ? nCurrent : vecId.back());
    }
    m_model.choose(vecId, {}, current, SelectionModel::Way::Replace, m_host.pTable);
}

/// The curve belongs to the current reflection, or to a row that is not a reflection.
void SelectionController::chooseOnCurve(int nFrame)
{
    if (m_host.fnBusy()) {
        return;
    }
    const int nReflection = m_host.pCurve->reflection();
    for (const FrameSpot& spot : links().spotsOf(nReflection)) {
        if (spot.nFrame == nFrame) {
            m_model.choose({nReflection}, {}, {nReflection, spot.nPeak, nFrame}, SelectionModel::Way::Replace,
                           m_host.pCurve);
            return;
        }
    }
}

void SelectionController::ringSpots()
{
    const int nFrame = m_host.fnFrameInView();
    QList<QPointF> listPlace;
    std::optional<QPointF> current;
    if (nFrame >= 0 && !m_model.isEmpty() && m_links.isOf(*m_host.pData)) {
        const auto isChosen = [](const std::vector<int>& vec, int n) {
            return std::binary_search(vec.begin(), vec.end(), n);
        };
        for (int nPeak : m_links.peaksOn(nFrame)) {
            if (isChosen(m_model.reflections(), m_links.reflectionOf(nPeak)) ||
                isChosen(m_model.lonePeaks(), nPeak)) {
                const Peak3D* pPeak = m_links.peak(nPeak);
                listPlace.append({pPeak->dfX2D, pPeak->dfY2D});
            }
        }
        for (const FrameSpot& spot : m_links.spotsOf(m_model.current().nReflection)) {
            if (spot.nFrame == nFrame) {
                current = spot.ptRaw;
            }
        }
        const Peak3D* pLone = m_links.peak(m_model.current().nPeak);
        if (!current && pLone && pLone->nFrame == nFrame) {
            current = QPointF(pLone->dfX2D, pLone->dfY2D);
        }
    }
    m_host.pFrame->overlay().showSpots(listPlace, current);
    if (current && m_bScroll && nFrame == m_model.current().nFrame) {
        m_host.pFrame->scrollTo(*current);
        m_bScroll = false;
    }
}

void SelectionController::showIn3D(const QObject* pSource, QStringList& listHidden)
{
    const CurrentSpot& current = m_model.current();
    const auto showIn = [&](ED3DWidget* pView, const std::vector<int>& vecId, int nRinged,
                            const QString& strName, const QString& strWhy) {
        if (pView != pSource) {
            pView->selectPoints(pView->pointsOfIds(vecId));
        }
        const int nPoint = nRinged >= 0 ? pView->pointsOfIds({nRinged}).value(0, -1) : -1;
        pView->ringPoint(nPoint);
        if (nRinged >= 0 && nPoint < 0) {
            listHidden.append(tr("not in \"%1\": %2").arg(strName, strWhy));
        } else if (nRinged >= 0 && !pView->isPointInShownGroup(nPoint)) {
            listHidden.append(tr("its group is hidden in \"%1\"").arg(strName));
        } else if (nRinged >= 0 && !pView->isPointInSlab(nPoint)) {
            listHidden.append(tr("outside the slab %1 in \"%2\"").arg(slabName(*pView->slab()), strName));
        }
    };
    if (m_host.fnRawHoldsPeaks()) {
        std::vector<int> vecPeak = m_links.peaksOf(m_model.reflections());
        vecPeak.insert(vecPeak.end(), m_model.lonePeaks().begin(), m_model.lonePeaks().end());
        showIn(m_host.pRaw, vecPeak, current.nPeak, tr("3D View Raw"), tr("outside the limits"));
    }
    if (holdsReflections(m_host.pMerged)) {
        showIn(m_host.pMerged, m_model.reflections(), current.nReflection, tr("3D View Merged"),
               tr("not merged"));
    } else if (current.nReflection >= 0) {
        listHidden.append(tr("\"3D View Merged\" shows other points"));
    }
}

void SelectionController::show(const QObject* pSource)
{
    if (m_bShowing) {
        return;
    }
    const QScopedValueRollback<bool> showing(m_bShowing, true);
    QStringList listHidden;
    showIn3D(pSource, listHidden);
    const CurrentSpot current = m_model.current();
    if (m_host.pData->m_listPeakChain.value(current.nReflection).size() > 0) {
        m_host.fnShowCurve(current.nReflection);
        m_host.pCurve->markFrame(current.nFrame);
    } else {
        m_host.pCurve->markFrame(-1);
    }
    if (pSource != m_host.pTable && !m_host.pTable->showIds(m_model.reflections(), current.nReflection) &&
        current.nReflection >= 0) {
        listHidden.append(tr("not among the rows of \"Peak Table\""));
    }
    m_bScroll = pSource != m_host.pFrame;
    if (pSource != m_host.pFrame && current.nFrame >= 0) {
        m_host.fnShowFrame(current.nFrame);
    }
    ringSpots();
    // The text of a rubber band stays in the status bar, unless there is another one.
    const bool bBand = pSource == m_host.pRaw || pSource == m_host.pMerged;
    if (!m_model.isEmpty() && (!bBand || !listHidden.isEmpty())) {
        m_host.fnSay(describe() + (listHidden.isEmpty()
                                       ? QString()
                                       : QStringLiteral(" — ") + listHidden.join(QStringLiteral("; "))));
    }
    const auto indices = indicesOf(current.nReflection);
    // A click on a disc or a row has brought up its own profile.
    if (indices && (pSource != m_host.pFrame || !m_bOnDisc) && pSource != m_host.pTable) {
        m_host.fnShowProfile(*indices, current.nFrame);
    }
}

std::optional<std::array<int, 3>> SelectionController::indicesOf(int nReflection)
{
    for (const Peak3D& peak : m_host.pData->m_listReflectionIndexed) {
        if (peak.nID == nReflection && m_links.holds(peak)) {
            return std::array<int, 3>{roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL)};
        }
    }
    return {};
}

QString SelectionController::describe()
{
    const CurrentSpot& current = m_model.current();
    QString strText = current.nReflection >= 0 ? tr("Reflection %L1").arg(current.nReflection)
                                               : tr("Peak %L1, in no reflection").arg(current.nPeak);
    if (const auto indices = indicesOf(current.nReflection)) {
        strText += QStringLiteral(" (%1, %2, %3)").arg((*indices)[0]).arg((*indices)[1]).arg((*indices)[2]);
    }
    const Peak3D* pPeak = current.nReflection >= 0 ? m_links.reflection(current.nReflection)
                                                   : m_links.peak(current.nPeak);
    if (pPeak && pPeak->dfDStar > 0) {
        strText += tr(", d=%L1 Å").arg(1 / pPeak->dfDStar, 0, 'f', 3);
    }
    if (current.nFrame >= 0) {
        strText += tr(", frame %L1").arg(current.nFrame + 1);
    }
    const size_t nChosen = m_model.reflections().size() + m_model.lonePeaks().size();
    if (nChosen > 1) {
        strText += tr("; %L1 chosen").arg(nChosen);
    }
    return strText;
}

}  // namespace tessera
