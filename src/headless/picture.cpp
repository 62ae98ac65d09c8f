#include <QImage>

#include "doc/spatial_index.hpp"
#include "headless/session.hpp"
#include "render/renderer.hpp"

namespace kova::headless {

QImage Session::renderImage(int width, int height) {
    return render::renderImage(document_.drawing(), width, height,
                               [this](engine::EntityList& space, const math::Bounds2& box) {
                                   return document_.spatialIndex(space).query(box);
                               });
}

}  // namespace kova::headless
