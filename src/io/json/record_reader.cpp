#include "io/json/record_reader.hpp"

#include <cmath>
#include <stdexcept>

namespace kova::io::native {

using engine::Field;
using math::Vector2;
using math::Vector3;

namespace {

[[noreturn]] void throwOutOfRange(std::string_view key) {
    throw std::out_of_range("value of \"" + std::string(key) + "\" is out of range");
}

}  // namespace

void RecordReader::enter(Index object) {
    if (tree_.type(object) != JsonType::Object) throwNoMembers(tree_.type(object));
    const Index first = JsonTree::first(object);
    frames_.push_back({first, tree_.end(object), first, tree_.keyMask(object)});
}

RecordReader::Index RecordReader::find(std::string_view key) {
    Frame& frame = frames_.back();
    if ((frame.mask & JsonTree::keyBit(key)) == 0) return JsonTree::kNone;
    const Index start = frame.cursor;
    for (Index i = start; i != frame.end; i = tree_.next(i))
        if (tree_.isMember(i) && tree_.hasKey(i, key)) {
            frame.cursor = tree_.next(i);
            return i;
        }
    for (Index i = frame.first; i != start; i = tree_.next(i))
        if (tree_.isMember(i) && tree_.hasKey(i, key)) {
            frame.cursor = tree_.next(i);
            return i;
        }
    return JsonTree::kNone;
}

void RecordReader::readEntity(Index object, engine::Entity& entity) {
    frames_.clear();
    enter(object);
    entity.describeCommon(*this);
    if (const Index i = find("handle"); i != JsonTree::kNone) entity.setHandle(handleAt(i, "handle"));
    if (const Index i = find("xdata"); i != JsonTree::kNone) entity.setXdata(readXdata(tree_, i, *this));
    entity.describe(*this);
    leave();
}

// Single values -------------------------------------------------------------------------------------------------

std::int64_t RecordReader::integerAt(Index i, std::string_view key) const {
    switch (tree_.type(i)) {
        case JsonType::Integer:
            return tree_.integer(i);
        case JsonType::Unsigned: {
            const std::uint64_t v = tree_.unsignedInteger(i);
            if (v > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) throwOutOfRange(key);
            return static_cast<std::int64_t>(v);
        }
        case JsonType::Float: {
            // Other programs write 3.0 for 3.
            const double v = std::trunc(tree_.real(i));
            if (!(v >= -9.2e18 && v <= 9.2e18)) throwOutOfRange(key);
            return static_cast<std::int64_t>(v);
        }
        default:
            throwTypeError(JsonType::Integer, tree_.type(i));
    }
}

std::int32_t RecordReader::smallIntegerAt(Index i, std::string_view key) const {
    const std::int64_t v = integerAt(i, key);
    if (v < std::numeric_limits<std::int32_t>::min() || v > std::numeric_limits<std::int32_t>::max())
        throwOutOfRange(key);
    return static_cast<std::int32_t>(v);
}

std::uint64_t RecordReader::handleAt(Index i, std::string_view key) const {
    if (tree_.type(i) == JsonType::Unsigned) return tree_.unsignedInteger(i);
    const std::int64_t v = integerAt(i, key);
    if (v < 0) throwOutOfRange(key);
    return static_cast<std::uint64_t>(v);
}

bool RecordReader::booleanAt(Index i) const {
    if (tree_.type(i) != JsonType::Boolean) throwTypeError(JsonType::Boolean, tree_.type(i));
    return tree_.boolean(i);
}

engine::Name RecordReader::nameAt(Index i) {
    const std::string_view text = tree_.text(i);
    const auto byte = [&](std::size_t at) { return static_cast<std::size_t>(static_cast<unsigned char>(text[at])); };
    const std::size_t slot = text.empty() ? 0 : text.size() * 7 + byte(text.size() - 1) * 5 + byte(text.size() / 2);
    CachedName& cached = names_[slot % names_.size()];
    if (cached.text != text) {
        cached.name = engine::Name(text);
        cached.text = cached.name.view();  // interned texts stay
    }
    return cached.name;
}

engine::Color RecordReader::colorAt(Index i) const {
    engine::Color color;
    const auto component = [&](std::string_view key, std::uint8_t& v) {
        const Index at = tree_.find(i, key);
        if (at == JsonTree::kNone) return;
        const std::int64_t wide = integerAt(at, key);
        if (wide < 0 || wide > 255) throwOutOfRange(key);
        v = static_cast<std::uint8_t>(wide);
    };
    const Index method = tree_.find(i, "method");
    if (method == JsonTree::kNone) return color;
    color.method = engine::colorMethodFromName(tree_.text(method)).value_or(engine::ColorMethod::ByLayer);
    if (color.method == engine::ColorMethod::ACI) {
        component("aci", color.aci);
    } else if (color.method == engine::ColorMethod::RGB) {
        component("r", color.red);
        component("g", color.green);
        component("b", color.blue);
    }
    return color;
}

Vector2 RecordReader::pointAt(Index i) const {
    Vector2 p;
    if (const Index x = tree_.find(i, "x"); x != JsonTree::kNone) p.x = tree_.number(x);
    if (const Index y = tree_.find(i, "y"); y != JsonTree::kNone) p.y = tree_.number(y);
    return p;
}

Vector3 RecordReader::point3At(Index i) const {
    const Vector2 flat = pointAt(i);
    Vector3 p{flat.x, flat.y, 0.0};
    if (const Index z = tree_.find(i, "z"); z != JsonTree::kNone) p.z = tree_.number(z);
    return p;
}

// Fields --------------------------------------------------------------------------------------------------------

void RecordReader::onNumber(const Field& f, double& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = tree_.number(i);
}

void RecordReader::onInteger(const Field& f, std::int64_t& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = integerAt(i, f.key);
}

void RecordReader::onBoolean(const Field& f, bool& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = booleanAt(i);
}

void RecordReader::onText(const Field& f, std::string& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) tree_.takeText(i, v);
}

