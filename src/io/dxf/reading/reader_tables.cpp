// TABLES. The section is read twice: records name each other by handles that may stand further down.
#include <algorithm>
#include <cmath>

#include "engine/model/sysvar.hpp"
#include "engine/model/view_frame.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Name;
using math::Vector2;
using math::Vector3;

namespace {

/// Where the extended data of a record begins.
Tags xdataTags(const Record& record) {
    const Tags all(record.tags);
    for (std::size_t i = 0; i < all.size(); ++i)
        if (all[i].code == 1001) return all.subspan(i);
    return {};
}
/// The groups before the extended data, without those in braces.
std::vector<Tag> plainTags(const Record& record) {
    std::vector<Tag> tags;
    tags.reserve(record.tags.size());
    bool inBraces = false;
    for (const Tag& tag : record.tags) {
        if (tag.code == 1001) break;
        if (tag.code == 102) {
            inBraces = tag.trimmed().starts_with("{");
            continue;
        }
        if (!inBraces) tags.push_back(tag);
    }
    return tags;
}
std::uint64_t extensionOf(const Record& record) {
    for (std::size_t i = 0; i < record.tags.size(); ++i) {
        if (record.tags[i].code != 102 || record.tags[i].trimmed() != "{ACAD_XDICTIONARY") continue;
        for (++i; i < record.tags.size() && record.tags[i].code != 102; ++i)
            if (record.tags[i].code == 360 || record.tags[i].code == 350) return record.tags[i].handle();
    }
    return 0;
}

}  // namespace

void Reader::noteRecordExtension(const Record& record, Name name, RecordKind kind) {
    const std::uint64_t extension = extensionOf(record);
    if (extension == 0) return;
    recordExtensions_.push_back({name, extension, kind});
    noteExtension(extension, dxf::fingerprintOf(record.type, record.tags, decoder_));
}

void Reader::indexTableRecord(const Record& record) {
    const bool isDimStyle = record.type == "DIMSTYLE";
    std::uint64_t handle = 0;
    Name recordName;
    bool shape = false;
    Name file;
    bool flagSeen = false;
    for (const Tag& tag : record.tags) {
        if (tag.code == 1001) break;
        if (handle == 0 && (tag.code == 105 || (tag.code == 5 && !isDimStyle))) handle = tag.handle();
        if (tag.code == 2 && recordName.empty()) recordName = name(tag);
        if (tag.code == 70 && !flagSeen) {
            shape = record.type == "STYLE" && (tag.integer() & 1) != 0;
            flagSeen = true;
        }
        if (tag.code == 3 && record.type == "STYLE") file = name(tag);
    }
    noteHandle(handle);
    if (handle == 0) return;
    if (record.type == "APPID" && recordName == "KOVA_DIM") own_ = true;
    if (shape) {
        shapeStyles_.emplace(handle, file);
        return;
    }
    tableNames_.emplace(handle, recordName);
}

void Reader::readTables() {
    const std::size_t begin = reader_.tags().position();
    // A record has been read ahead when the section's head was: begin stands behind it, so the section itself is
    // read again from its own place.
    const std::size_t section = record_.position;
    (void)begin;
    while (reader_.next(record_) && !endsSection(record_)) {
        if (record_.type == "TABLE") {
            const Tag* title = record_.find(2);
            if (const Tag* handle = record_.find(5)) noteHandle(handle->handle());
            if (title != nullptr && engine::equalNoCase(title->trimmed(), "LAYER"))
                layerTableDictionary_ = extensionOf(record_);
        } else if (record_.type != "ENDTAB") {
            indexTableRecord(record_);
        }
    }
    if (!reader_.at(section, record_)) return;
    std::string table;
    while (reader_.next(record_)) {
        if (endsSection(record_)) {
            if (record_.type != "ENDSEC") reader_.unread();
            return;
        }
        if (record_.type == "TABLE") {
            const Tag* title = record_.find(2);
            table = title != nullptr ? engine::upperCase(title->trimmed()) : std::string();
            beginTable(table);
        } else if (record_.type == "ENDTAB") {
            table.clear();
        } else {
            readTableRecord(record_.type, record_);
        }
    }
}

