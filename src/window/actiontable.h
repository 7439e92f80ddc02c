// Action table: texts, icons, keys and explanations of the window's actions.
#pragma once

#include "window/windowactions.h"

#include <QKeySequence>

namespace tessera {

/// A key that is written out, a standard key of the platform, or none.
struct ActionKey {
    /// No key.
    constexpr ActionKey() = default;
    /// @param pszKey  as QKeySequence takes it, such as "Ctrl+W"
    constexpr ActionKey(const char* pszKey) : pszText(pszKey) {}
    /// All keys that the platform has for it.
    constexpr ActionKey(QKeySequence::StandardKey nKey) : nStandard(nKey) {}

    const char* pszText = nullptr;  ///< null: see nStandard
    QKeySequence::StandardKey nStandard = QKeySequence::UnknownKey;
};

/// What one action shows.
struct ActionRow {
    QAction* WindowActions::*pMember;  ///< where the action is kept; null for one of a list
    const char* pszText;               ///< in the menu, UTF-8 as the next two texts
    const char* pszStatusTip;          ///< null: none
    const char* pszIcon;               ///< name of the picture among the resources; null: none
    ActionKey key;
    const char* pszExplanation;  ///< for "What's This?"; null: none, or the status tip
};

/// Rows one after the other, which live as long as the program.
struct ActionRows {
    const ActionRow* pBegin;  ///< the first one
    const ActionRow* pEnd;    ///< behind the last one

    const ActionRow* begin() const { return pBegin; }  ///< for loops
    const ActionRow* end() const { return pEnd; }      ///< for loops
};

/// The actions that have a member of their own, in no particular order.
ActionRows singleActions();
/// The palettes by their index.
ActionRows paletteActions();
/// The sizes of the reference region: none, 64, 128, 256, 512 and 1024 pixels square.
ActionRows selectionActions();

}  // namespace tessera
