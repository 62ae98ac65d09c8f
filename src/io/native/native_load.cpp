#include <exception>
#include <unordered_set>

#include "engine/libraries/standard_records.hpp"
#include "io/file_content.hpp"
#include "io/json/json_parser.hpp"
#include "io/native/native_file.hpp"
#include "io/native/native_sections.hpp"
#include "io/json/record_reader.hpp"
#include "io/progress.hpp"

namespace kova::io::native {

namespace {

using engine::Drawing;
using engine::Entity;
using engine::EntityList;
using engine::Name;
using Index = JsonTree::Index;

/// Everything that a file may hold besides blocks, entities and layouts.
constexpr std::string_view kSections[] = {"format",
                                          "properties",
                                          "layers",
                                          "currentLayer",
                                          "layerFilters",
                                          "shapeFiles",
                                          "basePointX",
                                          "basePointY",
                                          "limits",
                                          "snapBase",
                                          "groups",
                                          "textStyles",
                                          "currentTextStyle",
                                          "linetypes",
                                          "currentLinetype",
                                          "dimStyles",
                                          "currentDimStyle",
                                          "dimStyleOverrides",
                                          "dimStyleNameOverrides",
                                          "mleaderStyles",
                                          "currentMLeaderStyle",
                                          "tableStyles",
                                          "currentTableStyle",
                                          "nextHandle",
                                          "hatchPatterns",
                                          "objectDictionary",
                                          "appIds",
                                          "ucsList",
                                          "currentUcs",
                                          kUcsInForceKey,
                                          "activeLayout",
                                          "tilemode",
                                          "currentColor",
                                          "systemVariables",
                                          "layerStates",
                                          "layerStateMasks",
                                          "namedViews",
                                          "annotationScales",
                                          "namedPageSetups"};

/// Builds the drawing while the file is parsed, and finishes it from the tree afterwards.
class Loader final : public RecordSink {
public:
    Loader(Drawing& drawing, LoadNotes& notes, Progress* progress)
        : drawing_(drawing), notes_(notes), reader_(tree_), progress_(progress), firstHandle_(drawing.nextHandle) {}
    ~Loader() override;
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    std::string load(std::string_view text);

    bool wants(std::string_view topLevelKey) override {
        if (std::find(std::begin(kSections), std::end(kSections), topLevelKey) != std::end(kSections)) return true;
        if (topLevelKey != "version") notes_.leftOut.add("section \"" + std::string(topLevelKey) + '"');
        return false;
    }
    void beginBlocks() override {}
    void beginLayouts() override;
    void beginBlock() override;
    void endBlock(Index record) override;
    void beginLayout() override;
    void endLayout(Index record) override;
    void entity(Index record) override;

private:
    /// An entity whose handle is settled when all handles of the file are known.
    struct Unsettled {
        EntityList* list;
        std::unique_ptr<Entity> entity;
        std::uint64_t wanted;  ///< 0: any
    };

    std::unique_ptr<Entity> makeEntityOf(Index record);
    /// A part that was taken in while parsing must have been an array.
    void requireArray(Index object, std::string_view key) const;
    void noteHandle(std::uint64_t handle) { highestHandle_ = std::max(highestHandle_, handle); }
    void settleHandles();
    void ensureStandardRecords();
    void noteUnknownMembers();

