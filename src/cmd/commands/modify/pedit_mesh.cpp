#include "cmd/commands/modify/pedit.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/space_point.hpp"
#include "engine/curves/space_fit.hpp"

namespace kova::cmd::commands {

using engine::MeshEntity;

MeshEntity* MeshEditor::mesh() const { return dynamic_cast<MeshEntity*>(document_.drawing().findById(id_)); }

/// A smoothed mesh is changed in its frame and smoothed anew.
void MeshEditor::change(const std::function<void(MeshEntity&)>& edit) {
    MeshEntity* m = mesh();
    if (m == nullptr) return;
    const int u = engine::sysVarInt(document_.drawing(), "SURFU");
    const int v = engine::sysVarInt(document_.drawing(), "SURFV");
    group_.begin();
    document_.modifyEntity(*m, [&](engine::Entity& e) {
        auto& target = static_cast<MeshEntity&>(e);
        edit(target);
        if (!target.frame.empty()) engine::smoothMesh(target, target.surfaceType, u, v);
    });
}

Dialogue MeshEditor::run(Ask& ask) {
    for (;;) {
        if (mesh() == nullptr) co_return;
        const std::string across = mesh()->closedM ? "Mopen" : "Mclose";
        const std::string along = mesh()->closedN ? "Nopen" : "Nclose";
        std::string prompt = "Enter an option [Edit vertex/Smooth surface/Desmooth/" + across + "/" + along + "/Undo]:";
        const Answer answer =
            co_await ask.keyword(std::move(prompt), "Edit Smooth Desmooth " + across + " " + along + " Undo eXit");
        if (answer.isEnter() || answer.is("eXit")) co_return;
        if (answer.is("Undo")) {
            if (!group_.drop()) ask.message("Command has been completely undone.");
        } else if (answer.is("Edit")) {
            co_await editVertices(ask);
        } else if (answer.is("Smooth")) {
            smooth(ask);
        } else if (answer.is("Desmooth")) {
            change(engine::desmoothMesh);
        } else {
            const bool rows = answer.word.front() == 'M';
            const bool close = answer.is("Mclose") || answer.is("Nclose");
            change([rows, close](MeshEntity& m) { (rows ? m.closedM : m.closedN) = close; });
        }
    }
}

void MeshEditor::smooth(Ask& ask) {
    int type = engine::sysVarInt(document_.drawing(), "SURFTYPE");
    if (type != 5 && type != 8) type = 6;
    engine::SmoothRefusal refusal{};
    const int u = engine::sysVarInt(document_.drawing(), "SURFU");
    const int v = engine::sysVarInt(document_.drawing(), "SURFV");
    group_.begin();
    document_.modifyEntity(
        *mesh(), [&](engine::Entity& e) { refusal = engine::smoothMesh(static_cast<MeshEntity&>(e), type, u, v); });
    if (refusal == engine::SmoothRefusal::None) return;
    group_.drop();
    if (refusal == engine::SmoothRefusal::TooMany)
        ask.message("A Bezier surface takes no more than 11 vertices in either direction.");
    else
        ask.message("The surface needs at least " +
                    std::string(type == 5   ? "3"
                                : type == 6 ? "4"
                                            : "2") +
                    " vertices in both directions.");
}

/// Next and Previous walk row by row; Up and Down lead to the neighbouring row (M), Right and Left along it (N).
Dialogue MeshEditor::editVertices(Ask& ask) {
    std::size_t marker = 0;
    std::string last = "NEXT";
    for (;;) {
        const MeshEntity* m = mesh();
        if (m == nullptr) co_return;
        const bool framed = !m->frame.empty();
        const std::vector<math::Vector3>& grid = framed ? m->frame : m->vertices;
        const std::int32_t rows = framed ? m->frameRows : m->rows;
        const std::int32_t cols = framed ? m->frameCols : m->cols;
        if (rows < 1 || cols < 1 || grid.size() / static_cast<std::size_t>(cols) < static_cast<std::size_t>(rows))
            co_return;
        const auto n = static_cast<std::size_t>(cols);
        const std::size_t total = static_cast<std::size_t>(rows) * n;
        marker = std::min(marker, total - 1);
        const std::size_t row = marker / n;
        const std::size_t column = marker % n;
        ask.message("Current vertex (" + std::to_string(row) + "," + std::to_string(column) + ") at " +
                    pointDefault(document_.drawing(), grid[marker].xy()) + "," +
                    lengthDefault(document_.drawing(), grid[marker].z));
        const std::string shown = last == "RIGHT" ? "R" : last.substr(0, 1);
        const Answer answer = co_await ask.keyword(
            withDefault("Enter a vertex editing option [Next/Previous/Left/Right/Up/Down/Move/REgen/eXit]", shown),
            "Next Previous Left Right Up Down Move REgen eXit");
        const std::string word = answer.isEnter() ? last : answer.word;
        if (word == "EXIT") co_return;
        if (word == "REGEN") continue;
        if (word == "MOVE") {
            const math::Vector3 from = grid[marker];
            const Answer to = co_await ask.point("Specify new location for marked vertex:", {}, from.xy());
            if (!to.isPoint()) continue;
            const math::Vector3 p = spacePoint(to, from.z, document_.drawing());
            change([&](MeshEntity& target) {
                std::vector<math::Vector3>& points = target.frame.empty() ? target.vertices : target.frame;
                if (marker < points.size()) points[marker] = p;
            });
            continue;
        }
        last = word;
        if (word == "NEXT" && marker + 1 < total) ++marker;
        if (word == "PREVIOUS" && marker > 0) --marker;
        if (word == "RIGHT" && (column + 1 < n || m->closedN)) marker = row * n + (column + 1) % n;
        if (word == "LEFT" && (column > 0 || m->closedN)) marker = row * n + (column + n - 1) % n;
        if (word == "UP" && (marker + n < total || m->closedM)) marker = (marker + n) % total;
        if (word == "DOWN" && (marker >= n || m->closedM)) marker = (marker + total - n) % total;
    }
}

}  // namespace kova::cmd::commands
