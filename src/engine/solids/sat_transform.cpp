#include <cstring>

#include "engine/solids/sat_edges.hpp"
#include "engine/solids/sat_records.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector3;
using Kind = ModelerToken::Kind;

namespace {

/// A transform as the modeller keeps it: a matrix of determinant 1 that acts on row vectors, a shift and a scale, and
/// what the matrix does.
struct ModelerTransform {
    std::array<double, 13> numbers{};
    bool rotates = false;
    bool reflects = false;
    bool shears = false;
};

std::optional<ModelerTransform> modelerTransform(const Matrix4& m) {
    const Vector3 x = m.transform_direction(Vector3{1, 0, 0});
    const Vector3 y = m.transform_direction(Vector3{0, 1, 0});
    const Vector3 z = m.transform_direction(Vector3{0, 0, 1});
    const double determinant = x.cross(y).dot(z);
    const double scale = std::cbrt(std::abs(determinant));
    if (!(scale > 0.0) || !std::isfinite(scale)) return std::nullopt;
    if (m(3, 0) != 0.0 || m(3, 1) != 0.0 || m(3, 2) != 0.0 || m(3, 3) != 1.0) return std::nullopt;
    ModelerTransform t;
    for (int column = 0; column < 3; ++column)
        for (int row = 0; row < 3; ++row)
            t.numbers[static_cast<std::size_t>(column * 3 + row)] = m(row, column) / scale;
    for (int row = 0; row < 3; ++row) t.numbers[static_cast<std::size_t>(9 + row)] = m(row, 3);
    t.numbers[12] = scale;
    for (const double v : t.numbers)
        if (!std::isfinite(v)) return std::nullopt;
    const double size = scale * scale;
    t.reflects = determinant < 0.0;
    t.shears = std::abs(x.dot(y)) > 1e-9 * size || std::abs(y.dot(z)) > 1e-9 * size ||
               std::abs(z.dot(x)) > 1e-9 * size || std::abs(x.length_squared() - size) > 1e-9 * size ||
               std::abs(y.length_squared() - size) > 1e-9 * size;
    t.rotates = !((x / scale).near_equal({1, 0, 0}, 1e-12) && (y / scale).near_equal({0, 1, 0}, 1e-12) &&
                  (z / scale).near_equal({0, 0, 1}, 1e-12));
    return t;
}

/// A piece of the data that is replaced.
struct Edit {
    std::size_t offset;
    std::size_t length;
    std::string text;
};

std::string textOf(const ModelerTransform& t, bool numericFlags) {
    std::string text;
    for (const double v : t.numbers) text += strings::shortest(v) + " ";
    if (numericFlags) {
        for (const bool flag : {t.rotates, t.reflects, t.shears}) text += flag ? "1 " : "0 ";
        text.pop_back();
        return text;
    }
    text += t.rotates ? "rotate " : "no_rotate ";
    text += t.reflects ? "reflect " : "no_reflect ";
    text += t.shears ? "shear" : "no_shear";
    return text;
}

template <class T>
void appendRaw(std::string& out, const T& value) {
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string integerBytes(const ModelerData& data, std::int64_t value) {
    std::string out;
    if (data.integerSize == 8)
        appendRaw(out, value);
    else
        appendRaw(out, static_cast<std::int32_t>(value));
    return out;
}

std::string newRecord(const ModelerData& data, const ModelerTransform& t) {
    const bool longHead = data.release >= 700;
    std::string out;
    if (!data.binary) {
        if (data.numbered) out += "-" + std::to_string(data.records.size()) + " ";
        out += longHead ? "transform $-1 -1 " : "transform $-1 ";
        return out + textOf(t, data.numericFlags()) + " #\n";
    }
    out += "\x0d\x09transform\x0c" + integerBytes(data, -1);
    if (longHead) out += '\x04' + integerBytes(data, -1);
    for (std::size_t i = 0; i < 12; ++i) {
        if (i % 3 == 0) out += '\x14';
        appendRaw(out, t.numbers[i]);
    }
    out += '\x06';
    appendRaw(out, t.numbers[12]);
    for (const bool flag : {t.rotates, t.reflects, t.shears}) out += flag ? '\x0a' : '\x0b';
    return out + '\x11';
}

/// Rewrites a transform record in place: its 13 numbers and the three words behind them.
bool rewrite(const ModelerData& data, const ModelerRecord& record, const ModelerTransform& t,
             std::vector<Edit>& edits) {
    const auto tokens = data.tokensOf(record);
    const std::size_t first = ownBegin(data, record);
    if (first + 13 > tokens.size()) return false;
    if (!data.binary) {
        const ModelerToken& last = tokens.back();
        edits.push_back(
            {tokens[first].offset, last.offset + last.length - tokens[first].offset, textOf(t, data.numericFlags())});
        return true;
    }
    std::size_t flags = 0;
    for (std::size_t i = first; i < tokens.size(); ++i) {
        const ModelerToken& token = tokens[i];
        if (i < first + 13) {
            if (token.kind != Kind::Number || token.length != 8) return false;
            std::string bytes;
            appendRaw(bytes, t.numbers[i - first]);
            edits.push_back({token.offset, 8, std::move(bytes)});
        } else if (token.kind == Kind::Flag && flags < 3) {
            const bool set = flags == 0 ? t.rotates : flags == 1 ? t.reflects : t.shears;
            ++flags;
            edits.push_back({token.offset, 1, std::string(1, set ? '\x0a' : '\x0b')});
        }
    }
    return true;
}

}  // namespace

bool transformModelerData(std::string& data, const Matrix4& m) {
    const std::optional<ModelerData> parsed = readModelerData(data);
    if (!parsed) return false;
    std::vector<Edit> edits;
    std::vector<const ModelerRecord*> rewritten;
    bool added = false;
    for (const ModelerRecord& body : parsed->records) {
        if (body.kind != ModelerRecordKind::Body) continue;
        // The transform is the last thing that a body points to.
        const ModelerToken* place = nullptr;
        for (const ModelerToken& t : parsed->tokensOf(body))
            if (t.kind == Kind::Pointer) place = &t;
        if (place == nullptr) return false;
        if (const ModelerRecord* old = parsed->target(*place)) {
            if (old->kind != ModelerRecordKind::Transform) return false;
            if (std::find(rewritten.begin(), rewritten.end(), old) != rewritten.end()) continue;
            const auto before = modelerMatrix(ownNumbers(*parsed, *old));
            const auto after = before ? modelerTransform(m * *before) : std::nullopt;
            if (!after || !rewrite(*parsed, *old, *after, edits)) return false;
            rewritten.push_back(old);
            continue;
        }
        const auto number = static_cast<std::int64_t>(parsed->records.size());
        if (!added) {
            const auto fresh = modelerTransform(m);
            if (!fresh) return false;
            edits.push_back({parsed->endOffset, 0, newRecord(*parsed, *fresh)});
            if (!parsed->binary && parsed->endOffset > 0 && data[parsed->endOffset - 1] != '\n')
                edits.back().text.insert(0, "\n");
            // A header that counts the records counts this one too.
            if (parsed->count > 0.0 && parsed->count < 1e9)
                edits.push_back({parsed->countOffset, parsed->countLength,
                                 parsed->binary ? integerBytes(*parsed, static_cast<std::int64_t>(parsed->count) + 1)
                                                : std::to_string(static_cast<std::int64_t>(parsed->count) + 1)});
            added = true;
        }
        edits.push_back({place->offset, place->length,
                         parsed->binary ? integerBytes(*parsed, number) : "$" + std::to_string(number)});
    }
    if (edits.empty()) return false;
    std::sort(edits.begin(), edits.end(), [](const Edit& a, const Edit& b) { return a.offset < b.offset; });
    std::string out;
    out.reserve(data.size() + 256);
    std::size_t done = 0;
    for (const Edit& e : edits) {
        out.append(data, done, e.offset - done);
        out += e.text;
        done = e.offset + e.length;
    }
    out.append(data, done);
    data = std::move(out);
    return true;
}

}  // namespace kova::engine
