#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/drawing_transfer.hpp"
#include "engine/pick/nested_picking.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"
#include "doc/step_group.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;
using engine::SymbolKind;
using math::Matrix4;
using math::Vector2;

/// NCOPY: copies single objects out of blocks and external references, each with its own properties. What comes out of
/// a reference brings its layers, linetypes and styles: under their plain names (Insert), where the drawing's own
/// records win, or as "reference$0$name" (Bind).
class NcopyTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        bind_ = remembered(document(), kMode, 0.0) != 0.0;
        message(bind_ ? "Current settings: Bind" : "Current settings: Insert");
        co_await pick(ask);
        if (picks_.empty()) co_return;
        StepGroup group(document(), "NCOPY");
        bool multiple = false;
        Answer first;
        for (;;) {
            first = co_await ask.point("Specify base point or [Displacement/Multiple] <Displacement>:",
                                       "Displacement Multiple");
            if (!first.is("Multiple")) break;
            multiple = true;
        }
        if (!first.isPoint()) {
            const Answer by = co_await ask.point("Specify displacement <0,0,0>:", {}, Vector2{});
            if (by.isPoint()) copy(group, displacementOf(drawing(), by.point));
            co_return;
        }
        for (bool again = false;; again = true) {
            const char* prompt = again ? "Specify second point or [Exit] <Exit>:"
                                       : "Specify second point or <use first point as displacement>:";
            const Answer second = co_await ask.point(prompt, again ? "Exit" : "", first.point);
            if (!second.isPoint()) {
                if (!again) copy(group, displacementOf(drawing(), first.point));
                co_return;
            }
            copy(group, second.point - first.point);
            if (!multiple) co_return;
        }
    }

private:
    static constexpr const char* kMode = "ncopyBind";

    struct Pick {
        std::uint64_t id;
        Matrix4 matrix;      ///< from where it is defined to the current space
        bool fromReference;  ///< it stands in an external reference
    };

    Dialogue pick(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.object("Select nested objects to copy or [Settings]:", "Settings");
            if (answer.isEnter()) co_return;
            if (answer.is("Settings")) {
                const Answer mode = co_await ask.keyword(
                    bind_ ? "Enter an option [Insert/Bind] <Bind>:" : "Enter an option [Insert/Bind] <Insert>:",
                    "Insert Bind");
                if (!mode.isEnter()) bind_ = mode.is("Bind");
                remember(document(), kMode, bind_ ? 1.0 : 0.0);
                continue;
            }
            take(answer);
        }
    }

    void take(const Answer& answer) {
        const engine::Entity* entity = drawing().findById(answer.id);
        if (entity == nullptr) return;
        Pick found{answer.id, {}, false};
        if (const auto* reference = dynamic_cast<const engine::BlockReferenceEntity*>(entity)) {
            const std::optional<NestedPick> nested = pickNested(*reference, answer.point);
            if (!nested) return message("No object found.");
            found.id = nested->entity->id();
            found.matrix = nested->matrices.back();
            for (const engine::BlockReferenceEntity* above : nested->chain) {
                const engine::Block* block = above->block();
                found.fromReference =
                    found.fromReference || (block != nullptr && block->xrefType != engine::XrefType::None);
            }
        }
        const bool known = std::any_of(picks_.begin(), picks_.end(),
                                       [&](const Pick& p) { return p.id == found.id && p.matrix == found.matrix; });
        if (!known) picks_.push_back(found);
        message(known ? "1 found (1 duplicate), " + std::to_string(picks_.size()) + " total"
                      : "1 found, " + std::to_string(picks_.size()) + " total");
    }

    void copy(StepGroup& group, const Vector2& by) {
        group.begin();
        const Matrix4 way = Matrix4::translation(by);
        for (const Pick& pick : picks_) {
            const engine::Entity* entity = drawing().findById(pick.id);
            if (entity == nullptr) continue;
            if (pick.fromReference) {
                bringAlong(*entity, way * pick.matrix);
            } else if (auto made = engine::transformedEntity(*entity, way * pick.matrix)) {
                made->setHandle(0);
                document().addEntity(std::move(made));
            }
        }
    }

    /// By way of a drawing of its own, in which the records get the names that they are to have here.
    void bringAlong(const engine::Entity& entity, const Matrix4& matrix) {
        const std::unique_ptr<doc::Document> part = extractDrawing(drawing(), {&entity}, {});
        std::vector<engine::SymbolRename> renames;
        const auto note = [&](SymbolKind kind, const auto& table) {
            for (const auto& record : table) {
                const auto bar = record.name.view().rfind('|');
                if (bar != std::string_view::npos) renames.push_back({kind, record.name, newName(record.name, bar)});
            }
        };
        engine::Drawing& source = part->drawing();
        note(SymbolKind::Layer, source.layers);
        note(SymbolKind::Linetype, source.linetypes);
        note(SymbolKind::TextStyle, source.textStyles);
        note(SymbolKind::DimStyle, source.dimStyles);
        note(SymbolKind::MLeaderStyle, source.mleaderStyles);
        note(SymbolKind::TableStyle, source.tableStyles);
        for (const auto& block : source.blocks()) {
            const auto bar = block->name.view().rfind('|');
            if (bar != std::string_view::npos)
                renames.push_back({SymbolKind::Block, block->name, newName(block->name, bar)});
        }
        engine::renameSymbolsUnchecked(source, renames);
        importEntities(document(), source, matrix);
    }

    /// What an earlier copy brought under the name is taken again.
    Name newName(Name name, std::size_t bar) const {
        if (!bind_) return Name(name.str().substr(bar + 1));
        std::string bound;
        for (const char c : name.view()) c == '|' ? bound += "$0$" : bound += c;
        return Name(bound);
    }

    std::vector<Pick> picks_;
    bool bind_ = false;
};

}  // namespace

KOVA_TOOL_COMMAND(Ncopy, "NCOPY", "Copy Nested Objects", "Modify")

}  // namespace kova::cmd::commands
