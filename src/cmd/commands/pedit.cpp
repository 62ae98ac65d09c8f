#include "cmd/commands/pedit.hpp"

#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/mesh.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/join.hpp"
#include "engine/polyline_fit.hpp"
#include "engine/reversed.hpp"

namespace kova::cmd::commands {

namespace {

using engine::EntityType;
using engine::Polyline3DEntity;
using engine::PolylineEntity;

bool isPolyline(const engine::Entity& e) { return e.type() == EntityType::Polyline; }

bool canBecomePolyline(const engine::Entity& e) {
    return e.type() == EntityType::Line || e.type() == EntityType::Arc || e.type() == EntityType::Spline;
}

bool editable(const engine::Entity& e) {
    return isPolyline(e) || canBecomePolyline(e) || e.type() == EntityType::Polyline3D || e.type() == EntityType::Mesh;
}

class PeditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        Ask::Request request;
        request.kind = Ask::Kind::Object;
        request.prompt = "Select polyline or [Multiple]:";
        request.keywords = parseKeywords("Multiple");
        request.filter = editable;
        request.refusal = "Object selected is not a polyline.";
        const Answer picked = co_await ask.request(std::move(request));
        if (picked.isEnter()) co_return;
        StepGroup group(document(), "PEDIT");
        if (picked.is("Multiple")) {
            multiple_ = true;
            const Answer selected = co_await ask.selection();
            ids_ = selected.ids;
        } else {
            ids_.push_back(picked.id);
        }
        const bool ready = co_await askConversion(ask, group);
        if (!ready) co_return;
        if (!multiple_ && first() != nullptr && first()->type() == EntityType::Mesh)
            co_await meshOptions(ask, group);
        else
            co_await options(ask, group);
    }

private:
    engine::Entity* first() const { return ids_.empty() ? nullptr : drawing().findById(ids_.front()); }

    /// Lines, arcs and splines become polylines, or the command ends.
    Task<bool> askConversion(Ask& ask, StepGroup& group) {
        std::erase_if(ids_, [&](std::uint64_t id) {
            const engine::Entity* e = drawing().findById(id);
            return e == nullptr || !editable(*e);
        });
        const bool any = std::any_of(ids_.begin(), ids_.end(),
                                     [&](std::uint64_t id) { return canBecomePolyline(*drawing().findById(id)); });
        if (!any) co_return !ids_.empty();
        bool convert = true;
        if (multiple_) {
            convert = co_await askYesNo(ask, "Convert Lines, Arcs and Splines to polylines [Yes/No]? <Y>", true);
        } else if (engine::sysVarInt(drawing(), "PEDITACCEPT") == 0) {
            message("Object selected is not a polyline");
            convert = co_await askYesNo(ask, "Do you want to turn it into one? <Y>", true);
        }
        int precision = 10;
        const bool curves = std::any_of(ids_.begin(), ids_.end(), [&](std::uint64_t id) {
            const engine::Entity* e = drawing().findById(id);
            return e != nullptr && e->type() == EntityType::Spline;
        });
        if (convert && curves) {
            const Answer answer = co_await ask.integer("Specify a precision <10>:", 0, 99);
            if (answer.isNumber()) precision = std::max(1, answer.integer());
        }
        if (!convert) {
            std::erase_if(ids_, [&](std::uint64_t id) {
                const engine::Entity* e = drawing().findById(id);
                return e == nullptr || canBecomePolyline(*e);
            });
            co_return !ids_.empty();
        }
        group.begin();
        for (const std::uint64_t id : ids_) {
            engine::Entity* e = drawing().findById(id);
            if (e == nullptr || !canBecomePolyline(*e)) continue;
            if (auto polyline = engine::polylineFrom(*e, precision)) document().replaceEntity(*e, std::move(polyline));
        }
        co_return true;
    }

    bool anyOpen() const {
        return std::any_of(ids_.begin(), ids_.end(), [&](std::uint64_t id) {
            const engine::Entity* e = drawing().findById(id);
            if (const auto* flat = dynamic_cast<const PolylineEntity*>(e)) return !flat->closed;
            const auto* space = dynamic_cast<const Polyline3DEntity*>(e);
            return space != nullptr && !space->closed;
        });
    }

