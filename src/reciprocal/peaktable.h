// Peak table: the 29 columns of the reflections in use, as texts.
#pragma once

#include "dataset/dataset.h"
#include "geometry/rotationgeometry.h"
#include "reciprocal/integratedpeaks.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <memory>

namespace tessera {

/// Number of columns of the peak table.
constexpr int g_nPeakTableColumns = 29;
/// The first of those that only an integration fills: intensity, sigma, flags.
constexpr int g_nFirstIntegratedColumn = 26;

/// The texts of the peak table, made one by one from the records, the geometry of the data set and its space
/// group as they were when the table was made.
///
/// Columns 0, 4 to 6, 11, 24 and 25 are plain whole numbers, "*" for the indices 4 to 6 of a record that
/// isn't indexed within `dfIndexThreshold`. Columns 1 to 3, the indices as measured, have two decimals and a
/// point whatever the locale; all others go through `locale`. The last three are empty where the integration
/// has no such reflection, and intensity and sigma where it has not measured it.
class CPeakTable {
public:
    /// @param pIntegrated  of the cell that the peaks are indexed with; null: nothing is integrated
    CPeakTable(const QList<Peak3D>& listPeak, const DataSet& dataSet, double dfIndexThreshold,
               const QLocale& locale, const std::shared_ptr<const CIntegratedPeaks>& pIntegrated = {});

    int rowCount() const { return m_listPeak.size(); }  ///< one for each reflection
    /// @param nRow     below rowCount()
    /// @param nColumn  below g_nPeakTableColumns
    QString text(int nRow, int nColumn) const;
    /// The number behind a text, with all its digits; NaN where there is none: an index of a record that
    /// isn't indexed, an intensity that was not measured, a column of words.
    double number(int nRow, int nColumn) const;
    /// Whether a column holds words and not numbers.
    static bool isText(int nColumn);
    /// Decimals that a column shows at most; 0: whole numbers.
    static int decimals(int nColumn);
    /// Texts of which one is as long as any text of the column, for the width that it needs; a digit may
    /// stand for another. With more rows than `nMaxRows`, as many that are spread evenly are looked at.
    QStringList longestTexts(int nColumn, int nMaxRows) const;
    /// The same table with another integration; null: with none.
    CPeakTable withIntegrated(const std::shared_ptr<const CIntegratedPeaks>& pIntegrated) const;
    /// Number of the reflection of a row.
    int id(int nRow) const { return m_listPeak.at(nRow).nID; }
    /// What the integration says of a row; null: nothing.
    const IntegratedPeak* integrated(int nRow) const;

private:
    struct Cells;  ///< a function per column

    QList<Peak3D> m_listPeak;
    BeamCentres m_centres;
    double m_dfRotationAxis;
    CSpaceGroup m_spaceGroup;
    float m_fIndexThreshold;
    QLocale m_locale;
    std::shared_ptr<const CIntegratedPeaks> m_pIntegrated;
};

}  // namespace tessera