/// A table of the file takes the place of the new drawing's.
void Reader::beginTable(std::string_view table) {
    if (table == "LAYER") drawing_.layers.clear();
    if (table == "STYLE") drawing_.textStyles.clear();
    if (table == "LTYPE") drawing_.linetypes.clear();
    if (table == "APPID") drawing_.appIds.clear();
    if (table == "DIMSTYLE") drawing_.dimStyles.clear();
}

void Reader::readTableRecord(std::string_view type, const Record& record) {
    unusable_ = false;
    if (type == "LAYER")
        readLayer(record);
    else if (type == "LTYPE")
        readLinetype(record);
    else if (type == "STYLE")
        readTextStyle(record);
    else if (type == "VIEW")
        readView(record);
    else if (type == "UCS")
        readUcs(record);
    else if (type == "APPID")
        readAppId(record);
    else if (type == "VPORT")
        readViewport(record);
    else if (type == "BLOCK_RECORD")
        readBlockRecord(record);
    else if (type == "DIMSTYLE")
        readDimStyle(record);
    else
        leaveOut(type);
    noteRecordData(record);
}

void Reader::readLayer(const Record& record) {
    engine::Layer layer;
    ColorGroups color;
    for (const Tag& tag : plainTags(record)) {
        switch (tag.code) {
            case 2:
                layer.name = name(tag);
                break;
            case 6:
                layer.linetype = name(tag);
                break;
            case 62: {
                const std::int32_t index = small(tag);
                layer.on = index >= 0;
                if (index != 0 && std::abs(index) < 256) color.index = std::abs(index);
                break;
            }
            case 420:
                color.rgb = static_cast<std::uint32_t>(tag.integer());
                break;
            case 70: {
                const std::int64_t flags = tag.integer();
                layer.frozen = (flags & 1) != 0;
                layer.locked = (flags & 4) != 0;
                break;
            }
            case 290:
                layer.plottable = tag.integer() != 0;
                break;
            case 370:
                layer.lineweight = small(tag);
                break;
            default:
                break;
        }
    }
    if (layer.name.empty()) return leaveOut(record.type);
    layer.color = color.settled(layer.color, own_);
    if (layer.linetype.empty()) layer.linetype = engine::commonNames().continuous;
    const Tags xdata = xdataTags(record);
    for (const engine::XData::Application& application : xdataOf(xdata).applications) {
        if (application.name == "AcCmTransparency") {
            for (const auto& item : application.items)
                if (item.code == 1071)
                    layer.transparency =
                        transparencyPercent(static_cast<std::int32_t>(std::get<std::int64_t>(item.value)));
        } else if (application.name == "AcAecLayerStandard") {
            // Two texts; the second is the description.
            for (const auto& item : application.items)
                if (item.code == 1000) layer.description = std::get<std::string>(item.value);
        }
    }
    if (const OwnText json = ownData(record); !json.empty()) {
        if (isPlaceholder(json)) return;
        applyOwnData(json, layer);
    }
    noteRecordExtension(record, layer.name, RecordKind::Layer);
    drawing_.layers.add(std::move(layer));
}

