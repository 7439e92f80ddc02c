#include "simulate/truthfile.h"

#include "simulate/crystalstructures.h"
#include "simulate/frameimage.h"
#include "simulate/framewriter.h"
#include "simulate/secondlattice.h"
#include "simulate/truthgeometry.h"
#include "simulate/truthintensities.h"
#include "simulate/wholewriting.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessera {

namespace {
QString number(double df, int nDecimals)
{
    return QString::number(df, 'f', nDecimals);
}

template <typename Container>
QJsonArray jsonArray(const Container& list)
{
    QJsonArray array;
    for (double df : list) {
        array.append(df);
    }
    return array;
}

QJsonArray jsonMatrix(const Matrix3& mat)
{
    return {jsonArray(mat[0]), jsonArray(mat[1]), jsonArray(mat[2])};
}

bool readNumbers(const QJsonValue& value, int nCount, double* padf)
{
    const QJsonArray array = value.toArray();
    if (array.size() != nCount) {
        return false;
    }
    for (int i = 0; i < nCount; ++i) {
        if (!array[i].isDouble()) {
            return false;
        }
        padf[i] = array[i].toDouble();
    }
    return true;
}

bool readMatrix(const QJsonValue& value, Matrix3& mat)
{
    const QJsonArray array = value.toArray();
    return array.size() == 3 && readNumbers(array[0], 3, mat[0].data()) &&
           readNumbers(array[1], 3, mat[1].data()) && readNumbers(array[2], 3, mat[2].data());
}

// The last column stands only where there is a second lattice.
QJsonArray spotColumns(bool bSecond)
{
    const QString str = QStringLiteral("frame x y h k l counts snr excitation");
    return QJsonArray::fromStringList(
        (bSecond ? str + QStringLiteral(" lattice") : str).split(QLatin1Char(' ')));
}

// The sites of the asymmetric unit and the operations that make the others of them.
void writeAtoms(const CrystalStructure& structure, QJsonObject& root)
{
    QJsonArray arraySite;
    for (const AtomSite& site : structure.listSite) {
        arraySite.append(QJsonArray{site.strElement, site.dfX, site.dfY, site.dfZ});
    }
    root[QStringLiteral("sites")] = arraySite;
    root[QStringLiteral("generators")] = QJsonArray::fromStringList(structure.listGenerator);
}

// Writes the crystal, its cell and its symmetry.
void writeCrystal(const SimulatedSeries& series, QJsonObject& root)
{
    const SimulationParameters& p = series.parameters;
    root[QStringLiteral("crystal")] = p.strCrystal;
    const CrystalStructure* pStructure = findCrystalStructure(p.strCrystal);
    if (pStructure) {
        root[QStringLiteral("source")] = pStructure->strSource;
    }
    if (p.nSupercell > 1) {
        root[QStringLiteral("supercell")] = QJsonObject{
            {QStringLiteral("multiple"), p.nSupercell},
            {QStringLiteral("axis"), QString(QLatin1Char(char('a' + p.nSupercellAxis)))},
            {QStringLiteral("oddShare"), p.dfOddShare},
            {QStringLiteral("averageSpaceGroup"), pStructure ? pStructure->strSpaceGroup : QString()}};
    } else if (pStructure) {
        root[QStringLiteral("spaceGroup")] = pStructure->strSpaceGroup;
        root[QStringLiteral("spaceGroupNumber")] = pStructure->nSpaceGroup;
        writeAtoms(*pStructure, root);
    }
    const BravaisType type = trueBravaisType(series);
    root[QStringLiteral("system")] = type.strSystem;
    root[QStringLiteral("centring")] = type.strCentring;
    root[QStringLiteral("cell")] = jsonArray(series.adfCell);
    root[QStringLiteral("reciprocalBasis")] = jsonMatrix(series.matBasis);
    root[QStringLiteral("primitiveIndices")] = jsonMatrix(series.matPrimitive);
    if (series.latticeCount() > 1) {
        root[QStringLiteral("secondLattice")] = QJsonObject{
            {QStringLiteral("share"), p.dfSecondShare},
            {QStringLiteral("turnDegrees"), turnBetween(series.matBasis, series.matSecondBasis)},
            {QStringLiteral("turnAxis"), p.strSecondAxis},
            {QStringLiteral("reciprocalBasis"), jsonMatrix(series.matSecondBasis)}};
    }
}

// The second lattice, where the file has one; false when it has and it cannot be read.
bool readSecondLattice(const QJsonObject& root, SimulatedSeries& series)
{
    const QJsonValue value = root[QStringLiteral("secondLattice")];
    if (value.isUndefined()) {
        return true;
    }
    series.parameters.dfSecondShare = value[QStringLiteral("share")].toDouble();
    return series.parameters.dfSecondShare > 0 &&
           readMatrix(value[QStringLiteral("reciprocalBasis")], series.matSecondBasis);
}

bool readSpots(const QJsonObject& root, int nFrames, SimulatedSeries& series)
{
    const bool bSecond = series.latticeCount() > 1;
    const int nColumns = bSecond ? 10 : 9;
    if (root[QStringLiteral("spotColumns")] != spotColumns(bSecond)) {
        return false;
    }
    for (const QJsonValueRef value : root[QStringLiteral("spots")].toArray()) {
        double adf[10] = {};
        if (!readNumbers(value, nColumns, adf) || adf[0] < 0 || adf[0] >= nFrames || adf[9] < 0 ||
            adf[9] > 1) {
            return false;
        }
        series.listSpot.push_back({int(adf[0]), adf[1], adf[2], int(adf[3]), int(adf[4]), int(adf[5]), adf[6],
                                   adf[7], adf[8], int(adf[9])});
    }
    return true;
}
}  // namespace

