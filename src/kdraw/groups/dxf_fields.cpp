#include "kdraw/groups/dxf_fields.hpp"

#include <cmath>
#include <numbers>

#include "kdraw/database/database.hpp"
#include "strings/case_fold.hpp"

namespace kdraw {

namespace {

constexpr double kDegree = 180.0 / std::numbers::pi;

}  // namespace

void appendHex(std::string& bytes, std::string_view digits) {
    const auto value = [](char c) {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        return -1;
    };
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        const int high = value(digits[i]), low = value(digits[i + 1]);
        if (high < 0 || low < 0) return;
        bytes += static_cast<char>(high << 4 | low);
    }
}

// Writing ---------------------------------------------------------------------------------------------------------

void DxfWriteFields::whole(Width, int code, std::int64_t& v) {
    if (code != 0) out_.integer(code, v);
}

void DxfWriteFields::bd(int code, double& v) {
    if (code != 0) out_.real(code, v);
}

void DxfWriteFields::angle(int code, double& v) {
    if (code != 0) out_.real(code, v * kDegree);
}

void DxfWriteFields::thickness(int code, double& v) {
    if (code != 0 && v != 0.0) out_.real(code, v);
}

void DxfWriteFields::extrusion(int code, Vector3& v) {
    if (code != 0 && !(v.x == 0.0 && v.y == 0.0 && v.z == 1.0)) out_.point(code, v);
}

void DxfWriteFields::text(int code, std::string& v) {
    if (code != 0) out_.text(code, v);
}

void DxfWriteFields::bytes(int code, std::string& v, std::size_t) {
    if (code != 0) out_.bytes(code, v);
}

void DxfWriteFields::color(int code, int trueCode, Color& v) {
    if (code != 0) out_.integer(code, v.index());
    if (trueCode != 0 && v.isTrue()) out_.integer(trueCode, v.rgb());
}

void DxfWriteFields::rawColor(int code, Color& v) {
    if (code != 0) out_.integer(code, static_cast<std::int32_t>(v.raw));
}

void DxfWriteFields::handle(Ref, int code, Handle& v) {
    if (code != 0 && v != 0) out_.handle(code, v);
}

void DxfWriteFields::record(Table table, int code, Handle& v, Ref) {
    if (code != 0 && v != 0) out_.record(code, table, v);
}

std::size_t DxfWriteFields::count(Width, int code, std::size_t current, unsigned) {
    if (code != 0) out_.integer(code, static_cast<std::int64_t>(current));
    return current;
}

// Reading ---------------------------------------------------------------------------------------------------------

template <class F>
bool DxfReadFields::at(int code, F take) {
    if (code == 0) return false;
    if (in_.seek(code)) {
        take();
        in_.skip();
        return true;
    }
    const std::size_t cursor = in_.cursor();
    if (!in_.find(code)) return false;
    take();
    in_.setCursor(cursor);
    return true;
}

void DxfReadFields::whole(Width, int code, std::int64_t& v) {
    at(code, [&] { v = in_.integer(); });
}

void DxfReadFields::bd(int code, double& v) {
    at(code, [&] { v = in_.real(); });
}

void DxfReadFields::angle(int code, double& v) {
    at(code, [&] { v = in_.real() / kDegree; });
}

void DxfReadFields::text(int code, std::string& v) {
    at(code, [&] { v = in_.decoded(); });
}

void DxfReadFields::bytes(int code, std::string& v, std::size_t) {
    if (code == 0 || !in_.seek(code)) return;
    v.clear();
    for (; in_.peek() == code; in_.skip()) appendHex(v, in_.text());
}

void DxfReadFields::color(int code, int trueCode, Color& v) {
    at(code, [&] { v = Color::fromIndex(static_cast<int>(std::abs(in_.integer()))); });
    at(trueCode, [&] { v.raw = Color::kTrue | (static_cast<std::uint32_t>(in_.integer()) & 0xFFFFFF); });
}

