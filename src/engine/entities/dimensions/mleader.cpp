#include "engine/entities/dimensions/mleader.hpp"

#include <cmath>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/leader_line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

/// Where a leader meets the text, as styles hold it.
enum Attachment : std::int32_t {
    kTopOfTop = 0,
    kMiddleOfTop = 1,
    kMiddle = 2,
    kMiddleOfBottom = 3,
    kBottomOfBottom = 4,
    kUnderlineBottom = 5,
    kUnderlineTop = 6,
    kBottomOfTop = 7,
    kUnderlineAll = 8,
};

bool underlines(std::int32_t attachment) {
    return attachment == kUnderlineBottom || attachment == kUnderlineTop || attachment == kUnderlineAll;
}

double attachmentHeight(std::int32_t attachment, const MTextLayout& layout, double height, double gap) {
    switch (attachment) {
        case kTopOfTop:
            return layout.box.max.y;
        case kMiddle:
            return layout.box.center().y;
        case kMiddleOfBottom:
            return layout.lastBaseline + height / 2.0;
        case kBottomOfBottom:
            return layout.box.min.y;
        case kUnderlineBottom:
        case kUnderlineAll:
            return layout.box.min.y - gap;
        case kUnderlineTop:
            return layout.baseline - gap;
        case kBottomOfTop:
            return layout.baseline;
        default:
            return layout.baseline + height / 2.0;
    }
}

bool givenSize(double size) { return size > 0.0 && std::isfinite(size); }

/// The content is a point when there is nothing to measure.
Bounds2 pointBox(const Vector2& p) { return {p, p}; }

}  // namespace

void MLeaderLineLook::describe(FieldVisitor& v) {
    v.integer("members", members);
    v.integer("lineType", lineType);
    v.color("color", color);
    v.name("linetype", linetype);
    v.integer("lineweight", lineweight);
    v.length("arrowSize", arrowSize);
    v.name("arrowBlock", arrowBlock);
}

void MLeaderHead::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.object("look", look);
}

void MLeaderAttribute::describe(FieldVisitor& v) {
    v.text("tag", tag);
    v.text("value", value);
    v.number("width", width, 1.0);
}

namespace {

/// Calls visit(bit, member pointer, key) for each member of a style that a multileader may override.
template <class Visit>
void eachOverride(const Visit& visit) {
    using O = MLeaderOverrides;
    using S = MLeaderStyle;
    visit(O::kLeaderType, &S::leaderLineType, "leaderLineType");
    visit(O::kLeaderColor, &S::leaderColor, "leaderColor");
    visit(O::kLeaderLinetype, &S::leaderLinetype, "linetype");
    visit(O::kLeaderLineweight, &S::leaderLineweight, "leaderLineweight");
    visit(O::kArrow, &S::arrowBlock, "arrowBlock");
    visit(O::kTextStyle, &S::textStyle, "textStyle");
    visit(O::kLeftAttachment, &S::textLeftAttachment, "textLeftAttachment");
    visit(O::kTextAngle, &S::textAngleType, "textAngleType");
    visit(O::kTextAlignment, &S::textAlignment, "textAlignment");
    visit(O::kTextColor, &S::textColor, "textColor");
    visit(O::kTextFrame, &S::textFrame, "textFrame");
    visit(O::kBlockColor, &S::blockColor, "blockColor");
    visit(O::kBlockScale, &S::blockScale, "blockScale");
    visit(O::kBlockRotation, &S::blockRotation, "blockRotation");
    visit(O::kBlockConnection, &S::blockConnection, "blockConnection");
    visit(O::kScale, &S::scaleFactor, "scaleFactor");
    visit(O::kRightAttachment, &S::textRightAttachment, "textRightAttachment");
    visit(O::kAttachmentDirection, &S::textAttachmentDirection, "textAttachmentDirection");
    visit(O::kTopAttachment, &S::topTextAttachment, "topTextAttachment");
    visit(O::kBottomAttachment, &S::bottomTextAttachment, "bottomTextAttachment");
}

struct MemberVisitor {
    FieldVisitor& v;
    std::string_view key;
    void operator()(std::int32_t& m) const { v.integer(key, m); }
    void operator()(bool& m) const { v.boolean(key, m); }
    void operator()(double& m) const { v.number(key, m); }
    void operator()(Name& m) const { v.name(key, m); }
    void operator()(Color& m) const { v.color(key, m); }
};

}  // namespace

void MLeaderOverrides::apply(MLeaderStyle& style) const {
    eachOverride([&](Member bit, auto member, std::string_view) {
        if ((members & bit) != 0) style.*member = values.*member;
    });
}

