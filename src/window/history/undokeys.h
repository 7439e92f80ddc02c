// UndoKeys: whose the keys of undo and redo are, the window's or those of a text that is being typed.
#pragma once

#include <QObject>

namespace tessera {

/// A box or line that has the keyboard takes these keys for itself, even where nothing was typed into it.
/// Here it gets them only while there is something typed to take back: from the first letter until Return is
/// pressed or the keyboard goes elsewhere. Else they are the window's, and take back a step.
///
/// It listens to the whole application for as long as it lives.
class UndoKeys : public QObject {
    Q_OBJECT

public:
    /// Begins to listen.
    explicit UndoKeys(QObject* pParent = nullptr);

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    bool m_bTyped = false;  ///< into what has the keyboard
};

}  // namespace tessera
