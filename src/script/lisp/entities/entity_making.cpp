#include "script/lisp/entities/entity_making.hpp"

#include <cmath>

#include "doc/table_edits.hpp"
#include "engine/kinds/all.hpp"
#include "engine/symbols/symbols.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/entities/entity_codes.hpp"
#include "script/lisp/entities/record_making.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

constexpr std::size_t kMaxParts = 1'000'000;

std::string hexText(std::uint64_t handle) {
    char text[24];
    std::snprintf(text, sizeof text, "%llX", static_cast<unsigned long long>(handle));
    return text;
}

/// The block record that owns an entity, and whether it lies in paper space.
std::uint64_t ownerName(const Entity& e, std::string& layout, bool& paper) {
    paper = false;
    layout = "Model";
    const Drawing* d = e.drawing();
    if (d == nullptr) return 0;
    if (e.owner() == &d->modelSpace()) return recordName(RecordKind::Block, "*Model_Space");
    for (const auto& l : d->layouts()) {
        if (e.owner() != &l->entities) continue;
        paper = true;
        layout = l->name.str();
        return recordName(RecordKind::Block, "*Paper_Space");
    }
    for (const auto& b : d->blocks())
        if (e.owner() == &b->entities) return recordName(RecordKind::Block, b->name);
    return 0;
}

void attributeGroups(const GroupIo& io, BlockAttribute& a, const Entity& reference) {
    io.marker("AcDbText");
    const double z = a.plane ? a.plane->elevation : reference.elevation;
    const bool justified = a.hAlign != 0 || a.vAlign != 0;
    if (!io.reading()) {
        io.out().point(10, Vector3(a.position, z));
        io.out().point(11, justified ? Vector3(a.position, z) : Vector3());
    } else {
        io.integer(72, a.hAlign);
        io.integer(74, a.vAlign);
        if (a.hAlign < 0 || a.hAlign > 5) a.hAlign = 0;
        if (a.vAlign < 0 || a.vAlign > 3) a.vAlign = 0;
        const bool now = a.hAlign != 0 || a.vAlign != 0;
        const int own = now && (io.in().has(11) || justified) ? 11 : 10;
        if (io.in().has(own)) io.flat(own, a.position);
        if (io.in().has(210)) {
            const Vector3 normal = io.in().point(210).normalized();
            if (normal.length_squared() == 0.0) throw LispError("group 210: expected a direction");
            a.plane.reset();
            if (!normal.near_equal(reference.normal(), 1e-9))
                a.plane = AttributePlane{normal, io.in().has(own) ? io.in().point(own).z : z};
        }
    }
    io.real(40, a.textHeight);
    io.text(1, a.value);
    io.real(50, a.rotation);
    io.real(41, a.widthFactor);
    io.real(51, a.oblique);
    io.name(7, a.textStyle);
    io.integer(71, a.generation);
    if (!io.reading()) {
        io.integer(72, a.hAlign);
        io.out().point(210, a.plane ? a.plane->normal : reference.normal());
    }
    io.marker("AcDbAttribute");
    io.text(2, a.tag);
    std::int32_t flags = a.invisible ? 1 : 0;
    io.integer(70, flags);
    a.invisible = (flags & 1) != 0;
    if (!io.reading()) {
        io.integer(74, a.vAlign);
        return;
    }
    if (io.in().has(8)) a.layer = Name(io.in().text(8));
    if (io.in().has(62)) {
        const auto color =
            Color::fromBareIndex(static_cast<int>(std::clamp<std::int64_t>(io.in().integer(62), -1, 1000)));
        if (!color) throw LispError("group 62: expected a colour from 0 to 256");
        a.color = *color;
    }
}

Vector3* vertexOf(Entity& e, std::size_t i) {
    std::vector<Vector3>* vertices = nullptr;
    if (auto* p = dynamic_cast<Polyline3DEntity*>(&e)) vertices = &p->vertices;
    if (auto* m = dynamic_cast<MeshEntity*>(&e)) vertices = &m->vertices;
    if (auto* p = dynamic_cast<PolyfaceEntity*>(&e)) vertices = &p->vertices;
    return vertices != nullptr && i < vertices->size() ? &(*vertices)[i] : nullptr;
}

