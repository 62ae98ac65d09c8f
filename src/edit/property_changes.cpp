#include "edit/property_changes.hpp"

#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "engine/libraries/libraries.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {

namespace {

using engine::Entity;

/// The text of a value that all entities share; "varies" when they do not, empty without entities.
template <class Read>
std::string shared(doc::Document& document, const std::vector<std::uint64_t>& ids, const Read& read) {
    std::string common;
    bool any = false;
    for (const std::uint64_t id : ids) {
        const Entity* entity = document.drawing().findById(id);
        if (entity == nullptr) continue;
        std::string value = read(*entity);
        if (any && value != common) return "varies";
        common = std::move(value);
        any = true;
    }
    return common;
}

std::string transparencyText(int percent) { return percent == 0 ? "ByLayer" : std::to_string(percent); }

/// Sets the elevation. A line in space is raised at its other end, too.
void raise(Entity& entity, double elevation) {
    if (entity.elevation == elevation) return;
    if (entity.type() == engine::EntityType::Line)
        entity.transform(math::Matrix4::translation(0.0, 0.0, elevation - entity.elevation));
    entity.elevation = elevation;
}

Task<std::optional<engine::Name>> askLayer(Ask& ask, doc::Document& document, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return std::nullopt;
        const engine::Layer* layer = document.drawing().layers.find(engine::Name(typedName(answer.text)));
        if (layer != nullptr) co_return layer->name;
        ask.message("Unknown layer \"" + typedName(answer.text) + "\".");
    }
}

Task<std::optional<engine::Name>> askLinetype(Ask& ask, doc::Document& document, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return std::nullopt;
        const engine::Name name(typedName(answer.text));
        const engine::CommonNames& names = engine::commonNames();
        if (name == names.byLayer) co_return names.byLayer;
        if (name == names.byBlock) co_return names.byBlock;
        if (const engine::Linetype* known = document.drawing().linetypes.find(name)) co_return known->name;
        // Loaded when it is applied, as part of the command's step.
        for (const engine::Linetype& linetype : engine::builtinLinetypes(document.drawing().isMetric()))
            if (linetype.name == name) co_return linetype.name;
        ask.message("Unknown linetype \"" + name.str() + "\".");
    }
}

Task<std::optional<int>> askLineweight(Ask& ask, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return std::nullopt;
        if (const auto weight = parseLineweight(answer.text)) co_return weight;
        ask.message("Invalid value.");
    }
}

Task<std::optional<int>> askTransparency(Ask& ask, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return std::nullopt;
        if (engine::equalNoCase(trimmed(answer.text), "ByLayer")) co_return 0;
        const auto percent = parseInteger(answer.text);
        if (percent && *percent >= 0 && *percent <= 90) co_return percent;
        ask.message("Invalid number. Enter 0-90:");
    }
}

}  // namespace

bool PropertyChanges::empty() const {
    return !color && !layer && !linetype && !linetypeScale && !lineweight && !thickness && !transparency &&
           !elevation && !annotative;
}

void PropertyChanges::applyTo(Entity& entity) const {
    if (color) entity.color = *color;
    if (layer) entity.layer = *layer;
    if (linetype) entity.linetype = *linetype;
    if (linetypeScale) entity.setLinetypeScale(*linetypeScale);
    if (lineweight) entity.lineweight = *lineweight;
    if (thickness && takesThickness(entity.type())) entity.setThickness(*thickness);
    if (transparency) entity.transparency = *transparency;
    if (elevation) raise(entity, *elevation);
    if (annotative) entity.setAnnotative(*annotative);
}

Task<PropertyChanges> askPropertyChanges(Ask& ask, doc::Document& document, std::vector<std::uint64_t> ids,
                                         bool elevation) {
    PropertyChanges changes;
    // The present value as a default: what was answered before, else what the entities share.
    const auto present = [&](const auto& read) {
        return shared(document, ids, [&](const Entity& e) {
            if (changes.empty()) return read(e);
            const std::unique_ptr<Entity> copy = e.clone();
            changes.applyTo(*copy);
            return read(*copy);
        });
    };
    for (;;) {
        const Answer property = co_await ask.keyword(
            elevation
                ? "Enter property to change [Color/Elev/LAyer/LType/ltScale/LWeight/Thickness/TRansparency/Annotative]:"
                : "Enter property to change [Color/LAyer/LType/ltScale/LWeight/Thickness/TRansparency/Annotative]:",
            elevation ? "Color Elev LAyer LType ltScale LWeight Thickness TRansparency Annotative"
                      : "Color LAyer LType ltScale LWeight Thickness TRansparency Annotative");
        if (property.isEnter()) co_return changes;
        if (property.is("COLOR")) {
            std::string prompt = withDefault("New color [Truecolor/COlorbook]",
                                             present([](const Entity& e) { return engine::colorText(e.color); }));
            const auto color = co_await askColor(ask, std::move(prompt));
            if (color) changes.color = color;
        } else if (property.is("LAYER")) {
            std::string prompt =
                withDefault("Enter new layer name", present([](const Entity& e) { return e.layer.str(); }));
            const auto layer = co_await askLayer(ask, document, std::move(prompt));
            if (layer) changes.layer = layer;
        } else if (property.is("LTYPE")) {
            std::string prompt =
                withDefault("Enter new linetype name", present([](const Entity& e) { return e.linetype.str(); }));
            const auto linetype = co_await askLinetype(ask, document, std::move(prompt));
            if (linetype) changes.linetype = linetype;
        } else if (property.is("LTSCALE")) {
            std::string prompt =
                withDefault("Specify new linetype scale",
                            present([](const Entity& e) { return strings::shortest(e.linetypeScale()); }));
            const Answer scale = co_await ask.number(std::move(prompt), {}, kPositive);
            if (scale.isNumber()) changes.linetypeScale = scale.number;
        } else if (property.is("LWEIGHT")) {
            std::string prompt = withDefault("Enter new lineweight",
                                             present([](const Entity& e) { return lineweightText(e.lineweight); }));
            const auto weight = co_await askLineweight(ask, std::move(prompt));
            if (weight) changes.lineweight = weight;
        } else if (property.is("THICKNESS")) {
            std::string prompt = withDefault("Specify new thickness",
                                             present([](const Entity& e) { return strings::shortest(e.thickness()); }));
            const Answer thickness = co_await ask.distance(std::move(prompt));
            if (thickness.isNumber()) changes.thickness = thickness.number;
        } else if (property.is("TRANSPARENCY")) {
            std::string prompt = withDefault("Enter new transparency value",
                                             present([](const Entity& e) { return transparencyText(e.transparency); }));
            const auto percent = co_await askTransparency(ask, std::move(prompt));
            if (percent) changes.transparency = percent;
        } else if (property.is("ELEV")) {
            std::string prompt = withDefault("Specify new elevation",
                                             present([](const Entity& e) { return strings::shortest(e.elevation); }));
            const Answer height = co_await ask.distance(std::move(prompt));
            if (height.isNumber()) changes.elevation = height.number;
        } else {
            changes.annotative = co_await askYesNo(ask, "Make annotative? [Yes/No] <No>:", false);
        }
    }
}

void applyPropertyChanges(doc::Document& document, const std::vector<std::uint64_t>& ids,
                          const PropertyChanges& changes) {
    if (changes.empty()) return;
    if (changes.linetype) useLinetype(document, *changes.linetype);
    for (Entity* entity : entitiesInOrder(document, ids))
        document.modifyEntity(*entity, [&](Entity& e) { changes.applyTo(e); });
}

}  // namespace kova::cmd
