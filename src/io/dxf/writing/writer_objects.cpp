// OBJECTS: the root dictionary and the small objects under it.
#include "io/dxf/object_variables.hpp"
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using engine::Name;

void Writer::objectHead(std::string_view type, std::uint64_t handle, std::uint64_t owner, std::uint64_t dictionary) {
    GroupWriter& out = *out_;
    recordStart_ = out.size();
    out.record(type);
    out.handle(5, handle);
    if (dictionary != 0) extensionGroup(dictionary);
    if (owner != 0) {
        out.word(102, "{ACAD_REACTORS");
        out.handle(330, owner);
        out.word(102, "}");
    }
    out.handle(330, owner);
}

void Writer::dictionary(std::uint64_t handle, std::uint64_t owner, const Entries& entries, bool hardOwner) {
    GroupWriter& out = *out_;
    objectHead("DICTIONARY", handle, owner);
    out.subclass("AcDbDictionary");
    if (hardOwner) out.integer(280, 1);
    out.integer(281, 1);
    for (const auto& [key, target] : entries) {
        out.text(3, key);
        out.handle(hardOwner ? 360 : 350, target);
    }
}

void Writer::objectsSection() {
    out_ = &objects_;
    GroupWriter& out = objects_;
    out.record("SECTION");
    out.word(2, "OBJECTS");
    Entries root = {{"ACAD_GROUP", fixed_.groups},
                    {"ACAD_LAYOUT", fixed_.layouts},
                    {"ACAD_MLINESTYLE", fixed_.mlineStyles},
                    {"ACAD_MLEADERSTYLE", fixed_.mleaderStyles},
                    {"ACAD_TABLESTYLE", fixed_.tableStyles},
                    {"ACAD_IMAGE_DICT", fixed_.images},
                    {"ACAD_PLOTSTYLENAME", fixed_.plotStyleNames},
                    {"DWGPROPS", fixed_.properties},
                    {"ACAD_PLOTSETTINGS", fixed_.plotSettings},
                    {"ACAD_SCALELIST", fixed_.scales},
                    {"AcDbVariableDictionary", fixed_.variables},
                    {std::string(kDrawingKey), fixed_.drawing}};
    const std::int32_t imageFrame = engine::sysVarInt(drawing_, "IMAGEFRAME");
    const std::int32_t wipeoutFrame = engine::sysVarInt(drawing_, "WIPEOUTFRAME");
    // What other programs assume needs no object.
    if (imageFrame != 1) root.emplace_back("ACAD_IMAGE_VARS", newHandle());
    const std::uint64_t imageVariables = root.back().second;
    if (wipeoutFrame != 1) root.emplace_back("ACAD_WIPEOUT_VARS", newHandle());
    const std::uint64_t wipeoutVariables = root.back().second;
    NamedObjects named;
    namedObjects(root, named);
    dictionary(fixed_.root, 0, root, false);

    objectHead("ACDBDICTIONARYWDFLT", fixed_.plotStyleNames, fixed_.root);
    out.subclass("AcDbDictionary");
    out.integer(281, 1);
    out.word(3, "Normal");
    out.handle(350, fixed_.plotStyle);
    out.subclass("AcDbDictionaryWithDefault");
    out.handle(340, fixed_.plotStyle);
    objectHead("ACDBPLACEHOLDER", fixed_.plotStyle, fixed_.plotStyleNames);
    ++classCounts_["ACDBDICTIONARYWDFLT"];
    ++classCounts_["ACDBPLACEHOLDER"];

    groups();
    layoutObjects();
    namedPageSetups();
    mlineStyles();
    mleaderStyles();
    tableStyles();
    images();
    scales();
    variables();
    if (imageFrame != 1) {
        objectHead("RASTERVARIABLES", imageVariables, fixed_.root);
        out.subclass("AcDbRasterVariables");
        out.integer(90, 0);
        out.integer(70, imageFrame);
        out.integer(71, 1);
        out.integer(72, 0);
        ++classCounts_["RASTERVARIABLES"];
    }
    if (wipeoutFrame != 1) {
        objectHead("WIPEOUTVARIABLES", wipeoutVariables, fixed_.root);
        out.subclass("AcDbWipeoutVariables");
        out.integer(70, wipeoutFrame);
        ++classCounts_["WIPEOUTVARIABLES"];
    }
    drawingProperties();
    layerStates();
    for (const auto& [entry, handle] : named) dictionaryEntry(*entry, handle, fixed_.root, 0);

    objectHead("XRECORD", fixed_.drawing, fixed_.root);
    out.subclass("AcDbXrecord");
    out.integer(280, 1);
    std::string record = drawingRecord();
    protectEscapes(record);
    xrecordText(record);
}

