#include "kdraw/database/completion.hpp"

#include <algorithm>
#include <cstdio>
#include <unordered_set>

#include "kdraw/database/dangling_references.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/entities/inserts.hpp"
#include "kdraw/entities/viewport.hpp"
#include "kdraw/objects/app_id.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/objects/control.hpp"
#include "kdraw/objects/dictionary.hpp"
#include "kdraw/objects/group.hpp"
#include "kdraw/objects/layer.hpp"
#include "kdraw/objects/layout.hpp"
#include "kdraw/objects/linetype.hpp"
#include "kdraw/objects/material.hpp"
#include "kdraw/objects/mleader_style.hpp"
#include "kdraw/objects/mline_style.hpp"
#include "kdraw/objects/small_objects.hpp"
#include "kdraw/objects/table_style.hpp"
#include "kdraw/objects/text_style.hpp"
#include "kdraw/objects/views.hpp"
#include "kdraw/objects/xrecord.hpp"
#include "kdraw/database/record_codec.hpp"
#include "strings/case_fold.hpp"

namespace kdraw {

namespace {

/// Classes that drawings list whether they have objects of them or not.
constexpr const char* kUsualClasses[] = {"ACDBDICTIONARYWDFLT", "ACDBPLACEHOLDER", "LAYOUT",      "DICTIONARYVAR",
                                         "TABLESTYLE",          "MATERIAL",        "VISUALSTYLE", "SCALE",
                                         "MLEADERSTYLE",        "CELLSTYLEMAP"};

/// Type codes of block references.
constexpr std::uint16_t kInsert = 7, kMInsert = 8;

class Completion {
public:
    explicit Completion(Database& database) : db_(database), h_(database.header), blank_(database.objects.empty()) {}

    void run() {
        classes();
        dropDanglingReferences(db_);
        controls();
        root();
        records();
        dictionaries();
        blocks();
        layouts();
        details();
        header();
        dates();
        identity();
        countClasses();
    }

private:
    /// A blank drawing has the customary handles.
    Handle wanted(Handle customary) const { return blank_ ? customary : 0; }

    std::uint16_t typeOf(const ObjectKind& kind) {
        if (kind.type != 0) return kind.type;
        for (const ClassRecord& record : db_.classes)
            if (record.dxfName == kind.dxfName) return record.number;
        db_.classes.push_back(classOf(kind, static_cast<std::uint16_t>(ClassRecord::kFirst + db_.classes.size())));
        return db_.classes.back().number;
    }
    template <class T>
    T& make(const char* dxfName, Handle owner, Handle customary = 0) {
        const ObjectKind& kind = *kindNamed(dxfName);
        auto made = std::make_unique<T>();
        made->type = typeOf(kind);
        made->owner = owner;
        T& object = *made;
        db_.add(std::move(made), wanted(customary));
        return object;
    }
    /// The object of a handle, or the first of its class.
    template <class T>
    T* firstOf(Handle known) {
        if (T* object = db_.as<T>(known)) return object;
        for (const auto& object : db_.objects)
            if (T* found = object->isEntity() ? nullptr : dynamic_cast<T*>(object.get())) return found;
        return nullptr;
    }

    /// Classes numbered without gaps; objects of kinds with a type of their own carry that.
    void classes() {
        std::vector<std::uint16_t> numbers(65536, 0);
        std::vector<ClassRecord> dense;
        for (const char* name : kUsualClasses) addClass(dense, name);
        for (const ClassRecord& record : db_.classes) {
            const ObjectKind* kind = kindNamed(record.dxfName);
            std::uint16_t number = kind != nullptr && kind->type != 0 ? kind->type : 0;
            bool listed = false;
            for (const ClassRecord& other : dense)
                if (other.dxfName == record.dxfName) {
                    listed = true;
                    if (number == 0) number = other.number;
                }
            if (!listed) {
                dense.push_back(record);
                dense.back().number = static_cast<std::uint16_t>(ClassRecord::kFirst + dense.size() - 1);
                if (number == 0) number = dense.back().number;
            }
            numbers[record.number] = number;
        }
        for (const auto& object : db_.objects)
            if (object->type >= ClassRecord::kFirst && numbers[object->type] != 0) object->type = numbers[object->type];
        db_.classes = std::move(dense);
    }
    static void addClass(std::vector<ClassRecord>& list, const char* name) {
        const ObjectKind* kind = kindNamed(name);
        if (kind != nullptr)
            list.push_back(classOf(*kind, static_cast<std::uint16_t>(ClassRecord::kFirst + list.size())));
    }

