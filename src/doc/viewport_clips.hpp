#pragma once

#include <QObject>
#include <unordered_map>
#include <unordered_set>

#include "doc/document.hpp"

namespace kova::doc {

/// Keeps viewports and the entities that bound them together: one moves, grows and goes with the other, and the copy of
/// a bounded viewport gets a border of its own. What it changes belongs to the group of the change that it follows.
///
/// It lives as a child of its document.
class ViewportClips final : public QObject, public engine::IDocumentReactor {
public:
    explicit ViewportClips(Document& document);

    void entityAdded(engine::Drawing& drawing, engine::Entity& entity) override;
    void entityModified(engine::Drawing& drawing, engine::Entity& entity) override;
    void entityErased(engine::Drawing& drawing, engine::Entity& entity) override;
    void groupClosing(engine::Drawing& drawing) override;
    void documentRestored(engine::Drawing& drawing) override;

private:
    void know(engine::Drawing& drawing);
    void index(const engine::Entity& viewport);
    void follow(engine::Drawing& drawing);
    void giveBorder(engine::Drawing& drawing, std::uint64_t viewportId);

    Document& document_;
    const engine::Drawing* known_ = nullptr;  ///< whose viewports the table holds
    /// Handle of a border to the handles of the viewports that were ever bounded by it.
    std::unordered_map<std::uint64_t, std::vector<std::uint64_t>> bounded_;
    std::unordered_set<std::uint64_t> changedBorders_;                      ///< handles
    std::unordered_set<std::uint64_t> changedViewports_;                    ///< handles
    std::vector<std::uint64_t> erasedBorders_;                              ///< handles
    std::vector<std::pair<std::uint64_t, std::uint64_t>> erasedViewports_;  ///< handle, and of its border
    std::vector<std::uint64_t> addedViewports_;                             ///< ids
    std::vector<std::uint64_t> added_;                                      ///< ids, while there are bounded viewports
    bool working_ = false;
};

}  // namespace kova::doc
