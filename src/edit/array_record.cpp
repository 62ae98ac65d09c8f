#include "edit/array_record.hpp"

#include <unordered_set>

#include "edit/array_marks.hpp"
#include "edit/entity_copies.hpp"
#include "edit/groups.hpp"
#include "doc/table_edits.hpp"

namespace kova::cmd {

using engine::Entity;
using engine::Name;
using engine::XDataItem;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

/// Items whose first part carries the definition, too: it is there still when the first item is erased.
constexpr int kHolders = 8;

/// A point that goes with an entity wherever it is moved.
Vector2 anchorOf(const Entity& entity) {
    const std::vector<Vector2> grips = entity.gripPoints();
    return grips.empty() ? entity.bounds().center() : grips.front();
}

int perRow(const ArrayDefinition& definition, const engine::Drawing& drawing) {
    if (const auto* rect = std::get_if<RectangularArray>(&definition.shape)) return rect->columns;
    if (const auto* polar = std::get_if<PolarArray>(&definition.shape)) return polar->count;
    const Entity* curve = definition.curve(drawing);
    return curve != nullptr ? std::get<PathArray>(definition.shape).number(CurveRuler(*curve)) : 0;
}

/// Where each item goes, seen from the source where it is. Empty: the path is gone.
std::map<ArrayPlace, Matrix4> waysOf(const ArrayDefinition& definition, const engine::Drawing& drawing,
                                     std::vector<PathArray::Stand>* stands = nullptr) {
    std::map<ArrayPlace, Matrix4> out;
    std::vector<Matrix4> ways;
    if (const auto* rect = std::get_if<RectangularArray>(&definition.shape)) {
        ways = rect->items();
    } else if (const auto* polar = std::get_if<PolarArray>(&definition.shape)) {
        ways = polar->items();
    } else {
        const Entity* curve = definition.curve(drawing);
        if (curve == nullptr) return out;
        const CurveRuler ruler(*curve);
        if (!(ruler.length() > 0.0) || !std::isfinite(ruler.length())) return out;
        const auto& path = std::get<PathArray>(definition.shape);
        if (stands != nullptr) *stands = path.stands(ruler);
        ways = path.items(ruler);
    }
    const std::vector<ArrayPlace> places = arrayPlaces(perRow(definition, drawing), definition.rows());
    for (std::size_t i = 0; i < places.size() && i < ways.size(); ++i) out.emplace(places[i], ways[i]);
    return out;
}

/// Where an item of an array stands as it was last arranged, seen from its source.
std::optional<Matrix4> wayNow(const ArrayObject& array, const std::map<ArrayPlace, Matrix4>& ways,
                              const ArrayPlace& place, const ArrayObject::Item& item) {
    if (array.definition.isPath()) {
        if (!item.stand) return std::nullopt;
        const auto& path = std::get<PathArray>(array.definition.shape);
        PathArray::Stand stand = *item.stand;
        stand.side = path.direction.value_or(Vector2(1, 0)).normalized().perpendicular();
        return path.way(stand, place.row, place.level);
    }
    const auto it = ways.find(place);
    return it != ways.end() ? std::optional(it->second) : std::nullopt;
}

bool isNothing(const Matrix4& m) {
    const Matrix4 none;
    for (std::size_t i = 0; i < m.m.size(); ++i)
        if (!(std::abs(m.m[i] - none.m[i]) <= 1e-12 * std::max(1.0, std::abs(m.m[i])))) return false;
    return true;
}

Vector2 turned(const Vector2& v, const Vector2& by) { return {v.x * by.x - v.y * by.y, v.x * by.y + v.y * by.x}; }

/// A similarity of the plane: p -> to + factor * (p - from), mirrored first or not.
struct Similarity {
    Vector2 from, to;
    Vector2 factor{1, 0};
    bool mirrored = false;

