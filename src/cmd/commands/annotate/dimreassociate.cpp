#include "cmd/prompts/dimension_tool.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionEntity;
using engine::DimensionLink;
using engine::DimensionType;
using math::Vector2;

/// DIMREASSOCIATE: ties dimensions to what they are to follow, one after the other.
class DimReassociateTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        const std::vector<std::uint64_t> ids = dimensionsOf(document(), selected.ids);
        if (ids.empty()) co_return message("No dimensions selected.");
        for (const std::uint64_t id : ids) {
            const auto* dimension = dynamic_cast<const DimensionEntity*>(drawing().findById(id));
            if (dimension == nullptr) continue;
            switch (dimension->kind()) {
                case DimensionType::Radius:
                case DimensionType::Diameter:
                case DimensionType::ArcLength:
                    co_await tieArc(ask, id);
                    break;
                case DimensionType::Angular2Line:
                    co_await tieLines(ask, id);
                    break;
                case DimensionType::Angular3Point: {
                    static constexpr Question questions[] = {{3, "Specify angle vertex <next>:"},
                                                             {1, "Specify first angle endpoint <next>:"},
                                                             {2, "Specify second angle endpoint <next>:"}};
                    co_await tiePoints(ask, id, questions, false);
                    break;
                }
                case DimensionType::Ordinate:
                case DimensionType::OrdinateX: {
                    static constexpr Question questions[] = {{1, "Specify feature location <next>:"}};
                    co_await tiePoints(ask, id, questions, false);
                    break;
                }
                default: {
                    static constexpr Question questions[] = {
                        {1, "Specify first extension line origin or [Select object] <next>:"},
                        {2, "Specify second extension line origin <next>:"}};
                    co_await tiePoints(ask, id, questions, true);
                    break;
                }
            }
        }
    }

private:
    struct Question {
        int point;
        const char* prompt;
    };

    DimensionEntity* find(std::uint64_t id) const { return dynamic_cast<DimensionEntity*>(drawing().findById(id)); }

    /// One point after the other; Enter leaves the point, and the tie that it has, as it is.
    Dialogue tiePoints(Ask& ask, std::uint64_t id, std::span<const Question> questions, bool takesObject) {
        for (const Question& question : questions) {
            const bool first = takesObject && question.point == 1;
            const Answer answer = co_await ask.point(question.prompt, first ? "Select" : "");
            if (answer.isPoint()) {
                tie(id, question.point, answer.point);
            } else if (answer.is("SELECT")) {
                const Answer picked = co_await askDimensioned(ask, "Select object:", hasPiece);
                const auto piece = pieceAt(document(), picked);
                if (!piece) co_return;
                const doc::GroupScope group(document(), "DIMREASSOCIATE");
                tie(id, 1, piece->a);
                tie(id, 2, piece->b);
                co_return;
            }
        }
    }

    /// Ties a dimension; one that now measures through a viewport shows the model's units.
    void retie(DimensionEntity& dimension, const std::vector<DimensionLink>& links) {
        document().modifyEntity(dimension, [&](engine::Entity& e) {
            auto& d = static_cast<DimensionEntity&>(e);
            const std::vector<DimensionLink> before = engine::dimensionLinks(d);
            const bool through = !before.empty() && before.front().viewport != 0;
            if (!through) engine::measureThroughViewport(d, d.style(), links);
            engine::setDimensionLinks(d, links);
        });
    }

    /// Moves a definition point and ties it to what lies there.
    void tie(std::uint64_t id, int point, const Vector2& to) {
        DimensionEntity* dimension = find(id);
        if (dimension == nullptr) return;
        DimensionEntity probe(*dimension);
        engine::definitionPoint(probe, point) = to;
        std::vector<DimensionLink> links = engine::dimensionLinks(*dimension);
        std::erase_if(links, [&](const DimensionLink& link) { return link.point == point; });
        const std::vector<DimensionLink> found = findLinks(document(), probe, {point});
        links.insert(links.end(), found.begin(), found.end());
        if (found.empty()) message("No object has a point there: the point stays untied.");
        const doc::GroupScope group(document(), "DIMREASSOCIATE");
        document().modifyEntity(*dimension, [&](engine::Entity& e) {
            engine::definitionPoint(static_cast<DimensionEntity&>(e), point) = to;
        });
        retie(*dimension, links);
    }

    Dialogue tieArc(Ask& ask, std::uint64_t id) {
        const bool length = find(id)->kind() == DimensionType::ArcLength;
        const char* prompt = length ? "Select arc or polyline arc segment <next>:" : "Select arc or circle <next>:";
        const Answer picked = co_await askDimensioned(ask, prompt, hasRoundPiece);
        DimensionEntity* dimension = find(id);
        if (!picked.isObject() || dimension == nullptr) co_return;
        const auto piece = pieceAt(document(), picked);
        if (!piece || piece->handle == 0 || (length && piece->full)) co_return message("Object cannot be used here.");
        const doc::GroupScope group(document(), "DIMREASSOCIATE");
        retie(*dimension, piece->arcLinks());
    }

    Dialogue tieLines(Ask& ask, std::uint64_t id) {
        for (const int point : {1, 3}) {
            const char* prompt = point == 1 ? "Select first line <next>:" : "Select second line <next>:";
            const Answer picked = co_await askDimensioned(ask, prompt, hasPiece);
            if (!picked.isObject()) continue;
            const auto piece = pieceAt(document(), picked);
            if (!piece || piece->round) co_return message("Object cannot be used here.");
            const doc::GroupScope group(document(), "DIMREASSOCIATE");
            tie(id, point, piece->a);
            tie(id, point + 1, piece->b);
        }
    }
};

/// DIMDISASSOCIATE: from now on the dimensions stay where they are.
class DimDisassociateTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        const doc::GroupScope group(document(), "DIMDISASSOCIATE");
        std::size_t count = 0;
        for (const std::uint64_t id : dimensionsOf(document(), selected.ids)) {
            auto& dimension = static_cast<DimensionEntity&>(*drawing().findById(id));
            if (!engine::hasDimensionLinks(dimension)) continue;
            relink(document(), dimension, {});
            ++count;
        }
        message(std::to_string(count) + " disassociated.");
    }
};

/// DIMREGEN: all tied dimensions are brought to what they measure.
class DimRegenTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask&) override {
        const doc::GroupScope group(document(), "DIMREGEN");
        const std::size_t count = document().associativity().refreshAll(drawing());
        message(counted(count, "associative dimension") + " updated.");
        repaint();
        co_return;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DimReassociate, "DIMREASSOCIATE", "Reassociate Dimensions", "Annotate", {"DRE"})
KOVA_TOOL_COMMAND(DimDisassociate, "DIMDISASSOCIATE", "Disassociate Dimensions", "Annotate", {"DDA"})
KOVA_TOOL_COMMAND(DimRegen, "DIMREGEN", "Update Dimensions", "Annotate")

}  // namespace kova::cmd::commands