/// Groups of an attribute, a vertex, a face or the SEQEND.
void partGroups(GroupWriter& out, Entity& e, std::size_t part) {
    out.text(100, "AcDbEntity");
    const std::size_t index = part - 1;
    if (part > partCount(e)) {
        out.text(8, e.layer.view());
        return;
    }
    if (auto* insert = dynamic_cast<BlockReferenceEntity*>(&e)) {
        BlockAttribute& a = insert->attributes[index];
        out.text(8, a.layer.view());
        if (a.color.method != ColorMethod::ByLayer) out.integer(62, a.color.bareIndex());
        attributeGroups(GroupIo(out), a, e);
        return;
    }
    out.text(8, e.layer.view());
    out.text(100, "AcDbVertex");
    if (const Vector3* vertex = vertexOf(e, index)) {
        const int flags = e.type() == EntityType::Polyline3D ? 32 : e.type() == EntityType::Mesh ? 64 : 64 + 128;
        out.point(10, *vertex);
        out.integer(70, flags);
        return;
    }
    const auto& face = static_cast<PolyfaceEntity&>(e);
    const auto& corners = face.faces[index - face.vertices.size()];
    out.point(10, Vector3());
    out.integer(70, 128);
    for (std::size_t i = 0; i < corners.size() && i < 4; ++i) out.integer(71 + static_cast<int>(i), corners[i]);
}

void ensureLayer(Machine& m, Name name) {
    if (m.drawing().layers.contains(name)) return;
    if (!isValidSymbolName(name.view())) throw LispError("group 8: bad layer name " + name.str());
    m.document().editTable<doc::LayerTraits>([&](Table<Layer>& layers) { layers.ensure(name); });
}

/// Makes sure of the names that an entity refers to; false when one is not to be had.
bool ensureReferences(Machine& m, const Entity& e, const PendingEntities* pending) {
    Drawing& d = m.drawing();
    ensureLayer(m, e.layer);
    const CommonNames& common = commonNames();
    if (!(e.linetype == common.byLayer) && !(e.linetype == common.byBlock) && d.loadLinetype(e.linetype) == nullptr)
        return false;
    const auto hasStyle = [&](Name style) { return d.textStyles.contains(style); };
    switch (e.type()) {
        case EntityType::Text:
            return hasStyle(static_cast<const TextEntity&>(e).textStyle);
        case EntityType::MText:
            return hasStyle(static_cast<const MTextEntity&>(e).textStyle);
        case EntityType::AttributeDefinition:
            return hasStyle(static_cast<const AttributeDefinitionEntity&>(e).textStyle);
        case EntityType::BlockReference: {
            const Name name = static_cast<const BlockReferenceEntity&>(e).blockName;
            return d.findBlock(name) != nullptr ||
                   (pending != nullptr && pending->block && pending->block->name == name);
        }
        case EntityType::MLeader: {
            const auto& leader = static_cast<const MLeaderEntity&>(e);
            if (!leader.blockName.empty() && d.findBlock(leader.blockName) == nullptr) return false;
            return leader.styleName == common.standard || d.mleaderStyles.contains(leader.styleName);
        }
        case EntityType::Table: {
            const auto& table = static_cast<const TableEntity&>(e);
            return table.styleName == common.standard || d.tableStyles.contains(table.styleName);
        }
        case EntityType::Dimension:
            return d.dimStyles.contains(static_cast<const DimensionEntity&>(e).dimStyleName);
        default:
            return true;
    }
}

