#pragma once

#include <QByteArray>
#include <QPaintDevice>
#include <QString>
#include <memory>

#include "render/device_text.hpp"

namespace kova::render {

class SvgEngine;

/// A page that writes itself as SVG while it is painted on. One user unit is a millimetre; painting happens in dots.
class SvgDevice final : public QPaintDevice, public TextOutput {
public:
    /// Paper in millimetres; dots per inch of the painter's coordinates.
    SvgDevice(double width, double height, int dpi, const QString& title);
    ~SvgDevice() override;

    /// The whole document; valid when the painter has ended.
    QByteArray document() const;
    QPaintEngine* paintEngine() const override;
    void write(QPainter& painter, const DeviceText& text) override;

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    double width_;
    double height_;
    int dpi_;
    QString title_;
    std::unique_ptr<SvgEngine> engine_;
};

}  // namespace kova::render
