#include "window/frames/contrastcontrol.h"

#include "imaging/contrast.h"
#include "window/frames/contrasthistogram.h"
#include "window/pages/framespage.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QPushButton>
#include <QSettings>
#include <QSignalBlocker>

#include <cmath>
#include <utility>

namespace tessera {

namespace {

constexpr int g_nBins = 256;
constexpr int g_nKeepAfter = 1000;  // ms: a drag writes once, and a crash costs no more
// Sums of long series go beyond the range that the boxes have for frames.
constexpr double g_dfBoxRange = 1e12;

}  // namespace

ContrastControl::ContrastControl(FramesPage& page, ContrastHost host, QObject* pParent)
    : QObject(pParent), m_page(page), m_host(std::move(host))
{
    for (QDoubleSpinBox* pSpin : {page.m_pContrastMinSpin, page.m_pContrastMaxSpin}) {
        // As wide as it is for the numbers of frames, also where those of a sum have more digits.
        pSpin->setMinimumWidth(pSpin->minimumSizeHint().width());
        pSpin->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &ContrastControl::userChanged);
    }
    connect(page.m_pContrastLogCheck, &QCheckBox::toggled, this, [this](bool bOn) {
        m_host.fnSetLogarithmic(bOn);
        userChanged();
        m_host.fnRedraw();
    });
    connect(page.m_pContrastAutoButton, &QPushButton::clicked, this, &ContrastControl::setAutomatic);
    connect(page.m_pContrastFullButton, &QPushButton::clicked, this, &ContrastControl::setFullRange);
    connect(page.m_pContrastHistogram, &ContrastHistogram::automaticWanted, this,
            &ContrastControl::setAutomatic);
    connect(page.m_pContrastHistogram, &ContrastHistogram::limitsChanged, this,
            [this](double dfLow, double dfHigh) {
                m_page.m_pContrastMinSpin->setValue(dfLow);
                m_page.m_pContrastMaxSpin->setValue(dfHigh);
            });
    page.m_pContrastHistogram->installEventFilter(this);
    m_timerKeep.setSingleShot(true);
    connect(&m_timerKeep, &QTimer::timeout, this, &ContrastControl::keep);
}

ContrastControl::~ContrastControl()
{
    keep();
}

void ContrastControl::beginSeries(const QString& strSeries)
{
    keep();
    endOther();
    m_strSeries = strSeries;
}

bool ContrastControl::takeFirst(const CImgObj<float>& image)
{
    const std::optional<KeptContrast> kept = keptContrast(*m_host.fnSettings(), m_strSeries);
    const QSignalBlocker blocker(m_page.m_pContrastLogCheck);
    m_page.m_pContrastLogCheck->setChecked(kept && kept->bLogarithmic);
    m_host.fnSetLogarithmic(m_page.m_pContrastLogCheck->isChecked());
    if (kept) {
        setBoxes(kept->dfLow, kept->dfHigh);
        return true;
    }
    return setByPercentiles(image) || setByRange(image);
}

bool ContrastControl::setByPercentiles(const CImgObj<float>& image)
{
    const std::optional<DisplayLimits> limits = displayLimits(image, brightestDisc(image));
    const double dfStep = std::pow(10, -m_page.m_pContrastMinSpin->decimals());
    if (!limits || limits->dfHigh - limits->dfLow < dfStep) {
        return false;  // the two limits would be equal in the boxes
    }
    setBoxes(limits->dfLow, limits->dfHigh);
    return true;
}

bool ContrastControl::setByRange(const CImgObj<float>& image)
{
    double dfLow = 0, dfHigh = 0;
    if (!autoContrastLimits(image.Data(), image.Width() * image.Height(), &dfLow, &dfHigh)) {
        return false;
    }
    setBoxes(dfLow, dfHigh);
    return true;
}

