#include "engine/modify/flattened.hpp"

#include "cmd/command.hpp"
#include "engine/inquiry/value_text.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd::commands {

namespace {

/// A one-shot command on what is selected, else on all that can be selected.
class ConvertingCommand : public OneShotCommand {
public:
    using OneShotCommand::OneShotCommand;
    void execute(CommandContext& context) final {
        doc::SelectionSet& selection = context.document.selection();
        const bool chosen = !selection.empty();
        std::vector<std::uint64_t> ids = selection.ids();
        if (!chosen) ids = selectAll(context.document);
        std::size_t count = 0;
        {
            const doc::GroupScope group(context.document, name());
            for (const std::uint64_t id : ids)
                if (engine::Entity* entity = context.drawing().findById(id))
                    if (convert(context.document, *entity)) ++count;
        }
        tell(context, count);
        if (context.transparent || !chosen) return;
        context.previous = std::move(ids);
        selection.clear();
    }

protected:
    virtual bool convert(doc::Document& document, engine::Entity& entity) = 0;
    virtual void tell(const CommandContext& context, std::size_t count) = 0;
};

/// FLATTEN: heights and thicknesses become 0.
class FlattenCommand final : public ConvertingCommand {
public:
    FlattenCommand() : ConvertingCommand("FLATTEN", "Flatten", "Modify") {}

protected:
    bool convert(doc::Document& document, engine::Entity& entity) override {
        auto flat = engine::flattened(entity);
        if (!flat) return false;
        document.replaceEntity(entity, std::move(flat));
        return true;
    }
    void tell(const CommandContext& context, std::size_t count) override {
        context.message(counted(count, "object") + " flattened.");
    }
};

/// CONVERTPOLY: what old polylines carry beyond light ones goes. Curve and spline fits stay as they are.
class ConvertPolyCommand final : public ConvertingCommand {
public:
    ConvertPolyCommand() : ConvertingCommand("CONVERTPOLY", "Convert Polylines", "Modify") {}

protected:
    bool convert(doc::Document& document, engine::Entity& entity) override {
        const auto* polyline = dynamic_cast<const engine::PolylineEntity*>(&entity);
        if (polyline == nullptr || polyline->records.empty() || polyline->spline || !polyline->fit.empty())
            return false;
        document.modifyEntity(entity, [](engine::Entity& e) {
            auto& light = static_cast<engine::PolylineEntity&>(e);
            light.records.clear();
            light.curveType = 0;
        });
        return true;
    }
    void tell(const CommandContext& context, std::size_t count) override {
        context.message(counted(count, "polyline") + " converted.");
    }
};

KOVA_REGISTER_COMMAND(FlattenCommand)
KOVA_REGISTER_COMMAND(ConvertPolyCommand)

}  // namespace

}  // namespace kova::cmd::commands
