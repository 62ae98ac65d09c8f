#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "engine/pick/nested_picking.hpp"
#include "edit/reference_editing.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockReferenceEntity;

bool isReference(const engine::Entity& entity) { return entity.type() == engine::EntityType::BlockReference; }

/// REFEDIT: lays out the contents of a reference to be edited where they stand.
class RefeditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (document().referenceEdit())
            co_return message("Reference " + inQuotes(document().referenceEdit()->block.view()) +
                              " is being edited. Use REFCLOSE to end that first.");
        if (document().blockEdit())
            co_return message("Block " + inQuotes(document().blockEdit()->block) +
                              " is open in the block editor. Use BCLOSE to close that first.");
        const Answer pick = co_await ask.object("Select reference:", {}, isReference);
        if (!pick.isObject()) co_return;
        id_ = pick.id;
        const std::size_t depth = levels(pick.point);
        std::size_t level = 0;
        while (depth > 1) {
            message("Reference: " + inQuotes(names_[level].view()));
            const Answer answer = co_await ask.keyword("Select nesting level [Ok/Next] <Next>:", "Ok Next");
            if (answer.is("OK")) break;
            level = (level + 1) % depth;
        }
        std::string refusal = refused(level);
        if (!refusal.empty()) co_return message(refusal);
        ReferenceEditPlan plan;
        plan.block = names_[level];
        plan.matrix = matrices_[level];
        const Answer method = co_await ask.keyword("Enter object selection method [All/Nested] <All>:", "All Nested");
        if (method.is("NESTED")) {
            plan.all = false;
            for (;;) {
                const Answer at = co_await ask.point("Select nested objects:");
                if (!at.isPoint()) break;
                const std::uint64_t found = nestedObject(level, at.point);
                if (found != 0 && plan.chosen.insert(found).second)
                    message("1 found, " + std::to_string(plan.chosen.size()) + " total");
            }
            if (plan.chosen.empty()) co_return message("No objects selected.");
        }
        plan.withDefinitions = co_await askYesNo(ask, "Display attribute definitions [Yes/No] <No>:", false);
        plan.reference = reference();
        doc::GroupScope group(document(), "REFEDIT");
        const std::size_t count = beginReferenceEdit(document(), plan);
        if (count == 0) {
            group.rollback();
            co_return message("The reference has nothing that could be edited.");
        }
        message(counted(count, "object") + " in the working set. Use REFCLOSE to end reference editing.");
        repaint();
    }

private:
    BlockReferenceEntity* reference() const { return dynamic_cast<BlockReferenceEntity*>(drawing().findById(id_)); }

    /// Fills in the blocks under a point, from the picked reference inwards. Gives their number.
    std::size_t levels(const math::Vector2& p) {
        const BlockReferenceEntity* top = reference();
        if (const std::optional<NestedPick> found = pickNested(*top, p)) {
            for (const BlockReferenceEntity* step : found->chain) names_.push_back(step->blockName);
            matrices_ = found->matrices;
        } else {
            names_.push_back(top->blockName);
            matrices_.push_back(top->blockMatrix());
        }
        return names_.size();
    }

    /// Why that level cannot be edited; empty when it can.
    std::string refused(std::size_t level) const {
        const BlockReferenceEntity* top = reference();
        const engine::Block* block = drawing().findBlock(names_[level]);
        if (top == nullptr || block == nullptr) return "Block " + inQuotes(names_[level].view()) + " not found.";
        if (top->rowCount() > 1 || top->columnCount() > 1) return "References in a grid cannot be edited.";
        if (block->isDynamic) return "Dynamic blocks are edited with BEDIT.";
        for (std::size_t i = 0; i < level; ++i) {
            const engine::Block* outer = drawing().findBlock(names_[i]);
            if (outer != nullptr && outer->xrefType != engine::XrefType::None)
                return "What an external reference holds is edited in its own file.";
        }
        if (block->xrefType != engine::XrefType::None && block->xrefStatus != engine::XrefStatus::Loaded)
            return "Xref " + inQuotes(block->name.view()) + " is not loaded.";
        if (!matrices_[level].inverse()) return "The reference has no scale in one direction.";
        return {};
    }

    /// The entity of the level's block at a point; 0: none.
    std::uint64_t nestedObject(std::size_t level, const math::Vector2& p) const {
        const BlockReferenceEntity* top = reference();
        const std::optional<NestedPick> found = top != nullptr ? pickNested(*top, p) : std::nullopt;
        if (!found || found->chain.size() <= level || found->chain[level]->blockName != names_[level]) return 0;
        return found->chain.size() > level + 1 ? found->chain[level + 1]->id() : found->entity->id();
    }

    std::uint64_t id_ = 0;
    std::vector<engine::Name> names_;
    std::vector<math::Matrix4> matrices_;
};

/// REFCLOSE: ends what REFEDIT began.
class RefcloseTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!document().referenceEdit()) co_return message("No reference is being edited.");
        const Answer option =
            co_await ask.keyword("Enter option [Save/Discard reference changes] <Save>:", "Save Discard");
        const bool save = !option.is("DISCARD");
        if (!document().referenceEdit()) co_return;
        const std::string name = inQuotes(document().referenceEdit()->block.view());
        doc::GroupScope group(document(), "REFCLOSE");
        const std::string error = endReferenceEdit(document(), host()->services(), save);
        if (!error.empty()) {
            group.rollback();
            co_return message(error);
        }
        message(save ? "Reference " + name + " saved." : "Changes to reference " + name + " discarded.");
        repaint();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Refedit, "REFEDIT", "Edit Reference", "Insert")
KOVA_TOOL_COMMAND(Refclose, "REFCLOSE", "Close Reference Edit", "Insert")

}  // namespace kova::cmd::commands
