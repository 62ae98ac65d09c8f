// The shape of a dynamic block under the values of a reference.
#include <unordered_map>

#include "engine/model/drawing.hpp"
#include "engine/entities/dynamic_block.hpp"
#include "engine/modify/stretch_points.hpp"
#include "math/curves/polygon.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;

namespace {

constexpr double kMaxCopies = 10'000;               // of one array action in one direction
constexpr std::size_t kMaxShapeEntities = 200'000;  // in one shape
constexpr std::size_t kMaxStretches = 5;            // that are followed through one another
constexpr std::size_t kKeptShapes = 256;

/// What values make of a parameter.
struct Moved {
    Vector2 start;  ///< by which its first point moves
    Vector2 end;
    double turn = 0.0;  ///< radians
    Vector2 scale{1.0, 1.0};
    Vector2 direction{1.0, 0.0};  ///< from the first point to the second, as it is now
    Vector2 extent;               ///< length, or lengths in two directions
    bool flipped = false;
};

double ratio(double now, double before) {
    const double r = now / before;
    return std::isfinite(r) && r != 0.0 ? r : 1.0;
}

class Evaluation {
public:
    Evaluation(const Block& definition, const BlockReferenceEntity& reference)
        : definition_(definition), reference_(reference) {}

    std::shared_ptr<const Block> shape() {
        const auto visible = definition_.visibleEntities(reference_.activeVisibilityState);
        std::size_t position = 0;
        for (const Entity& entity : definition_.entities) {
            const std::size_t at = position++;
            auto& copies = entities_.emplace_back();
            if (!visible || (*visible)[at]) copies.push_back(entity.clone());
        }
        count_ = definition_.entities.size();
        moves();
        // Lengths first, then what turns and mirrors all of it: frames and bases are those of the definition.
        std::vector<const DynAction*> actions;
        for (const DynAction& action : definition_.dynActions) actions.push_back(&action);
        std::stable_sort(actions.begin(), actions.end(),
                         [](const DynAction* a, const DynAction* b) { return rank(*a) < rank(*b); });
        for (const DynAction* action : actions) apply(*action);

        auto shape = std::make_shared<Block>(definition_.name, definition_.entities.drawing());
        shape->base = definition_.base;
        for (auto& copies : entities_)
            for (auto& entity : copies) shape->entities.appendShown(std::move(entity));
        return shape;
    }

private:
    static int rank(const DynAction& action) {
        switch (kindOf(action)) {
            case DynActionKind::Stretch:
                return 0;
            case DynActionKind::Move:
                return 1;
            case DynActionKind::Scale:
                return 2;
            case DynActionKind::Array:
                return 3;
            case DynActionKind::PolarStretch:
                return 4;
            case DynActionKind::Rotate:
                return 5;
            default:
                return 6;
        }
    }

    void moves() {
        moved_.resize(definition_.dynParams.size());
        std::vector<std::vector<double>> values(moved_.size());
        for (const DynProperty& property : dynProperties(definition_))
            values[property.parameter].push_back(dynValue(reference_, property));
        for (std::size_t i = 0; i < moved_.size(); ++i)
            if (!values[i].empty()) move(definition_.dynParams[i], values[i], moved_[i]);
    }

    void move(const DynParameter& p, const std::vector<double>& values, Moved& m) const {
        const Vector2 way = p.endPoint - p.base;
        const double length = way.length();
        m.direction = length > 0.0 ? way / length : Vector2{1.0, 0.0};
        switch (kindOf(p)) {
            case DynParameterKind::Point:
                m.start = m.end = definition_.base + Vector2{values[0], values[1]} - p.base;
                break;
            case DynParameterKind::Linear: {
                const Vector2 change = m.direction * (values[0] - length);
                m.end = p.baseAtMidpoint ? change / 2.0 : change;
                m.start = m.end - change;
                m.scale.x = m.scale.y = ratio(values[0], length);
                m.extent = {values[0], 0.0};
                break;
            }
            case DynParameterKind::Polar:
                m.turn = values[1] - way.angle();
                m.direction = Vector2::from_angle(values[1]);
                m.end = p.base + m.direction * values[0] - p.endPoint;
                m.scale.x = m.scale.y = ratio(values[0], length);
                m.extent = {values[0], 0.0};
                break;
            case DynParameterKind::XY:
                m.direction = {1.0, 0.0};
                m.extent = {values[0], values[1]};
                m.end = m.extent - way;
                if (p.baseAtMidpoint) m.end *= 0.5;
                m.start = p.baseAtMidpoint ? -m.end : Vector2{};
                m.scale = {ratio(values[0], way.x), ratio(values[1], way.y)};
                break;
            case DynParameterKind::Rotation:
                m.turn = values[0] - p.value;
                break;
            case DynParameterKind::Flip:
                m.flipped = (values[0] != 0.0) != p.flipState;
                break;
            default:
                break;
        }
    }

