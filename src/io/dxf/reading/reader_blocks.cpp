// Streams of entities: block definitions and the spaces.
#include "engine/entities/block_reference.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::EntityList;
using engine::Name;

namespace {

/// "*Model_Space", or "$MODEL_SPACE" as old files have it.
bool isModelSpace(Name name) {
    const std::string& n = name.folded();
    return n == "*model_space" || n == "$model_space" || n == "*model";
}
bool isPaperSpace(Name name) {
    const std::string& n = name.folded();
    return n.starts_with("*paper_space") || n.starts_with("$paper_space");
}

}  // namespace

void Reader::skip(std::string_view type, std::size_t count) {
    report_.skipped.add(type, count);
}

engine::Layout& Reader::paperSpace(Name blockName) {
    if (blockName == "$PAPER_SPACE") blockName = Name("*Paper_Space");
    engine::Layout*& known = paperByBlock_[blockName.key()];
    if (known != nullptr) return *known;
    // The layout's own name is told at the end of the file.
    engine::Layout* layout = known = drawing_.addLayout(Name("\x01" + blockName.str()));
    if (const auto record = blockRecords_.find(blockName.key()); record != blockRecords_.end())
        layout->handle = record->second.handle;
    papers_.emplace_back(blockName, layout);
    return *layout;
}

EntityList& Reader::spaceOf(const EntityTags& tags) {
    if (tags.owner != 0) {
        const Name owner = recordName(tags.owner);
        if (isPaperSpace(owner)) return paperSpace(owner).entities;
        if (isModelSpace(owner)) return drawing_.modelSpace();
    }
    return tags.paper ? paperSpace(Name("*Paper_Space")).entities : drawing_.modelSpace();
}

void Reader::place(std::unique_ptr<Entity> entity, const EntityTags& tags, EntityList& list) {
    if (tags.handle != 0 && tags.handle < kMaxHandle) entity->setHandle(tags.handle);
    noteHandle(tags.handle);
    if (drawing_.nextHandle <= highestHandle_) drawing_.nextHandle = highestHandle_ + 1;
    Entity& placed = list.append(std::move(entity));
    if (tags.dictionary != 0) {
        extensions_.push_back({placed.id(), tags.dictionary});
        if (own_) noteExtension(tags.dictionary, fingerprintOf(tags));
    }
    if (pendingImage_ != 0) images_.push_back({placed.id(), pendingImage_});
    if (pendingLeaderStyle_ != 0) leaderStyles_.push_back({placed.id(), pendingLeaderStyle_});
    if (!pendingAttributes_.empty()) leaderAttributes_.emplace_back(placed.id(), std::move(pendingAttributes_));
    if (pendingTableStyle_ != 0) tableStyles_.push_back({placed.id(), pendingTableStyle_});
    if (pendingMLineStyle_ != 0) mlineStyles_.push_back({placed.id(), pendingMLineStyle_});
    if (!pendingColumns_.empty()) columns_.push_back({placed.id(), std::move(pendingColumns_)});
}

void Reader::readEntity(EntityList* list) {
    progress_.count([&](std::size_t) { return std::pair(reader_.tags().position(), reader_.tags().size()); });
    const EntityTags tags = partTags(record_);
    if (tags.type == "SEQEND") return;
    if (tags.type == "ATTRIB") {
        // Its reference did not announce it.
        EntityList& space = list != nullptr ? *list : spaceOf(tags);
        Entity* last = space.last();
        engine::BlockAttribute attribute;
        unusable_ = false;
        if (last != nullptr && last->type() == engine::EntityType::BlockReference && readAttribute(tags, *last, attribute))
            static_cast<engine::BlockReferenceEntity*>(last)->attributes.push_back(std::move(attribute));
        else
            skip(tags.type);
        return;
    }
    const Builder builder = builderOf(tags.type);
    if (builder == nullptr || !record_.complete) {
        // A record that the end of the text cut off may lack anything.
        noteHandle(tags.handle);
        skip(tags.type);
        return;
    }
    unusable_ = false;
    pendingImage_ = pendingLeaderStyle_ = pendingTableStyle_ = pendingMLineStyle_ = 0;
    pendingColumns_.clear();
    pendingAttributes_.clear();
    partsPrint_ = 0;
    std::unique_ptr<Entity> entity = (this->*builder)(tags);
    if (entity) {
        readCommon(tags, *entity);
        readXdata(tags, *entity);
    }
    if (!entity || unusable_) {
        skip(tags.type);
        return;
    }
    place(std::move(entity), tags, list != nullptr ? *list : spaceOf(tags));
}

