#include "engine/entities/dimensions/leader.hpp"

#include "cmd/prompts/annotation_prompts.hpp"
#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

using engine::LeaderEntity;
using math::Vector2;

/// What LEADER and QLEADER share: a line of points and what stands at its end.
class LeaderToolBase : public DialogueTool {
protected:
    explicit LeaderToolBase(const char* label) : label_(label) {}

    Vector2 end() const { return points_.back(); }

    /// The leader as entity, with a hook when something stands at its end.
    std::unique_ptr<LeaderEntity> makeLeader(bool annotated) const {
        auto leader = std::make_unique<LeaderEntity>();
        leader->vertices = points_;
        leader->splined = splined_;
        leader->hasArrow = arrow_;
        leader->dimStyleName = drawing().dimStyleOrStandard(drawing().currentDimStyle).name;
        // Overrides in force for new dimensions become the leader's own sizes.
        const engine::DimStyle style = drawing().effectiveDimStyle();
        const double scale = dimensionScale(drawing(), style);
        if (drawing().dimStyleOverrides.contains("DIMASZ")) leader->arrowSize = style.arrowSize * scale;
        if (drawing().dimStyleOverrides.contains("DIMTXT")) leader->textHeight = style.textHeight * scale;
        if (drawing().dimStyleNameOverrides.contains("DIMLDRBLK")) leader->arrowBlock = style.leaderArrowBlock;
        const Vector2 last = points_.back() - points_[points_.size() - 2];
        leader->hookDir = last.x < 0.0 ? 0 : 1;
        leader->hookLine = annotated && std::abs(std::atan2(last.y, std::abs(last.x))) > engine::kLeaderHookAngle;
        applyCurrentValues(document(), *leader);
        applyAnnotationScale(drawing(), style.annotative, *leader);
        return leader;
    }

    void finishPlain() {
        const doc::GroupScope group(document(), label_);
        document().addEntity(makeLeader(false));
        repaint();
    }

    /// The leader with a multiline text of its own, which it points from.
    void finishText(const std::string& content, double width) {
        const doc::GroupScope group(document(), label_);
        auto model = makeLeader(true);
        model->annotation = content;
        model->annotationWidth = width;
        auto& leader = static_cast<LeaderEntity&>(document().addEntity(std::move(model)));
        const engine::MTextBlock block = leader.textBlock();
        auto text = std::make_unique<engine::MTextEntity>();
        text->content = content;
        text->height = block.height;
        text->width = width;
        text->textStyle = block.textStyle;
        // The leader meets the middle of the first line to its right, of the last line to its left.
        const bool right = leader.hookDirection().x > 0.0;
        text->attachment = right ? engine::kAttachTopLeft : engine::kAttachBottomRight;
        text->position = {block.position.x, leader.endPoint().y + (right ? 0.5 : -0.5) * block.height};
        applyCurrentValues(document(), *text);
        const std::uint64_t handle = document().addEntity(std::move(text)).handle();
        document().modifyEntity(leader, [&](engine::Entity& e) {
            auto& l = static_cast<LeaderEntity&>(e);
            l.annotation.clear();
            l.annotationHandle = handle;
        });
        repaint();
    }

    /// The leader with another entity, placed so that it begins at the leader's end.
    void finishWith(std::unique_ptr<engine::Entity> entity, bool placed) {
        const doc::GroupScope group(document(), label_);
        auto& leader = static_cast<LeaderEntity&>(document().addEntity(makeLeader(!placed)));
        if (!placed) {
            const Vector2 end = leader.endPoint();
            const engine::DimStyle style = drawing().effectiveDimStyle();
            const double gap = std::abs(style.textGap) * dimensionScale(drawing(), style);
            // Left of the leader the entity's right edge meets it.
            Vector2 at = end + leader.hookDirection() * gap;
            entity->transform(math::Matrix4::translation(at - anchor(*entity)));
        }
        engine::Entity& added = document().addEntity(std::move(entity));
        if (!placed && leader.hookDir == 0) {
            const math::Bounds2 box = added.bounds();
            const double over = box.is_empty() ? 0.0 : box.max.x - leader.endPoint().x;
            if (over > 0.0)
                document().modifyEntity(added, [&](engine::Entity& e) {
                    e.transform(math::Matrix4::translation(Vector2{-over, 0.0}));
                });
        }
        const std::uint64_t handle = added.handle();
        document().modifyEntity(leader,
                                [&](engine::Entity& e) { static_cast<LeaderEntity&>(e).annotationHandle = handle; });
        repaint();
    }

