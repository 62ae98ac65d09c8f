#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/kinds/all.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionType;
using math::Vector2;

/// What one QDIM may make, so that a slip does not fill the drawing.
constexpr std::size_t kMostDimensions = 10'000;

/// QDIM: a row of dimensions over the points of selected objects.
class QDimTool final : public DimensionTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection("Select geometry to dimension:");
        collect(selected.ids);
        if (points_.empty()) co_return message("No geometry to dimension.");
        quiet_ = true;
        for (;;) {
            std::string prompt =
                "Specify dimension line position, or [Continuous/Staggered/Baseline/Ordinate/Radius/Diameter/"
                "datumPoint/Edit/seTtings] <";
            prompt += kModes[static_cast<std::size_t>(mode_)];
            prompt += ">:";
            const Answer at = co_await ask.point(
                std::move(prompt), "Continuous Staggered Baseline Ordinate Radius Diameter datumPoint Edit seTtings");
            if (at.isEnter()) co_return;
            if (at.isPoint()) {
                make(at.point);
                co_return;
            }
            for (std::size_t i = 0; i < std::size(kModes); ++i)
                if (at.is(kModes[i])) mode_ = static_cast<Mode>(i);
            if (at.is("DATUMPOINT")) {
                const Answer datum = co_await ask.point("Select new datum point:");
                if (datum.isPoint()) datum_ = datum.point;
            } else if (at.is("EDIT")) {
                co_await edit(ask);
            } else if (at.is("SETTINGS")) {
                co_await ask.keyword("Associative dimension priority [Endpoint/Intersection] <Endpoint>:",
                                     "Endpoint Intersection");
            }
        }
    }