    Vector2 direction(Vector2 v) const { return turned(mirrored ? Vector2(v.x, -v.y) : v, factor); }
    Vector2 point(const Vector2& p) const { return to + direction(p - from); }
};

/// Changes a definition as its items were changed since it was written.
void follow(ArrayDefinition& definition, const Similarity& s) {
    const double scale = s.factor.length();
    ArrayRows& rows = definition.rows();
    if (auto* path = std::get_if<PathArray>(&definition.shape)) {
        path->base = s.point(path->base);
        return;
    }
    rows.distance *= scale;
    rows.rise *= scale;
    rows.levelDistance *= scale;
    if (auto* rect = std::get_if<RectangularArray>(&definition.shape)) {
        rect->angle = s.direction(Vector2::from_angle(rect->angle)).angle();
        rect->columnDistance *= scale;
        if (s.mirrored) rows.distance = -rows.distance;
        return;
    }
    auto& polar = std::get<PolarArray>(definition.shape);
    polar.center = Vector3(s.point(polar.center.xy()), polar.center.z);
    polar.base = s.point(polar.base);
    if (polar.axis.x != 0.0 || polar.axis.y != 0.0)
        polar.axis = Vector3(s.direction(polar.axis.xy()) / scale, polar.axis.z).normalized();
    if (s.mirrored) polar.fill = -polar.fill;
}

/// How the items were moved since: by where the first ones and two more were, and are.
std::optional<Similarity> movedSince(const ArrayObject& array, const engine::Drawing& drawing, const Vector2& anchor) {
    struct Pair {
        Vector2 was, is;
    };
    std::vector<Pair> pairs;
    const auto ways = array.definition.isPath() ? std::map<ArrayPlace, Matrix4>() : waysOf(array.definition, drawing);
    for (const auto& [place, item] : array.items) {
        const auto part = item.parts.find(0);
        if (part == item.parts.end() || item.replaced) continue;
        const auto way = wayNow(array, ways, place, item);
        const Entity* entity = drawing.findById(part->second);
        if (!way || entity == nullptr) continue;
        pairs.push_back({way->transform_point(anchor), anchorOf(*entity)});
    }
    if (pairs.empty()) return std::nullopt;
    Similarity s;
    s.from = pairs.front().was;
    s.to = pairs.front().is;
    const auto farthest = std::max_element(pairs.begin(), pairs.end(), [&](const Pair& a, const Pair& b) {
        return a.was.distance_to(s.from) < b.was.distance_to(s.from);
    });
    const Vector2 was = farthest->was - s.from;
    const Vector2 is = farthest->is - s.to;
    if (!array.definition.isPath() && was.length() > 1e-9 && is.length() > 1e-9) {
        const auto factorOf = [&](const Vector2& v) { return turned(is, Vector2(v.x, -v.y)) / v.dot(v); };
        Similarity mirrored = s;
        mirrored.mirrored = true;
        mirrored.factor = factorOf(Vector2(was.x, -was.y));
        s.factor = factorOf(was);
        double straight = 0.0;
        double turnedOver = 0.0;
        for (const Pair& pair : pairs) {
            straight = std::max(straight, s.point(pair.was).distance_to(pair.is));
            turnedOver = std::max(turnedOver, mirrored.point(pair.was).distance_to(pair.is));
        }
        if (turnedOver < straight * 1e-3) s = mirrored;
    }
    const double size = std::max({1.0, std::abs(s.from.x), std::abs(s.from.y)});
    if (s.from.near_equal(s.to, 1e-9 * size) && s.factor.near_equal({1, 0}, 1e-9) && !s.mirrored) return std::nullopt;
    return s;
}

std::vector<std::uint64_t> partsOf(const ArrayObject::Item& item) {
    std::vector<std::uint64_t> ids;
    for (const auto& [part, id] : item.parts) ids.push_back(id);
    return ids;
}

/// Copies of an item's parts, under their numbers.
ArrayObject::Item copied(doc::Document& document, const ArrayObject::Item& item, const Matrix4& way) {
    ArrayObject::Item out;
    for (const auto& [part, id] : item.parts) {
        const std::vector<std::uint64_t> added = addCopies(document, {id}, way);
        if (!added.empty()) out.parts.emplace(part, added.front());
    }
    return out;
}

/// Writes the extended data of all members, where it is another, and the members of the group.
void writeMarks(doc::Document& document, ArrayObject& array) {
    Vector2 anchor;
    bool anchored = false;
    const auto ways =
        array.definition.isPath() ? std::map<ArrayPlace, Matrix4>() : waysOf(array.definition, document.drawing());
    for (const auto& [place, item] : array.items) {
        const auto part = item.parts.find(0);
        if (part == item.parts.end() || item.replaced) continue;
        const auto way = wayNow(array, ways, place, item);
        const auto back = way ? way->inverse() : std::nullopt;
        if (!back) continue;
        anchor = back->transform_point(anchorOf(*document.drawing().findById(part->second)));
        anchored = true;
        break;
    }
    std::vector<std::uint64_t> all;
    int number = 0;
    for (const auto& [place, item] : array.items) {
        const bool holder = number++ < kHolders && anchored;
        for (const auto& [part, id] : item.parts) {
            Entity* entity = document.drawing().findById(id);
            if (entity == nullptr) continue;
            all.push_back(id);
            ArrayMark mark{place, part, item.replaced, item.stand, {}, anchor};
            if (holder && part == item.parts.begin()->first) mark.definition = array.definition;
            std::vector<XDataItem> items = writtenMark(mark);
            const auto* present = entity->xdata() != nullptr ? entity->xdata()->find(arrayApplication()) : nullptr;
            if (present != nullptr && *present == items) continue;
            document.modifyEntity(*entity,
                                  [&](Entity& e) { e.ensureXdata().set(arrayApplication(), std::move(items)); });
        }
    }
    std::vector<std::uint64_t> handles = handlesOf(document.drawing(), all);
    const engine::Group* group = document.drawing().groups.find(array.group);
    if (group == nullptr) {
        addGroup(document, array.group, {}, all);
    } else if (group->memberHandles != handles) {
        document.editTable<doc::GroupTraits>([&](engine::Table<engine::Group>& groups) {
            groups.find(array.group)->memberHandles = std::move(handles);
        });
    }
}

/// Arranges the items by a definition. `renewReplaced` makes replaced and erased ones anew from the source, `renewAll`
/// all others; else only places that the array did not have get a copy. The source is the item at `sourcePlace`, or the
/// first one that is not replaced.
std::string arrange(doc::Document& document, ArrayObject& array, const ArrayDefinition& next, bool renewReplaced,
                    bool renewAll, const ArrayPlace* sourcePlace) {
    std::vector<PathArray::Stand> stands;
    const auto ways = waysOf(next, document.drawing(), &stands);
    if (ways.empty()) return "The path of the array cannot be used any more.";
    const auto before =
        array.definition.isPath() ? std::map<ArrayPlace, Matrix4>() : waysOf(array.definition, document.drawing());
    // Places that the array had, with or without an item by now.
    const int had = array.definition.isPath() ? (array.items.empty() ? 0
                                                                     : std::max_element(
                                                                           array.items.begin(), array.items.end(),
                                                                           [](const auto& a, const auto& b) {
                                                                               return a.first.item < b.first.item;
                                                                           })->first.item +
                                                                           1)
                                              : perRow(array.definition, document.drawing());
    const auto hadPlace = [&](const ArrayPlace& p) {
        return p.item < had && p.row < array.definition.rows().rows && p.level < array.definition.rows().levels;
    };
    auto source = array.items.end();
    if (sourcePlace != nullptr) source = array.items.find(*sourcePlace);
    if (source == array.items.end())
        source = std::find_if(array.items.begin(), array.items.end(), [](const auto& i) { return !i.second.replaced; });
    if (source == array.items.end()) source = array.items.begin();
    if (source == array.items.end()) return "The array has no items.";
    if (static_cast<double>(ways.size()) * static_cast<double>(source->second.parts.size()) > kMaxArrayEntities)
        return "Too many objects to array.";
    const auto sourceWay = wayNow(array, before, source->first, source->second);
    const auto fromSource = sourceWay ? sourceWay->inverse() : std::nullopt;
    if (!fromSource) return "The array cannot be rebuilt.";

    // Copies come first: they are made of the source where it still is.
    std::map<ArrayPlace, ArrayObject::Item> items;
    std::vector<std::uint64_t> gone;
    std::vector<std::pair<std::vector<std::uint64_t>, Matrix4>> moves;
    for (const auto& [place, way] : ways) {
        const auto present = array.items.find(place);
        const bool there = present != array.items.end();
        const bool isSource = there && present == source;
        const bool renew = there && !isSource &&
                           ((renewReplaced && present->second.replaced) || (renewAll && !present->second.replaced));
        if (there && !renew) {
            const auto now = wayNow(array, before, place, present->second);
            const auto back = now ? now->inverse() : std::nullopt;
            if (!back) return "The array cannot be rebuilt.";
            const Matrix4 change = way * *back;
            if (!isNothing(change)) moves.emplace_back(partsOf(present->second), change);
            items[place] = present->second;
            if (isSource) items[place].replaced = false;
        } else if (there || renewReplaced || !hadPlace(place)) {
            items[place] = copied(document, source->second, way * *fromSource);
            if (there)
                for (const std::uint64_t id : partsOf(present->second)) gone.push_back(id);
        }
    }
    if (items.empty()) {
        const ArrayPlace first;
        items[first] = copied(document, source->second, ways.at(first) * *fromSource);
    }
    for (const auto& [place, item] : array.items)
        if (!ways.contains(place))
            for (const std::uint64_t id : partsOf(item)) gone.push_back(id);
    for (const auto& [ids, change] : moves) document.transformEntities(ids, change);
    document.removeEntities(gone);

    array.definition = next;
    if (auto* path = std::get_if<PathArray>(&array.definition.shape)) {
        // From now on the source is where the first item is.
        const Vector2 way = path->direction.value_or(Vector2(1, 0));
        const double turn = stands.front().turn;
        path->base = stands.front().point;
        path->direction = turned(way, Vector2::from_angle(turn));
        for (auto& [place, item] : items) {
            item.stand = stands[static_cast<std::size_t>(place.item)];
            item.stand->turn -= turn;
        }
    }
    array.items = std::move(items);
    writeMarks(document, array);
    return {};
}

}  // namespace