/// Applications of extended data that are new to the drawing are registered on the way.
void registerApplications(Machine& m, const Entity& e) {
    if (e.xdata() == nullptr) return;
    for (const XData::Application& application : e.xdata()->applications) {
        auto& known = m.drawing().appIds;
        if (std::find(known.begin(), known.end(), application.name) != known.end()) continue;
        m.document().editSettings([&](Drawing& d) { d.appIds.push_back(application.name); });
    }
}

bool addMade(Machine& m, std::unique_ptr<Entity> made, std::uint64_t& handle, bool paper) {
    PendingEntities& pending = *m.pending;
    if (!isSound(*made)) return false;
    doc::GroupScope group(m.document(), "LISP entmake");
    if (!ensureReferences(m, *made, &pending)) {
        group.rollback();
        return false;
    }
    registerApplications(m, *made);
    if (pending.block) {
        Entity& e = pending.block->entities.append(std::move(made));
        handle = e.handle();
        return true;
    }
    Drawing& d = m.drawing();
    EntityList* space = &d.currentSpace();
    if (paper && d.activeLayout() != nullptr) space = &d.activeLayout()->entities;
    handle = m.document().addEntity(std::move(made), *space).handle();
    return true;
}

std::unique_ptr<Entity> builtPolyline(PendingEntities::Polyline& p) {
    std::unique_ptr<Entity> made;
    if ((p.flags & 64) != 0) {
        auto face = std::make_unique<PolyfaceEntity>();
        face->vertices = std::move(p.points);
        face->faces = std::move(p.faces);
        made = std::move(face);
    } else if ((p.flags & 16) != 0) {
        auto mesh = std::make_unique<MeshEntity>();
        if (p.rows < 2 || p.columns < 2 || p.rows > 32767 || p.columns > 32767 ||
            static_cast<std::size_t>(p.rows * p.columns) != p.points.size())
            return nullptr;
        mesh->rows = static_cast<std::int32_t>(p.rows);
        mesh->cols = static_cast<std::int32_t>(p.columns);
        mesh->closedM = (p.flags & 1) != 0;
        mesh->closedN = (p.flags & 32) != 0;
        mesh->vertices = std::move(p.points);
        made = std::move(mesh);
    } else if ((p.flags & 8) != 0) {
        made = std::make_unique<Polyline3DEntity>(std::move(p.points), (p.flags & 1) != 0);
    } else {
        auto line = std::make_unique<PolylineEntity>();
        for (std::size_t i = 0; i < p.points.size(); ++i)
            line->addVertex(p.points[i].xy(), p.bulges[i], p.startWidths[i], p.endWidths[i]);
        line->closed = (p.flags & 1) != 0;
        line->ltgen = (p.flags & 128) != 0;
        made = std::move(line);
    }
    made->copyCommonFrom(*p.common);
    return made;
}

bool endBlock(Machine& m, std::string& name) {
    PendingEntities& pending = *m.pending;
    if (!pending.block) return false;
    std::unique_ptr<Block> block = std::move(pending.block);
    name = block->name.str();
    doc::GroupScope group(m.document(), "LISP entmake");
    if (Block* known = m.drawing().findBlock(block->name)) {
        std::vector<std::unique_ptr<Entity>> contents;
        block->entities.swapContents(contents);
        std::erase(contents, nullptr);
        m.document().replaceBlockContents(*known, std::move(contents));
        const Vector2 base = block->base;
        m.document().editBlock(*known, [&](Block& b) { b.base = base; });
        return true;
    }
    return m.document().addBlock(std::move(block)) != nullptr;
}

}  // namespace

std::size_t partCount(const Entity& e) {
    std::size_t count = 0;
    switch (e.type()) {
        case EntityType::BlockReference:
            count = static_cast<const BlockReferenceEntity&>(e).attributes.size();
            break;
        case EntityType::Polyline3D:
            count = static_cast<const Polyline3DEntity&>(e).vertices.size();
            break;
        case EntityType::Mesh:
            count = static_cast<const MeshEntity&>(e).vertices.size();
            break;
        case EntityType::Polyface: {
            const auto& p = static_cast<const PolyfaceEntity&>(e);
            count = p.vertices.size() + p.faces.size();
            break;
        }
        default:
            break;
    }
    // Handles beyond the room of a name, and parts beyond it, are not told apart.
    return e.handle() >> SubName::kShift != 0 ? 0 : std::min<std::size_t>(count, 0x7FFFFE);
}

