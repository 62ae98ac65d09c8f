// Several multileaders at once: lined up, or gathered into one.
#include "engine/modify/mleader_align.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd::commands {

namespace {

using engine::MLeaderContent;
using engine::MLeaderEntity;
using math::Vector2;

bool isMLeader(const engine::Entity& entity) { return entity.type() == engine::EntityType::MLeader; }

/// The multileaders among what was selected, in drawing order.
std::vector<MLeaderEntity*> mleadersOf(doc::Document& document, const std::vector<std::uint64_t>& ids) {
    std::vector<MLeaderEntity*> found;
    for (engine::Entity* entity : entitiesInOrder(document, ids))
        if (isMLeader(*entity)) found.push_back(static_cast<MLeaderEntity*>(entity));
    return found;
}

enum class AlignMode { CurrentSpacing, Distribute, Parallel, Spacing };

class MLeaderAlignTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection("Select multileaders:");
        ids_ = selected.ids;
        if (mleadersOf(document(), ids_).empty()) co_return message("No multileaders selected.");
        mode_ = static_cast<AlignMode>(static_cast<int>(remembered(document(), kMode, 0)));
        spacing_ = remembered(document(), kSpacing, 0.0);
        for (;;) {
            tellMode();
            bool again = false;
            if (mode_ == AlignMode::Distribute)
                again = co_await distribute(ask);
            else
                again = co_await alignToOne(ask);
            if (!again) co_return;
        }
    }

private:
    static constexpr const char* kMode = "mleaderalign mode";
    static constexpr const char* kSpacing = "mleaderalign spacing";

    void tellMode() {
        switch (mode_) {
            case AlignMode::Distribute:
                return message("Current mode: Distribute");
            case AlignMode::Parallel:
                return message("Current mode: Make leader segments parallel");
            case AlignMode::Spacing:
                return message("Current mode: Specify spacing: " + lengthDefault(drawing(), spacing_));
            default:
                return message("Current mode: Use current spacing");
        }
    }

    /// True: the mode has changed and the questions begin anew.
    Task<bool> distribute(Ask& ask) {
        const Answer first = co_await ask.point("Specify first point or [Options]:", "Options");
        if (first.is("OPTIONS")) {
            co_await askMode(ask);
            co_return true;
        }
        if (!first.isPoint()) co_return false;
        const Answer second = co_await ask.point("Specify second point:", {}, first.point);
        if (!second.isPoint()) co_return false;
        const std::vector<MLeaderEntity*> leaders = mleadersOf(document(), ids_);
        move(leaders, engine::distributedSteps(views(leaders), first.point, second.point));
        co_return false;
    }

    Task<bool> alignToOne(Ask& ask) {
        const Answer picked = co_await ask.object("Select multileader to align to or [Options]:", "Options", isMLeader);
        if (picked.is("OPTIONS")) {
            co_await askMode(ask);
            co_return true;
        }
        if (!picked.isObject()) co_return false;
        const std::uint64_t base = picked.id;
        Vector2 direction;
        if (mode_ != AlignMode::Parallel) {
            const auto* leader = dynamic_cast<const MLeaderEntity*>(drawing().findById(base));
            if (leader == nullptr) co_return false;
            const Vector2 from = leader->contentPos;
            for (;;) {
                const Answer to = co_await ask.point("Specify direction:", {}, from);
                if (!to.isPoint()) co_return false;
                direction = to.point - from;
                if (direction != Vector2{}) break;
                message("The two points coincide.");
            }
        }
        const auto* leader = dynamic_cast<const MLeaderEntity*>(drawing().findById(base));
        if (leader == nullptr) co_return false;
        std::vector<MLeaderEntity*> leaders = mleadersOf(document(), ids_);
        auto at = std::find(leaders.begin(), leaders.end(), leader);
        if (mode_ == AlignMode::Parallel) {
            direction = engine::lastLeaderDirection(*leader);
            if (direction == Vector2{}) {
                message("The multileader has no leader line.");
                co_return false;
            }
            move(leaders, engine::parallelSteps(views(leaders), direction));
        } else if (mode_ == AlignMode::Spacing) {
            if (at == leaders.end()) at = leaders.insert(at, const_cast<MLeaderEntity*>(leader));
            const auto first = static_cast<std::size_t>(at - leaders.begin());
            move(leaders, engine::spacedSteps(views(leaders), first, direction, spacing_));
        } else {
            move(leaders, engine::alignedSteps(views(leaders), leader->contentPos, direction));
        }
        co_return false;
    }

    Dialogue askMode(Ask& ask) {
        const Answer option = co_await ask.keyword(
            "Enter an option [Distribute/make leader segments Parallel/specify Spacing/Use current spacing] <Use "
            "current spacing>:",
            "Distribute Parallel Spacing Use");
        mode_ = option.is("DISTRIBUTE") ? AlignMode::Distribute
                : option.is("PARALLEL") ? AlignMode::Parallel
                : option.is("SPACING")  ? AlignMode::Spacing
                                        : AlignMode::CurrentSpacing;
        if (mode_ == AlignMode::Spacing) {
            std::string prompt = withDefault("Specify spacing", lengthDefault(drawing(), spacing_));
            const Answer spacing = co_await ask.distance(std::move(prompt), {}, {}, kNotNegative);
            spacing_ = spacing.numberOr(spacing_);
            remember(document(), kSpacing, spacing_);
        }
        remember(document(), kMode, static_cast<double>(mode_));
    }

    static std::vector<const MLeaderEntity*> views(const std::vector<MLeaderEntity*>& leaders) {
        return {leaders.begin(), leaders.end()};
    }

    void move(const std::vector<MLeaderEntity*>& leaders, const std::vector<Vector2>& steps) {
        const doc::GroupScope group(document(), "MLEADERALIGN");
        for (std::size_t i = 0; i < leaders.size(); ++i)
            if (steps[i] != Vector2{} && steps[i].is_finite())
                document().modifyEntity(*leaders[i], [&](engine::Entity& e) {
                    engine::moveContent(static_cast<MLeaderEntity&>(e), steps[i]);
                });
        repaint();
    }

    std::vector<std::uint64_t> ids_;
    AlignMode mode_ = AlignMode::CurrentSpacing;
    double spacing_ = 0.0;
};

