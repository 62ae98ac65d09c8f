#include "cmd/prompts/array_prompts.hpp"
#include "edit/array_record.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/text_or_point.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

constexpr const char* kAssociative = "arrayAssociative";
constexpr const char* kPolarType = "arrayPolar";

/// What the array commands share. An associative array is kept as an unnamed group of its items.
class ArrayTool : public DialogueTool {
protected:
    /// Selects and measures the objects; false when there are none.
    Task<bool> askObjects(Ask& ask) {
        const Answer selected = co_await ask.selection();
        ids_ = selected.ids;
        if (ids_.empty()) co_return false;
        const math::Bounds2 box = boundsOf(drawing(), ids_);
        if (!box.is_empty()) {
            base_ = box.center();
            size_ = {box.width() > 0.0 ? 1.5 * box.width() : 1.0, box.height() > 0.0 ? 1.5 * box.height() : 1.0};
        }
        rows_.distance = size_.y;
        associative_ = remembered(document(), kAssociative, 1.0) != 0.0;
        co_return true;
    }

    void announce(const char* type) {
        message(std::string("Type = ") + type + "  Associative = " + (associative_ ? "Yes" : "No"));
    }

    Dialogue rectangular(Ask& ask) {
        announce("Rectangular");
        RectangularArray array;
        array.columnDistance = size_.x;
        array.angle = rowDirection();
        rows_.rows = 3;
        for (;;) {
            const Answer answer = co_await ask.keyword(
                "Select grip to edit array or [ASsociative/Base "
                "point/ANgle/COUnt/Spacing/COLumns/Rows/Levels/eXit] <eXit>:",
                "ASsociative Base ANgle COUnt Spacing COLumns Rows Levels eXit");
            if (answer.isEnter() || answer.is("EXIT")) break;
            if (answer.is("ASSOCIATIVE")) {
                co_await askAssociative(ask);
            } else if (answer.is("BASE")) {
                co_await askBase(ask);
            } else if (answer.is("ANGLE")) {
                std::string prompt = withDefault("Specify angle of the rows", angleText(drawing(), array.angle));
                const Answer angle = co_await ask.angle(std::move(prompt), {}, base_);
                if (angle.isNumber()) array.angle = worldDirection(angle, drawing());
            } else if (answer.is("COUNT")) {
                array.columns = co_await askArrayCount(ask, "Enter the number of columns", array.columns);
                rows_.rows = co_await askArrayCount(ask, "Enter the number of rows", rows_.rows);
            } else if (answer.is("SPACING")) {
                co_await askSpacing(ask, array);
            } else if (answer.is("COLUMNS")) {
                co_await askArrayColumns(ask, drawing(), array);
            } else if (answer.is("ROWS")) {
                co_await askArrayRows(ask, drawing(), rows_);
            } else {
                co_await askArrayLevels(ask, drawing(), rows_);
            }
        }
        array.rows = rows_;
        if (fits(static_cast<double>(array.columns) * rows_.count())) finish("ARRAYRECT", array, array.items());
    }

    Dialogue polar(Ask& ask) {
        announce("Polar");
        PolarArray array;
        for (;;) {
            const Answer answer = co_await ask.point(
                "Specify center point of array or [Base point/Axis of rotation]:", "Base Axis", std::nullopt);
            if (answer.isEnter()) co_return;
            if (answer.is("BASE")) {
                co_await askBase(ask);
                continue;
            }
            if (answer.is("AXIS")) {
                const Answer first = co_await ask.point("Specify first point on axis of rotation:");
                if (!first.isPoint()) co_return;
                const Answer second = co_await ask.point("Specify second point on axis of rotation:", {}, first.point);
                if (!second.isPoint()) co_return;
                if (second.point == first.point) {
                    message("The two points coincide.");
                    continue;
                }
                array.center = math::Vector3(first.point);
                array.axis = math::Vector3((second.point - first.point).normalized());
                break;
            }
            array.center = math::Vector3(answer.point);
            break;
        }
        for (;;) {
            const Answer answer = co_await ask.keyword(
                "Select grip to edit array or [ASsociative/Base point/Items/Angle between/Fill "
                "angle/ROWs/Levels/ROTate items/eXit] <eXit>:",
                "ASsociative Base Items Angle Fill ROWs Levels ROTate eXit");
            if (answer.isEnter() || answer.is("EXIT")) break;
            if (answer.is("ASSOCIATIVE")) {
                co_await askAssociative(ask);
            } else if (answer.is("BASE")) {
                co_await askBase(ask);
            } else if (answer.is("ITEMS")) {
                array.count = co_await askArrayCount(ask, "Enter number of items in array", array.count);
            } else if (answer.is("ANGLE")) {
                co_await askAngleBetween(ask, drawing(), array);
            } else if (answer.is("FILL")) {
                co_await askFillAngle(ask, drawing(), array);
            } else if (answer.is("ROWS")) {
                co_await askArrayRows(ask, drawing(), rows_);
            } else if (answer.is("LEVELS")) {
                co_await askArrayLevels(ask, drawing(), rows_);
            } else {
                co_await askTurnItems(ask, array);
            }
        }
        array.base = base_;
        array.rows = rows_;
        if (fits(static_cast<double>(array.count) * rows_.count())) finish("ARRAYPOLAR", array, array.items());
    }

