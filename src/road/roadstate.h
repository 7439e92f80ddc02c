// RoadState: a series on its way through the stages.
#pragma once

#include "dataset/dataset.h"
#include "dataset/parametertable.h"
#include "records/runparameters.h"
#include "road/roadoptions.h"
#include "road/roadreport.h"
#include "road/roadresults.h"
#include "road/roadstep.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>

namespace tessera {

/// What the parts of the road hand to one another, and what they found.
struct RoadState {
    /// @param data       lent: the stages work on it; must outlive the state
    /// @param runReport  takes the log; must outlive the state
    RoadState(const RoadOptions& roadOptions, DataSet& data, CRunReport& runReport)
        : given(roadOptions), options(roadOptions), report(runReport), dataSet(data)
    {}

    const RoadOptions given;  ///< as they were asked for
    RoadOptions options;      ///< as the stages use them: rounded, with the values that they found themselves
    CRoadReport report;
    DataSet& dataSet;
    MappingParameters mapping;
    QString strInputDir;          ///< folder of the project or the first image; results may go elsewhere
    QStringList listEarlierFile;  ///< of earlier stages, that the road has read
    QStringList listSideReason;   ///< what opening had to say of files that it could not use
    QDateTime begun = QDateTime::currentDateTimeUtc();
    bool bHotPixelsListed = false;  ///< the run has made the list of hot pixels that lies beside the project
    bool bResultFolder = false;     ///< the folder of the results is there, for the log as well
    RoadResults results;
    /// Called as a part begins, and as it has ended, in the thread of the road; may look at all of the state.
    std::function<void(const RoadStep&)> fnStep;

    void tellStep(const RoadStep& step) const
    {
        if (fnStep) {
            fnStep(step);
        }
    }
};

/// Makes the data set and all parameters what the pages of the window would hold.
void roundToPages(RoadState& state);

/// The beginning of a stage: rounds, and gives it reasons of its own to fail.
void beginStage(RoadState& state, RoadStage stage);

/// Puts a value that was given in the place of another one.
void takeOver(const std::optional<double>& dfGiven, double& dfTarget);

/// The same for a limit, with the decimals of its box; its range has been seen to.
void takeLimit(const std::optional<double>& dfGiven, double& dfTarget, const NumberBox& box);
/// The same for a limit that has its row in the table of parameters.
template <typename TRecord>
void takeLimit(const std::optional<double>& dfGiven, TRecord& record, double TRecord::*pLimit)
{
    takeLimit(dfGiven, record.*pLimit, parameterOf(pLimit).box);
}

}  // namespace tessera