void Reader::readLinetype(const Record& record) {
    engine::Linetype linetype;
    engine::LinetypeElement element;
    bool complex = false;
    for (const Tag& tag : plainTags(record)) {
        switch (tag.code) {
            case 2:
                linetype.name = name(tag);
                break;
            case 3:
                linetype.description = text(tag);
                break;
            case 70:
                linetype.flags = small(tag);
                break;
            case 49:
                linetype.pattern.push_back(real(tag));
                linetype.elements.emplace_back();
                break;
            default:
                if (linetype.elements.empty()) break;
                engine::LinetypeElement& e = linetype.elements.back();
                switch (tag.code) {
                    case 74:
                        e.flags = small(tag);
                        complex = complex || e.flags != 0;
                        break;
                    case 75:
                        e.shape = small(tag);
                        break;
                    case 340: {
                        const std::uint64_t handle = tag.handle();
                        const auto shape = shapeStyles_.find(handle);
                        e.style = shape != shapeStyles_.end() ? shape->second : recordName(handle);
                        break;
                    }
                    case 46:
                        e.scale = real(tag);
                        break;
                    case 50:
                        e.rotation = angle(tag);
                        break;
                    case 44:
                        e.offsetX = real(tag);
                        break;
                    case 45:
                        e.offsetY = real(tag);
                        break;
                    case 9:
                        e.text = text(tag);
                        break;
                    default:
                        break;
                }
                break;
        }
    }
    if (linetype.name.empty() || unusable_) return leaveOut(record.type);
    if (!complex) linetype.elements.clear();
    if (!own_) {
        const engine::CommonNames& names = engine::commonNames();
        linetype.standard =
            linetype.name == names.byBlock || linetype.name == names.byLayer || linetype.name == names.continuous;
    }
    if (const OwnText json = ownData(record); !json.empty()) {
        if (isPlaceholder(json)) return;
        applyOwnData(json, linetype);
    }
    noteRecordExtension(record, linetype.name, RecordKind::Linetype);
    drawing_.linetypes.add(std::move(linetype));
}

void Reader::readTextStyle(const Record& record) {
    engine::TextStyle style;
    style.fontFile = Name();
    std::int64_t flags = 0;
    for (const Tag& tag : plainTags(record)) {
        switch (tag.code) {
            case 2:
                style.name = name(tag);
                break;
            case 3:
                style.fontFile = name(tag);
                break;
            case 4:
                style.bigFontFile = name(tag);
                break;
            case 40:
                style.height = real(tag);
                break;
            case 41:
                style.widthFactor = real(tag);
                break;
            case 50:
                style.obliqueAngle = angle(tag);
                break;
            case 70:
                flags = tag.integer();
                break;
            case 71: {
                const std::int64_t generation = tag.integer();
                style.backward = (generation & 2) != 0;
                style.upsideDown = (generation & 4) != 0;
                break;
            }
            default:
                break;
        }
    }
    if (unusable_) return leaveOut(record.type);
    if ((flags & 1) != 0) {
        const std::string& file = style.fontFile.str();
        if (!own_ && !file.empty() && shapeFilesSeen_.insert(file).second) drawing_.shapeFiles.push_back(file);
        return;
    }
    style.vertical = (flags & 4) != 0;
    if (style.name.empty()) return leaveOut(record.type);
    const Tags xdata = xdataTags(record);
    for (const engine::XData::Application& application : xdataOf(xdata).applications) {
        // The family of an outline font.
        if (!(application.name == "ACAD") || !style.fontFile.empty()) continue;
        for (const auto& item : application.items)
            if (item.code == 1000 && !std::get<std::string>(item.value).empty())
                style.fontFile = Name(std::get<std::string>(item.value));
    }
    if (style.fontFile.empty() && !own_) style.fontFile = Name("txt.shx");
    if (const OwnText json = ownData(record); !json.empty()) {
        if (isPlaceholder(json)) return;
        applyOwnData(json, style);
    }
    noteRecordExtension(record, style.name, RecordKind::TextStyle);
    drawing_.textStyles.add(std::move(style));
}