ArrayRows& ArrayDefinition::rows() {
    return std::visit([](auto& array) -> ArrayRows& { return array.rows; }, shape);
}

const char* ArrayDefinition::typeName() const { return isPolar() ? "Polar" : isPath() ? "Path" : "Rectangular"; }

const Entity* ArrayDefinition::curve(const engine::Drawing& drawing) const {
    const Entity* entity = path != 0 ? drawing.findByHandle(path) : nullptr;
    return entity != nullptr && isCurve(*entity) ? entity : nullptr;
}

void tieArray(doc::Document& document, const ArrayDefinition& definition,
              const std::vector<std::vector<std::uint64_t>>& items) {
    ArrayObject array;
    array.group = nextGroupName(document.drawing());
    array.definition = definition;
    std::vector<PathArray::Stand> stands;
    if (const auto* path = std::get_if<PathArray>(&definition.shape))
        if (const Entity* curve = definition.curve(document.drawing())) stands = path->stands(CurveRuler(*curve));
    const std::vector<ArrayPlace> places = arrayPlaces(perRow(definition, document.drawing()), definition.rows());
    for (std::size_t i = 0; i < places.size() && i < items.size(); ++i) {
        ArrayObject::Item item;
        int part = 0;
        for (const std::uint64_t id : items[i]) item.parts.emplace(part++, id);
        if (static_cast<std::size_t>(places[i].item) < stands.size())
            item.stand = stands[static_cast<std::size_t>(places[i].item)];
        array.items.emplace(places[i], std::move(item));
    }
    writeMarks(document, array);
}

