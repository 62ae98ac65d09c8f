// Texts: TEXT, ATTDEF, ATTRIB, MTEXT, TOLERANCE.
#include <algorithm>
#include <cmath>

#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::XDataItem;
using math::Vector2;
using math::Vector3;

/// What the kinds of single-line text have in common.
struct Reader::TextGroups {
    Vector3 first;
    Vector3 second;
    bool hasSecond = false;
    Vector3 normal{0, 0, 1};
    double thickness = 0.0;
    double elevation = 0.0;
    double height = 0.0;
    double rotation = 0.0;
    double widthFactor = 1.0;
    double oblique = 0.0;
    engine::Name style = engine::commonNames().standard;
    std::int32_t generation = 0;
    std::int32_t hAlign = 0;
    std::int32_t vAlign = 0;

    bool twoPoints() const { return hAlign == engine::kHAlignAligned || hAlign == engine::kHAlignFit; }
    /// What alignment refers to.
    Vector2 anchor() const {
        const bool byFirst = (hAlign == 0 && vAlign == 0) || twoPoints() || !hasSecond;
        return byFirst ? first.xy() : second.xy();
    }
    double z() const { return first.z != 0.0 ? first.z : elevation; }

    /// The fields that have the same name in all of them.
    template <class Text>
    void giveTo(Text& text) const {
        text.rotation = rotation;
        text.hAlign = hAlign;
        text.vAlign = vAlign;
        text.textStyle = style;
        text.widthFactor = widthFactor;
        text.oblique = oblique;
        text.generation = generation;
        if constexpr (requires { text.fitEnd; }) {
            if (!twoPoints() || !hasSecond) return;
            text.fit = true;
            text.fitEnd = second.xy();
        }
    }
};

bool Reader::textGroup(const Tag& tag, TextGroups& g) {
    if (tag.code == 11) g.hasSecond = true;
    if (axis(tag, 10, g.first) || axis(tag, 11, g.second) || axis(tag, 210, g.normal)) return true;
    switch (tag.code) {
        case 38:
            g.elevation = real(tag);
            return true;
        case 39:
            g.thickness = real(tag);
            return true;
        case 40:
            g.height = real(tag);
            return true;
        case 41:
            g.widthFactor = real(tag);
            return true;
        case 50:
            g.rotation = angle(tag);
            return true;
        case 51:
            g.oblique = angle(tag);
            return true;
        case 7:
            g.style = name(tag);
            return true;
        case 71:
            g.generation = small(tag);
            return true;
        case 72:
            g.hAlign = small(tag);
            return true;
        default:
            return false;
    }
}

std::unique_ptr<Entity> Reader::buildText(const EntityTags& tags) {
    TextGroups g;
    auto out = std::make_unique<engine::TextEntity>();
    for (const Tag& tag : tags.body) {
        if (textGroup(tag, g)) continue;
        switch (tag.code) {
            case 1:
                out->content = text(tag);
                break;
            case 73:
                g.vAlign = small(tag);
                break;
            default:
                break;
        }
    }
    out->position = g.anchor();
    out->height = g.height;
    g.giveTo(*out);
    setPlane(*out, g.normal, g.thickness, g.z());
    return out;
}

namespace {

/// Groups behind the marker of an attribute's own part that mean something else before it.
struct AttributeTail {
    bool locked = false;

    bool multiline() const { return kind_ == 2 || kind_ == 4; }
    bool take(const Tag& tag) {
        if (tag.code == 100) own_ = tag.trimmed().starts_with("AcDbAttribute");
        if (tag.code == 280) {
            // The first one is a version, where there are two.
            locked = versionSeen_ && tag.integer() != 0;
            versionSeen_ = true;
            return true;
        }
        if (tag.code != 71 || !own_) return false;
        kind_ = tag.integer();
        return true;
    }

private:
    bool own_ = false;
    bool versionSeen_ = false;
    std::int64_t kind_ = 1;
};

}  // namespace

