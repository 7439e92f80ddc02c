// Folders of results as the driver leaves them, of simulated crystals.
#pragma once

#include "integration/hklffile.h"
#include "tests/crystals/simulatedcrystals.h"
#include "tests/filebytes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessera {

inline QString sha256Of(const QByteArray& bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

/// Writes the record of a run and its list of intensities to FOLDER/NAME, made when missing.
/// @return that folder
inline QString writeResults(const QString& strFolder, const QString& strName, const Crystal& crystal)
{
    const QString strInner = strFolder + QLatin1Char('/') + strName;
    EXPECT_TRUE(QDir().mkpath(strInner));
    const QByteArray bytesList = hklfText(crystal.listIntensity, hklfScale(crystal.listIntensity));
    const QString strList = strInner + QLatin1Char('/') + strName + QStringLiteral("_integrated.hkl");
    writeBytes(strList, bytesList);
    QJsonArray arrayCell, arrayError;
    for (const double df : crystal.cell.numbers()) {
        arrayCell.append(df);
        arrayError.append(1e-3 * df);
    }
    const QJsonObject quality{
        {"integrated", true},
        {"laueClass", crystal.strLaueClass},
        {"laueClasses", QJsonArray{QJsonObject{{"class", crystal.strLaueClass}, {"centring", "P"}}}},
        {"spaceGroup", "P 1"},
        {"completeness", 0.5},
        {"unique", int(crystal.listIntensity.size()) / 2},
        {"rInt", 0.1},
        {"ccHalf", 0.99},
        {"cell", QJsonObject{{"parameters", arrayCell}, {"standardErrors", arrayError}}}};
    const QJsonObject record{
        {"format", "tessera run record"},
        {"ended", "2026-01-01T00:00:00Z"},
        {"parameters", QJsonObject{{"wavelength", QJsonObject{{"value", crystal.dfWavelength}}}}},
        {"stages",
         QJsonArray{QJsonObject{{"name", "integrate"}, {"found", QJsonObject{{"quality", quality}}}}}},
        {"files", QJsonArray{QJsonObject{{"path", strList}, {"sha256", sha256Of(bytesList)}}}}};
    writeBytes(strInner + QLatin1Char('/') + strName + QStringLiteral(".run.json"),
               QJsonDocument(record).toJson());
    return strInner;
}

/// Contents of all files of a folder by their names.
inline QMap<QString, QByteArray> filesIn(const QString& strFolder)
{
    QMap<QString, QByteArray> map;
    for (const QString& strName : QDir(strFolder).entryList(QDir::Files | QDir::Hidden)) {
        map[strName] = readBytes(strFolder + QLatin1Char('/') + strName);
    }
    return map;
}

}  // namespace tessera
