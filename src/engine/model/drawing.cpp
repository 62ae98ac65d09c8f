#include "engine/model/drawing.hpp"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "engine/entities/block_reference.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/viewport.hpp"
#include "engine/libraries/libraries.hpp"

namespace kova::engine {

Drawing::Drawing() : modelSpace_(this) {
    const CommonNames& names = commonNames();
    layers.ensure(names.layerZero);
    Layer defpoints;
    defpoints.name = names.defpoints;
    defpoints.plottable = false;
    layers.add(defpoints);

    textStyles.add(TextStyle{});
    dimStyles.add(DimStyle{});
    mleaderStyles.add(MLeaderStyle{});
    tableStyles.add(TableStyle{});
    for (const Name& special : {names.byBlock, names.byLayer, names.continuous}) {
        Linetype linetype;
        linetype.name = special;
        linetype.standard = true;
        if (special == names.continuous) linetype.description = "Solid line";
        linetypes.add(linetype);
    }
    appIds.push_back("ACAD");
    for (const AnnotationScale& scale : builtinAnnotationScales()) annotationScales.add(scale);
    addLayout("Layout1");
    addLayout("Layout2");
    currentView.center = {210.0, 148.5};
    currentView.width = 420.0;
    currentView.height = 297.0;
    for (const SysVarDef& def : sysVarTable()) {
        if (def.get != nullptr || def.programWide()) continue;
        switch (def.type) {
            case SysVarType::Integer:
                integerVariables.emplace(def.name, std::get<std::int32_t>(def.fallback));
                break;
            case SysVarType::Real:
                realVariables.emplace(def.name, std::get<double>(def.fallback));
                break;
            case SysVarType::String:
                stringVariables.emplace(def.name, std::get<std::string>(def.fallback));
                break;
            case SysVarType::Point:
                break;
        }
    }
    applyStartingValues(*this, UnitSystem::Metric);
}

Drawing::~Drawing() = default;

EntityList& Drawing::currentSpace() {
    if (editedBlock_) return editedBlock_->entities;
    return currentSpaceIsModel() ? modelSpace_ : activeLayout()->entities;
}

bool Drawing::currentSpaceIsModel() const {
    return editedBlock_ || tileMode || activeViewport() != nullptr || activeLayout() == nullptr;
}

ViewportEntity* Drawing::activeViewport() const {
    if (tileMode || activeViewportId == 0 || editedBlock_) return nullptr;
    Entity* entity = findById(activeViewportId);
    const Layout* layout = activeLayout();
    if (entity == nullptr || layout == nullptr || entity->owner() != &layout->entities) return nullptr;
    return entity->type() == EntityType::Viewport ? static_cast<ViewportEntity*>(entity) : nullptr;
}

Layout* Drawing::findLayout(Name name) const {
    for (const auto& layout : layouts_)
        if (layout->name == name) return layout.get();
    return nullptr;
}

Layout* Drawing::addLayout(Name name) {
    if (name.empty() || name == "Model" || findLayout(name) != nullptr) return nullptr;
    auto layout = std::make_unique<Layout>(name);
    for (const auto& other : layouts_) layout->tabOrder = std::max(layout->tabOrder, other->tabOrder + 1);
    layout->entities.attach(this);
    layouts_.push_back(std::move(layout));
    return layouts_.back().get();
}

std::unique_ptr<Layout> Drawing::takeLayout(Name name) {
    for (auto it = layouts_.begin(); it != layouts_.end(); ++it) {
        if (!((*it)->name == name)) continue;
        std::unique_ptr<Layout> layout = std::move(*it);
        layouts_.erase(it);
        layout->entities.attach(nullptr);
        return layout;
    }
    return nullptr;
}

void Drawing::putLayout(std::unique_ptr<Layout> layout, std::size_t position) {
    layout->entities.attach(this);
    layouts_.insert(layouts_.begin() + static_cast<std::ptrdiff_t>(std::min(position, layouts_.size())),
                    std::move(layout));
}

bool Drawing::renameLayout(Name from, Name to) {
    Layout* layout = findLayout(from);
    if (layout == nullptr || to.empty() || to == "Model") return false;
    Layout* taken = findLayout(to);
    if (taken != nullptr && taken != layout) return false;
    layout->name = to;
    if (activeLayoutName == from) activeLayoutName = to;
    return true;
}

Block* Drawing::findBlock(Name name) const {
    if (editedBlock_ && name == editedBlock_->name) return editedBlock_.get();
    const auto it = blockIndex_.find(name.key());
    return it == blockIndex_.end() ? nullptr : it->second->get();
}

Block* Drawing::addBlock(Name name) {
    if (name.empty() || findBlock(name) != nullptr) return nullptr;
    putBlock(std::make_unique<Block>(name));
    return blocks_.back().get();
}

std::unique_ptr<Block> Drawing::takeBlock(Name name) {
    const auto found = blockIndex_.find(name.key());
    if (found == blockIndex_.end()) return nullptr;
    std::unique_ptr<Block> block = std::move(*found->second);
    blocks_.erase(found->second);
    blockIndex_.erase(found);
    anonymous_.released(name);
    block->entities.attach(nullptr);
    return block;
}

std::vector<std::unique_ptr<Block>> Drawing::takeBlocks() {
    blockIndex_.clear();
    anonymous_.forget();
    std::vector<std::unique_ptr<Block>> taken;
    taken.reserve(blocks_.size());
    for (auto& block : blocks_) {
        block->entities.attach(nullptr);
        taken.push_back(std::move(block));
    }
    blocks_.clear();
    return taken;
}

void Drawing::putBlock(std::unique_ptr<Block> block, Name next) {
    block->entities.attach(this);
    const Name name = block->name;
    const auto behind = blockIndex_.find(next.key());
    const auto at = blocks_.insert(behind == blockIndex_.end() ? blocks_.end() : behind->second, std::move(block));
    blockIndex_.emplace(name.key(), at);
}

Name Drawing::blockAfter(Name name) const {
    const auto found = blockIndex_.find(name.key());
    if (found == blockIndex_.end()) return {};
    const auto next = std::next(found->second);
    return next == blocks_.end() ? Name() : (*next)->name;
}

bool Drawing::renameBlock(Name from, Name to) {
    const auto found = blockIndex_.find(from.key());
    if (found == blockIndex_.end() || to.empty()) return false;
    const Blocks::iterator at = found->second;
    Block* taken = findBlock(to);
    if (taken != nullptr && taken != at->get()) return false;
    blockIndex_.erase(found);
    (*at)->name = to;
    blockIndex_.emplace(to.key(), at);
    anonymous_.released(from);
    const auto rename = [&](EntityList& list) {
        for (Entity& e : list)
            if (e.type() == EntityType::BlockReference) {
                auto& reference = static_cast<BlockReferenceEntity&>(e);
                if (reference.blockName == from) reference.blockName = to;
            }
    };
    rename(modelSpace_);
    for (const auto& layout : layouts_) rename(layout->entities);
    for (const auto& other : blocks_) rename(other->entities);
    if (editedBlock_) rename(editedBlock_->entities);
    return true;
}

Name Drawing::editedBlockName() {
    static const Name name("*Block_Editor");
    return name;
}

std::unique_ptr<Block> Drawing::exchangeEditedBlock(std::unique_ptr<Block> block) {
    if (editedBlock_) editedBlock_->entities.attach(nullptr);
    editedBlock_.swap(block);
    if (editedBlock_) {
        editedBlock_->name = editedBlockName();
        editedBlock_->entities.attach(this);
    }
    return block;
}

EntityList* Drawing::spaceByBlockName(Name name) {
    if (name == "*Model_Space") return &modelSpace_;
    if (name == "*Paper_Space") {
        Layout* layout = activeLayout();
        if (layout == nullptr && !layouts_.empty()) layout = layouts_.front().get();
        return layout != nullptr ? &layout->entities : nullptr;
    }
    Block* block = findBlock(name);
    return block != nullptr ? &block->entities : nullptr;
}

Name Drawing::nextAnonymousName(std::string_view prefix) {
    return anonymous_.next(prefix, [&](Name name) { return findBlock(name) != nullptr; });
}

bool Drawing::blockContains(Name outer, Name wanted) const {
    // Depth first over the blocks that are reached by references, with a list of its own: nesting may be deep.
    const Block* start = findBlock(outer);
    const Block* target = findBlock(wanted);
    if (start == nullptr || target == nullptr) return false;
    std::unordered_set<const Block*> seen;
    std::vector<const Block*> open{start};
    while (!open.empty()) {
        const Block* block = open.back();
        open.pop_back();
        for (const Entity& e : block->entities) {
            if (e.type() != EntityType::BlockReference) continue;
            const Block* inner = findBlock(static_cast<const BlockReferenceEntity&>(e).blockName);
            if (inner == target) return true;
            if (inner != nullptr && seen.insert(inner).second) open.push_back(inner);
        }
    }
    return false;
}

std::uint64_t Drawing::takeHandle() {
    if (nextHandle == 0) nextHandle = 1;
    while (byHandle_.find(nextHandle) != nullptr) ++nextHandle;
    return nextHandle++;
}

namespace {

/// A box that surely holds an entity and is quicker to know than its exact one; empty: there is none.
math::Bounds2 looseBounds(const Entity& entity) {
    math::Bounds2 box;
    if (!inWorldPlane(entity)) return box;
    if (entity.type() == EntityType::Polyline) {
        const auto& polyline = static_cast<const PolylineEntity&>(entity);
        if (polyline.bulges.empty() || polyline.hasWidths()) return box;
        double most = 0.0;
        for (const double bulge : polyline.bulges) most = std::max(most, std::abs(bulge));
        for (const math::Vector2& p : polyline.vertices) box.expand(p);
        // An arc stays within its height of its chord, and no chord is longer than the diagonal.
        return box.is_empty() ? box : box.inflated(0.5 * most * box.min.distance_to(box.max));
    }
    if (entity.type() == EntityType::Text) {
        const auto& text = static_cast<const TextEntity&>(entity);
        if (text.hasSecondPoint() || std::abs(text.oblique) > 1.0) return box;
        // No character of any font is wider than three times the height of its letters.
        const double length =
            3.0 * static_cast<double>(text.content.size() + 2) * std::max(1.0, std::abs(text.widthFactor));
        return math::Bounds2{text.position, text.position}.inflated(std::abs(text.height) * length);
    }
    return box;
}

}  // namespace

math::Bounds2 Drawing::extents(const EntityList& space) const {
    math::Bounds2 box;
    bool lastVisible = true;
    const void* known = nullptr;
    for (const Entity& e : space) {
        if (!e.visible) continue;
        if (e.layer.key() != known) {
            known = e.layer.key();
            const Layer* layer = layers.find(e.layer);
            lastVisible = layer == nullptr || layer->isVisible();
        }
        if (!lastVisible) continue;
        // Most of a large drawing lies within what is known already.
        const math::Bounds2 loose = looseBounds(e);
        if (loose.is_empty() || !box.contains_box(loose)) box.expand(e.bounds());
    }
    return box;
}

Linetype* Drawing::loadLinetype(Name name) {
    if (Linetype* known = linetypes.find(name)) return known;
    for (const Linetype& linetype : builtinLinetypes(isMetric()))
        if (linetype.name == name) return &linetypes.add(linetype);
    return nullptr;
}

const HatchPattern* Drawing::findHatchPattern(Name name) const {
    if (const HatchPattern* known = hatchPatterns.find(name)) return known;
    for (const HatchPattern& pattern : builtinHatchPatterns(isMetric()))
        if (pattern.name == name) return &pattern;
    return nullptr;
}

const TextStyle& Drawing::textStyleOrStandard(Name name) const {
    static const TextStyle fallback;
    if (const TextStyle* style = textStyles.find(name)) return *style;
    const TextStyle* standard = textStyles.find(commonNames().standard);
    return standard != nullptr ? *standard : fallback;
}

const DimStyle& Drawing::dimStyleOrStandard(Name name) const {
    static const DimStyle fallback;
    if (const DimStyle* style = dimStyles.find(name)) return *style;
    const DimStyle* standard = dimStyles.find(commonNames().standard);
    return standard != nullptr ? *standard : fallback;
}

bool Drawing::isMetric() const {
    const auto it = integerVariables.find("MEASUREMENT");
    return it == integerVariables.end() || it->second != 0;
}

}  // namespace kova::engine
