#include "cmd/prompts/clip_boundary.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockReferenceEntity;
using math::Vector2;

using Polygon = std::vector<Vector2>;

/// XCLIP: shows only a part of block references.
class XclipTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        for (const std::uint64_t id : selected.ids)
            if (dynamic_cast<const BlockReferenceEntity*>(drawing().findById(id)) != nullptr) ids_.push_back(id);
        if (ids_.empty()) {
            if (!selected.ids.empty()) message("No block references selected.");
            co_return;
        }
        const Answer option = co_await ask.keyword(
            "Enter clipping option [ON/OFF/Clipdepth/Delete/generate Polyline/New boundary] <New>:",
            "ON OFF Clipdepth Delete Polyline New");
        if (option.is("ON") || option.is("OFF"))
            edit(true, [&](BlockReferenceEntity& reference) { reference.clipEnabled = option.is("ON"); });
        else if (option.is("CLIPDEPTH"))
            message("Clips have no depth here.");
        else if (option.is("DELETE"))
            edit(true, remove);
        else if (option.is("POLYLINE"))
            generate();
        else
            co_await define(ask);
    }

private:
    std::vector<BlockReferenceEntity*> references() const {
        std::vector<BlockReferenceEntity*> found;
        for (const std::uint64_t id : ids_)
            if (auto* reference = dynamic_cast<BlockReferenceEntity*>(drawing().findById(id)))
                found.push_back(reference);
        return found;
    }

    static bool hasClip(const BlockReferenceEntity& reference) { return reference.clipBoundary.size() >= 2; }
    static void remove(BlockReferenceEntity& reference) {
        reference.clipBoundary.clear();
        reference.clipInverted = false;
        reference.clipEnabled = true;
    }

    /// Changes the references, `clipped`: only those with a boundary.
    void edit(bool clipped, const std::function<void(BlockReferenceEntity&)>& change) {
        const doc::GroupScope group(document(), "XCLIP");
        std::size_t count = 0;
        for (BlockReferenceEntity* reference : references()) {
            if (clipped && !hasClip(*reference)) continue;
            document().modifyEntity(
                *reference, [&](engine::Entity& entity) { change(static_cast<BlockReferenceEntity&>(entity)); });
            ++count;
        }
        if (count == 0) message("No clipping boundary found.");
        repaint();
    }

    /// A polyline along each boundary.
    void generate() {
        const doc::GroupScope group(document(), "XCLIP");
        std::size_t count = 0;
        for (const BlockReferenceEntity* reference : references()) {
            BlockReferenceEntity copy(*reference);
            copy.clipEnabled = true;
            Polygon polygon = copy.clipPolygon();
            if (polygon.empty()) continue;
            const math::Matrix4 matrix = reference->blockMatrix();
            for (Vector2& p : polygon) p = matrix.transform_point(p);
            addNew(document(), std::make_unique<engine::PolylineEntity>(std::move(polygon), true), "XCLIP");
            ++count;
        }
        if (count == 0) message("No clipping boundary found.");
    }

    Dialogue define(Ask& ask) {
        const auto all = references();
        if (std::any_of(all.begin(), all.end(), [](const auto* r) { return hasClip(*r); })) {
            const bool replace = co_await askYesNo(ask, "Delete old boundary(s)? [Yes/No] <Yes>:", true);
            if (!replace) co_return;
        }
        bool inverted = false;
        const Polygon polygon = co_await askClipBoundary(
            ask, document(),
            "Specify clipping boundary or select invert option: [Select polyline/Polygonal/Rectangular/Invert clip] "
            "<Rectangular>:",
            &inverted);
        if (polygon.size() < 3) co_return;
        const std::size_t chosen = clip(polygon, inverted);
        if (chosen == 0) message("The boundary cannot be used.");
    }

    std::size_t clip(const Polygon& polygon, bool inverted) {
        const doc::GroupScope group(document(), "XCLIP");
        std::size_t count = 0;
        for (BlockReferenceEntity* reference : references()) {
            // The boundary stands in the block's own coordinates.
            const auto toBlock = reference->blockMatrix().inverse();
            if (!toBlock) continue;
            document().modifyEntity(*reference, [&](engine::Entity& entity) {
                auto& target = static_cast<BlockReferenceEntity&>(entity);
                target.clipBoundary.clear();
                for (const Vector2& p : polygon) target.clipBoundary.push_back(toBlock->transform_point(p));
                target.clipInverted = inverted;
                target.clipEnabled = true;
            });
            ++count;
        }
        repaint();
        return count;
    }

    std::vector<std::uint64_t> ids_;
};

}  // namespace

KOVA_TOOL_COMMAND(Xclip, "XCLIP", "Clip Reference", "Insert", {"XC"})

}  // namespace kova::cmd::commands