BravaisType trueBravaisType(const SimulatedSeries& series)
{
    return bravaisTypeOf(transposed(inverseOf(series.matPrimitive * series.matBasis)));
}

QString writeTruthFile(const QString& strFileName, const SimulatedSeries& series)
{
    const SimulationParameters& p = series.parameters;
    QJsonObject root;
    writeCrystal(series, root);
    root[QStringLiteral("size")] = p.nSize;
    root[QStringLiteral("wavelength")] = p.dfWavelength;
    root[QStringLiteral("pixelSize")] = p.dfPixelSize;
    writeTrueGeometry(series, root);
    writeTrueExposure(series, root);
    root[QStringLiteral("spotSigma")] = p.dfSpotSigma;
    root[QStringLiteral("seed")] = double(p.nSeed);
    root[QStringLiteral("orientationSeed")] = p.nOrientation;
    root[QStringLiteral("beam")] = QJsonArray{p.dfCenterX, p.dfCenterY};
    root[QStringLiteral("stage")] = jsonArray(series.listStage);
    root[QStringLiteral("beamTilt")] = jsonArray(series.listBeamTilt);
    root[QStringLiteral("overall")] = jsonArray(series.listOverall);
    QJsonArray arrayShift;
    for (const auto& shift : series.listShift) {
        arrayShift.append(jsonArray(shift));
    }
    root[QStringLiteral("shifts")] = arrayShift;
    root[QStringLiteral("spotColumns")] = spotColumns(series.latticeCount() > 1);

    // The spots are written by hand: a line each, with the digits that matter.
    QByteArray data = QJsonDocument(root).toJson();
    data.truncate(data.lastIndexOf('}'));
    data = data.trimmed() + ",\n    \"spots\": [";
    bool bFirst = true;
    for (const TruthSpot& spot : series.listSpot) {
        data += bFirst ? "\n" : ",\n";
        bFirst = false;
        data += QStringLiteral("[%1,%2,%3,%4,%5,%6,%7,%8,%9")
                    .arg(spot.nFrame)
                    .arg(number(spot.dfX, 3), number(spot.dfY, 3))
                    .arg(spot.nH)
                    .arg(spot.nK)
                    .arg(spot.nL)
                    .arg(number(spot.dfCounts, 1), number(spot.dfSignalToNoise, 2),
                         number(spot.dfExcitation, 6))
                    .toLatin1();
        data += series.latticeCount() > 1 ? QByteArray(",") + QByteArray::number(spot.nLattice) + "]" : "]";
    }
    data += "\n],\n" + trueIntensityRows(series) + "\n}\n";
    return writeWhole(strFileName, data);
}

