// What entities refer to, settled when everything has been read: extension dictionaries, image files, clips, draw
// order, external references.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/image.hpp"
#include "engine/entities/region.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::BlockReferenceEntity;
using engine::Entity;
using engine::Name;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

/// What one entry of an entity's extension dictionary says.
void Reader::settleExtension(const Link& link, const DictionaryItem& item) {
    const std::string_view key = trimmed(item.key);
    Entity* entity = drawing_.findById(link.entity);
    if (entity == nullptr) return;
    if (isOwnApplication(key)) {
        const std::string json = xrecordText(item.handle);
        if (json.empty()) return;
        if (key == ownApplication(engine::EntityType::Region) && entity->type() == engine::EntityType::Solid3D) {
            // A region with many vertices; its record alone looks like a body's.
            auto region = std::make_unique<engine::RegionEntity>();
            region->copyCommonFrom(*entity);
            Entity* placed = region.get();
            entity->owner()->replace(*entity, std::move(region));
            entity = placed;
        }
        applyEntityData({json, extensionPrints_[link.handle]}, *entity);
    } else if (engine::equalNoCase(key, "ACAD_FILTER") && entity->type() == engine::EntityType::BlockReference) {
        settleClip(static_cast<BlockReferenceEntity&>(*entity), dictionaryEntry(item.handle, "SPATIAL"));
    }
}

void Reader::settleExtensions() {
    // A dictionary belongs to one object. What others find in it is not theirs, and would be read for each of them.
    std::unordered_map<std::uint64_t, bool> shared;
    const auto holdsData = [&](std::uint64_t handle) {
        const auto [known, fresh] = shared.try_emplace(handle, false);
        if (fresh)
            for (const DictionaryItem& item : dictionary(handle))
                known->second = known->second || isOwnApplication(trimmed(item.key)) ||
                                engine::equalNoCase(trimmed(item.key), "ACAD_FILTER");
        return known->second;
    };
    for (const Link& link : extensions_) {
        if (index_.claim(link.handle)) {
            for (const DictionaryItem& item : dictionary(link.handle)) settleExtension(link, item);
        } else if (holdsData(link.handle)) {
            ++sharedDictionaries_;
        }
    }
}

/// Long own data of table records.
void Reader::settleRecordExtensions() {
    for (const RecordExtension& extension : recordExtensions_) {
        if (!index_.claim(extension.dictionary)) continue;
        for (const DictionaryItem& item : dictionary(extension.dictionary)) {
            if (!isOwnApplication(trimmed(item.key))) continue;
            const std::string json = xrecordText(item.handle);
            if (json.empty()) continue;
            const auto apply = [&](auto* record) {
                if (record == nullptr) return;
                const Name keep = record->name;
                applyOwnData(OwnText{json, extensionPrints_[extension.dictionary]}, *record);
                record->name = keep;
            };
            switch (extension.kind) {
                case RecordKind::Layer:
                    apply(drawing_.layers.find(extension.name));
                    break;
                case RecordKind::Linetype:
                    apply(drawing_.linetypes.find(extension.name));
                    break;
                case RecordKind::TextStyle:
                    apply(drawing_.textStyles.find(extension.name));
                    break;
                case RecordKind::View:
                    apply(drawing_.namedViews.find(extension.name));
                    break;
                case RecordKind::Ucs:
                    apply(drawing_.ucsList.find(extension.name));
                    break;
                case RecordKind::DimStyle:
                    apply(drawing_.dimStyles.find(extension.name));
                    break;
                case RecordKind::Block: {
                    engine::Block* block = drawing_.findBlock(extension.name);
                    if (block == nullptr) break;
                    struct Members {
                        engine::Block& block;
                        void describe(engine::FieldVisitor& v) {
                            block.describeHead(v);
                            block.describeDynamic(v);
                        }
                    } members{*block};
                    const Name keep = block->name;
                    applyOwnData(OwnText{json, {}}, members);
                    block->name = keep;
                    break;
                }
            }
        }
    }
}

