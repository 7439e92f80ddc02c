// ChemicalFormula: the composition of a crystal, and the number of formula units in a cell.
#pragma once

#include <gemmi/elem.hpp>
#include <gemmi/symmetry.hpp>

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// An element of a formula.
struct ElementCount {
    gemmi::El element = gemmi::El::X;
    double dfCount = 0;  ///< atoms per formula unit, above 0
};

/// Which atoms are counted.
enum class CountedAtoms { All, AllButHydrogen };

/// The elements of a formula, each once, in the order in which they first occur.
struct ChemicalFormula {
    std::vector<ElementCount> listElement;

    bool isEmpty() const { return listElement.empty(); }  ///< no formula was given
    /// Atoms per formula unit.
    double atomCount(CountedAtoms counted) const;
};

/// Parses "Mg3 Al2 Si3 O12", "Ca(OH)2" or "Fe0.25Mg1.75SiO4"; the parts may be separated by blanks.
/// @return none, with the reason, if the text is not a formula or has an element without scattering factors
std::optional<ChemicalFormula> chemicalFormula(const QString& strText, QString* pstrReason = nullptr);

/// The formula in Hill order (carbon, hydrogen, then the others by symbol), separated by blanks: "C2 H6 O".
QString hillFormula(const ChemicalFormula& formula);

/// The typical volume of an atom other than hydrogen, Å³: 18 in organic crystals (Kempster & Lipson (1972),
/// Acta Cryst. B28, 3674) and, roughly, in crystals of a single element; 12 in oxides, silicates and salts,
/// which range from 9 to 15.
double volumeOfAtom(const ChemicalFormula& formula);

/// Estimates the number of formula units in a cell from its volume.
///
/// Only numbers whose atoms fit on the sites of the space group are considered. Of these, the one is chosen
/// whose volume is nearest to that of the cell by ratio, where a number that neither divides the multiplicity
/// of the general position nor is a multiple of it counts as farther off by a factor of 1.5. If the atoms fit
/// for no number, the nearest one of all is chosen.
/// @param dfVolume  volume of the cell, Å³
int formulaUnits(const ChemicalFormula& formula, double dfVolume, const gemmi::GroupOps& ops);

}  // namespace tessera