    Dialogue options(Ask& ask, StepGroup& group) {
        for (;;) {
            if (first() == nullptr) co_return;
            const bool space = !multiple_ && first()->type() == EntityType::Polyline3D;
            std::string list = multiple_   ? "Close/Open/Join/Width/Fit/Spline/Decurve/Ltype gen/Reverse/Undo"
                               : anyOpen() ? "Close/Join/Width/Edit vertex/Fit/Spline/Decurve/Ltype gen/Reverse/Undo"
                                           : "Open/Join/Width/Edit vertex/Fit/Spline/Decurve/Ltype gen/Reverse/Undo";
            if (space) list = anyOpen() ? "Close/Reverse/Undo" : "Open/Reverse/Undo";
            const char* keywords = space ? "Close Open Reverse Undo eXit"
                                         : "Close Open Join Width Edit Fit Spline Decurve Ltype Reverse Undo eXit";
            const Answer answer = co_await ask.keyword("Enter an option [" + list + "]:", keywords);
            if (answer.isEnter() || answer.is("eXit")) co_return;
            const std::string word = answer.word;
            if (word == "UNDO") {
                if (!group.drop()) message("Command has been completely undone.");
                // Taking back a conversion or a break may have brought back what is no polyline.
                if (first() != nullptr && !isPolyline(*first()) && !space) co_return;
            } else if (word == "JOIN") {
                co_await join(ask, group);
            } else if (word == "WIDTH") {
                co_await width(ask, group);
            } else if (word == "EDIT") {
                if (multiple_) {
                    message("Invalid option keyword.");
                    continue;
                }
                VertexEditor editor(document(), group, ids_.front());
                co_await editor.run(ask);
            } else if (word == "LTYPE") {
                co_await linetype(ask, group);
            } else {
                apply(group, word);
            }
        }
    }

    /// A mesh is closed and opened in both of its directions.
    Dialogue meshOptions(Ask& ask, StepGroup& group) {
        for (;;) {
            const auto* mesh = dynamic_cast<const engine::MeshEntity*>(first());
            if (mesh == nullptr) co_return;
            std::string list = mesh->closedM ? "Mopen/" : "Mclose/";
            list += mesh->closedN ? "Nopen/Undo" : "Nclose/Undo";
            const Answer answer =
                co_await ask.keyword("Enter an option [" + list + "]:", "Mopen Mclose Nopen Nclose Undo eXit");
            if (answer.isEnter() || answer.is("eXit")) co_return;
            if (answer.is("Undo")) {
                if (!group.drop()) message("Command has been completely undone.");
                continue;
            }
            const bool rows = answer.word.front() == 'M';
            group.begin();
            document().modifyEntity(*first(), [rows](engine::Entity& e) {
                auto& target = static_cast<engine::MeshEntity&>(e);
                bool& closed = rows ? target.closedM : target.closedN;
                closed = !closed;
            });
        }
    }

    /// One step on all polylines.
    void forAll(StepGroup& group, const std::function<void(PolylineEntity&)>& edit) {
        group.begin();
        for (const std::uint64_t id : ids_) {
            engine::Entity* e = drawing().findById(id);
            if (e == nullptr || !isPolyline(*e)) continue;
            document().modifyEntity(*e, [&](engine::Entity& target) { edit(static_cast<PolylineEntity&>(target)); });
        }
    }

    void apply(StepGroup& group, const std::string& word) {
        if (word == "FIT") return forAll(group, engine::fitWithArcs);
        if (word == "DECURVE") return forAll(group, engine::decurve);
        if (word == "SPLINE") {
            const int degree = engine::sysVarInt(drawing(), "SPLINETYPE") == 5 ? 2 : 3;
            const int segments = std::abs(engine::sysVarInt(drawing(), "SPLINESEGS"));
            return forAll(group, [&](PolylineEntity& p) { engine::fitWithSpline(p, degree, segments); });
        }
        const bool close = word == "CLOSE";
        group.begin();
        for (const std::uint64_t id : ids_) {
            engine::Entity* e = drawing().findById(id);
            if (e == nullptr) continue;
            document().modifyEntity(*e, [&](engine::Entity& target) {
                if (word == "REVERSE")
                    engine::reverseDirection(target);
                else if (auto* flat = dynamic_cast<PolylineEntity*>(&target))
                    setClosed(*flat, close);
                else if (auto* space = dynamic_cast<Polyline3DEntity*>(&target))
                    space->closed = close;
            });
        }
    }

    static void setClosed(PolylineEntity& polyline, bool close) {
        // A last vertex on the first one is the closing itself.
        if (close && !polyline.closed && polyline.vertices.size() > 2 &&
            polyline.vertices.front() == polyline.vertices.back())
            polyline.eraseVertex(polyline.vertices.size() - 1);
        if (!close) polyline.setBulge(polyline.vertices.size() - 1, 0.0);
        polyline.closed = close;
    }