    template <class T>
    T& control(const char* name, Handle& known, Handle customary) {
        T* found = firstOf<T>(known);
        if (found == nullptr) found = &make<T>(name, 0, customary);
        found->owner = 0;
        known = found->handle;
        return *found;
    }
    void controls() {
        blocks_ = &control<BlockControl>("BLOCK_CONTROL", h_.blockControl, 1);
        layers_ = &control<LayerControl>("LAYER_CONTROL", h_.layerControl, 2);
        styles_ = &control<StyleControl>("STYLE_CONTROL", h_.styleControl, 3);
        linetypes_ = &control<LinetypeControl>("LTYPE_CONTROL", h_.linetypeControl, 5);
        control<ViewControl>("VIEW_CONTROL", h_.viewControl, 6);
        control<UcsControl>("UCS_CONTROL", h_.ucsControl, 7);
        viewports_ = &control<ViewportControl>("VPORT_CONTROL", h_.viewportControl, 8);
        applications_ = &control<AppIdControl>("APPID_CONTROL", h_.appIdControl, 9);
        dimStyles_ = &control<DimStyleControl>("DIMSTYLE_CONTROL", h_.dimStyleControl, 0xA);
    }

    void root() {
        root_ = db_.as<Dictionary>(h_.rootDictionary);
        for (const auto& object : db_.objects) {
            if (root_ != nullptr) break;
            auto* found = dynamic_cast<Dictionary*>(object.get());
            if (found != nullptr && found->owner == 0) root_ = found;
        }
        if (root_ == nullptr) root_ = &make<Dictionary>("DICTIONARY", 0, 0xC);
        root_->owner = 0;
        h_.rootDictionary = root_->handle;
    }

    /// The record of a name in a table, made when it is missing.
    template <class T>
    T& record(Control& table, Table kind, const char* dxfName, std::string_view name, Handle customary,
              bool listed = true) {
        T* found = nullptr;
        for (const Handle handle : table.records) {
            T* one = db_.as<T>(handle);
            if (one != nullptr && kova::strings::equalNoCase(one->name, name)) {
                found = one;
                break;
            }
        }
        if (found == nullptr) {
            found = &make<T>(dxfName, table.handle, customary);
            found->name = name;
            db_.nameRecord(kind, name, found->handle);
            if (listed) table.records.push_back(found->handle);
        }
        found->owner = table.handle;
        return *found;
    }
    LinetypeRecord& specialLinetype(Handle& handle, const char* name, Handle customary) {
        auto* found = db_.as<LinetypeRecord>(handle);
        if (found == nullptr)
            found = &record<LinetypeRecord>(*linetypes_, Table::Linetype, "LTYPE", name, customary, false);
        handle = found->handle;
        std::erase(linetypes_->records, handle);
        return *found;
    }
    void records() {
        layer0_ = &record<LayerRecord>(*layers_, Table::Layer, "LAYER", "0", 0x10);
        standardStyle_ = firstTextStyle();
        acad_ = &record<AppIdRecord>(*applications_, Table::AppId, "APPID", "ACAD", 0x12);
        specialLinetype(linetypes_->byBlock, "ByBlock", 0x14);
        specialLinetype(linetypes_->byLayer, "ByLayer", 0x15);
        continuous_ = &record<LinetypeRecord>(*linetypes_, Table::Linetype, "LTYPE", "Continuous", 0x16);
        if (continuous_->description.empty()) continuous_->description = "Solid line";
        dimStyle_ = &record<DimStyleRecord>(*dimStyles_, Table::DimStyle, "DIMSTYLE", "Standard", 0x27);
        activeView_ = &record<ViewportRecord>(*viewports_, Table::Viewport, "VPORT", "*Active", 0x94);
    }
    StyleRecord* firstTextStyle() {
        StyleRecord& style = record<StyleRecord>(*styles_, Table::Style, "STYLE", "Standard", 0x11);
        if (style.font.empty() && style.xdata.empty()) style.font = "txt";
        return &style;
    }

