// The steps of the selection by keys: on the frame, through a reflection's frames, and of the unindexed.
#include "window/pages/controltips.h"
#include "window/selection/selectioncontroller.h"

#include <QAction>
#include <QKeySequence>

#include <algorithm>

namespace tessera {

namespace {

/// The place that follows that of `n`, round at the ends; without `n` the first or the last.
template <typename TList, typename TIs>
int steppedPlace(const TList& list, int nStep, const TIs& fnIs)
{
    const int nCount = int(list.size());
    const auto it = std::find_if(list.begin(), list.end(), fnIs);
    if (it == list.end()) {
        return nStep > 0 ? 0 : nCount - 1;
    }
    return (int(it - list.begin()) + nStep + nCount) % nCount;
}

}  // namespace

void SelectionController::createActions()
{
    const struct {
        const char* pszText;
        const char* pszKey;
        const char* pszTip;
        void (SelectionController::*pStep)(int);
        int nStep;
    } aAction[] = {
        {QT_TR_NOOP("Next Spot of the &Frame"), "F6",
         QT_TR_NOOP("Chooses the next peak of the frame in view, from the beam outwards."),
         &SelectionController::stepOnFrame, 1},
        {QT_TR_NOOP("Previous Spot of the Frame"), "Shift+F6",
         QT_TR_NOOP("Chooses the peak before, towards the beam."), &SelectionController::stepOnFrame, -1},
        {QT_TR_NOOP("Next Frame of the &Reflection"), "F7",
         QT_TR_NOOP("Shows the chosen reflection on the next frame that has a peak of it."),
         &SelectionController::stepInReflection, 1},
        {QT_TR_NOOP("Previous Frame of the Reflection"), "Shift+F7",
         QT_TR_NOOP("Shows the chosen reflection on the frame before."),
         &SelectionController::stepInReflection, -1},
        {QT_TR_NOOP("Next &Unindexed Reflection"), "F8",
         QT_TR_NOOP("Chooses the next merged reflection that the last indexing left over."),
         &SelectionController::stepUnindexed, 1},
        {QT_TR_NOOP("Previous Unindexed Reflection"), "Shift+F8", QT_TR_NOOP("Chooses the one before."),
         &SelectionController::stepUnindexed, -1},
    };
    for (const auto& row : aAction) {
        auto* pAction = new QAction(tr(row.pszText), this);
        pAction->setShortcut(QKeySequence(QLatin1String(row.pszKey)));
        explain(pAction, tr(row.pszTip));
        const auto pStep = row.pStep;
        const int nStep = row.nStep;
        connect(pAction, &QAction::triggered, this, [this, pStep, nStep] {
            if (!m_host.fnBusy()) {
                (this->*pStep)(nStep);
            }
        });
        m_listAction.append(pAction);
    }
    auto* pNone = new QAction(tr("Choose &Nothing"), this);
    explain(pNone, tr("Takes the marks of the chosen reflections off all views."));
    connect(pNone, &QAction::triggered, this, [this] {
        if (!m_host.fnBusy()) {
            m_model.clear(nullptr);
        }
    });
    m_listAction.append(pNone);
}

void SelectionController::stepOnFrame(int nStep)
{
    const std::vector<int> vecPeak = links().peaksOutwards(m_host.fnFrameInView());
    if (vecPeak.empty()) {
        m_host.fnSay(tr("There are no peaks on the frame in view."));
        return;
    }
    // The chosen spot on this frame, also where it was chosen for its place on another.
    int nPeak = m_model.current().nPeak;
    for (const FrameSpot& spot : links().spotsOf(m_model.current().nReflection)) {
        if (spot.nFrame == m_host.fnFrameInView()) {
            nPeak = spot.nPeak;
        }
    }
    const int nPlace = steppedPlace(vecPeak, nStep, [nPeak](int n) { return n == nPeak; });
    choosePeaks({vecPeak[nPlace]}, SelectionModel::Way::Replace, nullptr);
}

void SelectionController::stepInReflection(int nStep)
{
    const CurrentSpot current = m_model.current();
    const std::vector<FrameSpot> vecSpot = links().spotsOf(current.nReflection);
    if (vecSpot.empty()) {
        m_host.fnSay(tr("No reflection is chosen."));
        return;
    }
    const int nPlace = steppedPlace(vecSpot, nStep,
                                    [&](const FrameSpot& spot) { return spot.nFrame == current.nFrame; });
    const FrameSpot& spot = vecSpot[nPlace];
    m_model.setCurrent({current.nReflection, spot.nPeak, spot.nFrame}, nullptr);
}

void SelectionController::stepUnindexed(int nStep)
{
    const QList<Peak3D>& listIndexed = m_host.pData->m_listReflectionIndexed;
    const bool bIndexed = std::any_of(listIndexed.begin(), listIndexed.end(),
                                      [this](const Peak3D& peak) { return links().holds(peak); });
    const std::vector<int> vecOthers = bIndexed ? links().reflectionsBut(listIndexed) : std::vector<int>();
    if (vecOthers.empty()) {
        m_host.fnSay(bIndexed ? tr("All merged reflections are indexed.")
                              : tr("The merged reflections are not indexed yet."));
        return;
    }
    // Goes from an indexed reflection to the next one that is not indexed.
    const int nNow = m_model.current().nReflection;
    const auto itAfter = std::upper_bound(vecOthers.begin(), vecOthers.end(), nNow);
    const auto itNow = std::lower_bound(vecOthers.begin(), vecOthers.end(), nNow);
    const int nCount = int(vecOthers.size());
    const int nPlace = nStep > 0 ? int(itAfter - vecOthers.begin()) % nCount
                                 : (int(itNow - vecOthers.begin()) - 1 + nCount) % nCount;
    chooseReflection(vecOthers[nPlace]);
}

}  // namespace tessera
