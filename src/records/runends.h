// The ends of a run in words: the log gets its red line, the caller the same as a value.
#pragma once

#include "records/runoutcome.h"
#include "records/runreport.h"

namespace tessera {

/// Says why a run is not begun.
inline RunOutcome refuseRun(CRunReport& report, const QString& strReason)
{
    report.fail(strReason);
    return {RunEnd::Refused, strReason};
}

/// Says why a run ends early.
inline RunOutcome failRun(CRunReport& report, const QString& strReason)
{
    report.fail(strReason);
    return {RunEnd::Failed, strReason};
}

/// The outcome of a run whose fault was said where it was met: the first that the report kept.
inline RunOutcome failedAsSaid(const CRunReport& report)
{
    return {RunEnd::Failed, report.reason()};
}

}  // namespace tessera
