// CCamera: finds widgets by their texts, and saves pictures of the window as it appears on the screen.
#pragma once

#include "window/mainwindow.h"

#include <QDir>
#include <QGroupBox>
#include <QScreen>
#include <QTest>
#include <QToolBox>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

class QWidget;

namespace tessera {

const int g_nSettleTime = 150;  // ms, after which a layout is complete

template <typename T>
QString textOf(const T* p)
{
    return p->text();
}

inline QString textOf(const QGroupBox* p)
{
    return p->title();
}

/// Finds the widget or action with a text among the children of `pParent`. The program ends where there is
/// none, as a picture of something else would be worse than no picture.
template <typename T>
T* find(const QObject* pParent, const QString& strText)
{
    const QList<T*> listFound = pParent->findChildren<T*>();
    for (T* pFound : listFound) {
        if (textOf(pFound) == strText) {
            return pFound;
        }
    }
    std::fprintf(stderr, "Nothing in the window is called %s\n", qPrintable(strText));
    std::exit(1);
}

/// Takes pictures of the main window.
class CCamera {
public:
    CCamera(MainWindow& window, const QDir& dirOut) : m_window(window), m_dirOut(dirOut) {}

    MainWindow& window() { return m_window; }

    /// Opens the page of the tool box with a title.
    QWidget* openPage(const QString& strTitle)
    {
        auto* pToolBox = m_window.findChild<QToolBox*>();
        for (int i = 0; i < pToolBox->count(); ++i) {
            if (pToolBox->itemText(i) == strTitle) {
                pToolBox->setCurrentIndex(i);
                return pToolBox->widget(i);
            }
        }
        std::fprintf(stderr, "The tool box has no page %s\n", qPrintable(strTitle));
        std::exit(1);
    }

    /// Saves a picture of the window in each of two sizes.
    /// @param fnPose  is called in each size before the picture
    void shoot(const QString& strName, const std::function<void()>& fnPose = {})
    {
        for (const QSize& size : {QSize(1280, 800), QSize(1920, 1080)}) {
            shootIn(size, strName, fnPose);
        }
    }

    /// Saves a picture in the smaller size only, for series of pictures that belong together.
    void shootSmall(const QString& strName, const std::function<void()>& fnPose = {})
    {
        shootIn({1280, 800}, strName, fnPose);
    }

    /// Saves a picture as NAME.png.
    void keep(const QString& strName, const QPixmap& pixmap)
    {
        const QString strFile = m_dirOut.filePath(strName + QStringLiteral(".png"));
        if (!pixmap.save(strFile)) {
            std::fprintf(stderr, "%s could not be made\n", qPrintable(strFile));
            std::exit(1);
        }
    }

private:
    void shootIn(const QSize& size, const QString& strName, const std::function<void()>& fnPose)
    {
        m_window.resize(size);
        QTest::qWait(g_nSettleTime);
        if (fnPose) {
            fnPose();
            QTest::qWait(g_nSettleTime);
        }
        // Taken from the screen, as QWidget::grab() leaves out what OpenGL has drawn.
        const QPixmap pixmap = m_window.screen()->grabWindow(m_window.winId());
        if (pixmap.size() != size) {
            std::fprintf(stderr, "%s could not be made in its size\n", qPrintable(strName));
            std::exit(1);
        }
        keep(QStringLiteral("%1_%2x%3").arg(strName).arg(size.width()).arg(size.height()), pixmap);
    }

    MainWindow& m_window;
    QDir m_dirOut;
};

/// Answers the next file dialog by typing the whole path of a file, which is independent of the folder that
/// the dialog shows.
void answerFileDialog(const QString& strFile);

}  // namespace tessera