void RecordReader::onName(const Field& f, engine::Name& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = nameAt(i);
}

void RecordReader::onHandle(const Field& f, std::uint64_t& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = handleAt(i, f.key);
}

void RecordReader::onColor(const Field& f, engine::Color& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = colorAt(i);
}

void RecordReader::onPointObject(const Field& f, Vector2& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = pointAt(i);
}

void RecordReader::onPointObject3(const Field& f, Vector3& v) {
    if (const Index i = find(f.key); i != JsonTree::kNone) v = point3At(i);
}

RecordReader::Index RecordReader::findArray(std::string_view key) {
    const Index i = find(key);
    if (i != JsonTree::kNone && tree_.type(i) != JsonType::Array) throwTypeError(JsonType::Array, tree_.type(i));
    return i;
}

template <class Each>
void RecordReader::eachItem(Index array, Each&& each) const {
    for (Index i = JsonTree::first(array), last = tree_.end(array); i != last; i = tree_.next(i)) each(i);
}

void RecordReader::onPoints(const Field& f, std::vector<Vector2>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { v.push_back(pointAt(i)); });
}

void RecordReader::onPoints3(const Field& f, std::vector<Vector3>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { v.push_back(point3At(i)); });
}

void RecordReader::onNumbers(const Field& f, std::vector<double>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { v.push_back(tree_.number(i)); });
}

void RecordReader::onIntegers(const Field& f, std::vector<std::int32_t>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { v.push_back(smallIntegerAt(i, f.key)); });
}

void RecordReader::onBooleans(const Field& f, std::vector<bool>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { v.push_back(booleanAt(i)); });
}

void RecordReader::onHandles(const Field& f, std::vector<std::uint64_t>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { v.push_back(handleAt(i, f.key)); });
}

void RecordReader::onTexts(const Field& f, std::vector<std::string>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { tree_.takeText(i, v.emplace_back()); });
}

void RecordReader::onNames(const Field& f, std::vector<engine::Name>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index i) { v.push_back(nameAt(i)); });
}

void RecordReader::onIntegerLists(const Field& f, std::vector<std::vector<std::int32_t>>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index row) {
        if (tree_.type(row) != JsonType::Array) throwTypeError(JsonType::Array, tree_.type(row));
        auto& items = v.emplace_back();
        items.reserve(tree_.count(row));
        eachItem(row, [&](Index i) { items.push_back(smallIntegerAt(i, f.key)); });
    });
}

