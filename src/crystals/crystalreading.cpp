#include "crystals/crystalreading.h"

#include "dataset/newproject.h"
#include "records/regularfile.h"
#include "records/resultfile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// A limit on the size of the files read, in bytes, so that a wrong file does not fill the memory. No run
/// comes near it: a reflection of an HKLF 4 file takes 29 bytes, so this is 37 million reflections.
constexpr qint64 g_nMostBytes = qint64(1) << 30;

/// Reads a file that is not larger than the limit.
/// @return false, with the reason
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
    // Not readAll(): files of the system (/proc, /sys) report no size, and reading one may never end.
    bytes = file.read(file.size());
    return true;
}

/// What a stage of the run found ("integrate", for example); empty if the run did not come to the stage.
QJsonObject foundByStage(const QJsonObject& record, const QString& strStage)
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

/// Takes a, b, c in Å and the angles in degrees, or their standard errors.
/// @return false, with the cell unchanged, unless these are six finite numbers, none of them negative
bool takeCell(const QJsonArray& listNumber, CellParameters& cell)
{
    if (listNumber.size() != 6) {
        return false;
    }
    const auto number = [&](int n) { return listNumber[n].toDouble(std::nan("")); };
    const CellParameters read = {number(0), number(1), number(2), number(3), number(4), number(5)};
    for (const double dfNumber : read.numbers()) {
        if (!std::isfinite(dfNumber) || dfNumber < 0) {
            return false;
        }
    }
    cell = read;
    return true;
}

/// The SHA-256 that a record has of its intensity file (NAME_integrated.hkl), in hexadecimal digits; empty if
/// the run wrote none. The file is found by its suffix, as a user may have renamed record and file together.
QString hashOfIntensityFile(const QJsonObject& record)
{
    const QJsonArray listFile = record.value(QStringLiteral("files")).toArray();
    for (const QJsonValue& value : listFile) {
        const QJsonObject file = value.toObject();
        if (file.value(QStringLiteral("path")).toString().endsWith(resultSuffix(ResultFile::Integrated))) {
            return file.value(QStringLiteral("sha256")).toString();
        }
    }
    return {};
}

/// The part of the record about the run that wrote this intensity file: the last run, or an earlier one under
/// "former". The record keeps an earlier run while its files still exist, since a later run may write no
/// intensities, for example if it only indexed anew. Empty if none of these runs wrote the file.
/// @param bytesFile  the content of the intensity file
QJsonObject runThatWrote(const QJsonObject& record, const QByteArray& bytesFile)
{
    const QString strHash = QString::fromLatin1(
        QCryptographicHash::hash(bytesFile, QCryptographicHash::Sha256).toHex());
    if (hashOfIntensityFile(record) == strHash) {
        return record;
    }
    const QJsonArray listFormer = record.value(QStringLiteral("former")).toArray();
    for (const QJsonValue& value : listFormer) {
        if (hashOfIntensityFile(value.toObject()) == strHash) {
            return value.toObject();
        }
    }
    return {};
}

/// Whether any run in the record, the last or a former one, wrote an intensity file.
bool anyRunWroteIntensities(const QJsonObject& record)
{
    const QJsonArray listFormer = record.value(QStringLiteral("former")).toArray();
    return !hashOfIntensityFile(record).isEmpty() ||
           std::any_of(listFormer.begin(), listFormer.end(), [](const QJsonValue& value) {
               return !hashOfIntensityFile(value.toObject()).isEmpty();
           });
}

/// The text for a record without an intensity file, with the reason that the run itself recorded.
QString whyNoIntensities(const QJsonObject& record)
{
    const QJsonObject quality =
        foundByStage(record, QStringLiteral("integrate")).value(QStringLiteral("quality")).toObject();
    QString strReason = quality.value(QStringLiteral("reason")).toString();
    if (strReason.isEmpty()) {
        strReason = record.value(QStringLiteral("reason")).toString();
    }
    return strReason.isEmpty() ? QStringLiteral("The run has found no intensities.")
                               : QStringLiteral("The run has found no intensities: %1").arg(strReason);
}

/// The centring: the first letter of the space group's symbol, or, if the run found no space group, that of
/// the lattice which the run found with its Laue class. P if the record has neither.
/// @param quality  what the stage "integrate" found about the quality of the data
char centringOf(const QJsonObject& quality)
{
    QString strLetter = quality.value(QStringLiteral("spaceGroup")).toString().left(1);
    const QJsonArray listClass = quality.value(QStringLiteral("laueClasses")).toArray();
    for (int n = 0; strLetter.isEmpty() && n < listClass.size(); ++n) {
        const QJsonObject candidate = listClass[n].toObject();
        if (candidate.value(QStringLiteral("class")).toString() ==
            quality.value(QStringLiteral("laueClass")).toString()) {
            strLetter = candidate.value(QStringLiteral("centring")).toString().left(1);
        }
    }
    return strLetter.isEmpty() ? 'P' : strLetter[0].toLatin1();
}

