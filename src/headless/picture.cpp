#include <QImage>

#include "edit/text_fields.hpp"
#include "doc/spatial_index.hpp"
#include "headless/session.hpp"
#include "io/save.hpp"
#include "render/plot.hpp"
#include "render/renderer.hpp"

namespace kova::headless {

namespace {

/// Looks entities up by the document's index.
render::SpaceQuery indexed(doc::Document& document) {
    return [&document](engine::EntityList& space, const math::Bounds2& box) {
        return document.spatialIndex(space).query(box);
    };
}

}  // namespace

QImage Session::renderImage(int width, int height) {
    return render::renderImage(document_.drawing(), width, height, indexed(document_));
}

std::string Session::plot(std::span<const engine::PlotPage> pages, engine::PlotFormat format, const std::string& path) {
    cmd::updateFieldsAt(cmd::FieldMoment::Plot, document_);
    const QByteArray bytes = render::plot(document_.drawing(), pages, format, indexed(document_));
    if (bytes.isEmpty()) return "The plot is empty or too large: " + path;
    return io::saveFile(path, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

}  // namespace kova::headless
