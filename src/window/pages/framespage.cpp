#include "window/pages/framespage.h"

#include "window/frames/contrasthistogram.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tessera {

namespace {

QTableWidget* makeFileTable(QWidget* pParent)
{
    auto* pTable = new QTableWidget(0, 4, pParent);
    pTable->setHorizontalHeaderLabels(
        {FramesPage::tr("Name"), FramesPage::tr("Stage"), FramesPage::tr("Beam"), FramesPage::tr("Overall")});
    pTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    pTable->setAlternatingRowColors(true);
    pTable->setSelectionMode(QAbstractItemView::SingleSelection);
    pTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    setLowRows(pTable);
    pTable->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    pTable->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    pTable->setToolTip(FramesPage::tr("File names of the images in the series"));
    return pTable;
}

}  // namespace

FramesPage::FramesPage(QWidget* pParent) : QWidget(pParent)
{
    auto* pPageLayout = new QVBoxLayout(this);
    pPageLayout->addWidget(makeFiles(), 1);
    pPageLayout->addLayout(makeGeometry());
    pPageLayout->addWidget(makePlay());
}

QGroupBox* FramesPage::makeFiles()
{
    auto* pFiles = new QGroupBox(tr("Files"), this);
    auto* pLayout = new QVBoxLayout(pFiles);
    m_pFileTable = makeFileTable(pFiles);
    pLayout->addWidget(m_pFileTable);
    explain(m_pFileTable,
            tr("The frames of the series with their tilts in degrees: of the stage, of the beam,"
               " and over all. The overall tilt is the one that places peaks in reciprocal "
               "space. A click shows the frame."));
    return pFiles;
}

// The numbers of the geometry, with the contrast between the axis and the tilt relaxation.
QLayout* FramesPage::makeGeometry()
{
    m_pWavelengthSpin = makeSpin(this, &DataSet::m_dfWavelength);
    m_pPixelSizeSpin = makeSpin(this, &DataSet::m_dfPixelSize);
    m_pRotationAxisSpin = makeSpin(this, &DataSet::m_dfRotationAxis);
    m_pShowAxisCheck = new QCheckBox(tr("Show On EDP"), this);
    m_pTiltRelaxationSpin = makeSpin(this, &DataSet::m_dfTiltRelaxation);
    QGroupBox* pContrast = makeContrast();
    explain(m_pShowAxisCheck, tr("Draws the rotation axis through the direct beam of the frame in view."));

    auto* pGrid = new QGridLayout;
    pGrid->addWidget(new QLabel(tr("Wavelength"), this), 0, 0);
    pGrid->addWidget(m_pWavelengthSpin, 0, 1);
    pGrid->addWidget(new QLabel(tr("Pixel Size"), this), 1, 0);
    pGrid->addWidget(m_pPixelSizeSpin, 1, 1);
    pGrid->addWidget(new QLabel(tr("Rotation Axis At"), this), 2, 0);
    pGrid->addWidget(m_pRotationAxisSpin, 2, 1);
    pGrid->addWidget(m_pShowAxisCheck, 2, 2);
    pGrid->addWidget(pContrast, 3, 0, 2, 3);
    pGrid->addWidget(new QLabel(tr("Tilt Relaxation"), this), 5, 0);
    pGrid->addWidget(m_pTiltRelaxationSpin, 5, 1);
    pGrid->setColumnStretch(1, 100);
    return pGrid;
}

