#include "kdraw/database/dxf_file_input.hpp"

#include <algorithm>
#include <charconv>

#include "kdraw/database/database.hpp"
#include "kdraw/groups/dxf_fields.hpp"
#include "kdraw/entities/entity_kinds.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/objects/control.hpp"
#include "kdraw/database/record_codec.hpp"
#include "strings/case_fold.hpp"

namespace kdraw {

namespace {

struct TableRow {
    std::string_view name;
    std::uint16_t control;  ///< type code of the control object
    Table table;
};
constexpr TableRow kTables[] = {
    {"VPORT", 0x40, Table::Viewport},   {"LTYPE", 0x38, Table::Linetype},      {"LAYER", 0x32, Table::Layer},
    {"STYLE", 0x34, Table::Style},      {"VIEW", 0x3C, Table::View},           {"UCS", 0x3E, Table::Ucs},
    {"APPID", 0x42, Table::AppId},      {"DIMSTYLE", 0x44, Table::DimStyle},   {"BLOCK_RECORD", 0x30, Table::Block},
};

/// The groups of a text, one after the other.
class Lines {
public:
    explicit Lines(std::string_view text) : text_(text) {}
    std::size_t position() const { return at_; }
    void seek(std::size_t place) { at_ = place; }
    std::size_t line() const {
        return 1 + static_cast<std::size_t>(std::count(text_.begin(), text_.begin() + static_cast<long>(at_), '\n'));
    }

