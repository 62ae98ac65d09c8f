// Multileaders and their styles.
#include <algorithm>

#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

/// The width of a value that the multileader does not hold itself: other programs want one for each definition.
constexpr double kNotHeld = 0.0;

namespace {

template <class Record>
std::string nativeForm(const Record& record) {
    native::JsonWriter out(-1);
    native::RecordWriter writer(out);
    out.beginObject();
    const_cast<Record&>(record).describe(writer);
    out.endObject();
    return out.take();
}

/// True when the groups of the record give back all of it: members of a style that are not overridden have no group.
bool saysAll(const MLeaderOverrides& own) {
    MLeaderOverrides kept;
    kept.members = own.members & MLeaderOverrides::kAll;
    own.apply(kept.values);
    return kept.members != 0 && nearestLineweight(kept.values.leaderLineweight) == kept.values.leaderLineweight &&
           nativeForm(own) == nativeForm(kept);
}

}  // namespace

bool Writer::write(const MLeaderEntity& e, const Target& t) {
    const auto finite = [](const Vector2& p) { return std::isfinite(p.x) && std::isfinite(p.y); };
    if (!finite(e.contentPos)) return false;
    for (const MLeaderHead& h : e.heads)
        if (!std::all_of(h.vertices.begin(), h.vertices.end(), finite)) return false;
    FieldKeys keys;
    // The record's places and sizes are those that are drawn; the multileader's own stand beside them.
    keys.insert(keys.end(), {"contentPos", "landingGap", "landingDistance", "arrowSize", "textHeight"});
    if (e.contentType != MLeaderContent::MText && !e.textContent.empty()) keys.push_back("textContent");
    if (e.contentType != MLeaderContent::Block && !e.blockName.empty()) keys.push_back("blockName");
    if (e.contentType == MLeaderContent::Block) keys.push_back("blockName");
    const Block* content = e.contentType == MLeaderContent::Block ? e.contentBlock() : nullptr;
    const auto definitions =
        content != nullptr ? attributeDefinitions(content->entities) : std::vector<const AttributeDefinitionEntity*>();
    const bool allDefined = std::all_of(e.attributes.begin(), e.attributes.end(), [&](const MLeaderAttribute& a) {
        return a.width != kNotHeld && std::any_of(definitions.begin(), definitions.end(), [&](const auto* definition) {
                   return equalNoCase(definition->tag, a.tag);
               });
    });
    if (!allDefined) keys.push_back("attributes");
    const auto plainNames = [&](std::initializer_list<Name> names) {
        return std::all_of(names.begin(), names.end(), [&](Name name) { return name.empty() || isPlain(name); });
    };
    if (e.overrides && !(saysAll(*e.overrides) &&
                         plainNames({e.overrides->values.leaderLinetype, e.overrides->values.arrowBlock,
                                     e.overrides->values.textStyle})))
        keys.push_back("overrides");
    const auto saysLook = [&](const MLeaderHead& h) {
        return !h.look || (h.look->members != 0 && plainNames({h.look->linetype, h.look->arrowBlock}) &&
                           nearestLineweight(h.look->lineweight) == h.look->lineweight);
    };
    const bool emptyHead =
        std::any_of(e.heads.begin(), e.heads.end(), [](const MLeaderHead& h) { return h.vertices.empty(); });
    if (emptyHead || !std::all_of(e.heads.begin(), e.heads.end(), saysLook)) keys.push_back("heads");
    if (!isPlain(e.styleName) || mleaderStyles_.find(e.styleName.key()) == mleaderStyles_.end())
        keys.push_back("styleName");

    const MLeaderStyle style = e.style();
    const Block* block = content;
    const bool isText = e.contentType == MLeaderContent::MText;
    const double scale = e.scale();
    const double gap = e.effectiveLandingGap();
    const double landing = e.effectiveLandingDistance();
    const OwnData own = gather(e, kNoCommon, keys);
    ++classCounts_["MULTILEADER"];
    head("MULTILEADER", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbMLeader");
    out.integer(270, 2);
    out.word(300, "CONTEXT_DATA{");
    out.real(40, scale);
    out.point(10, e.contentPos, e.elevation);
    out.real(41, e.effectiveTextHeight());
    out.real(140, e.effectiveArrowSize());
    out.real(145, gap);
    out.integer(174, style.textLeftAttachment);
    out.integer(175, style.textRightAttachment);
    out.integer(176, style.textAlignment);
    out.integer(177, style.blockConnection);
    out.flag(290, isText);
    if (isText) {
        const MTextBlock text = e.textBlock();
        out.text(304, e.textContent);
        out.point(11, Vector3{0, 0, 1});
        out.handle(340, textStyleHandle(style.textStyle));
        out.point(12, text.position, e.elevation);
        out.point(13, Vector2{std::cos(text.rotation), std::sin(text.rotation)}, 0.0);
        out.real(42, text.rotation);
        out.real(43, text.width);
        out.real(44, 0.0);
        out.real(45, 1.0);
        out.integer(170, 1);
        rawColor(90, style.textColor);
        out.integer(171, (text.attachment - 1) % 3 + 1);
        out.integer(172, 1);
        rawColor(91, Color::byBlock());
        out.real(141, 1.5);
        out.integer(92, 0);
        out.flag(291, false);
        out.flag(292, false);
        out.integer(173, 0);
        out.flag(293, false);
        out.real(142, 0.0);
        out.real(143, 0.0);
        out.flag(294, false);
        out.flag(295, false);
    }
    out.flag(296, block != nullptr);
    if (block != nullptr) {
        out.handle(341, blockHandle(block->name));
        out.point(14, Vector3{0, 0, 1});
        out.point(15, e.contentPos, e.elevation);
        const double size = style.blockScale * scale;
        out.point(16, Vector3{size, size, size});
        out.real(46, style.blockRotation);
        rawColor(93, style.blockColor);
        const math::Matrix4 m = e.blockMatrix();
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column) out.real(47, m(row, column));
    }
    out.point(110, e.contentPos, e.elevation);
    out.point(111, Vector3{1, 0, 0});
    out.point(112, Vector3{0, 1, 0});
    out.flag(297, false);
    int index = 0;
    for (const MLeaderHead& h : e.heads) {
        if (h.vertices.empty()) continue;
        const Vector2 last = e.landingPoint(h);
        const Vector2 end = e.connectionPoint(h);
        Vector2 direction = end - last;
        const double length = direction.length();
        direction = length > 0.0 ? direction / length : Vector2{e.side(), 0.0};
        out.word(302, "LEADER{");
        out.flag(290, true);
        out.flag(291, true);
        out.point(10, last, e.elevation);
        out.point(11, direction, 0.0);
        out.integer(90, index);
        out.real(40, landing);
        out.word(304, "LEADER_LINE{");
        // The landing point itself stands above.
        for (std::size_t i = 0; i + 1 < h.vertices.size(); ++i) out.point(10, h.vertices[i], e.elevation);
        out.integer(91, 0);
        if (h.look) lineLook(*h.look);
        out.word(305, "}");
        out.integer(271, style.textAttachmentDirection);
        out.word(303, "}");
        ++index;
    }
    out.integer(272, style.bottomTextAttachment);
    out.integer(273, style.topTextAttachment);
    out.word(301, "}");
    const auto found = mleaderStyles_.find(style.name.key());
    out.handle(340, found != mleaderStyles_.end() ? found->second : firstMLeaderStyle());
    // Landing, dogleg and sizes are this multileader's; bits as documented for group 90.
    std::int32_t overrides = 16 | 64 | 1024;
    if (e.landingGap != 0.0) overrides |= 32;
    if (e.landingDistance != 0.0) overrides |= 128;
    if (e.arrowSize != 0.0) overrides |= 512;
    if (e.textHeight != 0.0) overrides |= 65536;
    if (!e.blockName.empty()) overrides |= 1 << 19;
    if (e.overrides) overrides |= static_cast<std::int32_t>(e.overrides->members & MLeaderOverrides::kAll);
    out.integer(90, overrides);
    out.integer(170, style.leaderLineType);
    rawColor(91, style.leaderColor);
    out.handle(341, linetypeHandle(style.leaderLinetype.empty() ? commonNames().byBlock : style.leaderLinetype));
    out.integer(171, nearestLineweight(style.leaderLineweight));
    out.flag(290, e.hasLanding);
    out.flag(291, e.hasDogleg);
    // Sizes here are those before the scale, unlike the ones of the context.
    out.real(41, landing / scale);
    if (const std::uint64_t arrow = arrowHandle(style.arrowBlock); arrow != 0) out.handle(342, arrow);
    out.real(42, e.effectiveArrowSize() / scale);
    out.integer(172, static_cast<int>(e.contentType));
    out.handle(343, textStyleHandle(style.textStyle));
    out.integer(173, style.textLeftAttachment);
    out.integer(95, style.textRightAttachment);
    out.integer(174, style.textAngleType);
    out.integer(175, style.textAlignment);
    rawColor(92, style.textColor);
    out.flag(292, style.textFrame);
    if (block != nullptr) out.handle(344, blockHandle(block->name));
    rawColor(93, style.blockColor);
    out.point(10, Vector3{style.blockScale, style.blockScale, style.blockScale});
    out.real(43, style.blockRotation);
    out.integer(176, style.blockConnection);
    out.flag(293, e.annotative());
    attributeValues(e, block);
    out.flag(294, false);
    out.integer(178, 0);
    out.integer(179, 1);
    out.real(45, scale);
    out.integer(271, style.textAttachmentDirection);
    out.integer(272, style.bottomTextAttachment);
    out.integer(273, style.topTextAttachment);
    tail(e, own);
    return true;
}

