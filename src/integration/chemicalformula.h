// ChemicalFormula: what a crystal is made of, as a user writes it, and how often it stands in a cell.
#pragma once

#include <gemmi/elem.hpp>
#include <gemmi/symmetry.hpp>

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

struct ElementCount {
    gemmi::El element = gemmi::El::X;
    double dfCount = 0;  ///< atoms of the formula, above 0
};

/// The elements of a formula, each once, in the order in which they first stand there.
struct ChemicalFormula {
    std::vector<ElementCount> listElement;

    bool isEmpty() const { return listElement.empty(); }
    double atomCount(bool bHydrogen) const;
};

/// Reads "Mg3 Al2 Si3 O12", "Ca(OH)2" or "Fe0.25Mg1.75SiO4"; blanks may stand between the parts.
/// @return none, with the reason, where it is no formula or holds an element without scattering factors
std::optional<ChemicalFormula> chemicalFormula(const QString& strText, QString* pstrReason = nullptr);

/// Hill's order: carbon, hydrogen, then the others by their symbols, with blanks between: "C2 H6 O".
QString hillFormula(const ChemicalFormula& formula);

/// What one atom other than hydrogen takes, Å³: 18 in organic crystals (Kempster & Lipson (1972), Acta
/// Cryst. B28, 3674), and in crystals of a single element about as much; 12 in oxides, silicates and salts,
/// which have 9 to 15.
double volumeOfAtom(const ChemicalFormula& formula);

/// How many formulae a cell holds: the whole number nearest, by its ratio, to the volume that the atoms
/// take, of those whose atoms the sites of the group can hold; a part or a multiple of its general position
/// comes before others that are not half as far again. Where no number is such, the nearest of all.
/// @param dfVolume  Å³, of the cell
int formulaUnits(const ChemicalFormula& formula, double dfVolume, const gemmi::GroupOps& ops);

}  // namespace tessera
