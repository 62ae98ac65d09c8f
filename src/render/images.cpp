// Painting of raster images.
#include <filesystem>

#include "engine/entities/image.hpp"
#include "engine/fonts/fonts.hpp"
#include "engine/model/frame_lines.hpp"
#include "render/painter_sink.hpp"
#include "render/picture_file.hpp"

#include <QImageReader>
#include <QPainterPath>

namespace kova::render {

using math::Vector2;
namespace fs = std::filesystem;

namespace {

constexpr qint64 kMaxPixels = 100'000'000;

/// The path as it stands, or beside the drawing: by its relative path, then by its mere name.
std::string findPicture(const std::string& path, const std::string& folder) {
    std::error_code error;
    if (fs::is_regular_file(path, error)) return path;
    std::string name = path;
    std::replace(name.begin(), name.end(), '\\', '/');
    for (const fs::path& candidate : {fs::path(folder) / name, fs::path(folder) / fs::path(name).filename()})
        if (fs::is_regular_file(candidate, error)) return candidate.string();
    return {};
}

void adjust(QImage& picture, const engine::ImageEntity& image, engine::Rgb background) {
    if (image.brightness == 50 && image.contrast == 50 && image.fade == 0) return;
    const double gain = std::clamp(image.contrast, 0, 100) / 50.0;
    const double shift = (std::clamp(image.brightness, 0, 100) - 50) * 255.0 / 100.0;
    const double fade = std::clamp(image.fade, 0, 100) / 100.0;
    const auto channel = [&](int v, int paper) {
        const double lit = std::clamp((v - 127.5) * gain + 127.5 + shift, 0.0, 255.0);
        return static_cast<int>(lit + (paper - lit) * fade);
    };
    for (int y = 0; y < picture.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            row[x] = qRgba(channel(qRed(row[x]), background.red), channel(qGreen(row[x]), background.green),
                           channel(qBlue(row[x]), background.blue), qAlpha(row[x]));
    }
}

}  // namespace

const QImage& PainterSink::picture(const engine::ImageEntity& image) {
    const std::string key = image.filePath + '|' + std::to_string(image.brightness) + '|' +
                            std::to_string(image.contrast) + '|' + std::to_string(image.fade) + '|' +
                            std::to_string(image.imageTransparency);
    const auto [it, fresh] = pictures_.try_emplace(key);
    if (!fresh) return it->second;
    const std::string file = findPicture(image.filePath, settings_.folder);
    if (file.empty()) return it->second;
    PictureFile pictureFile(file);
    QImageReader& reader = pictureFile.reader();
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() > kMaxPixels) return it->second;
    QImage picture = reader.read();
    if (picture.isNull()) return it->second;
    const bool seeThrough = image.imageTransparency != 0;
    picture = picture.convertToFormat(QImage::Format_ARGB32);
    if (!seeThrough && picture.hasAlphaChannel()) {
        QImage opaque(picture.size(), QImage::Format_RGB32);
        opaque.fill(QColor(settings_.background.red, settings_.background.green, settings_.background.blue));
        QPainter(&opaque).drawImage(0, 0, picture);
        picture = opaque.convertToFormat(QImage::Format_ARGB32);
    }
    adjust(picture, image, settings_.background);
    return it->second = std::move(picture);
}

void PainterSink::image(const engine::ImageEntity& image, const engine::OutlineStyle& style) {
    const auto corners = image.corners();
    math::Bounds2 box;
    for (const Vector2& c : corners) {
        const Vector2 p = view_.map(c);
        if (!p.is_finite()) return;
        box.expand(p);
    }
    if (!box.intersects(view_.pixels)) return;
    engine::Path frame;
    frame.polygon(image.frame());
    engine::StrokeOptions solid;
    solid.continuous = true;
    const QImage& picture = this->picture(image);
    if (picture.isNull()) {
        // What is missing is shown as a crossed frame that names the file.
        const std::vector<Vector2> outline = image.frame();
        std::array<Vector2, 4> box = corners;
        engine::Path border;
        border.polygon(outline);
        if (image.isClipped()) {
            const math::Bounds2 b = engine::pathBounds(border);
            box = {b.min, Vector2{b.max.x, b.min.y}, b.max, Vector2{b.min.x, b.max.y}};
        }
        stroke(border, style, solid);
        engine::Path cross;
        cross.moveTo(box[0]).lineTo(box[2]).moveTo(box[1]).lineTo(box[3]);
        if (image.isClipped()) pushClip(border, false);
        stroke(cross, style, solid);
        const std::string name =
            fs::path(std::string_view(image.filePath).substr(image.filePath.find_last_of("/\\") + 1)).string();
        engine::TextRun run;
        run.text = name;
        const Vector2 along = box[1] - box[0];
        const Vector2 up = box[3] - box[0];
        const double advance = engine::textAdvance(run);
        const double size = std::min(up.length() / 10.0, advance > 0.0 ? along.length() * 0.8 / advance : 0.0);
        run.xAxis = along.normalized() * size;
        run.yAxis = up.normalized() * size;
        run.origin = box[0] + along / 2.0 + up / 4.0 - run.xAxis * (advance / 2.0);
        text(run, style);
        if (image.isClipped()) popClip();
        return;
    }
    useOpacity(look(style).opacity);
    painter_.save();
    if (image.isClipped()) {
        QPainterPath clip;
        QPolygonF ring;
        for (const Vector2& c : image.frame()) {
            const Vector2 p = view_.map(c);
            ring << QPointF(p.x, p.y);
        }
        clip.addPolygon(ring);
        painter_.setClipPath(clip, Qt::IntersectClip);
    }
    // The picture's pixel (0, 0) is its upper left corner.
    const Vector2 origin = view_.map(corners[3]);
    const Vector2 u = (view_.map(corners[2]) - origin) / picture.width();
    const Vector2 v = (view_.map(corners[0]) - origin) / picture.height();
    painter_.setRenderHint(QPainter::SmoothPixmapTransform);
    painter_.setTransform(QTransform(u.x, u.y, v.x, v.y, origin.x, origin.y), true);
    painter_.drawImage(0, 0, picture);
    painter_.restore();
    penWidth_ = -1.0;
    if (image.showFrame && engine::FrameLines::emitted(engine::FrameKind::Image)) stroke(frame, style, solid);
}

}  // namespace kova::render
