// ResultFile: the files that runs write beside the project, and their names.
#pragma once

#include <QLatin1String>
#include <QString>

namespace tessera {

/// A file whose name is that of the project with a suffix.
enum class ResultFile {
    Log,             ///< the messages of a run
    Shifts,          ///< direct beam, and the shift of each frame
    Peaks,           ///< all peaks of all frames with their groups
    Cell,            ///< the reciprocal basis
    Reflections,     ///< h, k, l and intensities for structure solution
    P4P,             ///< the cell as a line of text
    IndexedPeaks,    ///< the indexed peaks of each frame
    RefinedProject,  ///< the project with the refined geometry
    RefinedCell,     ///< the refined reciprocal basis
    RefinedShifts,   ///< the refined direct beam, and the shifts
    Integrated,      ///< all integrated intensities on one scale, HKLF 4
    Merged,          ///< the same intensities, equivalent ones merged
    Rejected,        ///< table of the observations that were left out, with the reasons
    Ins,             ///< instructions of SHELX: cell, symmetry, scattering factors
    Cif,             ///< cell, symmetry, experiment and merged intensities
    Mtz,             ///< merged intensities
    Run,             ///< protocol of the run: input, parameters, results and files written
};

/// All of them.
constexpr ResultFile g_aResultFile[] = {
    ResultFile::Log,         ResultFile::Shifts,        ResultFile::Peaks,        ResultFile::Cell,
    ResultFile::Reflections, ResultFile::P4P,           ResultFile::IndexedPeaks, ResultFile::RefinedProject,
    ResultFile::RefinedCell, ResultFile::RefinedShifts, ResultFile::Integrated,   ResultFile::Merged,
    ResultFile::Rejected,    ResultFile::Ins,           ResultFile::Cif,          ResultFile::Mtz,
    ResultFile::Run};

/// The suffix of a file, with its dot and what comes before it.
inline QString resultSuffix(ResultFile file)
{
    static const char* const aszSuffix[] = {".log",
                                            ".sc",
                                            ".pk",
                                            ".uc",
                                            ".hkl",
                                            ".p4p",
                                            ".ipf",
                                            "_refined.ed3d",
                                            "_refined.uc",
                                            "_refined.sc",
                                            "_integrated.hkl",
                                            "_merged.hkl",
                                            "_rejected.csv",
                                            ".ins",
                                            ".cif",
                                            ".mtz",
                                            ".run.json"};
    return QLatin1String(aszSuffix[int(file)]);
}

/// The name under which a file is looked for where there is no file with the project's name; empty for files
/// that are only written.
inline QString fixedName(ResultFile file)
{
    switch (file) {
        case ResultFile::Shifts:
            return QStringLiteral("shifts.txt");
        case ResultFile::Peaks:
            return QStringLiteral("peaklist.txt");
        case ResultFile::Cell:
            return QStringLiteral("unitcell.txt");
        default:
            return {};
    }
}

}  // namespace tessera
