// Reading of result folders: good ones, and those that tell no crystal.
#include "crystals/crystalreading.h"

#include "integration/hklffile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace tessera {
namespace {

void write(const QString& strFile, const QByteArray& bytes)
{
    QFile file(strFile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray hklText(double dfFactor)
{
    return hklfText({{{1, 0, 0}, 100, 2}, {{0, -12, 3}, 9999.99, 10}, {{0, 1, 3}, -0.5, 1}}, dfFactor);
}

/// A record as a run writes it, with what the reading looks at.
QJsonObject record(const QByteArray& bytesList,
                   const QString& strList = QStringLiteral("/elsewhere/k_integrated.hkl"))
{
    const QJsonObject quality{
        {"integrated", true},
        {"laueClass", "2/m"},
        {"laueClasses", QJsonArray{QJsonObject{{"class", "2/m"}, {"centring", "P"}}}},
        {"spaceGroup", "C 1 2/c 1"},
        {"completeness", 0.5},
        {"rInt", 0.1},
        {"cell", QJsonObject{{"parameters", QJsonArray{9.7, 8.9, 5.2, 90, 105.9, 90}},
                             {"standardErrors", QJsonArray{0.1, 0.1, 0.1, 0, 0.2, 0}}}}};
    return {
        {"format", "tessera run record"},
        {"ended", "2026-01-01T00:00:00Z"},
        {"inputs",
         QJsonObject{{"frames", QJsonArray{QJsonObject{{"sha256", "bb"}}, QJsonObject{{"sha256", "aa"}}}}}},
        {"parameters", QJsonObject{{"wavelength", QJsonObject{{"value", 0.0251}}}}},
        {"stages",
         QJsonArray{QJsonObject{{"name", "integrate"}, {"found", QJsonObject{{"quality", quality}}}}}},
        {"files",
         QJsonArray{
             QJsonObject{{"path", "/elsewhere/k.sc"}, {"sha256", "00"}},
             QJsonObject{
                 {"path", strList},
                 {"sha256", QString::fromLatin1(
                                QCryptographicHash::hash(bytesList, QCryptographicHash::Sha256).toHex())}}}}};
}

QByteArray text(const QJsonObject& object)
{
    return QJsonDocument(object).toJson();
}

TEST(CrystalReading, takesCellCentringAndIntensities)
{
    const QTemporaryDir dir;
    const QByteArray bytesList = hklText(1);
    write(dir.filePath(QStringLiteral("k_integrated.hkl")), bytesList);
    write(dir.filePath(QStringLiteral("k.run.json")), text(record(bytesList)));
    // Two runs of other names in the folder, one of which was renamed as a whole.
    write(dir.filePath(QStringLiteral("a_integrated.hkl")), hklText(0.5));
    write(dir.filePath(QStringLiteral("a.run.json")), text(record(hklText(0.5))));
    const ReadCrystals read = readCrystals({dir.path()});
    EXPECT_TRUE(read.listUnread.empty());
    ASSERT_EQ(read.listCrystal.size(), 2u);
    EXPECT_EQ(read.listCrystal[0].strName, QStringLiteral("a"));
    const Crystal& crystal = read.listCrystal[1];
    EXPECT_EQ(crystal.strName, QStringLiteral("k"));
    EXPECT_EQ(crystal.cell.beta, 105.9);
    EXPECT_EQ(crystal.cellErrors.beta, 0.2);
    EXPECT_EQ(crystal.chCentring, 'C');
    EXPECT_EQ(crystal.strLaueClass, QStringLiteral("2/m"));
    EXPECT_EQ(crystal.dfWavelength, 0.0251);
    EXPECT_EQ(crystal.frames.listHash, (std::vector<QByteArray>{"aa", "bb"}));
    ASSERT_EQ(crystal.listIntensity.size(), 3u);
    EXPECT_EQ(crystal.listIntensity[1].anIndex, (std::array<int, 3>{0, -12, 3}));
    EXPECT_EQ(crystal.listIntensity[1].dfIntensity, 9999.99);
    EXPECT_EQ(crystal.listIntensity[2].dfIntensity, -0.5);
    EXPECT_EQ(crystal.listIntensity[2].dfSigma, 1);
}

TEST(CrystalReading, takesTheRunThatFoundTheIntensitiesWhereALaterOneDidNot)
{
    const QTemporaryDir dir;
    const QByteArray bytesList = hklText(1);
    write(dir.filePath(QStringLiteral("k_integrated.hkl")), bytesList);
    QJsonObject later{{"format", "tessera run record"},
                      {"stages", QJsonArray{QJsonObject{{"name", "index"}}}},
                      {"files", QJsonArray{QJsonObject{{"path", "k.ipf"}, {"sha256", "11"}}}},
                      {"former", QJsonArray{record(hklText(3)), record(bytesList)}}};
    write(dir.filePath(QStringLiteral("k.run.json")), text(later));
    const ReadCrystals read = readCrystals({dir.path()});
    ASSERT_EQ(read.listCrystal.size(), 1u);
    EXPECT_EQ(read.listCrystal[0].cell.a, 9.7);
}

TEST(CrystalReading, tellsARecordThatMayNotBeReadFromNone)
{
    const QTemporaryDir dir;
    ASSERT_TRUE(QFile::setPermissions(dir.path(), QFile::Permissions(0x7755)));
    const QString strRecord = dir.filePath(QStringLiteral("k.run.json"));
    write(strRecord, text(record(hklText(1))));
    ASSERT_TRUE(QFile::setPermissions(strRecord, QFile::Permissions()));
    const uid_t user = ::geteuid();
    if (user == 0) {  // who may read all
        ASSERT_EQ(::seteuid(65534), 0);
    }
    const ReadCrystals read = readCrystals({dir.path()});
    ASSERT_EQ(::seteuid(user), 0);
    ASSERT_EQ(read.listUnread.size(), 1u);
    EXPECT_EQ(read.listUnread[0].strName, strRecord);
    EXPECT_TRUE(read.listUnread[0].strReason.contains("Permission denied"))
        << qPrintable(read.listUnread[0].strReason);
}

struct BadFolder {
    const char* szName;
    QByteArray bytesRecord;
    QByteArray bytesList;
    const char* szReason;
};

TEST(CrystalReading, tellsFoldersWithoutResultsAndHalfWrittenOnes)
{
    const QByteArray bytesList = hklText(1), bytesHalf = bytesList.left(40), bytesNoEnd = bytesList.left(60);
    QJsonObject failed{{"format", "tessera run record"}, {"reason", "No lattice was found."}};
    QJsonObject noCell = record(bytesList);
    noCell["stages"] = QJsonArray();
    QJsonObject slow = record(bytesList), noWavelength = record(bytesList);
    slow["parameters"] = QJsonObject{{"wavelength", QJsonObject{{"value", 1.54}}}};
    noWavelength.remove("parameters");
    QByteArray bytesNanometres = text(record(bytesList));
    bytesNanometres.replace("9.7", "0.97");
    const BadFolder aBad[] = {
        {"no record", {}, bytesList, "no record of a run"},
        {"half of a record", text(record(bytesList)).left(300), bytesList, "not a complete record"},
        {"a record of another program", "{}", bytesList, "not a complete record"},
        {"a run that failed", text(failed), bytesList, "No lattice was found."},
        {"half of a list", text(record(bytesList)), bytesHalf, "incomplete"},
        {"a list of another run", text(record(bytesList)), hklText(2), "from another run"},
        {"no list", text(record(bytesList)), {}, "cannot be read"},
        {"a list that was cut before its sum was taken", text(record(bytesNoEnd)), bytesNoEnd,
         "not a complete list"},
        {"a list without a reflection", text(record(hklfText({}, 1))), hklfText({}, 1),
         "no measured reflection"},
        {"a record without a cell", text(noCell), bytesList, "no cell"},
        {"X-rays", text(slow), bytesList, "1.54 as wavelength"},
        {"a record without a wavelength", text(noWavelength), bytesList, "0 as wavelength"},
        {"a cell in nanometres", bytesNanometres, bytesList, "an edge of 0.97"},
    };
    for (const BadFolder& bad : aBad) {
        const QTemporaryDir dir;
        if (!bad.bytesRecord.isEmpty()) {
            write(dir.filePath(QStringLiteral("k.run.json")), bad.bytesRecord);
        }
        if (!bad.bytesList.isEmpty()) {
            write(dir.filePath(QStringLiteral("k_integrated.hkl")), bad.bytesList);
        }
        const ReadCrystals read = readCrystals({dir.path()});
        EXPECT_TRUE(read.listCrystal.empty()) << bad.szName;
        ASSERT_EQ(read.listUnread.size(), 1u) << bad.szName;
        EXPECT_TRUE(read.listUnread[0].strReason.contains(QLatin1String(bad.szReason)))
            << bad.szName << ": " << qPrintable(read.listUnread[0].strReason);
    }
    EXPECT_EQ(readCrystals({QStringLiteral("/no/such/folder")}).listUnread.size(), 1u);
}

}  // namespace
}  // namespace tessera
