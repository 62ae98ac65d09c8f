#include "engine/entities/line.hpp"

#include "edit/new_entities.hpp"
#include "cmd/limits_check.hpp"
#include "cmd/point_entry.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

/// LINE: straight segments from point to point, each an undoable step of its own.
class LineTool final : public Tool {
public:
    void begin() override {
        points_.clear();
        setPrompt(kFirst);
    }

    void textInput(const std::string& line) override {
        if (line.empty() && !entry_.waiting()) return finish();
        const std::string word = engine::upperCase(line);
        if (word == "C" || word == "CLOSE") return close();
        if (word == "U" || word == "UNDO") {
            dropPointWords();
            return undoSegment();
        }
        std::optional<math::Vector2> last;
        if (!points_.empty()) last = points_.back();
        const bool waited = entry_.waiting();
        const auto result = entry_.feed(document(), line, last.value_or(math::Vector2{}), last, cursor());
        if (result == PointEntry::Result::Point) takePoint(entry_.point());
        if (result == PointEntry::Result::Refused) message(entry_.refusal());
        if (waited || entry_.waiting()) showPrompt();
    }

    void mousePress(const math::Vector2& point, int button) override {
        if (button == kRightButton) return finish();
        if (button != kLeftButton) return;
        dropPointWords();
        if (points_.size() >= 3 && point.distance_to(points_.front()) <= pickTolerance()) return close();
        takePoint(point);
    }

private:
    void takePoint(const math::Vector2& p) {
        if (const char* refusal = limitsRefusal(host(), drawing(), p); *refusal != '\0') return message(refusal);
        addPoint(p);
    }

    void showPrompt() {
        if (entry_.waiting())
            setPrompt(entry_.prompt());
        else
            setPrompt(points_.empty() ? kFirst : kNext);
    }

    void dropPointWords() {
        if (!entry_.waiting()) return;
        entry_.reset();
        showPrompt();
    }

    void addPoint(const math::Vector2& p) {
        points_.push_back(p);
        if (points_.size() >= 2) addSegment(points_[points_.size() - 2], p);
        if (points_.size() == 1) setPrompt(kNext);
        repaint();
    }

    void addSegment(const math::Vector2& from, const math::Vector2& to) {
        auto line = std::make_unique<engine::LineEntity>();
        line->start = from;
        line->end = to;
        applyCurrentValues(document(), *line);
        const doc::GroupScope group(document(), kLabel);
        created_.push_back(document().addEntity(std::move(line)).id());
    }

    void close() {
        if (points_.size() >= 3) addSegment(points_.back(), points_.front());
        repaint();
        finish();
    }

    void undoSegment() {
        if (points_.size() < 2) return;
        points_.pop_back();
        if (created_.empty()) return;
        // The line may be gone: UNDO and ERASE run beside this command.
        if (engine::Entity* entity = drawing().findById(created_.back())) {
            const doc::GroupScope group(document(), kLabel);
            document().removeEntity(*entity);
        }
        created_.pop_back();
        repaint();
    }

    inline static const std::string kLabel = "LINE";
    inline static const std::string kFirst = "Specify first point:";
    inline static const std::string kNext = "Specify next point or [Close/Undo]:";
    PointEntry entry_;
    std::vector<math::Vector2> points_;
    std::vector<std::uint64_t> created_;
};

KOVA_TOOL_COMMAND(Line, "LINE", "Line", "Draw", {"L"})

}  // namespace kova::cmd::commands