bool readTruthFile(const QString& strFileName, SimulatedSeries& series, QString& strError)
{
    QFile file(strFileName);
    if (!file.open(QIODevice::ReadOnly)) {
        strError = QStringLiteral("cannot open %1").arg(strFileName);
        return false;
    }
    QJsonParseError error;
    const QJsonObject root = QJsonDocument::fromJson(file.readAll(), &error).object();
    SimulatedSeries result;
    SimulationParameters& p = result.parameters;
    double adfBeam[2] = {0, 0};
    const QJsonArray arrayOverall = root[QStringLiteral("overall")].toArray();
    const QJsonArray arrayStage = root[QStringLiteral("stage")].toArray();
    const QJsonArray arrayBeamTilt = root[QStringLiteral("beamTilt")].toArray();
    const QJsonArray arrayShift = root[QStringLiteral("shifts")].toArray();
    const int nFrames = arrayOverall.size();
    bool bGood = error.error == QJsonParseError::NoError &&
                 readNumbers(root[QStringLiteral("cell")], 6, result.adfCell.data()) &&
                 readMatrix(root[QStringLiteral("reciprocalBasis")], result.matBasis) &&
                 readMatrix(root[QStringLiteral("primitiveIndices")], result.matPrimitive) &&
                 readNumbers(root[QStringLiteral("beam")], 2, adfBeam) && arrayShift.size() == nFrames &&
                 arrayStage.size() == nFrames && arrayBeamTilt.size() == nFrames &&
                 readSecondLattice(root, result);
    for (int n = 0; bGood && n < nFrames; ++n) {
        std::array<double, 2> shift{};
        bGood = readNumbers(arrayShift[n], 2, shift.data());
        result.listShift.push_back(shift);
        result.listOverall.push_back(arrayOverall[n].toDouble());
        result.listStage.push_back(arrayStage[n].toDouble());
        result.listBeamTilt.push_back(arrayBeamTilt[n].toDouble());
    }
    bGood = bGood && readTrueGeometry(root, nFrames, result) && readSpots(root, nFrames, result) &&
            readTrueIntensities(root, nFrames, result);
    if (!bGood) {
        strError = QStringLiteral("%1 is no truth file").arg(strFileName);
        return false;
    }
    p.strCrystal = root[QStringLiteral("crystal")].toString();
    p.nSupercell = root[QStringLiteral("supercell")].toObject()[QStringLiteral("multiple")].toInt(1);
    p.nFrames = nFrames;
    p.nSize = root[QStringLiteral("size")].toInt();
    p.dfWavelength = root[QStringLiteral("wavelength")].toDouble();
    p.dfPixelSize = root[QStringLiteral("pixelSize")].toDouble();
    p.dfSpotSigma = root[QStringLiteral("spotSigma")].toDouble();
    p.nOrientation = root[QStringLiteral("orientationSeed")].toInt();
    p.nSeed = std::uint64_t(root[QStringLiteral("seed")].toDouble());
    p.dfCenterX = adfBeam[0];
    p.dfCenterY = adfBeam[1];
    series = std::move(result);
    return true;
}

QString frameFileName(const SimulatedSeries& series, int nFrame)
{
    return QStringLiteral("%1_%2.%3")
        .arg(QString(series.parameters.strName).replace(QLatin1Char(' '), QLatin1Char('_')))
        .arg(nFrame + 1, 4, 10, QLatin1Char('0'))
        .arg(frameExtension(series.parameters.format));
}

