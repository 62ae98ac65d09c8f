// Texts, attributes, tolerances.
#include "engine/text/mtext_layout.hpp"
#include "engine/text/text_line.hpp"
#include "io/dxf/writing/writer.hpp"
#include "strings/utf8.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

constexpr std::size_t kTextPiece = 250;


bool betweenPoints(std::int32_t hAlign) { return hAlign == kHAlignAligned || hAlign == kHAlignFit; }

/// Alignment and generation outside what the codes can say.
void alignmentKeys(FieldKeys& keys, std::int32_t hAlign, std::int32_t vAlign, std::int32_t generation) {
    if (hAlign < 0 || hAlign > 5) keys.push_back("hAlign");
    if (vAlign < 0 || vAlign > 3) keys.push_back("vAlign");
    if ((generation & ~6) != 0) keys.push_back("generation");
}

/// Paragraphs for readers that know one line.
std::string oneLine(std::string_view content) {
    std::string text = plainText(content);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

/// The content in pieces; cut neither within a character nor within an inline code's beginning.
void Writer::longText(int moreCode, int lastCode, std::string_view content) {
    while (content.size() > kTextPiece) {
        std::size_t cut = strings::wholeCharacters(content, kTextPiece);
        // A backslash stays with what follows it, a caret and a per cent code too.
        for (std::size_t back = 0; back < 8 && cut > 200; ++back) {
            const char before = content[cut - 1];
            if (before != '\\' && before != '^' && before != '%' && before != ' ') break;
            --cut;
        }
        out_->text(moreCode, content.substr(0, cut));
        content.remove_prefix(cut);
    }
    out_->text(lastCode, content);
}

void Writer::textPart(const Entity& e, const TextLine& line, std::string_view content,
                      const std::optional<AttributePlane>& plane) {
    GroupWriter& out = *out_;
    const double z = plane ? plane->elevation : e.elevation;
    const std::int32_t h = line.hAlign >= 0 && line.hAlign <= 5 ? line.hAlign : 0;
    const std::int32_t v = line.vAlign >= 0 && line.vAlign <= 3 ? line.vAlign : 0;
    const bool justified = h != 0 || v != 0;
    out.subclass("AcDbText");
    thickness(e);
    Vector2 first = line.position;
    // Readers that know no alignment go by the start of the baseline.
    if (justified && !betweenPoints(h)) {
        const Vector2 start = textLineBaselineStart(line, &drawing_);
        if (finite(start)) first = start;
    }
    out.point(10, first, z);
    out.real(40, line.height);
    out.text(1, content);
    if (line.rotation != 0.0) out.angle(50, line.rotation);
    if (line.widthFactor != 1.0) out.real(41, line.widthFactor);
    if (line.oblique != 0.0) out.angle(51, line.oblique);
    textStyleName(7, line.textStyle);
    if ((line.generation & 6) != 0) out.integer(71, line.generation & 6);
    if (h != 0) out.integer(72, h);
    if (justified) out.point(11, betweenPoints(h) ? line.secondPoint : line.position, z);
    if (!plane)
        normal(e);
    else if (!(plane->normal == Vector3{0, 0, 1}))
        out.point(210, plane->normal);
}

bool Writer::write(const TextEntity& e, const Target& t) {
    if (!finite(e.position) || !std::isfinite(e.height)) return false;
    FieldKeys keys;
    alignmentKeys(keys, e.hAlign, e.vAlign, e.generation);
    if (e.fit && !betweenPoints(e.hAlign)) keys.insert(keys.end(), {"fit", "fitEnd"});
    if (!isPlain(e.textStyle)) keys.push_back("textStyle");
    const OwnData own = gather(e, kElevation | kThickness | kNormal, keys);
    head("TEXT", e, t, own);
    textPart(e, e.line(), e.content);
    out_->subclass("AcDbText");
    if (e.vAlign > 0 && e.vAlign <= 3) out_->integer(73, e.vAlign);
    tail(e, own);
    return true;
}

bool Writer::write(const AttributeDefinitionEntity& e, const Target& t) {
    if (!finite(e.insertion) || !std::isfinite(e.textHeight)) return false;
    FieldKeys keys;
    alignmentKeys(keys, e.hAlign, e.vAlign, e.generation);
    if (e.fit && !betweenPoints(e.hAlign)) keys.insert(keys.end(), {"fit", "fitEnd"});
    if (!isPlain(e.textStyle)) keys.push_back("textStyle");
    // A tag is one word in other programs.
    if (e.tag.empty() || e.tag.find(' ') != std::string::npos) keys.push_back("tag");
    // This release of the format has attributes of one line only.
    if (e.multiline || e.width != 0.0) keys.insert(keys.end(), {"multiline", "width", "defaultValue"});
    const OwnData own = gather(e, kElevation | kThickness | kNormal, keys);
    head("ATTDEF", e, t, own);
    GroupWriter& out = *out_;
    textPart(e, e.line(), e.multiline ? oneLine(e.defaultValue) : e.defaultValue);
    out.subclass("AcDbAttributeDefinition");
    out.integer(280, 0);
    out.text(3, e.prompt);
    std::string tag = e.tag.empty() ? "_" : e.tag;
    std::replace(tag.begin(), tag.end(), ' ', '_');
    out.text(2, tag);
    out.integer(70, (e.invisible ? 1 : 0) | (e.constant ? 2 : 0) | (e.verify ? 4 : 0) | (e.preset ? 8 : 0));
    if (e.vAlign > 0 && e.vAlign <= 3) out.integer(74, e.vAlign);
    out.flag(280, e.locked);
    tail(e, own);
    return true;
}

void Writer::attribute(const BlockAttribute& a, const BlockReferenceEntity& insert, const Target& t) {
    GroupWriter& out = *out_;
    out.record("ATTRIB");
    out.handle(5, newHandle());
    out.handle(330, insert.handle());
    out.subclass("AcDbEntity");
    if (t.paper) out.integer(67, 1);
    out.text(8, symbol(a.layer));
    if (a.color.method != ColorMethod::ByLayer) {
        out.integer(62, a.color.bareIndex());
        if (a.color.method == ColorMethod::RGB) out.integer(420, a.color.red << 16 | a.color.green << 8 | a.color.blue);
    }
    TextLine line;
    line.content = a.value;
    line.position = a.position;
    line.secondPoint = a.position;
    line.height = a.textHeight;
    line.rotation = a.rotation;
    line.hAlign = a.hAlign;
    line.vAlign = a.vAlign;
    line.textStyle = a.textStyle;
    line.widthFactor = a.widthFactor;
    line.oblique = a.oblique;
    line.generation = a.generation;
    textPart(insert, line, a.multiline ? oneLine(a.value) : a.value, a.plane);
    out.subclass("AcDbAttribute");
    out.integer(280, 0);
    std::string tag = a.tag.empty() ? "_" : a.tag;
    std::replace(tag.begin(), tag.end(), ' ', '_');
    out.text(2, tag);
    out.integer(70, a.invisible ? 1 : 0);
    if (a.vAlign > 0 && a.vAlign <= 3) out.integer(74, a.vAlign);
    out.flag(280, a.locked);
}

void Writer::rawColor(int code, const Color& color) {
    std::uint32_t raw = 0xC0000000U;
    if (color.method == ColorMethod::ByBlock) raw = 0xC1000000U;
    if (color.method == ColorMethod::ACI) raw = 0xC3000000U | color.aci;
    if (color.method == ColorMethod::RGB)
        raw = 0xC2000000U | static_cast<std::uint32_t>(color.red << 16 | color.green << 8 | color.blue);
    out_->integer(code, static_cast<std::int32_t>(raw));
}

void Writer::mtextXdata(const MTextEntity& e) {
    GroupWriter& out = *out_;
    const bool frame = (e.bgFlags & kBackgroundFrame) != 0;
    if (!e.columns.used() && !frame && !(e.definedHeight > 0.0)) return;
    out.word(1001, "ACAD");
    if (e.columns.used()) {
        const MTextColumns& c = e.columns;
        out.word(1000, "ACAD_MTEXT_COLUMN_INFO_BEGIN");
        const auto pair = [&](int code, std::int64_t value) {
            out.integer(1070, code);
            out.integer(1070, value);
        };
        pair(75, c.type & 3);
        pair(79, c.autoHeight ? 1 : 0);
        pair(76, c.count & 0x7FFF);
        pair(78, c.flowReversed ? 1 : 0);
        out.integer(1070, 48);
        out.real(1040, c.width);
        out.integer(1070, 49);
        out.real(1040, c.gutter);
        if (!c.heights.empty()) {
            const std::size_t count = std::min<std::size_t>(c.heights.size(), 500);
            out.integer(1070, 50);
            out.integer(1070, static_cast<std::int64_t>(count));
            for (std::size_t i = 0; i < count; ++i) out.real(1040, c.heights[i]);
        }
        out.word(1000, "ACAD_MTEXT_COLUMN_INFO_END");
    }
    if (e.definedHeight > 0.0) {
        out.word(1000, "ACAD_MTEXT_DEFINED_HEIGHT_BEGIN");
        out.integer(1070, 46);
        out.real(1040, e.definedHeight);
        out.word(1000, "ACAD_MTEXT_DEFINED_HEIGHT_END");
    }
    if (frame) {
        out.word(1000, "ACAD_MTEXT_TEXT_BORDERS_BEGIN");
        out.integer(1070, 80);
        out.integer(1070, 16);
        out.integer(1070, 46);
        out.real(1040, e.bgScale);
        out.integer(1070, 81);
        out.integer(1070, 1);
        out.word(1000, "ACAD_MTEXT_TEXT_BORDERS_END");
    }
}

bool Writer::write(const MTextEntity& e, const Target& t) {
    if (!finite(e.position) || !std::isfinite(e.height) || !std::isfinite(e.width)) return false;
    FieldKeys keys;
    // What the extended data of the field cannot say exactly. The user's own data under ACAD takes their place.
    const bool userAcad = e.xdata() != nullptr && e.xdata()->find(Name("ACAD")) != nullptr;
    if (e.columns.used()) keys.push_back("columns");
    if (e.bgFlags != 0) keys.insert(keys.end(), {"bgFlags", "bgColor", "bgScale", "bgTransparency"});
    if (e.definedHeight != 0.0) keys.push_back("definedHeight");
    if (e.backward) keys.push_back("backward");
    // Records have a direction in place of the angle.
    if (forDwg_ && e.rotation != std::atan2(std::sin(e.rotation), std::cos(e.rotation))) keys.push_back("rotation");
    if (e.attachment < 1 || e.attachment > 9) keys.push_back("attachment");
    if (!(e.lineSpacingFactor >= 0.25 && e.lineSpacingFactor <= 4.0)) keys.push_back("lineSpacingFactor");
    if (!isPlain(e.textStyle)) keys.push_back("textStyle");
    const OwnData own = gather(e, kElevation | kNormal, keys);
    head("MTEXT", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbMText");
    out.point(10, e.position, e.elevation);
    out.real(40, e.height);
    out.real(41, e.width);
    if (e.definedHeight > 0.0) out.real(46, e.definedHeight);
    out.integer(71, e.attachment >= 1 && e.attachment <= 9 ? e.attachment : 1);
    out.integer(72, 5);
    longText(3, 1, e.content);
    textStyleName(7, e.textStyle);
    normal(e);
    // Seen from behind the letters run against the direction that their rotation names.
    if (e.backward && e.normal().z < 0.0)
        out.point(11, Vector3{-std::cos(e.rotation), -std::sin(e.rotation), 0.0});
    else if (e.rotation != 0.0)
        out.angle(50, e.rotation);
    out.integer(73, e.lineSpacingExact ? 2 : 1);
    out.real(44, std::isfinite(e.lineSpacingFactor) ? std::clamp(e.lineSpacingFactor, 0.25, 4.0) : 1.0);
    if ((e.bgFlags & 3) != 0) {
        out.integer(90, e.bgFlags & 3);
        out.integer(63, e.bgColor.bareIndex());
        if (e.bgColor.method == ColorMethod::RGB)
            out.integer(421, e.bgColor.red << 16 | e.bgColor.green << 8 | e.bgColor.blue);
        out.real(45, e.bgScale);
        out.integer(441, e.bgTransparency > 0 && e.bgTransparency <= 100 ? transparencyCode(e.bgTransparency) : 0);
    }
    if (!userAcad) mtextXdata(e);
    tail(e, own);
    return true;
}

bool Writer::write(const ToleranceEntity& e, const Target& t) {
    if (!finite(e.insertion)) return false;
    FieldKeys keys;
    if (e.textHeight != 0.0) keys.push_back("textHeight");
    if (!isPlain(e.styleName)) keys.push_back("styleName");
    const std::string content = e.contentText();
    ToleranceEntity back;
    back.setContentText(content);
    // A text that does not come back as the same rows keeps them beside it.
    if (!(back.first == e.first && back.rows == e.rows))
        keys.insert(keys.end(), {"symbol", "toleranceValue", "toleranceMC", "datum1", "datum1MC", "datum2", "datum2MC",
                                 "datum3", "datum3MC", "toleranceValue2", "toleranceMC2", "whole", "rows"});
    const Vector2 direction{std::cos(e.rotation), std::sin(e.rotation)};
    // The direction stands as a vector, whose angle may differ in the last digit.
    if (e.rotation != 0.0 && std::atan2(direction.y, direction.x) != e.rotation) keys.push_back("rotation");
    const OwnData own = gather(e, kElevation | kNormal, keys);
    head("TOLERANCE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbFcf");
    dimStyleName(3, e.styleName);
    out.point(10, e.insertion, e.elevation);
    // Line breaks between rows come out as ^J.
    out.text(1, content);
    normal(e);
    out.point(11, direction, 0.0);
    if (e.textHeight > 0.0 && (e.xdata() == nullptr || e.xdata()->find(Name("ACAD")) == nullptr)) {
        out.word(1001, "ACAD");
        out.word(1000, "DSTYLE");
        out.word(1002, "{");
        out.integer(1070, 140);
        out.real(1040, e.textHeight);
        out.word(1002, "}");
    }
    tail(e, own);
    return true;
}

}  // namespace kova::io::dxf
