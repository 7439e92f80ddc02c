// Ends of runs: functions that write the reason to the log and return it as the outcome.
#pragma once

#include "records/runoutcome.h"
#include "records/runreport.h"

namespace tessera {

/// Refuses a run: the reason becomes a red line of the log and a part of the outcome.
inline RunOutcome refuseRun(CRunReport& report, const QString& strReason)
{
    report.fail(strReason);
    return {RunEnd::Refused, strReason};
}

/// Ends a run by a fault: the reason becomes a red line of the log and a part of the outcome.
inline RunOutcome failRun(CRunReport& report, const QString& strReason)
{
    report.fail(strReason);
    return {RunEnd::Failed, strReason};
}

/// The outcome of a run whose fault has already been reported; the reason is the first one that the report
/// has.
inline RunOutcome failedAsSaid(const CRunReport& report)
{
    return {RunEnd::Failed, report.reason()};
}

}  // namespace tessera
