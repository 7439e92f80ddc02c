// CCamera: finds what is called by a text, and keeps pictures of the window as it stands on the screen.
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

const int g_nSettleTime = 150;  // ms that a layout gets to come to rest

template <typename T>
QString textOf(const T* p)
{
    return p->text();
}

inline QString textOf(const QGroupBox* p)
{
    return p->title();
}

/// The widget or action of a text under `pParent`; a picture of the wrong thing is worse than none, so
/// the program ends without it.
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

class CCamera {
public:
    CCamera(MainWindow& window, const QDir& dirOut) : m_window(window), m_dirOut(dirOut) {}

    MainWindow& window() { return m_window; }

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

    /// @param fnPose  what is to be done again in each size, before the picture
    void shoot(const QString& strName, const std::function<void()>& fnPose = {})
    {
        for (const QSize& size : {QSize(1280, 800), QSize(1920, 1080)}) {
            shootIn(size, strName, fnPose);
        }
    }

    /// In the smaller size alone, for rows of pictures that belong together.
    void shootSmall(const QString& strName, const std::function<void()>& fnPose = {})
    {
        shootIn({1280, 800}, strName, fnPose);
    }

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
        // From the screen: a widget's own grab leaves out what OpenGL has drawn.
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

/// Answers the next file dialog with a file, typed as a user would: its whole path counts, whatever
/// folder the dialog has come to show by then.
void answerFileDialog(const QString& strFile);

}  // namespace tessera
