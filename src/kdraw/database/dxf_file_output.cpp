#include "kdraw/database/dxf_file_output.hpp"

#include <unordered_set>

#include "kdraw/database/database.hpp"
#include "kdraw/groups/dxf_fields.hpp"
#include "kdraw/entities/viewport.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/objects/control.hpp"
#include "kdraw/database/record_codec.hpp"

namespace kdraw {

namespace {

constexpr std::uint16_t kMaxNumber = 32767;
/// Room for the groups of an object; what is not used costs nothing.
constexpr std::size_t kGroupsSize = 320;

}  // namespace

/// Writes one database.
class DxfFileOutput::Sections {
public:
    explicit Sections(Database& database) : database_(database), out_(database), fields_(out_) {
        for (const auto list : {entityKinds(), objectKinds()})
            for (const ObjectKind& kind : list)
                if (kind.type != 0 && kind.type < fixed_.size() && fixed_[kind.type] == nullptr)
                    fixed_[kind.type] = &kind;
        for (const auto& object : database.objects) object->visited = false;
    }

    void tablesPart() {
        findBlocks();
        numberViewports();
        out_.out().reserve(database_.objects.size() * kGroupsSize + 65536);
        begin("HEADER");
        writeHeaderGroups(database_.header, out_);
        for (const auto& [name, text] : database_.properties) {
            out_.word(9, "$" + name);
            out_.text(1, text);
        }
        end();
        begin("CLASSES");
        writeClassGroups(database_.classes, out_);
        end();
        begin("TABLES");
        tables();
        end();
    }
    void blocksPart() {
        begin("BLOCKS");
        for (BlockHeader* block : blocks_) writeBlock(*block);
        end();
    }
    void entitiesPart() {
        begin("ENTITIES");
        for (BlockHeader* block : {modelSpace_, paperSpace_})
            if (block != nullptr)
                for (const Handle handle : block->owned) writeEntity(handle, block == paperSpace_);
        end();
    }
    std::string objectsPart() {
        begin("OBJECTS");
        objects();
        end();
        dataStorage();
        out_.word(0, "EOF");
        return std::move(out_.out());
    }

private:
    void begin(std::string_view section) {
        out_.word(0, "SECTION");
        out_.word(2, section);
    }
    void end() { out_.word(0, "ENDSEC"); }

    const ObjectKind* kindOf(const Object& object) const {
        if (object.type < ClassRecord::kFirst) return fixed_[object.type];
        for (const ClassRecord& record : database_.classes)
            if (record.number == object.type) return kindNamed(record.dxfName);
        return nullptr;
    }
    /// The kinds of classes are looked up once for each number.
    const ObjectKind* cachedKind(const Object& object) {
        if (object.type < 500) return kindOf(object);
        const std::size_t place = object.type - 500U;
        if (place >= classKinds_.size()) classKinds_.resize(place + 1, {nullptr, false});
        auto& [kind, known] = classKinds_[place];
        if (!known) {
            kind = kindOf(object);
            known = true;
        }
        return kind;
    }

    void findBlocks() {
        for (const auto& object : database_.objects) {
            if (object->isEntity()) continue;
            auto* block = dynamic_cast<BlockHeader*>(object.get());
            if (block != nullptr) blocks_.push_back(block);
            if (auto* control = dynamic_cast<BlockControl*>(object.get())) {
                modelSpace_ = database_.as<BlockHeader>(control->modelSpace);
                paperSpace_ = database_.as<BlockHeader>(control->paperSpace);
            }
        }
    }

    /// Records have no numbers of viewports: the first one of a layout is the sheet, the others count on.
    void numberViewports() {
        for (BlockHeader* block : blocks_) {
            if (block == modelSpace_ || !block->isSpace()) continue;
            std::int32_t number = 0;
            for (const Handle handle : block->owned)
                if (auto* viewport = database_.as<ViewportEntity>(handle); viewport != nullptr && number < kMaxNumber)
                    viewport->number = ++number;
        }
    }

    void write(Object& object, const ObjectKind& kind, bool paper) {
        writeCommonGroups(out_, object, kind, paper);
        object.describe(fields_);
        writeExtendedGroups(out_, object);
    }

    void table(const char* name, Object* control, const std::vector<Handle>& records, std::string_view record) {
        out_.word(0, "TABLE");
        out_.word(2, name);
        if (control != nullptr) {
            out_.handle(5, control->handle);
            if (control->dictionary != 0) {
                out_.word(102, "{ACAD_XDICTIONARY");
                out_.handle(360, control->dictionary);
                out_.word(102, "}");
            }
        }
        out_.word(330, "0");
        out_.subclass("AcDbSymbolTable");
        out_.integer(70, static_cast<std::int64_t>(records.size()));
        std::unordered_set<Handle> seen;
        for (const Handle handle : records) {
            Object* object = database_.find(handle);
            const ObjectKind* kind = object == nullptr ? nullptr : cachedKind(*object);
            if (kind != nullptr && kind->dxfName == record && seen.insert(handle).second) write(*object, *kind, false);
        }
        out_.word(0, "ENDTAB");
    }

