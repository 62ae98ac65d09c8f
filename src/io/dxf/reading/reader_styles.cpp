// Styles that stand among the objects: multileaders, tables, multilines.
#include "engine/entities/dimensions/mleader.hpp"
#include "engine/entities/mline.hpp"
#include "engine/entities/table_entity.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Color;
using engine::Name;

void Reader::readMLeaderStyles(std::uint64_t handle) {
    Record record;
    engine::Table<engine::MLeaderStyle> styles;
    for (const DictionaryItem& item : dictionary(handle)) {
        if (!ownedObject(item.handle, "MLEADERSTYLE", record)) continue;
        const EntityTags tags = partTags(record);
        engine::MLeaderStyle s;
        s.name = Name(decoder_.decode(item.key));
        unusable_ = false;
        for (const Tag& tag : tags.body) {
            switch (tag.code) {
                case 170:
                    s.contentType = small(tag);
                    break;
                case 171:
                    s.drawMLeaderOrder = small(tag);
                    break;
                case 172:
                    s.drawLeaderOrder = small(tag);
                    break;
                case 90:
                    s.maxLeaderPoints = small(tag);
                    break;
                case 40:
                    s.firstSegmentAngle = real(tag);
                    break;
                case 41:
                    s.secondSegmentAngle = real(tag);
                    break;
                case 173:
                    s.leaderLineType = small(tag);
                    break;
                case 91:
                    s.leaderColor = colorOfRaw(tag.integer());
                    break;
                case 340:
                    s.leaderLinetype = recordName(tag.handle());
                    break;
                case 92:
                    s.leaderLineweight = small(tag);
                    break;
                case 290:
                    s.hasLanding = tag.integer() != 0;
                    break;
                case 42:
                    s.landingGap = real(tag);
                    break;
                case 291:
                    s.hasDogleg = tag.integer() != 0;
                    break;
                case 43:
                    s.landingDistance = real(tag);
                    break;
                case 341:
                    s.arrowBlock = recordName(tag.handle());
                    break;
                case 44:
                    s.arrowSize = real(tag);
                    break;
                case 300:
                    s.defaultText = text(tag);
                    break;
                case 342:
                    s.textStyle = recordName(tag.handle());
                    break;
                case 174:
                    s.textLeftAttachment = small(tag);
                    break;
                case 178:
                    s.textRightAttachment = small(tag);
                    break;
                case 175:
                    s.textAngleType = small(tag);
                    break;
                case 176:
                    s.textAlignment = small(tag);
                    break;
                case 93:
                    s.textColor = colorOfRaw(tag.integer());
                    break;
                case 45:
                    s.textHeight = real(tag);
                    break;
                case 292:
                    s.textFrame = tag.integer() != 0;
                    break;
                case 297:
                    s.textAlignAlwaysLeft = tag.integer() != 0;
                    break;
                case 46:
                    s.alignSpace = real(tag);
                    break;
                case 343:
                    s.block = recordName(tag.handle());
                    break;
                case 94:
                    s.blockColor = colorOfRaw(tag.integer());
                    break;
                case 47:
                    s.blockScale = real(tag);
                    break;
                case 293:
                    s.blockScaleEnabled = tag.integer() != 0;
                    break;
                case 141:
                    s.blockRotation = real(tag);
                    break;
                case 294:
                    s.blockRotationEnabled = tag.integer() != 0;
                    break;
                case 177:
                    s.blockConnection = small(tag);
                    break;
                case 142:
                    s.scaleFactor = real(tag);
                    break;
                case 296:
                    s.annotative = tag.integer() != 0;
                    break;
                case 143:
                    s.breakGapSize = real(tag);
                    break;
                case 271:
                    s.textAttachmentDirection = small(tag);
                    break;
                case 272:
                    s.bottomTextAttachment = small(tag);
                    break;
                case 273:
                    s.topTextAttachment = small(tag);
                    break;
                case 298:
                    s.extendLeaderToText = tag.integer() != 0;
                    break;
                default:
                    break;
            }
        }
        if (s.name.empty() || unusable_) continue;
        if (s.textStyle.empty()) s.textStyle = engine::commonNames().standard;
        if (s.leaderLinetype.empty()) s.leaderLinetype = engine::commonNames().byBlock;
        const OwnText json = ownData(record, kLeaderStyleApplication);
        if (!json.empty() && isPlaceholder(json)) continue;
        if (!json.empty()) applyOwnData(json, s);
        tableNames_.emplace(item.handle, s.name);
        styles.add(std::move(s));
    }
    if (!styles.empty()) drawing_.mleaderStyles = std::move(styles);
}