    template <class Change>
    void change(const DynAction& action, const Change& change) {
        std::vector<std::int32_t> indices = action.affectedEntityIndices;
        std::sort(indices.begin(), indices.end());
        indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
        for (const std::int32_t index : indices)
            if (index >= 0 && static_cast<std::size_t>(index) < entities_.size())
                change(entities_[static_cast<std::size_t>(index)]);
    }

    void transform(const DynAction& action, const Matrix4& matrix) {
        change(action, [&](std::vector<std::unique_ptr<Entity>>& copies) {
            for (auto& entity : copies)
                if (auto image = transformedEntity(*entity, matrix)) entity = std::move(image);
        });
    }

    void apply(const DynAction& action) {
        if (action.parameterIndex < 0 || static_cast<std::size_t>(action.parameterIndex) >= moved_.size()) return;
        const DynParameter& parameter = definition_.dynParams[static_cast<std::size_t>(action.parameterIndex)];
        const Moved& m = moved_[static_cast<std::size_t>(action.parameterIndex)];
        if (!fits(kindOf(action), kindOf(parameter))) return;
        Vector2 by = action.atStartPoint ? m.start : m.end;
        const Vector2 axis = Vector2::from_angle(action.axisAngle);
        if (action.constrainToAxis) by = axis * by.dot(axis);
        switch (kindOf(action)) {
            case DynActionKind::Move:
                if (by != Vector2{}) transform(action, Matrix4::translation(by));
                break;
            case DynActionKind::Stretch:
                if (by != Vector2{}) stretch(action, by);
                break;
            case DynActionKind::PolarStretch: {
                const double longer = m.extent.x - parameter.base.distance_to(parameter.endPoint);
                if (m.turn != 0.0) transform(action, Matrix4::rotation_about(parameter.base, m.turn));
                if (longer == 0.0) break;
                DynAction turned = action;
                for (Vector2& p : turned.stretchFrame)
                    p = Matrix4::rotation_about(parameter.base, m.turn).transform_point(p);
                stretch(turned, m.direction * longer);
                break;
            }
            case DynActionKind::Scale: {
                Vector2 factor = m.scale;
                if (action.constrainToAxis) (std::abs(axis.x) > std::abs(axis.y) ? factor.y : factor.x) = 1.0;
                if (factor != Vector2{1.0, 1.0})
                    transform(action, Matrix4::translation(action.scaleBase) * Matrix4::scaling(factor.x, factor.y) *
                                          Matrix4::translation(-action.scaleBase));
                break;
            }
            case DynActionKind::Array:
                array(action, parameter, m);
                break;
            case DynActionKind::Rotate:
                if (m.turn != 0.0) transform(action, Matrix4::rotation_about(parameter.base, m.turn));
                break;
            case DynActionKind::Flip:
                if (m.flipped && parameter.base != parameter.endPoint)
                    transform(action, Matrix4::mirror(parameter.base, parameter.endPoint));
                break;
            default:
                break;
        }
    }

    // A point that an earlier stretch moved is looked for in a later frame where it was before.

    struct Stretch {
        std::vector<Vector2> frame;
        Vector2 by;
    };

    static bool inFrame(const std::vector<Vector2>& frame, const Vector2& p) {
        math::Bounds2 box;
        for (const Vector2& corner : frame) box.expand(corner);
        if (box.is_empty()) return false;
        box = box.inflated(1e-9 * std::max({1.0, std::abs(p.x), std::abs(p.y)}));
        if (p.x < box.min.x || p.y < box.min.y || p.x > box.max.x || p.y > box.max.y) return false;
        return frame.size() < 3 || math::pointInPolygon(p, frame);
    }

    /// True when the point lay in the frame before the first `earlier` stretches, and only where they put it.
    bool cameFrom(const std::vector<Vector2>& frame, const Vector2& p, std::size_t earlier) const {
        if (earlier == 0) return inFrame(frame, p);
        const Stretch& last = stretches_[earlier - 1];
        if (cameFrom(frame, p, earlier - 1) && !cameFrom(last.frame, p, earlier - 1)) return true;
        const Vector2 before = p - last.by;
        return cameFrom(last.frame, before, earlier - 1) && cameFrom(frame, before, earlier - 1);
    }

