#include "window/sections/sectionwindow.h"

#include "road/intensities.h"
#include "window/pages/controltips.h"
#include "window/sections/sectionview.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QVBoxLayout>

#include <algorithm>

namespace tessera {

namespace {

const int g_nMostZoom = 8;

QDoubleSpinBox* makeBox(double dfMost, int nDecimals, double dfStep, const QString& strAuto,
                        const QString& strTip, QWidget* pParent)
{
    auto* pBox = new QDoubleSpinBox(pParent);
    pBox->setRange(0, dfMost);
    pBox->setDecimals(nDecimals);
    pBox->setSingleStep(dfStep);
    pBox->setSpecialValueText(strAuto);
    pBox->setKeyboardTracking(false);
    explain(pBox, strTip);
    return pBox;
}

QCheckBox* makeCheck(const QString& strText, bool bChecked, const QString& strTip, QWidget* pParent)
{
    auto* pCheck = new QCheckBox(strText, pParent);
    pCheck->setChecked(bChecked);
    explain(pCheck, strTip);
    return pCheck;
}

QPushButton* makeButton(const QString& strText, const QString& strTip, QWidget* pParent)
{
    auto* pButton = new QPushButton(strText, pParent);
    pButton->setAutoDefault(false);  // Return in a box presses nothing
    explain(pButton, strTip);
    return pButton;
}

}  // namespace

SectionWindow::SectionWindow(QWidget* pParent) : QDialog(pParent, Qt::Window)
{
    setObjectName(QStringLiteral("Sections"));
    setWindowTitle(tr("Sections of Reciprocal Space"));
    m_pView = new SectionView(this);
    m_pArea = new QScrollArea(this);
    m_pArea->setWidget(m_pView);
    m_pArea->setAlignment(Qt::AlignCenter);
    m_pReading = new QLabel(this);
    m_pReading->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* pLayout = new QVBoxLayout(this);
    pLayout->addWidget(makeChoices());
    pLayout->addWidget(makeLook());
    pLayout->addWidget(m_pArea, 1);
    pLayout->addWidget(m_pReading);
    connect(m_pView, &SectionView::zoomed, this, [this](int nSteps) {
        const int nZoom = std::max(m_pView->placing().nZoom + nSteps, 1);
        m_pZoom->setCurrentIndex(std::min(nZoom, g_nMostZoom));
    });
    shareTips(this);
    resize(1000, 740);
}

QWidget* SectionWindow::makeChoices()
{
    auto* pRow = new QWidget(this);
    m_pPlane = new QComboBox(pRow);
    m_pPlane->addItems({tr("hk layer"), tr("h layer l"), tr("layer k l")});
    explain(m_pPlane, tr("Which of the indices is the same all over the section."));
    m_pLayer = new QSpinBox(pRow);
    m_pLayer->setRange(-99, 99);
    explain(m_pLayer, tr("The index that is the same: 0 for hk0, 1 for hk1."));
    m_pThickness = makeBox(
        1, 4, 0.001, tr("auto"),
        tr("Thickness of the slab that is looked at, Å⁻¹. Auto: the width of the spots, at "
           "most half the distance of the layers."),
        pRow);
    m_pResolution = makeBox(
        100, 2, 0.1, tr("auto"),
        tr("Resolution limit of the section, as a spacing in Å. Auto: slightly beyond the indexed peaks."),
        pRow);
    m_pLaueClass = new QComboBox(pRow);
    m_pLaueClass->addItem(tr("none"));
    m_pLaueClass->addItems(laueClassNames());
    explain(m_pLaueClass, tr("Averages the planes that are equivalent in a Laue class, in the setting of the "
                             "cell in force: fewer gaps, less noise. Not for a search of the symmetry."));
    m_pBackgroundOff = makeCheck(
        tr("Background off"), false,
        tr("Takes from each pixel of a frame the median of its ring about the direct "
           "beam."),
        pRow);
    m_pButtonMake = makeButton(tr("Make"),
                               tr("Reads the frames and makes the section. During the run: stops."), pRow);
    m_pButtonSave = makeButton(
        tr("Save as..."),
        tr("Writes the section: .mrc the counts, .png the picture as it is drawn here, "
           "on the scale of a page."),
        pRow);
    auto* pLayout = new QHBoxLayout(pRow);
    pLayout->setContentsMargins(0, 0, 0, 0);
    const auto add = [&](const QString& strLabel, QWidget* pWidget) {
        auto* pLabel = new QLabel(strLabel, pRow);
        pLabel->setBuddy(pWidget);
        pLayout->addWidget(pLabel);
        pLayout->addWidget(pWidget);
    };
    add(tr("Plane:"), m_pPlane);
    pLayout->addWidget(m_pLayer);
    add(tr("Thickness (Å⁻¹):"), m_pThickness);
    add(tr("d (Å):"), m_pResolution);
    add(tr("Averaged by:"), m_pLaueClass);
    pLayout->addWidget(m_pBackgroundOff);
    pLayout->addStretch(1);
    pLayout->addWidget(m_pButtonMake);
    pLayout->addWidget(m_pButtonSave);
    return pRow;
}

QWidget* SectionWindow::makeLook()
{
    const SectionLook standard;
    auto* pRow = new QWidget(this);
    m_pDarkest = makeBox(50, 2, 0.5, {}, tr("Per cent of the pixels below the grey scale."), pRow);
    m_pDarkest->setValue(standard.dfDarkest);
    m_pBrightest = makeBox(50, 2, 0.1, {}, tr("Per cent of the pixels above the grey scale."), pRow);
    m_pBrightest->setValue(standard.dfBrightest);
    m_pLogarithmic = makeCheck(tr("Logarithmic"), standard.bLogarithmic,
                               tr("Greys go by the logarithm of the counts: weak beside strong."), pRow);
    m_pDark = makeCheck(tr("Dark"), standard.bDark, tr("Bright spots on dark ground."), pRow);
    m_pIndices = makeCheck(tr("Indices"), standard.bIndices,
                           tr("Writes the indices of some points along the axes."), pRow);
    m_pLattice = makeCheck(tr("Lattice"), standard.bLattice,
                           tr("Rings each point with whole indices, where they have room."), pRow);
    m_pRings = makeCheck(tr("Rings"), standard.bRings, tr("Draws rings of resolution, labelled in Å."), pRow);
    m_pZoom = new QComboBox(pRow);
    m_pZoom->addItem(tr("page"));
    for (int nZoom = 1; nZoom <= g_nMostZoom; ++nZoom) {
        m_pZoom->addItem(QStringLiteral("%1 ×").arg(nZoom));
    }
    explain(m_pZoom, tr("Pixels of the screen for one of the section; the wheel with Ctrl does the same."));
    auto* pLayout = new QHBoxLayout(pRow);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->addWidget(new QLabel(tr("Cut off (%):"), pRow));
    pLayout->addWidget(m_pDarkest);
    pLayout->addWidget(m_pBrightest);
    for (QCheckBox* pCheck : {m_pLogarithmic, m_pDark, m_pIndices, m_pLattice, m_pRings}) {
        pLayout->addWidget(pCheck);
        connect(pCheck, &QCheckBox::toggled, this, &SectionWindow::lookChanged);
    }
    pLayout->addWidget(new QLabel(tr("Zoom:"), pRow));
    pLayout->addWidget(m_pZoom);
    pLayout->addStretch(1);
    for (QDoubleSpinBox* pBox : {m_pDarkest, m_pBrightest}) {
        connect(pBox, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &SectionWindow::lookChanged);
    }
    connect(m_pZoom, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SectionWindow::lookChanged);
    return pRow;
}

SectionPlane SectionWindow::plane() const
{
    return axisPlane(2 - m_pPlane->currentIndex(), m_pLayer->value());
}

SectionOptions SectionWindow::options() const
{
    SectionOptions options;
    options.dfThickness = m_pThickness->value();
    options.dfMaxDStar = m_pResolution->value() > 0 ? 1 / m_pResolution->value() : 0;
    options.strLaueClass = m_pLaueClass->currentIndex() > 0 ? m_pLaueClass->currentText() : QString();
    options.bWithoutRings = m_pBackgroundOff->isChecked();
    return options;
}

SectionLook SectionWindow::look() const
{
    SectionLook look;
    look.bLogarithmic = m_pLogarithmic->isChecked();
    look.bDark = m_pDark->isChecked();
    look.bIndices = m_pIndices->isChecked();
    look.bLattice = m_pLattice->isChecked();
    look.bRings = m_pRings->isChecked();
    look.dfDarkest = m_pDarkest->value();
    look.dfBrightest = m_pBrightest->value();
    look.nZoom = m_pZoom->currentIndex();
    return look;
}

void SectionWindow::keep(QSettings& settings) const
{
    settings.setValue(QStringLiteral("Sections/Plane"), m_pPlane->currentIndex());
    settings.setValue(QStringLiteral("Sections/Layer"), m_pLayer->value());
    settings.setValue(QStringLiteral("Sections/BackgroundOff"), m_pBackgroundOff->isChecked());
    settings.setValue(QStringLiteral("Sections/Darkest"), m_pDarkest->value());
    settings.setValue(QStringLiteral("Sections/Brightest"), m_pBrightest->value());
    settings.setValue(QStringLiteral("Sections/Logarithmic"), m_pLogarithmic->isChecked());
    settings.setValue(QStringLiteral("Sections/Dark"), m_pDark->isChecked());
    settings.setValue(QStringLiteral("Sections/Indices"), m_pIndices->isChecked());
    settings.setValue(QStringLiteral("Sections/Lattice"), m_pLattice->isChecked());
    settings.setValue(QStringLiteral("Sections/Rings"), m_pRings->isChecked());
    settings.setValue(QStringLiteral("Sections/Zoom"), m_pZoom->currentIndex());
}

void SectionWindow::restore(const QSettings& settings)
{
    const auto number = [&](const char* pszKey, double dfDefault) {
        bool bOk = false;
        const double df = settings.value(QLatin1String(pszKey)).toDouble(&bOk);
        return bOk ? df : dfDefault;
    };
    const auto check = [&](const char* pszKey, QCheckBox* pCheck) {
        pCheck->setChecked(settings.value(QLatin1String(pszKey), pCheck->isChecked()).toBool());
    };
    const auto choose = [&](const char* pszKey, QComboBox* pCombo) {
        pCombo->setCurrentIndex(std::clamp(int(number(pszKey, 0)), 0, pCombo->count() - 1));
    };
    choose("Sections/Plane", m_pPlane);
    m_pLayer->setValue(int(number("Sections/Layer", 0)));
    check("Sections/BackgroundOff", m_pBackgroundOff);
    m_pDarkest->setValue(number("Sections/Darkest", m_pDarkest->value()));
    m_pBrightest->setValue(number("Sections/Brightest", m_pBrightest->value()));
    check("Sections/Logarithmic", m_pLogarithmic);
    check("Sections/Dark", m_pDark);
    check("Sections/Indices", m_pIndices);
    check("Sections/Lattice", m_pLattice);
    check("Sections/Rings", m_pRings);
    choose("Sections/Zoom", m_pZoom);
}

}  // namespace tessera
