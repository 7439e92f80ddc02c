// ContrastControl: the contrast of the frames on the page "Frames": boxes, histogram, buttons, and what is
// kept.
#pragma once

#include "frames/displaylimits.h"
#include "imaging/imgobj.h"
#include "window/frames/keptcontrast.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class QSettings;

namespace tessera {

class FramesPage;

/// What it needs of the window.
struct ContrastHost {
    std::function<const CImgObj<float>*()> fnImage;          ///< in view and in nobody's use, or null
    std::function<void()> fnRedraw;                          ///< with the limits of the boxes
    std::function<void(bool)> fnSetLogarithmic;              ///< how it is drawn from then on
    std::function<std::unique_ptr<QSettings>()> fnSettings;  ///< of the program
};

/// The limits are those of the boxes "Min." and "Max."; they stay from frame to frame. What the user changes
/// is kept for the series and comes back with it. An image that is no frame, such as a sum, has limits of its
/// own as long as it is shown.
class ContrastControl : public QObject {
    Q_OBJECT

public:
    /// Connects the controls of the page, which outlives this.
    ContrastControl(FramesPage& page, ContrastHost host, QObject* pParent = nullptr);
    ~ContrastControl() override;  ///< keeps

    /// From now on limits are those of a series. @param strSeries  its project, full path
    void beginSeries(const QString& strSeries);
    /// The limits of a series by its first image: those that were kept, else those of displayLimits(), else
    /// where its values have no such range those of autoContrastLimits(). Nothing is drawn.
    /// @return false where the image gives none
    bool takeFirst(const CImgObj<float>& image);
    /// An image has come into view.
    void showHistogramOf(const CImgObj<float>& image);
    /// Gives an image that is no frame limits of its own; nothing is drawn.
    void beginOther(const CImgObj<float>& image);
    /// Those of the series come back; nothing is drawn.
    void endOther();
    /// Writes what the user has changed and is not written yet.
    void keep();

    /// Limits by the image in view.
    void setAutomatic();
    /// The same from nearly the weakest to nearly the strongest pixel, autoContrastLimits().
    void setFullRange();

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    void setBoxes(double dfLow, double dfHigh);
    void userChanged();
    bool setByPercentiles(const CImgObj<float>& image);
    bool setByRange(const CImgObj<float>& image);

    FramesPage& m_page;
    ContrastHost m_host;
    QString m_strSeries;
    bool m_bHistogramOld = true;                    ///< an image has come while nobody saw the histogram
    bool m_bChanged = false;                        ///< by the user, and not written yet
    std::optional<DisplayLimits> m_limitsOfSeries;  ///< while something else is shown
    QTimer m_timerKeep;
};

}  // namespace tessera
