// PEDIT and MPEDIT. Without a window the marker of the vertex editing is told instead of shown, and Regen has nothing
// to do. Polylines all are light ones: a curve keeps its frame beside its vertices, and Fit is not offered in space,
// where no arc could lie.
#include "cmd/commands/modify/pedit.hpp"

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "engine/curves/join.hpp"
#include "engine/curves/polyline_fit.hpp"
#include "engine/curves/reversed.hpp"
#include "engine/curves/space_fit.hpp"
#include "engine/curves/spline_edit.hpp"

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

/// What PEDIT and MPEDIT have in common: the options for one polyline or for many.
class PolylineEditTool : public DialogueTool {
protected:
    /// MPEDIT: many at once, asked for by the ordinary selection.
    virtual bool many() const { return false; }

    Dialogue dialogue(Ask& ask) override {
        if (many()) {
            const Answer selected = co_await ask.selection();
            ids_ = selected.ids;
            multiple_ = true;
            StepGroup group(document(), "MPEDIT");
            const bool ready = co_await askConversion(ask, group);
            if (ready) co_await options(ask, group);
            co_return;
        }
        PickRequest request;
        request.prompt = "Select polyline or [Multiple]:";
        request.options = "Multiple";
        request.usable = editable;
        request.refusal = "Object selected is not a polyline.";
        const Answer picked = co_await askPick(ask, std::move(request));
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
        MeshEditor mesh(document(), group, ids_.front());
        if (!multiple_ && first() != nullptr && first()->type() == EntityType::Mesh)
            co_await mesh.run(ask);
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
        const bool asks = many() || engine::sysVarInt(drawing(), "PEDITACCEPT") == 0;
        if (asks && multiple_) {
            const char* question = many() ? "Convert Lines, Arcs and Splines to polylines [Yes/No]? <Yes>:"
                                          : "Convert Lines, Arcs and Splines to polylines [Yes/No]? <Y>";
            convert = co_await askYesNo(ask, question, true);
        } else if (asks) {
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
        // DELOBJ 0 keeps what is converted.
        const bool keep = engine::sysVarInt(drawing(), "DELOBJ", 3) == 0;
        group.begin();
        for (std::uint64_t& id : ids_) {
            engine::Entity* e = drawing().findById(id);
            if (e == nullptr || !canBecomePolyline(*e)) continue;
            std::unique_ptr<engine::Entity> made = converted(*e, precision);
            if (!made) continue;
            made->setHandle(0);
            id = (keep ? document().addEntity(std::move(made)) : document().replaceEntity(*e, std::move(made))).id();
        }
        std::erase_if(ids_, [&](std::uint64_t id) {
            const engine::Entity* e = drawing().findById(id);
            return e == nullptr || canBecomePolyline(*e);
        });
        co_return !ids_.empty();
    }

    /// A spline that leaves its plane becomes a polyline in space.
    static std::unique_ptr<engine::Entity> converted(const engine::Entity& e, int precision) {
        if (const auto* spline = dynamic_cast<const engine::SplineEntity*>(&e);
            spline != nullptr && !spline->controlZ.empty())
            return engine::polyline3dFrom(*spline, precision);
        return engine::polylineFrom(e, precision);
    }

    bool anyOpen() const {
        return std::any_of(ids_.begin(), ids_.end(), [&](std::uint64_t id) {
            const engine::Entity* e = drawing().findById(id);
            if (const auto* flat = dynamic_cast<const PolylineEntity*>(e)) return !flat->closed;
            const auto* space = dynamic_cast<const Polyline3DEntity*>(e);
            return space != nullptr && !space->closed;
        });
    }

    Task<Answer> askOption(Ask& ask) {
        if (many())
            co_return co_await ask.keyword(
                "Enter an option [Open/Close/Join/Width/Fit/Spline/Decurve/Ltype gen/eXit] <eXit>:",
                "Open Close Join Width Fit Spline Decurve Ltype eXit");
        std::string list = multiple_ ? "Close/Open" : anyOpen() ? "Close" : "Open";
        if (inSpace()) {
            list += "/Join/Edit vertex/Spline curve/Decurve/Reverse/Undo";
            co_return co_await ask.keyword("Enter an option [" + list + "]:",
                                           "Close Open Join Edit Spline Decurve Reverse Undo eXit");
        }
        list += multiple_ ? "/Join/Width/" : "/Join/Width/Edit vertex/";
        list += "Fit/Spline/Decurve/Ltype gen/Reverse/Undo";
        co_return co_await ask.keyword("Enter an option [" + list + "]:",
                                       multiple_
                                           ? "Close Open Join Width Fit Spline Decurve Ltype Reverse Undo eXit"
                                           : "Close Open Join Width Edit Fit Spline Decurve Ltype Reverse Undo eXit");
    }

    /// The one polyline is one in space.
    bool inSpace() const { return !multiple_ && first() != nullptr && first()->type() == EntityType::Polyline3D; }

    Dialogue options(Ask& ask, StepGroup& group) {
        for (;;) {
            if (first() == nullptr) co_return;
            const Answer answer = co_await askOption(ask);
            if (answer.isEnter() || answer.is("eXit")) co_return;
            const std::string word = answer.word;
            if (word == "UNDO") {
                if (!group.drop()) message("Command has been completely undone.");
                // Taking back a conversion brings back what is no polyline.
                if (first() != nullptr && !isPolyline(*first()) && !inSpace() && !multiple_) co_return;
            } else if (word == "JOIN" && inSpace()) {
                co_await joinSpace(ask, group);
            } else if (word == "JOIN") {
                co_await join(ask, group);
            } else if (word == "WIDTH") {
                co_await width(ask, group);
            } else if (word == "EDIT") {
                VertexEditor editor(document(), group, ids_.front());
                co_await editor.run(ask);
            } else if (word == "LTYPE") {
                co_await linetype(ask, group);
            } else {
                apply(group, word);
            }
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
        const int degree = engine::sysVarInt(drawing(), "SPLINETYPE") == 5 ? 2 : 3;
        const int segments = engine::sysVarInt(drawing(), "SPLINESEGS");
        group.begin();
        for (const std::uint64_t id : ids_) {
            engine::Entity* e = drawing().findById(id);
            if (e == nullptr || e->type() == EntityType::Mesh) continue;
            document().modifyEntity(*e, [&](engine::Entity& target) {
                if (word == "REVERSE")
                    engine::reverseDirection(target);
                else if (auto* flat = dynamic_cast<PolylineEntity*>(&target))
                    shape(*flat, word, degree, segments);
                else if (auto* space = dynamic_cast<Polyline3DEntity*>(&target))
                    shape(*space, word, degree, segments);
            });
        }
    }

    static void shape(PolylineEntity& polyline, const std::string& word, int degree, int segments) {
        if (word == "FIT") return engine::fitWithArcs(polyline);
        if (word == "SPLINE") return engine::fitWithSpline(polyline, degree, segments);
        if (word == "DECURVE") return engine::decurve(polyline);
        const bool close = word == "CLOSE";
        // A curve is closed and opened in its frame, or it would have a corner at its ends.
        if (polyline.closed != close)
            engine::editFrame(polyline, segments, [close](PolylineEntity& p) { setClosed(p, close); });
    }

    static void shape(Polyline3DEntity& polyline, const std::string& word, int degree, int segments) {
        if (word == "SPLINE") return engine::fitWithSpline(polyline, degree, segments);
        if (word == "DECURVE") return engine::decurve(polyline);
        if (word == "CLOSE" || word == "OPEN")
            engine::editFrame(polyline, segments, [&](Polyline3DEntity& p) { p.closed = word == "CLOSE"; });
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

    Dialogue joinSpace(Ask& ask, StepGroup& group) {
        const std::uint64_t own = ids_.front();
        document().selection().clear();
        const Answer selected = co_await ask.selection();
        std::vector<const engine::Entity*> entities;
        std::vector<std::uint64_t> present;
        for (const std::uint64_t id : selected.ids) {
            const engine::Entity* e = id == own ? nullptr : drawing().findById(id);
            if (e == nullptr) continue;
            entities.push_back(e);
            present.push_back(id);
        }
        engine::JoinedParts joined;
        const int segments = engine::sysVarInt(drawing(), "SPLINESEGS");
        group.begin();
        document().modifyEntity(*first(), [&](engine::Entity& e) {
            engine::editFrame(static_cast<Polyline3DEntity&>(e), segments,
                              [&](Polyline3DEntity& p) { joined = engine::joinInSpace(p, entities); });
        });
        std::vector<std::uint64_t> gone;
        for (const std::size_t i : joined) gone.push_back(present[i]);
        document().removeEntities(gone);
        if (joined.empty()) group.drop();
        message(counted(joined.size(), "segment") + " added to polyline");
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

class PeditTool final : public PolylineEditTool {};

class MpeditTool final : public PolylineEditTool {
    bool many() const override { return true; }
};

}  // namespace

KOVA_TOOL_COMMAND(Pedit, "PEDIT", "Edit Polyline", "Modify", {"PE"})
KOVA_TOOL_COMMAND(Mpedit, "MPEDIT", "Edit Polylines", "Modify")

}  // namespace kova::cmd::commands