void MLeaderOverrides::describe(FieldVisitor& v) {
    v.integer("members", members);
    eachOverride([&](Member, auto member, std::string_view key) { MemberVisitor{v, key}(values.*member); });
}

MLeaderStyle MLeaderEntity::style() const {
    MLeaderStyle inForce = namedStyle();
    if (overrides) overrides->apply(inForce);
    return inForce;
}

const MLeaderStyle& MLeaderEntity::namedStyle() const {
    static const MLeaderStyle plain;
    const Drawing* owner = drawing();
    if (owner == nullptr) return plain;
    if (const MLeaderStyle* named = owner->mleaderStyles.find(styleName)) return *named;
    const MLeaderStyle* standard = owner->mleaderStyles.find(commonNames().standard);
    return standard != nullptr ? *standard : plain;
}

double MLeaderEntity::scale() const {
    const bool own = overrides && (overrides->members & MLeaderOverrides::kScale) != 0;
    const double factor = annotative() ? annotationScale()
                          : own        ? overrides->values.scaleFactor
                                       : namedStyle().scaleFactor;
    return givenSize(factor) ? factor : 1.0;
}

double MLeaderEntity::effectiveArrowSize() const {
    const double size = arrowSize > 0.0 ? arrowSize : namedStyle().arrowSize;
    return givenSize(size) ? size * scale() : 0.0;
}
double MLeaderEntity::effectiveTextHeight() const {
    const double size = textHeight > 0.0 ? textHeight : namedStyle().textHeight;
    return (givenSize(size) ? size : 4.0) * scale();
}
double MLeaderEntity::effectiveLandingGap() const {
    const double size = landingGap > 0.0 ? landingGap : namedStyle().landingGap;
    return givenSize(size) ? size * scale() : 0.0;
}
double MLeaderEntity::effectiveLandingDistance() const {
    const double size = landingDistance > 0.0 ? landingDistance : namedStyle().landingDistance;
    return givenSize(size) ? size * scale() : 0.0;
}

double MLeaderEntity::side() const {
    for (const MLeaderHead& head : heads)
        if (!head.vertices.empty()) return contentPos.x < head.vertices.back().x ? -1.0 : 1.0;
    return 1.0;
}

MTextBlock MLeaderEntity::textBlock() const {
    const MLeaderStyle& s = style();
    const double sense = side();
    MTextBlock block;
    block.content = textContent;
    block.height = effectiveTextHeight();
    block.textStyle = s.textStyle;
    block.attachment = kAttachTopLeft;
    const MTextLayout layout = layoutMText(block, drawing());
    const double width = std::max(0.0, layout.box.width());

    double left = sense > 0.0 ? contentPos.x : contentPos.x - width;
    double lift = 0.0;
    const bool vertical = s.textAttachmentDirection == 1;
    if (vertical) {
        left = contentPos.x - width / 2.0;
    } else {
        const std::int32_t attachment = sense > 0.0 ? s.textLeftAttachment : s.textRightAttachment;
        lift = attachmentHeight(attachment, layout, block.height, effectiveLandingGap());
    }
    // Lines of text left of the leader end at it, unless the style says otherwise.
    std::int32_t align = s.textAlignAlwaysLeft ? 0 : s.textAlignment;
    if (!s.textAlignAlwaysLeft && align == 0 && sense < 0.0 && !vertical) align = 2;
    block.attachment = align == 1 ? kAttachTopCenter : align == 2 ? kAttachTopRight : kAttachTopLeft;
    block.position = {left + (align == 1 ? width / 2.0 : align == 2 ? width : 0.0), contentPos.y - lift};
    return block;
}

Matrix4 MLeaderEntity::blockMatrix() const {
    const MLeaderStyle& s = style();
    const double factor = (givenSize(s.blockScale) ? s.blockScale : 1.0) * scale();
    const double turn = std::isfinite(s.blockRotation) ? s.blockRotation : 0.0;
    Matrix4 m = Matrix4::translation(contentPos) * Matrix4::rotation_z(turn) * Matrix4::scaling(factor, factor, factor);
    if (const Block* block = contentBlock()) m = m * Matrix4::translation(-block->base);
    return m;
}

const Block* MLeaderEntity::contentBlock() const {
    const Drawing* owner = drawing();
    const Name name = blockName.empty() ? namedStyle().block : blockName;
    return owner != nullptr && !name.empty() ? owner->findBlock(name) : nullptr;
}