void RecordReader::onTextLists(const Field& f, std::vector<std::vector<std::string>>& v) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return;
    v.clear();
    v.reserve(tree_.count(array));
    eachItem(array, [&](Index row) {
        if (tree_.type(row) != JsonType::Array) throwTypeError(JsonType::Array, tree_.type(row));
        auto& items = v.emplace_back();
        items.reserve(tree_.count(row));
        eachItem(row, [&](Index i) { tree_.takeText(i, items.emplace_back()); });
    });
}

void RecordReader::onNumberMap(const Field& f, std::map<std::string, double>& v) {
    const Index object = find(f.key);
    if (object == JsonTree::kNone) return;
    if (tree_.type(object) != JsonType::Object) throwTypeError(JsonType::Object, tree_.type(object));
    v.clear();
    eachItem(object, [&](Index i) {
        if (tree_.isMember(i)) v.insert_or_assign(std::string(tree_.keyOf(i)), tree_.number(i));
    });
}

void RecordReader::onTextMap(const Field& f, std::map<std::string, std::string>& v) {
    const Index object = find(f.key);
    if (object == JsonTree::kNone) return;
    if (tree_.type(object) != JsonType::Object) throwTypeError(JsonType::Object, tree_.type(object));
    v.clear();
    eachItem(object, [&](Index i) {
        if (tree_.isMember(i)) tree_.takeText(i, v[std::string(tree_.keyOf(i))]);
    });
}

bool RecordReader::beginObject(const Field& f, bool) {
    const Index i = find(f.key);
    if (i == JsonTree::kNone) return false;
    if (tree_.type(i) != JsonType::Object) throwTypeError(JsonType::Object, tree_.type(i));
    enter(i);
    return true;
}

bool RecordReader::beginList(const Field& f, std::size_t& count) {
    const Index array = findArray(f.key);
    if (array == JsonTree::kNone) return false;
    count = tree_.count(array);
    const Index first = JsonTree::first(array);
    frames_.push_back({first, tree_.end(array), first, 0});
    return true;
}

void RecordReader::beginItem(std::size_t) { enter(frames_.back().cursor); }

void RecordReader::endItem() {
    leave();
    Frame& list = frames_.back();
    list.cursor = tree_.next(list.cursor);
}

// Extended data -------------------------------------------------------------------------------------------------

engine::XData readXdata(JsonTree& tree, JsonTree::Index object, RecordReader& reader) {
    using Index = JsonTree::Index;
    if (tree.type(object) != JsonType::Object) throwTypeError(JsonType::Object, tree.type(object));
    engine::XData xdata;
    for (Index app = JsonTree::first(object), appEnd = tree.end(object); app != appEnd; app = tree.next(app)) {
        if (!tree.isMember(app)) continue;
        if (tree.type(app) != JsonType::Array) throwTypeError(JsonType::Array, tree.type(app));
        auto& application = xdata.applications.emplace_back();
        application.name = engine::Name(tree.keyOf(app));
        application.items.reserve(tree.count(app));
        for (Index i = JsonTree::first(app), last = tree.end(app); i != last; i = tree.next(i)) {
            engine::XDataItem item;
            if (const Index code = tree.find(i, "gc"); code != JsonTree::kNone)
                item.code = reader.smallIntegerAt(code, "gc");
            const bool real = item.code >= 1010 && item.code < 1060;
            const bool whole = item.code >= 1060 && item.code < 1072;
            const Index value = tree.find(i, "value");
            if (value == JsonTree::kNone) {
                if (real) item.value = 0.0;
                if (whole) item.value = std::int64_t{0};
            } else if (tree.type(value) == JsonType::Object) {
                item.value = reader.point3At(value);
            } else if (!tree.isNumber(value)) {
                std::string text;
                tree.takeText(value, text);
                item.value = std::move(text);
            } else if (real || (!whole && tree.type(value) == JsonType::Float)) {
                item.value = tree.number(value);
            } else {
                item.value = reader.integerAt(value, "value");
            }
            application.items.push_back(std::move(item));
        }
    }
    return xdata;
}

}  // namespace kova::io::native
