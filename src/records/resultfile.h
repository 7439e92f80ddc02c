// ResultFile: the files that runs write beside the project, and what their names end in.
#pragma once

#include <QLatin1String>
#include <QString>

namespace tessera {

/// A file whose name is that of the project with a suffix of its own.
enum class ResultFile {
    Log,
    Shifts,          ///< direct beam, and the shift of each frame
    Peaks,           ///< all peaks of all frames with their groups
    Cell,            ///< the reciprocal basis
    Reflections,     ///< h, k, l and intensities for structure solution
    P4P,             ///< the cell as a line of text
    IndexedPeaks,    ///< the indexed peaks of each frame
    RefinedProject,  ///< the project with the geometry as refined
    RefinedCell,     ///< the reciprocal basis as refined with it
    RefinedShifts,   ///< the direct beam as refined with it, and the shifts
    Integrated,      ///< all integrated intensities on one scale, HKLF 4
    Merged,          ///< the same with equivalent ones merged
    Rejected,        ///< table of the observations that take no part, and why
    Ins,             ///< instructions of SHELX: cell, symmetry, scattering factors
    Cif,             ///< cell, symmetry, experiment and merged intensities
    Mtz,             ///< merged intensities
    Run,             ///< what the run read, did, found and wrote
};

constexpr ResultFile g_aResultFile[] = {
    ResultFile::Log,         ResultFile::Shifts,        ResultFile::Peaks,        ResultFile::Cell,
    ResultFile::Reflections, ResultFile::P4P,           ResultFile::IndexedPeaks, ResultFile::RefinedProject,
    ResultFile::RefinedCell, ResultFile::RefinedShifts, ResultFile::Integrated,   ResultFile::Merged,
    ResultFile::Rejected,    ResultFile::Ins,           ResultFile::Cif,          ResultFile::Mtz,
    ResultFile::Run};

/// The suffix with its dot.
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

/// The name without the project's that a file is looked for under where there is none of the project's name;
/// empty for what is only written.
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
