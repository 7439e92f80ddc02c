#include "road/runrecord.h"

#include "dataset/framefiles.h"
#include "dataset/hotpixelfile.h"
#include "records/progress.h"
#include "records/whatwasthrown.h"
#include "records/wholefile.h"
#include "road/filefacts.h"
#include "road/roadjson.h"
#include "road/usedparameters.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const QString g_strFormat = QStringLiteral("tessera run record");
constexpr qint64 g_nLargestRecord = 64 << 20;  // bytes; the record of a series of 100 000 frames has 20 MB

/// The files that the road has read: frames, in the order of the series, and others.
struct Inputs {
    QStringList listFrame, listOther;
};

Inputs inputsOf(const RoadState& state)
{
    Inputs inputs;
    const RoadOptions& given = state.given;
    const auto other = [&inputs](const QString& strFile) {
        if (!strFile.isEmpty() && QFileInfo(strFile).isFile() && !inputs.listOther.contains(strFile)) {
            inputs.listOther.append(QFileInfo(strFile).absoluteFilePath());
        }
    };
    if (given.isProject()) {
        other(given.listInput.first());
    }
    inputs.listFrame = filesOfFrames(state.dataSet.allFiles());
    for (const QString& strFile :
         {given.strMaskFile, given.strCellFile, given.strKnownCellFile, given.strCalibrationFile}) {
        other(strFile);
    }
    if (!given.bIgnoreHotPixelList && !state.bHotPixelsListed && !state.dataSet.m_listHotPixel.isEmpty()) {
        other(state.strInputDir + QLatin1Char('/') + QFileInfo(fileOfHotPixels(state.dataSet)).fileName());
    }
    if (!state.dataSet.m_reading.listHotPixel.isEmpty()) {
        other(state.strInputDir + QLatin1Char('/') +
              QFileInfo(fileOfCameraHotPixels(state.dataSet)).fileName());
    }
    for (const QString& strFile : state.listEarlierFile) {
        other(strFile);
    }
    return inputs;
}

QJsonObject parametersObject(const RoadState& state)
{
    QJsonObject object;
    for (const UsedParameter& parameter : usedParameters(state)) {
        QJsonObject one;
        const double dfValue = parameter.strValue.toDouble();
        one[QStringLiteral("value")] = parameter.bNumber && std::isfinite(dfValue)
                                           ? QJsonValue(dfValue)
                                           : QJsonValue(parameter.strValue);
        if (!parameter.strUnit.isEmpty()) {
            one[QStringLiteral("unit")] = parameter.strUnit;
        }
        if (parameter.bGiven) {
            one[QStringLiteral("given")] = true;
        }
        object[parameter.strName] = one;
    }
    return object;
}

/// The judgement of the axis belongs to merging, that of the lattice to the last stage that analyses it.
QString stageOfJudgement(const QString& strPart)
{
    return strPart == QLatin1String("axis")      ? roadStageName(RoadStage::Merge)
           : strPart == QLatin1String("lattice") ? roadStageName(RoadStage::Cell)
                                                 : strPart;
}

QJsonObject judgementsOf(const RoadResults& results, const QString& strStage)
{
    QJsonObject object;
    for (const Judgement& judgement : results.listJudgement) {
        if (stageOfJudgement(judgement.strPart) == strStage) {
            object[judgement.strPart] = QJsonObject{
                {QStringLiteral("verdict"), verdictName(judgement.verdict)},
                {QStringLiteral("reason"), judgement.strReason},
                {QStringLiteral("figure"), judgement.dfFigure}};
        }
    }
    return object;
}

QJsonArray stagesArray(const RoadResults& results)
{
    QJsonArray array;
    for (const PartTime& time : results.listTime.value_or(QList<PartTime>())) {
        QJsonObject object{{QStringLiteral("name"), time.strPart},
                           {QStringLiteral("seconds"), time.dfSeconds}};
        const QJsonObject judgements = judgementsOf(results, time.strPart);
        if (!judgements.isEmpty()) {
            object[QStringLiteral("judgement")] = judgements;
        }
        const QJsonObject found = foundByStage(results, time.strPart);
        if (!found.isEmpty()) {
            object[QStringLiteral("found")] = found;
        }
        if (time.strPart == results.strFailed) {
            object[QStringLiteral("reason")] = results.end.strReason;
        }
        array.append(object);
    }
    return array;
}

QSet<QString> pathsIn(const QJsonArray& arrayFile)
{
    QSet<QString> set;
    for (const QJsonValue& file : arrayFile) {
        set.insert(file.toObject()[QStringLiteral("path")].toString());
    }
    return set;
}

/// Earlier runs with files that have not been replaced, the latest first. Runs without such files are
/// dropped, or the list would grow forever.
QJsonArray stillStanding(const QJsonObject& former, QSet<QString> setWritten)
{
    QJsonArray arrayAll, arrayKept;
    QJsonObject last = former;
    const QJsonArray arrayBefore = last.take(QStringLiteral("former")).toArray();
    arrayAll.append(last);
    for (const auto& run : arrayBefore) {
        arrayAll.append(run);
    }
    for (const auto& run : arrayAll) {
        const QSet<QString> setFile = pathsIn(run.toObject()[QStringLiteral("files")].toArray());
        if (!QSet<QString>(setFile).subtract(setWritten).isEmpty()) {
            arrayKept.append(run);
            setWritten.unite(setFile);
        }
    }
    return arrayKept;
}

