// CAliveData: the data set of a run in a thread, and the way from there to what the window shows.
#pragma once

#include "dataset/dataset.h"
#include "window/aliverun.h"

#include <functional>

namespace tessera {

/// What a piece of a run works with in its thread. Its data set is a copy of the window's, which shares the
/// lists until one of them changes, so that views may read theirs meanwhile.
class CAliveData {
public:
    /// @param shown  of the window
    CAliveData(DataSet& dataSet, DataSet& shown, CAliveRun& run)
        : m_dataSet(dataSet), m_shown(shown), m_run(run)
    {}

    /// The copy that the run works on.
    DataSet& dataSet() { return m_dataSet; }
    /// The report of the run, for calls from its thread.
    CRunReport& report() { return m_run; }
    /// Puts the data set and the images that the run has loaded into the window's, has fn done by the thread
    /// of the window, and goes on with what that has left.
    void show(const std::function<void()>& fn);

private:
    DataSet& m_dataSet;
    DataSet& m_shown;
    CAliveRun& m_run;
};

}  // namespace tessera
