// Header variables. They are kept while the tables are read, since many name or override what stands in them.
#include <algorithm>
#include <cmath>

#include "engine/model/sysvar.hpp"
#include "engine/sysvars/host.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::SysVarValue;
using math::Vector3;

namespace {

/// Written, but not read: known from elsewhere, or computed.
constexpr std::string_view kNotRead[] = {"ACADVER", "HANDSEED", "EXTMIN",  "EXTMAX",    "OSMODE",      "DIMSAH",
                                         "DIMBLK",  "DIMBLK1",  "DIMBLK2", "DIMLDRBLK", "ACADMAINTVER"};

Vector3 pointOf(const std::vector<Tag>& tags) {
    Vector3 p;
    for (const Tag& tag : tags) {
        const double v = tag.real();
        if (v != v) continue;
        if (tag.code == 10) p.x = v;
        if (tag.code == 20) p.y = v;
        if (tag.code == 30) p.z = v;
    }
    return p;
}

}  // namespace

bool Reader::isHeaderVariableRead(std::string_view name) {
    // Not written, as it stands in the dictionary of variables, too, which comes later.
    if (name == "XCLIPFRAME") return true;
    const auto list = headerVariables();
    return std::find(list.begin(), list.end(), name) != list.end() &&
           std::find(std::begin(kNotRead), std::end(kNotRead), name) == std::end(kNotRead);
}

void Reader::readHeader(const Record& section) {
    for (std::size_t i = 0; i < section.tags.size(); ++i) {
        if (section.tags[i].code != 9) continue;
        const std::string_view title = section.tags[i].trimmed();
        if (title.size() < 2 || title.front() != '$') continue;
        HeaderValue value;
        value.name = engine::upperCase(title.substr(1, 64));
        while (i + 1 < section.tags.size() && section.tags[i + 1].code != 9) {
            if (value.tags.size() < 4) value.tags.push_back(section.tags[i + 1]);
            ++i;
        }
        if (value.tags.empty() || header_.size() > 10000) continue;
        const Tag& first = value.tags.front();
        if (value.name == "ACADVER") {
            const std::string_view version = first.trimmed();
            if (version.size() >= 6) version_ = static_cast<int>(parseInteger(version.substr(2)));
            decoder_.setUtf8(version_ >= 1021);
        } else if (value.name == "DWGCODEPAGE") {
            decoder_.setCodePage(first.trimmed());
            engine::loadSysVar(drawing_, "DWGCODEPAGE", SysVarValue(std::string(first.trimmed())));
        } else if (value.name == "MEASUREMENT") {
            // Decides on the library of patterns that hatches are held against.
            engine::loadSysVar(drawing_, "MEASUREMENT", SysVarValue(first.integer() != 0 ? 1 : 0));
            header_.push_back(std::move(value));
        } else if (value.name == "HANDSEED") {
            seed_ = first.handle();
            if (seed_ < kMaxHandle) drawing_.nextHandle = std::max(drawing_.nextHandle, seed_);
        } else {
            header_.push_back(std::move(value));
        }
    }
}

void Reader::applyHeaderDimensions() {
    // Releases without a table of dimension styles keep the one style in the header.
    if (dimStylesRead_) return;
    engine::DimStyle style = engine::DimStyle::imperial();
    for (const HeaderValue& value : header_) {
        const engine::DimVariable* variable = engine::findDimVariable(value.name);
        if (variable == nullptr) continue;
        const Tag& tag = value.tags.front();
        const bool textual = std::holds_alternative<engine::Name engine::DimStyle::*>(variable->member) ||
                             std::holds_alternative<std::string engine::DimStyle::*>(variable->member);
        double number = tag.real();
        if (value.name == "DIMJOGANG" && isJogInDegrees(number)) number = radiansFromDegrees(number);
        if (textual)
            engine::setDimValue(style, *variable, engine::DimValue(std::string(name(tag).view())));
        else if (number == number)
            engine::setDimValue(style, *variable, engine::DimValue(number));
    }
    bool any = false;
    for (const HeaderValue& value : header_) any = any || engine::findDimVariable(value.name) != nullptr;
    if (!any) return;
    style.name = engine::commonNames().standard;
    drawing_.dimStyles.add(std::move(style));
}

/// Takes a variable that names a record, or the drawing's colour; false for others. What stands in the header for a
/// name that files cannot hold, and the index that is nearest to a true colour, say nothing against the own record.
bool Reader::headerName(const HeaderValue& value, bool ownRecord) {
    const Tag& tag = value.tags.front();
    const auto take = [&](engine::Name& current, const auto& table, bool known) {
        const engine::Name given = name(tag);
        if (given.empty() || (ownRecord && given == current)) return;
        if ((known || ownRecord) && !table.contains(given)) return;
        current = given;
    };
    if (value.name == "CLAYER") {
        take(drawing_.currentLayer, drawing_.layers, false);
        if (!own_ && !drawing_.currentLayer.empty()) drawing_.layers.ensure(drawing_.currentLayer);
    } else if (value.name == "CELTYPE") {
        take(drawing_.currentLinetype, drawing_.linetypes, false);
    } else if (value.name == "TEXTSTYLE") {
        take(drawing_.currentTextStyle, drawing_.textStyles, true);
    } else if (value.name == "DIMSTYLE") {
        take(drawing_.currentDimStyle, drawing_.dimStyles, true);
    } else if (value.name == "UCSNAME") {
        take(drawing_.currentUcs, drawing_.ucsList, true);
    } else if (value.name == "CECOLOR") {
        const auto color = engine::Color::fromBareIndex(small(tag));
        if (color && !(ownRecord && drawing_.currentColor.bareIndex() == color->bareIndex()))
            drawing_.currentColor = *color;
    } else {
        return false;
    }
    return true;
}