/// MLEADERCOLLECT: one multileader, the first one's leader lines, that shows the blocks of all of them side by side.
/// The blocks stand in an anonymous block of their own.
class MLeaderCollectTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection("Select multileaders:");
        std::vector<std::uint64_t> ids;
        std::size_t others = 0;
        for (const MLeaderEntity* leader : mleadersOf(document(), selected.ids)) {
            const bool block = leader->contentType == MLeaderContent::Block && leader->contentBlock() != nullptr;
            if (block)
                ids.push_back(leader->id());
            else
                ++others;
        }
        if (others > 0) message(counted(others, "multileader") + " without block content passed over.");
        if (ids.size() < 2) co_return message("At least two multileaders with block content are needed.");
        Row row = Row::Horizontal;
        double width = 0.0;
        int number = 0;
        for (;;) {
            const Answer at =
                co_await ask.point("Specify collected multileader location or [Vertical/Horizontal/Wrap] <Horizontal>:",
                                   "Vertical Horizontal Wrap");
            if (at.isPoint()) {
                collect(ids, at.point, row, width, number);
                co_return;
            }
            row = at.is("VERTICAL") ? Row::Vertical : Row::Horizontal;
            if (!at.is("WRAP")) continue;
            row = Row::Wrapped;
            number = 0;
            const Answer limit = co_await ask.distance("Specify wrap width or [Number]:", "Number", {}, kPositive);
            width = limit.numberOr(0.0);
            if (limit.isNumber()) continue;
            const Answer count = co_await ask.integer("Specify maximum number of blocks per row:", 1, 999);
            number = count.isNumber() ? count.integer() : 0;
        }
    }

