// The result files of an integration: their names, and writing all of them together.
#pragma once

#include "integration/integrationresult.h"
#include "integration/rejectedlist.h"
#include "integration/structuredata.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace tessera {

/// The files that were written.
struct IntegrationFiles {
    QStringList listFile;  ///< paths of the files
    QStringList
        listNote;  ///< one line for each file that got an unusual name or was left out, with the reason
};

/// Writes the intensities, the rejected observations and the files for structure solution, either all of them
/// or none. The two HKLF 4 files, the CIF and the MTZ have the same scale.
///
/// The user may have .ins, .cif and .mtz files of the same names. Such a file is replaced only if it was
/// written by this program and has not been changed since (sealedfile.h); otherwise the new file gets another
/// name. The .ins is written a second time under the name of its intensity file, because SHELX expects equal
/// names and NAME.hkl contains another list.
///
/// @param strBase    path of the files without suffix
/// @param listTaken  files that must not be replaced, such as a CIF that the run has read
/// @return what was written; nothing with the reason, and nothing written or replaced, if a file cannot be
///         written
[[nodiscard]] std::optional<IntegrationFiles> writeIntegrationFiles(const IntegrationResult& result,
                                                                    const StructureData& data,
                                                                    const QString& strBase,
                                                                    const QStringList& listTaken,
                                                                    QString* pstrReason = nullptr);

/// Takes a file of the set: its path and what it is to hold.
using FnTakeFile = std::function<void(const QString&, const QByteArray&)>;

/// The same files for a set of the caller's, which has others in it: hands them over one by one.
/// @return those that were handed over, and the notes
IntegrationFiles makeIntegrationFiles(const IntegrationResult& result, const StructureData& data,
                                      const QString& strBase, const QStringList& listTaken, ObservedOn on,
                                      const FnTakeFile& fnTake);

}  // namespace tessera
