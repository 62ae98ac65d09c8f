#include "cmd/point_entry.hpp"

#include "doc/pick/object_snap.hpp"
#include "engine/model/name.hpp"

namespace kova::cmd {

using math::Vector2;

namespace {

constexpr unsigned kX = 1;
constexpr unsigned kY = 2;
constexpr unsigned kZ = 4;
constexpr unsigned kAll = kX | kY | kZ;
/// Words within words; more is no input that somebody means.
constexpr std::size_t kDeepest = 32;

bool beginsWord(std::string_view typed, std::string_view whole, std::size_t shortest) {
    return typed.size() >= shortest && typed.size() <= whole.size() &&
           engine::equalNoCase(typed, whole.substr(0, typed.size()));
}

/// Takes the first word off a text.
std::string_view takeWord(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

bool hasCoordinates(std::string_view text) { return text.find_first_of(",<") != std::string_view::npos; }

}  // namespace

std::string PointEntry::prompt() const {
    if (frames_.empty()) return {};
    const Frame& frame = frames_.back();
    switch (frame.kind) {
        case Kind::Snap:
            return snapPrompt(frame.snaps);
        case Kind::From:
            return frame.hasFirst ? "<Offset>:" : "Base point:";
        case Kind::Middle:
            return frame.hasFirst ? "Second point of mid:" : "First point of mid:";
        case Kind::Track:
            return frame.hasFirst ? "Next point (Press ENTER to end tracking):" : "First tracking point:";
        case Kind::Filter:
            break;
    }
    if (frame.pending != 0) return "of";
    std::string letters;
    for (int i = 0; i < 3; ++i)
        if ((frame.have & (1U << i)) == 0) letters += "XYZ"[i];
    return "(need " + letters + "):";
}

Vector2 PointEntry::relativeBase(const Vector2& base) const {
    for (auto it = frames_.rbegin(); it != frames_.rend(); ++it)
        if (it->hasFirst) return it->first;
    return base;
}

bool PointEntry::startFilter(std::string_view word) {
    if (word.size() < 2 || word.size() > 3 || word.front() != '.') return false;
    unsigned asked = 0;
    for (const char c : word.substr(1)) {
        const std::size_t at = std::string_view("XYZxyz").find(c);
        const unsigned bit = at == std::string_view::npos ? 0 : 1U << (at % 3);
        if (bit == 0 || (asked & bit) != 0) return false;
        asked |= bit;
    }
    if (!frames_.empty() && frames_.back().kind == Kind::Filter && frames_.back().pending == 0) {
        // What the first filter left open.
        Frame& frame = frames_.back();
        if ((asked & ~frame.have) == 0) return false;
        frame.pending = asked & ~frame.have;
        return true;
    }
    Frame frame;
    frame.kind = Kind::Filter;
    frame.pending = asked;
    frames_.push_back(frame);
    return true;
}

bool PointEntry::startWord(std::string_view word) {
    if (frames_.size() >= kDeepest) return false;
    if (startFilter(word)) return true;
    if (word.starts_with('_') || word.starts_with('\'')) word.remove_prefix(1);
    Frame frame;
    if (beginsWord(word, "FROM", 3)) {
        frame.kind = Kind::From;
    } else if (engine::equalNoCase(word, "M2P") || engine::equalNoCase(word, "MTP")) {
        frame.kind = Kind::Middle;
    } else if (engine::equalNoCase(word, "TK") || beginsWord(word, "TRACKING", 4)) {
        frame.kind = Kind::Track;
    } else if (const auto words = parseSnapWords(word)) {
        if (words->followsPointer) {
            refusal_ = "EXT and PAR follow the pointer and cannot be typed.";
            return false;
        }
        frame.snaps = words->kinds;
    } else {
        return false;
    }
    frames_.push_back(frame);
    return true;
}

std::optional<Vector2> PointEntry::read(std::string_view text, const PointContext& context, const Vector2& base,
                                        const Vector2& cursor) const {
    const Vector2 start = relativeBase(base);
    if (const auto p = parsePointInput(text, start, cursor - start, context)) return p;
    if (!frames_.empty() && frames_.back().kind == Kind::Filter && frames_.back().pending == 0 &&
        frames_.back().have == (kX | kY))
        // Points are flat: a height typed for one is read and dropped.
        if (parseNumber(text)) return start;
    PointContext own = context;
    const bool world = text.starts_with('*');
    if (world || text.starts_with('#')) {
        text = trimmed(text.substr(1));
        if (text.starts_with('@') || !hasCoordinates(text)) return std::nullopt;
        if (world) own.ucs = nullptr;
    }
    std::string plain(text);
    if (const std::size_t at = plain.find("<<"); at != std::string::npos) {
        plain.erase(at, plain.compare(at, 3, "<<<") == 0 ? 2 : 1);
        own.angleBase = 0.0;
        own.clockwise = false;
    }
    if (!hasCoordinates(plain)) return std::nullopt;
    return parsePointInput(plain, start, {}, own);
}

PointEntry::Step PointEntry::take(doc::Document& document, Vector2 p, bool relative,
                                  const std::optional<Vector2>& from) {
    const engine::Ucs& ucs = document.drawing().ucs;
    while (!frames_.empty()) {
        Frame& frame = frames_.back();
        switch (frame.kind) {
            case Kind::Snap: {
                const engine::SnapKinds snaps = frame.snaps;
                frames_.pop_back();
                relative = false;
                if (snaps == 0) break;
                constexpr engine::SnapKinds based = engine::snap::kPerpendicular | engine::snap::kTangent;
                std::optional<Vector2> start = from;
                for (const Frame& outer : frames_)
                    if (outer.hasFirst) start = outer.first;
                if (!start && (snaps & ~based) == 0) {
                    refusal_ = "PER and TAN need a point to start from.";
                    return Step::Failed;
                }
                const auto found = snapTo(document, snaps, p, start);
                if (!found) {
                    refusal_ = noSnapText(snaps);
                    return Step::Failed;
                }
                p = *found;
                break;
            }
            case Kind::From:
            case Kind::Middle:
                if (!frame.hasFirst) {
                    frame.hasFirst = true;
                    frame.first = p;
                    return Step::More;
                }
                if (frame.kind == Kind::Middle) p = frame.first + (p - frame.first) / 2.0;
                frames_.pop_back();
                relative = false;
                break;
            case Kind::Track: {
                Vector2 next = p;
                if (frame.hasFirst && !relative) {
                    // Along the axis on which the way to the point is longer.
                    const Vector2 a = ucs.fromWorld(frame.first);
                    const Vector2 b = ucs.fromWorld(p);
                    const bool across = std::abs(b.x - a.x) >= std::abs(b.y - a.y);
                    next = ucs.toWorld(across ? Vector2{b.x, a.y} : Vector2{a.x, b.y});
                }
                frame.hasFirst = true;
                frame.first = next;
                return Step::More;
            }
            case Kind::Filter: {
                const Vector2 user = ucs.fromWorld(p);
                const unsigned gives = frame.pending != 0 ? frame.pending : kAll & ~frame.have;
                if ((gives & kX) != 0) frame.known.x = user.x;
                if ((gives & kY) != 0) frame.known.y = user.y;
                frame.have |= gives;
                frame.pending = 0;
                if (frame.have != kAll) return Step::More;
                p = ucs.toWorld(frame.known);
                frames_.pop_back();
                relative = false;
                break;
            }
        }
    }
    if (!p.is_finite()) return Step::Failed;
    point_ = p;
    return Step::Done;
}

PointEntry::Result PointEntry::feed(doc::Document& document, std::string_view line, const Vector2& base,
                                    const std::optional<Vector2>& from, const Vector2& cursor) {
    refusal_.clear();
    std::string_view text = trimmed(line);
    if (text.empty()) {
        if (frames_.empty()) return Result::NotMine;
        if (frames_.back().kind == Kind::Track && frames_.back().hasFirst) {
            const Vector2 end = frames_.back().first;
            frames_.pop_back();
            const Step step = take(document, end, false, from);
            if (step == Step::Done) return Result::Point;
            if (step == Step::More) return Result::Waiting;
            frames_.clear();
            return Result::Refused;
        }
        frames_.clear();
        return Result::Refused;
    }
    const PointContext context = PointContext::of(document.drawing());
    const std::vector<Frame> before = frames_;
    Step step = Step::More;
    while (!text.empty() && step == Step::More) {
        std::string_view rest = text;
        const std::string_view word = takeWord(rest);
        std::optional<Vector2> p = read(text, context, base, cursor);
        const bool whole = p.has_value();
        if (!whole) {
            if (startWord(word)) {
                text = rest;
                const std::string_view next = takeWord(rest);
                if (engine::equalNoCase(next, "of") || engine::equalNoCase(next, "to")) text = rest;
                continue;
            }
            if (refusal_.empty()) p = read(word, context, base, cursor);
        }
        if (!p) {
            frames_ = before;
            return refusal_.empty() ? Result::NotMine : Result::Refused;
        }
        const bool relative = text.starts_with('@');
        text = whole ? std::string_view() : rest;
        step = take(document, *p, relative, from);
    }
    if (step == Step::More) return Result::Waiting;
    if (step == Step::Done && text.empty()) return Result::Point;
    frames_ = before;
    if (step == Step::Done) return Result::NotMine;  // more points than were asked for
    // A snap that was asked for on a line of its own ends with its pick.
    if (!frames_.empty() && frames_.back().kind == Kind::Snap) frames_.pop_back();
    return Result::Refused;
}

}  // namespace kova::cmd
