// MergeFile: the files of a merging beside those of structure solution, and what their names end in.
#pragma once

#include <QLatin1String>
#include <QString>

namespace tessera {

enum class MergeFile {
    Record,    ///< what was read, done, found and written
    Crystals,  ///< table of all crystals
    Tree,      ///< tree of the lattices, and of the crystals of a group
    Report,    ///< a page for a browser
    Log,
};

/// The suffix with its dot.
inline QString mergeSuffix(MergeFile file)
{
    static const char* const aszSuffix[] = {".merge.json", "_crystals.csv", "_tree.svg", "_report.html",
                                            ".log"};
    return QLatin1String(aszSuffix[int(file)]);
}

}  // namespace tessera
