#pragma once

#include <memory>
#include <string>
#include <vector>

#include "doc/document.hpp"
#include "engine/model/drawing.hpp"

namespace kova::cmd {

/// Defines (or redefines) a block from another drawing's model space, as part of the open group, and brings along the
/// layers, styles, patterns and blocks that this drawing lacks; what it has under the same name stays as it is. The
/// source is used up.
/// contents are scaled about the origin. Error text, empty on success; on an error the group is to be rolled back.
std::string importAsBlock(doc::Document& document, engine::Drawing& source, engine::Name name, double scale = 1.0);

/// Adds another drawing's model space, transformed, to the current space as part of the open group, and brings along
/// what importAsBlock does. The source is used up. Gives the new ids.
std::vector<std::uint64_t> importEntities(doc::Document& document, engine::Drawing& source,
                                          const math::Matrix4& matrix);

/// A document of its own with copies of a drawing's entities, moved by `shift`, and the records and blocks that they
/// need. Settings and units are the source's; the entities keep their handles.
std::unique_ptr<doc::Document> extractDrawing(const engine::Drawing& source,
                                              const std::vector<const engine::Entity*>& entities,
                                              const math::Vector2& shift);

/// A copy of a layout, page setup and entities, as part of the open group. Null: the name is no valid one or taken.
engine::Layout* copyLayout(doc::Document& document, const engine::Layout& layout, engine::Name name);
/// A layout of another drawing and the name it is to have.
struct ImportedLayout {
    const engine::Layout* layout;
    engine::Name name;
};
/// Copies layouts of another drawing, with what they need; the source is used up. Gives the number copied.
std::size_t importLayouts(doc::Document& document, engine::Drawing& source, const std::vector<ImportedLayout>& layouts);
/// A document of its own with one layout and what it needs.
std::unique_ptr<doc::Document> extractLayout(const engine::Drawing& source, const engine::Layout& layout);

/// The factor from the one drawing's unit (INSUNITS) to the other's; 1 when either has none.
double unitFactor(const engine::Drawing& from, const engine::Drawing& to);
/// The same for two values of INSUNITS.
double unitFactor(int from, int to);

}  // namespace kova::cmd