void Writer::groups() {
    GroupWriter& out = *out_;
    Entries entries;
    for (const engine::Group& group : drawing_.groups) entries.emplace_back(symbol(group.name), newHandle());
    dictionary(fixed_.groups, fixed_.root, entries, false);
    std::size_t i = 0;
    for (const engine::Group& group : drawing_.groups) {
        const std::uint64_t handle = entries[i++].second;
        const bool complete = std::all_of(group.memberHandles.begin(), group.memberHandles.end(), [&](std::uint64_t h) {
            return h != 0 && drawing_.findByHandle(h) != nullptr;
        });
        FieldKeys keys;
        if (!isPlain(group.name)) keys.push_back("name");
        if (!complete) keys.push_back("memberHandles");
        const OwnData own = gatherRecord(group, keys, handle);
        objectHead("GROUP", handle, fixed_.groups, own.dictionary);
        out.subclass("AcDbGroup");
        out.text(300, group.description);
        out.flag(70, group.name.view().starts_with('*'));
        out.flag(71, group.selectable);
        for (const std::uint64_t member : group.memberHandles)
            if (member != 0 && drawing_.findByHandle(member) != nullptr) out.handle(340, member);
        ownXdata(own);
    }
}

void Writer::mlineStyles() {
    GroupWriter& out = *out_;
    Entries entries;
    for (const MLineStyleRecord& style : mlineStyles_) entries.emplace_back(style.name, style.handle);
    dictionary(fixed_.mlineStyles, fixed_.root, entries, false);
    for (const MLineStyleRecord& style : mlineStyles_) {
        static const engine::MLineEntity standard;
        const engine::MLineEntity& sample = style.sample != nullptr ? *style.sample : standard;
        objectHead("MLINESTYLE", style.handle, fixed_.mlineStyles);
        out.subclass("AcDbMlineStyle");
        out.text(2, style.name);
        out.integer(70, sample.flags & 0x773);
        out.word(3, "");
        out.integer(62, sample.fillColor.bareIndex());
        if (sample.fillColor.method == engine::ColorMethod::RGB)
            out.integer(420, sample.fillColor.red << 16 | sample.fillColor.green << 8 | sample.fillColor.blue);
        out.angle(51, sample.startAngle);
        out.angle(52, sample.endAngle);
        const std::size_t count = std::min<std::size_t>(sample.elements.size(), 16);
        out.integer(71, static_cast<std::int64_t>(count));
        for (std::size_t i = 0; i < count; ++i) {
            const engine::MLineElement& element = sample.elements[i];
            out.real(49, element.offset);
            out.integer(62, element.color.bareIndex());
            if (element.color.method == engine::ColorMethod::RGB)
                out.integer(420, element.color.red << 16 | element.color.green << 8 | element.color.blue);
            linetypeName(6, element.linetype);
        }
    }
}

