// View3D: a 3D view in a window, with hands for its mouse and eyes for its picture.
#pragma once

#include "view3d/ed3dwidget.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QtTest>

namespace tessera {

inline Peak3D peakAt(float x, float y, float z, double dfIntensity, int nId)
{
    Peak3D peak;
    peak.setPoint({x, y, z});
    peak.dfIPoint = dfIntensity;
    peak.dfDStar = length(peak.point());
    peak.nID = nId;
    return peak;
}

inline void mouse(QWidget& widget, QEvent::Type eType, const QPoint& pt, Qt::MouseButton eButton,
                  Qt::KeyboardModifiers modifiers)
{
    QMouseEvent event(eType, pt, widget.mapToGlobal(pt), eType == QEvent::MouseMove ? Qt::NoButton : eButton,
                      eType == QEvent::MouseButtonRelease ? Qt::NoButton : eButton, modifiers);
    QApplication::sendEvent(&widget, &event);
}

// At the release other modifiers may be held.
inline void drag(QWidget& widget, const QPoint& ptFrom, const QPoint& ptTo, Qt::KeyboardModifiers modifiers,
                 Qt::MouseButton eButton = Qt::LeftButton, int nModifiersAtRelease = -1)
{
    mouse(widget, QEvent::MouseButtonPress, ptFrom, eButton, modifiers);
    mouse(widget, QEvent::MouseMove, ptTo, eButton, modifiers);
    mouse(widget, QEvent::MouseButtonRelease, ptTo, eButton,
          nModifiersAtRelease < 0 ? modifiers : Qt::KeyboardModifiers(nModifiersAtRelease));
}

class View3D : public testing::Test {
protected:
    QWidget m_window;
    ED3DWidget m_view;
    const int m_nW = 500, m_nH = 400;

    void SetUp() override
    {
        if (QGuiApplication::platformName() == QLatin1String("offscreen")) {
            GTEST_SKIP() << "no OpenGL on this platform";
        }
        ASSERT_TRUE(m_view.isValid());
        m_window.resize(m_nW, m_nH);
        m_view.setParent(&m_window);  // a window of its own until now
        m_view.setGeometry(0, 0, m_nW, m_nH);
        m_view.setShowCanvasGrid(false);
        m_window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_window));
    }
    QImage picture() { return m_view.grabFrameBuffer(); }
    // A pixel of the widget.
    static QColor at(const QImage& image, double dfX, double dfY)
    {
        return image.pixelColor(int(dfX * image.devicePixelRatio()), int(dfY * image.devicePixelRatio()));
    }
    // A place of the scene, where neither rotation nor pan nor zoom has changed the view.
    QColor atScene(const QImage& image, double dfX, double dfY) const
    {
        return at(image, m_nW / 2. + dfX * m_nW / 4., m_nH / 2. - dfY * m_nW / 4.);
    }
    // Brightest channel sum on a short path across a line.
    int brightest(const QImage& image, double dfX, double dfY) const
    {
        int nBest = 0;
        for (int n = 0; n < 9; ++n) {
            const QColor c = atScene(image, dfX + (n / 3 - 1) * 4. / m_nW, dfY + (n % 3 - 1) * 4. / m_nW);
            nBest = std::max(nBest, c.red() + c.green() + c.blue());
        }
        return nBest;
    }
};

}  // namespace tessera
