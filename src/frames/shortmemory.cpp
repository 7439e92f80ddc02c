#include "frames/shortmemory.h"

#include <algorithm>

QString CShortMemory::text() const
{
    return QStringLiteral(
               "%1 takes about %L2 MB, which cannot be had. Frames made smaller by \"Export Scaled "
               "Frames...\", in the driver by --export scaled, take less.")
        .arg(m_strWhat)
        .arg(std::max<qint64>(1, m_nBytes >> 20));
}

void sayFewerJobs(int nJobs, CRunReport& report)
{
    report.addMessage(
        QStringLiteral("Memory is short: the run goes on with fewer frames side by side (as with the "
                       "driver's option --jobs %1).")
            .arg(nJobs),
        Qt::black);
}