void DxfReadFields::rawColor(int code, Color& v) {
    at(code, [&] { v.raw = static_cast<std::uint32_t>(in_.integer()); });
}

void DxfReadFields::handle(Ref, int code, Handle& v) {
    at(code, [&] { v = in_.handle(); });
}

void DxfReadFields::record(Table table, int code, Handle& v, Ref) {
    at(code, [&] { v = in_.record(table, in_.decoded()); });
}

std::size_t DxfReadFields::count(Width, int code, std::size_t, unsigned) {
    std::int64_t n = 0;
    if (!at(code, [&] { n = in_.integer(); })) return 0;
    // An item has one group at least.
    if (n < 0 || static_cast<std::uint64_t>(n) > in_.groups().size()) {
        fail();
        return 0;
    }
    return static_cast<std::size_t>(n);
}

// What all objects have -------------------------------------------------------------------------------------------

void writeCommonGroups(DxfOutput& out, const Object& object, const ObjectKind& kind, bool paperSpace) {
    out.word(0, kind.dxfName);
    out.handle(kind.dxfName == std::string_view("DIMSTYLE") ? 105 : 5, object.handle);
    if (object.dictionary != 0 && out.database().find(object.dictionary) != nullptr) {
        out.word(102, "{ACAD_XDICTIONARY");
        out.handle(360, object.dictionary);
        out.word(102, "}");
    }
    if (!object.reactors.empty()) {
        out.word(102, "{ACAD_REACTORS");
        for (const Handle reactor : object.reactors) out.handle(330, reactor);
        out.word(102, "}");
    }
    out.handle(330, object.owner);
    if (!object.isEntity()) return;
    const auto& e = static_cast<const Entity&>(object);
    out.subclass("AcDbEntity");
    if (paperSpace) out.integer(67, 1);
    out.record(8, Table::Layer, e.layer);
    if (e.linetypeFlags == 1)
        out.word(6, "ByBlock");
    else if (e.linetypeFlags == 2)
        out.word(6, "Continuous");
    else if (e.linetypeFlags == 3)
        out.record(6, Table::Linetype, e.linetype);
    if (e.colorIndex != 256 && e.colorIndex < 257) out.integer(62, e.colorIndex);
    if (e.lineweight != 0x1D) out.integer(370, lineweightOf(e.lineweight));
    if (e.linetypeScale != 1.0) out.real(48, e.linetypeScale);
    if ((e.invisible & 1) != 0) out.integer(60, 1);
    if (e.trueColor != 0) out.integer(420, e.trueColor & 0xFFFFFF);
    if (e.transparency != 0) out.integer(440, e.transparency);
    if (e.shadowFlags != 0) out.integer(284, e.shadowFlags);
}

namespace {

/// The groups between "{NAME" and "}".
template <class F>
void eachInGroup(DxfInput& in, std::string_view name, F each) {
    const auto& groups = in.groups();
    for (std::size_t i = 0; i < in.ownGroups() && groups[i].code != 100; ++i) {
        if (groups[i].code != 102 || groups[i].value != name) continue;
        for (++i; i < in.ownGroups() && groups[i].code != 102; ++i) {
            in.setCursor(i);
            each();
        }
        return;
    }
}

}  // namespace

