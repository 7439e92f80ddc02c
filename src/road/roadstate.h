// RoadState: the state of a road, on which its stages work.
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

/// Options, data set and results of a road.
struct RoadState {
    /// @param data       the data set on which the stages work; must outlive the state
    /// @param runReport  gets the log; must outlive the state
    RoadState(const RoadOptions& roadOptions, DataSet& data, CRunReport& runReport)
        : given(roadOptions), options(roadOptions), report(runReport), dataSet(data)
    {}

    const RoadOptions given;  ///< the options as given
    RoadOptions options;  ///< the options as the stages use them: rounded, and with values they determined
    CRoadReport report;
    DataSet& dataSet;
    MappingParameters mapping;
    QString strInputDir;          ///< folder of the project or the first image; results may go elsewhere
    QStringList listEarlierFile;  ///< files of earlier stages that the road has read
    QStringList listSideReason;   ///< messages about files beside the project that could not be used
    QDateTime begun = QDateTime::currentDateTimeUtc();  ///< start of the road
    bool bHotPixelsListed = false;  ///< the road has written the list of hot pixels beside the project
    bool bResultFolder = false;     ///< the folder of the results exists
    RoadResults results;
    /// Called in the thread of the road when a part begins and when it has ended; may read all of the state.
    std::function<void(const RoadStep&)> fnStep;

    /// Calls fnStep if it is set.
    void tellStep(const RoadStep& step) const
    {
        if (fnStep) {
            fnStep(step);
        }
    }
};

/// Rounds the data set and all parameters as the boxes on the pages of the window would.
void roundToPages(RoadState& state);

/// Begins a stage: rounds all numbers, and begins a part of the report.
void beginStage(RoadState& state, RoadStage stage);

/// Replaces a value by the given one, if there is one.
void takeOver(const std::optional<double>& dfGiven, double& dfTarget);

/// The same for a limit, rounded to the decimals of its box. The range is not checked.
void takeLimit(const std::optional<double>& dfGiven, double& dfTarget, const NumberBox& box);
/// The same for a limit with a row in the table of parameters.
template <typename TRecord>
void takeLimit(const std::optional<double>& dfGiven, TRecord& record, double TRecord::*pLimit)
{
    takeLimit(dfGiven, record.*pLimit, parameterOf(pLimit).box);
}

}  // namespace tessera