    void stretch(const DynAction& action, const Vector2& by) {
        const std::size_t earlier = stretches_.size();
        const PointTest inside = [&](const Vector2& p) { return cameFrom(action.stretchFrame, p, earlier); };
        change(action, [&](std::vector<std::unique_ptr<Entity>>& copies) {
            for (auto& entity : copies) switch (stretchEffect(*entity, inside)) {
                    case StretchEffect::Whole:
                        entity->transform(Matrix4::translation(by));
                        break;
                    case StretchEffect::Partly:
                        stretchPoints(*entity, inside, by);
                        break;
                    case StretchEffect::None:
                        break;
                }
        });
        if (kindOf(action) == DynActionKind::Stretch && earlier < kMaxStretches)
            stretches_.push_back({action.stretchFrame, by});
    }

    void array(const DynAction& action, const DynParameter& parameter, const Moved& m) {
        const auto fitting = [](double extent, double spacing) {
            const double count = std::floor(extent / spacing + 1e-9);
            return count > 1.0 ? static_cast<int>(std::min(count, kMaxCopies)) : 1;
        };
        const bool both = kindOf(parameter) == DynParameterKind::XY;
        int columns = fitting(m.extent.x, action.arraySpacing);
        if (action.arrayCount > 0) columns = std::min(columns, action.arrayCount);
        const int rows = both ? fitting(m.extent.y, action.arrayRowSpacing) : 1;
        const Vector2 across = m.direction.perpendicular();
        change(action, [&](std::vector<std::unique_ptr<Entity>>& copies) {
            const std::size_t present = copies.size();
            for (int row = 0; row < rows; ++row)
                for (int column = row == 0 ? 1 : 0; column < columns; ++column) {
                    if (count_ + present > kMaxShapeEntities) return;
                    count_ += present;
                    const Vector2 by =
                        m.direction * (column * action.arraySpacing) + across * (row * action.arrayRowSpacing);
                    for (std::size_t i = 0; i < present; ++i)
                        copies.push_back(transformedEntity(*copies[i], Matrix4::translation(by)));
                    std::erase(copies, nullptr);
                }
        });
    }

    const Block& definition_;
    const BlockReferenceEntity& reference_;
    std::vector<std::vector<std::unique_ptr<Entity>>> entities_;
    std::vector<Moved> moved_;
    std::vector<Stretch> stretches_;
    std::size_t count_ = 0;
};

bool hasValues(const Block& definition, const BlockReferenceEntity& reference) {
    return definition.isDynamic && !definition.dynActions.empty() &&
           (!reference.dynParamValues.empty() || !reference.dynFlipValues.empty());
}

}  // namespace

/// The shapes of one definition.
class ShownStates {
public:
    static std::shared_ptr<const Block> find(const Block& definition, const BlockReferenceEntity& reference) {
        if (!definition.shownStates_) definition.shownStates_ = std::make_shared<ShownStates>();
        ShownStates& states = *definition.shownStates_;
        const Drawing* drawing = definition.entities.drawing();
        const std::uint64_t style = drawing != nullptr ? drawing->styleRevision : 0;
        if (states.revision_ != definition.entities.revision() || states.style_ != style ||
            states.shapes_.size() >= kKeptShapes)
            states.shapes_.clear();
        states.revision_ = definition.entities.revision();
        states.style_ = style;

        std::string key = reference.activeVisibilityState;
        for (const auto* values : {&reference.dynParamValues, &reference.dynFlipValues})
            for (const auto& [name, value] : *values) key += '\n' + name + '=' + strings::shortest(value);
        std::shared_ptr<const Block>& shape = states.shapes_[key];
        if (!shape) shape = Evaluation(definition, reference).shape();
        return shape;
    }

private:
    std::uint64_t revision_ = 0;
    std::uint64_t style_ = 0;
    std::unordered_map<std::string, std::shared_ptr<const Block>> shapes_;
};

ShownBlock shownBlock(const Block& definition, const BlockReferenceEntity& reference) {
    ShownBlock shown;
    shown.block = &definition;
    if (hasValues(definition, reference)) {
        shown.own = ShownStates::find(definition, reference);
        shown.block = shown.own.get();
    } else {
        shown.visible = definition.visibleEntities(reference.activeVisibilityState);
    }
    return shown;
}

}  // namespace kova::engine
