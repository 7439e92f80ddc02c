// GeometryControl: the window "Geometry Refinement" at work on the data set of the main window.
#pragma once

#include "road/geometrystate.h"
#include "window/crystal/geometrydialog.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tessera {

class MainWindow;

/// Slots of the dialog. A refinement changes nothing; "Apply" and "Load Calibration" change the data set of
/// the main window and keep what was there, step by step, for "Undo".
class GeometryControl : public QObject {
    Q_OBJECT

public:
    /// Makes the dialog, hidden. The window outlives this.
    explicit GeometryControl(MainWindow& window);

    /// The dialog that is controlled.
    GeometryDialog& dialog() { return *m_pDialog; }
    /// The refinement that is shown, as long as geometry, beam and cell are those that it began with; else
    /// null.
    const GeometryRefinement* refinement() const { return isFresh() ? m_pDialog->refinement() : nullptr; }
    /// Shows a refinement that the road has made, without any change of the data set.
    void take(const GeometryRefinement& refinement);
    /// The refinement that is shown, fresh or not; null: none is.
    std::shared_ptr<const GeometryRefinement> shown() const { return m_pShown; }
    /// Shows a refinement that was shown before, as it was then; null: none. "Undo" of the dialog gives up
    /// the steps that have been taken back already.
    void putBack(const std::shared_ptr<const GeometryRefinement>& pRefinement);
    /// Makes a change of the geometry or the cell that undo() takes back.
    void change(const std::function<void()>& fnChange);
    /// Another data set: nothing is known of it, and nothing is to be put back.
    void forget();

public slots:
    /// Opens the dialog, or brings it to the front.
    void showDialog();
    /// Fits the geometry. A run by the main window's flag of runs on known peaks; another call stops it.
    void refine();
    /// Puts the chosen model into the data set, and maps, merges and indexes anew what was mapped, merged and
    /// indexed. No file is written.
    void apply();
    /// Puts back what was before the last apply() or loadCalibration(), to the bit; where the peaks are
    /// others by now the geometry alone, and what follows is made anew.
    void undo();
    /// Asks for a file and writes a project with the geometry in force.
    void saveProject();
    /// Asks for a file and writes the geometry in force as a calibration.
    void saveCalibration();
    /// Asks for a calibration and puts it into the data set; undo() takes it back.
    void loadCalibration();

private:
    void tellFailure(const QString& strReason);
    void fit(CRunReport& report);
    void makeLook(const GeometryRefinement& refinement);
    void showLook();
    void keepState();
    void follow();
    void showGeometry();
    void updateButtons();
    bool isFresh() const;

    /// A refinement with what it was made from, and as it is shown.
    struct Look {
        std::weak_ptr<const GeometryRefinement> pRefinement;
        GeometryLook look;
        std::optional<PeakMapping> mapping;  ///< what it began with; none: not known
        QList<Vec3D> listCell;
    };
    void keepLook(const Look& look);

    MainWindow& m_window;
    GeometryDialog* m_pDialog;
    std::vector<CGeometryState> m_listState;  ///< what was, the last one first to come back
    std::shared_ptr<const GeometryRefinement> m_pShown;
    std::optional<PeakMapping> m_mappingFitted;  ///< what the refinement shown began with
    QList<Vec3D> m_listCellFitted;
    std::vector<Look> m_listLook;  ///< of the refinements that somebody keeps
};

}  // namespace tessera
