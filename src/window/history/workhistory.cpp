#include "window/history/workhistory.h"

#include "records/availablememory.h"
#include "workstate/samework.h"

#include <QAbstractEventDispatcher>

#include <algorithm>
#include <utility>

namespace tessera {

namespace {

const int g_nPause = 1500;  // ms; who turns a number on after a longer look at the result makes another step

/// A quarter of the free memory, which leaves room for runs: they need about as much as the data themselves.
/// At most 4 GB, enough for hundreds of runs on the longest series.
std::uint64_t boundOfMemory()
{
    const std::uint64_t nMost = std::uint64_t(4) << 30;
    return std::min(availableMemory() / 4, nMost);
}

}  // namespace

void WorkHistory::start(const WorkHistoryHost& host)
{
    m_host = host;
    begin(m_host.fnState());
    if (QAbstractEventDispatcher* pDispatcher = QAbstractEventDispatcher::instance()) {
        connect(pDispatcher, &QAbstractEventDispatcher::aboutToBlock, this, &WorkHistory::look);
    }
}

bool WorkHistory::isReady() const
{
    return m_host.fnState && m_nHold == 0 && !m_host.fnBusy();
}

bool WorkHistory::canUndo() const
{
    return isReady() && m_steps.current() > 0;
}

bool WorkHistory::canRedo() const
{
    return isReady() && !m_steps.isLast();
}

void WorkHistory::begin(const WorkState& state)
{
    m_bAnew = false;
    m_strKey.clear();
    m_strNextName.clear();
    m_steps.setMostBytes(boundOfMemory());
    const QString& strName = state.series.m_strProjectName;
    m_steps.begin(state, state.series.m_listFrameFile.isEmpty() ? tr("Start")
                         : strName.isEmpty()                    ? tr("Opened")
                                                                : tr("Opened %1").arg(strName));
    emit stepNoted(state, m_steps.name(0));
    emit changed();
}

void WorkHistory::look()
{
    if (!isReady()) {
        return;
    }
    // No exception may pass through the event loop, which calls this.
    try {
        compare();
    } catch (const std::exception&) {
        return;  // out of memory: the next look finds what has changed
    }
}

void WorkHistory::compare()
{
    const WorkState state = m_host.fnState();
    const WorkDifferences found = differences(m_steps.state(), state);
    if (m_bAnew || found.bOtherSeries) {
        begin(state);
        return;
    }
    if (found.isStep()) {
        note(state, found);
    } else if (!shareLists(state, m_steps.state())) {
        m_steps.refresh(state);
    }
    m_strNextName.clear();
}

void WorkHistory::note(const WorkState& state, const WorkDifferences& found)
{
    const bool bGoesOn = !found.strKey.isEmpty() && found.strKey == m_strKey && m_steps.isLast() &&
                         m_steps.current() > 0 && m_clock.elapsed() < g_nPause;
    m_strKey = found.strKey;
    m_clock.start();
    if (!bGoesOn) {
        m_steps.note(state, m_strNextName.isEmpty() ? found.strName : m_strNextName);
    } else {
        const WorkDifferences all = differences(m_steps.state(m_steps.current() - 1), state);
        if (all.isStep()) {
            m_steps.goOn(state, all.strName);
        } else {
            m_steps.dropLast(state);
            m_strKey.clear();
        }
    }
    emit stepNoted(state, m_steps.name(m_steps.current()));
    emit changed();
}

void WorkHistory::undo()
{
    look();
    if (canUndo()) {
        const QString strName = m_steps.name(m_steps.current());
        goTo(m_steps.current() - 1);
        if (m_host.fnSay) {
            m_host.fnSay(tr("Undone: %1").arg(strName));
        }
    }
}

void WorkHistory::redo()
{
    look();
    if (canRedo()) {
        goTo(m_steps.current() + 1);
        if (m_host.fnSay) {
            m_host.fnSay(tr("Done again: %1").arg(m_steps.name(m_steps.current())));
        }
    }
}

void WorkHistory::goTo(int nStep)
{
    const int nDropped = m_steps.dropped();
    look();  // changes that are not recorded yet would be lost
    const int nTo = nStep - (m_steps.dropped() - nDropped);
    if (!isReady() || nTo < 0 || nTo >= m_steps.count() || nTo == m_steps.current()) {
        return;
    }
    const WorkState state = m_steps.state(nTo);
    {
        const CHold hold(*this, QString());
        if (!m_host.fnShow(state)) {
            return;  // the step stays as it was, and can be gone to again
        }
    }
    m_steps.goTo(nTo);
    m_steps.refresh(m_host.fnState());
    m_strKey.clear();
    emit stepNoted(m_steps.state(), m_steps.name(nTo));
    emit changed();
}

}  // namespace tessera
