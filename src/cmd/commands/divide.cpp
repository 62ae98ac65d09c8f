#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/point.hpp"
#include "engine/outline.hpp"
#include "math/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::PathElement;
using math::Vector2;
using Kind = PathElement::Kind;

/// More marks than this are refused.
constexpr double kMaxMarks = 1e6;

/// The first figure that an entity strokes.
class FigureSink final : public engine::OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
        if (!figure.empty()) return;
        for (const PathElement& e : path) {
            if (e.kind == Kind::Move && figure.size() > 1) return;
            figure.push_back(e);
        }
    }
    void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
    void text(const engine::TextRun&, const engine::OutlineStyle&) override {}
    std::vector<PathElement> figure;
};

bool isCurve(const engine::Entity& entity) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Line:
        case EntityType::Circle:
        case EntityType::Arc:
        case EntityType::Ellipse:
        case EntityType::Polyline:
        case EntityType::Polyline3D:
        case EntityType::Spline:
            return true;
        default:
            return false;
    }
}

/// Walks a curve by its length.
class CurveRuler {
public:
    explicit CurveRuler(std::vector<PathElement> figure) : figure_(std::move(figure)) {
        Vector2 from;
        for (std::size_t i = 0; i < figure_.size(); ++i) {
            if (i > 0) addElement(i, from);
            from = figure_[i].p;
        }
    }
    double length() const { return marks_.empty() ? 0.0 : marks_.back().length; }
    bool closed() const {
        return figure_.size() > 1 && (figure_.back().kind == Kind::Close ||
                                      figure_.front().p.distance_to(figure_.back().p) <= 1e-9 * (1.0 + length()));
    }

    struct Place {
        Vector2 point;
        Vector2 direction;
    };
    Place at(double length) const {
        auto mark = std::lower_bound(marks_.begin(), marks_.end(), length,
                                     [](const Mark& m, double v) { return m.length < v; });
        if (mark == marks_.end()) --mark;
        const Mark& m = *mark;
        const Mark* before = mark == marks_.begin() ? nullptr : &*std::prev(mark);
        const double start = before != nullptr ? before->length : 0.0;
        const double t0 = before != nullptr && before->element == m.element ? before->t : 0.0;
        const double share = m.length > start ? std::clamp((length - start) / (m.length - start), 0.0, 1.0) : 0.0;
        const PathElement& e = figure_[m.element];
        const Vector2 from = figure_[m.element - 1].p;
        const double t = t0 + (m.t - t0) * share;
        return {engine::elementPoint(e, from, t), engine::elementTangent(e, from, t).normalized()};
    }

private:
    /// Length of the curve up to parameter t of an element.
    struct Mark {
        double length;
        std::size_t element;
        double t;
    };
    void addElement(std::size_t i, const Vector2& from) {
        const PathElement& e = figure_[i];
        const bool even = e.kind == Kind::Line || e.kind == Kind::Close ||
                          (e.kind == Kind::Arc && std::abs(e.a.length() - e.b.length()) <= 1e-12 * e.a.length());
        const int parts = even ? 1 : 256;
        double total = length();
        const auto speed = [&](double t) { return engine::elementTangent(e, from, t).length(); };
        for (int k = 0; k < parts; ++k) {
            const double t0 = static_cast<double>(k) / parts;
            const double t1 = static_cast<double>(k + 1) / parts;
            // Simpson's rule: the parts are short.
            total += even ? engine::elementLength(e, from)
                          : (t1 - t0) / 6.0 * (speed(t0) + 4.0 * speed((t0 + t1) / 2.0) + speed(t1));
            marks_.push_back({total, i, t1});
        }
    }

    std::vector<PathElement> figure_;
    std::vector<Mark> marks_;
};

