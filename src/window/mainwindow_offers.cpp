// MainWindow: what the runs of the menu "Tools" have found, said in a line and to be taken over by a click.
#include "crystal/cellarithmetic.h"
#include "frames/directbeamfit.h"
#include "reciprocal/tiltrefinement.h"
#include "window/crystal/geometrycontrol.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/pages/framespage.h"
#include "window/pages/shiftpage.h"

#include <QDoubleSpinBox>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The median; of an even number the mean of the two in the middle.
double middleOf(std::vector<double> vecValue)
{
    std::sort(vecValue.begin(), vecValue.end());
    const size_t nHalf = vecValue.size() / 2;
    return vecValue.size() % 2 == 1 ? vecValue[nHalf] : (vecValue[nHalf - 1] + vecValue[nHalf]) / 2;
}

}  // namespace

void MainWindow::inFold(const QString& strTitle, const std::function<void()>& fn)
{
    m_pMessageEdit->beginFold(strTitle);
    guarded(fn);
    m_pMessageEdit->endFold();
}

void MainWindow::offerToTake(const QString& strFound, const std::function<void()>& fnTake)
{
    const QStringList listFrame = m_dataSet.m_listFrameFile;
    m_pMessageEdit->addOffer(strFound, tr("Take it"), [this, listFrame, fnTake] {
        if (refuseDuringRun(tr("Taking a result"))) {
            return;
        }
        if (m_dataSet.m_listFrameFile != listFrame) {
            m_pMessageEdit->addMessage(tr("This result is of another series."), Qt::red);
            return;
        }
        m_pGeometry->change(fnTake);
        m_pMessageEdit->addMessage(
            tr("It is taken; \"Undo\" of \"Geometry Refinement\" goes back. What was merged, searched and "
               "indexed before is stale now."),
            Qt::blue);
        m_timerStatus.start();
    });
}

/// The test finds a line without a direction: of both the one nearer to the azimuth of the page is offered,
/// which keeps the sense of the rotation.
void MainWindow::offerAxis(double dfAzimuth)
{
    QDoubleSpinBox* pSpin = m_pFramesPage->m_pRotationAxisSpin;
    const double dfFormer = pSpin->value();
    double dfAxis = dfFormer + std::remainder(dfAzimuth - dfFormer, 180.0);
    dfAxis = std::remainder(dfAxis, 360.0);
    const auto degrees = [this](double df) { return m_locale.toString(df, 'f', 1) + QStringLiteral("°"); };
    offerToTake(tr("Rotation axis test: axis %1, page %2.").arg(degrees(dfAxis), degrees(dfFormer)),
                [this, pSpin, dfAxis] {
                    m_dataSet.m_bRotationAxisKnown = true;
                    pSpin->setValue(dfAxis);  // maps the peaks anew, as if it were typed
                });
}

/// Offers the median over the frames, because a hidden or saturated beam gives a fit that is far off.
void MainWindow::offerBeam(const std::vector<DirectBeamOnFrame>& listBeam)
{
    std::vector<double> vecX, vecY;
    for (const DirectBeamOnFrame& beam : listBeam) {
        const QPointF ptOff = beam.ptFitted - beam.ptExpected;
        if (std::isfinite(ptOff.x()) && std::isfinite(ptOff.y()) && !ptOff.isNull()) {
            vecX.push_back(ptOff.x());
            vecY.push_back(ptOff.y());
        }
    }
    if (vecX.empty()) {
        m_pMessageEdit->addMessage(tr("Direct beam: it is in no header."), Qt::blue);
        return;
    }
    const QPointF ptPage(m_dataSet.m_dfCenterX, m_dataSet.m_dfCenterY);
    const QPointF ptFound = ptPage + QPointF(middleOf(vecX), middleOf(vecY));
    const auto place = [this](const QPointF& pt) {
        return tr("(%1, %2)").arg(m_locale.toString(pt.x(), 'f', 2), m_locale.toString(pt.y(), 'f', 2));
    };
    offerToTake(tr("Direct beam on the first frame, by the median of %L1 frames: %2, page %3 pixels.")
                    .arg(vecX.size())
                    .arg(place(ptFound), place(ptPage)),
                [this, ptFound] {
                    m_pShiftPage->m_pCenterXSpin->setValue(ptFound.x());
                    m_pShiftPage->m_pCenterYSpin->setValue(ptFound.y());
                    syncParametersWithControls(true);
                    recalculate3DPeakPositionsAndUpdateView();
                });
}

void MainWindow::offerCell(const TiltRefinement& refinement)
{
    const std::optional<CellParameters> cell = cellParameters(refinement.basis);
    if (!cell || !(refinement.dfSquaresAfter < refinement.dfSquaresBefore)) {
        m_pMessageEdit->addMessage(tr("Basis vectors: the cell in force fits the tilts as well. It stays."),
                                   Qt::blue);
        return;
    }
    const auto text = [this](const CellParameters& parameters) {
        QStringList listNumber;
        for (double df : parameters.numbers()) {
            listNumber.append(m_locale.toString(df, 'f', 2));
        }
        return listNumber.join(QLatin1Char(' '));
    };
    const CellParameters cellFormer = cellParametersFromList(m_dataSet.m_listCell).value_or(CellParameters());
    offerToTake(tr("Basis vectors: cell %1, in force %2.").arg(text(*cell), text(cellFormer)),
                [this, listCell = refinement.basis.toList()] {
                    m_dataSet.m_listCellFound = listCell;
                    updateUnitCell();
                });
}

}  // namespace tessera