void Reader::readView(const Record& record) {
    engine::NamedView view;
    double twist = 0.0;
    for (const Tag& tag : plainTags(record)) {
        if (axis(tag, 10, view.center) || axis(tag, 11, view.viewDirection) || axis(tag, 12, view.target)) continue;
        if (tag.code == 2) view.name = name(tag);
        if (tag.code == 40) view.height = real(tag);
        if (tag.code == 41) view.width = real(tag);
        if (tag.code == 50) twist = angle(tag);
    }
    if (view.name.empty() || unusable_) return leaveOut(record.type);
    view.upHint = engine::viewUp(view.viewDirection, twist);
    if (const OwnText json = ownData(record); !json.empty()) applyOwnData(json, view);
    noteRecordExtension(record, view.name, RecordKind::View);
    drawing_.namedViews.add(std::move(view));
}

void Reader::readUcs(const Record& record) {
    engine::Ucs ucs;
    for (const Tag& tag : plainTags(record)) {
        if (axis(tag, 10, ucs.origin) || axis(tag, 11, ucs.xAxis) || axis(tag, 12, ucs.yAxis)) continue;
        if (tag.code == 2) ucs.name = name(tag);
    }
    if (ucs.name.empty() || unusable_) return leaveOut(record.type);
    if (const OwnText json = ownData(record); !json.empty()) applyOwnData(json, ucs);
    noteRecordExtension(record, ucs.name, RecordKind::Ucs);
    drawing_.ucsList.add(std::move(ucs));
}

void Reader::readAppId(const Record& record) {
    const Tag* tag = record.find(2);
    if (tag == nullptr) return;
    const Name application = name(*tag);
    // The program's own applications are no part of the drawing.
    const auto own = registeredApplications();
    if (application.empty() ||
        (application.view() != "ACAD" && std::find(own.begin(), own.end(), application.view()) != own.end()))
        return;
    if (appIdsSeen_.insert(application.key()).second) drawing_.appIds.push_back(application);
}

void Reader::readViewport(const Record& record) {
    const Tag* title = record.find(2);
    // Several records of that name are tiled viewports: the first is the current one.
    if (title == nullptr || viewRead_ || !engine::equalNoCase(title->trimmed(), "*ACTIVE"))
        return leaveOut(record.type);
    engine::NamedView view = drawing_.currentView;
    double aspect = 0.0;
    double height = 0.0;
    double twist = 0.0;
    Vector2 snapUnit;
    Vector2 gridUnit;
    for (const Tag& tag : plainTags(record)) {
        if (axis(tag, 12, view.center) || axis(tag, 13, drawing_.snapBase) || axis(tag, 14, snapUnit) ||
            axis(tag, 15, gridUnit) || axis(tag, 16, view.viewDirection) || axis(tag, 17, view.target))
            continue;
        switch (tag.code) {
            case 40:
                height = real(tag);
                break;
            case 41:
                aspect = real(tag);
                break;
            case 51:
                twist = angle(tag);
                break;
            default:
                break;
        }
    }
    if (unusable_ || !(height > 0.0)) return leaveOut(record.type);
    view.upHint = engine::viewUp(view.viewDirection, twist);
    viewRead_ = true;
    view.height = height;
    view.width = aspect > 0.0 ? height * aspect : height * 1.5;
    drawing_.currentView = view;
    if (snapUnit.x > 0.0 && snapUnit.y > 0.0) engine::loadSysVar(drawing_, "SNAPUNIT", Vector3(snapUnit));
    if (gridUnit.x > 0.0 && gridUnit.y > 0.0) engine::loadSysVar(drawing_, "GRIDUNIT", Vector3(gridUnit));
}

