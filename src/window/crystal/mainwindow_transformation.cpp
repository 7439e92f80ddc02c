// MainWindow: the transformation of the unit cell by a matrix, on trial or for good.
#include "window/mainwindow.h"

#include "crystal/celltransformation.h"
#include "reciprocal/cellcommit.h"
#include "view3d/ed3dwidget.h"
#include "window/pages/cellpage.h"
#include "window/windowreport.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

#include <algorithm>

namespace tessera {

bool MainWindow::transformUnitCell()
{
    WindowReport report(*this);
    const bool bReciprocal = m_pCellPage->m_pRadioSpaceReciprocal->isChecked();
    const std::optional<ReciprocalBasis> basis = tessera::transformUnitCell(
        basisFromList(m_dataSet.m_listCellFound), m_dfCellMatrix,
        bReciprocal ? TransformationSpace::Reciprocal : TransformationSpace::Real, report, m_strLatticeHost);
    if (!basis) {
        return false;
    }
    m_dataSet.m_listCell = basis->toList();
    for (ED3DWidget* pView : views3D()) {
        pView->setLattice(m_dataSet.m_listCell);
    }
    updateUnitCellInfo();
    return true;
}

void MainWindow::transformUnitCellClicked()
{
    if (refuseDuringRun(tr("Transforming the cell")) || !readCellMatrix() || !transformUnitCell()) {
        return;
    }
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int nColumn = 0; nColumn < 3; ++nColumn) {
            m_pCellPage->m_apEditMatrix[nRow][nColumn]->setText(nRow == nColumn ? QStringLiteral("1")
                                                                                : QStringLiteral("0"));
        }
    }
    m_dfCellMatrix = CMatrix3::identity();
    WindowReport report(*this);
    if (commitTransformedCell(m_dataSet)) {
        saveProjectCell(report);
    }
    if (m_pCellPage->m_pButtonTest->isChecked()) {
        m_pCellPage->m_pButtonTest->setChecked(false);  // shows the new cell
    } else {
        showCellFit();
    }
    showPeakText();  // the labels of the former cell
}

void MainWindow::testUnitCellToggled(bool bChecked)
{
    // The user chose the other space while a run works on: the cell under test stays until it ends.
    if (isPumping() && !bChecked) {
        m_gate.wishes().bEndCellTest = true;
        return;
    }
    if (bChecked && (refuseDuringRun(tr("Testing another cell")) || !readCellMatrix())) {
        const QSignalBlocker blocker(m_pCellPage->m_pButtonTest);
        m_pCellPage->m_pButtonTest->setChecked(false);
        return;
    }
    if (bChecked) {
        transformUnitCell();
    } else if (basisFromList(m_dataSet.m_listCellFound)) {
        updateUnitCell();
    } else {
        updateUnitCellInfo();
    }
}

void MainWindow::unitCellTransformatinMatrixEdited()
{
    const CMatrix3 matrixBefore = m_dfCellMatrix;
    if (!readCellMatrix() || std::equal(std::begin(m_dfCellMatrix.m_dfElement),
                                        std::end(m_dfCellMatrix.m_dfElement), matrixBefore.m_dfElement)) {
        return;
    }
    if (isPumping()) {
        m_gate.wishes().bEndCellTest = true;  // what is under test is not what the fields show now
    } else if (m_pCellPage->m_pButtonTest->isChecked()) {
        transformUnitCell();
    }
}

/// Takes the matrix from the page. A text that is no number gives a red line, and the matrix stays.
bool MainWindow::readCellMatrix()
{
    CMatrix3 matrix;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int nColumn = 0; nColumn < 3; ++nColumn) {
            bool bOk = false;
            matrix.at(nRow, nColumn) = m_locale.toDouble(m_pCellPage->m_apEditMatrix[nRow][nColumn]->text(),
                                                         &bOk);
            if (!bOk) {
                WindowReport(*this).addMessage(QStringLiteral("Unknown numeric format."), Severity::Error);
                return false;
            }
        }
    }
    m_dfCellMatrix = matrix;
    return true;
}

}  // namespace tessera
