// Reciprocal: a window beside a simulated series that has shifts, peaks and a cell; and what its cells ought
// to be, by the simulator's matrices.
#pragma once

#include "simulate/structurefactor.h"
#include "tests/window/seriestest.h"

namespace tessera {

typedef Vector3 Vec;
typedef Matrix3 Mat;  ///< rows

/// The basis dual to the given one, from reciprocal to real space and back.
inline Mat dual(const Mat& m)
{
    return transposed(inverseOf(m));
}
/// The six fields of the page for a cell.
QString fieldsOf(const Mat& matReciprocal);
void expectNear(const Mat& m, const Mat& matWanted, double dfTolerance = 3e-8);

const Mat g_matOne = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const Mat g_matCell = {{{0.11, 0.02, -0.01}, {-0.015, 0.08, 0.03}, {0.005, -0.02, 0.0623456}}};
const QString g_strNoCell = "     ";  ///< the six fields without one

class Reciprocal : public SeriesTest {
protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void loadCell(const Mat& m);
    /// The cell in use, by way of an export.
    Mat cell();
    QString fields() const;
    /// Puts a matrix into the fields of the transformation.
    void type(const Mat& m);
    /// Types over what a box holds, without ending the edit.
    void typeOver(QWidget* pBox, QString strText);
    QAbstractItemModel* table() const { return m_pTable->model(); }
    /// Labels, sizes and colours of the groups of a view.
    static QString groups(const ED3DWidget* pView);
};

}  // namespace tessera