namespace {

/// True when a variable has a value already, as far as files can tell.
bool isSame(const engine::SysVarDef& def, const SysVarValue& a, const SysVarValue& b) {
    const auto near = [&](double x, double y) {
        // Times are compared to the millisecond.
        if (def.name.starts_with("TD")) return std::abs(x - y) < 1.5e-8;
        return std::abs(x - y) <= 1e-9 * std::max(std::abs(x), std::abs(y)) || std::abs(x - y) < 1e-14;
    };
    if (a.index() != b.index()) return false;
    if (const auto* x = std::get_if<double>(&a)) return near(*x, std::get<double>(b));
    if (const auto* p = std::get_if<Vector3>(&a)) {
        const auto& q = std::get<Vector3>(b);
        return near(p->x, q.x) && near(p->y, q.y) && near(p->z, q.z);
    }
    return a == b;
}

}  // namespace

/// DWG files, and many programs, have the local times only. `before` are the local times that the own record gave; where
/// the header says the same, its universal ones stand.
void Reader::deriveUniversalTimes(const std::array<double, 2>& before) {
    const double offset = std::round((engine::julianNow(true) - engine::julianNow()) * 96.0) / 96.0;
    constexpr std::array<std::pair<const char*, const char*>, 2> kTimes{
        {{"TDCREATE", "TDUCREATE"}, {"TDUPDATE", "TDUUPDATE"}}};
    for (std::size_t i = 0; i < kTimes.size(); ++i) {
        const auto& [local, universal] = kTimes[i];
        const auto has = [&](std::string_view name) {
            return std::any_of(header_.begin(), header_.end(), [&](const HeaderValue& v) { return v.name == name; });
        };
        const double moment = engine::sysVarReal(drawing_, local);
        if (!has(local) || has(universal) || moment == before[i] || !(moment > 0.0)) continue;
        drawing_.realVariables[universal] = moment + offset;
    }
}

bool Reader::namesMissingRecord(const HeaderValue& value) const {
    const engine::Name given = name(value.tags.front());
    if (given.empty()) return false;
    if (value.name == "DIMTXSTY") return !drawing_.textStyles.contains(given);
    return value.name.starts_with("DIMLT") && !drawing_.linetypes.contains(given);
}

void Reader::applyHeader(bool ownRecord) {
    std::array<double, 2> before{};
    if (ownRecord) before = {engine::sysVarReal(drawing_, "TDCREATE"), engine::sysVarReal(drawing_, "TDUPDATE")};
    // What is current comes before what overrides it.
    for (const HeaderValue& value : header_)
        if (value.name == "DIMSTYLE") headerName(value, ownRecord);
    const auto near = [](const math::Vector2& a, const math::Vector2& b) {
        return a.distance_to(b) <= 1e-9 * std::max(a.length(), b.length());
    };
    const auto takePoint = [&](math::Vector2& current, const math::Vector2& given) {
        if (!ownRecord || !near(current, given)) current = given;
    };
    for (const HeaderValue& value : header_) {
        if (!isHeaderVariableRead(value.name) || headerName(value, ownRecord)) continue;
        const Tag& tag = value.tags.front();
        if (value.name == "UCSORG") {
            takePoint(drawing_.ucs.origin, pointOf(value.tags).xy());
            continue;
        }
        if (value.name == "UCSXDIR" || value.name == "UCSYDIR") {
            const math::Vector2 axis = pointOf(value.tags).xy();
            if (axis.length_squared() > 0.0)
                takePoint(value.name == "UCSXDIR" ? drawing_.ucs.xAxis : drawing_.ucs.yAxis, axis);
            continue;
        }
        if (value.name == "LIMMIN" || value.name == "LIMMAX") {
            (value.name == "LIMMIN" ? drawing_.limits.lower : drawing_.limits.upper) = pointOf(value.tags).xy();
            continue;
        }
        if (value.name == "LIMCHECK") {
            drawing_.limits.check = tag.integer() != 0;
            continue;
        }
        if (value.name == "INSBASE") {
            drawing_.basePoint = pointOf(value.tags).xy();
            continue;
        }
        if (value.name == "TILEMODE") {
            drawing_.tileMode = tag.integer() != 0;
            continue;
        }
        if (value.name == "CTAB") continue;  // the layouts tell
        if (value.name == "XCLIPFRAME" && tag.code == 290) continue;  // cannot say 2: releases to 2007 write 0 for it
        const engine::SysVarDef* def = engine::findSysVar(value.name);
        if (def == nullptr) continue;
        SysVarValue v;
        switch (def->type) {
            case engine::SysVarType::Integer:
                v = small(tag);
                break;
            case engine::SysVarType::Real: {
                double number = tag.real();
                if (number != number) continue;
                if (def->degrees || tag.code == 50) {
                    const std::string_view digits = tag.trimmed();
                    double radians = 0.0;
                    number = digits.size() > 17 && radiansFromDegrees(digits, radians) ? radians
                                                                                       : radiansFromDegrees(number);
                }
                v = number;
                break;
            }
            case engine::SysVarType::String:
                v = text(tag);
                break;
            case engine::SysVarType::Point:
                v = pointOf(value.tags);
                break;
        }
        if (ownRecord && isSame(*def, engine::getSysVar(drawing_, *def), v)) continue;
        // A name that no record has stands for one that files cannot hold.
        if (ownRecord && def->type == engine::SysVarType::String && namesMissingRecord(value)) continue;
        // A value that a variable cannot have leaves the default.
        engine::loadSysVar(drawing_, def->name, v);
    }
    deriveUniversalTimes(before);
}

}  // namespace kova::io::dxf
