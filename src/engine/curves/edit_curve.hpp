#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

/// One element of a path with its start; a line may run on without end.
struct CurvePiece {
    math::Vector2 from;
    PathElement element;

    math::Vector2 pointAt(double t) const { return elementPoint(element, from, t); }
    math::Vector2 tangentAt(double t) const { return elementTangent(element, from, t); }
    math::Bounds2 bounds() const { return elementBounds(element, from); }
    bool isStraight() const {
        return element.kind == PathElement::Kind::Line || element.kind == PathElement::Kind::Close;
    }
    bool isCircular() const;
};

/// What lines, circles, arcs, ellipses, polylines, splines, construction lines and rays have in common: a curve in
/// plan, piece after piece, whose parts are entities again. A place on it is a number u: piece i runs from i to i + 1,
/// a ray from 0 and a construction line from anywhere, in drawing units from the base point.
class EditCurve {
public:
    /// Nothing for a kind that is no curve, and for one without length or with values that are not finite.
    static std::optional<EditCurve> of(const Entity& entity);

    const Entity& entity() const { return *entity_; }
    bool closed() const { return closed_; }
    /// A ray or construction line: its one piece is one drawing unit long and counts as unbounded.
    bool isUnbounded() const { return unbounded_ != 0; }
    double start() const;
    double end() const;
    const std::vector<CurvePiece>& pieces() const { return pieces_; }

    /// Point and direction at u; beyond an open end lines run on straight, and arcs round their circle.
    math::Vector2 pointAt(double u) const;
    math::Vector2 tangentAt(double u) const;
    /// The u nearest to p, within start and end.
    double nearest(const math::Vector2& p) const;
    /// Length of the part between; infinite for an unbounded one.
    double length(double u0, double u1) const;
    /// The u at which `length` drawing units from `u` are run (backwards when negative), within start and end.
    double advance(double u, double length) const;
    /// A size that tolerances can be measured by: the reach of the coordinates in drawing units.
    double scale() const { return scale_; }

    /// The part from u0 to u1 as a new entity with the properties of the old one (handle 0); u beyond the ends extends
    /// it where the kind can be extended. A closed curve with u1 <= u0 runs over its start. Null when nothing is left.
    std::unique_ptr<Entity> part(double u0, double u1) const;
    /// True when the part may reach beyond that end (`atEnd`: the far one).
    bool extendable(bool atEnd) const;

private:
    std::unique_ptr<Entity> polylinePart(double u0, double u1) const;
    std::unique_ptr<Entity> splinePart(double u0, double u1) const;

    const Entity* entity_ = nullptr;
    std::vector<CurvePiece> pieces_;
    bool closed_ = false;
    int unbounded_ = 0;  ///< 1 a ray, 2 a construction line
    double scale_ = 1.0;
};

/// A B-spline that runs along cubics which follow each other, with the common properties of `like`.
std::unique_ptr<Entity> splineAlong(const std::vector<math::Cubic>& cubics, bool closed, const Entity& like);

/// Where two pieces meet: parameters on both.
struct PieceHit {
    double s;
    double t;
};
/// Appends the meetings of two pieces, ends included within `tolerance`; of stretches that they share the ends. Lines
/// count as unbounded where asked for (s or t may then lie outside [0, 1]), arcs as whole ellipses.
void meetPieces(const CurvePiece& a, const CurvePiece& b, double tolerance, std::vector<PieceHit>& out,
                bool wholeA = false, bool wholeB = false);

}  // namespace kova::engine