    void tables() {
        struct Row {
            const char* name;
            std::uint16_t control;
            const char* record;
        };
        // Type codes of the control objects.
        constexpr Row kRows[] = {{"VPORT", 0x40, "VPORT"}, {"LTYPE", 0x38, "LTYPE"},      {"LAYER", 0x32, "LAYER"},
                                 {"STYLE", 0x34, "STYLE"}, {"VIEW", 0x3C, "VIEW"},        {"UCS", 0x3E, "UCS"},
                                 {"APPID", 0x42, "APPID"}, {"DIMSTYLE", 0x44, "DIMSTYLE"}};
        for (const Row& row : kRows) {
            Control* control = nullptr;
            for (const auto& object : database_.objects)
                if (object->type == row.control) control = dynamic_cast<Control*>(object.get());
            std::vector<Handle> records;
            if (auto* linetypes = dynamic_cast<LinetypeControl*>(control))
                records = {linetypes->byBlock, linetypes->byLayer};
            if (control != nullptr) records.insert(records.end(), control->records.begin(), control->records.end());
            table(row.name, control, records, row.record);
        }
        Control* control = nullptr;
        for (const auto& object : database_.objects)
            if (object->type == 0x30) control = dynamic_cast<BlockControl*>(object.get());
        std::vector<Handle> records;
        for (const BlockHeader* block : blocks_) records.push_back(block->handle);
        table("BLOCK_RECORD", control, records, "BLOCK_RECORD");
    }

    void writeBlock(BlockHeader& block) {
        const bool space = &block == modelSpace_ || &block == paperSpace_;
        auto* head = database_.as<Entity>(block.block);
        out_.word(0, "BLOCK");
        if (block.block != 0) out_.handle(5, block.block);
        out_.handle(330, block.handle);
        out_.subclass("AcDbEntity");
        if (&block == paperSpace_) out_.integer(67, 1);
        out_.record(8, Table::Layer, head == nullptr ? 0 : head->layer);
        out_.subclass("AcDbBlockBegin");
        out_.text(2, block.name);
        out_.integer(70, (block.anonymous ? 1 : 0) | (block.hasAttributes ? 2 : 0) | (block.isXref ? 4 : 0) |
                             (block.isOverlay ? 8 : 0));
        out_.point(10, block.base);
        out_.text(3, block.name);
        out_.text(1, block.xrefPath);
        if (!block.description.empty()) out_.text(4, block.description);
        if (head != nullptr) writeExtendedGroups(out_, *head);
        if (!space)
            for (const Handle handle : block.owned) writeEntity(handle, false);
        auto* tail = database_.as<Entity>(block.endBlock);
        out_.word(0, "ENDBLK");
        if (block.endBlock != 0) out_.handle(5, block.endBlock);
        out_.handle(330, block.handle);
        out_.subclass("AcDbEntity");
        out_.record(8, Table::Layer, tail == nullptr ? 0 : tail->layer);
        out_.subclass("AcDbBlockEnd");
    }

    void writeEntity(Handle handle, bool paper) {
        auto* entity = database_.as<Entity>(handle);
        if (entity == nullptr) return;
        const ObjectKind* kind = cachedKind(*entity);
        // Each has one place, whatever damaged lists say.
        if (kind == nullptr || entity->visited) return;
        entity->visited = true;
        write(*entity, *kind, paper);
        std::vector<Handle>* owned = entity->owned();
        if (owned == nullptr || owned->empty()) return;
        for (const Handle part : *owned) {
            auto* piece = database_.as<Entity>(part);
            const ObjectKind* pieceKind = piece == nullptr ? nullptr : cachedKind(*piece);
            if (pieceKind == nullptr || piece->owned() != nullptr || piece->visited) continue;
            piece->visited = true;
            write(*piece, *pieceKind, paper);
        }
        out_.word(0, "SEQEND");
        if (entity->seqEnd() != nullptr && *entity->seqEnd() != 0) out_.handle(5, *entity->seqEnd());
        out_.handle(330, handle);
        out_.subclass("AcDbEntity");
        out_.record(8, Table::Layer, entity->layer);
    }

    void objects() {
        const Handle root = database_.header.namedObjects();
        if (Object* object = database_.find(root)) writeObject(*object);
        for (const auto& object : database_.objects)
            if (object->handle != root) writeObject(*object);
    }

    void writeObject(Object& object) {
        if (object.isEntity() || isTable(object.type)) return;
        if (const ObjectKind* kind = cachedKind(object)) write(object, *kind, false);
    }
    /// Control objects and records of tables.
    static bool isTable(std::uint16_t type) { return type >= 0x30 && type <= 0x47; }

    void dataStorage() {
        if (database_.modelerData.empty()) return;
        begin("ACDSDATA");
        for (const auto& [handle, bytes] : database_.modelerData) {
            out_.word(0, "ACDSRECORD");
            out_.integer(90, 1);
            out_.word(2, "AcDbDs::ID");
            out_.integer(280, 10);
            out_.handle(320, handle);
            out_.word(2, "ASM_Data");
            out_.integer(280, 15);
            out_.integer(94, static_cast<std::int64_t>(bytes.size()));
            out_.bytes(310, bytes);
        }
        end();
    }

    Database& database_;
    DxfOutput out_;
    DxfWriteFields fields_;
    std::array<const ObjectKind*, ClassRecord::kFirst> fixed_{};  ///< by type code
    std::vector<std::pair<const ObjectKind*, bool>> classKinds_;
    std::vector<BlockHeader*> blocks_;
    BlockHeader* modelSpace_ = nullptr;
    BlockHeader* paperSpace_ = nullptr;
};

DxfFileOutput::DxfFileOutput(Database& database) : sections_(std::make_unique<Sections>(database)) {}
DxfFileOutput::~DxfFileOutput() = default;
void DxfFileOutput::writeTables() { sections_->tablesPart(); }
void DxfFileOutput::writeBlocks() { sections_->blocksPart(); }
void DxfFileOutput::writeEntities() { sections_->entitiesPart(); }
std::string DxfFileOutput::finish() { return sections_->objectsPart(); }

std::string databaseToDxf(Database& database) {
    DxfFileOutput output(database);
    output.writeTables();
    output.writeBlocks();
    output.writeEntities();
    return output.finish();
}

}  // namespace kdraw
