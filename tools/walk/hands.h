// CHands: the pointer and keyboard of a simulated user, which count and log what they do.
#pragma once

#include <QElapsedTimer>
#include <QPoint>
#include <QString>

#include <cstdio>

class QMenu;
class QMenuBar;
class QWidget;

namespace tessera {

/// Sends all events to the window of a widget, as the system does, so that widgets that are hidden, covered
/// or disabled cannot be used. If a widget cannot be reached, nothing is done and failure() tells so.
class CHands {
public:
    /// @param pLog  gets a line for each click and each typed text
    explicit CHands(FILE* pLog);

    /// Clicks on a widget.
    void click(QWidget* pWidget, const QString& strName);
    /// Opens a menu of the bar. "&" in the titles is ignored.
    void clickMenu(QMenuBar* pBar, const QString& strTitle);
    /// Chooses an entry of an open menu. "&" in the names is ignored.
    void clickEntry(QMenu* pMenu, const QString& strEntry);
    /// Types a text, key by key, into the widget of a window that has the focus.
    void type(QWidget* pWindow, const QString& strText);
    /// Presses a key in a window.
    void press(QWidget* pWindow, Qt::Key nKey, Qt::KeyboardModifiers modifiers = {});
    /// Adds a line to the log.
    void note(const QString& strText);

    /// Number of clicks so far.
    int clicks() const { return m_nClicks; }
    /// Number of keys so far.
    int keys() const { return m_nKeys; }
    /// Seconds since the start.
    double seconds() const { return double(m_clock.elapsed()) / 1000; }
    /// What could not be reached; empty if there was nothing.
    const QString& failure() const { return m_strFailure; }

private:
    void clickAt(QWidget* pWidget, const QPoint& pt, const QString& strName);
    void fail(const QString& strText);

    FILE* m_pLog;
    QElapsedTimer m_clock;
    int m_nClicks = 0;
    int m_nKeys = 0;
    QString m_strFailure;
};

}  // namespace tessera
