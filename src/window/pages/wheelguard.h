// WheelGuard: keeps the values of a page as they are while the user scrolls it.
#pragma once

#include <QObject>

class QWidget;

namespace tessera {

/// On a page that scrolls, the wheel that moves the page also passes over its spin boxes and lists, which
/// would take it and change a parameter unseen. Under the guard they answer to the wheel only with the
/// keyboard on them, and what they don't take scrolls the page.
class WheelGuard : public QObject {
    Q_OBJECT

public:
    /// Guards all spin boxes and lists that `pPage` holds now. The guard lives as long as the page.
    explicit WheelGuard(QWidget* pPage);

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;
};

}  // namespace tessera
