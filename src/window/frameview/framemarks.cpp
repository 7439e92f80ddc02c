#include "window/frameview/framemarks.h"

#include "crystal/reflectionindices.h"
#include "frameview/circleitem.h"
#include "frameview/crossitem.h"
#include "frameview/replacemarks.h"
#include "frameview/textitem.h"

#include <QBrush>
#include <QGraphicsLineItem>
#include <QGraphicsPolygonItem>
#include <QGraphicsScene>
#include <QPen>

namespace tessera {

namespace {

const double g_dfMarkPenWidth = 1.0;
const double g_dfLabelPenWidth = 0.2;
const double g_dfLabelGap = 4.0;  // of a label from its spot, enlarged: about the radius of one
const double g_dfLabelZ = 200.0;
const double g_dfAxisZ = 300;
const double g_dfMaskZ = 300;
const int g_nMaskAlpha = 32;

template <typename TItem>
QList<TItem*> makeMarks(const QList<QPointF>& listPos, const QColor& color, int nSize)
{
    QList<TItem*> listMark;
    listMark.reserve(listPos.size());
    for (const QPointF& pt : listPos) {
        auto* pItem = new TItem;
        pItem->setSize(float(nSize));
        pItem->setColor(color);
        pItem->setPenWidth(g_dfMarkPenWidth);
        pItem->setPos(pt);
        listMark.append(pItem);
    }
    return listMark;
}

QColor labelColor(bool bStrongest, bool bAbsent)
{
    if (bStrongest) {
        return bAbsent ? Qt::magenta : Qt::red;
    }
    return bAbsent ? Qt::darkCyan : Qt::green;
}

TextItem* makeLabel(const Peak3D& peak, const DataSet& data, int nFrame)
{
    const int nH = roundIndex(peak.dfH);
    const int nK = roundIndex(peak.dfK);
    const int nL = roundIndex(peak.dfL);
    const bool bKnown = peak.nID >= 0 && peak.nID < int(data.m_vecReflectionFrame.size());
    const bool bStrongest = bKnown && data.m_vecReflectionFrame[peak.nID] == nFrame;
    auto* pItem = new TextItem;
    pItem->setZValue(g_dfLabelZ);
    pItem->setText(QStringLiteral("%L1,%L2,%L3").arg(nH).arg(nK).arg(nL));
    pItem->setPos(peak.dfX2D, peak.dfY2D);
    pItem->setScreenSized(g_dfLabelGap);
    pItem->setPen(QPen(Qt::black, g_dfLabelPenWidth));
    pItem->setBrushColor(labelColor(bStrongest, data.m_spaceGroup.isAbsent(nH, nK, nL)));
    return pItem;
}

QPen dashedPen(const QColor& color)
{
    return QPen(QBrush(color), 1, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin);
}

}  // namespace

CFrameMarks::CFrameMarks(QGraphicsScene& scene) : m_scene(scene), m_pAxisLine(new QGraphicsLineItem)
{
    m_pAxisLine->setPen(dashedPen(Qt::cyan));
    m_pAxisLine->setZValue(g_dfAxisZ);
    m_pAxisLine->hide();
    m_scene.addItem(m_pAxisLine);
}

void CFrameMarks::showCrosses(const QList<QPointF>& listPos, const QColor& color, int nSize)
{
    replaceMarks(&m_scene, m_listCrossMark, makeMarks<CrossItem>(listPos, color, nSize));
}

void CFrameMarks::showCircles(const QList<QPointF>& listPos, int nSize)
{
    replaceMarks(&m_scene, m_listCircleMark, makeMarks<CircleItem>(listPos, Qt::green, nSize));
}

void CFrameMarks::showEstimated(const QList<QPointF>& listPos, int nSize)
{
    replaceMarks(&m_scene, m_listEstimatedMark, makeMarks<CircleItem>(listPos, Qt::cyan, nSize));
}

void CFrameMarks::showLabels(const QList<Peak3D>& listPeak, const DataSet& data, int nFrame)
{
    QList<TextItem*> listLabel;
    listLabel.reserve(listPeak.size());
    for (const Peak3D& peak : listPeak) {
        listLabel.append(makeLabel(peak, data, nFrame));
    }
    replaceMarks(&m_scene, m_listTextMark, listLabel);
}

void CFrameMarks::showAxis(const QLineF& line)
{
    m_pAxisLine->setLine(line);
    m_pAxisLine->show();
}

void CFrameMarks::hideAxis()
{
    m_pAxisLine->hide();
}

void CFrameMarks::clear()
{
    replaceMarks(&m_scene, m_listCrossMark);
    replaceMarks(&m_scene, m_listCircleMark);
    replaceMarks(&m_scene, m_listTextMark);
    replaceMarks(&m_scene, m_listEstimatedMark);
    hideAxis();
}

void CFrameMarks::setMask(const MaskData& mask)
{
    qDeleteAll(m_listMaskItem);  // an item that is deleted removes itself from its scene
    m_listMaskItem.clear();
    for (const QPolygonF& polygon : mask.listPolygon) {
        auto* pItem = new QGraphicsPolygonItem(polygon);
        pItem->setFillRule(mask.fillRule);
        pItem->setPen(dashedPen(Qt::yellow));
        pItem->setBrush(QColor(255, 255, 0, g_nMaskAlpha));
        pItem->setZValue(g_dfMaskZ);
        pItem->hide();
        m_scene.addItem(pItem);
        m_listMaskItem.append(pItem);
    }
}

void CFrameMarks::showMask(bool bShow)
{
    for (QGraphicsPolygonItem* pItem : qAsConst(m_listMaskItem)) {
        pItem->setVisible(bShow);
    }
}

}  // namespace tessera