    /// The annotation by its kind; nothing chosen: multiline text.
    Dialogue annotate(Ask& ask, Answer kind) {
        if (kind.is("NONE")) co_return finishPlain();
        if (kind.is("TOLERANCE")) {
            const bool given = co_await askTolerance(ask, tolerance_);
            if (!given) co_return finishPlain();
            auto tolerance = std::make_unique<engine::ToleranceEntity>(tolerance_);
            tolerance->styleName = drawing().dimStyleOrStandard(drawing().currentDimStyle).name;
            applyCurrentValues(document(), *tolerance);
            co_return finishWith(std::move(tolerance), false);
        }
        if (kind.is("COPY")) {
            const Answer picked = co_await ask.object("Select an object to copy:", {}, canCopy);
            const engine::Entity* source = picked.isObject() ? drawing().findById(picked.id) : nullptr;
            if (source == nullptr) co_return finishPlain();
            std::unique_ptr<engine::Entity> copy = source->clone();
            copy->setHandle(0);
            co_return finishWith(std::move(copy), false);
        }
        if (kind.is("BLOCK")) {
            co_await annotateWithBlock(ask);
            co_return;
        }
        const std::string content = co_await askParagraphs(ask, "MText:", "MText:");
        if (content.empty()) co_return finishPlain();
        finishText(content, width_);
    }

    std::vector<Vector2> points_;
    bool splined_ = false;
    bool arrow_ = true;
    double width_ = 0.0;

private:
    static bool canCopy(const engine::Entity& entity) {
        using engine::EntityType;
        const EntityType type = entity.type();
        return type == EntityType::MText || type == EntityType::Text || type == EntityType::Tolerance ||
               type == EntityType::BlockReference;
    }

    /// The point of an annotation that meets the leader.
    static Vector2 anchor(const engine::Entity& entity) {
        if (const auto* tolerance = dynamic_cast<const engine::ToleranceEntity*>(&entity)) return tolerance->insertion;
        if (const auto* block = dynamic_cast<const engine::BlockReferenceEntity*>(&entity)) return block->insert;
        const math::Bounds2 box = entity.bounds();
        return box.is_empty() ? Vector2{} : Vector2{box.min.x, box.center().y};
    }

    Dialogue annotateWithBlock(Ask& ask) {
        const engine::Block* block = nullptr;
        while (block == nullptr) {
            const Answer name = co_await ask.text("Enter block name or [?]:", "?");
            if (name.isEnter()) co_return finishPlain();
            if (name.isText()) {
                block = drawing().findBlock(engine::Name(std::string(trimmed(name.text))));
                if (block == nullptr) message("Block \"" + name.text + "\" not found.");
                continue;
            }
            for (const auto& known : drawing().blocks())
                if (!known->name.view().starts_with("*")) message(known->name.str());
        }
        const engine::Name name = block->name;
        const Answer at = co_await ask.point("Specify insertion point <leader end>:", {}, end());
        const Range factors{-1e100, 1e100, true};
        const Answer scale = co_await ask.number("Enter scale factor <1>:", {}, factors);
        const Answer angle = co_await ask.angle("Specify rotation angle <0>:");
        auto reference = std::make_unique<engine::BlockReferenceEntity>(name, at.isPoint() ? at.point : end());
        reference->scaleX = reference->scaleY = scale.numberOr(1.0);
        reference->rotation = angle.isNumber() ? worldDirection(angle, drawing()) : ucsRotation(drawing());
        applyCurrentValues(document(), *reference);
        finishWith(std::move(reference), true);
    }

    const char* label_;
    engine::ToleranceEntity tolerance_;
};

