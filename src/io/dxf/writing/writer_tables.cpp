// TABLES, without the dimension styles.
#include "engine/model/view_frame.hpp"
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using engine::Name;

void Writer::tableHead(std::string_view name, std::uint64_t handle, std::size_t count, std::uint64_t dictionary) {
    GroupWriter& out = *out_;
    out.record("TABLE");
    out.word(2, name);
    out.handle(5, handle);
    if (dictionary != 0) extensionGroup(dictionary);
    out.word(330, "0");
    out.subclass("AcDbSymbolTable");
    out.integer(70, static_cast<std::int64_t>(count));
}

void Writer::recordHead(std::string_view type, std::uint64_t handle, std::uint64_t table, std::string_view marker,
                        const OwnData& own, int handleCode) {
    GroupWriter& out = *out_;
    recordStart_ = out.size();
    out.record(type);
    out.handle(handleCode, handle);
    if (own.dictionary != 0) extensionGroup(own.dictionary);
    out.handle(330, table);
    out.subclass("AcDbSymbolTableRecord");
    out.subclass(marker);
}

void Writer::tablesSection() {
    out_->record("SECTION");
    out_->word(2, "TABLES");
    // Dimension styles, linetypes and text styles name each other: what they add must still find its table. The
    // tables are therefore built apart and put in order.
    GroupWriter linetypes;
    GroupWriter styles;
    GroupWriter dimStyles;
    GroupWriter layers;
    const auto build = [&](GroupWriter& part, void (Writer::*table)()) {
        out_ = &part;
        (this->*table)();
    };
    build(dimStyles, &Writer::dimStyleTable);
    build(layers, &Writer::layerTable);
    build(linetypes, &Writer::linetypeTable);
    build(styles, &Writer::styleTable);
    out_ = &front_;
    viewportTable();
    front_.append(linetypes.view());
    front_.append(layers.view());
    front_.append(styles.view());
    viewTable();
    ucsTable();
    appIdTable();
    front_.append(dimStyles.view());
    blockRecordTable();
    front_.record("ENDSEC");
}

void Writer::viewportTable() {
    GroupWriter& out = *out_;
    tableHead("VPORT", tables_.viewports, 1);
    recordHead("VPORT", newHandle(), tables_.viewports, "AcDbViewportTableRecord", {});
    const engine::NamedView& view = drawing_.currentView;
    const double height = std::isfinite(view.height) && view.height > 0.0 ? view.height : 297.0;
    const double width = std::isfinite(view.width) && view.width > 0.0 ? view.width : height * 1.5;
    const auto real = [&](std::string_view name, double fallback) {
        return engine::sysVarReal(drawing_, name, fallback);
    };
    const auto pointOf = [&](std::string_view name, math::Vector2 fallback) {
        const auto value = engine::getSysVar(drawing_, name);
        const auto* p = value ? std::get_if<math::Vector3>(&*value) : nullptr;
        return p != nullptr ? math::Vector2{p->x, p->y} : fallback;
    };
    out.word(2, "*Active");
    out.integer(70, 0);
    out.point(10, math::Vector2{0, 0});
    out.point(11, math::Vector2{1, 1});
    out.point(12, view.center);
    out.point(13, drawing_.snapBase);
    out.point(14, pointOf("SNAPUNIT", {10, 10}));
    out.point(15, pointOf("GRIDUNIT", {10, 10}));
    out.point(16, view.viewDirection == math::Vector3{} ? math::Vector3{0, 0, 1} : view.viewDirection);
    out.point(17, view.target);
    out.real(40, height);
    out.real(41, width / height);
    out.real(42, 50.0);
    out.real(43, 0.0);
    out.real(44, 0.0);
    out.angle(50, real("SNAPANG", 0.0));
    out.angle(51, engine::viewTwist(view.viewDirection, view.upHint));
    out.integer(71, 0);
    out.integer(72, 1000);
    out.integer(73, 1);
    out.integer(74, 3);
    out.integer(75, engine::sysVarInt(drawing_, "SNAPMODE", 0));
    out.integer(76, engine::sysVarInt(drawing_, "GRIDMODE", 0));
    out.integer(77, engine::sysVarInt(drawing_, "SNAPSTYL", 0));
    out.integer(78, engine::sysVarInt(drawing_, "SNAPISOPAIR", 0));
    out.integer(281, 0);
    out.integer(65, 1);
    out.point(110, drawing_.ucs.origin, 0.0);
    out.point(111, drawing_.ucs.xAxis, 0.0);
    out.point(112, drawing_.ucs.yAxis, 0.0);
    out.integer(79, 0);
    out.real(146, 0.0);
    out.record("ENDTAB");
}