    /// An entry of a dictionary, made when it is missing.
    template <class T>
    T& entry(Dictionary& dictionary, const char* key, const char* dxfName, Handle customary) {
        T* found = db_.as<T>(dictionary.find(key));
        if (found == nullptr) {
            found = &make<T>(dxfName, dictionary.handle, customary);
            found->reactors.push_back(dictionary.handle);
            dictionary.set(key, found->handle);
        }
        return *found;
    }
    Dictionary& named(const char* key, Handle customary) {
        return entry<Dictionary>(*root_, key, "DICTIONARY", customary);
    }

    void dictionaries() {
        h_.groups = named("ACAD_GROUP", 0xD).handle;
        auto& styleNames = entry<DictionaryWithDefault>(*root_, "ACAD_PLOTSTYLENAME", "ACDBDICTIONARYWDFLT", 0xE);
        h_.plotStyleNames = styleNames.handle;
        normal_ = entry<Placeholder>(styleNames, "Normal", "ACDBPLACEHOLDER", 0xF).handle;
        if (styleNames.fallback == 0) styleNames.fallback = normal_;
        Dictionary& mlines = named("ACAD_MLINESTYLE", 0x17);
        h_.mlineStyles = mlines.handle;
        mlineStyle_ = &entry<MLineStyle>(mlines, "Standard", "MLINESTYLE", 0x18);
        if (mlineStyle_->name.empty()) mlineStyle_->name = "STANDARD";
        if (mlineStyle_->lines.empty()) {
            mlineStyle_->lines.resize(2);
            mlineStyle_->lines[0].offset = 0.5;
            mlineStyle_->lines[1].offset = -0.5;
        }
        h_.plotSettings = named("ACAD_PLOTSETTINGS", 0x19).handle;
        layoutNames_ = &named("ACAD_LAYOUT", 0x1A);
        h_.layouts = layoutNames_->handle;
        named("AcDbVariableDictionary", 0x66);
        Dictionary& materials = named("ACAD_MATERIAL", 0x72);
        h_.materials = materials.handle;
        for (const char* name : {"ByBlock", "ByLayer", "Global"}) {
            auto& material = entry<Material>(materials, name, "MATERIAL", 0);
            if (material.name.empty()) {
                material.name = name;
                material.refractionMap.source = 0;
            }
            if (kova::strings::equalNoCase(name, "ByLayer")) byLayerMaterial_ = material.handle;
            if (kova::strings::equalNoCase(name, "Global")) globalMaterial_ = material.handle;
        }
        h_.colors = named("ACAD_COLOR", 0x73).handle;
        Dictionary& tables = named("ACAD_TABLESTYLE", 0x86);
        if (tables.entries.empty()) {
            auto& style = entry<TableStyle>(tables, "Standard", "TABLESTYLE", 0x87);
            for (TableStyle::Row& row : style.rows) row.textStyle = standardStyle_->handle;
            style.makeCellStyles();
        }
        h_.visualStyles = named("ACAD_VISUALSTYLE", 0x99).handle;
        Dictionary& scales = named("ACAD_SCALELIST", 0xB6);
        if (scales.entries.empty()) entry<Scale>(scales, "A0", "SCALE", 0xB7);
        Dictionary& leaders = named("ACAD_MLEADERSTYLE", 0xD7);
        if (leaders.entries.empty()) {
            auto& style = entry<MLeaderStyle>(leaders, "Standard", "MLEADERSTYLE", 0xD8);
            style.linetype = linetypes_->byBlock;
            style.textStyle = standardStyle_->handle;
        }
        // Keys stand sorted in files; so do those of the root dictionary here.
        std::stable_sort(root_->entries.begin(), root_->entries.end(),
                         [](const Dictionary::Entry& a, const Dictionary::Entry& b) { return a.key < b.key; });
    }

