#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/reading/record_index.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/groups/lexer.hpp"
#include "io/dxf/groups/text_decoder.hpp"
#include "io/progress.hpp"

namespace kova::engine {
class HatchEntity;
struct MLeaderLineLook;
class MTextEntity;
}  // namespace kova::engine

namespace kova::io::dxf {

using Tags = std::span<const Tag>;

/// The groups of an entity's record, parted.
struct EntityTags {
    std::string_view type;
    Tags all;       ///< everything before the extended data
    Tags body;      ///< the groups of the kind: behind the common part, before embedded objects
    Tags embedded;  ///< of an embedded object
    Tags xdata;     ///< from the first 1001 on
    std::uint64_t handle = 0;
    std::uint64_t owner = 0;
    std::uint64_t dictionary = 0;  ///< extension dictionary
    bool paper = false;            ///< group 67
    bool attributesFollow = false;
};

/// Reads the groups of a record one after the other where their order matters.
class TagCursor {
public:
    explicit TagCursor(Tags tags) : tags_(tags) {}
    bool atEnd() const { return at_ >= tags_.size(); }
    const Tag& peek(std::size_t ahead = 0) const {
        static const Tag none{"", 0, -100};
        return at_ + ahead < tags_.size() ? tags_[at_ + ahead] : none;
    }
    const Tag& take() {
        const Tag& tag = peek();
        ++at_;
        return tag;
    }
    /// The next group when it has this code; null leaves the cursor where it is.
    const Tag* takeIf(std::int32_t code) { return peek().code == code && !atEnd() ? &take() : nullptr; }
    std::size_t left() const { return at_ < tags_.size() ? tags_.size() - at_ : 0; }

private:
    Tags tags_;
    std::size_t at_ = 0;
};

/// One load of a DXF file into a drawing. Records are built as they are met; what refers to objects that stand further
/// down is settled at the end, when objects are read again from where they stand in the text.
class Reader {
public:
    Reader(std::string_view text, engine::Drawing& drawing, DxfLoadReport& report, Progress* progress = nullptr);
    /// Error text, empty on success. Throws what the standard library throws when memory runs out.
    std::string run();

private:
    // reader.cpp: sections ------------------------------------------------------------------------------------
    void readSections();
    void skipSection();
    void indexObjects();
    void finish();
    void ensureRecords();
    void tellSkipped();
    // reader_left_out.cpp: what the drawing has no place for
    void noteUnreadObjects();
    void noteSetting(std::string_view name, const Tag& value);
    void noteRecordData(const Record& record);
    void noteCommonGroup(const Tag& tag);
    void leaveOut(std::string_view kind, std::size_t count = 1) { report_.leftOut.add(kind, count); }
    /// True while a record belongs to the section that is being read.
    static bool endsSection(const Record& record) {
        return record.type == "ENDSEC" || record.type == "SECTION" || record.type == "EOF";
    }

    // reader_header.cpp ---------------------------------------------------------------------------------------
    void readHeader(const Record& section);
    static bool isHeaderVariableRead(std::string_view name);
    struct HeaderValue;
    /// `ownRecord`: the drawing's own record has been read, and only what says something else counts.
    void applyHeader(bool ownRecord);
    bool headerName(const HeaderValue& value, bool ownRecord);
    bool namesMissingRecord(const HeaderValue& value) const;
    void deriveUniversalTimes(const std::array<double, 2>& before);
    void applyHeaderDimensions();

    // reader_tables.cpp ---------------------------------------------------------------------------------------
    void readTables();
    void indexTableRecord(const Record& record);
    void beginTable(std::string_view name);
    void readTableRecord(std::string_view table, const Record& record);
    void readLayer(const Record& record);
    void readLinetype(const Record& record);
    void readTextStyle(const Record& record);
    void readView(const Record& record);
    void readUcs(const Record& record);
    void readAppId(const Record& record);
    void readViewport(const Record& record);
    void readBlockRecord(const Record& record);
    void readDimStyle(const Record& record);
    /// The own data of a table record or object; empty when there is none. One that is too long for extended data stands
    /// in the extension dictionary under the application's name.
    OwnText ownData(const Record& record, std::string_view application = {});
    std::string ownTextIn(Tags tags) const;
    Fingerprint fingerprintOf(const EntityTags& tags) const;
    /// Counts the record that follows an entity's among what its own data may contradict.
    void notePart(const EntityTags& tags) {
        if (own_ && (!tags.xdata.empty() || tags.dictionary != 0))
            partsPrint_ += dxf::fingerprintOf(subRecord_.type, subRecord_.tags, decoder_).body;
    }
    /// Notes what a record says now, for own data in its extension dictionary, which is met at the end.
    void noteExtension(std::uint64_t dictionary, const Fingerprint& plain) {
        if (own_ && dictionary != 0) extensionPrints_.emplace(dictionary, plain);
    }