void Writer::linetypeRecord(const engine::Linetype& linetype, const OwnData& own) {
    GroupWriter& out = *out_;
    recordHead("LTYPE", linetypes_.at(linetype.name.key()), tables_.linetypes, "AcDbLinetypeTableRecord", own);
    out.text(2, symbol(linetype.name));
    out.integer(70, linetype.flags & 0x7F);
    out.text(3, linetype.description);
    out.integer(72, 65);
    out.integer(73, static_cast<std::int64_t>(linetype.pattern.size()));
    out.real(40, linetype.patternLength());
    for (std::size_t i = 0; i < linetype.pattern.size(); ++i) {
        out.real(49, linetype.pattern[i]);
        const engine::LinetypeElement* element =
            i < linetype.elements.size() && (linetype.elements[i].flags & 6) != 0 ? &linetype.elements[i] : nullptr;
        if (element == nullptr) {
            out.integer(74, 0);
            continue;
        }
        out.integer(74, element->flags & 0x7FFF);
        out.integer(75, (element->flags & 2) != 0 ? 0 : element->shape & 0x7FFF);
        out.handle(340, textStyleHandle(element->style));
        out.real(46, element->scale);
        out.angle(50, element->rotation);
        out.real(44, element->offsetX);
        out.real(45, element->offsetY);
        if ((element->flags & 2) != 0) out.text(9, element->text);
    }
    ownXdata(own);
}

void Writer::linetypeTable() {
    GroupWriter rest;
    GroupWriter& table = *out_;
    const engine::CommonNames& names = engine::commonNames();
    tableHead("LTYPE", tables_.linetypes, saved_.linetypes.size() + missingLinetypes_.size());
    // The three that always exist come first.
    const auto record = [&](const engine::Linetype& linetype) {
        FieldKeys keys;
        if (!isPlain(linetype.name)) keys.push_back("name");
        if (linetype.standard) keys.push_back("standard");
        if (!linetype.elements.empty()) keys.push_back("elements");
        if ((linetype.flags & ~0x7F) != 0 || (forDwg_ && linetype.flags != 0)) keys.push_back("flags");
        linetypeRecord(linetype, gatherRecord(linetype, keys, linetypes_.at(linetype.name.key())));
    };
    const auto isSpecial = [&](Name name) {
        return name == names.byBlock || name == names.byLayer || name == names.continuous;
    };
    const auto missing = [&](Name name) {
        engine::Linetype plain;
        plain.name = name;
        if (name == names.continuous) plain.description = "Solid line";
        linetypeRecord(plain, placeholderMark());
    };
    for (const Name name : {names.byBlock, names.byLayer, names.continuous}) {
        if (const engine::Linetype* known = drawing_.linetypes.find(name))
            record(*known);
        else
            missing(name);
    }
    for (const engine::Linetype* linetype : saved_.linetypes)
        if (!isSpecial(linetype->name)) record(*linetype);
    for (std::size_t i = 0; i < missingLinetypes_.size(); ++i)
        if (!isSpecial(missingLinetypes_[i])) missing(missingLinetypes_[i]);
    table.record("ENDTAB");
}