void Reader::readTableStyles(std::uint64_t handle) {
    Record record;
    engine::Table<engine::TableStyle> styles;
    for (const DictionaryItem& item : dictionary(handle)) {
        if (!ownedObject(item.handle, "TABLESTYLE", record)) continue;
        const EntityTags tags = partTags(record);
        engine::TableStyle s;
        s.name = Name(decoder_.decode(item.key));
        unusable_ = false;
        int switches = 0;  // groups 280: the version, then the title's
        int cell = -1;     // data, title, header
        for (const Tag& tag : tags.body) {
            if (tag.code == 7 || (tag.code == 140 && cell < 0)) {
                if (tag.code == 7) {
                    ++cell;
                    if (cell == 0) s.textStyle = name(tag);
                }
                continue;
            }
            if (cell < 0) {
                switch (tag.code) {
                    case 70:
                        s.flowUp = tag.integer() == 1;
                        break;
                    case 40:
                        s.cellMargin = real(tag);
                        break;
                    case 41:
                        s.verticalMargin = real(tag);
                        break;
                    case 280:
                        // The first is the version of the record.
                        if (++switches == 2) s.hasTitle = tag.integer() == 0;
                        break;
                    case 281:
                        s.hasHeader = tag.integer() == 0;
                        break;
                    default:
                        break;
                }
                continue;
            }
            engine::TableStyleRow& row = cell == 0 ? s.data : cell == 1 ? s.title : s.header;
            switch (tag.code) {
                case 140:
                    (cell == 0 ? s.textHeight : cell == 1 ? s.titleTextHeight : s.headerTextHeight) = real(tag);
                    break;
                case 170:
                    row.alignment = small(tag);
                    break;
                case 62:
                    if (const auto color = Color::fromBareIndex(small(tag))) row.textColor = *color;
                    break;
                case 63:
                    if (const auto color = Color::fromBareIndex(small(tag))) row.fillColor = *color;
                    break;
                case 283:
                    row.fillEnabled = tag.integer() != 0;
                    break;
                case 274:
                    if (cell == 0) s.borderLineweight = small(tag);
                    break;
                case 275:
                    if (cell == 0) s.gridLineweight = small(tag);
                    break;
                default:
                    break;
            }
        }
        if (s.name.empty() || unusable_) continue;
        if (s.textStyle.empty()) s.textStyle = engine::commonNames().standard;
        // The colour of a fill that is off tells nothing: programs write what they like there.
        for (engine::TableStyleRow* row : {&s.data, &s.title, &s.header})
            if (!row->fillEnabled) row->fillColor = engine::TableStyleRow().fillColor;
        const OwnText json = ownData(record, kTableStyleApplication);
        if (!json.empty() && isPlaceholder(json)) continue;
        if (!json.empty()) applyOwnData(json, s);
        tableNames_.emplace(item.handle, s.name);
        styles.add(std::move(s));
    }
    if (!styles.empty()) drawing_.tableStyles = std::move(styles);
}

void Reader::settleStyles() {
    for (const Link& link : leaderStyles_) {
        auto* const found = linked<engine::MLeaderEntity>(link.entity);
        if (found == nullptr) continue;
        engine::MLeaderEntity& leader = *found;
        if (own_ && !leader.styleName.empty() && !(leader.styleName == engine::commonNames().standard)) continue;
        if (const Name style = recordName(link.handle); !style.empty()) leader.styleName = style;
        if (own_) continue;
        // The file's sizes are those that are drawn, the model's those before the style's scale.
        const double scale = leader.scale();
        if (scale > 0.0 && scale != 1.0) {
            leader.textHeight /= scale;
            leader.arrowSize /= scale;
            leader.landingGap /= scale;
            leader.landingDistance /= scale;
        }
    }
    settleLeaderAttributes();
    for (const Link& link : tableStyles_) {
        auto* const found = linked<engine::TableEntity>(link.entity);
        if (found == nullptr) continue;
        engine::TableEntity& table = *found;
        if (own_ && !(table.styleName == engine::commonNames().standard)) continue;
        if (const Name style = recordName(link.handle); !style.empty()) table.styleName = style;
    }
    // Multilines take their elements from their style.
    std::unordered_map<std::uint64_t, engine::MLineEntity> known;
    Record record;
    for (const Link& link : mlineStyles_) {
        auto* const linkedLine = linked<engine::MLineEntity>(link.entity);
        if (linkedLine == nullptr) continue;
        engine::MLineEntity& line = *linkedLine;
        auto found = known.find(link.handle);
        if (found == known.end()) {
            engine::MLineEntity style;
            style.elements.clear();
            unusable_ = false;
            if (objectAt(link.handle, "MLINESTYLE", record)) {
                const EntityTags tags = partTags(record);
                bool fill = true;
                for (const Tag& tag : tags.body) {
                    if (tag.code == 49) fill = false;
                    switch (tag.code) {
                        case 2:
                            style.styleName = name(tag);
                            break;
                        case 70:
                            style.flags = small(tag);
                            break;
                        case 51:
                            style.startAngle = angle(tag);
                            break;
                        case 52:
                            style.endAngle = angle(tag);
                            break;
                        case 49:
                            style.elements.emplace_back();
                            style.elements.back().offset = real(tag);
                            break;
                        case 62:
                        case 420: {
                            Color& color = fill ? style.fillColor : style.elements.back().color;
                            if (tag.code == 62) {
                                if (const auto c = Color::fromBareIndex(small(tag))) color = *c;
                            } else {
                                const auto rgb = static_cast<std::uint32_t>(tag.integer());
                                color = colorOfRgb(rgb);
                            }
                            break;
                        }
                        case 6:
                            if (!fill) {
                                engine::Name& linetype = style.elements.back().linetype;
                                linetype = name(tag);
                                if (const auto* known = drawing_.linetypes.find(linetype)) linetype = known->name;
                            }
                            break;
                        default:
                            break;
                    }
                }
                if (unusable_) style.elements.clear();
            }
            found = known.emplace(link.handle, style).first;
        }
        const engine::MLineEntity& style = found->second;
        if (style.elements.empty()) continue;
        line.elements = style.elements;
        line.flags = style.flags;
        line.fillColor = style.fillColor;
        line.startAngle = style.startAngle;
        line.endAngle = style.endAngle;
        if (!style.styleName.empty()) line.styleName = style.styleName;
        // What the line says of itself comes over its style.
        if (const auto own = ownMLines_.find(link.entity); own != ownMLines_.end()) applyOwnData(own->second, line);
    }
}

}  // namespace kova::io::dxf
