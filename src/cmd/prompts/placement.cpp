#include "cmd/prompts/placement.hpp"

#include "edit/new_entities.hpp"

namespace kova::cmd {

using math::Vector2;

namespace {

constexpr Range kNonZero{-1e300, 1e300, true};

/// The way from the one to what is typed or shown, step by step.
class PlacementDialogue {
public:
    PlacementDialogue(Ask& ask, doc::Document& document, PlacementRequest request)
        : ask_(ask), document_(document), request_(std::move(request)) {
        placement_.exploded = request_.exploded;
    }

    Task<std::optional<Placement>> run() {
        const bool placed = co_await askPoint();
        if (!placed) co_return std::nullopt;
        co_await askScales();
        if (!rotation_) co_await askRotation(placement_.point);
        placement_.scaleX = *x_;
        placement_.scaleY = *y_;
        if (z_ && *z_ != std::abs(*x_)) placement_.scaleZ = z_;
        placement_.rotation = *rotation_;
        co_return placement_;
    }

private:
    const engine::Drawing& drawing() const { return document_.drawing(); }

    Task<bool> askPoint() {
        const char* prompt = request_.external
                                 ? "Specify insertion point or [Scale/X/Y/Z/Rotate/PScale/PX/PY/PZ/PRotate]:"
                                 : "Specify insertion point or [Basepoint/Scale/X/Y/Z/Rotate/Explode]:";
        const char* options = request_.external ? "Scale X Y Z Rotate PScale PX PY PZ PRotate"
                                                : "Basepoint Scale X Y Z Rotate Explode";
        for (;;) {
            const Answer answer = co_await ask_.point(prompt, options);
            if (answer.isEnter()) co_return false;
            if (answer.isPoint()) {
                placement_.point = answer.point;
                co_return true;
            }
            // P in front sets the value for the preview: here it counts all the same.
            const std::string word = answer.word.starts_with('P') ? answer.word.substr(1) : answer.word;
            if (word == "ROTATE") {
                co_await askRotation(drawing().ucs.origin);
            } else if (word == "BASEPOINT") {
                const Answer base = co_await ask_.point("Specify base point:", {}, drawing().ucs.origin);
                if (base.isPoint()) placement_.base = drawing().ucs.fromWorld(base.point);
            } else if (word == "EXPLODE") {
                co_await askExplode();
            } else {
                co_await askEarlyScale(word);
            }
        }
    }

    Dialogue askExplode() {
        if (request_.wholeOnly != nullptr) co_return ask_.message(request_.wholeOnly);
        const bool yes = co_await askYesNo(ask_, "Explode the block? [Yes/No] <Yes>:", true);
        placement_.exploded = yes && (!request_.mayExplode || request_.mayExplode());
    }

    /// A scale that is given before the point: for all axes, or for one.
    Dialogue askEarlyScale(std::string axis) {
        const bool all = axis == "SCALE";
        std::string prompt =
            all ? std::string("Specify scale factor for XYZ axes <1>:") : "Specify " + axis + " scale factor <1>:";
        const Answer scale = co_await ask_.distance(std::move(prompt), {}, Vector2{}, kNonZero);
        const double value = scale.numberOr(1.0);
        if (all || axis == "X") x_ = value;
        if (all || axis == "Y") y_ = value;
        if (all || axis == "Z") z_ = std::abs(value);
    }

    Dialogue askScales() {
        const bool alike = placement_.exploded || (request_.scalesAlike && request_.scalesAlike());
        if (x_ || y_) {
            if (!x_) x_ = alike ? *y_ : 1.0;
            if (!y_ || alike) y_ = *x_;
            co_return;
        }
        const Vector2 point = placement_.point;
        if (alike) {
            const Answer scale = co_await ask_.distance("Specify scale for XYZ axes <1>:", {}, point, kNonZero);
            x_ = y_ = scale.numberOr(1.0);
            co_return;
        }
        Answer x = co_await ask_.distance("Enter X scale factor, specify opposite corner, or [Corner/XYZ] <1>:",
                                          "Corner XYZ", point, kNonZero);
        const bool threeAxes = x.is("XYZ");
        if (threeAxes)
            x = co_await ask_.distance("Specify X scale factor or [Corner] <1>:", "Corner", point, kNonZero);
        if (x.is("CORNER")) {
            const Answer corner = co_await ask_.point("Specify opposite corner:", {}, point);
            if (corner.isPoint()) useCorner(corner.point);
        } else if (x.isNumber() && !isTyped(x)) {
            useCorner(x.point);
        } else {
            x_ = x.numberOr(1.0);
        }
        if (!x_) x_ = 1.0;
        if (!y_) {
            const Answer y = co_await ask_.distance("Enter Y scale factor <use X scale factor>:", {}, point, kNonZero);
            y_ = y.numberOr(*x_);
        }
        if (!threeAxes) co_return;
        const Answer z = co_await ask_.distance("Specify Z scale factor or <use X scale factor>:", {}, point, kNonZero);
        if (z.isNumber()) z_ = std::abs(z.number);
    }

    /// The way to a corner gives both scales.
    void useCorner(const Vector2& corner) {
        const Vector2 way = drawing().ucs.fromWorld(corner) - drawing().ucs.fromWorld(placement_.point);
        if (way.x == 0.0 || way.y == 0.0) return ask_.message("Scale factors cannot be zero.");
        x_ = way.x;
        y_ = way.y;
    }

    Dialogue askRotation(Vector2 center) {
        const Answer angle = co_await ask_.angle("Specify rotation angle <0>:", {}, center);
        rotation_ = angle.isNumber() ? worldDirection(angle, drawing()) : ucsRotation(drawing());
    }

    Ask& ask_;
    doc::Document& document_;
    PlacementRequest request_;
    Placement placement_;
    std::optional<double> x_;
    std::optional<double> y_;
    std::optional<double> z_;
    std::optional<double> rotation_;
};

}  // namespace

void Placement::applyTo(engine::BlockReferenceEntity& reference, const engine::Block& block, double factor) const {
    reference.insert = point;
    reference.scaleX = scaleX * factor;
    reference.scaleY = scaleY * factor;
    if (scaleZ) reference.scaleZ = *scaleZ * factor;
    reference.rotation = rotation;
    if (base == Vector2{}) return;
    const math::Matrix4 m = reference.blockMatrix(block);
    reference.insert += reference.insert - m.transform_point(block.base + base);
}

Task<std::optional<Placement>> askPlacement(Ask& ask, doc::Document& document, PlacementRequest request) {
    PlacementDialogue dialogue(ask, document, std::move(request));
    std::optional<Placement> placement = co_await dialogue.run();
    co_return placement;
}

}  // namespace kova::cmd