void Writer::layerRecord(const engine::Layer& layer, const OwnData& own) {
    GroupWriter& out = *out_;
    recordHead("LAYER", layers_.at(layer.name.key()), tables_.layers, "AcDbLayerTableRecord", own);
    out.text(2, symbol(layer.name));
    // 16 and 32: of an external reference that was found.
    const int dependent = engine::referenceOf(drawing_, layer.name) != nullptr ? 16 + 32 : 0;
    out.integer(70, (layer.frozen ? 1 : 0) | (layer.locked ? 4 : 0) | dependent);
    int color = layer.color.bareIndex();
    if (color < 1 || color > 255) color = 7;
    out.integer(62, layer.on ? color : -color);
    if (layer.color.method == engine::ColorMethod::RGB)
        out.integer(420, layer.color.red << 16 | layer.color.green << 8 | layer.color.blue);
    Name linetype = layer.linetype;
    if (linetype.empty() || linetype == engine::commonNames().byLayer || linetype == engine::commonNames().byBlock)
        linetype = engine::commonNames().continuous;
    linetypeName(6, linetype);
    if (!layer.plottable) out.integer(290, 0);
    const std::int32_t weight = nearestLineweight(layer.lineweight);
    out.integer(370, weight == -1 || weight == -2 ? -3 : weight);
    out.handle(390, fixed_.plotStyle);
    if (layer.transparency > 0 && layer.transparency <= 100) {
        out.word(1001, "AcCmTransparency");
        out.integer(1071, transparencyCode(layer.transparency));
    }
    if (!layer.description.empty()) {
        out.word(1001, "AcAecLayerStandard");
        out.word(1000, "");
        std::string_view shown = layer.description;
        eachPiece(shown, 255, [&, first = true](std::string_view piece) mutable {
            if (first) out.text(1000, piece);
            first = false;
        });
    }
    ownXdata(own);
}

void Writer::layerTable() {
    tableHead("LAYER", tables_.layers, saved_.layers.size() + missingLayers_.size(), fixed_.layerTableDictionary);
    for (const engine::Layer* each : saved_.layers) {
        const engine::Layer& layer = *each;
        FieldKeys keys;
        if (!isPlain(layer.name)) keys.push_back("name");
        if (layer.color.method == engine::ColorMethod::ByLayer || layer.color.method == engine::ColorMethod::ByBlock ||
            layer.color.bareIndex() == 0)
            keys.push_back("color");
        if (!isLineweight(layer.lineweight) || layer.lineweight == -1 || layer.lineweight == -2)
            keys.push_back("lineweight");
        if (layer.transparency < 0 || layer.transparency > 100) keys.push_back("transparency");
        if (layer.description.size() > 255) keys.push_back("description");
        if (!isPlain(layer.linetype) || layer.linetype == engine::commonNames().byLayer ||
            layer.linetype == engine::commonNames().byBlock)
            keys.push_back("linetype");
        if (!layer.plotStyleName.identical(engine::commonNames().normal)) keys.push_back("plotStyleName");
        layerRecord(layer, gatherRecord(layer, keys, layers_.at(layer.name.key())));
    }
    for (std::size_t i = 0; i < missingLayers_.size(); ++i) {
        engine::Layer plain;
        plain.name = missingLayers_[i];
        layerRecord(plain, placeholderMark());
    }
    out_->record("ENDTAB");
}

void Writer::styleRecord(const engine::TextStyle& style, const OwnData& own) {
    GroupWriter& out = *out_;
    recordHead("STYLE", styles_.at(style.name.key()), tables_.styles, "AcDbTextStyleTableRecord", own);
    out.text(2, symbol(style.name));
    out.integer(70, style.vertical ? 4 : 0);
    out.real(40, style.height);
    out.real(41, style.widthFactor);
    out.angle(50, style.obliqueAngle);
    out.integer(71, (style.backward ? 2 : 0) | (style.upsideDown ? 4 : 0));
    out.real(42, style.height > 0.0 ? style.height : 2.5);
    out.text(3, style.fontFile.view());
    out.text(4, style.bigFontFile.view());
    ownXdata(own);
}

void Writer::styleTable() {
    GroupWriter& out = *out_;
    tableHead("STYLE", tables_.styles, saved_.textStyles.size() + missingStyles_.size() + shapeStyles_.size());
    for (const engine::TextStyle* each : saved_.textStyles) {
        const engine::TextStyle& style = *each;
        FieldKeys keys;
        if (!isPlain(style.name)) keys.push_back("name");
        styleRecord(style, gatherRecord(style, keys, styles_.at(style.name.key())));
    }
    for (std::size_t i = 0; i < missingStyles_.size(); ++i) {
        engine::TextStyle plain;
        plain.name = missingStyles_[i];
        styleRecord(plain, placeholderMark());
    }
    for (const auto& [file, handle] : shapeStyles_) {
        recordHead("STYLE", handle, tables_.styles, "AcDbTextStyleTableRecord", {});
        out.word(2, "");
        out.integer(70, 1);
        out.real(40, 0.0);
        out.real(41, 1.0);
        out.angle(50, 0.0);
        out.integer(71, 0);
        out.real(42, 2.5);
        out.text(3, file);
        out.word(4, "");
    }
    out.record("ENDTAB");
}

