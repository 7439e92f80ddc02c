// The crystals that series are simulated from, against another library and published densities.
#include "simulate/scatteringfactors.h"
#include "simulate/structurefactor.h"

#include <gtest/gtest.h>
#include <gemmi/c4322.hpp>
#include <gemmi/sfcalc.hpp>

namespace tessera {

namespace {

// Structure factors by gemmi: its own operations, scattering factors and sum.
class Reference {
public:
    explicit Reference(const CrystalStructure& structure) : m_calculator(m_small.cell)
    {
        const std::array<double, 6>& c = structure.adfCell;
        m_small.cell.set(c[0], c[1], c[2], c[3], c[4], c[5]);
        std::string strGroup = structure.strSpaceGroup.toStdString();
        if (strGroup == "F d -3 m" || strGroup == "I 41/a m d") {
            strGroup += ":1";
        }
        const gemmi::SpaceGroup* pGroup = gemmi::find_spacegroup_by_name(strGroup, c[3], c[5]);
        if (!pGroup) {
            throw std::runtime_error("no group " + strGroup);
        }
        m_nOperations = pGroup->operations().order();
        m_small.cell.set_cell_images_from_spacegroup(pGroup);
        for (const AtomSite& atom : structure.listSite) {
            gemmi::SmallStructure::Site site;
            site.element = gemmi::Element(atom.strElement.toStdString());
            site.fract = gemmi::Fractional(atom.dfX, atom.dfY, atom.dfZ);
            site.occ = 1.0 / (1 + m_small.cell.is_special_position(site.fract, 0.4));
            site.u_iso = 0.5 / gemmi::u_to_b();
            m_small.sites.push_back(site);
        }
    }
    std::complex<double> value(int h, int k, int l)
    {
        return m_calculator.calculate_sf_from_small_structure(m_small, {{h, k, l}});
    }
    int operationCount() const { return m_nOperations; }

private:
    gemmi::SmallStructure m_small;
    gemmi::StructureFactorCalculator<gemmi::C4322<double>> m_calculator;
    int m_nOperations = 0;
};

}  // namespace

TEST(Crystals, StructureFactorsAreThoseOfAnotherLibrary)
{
    for (const CrystalStructure& structure : crystalStructures()) {
        const CStructureFactor crystal(structure, 0.5);
        Reference reference(structure);
        EXPECT_EQ(crystal.operationCount(), reference.operationCount()) << structure.strName.toStdString();
        for (int h = -3; h <= 5; h += 2) {
            for (int k = -4; k <= 6; ++k) {
                for (int l = 0; l <= 9; l += 3) {
                    ASSERT_LT(std::abs(crystal.value(h, k, l) - reference.value(h, k, l)), 1e-6)
                        << structure.strName.toStdString() << ' ' << h << ' ' << k << ' ' << l;
                }
            }
        }
    }
}

TEST(Crystals, CellsHoldTheirFormulaUnits)
{
    const struct {
        const char* pName;
        int nAtoms;
        double dfVolume;
    } aRow[] = {
        {"silicon", 8, 160.19},      {"pyrope", 160, 1504.67}, {"sodalite", 46, 700.70},  // Na8Al6Si6O24Cl2
        {"beryl", 58, 675.97},       {"quartz", 9, 113.13},    {"calcite", 30, 367.85},
        {"akermanite", 24, 307.55},  {"anatase", 12, 136.25},  {"forsterite", 28, 289.58},
        {"natrolite", 152, 2246.15},  // 8 Na2Al2Si3O10 2H2O without the hydrogen
        {"diopside", 40, 438.6},     {"kyanite", 32, 293.6}};
    EXPECT_EQ(crystalStructures().size(), std::size(aRow));
    for (const auto& row : aRow) {
        const CrystalStructure* pStructure = findCrystalStructure(QLatin1String(row.pName));
        ASSERT_TRUE(pStructure) << row.pName;
        const CStructureFactor crystal(*pStructure);
        EXPECT_EQ(crystal.atomCount(), row.nAtoms) << row.pName;
        EXPECT_NEAR(1 / determinantOf(crystal.reciprocalBasis()), row.dfVolume, 0.1) << row.pName;
    }
}

}  // namespace tessera
