// IntegrationController: the page "Integration", its run, and all that shows what came out of it.
#pragma once

#include "dataset/dataset.h"
#include "integration/integrationresult.h"
#include "reciprocal/integratedpeaks.h"
#include "records/runoutcome.h"
#include "records/runreport.h"
#include "road/intensities.h"
#include "window/integration/predicteddiscs.h"

#include <QLocale>
#include <QObject>
#include <QPoint>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QModelIndex;
class QPushButton;

namespace tessera {

class BaseImgView;
class DiscItem;
class IntegrationPage;
class PeakTableView;
class ProfileWindow;
class QualityTab;

/// What the integration needs of the window: its parts, which the window owns, and functions that it
/// provides.
struct IntegrationHost {
    using FnWithReport = std::function<void(CRunReport&)>;
    using FnWrite =
        std::function<bool(const IntegrationResult&, const IntensityOptions&, CRunReport&, QString*)>;

    const DataSet* pData = nullptr;
    IntegrationPage* pPage = nullptr;
    QualityTab* pTab = nullptr;
    PeakTableView* pTable = nullptr;
    BaseImgView* pFrameView = nullptr;
    /// Runs a function as a run of the window; a second click on the button stops it.
    std::function<void(QPushButton*, const FnWithReport&)> fnRun;
    /// Calls a function that reads a few frames and cannot be stopped. While a run is under way, the function
    /// is not called, as the frames are in use.
    std::function<void(const FnWithReport&)> fnLook;
    std::function<void(const QString&)> fnComplain;  ///< writes a red line to the log
    /// Number of the frame in view, from 0; −1 if there is none or the frames are in use by a run.
    std::function<int()> fnFrameInView;
    /// Integrates the series. The result is filled only if the run finished.
    std::function<RunOutcome(const IntensityOptions&, CRunReport&, IntegrationResult&)> fnIntegrate;
    /// Reads the frames of an observation of a result and fills its profile; false, with the reason in the
    /// report, if that fails.
    std::function<bool(const IntegrationResult&, const Observation&, CRunReport&, ObservationProfile&)>
        fnProfile;
    FnWrite fnWrite;  ///< writes the files of a result; false with the reason
    /// Handles waiting events, so that the window stays alive while several views are filled; may be empty.
    std::function<void()> fnBreathe;
};

/// Keeps the result of the last integration until another series comes, and shows it on the page, on the
/// frames, in the tab "Quality" and in the peak table.
class IntegrationController : public QObject {
    Q_OBJECT

public:
    /// Connects page, tab, table and frame view; there is no result yet.
    explicit IntegrationController(const IntegrationHost& host, QObject* pParent = nullptr);

    /// Integrates with the choices of the page, and takes the result. A run that fails or is stopped leaves
    /// the former result.
    void run();
    /// Writes the files of the result; without a result, only a red line to the log.
    void exportFiles();
    /// Keeps a result and shows it everywhere. One that is new belongs to the cell in force.
    /// @param pResult  not null
    void take(const std::shared_ptr<const IntegrationResult>& pResult);
    /// Drops the result and what shows it, as another series comes.
    void forget();

    /// Shows the result of an undone or restored state. A result that was kept before belongs to the same
    /// cell as then; any other, such as one that is restored after a crash, belongs to the cell in force.
    /// @param pResult  null: there is no result
    void putBack(const std::shared_ptr<const IntegrationResult>& pResult);

    /// The result that is shown; null: none.
    const IntegrationResult* result() const { return m_pResult.get(); }
    /// The same with a share in its ownership.
    const std::shared_ptr<const IntegrationResult>& sharedResult() const { return m_pResult; }
    /// The integrated intensities for the peak table; null if there are none, or if the reflections of the
    /// table were indexed with another cell than that of the result.
    std::shared_ptr<const CIntegratedPeaks> peaksOfTable() const;

    /// Replaces the discs on the frame view by the predicted discs of a frame, if the page asks for them.
    /// @param nFrame  from 0; −1: no discs
    void showDiscs(int nFrame);
    /// Reads the frames of an observation and shows its profile, in a window that is made if there is none.
    /// @param nObservation  index in the list of observations; nothing happens if it is out of range
    void showProfile(int nObservation);

    /// Shows the profile of that passage of a reflection through the Ewald sphere which is nearest to a
    /// frame, but only if the window of the profiles is open.
    /// @param anIndex  h, k, l in the cell in force
    /// @param dfFrame  number of the frame, from 0
    void showProfileOf(const std::array<int, 3>& anIndex, double dfFrame);
    /// h, k, l of the predicted disc at a place of the frame in view; none if there is no disc.
    /// @param ptScene  scene coordinates
    std::optional<std::array<int, 3>> indicesOfDiscAt(const QPointF& ptScene) const;

    /// For tests, which replace functions of the window.
    IntegrationHost& host() { return m_host; }

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    /// What happens if the window of the profiles is closed: it is opened, or it stays closed.
    enum class ClosedWindow { Opens, Stays };
    void showChosen(const QModelIndex& index, ClosedWindow window);
    /// Path of the project without its suffix, for the names of saved plots.
    QString fileStem() const;
    /// The cell that the indices of a result belong to: the one that was noted for it, or else the cell in
    /// force, which is noted.
    QList<Vec3D> cellOf(const std::shared_ptr<const IntegrationResult>& pResult);

    /// A result and the cell that its indices belong to.
    struct CellOfResult {
        std::weak_ptr<const IntegrationResult> pResult;
        QList<Vec3D> listCell;
    };
    void breathe() const;  ///< see IntegrationHost::fnBreathe

    IntegrationHost m_host;
    std::shared_ptr<const IntegrationResult> m_pResult;  ///< null: nothing is integrated
    std::shared_ptr<const CIntegratedPeaks> m_pPeaks;    ///< intensities of the result, by indices
    QList<Vec3D> m_listCell;                       ///< a*, b*, c* that the indices of the result belong to
    std::vector<CellOfResult> m_listCellOfResult;  ///< of results that still exist, as in the undo history
    std::vector<PredictedDisc> m_listDisc;         ///< of the frame in view
    QList<DiscItem*> m_listItem;                   ///< the same as items of the scene, which owns them
    ProfileWindow* m_pProfile = nullptr;  ///< null until a profile is first shown; owned by the window
    std::optional<QPoint> m_ptPressed;    ///< where the left button was pressed on the frame view
};

}  // namespace tessera
