#include "cmd/commands/modify/splinedit.hpp"

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "engine/curves/join.hpp"
#include "engine/curves/reversed.hpp"

namespace kova::cmd::commands {

namespace {

using engine::SplineEntity;

/// Splines, and the polylines that PEDIT made into approximations of one.
bool editable(const engine::Entity& e) {
    if (e.type() == engine::EntityType::Spline) return true;
    const auto* polyline = dynamic_cast<const engine::PolylineEntity*>(&e);
    return polyline != nullptr && polyline->spline && polyline->fit.size() > 2;
}

class SplineditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        PickRequest request;
        request.prompt = "Select spline:";
        request.usable = editable;
        request.refusal = "Object selected is not a spline.";
        const Answer picked = co_await askPick(ask, std::move(request));
        if (picked.isEnter()) co_return;
        id_ = picked.id;
        StepGroup group(document(), "SPLINEDIT");
        if (const auto* polyline = dynamic_cast<engine::PolylineEntity*>(drawing().findById(id_))) {
            group.begin();
            id_ = put(*drawing().findById(id_), engine::splineOfFrame(*polyline));
        }
        SplineEditor editor(document(), group, id_);
        for (;;) {
            if (spline() == nullptr) co_return;
            std::string prompt = "Enter an option [";
            prompt += spline()->closed ? "Open" : "Close";
            prompt += "/Join/Fit data/Edit vertex/convert to Polyline/Reverse/Undo/eXit] <eXit>:";
            const Answer answer =
                co_await ask.keyword(std::move(prompt), "Open Close Join Fit Edit Polyline Reverse Undo eXit");
            if (answer.isEnter() || answer.is("eXit")) co_return;
            if (answer.is("Undo")) {
                if (!group.drop()) message("Command has been completely undone.");
            } else if (answer.is("Fit")) {
                co_await editor.fitData(ask);
            } else if (answer.is("Edit")) {
                co_await editor.vertices(ask);
            } else if (answer.is("Join")) {
                co_await join(ask, group);
            } else if (answer.is("Polyline")) {
                const bool converted = co_await convert(ask, group);
                if (converted) co_return;
            } else if (answer.is("Reverse")) {
                group.begin();
                document().modifyEntity(*spline(), engine::reverseDirection);
            } else {
                close(group, answer.is("Close"));
            }
        }
    }

private:
    SplineEntity* spline() const { return dynamic_cast<SplineEntity*>(drawing().findById(id_)); }

    /// Puts what was made in the place of the old one, or beside it with DELOBJ 0.
    std::uint64_t put(engine::Entity& old, std::unique_ptr<engine::Entity> made) {
        if (engine::sysVarInt(drawing(), "DELOBJ", 3) != 0) return document().replaceEntity(old, std::move(made)).id();
        made->setHandle(0);
        return document().addEntity(std::move(made)).id();
    }

    void close(StepGroup& group, bool closed) {
        bool done = false;
        group.begin();
        document().modifyEntity(*spline(), [&](engine::Entity& e) {
            done = engine::setSplineClosed(static_cast<SplineEntity&>(e), closed);
        });
        if (done) return;
        group.drop();
        message("A closed spline needs at least three points.");
    }

    Dialogue join(Ask& ask, StepGroup& group) {
        if (spline()->closed) co_return message("A closed spline cannot be joined.");
        if (!spline()->controlZ.empty()) co_return message("A spline that leaves its plane cannot be joined.");
        document().selection().clear();
        const Answer selected = co_await ask.selection("Select any open curves to join to source:");
        std::vector<const engine::Entity*> entities{spline()};
        std::vector<std::uint64_t> ids{id_};
        for (const std::uint64_t id : selected.ids) {
            const engine::Entity* e = id == id_ ? nullptr : drawing().findById(id);
            if (e == nullptr) continue;
            entities.push_back(e);
            ids.push_back(id);
        }
        std::size_t joined = 0;
        for (engine::JoinedChain& chain : engine::joinEntities(entities, {})) {
            if (chain.members.front() != 0 || chain.made->type() != engine::EntityType::Spline) continue;
            group.begin();
            document().replaceEntity(*spline(), std::move(chain.made));
            std::vector<std::uint64_t> gone;
            for (std::size_t i = 1; i < chain.members.size(); ++i) gone.push_back(ids[chain.members[i]]);
            joined = document().removeEntities(gone);
        }
        message(counted(joined, "object") + " joined to source");
    }

    Task<bool> convert(Ask& ask, StepGroup& group) {
        const Answer answer = co_await ask.integer("Specify a precision <10>:", 0, 99);
        const int precision = answer.isNumber() ? std::max(1, answer.integer()) : 10;
        std::unique_ptr<engine::Entity> made;
        if (spline()->controlZ.empty())
            made = engine::polylineFrom(*spline(), precision);
        else
            made = engine::polyline3dFrom(*spline(), precision);
        if (!made) {
            message("The spline cannot be converted.");
            co_return false;
        }
        group.begin();
        put(*spline(), std::move(made));
        co_return true;
    }

    std::uint64_t id_ = 0;
};

}  // namespace

KOVA_TOOL_COMMAND(Splinedit, "SPLINEDIT", "Edit Spline", "Modify", {"SPE"})

}  // namespace kova::cmd::commands
