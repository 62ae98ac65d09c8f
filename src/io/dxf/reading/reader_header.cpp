// Header variables. They are kept while the tables are read, since many name or override what stands in them.
#include <algorithm>
#include <cmath>

#include "engine/model/sysvar.hpp"
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
        const double number = tag.real();
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

void Reader::applyHeader() {
    applyHeaderDimensions();
    // What is current comes before what overrides it.
    const auto has = [&](std::string_view name) -> const HeaderValue* {
        for (const HeaderValue& value : header_)
            if (value.name == name) return &value;
        return nullptr;
    };
    if (const auto* v = has("DIMSTYLE")) {
        const engine::Name style = name(v->tags.front());
        if (drawing_.dimStyles.contains(style)) drawing_.currentDimStyle = style;
    }
    for (const HeaderValue& value : header_) {
        if (!isHeaderVariableRead(value.name)) continue;
        const Tag& tag = value.tags.front();
        if (value.name == "DIMSTYLE") continue;
        if (value.name == "CLAYER") {
            if (const engine::Name layer = name(tag); !layer.empty()) {
                drawing_.currentLayer = layer;
                if (!own_) drawing_.layers.ensure(layer);
            }
            continue;
        }
        if (value.name == "CELTYPE") {
            if (const engine::Name linetype = name(tag); !linetype.empty()) drawing_.currentLinetype = linetype;
            continue;
        }
        if (value.name == "TEXTSTYLE") {
            if (const engine::Name style = name(tag); drawing_.textStyles.contains(style))
                drawing_.currentTextStyle = style;
            continue;
        }
        if (value.name == "CECOLOR") {
            if (const auto color = engine::Color::fromBareIndex(small(tag))) drawing_.currentColor = *color;
            continue;
        }
        if (value.name == "UCSNAME") {
            if (const engine::Name ucs = name(tag); drawing_.ucsList.contains(ucs)) drawing_.currentUcs = ucs;
            continue;
        }
        if (value.name == "UCSORG") {
            drawing_.ucs.origin = pointOf(value.tags).xy();
            continue;
        }
        if (value.name == "UCSXDIR" || value.name == "UCSYDIR") {
            const math::Vector2 axis = pointOf(value.tags).xy();
            if (axis.length_squared() > 0.0) (value.name == "UCSXDIR" ? drawing_.ucs.xAxis : drawing_.ucs.yAxis) = axis;
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
                const bool radians = def->name == "DIMJOGANG" && !isJogInDegrees(number);
                if ((def->degrees || tag.code == 50) && !radians) {
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
        // A value that a variable cannot have leaves the default.
        engine::loadSysVar(drawing_, def->name, v);
    }
}

}  // namespace kova::io::dxf
