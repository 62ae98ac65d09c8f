// Multileaders: nested parts, marked by the texts of groups 300 to 305.
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/dimensions/mleader.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::Name;
using math::Vector2;
using math::Vector3;

/// What a leader line has of its own. Only groups that `members` counts are there for that.
void Reader::takeLineLook(const Tag& tag, engine::MLeaderLineLook& look) {
    switch (tag.code) {
        case 170:
            look.lineType = small(tag);
            break;
        case 92:
            look.color = colorOfRaw(tag.integer());
            break;
        case 340:
            look.linetype = recordName(tag.handle());
            break;
        case 171:
            look.lineweight = small(tag);
            break;
        case 40:
            look.arrowSize = real(tag);
            break;
        case 341:
            look.arrowBlock = recordName(tag.handle());
            break;
        case 93:
            look.members = static_cast<std::uint32_t>(tag.integer()) & 63U;
            break;
        default:
            break;
    }
}

/// The values behind the context; which of them count instead of the style's is told by group 90.
void Reader::takeOwnLook(const Tag& tag, engine::MLeaderStyle& own) {
    switch (tag.code) {
        case 170:
            own.leaderLineType = small(tag);
            break;
        case 91:
            own.leaderColor = colorOfRaw(tag.integer());
            break;
        case 341:
            own.leaderLinetype = recordName(tag.handle());
            break;
        case 171:
            own.leaderLineweight = small(tag);
            break;
        case 342:
            own.arrowBlock = recordName(tag.handle());
            break;
        case 343:
            if (const Name style = recordName(tag.handle()); !style.empty()) own.textStyle = style;
            break;
        case 173:
            own.textLeftAttachment = small(tag);
            break;
        case 95:
            own.textRightAttachment = small(tag);
            break;
        case 174:
            own.textAngleType = small(tag);
            break;
        case 175:
            own.textAlignment = small(tag);
            break;
        case 92:
            own.textColor = colorOfRaw(tag.integer());
            break;
        case 292:
            own.textFrame = tag.integer() != 0;
            break;
        case 93:
            own.blockColor = colorOfRaw(tag.integer());
            break;
        case 10:
            own.blockScale = real(tag);
            break;
        case 43:
            own.blockRotation = real(tag);
            break;
        case 176:
            own.blockConnection = small(tag);
            break;
        case 45:
            own.scaleFactor = real(tag);
            break;
        case 271:
            own.textAttachmentDirection = small(tag);
            break;
        case 272:
            own.bottomTextAttachment = small(tag);
            break;
        case 273:
            own.topTextAttachment = small(tag);
            break;
        default:
            break;
    }
}

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
    engine::MLeaderOverrides own;
    engine::MLeaderLineLook look;
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
            look = {};
            out->heads.emplace_back();
            continue;
        }
        switch (part) {
            case Part::Line:
                if (tag.code == 305) {
                    part = Part::Leader;
                    if (look.members != 0) out->heads.back().look = look;
                } else if (tag.code == 10) {
                    out->heads.back().vertices.push_back({real(tag), 0.0});
                } else if (tag.code == 20 && !out->heads.back().vertices.empty()) {
                    out->heads.back().vertices.back().y = real(tag);
                } else {
                    takeLineLook(tag, look);
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
                    case 90:
                        own.members = static_cast<std::uint32_t>(tag.integer());
                        break;
                    case 330:
                        // The definition's tag is known when all blocks have been read.
                        pendingAttributes_.push_back(tag.handle());
                        out->attributes.emplace_back();
                        break;
                    case 44:
                        if (!out->attributes.empty()) out->attributes.back().width = real(tag);
                        break;
                    case 302:
                        if (!out->attributes.empty()) out->attributes.back().value = text(tag);
                        break;
                    default:
                        takeOwnLook(tag, own.values);
                        break;
                }
                break;
        }
    }
    own.members &= engine::MLeaderOverrides::kAll;
    if (own.members != 0) {
        out->overrides.emplace().members = own.members;
        own.apply(out->overrides->values);
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

void Reader::settleLeaderAttributes() {
    for (auto& [id, handles] : leaderAttributes_) {
        auto* const linkedLeader = linked<engine::MLeaderEntity>(id);
        if (linkedLeader == nullptr) continue;
        engine::MLeaderEntity& leader = *linkedLeader;
        // Own data have told already.
        if (leader.attributes.size() != handles.size() || !leader.attributes.front().tag.empty()) continue;
        const engine::Block* block = leader.contentBlock();
        const auto definitions = block != nullptr ? engine::attributeDefinitions(block->entities)
                                                  : std::vector<const engine::AttributeDefinitionEntity*>();
        for (std::size_t i = 0; i < handles.size() && i < leader.attributes.size(); ++i) {
            const Entity* found = drawing_.findByHandle(handles[i]);
            if (found != nullptr && found->type() == engine::EntityType::AttributeDefinition)
                leader.attributes[i].tag = static_cast<const engine::AttributeDefinitionEntity*>(found)->tag;
            else if (i < definitions.size())  // a lost handle: values stand in the order of their definitions
                leader.attributes[i].tag = definitions[i]->tag;
        }
        // This program writes a width of 0 where the definition's default stands.
        if (own_) std::erase_if(leader.attributes, [](const engine::MLeaderAttribute& a) { return a.width == 0.0; });
    }
}

}  // namespace kova::io::dxf