private:
    enum class Row { Horizontal, Vertical, Wrapped };

    void collect(const std::vector<std::uint64_t>& ids, const Vector2& location, Row row, double width, int number) {
        const std::vector<MLeaderEntity*> leaders = mleadersOf(document(), ids);
        if (leaders.size() < 2) return;
        const MLeaderEntity& first = *leaders.front();
        // The collected multileader scales and turns its block as the first one does.
        const math::Matrix4 own = math::Matrix4::translation(-first.contentPos) * first.blockMatrix() *
                                  math::Matrix4::translation(first.contentBlock()->base);
        const auto back = own.inverse();
        if (!back) return message("The multileaders cannot be collected.");
        const doc::GroupScope group(document(), "MLEADERCOLLECT");
        auto block = std::make_unique<engine::Block>(drawing().nextAnonymousName("*U"));
        Vector2 corner;  // upper left of the next content
        Vector2 insertion;
        double rowHeight = 0.0;
        int inRow = 0;
        math::Bounds2 all;
        for (const MLeaderEntity* leader : leaders) {
            const math::Bounds2 box = leader->contentBox();
            const Vector2 size = box.max - box.min;
            const bool full = row == Row::Vertical || (row == Row::Wrapped && number > 0 && inRow >= number) ||
                              (row == Row::Wrapped && width > 0.0 && corner.x + size.x > width * (1.0 + 1e-9));
            if (inRow > 0 && full) {
                corner = {0.0, corner.y - rowHeight};
                rowHeight = 0.0;
                inRow = 0;
            }
            const Vector2 step = corner - Vector2{box.min.x, box.max.y};
            if (leader == &first) insertion = leader->contentPos + step;
            const engine::Block& shown = *leader->contentBlock();
            auto reference = std::make_unique<engine::BlockReferenceEntity>(shown.name, shown.base);
            reference->transform(*back * math::Matrix4::translation(step) * leader->blockMatrix());
            reference->color = engine::Color::byBlock();
            reference->linetype = engine::commonNames().byBlock;
            block->entities.append(std::move(reference));
            all.expand(corner);
            all.expand(corner + Vector2{size.x, -size.y});
            corner.x += size.x;
            rowHeight = std::max(rowHeight, size.y);
            ++inRow;
        }
        block->base = back->transform_point(insertion);
        const engine::Block* added = document().addBlock(std::move(block));
        if (added == nullptr) return message("The multileaders cannot be collected.");
        auto made = std::make_unique<MLeaderEntity>(first);
        made->setHandle(0);
        made->blockName = added->name;
        made->contentPos = location;
        leadTo(*made, first, {all.min + location - insertion, all.max + location - insertion});
        for (MLeaderEntity* leader : leaders) document().removeEntity(*leader);
        document().addEntity(std::move(made));
        repaint();
    }

    /// Ends the leader lines beside a box, on the side of their arrows.
    static void leadTo(MLeaderEntity& made, const MLeaderEntity& like, const math::Bounds2& box) {
        const bool dogleg = like.hasLanding && like.hasDogleg;
        const double reach = dogleg ? like.effectiveLandingDistance() : 0.0;
        for (engine::MLeaderHead& head : made.heads) {
            if (head.vertices.size() < 2) continue;
            const bool left = head.vertices.front().x <= box.center().x;
            head.vertices.back() = {left ? box.min.x - reach : box.max.x + reach, box.center().y};
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(MLeaderAlign, "MLEADERALIGN", "Align Multileaders", "Annotate", {"MLA"})
KOVA_TOOL_COMMAND(MLeaderCollect, "MLEADERCOLLECT", "Collect Multileaders", "Annotate", {"MLC"})

}  // namespace kova::cmd::commands
