// Scenes and pictures that several tests need.
#pragma once

#include "imaging/imagelist.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QGraphicsScene>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QWidget>

#include <functional>
#include <memory>

namespace tessera {

/// A frame of one image with fnValue(x, y) at each pixel.
inline ImageList makeFrame(int w, int h, const std::function<double(int, int)>& fnValue)
{
    ImageList vecImage;
    vecImage.push_back(std::make_unique<CImgObj<float>>());
    vecImage[0]->Create(w, h);
    for (int i = 0; i < w * h; ++i) {
        vecImage[0]->Data()[i] = float(fnValue(i % w, i / w));
    }
    return vecImage;
}

inline ImageList makeFrame(int w, int h, double dfValue)
{
    return makeFrame(w, h, [dfValue](int, int) { return dfValue; });
}

/// The scene drawn without a view, one picture pixel for each frame pixel.
inline QImage drawn(QGraphicsScene& scene)
{
    QImage picture(scene.sceneRect().size().toSize(), QImage::Format_ARGB32);
    picture.fill(Qt::magenta);
    QPainter painter(&picture);
    scene.render(&painter, QRectF(picture.rect()), scene.sceneRect());
    return picture;
}

/// Sends a mouse event with the buttons that are held after it.
inline void sendMouse(QWidget* pWidget, QEvent::Type type, QPoint pt, Qt::MouseButton button,
                      Qt::MouseButtons buttons)
{
    QMouseEvent event(type, pt, pWidget->mapToGlobal(pt), button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(pWidget, &event);
}

}  // namespace tessera
