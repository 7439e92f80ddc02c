// CWorkSteps: the history of the user's work for undo and redo.
#pragma once

#include "workstate/workblocks.h"

#include <QString>

#include <cstdint>
#include <deque>
#include <memory>

namespace tessera {

/// A list of states, each with the step that led to it, one of which is the current one. The first is the
/// initial state, or the oldest that is still kept.
///
/// Memory is limited: if the states other than the current one, whose lists the window uses anyway, take more
/// than the limit, the oldest are dropped. The current state and its neighbours are always kept, so that the
/// last step can be undone.
class CWorkSteps {
public:
    /// @param nMostBytes  limit of the memory
    explicit CWorkSteps(std::uint64_t nMostBytes);

    /// Discards all states and starts with this one.
    void begin(const WorkState& state, const QString& strName);
    /// Changes the limit; it takes effect with the next state that is added.
    void setMostBytes(std::uint64_t nMostBytes) { m_nMostBytes = nMostBytes; }
    std::uint64_t mostBytes() const { return m_nMostBytes; }  ///< limit of the memory
    /// Adds a state after the current one and makes it current. States that were undone are discarded.
    void note(const WorkState& state, const QString& strName);
    /// Replaces the current state, which is the last one, when its step was continued (typing a number, say).
    void goOn(const WorkState& state, const QString& strName);
    /// Discards the last state, which is the current one, because its step changed nothing in the end. The
    /// state before becomes current and is replaced by the given one, the present state of the window.
    void dropLast(const WorkState& state);
    /// Replaces the current state by an equal one. The state of the window shares its lists with it from then
    /// on, which makes the next comparison quick.
    void refresh(const WorkState& state);

    int count() const { return int(m_listStep.size()); }  ///< number of states
    int current() const { return m_nCurrent; }            ///< index of the current state; −1 without states
    bool isLast() const { return m_nCurrent == count() - 1; }                    ///< there is nothing to redo
    const QString& name(int nStep) const { return m_listStep[nStep]->strName; }  ///< name of a step
    const WorkState& state(int nStep) const { return m_listStep[nStep]->state; }  ///< state after a step
    const WorkState& state() const { return state(m_nCurrent); }                  ///< the current state
    /// Makes another state current.
    /// @return false if there is no such state
    bool goTo(int nStep);

    int dropped() const { return m_nDropped; }  ///< states dropped for memory since begin()
    /// Memory of the states, without the lists of the current one, bytes.
    std::uint64_t bytes() const;

private:
    struct Step {
        WorkState state;
        QString strName;
    };

    void append(const WorkState& state, const QString& strName);
    void replace(int nStep, const WorkState& state);
    void removeBehind(int nCount);
    void keepWithinBound();

    std::uint64_t m_nMostBytes;
    std::deque<std::unique_ptr<Step>> m_listStep;  ///< at fixed places, by which their memory is known
    int m_nCurrent = -1;
    int m_nDropped = 0;
    CWorkBlocks m_blocks;
};

}  // namespace tessera