void Writer::lineLook(const MLeaderLineLook& look) {
    GroupWriter& out = *out_;
    out.integer(170, look.lineType);
    rawColor(92, look.color);
    out.handle(340, linetypeHandle(look.linetype.empty() ? commonNames().byBlock : look.linetype));
    out.integer(171, nearestLineweight(look.lineweight));
    out.real(40, look.arrowSize);
    if (const std::uint64_t arrow = arrowHandle(look.arrowBlock); arrow != 0) out.handle(341, arrow);
    out.integer(93, static_cast<std::int32_t>(look.members));
}

void Writer::attributeValues(const MLeaderEntity& e, const Block* block) {
    if (block == nullptr) return;
    GroupWriter& out = *out_;
    int index = 0;
    for (const AttributeDefinitionEntity* definition : attributeDefinitions(block->entities)) {
        const auto held = std::find_if(e.attributes.begin(), e.attributes.end(), [&](const MLeaderAttribute& a) {
            return equalNoCase(a.tag, definition->tag);
        });
        const bool given = held != e.attributes.end();
        out.handle(330, definition->handle());
        out.integer(177, index++);
        out.real(44, given ? held->width : kNotHeld);
        out.text(302, given ? held->value : definition->defaultValue);
    }
}

std::uint64_t Writer::firstMLeaderStyle() {
    if (mleaderStyles_.empty()) mleaderStyles_.emplace(commonNames().standard.key(), newHandle());
    if (const auto standard = mleaderStyles_.find(commonNames().standard.key()); standard != mleaderStyles_.end())
        return standard->second;
    return mleaderStyles_.at(saved_.mleaderStyles[0]->name.key());
}