void Reader::settleClip(BlockReferenceEntity& reference, std::uint64_t filter) {
    Record record;
    if (filter == 0 || !ownedObject(filter, "SPATIAL_FILTER", record)) return;
    const OwnText own = ownData(record);
    const EntityTags tags = partTags(record);
    std::vector<Vector2> points;
    std::vector<double> matrix;
    bool enabled = true;
    std::int64_t front = 0;
    std::int64_t back = 0;
    unusable_ = false;
    for (const Tag& tag : tags.body) {
        switch (tag.code) {
            case 10:
                points.push_back({real(tag), 0.0});
                break;
            case 20:
                if (!points.empty()) points.back().y = real(tag);
                break;
            case 71:
                enabled = tag.integer() != 0;
                break;
            case 72:
                front = tag.integer();
                break;
            case 73:
                back = tag.integer();
                break;
            case 40:
                matrix.push_back(real(tag));
                break;
            default:
                break;
        }
    }
    if (points.size() < 2 || unusable_) return;
    // The distances of the front and back planes stand before the two matrices.
    const std::size_t planes = (front != 0 ? 1U : 0U) + (back != 0 ? 1U : 0U);
    if (matrix.size() >= 24 + planes)
        matrix.erase(matrix.begin(), matrix.begin() + static_cast<std::ptrdiff_t>(planes));
    Matrix4 toBlock;
    if (matrix.size() >= 12)
        for (std::size_t i = 0; i < 12; ++i) toBlock.m[i] = matrix[i];
    bool inverted = false;
    // An inverted clip keeps the user's boundary beside the ring that other programs draw.
    if (const std::uint64_t trip = dictionaryEntry(tags.dictionary, "ACAD_XREC_ROUNDTRIP");
        trip != 0 && ownedObject(trip, "XRECORD", record)) {
        std::vector<Vector2> user;
        std::vector<Vector2> ring;
        std::vector<Vector2>* list = nullptr;
        for (const Tag& tag : record.tags) {
            if (tag.code == 102) {
                const std::string_view mark = tag.trimmed();
                list = mark == "ACAD_INVERTEDCLIP_ROUNDTRIP"           ? &user
                       : mark == "ACAD_INVERTEDCLIP_ROUNDTRIP_COMPARE" ? &ring
                                                                       : nullptr;
            }
            if (list == nullptr) continue;
            if (tag.code == 10) list->push_back({real(tag), 0.0});
            if (tag.code == 20 && !list->empty()) list->back().y = real(tag);
        }
        const bool same = ring.size() == points.size() &&
                          std::equal(ring.begin(), ring.end(), points.begin(),
                                     [](const Vector2& a, const Vector2& b) { return a.near_equal(b, 1e-6); });
        if (same && user.size() >= 2) {
            points = std::move(user);
            inverted = true;
        }
    }
    reference.clipBoundary.clear();
    // Block coordinates of the file leave the base point out, those of the model count from the definition's origin.
    const engine::Block* block = drawing_.findBlock(reference.blockName);
    const Vector2 base = block != nullptr ? block->base : Vector2{};
    for (const Vector2& p : points) reference.clipBoundary.push_back(toBlock.transform_point(p));
    (void)base;
    reference.clipInverted = inverted;
    reference.clipEnabled = enabled;
    if (!own.empty()) applyOwnData(own, reference);
}

void Reader::settleImages() {
    Record record;
    // Many images may show one file.
    std::unordered_map<std::uint64_t, std::string> paths;
    for (const Link& link : images_) {
        auto* const image = linked<engine::ImageEntity>(link.entity);
        if (image == nullptr || !image->filePath.empty()) continue;
        const auto [path, fresh] = paths.try_emplace(link.handle);
        if (fresh && objectAt(link.handle, "IMAGEDEF", record)) {
            bool inside = false;
            for (const Tag& tag : record.tags) {
                if (tag.code == 100) inside = true;
                if (inside && tag.code == 1) path->second = text(tag);
            }
        }
        image->filePath = path->second;
    }
}

/// A table of sort handles overrides the order in which entities stand in the file.
void Reader::settleDrawOrder() {
    Record record;
    std::unordered_set<const engine::EntityList*> ordered;
    for (const auto& [key, extension] : blockDictionaries_) {
        const std::uint64_t sorter = dictionaryEntry(extension, "ACAD_SORTENTS");
        if (sorter == 0 || !ownedObject(sorter, "SORTENTSTABLE", record)) continue;
        const EntityTags tags = partTags(record);
        std::unordered_map<const Entity*, std::uint64_t> sortHandles;
        engine::EntityList* list = nullptr;
        Entity* entity = nullptr;
        for (const Tag& tag : tags.body) {
            if (tag.code == 331) {
                entity = drawing_.findByHandle(tag.handle());
                if (entity != nullptr && list == nullptr) list = entity->owner();
            } else if (tag.code == 5 && entity != nullptr) {
                if (entity->owner() == list) sortHandles[entity] = tag.handle();
                entity = nullptr;
            }
        }
        if (list == nullptr || sortHandles.empty() || !ordered.insert(list).second) continue;
        std::vector<Entity*> order = list->entities();
        const auto rank = [&](const Entity* e) {
            const auto found = sortHandles.find(e);
            return found != sortHandles.end() ? found->second : e->handle();
        };
        // Entities whose handles were made up stay where they are: they have no rank to go by.
        std::stable_sort(order.begin(), order.end(),
                         [&](const Entity* a, const Entity* b) { return rank(a) < rank(b); });
        list->reorder(order);
    }
}

/// Blocks that the program wrote for other readers only: pictures of dimensions and tables.
void Reader::dropPictures() {
    for (const Name blockName : placeholderBlocks_) drawing_.takeBlock(blockName);
}

}  // namespace kova::io::dxf
