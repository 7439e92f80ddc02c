#include "window/frameview/frameoverlay.h"

#include "frameview/replacemarks.h"
#include "frameview/spotring.h"
#include "frameview/textitem.h"

#include <QBrush>
#include <QGraphicsLineItem>
#include <QGraphicsPolygonItem>
#include <QGraphicsScene>
#include <QLocale>
#include <QPen>

namespace tessera {

namespace {

const QPointF g_ptToCentre(0.5, 0.5);  // the scene counts from corners of pixels
const float g_fSpotRadius = 12;
const double g_dfRingZ = 120;      // below the labels of the peaks and the axis
const double g_dfSpotZ = 250;      // above them
const double g_dfDistanceZ = 350;  // above all
const QColor g_colorRing(0, 190, 255);
const QColor g_colorSpot(255, 200, 0);

/// Text of the size of the screen at every scale, on a ground that is dark enough over any palette.
TextItem* makeText(const QString& strText, const QPointF& ptScene, const QColor& color, double dfZ)
{
    auto* pText = new TextItem;
    pText->setFlag(QGraphicsItem::ItemIgnoresTransformations);
    pText->setText(strText);
    pText->setPos(ptScene);
    pText->setBrushColor(color);
    pText->setBackground(QColor(0, 0, 0, 150));
    pText->setZValue(dfZ);
    return pText;
}

QPen cosmeticPen(const QColor& color, double dfWidth)
{
    QPen pen(color, dfWidth);
    pen.setCosmetic(true);
    return pen;
}

}  // namespace

void CFrameOverlay::showRings(const std::vector<ResolutionRing>& vecRing)
{
    QList<QGraphicsItem*> listItem;
    for (const ResolutionRing& ring : vecRing) {
        auto* pRing = new QGraphicsPolygonItem(ring.polygon.translated(g_ptToCentre));
        pRing->setPen(cosmeticPen(g_colorRing, 1));
        pRing->setZValue(g_dfRingZ);
        listItem.append(pRing);
        if (ring.ptText) {
            const QString strText = QStringLiteral("%1 Å").arg(
                QLocale::system().toString(ring.dfSpacing, 'g', 3));
            listItem.append(makeText(strText, *ring.ptText + g_ptToCentre, g_colorRing, g_dfRingZ + 1));
        }
    }
    replaceMarks(&m_scene, m_listRing, listItem);
}

void CFrameOverlay::showSpots(const QList<QPointF>& listPlace, const std::optional<QPointF>& current)
{
    QList<SpotRing*> listItem;
    const auto add = [&listItem](const QPointF& pt, double dfWidth) {
        auto* pRing = new SpotRing;
        pRing->setSize(g_fSpotRadius);
        pRing->setColor(g_colorSpot);
        pRing->setPenWidth(dfWidth);
        pRing->setPos(pt + g_ptToCentre);
        pRing->setZValue(g_dfSpotZ);
        listItem.append(pRing);
    };
    for (const QPointF& pt : listPlace) {
        if (!current || pt != *current) {
            add(pt, 1);
        }
    }
    if (current) {
        add(*current, 2.5);
    }
    replaceMarks(&m_scene, m_listSpot, listItem);
}

void CFrameOverlay::showDistance(const QLineF& line, const QString& strText)
{
    auto* pLine = new QGraphicsLineItem(line.translated(g_ptToCentre));
    pLine->setPen(cosmeticPen(g_colorSpot, 1.5));
    pLine->setZValue(g_dfDistanceZ);
    replaceMarks(&m_scene, m_listDistance,
                 {pLine, makeText(strText, line.p2() + g_ptToCentre, g_colorSpot, g_dfDistanceZ + 1)});
}

void CFrameOverlay::hideDistance()
{
    replaceMarks(&m_scene, m_listDistance);
}

}  // namespace tessera
