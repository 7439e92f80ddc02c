// LensDistortionBox: the distortions of the lens beside the stretching, folded up until they are wanted.
#pragma once

#include "geometry/seriesdistortion.h"

#include <QList>
#include <QWidget>

class QDoubleSpinBox;
class QToolButton;

namespace tessera {

/// A line that unfolds to a box for each number of SeriesDistortion. The line says when one is in force.
class LensDistortionBox : public QWidget {
    Q_OBJECT

public:
    /// Folded up, without a distortion.
    explicit LensDistortionBox(QWidget* pParent = nullptr);

    /// The values in the boxes.
    SeriesDistortion distortion() const;
    /// The boxes, in the order of g_aDistortionKeyword; without keyboard tracking.
    const QList<QDoubleSpinBox*>& boxes() const { return m_listBox; }

    QToolButton* m_pUnfoldButton;  ///< checkable; checked: the boxes are shown

private:
    void showInForce();

    QList<QDoubleSpinBox*> m_listBox;
};

}  // namespace tessera
