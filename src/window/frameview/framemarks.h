// CFrameMarks: what lies on the frame view over the frame.
#pragma once

#include "dataset/dataset.h"
#include "records/peak3d.h"

#include <QColor>
#include <QLineF>
#include <QList>
#include <QPointF>

class QGraphicsLineItem;
class QGraphicsPolygonItem;
class QGraphicsScene;

namespace tessera {

class CircleItem;
class CrossItem;
class TextItem;

/// The marks on the scene of the frames: peaks, circles, labels, rotation axis and hunting mask.
///
/// Positions are pixels of the frame, its upper left corner at (0, 0). Each show...() puts marks in the place
/// of the former ones of its kind; an empty list takes them off. The scene owns what lies on it, and goes
/// last.
class CFrameMarks {
public:
    explicit CFrameMarks(QGraphicsScene& scene);  ///< nothing is shown yet
    CFrameMarks(const CFrameMarks&) = delete;
    CFrameMarks& operator=(const CFrameMarks&) = delete;

    /// Crosses with arms of `nSize` pixels: peaks found.
    void showCrosses(const QList<QPointF>& listPos, const QColor& color, int nSize);
    /// Green circles of radius `nSize` pixels: where a run measures.
    void showCircles(const QList<QPointF>& listPos, int nSize);
    /// Cyan circles of radius `nSize` pixels: where reflections are expected.
    void showEstimated(const QList<QPointF>& listPos, int nSize);
    /// Rounded h, k, l at the peaks: red on the frame where the reflection is strongest, green elsewhere,
    /// darker where the space group of the data set forbids it.
    /// @param nFrame  of the peaks, from 0
    void showLabels(const QList<Peak3D>& listPeak, const DataSet& data, int nFrame);
    /// The rotation axis as a dashed line.
    void showAxis(const QLineF& line);
    void hideAxis();  ///< takes the axis out of sight
    /// Takes off what belongs to one frame alone: all but the mask.
    void clear();

    /// Makes the polygons of a mask, hidden, in the place of the former ones.
    void setMask(const MaskData& mask);
    void showMask(bool bShow);  ///< shows or hides these

private:
    QGraphicsScene& m_scene;
    QList<CrossItem*> m_listCrossMark;
    QList<CircleItem*> m_listCircleMark;
    QList<CircleItem*> m_listEstimatedMark;
    QList<TextItem*> m_listTextMark;
    QList<QGraphicsPolygonItem*> m_listMaskItem;
    QGraphicsLineItem* m_pAxisLine;
};

}  // namespace tessera
