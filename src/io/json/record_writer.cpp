#include "io/json/record_writer.hpp"

namespace kova::io::native {

using engine::Field;
using math::Vector2;
using math::Vector3;

namespace {

constexpr double kTolerance = 1e-9;

/// True when an optional number is not written.
bool isFallback(const Field& f, double v) {
    if (!std::isfinite(v)) return true;
    // A thickness counts however small it is; all other numbers have a tolerance.
    return std::abs(v - f.fallback) <= kTolerance && (v == f.fallback || f.key != "thickness");
}

void writeXdata(JsonWriter& out, const engine::XData& xdata) {
    out.key("xdata");
    out.beginObject();
    for (const auto& application : xdata.applications) {
        out.key(application.name.view());
        out.beginArray();
        for (const engine::XDataItem& item : application.items) {
            out.beginObject();
            out.key("gc");
            out.integer(item.code);
            out.key("value");
            if (const auto* text = std::get_if<std::string>(&item.value)) {
                out.text(*text);
            } else if (const auto* real = std::get_if<double>(&item.value)) {
                out.number(*real);
            } else if (const auto* integer = std::get_if<std::int64_t>(&item.value)) {
                out.integer(*integer);
            } else {
                writePoint(out, std::get<Vector3>(item.value));
            }
            out.endObject();
        }
        out.endArray();
    }
    out.endObject();
}

}  // namespace

void writeColor(JsonWriter& out, const engine::Color& color) {
    out.beginObject();
    out.key("method");
    out.text(engine::colorMethodName(color.method));
    if (color.method == engine::ColorMethod::ACI) {
        out.key("aci");
        out.integer(color.aci);
    } else if (color.method == engine::ColorMethod::RGB) {
        out.key("r");
        out.integer(color.red);
        out.key("g");
        out.integer(color.green);
        out.key("b");
        out.integer(color.blue);
    }
    out.endObject();
}

void writePoint(JsonWriter& out, const Vector2& p) {
    out.beginObject();
    out.key("x");
    out.number(p.x);
    out.key("y");
    out.number(p.y);
    out.endObject();
}

void writePoint(JsonWriter& out, const Vector3& p) {
    out.beginObject();
    out.key("x");
    out.number(p.x);
    out.key("y");
    out.number(p.y);
    out.key("z");
    out.number(p.z);
    out.endObject();
}

void RecordWriter::onNumber(const Field& f, double& v) {
    if (f.optional && isFallback(f, v)) return;
    key(f.key);
    out_.number(v);
}

void RecordWriter::onInteger(const Field& f, std::int64_t& v) {
    if (f.optional && static_cast<double>(v) == f.fallback) return;
    key(f.key);
    out_.integer(v);
}

void RecordWriter::onBoolean(const Field& f, bool& v) {
    if (f.optional && v == (f.fallback != 0.0)) return;
    key(f.key);
    out_.boolean(v);
}

void RecordWriter::onText(const Field& f, std::string& v) {
    if (f.optional && v == f.fallbackText) return;
    key(f.key);
    out_.text(v);
}

void RecordWriter::onName(const Field& f, engine::Name& v) {
    // Compared to the letter, so that the case of a name outlives saving.
    if (f.optional && v.view() == f.fallbackText) return;
    key(f.key);
    out_.text(v.view());
}

void RecordWriter::onHandle(const Field& f, std::uint64_t& v) {
    if (f.optional && v == 0) return;
    key(f.key);
    out_.unsignedInteger(v);
}

void RecordWriter::onColor(const Field& f, engine::Color& v) {
    if (f.optional && v.method == engine::ColorMethod::ByLayer) return;
    key(f.key);
    writeColor(out_, v);
}

void RecordWriter::onPoint(const Field& f, Vector2& v) {
    const bool bare = f.key.empty();
    out_.key(f.key, bare ? 'x' : 'X');
    out_.number(v.x);
    out_.key(f.key, bare ? 'y' : 'Y');
    out_.number(v.y);
}

void RecordWriter::onPoint3(const Field& f, Vector3& v) {
    const bool bare = f.key.empty();
    out_.key(f.key, bare ? 'x' : 'X');
    out_.number(v.x);
    out_.key(f.key, bare ? 'y' : 'Y');
    out_.number(v.y);
    out_.key(f.key, bare ? 'z' : 'Z');
    out_.number(v.z);
}

void RecordWriter::onPointObject(const Field& f, Vector2& v) {
    const auto nearZero = [](double c) { return !std::isfinite(c) || std::abs(c) <= kTolerance; };
    if (f.optional && nearZero(v.x) && nearZero(v.y)) return;
    key(f.key);
    writePoint(out_, v);
}

void RecordWriter::onPointObject3(const Field& f, Vector3& v) {
    key(f.key);
    writePoint(out_, v);
}

void RecordWriter::onPoints(const Field& f, std::vector<Vector2>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const Vector2& p : v) writePoint(out_, p);
    out_.endArray();
}