void Writer::mleaderStyle(const MLeaderStyle& style, std::uint64_t handle, const OwnData& own) {
    GroupWriter& out = *out_;
    objectHead("MLEADERSTYLE", handle, fixed_.mleaderStyles, own.dictionary);
    out.subclass("AcDbMLeaderStyle");
    out.integer(179, 2);
    out.integer(170, style.contentType);
    out.integer(171, style.drawMLeaderOrder);
    out.integer(172, style.drawLeaderOrder);
    out.integer(90, style.maxLeaderPoints);
    out.real(40, style.firstSegmentAngle);
    out.real(41, style.secondSegmentAngle);
    out.integer(173, style.leaderLineType);
    rawColor(91, style.leaderColor);
    out.handle(340, linetypeHandle(style.leaderLinetype.empty() ? commonNames().byBlock : style.leaderLinetype));
    out.integer(92, style.leaderLineweight);
    out.flag(290, style.hasLanding);
    out.real(42, style.landingGap);
    out.flag(291, style.hasDogleg);
    out.real(43, style.landingDistance);
    out.text(3, style.name.view());
    if (const std::uint64_t arrow = arrowHandle(style.arrowBlock); arrow != 0) out.handle(341, arrow);
    out.real(44, style.arrowSize);
    out.text(300, style.defaultText);
    out.handle(342, textStyleHandle(style.textStyle));
    out.integer(174, style.textLeftAttachment);
    out.integer(178, style.textRightAttachment);
    out.integer(175, style.textAngleType);
    out.integer(176, style.textAlignment);
    rawColor(93, style.textColor);
    out.real(45, style.textHeight);
    out.flag(292, style.textFrame);
    out.flag(297, style.textAlignAlwaysLeft);
    out.real(46, style.alignSpace);
    if (!style.block.empty()) out.handle(343, blockHandle(style.block));
    rawColor(94, style.blockColor);
    out.real(47, style.blockScale);
    out.real(49, style.blockScale);
    out.real(140, style.blockScale);
    out.flag(293, style.blockScaleEnabled);
    out.real(141, style.blockRotation);
    out.flag(294, style.blockRotationEnabled);
    out.integer(177, style.blockConnection);
    out.real(142, style.scaleFactor);
    out.flag(295, false);
    out.flag(296, style.annotative);
    out.real(143, style.breakGapSize);
    out.integer(271, style.textAttachmentDirection);
    out.integer(272, style.bottomTextAttachment);
    out.integer(273, style.topTextAttachment);
    out.flag(298, style.extendLeaderToText);
    ownXdata(own);
}