Value entityGroups(Entity& e, const SubName& name, const Value& applications) {
    GroupWriter out;
    const bool part = name.part > 0;
    if (part && name.part > partCount(e) + 1) return {};
    std::string type = groupTypeName(e);
    if (part && name.part > partCount(e))
        type = "SEQEND";
    else if (part)
        type = e.type() == EntityType::BlockReference ? "ATTRIB" : "VERTEX";
    out.entity(-1, part ? name.encoded() : e.handle());
    out.text(0, type);
    std::string layout;
    bool paper = false;
    const std::uint64_t owner = ownerName(e, layout, paper);
    out.entity(330, part ? e.handle() : owner);
    out.text(5, hexText(part ? name.encoded() : e.handle()));
    if (part) {
        partGroups(out, e, name.part);
        return out.finish();
    }
    out.text(100, "AcDbEntity");
    out.integer(67, paper ? 1 : 0);
    out.text(410, layout);
    const GroupIo io(out);
    commonGroups(io, e);
    kindGroups(io, e);
    writeExtendedData(out, e, applications);
    return out.finish();
}

bool makeFromGroups(Machine& m, const Value& list, std::uint64_t& handle, std::string& block) {
    const GroupList groups(list);
    const std::string type = upperCase(groups.text(0));
    if (!m.pending) m.pending = std::make_unique<PendingEntities>();
    PendingEntities& pending = *m.pending;
    if (type == "BLOCK") {
        pending = {};
        const Name name(groups.text(2));
        if (!isValidSymbolName(name.view()) && !name.view().starts_with('*')) return false;
        Name own = name;
        if (name.view().starts_with('*'))
            own = m.drawing().nextAnonymousName(name == "*U" ? "*U" : name.view().substr(0, 2));
        pending.block = std::make_unique<Block>(own);
        pending.block->base = groups.point(10).xy();
        return true;
    }
    if (type == "ENDBLK") return endBlock(m, block);
    if (isRecordType(type)) return makeRecord(m, type, groups);
    if (type == "SEQEND") {
        if (pending.insert) return addMade(m, std::move(pending.insert), handle, false);
        if (!pending.polyline) return false;
        std::unique_ptr<Entity> made = builtPolyline(*pending.polyline);
        pending.polyline.reset();
        return made && addMade(m, std::move(made), handle, false);
    }
    if (type == "ATTRIB") {
        auto* insert = dynamic_cast<BlockReferenceEntity*>(pending.insert.get());
        if (insert == nullptr || insert->attributes.size() >= kMaxParts) return false;
        BlockAttribute attribute;
        attribute.layer = insert->layer;
        attributeGroups(GroupIo(groups), attribute, *insert);
        if (attribute.tag.empty() || attribute.textHeight <= 0.0) return false;
        insert->attributes.push_back(std::move(attribute));
        return true;
    }
    if (type == "VERTEX") {
        PendingEntities::Polyline* p = pending.polyline.get();
        if (p == nullptr || p->points.size() >= kMaxParts || p->faces.size() >= kMaxParts) return false;
        const std::int64_t flags = groups.integer(70);
        if ((p->flags & 64) != 0 && (flags & 128) != 0 && (flags & 64) == 0) {
            std::vector<std::int32_t> corners;
            for (int code = 71; code <= 74; ++code) {
                const std::int64_t corner = groups.integer(code);
                if (corner != 0)
                    corners.push_back(
                        static_cast<std::int32_t>(std::clamp<std::int64_t>(corner, -8'388'607, 8'388'607)));
            }
            p->faces.push_back(std::move(corners));
            return true;
        }
        p->points.push_back(groups.point(10));
        p->bulges.push_back(groups.real(42));
        p->startWidths.push_back(groups.real(40));
        p->endWidths.push_back(groups.real(41));
        return true;
    }
    const bool paper = groups.integer(67) == 1;
    if (type == "POLYLINE") {
        auto p = std::make_unique<PendingEntities::Polyline>();
        p->common = std::make_unique<PolylineEntity>();
        m.document().applyCurrentProperties(*p->common);
        commonGroups(GroupIo(groups), *p->common);
        p->common->elevation = groups.point(10).z;
        p->flags = groups.integer(70);
        p->rows = groups.integer(71);
        p->columns = groups.integer(72);
        pending.insert.reset();
        pending.polyline = std::move(p);
        return true;
    }
    std::unique_ptr<Entity> made = entityForGroups(groups);
    if (!made) return false;
    m.document().applyCurrentProperties(*made);
    commonGroups(GroupIo(groups), *made);
    kindGroups(GroupIo(groups), *made);
    if (!isUnderstood(*made)) return false;
    if (groups.hasExtended()) readExtendedData(groups.extended(), *made);
    pending.polyline.reset();
    pending.insert.reset();
    if (type == "INSERT" && groups.integer(66) == 1) {
        pending.insert = std::move(made);
        return true;
    }
    return addMade(m, std::move(made), handle, paper);
}