void Reader::readBlockRecord(const Record& record) {
    BlockRecordData data;
    Name blockName;
    for (const Tag& tag : plainTags(record)) {
        switch (tag.code) {
            case 2:
                blockName = name(tag);
                break;
            case 5:
                data.handle = tag.handle();
                break;
            case 280:
                data.explodable = tag.integer() != 0;
                break;
            case 281:
                data.uniform = tag.integer() != 0;
                break;
            default:
                break;
        }
    }
    if (blockName.empty()) return leaveOut(record.type);
    data.own = ownData(record);
    data.placeholder = !data.own.empty() && isPlaceholder(data.own);
    if (data.placeholder) {
        placeholderBlocks_.push_back(blockName);
        data.own = {};
    }
    if (const std::uint64_t extension = extensionOf(record)) {
        blockDictionaries_[blockName.key()] = extension;
        recordExtensions_.push_back({blockName, extension, RecordKind::Block});
    }
    blockRecords_.emplace(blockName.key(), std::move(data));
}

void Reader::readDimStyle(const Record& record) {
    engine::DimStyle style = engine::DimStyle::imperial();
    style.name = Name();
    bool fill = false;  // the second group 70 is the colour of the text's fill
    const std::vector<Tag> tags = plainTags(record);
    for (const Tag& tag : tags) {
        if (tag.code == 2) {
            style.name = name(tag);
            continue;
        }
        if (tag.code == 69) fill = true;
        if (tag.code == 70 && !fill) continue;
        if (tag.code < 3 || tag.code == 100 || tag.code == 105 || tag.code == 330) continue;
        std::int32_t code = tag.code;
        if (code >= 5 && code <= 7) {
            // Releases before 13 name the arrow blocks here.
            if (version_ >= 1012) continue;
            code = code == 5 ? 342 : code == 6 ? 343 : 344;
        }
        const auto variables = engine::dimVariables();
        const auto found = std::find_if(variables.begin(), variables.end(),
                                        [&](const engine::DimVariable& v) { return v.dxfCode == code; });
        if (found == variables.end()) continue;
        if (std::holds_alternative<Name engine::DimStyle::*>(found->member)) {
            Name value = tag.code >= 340 ? recordName(tag.handle()) : name(tag);
            if (value.empty() && code == 340) value = engine::commonNames().standard;
            if (value.empty() && code >= 345) value = engine::commonNames().byBlock;
            style.*std::get<Name engine::DimStyle::*>(found->member) = value;
        } else if (std::holds_alternative<std::string engine::DimStyle::*>(found->member)) {
            style.*std::get<std::string engine::DimStyle::*>(found->member) = text(tag);
        } else {
            double number = tag.real();
            if (code == kJogAngleCode && isJogInDegrees(number)) number = angle(tag);
            if (number == number) engine::setDimValue(style, *found, engine::DimValue(number));
        }
    }
    if (style.name.empty()) return leaveOut(record.type);
    const Tags xdata = xdataTags(record);
    for (const engine::XData::Application& application : xdataOf(xdata).applications) {
        Name engine::DimStyle::*member = nullptr;
        if (application.name == "ACAD_DSTYLE_DIM_LINETYPE") member = &engine::DimStyle::dimLineLinetype;
        if (application.name == "ACAD_DSTYLE_DIM_EXT1_LINETYPE") member = &engine::DimStyle::extLine1Linetype;
        if (application.name == "ACAD_DSTYLE_DIM_EXT2_LINETYPE") member = &engine::DimStyle::extLine2Linetype;
        if (application.name == "AcadAnnotative") {
            std::int64_t last = 0;
            for (const auto& item : application.items)
                if (const auto* n = std::get_if<std::int64_t>(&item.value)) last = *n;
            style.annotative = last != 0;
        }
        if (member == nullptr) continue;
        for (const auto& item : application.items)
            if (item.code == 1005)
                if (const Name linetype = recordName(parseHandle(std::get<std::string>(item.value))); !linetype.empty())
                    style.*member = linetype;
    }
    if (const OwnText json = ownData(record); !json.empty()) {
        if (isPlaceholder(json)) return;
        applyOwnData(json, style);
    }
    noteRecordExtension(record, style.name, RecordKind::DimStyle);
    dimStylesRead_ = true;
    drawing_.dimStyles.add(std::move(style));
}

}  // namespace kova::io::dxf
