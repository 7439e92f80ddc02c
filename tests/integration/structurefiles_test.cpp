// The files for structure solution: read by gemmi, compared with lines written by hand, and never replacing
// the user's files.

#include "integration/chemicalformula.h"
#include "integration/ciffile.h"
#include "integration/electronscattering.h"
#include "integration/hklffile.h"
#include "integration/insfile.h"
#include "integration/integrationfiles.h"
#include "integration/mtzfile.h"
#include "integration/reflectionflags.h"
#include "records/sealedfile.h"
#include "simulate/crystalstructures.h"
#include "simulate/scatteringfactors.h"
#include "tests/filebytes.h"
#include "tests/imagefiles/filesizelimit.h"

#include <gemmi/mtz.hpp>

#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <set>

namespace tessera {

namespace {

/// Three reflections of a C-centred monoclinic crystal, the second of them measured twice, once as an
/// outlier.
IntegrationResult smallResult()
{
    IntegrationResult result;
    result.cell = {9.746, 8.899, 5.251, 90, 105.63, 90};
    result.cellErrors = {0.0123, 0.004, 0.002, 0, 0.03, 0};
    result.chosen.symmetry.ops = gemmi::find_spacegroup_by_name("C 1 2/m 1")->operations();
    result.chosen.strClass = QStringLiteral("2/m");
    result.series.listTilt = {-60, 0, 60};
    result.spaceGroup = SpaceGroupCandidate{15, QStringLiteral("C 1 2/c 1"), 1, {}, true};
    const auto add = [&](std::array<int, 3> anIndex, double dfIntensity, double dfSigma, unsigned nFlags) {
        Observation observation;
        observation.anIndex = anIndex;
        observation.dfFrame = 1.3;
        observation.dfIntensity = dfIntensity;
        observation.dfSigma = dfSigma;
        observation.dfScale = 2;
        observation.nFlags = nFlags;
        result.integrated.listObservation.push_back(observation);
    };
    add({-2, 0, 2}, 123456.7, 100, 0);
    add({1, 1, 0}, -70, 35.5, 0);
    add({1, -1, 0}, 900, 10, FlagOutlier);
    add({0, 2, 0}, 50, 0, FlagSlow);
    add({0, 2, 0}, std::nan(""), 1, 0);
    result.scaling.listRejected = {{2, 26.71, QStringLiteral("too strong, \"by far\"")}};
    result.quality.listMerged = {{{1, 1, 0}, -140, 71, 1}, {{-2, 0, 2}, 246913.4, 200, 1}};
    result.quality.overall.dfRInt = 0.0816;
    return result;
}

StructureData smallData(const char* pszFormula = "MgCaSi2O6")
{
    StructureOptions options;
    options.strName = QStringLiteral("diopside");
    options.dfWavelength = 0.02508;
    if (pszFormula) {
        options.formula = *chemicalFormula(QLatin1String(pszFormula));
    }
    return structureData(smallResult(), options);
}

QStringList namesIn(const QTemporaryDir& dir)
{
    return QDir(dir.path()).entryList(QDir::Files, QDir::Name);
}

}  // namespace

TEST(StructureFiles, HklfHoldsWhatWasMeasuredOnAScaleThatFits)
{
    const StructureData data = smallData();
    EXPECT_EQ(data.nRejected, 3);
    const double dfScale = hklfScale(data.listUnmerged);
    EXPECT_DOUBLE_EQ(dfScale, 0.01);
    EXPECT_EQ(hklfText(data.listUnmerged, dfScale),
              "  -2   0   2 2469.13    2.00\n"
              "   1   1   0   -1.40    0.71\n"
              "   0   0   0    0.00    0.00\n");
    // Small sigmas get a column more, and none becomes 0; a lone negative has room for its sign.
    EXPECT_DOUBLE_EQ(hklfScale({{{1, 0, 0}, 5e6, 7}, {{2, 0, 0}, 10, 7}}), 0.01);
    EXPECT_TRUE(hklfText({{{1, 0, 0}, 5, 1e-9}}, 1).startsWith("   1   0   0    5.00    0.01\n"));
    EXPECT_TRUE(hklfText({{{1, 0, 0}, -4e7, 1e5}}, hklfScale({{{1, 0, 0}, -4e7, 1e5}})).contains("-400.00"));
    EXPECT_EQ(hklfText({}, hklfScale({})), "   0   0   0    0.00    0.00\n");
}

TEST(StructureFiles, InsHoldsCellSymmetryAndContent)
{
    const QByteArray bytes = insText(smallData(), "diopside_integrated.hkl");
    EXPECT_TRUE(isSealed(bytes));
    for (const char* pszLine :
         {"TITL diopside in C 1 2/c 1\n", "CELL 0.025080 9.7460 8.8990 5.2510 90.000 105.630 90.000\n",
          "ZERR 4 0.0123 0.0040 0.0020 0.000 0.030 0.000\n", "LATT 7\nSYMM -X,Y,-Z+1/2\nREM",
          "UNIT 4 4 8 24\nHKLF 4\nEND\n", "\nSFAC Mg 0.7", "    0.11795 0.0 0.0 0.0 1.41 24.305\n"}) {
        EXPECT_TRUE(bytes.contains(pszLine)) << pszLine << bytes.constData();
    }
    for (const QByteArray& bytesLine : bytes.split('\n')) {
        EXPECT_LE(bytesLine.size(), 80) << bytesLine.constData();
    }
    EXPECT_TRUE(insText(smallData(nullptr), "x.hkl").contains("all atoms are taken as carbon"));
    // Acentric: LATT is negative. A centre that is not in the origin of this choice: the other choice.
    IntegrationResult result = smallResult();
    result.spaceGroup->strName = QStringLiteral("P 31 2 1");
    EXPECT_TRUE(insText(structureData(result, {}), "x").contains("LATT -1\nSYMM "));
    result.spaceGroup->strName = QStringLiteral("F d -3 m:1");
    EXPECT_EQ(structureData(result, {}).pSpaceGroup->ext, '2');
    result.spaceGroup.reset();
    EXPECT_STREQ(structureData(result, {}).pSpaceGroup->hm, "C 1 2/m 1") << "that of the Laue class";
}

TEST(StructureFiles, CifHoldsCellExperimentAndReflections)
{
    const QByteArray bytes = cifText(smallData(), 0.01);
    EXPECT_TRUE(isSealed(bytes));
    for (const char* pszLine :
         {"_cell_length_a 9.746(12)\n", "_cell_angle_alpha 90.000\n", "_cell_formula_units_Z 4\n",
          "_diffrn_radiation_probe electron\n", "_diffrn_source_voltage 200.0\n",
          "_diffrn_reflns_av_R_equivalents 0.0816\n", "\n-2 0 2 2469.134 2.000\n", "\n1 1 0 -1.400 0.710\n",
          "_space_group_name_H-M_alt 'C 1 2/c 1'\n", "\nx+1/2,-y+1/2,z+1/2\n"}) {
        EXPECT_TRUE(bytes.contains(pszLine)) << pszLine << bytes.constData();
    }
    EXPECT_FALSE(cifText(structureData(smallResult(), {}), 1).contains("_chemical_formula"));
    // If no reflection was measured twice, quantities that are NaN are omitted.
    StructureData once = smallData();
    EXPECT_TRUE(cifText(once, 1).contains("Rmeas 0.0000"));
    once.quality.dfRInt = once.quality.dfRMeas = once.quality.dfCcHalf = std::nan("");
    const QByteArray bytesOnce = cifText(once, 1);
    EXPECT_FALSE(bytesOnce.contains("nan"));
    EXPECT_FALSE(bytesOnce.contains("Rmeas"));
}

TEST(StructureFiles, GemmiReadsTheMtz)
{
    const StructureData data = smallData();
    const QByteArray bytesMtz = mtzBytes(data, 0.01);
    EXPECT_TRUE(isSealed(bytesMtz));
    QTemporaryDir dir;
    const gemmi::Mtz mtz = gemmi::read_mtz_file(writeBytes(dir.filePath("x.mtz"), bytesMtz).toStdString());
    EXPECT_EQ(mtz.nreflections, 2);
    EXPECT_STREQ(mtz.spacegroup->hm, "C 1 2/c 1");
    EXPECT_NEAR(mtz.cell.beta, 105.63, 1e-6);
    EXPECT_NEAR(mtz.dataset(1).wavelength, 0.02508, 1e-6);
    ASSERT_NE(mtz.column_with_label("IMEAN"), nullptr);
    // In the asymmetric unit, ordered; -2 0 2 is in CCP4's, as its l is above 0.
    EXPECT_FLOAT_EQ(mtz.column_with_label("IMEAN")->at(0), 2469.134f);
    EXPECT_FLOAT_EQ(mtz.column_with_label("SIGIMEAN")->at(1), 0.71f);
}

TEST(StructureFiles, RejectedOnesAreListedWithTheirReason)
{
    IntegrationResult result = smallResult();
    QTemporaryDir dir;
    ASSERT_TRUE(writeIntegrationFiles(result, smallData(), dir.filePath("d"), {}));
    EXPECT_EQ(readBytes(dir.filePath("d_rejected.csv")),
              "h,k,l,frame,x,y,intensity,sigma,deviation,why\n"
              "1,-1,0,2.3,0.0,0.0,1800,20,26.7,\"outlier; too strong, 'by far'\"\n"
              "0,2,0,2.3,0.0,0.0,,,,\"slow\"\n");
}

TEST(StructureFiles, FilesOfTheUserAreNotReplaced)
{
    QTemporaryDir dir;
    const IntegrationResult result = smallResult();
    const StructureData data = smallData();
    auto files = writeIntegrationFiles(result, data, dir.filePath("d"), {});
    ASSERT_TRUE(files);
    const QStringList listOwn = {
        "d.cif", "d.ins", "d.mtz", "d_integrated.hkl", "d_integrated.ins", "d_merged.hkl", "d_rejected.csv"};
    EXPECT_EQ(namesIn(dir), listOwn);
    EXPECT_TRUE(files->listNote.isEmpty());
    ASSERT_TRUE(writeIntegrationFiles(result, data, dir.filePath("d"), {}));
    EXPECT_EQ(namesIn(dir), listOwn) << "unchanged ones are";
    const QByteArray bytesChanged = readBytes(dir.filePath("d_integrated.ins")) + "REM mine\n";
    writeBytes(dir.filePath("d_integrated.ins"), bytesChanged);
    writeBytes(dir.filePath("d.cif"), "data_mine\n");
    files = writeIntegrationFiles(result, data, dir.filePath("d"), {dir.filePath("d.mtz")});
    ASSERT_TRUE(files);
    EXPECT_EQ(readBytes(dir.filePath("d_integrated.ins")), bytesChanged);
    EXPECT_EQ(readBytes(dir.filePath("d.cif")), "data_mine\n");
    EXPECT_EQ(files->listNote.size(), 3);
    EXPECT_EQ(namesIn(dir).size(), 10);
    EXPECT_TRUE(namesIn(dir).contains("d_integrated.mtz"));
}

TEST(StructureFiles, AllOrNone)
{
    const IntegrationResult result = smallResult();
    for (const bool bFull : {true, false}) {
        QTemporaryDir dir;
        const QString strFormer = writeBytes(dir.filePath("d_integrated.hkl"), "former\n");
        if (!bFull) {
            ASSERT_TRUE(QDir(dir.path()).mkdir("d_merged.hkl"));
        }
        QString strReason;
        bool bWritten = false;
        {
            const CFileSizeLimit limit(bFull ? 60 : RLIM_INFINITY);
            bWritten =
                writeIntegrationFiles(result, smallData(), dir.filePath("d"), {}, &strReason).has_value();
        }
        EXPECT_FALSE(bWritten);
        EXPECT_TRUE(strReason.contains(dir.path())) << strReason.toStdString();
        EXPECT_EQ(namesIn(dir), QStringList{"d_integrated.hkl"});
        EXPECT_EQ(readBytes(strFormer), "former\n");
    }
}

TEST(ElectronScattering, FourGaussiansFollowTheSimulatorsTable)
{
    std::set<QString> setElement;
    for (const CrystalStructure& structure : crystalStructures()) {
        for (const AtomSite& site : structure.listSite) {
            setElement.insert(site.strElement);
        }
    }
    for (const QString& strElement : setElement) {
        const gemmi::El element = gemmi::find_element(strElement.toLatin1().constData());
        const FourGaussians fit = fourGaussians(element);
        for (double dfS = 0; dfS <= 1; dfS += 0.05) {
            const double dfTrue = electronScatteringFactor(strElement, dfS);
            EXPECT_NEAR(electronScattering(element, dfS) / dfTrue, 1, 1e-9) << strElement.toStdString();
            EXPECT_NEAR(fit.value(dfS) / dfTrue, 1, 0.013) << strElement.toStdString() << ' ' << dfS;
        }
    }
}

TEST(StructureFiles, NamesOfAnyLettersLeaveTheInsReadable)
{
    StructureData data = smallData();
    data.strName = QString::fromUtf8("Glimmer \xc3\xa4'\xe6\x99\xb6\n=");
    const QByteArray bytes = insText(data, data.strName + QStringLiteral("_integrated.hkl"));
    EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(),
                            [](char ch) { return ch == '\n' || (ch >= ' ' && ch < '\x7f'); }));
    EXPECT_TRUE(bytes.startsWith("TITL Glimmer _'_ - in "));
}