    BlockHeader& space(Handle& handle, const char* name, Handle customary) {
        auto* found = db_.as<BlockHeader>(handle);
        if (found == nullptr)
            found = &record<BlockHeader>(*blocks_, Table::Block, "BLOCK_RECORD", name, customary, false);
        handle = found->handle;
        std::erase(blocks_->records, handle);
        return *found;
    }
    void blocks() {
        BlockHeader& model = space(blocks_->modelSpace, "*Model_Space", 0x1F);
        BlockHeader& paper = space(blocks_->paperSpace, "*Paper_Space", 0x58);
        marks(model, 2, 0x20, 0x21);
        marks(paper, 1, 0x5A, 0x5B);
        for (const Handle handle : blocks_->records)
            if (auto* block = db_.as<BlockHeader>(handle)) marks(*block, 0, 0, 0);
        // The references of each block.
        std::unordered_map<Handle, BlockHeader*> byHandle;
        for (const auto& object : db_.objects)
            if (auto* block = object->isEntity() ? nullptr : dynamic_cast<BlockHeader*>(object.get())) {
                block->inserts.clear();
                byHandle.emplace(block->handle, block);
            }
        for (const auto& object : db_.objects) {
            // A million objects are asked: plain kinds are none.
            if (!object->isEntity() || (object->type != kInsert && object->type != kMInsert && object->type < ClassRecord::kFirst))
                continue;
            auto* reference = dynamic_cast<BlockReference*>(object.get());
            if (reference == nullptr) continue;
            const auto block = byHandle.find(reference->block);
            if (block != byHandle.end()) block->second->inserts.push_back(reference->handle);
        }
    }
    /// The entities that begin and end a block.
    void marks(BlockHeader& block, std::uint8_t mode, Handle beginHandle, Handle endHandle) {
        block.owner = blocks_->handle;
        auto* begin = db_.as<BlockBeginEntity>(block.block);
        if (begin == nullptr) begin = &make<BlockBeginEntity>("BLOCK", block.handle, beginHandle);
        auto* end = db_.as<BlockEndEntity>(block.endBlock);
        if (end == nullptr) end = &make<BlockEndEntity>("ENDBLK", block.handle, endHandle);
        begin->name = block.name;
        block.block = begin->handle;
        block.endBlock = end->handle;
        for (Entity* mark : {static_cast<Entity*>(begin), static_cast<Entity*>(end)}) {
            mark->mode = mode;
            mark->owner = block.handle;
        }
    }

    void layouts() {
        auto* model = db_.as<BlockHeader>(blocks_->modelSpace);
        auto* paper = db_.as<BlockHeader>(blocks_->paperSpace);
        std::unordered_map<Handle, Layout*> known;
        std::int32_t lastTab = 0;
        int number = 1;
        std::unordered_set<std::string> taken;
        for (const Dictionary::Entry& one : layoutNames_->entries) taken.insert(kova::strings::foldCase(one.key));
        for (const Dictionary::Entry& one : layoutNames_->entries)
            if (auto* layout = db_.as<Layout>(one.value)) {
                known.emplace(layout->block, layout);
                lastTab = std::max(lastTab, layout->tab);
            }
        const auto pair = [&](BlockHeader& block, const char* name, Handle customary) {
            const auto found = known.find(block.handle);
            Layout* layout = found != known.end() ? found->second : nullptr;
            if (layout == nullptr) {
                std::string key = name;
                while (!taken.insert(kova::strings::foldCase(key)).second) key = "Layout" + std::to_string(++number);
                layout = &make<Layout>("LAYOUT", layoutNames_->handle, customary);
                layout->reactors.push_back(layoutNames_->handle);
                layoutNames_->entries.push_back({key, layout->handle});
                layout->name = key;
                const bool isModel = &block == model;
                layout->tab = isModel ? 0 : ++lastTab;
                layout->plotFlags = isModel ? 0x2EB0 : 0x02B0;
                layout->plotType = isModel ? 0 : 5;
                layout->scaleType = isModel ? 0 : 16;
            }
            layout->block = block.handle;
            layout->owner = layoutNames_->handle;
            block.layout = layout->handle;
            // The viewports of a sheet, and the view of the model tab.
            layout->viewports.clear();
            if (&block == model) {
                if (layout->activeViewport == 0) layout->activeViewport = activeView_->handle;
                return;
            }
            sheetFirst(block, *layout, &block == paper);
            for (const Handle handle : block.owned)
                if (db_.as<ViewportEntity>(handle) != nullptr) layout->viewports.push_back(handle);
            if (layout->activeViewport == 0 && !layout->viewports.empty())
                layout->activeViewport = layout->viewports.front();
        };
        pair(*model, "Model", 0x22);
        pair(*paper, "Layout1", 0x59);
        for (const Handle handle : blocks_->records) {
            auto* block = db_.as<BlockHeader>(handle);
            if (block == nullptr) continue;
            if (block->isSpace())
                pair(*block, "Layout2", 0);
            else
                block->layout = 0;
        }
    }