bool carriesArrayData(const Entity& entity) {
    return entity.xdata() != nullptr && entity.xdata()->find(arrayApplication()) != nullptr;
}

std::optional<ArrayMember> arrayOf(doc::Document& document, const Entity& entity) {
    const std::optional<ArrayMark> own = readArrayMark(entity);
    if (!own) return std::nullopt;
    engine::Drawing& drawing = document.drawing();
    for (const Name name : groupsOf(drawing, {entity.id()})) {
        const engine::Group& group = *drawing.groups.find(name);
        ArrayMember member;
        member.array.group = name;
        member.place = own->place;
        std::optional<ArrayMark> holder;
        for (const std::uint64_t handle : group.memberHandles) {
            const Entity* e = drawing.findByHandle(handle);
            std::optional<ArrayMark> mark = e != nullptr ? readArrayMark(*e) : std::nullopt;
            if (!mark) continue;
            ArrayObject::Item& item = member.array.items[mark->place];
            item.parts.emplace(mark->part, e->id());
            item.replaced = mark->replaced;
            item.stand = mark->stand;
            if (mark->definition && !holder) holder = std::move(mark);
        }
        if (!holder || holder->definition->rows().count() > kMaxArrayEntities) continue;
        const double inRow = perRow(*holder->definition, drawing);
        if (inRow * holder->definition->rows().count() > kMaxArrayEntities) continue;
        member.array.definition = *holder->definition;
        if (const auto moved = movedSince(member.array, drawing, holder->anchor)) {
            follow(member.array.definition, *moved);
            if (member.array.definition.isPath())
                for (auto& [place, item] : member.array.items)
                    if (item.stand) item.stand->point = moved->point(item.stand->point);
        }
        return member;
    }
    return std::nullopt;
}