std::unique_ptr<Entity> Reader::buildAttDef(const EntityTags& tags) {
    TextGroups g;
    auto out = std::make_unique<engine::AttributeDefinitionEntity>();
    AttributeTail tail;
    for (const Tag& tag : tags.body) {
        if (tail.take(tag) || textGroup(tag, g)) continue;
        switch (tag.code) {
            case 1:
                out->defaultValue = text(tag);
                break;
            case 2:
                out->tag = text(tag);
                break;
            case 3:
                out->prompt = text(tag);
                break;
            case 70: {
                const std::int64_t flags = tag.integer();
                out->invisible = (flags & 1) != 0;
                out->constant = (flags & 2) != 0;
                out->verify = (flags & 4) != 0;
                out->preset = (flags & 8) != 0;
                break;
            }
            case 74:
                g.vAlign = small(tag);
                break;
            default:
                break;
        }
    }
    out->insertion = g.anchor();
    out->textHeight = g.height;
    g.giveTo(*out);
    setPlane(*out, g.normal, g.thickness, g.z());
    out->locked = tail.locked;
    if (tail.multiline()) takeParagraphs(tags, *out, out->defaultValue, out->insertion);
    return out;
}

/// The text of an attribute with several lines: an embedded object whose place and size are those that count.
template <class Attribute>
void Reader::takeParagraphs(const EntityTags& tags, Attribute& out, std::string& value, Vector2& position) {
    EntityTags inner;
    inner.body = tags.embedded;
    if (inner.body.empty()) return;
    const std::unique_ptr<Entity> built = buildMText(inner);
    const auto& text = static_cast<const engine::MTextEntity&>(*built);
    out.multiline = true;
    value = text.content;
    position = text.position;
    if (text.height > 0.0) out.textHeight = text.height;
    out.rotation = text.rotation;
    out.width = text.width;
    const std::int32_t column = (text.attachment - 1) % 3;
    const std::int32_t row = (text.attachment - 1) / 3;
    out.hAlign = column == 1 ? engine::kHAlignCenter : column == 2 ? engine::kHAlignRight : engine::kHAlignLeft;
    out.vAlign = row == 1 ? engine::kVAlignMiddle : row == 2 ? engine::kVAlignBottom : engine::kVAlignTop;
    if constexpr (requires { out.fit; }) out.fit = false;
}

bool Reader::readAttribute(const EntityTags& tags, const Entity& reference, engine::BlockAttribute& out) {
    TextGroups g;
    AttributeTail tail;
    bool layerSeen = false;
    ColorGroups color;
    for (const Tag& tag : tags.all) {
        if (tag.code == 101) break;
        if (tail.take(tag) || textGroup(tag, g)) continue;
        switch (tag.code) {
            case 1:
                out.value = text(tag);
                break;
            case 2:
                out.tag = text(tag);
                break;
            case 8:
                if (!layerSeen) out.layer = name(tag);
                layerSeen = true;
                break;
            case 62:
                color.index = std::abs(small(tag));
                break;
            case 420:
                color.rgb = static_cast<std::uint32_t>(tag.integer());
                break;
            case 70:
                out.invisible = (tag.integer() & 1) != 0;
                break;
            case 74:
                g.vAlign = small(tag);
                break;
            default:
                break;
        }
    }
    out.color = color.settled(out.color, own_);
    out.position = g.anchor();
    out.textHeight = g.height;
    g.giveTo(out);
    out.locked = tail.locked;
    const double length = g.normal.length();
    if (length > 1e-12 && std::isfinite(length) && !(g.normal / length).near_equal(reference.normal(), 1e-9))
        out.plane = engine::AttributePlane{std::abs(length - 1.0) < 1e-12 ? g.normal : g.normal / length, g.z()};
    if (tail.multiline()) takeParagraphs(tags, out, out.value, out.position);
    return !unusable_;
}

