#include "road/roadoptions.h"

#include <QFileInfo>

#include <algorithm>
#include <thread>

namespace tessera {

bool RoadOptions::isProject() const
{
    return !listInput.isEmpty() && QFileInfo(listInput.first()).suffix().toLower() == QLatin1String("ed3d");
}

int RoadOptions::jobs() const
{
    return nJobs > 0 ? nJobs : int(std::max(1u, std::thread::hardware_concurrency()));
}

}  // namespace tessera
