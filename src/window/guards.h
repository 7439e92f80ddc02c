// Guards of widgets: what is off while they live is on again whichever way their scope ends.
#pragma once

#include <QApplication>
#include <QPointer>
#include <QWidget>

namespace tessera {

/// Shows the cursor that waits.
class CWaitCursor {
public:
    /// Shows it from now on.
    CWaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    /// The cursor is the one before again.
    ~CWaitCursor() { QApplication::restoreOverrideCursor(); }
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;
};

/// A widget that would paint itself at each change, such as a bar of progress, is painted once, with the
/// events that follow.
class CDeferredPaint {
public:
    /// Holds the painting of a widget back, which outlives this.
    explicit CDeferredPaint(QWidget* pWidget) : m_pWidget(pWidget) { pWidget->setUpdatesEnabled(false); }
    /// Lets it paint again.
    ~CDeferredPaint() { m_pWidget->setUpdatesEnabled(true); }
    CDeferredPaint(const CDeferredPaint&) = delete;
    CDeferredPaint& operator=(const CDeferredPaint&) = delete;

private:
    QWidget* m_pWidget;
};

/// Keeps a widget, such as the button of a run, from being used.
class CDisabledWidget {
public:
    /// Disables the widget, which may go before this.
    explicit CDisabledWidget(QWidget* pWidget) : m_pWidget(pWidget) { pWidget->setEnabled(false); }
    /// Enables it, if it is still there.
    ~CDisabledWidget()
    {
        if (m_pWidget) {
            m_pWidget->setEnabled(true);
        }
    }
    CDisabledWidget(const CDisabledWidget&) = delete;
    CDisabledWidget& operator=(const CDisabledWidget&) = delete;

private:
    QPointer<QWidget> m_pWidget;
};

}  // namespace tessera