    Dialogue path(Ask& ask) {
        announce("Path");
        const Answer picked = co_await ask.object("Select path curve:", {}, isCurve);
        const engine::Entity* curve = picked.isObject() ? drawing().findById(picked.id) : nullptr;
        if (curve == nullptr) co_return;
        const CurveRuler ruler(*curve);
        const std::uint64_t handle = curve->handle();
        if (!(ruler.length() > 0.0) || !std::isfinite(ruler.length())) co_return message("Object cannot be used here.");
        PathArray array;
        const Vector2 start = ruler.at(0.0).point;
        const Vector2 end = ruler.at(ruler.length()).point;
        array.reversed = !ruler.closed() && picked.point.distance_to(end) < picked.point.distance_to(start);
        array.base = base_ = array.reversed ? end : start;
        array.distance = size_.x;
        array.count = array.fitting(ruler);
        for (;;) {
            const Answer answer = co_await ask.keyword(
                "Select grip to edit array or [ASsociative/Method/Base point/Tangent "
                "direction/Items/Rows/Levels/Align items/Z direction/eXit] <eXit>:",
                "ASsociative Method Base Tangent Items Rows Levels Align Z eXit");
            if (answer.isEnter() || answer.is("EXIT")) break;
            if (answer.is("ASSOCIATIVE")) {
                co_await askAssociative(ask);
            } else if (answer.is("METHOD")) {
                co_await askPathMethod(ask, array);
            } else if (answer.is("BASE")) {
                co_await askBase(ask);
            } else if (answer.is("TANGENT")) {
                co_await askTangent(ask, array);
            } else if (answer.is("ITEMS")) {
                co_await askPathItems(ask, drawing(), array, ruler);
            } else if (answer.is("ROWS")) {
                co_await askArrayRows(ask, drawing(), rows_);
            } else if (answer.is("LEVELS")) {
                co_await askArrayLevels(ask, drawing(), rows_);
            } else if (answer.is("ALIGN")) {
                co_await askAlignItems(ask, array);
            } else {
                // Paths are followed in plan, so items never tilt.
                co_await askYesNo(ask, "Maintain Z direction? [Yes/No] <Yes>:", true);
            }
        }
        array.base = base_;
        array.rows = rows_;
        if (fits(static_cast<double>(array.count) * rows_.count())) finishPath(array, ruler, handle);
    }

    /// The dialogue of -ARRAY.
    Dialogue classic(Ask& ask) {
        const bool wasPolar = remembered(document(), kPolarType, 0.0) != 0.0;
        const Answer type = co_await ask.keyword(wasPolar ? "Enter the type of array [Rectangular/Polar] <P>:"
                                                          : "Enter the type of array [Rectangular/Polar] <R>:",
                                                 "Rectangular Polar");
        const bool isPolar = type.isEnter() ? wasPolar : type.is("POLAR");
        remember(document(), kPolarType, isPolar ? 1.0 : 0.0);
        associative_ = false;
        if (isPolar) co_return co_await classicPolar(ask);
        co_await classicRectangular(ask);
    }

private:
    double rowDirection() const { return ucsRotation(drawing()) + engine::sysVarReal(drawing(), "SNAPANG"); }
    /// A count of the older dialogue.
    Task<int> askCount(Ask& ask, const char* question) {
        std::string prompt = withDefault(question, "1");
        const Answer answer = co_await ask.integer(std::move(prompt), 1, kMostInArray);
        co_return answer.isNumber() ? answer.integer() : 1;
    }

