// Bodies of the solid modeller: encrypted text before AC1027, binary data in a section of their own from then on.
#include "engine/entities/region.hpp"
#include "engine/entities/solid3d.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::Solid3DEntity;

namespace {

void appendHex(std::string& bytes, std::string_view digits) {
    int high = -1;
    for (const char c : digits) {
        int v = 0;
        if (c >= '0' && c <= '9')
            v = c - '0';
        else if ((c | 32) >= 'a' && (c | 32) <= 'f')
            v = (c | 32) - 'a' + 10;
        else
            continue;
        if (high < 0) {
            high = v;
        } else {
            bytes += static_cast<char>(high * 16 + v);
            high = -1;
        }
    }
}

/// Modeller text stands in files with every character reversed in its range; the caret keeps its notation.
void appendModellerText(std::string& text, std::string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto c = static_cast<unsigned char>(line[i]);
        if (c == '^' && i + 1 < line.size() && line[i + 1] == ' ') {
            text += static_cast<char>(159 - '^');
            ++i;
        } else if (c > 32 && c < 127) {
            text += static_cast<char>(159 - c);
        } else {
            text += static_cast<char>(c);
        }
    }
}

}  // namespace

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
                appendModellerText(out->sat, tag.text());
                break;
            case 3:
                appendModellerText(out->sat, tag.text());
                break;
            case 310:
                appendHex(out->sab, tag.trimmed());
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
            if (tag.code == 310 && modeller) appendHex(bytes, tag.trimmed());
        }
        if (owner != 0 && !bytes.empty()) bodies_[owner] = std::move(bytes);
    }
}

void Reader::settleBodies() {
    for (auto& [handle, bytes] : bodies_) {
        Entity* entity = drawing_.findByHandle(handle);
        if (entity == nullptr || entity->type() != engine::EntityType::Solid3D) continue;
        auto& body = static_cast<Solid3DEntity&>(*entity);
        body.sab = std::move(bytes);
        body.modelerVersion = 2;
        entity->owner()->touch(*entity);
    }
    bodies_.clear();
}

}  // namespace kova::io::dxf
