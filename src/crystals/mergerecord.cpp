#include "crystals/mergerecord.h"

#include "crystals/joblines.h"
#include "records/resultfile.h"
#include "road/celljson.h"
#include "road/filefacts.h"
#include "road/integrationjson.h"
#include "road/roadcommand.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <cmath>

namespace tessera {

const char* const g_pszMergeFormat = "tessera merge record";

namespace {

constexpr qint64 g_nLargestRecord = 256 << 20;  ///< bytes: ten thousand crystals have thirty millions
constexpr size_t g_nMostInCommand = 1000;       ///< folders that a line of the shell takes for certain

void putNumber(QJsonObject& object, const char* pszKey, double dfValue)
{
    if (std::isfinite(dfValue)) {
        object[QLatin1String(pszKey)] = dfValue;
    }
}

QJsonObject programObject()
{
    return {{QStringLiteral("name"), QStringLiteral("Tessera")},
            {QStringLiteral("version"), QStringLiteral(TESSERA_VERSION)},
            {QStringLiteral("qt"), QLatin1String(qVersion())}};
}

QJsonObject fileObject(const QString& strPath, const QByteArray& bytesSha256)
{
    QJsonObject object{{QStringLiteral("path"), strPath}};
    if (!bytesSha256.isEmpty()) {
        object[QStringLiteral("sha256")] = QString::fromLatin1(bytesSha256);
    }
    return object;
}

QJsonObject inputsObject(const CrystalsJobOptions& options, const CrystalsJobResult& result)
{
    QJsonArray arrayFile, arrayUnread;
    for (size_t n = 0; n < result.listCrystal.size(); ++n) {
        const QString strBase = result.listCrystal[n].strFolder + QLatin1Char('/') +
                                result.listCrystal[n].strName;
        arrayFile.append(
            fileObject(strBase + resultSuffix(ResultFile::Run), result.listFate[n].bytesRecordSha256));
        arrayFile.append(
            fileObject(strBase + resultSuffix(ResultFile::Integrated), result.listFate[n].bytesSha256));
    }
    if (!options.strKnownCellsFile.isEmpty()) {
        const std::vector<FileFacts> listFacts = factsOfFiles({options.strKnownCellsFile}, 1);
        arrayFile.append(fileObject(listFacts.front().strFile, listFacts.front().bytesSha256.toHex()));
    }
    for (const UnreadCrystal& unread : result.listUnread) {
        arrayUnread.append(QJsonObject{{QStringLiteral("path"), unread.strName},
                                       {QStringLiteral("reason"), unread.strReason}});
    }
    return {{QStringLiteral("files"), arrayFile}, {QStringLiteral("unread"), arrayUnread}};
}

QJsonObject optionsObject(const CrystalsJobOptions& options)
{
    const JudgementOptions& judgement = options.merge.judgement;
    QJsonObject object{{QStringLiteral("tolerance"), options.tolerance.dfLengths},
                       {QStringLiteral("toleranceAngles"), options.tolerance.dfAngles},
                       {QStringLiteral("keepAll"), options.merge.bKeepAll},
                       {QStringLiteral("least"), options.nLeastCrystals},
                       {QStringLiteral("rejection"), judgement.scaling.dfRejection}};
    if (judgement.dfDMin > 0) {
        object[QStringLiteral("dMin")] = judgement.dfDMin;
    }
    if (!judgement.strLaueClass.isEmpty()) {
        object[QStringLiteral("laueClass")] = judgement.strLaueClass;
    }
    if (judgement.nSpaceGroup > 0) {
        object[QStringLiteral("spaceGroup")] = judgement.nSpaceGroup;
    }
    if (!options.formula.isEmpty()) {
        object[QStringLiteral("formula")] = hillFormula(options.formula);
    }
    if (options.nUnits > 0) {
        object[QStringLiteral("formulaUnits")] = options.nUnits;
    }
    return object;
}

QJsonObject crystalObject(const CrystalsJobResult& result, size_t nCrystal)
{
    const Crystal& crystal = result.listCrystal[nCrystal];
    const CrystalFate& fate = result.listFate[nCrystal];
    QJsonObject object{{QStringLiteral("name"), crystal.strName},
                       {QStringLiteral("folder"), crystal.strFolder},
                       {QStringLiteral("used"), fate.bUsed},
                       {QStringLiteral("cell"), toArray(crystal.cell)},
                       {QStringLiteral("centring"), QString(QLatin1Char(crystal.chCentring))},
                       {QStringLiteral("laueClass"), crystal.strLaueClass},
                       {QStringLiteral("observed"), int(crystal.listIntensity.size())}};
    putNumber(object, "completeness", crystal.dfCompleteness);
    putNumber(object, "rInt", crystal.dfRInt);
    putNumber(object, "ccHalf", crystal.dfCcHalf);
    if (!fate.strReason.isEmpty()) {
        object[QStringLiteral("reason")] = fate.strReason;
    }
    if (fate.nGroup < 0) {
        return object;
    }
    const CompoundGroup& compound = result.listGroup[fate.nGroup];
    object[QStringLiteral("group")] = compound.strName;
    if (fate.nSettled >= 0) {
        const size_t n = size_t(fate.nSettled);
        const SettledCrystal& settled = compound.merged.listSettled[n];
        object[QStringLiteral("setting")] = settingText(compound, settled);
        object[QStringLiteral("alternatives")] = settled.nAlternatives;
        object[QStringLiteral("settingByIntensities")] = settled.nAlternatives > 1 && settled.bBySharing;
        putNumber(object, "correlation", settled.dfCorrelation);
        if (settled.nAlternatives > 1 && settled.bBySharing) {
            putNumber(object, "secondCorrelation", settled.dfSecond);
        }
        object[QStringLiteral("common")] = settled.nCommon;
        if (fate.bUsed) {
            putNumber(object, "scale", compound.merged.listScale[n].dfScale);
            putNumber(object, "b", compound.merged.listScale[n].dfB);
            putNumber(object, "ccHalfGain", compound.merged.listGain[n]);
        }
    }
    return object;
}

QJsonObject knownObject(const KnownCellMatch& match, const std::vector<KnownCell>& listKnown)
{
    const KnownCell& known = listKnown[match.nKnown];
    QJsonObject object{{QStringLiteral("name"), known.strName},
                       {QStringLiteral("cell"), toArray(known.cell)},
                       {QStringLiteral("centring"), QString(QLatin1Char(known.chCentring))},
                       {QStringLiteral("misfit"), match.dfMisfit},
                       {QStringLiteral("misfitEdges"), match.dfLengths},
                       {QStringLiteral("misfitAngles"), match.dfAngles}};
    if (!known.strSpaceGroup.isEmpty()) {
        object[QStringLiteral("spaceGroup")] = known.strSpaceGroup;
    }
    if (!match.strNext.isEmpty()) {
        object[QStringLiteral("next")] = match.strNext;
    }
    return object;
}

QJsonArray treeArray(const std::vector<Joint>& listJoint)
{
    QJsonArray array;
    for (const Joint& joint : listJoint) {
        array.append(QJsonArray{joint.nFirst, joint.nSecond, joint.dfHeight, joint.nSize});
    }
    return array;
}

QJsonObject groupObject(const CrystalsJobResult& result, const CompoundGroup& compound)
{
    QJsonArray arrayMember;
    for (const int n : compound.group.listMember) {
        arrayMember.append(n);
    }
    QJsonObject object{{QStringLiteral("name"), compound.strName},
                       {QStringLiteral("crystals"), arrayMember},
                       {QStringLiteral("reducedCell"), toArray(compound.cellMean)},
                       {QStringLiteral("reducedCellSpread"), toArray(compound.cellSpread)},
                       {QStringLiteral("merged"), compound.isMerged()}};
    if (compound.known) {
        object[QStringLiteral("known")] = knownObject(*compound.known, result.listKnown);
    }
    if (!compound.group.strRelation.isEmpty()) {
        object[QStringLiteral("relation")] = compound.group.strRelation;
    }
    if (!compound.isMerged()) {
        object[QStringLiteral("reason")] = compound.outcome.strReason;
        return object;
    }
    QJsonArray arrayOtherKind;
    for (const std::vector<int>& listKind : compound.merged.listOtherKind) {
        QJsonArray arrayKind;
        for (const int n : listKind) {
            arrayKind.append(n);
        }
        arrayOtherKind.append(arrayKind);
    }
    if (!arrayOtherKind.isEmpty()) {
        object[QStringLiteral("otherKinds")] = arrayOtherKind;
    }
    IntegrateResult integrate;
    integrate.result = compound.merged.result;
    integrate.files.listFile = compound.listFile;
    QJsonObject quality = integrationObject(integrate);
    for (const char* pszKey : {"integrated", "completenessByFrame", "scales", "decay", "forecast"}) {
        quality.remove(QLatin1String(pszKey));  // of the frames of one series
    }
    object[QStringLiteral("used")] = compound.usedCount();
    object[QStringLiteral("cell")] = toArray(compound.cell);
    object[QStringLiteral("cellSpread")] = toArray(compound.cellDeviation);
    object[QStringLiteral("quality")] = quality;
    object[QStringLiteral("tree")] = treeArray(compound.merged.listJoint);
    return object;
}

QSet<QString> pathsIn(const QJsonObject& record)
{
    QSet<QString> set;
    for (const auto& file : record[QStringLiteral("files")].toArray()) {
        set.insert(file.toObject()[QStringLiteral("path")].toString());
    }
    return set;
}

/// The earlier records whose files still exist beside those of this merging, the latest first.
QJsonArray stillStanding(const QJsonObject& former, QSet<QString> setWritten)
{
    QJsonArray arrayKept;
    for (const auto& record : generationsOf(former)) {
        QSet<QString> setFile = pathsIn(record.toObject()).subtract(setWritten);
        for (auto it = setFile.begin(); it != setFile.end();) {
            it = QFileInfo::exists(*it) ? std::next(it) : setFile.erase(it);
        }
        if (!setFile.isEmpty()) {
            arrayKept.append(record);
            setWritten.unite(setFile);
        }
    }
    return arrayKept;
}

}  // namespace

QStringList mergeArguments(const CrystalsJobOptions& options, const CrystalsJobResult& result)
{
    QStringList list = {
        QStringLiteral("tessera-merge"),
        QStringLiteral("--out=") + QDir::cleanPath(QFileInfo(options.strOutFolder).absoluteFilePath()),
        QStringLiteral("--name=") + result.strName};
    const CrystalsJobOptions usual;
    const auto put = [&list](const char* pszOption, const QString& strValue) {
        list.append(QLatin1String(pszOption) + QLatin1Char('=') + strValue);
    };
    const JudgementOptions& judgement = options.merge.judgement;
    if (!options.strKnownCellsFile.isEmpty()) {
        put("--known", QFileInfo(options.strKnownCellsFile).absoluteFilePath());
    }
    if (options.tolerance.dfLengths != usual.tolerance.dfLengths) {
        put("--tolerance", QString::number(options.tolerance.dfLengths));
    }
    if (options.tolerance.dfAngles != usual.tolerance.dfAngles) {
        put("--tolerance-angles", QString::number(options.tolerance.dfAngles));
    }
    if (options.merge.bKeepAll) {
        list.append(QStringLiteral("--keep-all"));
    }
    if (options.nLeastCrystals != usual.nLeastCrystals) {
        put("--least", QString::number(options.nLeastCrystals));
    }
    if (judgement.dfDMin > 0) {
        put("--d-min", QString::number(judgement.dfDMin));
    }
    if (!judgement.strLaueClass.isEmpty()) {
        put("--laue", judgement.strLaueClass);
    }
    if (judgement.nSpaceGroup > 0) {
        put("--space-group", QString::number(judgement.nSpaceGroup));
    }
    if (!options.formula.isEmpty()) {
        put("--formula", hillFormula(options.formula));
    }
    if (options.nUnits > 0) {
        put("--formula-units", QString::number(options.nUnits));
    }
    QStringList listFolder;
    for (const Crystal& crystal : result.listCrystal) {
        listFolder.append(crystal.strFolder);
    }
    listFolder.removeDuplicates();
    return size_t(listFolder.size()) <= g_nMostInCommand
               ? list + QStringList{QStringLiteral("--")} + listFolder
               : list;
}

QJsonArray generationsOf(const QJsonObject& record)
{
    if (record.isEmpty()) {
        return {};
    }
    QJsonObject last = record;
    QJsonArray arrayAll = last.take(QStringLiteral("former")).toArray();
    arrayAll.prepend(last);
    return arrayAll;
}

QJsonObject unfinishedRecord(const QJsonArray& arrayFile, const QJsonObject& former)
{
    QJsonObject record{{QStringLiteral("format"), QLatin1String(g_pszMergeFormat)},
                       {QStringLiteral("program"), programObject()},
                       {QStringLiteral("unfinished"), true},
                       {QStringLiteral("files"), arrayFile}};
    const QJsonArray arrayFormer = generationsOf(former);
    if (!arrayFormer.isEmpty()) {
        record[QStringLiteral("former")] = arrayFormer;
    }
    return record;
}

QJsonObject mergeRecord(const CrystalsJobOptions& options, const CrystalsJobResult& result,
                        const QJsonObject& former, const QJsonArray& arrayFile,
                        const QStringList& listRemoved)
{
    QJsonArray arrayCrystal, arrayGroup;
    for (size_t n = 0; n < result.listCrystal.size(); ++n) {
        arrayCrystal.append(crystalObject(result, n));
    }
    for (const CompoundGroup& compound : result.listGroup) {
        arrayGroup.append(groupObject(result, compound));
    }
    QJsonArray arrayInTree;
    for (const int n : result.groups.listInTree) {
        arrayInTree.append(n);
    }
    const QStringList listArgument = mergeArguments(options, result);
    QStringList listQuoted;
    for (const QString& strArgument : listArgument) {
        listQuoted.append(shellQuoted(strArgument));
    }
    QJsonObject record{
        {QStringLiteral("format"), QLatin1String(g_pszMergeFormat)},
        {QStringLiteral("program"), programObject()},
        {QStringLiteral("command"), listQuoted.join(QLatin1Char(' '))},
        {QStringLiteral("arguments"), QJsonArray::fromStringList(listArgument)},
        {QStringLiteral("options"), optionsObject(options)},
        {QStringLiteral("inputs"), inputsObject(options, result)},
        {QStringLiteral("crystals"), arrayCrystal},
        {QStringLiteral("groups"), arrayGroup},
        {QStringLiteral("tree"), QJsonObject{{QStringLiteral("crystals"), arrayInTree},
                                             {QStringLiteral("joints"), treeArray(result.groups.listJoint)}}},
        {QStringLiteral("notes"), QJsonArray::fromStringList(result.listNote)},
        {QStringLiteral("files"), arrayFile}};
    QSet<QString> setGone = pathsIn(record);
    for (const QString& strFile : listRemoved) {
        setGone.insert(strFile);
    }
    const QJsonArray arrayFormer = stillStanding(former, setGone);
    if (!arrayFormer.isEmpty()) {
        record[QStringLiteral("former")] = arrayFormer;
    }
    return record;
}

QJsonObject readMergeRecord(const QString& strFile)
{
    QFile file(strFile);
    if (!QFileInfo(strFile).isFile() || file.size() > g_nLargestRecord || !file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    return object[QStringLiteral("format")].toString() == QLatin1String(g_pszMergeFormat) ? object
                                                                                          : QJsonObject();
}

}  // namespace tessera
