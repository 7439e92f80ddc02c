// Known cell search: finds the orientation of a crystal with a known cell, for window and driver.
#pragma once

#include "crystal/cellmessage.h"
#include "dataset/dataset.h"
#include "lattice/knowncell.h"
#include "records/runreport.h"
#include "road/stageresult.h"

#include <QString>

#include <optional>

namespace tessera {

/// The form in which an oriented cell is put in force.
enum class KnownCellForm {
    Rotated,  ///< with the known lengths and angles
    Refined   ///< with lengths and angles fitted to the peaks
};

/// The result of orientCell().
struct KnownCellSearchResult {
    StageResult end;  ///< with the reason if there is no orientation
    std::optional<KnownCellOrientation> orientation;
    KnownCellForm form = KnownCellForm::Rotated;  ///< the form that should be used
    QString strWhy;                               ///< a sentence for the log that explains the form
};

/// Whether a text is the name of a CIF file.
bool isCifName(const QString& strText);

/// The cell given by a text: six numbers "a,b,c,alpha,beta,gamma" in Å and degrees (C locale), or the name of
/// a CIF file.
/// @param pstrReason  may be null; gets what is wrong with the text or the file
std::optional<CellParameters> knownCellOf(const QString& strText, QString* pstrReason = nullptr);

/// Finds the orientation of a cell among the mapped peaks; the log compares how many peaks its three forms
/// explain. The known lengths are preferred to fitted ones, since they are more accurate than those of a
/// series, as long as they explain about as many peaks, within a twentieth.
/// @param dataSet  with peaks mapped by the geometry in force; unchanged
/// @return Refused if the numbers are not a cell or no peaks are mapped, Failed if no orientation is found
KnownCellSearchResult orientCell(const DataSet& dataSet, const CellParameters& cell, CRunReport& report,
                                 const KnownCellOptions& options = {});

/// Puts a form of the cell in force, like the result of a cell search. saveProjectCell() should follow.
StageResult takeOrientedCell(DataSet& dataSet, const KnownCellOrientation& orientation, KnownCellForm form,
                             CRunReport& report, const QString& strLatticeHost = latticeServiceHost());

/// Finds the orientation and puts the proposed form in force; the log says which form it is, and why.
StageResult searchKnownCell(DataSet& dataSet, const CellParameters& cell, CRunReport& report);

}  // namespace tessera
