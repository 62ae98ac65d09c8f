#pragma once

#include <cmath>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/model/drawing.hpp"
#include "engine/kinds/all.hpp"
#include "engine/symbols/external_reference.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/groups/group_writer.hpp"
#include "io/progress.hpp"

namespace kova::io::dxf {

/// The space that an entity is written into.
struct Target {
    std::uint64_t owner = 0;  ///< block record
    bool paper = false;
};

/// Common properties that a kind's native groups carry; the others go into own data.
enum NativeCommon : unsigned { kNoCommon = 0, kElevation = 1, kThickness = 2, kNormal = 4 };

/// Own data of one record on its way to the file.
struct OwnData {
    std::string text;  ///< empty: none
    std::string_view application;
    std::uint64_t dictionary = 0;  ///< the record's extension dictionary; 0: none
    bool inDictionary = false;     ///< the text stands there
    OwnScope scope;
};

/// What a file cannot hold is left out.
inline bool finite(double v) { return std::isfinite(v); }
inline bool finite(const math::Vector2& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

/// Makes the whole file. The sections are built in an order that lets later ones collect what earlier ones need:
/// spaces and objects first, then header, classes and tables, which list what was used.
class Writer {
public:
    Writer(const engine::Drawing& drawing, DxfSaveReport& report, bool forDwg = false, Progress* progress = nullptr);

    void run();
    /// The file's text in pieces, in order.
    std::vector<std::string_view> pieces() const;

private:
    friend class PictureSink;

    // Handles (writer.cpp) ------------------------------------------------------------------------------------
    std::uint64_t newHandle();
    /// The handle that is wanted when nothing else has it, else a new one.
    std::uint64_t reserveHandle(std::uint64_t wanted);
    void noteHandle(std::uint64_t handle) { highest_ = std::max(highest_, handle); }
    void assignHandles();
    void noteFollowers();

    // Names (writer_names.cpp) ----------------------------------------------------------------------------------
    using HandleMap = std::unordered_map<const void*, std::uint64_t>;
    /// A record that is named but missing gets a handle and is remembered for the tables.
    std::uint64_t recordHandle(HandleMap& map, std::vector<engine::Name>& missing, engine::Name name);
    std::uint64_t linetypeHandle(engine::Name name) { return recordHandle(linetypes_, missingLinetypes_, name); }
    std::uint64_t textStyleHandle(engine::Name name);
    std::uint64_t dimStyleHandle(engine::Name name);
    std::uint64_t layerHandle(engine::Name name) { return recordHandle(layers_, missingLayers_, name); }
    std::uint64_t blockHandle(engine::Name name);
    /// The block of an arrow; 0 for the closed filled one.
    std::uint64_t arrowHandle(engine::Name name);
    struct MLineStyleRecord;
    const MLineStyleRecord& mlineStyle(const engine::MLineEntity& mline);
    std::uint64_t imageDefinition(const engine::ImageEntity& image, std::uint64_t imageHandle, std::uint64_t& reactor);
    /// The name as the file may hold it: characters that names must not have are replaced.
    std::string_view symbol(engine::Name name);
    /// Texts that are taken, folded, and the last number that was put behind each.
    struct NumberedTexts {
        std::unordered_set<std::string> names;
        std::unordered_map<std::string, std::size_t> last;
    };
    /// The text, or the text with "_" and a number from 2 on, that is not taken yet; takes it.
    static std::string freeName(const std::string& wanted, NumberedTexts& taken);
    bool isPlain(engine::Name name) { return symbol(name).data() == name.view().data(); }
    void linetypeName(int code, engine::Name name);
    void textStyleName(int code, engine::Name name);
    void dimStyleName(int code, engine::Name name);

    // Own data, extended data (writer_own.cpp) ------------------------------------------------------------------
    /// `native` are the common properties that the kind's groups carry, `own` the fields that they do not.
    OwnData gather(const engine::Entity& entity, unsigned native, const FieldKeys& own = {});
    OwnData gatherText(std::string text, std::string_view application, std::uint64_t owner);
    template <class Record>
    OwnData gatherRecord(const Record& record, const FieldKeys& keys, std::uint64_t owner,
                         std::string_view application = kOwnRecordApplication) {
        return gatherText(ownDataOf(record, keys), application, owner);
    }
    OwnData placeholderMark() const;
    /// The extension dictionary of a record, made when there is none yet.
    std::uint64_t extensionDictionary(OwnData& own, std::uint64_t owner);
    void extensionGroup(std::uint64_t dictionary);
    /// Writes the text behind the plain groups of the record that was begun last, or finishes the one in the
    /// dictionary; `parts` are the records that will follow it.
    void ownXdata(const OwnData& own, std::string_view parts = {});
    void userXdata(const engine::XData& xdata);
    void xdataItem(const engine::XDataItem& item);
    void application(std::string_view name);
    void xrecordText(std::string_view text);

    // Sections ----------------------------------------------------------------------------------------------------
    void headerSection();
    void headerVariable(std::string_view name);
    void classesSection();
    void tablesSection();
    void tableHead(std::string_view name, std::uint64_t handle, std::size_t count, std::uint64_t dictionary = 0);
    void recordHead(std::string_view type, std::uint64_t handle, std::uint64_t table, std::string_view marker,
                    const OwnData& own, int handleCode = 5);
    void viewportTable();
    void linetypeTable();
    void linetypeRecord(const engine::Linetype& linetype, const OwnData& own);
    void layerTable();
    void layerRecord(const engine::Layer& layer, const OwnData& own);
    void styleTable();
    void styleRecord(const engine::TextStyle& style, const OwnData& own);
    void viewTable();
    void ucsTable();
    void appIdTable();
    void dimStyleTable();
    void dimStyleRecord(const engine::DimStyle& style, const OwnData& own);
    void blockRecordTable();
    void blockRecord(std::string_view name, std::uint64_t handle, std::uint64_t layout, bool explodable, bool uniform,
                     const OwnData& own);
    void spaces();
    void missingBlocks();
    void blockBegin(std::string_view name, std::uint64_t record, bool paper, int flags, const math::Vector2& base,
                    std::string_view path, std::string_view description);
    void blockEnd(std::uint64_t record, bool paper);
    void entities(const engine::EntityList& list, const Target& target);

    // Objects (writer_objects.cpp, writer_layouts.cpp, writer_drawing.cpp) -----------------------------------------
    using Entries = std::vector<std::pair<std::string, std::uint64_t>>;
    void objectsSection();
    /// What hangs on records of all sections, once these are written, and the end of the file.
    void finishObjects();
    void objectHead(std::string_view type, std::uint64_t handle, std::uint64_t owner, std::uint64_t dictionary = 0);
    void dictionary(std::uint64_t handle, std::uint64_t owner, const Entries& entries, bool hardOwner);
    void groups();
    void layoutObjects();
    void plotSettings(const engine::PageSetup& setup, std::string_view name, bool model);
    void namedPageSetups();
    void mlineStyles();
    void mleaderStyles();
    void mleaderStyle(const engine::MLeaderStyle& style, std::uint64_t handle, const OwnData& own);
    /// The style of a multileader or a table whose own style is missing; made when there is none at all.
    std::uint64_t firstMLeaderStyle();
    void lineLook(const engine::MLeaderLineLook& look);
    void attributeValues(const engine::MLeaderEntity& mleader, const engine::Block* block);
    std::uint64_t firstTableStyle();
    void tableStyles();
    void tableStyle(const engine::TableStyle& style, std::uint64_t handle, const OwnData& own);
    void scales();
    void variables();
    void drawingProperties();
    void images();
    void layerStates();
    void extensionDictionaries();
    using NamedObjects = std::vector<std::pair<const engine::DictionaryEntry*, std::uint64_t>>;
    void namedObjects(Entries& root, NamedObjects& named);
    void clipObjects(const engine::BlockReferenceEntity& insert, std::uint64_t filter, std::uint64_t owner);
    void dictionaryEntry(const engine::DictionaryEntry& entry, std::uint64_t handle, std::uint64_t owner, int depth);
    std::string drawingRecord();
    static std::string blockOwnData(const engine::Block& block);
    void dataSection();

    // Entities ------------------------------------------------------------------------------------------------------
    /// False when the entity cannot be written; nothing of it is in the file then.
    bool entity(const engine::Entity& entity, const Target& target);
    void head(std::string_view type, const engine::Entity& entity, const Target& target, const OwnData& own);
    void tail(const engine::Entity& entity, const OwnData& own, std::string_view parts = {});
    /// The same for an entity whose record others follow, which write() writes: own data may contradict them, too.
    template <class Write>
    void tailAndParts(const engine::Entity& entity, const OwnData& own, const Write& write) {
        if (own.text.empty() && !own.inDictionary) {
            tail(entity, own);
            write();
            return;
        }
        GroupWriter parts;
        GroupWriter* const whole = std::exchange(out_, &parts);
        write();
        out_ = whole;
        tail(entity, own, parts.view());
        out_->append(parts.view());
        report_.replacedNumbers += parts.replacedNumbers();
    }
    void thickness(const engine::Entity& entity);
    void normal(const engine::Entity& entity);

    bool write(const engine::LineEntity& e, const Target& t);
    bool write(const engine::CircleEntity& e, const Target& t);
    bool write(const engine::ArcEntity& e, const Target& t);
    bool write(const engine::PolylineEntity& e, const Target& t);
    bool write(const engine::PointEntity& e, const Target& t);
    bool write(const engine::TextEntity& e, const Target& t);
    bool write(const engine::MTextEntity& e, const Target& t);
    bool write(const engine::HatchEntity& e, const Target& t);
    bool write(const engine::DimensionEntity& e, const Target& t);
    bool write(const engine::BlockReferenceEntity& e, const Target& t);
    bool write(const engine::ImageEntity& e, const Target& t);
    bool write(const engine::SplineEntity& e, const Target& t);
    bool write(const engine::EllipseEntity& e, const Target& t);
    bool write(const engine::XlineEntity& e, const Target& t);
    bool write(const engine::RayEntity& e, const Target& t);
    /// What XLINE and RAY share: a point and a unit direction under the kind's own name and marker.
    bool writeUnbounded(const engine::Entity& e, const Target& t, std::string_view type, std::string_view marker,
                        const math::Vector2& from, const math::Vector2& dir);
    bool write(const engine::LeaderEntity& e, const Target& t);
    bool write(const engine::MLineEntity& e, const Target& t);
    bool write(const engine::MLeaderEntity& e, const Target& t);
    bool write(const engine::TableEntity& e, const Target& t);
    bool write(const engine::WipeoutEntity& e, const Target& t);
    bool write(const engine::RegionEntity& e, const Target& t);
    bool write(const engine::ToleranceEntity& e, const Target& t);
    bool write(const engine::AttributeDefinitionEntity& e, const Target& t);
    bool write(const engine::ViewportEntity& e, const Target& t);
    std::int32_t countedNumber(const engine::ViewportEntity& e, const Target& t);
    bool write(const engine::Face3DEntity& e, const Target& t);
    bool write(const engine::Polyline3DEntity& e, const Target& t);
    bool write(const engine::MeshEntity& e, const Target& t);
    bool write(const engine::Solid3DEntity& e, const Target& t);
    bool write(const engine::Solid2DEntity& e, const Target& t);
    bool write(const engine::PolyfaceEntity& e, const Target& t);
    bool write(const engine::ShapeEntity& e, const Target& t);

    /// The AcDbText part that texts, attributes and their definitions share, up to the second marker.
    void textPart(const engine::Entity& e, const engine::TextLine& line, std::string_view content,
                  const std::optional<engine::AttributePlane>& plane = {});
    void attribute(const engine::BlockAttribute& a, const engine::BlockReferenceEntity& insert, const Target& t);
    void clip(const engine::BlockReferenceEntity& insert, OwnData& own);
    void sequenceEnd(std::uint64_t owner, const engine::Entity& e, const Target& t);
    void vertexHead(std::uint64_t owner, const engine::Entity& e, const Target& t, std::string_view marker);
    /// VERTEX records of an old-style polyline, all with the same flags.
    void vertices(std::span<const math::Vector3> points, int flags, const engine::Entity& e, const Target& t,
                  std::string_view marker);
    void polylineHead(const engine::Entity& e, const Target& t, const OwnData& own, std::string_view marker);
    void hatchLoop(const engine::HatchLoop& loop, const std::vector<std::uint64_t>& sources = {});
    void hatchEdge(const engine::HatchEdge& edge);
    void hatchPattern(const engine::HatchEntity& e);
    void hatchGradient(const engine::HatchGradient& gradient);
    void longText(int moreCode, int lastCode, std::string_view content);
    void mtextXdata(const engine::MTextEntity& e);
    void rawColor(int code, const engine::Color& color);
    void dimensionOverrides(const engine::DimensionEntity& e);
    /// An anonymous block with the picture that an entity emits; gives its name.
    std::string picture(const engine::Entity& entity, std::string_view prefix, std::uint64_t& record);
    void splinePart(const engine::SplineEntity& e);

    const engine::Drawing& drawing_;
    const engine::SavedRecords saved_;
    DxfSaveReport& report_;
    ProgressCounter progress_;
    const bool forDwg_;  ///< fields whose groups DWG has no place for go into own data

    // The text. Anonymous blocks come while other blocks and entities are being written.
    GroupWriter front_;
    GroupWriter blocks_;
    GroupWriter pictures_;
    GroupWriter entities_;
    GroupWriter objects_;
    GroupWriter* out_ = nullptr;
    std::size_t recordStart_ = 0;  ///< in the text of *out_: where the record began that own data may belong to
    TextDecoder decoder_;

    std::uint64_t next_ = 0;
    std::uint64_t highest_ = 0;
    std::unordered_set<std::uint64_t> reserved_;

    // Tables and fixed objects.
    struct TableHandles {
        std::uint64_t viewports, linetypes, layers, styles, views, ucs, appIds, dimStyles, blockRecords;
    } tables_{};
    struct ObjectHandles {
        std::uint64_t root, groups, layouts, mlineStyles, mleaderStyles, tableStyles, images, plotStyleNames, plotStyle,
            plotSettings, scales, variables, properties, drawing, layerTableDictionary, layerStates;
    } fixed_{};
    HandleMap linetypes_, layers_, styles_, dimStyles_, blockRecords_, mleaderStyles_, tableStyles_;
    std::vector<engine::Name> missingLinetypes_, missingLayers_, missingStyles_, missingDimStyles_, missingBlocks_;
    std::unordered_map<std::string, std::uint64_t> shapeStyles_;  ///< by file: STYLE records of shape files

    struct Space {
        const engine::Layout* layout;  ///< null: model space, or a stand-in for a drawing without layouts
        std::string blockName;
        std::string name;
        std::uint64_t record;
        std::uint64_t object;
        int tab;
        std::uint64_t lastViewport;
        std::int32_t viewports = 0;  ///< without the sheet's
        bool hasSheet = false;
    };
    std::vector<Space> spaces_;  ///< model space first, then the active layout, then the others

    struct Picture {
        std::string name;
        std::uint64_t record;
    };
    std::vector<Picture> anonymous_;
    std::size_t nextPicture_ = 0;

    struct MLineStyleRecord {
        std::string name;
        std::uint64_t handle;
        const engine::MLineEntity* sample;  ///< null: the standard style
    };
    std::vector<MLineStyleRecord> mlineStyles_;
    std::unordered_map<std::string, std::size_t> mlineStyleIndex_;  ///< by folded name and look
    NumberedTexts mlineNames_;
    std::unordered_map<const void*, engine::Name> fontStyles_;  ///< the first text style of each font file

    struct ImageDefinition {
        std::string path;
        std::int32_t width, height;
        std::uint64_t handle;
        std::vector<std::pair<std::uint64_t, std::uint64_t>> reactors;  ///< reactor, image
    };
    std::vector<ImageDefinition> images_;
    std::unordered_map<std::string, std::size_t> imageIndex_;
    /// Handles of the hatches that follow an entity, by the entity's handle.
    std::unordered_map<std::uint64_t, std::vector<std::uint64_t>> hatchesOf_;

    /// What hangs on a record through its extension dictionary.
    struct Extension {
        std::uint64_t handle;
        std::uint64_t owner;
        std::vector<std::pair<std::string, std::string>> records;  ///< key, own data text
        const engine::BlockReferenceEntity* clip = nullptr;
    };
    std::vector<const engine::DictionaryEntry*> otherObjects_;  ///< named objects that go into the drawing's record
    std::vector<Extension> extensions_;
    std::unordered_map<std::uint64_t, std::size_t> extensionIndex_;  ///< by dictionary handle

    struct Body {
        std::uint64_t owner;
        std::string_view bytes;
    };
    std::vector<Body> bodies_;

    std::vector<std::string> applications_;
    std::unordered_set<const void*> applicationKeys_;
    std::unordered_map<const std::string*, std::string> cleanNames_;
    std::unordered_map<const void*, std::string> cleanOf_;  ///< by the key of the name
    NumberedTexts cleanTaken_;
    engine::Name lastName_;
    bool lastPlain_ = true;
    engine::Name lastApplication_;
    std::unordered_map<std::string_view, std::size_t> classCounts_;
};

}  // namespace kova::io::dxf