void Reader::readBlock(const Record& record) {
    const EntityTags head = partTags(record);
    Name blockName;
    math::Vector2 base;
    std::int64_t flags = 0;
    std::string path;
    std::string description;
    unusable_ = false;
    for (const Tag& tag : head.all) {
        if (axis(tag, 10, base)) continue;
        switch (tag.code) {
            case 2:
                blockName = name(tag);
                break;
            case 3:
                if (blockName.empty()) blockName = name(tag);
                break;
            case 1:
                path = text(tag);
                break;
            case 4:
                description = text(tag);
                break;
            case 70:
                flags = tag.integer();
                break;
            default:
                break;
        }
    }
    noteHandle(head.handle);
    EntityList* list = nullptr;
    bool drop = false;
    if (isModelSpace(blockName)) {
        list = &drawing_.modelSpace();
    } else if (isPaperSpace(blockName)) {
        list = &paperSpace(blockName).entities;
    } else {
        engine::Block* block = drawing_.addBlock(blockName);
        if (block == nullptr) {
            // Nobody can refer to it: no name, or the name of an earlier one.
            drop = true;
            leaveOut("BLOCK");
        } else {
            list = &block->entities;
            block->base = base;
            block->description = std::move(description);
            if ((flags & 4) != 0) {
                block->xrefType = (flags & 8) != 0 ? engine::XrefType::Overlay : engine::XrefType::Attach;
                block->xrefPath = std::move(path);
                block->xrefStatus = engine::XrefStatus::Unresolved;
            }
            if (const auto found = blockRecords_.find(blockName.key()); found != blockRecords_.end()) {
                block->handle = found->second.handle;
                block->explodable = found->second.explodable;
                block->scaleUniform = found->second.uniform;
            }
        }
    }
    while (reader_.next(record_)) {
        if (record_.type == "ENDBLK") {
            for (const Tag& tag : record_.tags)
                if (tag.code == 5) noteHandle(tag.handle());
            break;
        }
        if (record_.type == "BLOCK" || endsSection(record_)) {
            reader_.unread();
            break;
        }
        if (!drop)
            readEntity(list);
        else
            skip(record_.type);
    }
    if (blockName.empty() || drop || isModelSpace(blockName) || isPaperSpace(blockName)) return;
    const auto found = blockRecords_.find(blockName.key());
    if (found == blockRecords_.end() || found->second.own.empty()) return;
    engine::Block* block = drawing_.findBlock(blockName);
    struct Members {
        engine::Block& block;
        void describe(engine::FieldVisitor& v) {
            block.describeHead(v);
            block.describeDynamic(v);
        }
    } members{*block};
    const Name keep = block->name;
    applyOwnData(found->second.own, members);
    block->name = keep;
}

void Reader::readBlocks() {
    while (reader_.next(record_)) {
        if (endsSection(record_)) {
            if (record_.type != "ENDSEC") reader_.unread();
            return;
        }
        if (record_.type == "BLOCK") {
            readBlock(record_);
        } else if (record_.type != "ENDBLK") {
            skip(record_.type);
        }
    }
}

void Reader::readEntities() {
    while (reader_.next(record_)) {
        if (endsSection(record_)) {
            if (record_.type != "ENDSEC") reader_.unread();
            return;
        }
        readEntity(nullptr);
    }
}

}  // namespace kova::io::dxf