    Dialogue width(Ask& ask, StepGroup& group) {
        const Answer answer = co_await ask.distance("Specify new width for all segments:", {}, {}, kNotNegative);
        if (!answer.isNumber()) co_return;
        const double width = answer.number;
        forAll(group, [&](PolylineEntity& p) {
            const double value = width > 0.0 ? width : 0.0;
            p.startWidths.assign(value > 0.0 ? p.vertices.size() : 0, value);
            p.endWidths = p.startWidths;
        });
    }

    Dialogue linetype(Ask& ask, StepGroup& group) {
        const auto* p = dynamic_cast<const PolylineEntity*>(first());
        const bool on = p != nullptr && p->ltgen;
        const char* prompt = on ? "Enter polyline linetype generation option [ON/OFF] <On>:"
                                : "Enter polyline linetype generation option [ON/OFF] <Off>:";
        const Answer answer = co_await ask.keyword(prompt, "ON OFF");
        if (answer.isEnter()) co_return;
        const bool chosen = answer.is("ON");
        forAll(group, [chosen](PolylineEntity& target) { target.ltgen = chosen; });
    }

    Dialogue join(Ask& ask, StepGroup& group) {
        std::vector<std::uint64_t> all = ids_;
        engine::JoinOptions options;
        options.toPolylines = true;
        if (multiple_) {
            co_await askFuzz(ask, options);
        } else {
            document().selection().clear();
            const Answer selected = co_await ask.selection();
            for (const std::uint64_t id : selected.ids)
                if (std::find(all.begin(), all.end(), id) == all.end()) all.push_back(id);
        }
        std::vector<const engine::Entity*> entities;
        for (const std::uint64_t id : all) {
            const engine::Entity* e = drawing().findById(id);
            // Curves would make a spline of the polyline.
            if (e != nullptr && (isPolyline(*e) || e->type() == EntityType::Line || e->type() == EntityType::Arc))
                entities.push_back(e);
        }
        std::vector<std::uint64_t> present;
        for (const engine::Entity* e : entities) present.push_back(e->id());
        std::vector<engine::JoinedChain> chains = engine::joinEntities(entities, options);
        group.begin();
        std::size_t added = 0;
        for (engine::JoinedChain& chain : chains) {
            if (!multiple_ && chain.members.front() != 0) continue;
            std::vector<std::uint64_t> members;
            for (const std::size_t m : chain.members) members.push_back(present[m]);
            added += members.size() - 1;
            engine::Entity* keeper = drawing().findById(members.front());
            document().replaceEntity(*keeper, std::move(chain.made));
            members.erase(members.begin());
            document().removeEntities(members);
        }
        std::erase_if(ids_, [&](std::uint64_t id) { return drawing().findById(id) == nullptr; });
        if (added == 0) group.drop();
        message(counted(added, "segment") + " added to polyline");
    }

    Dialogue askFuzz(Ask& ask, engine::JoinOptions& options) {
        static constexpr const char* kNames[] = {"Extend", "Add", "Both"};
        auto type = static_cast<int>(std::clamp(remembered(document(), kJoinType, 0.0), 0.0, 2.0));
        for (;;) {
            message(std::string("Join Type = ") + kNames[type]);
            const double last = remembered(document(), kFuzz, 0.0);
            const Answer answer =
                co_await ask.distance(withDefault("Enter fuzz distance or [Jointype]", lengthDefault(drawing(), last)),
                                      "Jointype", {}, kNotNegative);
            if (answer.is("Jointype")) {
                const Answer chosen = co_await ask.keyword(
                    withDefault("Enter join type [Extend/Add/Both]", kNames[type]), "Extend Add Both");
                if (!chosen.isEnter()) type = chosen.is("Extend") ? 0 : chosen.is("Add") ? 1 : 2;
                remember(document(), kJoinType, type);
                continue;
            }
            options.fuzz = answer.numberOr(last);
            options.gap = static_cast<engine::JoinGap>(type);
            remember(document(), kFuzz, options.fuzz);
            co_return;
        }
    }

    static constexpr const char* kJoinType = "peditJoinType";
    static constexpr const char* kFuzz = "peditFuzz";

    std::vector<std::uint64_t> ids_;
    bool multiple_ = false;
};

}  // namespace

KOVA_TOOL_COMMAND(Pedit, "PEDIT", "Edit Polyline", "Modify", {"PE"})

}  // namespace kova::cmd::commands
