// Peak table: the 26 columns of the reflections in use, as texts.
#pragma once

#include "dataset/dataset.h"
#include "geometry/rotationgeometry.h"

#include <QLocale>
#include <QString>

namespace tessera {

/// Number of columns of the peak table.
constexpr int g_nPeakTableColumns = 26;

/// The texts of the peak table, made one by one from the records, the geometry of the data set and its space
/// group as they were when the table was made.
///
/// Columns 0 to 6, 11, 24 and 25 are plain whole numbers, "*" for the indices of a record that isn't indexed
/// within `dfIndexThreshold`; all others go through `locale`.
class CPeakTable {
public:
    CPeakTable(const QList<Peak3D>& listPeak, const DataSet& dataSet, double dfIndexThreshold,
               const QLocale& locale);

    int rowCount() const { return m_listPeak.size(); }
    /// @param nRow     below rowCount()
    /// @param nColumn  below g_nPeakTableColumns
    QString text(int nRow, int nColumn) const;

private:
    struct Cells;  ///< a function per column

    QList<Peak3D> m_listPeak;
    BeamCentres m_centres;
    double m_dfRotationAxis;
    CSpaceGroup m_spaceGroup;
    float m_fIndexThreshold;
    QLocale m_locale;
};

}  // namespace tessera