    /// The first viewport of a layout is its view of the whole sheet, in records: they have no numbers.
    void sheetFirst(BlockHeader& block, const Layout& layout, bool active) {
        const auto isViewport = [&](Handle handle) { return db_.as<ViewportEntity>(handle) != nullptr; };
        const auto first = std::find_if(block.owned.begin(), block.owned.end(), isViewport);
        if (first == block.owned.end()) return;
        bool numbered = false;
        const auto sheet = std::find_if(first, block.owned.end(), [&](Handle handle) {
            const auto* viewport = db_.as<ViewportEntity>(handle);
            if (viewport == nullptr) return false;
            numbered = numbered || viewport->number != 0;
            return viewport->number == kSheetNumber;
        });
        if (!numbered) return;
        if (sheet != block.owned.end()) {
            std::rotate(first, sheet, sheet + 1);
            return;
        }
        auto& made = make<ViewportEntity>("VIEWPORT", block.handle);
        made.mode = active ? 1 : 0;
        made.number = kSheetNumber;
        made.width = layout.paperWidth > 0.0 ? layout.paperWidth : 1.0;
        made.height = layout.paperHeight > 0.0 ? layout.paperHeight : 1.0;
        if ((layout.rotation & 1) != 0) std::swap(made.width, made.height);
        if (layout.paperUnit == 0) {
            // The sheet's own space is in inches, its size in millimetres.
            made.width /= 25.4;
            made.height /= 25.4;
        }
        made.center = {made.width / 2, made.height / 2, 0.0};
        made.viewCenter = {made.width / 2, made.height / 2};
        made.viewHeight = made.height;
        made.status = kSheetStatus;
        block.owned.insert(block.owned.begin(), made.handle);
    }
    /// Number of the view of the sheet, and its usual state: icons of both coordinate systems.
    static constexpr std::int32_t kSheetNumber = 1;
    static constexpr std::uint32_t kSheetStatus = 0x8020;

    /// What records may not lack.
    void details() {
        for (const auto& object : db_.objects) {
            if (object->isEntity()) {
                auto& entity = static_cast<Entity&>(*object);
                if (entity.layer == 0) entity.layer = layer0_->handle;
                if (entity.linetypeFlags == 3 && entity.linetype == 0) entity.linetypeFlags = 0;
                if (entity.materialFlags == 3 && entity.material == 0) entity.materialFlags = 0;
                if (entity.plotStyleFlags == 3 && entity.plotStyle == 0) entity.plotStyleFlags = 0;
                if (entity.visualStyles[0] == 0) entity.fullVisualStyle = false;
                if (entity.visualStyles[1] == 0) entity.faceVisualStyle = false;
                if (entity.visualStyles[2] == 0) entity.edgeVisualStyle = false;
            } else if (auto* layer = dynamic_cast<LayerRecord*>(object.get())) {
                if (layer->linetype == 0) layer->linetype = continuous_->handle;
                if (layer->plotStyle == 0) layer->plotStyle = normal_;
                if (layer->material == 0) layer->material = globalMaterial_;
            } else if (auto* style = dynamic_cast<DimStyleRecord*>(object.get())) {
                if (style->variables.txsty == 0) style->variables.txsty = standardStyle_->handle;
            } else if (auto* mline = dynamic_cast<MLineStyle*>(object.get())) {
                mline->indexLinetypes(*linetypes_);
            } else if (auto* group = dynamic_cast<Group*>(object.get())) {
                for (const Handle member : group->members) {
                    Object* entity = db_.find(member);
                    if (entity != nullptr && std::find(entity->reactors.begin(), entity->reactors.end(),
                                                       group->handle) == entity->reactors.end())
                        entity->reactors.push_back(group->handle);
                }
            }
        }
    }

    void header() {
        const auto fallback = [&](Handle& value, Handle other) {
            if (value == 0) value = other;
        };
        fallback(h_.clayer, layer0_->handle);
        fallback(h_.textstyle, standardStyle_->handle);
        fallback(h_.celtype, linetypes_->byLayer);
        fallback(h_.cmaterial, byLayerMaterial_);
        fallback(h_.dimstyle, dimStyle_->handle);
        fallback(h_.cmlstyle, mlineStyle_->handle);
        fallback(h_.dim.txsty, standardStyle_->handle);
        h_.modelSpace = blocks_->modelSpace;
        h_.paperSpace = blocks_->paperSpace;
        h_.byLayer = linetypes_->byLayer;
        h_.byBlock = linetypes_->byBlock;
        h_.continuous = continuous_->handle;
        if (h_.cepsntype == 3 && h_.cpsnid == 0) h_.cepsntype = 0;
        h_.handseed = std::max<Handle>(h_.handseed, db_.nextHandle());
    }

