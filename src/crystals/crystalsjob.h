// CrystalsJob: the crystals of many result folders told apart, merged, and written.
#pragma once

#include "crystals/crystalmerging.h"
#include "crystals/crystalreading.h"
#include "crystals/knowncells.h"
#include "integration/chemicalformula.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tessera {

class CMergePlace;

struct CrystalsJobOptions {
    QStringList listFolder;     ///< of results, or that hold such folders; their order does not matter
    QString strOutFolder;       ///< of the files; no input itself
    QString strName;            ///< that the files begin with; empty: the name of the folder (jobName())
    QString strKnownCellsFile;  ///< empty: none
    CellTolerance tolerance;    ///< of crystals of one group, and of a group to a known cell
    CrystalMergeOptions merge;
    int nLeastCrystals = 1;   ///< groups of fewer are listed, but not merged
    ChemicalFormula formula;  ///< of groups whose known cell has none
    int nUnits = 0;           ///< formulae in a cell; 0: estimated
    int nJobs = 0;            ///< threads at most; 0: one per core. The files do not depend on it
};

/// What became of one crystal; one of each of CrystalsJobResult::listCrystal.
struct CrystalFate {
    int nGroup = -1;    ///< place in listGroup; -1: in none
    int nSettled = -1;  ///< place in MergedCrystals::listSettled of its group; -1: not brought to its setting
    bool bUsed = false;            ///< it is in the merged intensities
    QString strReason;             ///< why not; empty where it is
    QByteArray bytesSha256;        ///< of its list of intensities, in hexadecimal
    QByteArray bytesRecordSha256;  ///< of the record of its run
};

/// Crystals of one lattice, and what they give together.
struct CompoundGroup {
    QString strName;  ///< of its files, without folder and suffixes: "NAME_1", "NAME_2_quartz"
    CrystalGroup group;
    CellParameters cellMean;              ///< of the reduced cell, over all members
    CellParameters cellSpread;            ///< standard deviation of one crystal; 0 of one alone
    std::optional<KnownCellMatch> known;  ///< the closest one within the tolerance
    RunOutcome outcome;                   ///< how its merging ended
    MergedCrystals merged;                ///< of a merging that finished
    CellParameters cell;                  ///< conventional setting, of the crystals that were used
    CellParameters cellDeviation;         ///< standard deviation of one of these
    QStringList listFile;                 ///< that were written of it

    int crystalCount() const { return int(group.listMember.size()); }
    int usedCount() const;  ///< crystals in the merged intensities
    bool isMerged() const { return !merged.listSettled.empty(); }
};

struct CrystalsJobResult {
    QString strName;                        ///< that the files begin with
    std::vector<Crystal> listCrystal;       ///< by folder and name
    std::vector<CrystalFate> listFate;      ///< one of each
    std::vector<UnreadCrystal> listUnread;  ///< with the reasons
    std::vector<KnownCell> listKnown;
    CrystalGroups groups;                  ///< with the tree of the lattices
    std::vector<CompoundGroup> listGroup;  ///< in the order of groups.listGroup
    QStringList listNote;  ///< doubts: folders named twice, lines of the known cells that are wrong
    QString strLog;        ///< all that was said
    QStringList listFile;  ///< written, with their paths

    int mergedCount() const;  ///< groups with merged intensities
    int usedCount() const;    ///< crystals in them
};

/// What the files begin with: the name that was given, else that of the folder, else "merged".
QString jobName(const CrystalsJobOptions& options);

/// What speaks against writing the files there: no folder, one that holds the results of a series, the file
/// of known cells among them, or a link to what is to be read. Empty if nothing does.
QString misplacedMerge(const CrystalsJobOptions& options);

/// Reads, tells apart and merges; writes nothing. All that is told goes to the report, too. The result
/// depends on folders and numbers alone, neither on the order of the folders nor on the threads.
///
/// @param result  replaced by what was found, also where the run did not finish
/// @return Finished with at least one merged group; Refused where nothing could be read; Failed, Stopped
RunOutcome mergeFolders(const CrystalsJobOptions& options, CRunReport& report, CrystalsJobResult& result);

/// Writes the files, all of them in one go: of each merged group those of structure solution as of one
/// crystal and the tree of its crystals; table of the crystals, tree of the lattices, report and log; last
/// the record, NAME.merge.json, which has the check sums of the others. Files of the earlier merging of this
/// name that have no successor and were not changed go with it. Where a file cannot be written all former
/// ones stay. The summary of the merging goes to the report once all stand. See CMergeSet for a kill.
///
/// Sealed files (.ins, .cif, .mtz) that were changed by somebody stay, and the new ones get another name.
/// @param place   taken for these options
/// @param result  gets the names of the files
RunOutcome writeMerged(const CrystalsJobOptions& options, const CMergePlace& place, CRunReport& report,
                       CrystalsJobResult& result);

}  // namespace tessera
