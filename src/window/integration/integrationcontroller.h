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

/// What the integration asks of the window; none of it is owned.
struct IntegrationHost {
    using FnWithReport = std::function<void(CRunReport&)>;
    using FnWrite =
        std::function<bool(const IntegrationResult&, const IntensityOptions&, CRunReport&, QString*)>;

    const DataSet* pData = nullptr;
    IntegrationPage* pPage = nullptr;
    QualityTab* pTab = nullptr;
    PeakTableView* pTable = nullptr;
    BaseImgView* pFrameView = nullptr;
    /// A run that its button stops.
    std::function<void(QPushButton*, const FnWithReport&)> fnRun;
    /// Something short that reads frames; nothing happens during a run.
    std::function<void(const FnWithReport&)> fnLook;
    std::function<void(const QString&)> fnComplain;  ///< a red line
    /// Number of the frame in view, from 0; −1: none is.
    std::function<int()> fnFrameInView;
    /// Integrates the series; the result is replaced when the run finished.
    std::function<RunOutcome(const IntensityOptions&, CRunReport&, IntegrationResult&)> fnIntegrate;
    /// Reads the frames of an observation; false with a reason in the report.
    std::function<bool(const IntegrationResult&, const Observation&, CRunReport&, ObservationProfile&)>
        fnProfile;
    FnWrite fnWrite;  ///< writes the files of a result; false with the reason
    /// Lets events through between one view and the next; may be empty.
    std::function<void()> fnBreathe;
};

/// Keeps the result of the last integration until another series comes, and shows it on the page, on the
/// frames, in the tab "Quality" and in the peak table.
class IntegrationController : public QObject {
    Q_OBJECT

public:
    /// Connects the page; there is no result yet.
    explicit IntegrationController(const IntegrationHost& host, QObject* pParent = nullptr);

    /// Runs with the choices of the page. A run that fails or is stopped leaves the former result.
    void run();
    /// Writes the files of the result.
    void exportFiles();
    /// Takes a result and shows it everywhere.
    void take(const std::shared_ptr<const IntegrationResult>& pResult);
    /// Another series comes: nothing is integrated.
    void forget();

    /// Shows a result that was taken before, as it was then; null: none. One that was never taken belongs to
    /// the cell in force.
    void putBack(const std::shared_ptr<const IntegrationResult>& pResult);

    /// The result that is shown; null: none.
    const IntegrationResult* result() const { return m_pResult.get(); }
    /// The same, to be kept.
    const std::shared_ptr<const IntegrationResult>& sharedResult() const { return m_pResult; }
    /// For the peak table: the intensities, as long as the table's indices are those that were integrated.
    std::shared_ptr<const CIntegratedPeaks> peaksOfTable() const;

    /// Lays the discs of a frame on it where they are asked for.
    /// @param nFrame  from 0; −1: takes them off
    void showDiscs(int nFrame);
    /// Reads the frames of an observation and shows its profile.
    void showProfile(int nObservation);

    /// The same for the passage of a reflection that is nearest to a frame, from 0, where the window of the
    /// profiles is open already.
    void showProfileOf(const std::array<int, 3>& anIndex, double dfFrame);
    /// Indices of the disc at a place of the frame in view; none: there is no disc.
    /// @param ptScene  scene coordinates
    std::optional<std::array<int, 3>> indicesOfDiscAt(const QPointF& ptScene) const;

    /// For tests, in place of what the window gave.
    IntegrationHost& host() { return m_host; }

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    /// What becomes of the window of the profiles where it is closed.
    enum class ClosedWindow { Opens, Stays };
    void showChosen(const QModelIndex& index, ClosedWindow window);
    QString fileStem() const;
    QList<Vec3D> cellOf(const std::shared_ptr<const IntegrationResult>& pResult);

    /// A result and the cell that its indices belong to.
    struct CellOfResult {
        std::weak_ptr<const IntegrationResult> pResult;
        QList<Vec3D> listCell;
    };
    void breathe() const;

    IntegrationHost m_host;
    std::shared_ptr<const IntegrationResult> m_pResult;  ///< null: nothing is integrated
    std::shared_ptr<const CIntegratedPeaks> m_pPeaks;    ///< of the result
    QList<Vec3D> m_listCell;                             ///< that its indices belong to
    std::vector<CellOfResult> m_listCellOfResult;        ///< of those that somebody keeps
    std::vector<PredictedDisc> m_listDisc;               ///< of the frame in view
    QList<DiscItem*> m_listItem;                         ///< these, on the scene, which owns them
    ProfileWindow* m_pProfile = nullptr;  ///< made when it is first asked for; the window owns it
    std::optional<QPoint> m_ptPressed;    ///< where the left button went down on the frame
};

}  // namespace tessera
