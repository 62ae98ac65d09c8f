// HEADER and CLASSES.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using engine::SysVarValue;
using math::Vector3;

namespace {

/// Header variables that hold coordinates in a plane.
bool isPlanar(std::string_view name) { return name == "LIMMIN" || name == "LIMMAX"; }

/// The group code of a header variable whose row of the variable table names none.
int headerCode(std::string_view name, const SysVarValue& value) {
    if (name == "CELTYPE" || name.starts_with("DIMLT")) return 6;
    if (name == "CLAYER") return 8;
    if (name == "TEXTSTYLE" || name == "DIMTXSTY") return 7;
    if (name == "DIMSTYLE" || name == "UCSNAME") return 2;
    if (name == "CECOLOR") return 62;
    if (std::holds_alternative<std::int32_t>(value)) return 70;
    if (std::holds_alternative<double>(value)) return 40;
    return std::holds_alternative<Vector3>(value) ? 10 : 1;
}

}  // namespace

void Writer::headerVariable(std::string_view name) {
    GroupWriter& out = *out_;
    char text[32] = "$";
    const std::size_t length = name.copy(text + 1, sizeof text - 1);
    const auto title = [&] { out.word(9, std::string_view(text, length + 1)); };
    if (name == "ACADVER") {
        title();
        out.word(1, kVersion);
        return;
    }
    if (name == "ACADMAINTVER") {
        title();
        out.integer(70, kMaintenanceVersion);
        return;
    }
    if (name == "HANDSEED") {
        title();
        out.word(5, kSeedPlaceholder);
        return;
    }
    if (name == "CECOLOR") {
        // A true colour stands in the drawing's own record; here is the nearest index.
        title();
        out.integer(62, drawing_.currentColor.bareIndex());
        return;
    }
    const engine::SysVarDef* def = engine::findSysVar(name);
    if (def == nullptr) return;
    SysVarValue value = engine::getSysVar(drawing_, *def);
    // The clock of the session does not count: the same drawing gives the same file.
    if (name == "TDINDWG") value = engine::sysVarReal(drawing_, "TDEDITED");
    const int code = def->dxfCode != 0 ? def->dxfCode : headerCode(name, value);
    title();
    if (const auto* integer = std::get_if<std::int32_t>(&value)) {
        out.integer(code, *integer);
    } else if (const auto* real = std::get_if<double>(&value)) {
        if (code == 50)
            out.angle(code, *real);
        else
            out.real(code, *real);
    } else if (const auto* point = std::get_if<Vector3>(&value)) {
        if (isPlanar(name))
            out.point(code, math::Vector2{point->x, point->y});
        else
            out.point(code, *point);
    } else {
        const auto& string = std::get<std::string>(value);
        const bool isName = code == 2 || code == 6 || code == 7 || code == 8;
        if (isName && !string.empty())
            out.text(code, symbol(engine::Name(string)));
        else
            out.text(code, string);
    }
}

void Writer::headerSection() {
    out_->record("SECTION");
    out_->word(2, "HEADER");
    for (const std::string_view name : headerVariables()) headerVariable(name);
    out_->record("ENDSEC");
}

void Writer::classesSection() {
    GroupWriter& out = *out_;
    out.record("SECTION");
    out.word(2, "CLASSES");
    for (const ClassRow& row : classTable()) {
        out.record("CLASS");
        out.word(1, row.record);
        out.word(2, row.className);
        out.word(3, row.application);
        out.integer(90, row.proxyFlags);
        const auto count = classCounts_.find(row.record);
        out.integer(91, count != classCounts_.end() ? static_cast<std::int64_t>(count->second) : 0);
        out.integer(280, 0);
        out.flag(281, row.isEntity);
    }
    out.record("ENDSEC");
}

}  // namespace kova::io::dxf
