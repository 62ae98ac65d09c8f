// What belongs to the drawing as a whole: its own record, named objects, layer states, extension dictionaries, the end.
#include "io/dxf/writing/writer.hpp"
#include "io/native/native_sections.hpp"

namespace kova::io::dxf {

using engine::DictionaryEntry;
using engine::Name;
using native::JsonWriter;

namespace {

constexpr int kMaxDictionaryDepth = 64;

template <class Records>
void writeList(JsonWriter& out, std::string_view key, const Records& records) {
    if (records.empty()) return;
    out.key(key);
    out.beginArray();
    for (const auto& record : records) native::writeRecord(out, record);
    out.endArray();
}

void writeText(JsonWriter& out, std::string_view key, std::string_view text) {
    out.key(key);
    out.text(text);
}

/// A group code of raw data; nothing when the text is none that may stand inside an object.
std::optional<int> rawCode(std::string_view text) {
    int code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    if (error != std::errc() || end != text.data() + text.size() || code < 1 || code > 1071) return std::nullopt;
    if (code == 5 || code == 105 || code == 999) return std::nullopt;
    return code;
}

bool isClassName(std::string_view type) {
    return !type.empty() && std::all_of(type.begin(), type.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
}

/// A value of raw data keeps its form only without line breaks and control characters that the codes' type excludes.
bool isRawValue(int code, std::string_view value) {
    const bool text = code < 10 || (code >= 100 && code <= 102) || (code >= 300 && code < 310) ||
                      (code >= 410 && code < 420) || (code >= 430 && code < 440) || (code >= 470 && code < 480) ||
                      (code >= 1000 && code <= 1003);
    if (text) return true;
    const bool hex = (code >= 310 && code < 370) || (code >= 390 && code < 400) || (code >= 480 && code < 490) ||
                     code == 1004 || code == 1005;
    if (value.empty()) return hex && code != 1005 && code < 320;
    return std::all_of(value.begin(), value.end(), [&](char c) {
        if (c >= '0' && c <= '9') return true;
        if (hex) return (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
        return c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
    });
}

/// True when a named object can stand in the file as such.
bool isNativeObject(const DictionaryEntry& entry, int depth) {
    if (depth > kMaxDictionaryDepth || entry.name.empty() || !isClassName(entry.type)) return false;
    for (const char c : entry.name.view())
        if (static_cast<unsigned char>(c) < 0x20) return false;
    if (entry.type == "DICTIONARY") {
        if (!entry.data.empty()) return false;
        std::unordered_set<const void*> names;
        for (const DictionaryEntry& child : entry.entries)
            if (!names.insert(child.name.key()).second || !isNativeObject(child, depth + 1)) return false;
        return true;
    }
    if (!entry.entries.empty() || entry.data.size() % 2 != 0 || entry.data.empty()) return false;
    for (std::size_t i = 0; i < entry.data.size(); i += 2) {
        const std::optional<int> code = rawCode(entry.data[i]);
        if (!code || !isRawValue(*code, entry.data[i + 1])) return false;
    }
    return entry.type == "XRECORD" || entry.data.front() == "100";
}

}  // namespace

/// Chooses the named objects that stand as objects of their own and gives them handles.
void Writer::namedObjects(Entries& root, NamedObjects& named) {
    std::unordered_set<const void*> names;
    for (const DictionaryEntry& entry : drawing_.objectDictionary) {
        if (isReservedRootKey(entry.name.view()) || !isNativeObject(entry, 0) ||
            !names.insert(entry.name.key()).second) {
            otherObjects_.push_back(&entry);
            continue;
        }
        named.emplace_back(&entry, reserveHandle(entry.handle));
        root.emplace_back(entry.name.view(), named.back().second);
    }
}

void Writer::dictionaryEntry(const DictionaryEntry& entry, std::uint64_t handle, std::uint64_t owner, int depth) {
    GroupWriter& out = *out_;
    if (entry.type == "DICTIONARY") {
        Entries entries;
        for (const DictionaryEntry& child : entry.entries)
            entries.emplace_back(child.name.view(), reserveHandle(child.handle));
        dictionary(handle, owner, entries, false);
        for (std::size_t i = 0; i < entry.entries.size(); ++i)
            dictionaryEntry(entry.entries[i], entries[i].second, handle, depth + 1);
        return;
    }
    objectHead(entry.type, handle, owner);
    if (entry.type == "XRECORD" && entry.data.front() != "100") out.subclass("AcDbXrecord");
    for (std::size_t i = 0; i + 1 < entry.data.size(); i += 2) {
        const int code = *rawCode(entry.data[i]);
        if (code == 1001) application(entry.data[i + 1]);
        out.text(code, entry.data[i + 1]);
    }
}

std::string Writer::drawingRecord() {
    auto& d = const_cast<engine::Drawing&>(drawing_);  // the visitors only look
    JsonWriter out(-1);
    native::RecordWriter writer(out);
    out.beginObject();
    if (const native::PropertiesRecord properties{d.properties}; !properties.empty())
        native::writeMembers(out, "properties", properties);
    writeList(out, "layerFilters", drawing_.layerFilters);
    writer.texts("shapeFiles", d.shapeFiles, true);
    writer.pointObject("snapBase", d.snapBase);
    writer.numberMap("dimStyleOverrides", d.dimStyleOverrides, false);
    writer.textMap("dimStyleNameOverrides", d.dimStyleNameOverrides, false);
    writeText(out, "currentLayer", drawing_.currentLayer.view());
    writeText(out, "currentTextStyle", drawing_.currentTextStyle.view());
    writeText(out, "currentLinetype", drawing_.currentLinetype.view());
    writeText(out, "currentDimStyle", drawing_.currentDimStyle.view());
    writeText(out, "currentMLeaderStyle", drawing_.currentMLeaderStyle.view());
    writeText(out, "currentTableStyle", drawing_.currentTableStyle.view());
    out.key("nextHandle");
    out.unsignedInteger(drawing_.nextHandle);
    writeList(out, "hatchPatterns", drawing_.hatchPatterns);
    if (!otherObjects_.empty()) {
        std::vector<DictionaryEntry> rest;
        for (const DictionaryEntry* entry : otherObjects_) rest.push_back(*entry);
        native::writeMembers(out, "objectDictionary", native::DictionaryRecord{rest});
    }
    writer.names("appIds", d.appIds, false);
    writeText(out, "currentUcs", drawing_.currentUcs.view());
    native::writeMembers(out, native::kUcsInForceKey, native::UcsAxesRecord{d.ucs});
    writeText(out, "activeLayout", drawing_.activeLayoutName.view());
    out.key("tilemode");
    out.integer(drawing_.tileMode ? 1 : 0);
    out.key("currentColor");
    native::writeColor(out, drawing_.currentColor);
    native::writeSystemVariables(out, drawing_);
    if (!drawing_.layerStates.empty()) {
        out.key("layerStates");
        out.beginObject();
        for (const engine::LayerState& state : drawing_.layerStates) {
            out.key(state.name.view());
            out.beginObject();
            for (const auto& [layer, entry] : state.layers) {
                out.key(layer.view());
                native::writeRecord(out, entry);
            }
            out.endObject();
        }
        out.endObject();
        out.key("layerStateMasks");
        out.beginObject();
        for (const engine::LayerState& state : drawing_.layerStates)
            native::writeMembers(out, state.name.view(),
                                 native::LayerStateMaskRecord{const_cast<engine::LayerState&>(state)});
        out.endObject();
    }
    native::writeMembers(out, "currentView", CurrentView{d.currentView});
    writer.pointObject("lastPoint", d.lastPoint);
    out.endObject();
    return out.take();
}

std::string Writer::blockOwnData(const engine::Block& block) {
    FieldKeys keys;
    if (block.xrefType != engine::XrefType::None) keys.push_back("xrefStatus");
    if (block.isDynamic)
        keys.insert(keys.end(), {"isDynamic", "dynParams", "dynActions", "visibilityStates", "lookupTable"});
    const auto isForbidden = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 ||
               std::string_view("<>/\\\":;?|,=`").find(c) != std::string_view::npos;
    };
    if (std::any_of(block.name.view().begin(), block.name.view().end(), isForbidden)) keys.push_back("name");
    struct Fields {
        engine::Block& block;
        void describe(engine::FieldVisitor& v) {
            block.describeHead(v);
            block.describeDynamic(v);
        }
    };
    if (keys.empty()) return {};
    return ownDataOf(Fields{const_cast<engine::Block&>(block)}, keys);
}

void Writer::layerStates() {
    if (drawing_.layerStates.empty()) return;
    GroupWriter& out = *out_;
    const std::uint64_t filters = newHandle();
    Entries entries;
    for (const engine::LayerState& state : drawing_.layerStates) entries.emplace_back(symbol(state.name), newHandle());
    dictionary(fixed_.layerTableDictionary, tables_.layers,
               {{"ACAD_LAYERSTATES", fixed_.layerStates}, {"ACLYDICTIONARY", filters}}, true);
    dictionary(filters, fixed_.layerTableDictionary, {}, true);
    dictionary(fixed_.layerStates, fixed_.layerTableDictionary, entries, true);
    std::size_t i = 0;
    for (const engine::LayerState& state : drawing_.layerStates) {
        const engine::LayerStateMask& m = state.mask;
        objectHead("XRECORD", entries[i++].second, fixed_.layerStates);
        out.subclass("AcDbXrecord");
        out.integer(280, 1);
        out.integer(91, (m.on ? 1 : 0) | (m.frozen ? 2 : 0) | (m.locked ? 4 : 0) | (m.plottable ? 8 : 0) |
                            (m.color ? 32 : 0) | (m.linetype ? 64 : 0) | (m.lineweight ? 128 : 0) |
                            (m.plotStyle ? 256 : 0) | (m.transparency ? 1024 : 0));
        out.text(301, state.description);
        out.integer(290, 1);
        out.text(302, symbol(drawing_.currentLayer));
        for (const auto& [layer, entry] : state.layers) {
            const auto known = layers_.find(layer.key());
            if (known == layers_.end()) continue;  // of a layer that is gone
            out.handle(330, known->second);
            out.integer(
                90, (entry.on ? 0 : 1) | (entry.frozen ? 2 : 0) | (entry.locked ? 4 : 0) | (entry.plottable ? 8 : 0));
            out.integer(62, entry.color.bareIndex());
            out.integer(370, nearestLineweight(entry.lineweight));
            if (const auto linetype = linetypes_.find(entry.linetype.key()); linetype != linetypes_.end())
                out.handle(331, linetype->second);
            out.text(1, entry.plotStyle.view());
            out.integer(440,
                        entry.transparency > 0 && entry.transparency <= 100 ? transparencyCode(entry.transparency) : 0);
            if (entry.color.method == engine::ColorMethod::RGB) rawColor(92, entry.color);
        }
    }
}

void Writer::extensionDictionaries() {
    GroupWriter& out = *out_;
    for (std::size_t i = 0; i < extensions_.size(); ++i) {
        const Extension& extension = extensions_[i];
        Entries entries;
        for (const auto& [key, text] : extension.records) entries.emplace_back(key, newHandle());
        std::uint64_t filter = 0;
        if (extension.clip != nullptr) entries.emplace_back("ACAD_FILTER", filter = newHandle());
        out.record("DICTIONARY");
        out.handle(5, extension.handle);
        out.handle(330, extension.owner);
        out.subclass("AcDbDictionary");
        out.integer(280, 1);
        out.integer(281, 1);
        for (const auto& [key, handle] : entries) {
            out.text(3, key);
            out.handle(360, handle);
        }
        for (std::size_t k = 0; k < extension.records.size(); ++k) {
            objectHead("XRECORD", entries[k].second, extension.handle);
            out.subclass("AcDbXrecord");
            out.integer(280, 1);
            xrecordText(extension.records[k].second);
        }
        if (filter != 0) clipObjects(*extension.clip, filter, extension.handle);
    }
}

void Writer::finishObjects() {
    out_ = &objects_;
    extensionDictionaries();
    objects_.record("ENDSEC");
    dataSection();
    objects_.record("EOF");
}

}  // namespace kova::io::dxf
