// ContrastHistogram: the distribution of the pixel values, with a handle at either end of the contrast.
#pragma once

#include "imaging/viewhistogram.h"

#include <QWidget>

namespace tessera {

/// Draws the counts by their logarithm over the axis of the histogram, and the values that are shown black
/// and white as two handles that can be dragged.
///
/// Keys: Up and Down choose a handle, Left and Right move it by a hundredth of the axis, with Ctrl by a
/// tenth, Return asks for the automatic limits, as a double click does. A limit off the axis has its handle
/// at the end and stays what it is until that handle is moved.
class ContrastHistogram : public QWidget {
    Q_OBJECT

public:
    /// No histogram and no limits yet.
    explicit ContrastHistogram(QWidget* pParent = nullptr);

    /// The histogram to draw.
    void setHistogram(const ViewHistogram& histogram);
    /// The histogram that is drawn.
    const ViewHistogram& histogram() const { return m_histogram; }
    void setLimits(double dfLow, double dfHigh);  ///< without a signal
    /// Where a handle is, pixels of the widget from the left.
    double handleX(bool bHigh) const;

    QSize sizeHint() const override { return {200, 84}; }
    QSize minimumSizeHint() const override { return {120, 72}; }

signals:
    void limitsChanged(double dfLow, double dfHigh);  ///< by the user; low is below high
    /// The user asked for the automatic limits.
    void automaticWanted();

protected:
    void paintEvent(QPaintEvent* pEvent) override;
    void mousePressEvent(QMouseEvent* pEvent) override;
    void mouseMoveEvent(QMouseEvent* pEvent) override;
    void mouseReleaseEvent(QMouseEvent* pEvent) override;
    void mouseDoubleClickEvent(QMouseEvent* pEvent) override;
    void keyPressEvent(QKeyEvent* pEvent) override;

private:
    QRectF plot() const;
    void moveHandle(double dfPlace);
    void paintBars(QPainter& painter) const;
    void paintHandle(QPainter& painter, bool bHigh) const;

    ViewHistogram m_histogram;
    double m_dfLow = 0, m_dfHigh = 1;
    bool m_bHigh = true;  ///< the handle that was used last, or is dragged
    bool m_bDragging = false;
    double m_dfGrip = 0;  ///< from the pointer to the handle, pixels
};

}  // namespace tessera