    bool next(int& code, std::string_view& value) {
        std::string_view head;
        if (!take(head) || !take(value)) return false;
        while (!head.empty() && head.front() == ' ') head.remove_prefix(1);
        code = -1;
        std::from_chars(head.data(), head.data() + head.size(), code);
        return code >= 0;
    }
    bool atEnd() const { return at_ >= text_.size(); }

private:
    bool take(std::string_view& line) {
        if (at_ >= text_.size()) return false;
        const std::size_t end = text_.find('\n', at_);
        const std::size_t stop = end == std::string_view::npos ? text_.size() : end;
        line = text_.substr(at_, stop - at_);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        at_ = stop + 1;
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

class FileInput {
public:
    FileInput(std::string_view text, Database& database)
        : lines_(text), database_(database), record_(database) {}

    std::string run() {
        if (!readRecord()) return damaged();
        bool ended = false;
        while (!ended) {
            if (type_ == "EOF") return finish();
            if (type_ == "SECTION") {
                record_.rewind();
                const std::string section(record_.find(2) ? record_.text() : std::string_view());
                // The variables name table records: they are read when these are known.
                if (section == "HEADER") header_ = record_.groups();
                const std::size_t place = position_;
                if (section == "TABLES") {
                    nameRecords();
                    lines_.seek(place);
                    pending_ = false;
                }
                if (!readSection(section)) return damaged();
            }
            ended = !readRecord();
        }
        return damaged();
    }

private:
    std::string damaged() const { return "The DXF text ends or is damaged at line " + std::to_string(lines_.line()) + "."; }

    /// The next record: its type and groups; false at the end or on damage.
    bool readRecord() {
        int code = 0;
        std::string_view value;
        if (!pending_ && (!lines_.next(code, pendingType_) || code != 0)) return false;
        type_ = pendingType_;
        pending_ = false;
        record_.clear();
        for (;;) {
            const std::size_t before = lines_.position();
            if (!lines_.next(code, value)) return type_ == "EOF";
            if (code == 0) {
                pendingType_ = value;
                pending_ = true;
                nextPosition_ = before;
                break;
            }
            record_.add(code, value);
        }
        record_.rewind();
        position_ = nextPosition_;
        return true;
    }

    /// The records of the tables name each other: their names are known before they are read.
    void nameRecords() {
        while (readRecord() && type_ != "ENDSEC" && type_ != "EOF") {
            for (const TableRow& row : kTables) {
                if (row.name != type_) continue;
                if (!record_.findAnywhere(row.table == Table::DimStyle ? 105 : 5)) continue;
                const Handle handle = record_.handle();
                if (record_.findAnywhere(2)) database_.nameRecord(row.table, record_.decoded(), handle);
                database_.reserveHandles(handle);
            }
        }
    }

    bool readSection(std::string_view section) {
        while (readRecord()) {
            if (type_ == "ENDSEC") return true;
            if (section == "TABLES")
                readTable();
            else if (section == "BLOCKS")
                readBlockRecords();
            else if (section == "ENTITIES")
                readEntity(nullptr);
            else if (section == "OBJECTS")
                readObject(kindNamed(type_));
            else if (section == "ACDSDATA")
                readDataStorage();
        }
        return false;
    }

    /// The object of the present record; null when its kind is not known or its groups are wrong.
    Object* readObject(const ObjectKind* kind, Handle owner = 0) {
        if (kind == nullptr) {
            database_.skipped.push_back({0, 0, false, std::string(type_)});
            return nullptr;
        }
        std::unique_ptr<Object> object = kind->make();
        object->type = kind->type;
        readCommonGroups(record_, *object);
        DxfReadFields fields(record_);
        record_.rewind();
        object->describe(fields);
        if (fields.failed()) {
            database_.skipped.push_back({object->handle, kind->type, kind->entity, kind->dxfName});
            return nullptr;
        }
        readExtendedGroups(record_, *object);
        if (owner != 0) object->owner = owner;
        const Handle wanted = object->handle;
        Object& added = database_.add(std::move(object), wanted);
        if (kind->type == 0) added.type = classNumber(*kind);
        return &added;
    }

    std::uint16_t classNumber(const ObjectKind& kind) {
        for (ClassRecord& record : database_.classes)
            if (record.dxfName == kind.dxfName) {
                ++record.instances;
                return static_cast<std::uint16_t>(record.number);
            }
        database_.classes.push_back(classOf(kind, static_cast<std::uint16_t>(500 + database_.classes.size())));
        database_.classes.back().instances = 1;
        return static_cast<std::uint16_t>(database_.classes.back().number);
    }

    static Entity* entityOf(Object* object) {
        return object != nullptr && object->isEntity() ? static_cast<Entity*>(object) : nullptr;
    }

    void readTable() {
        if (type_ == "ENDTAB") return;
        if (type_ == "TABLE") {
            control_ = nullptr;
            if (!record_.findAnywhere(2)) return;
            const std::string_view name = record_.text();
            for (const TableRow& row : kTables) {
                if (row.name != name) continue;
                for (const auto list : {objectKinds()})
                    for (const ObjectKind& kind : list)
                        if (kind.type == row.control) control_ = dynamic_cast<Control*>(readObject(&kind));
                if (control_ != nullptr) control_->owner = 0;
            }
            return;
        }
        if (control_ == nullptr) return;
        Object* object = readObject(kindNamed(type_), control_->handle);
        if (object == nullptr) return;
        auto* record = dynamic_cast<TableRecord*>(object);
        if (auto* linetypes = dynamic_cast<LinetypeControl*>(control_)) {
            const std::string name = kova::strings::upperCase(record == nullptr ? "" : record->name);
            if (name == "BYBLOCK") linetypes->byBlock = object->handle;
            if (name == "BYLAYER") linetypes->byLayer = object->handle;
            if (name == "BYBLOCK" || name == "BYLAYER") return;
        }
        if (auto* blocks = dynamic_cast<BlockControl*>(control_)) {
            const std::string name = kova::strings::upperCase(record == nullptr ? "" : record->name);
            if (name == "*MODEL_SPACE") blocks->modelSpace = modelSpace_ = object->handle;
            if (name == "*PAPER_SPACE") blocks->paperSpace = paperSpace_ = object->handle;
            if (name == "*MODEL_SPACE" || name == "*PAPER_SPACE") return;
        }
        control_->records.push_back(object->handle);
    }

    std::uint8_t modeOf(Handle space) const {
        return space != 0 && space == modelSpace_ ? 2 : space != 0 && space == paperSpace_ ? 1 : 0;
    }

    void readBlockRecords() {
        if (type_ == "BLOCK") {
            block_ = nullptr;
            record_.findAnywhere(2);
            const std::string name = record_.decoded();
            block_ = database_.as<BlockHeader>(database_.recordNamed(Table::Block, name));
            if (block_ == nullptr) return;
            block_->name = name;
            if (record_.findAnywhere(70)) {
                const std::int64_t flags = record_.integer();
                block_->anonymous = (flags & 1) != 0;
                block_->hasAttributes = (flags & 2) != 0;
                block_->isXref = (flags & 4) != 0;
                block_->isOverlay = (flags & 8) != 0;
            }
            record_.enter("AcDbBlockBegin");
            DxfReadFields fields(record_);
            fields.bd3(10, block_->base);
            fields.text(1, block_->xrefPath);
            fields.text(4, block_->description);
            if (auto* begin = entityOf(readObject(kindNamed("BLOCK"), block_->handle))) {
                begin->mode = modeOf(block_->handle);
                block_->block = begin->handle;
            }
        } else if (type_ == "ENDBLK") {
            if (block_ == nullptr) return;
            if (auto* end = entityOf(readObject(kindNamed("ENDBLK"), block_->handle))) {
                end->mode = modeOf(block_->handle);
                block_->endBlock = end->handle;
            }
            block_ = nullptr;
        } else if (block_ != nullptr) {
            readEntity(block_);
        }
    }

    void readEntity(BlockHeader* block) {
        if (type_ == "SEQEND") {
            auto* sequence = parent_;
            parent_ = nullptr;
            if (sequence == nullptr) return;
            auto* end = entityOf(readObject(kindNamed(type_), sequence->handle));
            if (end == nullptr) return;
            end->mode = 0;
            if (Handle* place = sequence->seqEnd()) *place = end->handle;
            return;
        }
        const bool part = type_ == "VERTEX" || type_ == "ATTRIB";
        if (part && parent_ == nullptr) return;
        const ObjectKind* kind = entityKindOf(type_, record_);
        auto* entity = entityOf(readObject(kind, part ? parent_->handle : 0));
        if (entity == nullptr) {
            if (!part) parent_ = nullptr;
            if (!database_.skipped.empty()) database_.skipped.back().entity = true;
            return;
        }
        if (part) {
            entity->mode = 0;
            if (std::vector<Handle>* owned = parent_->owned()) owned->push_back(entity->handle);
            return;
        }
        parent_ = entity->owned() != nullptr ? entity : nullptr;
        BlockHeader* space = block;
        if (space == nullptr) {
            // Entities of one owner come one behind the other.
            if (entity->owner != lastOwner_) {
                lastOwner_ = entity->owner;
                lastSpace_ = database_.as<BlockHeader>(entity->owner);
            }
            space = lastSpace_;
        }
        if (space == nullptr) {
            record_.findAnywhere(67);
            const bool paper = record_.peek() == 67 && record_.integer() != 0;
            space = database_.as<BlockHeader>(paper ? paperSpace_ : modelSpace_);
        }
        if (space == nullptr) return;
        entity->owner = space->handle;
        entity->mode = modeOf(space->handle);
        space->owned.push_back(entity->handle);
    }

    void readDataStorage() {
        if (type_ != "ACDSRECORD") return;
        Handle owner = 0;
        bool modeler = false;
        std::string bytes;
        for (std::size_t i = 0; i < record_.groups().size(); ++i) {
            record_.setCursorAnywhere(i);
            if (record_.peek() == 2) modeler = record_.text() == "ASM_Data";
            if (record_.peek() == 320) owner = record_.handle();
            if (record_.peek() == 310 && modeler) appendHex(bytes, record_.text());
        }
        if (owner != 0 && !bytes.empty()) database_.modelerData[owner] = std::move(bytes);
    }

    std::string finish() {
        record_.clear();
        for (const DxfInput::Group& group : header_) record_.add(group.code, group.value);
        record_.rewind();
        readHeaderGroups(database_.header, record_);
        for (const auto& [handle, bytes] : database_.modelerData)
            if (Object* object = database_.find(handle)) object->hasBinaryData = true;
        return {};
    }

    Lines lines_;
    std::vector<DxfInput::Group> header_;
    Database& database_;
    DxfInput record_;
    std::string_view type_;
    std::string_view pendingType_;
    bool pending_ = false;
    std::size_t position_ = 0, nextPosition_ = 0;
    Control* control_ = nullptr;
    BlockHeader* block_ = nullptr;
    Entity* parent_ = nullptr;
    Handle lastOwner_ = 0;
    BlockHeader* lastSpace_ = nullptr;
    Handle modelSpace_ = 0, paperSpace_ = 0;
};

}  // namespace

std::string databaseFromDxf(std::string_view text, Database& database) { return FileInput(text, database).run(); }

}  // namespace kdraw
