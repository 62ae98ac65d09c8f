#include "io/dxf/writing/writer.hpp"

#include "io/save.hpp"

namespace kova::io::dxf {

using engine::Drawing;
using engine::Entity;
using engine::EntityType;
using engine::Name;

namespace {

/// Handles beyond this are left to the drawing; new ones then come from below.
constexpr std::uint64_t kLastCounter = std::uint64_t{1} << 60U;

bool sameSpace(const engine::Layout* a, const std::unique_ptr<engine::Layout>& b) { return a == b.get(); }

}  // namespace

Writer::Writer(const Drawing& drawing, DxfSaveReport& report, bool forDwg, Progress* progress)
    : drawing_(drawing), saved_(drawing), report_(report), progress_(progress), forDwg_(forDwg) {
    decoder_.setUtf8(true);
}

std::uint64_t Writer::newHandle() {
    do {
        ++next_;
    } while (drawing_.findByHandle(next_) != nullptr || reserved_.count(next_) != 0);
    noteHandle(next_);
    return next_;
}

std::uint64_t Writer::reserveHandle(std::uint64_t wanted) {
    if (wanted == 0 || wanted > kLastCounter || drawing_.findByHandle(wanted) != nullptr ||
        !reserved_.insert(wanted).second)
        return newHandle();
    noteHandle(wanted);
    return wanted;
}

/// Everything that others point to gets its handle before anything is written.
void Writer::assignHandles() {
    next_ = drawing_.nextHandle <= kLastCounter ? drawing_.nextHandle : 0;
    if (next_ > 0) --next_;

    // The handles that blocks and layouts have from earlier files come first.
    const auto& layouts = drawing_.layouts();
    const engine::Layout* active = drawing_.activeLayout();
    if (active == nullptr && !layouts.empty()) active = layouts.front().get();
    for (const engine::Block* block : saved_.blocks) {
        const std::uint64_t handle = reserveHandle(block->handle);
        blockRecords_.emplace(block->name.key(), handle);
    }
    const auto addSpace = [&](const engine::Layout* layout, std::string block, std::string name, int tab) {
        const std::uint64_t record = reserveHandle(layout != nullptr ? layout->handle : 0);
        blockRecords_.emplace(Name(block).key(), record);
        spaces_.push_back({layout, std::move(block), std::move(name), record, newHandle(), tab, 0});
    };
    addSpace(nullptr, "*Model_Space", "Model", 0);
    if (active == nullptr) {
        addSpace(nullptr, "*Paper_Space", "Layout1", 1);
    } else {
        addSpace(active, "*Paper_Space", std::string(symbol(active->name)), active->tabOrder);
        int number = 0;
        for (const auto& layout : layouts)
            if (!sameSpace(active, layout))
                addSpace(layout.get(), "*Paper_Space" + std::to_string(number++), std::string(symbol(layout->name)),
                         layout->tabOrder);
    }

    for (std::uint64_t* handle :
         {&tables_.viewports, &tables_.linetypes,     &tables_.layers,     &tables_.styles,       &tables_.views,
          &tables_.ucs,       &tables_.appIds,        &tables_.dimStyles,  &tables_.blockRecords, &fixed_.root,
          &fixed_.groups,     &fixed_.layouts,        &fixed_.mlineStyles, &fixed_.mleaderStyles, &fixed_.tableStyles,
          &fixed_.images,     &fixed_.plotStyleNames, &fixed_.plotStyle,   &fixed_.plotSettings,  &fixed_.scales,
          &fixed_.variables,  &fixed_.properties,     &fixed_.drawing})
        *handle = newHandle();
    if (!drawing_.layerStates.empty()) {
        fixed_.layerTableDictionary = newHandle();
        fixed_.layerStates = newHandle();
    }

    const engine::CommonNames& names = engine::commonNames();
    for (const Name name : {names.byBlock, names.byLayer, names.continuous})
        if (!drawing_.linetypes.contains(name)) linetypeHandle(name);
    const auto assign = [&](HandleMap& map, const auto& table) {
        for (const auto* record : table) map.emplace(record->name.key(), newHandle());
    };
    assign(linetypes_, saved_.linetypes);
    assign(layers_, saved_.layers);
    assign(styles_, saved_.textStyles);
    assign(dimStyles_, saved_.dimStyles);
    assign(mleaderStyles_, saved_.mleaderStyles);
    assign(tableStyles_, saved_.tableStyles);
    layerHandle(names.layerZero);
    textStyleHandle(names.standard);
    dimStyleHandle(names.standard);
    mlineStyles_.push_back({"Standard", newHandle(), nullptr});
    for (const std::string_view name : registeredApplications()) application(name);
    for (const std::string_view name : {"AcCmTransparency", "AcAecLayerStandard", "ACAD_DSTYLE_DIM_LINETYPE",
                                        "ACAD_DSTYLE_DIM_EXT1_LINETYPE", "ACAD_DSTYLE_DIM_EXT2_LINETYPE"})
        application(name);
    for (const Name name : drawing_.appIds)
        if (!name.empty()) application(name.view());
}

void Writer::run() {
    assignHandles();
    noteFollowers();
    // Objects and tables list what the entities use.
    spaces();
    objectsSection();
    out_ = &front_;
    headerSection();
    classesSection();
    tablesSection();
    missingBlocks();
    finishObjects();
    for (const GroupWriter* part : {&front_, &blocks_, &pictures_, &entities_, &objects_})
        report_.replacedNumbers += part->replacedNumbers();

    // Everything has its handle now.
    const std::string_view front = front_.view();
    const std::size_t at = front.find(kSeedPlaceholder);
    const std::uint64_t seed = highest_ + (highest_ != ~std::uint64_t{0} ? 1 : 0);
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, seed, 16).ptr;
    std::string patched(front.substr(at + kSeedPlaceholder.size()));
    std::string text = engine::upperCase(std::string_view(digits, static_cast<std::size_t>(end - digits)));
    front_.truncate(at);
    front_.append(text);
    front_.append(patched);
}