    Drawing& drawing_;
    LoadNotes& notes_;
    JsonTree tree_;
    RecordReader reader_;
    ProgressCounter progress_;
    std::unique_ptr<engine::Block> block_;    ///< being read
    std::unique_ptr<engine::Layout> layout_;  ///< being read
    bool hasLayouts_ = false;                 ///< the file has some
    std::unordered_set<const void*> layoutNames_;
    unsigned nextLayoutNumber_ = 1;
    std::size_t ownerStart_ = 0;  ///< count of unsettled entities when the block began
    std::vector<Unsettled> unsettled_;
    std::uint64_t firstHandle_;  ///< the new drawing's counter
    std::uint64_t highestHandle_ = 0;
    std::string lastTypeName_;
    std::optional<engine::EntityType> lastType_;
    const void* lastLayer_ = nullptr;
    std::unordered_set<const void*> seenLayers_;
    std::vector<Name> usedLayers_;
};

Loader::~Loader() {
    // What was being read when loading failed leaves the drawing's indexes before it goes.
    if (block_) block_->entities.attach(nullptr);
    if (layout_) layout_->entities.attach(nullptr);
}

void Loader::requireArray(Index object, std::string_view key) const {
    const Index i = tree_.find(object, key);
    if (i != JsonTree::kNone && tree_.type(i) != JsonType::Array) throwTypeError(JsonType::Array, tree_.type(i));
}

void Loader::beginBlock() {
    if (block_) block_->entities.attach(nullptr);
    block_ = std::make_unique<engine::Block>(Name());
    // Entities enter the drawing's indexes at once, so that a handle used twice is noticed.
    block_->entities.attach(&drawing_);
    ownerStart_ = unsettled_.size();
}

void Loader::endBlock(Index record) {
    requireArray(record, "entities");
    reader_.enter(record);
    block_->describeHead(reader_);
    block_->describeDynamic(reader_);
    reader_.leave();
    noteHandle(block_->handle);
    const Name name = block_->name;
    const bool isSpace = name == "*Model_Space" || name == "*Paper_Space";
    if (name.empty() || isSpace || drawing_.findBlock(name) != nullptr) {
        // Nobody could refer to it: the first block of a name is the one that counts.
        notes_.leftOut.add("block of a name that is taken");
        unsettled_.resize(ownerStart_);
        block_->entities.attach(nullptr);
        block_.reset();
        return;
    }
    drawing_.putBlock(std::move(block_));
}

void Loader::beginLayouts() {
    // Those of the new drawing go, once.
    if (hasLayouts_) return;
    hasLayouts_ = true;
    while (!drawing_.layouts().empty()) drawing_.takeLayout(drawing_.layouts().back()->name);
}

void Loader::beginLayout() {
    if (layout_) layout_->entities.attach(nullptr);
    layout_ = std::make_unique<engine::Layout>(Name());
    layout_->entities.attach(&drawing_);
}

void Loader::endLayout(Index record) {
    requireArray(record, "entities");
    LayoutRecord members{*layout_};
    reader_.read(record, members);
    noteHandle(layout_->handle);
    // A layout must be reachable by its name; its entities are worth more than a name that is no good.
    const auto taken = [&](Name name) {
        return name.empty() || name == "Model" || !layoutNames_.insert(name.key()).second;
    };
    while (taken(layout_->name)) layout_->name = Name("Layout" + std::to_string(nextLayoutNumber_++));
    drawing_.putLayout(std::move(layout_), drawing_.layouts().size());
}

std::unique_ptr<Entity> Loader::makeEntityOf(Index record) {
    const Index type = tree_.find(record, "type");
    if (type == JsonTree::kNone) return nullptr;
    const std::string_view name = tree_.text(type);
    if (name != lastTypeName_) {
        lastTypeName_ = name;
        lastType_ = engine::entityTypeFromNativeName(name);
    }
    return lastType_ ? engine::makeEntity(*lastType_) : nullptr;
}

void Loader::entity(Index record) {
    progress_.count([](std::size_t done) { return std::pair(done, std::size_t{0}); });
    std::unique_ptr<Entity> entity = makeEntityOf(record);
    if (!entity) {
        const Index type = tree_.find(record, "type");
        notes_.skipped.add(type == JsonTree::kNone ? "without a type" : tree_.text(type));
        // Its members are told with it.
        for (Index i = JsonTree::first(record), last = tree_.end(record); i != last; i = tree_.next(i)) tree_.keyOf(i);
        return;
    }
    reader_.readEntity(record, *entity);
    if (entity->layer.key() != lastLayer_) {
        lastLayer_ = entity->layer.key();
        if (seenLayers_.insert(lastLayer_).second) usedLayers_.push_back(entity->layer);
    }
    EntityList& list = block_ ? block_->entities : layout_ ? layout_->entities : drawing_.modelSpace();
    const std::uint64_t wanted = entity->handle();
    noteHandle(wanted);
    Entity& placed = list.append(std::move(entity));
    if (placed.handle() == wanted) return;
    // None, or one that is taken: what it got may be another entity's further down. It keeps its place in the list.
    unsettled_.push_back({&list, list.take(placed), wanted});
}

void Loader::settleHandles() {
    const auto putBack = [&](Unsettled& u, std::uint64_t handle) {
        u.entity->setHandle(handle);
        u.list->putBack(std::move(u.entity));
    };
    // A handle may have been passed over because one without any held it for the moment.
    for (Unsettled& u : unsettled_)
        if (u.wanted != 0 && drawing_.findByHandle(u.wanted) == nullptr) putBack(u, u.wanted);
    for (Unsettled& u : unsettled_)
        if (u.entity) putBack(u, 0);
    unsettled_.clear();
}

/// The records that every drawing has, and layers that entities name.
void Loader::ensureStandardRecords() {
    engine::ensureStandardRecords(drawing_, usedLayers_);
    if (drawing_.activeLayout() == nullptr && !drawing_.layouts().empty())
        drawing_.activeLayoutName = drawing_.layouts().front()->name;
}

void Loader::noteUnknownMembers() {
    tree_.eachUnknownKey([&](std::string_view key, std::size_t count) {
        if (key != "version") notes_.leftOut.add("member \"" + std::string(key) + '"', count);
    });
    tellLeftOut(notes_.skipped, notes_.leftOut, notes_.lines);
}

/// The type of a valid JSON text's value, by its first character.
JsonType firstType(std::string_view text) {
    const std::size_t at = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    switch (at == std::string_view::npos ? 'n' : text[at]) {
        case '{':
            return JsonType::Object;
        case '[':
            return JsonType::Array;
        case '"':
            return JsonType::Text;
        case 't':
        case 'f':
            return JsonType::Boolean;
        case 'n':
            return JsonType::Null;
        default:
            return JsonType::Float;
    }
}

std::string Loader::load(std::string_view text) {
    const ParseOutcome outcome = parseDrawingText(text, tree_, *this);
    if (!outcome.syntaxError.empty()) return "JSON parse error: " + outcome.syntaxError;
    if (!outcome.otherError.empty()) return "Load error: " + outcome.otherError;
    try {
        const Index root = outcome.root;
        if (root == JsonTree::kNone) throwNoObject(firstType(text));
        const Index format = tree_.find(root, "format");
        if (format == JsonTree::kNone || tree_.text(format) != "kovacad") return "Not an KovaCAD file";

        const auto checkPart = [](const std::exception_ptr& problem) {
            if (problem) std::rethrow_exception(problem);
        };
        checkPart(outcome.otherSectionError);
        reader_.enter(root);
        readLeadingSections(tree_, root, reader_, drawing_);
        checkPart(outcome.blocksError);
        requireArray(root, "blocks");
        checkPart(outcome.entitiesError);
        requireArray(root, "entities");
        checkPart(outcome.layoutsError);
        requireArray(root, "layouts");
        readTrailingSections(tree_, root, reader_, drawing_);
        std::uint64_t nextHandle = 0;
        reader_.handle("nextHandle", nextHandle);
        drawing_.nextHandle = nextHandle != 0 ? nextHandle : std::max(firstHandle_, highestHandle_ + 1);
        settleHandles();
        ensureStandardRecords();
        noteUnknownMembers();
        return {};
    } catch (const std::exception& problem) {
        return std::string("Load error: ") + problem.what();
    }
}

}  // namespace

std::string loadNativeText(std::string_view text, Drawing& drawing, Progress* progress, LoadNotes* notes) {
    LoadNotes unused;
    try {
        return Loader(drawing, notes != nullptr ? *notes : unused, progress).load(text);
    } catch (const std::exception& problem) {
        return std::string("Load error: ") + problem.what();
    }
}

std::string loadNative(const std::string& path, Drawing& drawing, Progress* progress, LoadNotes* notes) {
    FileContent file;
    if (std::string error = file.open(path); !error.empty()) return error;
    return loadNativeText(file.view(), drawing, progress, notes);
}

}  // namespace kova::io::native