/// What DIVIDE and MEASURE share: the curve, and points or blocks along it.
class MarkingTool : public DialogueTool {
protected:
    /// Asks for the curve; false when there is none.
    Task<bool> askCurve(Ask& ask, const char* prompt) {
        Ask::Request request;
        request.kind = Ask::Kind::Object;
        request.prompt = prompt;
        request.filter = isCurve;
        request.refusal = "Cannot mark that object.";
        const Answer picked = co_await ask.request(std::move(request));
        const engine::Entity* entity = picked.isObject() ? drawing().findById(picked.id) : nullptr;
        if (entity == nullptr) co_return false;
        pick_ = picked.point;
        FigureSink sink;
        entity->emit(sink, engine::outlineStyle(*entity));
        ruler_.emplace(std::move(sink.figure));
        co_return ruler_->length() > 0.0 && std::isfinite(ruler_->length());
    }

    /// Name and alignment of the block to insert; false when given up.
    Task<bool> askBlock(Ask& ask) {
        for (;;) {
            const Answer name = co_await ask.text("Enter name of block to insert:");
            if (!name.isText()) co_return false;
            const engine::Block* block = drawing().findBlock(engine::Name(trimmed(name.text)));
            if (block != nullptr) {
                block_ = block->name;
                break;
            }
            message("Cannot find block \"" + std::string(trimmed(name.text)) + "\".");
        }
        align_ = co_await askYesNo(ask, "Align block with object? [Yes/No] <Y>:", true);
        co_return true;
    }

    void mark(double length) {
        const CurveRuler::Place place = ruler_->at(length);
        std::unique_ptr<engine::Entity> entity;
        if (block_.empty()) {
            entity = std::make_unique<engine::PointEntity>(place.point);
        } else {
            auto reference = std::make_unique<engine::BlockReferenceEntity>(block_, place.point);
            reference->rotation = align_ ? place.direction.angle() : ucsRotation(drawing());
            entity = std::move(reference);
        }
        applyCurrentValues(document(), *entity);
        document().addEntity(std::move(entity));
    }

    std::optional<CurveRuler> ruler_;
    Vector2 pick_;
    engine::Name block_;
    bool align_ = true;
};

class DivideTool final : public MarkingTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!co_await askCurve(ask, "Select object to divide:")) co_return;
        Answer count = co_await ask.integer("Enter the number of segments or [Block]:", 2, 32767, "Block");
        if (count.is("BLOCK")) {
            if (!co_await askBlock(ask)) co_return;
            count = co_await ask.integer("Enter the number of segments:", 2, 32767);
        }
        if (!count.isNumber()) co_return;
        const doc::GroupScope group(document(), "DIVIDE");
        const int n = count.integer();
        for (int i = ruler_->closed() ? 0 : 1; i < n; ++i) mark(ruler_->length() * i / n);
    }
};

class MeasureTool final : public MarkingTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!co_await askCurve(ask, "Select object to measure:")) co_return;
        for (;;) {
            Answer step = co_await ask.distance("Specify length of segment or [Block]:", "Block", {}, kPositive);
            if (step.is("BLOCK")) {
                if (!co_await askBlock(ask)) co_return;
                step = co_await ask.distance("Specify length of segment:", {}, {}, kPositive);
            }
            if (!step.isNumber()) co_return;
            const double length = ruler_->length();
            if (!(length / step.number <= kMaxMarks)) {
                message("Invalid value.");
                continue;
            }
            // From the end nearest to the pick; a closed curve from its start.
            const bool back = !ruler_->closed() &&
                              pick_.distance_to(ruler_->at(length).point) < pick_.distance_to(ruler_->at(0.0).point);
            const doc::GroupScope group(document(), "MEASURE");
            const auto count = static_cast<long>(std::floor(length / step.number * (1.0 + 1e-12)));
            for (long i = 1; i <= count; ++i) {
                const double along = std::min(static_cast<double>(i) * step.number, length);
                mark(back ? length - along : along);
            }
            co_return;
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Divide, "DIVIDE", "Divide", "Draw", {"DIV"})
KOVA_TOOL_COMMAND(Measure, "MEASURE", "Measure", "Draw", {"ME"})

}  // namespace kova::cmd::commands
