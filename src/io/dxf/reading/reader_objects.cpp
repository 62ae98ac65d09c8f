// OBJECTS. The section is only indexed when it is met; the objects that count are read from their places at the end.
#include <algorithm>
#include <cmath>

#include "engine/outline/plot_page.hpp"
#include "engine/model/sysvar.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/object_variables.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/reading/reader.hpp"
#include "io/native/native_sections.hpp"

namespace kova::io::dxf {

using engine::Name;

namespace {

constexpr int kMaxDictionaryDepth = 32;
constexpr std::size_t kMaxOpaqueValues = 4'000'000;
constexpr std::size_t kMaxOpaqueEntries = 100'000;

/// Entries of the root dictionary that the model holds in other forms, or that only mark something up.
constexpr std::string_view kKnownKeys[] = {"ACAD_GROUP",         "ACAD_LAYOUT",     "ACAD_MLINESTYLE",
                                           "ACAD_MLEADERSTYLE",  "ACAD_TABLESTYLE", "ACAD_PLOTSETTINGS",
                                           "ACAD_PLOTSTYLENAME", "ACAD_SCALELIST",  "AcDbVariableDictionary",
                                           "ACAD_IMAGE_DICT",    "DWGPROPS",        "KOVA_DRAWING",
                                           "ACAD_IMAGE_VARS",    "ACAD_WIPEOUT_VARS"};

}  // namespace

void Reader::indexObjects() {
    bool first = true;
    while (reader_.next(record_)) {
        if (endsSection(record_)) {
            if (record_.type != "ENDSEC") reader_.unread();
            return;
        }
        std::uint64_t handle = 0;
        for (const Tag& tag : record_.tags) {
            if (tag.code == 100) break;
            if (tag.code == 5) {
                handle = tag.handle();
                break;
            }
        }
        noteHandle(handle);
        if (!record_.complete) continue;
        if (first && handle != 0 && record_.type == "DICTIONARY") rootDictionary_ = handle;
        first = false;
        if (handle == 0 || !index_.add(handle, record_)) leaveOut(record_.type);
    }
}

std::string Reader::xrecordText(std::uint64_t handle) {
    Record record;
    std::string json;
    if (!ownedObject(handle, "XRECORD", record)) return json;
    bool inside = false;
    for (const Tag& tag : record.tags) {
        if (tag.code == 100) inside = true;
        if (inside && tag.code == 1) json += decoder_.decode(tag.text());
    }
    if (!json.starts_with('{')) json.clear();
    return json;
}

void Reader::readObjects() {
    const std::span<const DictionaryItem> root = dictionary(rootDictionary_);
    const auto entry = [&](std::string_view key) { return dictionaryEntry(rootDictionary_, key); };
    readMLeaderStyles(entry("ACAD_MLEADERSTYLE"));
    readTableStyles(entry("ACAD_TABLESTYLE"));
    readLayouts(entry("ACAD_LAYOUT"));
    readGroups(entry("ACAD_GROUP"));
    readPageSetups(entry("ACAD_PLOTSETTINGS"));
    readScales(entry("ACAD_SCALELIST"));
    readVariables(entry("AcDbVariableDictionary"));
    readProperties(entry("DWGPROPS"));
    readLayerStates();
    std::size_t kept = 0;
    for (const DictionaryItem& item : root) {
        const std::string_view key = trimmed(item.key);
        if (std::any_of(std::begin(kKnownKeys), std::end(kKnownKeys),
                        [&](std::string_view known) { return engine::equalNoCase(known, key); }))
            continue;
        engine::DictionaryEntry opaque;
        opaque.name = Name(decoder_.decode(item.key));
        if (kept++ < kMaxOpaqueEntries && readOpaque(item.handle, opaque, 0))
            drawing_.objectDictionary.push_back(std::move(opaque));
    }
}

/// Keeps an object that this program has no other form for. False for one that is not there.
bool Reader::readOpaque(std::uint64_t handle, engine::DictionaryEntry& entry, int depth) {
    if (depth > kMaxDictionaryDepth || opaqueValues_ > kMaxOpaqueValues || !opaqueSeen_.insert(handle).second)
        return false;
    Record record;
    if (!index_.object(handle, record)) return false;
    entry.type = std::string(record.type);
    entry.handle = handle;
    if (record.type == "DICTIONARY") {
        for (const DictionaryItem& item : dictionary(handle)) {
            engine::DictionaryEntry child;
            child.name = Name(decoder_.decode(item.key));
            if (readOpaque(item.handle, child, depth + 1)) entry.entries.push_back(std::move(child));
        }
        return true;
    }
    bool inside = false;
    for (const Tag& tag : record.tags) {
        if (tag.code == 100) inside = true;
        // What the record says about itself is written anew, and the marker of a plain record with it.
        if (!inside || (tag.code == 100 && record.type == "XRECORD" && entry.data.empty())) continue;
        if (++opaqueValues_ > kMaxOpaqueValues) {
            leaveOut("values of " + entry.type);
            break;
        }
        entry.data.push_back(std::to_string(tag.code));
        entry.data.push_back(decoder_.decode(tag.text()));
    }
    return true;
}

void Reader::readGroups(std::uint64_t handle) {
    Record record;
    for (const DictionaryItem& item : dictionary(handle)) {
        if (!ownedObject(item.handle, "GROUP", record)) continue;
        engine::Group group;
        group.name = Name(decoder_.decode(item.key));
        if (group.name.empty()) continue;
        const EntityTags tags = partTags(record);
        for (const Tag& tag : tags.body) {
            if (tag.code == 300) group.description = text(tag);
            if (tag.code == 71) group.selectable = tag.integer() != 0;
            if (tag.code == 340) group.memberHandles.push_back(tag.handle());
        }
        if (!own_)
            std::erase_if(group.memberHandles, [&](std::uint64_t h) { return drawing_.findByHandle(h) == nullptr; });
        const OwnText json = ownData(record, kOwnRecordApplication);
        if (!json.empty()) applyOwnData(json, group);
        drawing_.groups.add(std::move(group));
    }
}

void Reader::readPlotSettings(const Record& record, engine::PageSetup& setup) {
    std::int64_t rotation = 0;
    std::int64_t flags = 16 | 128;
    unusable_ = false;
    bool inside = false;
    for (const Tag& tag : record.tags) {
        if (tag.code == 1001) break;
        if (tag.code == 100) {
            inside = tag.trimmed() == "AcDbPlotSettings";
            continue;
        }
        if (!inside) continue;
        switch (tag.code) {
            case 1:
                setup.name = name(tag);
                break;
            case 2:
                setup.plotDevice = text(tag);
                break;
            case 4:
                setup.paperSizeName = text(tag);
                break;
            case 7:
                setup.plotStyleTable = text(tag);
                break;
            case 40:
                setup.marginLeft = real(tag);
                break;
            case 41:
                setup.marginBottom = real(tag);
                break;
            case 42:
                setup.marginRight = real(tag);
                break;
            case 43:
                setup.marginTop = real(tag);
                break;
            case 44:
                setup.paperWidth = real(tag);
                break;
            case 45:
                setup.paperHeight = real(tag);
                break;
            case 46:
                setup.offsetX = real(tag);
                break;
            case 47:
                setup.offsetY = real(tag);
                break;
            case 142:
                setup.scalePaper = real(tag);
                break;
            case 143:
                setup.scaleDrawing = real(tag);
                break;
            case 70:
                flags = tag.integer();
                break;
            case 72:
                setup.paperUnits = small(tag);
                break;
            case 73:
                rotation = tag.integer();
                break;
            case 74:
                setup.plotArea = small(tag);
                break;
            case 75:
                setup.scaleType = small(tag);
                break;
            case 78:
                setup.dpi = small(tag);
                break;
            default:
                break;
        }
    }
    // Size and margins are those of the sheet before it is turned.
    for (std::int64_t turns = rotation & 3; turns > 0; --turns) {
        std::swap(setup.paperWidth, setup.paperHeight);
        const double left = setup.marginLeft;
        setup.marginLeft = setup.marginTop;
        setup.marginTop = setup.marginRight;
        setup.marginRight = setup.marginBottom;
        setup.marginBottom = left;
    }
    setup.landscape = own_ ? (rotation & 1) != 0 : setup.paperWidth > setup.paperHeight;
    setup.centerOnPage = (flags & 4) != 0;
    setup.plotWithLineweights = (flags & 128) != 0;
    // No standard scale: the numbers count. This program's earlier files say "fit" without the bit.
    const bool custom = (flags & 16) == 0 && (setup.scaleType != 0 || !own_);
    if (custom && setup.scalePaper != setup.scaleDrawing) setup.scaleType = engine::kCustomPlotScale;
    if (custom && setup.scaleType == 0) setup.scaleType = 16;
    if (!own_ && (!(setup.paperWidth > 0.0) || !(setup.paperHeight > 0.0))) {
        // A sheet that was never set up: as large as its usual limits, 12 x 9 inches or A3.
        const bool inches = setup.paperUnits == 0;
        setup.paperWidth = inches ? 304.8 : 420.0;
        setup.paperHeight = inches ? 228.6 : 297.0;
        setup.landscape = true;
    }
}

void Reader::readLayouts(std::uint64_t handle) {
    Record record;
    struct Found {
        Name name;
        std::int32_t tab = 0;
        engine::Layout* layout = nullptr;
    };
    std::vector<Found> found;
    for (const DictionaryItem& item : dictionary(handle)) {
        if (!ownedObject(item.handle, "LAYOUT", record)) continue;
        engine::PageSetup setup;
        readPlotSettings(record, setup);
        Name layoutName(decoder_.decode(item.key));
        std::uint64_t block = 0;
        std::int32_t tab = 0;
        bool inside = false;
        for (const Tag& tag : record.tags) {
            if (tag.code == 1001) break;
            if (tag.code == 100) inside = tag.trimmed() == "AcDbLayout";
            if (!inside) continue;
            if (tag.code == 1) layoutName = name(tag);
            if (tag.code == 71) tab = small(tag);
            if (tag.code == 330) block = tag.handle();
        }
        const Name blockName = recordName(block);
        if (layoutName == "Model" || !blockName.folded().starts_with("*paper_space")) continue;
        const OwnText json = ownData(record, kOwnRecordApplication);
        if (!json.empty() && isPlaceholder(json)) continue;
        engine::Layout& layout = paperSpace(blockName);
        layout.pageSetup = std::move(setup);
        layout.tabOrder = tab;
        layout.handle = block;
        if (!json.empty()) {
            const Name provisional = layout.name;
            LayoutOwnFields fields{layout};
            applyOwnData(json, fields);
            if (!(layout.name == provisional)) layoutName = layout.name;
            layout.name = provisional;
        }
        found.push_back({layoutName, tab, &layout});
    }
    for (const Found& f : found) {
        if (f.layout->name == f.name) continue;
        if (!drawing_.renameLayout(f.layout->name, f.name)) continue;
    }
    // In the order of their tabs.
    std::vector<std::pair<std::int32_t, Name>> order;
    for (const auto& layout : drawing_.layouts()) order.emplace_back(layout->tabOrder, layout->name);
    if (std::is_sorted(order.begin(), order.end(), [](const auto& a, const auto& b) { return a.first < b.first; }))
        return;
    std::stable_sort(order.begin(), order.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [tab, layoutName] : order) {
        auto layout = drawing_.takeLayout(layoutName);
        if (layout) drawing_.putLayout(std::move(layout), drawing_.layouts().size());
    }
}

void Reader::readPageSetups(std::uint64_t handle) {
    Record record;
    for (const DictionaryItem& item : dictionary(handle)) {
        if (!ownedObject(item.handle, "PLOTSETTINGS", record)) continue;
        engine::PageSetup setup;
        readPlotSettings(record, setup);
        setup.name = Name(decoder_.decode(item.key));
        const OwnText json = ownData(record, kOwnRecordApplication);
        if (!json.empty()) applyOwnData(json, setup);
        if (!setup.name.empty()) drawing_.namedPageSetups.add(std::move(setup));
    }
}

void Reader::readScales(std::uint64_t handle) {
    Record record;
    engine::Table<engine::AnnotationScale> scales;
    for (const DictionaryItem& item : dictionary(handle)) {
        if (!ownedObject(item.handle, "SCALE", record)) continue;
        engine::AnnotationScale scale;
        unusable_ = false;
        for (const Tag& tag : record.tags) {
            if (tag.code == 300) scale.name = Name(text(tag));
            if (tag.code == 140) scale.paperUnits = real(tag);
            if (tag.code == 141) scale.drawingUnits = real(tag);
        }
        if (!scale.name.empty() && !unusable_) scales.add(std::move(scale));
    }
    if (!scales.empty()) drawing_.annotationScales = std::move(scales);
}

void Reader::readVariables(std::uint64_t handle) {
    Record record;
    for (const DictionaryItem& item : dictionary(handle)) {
        if (!ownedObject(item.handle, "DICTIONARYVAR", record)) continue;
        const Tag* value = record.find(1);
        if (value == nullptr) continue;
        const std::string_view key = trimmed(item.key);
        if (engine::equalNoCase(key, "CTABLESTYLE")) {
            if (const auto* style = drawing_.tableStyles.find(name(*value)))
                drawing_.currentTableStyle = stated_.tableStyle = style->name;
        } else if (engine::equalNoCase(key, "CMLEADERSTYLE")) {
            if (const auto* style = drawing_.mleaderStyles.find(name(*value)))
                drawing_.currentMLeaderStyle = stated_.leaderStyle = style->name;
        } else if (engine::equalNoCase(key, "CANNOSCALE")) {
            if (drawing_.annotationScales.contains(name(*value)))
                engine::loadSysVar(drawing_, "CANNOSCALE", engine::SysVarValue(stated_.scale = text(*value)));
        } else if (const auto variable = std::find_if(kDictionaryVariables.begin(), kDictionaryVariables.end(),
                                                      [&](std::string_view v) { return engine::equalNoCase(key, v); });
                   variable != kDictionaryVariables.end()) {
            engine::loadSysVar(drawing_, *variable, engine::SysVarValue(static_cast<std::int32_t>(small(*value))));
        } else {
            noteSetting(engine::upperCase(key), *value);
        }
    }
    // Two stand in objects of their own.
    const auto object = [&](std::string_view entry, std::string_view type, std::string_view variable) {
        if (!objectAt(dictionaryEntry(rootDictionary_, entry), type, record)) return;
        if (const Tag* frame = record.find(70))
            engine::loadSysVar(drawing_, variable, engine::SysVarValue(static_cast<std::int32_t>(small(*frame))));
    };
    object("ACAD_IMAGE_VARS", "RASTERVARIABLES", "IMAGEFRAME");
    object("ACAD_WIPEOUT_VARS", "WIPEOUTVARIABLES", "WIPEOUTFRAME");
}

void Reader::readProperties(std::uint64_t handle) {
    // Releases from 2004 on keep the same in the header.
    for (const HeaderValue& value : header_) {
        const Tag& tag = value.tags.front();
        if (value.name == "TITLE") drawing_.properties.title = text(tag);
        if (value.name == "SUBJECT") drawing_.properties.subject = text(tag);
        if (value.name == "AUTHOR") drawing_.properties.author = text(tag);
        if (value.name == "KEYWORDS") drawing_.properties.keywords = text(tag);
    }
    Record record;
    if (!objectAt(handle, "XRECORD", record)) return;
    const Tag* cookie = record.find(1);
    if (cookie == nullptr || cookie->trimmed() != "DWGPROPS COOKIE") return;
    for (const Tag& tag : record.tags) {
        if (tag.code == 2) drawing_.properties.title = text(tag);
        if (tag.code == 3) drawing_.properties.subject = text(tag);
        if (tag.code == 4) drawing_.properties.author = text(tag);
        if (tag.code == 7) drawing_.properties.keywords = text(tag);
    }
    stated_.properties = drawing_.properties;
}

void Reader::readLayerStates() {
    const std::uint64_t states = dictionaryEntry(layerTableDictionary_, "ACAD_LAYERSTATES");
    Record record;
    for (const DictionaryItem& item : dictionary(states)) {
        if (!ownedObject(item.handle, "XRECORD", record)) continue;
        engine::LayerState state;
        state.name = Name(decoder_.decode(item.key));
        if (state.name.empty()) continue;
        bool inside = false;
        for (const Tag& tag : record.tags) {
            if (tag.code == 100) {
                inside = true;
                continue;
            }
            if (!inside) continue;
            engine::LayerStateEntry* e = state.layers.empty() ? nullptr : &state.layers.back().second;
            switch (tag.code) {
                case 91: {
                    const std::int64_t m = tag.integer();
                    state.mask = {(m & 1) != 0,   (m & 2) != 0,    (m & 4) != 0,  (m & 8) != 0, (m & 32) != 0,
                                  (m & 128) != 0, (m & 1024) != 0, (m & 64) != 0, true,         (m & 256) != 0};
                    break;
                }
                case 301:
                    state.description = text(tag);
                    break;
                case 330:
                case 8:
                    state.layers.emplace_back(tag.code == 8 ? name(tag) : recordName(tag.handle()),
                                              engine::LayerStateEntry());
                    break;
                default:
                    break;
            }
            if (e == nullptr) continue;
            switch (tag.code) {
                case 90: {
                    const std::int64_t flags = tag.integer();
                    e->on = (flags & 1) == 0;
                    e->frozen = (flags & 2) != 0;
                    e->locked = (flags & 4) != 0;
                    e->plottable = (flags & 8) != 0;
                    break;
                }
                case 62:
                    if (const auto color = engine::Color::fromBareIndex(small(tag))) e->color = *color;
                    break;
                case 92: {
                    const auto raw = static_cast<std::uint32_t>(tag.integer());
                    if ((raw >> 24) == 0xC2) e->color = colorOfRgb(raw);
                    break;
                }
                case 370:
                    e->lineweight = small(tag);
                    break;
                case 331:
                    if (const Name linetype = recordName(tag.handle()); !linetype.empty()) e->linetype = linetype;
                    break;
                case 6:
                    e->linetype = name(tag);
                    break;
                case 1:
                    e->plotStyle = name(tag);
                    break;
                case 440:
                    e->transparency = transparencyPercent(small(tag));
                    break;
                default:
                    break;
            }
        }
        std::erase_if(state.layers, [](const auto& layer) { return layer.first.empty(); });
        drawing_.layerStates.add(std::move(state));
    }
}

/// The drawing's own record: members of the native file that have no other place.
namespace {

/// True when both show the same, as far as the record of the current viewport can tell.
bool sameView(const engine::NamedView& own, const engine::NamedView& plain) {
    if (!(own.height > 0.0) || !own.center.is_finite()) return true;
    const double near = 1e-6 * std::max(own.height, own.center.length());
    const bool sameWay = own.viewDirection == math::Vector3{} ||
                         own.viewDirection.normalized().near_equal(plain.viewDirection.normalized(), 1e-6);
    return sameWay && own.center.near_equal(plain.center, near) && std::abs(own.height - plain.height) <= near;
}

}  // namespace

/// The drawing's own record holds what other records of the file hold, too. Where these say something else, another
/// program has changed them.
void Reader::settleStated(const engine::NamedView& view, Name layout) {
    if (viewRead_ && !sameView(drawing_.currentView, view)) drawing_.currentView = view;
    const auto take = [](Name& current, Name stated) {
        if (!stated.empty() && !(current == stated)) current = stated;
    };
    take(drawing_.currentMLeaderStyle, stated_.leaderStyle);
    take(drawing_.currentTableStyle, stated_.tableStyle);
    if (drawing_.findLayout(drawing_.activeLayoutName) != nullptr) take(drawing_.activeLayoutName, layout);
    if (stated_.properties) drawing_.properties = *stated_.properties;
    if (!stated_.scale.empty() && engine::sysVarString(drawing_, "CANNOSCALE") != stated_.scale)
        engine::loadSysVar(drawing_, "CANNOSCALE", engine::SysVarValue(stated_.scale));
}

bool Reader::readDrawingRecord(std::uint64_t xrecord) {
    const std::string json = xrecordText(xrecord);
    if (json.empty()) return false;
    OwnDataTree data;
    if (!data.parse(json)) return false;
    const engine::NamedView view = drawing_.currentView;
    const Name layout = drawing_.activeLayoutName;
    try {
        native::RecordReader reader(data.tree());
        reader.enter(data.root());
        std::vector<engine::DictionaryEntry> objects = std::move(drawing_.objectDictionary);
        drawing_.objectDictionary.clear();
        native::readLeadingSections(data.tree(), data.root(), reader, drawing_);
        native::readTrailingSections(data.tree(), data.root(), reader, drawing_);
        std::vector<engine::DictionaryEntry> rest = std::move(drawing_.objectDictionary);
        drawing_.objectDictionary = std::move(objects);
        for (engine::DictionaryEntry& entry : rest) drawing_.objectDictionary.push_back(std::move(entry));
        std::uint64_t next = 0;
        reader.handle("nextHandle", next);
        if (next != 0) ownNextHandle_ = next;
        CurrentView view{drawing_.currentView};
        reader.object("currentView", view);
        reader.pointObject("lastPoint", drawing_.lastPoint);
    } catch (const std::exception&) {
        // What was read stays.
    }
    settleStated(view, layout);
    return true;
}

}  // namespace kova::io::dxf
