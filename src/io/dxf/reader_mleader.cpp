// Multileaders: nested parts, marked by the texts of groups 300 to 305.
#include "engine/entities/mleader.hpp"
#include "io/dxf/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using math::Vector2;
using math::Vector3;

std::unique_ptr<Entity> Reader::buildMLeader(const EntityTags& tags) {
    auto out = std::make_unique<engine::MLeaderEntity>();
    enum class Part { Outside, Context, Leader, Line } part = Part::Outside;
    Vector3 normal{0, 0, 1};
    Vector3 base;
    Vector3 textPlace;
    Vector3 blockPlace;
    Vector3 last;
    Vector3 dogleg{1, 0, 0};
    bool hasText = false;
    bool hasBlock = false;
    double doglegLength = 0.0;
    std::int64_t content = -1;
    bool firstLeader = true;
    Vector2 connection;
    bool connected = false;
    std::size_t headStart = 0;  // of the present leader's lines
    for (const Tag& tag : tags.body) {
        if (tag.code == 300 && part == Part::Outside && tag.trimmed().starts_with("CONTEXT_DATA")) {
            part = Part::Context;
            continue;
        }
        if (tag.code == 302 && part == Part::Context && tag.trimmed().starts_with("LEADER")) {
            part = Part::Leader;
            last = {};
            dogleg = {1, 0, 0};
            headStart = out->heads.size();
            continue;
        }
        if (tag.code == 304 && part == Part::Leader && tag.trimmed().starts_with("LEADER_LINE")) {
            part = Part::Line;
            out->heads.emplace_back();
            continue;
        }
        switch (part) {
            case Part::Line:
                if (tag.code == 305) {
                    part = Part::Leader;
                } else if (tag.code == 10) {
                    out->heads.back().vertices.push_back({real(tag), 0.0});
                } else if (tag.code == 20 && !out->heads.back().vertices.empty()) {
                    out->heads.back().vertices.back().y = real(tag);
                }
                break;
            case Part::Leader:
                if (tag.code == 303) {
                    part = Part::Context;
                    // The lines meet at the landing.
                    for (std::size_t i = headStart; i < out->heads.size(); ++i)
                        out->heads[i].vertices.push_back(last.xy());
                    if (firstLeader) {
                        out->landingDistance = doglegLength;
                        connection = last.xy();
                        connected = true;
                        firstLeader = false;
                        base.z = last.z;
                    }
                } else if (!axis(tag, 10, last) && !axis(tag, 11, dogleg) && tag.code == 40) {
                    doglegLength = real(tag);
                    if (firstLeader) connection = last.xy();
                }
                break;
            case Part::Context:
                if (axis(tag, 10, base) || axis(tag, 12, textPlace) || axis(tag, 15, blockPlace)) break;
                switch (tag.code) {
                    case 41:
                        out->textHeight = real(tag);
                        break;
                    case 140:
                        out->arrowSize = real(tag);
                        break;
                    case 145:
                        out->landingGap = real(tag);
                        break;
                    case 290:
                        hasText = tag.integer() != 0;
                        break;
                    case 296:
                        hasBlock = tag.integer() != 0;
                        break;
                    case 304:
                        out->textContent = text(tag);
                        break;
                    case 341:
                        out->blockName = recordName(tag.handle());
                        break;
                    case 301:
                        part = Part::Outside;
                        break;
                    default:
                        break;
                }
                break;
            case Part::Outside:
                if (axis(tag, 210, normal)) break;
                switch (tag.code) {
                    case 340:
                        pendingLeaderStyle_ = tag.handle();
                        break;
                    case 172:
                        content = tag.integer();
                        break;
                    case 290:
                        out->hasLanding = tag.integer() != 0;
                        break;
                    case 291:
                        out->hasDogleg = tag.integer() != 0;
                        break;
                    case 344:
                        if (out->blockName.empty()) out->blockName = recordName(tag.handle());
                        break;
                    default:
                        break;
                }
                break;
        }
    }
    if (content < 0) content = hasText ? 2 : hasBlock ? 1 : 0;
    if (content < 0 || content > 3) content = 0;
    out->contentType = own_           ? static_cast<engine::MLeaderContent>(content)
                       : content == 1 ? engine::MLeaderContent::Block
                       : content == 2 ? engine::MLeaderContent::MText
                                      : engine::MLeaderContent::None;
    // The text's edge stands behind the dogleg and the gap; a block at its own place.
    const double side = dogleg.x < 0.0 ? -1.0 : 1.0;
    if (out->contentType == engine::MLeaderContent::Block && hasBlock)
        out->contentPos = blockPlace.xy();
    else if (connected)
        out->contentPos = connection + Vector2{side * ((out->hasDogleg ? doglegLength : 0.0) + out->landingGap), 0.0};
    else
        out->contentPos = hasText ? textPlace.xy() : base.xy();
    if (out->heads.empty() && !hasText && !hasBlock) return nullptr;
    setPlane(*out, normal, 0.0, base.z);
    return out;
}

}  // namespace kova::io::dxf