void Writer::images() {
    GroupWriter& out = *out_;
    Entries entries;
    NumberedTexts taken;
    for (const ImageDefinition& image : images_) {
        // The key is the file's name without folder and extension.
        std::string_view stem = image.path;
        if (const std::size_t slash = stem.find_last_of("/\\"); slash != std::string_view::npos)
            stem.remove_prefix(slash + 1);
        if (const std::size_t dot = stem.rfind('.'); dot != std::string_view::npos && dot > 0)
            stem = stem.substr(0, dot);
        const std::string key(symbol(Name(stem.empty() ? std::string_view("image") : stem)));
        entries.emplace_back(freeName(key, taken), image.handle);
    }
    dictionary(fixed_.images, fixed_.root, entries, false);
    for (const ImageDefinition& image : images_) {
        out.record("IMAGEDEF");
        out.handle(5, image.handle);
        out.word(102, "{ACAD_REACTORS");
        out.handle(330, fixed_.images);
        for (const auto& [reactor, entity] : image.reactors) out.handle(330, reactor);
        out.word(102, "}");
        out.handle(330, fixed_.images);
        out.subclass("AcDbRasterImageDef");
        out.integer(90, 0);
        out.text(1, image.path);
        out.real(10, image.width);
        out.real(20, image.height);
        out.real(11, image.width > 0 ? 1.0 / image.width : 1.0);
        out.real(21, image.height > 0 ? 1.0 / image.height : 1.0);
        out.integer(280, 1);
        out.integer(281, 0);
        for (const auto& [reactor, entity] : image.reactors) {
            out.record("IMAGEDEF_REACTOR");
            out.handle(5, reactor);
            out.handle(330, entity);
            out.subclass("AcDbRasterImageDefReactor");
            out.integer(90, 2);
            out.handle(330, entity);
        }
        ++classCounts_["IMAGEDEF"];
        classCounts_["IMAGEDEF_REACTOR"] += image.reactors.size();
    }
}

void Writer::scales() {
    GroupWriter& out = *out_;
    Entries entries;
    for (std::size_t i = 0; i < drawing_.annotationScales.size(); ++i)
        entries.emplace_back("A" + std::to_string(i), newHandle());
    dictionary(fixed_.scales, fixed_.root, entries, true);
    std::size_t i = 0;
    for (const engine::AnnotationScale& scale : drawing_.annotationScales) {
        objectHead("SCALE", entries[i++].second, fixed_.scales);
        out.subclass("AcDbScale");
        out.integer(70, 0);
        out.text(300, scale.name.view());
        out.real(140, scale.paperUnits);
        out.real(141, scale.drawingUnits);
        out.flag(290, scale.paperUnits == scale.drawingUnits);
    }
    classCounts_["SCALE"] += entries.size();
}

void Writer::variables() {
    GroupWriter& out = *out_;
    std::vector<std::pair<std::string_view, std::string>> values = {
        {"CANNOSCALE", engine::sysVarString(drawing_, "CANNOSCALE", "1:1")},
        {"CMLEADERSTYLE", std::string(symbol(drawing_.currentMLeaderStyle))},
        {"CTABLESTYLE", std::string(symbol(drawing_.currentTableStyle))},
    };
    for (const std::string_view name : kDictionaryVariables) {
        const engine::SysVarDef* def = engine::findSysVar(name);
        const engine::SysVarValue value = engine::getSysVar(drawing_, *def);
        if (value != def->fallback) values.emplace_back(name, engine::sysVarText(value));
    }
    Entries entries;
    for (const auto& [name, value] : values) entries.emplace_back(name, newHandle());
    dictionary(fixed_.variables, fixed_.root, entries, true);
    for (std::size_t i = 0; i < values.size(); ++i) {
        objectHead("DICTIONARYVAR", entries[i].second, fixed_.variables);
        out.subclass("DictionaryVariables");
        out.integer(280, 0);
        out.text(1, values[i].second);
    }
}

void Writer::drawingProperties() {
    GroupWriter& out = *out_;
    objectHead("XRECORD", fixed_.properties, fixed_.root);
    out.subclass("AcDbXrecord");
    out.integer(280, 1);
    out.word(1, "DWGPROPS COOKIE");
    out.text(2, drawing_.properties.title);
    out.text(3, drawing_.properties.subject);
    out.text(4, drawing_.properties.author);
    out.word(6, "");
    out.text(7, drawing_.properties.keywords);
    out.word(8, "");
    out.word(9, "");
    for (int i = 300; i < 310; ++i) out.word(i, "=");
    out.real(40, engine::sysVarReal(drawing_, "TDEDITED", 0.0));
    out.real(41, engine::sysVarReal(drawing_, "TDCREATE", 0.0));
    out.real(42, engine::sysVarReal(drawing_, "TDUPDATE", 0.0));
    out.word(1, "");
    out.integer(90, 0);
}

}  // namespace kova::io::dxf
