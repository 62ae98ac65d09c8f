#include "cmd/prompts/text_prompts.hpp"

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "engine/text/text_line.hpp"

namespace kova::cmd::commands {

namespace {

constexpr const char* kLastRotation = "textRotation";

constexpr TextJustification kRows[] = {
    {"LEFT", engine::kHAlignLeft, engine::kVAlignBaseline, "Specify start point of text:"},
    {"CENTER", engine::kHAlignCenter, engine::kVAlignBaseline, "Specify center point of text:"},
    {"RIGHT", engine::kHAlignRight, engine::kVAlignBaseline, "Specify right endpoint of text baseline:"},
    {"ALIGN", engine::kHAlignAligned, engine::kVAlignBaseline, "Specify first endpoint of text baseline:"},
    {"MIDDLE", engine::kHAlignMiddle, engine::kVAlignBaseline, "Specify middle point of text:"},
    {"FIT", engine::kHAlignFit, engine::kVAlignBaseline, "Specify first endpoint of text baseline:"},
    {"TL", engine::kHAlignLeft, engine::kVAlignTop, "Specify top-left point of text:"},
    {"TC", engine::kHAlignCenter, engine::kVAlignTop, "Specify top-center point of text:"},
    {"TR", engine::kHAlignRight, engine::kVAlignTop, "Specify top-right point of text:"},
    {"ML", engine::kHAlignLeft, engine::kVAlignMiddle, "Specify middle-left point of text:"},
    {"MC", engine::kHAlignCenter, engine::kVAlignMiddle, "Specify middle point of text:"},
    {"MR", engine::kHAlignRight, engine::kVAlignMiddle, "Specify middle-right point of text:"},
    {"BL", engine::kHAlignLeft, engine::kVAlignBottom, "Specify bottom-left point of text:"},
    {"BC", engine::kHAlignCenter, engine::kVAlignBottom, "Specify bottom-center point of text:"},
    {"BR", engine::kHAlignRight, engine::kVAlignBottom, "Specify bottom-right point of text:"},
};

Dialogue askStyle(Ask& ask, doc::Document& document, const char* label) {
    for (;;) {
        std::string prompt = withDefault("Enter style name or [?]", document.drawing().currentTextStyle.str());
        const Answer answer = co_await ask.text(std::move(prompt), "?");
        if (answer.isEnter()) co_return;
        if (!answer.isText()) {
            for (const engine::TextStyle& style : document.drawing().textStyles)
                ask.message(std::string(style.name.str()));
            continue;
        }
        const engine::Name name(std::string(trimmed(answer.text)));
        if (document.drawing().textStyles.find(name) != nullptr) {
            const doc::GroupScope group(document, label);
            document.setVariable("TEXTSTYLE", std::string(name.str()));
            co_return;
        }
        ask.message("Text style " + inQuotes(trimmed(answer.text)) + " not found.");
    }
}

}  // namespace

const TextJustification* textJustification(const Answer& answer) {
    for (const TextJustification& row : kRows)
        if (answer.is(row.word)) return &row;
    return nullptr;
}

std::string textJustificationName(std::int32_t hAlign, std::int32_t vAlign) {
    for (const TextJustification& row : kRows) {
        if (row.hAlign != hAlign || row.vAlign != vAlign) continue;
        std::string name = row.word;
        if (name.size() > 2)
            std::transform(name.begin() + 1, name.end(), name.begin() + 1,
                           [](char c) { return static_cast<char>(c - 'A' + 'a'); });
        return name;
    }
    return {};
}

bool TextPlace::hasSecondPoint() const { return hAlign == engine::kHAlignAligned || hAlign == engine::kHAlignFit; }

Task<std::optional<TextPlace>> askTextPlace(Ask& ask, doc::Document& document, const char* label) {
    const engine::Drawing& drawing = document.drawing();
    TextPlace place;
    const TextJustification* row = nullptr;
    for (;;) {
        const Answer first = co_await ask.point("Specify start point of text or [Justify/Style]:",
                                                "Justify Style Left Center Right Align Middle Fit TL TC TR ML MC MR "
                                                "BL BC BR");
        if (first.isPoint()) {
            row = &kRows[0];
            place.position = first.point;
            break;
        }
        if (first.is("STYLE")) {
            co_await askStyle(ask, document, label);
            continue;
        }
        if (first.is("JUSTIFY")) {
            const Answer kind =
                co_await ask.keyword("Enter an option [Left/Center/Right/Align/Middle/Fit/TL/TC/TR/ML/MC/MR/BL/BC/BR]:",
                                     kTextJustifications);
            row = textJustification(kind);
            if (row == nullptr) co_return std::nullopt;
        } else if (first.isEnter()) {
            place.continued = true;
            co_return place;
        } else {
            row = textJustification(first);
        }
        const Answer at = co_await ask.point(row->question);
        if (!at.isPoint()) co_return std::nullopt;
        place.position = at.point;
        break;
    }
    place.hAlign = row->hAlign;
    place.vAlign = row->vAlign;
    const engine::TextStyle& style = drawing.textStyleOrStandard(drawing.currentTextStyle);
    place.style = style.name;
    place.widthFactor = style.widthFactor;
    place.oblique = style.obliqueAngle;
    place.generation = (style.backward ? engine::kTextBackward : 0) | (style.upsideDown ? engine::kTextUpsideDown : 0);
    if (place.hasSecondPoint()) {
        const Answer second = co_await ask.point("Specify second endpoint of text baseline:", {}, place.position);
        if (!second.isPoint()) co_return std::nullopt;
        place.fit = true;
        place.fitEnd = second.point;
        place.rotation = (second.point - place.position).angle();
    }
    place.height = style.height > 0.0 ? style.height : engine::sysVarReal(drawing, "TEXTSIZE", 2.5);
    if (!(style.height > 0.0) && place.hAlign != engine::kHAlignAligned) {
        std::string prompt = withDefault("Specify height", lengthDefault(drawing, place.height));
        const Answer height = co_await ask.distance(std::move(prompt), {}, place.position, kPositive);
        if (height.isNumber()) place.height = height.number;
        engine::setSysVar(document.drawing(), "TEXTSIZE", place.height);
    }
    if (!place.hasSecondPoint()) {
        place.rotation = remembered(document, kLastRotation, 0.0) + ucsRotation(drawing);
        std::string prompt =
            withDefault("Specify rotation angle of text", angleText(drawing, place.rotation - ucsRotation(drawing)));
        const Answer rotation = co_await ask.angle(std::move(prompt), {}, place.position);
        if (rotation.isNumber()) place.rotation = worldDirection(rotation, drawing);
        remember(document, kLastRotation, place.rotation - ucsRotation(drawing));
    }
    co_return place;
}

}  // namespace kova::cmd::commands