void RecordWriter::onPoints3(const Field& f, std::vector<Vector3>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const Vector3& p : v) writePoint(out_, p);
    out_.endArray();
}

void RecordWriter::onNumbers(const Field& f, std::vector<double>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const double d : v) out_.number(d);
    out_.endArray();
}

void RecordWriter::onIntegers(const Field& f, std::vector<std::int32_t>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const std::int32_t i : v) out_.integer(i);
    out_.endArray();
}

void RecordWriter::onBooleans(const Field& f, std::vector<bool>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const bool b : v) out_.boolean(b);
    out_.endArray();
}

void RecordWriter::onHandles(const Field& f, std::vector<std::uint64_t>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const std::uint64_t h : v) out_.unsignedInteger(h);
    out_.endArray();
}

void RecordWriter::onTexts(const Field& f, std::vector<std::string>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const std::string& s : v) out_.text(s);
    out_.endArray();
}

void RecordWriter::onNames(const Field& f, std::vector<engine::Name>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const engine::Name& n : v) out_.text(n.view());
    out_.endArray();
}

void RecordWriter::onIntegerLists(const Field& f, std::vector<std::vector<std::int32_t>>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const auto& list : v) {
        out_.beginArray();
        for (const std::int32_t i : list) out_.integer(i);
        out_.endArray();
    }
    out_.endArray();
}

void RecordWriter::onTextLists(const Field& f, std::vector<std::vector<std::string>>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginArray();
    for (const auto& list : v) {
        out_.beginArray();
        for (const std::string& s : list) out_.text(s);
        out_.endArray();
    }
    out_.endArray();
}

void RecordWriter::onNumberMap(const Field& f, std::map<std::string, double>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginObject();
    for (const auto& [name, value] : v) {
        out_.key(name);
        out_.number(value);
    }
    out_.endObject();
}

void RecordWriter::onTextMap(const Field& f, std::map<std::string, std::string>& v) {
    if (f.optional && v.empty()) return;
    key(f.key);
    out_.beginObject();
    for (const auto& [name, value] : v) {
        out_.key(name);
        out_.text(value);
    }
    out_.endObject();
}

bool RecordWriter::beginObject(const Field& f, bool present) {
    if ((f.optional && !present) || out_.depth() >= kMaxWriteDepth) return false;
    key(f.key);
    out_.beginObject();
    return true;
}

void RecordWriter::endObject() { out_.endObject(); }

bool RecordWriter::beginList(const Field& f, std::size_t& count) {
    if ((f.optional && count == 0) || out_.depth() >= kMaxWriteDepth) return false;
    key(f.key);
    out_.beginArray();
    return true;
}

void RecordWriter::beginItem(std::size_t) { out_.beginObject(); }
void RecordWriter::endItem() { out_.endObject(); }
void RecordWriter::endList() { out_.endArray(); }

void writeEntity(JsonWriter& out, const engine::Entity& entity) {
    auto& e = const_cast<engine::Entity&>(entity);
    RecordWriter writer(out);
    out.beginObject();
    e.describeCommon(writer);
    if (e.handle() != 0) {
        out.key("handle");
        out.unsignedInteger(e.handle());
    }
    if (e.xdata() != nullptr && !e.xdata()->empty()) writeXdata(out, *e.xdata());
    out.key("type");
    out.text(engine::nativeName(e.type()));
    if (static_cast<int>(e.type()) < engine::kEntityTypeCount) e.describe(writer);
    out.endObject();
}

void writeListedEntity(JsonWriter& out, const engine::Entity& entity) {
    auto& e = const_cast<engine::Entity&>(entity);
    RecordWriter writer(out);
    writer.setAlias("kind", "bodyKind");
    out.beginObject();
    out.key("kind");
    out.text(engine::displayName(e.type()));
    out.key("handle");
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, e.handle(), 16).ptr;
    for (char* c = digits; c != end; ++c)
        if (*c >= 'a') *c = static_cast<char>(*c - 'a' + 'A');
    out.text({digits, static_cast<std::size_t>(end - digits)});
    e.describeCommon(writer);
    if (e.xdata() != nullptr && !e.xdata()->empty()) writeXdata(out, *e.xdata());
    out.key("type");
    out.text(engine::nativeName(e.type()));
    if (static_cast<int>(e.type()) < engine::kEntityTypeCount) e.describe(writer);
    out.endObject();
}

}  // namespace kova::io::native
