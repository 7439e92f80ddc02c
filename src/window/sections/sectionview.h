// SectionView: the picture of a section, with the place under the pointer.
#pragma once

#include "exchange/sectionpicture.h"

#include <QImage>
#include <QPoint>
#include <QWidget>

#include <optional>

namespace tessera {

/// Shows what drawSection() makes, pixel by pixel, in a scroll area. Places are columns and rows of the
/// section, whole numbers are centres of pixels.
class SectionView : public QWidget {
    Q_OBJECT

public:
    /// Shows no section yet.
    explicit SectionView(QWidget* pParent = nullptr);

    /// Draws a section anew.
    void showSection(const ReciprocalSection& section, const SectionLook& look);
    /// Shows a sentence in place of a section.
    void showText(const QString& strText);
    /// Rings a place of the section, or none.
    void ring(const std::optional<QPointF>& ptSection);

    /// Where the section lies in the picture.
    const SectionLayout& placing() const { return m_layout; }
    QSize sizeHint() const override;

signals:
    /// The pointer is over a place of the field.
    void pointed(const QPointF& ptSection);
    /// It has left the field.
    void left();
    /// A click there, without a drag.
    void clicked(const QPointF& ptSection);
    /// The wheel with Ctrl held. @param nSteps  above 0: larger
    void zoomed(int nSteps);

protected:
    void paintEvent(QPaintEvent* pEvent) override;
    void mouseMoveEvent(QMouseEvent* pEvent) override;
    void mousePressEvent(QMouseEvent* pEvent) override;
    void mouseReleaseEvent(QMouseEvent* pEvent) override;
    void leaveEvent(QEvent* pEvent) override;
    void wheelEvent(QWheelEvent* pEvent) override;

private:
    bool isOnField(const QPoint& pt) const;

    QImage m_image;  ///< null: there is no section
    SectionLayout m_layout;
    QString m_strText;
    std::optional<QPointF> m_ptRing;
    std::optional<QPoint> m_ptPressed;
};

}  // namespace tessera