void Writer::mleaderStyles() {
    firstMLeaderStyle();
    Entries entries;
    for (const MLeaderStyle* style : saved_.mleaderStyles)
        entries.emplace_back(symbol(style->name), mleaderStyles_.at(style->name.key()));
    const bool added = saved_.mleaderStyles.empty();
    if (added) entries.emplace_back("Standard", firstMLeaderStyle());
    dictionary(fixed_.mleaderStyles, fixed_.root, entries, false);
    std::size_t i = 0;
    for (const MLeaderStyle* each : saved_.mleaderStyles) {
        const MLeaderStyle& style = *each;
        const std::uint64_t handle = entries[i++].second;
        FieldKeys keys;
        if (!isPlain(style.name)) keys.push_back("name");
        if (!style.arrowBlock.empty()) keys.push_back("arrowBlock");
        // Not in records of R2010.
        if (forDwg_ && style.extendLeaderToText) keys.push_back("extendLeaderToText");
        if (!style.block.empty() && !isPlain(style.block)) keys.push_back("block");
        if (style.leaderLinetype.empty() || !isPlain(style.leaderLinetype)) keys.push_back("leaderLinetype");
        if (style.textStyle.empty() || !isPlain(style.textStyle)) keys.push_back("textStyle");
        mleaderStyle(style, handle, gatherRecord(style, keys, handle, kLeaderStyleApplication));
    }
    if (added) mleaderStyle(MLeaderStyle(), firstMLeaderStyle(), placeholderMark());
    classCounts_["MLEADERSTYLE"] += entries.size();
}

}  // namespace kova::io::dxf
