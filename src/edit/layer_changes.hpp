#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

using LayerNames = std::vector<engine::Name>;

/// The layers of a name list with wild cards, each once; nothing, after a line that says why, when one of its names
/// matches none.
std::optional<LayerNames> matchLayers(const engine::Drawing& drawing, std::string_view list,
                                      const std::function<void(const std::string&)>& message);

/// Changes these layers, as part of the open group. Layers that are gone are passed over.
void editLayers(doc::Document& document, const LayerNames& names, const std::function<void(engine::Layer&)>& change);

/// An answer to a question for a layer: an object on it, or names.
struct LayerAnswer {
    Answer::Kind kind = Answer::Kind::Enter;  ///< Enter, Keyword, Object or Text (names)
    std::string word;                         ///< Keyword: in upper case
    LayerNames layers;                        ///< Object: one; Text: those that match
    std::uint64_t id = 0;                     ///< Object
    math::Vector2 point;                      ///< Object: where it was picked

    bool is(std::string_view keyword) const { return kind == Answer::Kind::Keyword && word == keyword; }
};
/// Asks for an object by a point or L, on a locked layer, too. With `names`, names of layers can be typed as well.
Task<LayerAnswer> askLayerOf(Ask& ask, doc::Document& document, std::string prompt, std::string keywords, bool names);
/// Asks for layer names until some match; empty: Enter.
Task<LayerNames> askLayerNames(Ask& ask, doc::Document& document, std::string prompt);

/// The layers of these objects, each once, in the order of the ids.
LayerNames layersOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids);

/// Number of objects by layer (key of the name) in all spaces and blocks.
std::unordered_map<const void*, std::size_t> objectsByLayer(const engine::Drawing& drawing);

/// Why a layer cannot go: it is "0", "Defpoints", current or of an external reference. Empty: it can.
std::string whyLayerStays(const engine::Drawing& drawing, engine::Name name);

/// Puts these objects onto a layer, as part of the open group; gives how many were on another one.
std::size_t putOnLayer(doc::Document& document, const std::vector<std::uint64_t>& ids, engine::Name layer);
/// Puts all that refers to these layers (objects and attributes in all spaces and blocks, extended data, layers frozen
/// in viewports) onto another one, as part of the open group. Gives the number of objects.
std::size_t mergeLayers(doc::Document& document, const LayerNames& from, engine::Name to);
/// Erases what is on these layers in all spaces and blocks, attributes as well, as part of the open group. Gives the
/// number of objects.
std::size_t eraseOnLayers(doc::Document& document, const LayerNames& names);

}  // namespace kova::cmd
