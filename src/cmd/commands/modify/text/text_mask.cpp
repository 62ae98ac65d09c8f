#include "edit/boundary_shapes.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/groups.hpp"
#include "cmd/registry.hpp"
#include "doc/table_edits.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/face3d.hpp"
#include "engine/entities/solid2d.hpp"
#include "engine/entities/wipeout.hpp"
#include "engine/modify/text_placing.hpp"
#include "math/curves/curves.hpp"

#include <unordered_map>
#include <unordered_set>

// TEXTMASK, TEXTUNMASK and TCIRCLE: shapes behind and round texts.

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using math::Vector2;
using Box = std::array<Vector2, 4>;

/// The description of the groups that tie texts to their masks; that is how masks are known again.
constexpr const char* kMaskGroup = "Text mask";
constexpr double kUsualOffset = 0.35;

/// A text's box with a margin in text heights; nothing for what has no letters.
std::optional<Box> boxAround(const Entity& text, double offset) {
    auto box = engine::letterBox(text);
    if (!box) return box;
    const double margin = offset * engine::letterHeight(text);
    const Vector2 x = Vector2::from_angle(engine::readingAngle(text)) * margin;
    const Vector2 y = x.perpendicular();
    auto& b = *box;
    b = {b[0] - x - y, b[1] + x - y, b[2] + x + y, b[3] - x + y};
    return box;
}

/// Texts of a selection.
std::vector<Entity*> textsOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids) {
    std::vector<Entity*> texts;
    for (const std::uint64_t id : ids)
        if (Entity* e = drawing.findById(id); e != nullptr && engine::isPlacedText(*e)) texts.push_back(e);
    return texts;
}

/// Takes away masks and their groups, of all texts (or masks) among the ids, as part of the open group. Gives the
/// number of masks.
std::size_t removeMasks(doc::Document& document, const std::vector<std::uint64_t>& ids) {
    std::vector<engine::Name> names;
    std::vector<std::uint64_t> masks;
    for (const engine::Name name : groupsOf(document.drawing(), ids)) {
        const engine::Group* group = document.drawing().groups.find(name);
        if (group == nullptr || group->description != kMaskGroup) continue;
        names.push_back(name);
        for (const std::uint64_t handle : group->memberHandles) {
            const Entity* member = document.drawing().findByHandle(handle);
            if (member != nullptr && !engine::isPlacedText(*member)) masks.push_back(member->id());
        }
    }
    if (names.empty()) return 0;
    document.editTable<doc::GroupTraits>([&](auto& groups) {
        for (const engine::Name name : names) groups.erase(name);
    });
    return document.removeEntities(masks);
}

enum class MaskKind { Wipeout, Face, Solid };
constexpr const char* kMaskNames[] = {"Wipeout", "3dface", "Solid"};

std::unique_ptr<Entity> makeMask(MaskKind kind, const Box& b) {
    if (kind == MaskKind::Wipeout) {
        auto mask = std::make_unique<engine::WipeoutEntity>(std::vector<Vector2>(b.begin(), b.end()));
        mask->showFrame = false;
        return mask;
    }
    if (kind == MaskKind::Solid) {
        auto mask = std::make_unique<engine::Solid2DEntity>();
        mask->corners = {b[0], b[1], b[3], b[2]};
        return mask;
    }
    auto mask = std::make_unique<engine::Face3DEntity>();
    for (std::size_t i = 0; i < 4; ++i) mask->corners[i] = math::Vector3(b[i]);
    mask->edgeFlags = 15;
    return mask;
}

