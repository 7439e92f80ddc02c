// MergeOptions: the command line of tessera-merge.
#pragma once

#include "crystals/crystalsjob.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// The options of the program.
struct MergeOptions {
    CrystalsJobOptions job;
    QString strListFile;   ///< file with further folders of results; "-": the standard input; empty: none
    bool bStrict = false;  ///< an input that gives no crystal is a failure
};

/// The result of parsing. The options are valid only if both texts are empty.
struct ParsedMerge {
    MergeOptions options;
    QString strError;  ///< what is wrong with the command line; empty if nothing is
    QString strHelp;   ///< the text that --help or --version prints instead of a run
};

/// @param listArgument  the program first
ParsedMerge parseMergeOptions(const QStringList& listArgument);

/// The folders in a list, one per line; empty lines and lines that begin with # are ignored. A list with zero
/// bytes between the names (find -print0) is split at these, so that a name may contain a line break.
QStringList foldersOfList(const QByteArray& bytes);

}  // namespace tessera
