// What programs add to a file that tells nothing about the drawing: missing numbers of viewports are made up, and what
// the program's own DWG export added for other readers is taken out again.
#include <algorithm>

#include "engine/entities/viewport.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::DictionaryEntry;
using engine::ViewportEntity;

/// Layouts that nobody has looked at since their file was opened have no numbers of viewports, DWG files never have:
/// the first viewport is the sheet, the others count on.
void Reader::settleViewports() {
    if (own_) return;
    for (const auto& [block, layout] : papers_) {
        std::vector<ViewportEntity*> viewports;
        bool numbered = false;
        for (engine::Entity& e : layout->entities) {
            if (e.type() != engine::EntityType::Viewport) continue;
            viewports.push_back(static_cast<ViewportEntity*>(&e));
            numbered = numbered || viewports.back()->vpId != 0;
        }
        if (numbered) continue;
        std::int32_t number = 0;
        for (ViewportEntity* viewport : viewports) viewport->vpId = number < 32767 ? ++number : number;
    }
}

void Reader::dropAdditions() {
    if (!own_ || ownNextHandle_ == 0) return;
    const auto added = [&](std::uint64_t handle) { return handle >= ownNextHandle_; };
    // Views of the sheet.
    for (const auto& layout : drawing_.layouts()) {
        engine::Entity* sheet = nullptr;
        for (engine::Entity& e : layout->entities)
            if (e.type() == engine::EntityType::Viewport && added(e.handle()) &&
                static_cast<ViewportEntity&>(e).isSheet())
                sheet = &e;
        if (sheet != nullptr) layout->entities.take(*sheet);
    }
    // Dictionaries that every DWG file has, with the records that each of them has.
    const auto isUsual = [&](const DictionaryEntry& entry) {
        return entry.entries.empty() && added(entry.handle) &&
               (entry.name == "ByBlock" || entry.name == "ByLayer" || entry.name == "Global");
    };
    std::erase_if(drawing_.objectDictionary, [&](DictionaryEntry& entry) {
        const bool materials = entry.name == "ACAD_MATERIAL";
        if (!materials && !(entry.name == "ACAD_COLOR") && !(entry.name == "ACAD_VISUALSTYLE")) return false;
        if (materials) std::erase_if(entry.entries, isUsual);
        return entry.type == "DICTIONARY" && added(entry.handle) && entry.entries.empty();
    });
}

}  // namespace kova::io::dxf
