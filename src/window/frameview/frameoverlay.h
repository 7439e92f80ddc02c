// CFrameOverlay: resolution rings, rings around chosen spots, and a measured distance on the frame.
#pragma once

#include "reciprocal/resolutionrings.h"

#include <QLineF>
#include <QList>
#include <QPointF>
#include <QString>

#include <optional>
#include <vector>

class QGraphicsItem;
class QGraphicsScene;

namespace tessera {

class SpotRing;

/// Places are raw pixels, whole numbers are centres of pixels. Each show...() puts its items in the place of
/// the former ones; the scene owns what lies on it, and goes last.
class CFrameOverlay {
public:
    explicit CFrameOverlay(QGraphicsScene& scene) : m_scene(scene) {}  ///< nothing is shown yet
    CFrameOverlay(const CFrameOverlay&) = delete;
    CFrameOverlay& operator=(const CFrameOverlay&) = delete;

    /// Rings with their spacings beside them.
    void showRings(const std::vector<ResolutionRing>& vecRing);
    /// Yellow rings around chosen spots, the current one thicker.
    void showSpots(const QList<QPointF>& listPlace, const std::optional<QPointF>& current);
    /// A line with a text at its end.
    void showDistance(const QLineF& line, const QString& strText);
    void hideDistance();                                              ///< takes it off
    bool showsDistance() const { return !m_listDistance.isEmpty(); }  ///< whether one is on the frame

private:
    QGraphicsScene& m_scene;
    QList<QGraphicsItem*> m_listRing;
    QList<SpotRing*> m_listSpot;
    QList<QGraphicsItem*> m_listDistance;
};

}  // namespace tessera
