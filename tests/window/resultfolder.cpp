#include "tests/window/resultfolder.h"

#include "simulate/structurefactor.h"
#include "tests/filebytes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <random>

namespace tessera {

namespace {

QByteArray reflectionList(const CrystalStructure& structure, std::mt19937& random)
{
    std::normal_distribution<double> noise;
    std::uniform_real_distribution<double> share(0, 1);
    QByteArray bytes;
    const auto add = [&](int nH, int nK, int nL, double dfIntensity, double dfSigma) {
        char aszLine[40];
        std::snprintf(aszLine, sizeof aszLine, "%4d%4d%4d%8.2f%8.2f\n", nH, nK, nL, dfIntensity, dfSigma);
        bytes += aszLine;
    };
    for (const Reflection& reflection : CStructureFactor(structure).reflections(0.8)) {
        if (share(random) < 0.5) {
            const double dfTrue = 20 * reflection.dfSquareF, dfSigma = 0.03 * dfTrue + 0.05;
            add(reflection.nH, reflection.nK, reflection.nL, dfTrue + dfSigma * noise(random), dfSigma);
        }
    }
    add(0, 0, 0, 0, 0);
    return bytes;
}

}  // namespace

void writeResultFolder(const QString& strFolder, const QString& strName, const QString& strCompound,
                       int nSeed)
{
    std::mt19937 random{unsigned(nSeed)};
    const CrystalStructure& structure = *findCrystalStructure(strCompound);
    const std::array<double, 6> adfTrue = cellOfReciprocalBasis(
        CStructureFactor(structure).reciprocalBasis());
    const double dfOff = std::uniform_real_distribution<double>(0.997, 1.003)(random);
    const bool bQuartz = strCompound == QLatin1String("quartz");
    QJsonArray listNumber, listError;
    for (int n = 0; n < 6; ++n) {
        listNumber.append(adfTrue[n] * (n < 3 ? dfOff : 1));
        listError.append(0.001);
    }
    const QString strClass = bQuartz ? "-3m1" : "-1";
    const QJsonObject quality{
        {"cell", QJsonObject{{"parameters", listNumber}, {"standardErrors", listError}}},
        {"laueClass", strClass},
        {"laueClasses", QJsonArray{QJsonObject{{"class", strClass}, {"centring", "P"}}}},
        {"completeness", 0.5},
        {"unique", 123},
        {"rInt", 0.05},
        {"ccHalf", 0.98}};
    const QByteArray bytesList = reflectionList(structure, random);
    ASSERT_TRUE(QDir().mkpath(strFolder));
    const QString strList = writeBytes(strFolder + '/' + strName + "_integrated.hkl", bytesList);
    const QByteArray bytesHash = QCryptographicHash::hash(bytesList, QCryptographicHash::Sha256).toHex();
    const QJsonObject record{
        {"format", "tessera run record"},
        {"parameters", QJsonObject{{"wavelength", QJsonObject{{"value", 0.0251}}}}},
        {"stages",
         QJsonArray{QJsonObject{{"name", "integrate"}, {"found", QJsonObject{{"quality", quality}}}}}},
        {"files", QJsonArray{QJsonObject{{"path", strList}, {"sha256", QString(bytesHash)}}}}};
    writeBytes(strFolder + '/' + strName + ".run.json", QJsonDocument(record).toJson());
}

}  // namespace tessera
