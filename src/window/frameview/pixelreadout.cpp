#include "window/frameview/pixelreadout.h"

#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "frameview/textdatawidget.h"
#include "imaging/imageview.h"

#include <QStatusBar>

#include <cmath>
#include <optional>

namespace tessera {

namespace {

std::optional<float> pixelValue(const ImageList& vecImage, int nImage, int x, int y)
{
    if (nImage < 0 || nImage >= int(vecImage.size()) || !vecImage[nImage]) {
        return {};
    }
    const CImgObj<float>& img = *vecImage[nImage];
    if (!img.Data() || x < 0 || y < 0 || x >= img.Width() || y >= img.Height()) {
        return {};
    }
    return viewOf(img).at(x, y);
}

// The shortest form has six digits and goes over to powers of ten beyond them: the whole number instead.
QString pixelText(float fValue)
{
    if (std::isnan(fValue)) {
        return QStringLiteral("no measurement");  // as the frame marks it
    }
    const bool bLarge = std::abs(fValue) >= 999999.5f;
    return QStringLiteral("%L1").arg(double(fValue), 0, bLarge ? 'f' : 'g', bLarge ? 0 : -1);
}

}  // namespace

CPixelReadout::CPixelReadout(OriginalImgScene& scene, BaseImgView& view, TextDataWidget& textData,
                             QStatusBar& statusBar)
    : m_scene(scene), m_view(view), m_textData(textData), m_statusBar(statusBar)
{}

void CPixelReadout::show(const ImageList& vecImage, const QPointF& ptF, bool bLabel)
{
    const int x = int(std::floor(ptF.x()));
    const int y = int(std::floor(ptF.y()));
    const std::optional<float> value = pixelValue(vecImage, m_scene.currentIndex(), x, y);
    const QString strValue = value ? pixelText(*value) : QString();
    if (value && bLabel) {
        m_scene.setLabel(x, y, QStringLiteral("I=%1\n(%L2, %L3)").arg(strValue).arg(x).arg(y));
        m_scene.setLabelVisible(true);
        m_view.viewport()->update();
        m_view.setDragMode(QGraphicsView::NoDrag);
        m_view.viewport()->setCursor(Qt::CrossCursor);
        m_textData.setCenter(ptF);
        m_textData.refresh();
    } else {
        hideLabel();
    }
    m_ptRead = ptF;
    m_strStatus = value ? QStringLiteral("Experimental(%L1, %L2): %3").arg(x).arg(y).arg(strValue)
                        : QString();
    m_statusBar.showMessage(m_strStatus);
}

void CPixelReadout::renew(const ImageList& vecImage)
{
    if (m_scene.isLabelVisible() || showsStatus()) {
        show(vecImage, m_ptRead, m_scene.isLabelVisible());
    }
}

void CPixelReadout::clear()
{
    hideLabel();
    if (showsStatus()) {
        m_statusBar.clearMessage();
    }
}

void CPixelReadout::hideLabel()
{
    if (!m_scene.isLabelVisible()) {
        return;
    }
    m_scene.setLabelVisible(false);
    m_view.viewport()->update();
    m_view.viewport()->unsetCursor();
    m_view.setDragMode(QGraphicsView::ScrollHandDrag);
}

bool CPixelReadout::showsStatus() const
{
    return !m_strStatus.isEmpty() && m_statusBar.currentMessage() == m_strStatus;
}

}  // namespace tessera
