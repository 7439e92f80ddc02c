// Scenes and pictures that several tests need.
#pragma once

#include "imaging/imagelist.h"

#include <QCoreApplication>
#include <QGraphicsScene>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QWidget>

#include <functional>
#include <memory>

/// A float image with fnValue(x, y) at each pixel.
inline std::unique_ptr<CImgObj<float>> makeImage(int w, int h, const std::function<double(int, int)>& fnValue)
{
    auto pImage = std::make_unique<CImgObj<float>>();
    pImage->Create(w, h);
    for (int y = 0; y < h; y++)
        for (int x = 0; x < w; x++)
            pImage->Data()[y * w + x] = float(fnValue(x, y));
    return pImage;
}

inline ImageList makeFrame(int w, int h, const std::function<double(int, int)>& fnValue)
{
    ImageList vecImage;
    vecImage.push_back(makeImage(w, h, fnValue));
    return vecImage;
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
