#include "engine/curves/join.hpp"

#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"

namespace kova::cmd::commands {

namespace {

using engine::EntityType;

const char* nounOf(const engine::Entity& made) {
    switch (made.type()) {
        case EntityType::Line:
            return "line";
        case EntityType::Arc:
            return "arc";
        case EntityType::Circle:
            return "circle";
        case EntityType::Spline:
            return "spline";
        case EntityType::Polyline3D:
            return "3D polyline";
        case EntityType::Ellipse:
            return static_cast<const engine::EllipseEntity&>(made).isFull() ? "ellipse" : "elliptical arc";
        default:
            return "polyline";
    }
}

/// JOIN: several objects at once, or a source and what is to be added to it.
class JoinTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection("Select source object or multiple objects to join at once:");
        std::vector<std::uint64_t> ids = selected.ids;
        if (ids.empty()) co_return;
        bool source = false;
        if (ids.size() == 1) {
            const engine::Entity* entity = drawing().findById(ids.front());
            if (entity == nullptr) co_return;
            if (entity->type() == EntityType::Arc || entity->type() == EntityType::Ellipse) {
                const bool closed = co_await askArcs(ask, ids);
                if (closed) co_return;
            } else {
                document().selection().clear();
                const Answer more = co_await ask.selection("Select objects to join:");
                for (const std::uint64_t id : more.ids)
                    if (id != ids.front()) ids.push_back(id);
            }
            source = true;
        }
        join(ids, source);
    }

private:
    /// What is to be joined to an arc; true when it was closed instead.
    Task<bool> askArcs(Ask& ask, std::vector<std::uint64_t>& ids) {
        const bool circular = drawing().findById(ids.front())->type() == EntityType::Arc;
        for (;;) {
            const char* prompt = circular ? "Select arcs to join to source or [cLose]:"
                                          : "Select elliptical arcs to join to source or [cLose]:";
            const Answer answer = co_await ask.object(prompt, "cLose");
            if (answer.isEnter()) co_return false;
            if (answer.isObject()) {
                if (std::find(ids.begin(), ids.end(), answer.id) == ids.end()) ids.push_back(answer.id);
                message(counted(ids.size() - 1, "object") + " found");
                continue;
            }
            engine::Entity* entity = drawing().findById(ids.front());
            if (entity == nullptr) co_return true;
            const doc::GroupScope group(document(), "JOIN");
            if (const auto* arc = dynamic_cast<const engine::ArcEntity*>(entity)) {
                auto circle = std::make_unique<engine::CircleEntity>(arc->center, arc->radius);
                circle->copyCommonFrom(*arc);
                document().replaceEntity(*entity, std::move(circle));
                message("Arc converted to a circle.");
            } else {
                document().modifyEntity(*entity, [](engine::Entity& e) {
                    auto& ellipse = static_cast<engine::EllipseEntity&>(e);
                    ellipse.startParam = 0.0;
                    ellipse.endParam = math::kTwoPi;
                });
                message("Elliptical arc converted to an ellipse.");
            }
            co_return true;
        }
    }

    void join(const std::vector<std::uint64_t>& ids, bool source) {
        std::vector<const engine::Entity*> entities;
        std::vector<std::uint64_t> present;
        for (const std::uint64_t id : ids)
            if (const engine::Entity* e = drawing().findById(id)) {
                entities.push_back(e);
                present.push_back(id);
            }
        engine::JoinOptions options;
        options.overGaps = source;
        options.gapsIfAll = !source;
        options.overlaps = true;
        options.inSpace = true;
        std::vector<engine::JoinedChain> chains = engine::joinEntities(entities, options);
        std::size_t used = 0;
        std::vector<std::uint64_t> gone;
        const doc::GroupScope group(document(), "JOIN");
        for (engine::JoinedChain& chain : chains) {
            // With a source only what joins it.
            if (source && chain.members.front() != 0) continue;
            used += chain.members.size();
            const char* noun = nounOf(*chain.made);
            engine::Entity* first = drawing().findById(present[chain.members.front()]);
            for (std::size_t i = 1; i < chain.members.size(); ++i) gone.push_back(present[chain.members[i]]);
            if (chains.size() <= kTold) message(counted(chain.members.size(), "object") + " joined into 1 " + noun);
            document().replaceEntity(*first, std::move(chain.made));
        }
        // All at once, and as they lie in memory: many go quickly then.
        std::sort(gone.begin(), gone.end());
        document().removeEntities(gone);
        if (used == 0)
            message("0 objects joined, " + counted(entities.size(), "object") + " discarded from the operation.");
        else if (used < entities.size())
            message(counted(entities.size() - used, "object") + " discarded from the operation.");
    }

    static constexpr std::size_t kTold = 100;  ///< more chains than this are not told one by one
};

}  // namespace

KOVA_TOOL_COMMAND(Join, "JOIN", "Join", "Modify", {"J"})

}  // namespace kova::cmd::commands