    Dialogue askSpacing(Ask& ask, RectangularArray& array) {
        std::string prompt = withDefault("Specify the distance between columns or [Unit cell]",
                                         lengthDefault(drawing(), array.columnDistance));
        const Answer columns = co_await ask.distance(std::move(prompt), "Unit");
        if (columns.is("UNIT")) {
            const Answer first = co_await ask.point("Specify first corner of unit cell:");
            if (!first.isPoint()) co_return;
            const Answer second = co_await ask.point("Specify opposite corner of unit cell:", {}, first.point);
            if (second.isPoint()) takeUnitCell(array, second.point - first.point);
            co_return;
        }
        array.columnDistance = columns.numberOr(array.columnDistance);
        prompt = withDefault("Specify the distance between rows", lengthDefault(drawing(), rows_.distance));
        const Answer rows = co_await ask.distance(std::move(prompt));
        rows_.distance = rows.numberOr(rows_.distance);
    }

    /// The cell's sides along the rows and across.
    void takeUnitCell(RectangularArray& array, const Vector2& diagonal) {
        const Vector2 along = math::Vector2::from_angle(array.angle);
        array.columnDistance = diagonal.dot(along);
        rows_.distance = diagonal.dot(along.perpendicular());
    }

    Dialogue askAssociative(Ask& ask) {
        associative_ = co_await askYesNo(
            ask, associative_ ? "Create associative array [Yes/No] <Yes>:" : "Create associative array [Yes/No] <No>:",
            associative_);
        remember(document(), kAssociative, associative_ ? 1.0 : 0.0);
    }

    Dialogue askBase(Ask& ask) {
        const Answer answer = co_await ask.point("Specify base point:");
        if (answer.isPoint()) base_ = answer.point;
    }

    Dialogue askTangent(Ask& ask, PathArray& array) {
        const Answer first = co_await ask.point("Specify first point of tangent direction vector:");
        if (!first.isPoint()) co_return;
        const Answer second = co_await ask.point("Specify second point of tangent direction vector:", {}, first.point);
        if (!second.isPoint()) co_return;
        if (second.point == first.point)
            message("The two points coincide.");
        else
            array.direction = second.point - first.point;
    }

    Dialogue classicRectangular(Ask& ask) {
        RectangularArray array;
        array.angle = rowDirection();
        rows_ = {};
        rows_.rows = co_await askCount(ask, "Enter the number of rows (---)");
        array.columns = co_await askCount(ask, "Enter the number of columns (|||)");
        if (rows_.rows == 1 && array.columns == 1) co_return message("One-element array, nothing to do.");
        bool cell = false;
        if (rows_.rows > 1) {
            // A number, or a corner of the cell: so a distance is never taken from a point.
            for (;;) {
                const Answer answer = co_await ask.text("Enter the distance between rows or specify unit cell (---):");
                if (answer.isEnter()) co_return;
                if (const auto distance = parseNumber(answer.text)) {
                    rows_.distance = *distance;
                    break;
                }
                const PointOfText first = co_await pointOfText(ask, document(), answer.text, ask.lastPoint());
                if (!first.point) {
                    if (!first.told) message("Invalid input.");
                    continue;
                }
                const Answer second = co_await ask.point("Other corner:", {}, *first.point);
                if (!second.isPoint()) co_return;
                takeUnitCell(array, second.point - *first.point);
                cell = true;
                break;
            }
        }
        if (array.columns > 1 && !cell) {
            const Answer distance = co_await ask.distance("Specify the distance between columns (|||):");
            if (!distance.isNumber()) co_return;
            array.columnDistance = distance.number;
        }
        array.rows = rows_;
        if (fits(static_cast<double>(array.columns) * rows_.count())) finish("ARRAY", array, array.items());
    }

    Dialogue classicPolar(Ask& ask) {
        PolarArray array;
        rows_ = {};
        Answer center = co_await ask.point("Specify center point of array or [Base]:", "Base");
        if (center.is("BASE")) {
            co_await askNewBase(ask);
            center = co_await ask.point("Specify center point of array:");
        }
        if (!center.isPoint()) co_return;
        array.center = math::Vector3(center.point);
        const Answer number = co_await ask.integer("Enter the number of items in the array:", 2, kMostInArray);
        if (number.isNumber()) array.count = number.integer();
        const Answer fill = co_await ask.angle("Specify the angle to fill (+=ccw, -=cw) <360>:", {}, center.point);
        if (fill.isNumber()) array.fill = includedAngle(fill, drawing());
        if (std::abs(array.fill) > math::kTwoPi + 1e-9) co_return message("Invalid value.");
        if (!number.isNumber() || array.fill == 0.0) {
            const Answer between = co_await ask.angle("Angle between items:", {}, center.point);
            if (!between.isNumber()) co_return;
            const double step = includedAngle(between, drawing());
            if (step == 0.0) co_return message("Invalid value.");
            if (array.fill == 0.0) {
                if (!number.isNumber()) co_return message("Invalid value.");
                setAngleBetween(array, step);
            } else {
                const double steps = std::abs(array.fill / step);
                const bool whole = std::abs(std::abs(array.fill) - math::kTwoPi) < 1e-9;
                array.count = static_cast<int>(std::min(steps + 1e-9, kMostInArray - 1.0)) + (whole ? 0 : 1);
                array.fill = std::copysign(step, array.fill) * (array.count - 1);
                if (array.count < 2) co_return message("One-element array, nothing to do.");
            }
        }
        array.turnItems = co_await askYesNo(ask, "Rotate arrayed objects? [Yes/No] <Y>:", true);
        array.base = base_;
        array.rows = rows_;
        if (fits(array.count)) finish("ARRAY", array, array.items());
    }