    /// The dates that the drawing's properties tell, where the header has none.
    void dates() {
        const auto* properties = db_.as<XRecord>(root_->find("DWGPROPS"));
        if (properties == nullptr) return;
        for (const XRecord::Item& item : properties->items) {
            HeaderVariables::Date* date = item.code == 40   ? &h_.tdindwg
                                          : item.code == 41 ? &h_.tdcreate
                                          : item.code == 42 ? &h_.tdupdate
                                                            : nullptr;
            if (date != nullptr && date->day == 0 && date->milliseconds == 0) date->setDays(item.real);
        }
    }

    /// The drawing's own number and that of this version of it. They come from what is in it: the same drawing gives
    /// the same file.
    void identity() {
        if (h_.fingerprintguid.empty())
            h_.fingerprintguid =
                guid(static_cast<std::uint64_t>(h_.tdcreate.day), static_cast<std::uint64_t>(h_.tdcreate.milliseconds));
        if (h_.versionguid.empty()) h_.versionguid = guid(db_.objects.size(), h_.handseed);
    }
    static std::string guid(std::uint64_t a, std::uint64_t b) {
        const auto mixed = [](std::uint64_t v) {
            v += 0x9E3779B97F4A7C15ULL;
            v = (v ^ v >> 30) * 0xBF58476D1CE4E5B9ULL;
            v = (v ^ v >> 27) * 0x94D049BB133111EBULL;
            return v ^ v >> 31;
        };
        const std::uint64_t high = mixed(a ^ mixed(b)), low = mixed(high + b);
        char text[40];
        std::snprintf(text, sizeof text, "{%08X-%04X-4%03X-8%03X-%012llX}", static_cast<unsigned>(high >> 32),
                      static_cast<unsigned>(high >> 16 & 0xFFFF), static_cast<unsigned>(high & 0xFFF),
                      static_cast<unsigned>(low >> 52), static_cast<unsigned long long>(low & 0xFFFFFFFFFFFFULL));
        return text;
    }

    void countClasses() {
        std::vector<std::int32_t> counts(db_.classes.size(), 0);
        for (const auto& object : db_.objects) {
            const std::size_t place = static_cast<std::size_t>(object->type) - ClassRecord::kFirst;
            if (object->type >= ClassRecord::kFirst && place < counts.size()) ++counts[place];
        }
        for (std::size_t i = 0; i < counts.size(); ++i) db_.classes[i].instances = counts[i];
    }

    Database& db_;
    HeaderVariables& h_;
    bool blank_;
    BlockControl* blocks_ = nullptr;
    LayerControl* layers_ = nullptr;
    StyleControl* styles_ = nullptr;
    LinetypeControl* linetypes_ = nullptr;
    ViewportControl* viewports_ = nullptr;
    AppIdControl* applications_ = nullptr;
    DimStyleControl* dimStyles_ = nullptr;
    Dictionary* root_ = nullptr;
    Dictionary* layoutNames_ = nullptr;
    LayerRecord* layer0_ = nullptr;
    StyleRecord* standardStyle_ = nullptr;
    AppIdRecord* acad_ = nullptr;
    LinetypeRecord* continuous_ = nullptr;
    DimStyleRecord* dimStyle_ = nullptr;
    ViewportRecord* activeView_ = nullptr;
    MLineStyle* mlineStyle_ = nullptr;
    Handle normal_ = 0, byLayerMaterial_ = 0, globalMaterial_ = 0;
};

}  // namespace

void completeGraph(Database& database) { Completion(database).run(); }

void resolveNumbers(Database& database) {
    const auto* table = database.as<LinetypeControl>(database.header.linetypeControl);
    if (table == nullptr) return;
    for (const auto& object : database.objects)
        if (auto* style = object->isEntity() ? nullptr : dynamic_cast<MLineStyle*>(object.get()))
            style->resolveLinetypes(*table);
}

}  // namespace kdraw
