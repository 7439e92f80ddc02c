// QuietView: keeps a widget from painting while several changes are made to it.
#pragma once

#include <QWidget>

namespace tessera {

/// Updates are off while it lives, and come on again on every way out.
class QuietView {
public:
    /// Switches the updates off.
    explicit QuietView(QWidget& widget) : m_widget(widget) { m_widget.setUpdatesEnabled(false); }
    ~QuietView() { m_widget.setUpdatesEnabled(true); }  ///< on again
    QuietView(const QuietView&) = delete;
    QuietView& operator=(const QuietView&) = delete;

private:
    QWidget& m_widget;
};

}  // namespace tessera