QJsonObject readRecord(const QString& strFile)
{
    QFile file(strFile);
    if (!QFileInfo(strFile).isFile() || file.size() > g_nLargestRecord || !file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    return object[QStringLiteral("format")].toString() == g_strFormat ? object : QJsonObject();
}

}  // namespace

RoadCommand commandOfRoad(const RoadState& state)
{
    RoadOptions given = state.given;
    given.bIgnoreHotPixelList = given.bIgnoreHotPixelList || state.bHotPixelsListed;
    return commandOf(given);
}

QJsonObject foundByStage(const RoadResults& results, const QString& strStage)
{
    const int nStage = roadStageNames().indexOf(strStage);
    RoadResults found;
    switch (nStage < 0 ? RoadStage::Shifts : RoadStage(nStage)) {
        case RoadStage::Shifts:
            found.shifts = nStage < 0 ? std::nullopt : results.shifts;
            break;
        case RoadStage::Peaks:
            found.peaks = results.peaks;
            break;
        case RoadStage::Merge:
            found.axis = results.axis;
            found.merge = results.merge;
            break;
        case RoadStage::Cell:
            found.cell = results.cell;
            found.lattice = results.lattice;
            break;
        case RoadStage::Index:
            found.index = results.index;
            break;
        case RoadStage::Geometry:
            found.geometry = results.geometry;
            break;
        case RoadStage::Integrate:
            found.integrate = results.integrate;
            break;
        case RoadStage::Refine:
            found.refine = results.refine;
            break;
    }
    QJsonObject object = roadSummary(found);
    for (const char* pszKey : {"stage", "reached", "warnings"}) {  // these concern the whole road
        object.remove(QLatin1String(pszKey));
    }
    return object;
}

QJsonObject runRecord(const RoadState& state, const QJsonObject& former, CRunReport& report)
{
    const RoadResults& results = state.results;
    const Inputs inputs = inputsOf(state);
    QStringList listWritten = results.listFile;
    if (state.bHotPixelsListed) {
        listWritten.append(fileOfHotPixels(state.dataSet));
    }
    listWritten.append(fileOfProject(state.dataSet, ResultFile::Log));
    const QStringList listAll = inputs.listOther + inputs.listFrame + listWritten;
    CProgress progress(report, QStringLiteral("Check sums %v/%m"), 0, listAll.size());
    const std::vector<FileFacts> listFacts = factsOfFiles(listAll, state.options.jobs(), [&](int nDone) {
        progress.set(nDone);
        return report.goOn();
    });
    progress.end();
    const auto part = [&](int nFrom, int nCount) {
        return factsArray({listFacts.begin() + nFrom, listFacts.begin() + nFrom + nCount});
    };
    const int nOther = inputs.listOther.size(), nFrames = inputs.listFrame.size();
    const RoadCommand command = commandOfRoad(state);
    QJsonObject object{
        {QStringLiteral("format"), g_strFormat},
        {QStringLiteral("program"), QJsonObject{{QStringLiteral("name"), QStringLiteral("Tessera")},
                                                {QStringLiteral("version"), QStringLiteral(TESSERA_VERSION)},
                                                {QStringLiteral("qt"), QLatin1String(qVersion())}}},
        {QStringLiteral("begun"), state.begun.toString(Qt::ISODateWithMs)},
        {QStringLiteral("ended"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
        {QStringLiteral("command"), command.line()},
        {QStringLiteral("arguments"), QJsonArray::fromStringList(command.listArgument)},
        {QStringLiteral("inputs"), QJsonObject{{QStringLiteral("files"), part(0, nOther)},
                                               {QStringLiteral("frames"), part(nOther, nFrames)}}},
        {QStringLiteral("parameters"), parametersObject(state)},
        {QStringLiteral("reached"), results.end.finished()},
        {QStringLiteral("stages"), stagesArray(results)},
        {QStringLiteral("warnings"), QJsonArray::fromStringList(results.listWarning)},
        {QStringLiteral("files"), part(nOther + nFrames, listWritten.size())}};
    if (!results.end.finished()) {
        object[QStringLiteral("failed")] = results.strFailed;
        object[QStringLiteral("reason")] = results.end.strReason;
    }
    if (!command.listUnsaid.isEmpty()) {
        object[QStringLiteral("withoutOption")] = QJsonArray::fromStringList(command.listUnsaid);
    }
    const QJsonArray arrayFormer = former.isEmpty()
                                       ? QJsonArray()
                                       : stillStanding(former,
                                                       pathsIn(object[QStringLiteral("files")].toArray()));
    if (!arrayFormer.isEmpty()) {
        object[QStringLiteral("former")] = arrayFormer;
    }
    return object;
}

QString writeRunRecord(const RoadState& state, CRunReport& report)
{
    if (!state.bResultFolder) {
        return {};
    }
    const QString strFile = fileOfProject(state.dataSet, ResultFile::Run);
    const QJsonObject former = readRecord(strFile);
    if (former.isEmpty() && QFileInfo::exists(strFile) && QFileInfo(strFile).size() > 0) {
        return QStringLiteral("%1 is there already and is no record of a run: it stays as it is.")
            .arg(strFile);
    }
    QString strReason;
    try {
        static_cast<void>(
            writeWholeFile(strFile, QJsonDocument(runRecord(state, former, report)).toJson(), &strReason));
    } catch (...) {  // lack of memory must not prevent the road from ending properly
        strReason = whatWasThrown();
    }
    return strReason;
}

}  // namespace tessera
