// Bodies of the solid modeller: encrypted text before AC1027, binary data in a section of their own from then on.
#include "engine/entities/region.hpp"
#include "engine/entities/solid3d.hpp"
#include "engine/solids/modeler_text.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::Solid3DEntity;

std::unique_ptr<Entity> Reader::buildBody(const EntityTags& tags) {
    // A region of this program has its loops in extended data.
    if (tags.type == "REGION")
        for (const Tag& tag : tags.xdata)
            if (tag.code == 1001 && tag.trimmed() == ownApplication(engine::EntityType::Region))
                return std::make_unique<engine::RegionEntity>();
    auto out = std::make_unique<Solid3DEntity>();
    out->kind = tags.type == "REGION" ? Solid3DEntity::BodyKind::Region
                : tags.type == "BODY" ? Solid3DEntity::BodyKind::Body
                                      : Solid3DEntity::BodyKind::Solid;
    bool first = true;
    for (const Tag& tag : tags.body) {
        switch (tag.code) {
            case 70:
                out->modelerVersion = small(tag);
                break;
            case 1:
                if (!first) out->sat += '\n';
                first = false;
                engine::appendModelerText(out->sat, tag.text());
                break;
            case 3:
                engine::appendModelerText(out->sat, tag.text());
                break;
            case 310:
                engine::appendHexBytes(out->sab, tag.trimmed());
                break;
            default:
                break;
        }
    }
    if (!out->sat.empty()) out->sat += '\n';
    return out;
}

void Reader::readDataStorage() {
    while (reader_.next(record_)) {
        if (endsSection(record_)) {
            if (record_.type != "ENDSEC") reader_.unread();
            return;
        }
        if (record_.type != "ACDSRECORD") continue;
        std::uint64_t owner = 0;
        bool modeller = false;
        std::string bytes;
        for (const Tag& tag : record_.tags) {
            if (tag.code == 2) modeller = tag.trimmed() == "ASM_Data";
            if (tag.code == 320) owner = tag.handle();
            if (tag.code == 310 && modeller) engine::appendHexBytes(bytes, tag.trimmed());
        }
        if (owner != 0 && !bytes.empty())
            bodies_[owner] = std::move(bytes);
        else if (!modeller)
            leaveOut("ACDSRECORD");
    }
}

void Reader::settleBodies() {
    for (auto& [handle, bytes] : bodies_) {
        Entity* entity = drawing_.findByHandle(handle);
        if (entity == nullptr || entity->type() != engine::EntityType::Solid3D) {
            // A region of this program has its loops.
            if (entity == nullptr || entity->type() != engine::EntityType::Region)
                leaveOut("modeller data without a solid");
            continue;
        }
        auto& body = static_cast<Solid3DEntity&>(*entity);
        body.sab = std::move(bytes);
        body.modelerVersion = 2;
        entity->owner()->touch(*entity);
    }
    bodies_.clear();
}

}  // namespace kova::io::dxf
