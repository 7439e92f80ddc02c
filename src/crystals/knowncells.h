// Known cells: a user's file with the cells of compounds, and which of these compounds a lattice belongs to.
#pragma once

#include "crystals/cellsettings.h"
#include "integration/chemicalformula.h"
#include "records/cellparameters.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tessera {

/// The cell of a compound.
struct KnownCell {
    QString strName;          ///< of the compound
    CellParameters cell;      ///< Å and degrees
    char chCentring = 'P';    ///< as for reducedCell(): R is in hexagonal axes, P also in rhombohedral ones
    QString strSpaceGroup;    ///< the name in the file, or the name for the number in it; empty: not given
    ChemicalFormula formula;  ///< empty: not given
    int nLine = 0;            ///< line of the file, from 1
};

/// The contents of a file of known cells.
struct KnownCells {
    std::vector<KnownCell> listCell;  ///< in the order of the file
    QStringList listFault;            ///< lines that give no cell, each with its number and what is wrong
};

/// Reads a table with one compound in each line: name, a, b, c in Å, alpha, beta, gamma in degrees;
/// then, optionally, the centring or the space group, and the formula.
///
/// The first line that is no comment may be a head that gives the columns another order by the words name (or
/// compound, phase), a, b, c, alpha (al), beta (be), gamma (ga), centring (lattice), "space group" (sg) and
/// formula. It may tell units, such as "a (nm)" or "gamma / rad": lengths may be in Å, nm or pm, angles in
/// degrees or radians. A head with another unit is a fault, and no cell is read then.
///
/// R, and a space group that has both rhombohedral and hexagonal axes and does not say which (by number, or
/// as "R 3"), means those that the angles of the cell are of.
///
/// Columns are separated by semicolons, tabulators or commas; if by one of the first two, numbers may have
/// decimal commas. Empty lines and lines that begin with # are comments. Texts may stand in quotes. Standard
/// errors in brackets behind numbers are ignored. Names have at most 200 letters; control characters count as
/// spaces. The text is UTF-8, or Latin-1 if it is not valid UTF-8.
KnownCells knownCellsOf(const QByteArray& bytes);

/// Reads a file of known cells, see knownCellsOf().
/// @param pstrReason  may be null; on failure why the file cannot be read, or that it has no cell
/// @return nothing unless it is a regular file of at most 64 MB with at least one cell
std::optional<KnownCells> readKnownCells(const QString& strFile, QString* pstrReason = nullptr);

/// The known cell that a lattice has.
struct KnownCellMatch {
    int nKnown = 0;        ///< index in the list of known cells
    double dfMisfit = 0;   ///< the greater of dfLengths and dfAngles, each divided by its tolerance: 0 to 1
    double dfLengths = 0;  ///< %, greatest difference of an edge of the two reduced cells
    double dfAngles = 0;   ///< °, greatest difference of an angle
    QString strNext;  ///< name of the second closest known cell within the tolerance; empty: there is none
};

/// Finds the known cell closest to a lattice.
/// @param reduced  rows a, b, c of the reduced cell of the lattice, Å
/// @return nothing if no known cell is within the tolerance
std::optional<KnownCellMatch> matchKnownCell(const LatticeBasis& reduced,
                                             const std::vector<KnownCell>& listKnown,
                                             const CellTolerance& tolerance = {});

}  // namespace tessera