std::vector<BlockAttribute> MLeaderEntity::placedAttributes() const {
    std::vector<BlockAttribute> placed;
    const Block* block = contentType == MLeaderContent::Block ? contentBlock() : nullptr;
    if (block == nullptr) return placed;
    const Matrix4 matrix = blockMatrix();
    for (const AttributeDefinitionEntity* definition : attributeDefinitions(block->entities)) {
        const auto held = std::find_if(attributes.begin(), attributes.end(), [&](const MLeaderAttribute& a) {
            return equalNoCase(a.tag, definition->tag);
        });
        placed.push_back(makeAttribute(*definition, matrix,
                                       held != attributes.end() ? held->value : definition->defaultValue, *drawing()));
    }
    return placed;
}

Bounds2 MLeaderEntity::contentBox() const {
    Bounds2 box;
    if (contentType == MLeaderContent::MText && !textContent.empty()) {
        const MTextBlock block = textBlock();
        const MTextLayout layout = layoutMText(block, drawing());
        if (!layout.box.is_empty()) box = {block.position + layout.box.min, block.position + layout.box.max};
    } else if (contentType == MLeaderContent::Block) {
        if (const Block* block = contentBlock()) {
            const Bounds2 inner = block->extents();
            const Matrix4 m = blockMatrix();
            if (!inner.is_empty())
                for (const Vector2& p :
                     {inner.min, Vector2{inner.max.x, inner.min.y}, inner.max, Vector2{inner.min.x, inner.max.y}})
                    box.expand(m.transform_point(p));
        }
    }
    return box.is_empty() ? pointBox(contentPos) : box;
}

Vector2 MLeaderEntity::connection(const Vector2& from, const Bounds2& box) const {
    const bool text = hasText();
    if (!text && contentType != MLeaderContent::Block) return contentPos;
    const MLeaderStyle& s = style();
    if (!text && s.blockConnection == 1) return contentPos;
    // Lines run up to a block.
    const double gap = text ? effectiveLandingGap() : 0.0;
    const Vector2 middle = box.center();
    if (text && s.textAttachmentDirection == 1)
        return {middle.x, from.y >= middle.y ? box.max.y + gap : box.min.y - gap};
    const double y = text ? contentPos.y : middle.y;
    return {from.x <= middle.x ? box.min.x - gap : box.max.x + gap, y};
}

Vector2 MLeaderEntity::landingPoint(const MLeaderHead& head) const {
    if (head.vertices.size() >= 2) return head.vertices.back();
    return connectionPoint(head) - Vector2{side() * effectiveLandingDistance(), 0.0};
}

Vector2 MLeaderEntity::connectionPoint(const MLeaderHead& head) const {
    return connection(head.vertices.empty() ? contentPos : head.vertices.back(), contentBox());
}

Bounds2 MLeaderEntity::bounds() const { return outlineBounds(*this); }

void MLeaderEntity::transform(const Matrix4& m) {
    for (MLeaderHead& head : heads)
        for (Vector2& p : head.vertices) p = m.transform_point(p);
    contentPos = m.transform_point(contentPos);
    const double factor = std::sqrt(std::abs(m.plane_determinant()));
    if (factor > 0.0 && std::isfinite(factor)) {
        for (double* size : {&landingGap, &landingDistance, &arrowSize, &textHeight}) *size *= factor;
        for (MLeaderHead& head : heads)
            if (head.look) head.look->arrowSize *= factor;
    }
    elevation = m.transform_point(math::Vector3(Vector2{}, elevation)).z;
    transformExtrusion(*this, m);
}

double MLeaderEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 MLeaderEntity::nearestPoint(const Vector2& p) const {
    if (hasText() && contentBox().contains_point(p)) return p;
    return nearestOnOutline(*this, p);
}

std::vector<Vector2> MLeaderEntity::gripPoints() const {
    std::vector<Vector2> points;
    for (const MLeaderHead& head : heads) points.insert(points.end(), head.vertices.begin(), head.vertices.end());
    points.push_back(contentPos);
    return points;
}

void MLeaderEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (!to.is_finite()) return;
    // The content and the landings hang together; the other vertices move alone.
    const auto moveContent = [&](const Vector2& step) {
        contentPos += step;
        for (MLeaderHead& head : heads)
            if (head.vertices.size() >= 2) head.vertices.back() += step;
    };
    for (MLeaderHead& head : heads) {
        const std::size_t count = head.vertices.size();
        if (index >= count) {
            index -= count;
            continue;
        }
        if (count >= 2 && index == count - 1)
            moveContent(to - head.vertices[index]);
        else
            head.vertices[index] = to;
        return;
    }
    if (index == 0) moveContent(to - contentPos);
}