TEST(ChemicalFormula, ReadsAndRefuses)
{
    EXPECT_EQ(hillFormula(*chemicalFormula("Ca(OH)2")), "Ca H2 O2");
    EXPECT_EQ(hillFormula(*chemicalFormula(" C2 H5 (N H2)0.5 Fe0.25")), "C2 H6 Fe0.25 N0.5");
    EXPECT_EQ(hillFormula(*chemicalFormula("CoCO3")), "C Co O3");
    EXPECT_EQ(hillFormula(*chemicalFormula("C1000000 C234567 O0.00005 N123456.7")),
              "C1234567 N123457 O0.00005");
    for (const char* pszBad : {"", "  ", "Xx2", "co2", "C(", "C)2", "C0", "C-1", "2C", "C1e3", "C..5",
                               "Si,O2", "((((((((((C))))))))))", "((C1000)1000)1000"}) {
        QString strReason;
        EXPECT_FALSE(chemicalFormula(pszBad, &strReason)) << pszBad;
        EXPECT_FALSE(strReason.isEmpty());
    }
}

TEST(ChemicalFormula, UnitsFollowFromVolumeAndSites)
{
    // Volumes of the simulator's crystals, Z as published.
    const struct {
        const char *pszFormula, *pszGroup;
        double dfVolume;
        int nUnits;
    } aRow[] = {{"Si", "F d -3 m", 160.2, 8},
                {"Mg3Al2Si3O12", "I a -3 d", 1504.7, 8},
                {"Na4Al3Si3O12Cl", "P -4 3 n", 700.7, 2},
                {"Be3Al2Si6O18", "P 6/m c c", 676, 2},
                {"SiO2", "P 32 2 1", 113.1, 3},
                {"CaCO3", "R -3 c:H", 367.8, 6},
                {"TiO2", "I 41/a m d", 136.3, 4},
                {"Mg2SiO4", "P b n m", 289.6, 4},
                {"Na2Al2Si3O12H4", "F d d 2", 2246, 8},
                {"MgCaSi2O6", "C 1 2/c 1", 438.6, 4},
                {"Al2SiO5", "P -1", 293.6, 4},
                {"C2H5NO2", "P 1 21/n 1", 310.1, 4}};
    for (const auto& row : aRow) {
        const gemmi::GroupOps ops = gemmi::find_spacegroup_by_name(row.pszGroup)->operations();
        EXPECT_EQ(formulaUnits(*chemicalFormula(row.pszFormula), row.dfVolume, ops), row.nUnits)
            << row.pszFormula;
        EXPECT_LE(formulaUnits(*chemicalFormula(row.pszFormula), 1e15, ops), 10000);
    }
}

}  // namespace tessera
