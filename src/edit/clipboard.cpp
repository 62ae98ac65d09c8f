#include "edit/clipboard.hpp"

#include "edit/array_items.hpp"
#include "edit/new_entities.hpp"
#include "edit/drawing_transfer.hpp"
#include "edit/entity_copies.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd {

using engine::Entity;
using math::Matrix4;
using math::Vector2;

Clipboard& Clipboard::instance() {
    static Clipboard clipboard;
    return clipboard;
}

std::size_t Clipboard::copy(doc::Document& document, const std::vector<std::uint64_t>& ids, const Vector2& base) {
    const std::vector<Entity*> entities = entitiesInOrder(document, ids);
    if (entities.empty()) return 0;
    content_ = extractDrawing(document.drawing(), {entities.begin(), entities.end()}, {});
    base_ = base;
    return entities.size();
}

std::unique_ptr<doc::Document> Clipboard::fresh() const {
    std::vector<const Entity*> entities;
    for (const Entity& entity : content_->drawing().modelSpace()) entities.push_back(&entity);
    return extractDrawing(content_->drawing(), entities, {});
}

std::vector<std::uint64_t> Clipboard::paste(doc::Document& document, const Vector2& at) const {
    if (empty()) return {};
    const std::unique_ptr<doc::Document> source = fresh();
    const double factor = unitFactor(source->drawing(), document.drawing());
    return importEntities(
        document, source->drawing(),
        Matrix4::translation(at) * Matrix4::scaling(factor, factor, factor) * Matrix4::translation(-base_));
}

std::vector<std::uint64_t> Clipboard::pasteInPlace(doc::Document& document) const {
    if (empty()) return {};
    const std::unique_ptr<doc::Document> source = fresh();
    return importEntities(document, source->drawing(), {});
}

Entity* Clipboard::pasteAsBlock(doc::Document& document, const Vector2& at) const {
    if (empty()) return nullptr;
    const std::unique_ptr<doc::Document> source = fresh();
    source->drawing().basePoint = base_;
    engine::Name name;
    char text[24];
    for (std::uint64_t number = document.drawing().nextHandle;; ++number) {
        std::snprintf(text, sizeof text, "A$C%08llX", static_cast<unsigned long long>(number));
        name = engine::Name(text);
        if (document.drawing().findBlock(name) == nullptr) break;
    }
    const double factor = unitFactor(source->drawing(), document.drawing());
    if (!importAsBlock(document, source->drawing(), name, factor).empty()) return nullptr;
    auto reference = std::make_unique<engine::BlockReferenceEntity>(name, at);
    applyCurrentValues(document, *reference);
    return &document.addEntity(std::move(reference));
}

Vector2 lowerLeft(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids) {
    const math::Bounds2 box = boundsOf(drawing, ids);
    return box.is_empty() ? Vector2{} : box.min;
}

}  // namespace kova::cmd
