#include "engine/entities/dimensions/mleader.hpp"

#include "cmd/prompts/annotation_prompts.hpp"
#include "edit/block_attributes.hpp"
#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::MLeaderContent;
using engine::MLeaderEntity;
using engine::MLeaderStyle;
using math::Vector2;

/// MLEADER: one leader line with a text or block, in the current multileader style.
class MLeaderTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        takeStyle();
        Order order = Order::Arrow;
        Vector2 first;
        for (;;) {
            const Answer answer = co_await askFirst(ask, order);
            if (answer.isPoint()) {
                first = answer.point;
                break;
            }
            if (answer.is("LANDING"))
                order = Order::Landing;
            else if (answer.is("CONTENT"))
                order = Order::Content;
            else if (answer.is("ARROWHEAD"))
                order = Order::Arrow;
            else
                co_await askOptions(ask);
        }
        std::vector<Vector2> points;
        if (order == Order::Arrow) {
            points.push_back(first);
            while (points.size() + 1 < maxPoints_) {
                const Answer next = co_await ask.point("Specify next point:", {}, points.back());
                if (!next.isPoint()) break;
                points.push_back(
                    constrained(points.back(), next.point, points.size() == 1 ? firstAngle_ : secondAngle_));
            }
            const Answer landing = co_await ask.point("Specify leader landing location:", {}, points.back());
            if (landing.isPoint())
                points.push_back(
                    constrained(points.back(), landing.point, points.size() == 1 ? firstAngle_ : secondAngle_));
            if (points.size() < 2) co_return;
        } else if (order == Order::Landing) {
            const Answer arrow = co_await ask.point("Specify leader arrowhead location:", {}, first);
            if (!arrow.isPoint()) co_return;
            points = {constrained(first, arrow.point, firstAngle_), first};
        }
        const bool given = co_await askContent(ask);
        if (!given) co_return;
        if (order == Order::Content) {
            const Answer arrow = co_await ask.point("Specify leader arrowhead location:", {}, first);
            if (!arrow.isPoint()) co_return;
            const double side = arrow.point.x > first.x ? -1.0 : 1.0;
            model_.contentPos = first;
            points = {arrow.point, first - Vector2{side * reach(), 0.0}};
        } else {
            const Vector2 landing = points.back();
            const double side = landing.x < points[points.size() - 2].x ? -1.0 : 1.0;
            model_.contentPos = landing + Vector2{side * reach(), 0.0};
        }
        auto leader = std::make_unique<MLeaderEntity>(model_);
        leader->heads.push_back({points});
        applyAnnotationScale(drawing(), style().annotative, *leader);
        const doc::GroupScope group(document(), "MLEADER");
        auto& added = static_cast<MLeaderEntity&>(addNew(document(), std::move(leader), "MLEADER"));
        if (order != Order::Content) besideLanding(added);
        repaint();
    }