void ContrastControl::setAutomatic()
{
    const CImgObj<float>* pImage = m_host.fnImage();
    if (pImage && (setByPercentiles(*pImage) || setByRange(*pImage))) {
        userChanged();
        m_host.fnRedraw();
    }
}

void ContrastControl::setFullRange()
{
    const CImgObj<float>* pImage = m_host.fnImage();
    if (pImage && setByRange(*pImage)) {
        userChanged();
        m_host.fnRedraw();
    }
}

void ContrastControl::beginOther(const CImgObj<float>& image)
{
    keep();
    if (!m_limitsOfSeries) {
        m_limitsOfSeries = {m_page.m_pContrastMinSpin->value(), m_page.m_pContrastMaxSpin->value()};
    }
    for (QDoubleSpinBox* pSpin : {m_page.m_pContrastMinSpin, m_page.m_pContrastMaxSpin}) {
        const QSignalBlocker blocker(pSpin);
        pSpin->setRange(-g_dfBoxRange, g_dfBoxRange);
    }
    if (!setByPercentiles(image)) {
        setByRange(image);
    }
}

void ContrastControl::endOther()
{
    if (!m_limitsOfSeries) {
        return;
    }
    const DisplayLimits limits = *m_limitsOfSeries;
    m_limitsOfSeries.reset();
    setBoxes(limits.dfLow, limits.dfHigh);
    for (QDoubleSpinBox* pSpin : {m_page.m_pContrastMinSpin, m_page.m_pContrastMaxSpin}) {
        const QSignalBlocker blocker(pSpin);
        pSpin->setRange(FramesPage::nContrastLow, FramesPage::nContrastHigh);
    }
}

void ContrastControl::setBoxes(double dfLow, double dfHigh)
{
    const QSignalBlocker blockMin(m_page.m_pContrastMinSpin);
    const QSignalBlocker blockMax(m_page.m_pContrastMaxSpin);
    m_page.m_pContrastMinSpin->setValue(dfLow);
    m_page.m_pContrastMaxSpin->setValue(dfHigh);
    m_page.m_pContrastHistogram->setLimits(m_page.m_pContrastMinSpin->value(),
                                           m_page.m_pContrastMaxSpin->value());
}

void ContrastControl::userChanged()
{
    m_page.m_pContrastHistogram->setLimits(m_page.m_pContrastMinSpin->value(),
                                           m_page.m_pContrastMaxSpin->value());
    if (!m_strSeries.isEmpty()) {
        m_bChanged = true;
        m_timerKeep.start(g_nKeepAfter);
    }
}

void ContrastControl::keep()
{
    m_timerKeep.stop();
    if (!std::exchange(m_bChanged, false) || m_strSeries.isEmpty()) {
        return;
    }
    KeptContrast contrast;
    contrast.dfLow = m_limitsOfSeries ? m_limitsOfSeries->dfLow : m_page.m_pContrastMinSpin->value();
    contrast.dfHigh = m_limitsOfSeries ? m_limitsOfSeries->dfHigh : m_page.m_pContrastMaxSpin->value();
    contrast.bLogarithmic = m_page.m_pContrastLogCheck->isChecked();
    keepContrast(*m_host.fnSettings(), m_strSeries, contrast);
}

void ContrastControl::showHistogramOf(const CImgObj<float>& image)
{
    m_bHistogramOld = !m_page.m_pContrastHistogram->isVisible();
    if (!m_bHistogramOld) {
        m_page.m_pContrastHistogram->setHistogram(
            viewHistogram(image.Data(), image.Width() * image.Height(), g_nBins));
    }
}

bool ContrastControl::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pEvent->type() == QEvent::Show && m_bHistogramOld) {
        if (const CImgObj<float>* pImage = m_host.fnImage()) {
            m_bHistogramOld = false;
            m_page.m_pContrastHistogram->setHistogram(
                viewHistogram(pImage->Data(), pImage->Width() * pImage->Height(), g_nBins));
        }
    }
    return QObject::eventFilter(pObject, pEvent);
}

}  // namespace tessera
