#include "crystals/crystalreading.h"

#include "records/regularfile.h"
#include "records/resultfile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace tessera {

namespace {

/// Greater than any list or record of a run: HKLF 4 has 29 bytes a reflection.
constexpr qint64 g_nMostBytes = qint64(1) << 30;

bool readWhole(const QString& strFile, QByteArray& bytes, QString& strReason)
{
    QFile file(strFile);
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        return false;
    }
    if (file.size() > g_nMostBytes) {
        strReason = QStringLiteral("it is larger than any list of a run");
        return false;
    }
    bytes = file.readAll();
    return true;
}

QJsonObject stageOf(const QJsonObject& record, const QString& strStage)
{
    const QJsonArray listStage = record.value(QStringLiteral("stages")).toArray();
    for (const QJsonValue& value : listStage) {
        const QJsonObject stage = value.toObject();
        if (stage.value(QStringLiteral("name")).toString() == strStage) {
            return stage.value(QStringLiteral("found")).toObject();
        }
    }
    return {};
}

bool takeCell(const QJsonArray& listNumber, CellParameters& cell)
{
    if (listNumber.size() != 6) {
        return false;
    }
    const auto number = [&](int n) { return listNumber[n].toDouble(std::nan("")); };
    cell = {number(0), number(1), number(2), number(3), number(4), number(5)};
    for (const double dfNumber : cell.numbers()) {
        if (!std::isfinite(dfNumber) || dfNumber < 0) {
            return false;
        }
    }
    return true;
}

/// The sum that the record has of a file which the run wrote; empty where it wrote none of this name.
QString hashOf(const QJsonObject& record, const QString& strFileName)
{
    const QJsonArray listFile = record.value(QStringLiteral("files")).toArray();
    for (const QJsonValue& value : listFile) {
        const QJsonObject file = value.toObject();
        if (QFileInfo(file.value(QStringLiteral("path")).toString()).fileName() == strFileName) {
            return file.value(QStringLiteral("sha256")).toString();
        }
    }
    return {};
}

/// Lines of HKLF 4 up to the line of zeros.
bool takeReflections(const QByteArray& bytes, std::vector<ScaledIntensity>& list)
{
    const int nIndexWidth = 4, nNumberWidth = 8, nLine = 3 * nIndexWidth + 2 * nNumberWidth;
    for (const QByteArray& line : bytes.split('\n')) {
        if (line.size() < nLine) {
            return false;  // the end is missing
        }
        ScaledIntensity intensity;
        bool bGood = true, bNumber = false;
        for (int n = 0; n < 3; ++n) {
            intensity.anIndex[size_t(n)] = line.mid(n * nIndexWidth, nIndexWidth).trimmed().toInt(&bNumber);
            bGood = bGood && bNumber;
        }
        intensity.dfIntensity = line.mid(3 * nIndexWidth, nNumberWidth).trimmed().toDouble(&bNumber);
        bGood = bGood && bNumber;
        intensity.dfSigma =
            line.mid(3 * nIndexWidth + nNumberWidth, nNumberWidth).trimmed().toDouble(&bNumber);
        bGood = bGood && bNumber && std::isfinite(intensity.dfIntensity) && std::isfinite(intensity.dfSigma);
        if (!bGood) {
            return false;
        }
        if (intensity.anIndex == std::array<int, 3>{0, 0, 0}) {
            return true;
        }
        if (intensity.dfSigma > 0) {
            list.push_back(intensity);
        }
    }
    return false;
}

/// @return why it gives no crystal; empty: it does
QString readCrystal(const QString& strRecord, Crystal& crystal)
{
    const QFileInfo info(strRecord);
    QByteArray bytes;
    QString strReason;
    if (!readWhole(strRecord, bytes, strReason)) {
        return QStringLiteral("Its record cannot be read: %1.").arg(strReason);
    }
    const QJsonObject record = QJsonDocument::fromJson(bytes).object();
    if (record.value(QStringLiteral("format")).toString() != QLatin1String("tessera run record")) {
        return QStringLiteral("%1 is no record of a run.").arg(info.fileName());
    }
    const QJsonObject found = stageOf(record, QStringLiteral("integrate"));
    const QJsonObject quality = found.value(QStringLiteral("quality")).toObject();
    const QJsonObject cell = quality.value(QStringLiteral("cell")).toObject();
    if (!takeCell(cell.value(QStringLiteral("parameters")).toArray(), crystal.cell)) {
        return QStringLiteral("The run has found no intensities.");
    }
    takeCell(cell.value(QStringLiteral("standardErrors")).toArray(), crystal.cellErrors);
    crystal.strFolder = info.absolutePath();
    crystal.strName = info.fileName();
    crystal.strName.chop(resultSuffix(ResultFile::Run).size());
    crystal.strLaueClass = quality.value(QStringLiteral("laueClass")).toString();
    const QJsonArray listClass = quality.value(QStringLiteral("laueClasses")).toArray();
    for (const QJsonValue& value : listClass) {
        const QJsonObject candidate = value.toObject();
        const QString strCentring = candidate.value(QStringLiteral("centring")).toString();
        if (candidate.value(QStringLiteral("class")).toString() == crystal.strLaueClass &&
            strCentring.size() == 1) {
            crystal.chCentring = strCentring[0].toLatin1();
            break;
        }
    }
    crystal.dfCompleteness = quality.value(QStringLiteral("completeness")).toDouble();
    crystal.dfRInt = quality.value(QStringLiteral("rInt")).toDouble(std::nan(""));
    crystal.dfCcHalf = quality.value(QStringLiteral("ccHalf")).toDouble(std::nan(""));
    crystal.dfWavelength = record.value(QStringLiteral("parameters"))
                               .toObject()
                               .value(QStringLiteral("wavelength"))
                               .toObject()
                               .value(QStringLiteral("value"))
                               .toDouble();
    const QString strList = crystal.strName + resultSuffix(ResultFile::Integrated);
    if (!readWhole(crystal.strFolder + QLatin1Char('/') + strList, bytes, strReason)) {
        return QStringLiteral("%1 cannot be read: %2.").arg(strList, strReason);
    }
    const QString strHash = hashOf(record, strList);
    if (strHash.isEmpty() ||
        QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex() != strHash.toLatin1()) {
        return QStringLiteral(
                   "%1 is not the list that the run has written: it is of another run, was "
                   "changed, or is not whole.")
            .arg(strList);
    }
    if (!takeReflections(bytes, crystal.listIntensity)) {
        return QStringLiteral("%1 is no whole list of reflections.").arg(strList);
    }
    return crystal.listIntensity.empty() ? QStringLiteral("It has no measured reflection.") : QString();
}

}  // namespace

ReadCrystals readCrystals(const QStringList& listFolder)
{
    ReadCrystals read;
    for (const QString& strFolder : listFolder) {
        const QFileInfoList listRecord = QDir(strFolder).entryInfoList(
            {QLatin1Char('*') + resultSuffix(ResultFile::Run)}, QDir::Files | QDir::Readable, QDir::Name);
        if (listRecord.isEmpty()) {
            read.listUnread.push_back(
                {strFolder,
                 QStringLiteral("There is no record of a run (*%1).").arg(resultSuffix(ResultFile::Run))});
        }
        for (const QFileInfo& info : listRecord) {
            Crystal crystal;
            const QString strReason = readCrystal(info.absoluteFilePath(), crystal);
            if (strReason.isEmpty()) {
                read.listCrystal.push_back(std::move(crystal));
            } else {
                read.listUnread.push_back({info.absoluteFilePath(), strReason});
            }
        }
    }
    return read;
}

}  // namespace tessera
