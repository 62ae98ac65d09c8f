#pragma once

#include <memory>
#include <vector>

#include "engine/model/drawing.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::engine {

/// What a referenced drawing shows in its host: its model space, and the records that this needs under the names
/// "reference|name". Layers "0" and "Defpoints" and the linetypes that every drawing has are the host's own.
struct ReferenceContents {
    math::Vector2 base;
    std::vector<Layer> layers;
    std::vector<Linetype> linetypes;
    std::vector<TextStyle> textStyles;
    std::vector<DimStyle> dimStyles;
    std::vector<MLeaderStyle> mleaderStyles;
    std::vector<TableStyle> tableStyles;
    std::vector<std::unique_ptr<Block>> blocks;
    std::vector<std::unique_ptr<Entity>> entities;
};

/// Takes apart a referenced drawing, which is used up, for the reference of that name.
ReferenceContents takeReferenceContents(Drawing& source, Name reference);

/// Shows contents under the block of a reference; records that came with an earlier load are replaced, but layers keep
/// their state in the host while VISRETAIN is 1. The host's handle counter stays as it is: what a reference brings is
/// in no file of the host.
void showReference(Drawing& host, Block& reference, ReferenceContents contents);

/// The reference that a record of this name came with ("reference|name"); null: it is the drawing's own.
const Block* referenceOf(const Drawing& drawing, Name name);

/// True for a record that files leave out because a loaded reference brings it again. Layers are kept, with the state
/// that the user gave them, while VISRETAIN is 1.
bool comesWithReference(const Drawing& drawing, SymbolKind kind, Name name);

/// The records that a drawing's file holds, in the order of their tables: all but those that come with a reference.
struct SavedRecords {
    explicit SavedRecords(const Drawing& drawing);
    std::vector<const Layer*> layers;
    std::vector<const Linetype*> linetypes;
    std::vector<const TextStyle*> textStyles;
    std::vector<const DimStyle*> dimStyles;
    std::vector<const MLeaderStyle*> mleaderStyles;
    std::vector<const TableStyle*> tableStyles;
    std::vector<const Block*> blocks;
};

/// False for the contents of a loaded reference, which stand in its own file.
inline bool hasOwnContents(const Block& block) {
    return block.xrefType == XrefType::None || block.xrefStatus != XrefStatus::Loaded;
}

/// The file that a reference's path means: as it stands, from the host's folder, or by its name alone in that folder.
/// Empty: there is none.
std::string findReferencedFile(const std::string& path, const std::string& hostFile);

}  // namespace kova::engine
