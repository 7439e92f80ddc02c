// Reciprocal: a window beside a simulated series that has shifts, peaks and a cell; and what its cells ought
// to be, by plain matrices.
#pragma once

#include "windowtest.h"

#include <array>
#include <cmath>

typedef std::array<double, 3> Vec;
typedef std::array<Vec, 3> Mat;  ///< rows

inline double dot(const Vec& u, const Vec& v)
{
    return u[0] * v[0] + u[1] * v[1] + u[2] * v[2];
}

/// The basis dual to the given one, from reciprocal to real space and back.
Mat dual(const Mat& m);
Mat times(const Mat& m, const Mat& n);
/// The six fields of the page for a cell.
QString fieldsOf(const Mat& matReciprocal);
void expectNear(const Mat& m, const Mat& matWanted, double dfTolerance = 3e-8);

const Mat g_matOne = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const Mat g_matCell = {{{0.11, 0.02, -0.01}, {-0.015, 0.08, 0.03}, {0.005, -0.02, 0.0623456}}};
const QString g_strNoCell = "     ";  ///< the six fields without one

class Reciprocal : public WindowTest {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite() { delete s_pSeries; }
    void SetUp() override;
    /// A file beside the series.
    static QString file(const char* pszName) { return s_pSeries->filePath(pszName); }
    void open() { m_pWindow->openFiles({file("w.ed3d")}); }
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

    static QTemporaryDir* s_pSeries;
};