/// TEXTMASK: an area behind each text hides what lies below.
class TextMaskTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        offset_ = remembered(document(), "TEXTMASK offset", kUsualOffset);
        kind_ = static_cast<MaskKind>(static_cast<int>(remembered(document(), "TEXTMASK kind", 0.0)));
        for (;;) {
            message("Current settings: Offset factor = " + lengthDefault(drawing(), offset_) +
                    ", Mask type = " + kMaskNames[static_cast<int>(kind_)]);
            const Answer selected =
                co_await ask.selection("Select text objects to mask or [MAsktype/Offset]:", "MAsktype Offset");
            if (selected.is("MASKTYPE")) {
                std::string prompt = withDefault("Specify entity type to use for mask [Wipeout/3dface/Solid]",
                                                 kMaskNames[static_cast<int>(kind_)]);
                const Answer kind = co_await ask.keyword(std::move(prompt), "Wipeout 3dface Solid");
                if (!kind.isEnter())
                    kind_ = kind.is("WIPEOUT") ? MaskKind::Wipeout
                            : kind.is("SOLID") ? MaskKind::Solid
                                               : MaskKind::Face;
                remember(document(), "TEXTMASK kind", static_cast<double>(kind_));
            } else if (selected.is("OFFSET")) {
                std::string prompt =
                    withDefault("Enter offset factor relative to text height", lengthDefault(drawing(), offset_));
                const Answer offset = co_await ask.number(std::move(prompt), {}, kNotNegative);
                offset_ = offset.numberOr(offset_);
                remember(document(), "TEXTMASK offset", offset_);
            } else {
                co_return mask(selected.ids);
            }
        }
    }

private:
    void mask(const std::vector<std::uint64_t>& ids) {
        const doc::GroupScope group(document(), "TEXTMASK");
        std::unordered_map<const Entity*, Entity*> below;  // the mask of each text
        const std::vector<Entity*> texts = textsOf(drawing(), ids);
        std::vector<std::uint64_t> textIds;
        for (const Entity* text : texts) textIds.push_back(text->id());
        removeMasks(document(), textIds);
        for (Entity* text : texts) {
            const auto box = boxAround(*text, offset_);
            if (!box) continue;
            std::unique_ptr<Entity> mask = makeMask(kind_, *box);
            applyCurrentValues(document(), *mask);
            mask->setThickness(0.0);
            mask->layer = text->layer;
            mask->elevation = text->elevation;
            if (auto* face = dynamic_cast<engine::Face3DEntity*>(mask.get()))
                for (math::Vector3& corner : face->corners) corner.z = text->elevation;
            Entity& added = document().addEntity(std::move(mask));
            below.emplace(text, &added);
        }
        if (below.empty()) return;
        tie(texts, below);
        engine::EntityList& space = drawing().currentSpace();
        std::unordered_set<const Entity*> masks;
        for (const auto& [text, mask] : below) masks.insert(mask);
        std::vector<Entity*> order;
        for (Entity* entity : space.entities()) {
            if (masks.contains(entity)) continue;
            if (const auto own = below.find(entity); own != below.end()) order.push_back(own->second);
            order.push_back(entity);
        }
        document().setDrawOrder(space, order);
        message(counted(below.size(), "text object") + " masked.");
    }

    /// Each text and its mask become a group; all in one edit.
    void tie(const std::vector<Entity*>& texts, const std::unordered_map<const Entity*, Entity*>& below) {
        document().editTable<doc::GroupTraits>([&](auto& groups) {
            for (const Entity* text : texts) {
                const auto mask = below.find(text);
                if (mask == below.end()) continue;
                engine::Group fresh;
                fresh.name = groups.freeName("*A");
                fresh.description = kMaskGroup;
                fresh.memberHandles = {mask->second->handle(), text->handle()};
                groups.add(std::move(fresh));
            }
        });
    }

    double offset_ = kUsualOffset;
    MaskKind kind_ = MaskKind::Wipeout;
};

class TextUnmaskTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        message("Select text or mtext objects from which to remove masks.");
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        std::size_t count = 0;
        {
            const doc::GroupScope group(document(), "TEXTUNMASK");
            count = removeMasks(document(), selected.ids);
        }
        message(counted(count, "mask") + " removed.");
    }
};