void MLeaderEntity::describe(FieldVisitor& v) {
    v.objects("heads", heads);
    v.integer("contentType", contentType);
    v.text("textContent", textContent);
    v.name("blockName", blockName);
    v.objects("attributes", attributes, true);
    v.point("contentPos", contentPos);
    v.length("landingGap", landingGap);
    v.length("landingDistance", landingDistance);
    v.boolean("hasLanding", hasLanding);
    v.boolean("hasDogleg", hasDogleg);
    v.length("arrowSize", arrowSize);
    v.length("textHeight", textHeight);
    v.name("styleName", styleName);
    v.object("overrides", overrides);
}

void MLeaderEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (!contentPos.is_finite()) return;
    const MLeaderStyle& s = this->style();
    const Bounds2 box = contentBox();
    emitHeads(sink, style, box);
    const auto color = [&](const Color& c) { return c.method == ColorMethod::ByBlock ? style.color : c; };
    if (hasText()) {
        OutlineStyle letters = style;
        letters.color = color(s.textColor);
        const MTextBlock block = textBlock();
        emitMText(block, drawing(), sink, letters);
        if (s.textFrame) {
            StrokeOptions frame;
            frame.continuous = true;
            const Bounds2 outer = box.inflated(effectiveLandingGap());
            const Vector2 corners[] = {outer.min, {outer.max.x, outer.min.y}, outer.max, {outer.min.x, outer.max.y}};
            sink.stroke(Path().polygon(corners), letters, frame);
        }
    } else if (contentType == MLeaderContent::Block) {
        if (const Block* block = contentBlock()) {
            OutlineStyle inner = style;
            inner.color = color(s.blockColor);
            emitBlock(*block, blockMatrix(), sink, inner);
            for (const BlockAttribute& attribute : placedAttributes()) emitAttribute(attribute, drawing(), sink, inner);
        }
    }
}

void MLeaderEntity::emitHeads(OutlineSink& sink, const OutlineStyle& style, const Bounds2& box) const {
    using Look = MLeaderLineLook;
    const MLeaderStyle common = this->style();
    const bool dogleg = hasLanding && hasDogleg && contentType != MLeaderContent::None;
    const bool sideways = common.textAttachmentDirection != 1;

    std::vector<Vector2> points;
    for (const MLeaderHead& head : heads) {
        if (head.vertices.empty()) continue;
        const Look own = head.look.value_or(Look());
        const std::int32_t type = own.has(Look::kType) ? own.lineType : common.leaderLineType;
        if (type == 0) continue;
        const Color color = own.has(Look::kColor) ? own.color : common.leaderColor;
        const Name linetype = own.has(Look::kLinetype) ? own.linetype : common.leaderLinetype;
        const std::int32_t weight = own.has(Look::kLineweight) ? own.lineweight : common.leaderLineweight;
        const Name arrowBlock = own.has(Look::kArrow) ? own.arrowBlock : common.arrowBlock;
        const double size = own.has(Look::kArrowSize) ? own.arrowSize * scale() : effectiveArrowSize();
        OutlineStyle lines = style;
        if (color.method != ColorMethod::ByBlock) lines.color = color;
        if (!linetype.empty() && linetype != commonNames().byBlock) lines.linetype = linetype;
        if (weight != -2) lines.lineweight = weight;

        const Vector2 end = connection(head.vertices.back(), box);
        points = head.vertices;
        if (points.size() == 1)
            points.push_back(end - Vector2{sideways ? side() * effectiveLandingDistance() : 0.0, 0.0});
        const LeaderArrow arrow = leaderArrow(points, size, arrowBlock);
        Path path = leaderLine(points, type == 2, arrow.lineGap);
        if (path.empty()) continue;
        const bool fromLeft = end.x <= box.center().x;
        if (dogleg) path.lineTo(end);
        if (hasText() && sideways && underlines(fromLeft ? common.textLeftAttachment : common.textRightAttachment))
            path.lineTo({fromLeft ? box.max.x : box.min.x, end.y});
        sink.stroke(path, lines);
        if (arrow.visible) emitArrow(sink, lines, drawing(), arrowBlock, arrow.tip, arrow.direction, size);
    }
}

std::size_t MLeaderEntity::sizeInBytes() const {
    std::size_t size = sizeof *this + extrasSize() + textContent.capacity();
    for (const MLeaderHead& head : heads) size += sizeof head + head.vertices.capacity() * sizeof(Vector2);
    for (const MLeaderAttribute& a : attributes) size += sizeof a + a.tag.capacity() + a.value.capacity();
    return size;
}

}  // namespace kova::engine