private:
    enum class Mode { Continuous, Staggered, Baseline, Ordinate, Radius, Diameter };
    static constexpr const char* kModes[] = {"Continuous", "Staggered", "Baseline", "Ordinate", "Radius", "Diameter"};

    /// Corners, ends and centres; circles and arcs besides for the radial kinds.
    void collect(const std::vector<std::uint64_t>& ids) {
        for (const std::uint64_t id : ids) {
            const engine::Entity* entity = drawing().findById(id);
            if (entity == nullptr) continue;
            if (const auto arc = engine::measuredArc(*entity); arc && entity->type() != engine::EntityType::Polyline)
                rounds_.push_back({*arc, entity->handle()});
            const engine::EntityType type = entity->type();
            const bool circle = type == engine::EntityType::Circle;
            if (type == engine::EntityType::Text || type == engine::EntityType::MText) continue;
            engine::eachLinkablePoint(*entity, [&](const engine::DimensionLink& link, const Vector2& p) {
                using engine::LinkKind;
                if (points_.size() >= kMostDimensions) return;
                if (link.kind == LinkKind::End || link.kind == LinkKind::Place ||
                    (link.kind == LinkKind::Center && circle))
                    points_.push_back(p);
            });
        }
    }

    Dialogue edit(Ask& ask) {
        bool adding = false;
        for (;;) {
            const char* prompt = adding ? "Indicate dimension point to add, or [Remove/eXit] <eXit>:"
                                        : "Indicate dimension point to remove, or [Add/eXit] <eXit>:";
            const char* words = adding ? "Remove eXit" : "Add eXit";
            const Answer answer = co_await ask.point(prompt, words);
            if (answer.is("ADD") || answer.is("REMOVE")) {
                adding = answer.is("ADD");
            } else if (!answer.isPoint()) {
                co_return;
            } else if (adding) {
                points_.push_back(answer.point);
            } else if (!points_.empty()) {
                const auto nearest =
                    std::min_element(points_.begin(), points_.end(), [&](const Vector2& a, const Vector2& b) {
                        return a.distance_to(answer.point) < b.distance_to(answer.point);
                    });
                const Vector2 gone = *nearest;
                std::erase(points_, gone);
            }
        }
    }

    void make(const Vector2& at) {
        const doc::GroupScope group(document(), "QDIM");
        if (mode_ == Mode::Radius || mode_ == Mode::Diameter) return makeRadial(at);
        // Beside the points the row is upright, above and below them it lies.
        const Vector2 x = math::unitAt(ucsRotation(drawing()));
        const auto beyond = [&](const Vector2& axis) {
            double low = 1e300;
            double high = -1e300;
            for (const Vector2& p : points_) {
                low = std::min(low, p.dot(axis));
                high = std::max(high, p.dot(axis));
            }
            return std::max({low - at.dot(axis), at.dot(axis) - high, 0.0});
        };
        const bool lying = beyond(x) <= beyond(x.perpendicular());
        const Vector2 along = lying ? x : x.perpendicular();
        const Vector2 across = along.perpendicular();
        // Of several points in one line across the row, the nearest to it counts.
        std::vector<Vector2> row(points_);
        const auto farness = [&](const Vector2& p) { return std::abs((at - p).dot(across)); };
        std::sort(row.begin(), row.end(), [&](const Vector2& a, const Vector2& b) {
            return a.dot(along) != b.dot(along) ? a.dot(along) < b.dot(along) : farness(a) < farness(b);
        });
        const auto same = [&](const Vector2& a, const Vector2& b) {
            const double size = std::max({1.0, std::abs(a.dot(along)), std::abs(b.dot(along))});
            return std::abs(a.dot(along) - b.dot(along)) <= 1e-9 * size;
        };
        row.erase(std::unique(row.begin(), row.end(), same), row.end());
        if (mode_ == Mode::Ordinate) return makeOrdinates(row, at, along);
        if (row.size() < 2) return message("One point has no distance to dimension.");
        const engine::DimStyle style = drawing().effectiveDimStyle();
        const double step = style.baselineSpacing * dimensionScale(drawing(), style);
        const bool above = (at - row.front()).dot(across) >= 0.0;
        const Vector2 rise = across * (above ? step : -step);
        const double angle = along.angle();
        if (mode_ == Mode::Continuous) {
            for (std::size_t i = 0; i + 1 < row.size(); ++i) linear(row[i], row[i + 1], at, angle);
        } else if (mode_ == Mode::Baseline) {
            // From the end that the datum lies nearer to.
            if (datum_ && std::abs((*datum_ - row.back()).dot(along)) < std::abs((*datum_ - row.front()).dot(along)))
                std::reverse(row.begin(), row.end());
            for (std::size_t i = 1; i < row.size(); ++i)
                linear(row.front(), row[i], at + rise * static_cast<double>(i - 1), angle);
        } else {
            // The innermost pair lies nearest.
            std::size_t high = row.size() / 2;
            std::size_t low = high - 1;
            for (int level = 0;; ++level) {
                linear(row[low], row[high], at + rise * level, angle);
                if (low == 0 || high + 1 >= row.size()) break;
                --low;
                ++high;
            }
        }
    }

    void linear(const Vector2& a, const Vector2& b, const Vector2& at, double angle) {
        start(DimensionType::Rotated);
        dim_.linearRotation = angle;
        dim_.def1 = a;
        dim_.def2 = b;
        dim_.dimLine = at;
        place("QDIM", {1, 2});
    }

    void makeOrdinates(const std::vector<Vector2>& row, const Vector2& at, const Vector2& along) {
        const Vector2 x = math::unitAt(ucsRotation(drawing()));
        const bool lying = along == x;
        for (const Vector2& p : row) {
            start(lying ? DimensionType::OrdinateX : DimensionType::Ordinate);
            dim_.linearRotation = ucsRotation(drawing());
            dim_.def3 = datum_.value_or(drawing().ucs.origin);
            dim_.def1 = p;
            dim_.def2 = p + along.perpendicular() * (at - p).dot(along.perpendicular());
            place("QDIM", {1});
        }
    }

    /// Each circle and arc, all leaders in the direction in which the place lies from the first one.
    void makeRadial(const Vector2& at) {
        if (rounds_.empty()) return message("No circles or arcs to dimension.");
        Vector2 direction = (at - rounds_.front().arc.center).normalized();
        if (direction == Vector2{}) direction = {1, 0};
        const double beyond = at.distance_to(rounds_.front().arc.center) - rounds_.front().arc.radius;
        for (const Round& round : rounds_) {
            const Vector2 arm = direction * round.arc.radius;
            start(mode_ == Mode::Radius ? DimensionType::Radius : DimensionType::Diameter);
            dim_.def1 = mode_ == Mode::Radius ? round.arc.center : round.arc.center + arm;
            dim_.def2 = mode_ == Mode::Radius ? round.arc.center + arm : round.arc.center - arm;
            dim_.dimLine = round.arc.center + direction * std::max(0.0, round.arc.radius + beyond);
            PickedPiece piece;
            piece.handle = round.handle;
            placeOnArc("QDIM", piece);
        }
    }

    struct Round {
        engine::MeasuredArc arc;
        std::uint64_t handle;
    };
    std::vector<Vector2> points_;
    std::vector<Round> rounds_;
    Mode mode_ = Mode::Continuous;
    std::optional<Vector2> datum_;
};

}  // namespace

KOVA_TOOL_COMMAND(QDim, "QDIM", "Quick Dimension", "Annotate")

}  // namespace kova::cmd::commands
