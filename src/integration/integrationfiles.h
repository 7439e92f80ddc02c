// The files of an integration: which there are, what they are called, and all of them in one go.
#pragma once

#include "integration/integrationresult.h"
#include "integration/structuredata.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// What became of the files.
struct IntegrationFiles {
    QStringList listFile;  ///< written, with their paths
    QStringList listNote;  ///< where a file got another name than its own, or was left out, and why
};

/// Writes the lists of intensities and of rejected observations, and the files for structure solution, all of
/// them or none. The two lists of HKLF 4, the CIF and the MTZ share one scale.
///
/// The .ins, .cif and .mtz have names that a file of the user's own may have, so that only files are replaced
/// that were written here and are unchanged (sealedfile.h); else the new one gets another name. The .ins is
/// written a second time beside the list of intensities that it belongs to, as SHELX goes by equal names, and
/// the usual .hkl is another list.
///
/// @param strBase    path of the files without the suffixes
/// @param listTaken  files that must not be replaced, such as a CIF that the run has read
/// @return false, with nothing written or replaced and the reason, where one cannot be written
[[nodiscard]] bool writeIntegrationFiles(const IntegrationResult& result, const StructureData& data,
                                         const QString& strBase, const QStringList& listTaken,
                                         IntegrationFiles& files, QString* pstrReason = nullptr);

}  // namespace tessera
