// CHands: pointer and keyboard of a user, counted and logged.
#pragma once

#include <QElapsedTimer>
#include <QPoint>
#include <QString>

#include <cstdio>

class QMenu;
class QMenuBar;
class QWidget;

namespace tessera {

/// All that it does enters through the window that holds a widget, so that nothing is reached that is out of
/// sight, covered, or grey. What cannot be reached is told by failure(), and nothing is done then.
class CHands {
public:
    /// @param pLog  gets a line for each click and each text that is typed
    explicit CHands(FILE* pLog);

    void click(QWidget* pWidget, const QString& strName);
    /// Opens a menu of the bar, or chooses an entry of a menu that is open; "&" does not count in the names.
    void clickMenu(QMenuBar* pBar, const QString& strTitle);
    void clickEntry(QMenu* pMenu, const QString& strEntry);
    /// To the widget with the keyboard's focus in that window, a key for each character.
    void type(QWidget* pWindow, const QString& strText);
    void press(QWidget* pWindow, Qt::Key nKey, Qt::KeyboardModifiers modifiers = {});
    void note(const QString& strText);

    int clicks() const { return m_nClicks; }
    int keys() const { return m_nKeys; }
    double seconds() const { return double(m_clock.elapsed()) / 1000; }
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
