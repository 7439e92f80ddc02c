// CWorkSteps: the states of a user's work, in their order, and which of them is in force.
#pragma once

#include "workstate/workblocks.h"

#include <QString>

#include <cstdint>
#include <deque>
#include <memory>

namespace tessera {

/// A row of states with the step that led to each. The first one is where it all began, or the oldest that is
/// still kept.
///
/// Memory is bounded: where the states hold more than the bound beside the one in force, whose lists are the
/// user's own, the oldest go first. The one in force and those next to it stay in any case, so that the last
/// step can always be taken back.
class CWorkSteps {
public:
    /// @param nMostBytes  the bound
    explicit CWorkSteps(std::uint64_t nMostBytes);

    /// Forgets all, and begins with this state.
    void begin(const WorkState& state, const QString& strName);
    /// Another bound, for the states to come.
    void setMostBytes(std::uint64_t nMostBytes) { m_nMostBytes = nMostBytes; }
    std::uint64_t mostBytes() const { return m_nMostBytes; }
    /// A step has led from the state in force to this one. States that were taken back are given up.
    void note(const WorkState& state, const QString& strName);
    /// The step that led to the state in force, the last one, has gone on to this one.
    void goOn(const WorkState& state, const QString& strName);
    /// The last step, to the state in force, has come to nothing: the one before is in force, and this is how
    /// the window has it.
    void dropLast(const WorkState& state);
    /// The state in force as the window has it, which is no step: lists that it shares with the next state
    /// are not compared.
    void refresh(const WorkState& state);

    int count() const { return int(m_listStep.size()); }  ///< of states
    int current() const { return m_nCurrent; }  ///< place of the state in force; −1 without states
    bool isLast() const { return m_nCurrent == count() - 1; }  ///< nothing is taken back
    const QString& name(int nStep) const { return m_listStep[nStep]->strName; }
    const WorkState& state(int nStep) const { return m_listStep[nStep]->state; }
    const WorkState& state() const { return state(m_nCurrent); }  ///< in force
    /// Puts another one in force; false for a place that is none.
    bool goTo(int nStep);

    int dropped() const { return m_nDropped; }  ///< states that had to go since begin()
    /// What is kept beside the state in force.
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