    Dialogue askNewBase(Ask& ask) {
        const Answer answer = co_await ask.point("Specify the base point of objects:");
        if (answer.isPoint()) base_ = answer.point;
    }

    bool fits(double items) {
        if (items * static_cast<double>(ids_.size()) <= kMaxArrayEntities) return true;
        message("Too many objects to array.");
        return false;
    }

    using DialogueTool::finish;
    /// `items` begins with the objects themselves.
    template <class Array>
    void finish(const char* label, const Array& array, const std::vector<math::Matrix4>& items,
                std::uint64_t path = 0) {
        const doc::GroupScope group(document(), kind_ ? "ARRAY" : label);
        std::vector<std::vector<std::uint64_t>> all;
        const std::vector<engine::Entity*> sources = entitiesInOrder(document(), ids_);
        all.emplace_back();
        for (const engine::Entity* source : sources) all.back().push_back(source->id());
        for (std::size_t i = 1; i < items.size(); ++i) {
            std::vector<std::uint64_t> added = addCopies(document(), ids_, items[i]);
            if (associative_) all.push_back(std::move(added));
        }
        if (!associative_ || items.size() < 2) return;
        ArrayDefinition definition;
        definition.shape = array;
        definition.path = path;
        tieArray(document(), definition, all);
    }

    /// The objects themselves become the first item.
    void finishPath(PathArray array, const CurveRuler& ruler, std::uint64_t path) {
        const doc::GroupScope group(document(), kind_ ? "ARRAY" : "ARRAYPATH");
        const math::Matrix4 first = array.items(ruler).front();
        if (first.m != math::Matrix4().m) document().transformEntities(ids_, first);
        const PathArray::Stand start = array.stands(ruler).front();
        const Vector2 along = -start.side.perpendicular();
        array.base = start.point;
        array.direction = Vector2::from_angle(along.angle() + start.turn);
        finish("ARRAYPATH", array, array.items(ruler), path);
    }

    std::vector<std::uint64_t> ids_;
    Vector2 base_;
    Vector2 size_{1, 1};
    ArrayRows rows_;
    bool associative_ = false;

protected:
    bool kind_ = false;  ///< ARRAY itself, which asked for the kind
};

class ArrayRectTool final : public ArrayTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool any = co_await askObjects(ask);
        if (any) co_await rectangular(ask);
    }
};

class ArrayPolarTool final : public ArrayTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool any = co_await askObjects(ask);
        if (any) co_await polar(ask);
    }
};

class ArrayPathTool final : public ArrayTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool any = co_await askObjects(ask);
        if (any) co_await path(ask);
    }
};

/// ARRAY asks for the kind; -ARRAY holds the older dialogue.
class ArrayAnyTool final : public ArrayTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        kind_ = true;
        const bool any = co_await askObjects(ask);
        if (!any) co_return;
        if (isCommandLineVariant()) co_return co_await classic(ask);
        const Answer type =
            co_await ask.keyword("Enter array type [Rectangular/PAth/POlar] <Rectangular>:", "Rectangular PAth POlar");
        if (type.is("PATH")) co_return co_await path(ask);
        if (type.is("POLAR")) co_return co_await polar(ask);
        co_await rectangular(ask);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(ArrayAny, "ARRAY", "Array", "Modify", {"AR"})
KOVA_TOOL_COMMAND(ArrayRect, "ARRAYRECT", "Rectangular Array", "Modify")
KOVA_TOOL_COMMAND(ArrayPolar, "ARRAYPOLAR", "Polar Array", "Modify")
KOVA_TOOL_COMMAND(ArrayPath, "ARRAYPATH", "Path Array", "Modify")

}  // namespace kova::cmd::commands
