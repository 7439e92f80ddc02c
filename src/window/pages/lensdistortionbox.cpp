#include "window/pages/lensdistortionbox.h"

#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QToolButton>
#include <QVBoxLayout>

namespace tessera {

namespace {

/// The label of a number, in the order of g_aDistortionKeyword.
QStringList labels()
{
    return {LensDistortionBox::tr("Ellipse"),           LensDistortionBox::tr("Ellipse Azimuth"),
            LensDistortionBox::tr("Third Order"),       LensDistortionBox::tr("Spiral"),
            LensDistortionBox::tr("Reference Radius"),  LensDistortionBox::tr("Parabolic"),
            LensDistortionBox::tr("Parabolic Azimuth"), LensDistortionBox::tr("Axis Out of Plane")};
}

}  // namespace

LensDistortionBox::LensDistortionBox(QWidget* pParent) : QWidget(pParent)
{
    m_pUnfoldButton = new QToolButton(this);
    m_pUnfoldButton->setCheckable(true);
    m_pUnfoldButton->setAutoRaise(true);
    m_pUnfoldButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_pUnfoldButton->setArrowType(Qt::RightArrow);
    explain(
        m_pUnfoldButton,
        tr("Distortions that are undone beside the stretching, at work where they are not 0: a linear "
           "ellipse, the third order, the parabolic second order, and the tilt of the rotation axis out of "
           "the plane. A refined project brings them."));
    auto* pBoxes = new QWidget(this);
    auto* pGrid = new QGridLayout(pBoxes);
    pGrid->setContentsMargins(0, 0, 0, 0);
    pGrid->setColumnStretch(1, 1);
    const QStringList listLabel = labels();
    for (const DistortionKeyword& row : g_aDistortionKeyword) {
        QDoubleSpinBox* pSpin = makeSpin(pBoxes, row.pMember);
        pSpin->setKeyboardTracking(false);  // a half-typed distortion would move every point
        addBox(pGrid, m_listBox.size(), listLabel[m_listBox.size()], pSpin);
        m_listBox.append(pSpin);
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &LensDistortionBox::showInForce);
    }
    pBoxes->hide();
    connect(m_pUnfoldButton, &QToolButton::toggled, pBoxes, &QWidget::setVisible);
    connect(m_pUnfoldButton, &QToolButton::toggled, this,
            [this](bool bOpen) { m_pUnfoldButton->setArrowType(bOpen ? Qt::DownArrow : Qt::RightArrow); });
    auto* pLayout = new QVBoxLayout(this);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(m_pUnfoldButton);
    pLayout->addWidget(pBoxes);
    showInForce();
}

SeriesDistortion LensDistortionBox::distortion() const
{
    SeriesDistortion distortion;
    for (int n = 0; n < m_listBox.size(); ++n) {
        distortion.*g_aDistortionKeyword[n].pMember = m_listBox[n]->value();
    }
    return distortion;
}

void LensDistortionBox::showInForce()
{
    m_pUnfoldButton->setText(m_listBox.size() < int(std::size(g_aDistortionKeyword)) || distortion().isNone()
                                 ? tr("Lens Distortion")
                                 : tr("Lens Distortion (in force)"));
}

}  // namespace tessera