std::vector<std::string_view> Writer::pieces() const {
    return {front_.view(), blocks_.view(), pictures_.view(), entities_.view(), objects_.view()};
}

// Spaces ---------------------------------------------------------------------------------------------------------

void Writer::blockBegin(std::string_view name, std::uint64_t record, bool paper, int flags, const math::Vector2& base,
                        std::string_view path, std::string_view description) {
    GroupWriter& out = *out_;
    out.record("BLOCK");
    out.handle(5, newHandle());
    out.handle(330, record);
    out.subclass("AcDbEntity");
    if (paper) out.integer(67, 1);
    out.word(8, "0");
    out.subclass("AcDbBlockBegin");
    out.text(2, name);
    out.integer(70, flags);
    out.point(10, base, 0.0);
    out.text(3, name);
    out.text(1, path);
    if (!description.empty()) out.text(4, description);
}

void Writer::blockEnd(std::uint64_t record, bool paper) {
    GroupWriter& out = *out_;
    out.record("ENDBLK");
    out.handle(5, newHandle());
    out.handle(330, record);
    out.subclass("AcDbEntity");
    if (paper) out.integer(67, 1);
    out.word(8, "0");
    out.subclass("AcDbBlockEnd");
}

void Writer::entities(const engine::EntityList& list, const Target& target) {
    for (const Entity& e : list) {
        ++report_.total;
        progress_.count([&](std::size_t done) { return std::pair(done, drawing_.entityCount()); });
        if (!entity(e, target)) ++report_.dropped;
    }
}