QGroupBox* FramesPage::makeContrast()
{
    auto* pContrast = new QGroupBox(tr("Intensity Range for Contrast Scaling"), this);
    m_pContrastMinSpin = makeDoubleSpin(pContrast, nContrastLow, nContrastHigh, 2, 10, 0);
    m_pContrastMaxSpin = makeDoubleSpin(pContrast, nContrastLow, nContrastHigh, 2, 10, 0);
    auto* pGrid = new QGridLayout(pContrast);
    pGrid->addWidget(new QLabel(tr("Min."), pContrast), 0, 0);
    pGrid->addWidget(m_pContrastMinSpin, 0, 1);
    pGrid->addWidget(new QLabel(tr("Max."), pContrast), 1, 0);
    pGrid->addWidget(m_pContrastMaxSpin, 1, 1);
    pGrid->setColumnStretch(1, 100);
    m_pContrastHistogram = new ContrastHistogram(pContrast);
    m_pContrastHistogram->setAccessibleName(tr("Histogram of the pixel values"));
    m_pContrastAutoButton = new QPushButton(tr("Automatic"), pContrast);
    m_pContrastFullButton = new QPushButton(tr("Full Range"), pContrast);
    m_pContrastLogCheck = new QCheckBox(tr("Logarithmic"), pContrast);
    auto* pButtons = new QHBoxLayout;
    pButtons->addWidget(m_pContrastAutoButton);
    pButtons->addWidget(m_pContrastFullButton);
    pButtons->addStretch(1);
    pButtons->addWidget(m_pContrastLogCheck);
    pGrid->addWidget(m_pContrastHistogram, 2, 0, 1, 2);
    pGrid->addLayout(pButtons, 3, 0, 1, 2);

    explain(m_pContrastMinSpin,
            tr("Pixel value that is shown black, in counts. For the eye, for saved series and "
               "for the scaled volume; nothing is measured by it."));
    explain(m_pContrastMaxSpin,
            tr("Pixel value that is shown white, in counts. Lower it to see weak spots."));
    explain(
        m_pContrastHistogram,
        tr("Histogram of the pixel values, with the limits for black and white: drag the handles. A double "
           "click is \"Automatic\". Keys: Up and Down choose a handle, Left and Right move it."));
    explain(m_pContrastAutoButton,
            tr("The 1st and the 99.7th percentile of the image in view, without the direct beam: spots are "
               "white, the background is just above black. All frames are shown with these limits."));
    explain(m_pContrastFullButton,
            tr("From nearly the weakest pixel of the image in view to nearly the strongest, which is in the "
               "direct beam: to see the beam itself."));
    explain(m_pContrastLogCheck,
            tr("Shows the logarithm of the value above \"Min.\", so that weak spots and the beam are seen at "
               "once. Saved series stay linear. Grey turned round is in the menu \"View\"."));
    return pContrast;
}

QGroupBox* FramesPage::makePlay()
{
    auto* pPlay = new QGroupBox(tr("Auto Play"), this);
    auto* pRows = new QVBoxLayout(pPlay);  // in one row the page would be too wide
    auto* pLayout = new QHBoxLayout;
    m_pPlayDelaySpin = makeIntSpin(pPlay, 0, 1000000, 10, 0, QStringLiteral(" ms"));
    m_pPlayDelaySpin->setMaximumWidth(70);
    m_pPlayDelaySpin->setAlignment(Qt::AlignRight);
    m_pPlayForwardButton = new QPushButton(QStringLiteral("►"), pPlay);
    m_pPlayBackwardButton = new QPushButton(QStringLiteral("◄"), pPlay);
    m_pPlayStopButton = new QPushButton(QStringLiteral("■"), pPlay);
    m_pPlayLoopCheck = new QCheckBox(tr("Loop"), pPlay);
    explain(m_pPlayLoopCheck, tr("The play continues at the other end of the series until it is stopped."));
    explain(m_pPlayDelaySpin,
            tr("Pause between two frames, ms, also between the aligned regions that the shift "
               "evaluation shows."));
    explain(m_pPlayForwardButton, tr("Plays the series forwards."));
    explain(m_pPlayBackwardButton, tr("Plays the series backwards."));
    explain(m_pPlayStopButton, tr("Stops the play."));
    pLayout->addWidget(new QLabel(tr("Delay"), pPlay));
    pLayout->addWidget(m_pPlayDelaySpin);
    for (QPushButton* pButton : {m_pPlayForwardButton, m_pPlayBackwardButton, m_pPlayStopButton}) {
        pLayout->addWidget(pButton);
    }
    pRows->addLayout(pLayout);
    pRows->addWidget(m_pPlayLoopCheck);
    return pPlay;
}

void FramesPage::setAxisDecimals(int nDecimals)
{
    const QSignalBlocker blocker(m_pRotationAxisSpin);
    m_pRotationAxisSpin->setDecimals(nDecimals);
}

}  // namespace tessera