std::unique_ptr<Entity> Reader::buildMText(const EntityTags& tags) {
    auto out = std::make_unique<engine::MTextEntity>();
    Vector3 position;
    Vector3 direction;
    Vector3 normal{0, 0, 1};
    bool byDirection = true;
    std::string raw;  // pieces are joined before they are decoded: an escape may be cut in two
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, position) || axis(tag, 210, normal)) continue;
        if (axis(tag, 11, direction)) {
            byDirection = true;
            continue;
        }
        switch (tag.code) {
            case 1:
            case 3:
                raw.append(tag.text());
                break;
            case 7:
                out->textStyle = name(tag);
                break;
            case 40:
                out->height = real(tag);
                break;
            case 41:
                out->width = std::max(0.0, real(tag));
                break;
            case 44:
                out->lineSpacingFactor = real(tag);
                break;
            case 45:
                out->bgScale = real(tag);
                break;
            case 46:
                out->definedHeight = real(tag);
                break;
            case 50:
                out->rotation = angle(tag);
                byDirection = false;
                break;
            case 63:
                if (out->bgColor.method != engine::ColorMethod::RGB)
                    if (const auto color = engine::Color::fromBareIndex(small(tag))) out->bgColor = *color;
                break;
            case 421:
                out->bgColor = colorOfRgb(static_cast<std::uint32_t>(tag.integer()));
                break;
            case 441: {
                const std::int64_t code = tag.integer();
                // The alpha of the coding of group 440.
                out->bgTransparency = (code & 0x02000000) != 0
                                          ? static_cast<std::int32_t>((100 * 255 - (code & 255) * 100 + 127) / 255)
                                          : 0;
                break;
            }
            case 71:
                out->attachment = small(tag);
                break;
            case 73:
                out->lineSpacingExact = tag.integer() == 2;
                break;
            case 90:
                out->bgFlags = small(tag);
                break;
            default:
                break;
        }
    }
    if (direction.length_squared() == 0.0) direction = {1.0, 0.0, 0.0};
    // The direction is one of the world; seen from behind the letters run against the rotation.
    if (byDirection && normal.z < 0.0) direction = -direction;
    if (byDirection) out->rotation = std::atan2(direction.y, direction.x);
    out->content = decoder_.decode(raw);
    out->position = position.xy();
    if (out->attachment < 1 || out->attachment > 9) out->attachment = engine::kAttachTopLeft;
    setPlane(*out, normal, 0.0, position.z);
    if (normal.z < 0.0) out->backward = true;  // seen from behind
    if (!tags.embedded.empty()) {
        // AC1032: columns as an embedded object.
        engine::MTextColumns columns;
        std::vector<double> heights;
        double definedHeight = 0.0;
        for (const Tag& tag : tags.embedded) {
            switch (tag.code) {
                case 71:
                    columns.type = small(tag);
                    break;
                case 72:
                    columns.count = small(tag);
                    break;
                case 44:
                    columns.width = real(tag);
                    break;
                case 45:
                    columns.gutter = real(tag);
                    break;
                case 73:
                    columns.autoHeight = tag.integer() != 0;
                    break;
                case 74:
                    columns.flowReversed = tag.integer() != 0;
                    break;
                case 46:
                    heights.push_back(real(tag));
                    break;
                case 41:
                    definedHeight = real(tag);
                    break;
                default:
                    break;
            }
        }
        if (columns.type != 0) {
            if (columns.type == 2 && !columns.autoHeight) columns.heights = std::move(heights);
            if (out->definedHeight == 0.0) out->definedHeight = definedHeight;
            if (columns.count == 0)
                columns.count = static_cast<std::int32_t>(std::max<std::size_t>(1, columns.heights.size()));
            out->columns = std::move(columns);
        }
    }
    return out;
}

