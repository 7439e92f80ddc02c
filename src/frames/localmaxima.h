// FindLocalMaxima: the strict local maxima of an image.
#pragma once

#include "imaging/imgobj.h"

#include <QList>

#include <vector>

namespace tessera {

/// Finds the pixels at or above a threshold that are greater than all their eight neighbours.
///
/// The outermost rows and columns have no maxima, nor has an image of fewer than 3 rows or columns. As
/// comparisons with NaN are false, neither a NaN nor a pixel beside one is a maximum. The positions are in
/// the order of the rows.
/// @param listX, listY  take columns and rows, whole numbers
/// @param dfFraction    if another maximum is found after more than fraction * pixels (truncated), both
///                      lists become empty, as so many candidates are noise
/// @return false for too many candidates
bool FindLocalMaxima(const CImgObj<float>& img, float fThreshold, QList<double>& listX, QList<double>& listY,
                     double dfFraction);

/// Does the same for an image that is available row by row.
class CMaximaOfRows {
public:
    /// See FindLocalMaxima().
    CMaximaOfRows(int nWidth, int nHeight, float fThreshold, double dfFraction);

    /// Adds the next row. Pixels below fLeast count as 0.
    void add(const float* pRow, float fLeast);

    /// Results after the last row, as from FindLocalMaxima().
    bool tooMany() const { return m_bTooMany; }
    /// Columns of the maxima.
    const QList<double>& listX() const { return m_listX; }
    /// Rows of the maxima.
    const QList<double>& listY() const { return m_listY; }

private:
    float* row(int nRow) { return m_vecRow.data() + size_t(nRow % 3) * size_t(m_nWidth); }

    int m_nWidth;
    float m_fThreshold;
    qint64 m_nLimit;
    int m_nRows = 0;
    bool m_bTooMany = false;
    std::vector<float> m_vecRow;  // the last three
    QList<double> m_listX, m_listY;
};

}  // namespace tessera
