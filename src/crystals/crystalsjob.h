// CrystalsJob: the work of tessera-merge. Reads the crystals of many result folders, groups them by lattice,
// merges each group and writes the files.
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

/// Bytes of the name of a job. File systems allow names of 255 bytes, and those of the files consist of the
/// name of the job, the number of the group, its compound and a suffix.
constexpr int g_nLongestJobName = 150;

class CMergePlace;

struct CrystalsJobOptions {
    QStringList listFolder;  ///< folders of results, or folders that hold such; in any order
    QString strOutFolder;    ///< where the files are written; no folder of results: see misplacedMerge()
    QString strName;         ///< beginning of the files' names; empty: the name of strOutFolder (jobName())
    QString strKnownCellsFile;  ///< table of known compounds with their cells; empty: none
    CellTolerance tolerance;  ///< by how much lattices of one group, or a group and a known cell, may differ
    CrystalMergeOptions merge;
    int nLeastCrystals = 1;   ///< groups of fewer are listed, but not merged
    ChemicalFormula formula;  ///< composition of groups for which the known cells tell none
    int nUnits = 0;           ///< formula units Z in the conventional cell; 0: estimated
    int nJobs = 0;            ///< threads at most; 0: one per core. The files do not depend on it
};

/// What became of one crystal.
struct CrystalFate {
    int nGroup = -1;    ///< place in CrystalsJobResult::listGroup; -1: in none
    int nSettled = -1;  ///< place in MergedCrystals::listSettled of its group; -1: it could not be brought to
                        ///< the setting of the group
    bool bUsed = false;            ///< it is in the merged intensities
    QString strReason;             ///< why it is not merged; empty where it is
    QByteArray bytesSha256;        ///< SHA-256 of its list of intensities, in hexadecimal
    QByteArray bytesRecordSha256;  ///< SHA-256 of the record of its run (NAME.run.json), in hexadecimal
};

/// Crystals of one lattice, which are taken for one compound, and what they give together.
struct CompoundGroup {
    QString strName;  ///< name of its files, without folder and suffixes: "NAME_1", "NAME_2_quartz"
    CrystalGroup group;
    CellParameters cellMean;              ///< reduced cell, mean of all members; Å and degrees
    CellParameters cellSpread;            ///< standard deviation of one crystal from it; 0 for one crystal
    std::optional<KnownCellMatch> known;  ///< the closest known cell within the tolerance
    RunOutcome outcome;                   ///< how its merging ended
    MergedCrystals merged;                ///< result of a merging that finished; else empty
    CellParameters cell;                  ///< conventional cell, mean of the merged crystals; Å and degrees
    CellParameters cellDeviation;         ///< standard deviation of one merged crystal from it
    QStringList listFile;                 ///< the files that were written for it

    int crystalCount() const { return int(group.listMember.size()); }
    int usedCount() const;  ///< number of crystals in the merged intensities
    bool isMerged() const { return !merged.listSettled.empty(); }
};

struct CrystalsJobResult {
    QString strName;                        ///< beginning of the files' names
    std::vector<Crystal> listCrystal;       ///< the crystals that were read, sorted by folder and name
    std::vector<CrystalFate> listFate;      ///< one per crystal, in the order of listCrystal
    std::vector<UnreadCrystal> listUnread;  ///< what was not read or is a copy, with the reasons
    std::vector<KnownCell> listKnown;       ///< the compounds of the table of known cells
    CrystalGroups groups;                   ///< the grouping, with the tree of the lattices
    std::vector<CompoundGroup> listGroup;   ///< one per group, in the order of groups.listGroup
    QStringList listNote;  ///< doubts: folders named twice, faulty lines of the known cells, wavelengths
    QString strLog;        ///< the text of the log
    QStringList listFile;  ///< paths of the files that were written

    int mergedCount() const;  ///< number of groups with merged intensities
    int usedCount() const;    ///< number of crystals in the merged intensities of all groups
};

/// The beginning of the files' names: the name that was given, else that of the folder, else "merged". Names
/// of more than 150 bytes are cut.
QString jobName(const CrystalsJobOptions& options);

/// Why the files must not be written to strOutFolder: no folder is given, or its name is that of a file; it
/// holds the results of a series; the table of known cells, or a record that is none of a merging, has the
/// name of one of the files; or a file to be replaced is a link to what is read. Without a full stop; empty
/// if nothing speaks against it.
QString misplacedMerge(const CrystalsJobOptions& options);

/// Reads the crystals, groups and merges them; writes no files. The lines of strLog also go to the report.
/// The result depends on the contents of the folders and on the options, but neither on the order of the
/// folders nor on the number of threads.
///
/// @param result  replaced by what was found, also where the run did not finish
/// @return Finished with at least one merged group; Refused where no crystal could be read; Failed where the
///         known cells cannot be read or no group could be merged; Stopped
RunOutcome mergeFolders(const CrystalsJobOptions& options, CRunReport& report, CrystalsJobResult& result);

/// Writes the files, all of them in one go: of each merged group those of structure solution as of one
/// crystal, and the tree of its crystals; then the table of the crystals, tree of the lattices, report and
/// log; last the record, NAME.merge.json, which has the check sums of the others. Files of the earlier
/// merging of this name that have no successor and were not changed go with it. Where a file cannot be
/// written all former ones stay. The summary of the merging goes to the report once all stand. See CMergeSet
/// for a kill.
///
/// Sealed files (.ins, .cif, .mtz) that were changed by somebody stay, and the new ones get another name.
/// @param place   the output folder, taken for these options
/// @param result  gets the names of the files
RunOutcome writeMerged(const CrystalsJobOptions& options, const CMergePlace& place, CRunReport& report,
                       CrystalsJobResult& result);

}  // namespace tessera