bool modifyFromGroups(Machine& m, const Value& list) {
    const GroupList groups(list);
    const Value* given = groups.find(-1);
    if (given == nullptr || !given->isEntity()) throw LispError("ENTMOD: the list has no entity name under -1");
    if (isRecordName(given->handle())) return modifyRecord(m, given->handle(), groups);
    const SubName name = SubName::of(given->handle());
    Entity* e = m.drawing().findByHandle(name.handle);
    if (e == nullptr) return false;
    doc::GroupScope group(m.document(), "LISP entmod");
    std::unique_ptr<Entity> changed = e->clone();
    if (name.part > 0) {
        if (name.part > partCount(*e)) return false;
        const std::size_t index = name.part - 1;
        if (auto* insert = dynamic_cast<BlockReferenceEntity*>(changed.get())) {
            BlockAttribute& attribute = insert->attributes[index];
            attributeGroups(GroupIo(groups), attribute, *changed);
            if (attribute.tag.empty() || attribute.textHeight <= 0.0) return false;
            ensureLayer(m, attribute.layer);
        } else if (Vector3* vertex = vertexOf(*changed, index)) {
            *vertex = groups.point(10, *vertex);
        } else {
            return false;
        }
    } else {
        if (groups.has(0) && !equalNoCase(groups.text(0), groupTypeName(*e))) return false;
        commonGroups(GroupIo(groups), *changed);
        kindGroups(GroupIo(groups, e), *changed);
        if (groups.hasExtended()) readExtendedData(groups.extended(), *changed);
        if (!isSound(*changed) || !ensureReferences(m, *changed, nullptr)) {
            group.rollback();
            return false;
        }
        registerApplications(m, *changed);
    }
    m.document().replaceEntity(*e, std::move(changed));
    return true;
}

bool restoreDeleted(Machine& m, std::uint64_t name) {
    const auto it = m.deleted.find(name);
    if (it == m.deleted.end()) return false;
    Drawing& d = m.drawing();
    const EntityList* list = it->second.second;
    EntityList* target = nullptr;
    if (list == &d.modelSpace()) target = &d.modelSpace();
    for (const auto& layout : d.layouts())
        if (list == &layout->entities) target = &layout->entities;
    for (const auto& block : d.blocks())
        if (list == &block->entities) target = &block->entities;
    if (target == nullptr) return false;
    doc::GroupScope group(m.document(), "LISP entdel");
    std::unique_ptr<Entity> copy = it->second.first->clone();
    copy->setHandle(name);
    m.document().addEntity(std::move(copy), *target);
    m.deleted.erase(it);
    return true;
}

}  // namespace kova::script::lisp