namespace {

// The lines of a project for the lens: the azimuth of the longer side, and the third order as a correction.
QString lensLines(const SimulationParameters& p)
{
    QString str;
    if (p.bLensTold && p.lens.hasEllipse()) {
        str += QStringLiteral("ELLIPSEAMP %1\n").arg(number(p.lens.dfEllipseAmplitude, 5));
        str += QStringLiteral("ELLIPSEAZIMUTH %1\n").arg(number(p.lens.dfEllipseAzimuth, 5));
    }
    if (p.bLensTold && p.lens.hasThirdOrder()) {
        const std::array<double, 2> undo = thirdOrderThatUndoes(p.lens);
        str += QStringLiteral("THIRDORDERRADIAL %1\n").arg(number(undo[0], 5));
        str += QStringLiteral("THIRDORDERSPIRAL %1\n").arg(number(undo[1], 5));
        str += QStringLiteral("THIRDORDERRADIUS %1\n").arg(number(p.lens.dfRadius, 5));
    }
    return str;
}

}  // namespace

QString projectText(const SimulatedSeries& series)
{
    const SimulationParameters& p = series.parameters;
    QString str = QStringLiteral("# Simulated series of %1\n").arg(p.strCrystal);
    str += QStringLiteral("WAVELENGTH %1\n").arg(number(p.dfWavelength, 6));
    str += QStringLiteral("ROTATIONAXIS %1\n").arg(number(p.toldAxis(), 4));
    str += QStringLiteral("CCDPIXELSIZE %1\n").arg(number(p.dfPixelSize, 8));
    str += QStringLiteral("STRETCHINGAMP %1\n").arg(number(p.toldStretchAmplitude(), 4));
    str += QStringLiteral("STRETCHINGAZIMUTH %1\n").arg(number(p.toldStretchAzimuth(), 4));
    str += lensLines(p);
    str += QStringLiteral("FILELIST\n");
    for (int n = 0; n < p.nFrames; ++n) {
        str += QStringLiteral("FILE %1 %2 %3 %4\n")
                   .arg(frameFileName(series, n), number(series.listStage[n], 4),
                        number(series.listBeamTilt[n], 4), number(series.listOverall[n], 4));
    }
    return str + QStringLiteral("ENDFILELIST\n");
}

bool writeSeries(const SimulatedSeries& series, QString& strError)
{
    const SimulationParameters& p = series.parameters;
    const QDir dir(p.strDirectory);
    if (!dir.mkpath(QStringLiteral("."))) {
        strError = QStringLiteral("cannot make the folder %1").arg(p.strDirectory);
        return false;
    }
    const auto wrote = [&](const QString& strName, const QString& strReason) {
        if (!strReason.isEmpty()) {
            strError = QStringLiteral("cannot write %1: %2").arg(dir.filePath(strName), strReason);
        }
        return strReason.isEmpty();
    };
    for (int n = 0; n < p.nFrames; ++n) {
        const QString strFrame = frameFileName(series, n);
        if (!wrote(strFrame,
                   writeFrame(dir.filePath(strFrame), renderFrame(series, n), p.nSize, p.nSize, p.format))) {
            return false;
        }
    }
    QString strHot;
    for (size_t i = 0; i < series.listHotPixel.size(); ++i) {
        strHot += QStringLiteral("%1 %2 %3\n")
                      .arg(i + 1)
                      .arg(series.listHotPixel[i].x())
                      .arg(series.listHotPixel[i].y());
    }
    const QString strHotPixels = QStringLiteral("hotpixels.txt");
    const QString strTruth = p.strName + QStringLiteral("_truth.json");
    const QString strProject = p.strName + QStringLiteral(".ed3d");
    return wrote(strHotPixels, writeWhole(dir.filePath(strHotPixels), strHot.toLatin1())) &&
           wrote(strTruth, writeTruthFile(dir.filePath(strTruth), series)) &&
           wrote(strProject, writeWhole(dir.filePath(strProject), projectText(series).toUtf8()));
}

}  // namespace tessera