void Writer::viewTable() {
    GroupWriter& out = *out_;
    tableHead("VIEW", tables_.views, drawing_.namedViews.size());
    for (const engine::NamedView& view : drawing_.namedViews) {
        FieldKeys keys{"zoom", "upHint"};
        if (!isPlain(view.name)) keys.push_back("name");
        if (view.viewDirection == math::Vector3{}) keys.push_back("viewDirection");
        const std::uint64_t handle = newHandle();
        const OwnData own = gatherRecord(view, keys, handle);
        recordHead("VIEW", handle, tables_.views, "AcDbViewTableRecord", own);
        out.text(2, symbol(view.name));
        out.integer(70, 0);
        out.real(40, view.height);
        out.point(10, view.center);
        out.real(41, view.width);
        out.point(11, view.viewDirection == math::Vector3{} ? math::Vector3{0, 0, 1} : view.viewDirection);
        out.point(12, view.target);
        out.real(42, 50.0);
        out.real(43, 0.0);
        out.real(44, 0.0);
        out.angle(50, engine::viewTwist(view.viewDirection, view.upHint));
        out.integer(71, 0);
        out.integer(281, 0);
        out.integer(72, 0);
        ownXdata(own);
    }
    out.record("ENDTAB");
}

void Writer::ucsTable() {
    GroupWriter& out = *out_;
    tableHead("UCS", tables_.ucs, drawing_.ucsList.size());
    for (const engine::Ucs& ucs : drawing_.ucsList) {
        FieldKeys keys;
        if (!isPlain(ucs.name)) keys.push_back("name");
        const std::uint64_t handle = newHandle();
        const OwnData own = gatherRecord(ucs, keys, handle);
        recordHead("UCS", handle, tables_.ucs, "AcDbUCSTableRecord", own);
        out.text(2, symbol(ucs.name));
        out.integer(70, 0);
        out.point(10, ucs.origin, 0.0);
        out.point(11, ucs.xAxis, 0.0);
        out.point(12, ucs.yAxis, 0.0);
        out.integer(79, 0);
        out.real(146, 0.0);
        ownXdata(own);
    }
    out.record("ENDTAB");
}

void Writer::appIdTable() {
    // Whatever the tables behind this one need is registered from the start.
    tableHead("APPID", tables_.appIds, applications_.size());
    for (const std::string& name : applications_) {
        recordHead("APPID", newHandle(), tables_.appIds, "AcDbRegAppTableRecord", {});
        out_->text(2, name);
        out_->integer(70, 0);
    }
    out_->record("ENDTAB");
}

void Writer::blockRecord(std::string_view name, std::uint64_t handle, std::uint64_t layout, bool explodable,
                         bool uniform, const OwnData& own) {
    GroupWriter& out = *out_;
    recordHead("BLOCK_RECORD", handle, tables_.blockRecords, "AcDbBlockTableRecord", own);
    out.text(2, name);
    out.handle(340, layout);
    out.integer(70, 0);
    out.flag(280, explodable);
    out.flag(281, uniform);
    // Names of pictures and the like are other programs' affair; what they leave of the data still holds.
    OwnData unchecked = own;
    unchecked.scope.checked = false;
    ownXdata(unchecked);
}

void Writer::blockRecordTable() {
    tableHead("BLOCK_RECORD", tables_.blockRecords,
              spaces_.size() + saved_.blocks.size() + anonymous_.size() + missingBlocks_.size());
    for (const Space& space : spaces_) blockRecord(space.blockName, space.record, space.object, true, false, {});
    for (const engine::Block* block : saved_.blocks) {
        const std::uint64_t handle = blockRecords_.at(block->name.key());
        blockRecord(symbol(block->name), handle, 0, block->explodable, block->scaleUniform,
                    gatherText(blockOwnData(*block),
                               block->isDynamic ? kDynamicBlockApplication : kOwnRecordApplication, handle));
    }
    for (const Picture& picture : anonymous_)
        blockRecord(picture.name, picture.record, 0, true, false, placeholderMark());
    for (const Name name : missingBlocks_)
        blockRecord(symbol(name), blockRecords_.at(name.key()), 0, true, false, placeholderMark());
    out_->record("ENDTAB");
}

}  // namespace kova::io::dxf