void Writer::spaces() {
    out_ = &blocks_;
    blocks_.record("SECTION");
    blocks_.word(2, "BLOCKS");
    for (std::size_t i = 0; i < spaces_.size(); ++i) {
        const bool paper = i > 0;
        blockBegin(spaces_[i].blockName, spaces_[i].record, paper, 0, {}, {}, {});
        // The entities of model space and of the active layout stand in the ENTITIES section.
        if (i > 1) {
            const std::uint64_t record = spaces_[i].record;
            entities(spaces_[i].layout->entities, {record, true});
        }
        blockEnd(spaces_[i].record, paper);
    }
    for (const engine::Block* block : saved_.blocks) {
        const std::uint64_t record = blockRecords_.at(block->name.key());
        int flags = block->isAnonymous() ? 1 : 0;
        for (const Entity& e : block->entities)
            if (e.type() == EntityType::AttributeDefinition) {
                flags |= 2;
                break;
            }
        if (block->xrefType != engine::XrefType::None) flags |= block->xrefType == engine::XrefType::Overlay ? 12 : 4;
        blockBegin(symbol(block->name), record, false, flags, block->base, block->xrefPath, block->description);
        if (engine::hasOwnContents(*block)) entities(block->entities, {record, false});
        blockEnd(record, false);
    }

    out_ = &entities_;
    entities_.record("SECTION");
    entities_.word(2, "ENTITIES");
    entities(drawing_.modelSpace(), {spaces_[0].record, false});
    if (spaces_[1].layout != nullptr) entities(spaces_[1].layout->entities, {spaces_[1].record, true});
    entities_.record("ENDSEC");
}

// Entities -------------------------------------------------------------------------------------------------------

bool Writer::entity(const Entity& e, const Target& t) {
    switch (e.type()) {
        case EntityType::Line:
            return write(static_cast<const engine::LineEntity&>(e), t);
        case EntityType::Circle:
            return write(static_cast<const engine::CircleEntity&>(e), t);
        case EntityType::Arc:
            return write(static_cast<const engine::ArcEntity&>(e), t);
        case EntityType::Polyline:
            return write(static_cast<const engine::PolylineEntity&>(e), t);
        case EntityType::Point:
            return write(static_cast<const engine::PointEntity&>(e), t);
        case EntityType::Text:
            return write(static_cast<const engine::TextEntity&>(e), t);
        case EntityType::MText:
            return write(static_cast<const engine::MTextEntity&>(e), t);
        case EntityType::Hatch:
            return write(static_cast<const engine::HatchEntity&>(e), t);
        case EntityType::Dimension:
            return write(static_cast<const engine::DimensionEntity&>(e), t);
        case EntityType::BlockReference:
            return write(static_cast<const engine::BlockReferenceEntity&>(e), t);
        case EntityType::Image:
            return write(static_cast<const engine::ImageEntity&>(e), t);
        case EntityType::Spline:
            return write(static_cast<const engine::SplineEntity&>(e), t);
        case EntityType::Ellipse:
            return write(static_cast<const engine::EllipseEntity&>(e), t);
        case EntityType::Xline:
            return write(static_cast<const engine::XlineEntity&>(e), t);
        case EntityType::Ray:
            return write(static_cast<const engine::RayEntity&>(e), t);
        case EntityType::Leader:
            return write(static_cast<const engine::LeaderEntity&>(e), t);
        case EntityType::MLine:
            return write(static_cast<const engine::MLineEntity&>(e), t);
        case EntityType::MLeader:
            return write(static_cast<const engine::MLeaderEntity&>(e), t);
        case EntityType::Table:
            return write(static_cast<const engine::TableEntity&>(e), t);
        case EntityType::Wipeout:
            return write(static_cast<const engine::WipeoutEntity&>(e), t);
        case EntityType::Region:
            return write(static_cast<const engine::RegionEntity&>(e), t);
        case EntityType::Tolerance:
            return write(static_cast<const engine::ToleranceEntity&>(e), t);
        case EntityType::AttributeDefinition:
            return write(static_cast<const engine::AttributeDefinitionEntity&>(e), t);
        case EntityType::Viewport:
            return write(static_cast<const engine::ViewportEntity&>(e), t);
        case EntityType::Face3D:
            return write(static_cast<const engine::Face3DEntity&>(e), t);
        case EntityType::Polyline3D:
            return write(static_cast<const engine::Polyline3DEntity&>(e), t);
        case EntityType::Mesh:
            return write(static_cast<const engine::MeshEntity&>(e), t);
        case EntityType::Solid3D:
            return write(static_cast<const engine::Solid3DEntity&>(e), t);
        case EntityType::Solid2D:
            return write(static_cast<const engine::Solid2DEntity&>(e), t);
        case EntityType::Polyface:
            return write(static_cast<const engine::PolyfaceEntity&>(e), t);
        case EntityType::Shape:
            return write(static_cast<const engine::ShapeEntity&>(e), t);
    }
    return false;
}

