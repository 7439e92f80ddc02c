// Known cell search: the orientation of a crystal whose cell is known, as window and driver look for it.
#pragma once

#include "crystal/cellmessage.h"
#include "dataset/dataset.h"
#include "lattice/knowncell.h"
#include "records/runreport.h"
#include "road/stageresult.h"

#include <QString>

#include <optional>

namespace tessera {

/// Which form of an oriented cell becomes the cell of the data set.
enum class KnownCellForm {
    Rotated,  ///< the lengths and angles that are known
    Refined   ///< those that fit the peaks best
};

struct KnownCellSearchResult {
    StageResult end;  ///< the reason says why there is no orientation
    std::optional<KnownCellOrientation> orientation;
    KnownCellForm form = KnownCellForm::Rotated;  ///< the one to take
    QString strWhy;                               ///< why that one: a sentence for the log
};

/// Whether a text is the name of a CIF file.
bool isCifName(const QString& strText);

/// The cell that a text names: six numbers "a,b,c,alpha,beta,gamma", Å and degrees in the C locale, or a CIF
/// file.
/// @param pstrReason  may be null; on failure what is wrong with the text or the file
std::optional<CellParameters> knownCellOf(const QString& strText, QString* pstrReason = nullptr);

/// Looks among the mapped peaks for the orientation of a cell; the log has what its three forms explain. The
/// cell as it is known is the one to take where it explains about as many peaks, within a twentieth, as the
/// edges that are fitted freely: its lengths are better than those of a series are.
/// @param dataSet  its peaks are mapped with the geometry in force; nothing of it changes
/// @return refused for numbers that make no cell, and without mapped peaks; failed where none is found
KnownCellSearchResult orientCell(const DataSet& dataSet, const CellParameters& cell, CRunReport& report,
                                 const KnownCellOptions& options = {});

/// Makes a form of the cell the one that was found, as a search does; saveProjectCell() belongs after it.
StageResult takeOrientedCell(DataSet& dataSet, const KnownCellOrientation& orientation, KnownCellForm form,
                             CRunReport& report, const QString& strLatticeHost = latticeServiceHost());

/// Both in one where nobody chooses; the log tells which form was taken and why.
StageResult searchKnownCell(DataSet& dataSet, const CellParameters& cell, CRunReport& report);

}  // namespace tessera
