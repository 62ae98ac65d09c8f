#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "cmd/dialogue.hpp"
#include "engine/associativity/associativity.hpp"
#include "engine/entities/dimensions/dimension.hpp"

namespace kova::cmd {

/// The straight piece, circle or arc of an entity that was picked.
struct PickedPiece {
    bool round = false;
    math::Vector2 a;  ///< ends of a line; of an arc counter-clockwise; of a circle its point at angle 0, twice
    math::Vector2 b;
    engine::MeasuredArc arc;   ///< round pieces
    bool full = false;         ///< a whole circle
    std::uint64_t handle = 0;  ///< of an entity that a dimension can follow as a circle or arc; 0: none
    std::int32_t segment = 0;  ///< of a polyline
    /// The viewport of a layout through which it was picked in the model; it then stands as it shows on paper.
    std::uint64_t viewport = 0;
    double viewScale = 0.0;

    /// The tie of a dimension that follows the whole circle or arc; none when it follows no such thing.
    std::vector<engine::DimensionLink> arcLinks() const;
};
/// The piece nearest to p: also within blocks, polylines and whatever else shows lines and circular arcs.
std::optional<PickedPiece> pickedPiece(const engine::Entity& entity, const math::Vector2& p);
/// Filters for Ask::object.
bool hasPiece(const engine::Entity& entity);
bool hasRoundPiece(const engine::Entity& entity);
bool isDimension(const engine::Entity& entity);

/// One entity for a dimension, which is only looked at. In a layout also an entity of the model, picked through a
/// viewport.
Task<Answer> askDimensioned(Ask& ask, std::string prompt, std::function<bool(const engine::Entity&)> filter);
/// The piece of what askDimensioned gave, as it shows in the current space.
std::optional<PickedPiece> pieceAt(doc::Document& document, const Answer& picked);

/// Ties to the entities of the current space that have a point where these definition points (1 to 4) lie; in a layout
/// also to those of the model, as a viewport shows them. One entity that explains several of them goes before any
/// other.
std::vector<engine::DimensionLink> findLinks(doc::Document& document, const engine::DimensionEntity& dimension,
                                             std::initializer_list<int> points);

/// Replaces the links of a dimension of the drawing, as part of the open group.
void relink(doc::Document& document, engine::DimensionEntity& dimension,
            const std::vector<engine::DimensionLink>& links);

/// The dimensions among entities; the others are counted and passed over.
std::vector<std::uint64_t> dimensionsOf(doc::Document& document, const std::vector<std::uint64_t>& ids);

/// Handle of the dimension that was made last in this session; 0: none, or it is gone.
engine::DimensionEntity* lastDimension(doc::Document& document);

/// DIMSCALE as a factor on sizes; 0 leaves it to the current annotation scale when the style is annotative.
double dimensionScale(const engine::Drawing& drawing, const engine::DimStyle& style);
/// Drawing units for one unit on paper at the current annotation scale.
double currentAnnotationScale(const engine::Drawing& drawing);
/// Marks an entity as annotative, at the current annotation scale, when its style is.
void applyAnnotationScale(const engine::Drawing& drawing, bool annotativeStyle, engine::Entity& entity);

/// The rotation that an answer to an angle question gives a dimension's text: a typed 0 leaves it to the style.
double dimensionTextAngle(const Answer& answer, const engine::Drawing& drawing);

/// What the commands that make dimensions share: the dimension under way and how it enters the drawing.
class DimensionTool : public DialogueTool {
protected:
    /// A fresh dimension in the current style with its overrides.
    void start(engine::DimensionType type);
    /// The text of the dimension under way as it measures, without an override of the user.
    std::string measuredText() const;
    /// Takes the options Mtext, Text and Angle; false: the answer is another one.
    Task<bool> takeTextOption(Ask& ask, Answer answer);
    /// Adds the dimension as a step of its own and tells its text. `points`: definition points to be tied to what lies
    /// there (DIMASSOC 2). Exploded with DIMASSOC 0. Gives its id; 0 when its points are not finite.
    std::uint64_t place(const char* label, std::initializer_list<int> points);
    /// The same for a dimension that follows a whole circle or arc.
    std::uint64_t placeOnArc(const char* label, const PickedPiece& piece);
    /// The same with ties that the caller knows; they count with DIMASSOC 2 only.
    std::uint64_t placeLinked(const char* label, const std::vector<engine::DimensionLink>& links);
    /// With DIMUPT on the text stands where the dimension line was pointed at.
    void takeUserText(const math::Vector2& at);

    /// The style of the dimension under way, its overrides included.
    engine::DimStyle styleInForce() const;

    engine::DimensionEntity dim_;
    bool quiet_ = false;  ///< the texts are not told

private:
    bool associates() const;
};

/// The options of takeTextOption, for Ask::point.
inline constexpr const char* kTextOptions = "Mtext Text Angle";

}  // namespace kova::cmd