void Writer::head(std::string_view type, const Entity& e, const Target& t, const OwnData& own) {
    GroupWriter& out = *out_;
    recordStart_ = out.size();
    out.record(type);
    out.handle(5, e.handle());
    noteHandle(e.handle());
    if (!hatchesOf_.empty())
        if (const auto followers = hatchesOf_.find(e.handle()); followers != hatchesOf_.end()) {
            out.word(102, "{ACAD_REACTORS");
            for (const std::uint64_t hatch : followers->second) out.handle(330, hatch);
            out.word(102, "}");
        }
    if (own.dictionary != 0) extensionGroup(own.dictionary);
    out.handle(330, t.owner);
    out.subclass("AcDbEntity");
    if (t.paper) out.integer(67, 1);
    out.text(8, symbol(e.layer));
    if (!(e.linetype == engine::commonNames().byLayer)) linetypeName(6, e.linetype);
    if (e.color.method != engine::ColorMethod::ByLayer) {
        out.integer(62, e.color.bareIndex());
        if (e.color.method == engine::ColorMethod::RGB)
            out.integer(420, e.color.red << 16 | e.color.green << 8 | e.color.blue);
    }
    if (e.transparency > 0 && e.transparency <= 100) out.integer(440, transparencyCode(e.transparency));
    if (e.lineweight != -1) out.integer(370, nearestLineweight(e.lineweight));
    if (const double scale = e.linetypeScale(); scale != 1.0) out.real(48, scale);
    if (!e.visible) out.integer(60, 1);
}

void Writer::tail(const Entity& e, const OwnData& own, std::string_view parts) {
    // What is the user's under ACAD may be what a reader goes by: it stands before the fingerprint is taken.
    if (const engine::XData* xdata = e.xdata()) userXdata(*xdata);
    ownXdata(own, parts);
}

void Writer::thickness(const Entity& e) {
    if (const double t = e.thickness(); t != 0.0) out_->real(39, t);
}

void Writer::normal(const Entity& e) {
    const math::Vector3 n = e.normal();
    if (n.x == 0.0 && n.y == 0.0 && n.z == 1.0) return;
    out_->point(210, n);
}

// Saving ----------------------------------------------------------------------------------------------------------

namespace {

/// False when the sink or the memory did not take it.
bool writeTo(ByteSink& sink, const Drawing& drawing, DxfSaveReport* report, bool forDwg, Progress* progress) {
    DxfSaveReport own;
    DxfSaveReport& result = report != nullptr ? *report : own;
    result = {};
    try {
        Writer writer(drawing, result, forDwg, progress);
        writer.run();
        for (const std::string_view piece : writer.pieces()) {
            if (!sink.write(piece.data(), piece.size())) return false;
            result.size += piece.size();
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

}  // namespace

std::string saveDxf(const Drawing& drawing, Save& save, DxfSaveReport* report, Progress* progress) {
    if (!save.open().empty()) return "Failed to open file for writing: " + save.path();
    const bool written = writeTo(save.bytes(), drawing, report, false, progress);
    return written && save.commit().empty() ? std::string() : "Write error on file: " + save.path();
}

std::string saveDxf(const Drawing& drawing, const std::string& path, DxfSaveReport* report, Progress* progress) {
    Save save(path);
    return saveDxf(drawing, save, report, progress);
}

bool writeDxfForDwg(const Drawing& drawing, ByteSink& sink, DxfSaveReport* report, Progress* progress) {
    return writeTo(sink, drawing, report, true, progress);
}

std::string dxfText(const Drawing& drawing, DxfSaveReport* report) {
    DxfSaveReport own;
    DxfSaveReport& result = report != nullptr ? *report : own;
    result = {};
    Writer writer(drawing, result);
    writer.run();
    std::string text;
    for (const std::string_view piece : writer.pieces()) text += piece;
    return text;
}

}  // namespace kova::io::dxf
