#include "cmd/isolation.hpp"

#include <QVariant>
#include <memory>
#include <unordered_set>

namespace kova::cmd {

namespace {

constexpr const char* kIsolationProperty = "hidden one by one";

using Ids = std::shared_ptr<std::unordered_set<std::uint64_t>>;

}  // namespace

void noteIsolated(doc::Document& document, const std::vector<engine::Entity*>& entities) {
    Ids ids = document.property(kIsolationProperty).value<Ids>();
    if (!ids) {
        ids = std::make_shared<std::unordered_set<std::uint64_t>>();
        document.setProperty(kIsolationProperty, QVariant::fromValue(ids));
    }
    for (const engine::Entity* entity : entities) ids->insert(entity->id());
}

ShownForSaving::ShownForSaving(doc::Document& document) {
    const Ids ids = document.property(kIsolationProperty).value<Ids>();
    if (!ids || engine::sysVarInt(document.drawing(), "OBJECTISOLATIONMODE", 0) != 0) return;
    for (const std::uint64_t id : *ids) {
        engine::Entity* entity = document.drawing().findById(id);
        if (entity == nullptr || entity->visible) continue;
        entity->visible = true;
        shown_.push_back(entity);
    }
}

ShownForSaving::~ShownForSaving() {
    for (engine::Entity* entity : shown_) entity->visible = false;
}

}  // namespace kova::cmd