void readCommonGroups(DxfInput& in, Object& object) {
    in.rewind();
    eachInGroup(in, "{ACAD_XDICTIONARY", [&] { object.dictionary = in.handle(); });
    eachInGroup(in, "{ACAD_REACTORS", [&] { object.reactors.push_back(in.handle()); });
    // The owner stands behind the groups in braces.
    bool inside = false;
    const auto& groups = in.groups();
    for (std::size_t i = 0; i < in.ownGroups() && groups[i].code != 100; ++i) {
        if (groups[i].code == 102) inside = groups[i].value.starts_with('{');
        if (inside) continue;
        in.setCursor(i);
        if (groups[i].code == 5 || groups[i].code == 105) object.handle = in.handle();
        if (groups[i].code == 330) object.owner = in.handle();
    }
    in.rewind();
    if (!object.isEntity() || !in.enter("AcDbEntity")) return;
    auto& e = static_cast<Entity&>(object);
    for (; !in.atEnd(); in.skip()) {
        switch (in.peek()) {
            case 8: e.layer = in.record(Table::Layer, in.decoded()); break;
            case 6: {
                const std::string name = in.decoded();
                const auto is = [&](std::string_view other) { return kova::strings::equalNoCase(name, other); };
                e.linetypeFlags = is("BYLAYER") ? 0 : is("BYBLOCK") ? 1 : is("CONTINUOUS") ? 2 : 3;
                if (e.linetypeFlags == 3) {
                    e.linetype = in.record(Table::Linetype, name);
                    if (e.linetype == 0) e.linetypeFlags = 0;
                }
                break;
            }
            case 62: e.colorIndex = static_cast<std::uint16_t>(in.integer() & 0x1FF); break;
            case 370: e.lineweight = lineweightIndex(static_cast<int>(in.integer())); break;
            case 48: e.linetypeScale = in.real(); break;
            case 60: e.invisible = in.integer() != 0 ? 1 : 0; break;
            case 420: e.trueColor = Color::kTrue | (static_cast<std::uint32_t>(in.integer()) & 0xFFFFFF); break;
            case 440: e.transparency = static_cast<std::uint32_t>(in.integer()); break;
            case 284: e.shadowFlags = static_cast<std::uint8_t>(in.integer()); break;
            default: break;
        }
    }
}

void writeExtendedGroups(DxfOutput& out, const Object& object) {
    for (const XBlock& block : object.xdata) {
        const std::string_view name = out.database().recordName(block.application);
        if (name.empty()) continue;
        out.text(1001, name);
        for (const XItem& item : block.items) {
            switch (item.code) {
                case 1000:
                case 1001:
                case 1002: out.text(item.code, item.text); break;
                case 1003: out.record(item.code, Table::Layer, item.handle); break;
                case 1004:
                    if (item.text.empty())
                        out.word(1004, "");
                    else
                        out.bytes(1004, item.text);
                    break;
                case 1005: out.handle(item.code, item.handle); break;
                case 1010:
                case 1011:
                case 1012:
                case 1013: out.point(item.code, item.point); break;
                case 1070:
                case 1071: out.integer(item.code, item.integer); break;
                default: out.real(item.code, item.real);
            }
        }
    }
}

void readExtendedGroups(DxfInput& in, Object& object) {
    const auto& groups = in.groups();
    for (std::size_t i = in.ownGroups(); i < groups.size(); ++i) {
        in.setCursorAnywhere(i);
        const int code = groups[i].code;
        if (code == 1001) {
            object.xdata.emplace_back();
            object.xdata.back().application = in.record(Table::AppId, in.decoded());
            continue;
        }
        if (object.xdata.empty()) continue;
        std::vector<XItem>& items = object.xdata.back().items;
        // The second and third coordinate follow the first.
        if ((code >= 1020 && code <= 1023) || (code >= 1030 && code <= 1033)) {
            if (items.empty()) continue;
            (code < 1030 ? items.back().point.y : items.back().point.z) = in.real();
            continue;
        }
        XItem item;
        item.code = code;
        switch (code) {
            case 1000:
            case 1002: item.text = in.decoded(); break;
            case 1003: item.handle = in.record(Table::Layer, in.decoded()); break;
            case 1004: appendHex(item.text, in.text()); break;
            case 1005: item.handle = in.handle(); break;
            case 1010:
            case 1011:
            case 1012:
            case 1013: item.point.x = in.real(); break;
            case 1040:
            case 1041:
            case 1042: item.real = in.real(); break;
            case 1070:
            case 1071: item.integer = static_cast<std::int32_t>(in.integer()); break;
            default: continue;
        }
        items.push_back(std::move(item));
    }
    in.rewind();
}

}  // namespace kdraw
