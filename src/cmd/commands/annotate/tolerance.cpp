#include "engine/entities/dimensions/tolerance.hpp"

#include "cmd/prompts/annotation_prompts.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// TOLERANCE: a feature control frame, its parts asked one by one.
class ToleranceTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool given = co_await askTolerance(ask, tolerance_);
        if (!given) co_return message("The tolerance is empty.");
        message("Before the location: Second (value), Row (one more), Projected (zone) or Datum (identifier).");
        Answer at;
        for (;;) {
            at = co_await ask.point("Enter tolerance location:", "Second Row Projected Datum");
            if (at.isEnter()) co_return;
            if (at.isPoint()) break;
            co_await askMore(ask, at);
        }
        auto tolerance = std::make_unique<engine::ToleranceEntity>(tolerance_);
        tolerance->insertion = at.point;
        tolerance->styleName = drawing().dimStyleOrStandard(drawing().currentDimStyle).name;
        tolerance->rotation = ucsRotation(drawing());
        addNew(document(), std::move(tolerance), "TOLERANCE");
        repaint();
    }

private:
    /// What stands beside and below the first value.
    Dialogue askMore(Ask& ask, Answer option) {
        if (option.is("SECOND")) {
            engine::ToleranceRow* row = &tolerance_.first;
            for (engine::ToleranceRow& more : tolerance_.rows)
                if (!more.whole) row = &more;
            co_await askToleranceValue(ask, "Enter tolerance value 2:", row->toleranceValue2, row->toleranceMC2);
        } else if (option.is("ROW")) {
            co_await askSecondToleranceRow(ask, tolerance_);
        } else {
            const bool zone = option.is("PROJECTED");
            const Answer text =
                co_await ask.text(zone ? "Enter height of projected tolerance zone:" : "Enter datum identifier:");
            if (!text.isText()) co_return;
            engine::ToleranceRow row;
            row.whole = true;
            row.toleranceValue = trimmed(text.text);
            if (zone) row.toleranceMC = "p";
            // The zone stands above the identifier.
            const bool below = !zone || tolerance_.rows.empty() || !tolerance_.rows.back().whole;
            tolerance_.rows.insert(below ? tolerance_.rows.end() : tolerance_.rows.end() - 1, row);
        }
    }

    engine::ToleranceEntity tolerance_;
};

}  // namespace

KOVA_TOOL_COMMAND(Tolerance, "TOLERANCE", "Tolerance", "Annotate", {"TOL"})

}  // namespace kova::cmd::commands
