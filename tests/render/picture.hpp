#pragma once

#include <QImage>
#include <QPainter>
#include <memory>
#include <string>

#include "engine/model/drawing.hpp"
#include "render/renderer.hpp"

namespace kova::render {

/// A drawing to be painted and looked at: a picture of 400 x 400 pixels whose drawing units are pixels, when a frame
/// from (0,0) to (400,400) stands on a layer that is not drawn.
struct Picture {
    engine::Drawing drawing;
    QImage image;

    template <class T>
    T& add(std::unique_ptr<T> entity) {
        return static_cast<T&>(drawing.modelSpace().append(std::move(entity)));
    }
    template <class T>
    T& add(T entity) {
        return add(std::make_unique<T>(std::move(entity)));
    }

    /// Paints the window (0,0)-(400,400), one pixel a unit.
    void paint(double dpi = 25.4) {
        image = QImage(400, 400, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        RenderRequest request;
        request.width = request.height = 400.0;
        request.dpi = dpi;
        request.area = Area::Window;
        // The margin of 2.5 % on every side is taken off again.
        request.window = {{400.0 * 0.025 / 1.05, 400.0 * 0.025 / 1.05}, {400.0 - 400.0 * 0.025 / 1.05, 400.0 - 400.0 * 0.025 / 1.05}};
        QPainter painter(&image);
        render(painter, drawing, request);
    }

    /// Colour at a point of the drawing.
    QColor at(double x, double y) const {
        return image.pixelColor(std::clamp(static_cast<int>(x), 0, 399), std::clamp(399 - static_cast<int>(y), 0, 399));
    }
    /// Darkness 0 (white) to 1 (black) of the darkest pixel within `reach` of a point.
    double ink(double x, double y, int reach = 1) const {
        double most = 0.0;
        for (int dx = -reach; dx <= reach; ++dx)
            for (int dy = -reach; dy <= reach; ++dy) most = std::max(most, 1.0 - at(x + dx, y + dy).lightnessF());
        return most;
    }
    /// Share of inked pixels in a rectangle of the drawing.
    double coverage(double x0, double y0, double x1, double y1) const {
        double sum = 0.0;
        int count = 0;
        for (double x = x0 + 0.5; x < x1; ++x)
            for (double y = y0 + 0.5; y < y1; ++y, ++count) sum += 1.0 - at(x, y).lightnessF();
        return count > 0 ? sum / count : 0.0;
    }
};

}  // namespace kova::render
