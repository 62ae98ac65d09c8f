#include "doc/pick/object_snap.hpp"

#include "doc/pick/picking.hpp"
#include "doc/pick/through_viewport.hpp"
#include "doc/spatial_index.hpp"

namespace kova::cmd {

using engine::SnapKinds;
using engine::SnapSearch;
using math::Vector2;
namespace snap = engine::snap;

namespace {

constexpr SnapKinds kPointer = 1U << 31;

struct Word {
    std::string_view whole;
    SnapKinds kinds;
    const char* noun;
};
/// The first word of a kind carries its noun.
constexpr Word kWords[] = {
    {"ENDPOINT", snap::kEnd, "endpoint"},
    {"MIDPOINT", snap::kMiddle, "midpoint"},
    {"CENTER", snap::kCenter, "center"},
    {"CENTRE", snap::kCenter, nullptr},
    {"GCENTER", snap::kCentroid, "geometric center"},
    {"NODE", snap::kNode, "node"},
    {"QUADRANT", snap::kQuadrant, "quadrant"},
    {"INTERSECTION", snap::kIntersection, "intersection"},
    // In plan what seems to meet does meet.
    {"APPINT", snap::kIntersection, nullptr},
    {"APPARENT", snap::kIntersection, nullptr},
    {"INSERTION", snap::kInsertion, "insertion point"},
    {"PERPENDICULAR", snap::kPerpendicular, "perpendicular"},
    {"TANGENT", snap::kTangent, "tangent"},
    {"NEAREST", snap::kNearest, "nearest point"},
    {"EXTENSION", kPointer, nullptr},
    {"PARALLEL", kPointer, nullptr},
    {"NONE", 0, nullptr},
};
constexpr std::size_t kShortest = 3;

const Word* findWord(std::string_view typed) {
    if (typed.starts_with('_')) typed.remove_prefix(1);
    if (typed.size() < kShortest) return nullptr;
    for (const Word& word : kWords)
        if (typed.size() <= word.whole.size() && engine::equalNoCase(typed, word.whole.substr(0, typed.size())))
            return &word;
    return nullptr;
}

}  // namespace

std::optional<SnapWords> parseSnapWords(std::string_view text) {
    SnapWords words;
    for (;;) {
        const std::size_t comma = text.find(',');
        const Word* word = findWord(text.substr(0, comma));
        if (word == nullptr) return std::nullopt;
        if (word->kinds == kPointer)
            words.followsPointer = true;
        else
            words.kinds |= word->kinds;
        if (comma == std::string_view::npos) return words;
        text.remove_prefix(comma + 1);
    }
}

const char* snapPrompt(SnapKinds kinds) {
    constexpr SnapKinds to = snap::kPerpendicular | snap::kTangent | snap::kNearest;
    return kinds != 0 && (kinds & ~to) == 0 ? "to" : "of";
}

std::string noSnapText(SnapKinds kinds) {
    std::string nouns;
    for (const Word& word : kWords)
        if (word.noun != nullptr && (kinds & word.kinds) != 0)
            nouns += (nouns.empty() ? "" : " or ") + std::string(word.noun);
    return "No " + nouns + " found for specified point.";
}

std::optional<Vector2> snapTo(doc::Document& document, SnapKinds kinds, const Vector2& pick,
                              const std::optional<Vector2>& base) {
    if (kinds == 0 || !pick.is_finite()) return std::nullopt;
    engine::Drawing& drawing = document.drawing();
    const double reach = pickTolerance(document);
    std::optional<SnapSearch::Found> found;
    const auto look = [&](doc::SpatialIndex& index, const engine::ViewportEntity* viewport) {
        const double scale = viewport != nullptr ? viewport->viewScale : 1.0;
        const Vector2 at = viewport != nullptr ? viewport->toModel(pick) : pick;
        const double around = reach / scale;
        if (!at.is_finite() || !std::isfinite(around) || !(around > 0.0)) return;
        SnapSearch search(at, around, kinds);
        if (base) search.setBase(viewport != nullptr ? viewport->toModel(*base) : *base);
        const double axis = drawing.ucs.xAxis.angle() - (viewport != nullptr ? viewport->viewTwist : 0.0);
        search.setAxis(axis);
        search.setLayerTest([&](engine::Name name) {
            const engine::Layer* layer = drawing.layers.find(name);
            return (layer == nullptr || layer->isVisible()) && (viewport == nullptr || !viewport->isFrozenHere(name));
        });
        for (const engine::Entity* entity : index.query(search.window()))
            if (viewport != nullptr ? showsIn(drawing, *viewport, *entity) : isShown(drawing, *entity))
                search.add(*entity);
        auto here = search.result();
        if (!here) return;
        if (viewport != nullptr) {
            here->point = viewport->toPaper(here->point);
            here->closeness *= scale;
            here->distance *= scale;
        }
        if (!found || SnapSearch::isBetter(*here, *found, reach)) found = here;
    };
    look(document.spatialIndex(), nullptr);
    if (const engine::ViewportEntity* viewport = viewportAt(document, pick))
        look(document.spatialIndex(drawing.modelSpace()), viewport);
    if (!found || !found->point.is_finite()) return std::nullopt;
    return found->point;
}

}  // namespace kova::cmd
