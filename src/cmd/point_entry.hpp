#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cmd/point_input.hpp"
#include "doc/document.hpp"
#include "engine/pick/snap_points.hpp"

namespace kova::cmd {

/// What a point prompt takes besides plain coordinates: object snap words, FROM, M2P, TK, point filters, world and
/// absolute coordinates, angles that know no ANGBASE. A word may stand on the line of its point or alone; the further
/// points are then asked for one by one. Words may stand within each other.
class PointEntry {
public:
    enum class Result {
        NotMine,  ///< no such input; what was waiting waits on
        Waiting,  ///< prompt() asks for the next point
        Point,    ///< point() holds the answer
        Refused,  ///< refusal() says why (empty: the user gave up); see waiting() whether something still waits
    };

    /// Takes a line at a prompt whose relative input starts at `base`. `from`: where perpendiculars and tangents start,
    /// when the command has a point already.
    Result feed(doc::Document& document, std::string_view line, const math::Vector2& base,
                const std::optional<math::Vector2>& from, const math::Vector2& cursor);
    bool waiting() const { return !frames_.empty(); }
    std::string prompt() const;
    const math::Vector2& point() const { return point_; }
    const std::string& refusal() const { return refusal_; }
    void reset() { frames_.clear(); }

private:
    enum class Kind { Snap, From, Middle, Filter, Track };
    /// A word that waits for its points.
    struct Frame {
        Kind kind = Kind::Snap;
        engine::SnapKinds snaps = 0;
        bool hasFirst = false;  ///< From, Middle, Track
        math::Vector2 first;
        unsigned have = 0;     ///< Filter: coordinates that are known, bits 1 x, 2 y, 4 z
        unsigned pending = 0;  ///< Filter: coordinates that the next point gives
        math::Vector2 known;   ///< Filter: in the user's coordinate system
    };
    enum class Step { More, Done, Failed };

    /// Puts the word's frame on the stack. False: no such word, or (refusal_ set) one that cannot be used.
    bool startWord(std::string_view word);
    bool startFilter(std::string_view word);
    /// The innermost point that relative input starts at.
    math::Vector2 relativeBase(const math::Vector2& base) const;
    std::optional<math::Vector2> read(std::string_view text, const PointContext& context, const math::Vector2& base,
                                      const math::Vector2& cursor) const;
    /// Gives a point to what waits for it, from the inside out.
    Step take(doc::Document& document, math::Vector2 p, bool relative, const std::optional<math::Vector2>& from);

    std::vector<Frame> frames_;
    math::Vector2 point_;
    std::string refusal_;
};

}  // namespace kova::cmd
