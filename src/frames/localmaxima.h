// FindLocalMaxima: the strict local maxima of an image.
#pragma once

#include "imaging/imgobj.h"

#include <QList>

#include <vector>

namespace tessera {

/// Pixels at or above a threshold that are strictly above each of their eight neighbours.
///
/// The outermost rows and columns hold no maxima; neither does an image of fewer than 3 rows or
/// columns. Comparisons with NaN fail, so a NaN is no maximum and has none beside it. The
/// positions come row by row.
/// @param listX, listY  replaced by columns and rows, whole numbers
/// @param dfFraction    with more than fraction * pixels (truncated) maxima found before another
///                      one both lists end up empty: too many candidates are noise
/// @return false for too many candidates
bool FindLocalMaxima(const CImgObj<float>& img, float fThreshold, QList<double>& listX, QList<double>& listY,
                     double dfFraction);

/// The same of an image of which there is a row at a time.
class CMaximaOfRows {
public:
    CMaximaOfRows(int nWidth, int nHeight, float fThreshold, double dfFraction);

    /// The next row, from above. Pixels below fLeast count as 0.
    void add(const float* pRow, float fLeast);

    /// After the last row: as FindLocalMaxima() gives them.
    bool tooMany() const { return m_bTooMany; }
    const QList<double>& listX() const { return m_listX; }
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
