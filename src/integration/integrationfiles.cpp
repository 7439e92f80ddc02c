#include "integration/integrationfiles.h"

#include "integration/ciffile.h"
#include "integration/hklffile.h"
#include "integration/insfile.h"
#include "integration/mtzfile.h"
#include "integration/rejectedlist.h"
#include "records/fileset.h"
#include "records/resultfile.h"
#include "records/sealedfile.h"

#include <QFileInfo>

namespace tessera {

namespace {

QString shortName(const QString& strFile)
{
    return QFileInfo(strFile).fileName();
}

/// Collects the files that are written together.
class CCollector {
public:
    CCollector(const QString& strBase, const QStringList& listTaken, const FnTakeFile& fnTake)
        : m_strBase(strBase), m_listTaken(listTaken), m_fnTake(fnTake)
    {}

    void add(ResultFile file, const QByteArray& bytes) { addAt(m_strBase + resultSuffix(file), bytes); }

    /// Adds a sealed file; it gets another name if its name is taken.
    void addSealed(const QString& strBase, ResultFile file, const QByteArray& bytes)
    {
        const QString strWanted = strBase + resultSuffix(file);
        const QString strFile = nameForSealed(strBase, resultSuffix(file), m_listTaken);
        if (strFile.isEmpty()) {
            m_files.listNote.append(
                QStringLiteral("%1 is not replaced, as it was not written here or was changed since.")
                    .arg(shortName(strWanted)));
            return;
        }
        if (strFile != strWanted) {
            m_files.listNote.append(
                QStringLiteral(
                    "%1 stays, as it was not written here or was changed since: the new one is %2.")
                    .arg(shortName(strWanted), shortName(strFile)));
        }
        addAt(strFile, bytes);
    }

    const IntegrationFiles& files() const { return m_files; }

private:
    void addAt(const QString& strFile, const QByteArray& bytes)
    {
        m_fnTake(strFile, bytes);
        m_files.listFile.append(strFile);
    }

    const QString m_strBase;
    const QStringList m_listTaken;
    const FnTakeFile& m_fnTake;
    IntegrationFiles m_files;
};

}  // namespace

IntegrationFiles makeIntegrationFiles(const IntegrationResult& result, const StructureData& data,
                                      const QString& strBase, const QStringList& listTaken, ObservedOn on,
                                      const FnTakeFile& fnTake)
{
    CCollector collector(strBase, listTaken, fnTake);
    const double dfScale = hklfScale(data.listUnmerged);
    const QString strReflections = strBase + resultSuffix(ResultFile::Integrated);
    collector.add(ResultFile::Integrated, hklfText(data.listUnmerged, dfScale));
    collector.add(ResultFile::Merged, hklfText(data.listMerged, dfScale));
    collector.add(ResultFile::Rejected, rejectedText(result, on));
    const QByteArray bytesIns = insText(data, shortName(strReflections));
    collector.addSealed(strBase, ResultFile::Ins, bytesIns);
    const QString strOfReflections = strReflections.left(strReflections.lastIndexOf(QLatin1Char('.')));
    if (!collector.files().listFile.contains(strOfReflections + resultSuffix(ResultFile::Ins))) {
        collector.addSealed(strOfReflections, ResultFile::Ins, bytesIns);
    }
    collector.addSealed(strBase, ResultFile::Cif, cifText(data, dfScale));
    const QByteArray bytesMtz = mtzBytes(data, dfScale);
    if (!bytesMtz.isEmpty()) {
        collector.addSealed(strBase, ResultFile::Mtz, bytesMtz);
    }
    return collector.files();
}

std::optional<IntegrationFiles> writeIntegrationFiles(const IntegrationResult& result,
                                                      const StructureData& data, const QString& strBase,
                                                      const QStringList& listTaken, QString* pstrReason)
{
    CFileSet set;
    const IntegrationFiles files = makeIntegrationFiles(
        result, data, strBase, listTaken, ObservedOn::Frames,
        [&set](const QString& strFile, const QByteArray& bytes) { set.add(strFile, bytes); });
    if (!set.commit(pstrReason)) {
        return {};
    }
    return files;
}

}  // namespace tessera