std::size_t untieArrays(doc::Document& document, std::vector<std::uint64_t>& ids) {
    engine::Drawing& drawing = document.drawing();
    std::vector<Name> untied;
    std::unordered_set<std::uint64_t> items;
    for (const Name name : groupsOf(drawing, ids)) {
        const std::size_t before = items.size();
        for (const std::uint64_t handle : drawing.groups.find(name)->memberHandles) {
            Entity* entity = drawing.findByHandle(handle);
            if (entity == nullptr || !readArrayMark(*entity)) continue;
            items.insert(entity->id());
            document.modifyEntity(*entity, [](Entity& e) {
                engine::XData data = *e.xdata();
                data.set(arrayApplication(), {});
                e.setXdata(std::move(data));
            });
        }
        if (items.size() > before) untied.push_back(name);
    }
    if (untied.empty()) return 0;
    document.editTable<doc::GroupTraits>([&](engine::Table<engine::Group>& groups) {
        for (const Name name : untied) groups.erase(name);
    });
    std::erase_if(ids, [&](std::uint64_t id) { return items.contains(id); });
    return untied.size();
}

std::string rearrange(doc::Document& document, ArrayObject& array, const ArrayDefinition& next) {
    return arrange(document, array, next, false, false, nullptr);
}

std::string resetArray(doc::Document& document, ArrayObject& array) {
    return arrange(document, array, array.definition, true, false, nullptr);
}

std::string takeAsSource(doc::Document& document, ArrayObject& array, const ArrayPlace& place) {
    return arrange(document, array, array.definition, false, true, &place);
}

std::string replaceItem(doc::Document& document, ArrayObject& array, const ArrayPlace& place,
                        const std::vector<std::uint64_t>& ids, const Vector2& base) {
    const auto at = array.items.find(place);
    if (at == array.items.end() || ids.empty()) return "No object found.";
    ArrayObject::Item& item = at->second;
    const auto before =
        array.definition.isPath() ? std::map<ArrayPlace, Matrix4>() : waysOf(array.definition, document.drawing());
    const auto way = wayNow(array, before, place, item);
    const auto back = way ? way->inverse() : std::nullopt;
    if (!back) return "The array cannot be rebuilt.";
    // The objects stand for the source, and are turned like the item. The centre is seen from the source, too.
    math::Bounds2 box;
    for (const std::uint64_t id : partsOf(item))
        if (const Entity* entity = document.drawing().findById(id)) {
            const auto copy = engine::transformedEntity(*entity, *back);
            if (copy) box.expand(copy->bounds());
        }
    const Vector2 center = box.is_empty() ? base : box.center();
    ArrayObject::Item fresh;
    fresh.replaced = true;
    fresh.stand = item.stand;
    int part = 0;
    for (const std::uint64_t id : addCopies(document, ids, *way * Matrix4::translation(center - base)))
        fresh.parts.emplace(part++, id);
    document.removeEntities(partsOf(item));
    item = std::move(fresh);
    writeMarks(document, array);
    return {};
}

}  // namespace kova::cmd