    // reader_blocks.cpp: streams of entities -------------------------------------------------------------------
    void readBlocks();
    void readBlock(const Record& record);
    void readEntities();
    /// Reads the record that stands in record_ with the records that belong to it and adds the entity.
    void readEntity(engine::EntityList* list);
    void place(std::unique_ptr<engine::Entity> entity, const EntityTags& tags, engine::EntityList& list);
    engine::EntityList& spaceOf(const EntityTags& tags);
    engine::Layout& paperSpace(engine::Name blockName);
    void skip(std::string_view type, std::size_t count = 1);

    // reader_entities.cpp: what all entities have ----------------------------------------------------------------
    EntityTags partTags(const Record& record);
    void readCommon(const EntityTags& tags, engine::Entity& entity);
    void readXdata(const EntityTags& tags, engine::Entity& entity);
    engine::XData xdataOf(Tags tags) const;
    void takeKnownXdata(engine::XData& data, const EntityTags& tags, engine::Entity& entity);
    std::unique_ptr<engine::Entity> buildEntity(const EntityTags& tags);

    using Builder = std::unique_ptr<engine::Entity> (Reader::*)(const EntityTags&);
    static Builder builderOf(std::string_view type);

    // Simple kinds
    std::unique_ptr<engine::Entity> buildLine(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildPoint(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildCircle(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildArc(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildEllipse(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildRay(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildXline(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildSolid(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildFace(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildShape(const EntityTags& tags);
    // reader_curves.cpp
    std::unique_ptr<engine::Entity> buildLwPolyline(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildSpline(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildMLine(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildSubdivisionMesh(const EntityTags& tags);
    /// The vertices stand in records of their own, which are read here.
    std::unique_ptr<engine::Entity> buildPolyline(const EntityTags& tags);
    // reader_texts.cpp
    std::unique_ptr<engine::Entity> buildText(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildAttDef(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildMText(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildTolerance(const EntityTags& tags);
    bool readAttribute(const EntityTags& tags, const engine::Entity& reference, engine::BlockAttribute& attribute);
    template <class Attribute>
    void takeParagraphs(const EntityTags& tags, Attribute& out, std::string& value, math::Vector2& position);
    struct TextGroups;
    /// Takes a group that all kinds of single-line text have; false for others.
    bool textGroup(const Tag& tag, TextGroups& groups);
    void takeMTextXdata(std::vector<engine::XDataItem>& items, engine::MTextEntity& text);
    void joinColumns();
    // reader_inserts.cpp
    std::unique_ptr<engine::Entity> buildInsert(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildImage(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildWipeout(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildViewport(const EntityTags& tags);
    void readOldViewport(const engine::XData& data, engine::Entity& entity);
    // reader_hatch.cpp
    std::unique_ptr<engine::Entity> buildHatch(const EntityTags& tags);
    bool readHatchLoop(TagCursor& cursor, engine::HatchEntity& hatch, bool associative);
    void dropKnownPattern(engine::HatchEntity& hatch);
    // reader_dimensions.cpp
    std::unique_ptr<engine::Entity> buildDimension(const EntityTags& tags);
    std::unique_ptr<engine::Entity> buildLeader(const EntityTags& tags);
    /// Sets the fields that an entity's own data holds.
    void applyEntityData(const OwnText& text, engine::Entity& entity);
    void takeDimensionOverrides(std::vector<engine::XDataItem>& items, engine::Entity& entity);
    // reader_mleader.cpp
    std::unique_ptr<engine::Entity> buildMLeader(const EntityTags& tags);
    void takeLineLook(const Tag& tag, engine::MLeaderLineLook& look);
    void takeOwnLook(const Tag& tag, engine::MLeaderStyle& own);
    void settleLeaderAttributes();
    // reader_table_entity.cpp
    std::unique_ptr<engine::Entity> buildTable(const EntityTags& tags);
    // reader_solids.cpp
    std::unique_ptr<engine::Entity> buildBody(const EntityTags& tags);
    void readDataStorage();

    // reader_objects.cpp: objects at the end ----------------------------------------------------------------------
    /// Reads an object again; false when there is none of that handle and type.
    bool objectAt(std::uint64_t handle, std::string_view type, Record& record) {
        return index_.object(handle, type, record);
    }
    /// The same for an object that belongs to one other; false for the second who asks.
    bool ownedObject(std::uint64_t handle, std::string_view type, Record& record) {
        return index_.ownedObject(handle, type, record);
    }
    std::span<const DictionaryItem> dictionary(std::uint64_t handle) { return index_.dictionary(handle); }
    std::uint64_t dictionaryEntry(std::uint64_t dictionary, std::string_view key) {
        return index_.entry(dictionary, key);
    }
    void readObjects();
    void readGroups(std::uint64_t dictionary);
    void readLayouts(std::uint64_t dictionary);
    void readPageSetups(std::uint64_t dictionary);
    void readScales(std::uint64_t dictionary);
    void readVariables(std::uint64_t dictionary);
    void readProperties(std::uint64_t xrecord);
    /// False when there is none.
    bool readDrawingRecord(std::uint64_t xrecord);
    void settleStated(const engine::NamedView& view, engine::Name layout);
    void readLayerStates();
    void readMLeaderStyles(std::uint64_t dictionary);
    void readTableStyles(std::uint64_t dictionary);
    void readPlotSettings(const Record& record, engine::PageSetup& setup);
    bool readOpaque(std::uint64_t handle, engine::DictionaryEntry& entry, int depth);
    /// The text of an own-data XRECORD; empty for the second who asks for it.
    std::string xrecordText(std::uint64_t handle);
    // reader_links.cpp: what entities refer to
    void settleExtensions();
    struct Link;
    void settleExtension(const Link& link, const DictionaryItem& item);
    void settleRecordExtensions();
    void settleClip(engine::BlockReferenceEntity& reference, std::uint64_t filter);
    void settleImages();
    void settleStyles();
    void settleBodies();
    void settleDrawOrder();
    void dropPictures();
    // reader_additions.cpp
    void settleViewports();
    void dropAdditions();

    // Helpers -------------------------------------------------------------------------------------------------
    /// A number of an entity; what is not finite makes the entity unusable.
    double real(const Tag& tag) {
        const double v = tag.real();
        if (v == v) return v;
        unusable_ = true;
        return 0.0;
    }
    /// An angle of the file, in degrees, as radians.
    double angle(const Tag& tag);
    std::int32_t small(const Tag& tag) const;
    std::string text(const Tag& tag) const { return decoder_.decode(tag.text()); }
    engine::Name name(const Tag& tag) const { return decoder_.name(tag.text()); }
    /// Sets one axis of a point whose first group is `base`; false for other codes.
    bool axis(const Tag& tag, std::int32_t base, math::Vector3& p) {
        if (tag.code == base)
            p.x = real(tag);
        else if (tag.code == base + 10)
            p.y = real(tag);
        else if (tag.code == base + 20)
            p.z = real(tag);
        else
            return false;
        return true;
    }
    bool axis(const Tag& tag, std::int32_t base, math::Vector2& p) {
        if (tag.code == base)
            p.x = real(tag);
        else if (tag.code == base + 10)
            p.y = real(tag);
        else
            return false;
        return true;
    }
    /// The name of the table record with a handle; empty when there is none.
    engine::Name recordName(std::uint64_t handle) const {
        const auto found = tableNames_.find(handle);
        return found == tableNames_.end() ? engine::Name() : found->second;
    }
    /// The group 210 of an object plane kind, thickness and elevation.
    void setPlane(engine::Entity& entity, const math::Vector3& normal, double thickness, double elevation);
    /// What the kinds of an object plane have: first point with its elevation, normal, thickness.
    struct PlaneGroups {
        math::Vector3 point;
        math::Vector3 normal{0, 0, 1};
        double thickness = 0.0;
    };
    /// Takes one of their groups; false for others.
    bool planeGroup(const Tag& tag, PlaneGroups& g) {
        if (axis(tag, 10, g.point) || axis(tag, 210, g.normal)) return true;
        if (tag.code == 38)
            g.point.z = real(tag);
        else if (tag.code == 39)
            g.thickness = real(tag);
        else
            return false;
        return true;
    }
    void setPlane(engine::Entity& entity, const PlaneGroups& g) {
        setPlane(entity, g.normal, g.thickness, g.point.z);
    }
    void noteHandle(std::uint64_t handle) {
        if (handle < kMaxHandle) highestHandle_ = std::max(highestHandle_, handle);
    }
    static constexpr std::uint64_t kMaxHandle = 0x7FFFFFFFFFFFFFFFULL;

    engine::Drawing& drawing_;
    DxfLoadReport& report_;
    RecordReader reader_;
    RecordIndex index_{reader_};
    ProgressCounter progress_;
    TextDecoder decoder_;
    Record record_;       ///< being read
    Record subRecord_;    ///< vertices, attributes
    int version_ = 1009;  ///< 1032 for AC1032
    bool own_ = false;    ///< written by this program
    bool unusable_ = false;
    bool complete_ = false;  ///< the end mark was found
    std::uint64_t highestHandle_ = 0;
    std::uint64_t seed_ = 0;

    struct HeaderValue {
        std::string name;
        std::vector<Tag> tags;
    };
    std::vector<HeaderValue> header_;
    std::unordered_map<std::uint64_t, engine::Name> tableNames_;
    std::unordered_map<std::uint64_t, engine::Name> shapeStyles_;       ///< STYLE records that are shape files
    std::unordered_map<const void*, std::uint64_t> blockDictionaries_;  ///< by block name: extension dictionary
    std::vector<engine::Name> placeholderBlocks_;
    struct BlockRecordData {
        std::uint64_t handle = 0;
        bool explodable = true;
        bool uniform = false;
        bool placeholder = false;
        OwnText own;
    };
    std::unordered_map<const void*, BlockRecordData> blockRecords_;
    std::uint64_t layerTableDictionary_ = 0;
    bool dimStylesRead_ = false;
    bool viewRead_ = false;
    std::unordered_set<const void*> appIdsSeen_;
    std::unordered_set<std::string> shapeFilesSeen_;
    enum class RecordKind : std::uint8_t { Layer, Linetype, TextStyle, View, Ucs, Block, DimStyle };
    /// Table records whose own data stands in an extension dictionary.
    struct RecordExtension {
        engine::Name name;
        std::uint64_t dictionary;
        RecordKind kind;
    };
    std::vector<RecordExtension> recordExtensions_;
    void noteRecordExtension(const Record& record, engine::Name name, RecordKind kind);

    /// What records say that the drawing's own record holds, too; empty where there is none.
    struct Stated {
        engine::Name leaderStyle;
        engine::Name tableStyle;
        std::string scale;
        std::optional<engine::DrawingProperties> properties;
    };
    Stated stated_;

    std::uint64_t rootDictionary_ = 0;
    std::uint64_t ownNextHandle_ = 0;  ///< the counter that the program's own record gives
    std::set<std::string> otherSettings_;  ///< of the file, with values that the drawing does not keep
    std::size_t sharedDictionaries_ = 0;  ///< entities whose extension dictionary is another one's
    std::size_t opaqueValues_ = 0;
    std::unordered_set<std::uint64_t> opaqueSeen_;
    std::vector<std::pair<engine::Name, engine::Layout*>> papers_;      ///< with the name of their block
    std::unordered_map<const void*, engine::Layout*> paperByBlock_;

    // What is settled at the end. Entities go by their id: one that is replaced by another object keeps it.
    struct Link {
        std::uint64_t entity;
        std::uint64_t handle;
    };
    /// The entity of a link while it is one of a class; null when it is gone.
    template <class Kind>
    Kind* linked(std::uint64_t id) const {
        return dynamic_cast<Kind*>(drawing_.findById(id));
    }
    std::vector<Link> extensions_;                                      ///< extension dictionaries
    std::vector<Link> images_;                                          ///< IMAGEDEF
    std::vector<Link> leaderStyles_;                                    ///< MLEADERSTYLE
    /// Multileaders and the ATTDEFs that their values belong to.
    std::vector<std::pair<std::uint64_t, std::vector<std::uint64_t>>> leaderAttributes_;
    std::vector<Link> tableStyles_;                                     ///< TABLESTYLE
    std::vector<Link> mlineStyles_;                                     ///< MLINESTYLE
    std::unordered_map<std::uint64_t, OwnText> ownMLines_;  ///< own data, to be applied over their styles
    std::unordered_map<std::uint64_t, Fingerprint> extensionPrints_;  ///< by extension dictionary
    std::uint64_t partsPrint_ = 0;  ///< of the records that follow the one that is read
    struct ColumnLink {
        std::uint64_t entity;
        std::vector<std::uint64_t> columns;
    };
    std::vector<ColumnLink> columns_;
    std::unordered_map<std::uint64_t, std::string> bodies_;  ///< modeller data by owner, from the data storage
    // Left by a builder for the entity that is being read
    std::uint64_t pendingImage_ = 0;
    std::uint64_t pendingLeaderStyle_ = 0;
    std::vector<std::uint64_t> pendingAttributes_;  ///< of the multileader being read
    math::Vector2 pendingTextPlace_;                ///< of the dimension being read
    std::uint64_t pendingTableStyle_ = 0;
    std::uint64_t pendingMLineStyle_ = 0;
    std::vector<std::uint64_t> pendingColumns_;
    std::vector<engine::Name> pictures_;  ///< blocks with the pictures of dimensions and tables

    std::unordered_set<const void*> layersSeen_;
    const void* lastLayer_ = nullptr;
    std::vector<engine::Name> usedLayers_;
};

}  // namespace kova::io::dxf