/// LEADER: any number of points, then the annotation.
class LeaderTool final : public LeaderToolBase {
public:
    LeaderTool() : LeaderToolBase("LEADER") {}

protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point("Specify leader start point:");
        if (!first.isPoint()) co_return;
        points_.push_back(first.point);
        const Answer second = co_await ask.point("Specify next point:", {}, end());
        if (!second.isPoint()) co_return;
        points_.push_back(second.point);
        for (;;) {
            const Answer next = co_await ask.point(
                "Specify next point or [Annotation/Format/Undo] <Annotation>:", "Annotation Format Undo", end());
            if (next.isPoint()) {
                points_.push_back(next.point);
            } else if (next.is("UNDO")) {
                if (points_.size() > 2)
                    points_.pop_back();
                else
                    message("Nothing to undo.");
            } else if (next.is("FORMAT")) {
                co_await askFormat(ask);
            } else {
                break;
            }
            ask.setLastPoint(end());
        }
        const std::string content = co_await askParagraphs(
            ask, "Enter first line of annotation text or <options>:", "Enter next line of annotation text:");
        if (!content.empty()) co_return finishText(content, 0.0);
        const Answer kind = co_await ask.keyword(
            "Enter an annotation option [Tolerance/Copy/Block/None/Mtext] <Mtext>:", "Tolerance Copy Block None Mtext");
        co_await annotate(ask, kind);
    }

private:
    Dialogue askFormat(Ask& ask) {
        const Answer format = co_await ask.keyword("Enter leader format option [Spline/STraight/Arrow/None] <Exit>:",
                                                   "Spline STraight Arrow None");
        if (format.is("SPLINE")) splined_ = true;
        if (format.is("STRAIGHT")) splined_ = false;
        if (format.is("ARROW")) arrow_ = true;
        if (format.is("NONE")) arrow_ = false;
    }
};

/// QLEADER: a few points and a text, after settings that stay.
class QLeaderTool final : public LeaderToolBase {
public:
    QLeaderTool() : LeaderToolBase("QLEADER") {}

protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer first =
                co_await ask.point("Specify first leader point, or [Settings] <Settings>:", "Settings");
            if (first.isPoint()) {
                points_.push_back(first.point);
                break;
            }
            co_await askSettings(ask);
        }
        splined_ = setting(kSpline, 0) != 0;
        const auto most = static_cast<std::size_t>(setting(kPoints, 3));
        while (points_.size() < most) {
            const Answer next = co_await ask.point("Specify next point:", {}, end());
            if (!next.isPoint()) break;
            points_.push_back(next.point);
        }
        if (points_.size() < 2) co_return;
        const int kind = setting(kKind, 0);
        if (kind != 0) {
            Answer answer;
            answer.kind = Answer::Kind::Keyword;
            answer.word = engine::upperCase(kKinds[kind]);
            co_await annotate(ask, answer);
            co_return;
        }
        const Answer width = co_await ask.distance("Specify text width <0>:", {}, end(), kNotNegative);
        width_ = width.numberOr(0.0);
        const std::string content = co_await askParagraphs(
            ask, "Enter first line of annotation text <Mtext>:", "Enter next line of annotation text:");
        if (!content.empty()) co_return finishText(content, width_);
        const Answer paragraphs;
        co_await annotate(ask, paragraphs);
    }

private:
    static constexpr const char* kSpline = "qleaderSpline";
    static constexpr const char* kPoints = "qleaderPoints";
    static constexpr const char* kKind = "qleaderKind";
    static constexpr const char* kKinds[] = {"Mtext", "Copy", "Tolerance", "Block", "None"};

    int setting(const char* name, int fallback) const {
        return static_cast<int>(remembered(document(), name, fallback));
    }

    Dialogue askSettings(Ask& ask) {
        const int kind = setting(kKind, 0);
        std::string prompt = withDefault("Enter annotation type [Mtext/Copy/Tolerance/Block/None]", kKinds[kind]);
        const Answer type = co_await ask.keyword(std::move(prompt), "Mtext Copy Tolerance Block None");
        for (int i = 0; i < 5; ++i)
            if (type.is(kKinds[i])) remember(document(), kKind, i);
        const bool spline = setting(kSpline, 0) != 0;
        const Answer line = co_await ask.keyword(spline ? "Enter leader line type [STraight/SPline] <SPline>:"
                                                        : "Enter leader line type [STraight/SPline] <STraight>:",
                                                 "STraight SPline");
        if (!line.isEnter()) remember(document(), kSpline, line.is("SPLINE") ? 1 : 0);
        std::string count = withDefault("Enter maximum number of points", std::to_string(setting(kPoints, 3)));
        const Answer points = co_await ask.integer(std::move(count), 2, 999);
        if (points.isNumber()) remember(document(), kPoints, points.integer());
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Leader, "LEADER", "Leader", "Annotate", {"LEAD"})
KOVA_TOOL_COMMAND(QLeader, "QLEADER", "Quick Leader", "Annotate", {"LE"})

}  // namespace kova::cmd::commands