/// TCIRCLE: a circle, a slot or a rectangle round every text.
class TCircleTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (textsOf(drawing(), selected.ids).empty()) co_return;
        const double last = remembered(document(), "TCIRCLE offset", kUsualOffset);
        std::string prompt = withDefault("Enter distance offset factor", lengthDefault(drawing(), last));
        const Answer offset = co_await ask.number(std::move(prompt), {}, kNotNegative);
        const double factor = offset.numberOr(last);
        remember(document(), "TCIRCLE offset", factor);
        const Answer shape =
            co_await ask.keyword("Enclose text with [Circles/Slots/Rectangles] <Circles>:", "Circles Slots Rectangles");
        const bool slots = shape.is("SLOTS");
        const bool rectangles = shape.is("RECTANGLES");
        const std::string noun = slots ? "slots" : rectangles ? "rectangles" : "circles";
        const Answer size = co_await ask.keyword(
            "Create " + noun + " of constant or variable size [Constant/Variable] <Variable>:", "Constant Variable");
        bool sameWidth = size.is("CONSTANT");
        bool sameHeight = sameWidth;
        if (sameWidth && (slots || rectangles)) {
            std::string question = "Maintain constant ";
            question += slots ? "slot" : "rectangle";
            const Answer which = co_await ask.keyword(question + " [Width/Height/Both] <Both>:", "Width Height Both");
            sameWidth = !which.is("HEIGHT");
            sameHeight = !which.is("WIDTH");
        }
        enclose(textsOf(drawing(), selected.ids), factor, slots, rectangles, sameWidth, sameHeight);
    }

private:
    struct Frame {
        Vector2 center;
        Vector2 x;  ///< direction of the text
        double width;
        double height;
        double elevation;
    };

    void enclose(const std::vector<Entity*>& texts, double factor, bool slots, bool rectangles, bool sameWidth,
                 bool sameHeight) {
        std::vector<Frame> frames;
        double widest = 0.0;
        double highest = 0.0;
        for (const Entity* text : texts) {
            // A circle goes round the letters' corners at that distance, the other shapes round their box.
            const bool circle = !slots && !rectangles;
            const auto box = boxAround(*text, circle ? 0.0 : factor);
            if (!box) continue;
            Frame f{(*box)[0].lerp((*box)[2], 0.5), ((*box)[1] - (*box)[0]).normalized(), 0.0, 0.0, text->elevation};
            f.width = (*box)[0].distance_to((*box)[1]);
            f.height = (*box)[0].distance_to((*box)[3]);
            if (circle) f.width = f.height = std::hypot(f.width, f.height) + 2.0 * factor * engine::letterHeight(*text);
            widest = std::max(widest, f.width);
            highest = std::max(highest, f.height);
            frames.push_back(f);
        }
        const doc::GroupScope group(document(), "TCIRCLE");
        for (Frame& f : frames) {
            if (sameWidth) f.width = widest;
            if (sameHeight) f.height = highest;
            std::unique_ptr<Entity> shape;
            if (slots || rectangles) {
                shape = polylineOf(outline(f, slots));
            } else {
                shape = std::make_unique<engine::CircleEntity>(f.center, f.width / 2.0);
            }
            applyCurrentValues(document(), *shape);
            shape->elevation = f.elevation;
            document().addEntity(std::move(shape));
        }
        message(counted(frames.size(), "text object") + " enclosed.");
    }

    /// Counter-clockwise from the lower left; the ends of a slot are half circles outside the text's box.
    static math::BoundaryLoop outline(const Frame& f, bool slot) {
        const Vector2 x = f.x * (f.width / 2.0);
        const Vector2 y = f.x.perpendicular() * (f.height / 2.0);
        math::BoundaryLoop loop;
        loop.points = {f.center - x - y, f.center + x - y, f.center + x + y, f.center - x + y};
        loop.bulges = slot ? std::vector<double>{0.0, 1.0, 0.0, 1.0} : std::vector<double>(4, 0.0);
        return loop;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(TextMask, "TEXTMASK", "Mask Text", "Modify")
KOVA_TOOL_COMMAND(TextUnmask, "TEXTUNMASK", "Unmask Text", "Modify")
KOVA_TOOL_COMMAND(TCircle, "TCIRCLE", "Enclose Text", "Modify")

}  // namespace kova::cmd::commands
