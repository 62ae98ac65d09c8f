#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/drawing_transfer.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"
#include "doc/edit_pause.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;
using math::Vector2;

namespace fs = std::filesystem;

/// WBLOCK: writes a block, objects or the whole drawing, without what it does not use, to a file of its own.
class WblockTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string path = co_await askPath(ask);
        if (path.empty()) co_return;
        for (;;) {
            const Answer answer = co_await ask.text(
                "Enter name of existing block or [= (block=output file)/* (whole drawing)] <define new drawing>:");
            if (answer.isEnter()) co_return co_await writeObjects(ask, path);
            const std::string name = typedName(answer.text);
            const doc::EditPause pause(document());
            if (name == "*") {
                message(pause.line());
                std::vector<const engine::Entity*> entities;
                for (const engine::Entity& entity : drawing().modelSpace()) entities.push_back(&entity);
                write(path, entities, {}, drawing().basePoint);
                co_return;
            }
            const Name wanted(name == "=" ? fs::path(path).stem().string() : name);
            const engine::Block* block = drawing().findBlock(wanted);
            if (block == nullptr) {
                message("Block " + cmd::inQuotes(wanted.view()) + " not found.");
                continue;
            }
            message(pause.line());
            std::vector<const engine::Entity*> entities;
            for (const engine::Entity& entity : block->entities) entities.push_back(&entity);
            write(path, entities, -block->base, {});
            co_return;
        }
    }

private:
    /// The path of the file, with its extension; empty: given up.
    Task<std::string> askPath(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter name of output file:");
            if (answer.isEnter()) co_return std::string();
            fs::path path(typedPath(answer.text));
            if (path.empty() || path.string() == "~") {
                message(needsDialog("Write Block"));
                co_return std::string();
            }
            if (!path.has_extension()) path += ".kvcad";
            std::error_code error;
            if (!fs::exists(path, error) || engine::sysVarInt(drawing(), "EXPERT") >= 2) co_return path.string();
            const bool replace = co_await askYesNo(
                ask, "A drawing with this name already exists. Do you want to replace it? [Yes/No] <N>:", false);
            if (replace) co_return path.string();
        }
    }

    Dialogue writeObjects(Ask& ask, std::string path) {
        const Answer base = co_await ask.point("Specify insertion base point:");
        const Vector2 origin = base.isPoint() ? base.point : drawing().ucs.origin;
        const Answer selected = co_await ask.selection();
        const std::vector<std::uint64_t> ids = selected.ids;
        if (ids.empty()) {
            message("No objects selected.");
            co_return;
        }
        std::vector<const engine::Entity*> entities;
        for (const engine::Entity* entity : entitiesInOrder(document(), ids)) entities.push_back(entity);
        if (!write(path, entities, -origin, {})) co_return;
        const doc::GroupScope group(document(), "WBLOCK");
        document().removeEntities(ids);
    }

    bool write(const std::string& path, const std::vector<const engine::Entity*>& entities, const Vector2& shift,
               const Vector2& basePoint) {
        const std::unique_ptr<doc::Document> part = extractDrawing(drawing(), entities, shift);
        part->drawing().basePoint = basePoint;
        AppServices* services = host()->services();
        const std::string error = services != nullptr ? services->writeDrawing(part->drawing(), path)
                                                      : std::string("Files cannot be written here.");
        message(error.empty() ? "Saved: " + path : error);
        return error.empty();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Wblock, "WBLOCK", "Write Block", "File", {"W"})

}  // namespace kova::cmd::commands
