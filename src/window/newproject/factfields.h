// FactFields: the fields of a new project that the headers of the frames can fill.
#pragma once

#include "dataset/seriesfacts.h"

#include <QMap>
#include <QSet>

#include <functional>

class QDoubleSpinBox;
class QGridLayout;
class QWidget;

namespace tessera {

class FactLabel;

/// Whether a box shows a number, as far as its decimals go.
bool isShown(const QDoubleSpinBox* pSpin, double df);

/// Writes the values from the frames beside each field, and knows which groups the user has changed: these
/// are not filled in.
class FactFields {
public:
    /// The number of a field as the frames tell it.
    using FnTold = std::function<ToldNumber(const SeriesFacts&)>;
    /// The reliability of a number from the frames.
    enum class Trust {
        AsTold,       ///< it is a guess where a doubt says so
        SenseUnsure,  ///< a direction that may be the opposite one
    };

    /// Adds a row of a label or radio button, a box, and the place where the fact is written.
    void addRow(QGridLayout* pGrid, QWidget* pLabel, QDoubleSpinBox* pSpin, const FnTold& fnTold,
                Trust trust = Trust::AsTold);
    /// Writes where the number of each field was read, what it was if the field shows another one, or that
    /// nothing was told.
    /// @param bFrames  false: there are no frames, so nothing is written
    void show(const SeriesFacts& facts, bool bFrames) const;
    /// What is written beside a field; null for a box that is none.
    FactLabel* label(QDoubleSpinBox* pSpin) const;

    /// The user has changed a control: its group is his own from now on.
    void touch(const QWidget* pControl);
    /// Whether a control is in a group that the user has changed.
    bool isTouched(const QWidget* pControl) const;
    /// No group is the user's own any more.
    void forgetTouches() { m_setTouched.clear(); }

private:
    struct Field {
        FactLabel* pLabel = nullptr;
        FnTold fnTold;
        Trust trust = Trust::AsTold;
    };

    QMap<QDoubleSpinBox*, Field> m_mapField;
    QSet<const QWidget*> m_setTouched;  ///< group boxes
};

}  // namespace tessera
