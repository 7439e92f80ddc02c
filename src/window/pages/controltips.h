// Control tips: the explanations of the controls.
#pragma once

#include <QString>

class QAction;
class QWidget;

namespace tessera {

/// Explains a control: what it means, its unit, which way to turn it. The text becomes its tool tip, unless
/// it has a shorter one of its own, and what "What's This?" shows.
/// @param strText  plain; it is wrapped when shown
void explain(QWidget* pControl, const QString& strText);

/// The same for an area where the pointer rests for other reasons: only "What's This?" shows the text.
void explainArea(QWidget* pArea, const QString& strText);

/// The same for an action, whose text is shown by "What's This?" alone.
void explain(QAction* pAction, const QString& strText);

/// Hands tips on: those of controls and the status tips of actions to "What's This?" where that has no text,
/// and those of controls to the labels before them.
/// For a window or page that has its controls and layouts.
void shareTips(QWidget* pWindow);

}  // namespace tessera