private:
    enum class Order { Arrow, Landing, Content };

    /// A block stands with its edge, not its insertion point, at the end of the landing.
    void besideLanding(MLeaderEntity& leader) {
        if (leader.contentType != MLeaderContent::Block || leader.style().blockConnection == 1) return;
        const math::Bounds2 box = leader.contentBox();
        const double side = leader.side();
        const double over = side > 0.0 ? leader.contentPos.x - box.min.x : box.max.x - leader.contentPos.x;
        const Vector2 step{side * over, leader.contentPos.y - box.center().y};
        if (step == Vector2{} || !step.is_finite()) return;
        document().modifyEntity(leader, [&](engine::Entity& e) { static_cast<MLeaderEntity&>(e).contentPos += step; });
    }

    const MLeaderStyle& style() const {
        static const MLeaderStyle plain;
        const MLeaderStyle* current = drawing().mleaderStyles.find(drawing().currentMLeaderStyle);
        return current != nullptr ? *current : plain;
    }

    void takeStyle() {
        const MLeaderStyle& s = style();
        model_.styleName = drawing().currentMLeaderStyle;
        model_.contentType = s.contentType == 1   ? MLeaderContent::Block
                             : s.contentType == 0 ? MLeaderContent::None
                                                  : MLeaderContent::MText;
        model_.blockName = s.block;
        model_.hasLanding = s.hasLanding;
        model_.hasDogleg = s.hasDogleg;
        model_.landingDistance = s.landingDistance;
        model_.landingGap = s.landingGap;
        maxPoints_ = static_cast<std::size_t>(std::clamp(s.maxLeaderPoints, 2, 999));
        firstAngle_ = s.firstSegmentAngle;
        secondAngle_ = s.secondSegmentAngle;
    }

    /// From the landing point to the content.
    double reach() const {
        const double own = style().scaleFactor > 0.0 ? style().scaleFactor : 1.0;
        const double scale = style().annotative ? currentAnnotationScale(drawing()) : own;
        const bool dogleg = model_.hasLanding && model_.hasDogleg;
        const double gap = model_.contentType == MLeaderContent::MText ? model_.landingGap : 0.0;
        return ((dogleg ? model_.landingDistance : 0.0) + gap) * scale;
    }

    /// The point brought to the nearest direction that is a multiple of `angle` (0: any direction).
    static Vector2 constrained(const Vector2& from, const Vector2& to, double angle) {
        if (!(angle > 1e-6) || !std::isfinite(angle)) return to;
        const Vector2 way = to - from;
        const Vector2 direction = math::unitAt(std::round(way.angle() / angle) * angle);
        return from + direction * way.dot(direction);
    }

    Ask::Awaiter askFirst(Ask& ask, Order order) const {
        switch (order) {
            case Order::Landing:
                return ask.point(
                    "Specify leader landing location or [leader arrowHead first/Content first/Options] <Options>:",
                    "arrowHead Content Options");
            case Order::Content:
                return ask.point(
                    "Specify text location or [leader arrowHead first/leader Landing first/Options] <Options>:",
                    "arrowHead Landing Options");
            default:
                return ask.point(
                    "Specify leader arrowhead location or [leader Landing first/Content first/Options] <Options>:",
                    "Landing Content Options");
        }
    }

    Task<bool> askContent(Ask& ask) {
        if (model_.contentType == MLeaderContent::None) co_return true;
        if (model_.contentType == MLeaderContent::Block) {
            if (drawing().findBlock(model_.blockName) == nullptr) {
                const bool chosen = co_await askBlock(ask);
                if (!chosen) co_return false;
            }
            co_await askValues(ask);
            co_return true;
        }
        model_.textContent = co_await askParagraphs(ask, "MText:", "MText:");
        if (model_.textContent.empty()) model_.textContent = style().defaultText;
        if (model_.textContent.empty()) model_.contentType = MLeaderContent::None;
        co_return true;
    }

    /// The values of the block's attributes.
    Dialogue askValues(Ask& ask) {
        const auto definitions = [this] {
            const engine::Block* block = drawing().findBlock(model_.blockName);
            return block != nullptr ? attributeDefinitions(block->entities)
                                    : std::vector<const engine::AttributeDefinitionEntity*>();
        };
        const std::vector<std::string> values = co_await askAttributeValues(ask, drawing(), definitions);
        const auto known = definitions();
        model_.attributes.clear();
        for (std::size_t i = 0; i < known.size() && i < values.size(); ++i)
            model_.attributes.push_back({known[i]->tag, values[i], 1.0});
    }

    Task<bool> askBlock(Ask& ask) {
        for (;;) {
            const Answer name = co_await ask.text("Enter block name:");
            if (!name.isText()) co_return false;
            const engine::Block* block = drawing().findBlock(engine::Name(std::string(trimmed(name.text))));
            if (block != nullptr) {
                model_.blockName = block->name;
                co_return true;
            }
            message("Block " + inQuotes(name.text) + " not found.");
        }
    }

    Dialogue askOptions(Ask& ask) {
        for (;;) {
            const Answer option = co_await ask.keyword(
                "Enter an option [Leader type/leader lAnding/Content type/Maxpoints/First angle/Second angle/eXit "
                "options] <eXit options>:",
                "Leader lAnding Content Maxpoints First Second eXit");
            if (option.is("LEADER")) {
                co_await askLeaderType(ask);
            } else if (option.is("LANDING")) {
                const bool use = co_await askYesNo(ask, "Use landing [Yes/No] <Yes>:", true);
                model_.hasLanding = model_.hasDogleg = use;
                if (!use) continue;
                std::string prompt =
                    withDefault("Specify fixed landing distance", lengthDefault(drawing(), model_.landingDistance));
                const Answer distance = co_await ask.distance(std::move(prompt), {}, {}, kNotNegative);
                model_.landingDistance = distance.numberOr(model_.landingDistance);
                if (model_.landingDistance == 0.0) model_.hasDogleg = false;
            } else if (option.is("CONTENT")) {
                const Answer kind =
                    co_await ask.keyword("Select a content type [Block/Mtext/None] <Mtext>:", "Block Mtext None");
                model_.contentType = kind.is("BLOCK")  ? MLeaderContent::Block
                                     : kind.is("NONE") ? MLeaderContent::None
                                                       : MLeaderContent::MText;
                if (!kind.is("BLOCK")) continue;
                const bool chosen = co_await askBlock(ask);
                if (!chosen) model_.contentType = MLeaderContent::MText;
            } else if (option.is("MAXPOINTS")) {
                std::string prompt =
                    withDefault("Enter the maximum points for leader lines", std::to_string(maxPoints_));
                const Answer count = co_await ask.integer(std::move(prompt), 2, 999);
                if (count.isNumber()) maxPoints_ = static_cast<std::size_t>(count.integer());
            } else if (option.is("FIRST") || option.is("SECOND")) {
                double& angle = option.is("FIRST") ? firstAngle_ : secondAngle_;
                std::string prompt =
                    withDefault(option.is("FIRST") ? "Enter first angle constraint" : "Enter second angle constraint",
                                lengthDefault(drawing(), math::toDegrees(angle)));
                const Range degrees{0.0, 180.0};
                const Answer value = co_await ask.number(std::move(prompt), {}, degrees);
                if (value.isNumber()) angle = math::toRadians(value.number);
            } else {
                co_return;
            }
        }
    }

    Dialogue askLeaderType(Ask& ask) {
        const Answer kind =
            co_await ask.keyword("Select a leader type [Straight/sPline/None] <Straight>:", "Straight sPline None");
        const std::int32_t type = kind.is("SPLINE") ? 2 : kind.is("NONE") ? 0 : 1;
        model_.overrides.reset();
        if (type != style().leaderLineType)
            model_.setOverride(engine::MLeaderOverrides::kLeaderType, &MLeaderStyle::leaderLineType, type);
    }

    MLeaderEntity model_;
    std::size_t maxPoints_ = 2;
    double firstAngle_ = 0.0;
    double secondAngle_ = 0.0;
};

}  // namespace

KOVA_TOOL_COMMAND(MLeader, "MLEADER", "Multileader", "Annotate", {"MLD"})

}  // namespace kova::cmd::commands
