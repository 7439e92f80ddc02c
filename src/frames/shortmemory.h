// CShortMemory: a lack of memory that tells what needed how much.
#pragma once

#include "app/records/runreport.h"
#include "frames/framesequence.h"

#include <QString>

#include <new>

/// What is thrown where memory ran out, with words for the log.
class CShortMemory : public std::bad_alloc {
public:
    /// @param strWhat  what was being done, with the name of the file; nBytes is about what it takes
    CShortMemory(const QString& strWhat, qint64 nBytes) : m_strWhat(strWhat), m_nBytes(nBytes) {}
    /// "WHAT takes about N MB, which cannot be had. ..." and what helps.
    QString text() const;

private:
    QString m_strWhat;
    qint64 m_nBytes;
};

/// Says that there is less side by side than before, for a lack of memory.
void sayFewerJobs(int nJobs, CRunReport& report);

/// Takes a frame from a sequence and tells where memory is short: in black when fewer threads go on, in red
/// when one alone has no room either.
/// @return false in the latter case
template <class Result>
bool takeFrame(CFrameSequence<Result>& sequence, int nFrame, Result& result, CRunReport& report)
{
    const int nJobs = sequence.jobs();
    try {
        result = sequence.take(nFrame);
    } catch (const CShortMemory& error) {
        report.addMessage(error.text(), Qt::red);
        return false;
    }
    if (sequence.jobs() < nJobs)
        sayFewerJobs(sequence.jobs(), report);
    return true;
}