void Reader::takeMTextXdata(std::vector<XDataItem>& items, engine::MTextEntity& out) {
    const auto textAt = [&](std::size_t i) -> std::string_view {
        if (i >= items.size() || items[i].code != 1000) return {};
        return std::get<std::string>(items[i].value);
    };
    const auto whole = [&](std::size_t i) -> std::int64_t {
        if (i >= items.size()) return 0;
        if (const auto* n = std::get_if<std::int64_t>(&items[i].value)) return *n;
        if (const auto* d = std::get_if<double>(&items[i].value))
            return std::abs(*d) < 1e9 ? static_cast<std::int64_t>(*d) : 0;
        return 0;
    };
    const auto number = [&](std::size_t i) -> double {
        if (i >= items.size()) return 0.0;
        if (const auto* n = std::get_if<std::int64_t>(&items[i].value)) return static_cast<double>(*n);
        if (const auto* d = std::get_if<double>(&items[i].value)) return *d;
        return 0.0;
    };
    std::vector<XDataItem> kept;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string_view mark = textAt(i);
        if (mark == "ACAD_MTEXT_COLUMN_INFO_BEGIN") {
            engine::MTextColumns columns;
            for (++i; i + 1 < items.size() && textAt(i) != "ACAD_MTEXT_COLUMN_INFO_END";) {
                const std::int64_t code = whole(i);
                switch (code) {
                    case 75:
                        columns.type = static_cast<std::int32_t>(whole(i + 1));
                        break;
                    case 76:
                        columns.count = static_cast<std::int32_t>(whole(i + 1));
                        break;
                    case 78:
                        columns.flowReversed = whole(i + 1) != 0;
                        break;
                    case 79:
                        columns.autoHeight = whole(i + 1) != 0;
                        break;
                    case 48:
                        columns.width = number(i + 1);
                        break;
                    case 49:
                        columns.gutter = number(i + 1);
                        break;
                    case 50: {
                        const std::int64_t count = whole(i + 1);
                        i += 2;
                        for (std::int64_t n = 0; n < count && i < items.size() && items[i].code == 1040; ++n)
                            columns.heights.push_back(number(i++));
                        continue;
                    }
                    default:
                        break;
                }
                i += 2;
            }
            out.columns = std::move(columns);
        } else if (mark == "ACAD_MTEXT_COLUMNS_BEGIN") {
            for (++i; i < items.size() && textAt(i) != "ACAD_MTEXT_COLUMNS_END"; ++i)
                if (items[i].code == 1005)
                    pendingColumns_.push_back(parseHandle(std::get<std::string>(items[i].value)));
        } else if (mark == "ACAD_MTEXT_DEFINED_HEIGHT_BEGIN") {
            for (++i; i < items.size() && textAt(i) != "ACAD_MTEXT_DEFINED_HEIGHT_END"; ++i)
                if (items[i].code == 1040) out.definedHeight = number(i);
        } else if (mark == "ACAD_MTEXT_TEXT_BORDERS_BEGIN") {
            for (++i; i < items.size() && textAt(i) != "ACAD_MTEXT_TEXT_BORDERS_END"; ++i)
                if (items[i].code == 1040 && !(out.bgFlags & engine::kBackgroundColor)) out.bgScale = number(i);
            out.bgFlags |= engine::kBackgroundFrame;
        } else {
            kept.push_back(std::move(items[i]));
        }
    }
    items = std::move(kept);
}

/// Columns that stand in entities of their own become the text's further columns again.
void Reader::joinColumns() {
    // A damaged file may have columns of columns: what was taken stays until all links have been looked at.
    std::vector<std::unique_ptr<Entity>> taken;
    for (const ColumnLink& link : columns_) {
        auto* const main = linked<engine::MTextEntity>(link.entity);
        if (main == nullptr) continue;
        engine::MTextEntity& text = *main;
        std::size_t joined = 0;
        for (const std::uint64_t handle : link.columns) {
            Entity* other = drawing_.findByHandle(handle);
            if (other == nullptr || other == main || other->type() != engine::EntityType::MText ||
                other->owner() != text.owner())
                continue;
            text.content += static_cast<engine::MTextEntity&>(*other).content;
            taken.push_back(other->owner()->take(*other));
            ++joined;
        }
        if (joined > 0 && text.columns.count == 0) text.columns.count = static_cast<std::int32_t>(joined) + 1;
    }
}

std::unique_ptr<Entity> Reader::buildTolerance(const EntityTags& tags) {
    auto out = std::make_unique<engine::ToleranceEntity>();
    Vector3 position;
    Vector3 direction{1, 0, 0};
    Vector3 normal{0, 0, 1};
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, position) || axis(tag, 11, direction) || axis(tag, 210, normal)) continue;
        if (tag.code == 1) out->setContentText(text(tag));
        if (tag.code == 3) out->styleName = name(tag);
    }
    out->insertion = position.xy();
    if (direction.y != 0.0 || direction.x < 0.0) out->rotation = std::atan2(direction.y, direction.x);
    setPlane(*out, normal, 0.0, position.z);
    return out;
}

}  // namespace kova::io::dxf
