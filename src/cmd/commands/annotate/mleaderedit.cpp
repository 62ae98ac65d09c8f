#include "cmd/dialogue.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dimensions/leader_line.hpp"
#include "engine/entities/dimensions/mleader.hpp"

namespace kova::cmd::commands {

namespace {

using engine::MLeaderEntity;
using math::Vector2;

bool isEditedMLeader(const engine::Entity& entity) { return entity.type() == engine::EntityType::MLeader; }

/// MLEADEREDIT: adds leader lines to a multileader, or takes them away.
class MLeaderEditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer picked = co_await ask.object("Select a multileader:", {}, isEditedMLeader);
        if (!picked.isObject()) co_return;
        id_ = picked.id;
        bool adding = true;
        for (;;) {
            const char* prompt = adding ? "Specify leader arrowhead location or [Remove leaders]:"
                                        : "Specify leaders to remove or [Add leaders]:";
            const char* words = adding ? "Remove" : "Add";
            const Answer answer = co_await ask.point(prompt, words);
            if (answer.isEnter()) co_return;
            if (!answer.isPoint())
                adding = !adding;
            else if (adding)
                add(answer.point);
            else
                remove(answer.point);
        }
    }

private:
    MLeaderEntity* find() const { return dynamic_cast<MLeaderEntity*>(drawing().findById(id_)); }

    void change(const std::function<void(MLeaderEntity&)>& edit) {
        const doc::GroupScope group(document(), "MLEADEREDIT");
        document().modifyEntity(*find(), [&](engine::Entity& e) { edit(static_cast<MLeaderEntity&>(e)); });
        repaint();
    }

    /// A new line from the point to where the first one lands.
    void add(const Vector2& arrow) {
        const MLeaderEntity* leader = find();
        if (leader == nullptr) return;
        const bool any = !leader->heads.empty() && !leader->heads.front().vertices.empty();
        const Vector2 landing = any ? leader->heads.front().vertices.back() : leader->contentPos;
        if (arrow == landing) return message("The two points coincide.");
        change([&](MLeaderEntity& m) { m.heads.push_back({{arrow, landing}}); });
    }

    void remove(const Vector2& p) {
        const MLeaderEntity* leader = find();
        if (leader == nullptr) return;
        std::size_t nearest = leader->heads.size();
        double least = pickDistance();
        for (std::size_t i = 0; i < leader->heads.size(); ++i) {
            const auto& vertices = leader->heads[i].vertices;
            if (vertices.empty()) continue;
            const engine::Path line = engine::leaderLine(vertices, false, 0.0);
            // The arrow's end tells lines with one landing apart.
            const double distance =
                std::min(p.distance_to(engine::nearestOnPath(line, p)), p.distance_to(vertices.front()));
            if (distance > least || (nearest < leader->heads.size() && distance == least)) continue;
            least = distance;
            nearest = i;
        }
        if (nearest == leader->heads.size()) return message("No leader line found.");
        change([&](MLeaderEntity& m) { m.heads.erase(m.heads.begin() + static_cast<std::ptrdiff_t>(nearest)); });
    }

    double pickDistance() const { return cmd::pickTolerance(document()); }

    std::uint64_t id_ = 0;
};

}  // namespace

KOVA_TOOL_COMMAND(MLeaderEdit, "MLEADEREDIT", "Edit Multileader", "Annotate", {"MLE", "AIMLEADEREDITADD"})

}  // namespace kova::cmd::commands
