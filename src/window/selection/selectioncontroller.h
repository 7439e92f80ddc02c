// SelectionController: takes what is chosen in one view to all of them.
#pragma once

#include "reciprocal/reflectionlinks.h"
#include "window/selection/selectionmodel.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <optional>

class QAction;

namespace tessera {

class CurvePlot;
class ED3DWidget;
class FrameGuides;
class PeakTableView;

/// What the selection asks of the window; none of it is owned.
struct SelectionHost {
    const DataSet* pData = nullptr;
    ED3DWidget* pRaw = nullptr;
    ED3DWidget* pMerged = nullptr;
    PeakTableView* pTable = nullptr;
    CurvePlot* pCurve = nullptr;
    FrameGuides* pFrame = nullptr;
    std::function<bool()> fnBusy;               ///< a run has the data: nothing is chosen
    std::function<bool()> fnRawHoldsPeaks;      ///< the raw view shows peaks of the data set
    std::function<int()> fnFrameInView;         ///< from 0; −1: none is
    std::function<double()> fnFrameScale;       ///< screen pixels per pixel of the frame
    std::function<void(int)> fnShowFrame;       ///< shows a frame, or notes it for when frames are looked at
    std::function<void(int)> fnShowCurve;       ///< draws the curve of a reflection that has a chain
    std::function<void(const QString&)> fnSay;  ///< to the status bar
    /// Indices of the predicted disc at a place of the frame in view, raw pixels.
    std::function<std::optional<std::array<int, 3>>(const QPointF&)> fnDiscAt;
    /// Shows the profile of a reflection where the window of the profiles is open already.
    std::function<void(const std::array<int, 3>&, int)> fnShowProfile;
};

/// A reflection that is chosen in a view is marked in both 3D views, ringed on its frame, scrolled to in the
/// table, and its curve is drawn. What a view cannot show is named in the status bar.
///
/// The view that has chosen keeps what it has made of the choice. Nothing comes back from the views while
/// they are being set. Under a run nothing is chosen. When reflections or peaks are replaced, the choice
/// goes.
class SelectionController : public QObject {
    Q_OBJECT

public:
    /// Listens to the views of the host, which outlive this.
    explicit SelectionController(const SelectionHost& host, QObject* pParent = nullptr);

    /// What is chosen.
    SelectionModel& model() { return m_model; }
    /// Next and previous of frame, reflection and unindexed, and no choice.
    const QList<QAction*>& actions() const { return m_listAction; }

    /// Chooses a reflection by its number, at its best frame; one that is not there is named in the status
    /// bar.
    void chooseReflection(int nReflection);
    /// Drops a choice whose reflections or peaks have been replaced. Cheap while they have not.
    void checkData();
    /// Rings the chosen spots of the frame in view.
    void ringSpots();

private:
    void createActions();
    void choosePoint(ED3DWidget* pView, int nPoint, Qt::KeyboardModifiers modifiers);
    void chooseBand(ED3DWidget* pView);
    void chooseSpot(const QPointF& ptRaw, Qt::KeyboardModifiers modifiers);
    void chooseRows();
    void chooseOnCurve(int nFrame);
    void choosePeaks(const std::vector<int>& vecPeak, SelectionModel::Way way, const QObject* pSource);
    void stepOnFrame(int nStep);
    void stepInReflection(int nStep);
    void stepUnindexed(int nStep);

    const CReflectionLinks& links();
    bool holdsReflections(ED3DWidget* pView) const;
    CurrentSpot bestSpot(int nReflection);
    void show(const QObject* pSource);
    void showIn3D(const QObject* pSource, QStringList& listHidden);
    QString describe();
    std::optional<std::array<int, 3>> indicesOf(int nReflection);

    SelectionHost m_host;
    SelectionModel m_model;
    CReflectionLinks m_links;
    QList<QAction*> m_listAction;
    bool m_bShowing = false;  ///< the views are being set
    bool m_bOnDisc = false;   ///< the last click on a frame was on the disc of a prediction
    bool m_bScroll = false;   ///< the chosen spot is to be scrolled to when its frame comes
};

}  // namespace tessera
