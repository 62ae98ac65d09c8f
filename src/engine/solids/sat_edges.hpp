#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "math/curves/path.hpp"
#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector3.hpp"

namespace kova::engine {

// Limits of what is taken from a modeller body.
inline constexpr std::size_t kMaxModelerRecords = 2'000'000;
inline constexpr std::size_t kMaxModelerEdges = 500'000;

/// One edge of a body in space.
struct ModelerEdge {
    enum class Kind : std::uint8_t { Line, Arc, Curve };
    Kind kind = Kind::Line;
    math::Vector3 start;
    math::Vector3 end;
    math::Vector3 center;  ///< Arc: point(t) = center + u cos t + v sin t, t from t0 to t1
    math::Vector3 u;
    math::Vector3 v;
    double t0 = 0.0;
    double t1 = 0.0;
    std::vector<math::Vector3> points;  ///< Curve: points on it, the ends included
};

struct ModelerEdges {
    std::vector<ModelerEdge> edges;
    /// Plan view of all edges; edges seen end on are left out.
    Path plan() const;
};

/// The edges of a body in modeller text (all releases; line breaks may stand anywhere between words) or in modeller
/// binary (told by its first bytes). The body's own transform is applied. Records that are not understood are passed
/// over; data that are no body give no edges.
ModelerEdges modelerEdges(std::string_view data);

/// The matrix of the numbers of a transform record: three rows that act on row vectors, the shift, the scale; nothing
/// when there are fewer than 13 finite numbers.
std::optional<math::Matrix4> modelerMatrix(const std::vector<double>& numbers);

/// Applies an affine transform to a body in modeller text or binary, through the body's transform record, which is
/// added when there is none. False, and no change, when the data are not understood or the matrix is singular.
bool transformModelerData(std::string& data, const math::Matrix4& m);

}  // namespace kova::engine
