// Crystal: what the run on one series has left, as the merging of many crystals needs it.
#pragma once

#include "crystals/runframes.h"
#include "integration/structuredata.h"
#include "records/cellparameters.h"

#include <QString>

#include <vector>

namespace tessera {

struct Crystal {
    QString strName;    ///< of the series
    QString strFolder;  ///< of the results
    CellParameters cell;
    CellParameters cellErrors;  ///< standard errors; 0: not known
    char chCentring = 'P';      ///< of that cell
    QString strLaueClass;       ///< that the run has merged in
    double dfWavelength = 0;    ///< Å
    double dfCompleteness = 0;  ///< 0 to 1, of the run alone
    int nUnique = 0;            ///< reflections that it has merged in that class; 0: not told
    double dfRInt = 0;
    double dfCcHalf = 0;
    QString strEnded;                            ///< when the run ended, UTC as the record has it
    RunFrames frames;                            ///< that it is from; none: not known
    std::vector<ScaledIntensity> listIntensity;  ///< unmerged, scaled along the series; indices of the cell
};

}  // namespace tessera
