// ProfileWindow: one integrated reflection looked at closely.
#pragma once

#include "integration/seriesintegration.h"

#include <QDialog>

class QLabel;

namespace tessera {

class PlotPanel;

/// A small window beside the main window, to which it leaves the mouse: the pixels of a reflection on its
/// frames with the disc that was summed, and its rocking curve with what was learned of that.
class ProfileWindow : public QDialog {
    Q_OBJECT

public:
    /// Hidden, without a profile.
    explicit ProfileWindow(QWidget* pParent = nullptr);

    /// @param strFileStem  what the names of saved files begin with, with the folder
    void showProfile(const Observation& observation, const ObservationProfile& profile,
                     const QString& strFileStem);
    /// Forgets what it shows, and hides.
    void clear();

    /// The rocking curve.
    PlotPanel* plot() const { return m_pPlot; }
    /// The pixels on the frames.
    QLabel* picture() const { return m_pPicture; }
    /// What was learned of the curve.
    QLabel* text() const { return m_pText; }

private:
    QLabel* m_pText;
    QLabel* m_pPicture;
    PlotPanel* m_pPlot;
};

}  // namespace tessera