/// Reads reflections in the format HKLF 4 of SHELX: h, k, l in four columns each, I and σ(I) in eight each.
/// What stands behind σ(I) in a line is ignored. Reflections without a positive σ(I) are left out, as
/// they have no weight.
/// @return false if a line cannot be read or the last line, 0 0 0, is missing
bool takeReflections(const QByteArray& bytes, std::vector<ScaledIntensity>& list)
{
    const int nIndexWidth = 4, nNumberWidth = 8, nLine = 3 * nIndexWidth + 2 * nNumberWidth;
    for (const QByteArray& line : bytes.split('\n')) {
        if (line.size() < nLine) {
            return false;  // a cut line, or the end of a file without the line 0 0 0
        }
        ScaledIntensity intensity;
        bool bGood = true, bNumber = false;
        for (int n = 0; n < 3; ++n) {
            intensity.anIndex[n] = line.mid(n * nIndexWidth, nIndexWidth).trimmed().toInt(&bNumber);
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
        // The reflection 0 0 0 ends the list.
        if (intensity.anIndex == std::array<int, 3>{0, 0, 0}) {
            return true;
        }
        if (intensity.dfSigma > 0) {
            list.push_back(intensity);
        }
    }
    return false;
}

/// Checks for cell edges and a wavelength that are impossible in electron diffraction. They come from a
/// record that was changed by hand, or from a number in another unit, such as nm.
/// @return what is impossible; empty if nothing is
QString whyImpossible(const Crystal& crystal)
{
    // In Å. No translation of a crystal is shorter than dfLeastEdge, as atoms would overlap; the longest
    // edges, those of virus crystals, are about a third of dfMostEdge.
    const double dfLeastEdge = 1, dfMostEdge = 5000;
    for (const double df : {crystal.cell.a, crystal.cell.b, crystal.cell.c}) {
        if (!(df >= dfLeastEdge && df <= dfMostEdge)) {
            return QStringLiteral(
                       "Its record has a cell with an edge of %1 Å, which is impossible for a crystal.")
                .arg(df);
        }
    }
    return isElectronWavelength(crystal.dfWavelength)
               ? QString()
               : QStringLiteral("Its record has %1 as wavelength in Å, which is impossible for electrons.")
                     .arg(crystal.dfWavelength);
}

/// Fills all of a crystal but its name, folder and intensities. Standard errors of the cell stay as they are
/// if the record has none.
/// @param run  the record of the run that wrote the intensities
/// @return false if it has no cell
bool takeRun(const QJsonObject& run, Crystal& crystal)
{
    const QJsonObject quality =
        foundByStage(run, QStringLiteral("integrate")).value(QStringLiteral("quality")).toObject();
    const QJsonObject cell = quality.value(QStringLiteral("cell")).toObject();
    if (!takeCell(cell.value(QStringLiteral("parameters")).toArray(), crystal.cell)) {
        return false;
    }
    takeCell(cell.value(QStringLiteral("standardErrors")).toArray(), crystal.cellErrors);
    crystal.strLaueClass = quality.value(QStringLiteral("laueClass")).toString();
    crystal.chCentring = centringOf(quality);
    crystal.dfCompleteness = quality.value(QStringLiteral("completeness")).toDouble();
    crystal.nUnique = quality.value(QStringLiteral("unique")).toInt();
    crystal.dfRInt = quality.value(QStringLiteral("rInt")).toDouble(std::nan(""));
    crystal.dfCcHalf = quality.value(QStringLiteral("ccHalf")).toDouble(std::nan(""));
    crystal.dfWavelength = run.value(QStringLiteral("parameters"))
                               .toObject()
                               .value(QStringLiteral("wavelength"))
                               .toObject()
                               .value(QStringLiteral("value"))
                               .toDouble();
    crystal.frames = framesOfRun(run);
    crystal.strEnded = run.value(QStringLiteral("ended")).toString();
    return true;
}

/// Reads a record (NAME.run.json) and the intensity file beside it.
/// @return why these give no crystal; empty if they do
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
        return QStringLiteral("%1 is not a complete record of a run.").arg(info.fileName());
    }
    crystal.strFolder = info.absolutePath();
    crystal.strName = info.fileName();
    crystal.strName.chop(resultSuffix(ResultFile::Run).size());
    if (!anyRunWroteIntensities(record)) {
        return whyNoIntensities(record);
    }
    const QString strList = crystal.strName + resultSuffix(ResultFile::Integrated);  // the intensity file
    if (!readWhole(crystal.strFolder + QLatin1Char('/') + strList, bytes, strReason)) {
        return QStringLiteral("%1 cannot be read: %2.").arg(strList, strReason);
    }
    const QJsonObject run = runThatWrote(record, bytes);
    if (run.isEmpty()) {
        return QStringLiteral(
                   "%1 is not the list that the run has written: it is from another run, was changed, or is "
                   "incomplete.")
            .arg(strList);
    }
    if (!takeRun(run, crystal)) {
        return QStringLiteral("Its record has no cell of the intensities.");
    }
    strReason = whyImpossible(crystal);
    if (!strReason.isEmpty()) {
        return strReason;
    }
    if (!takeReflections(bytes, crystal.listIntensity)) {
        return QStringLiteral("%1 is not a complete list of reflections.").arg(strList);
    }
    return crystal.listIntensity.empty() ? QStringLiteral("It has no measured reflection.") : QString();
}

}  // namespace

ReadCrystals readCrystals(const QStringList& listFolder)
{
    ReadCrystals read;
    for (const QString& strFolder : listFolder) {
        const QFileInfoList listRecord = QDir(strFolder).entryInfoList(
            {QLatin1Char('*') + resultSuffix(ResultFile::Run)}, QDir::Files, QDir::Name);
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
