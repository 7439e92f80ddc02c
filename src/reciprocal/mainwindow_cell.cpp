// MainWindow: the unit cell in force and its files.
#include "app/mainwindow.h"

#include "app/dataset/unitcellfile.h"
#include "app/windowreport.h"
#include "crystal/cellarithmetic.h"
#include "reciprocal/pages/cellpage.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>

namespace {

QString cellFilter()
{
    return MainWindow::tr("Unit Cell Files (*.%1);;All Files (*.*)").arg(QStringLiteral("uc"));
}

}  // namespace

void MainWindow::updateUnitCell()
{
    if (m_dataSet.m_listCellFound.size() == 3)
        m_dataSet.m_listCell = m_dataSet.m_listCellFound;
    updateUnitCellInfo();
}

void MainWindow::updateUnitCellInfo()
{
    double aCell[6] = {};
    const bool bCell = cellParametersFromList(m_dataSet.m_listCell, aCell[0], aCell[1], aCell[2], aCell[3],
                                              aCell[4], aCell[5]);
    for (int i = 0; i < 6; ++i)
        m_pCellPage->m_apEditCell[i]->setText(bCell ? m_locale.toString(aCell[i], 'f', 2) : QString());
}

void MainWindow::exportUnitCell()
{
    if (refuseDuringRun(tr("Exporting a unit cell")))
        return;
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export Unit Cell Data to File"),
                                                         m_dataSet.m_strWorkingDir, cellFilter());
    if (strFile.isEmpty())
        return;
    if (!saveUnitCellFile(m_dataSet, strFile))
        WindowReport(*this).addMessage(QStringLiteral("No unt cell data was saved."), Qt::red);
}

void MainWindow::loadUnitCell()
{
    if (refuseDuringRun(tr("Loading a unit cell")))
        return;
    const QString strFile =
        QFileDialog::getOpenFileName(this, tr("Load Unit Cell"), m_dataSet.m_strWorkingDir, cellFilter());
    if (strFile.isEmpty())
        return;
    const QList<Vec3D> listCell = readUnitCellFile(strFile);
    if (listCell.size() != 3) {
        WindowReport(*this).addMessage(
            QStringLiteral("Error occured when loading %1 as unit cell data.").arg(strFile), Qt::red);
        return;
    }
    m_pCellPage->m_pButtonTest->setChecked(false);
    m_dataSet.m_listCellFound = listCell;
    updateUnitCell();
}
