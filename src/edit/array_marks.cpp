#include "edit/array_marks.hpp"

#include <charconv>

namespace kova::cmd {

using engine::Entity;
using engine::Name;
using engine::XDataItem;
using math::Vector2;
using math::Vector3;

namespace {

constexpr int kMostInOneDirection = 32767;
/// Writes the numbers of a definition to a list, or reads them from one.
struct Numbers {
    std::vector<double>& list;
    bool reading = false;
    std::size_t at = 0;
    bool good = true;

    void operator()(double& v) {
        if (!reading) return list.push_back(v);
        if (at >= list.size() || !std::isfinite(list[at])) {
            good = false;
            return;
        }
        v = list[at++];
    }
    void operator()(int& v) {
        double number = v;
        (*this)(number);
        if (!reading || !good) return;
        good = number >= 1.0 && number <= kMostInOneDirection;
        if (good) v = static_cast<int>(number);
    }
    void operator()(bool& v) {
        double number = v ? 1.0 : 0.0;
        (*this)(number);
        v = number != 0.0;
    }
    void operator()(Vector2& v) {
        (*this)(v.x);
        (*this)(v.y);
    }
    void operator()(Vector3& v) {
        (*this)(v.x);
        (*this)(v.y);
        (*this)(v.z);
    }
};

/// The numbers of a definition in the order of the file; `anchor` is that of the source when they were written.
void describe(Numbers& n, ArrayDefinition& definition, Vector2& anchor) {
    n(anchor);
    ArrayRows& rows = definition.rows();
    n(rows.rows);
    n(rows.distance);
    n(rows.rise);
    n(rows.levels);
    n(rows.levelDistance);
    if (auto* rect = std::get_if<RectangularArray>(&definition.shape)) {
        n(rect->columns);
        n(rect->columnDistance);
        n(rect->angle);
    } else if (auto* polar = std::get_if<PolarArray>(&definition.shape)) {
        n(polar->center);
        n(polar->axis);
        n(polar->base);
        n(polar->count);
        n(polar->fill);
        n(polar->turnItems);
    } else {
        auto& path = std::get<PathArray>(definition.shape);
        n(path.base);
        Vector2 direction = path.direction.value_or(Vector2(1, 0));
        n(direction);
        path.direction = direction;
        n(path.reversed);
        n(path.divide);
        n(path.distance);
        n(path.count);
        n(path.alignItems);
    }
}

bool isCount(double v) { return v >= 0.0 && v <= kMostInOneDirection && v == std::floor(v); }

}  // namespace

const Name& arrayApplication() {
    static const Name name("KOVA_ARRAY");
    return name;
}

std::vector<XDataItem> writtenMark(const ArrayMark& mark) {
    std::vector<XDataItem> items;
    items.push_back({1010, Vector3(mark.place.item, mark.place.row, mark.place.level)});
    if (mark.stand) items.push_back({1010, Vector3(mark.stand->point, mark.stand->turn)});
    items.push_back({1071, std::int64_t{mark.part}});
    items.push_back({1070, std::int64_t{mark.replaced ? 1 : 0}});
    if (!mark.definition) return items;
    items.push_back({1000, std::string(mark.definition->typeName())});
    if (mark.definition->path != 0) {
        char text[20];
        items.push_back(
            {1005, std::string(text, std::to_chars(text, text + sizeof text, mark.definition->path, 16).ptr)});
    }
    std::vector<double> numbers;
    Numbers writer{numbers};
    ArrayDefinition definition = *mark.definition;
    Vector2 anchor = mark.anchor;
    describe(writer, definition, anchor);
    for (const double number : numbers) items.push_back({1040, number});
    return items;
}

std::optional<ArrayMark> readArrayMark(const Entity& entity) {
    const engine::XData* data = entity.xdata();
    const auto* items = data != nullptr ? data->find(arrayApplication()) : nullptr;
    if (items == nullptr) return std::nullopt;
    ArrayMark mark;
    int points = 0;
    std::string type;
    std::uint64_t path = 0;
    std::vector<double> numbers;
    for (const XDataItem& item : *items) {
        if (const auto* p = std::get_if<Vector3>(&item.value)) {
            if (points++ == 0) {
                if (!isCount(p->x) || !isCount(p->y) || !isCount(p->z)) return std::nullopt;
                mark.place = {static_cast<int>(p->x), static_cast<int>(p->y), static_cast<int>(p->z)};
            } else if (p->is_finite()) {
                mark.stand = PathArray::Stand{p->xy(), p->z, {}};
            }
        } else if (const auto* number = std::get_if<std::int64_t>(&item.value)) {
            if (item.code == 1071 && *number >= 0 && *number <= 100'000'000) mark.part = static_cast<int>(*number);
            if (item.code == 1070) mark.replaced = *number != 0;
        } else if (const auto* real = std::get_if<double>(&item.value)) {
            numbers.push_back(*real);
        } else if (item.code == 1000) {
            type = std::get<std::string>(item.value);
        } else if (item.code == 1005) {
            const auto& text = std::get<std::string>(item.value);
            std::from_chars(text.data(), text.data() + text.size(), path, 16);
        }
    }
    if (points == 0) return std::nullopt;
    ArrayDefinition definition;
    if (type == "Polar")
        definition.shape = PolarArray();
    else if (type == "Path")
        definition.shape = PathArray();
    else if (type != "Rectangular")
        return mark;
    definition.path = path;
    Numbers reader{numbers, true};
    describe(reader, definition, mark.anchor);
    if (reader.good) mark.definition = definition;
    return mark;
}

}  // namespace kova::cmd
