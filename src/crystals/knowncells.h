// Known cells: a file of the user's with the cells of compounds, and which of them a lattice is.
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

struct KnownCell {
    QString strName;
    CellParameters cell;
    char chCentring = 'P';
    QString strSpaceGroup;    ///< as the file has it; empty: not told
    ChemicalFormula formula;  ///< empty: not told
    int nLine = 0;            ///< of the file, from 1
};

struct KnownCells {
    std::vector<KnownCell> listCell;
    QStringList listFault;  ///< lines that tell no cell, each with its number and what is wrong
};

/// A table with a compound a line: name, a, b, c in Å, alpha, beta, gamma in degrees; then, if anything, the
/// centring or the space group, and the formula. A line of head may put the columns into another order by its
/// words name (or compound, phase), a, b, c, alpha (al), beta (be), gamma (ga), centring (lattice), "space
/// group" (sg) and formula. Columns are parted by semicolons, tabulators or commas; where one of the first
/// two parts them, numbers may have decimal commas. Lines that begin with # and empty ones are comments,
/// texts may stand in quotes, standard errors in brackets behind numbers are left out. Names have 200 letters
/// at most; control characters count as spaces. UTF-8, or where that is none Latin-1.
KnownCells knownCellsOf(const QByteArray& bytes);

/// @param pstrReason  may be null; on failure why the file cannot be read, or that it has no cell
/// @return none for anything but a regular file of 64 MB at the most that tells a cell
std::optional<KnownCells> readKnownCells(const QString& strFile, QString* pstrReason = nullptr);

struct KnownCellMatch {
    int nKnown = 0;        ///< place in the list
    double dfMisfit = 0;   ///< in units of the tolerance, 0 to 1
    double dfLengths = 0;  ///< %, by which the worst edge of the reduced cells differs
    double dfAngles = 0;   ///< °, the worst angle
    QString strNext;       ///< name of another one within the tolerance, the next; empty: there is none
};

/// The known cell that lies closest to a lattice; none within the tolerance.
std::optional<KnownCellMatch> matchKnownCell(const LatticeBasis& reduced,
                                             const std::vector<KnownCell>& listKnown,
                                             const CellTolerance& tolerance = {});

}  // namespace tessera
