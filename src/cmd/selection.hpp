#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cmd/keywords.hpp"
#include "cmd/tool.hpp"

namespace kova::cmd {

/// Prompt of a selection after a line that is no keyword.
inline constexpr const char* kSelectionHelpPrompt = "Select objects (pick, or ALL), Enter to finish:";

/// True for ALL, the one word that every tool knows at a selection prompt.
bool isAllKeyword(std::string_view line);

/// "Select objects:", or the count so far and how to go on.
std::string selectionPrompt(std::size_t count);

/// What a SelectThenExecuteTool hands to its operation.
struct OperationContext {
    doc::Document* document = nullptr;
    Viewport* viewport = nullptr;
    int flag = 0;
};

/// What is done with a selection once it is complete.
class SelectionOperation {
public:
    virtual ~SelectionOperation() = default;
    /// Prepares; false ends the command without effect.
    virtual bool run(OperationContext& context) = 0;
    virtual void commit(OperationContext& context) = 0;
};

/// Base of the commands that collect a selection and then act on it at once.
class SelectThenExecuteTool : public Tool {
public:
    explicit SelectThenExecuteTool(std::unique_ptr<SelectionOperation> operation) : operation_(std::move(operation)) {}

    void begin() override;
    void textInput(const std::string& line) override;
    void mousePress(const math::Vector2& point, int button) override;
    bool isSelectingObjects() const override { return isActive(); }
    void selectionChanged() override;

private:
    void finishSelection();

    std::unique_ptr<SelectionOperation> operation_;
};

/// Crossing windows and polygons, each by its corners in order.
using CrossingWindows = std::vector<std::vector<math::Vector2>>;

/// The selection dialogue that all tools share: takes the lines typed while a tool selects objects, before the tool
/// sees them. It knows a point (pick, or first corner of a window on empty space), W, C, BOX, WP, CP, F, L, P, G, A, R,
/// U, M, SI, AU and ALL; Enter and everything else are the tool's.
class SelectionDialogue {
public:
    struct Host {
        std::function<void(const std::string&)> message;
        std::function<void(const std::string&)> overridePrompt;  ///< empty: the tool's own prompt again
        /// A crossing window or polygon selected; may be absent.
        std::function<void(std::span<const math::Vector2>)> crossing = {};
    };
    SelectionDialogue(doc::Document& document, Host host) : document_(document), host_(std::move(host)) {}

    /// Begins anew for a tool that starts selecting; what P selects stays.
    void reset();
    /// True when the line was used here; the selection may have changed.
    bool take(const std::string& line);
    /// True when the selection is to end at once (single mode after a pick).
    bool wantsEnd() const { return single_ && picked_; }
    /// What P selects, and the crossing windows that selected it: they count again when it is taken up (STRETCH).
    void setPrevious(std::vector<std::uint64_t> ids, CrossingWindows crossings = {}) {
        previous_ = std::move(ids);
        previousCrossings_ = std::move(crossings);
    }
    const std::vector<std::uint64_t>& previous() const { return previous_; }
    /// The crossing windows of the selection since reset.
    const CrossingWindows& crossings() const { return crossings_; }
    /// Lets the windows of the previous selection count for the present one.
    void recallCrossings();

private:
    enum class State { Idle, FirstCorner, SecondCorner, Points, GroupName };
    enum class Mode { Window, Crossing, Either };

    bool takeIdle(const std::string& line);
    void takePoint(const std::string& line);
    void takePolygonPoint(const std::string& line);
    void apply(std::vector<std::uint64_t> ids);
    void undo();
    void noteCrossing(std::span<const math::Vector2> corners);
    void endSub();
    bool readPoint(const std::string& line, math::Vector2& point) const;

    doc::Document& document_;
    Host host_;
    State state_ = State::Idle;
    Mode mode_ = Mode::Window;
    bool fence_ = false;
    bool removing_ = false;
    bool single_ = false;
    bool picked_ = false;
    std::vector<math::Vector2> points_;
    /// One answer and what it changed, so that U can take it back.
    struct Step {
        bool removed;
        std::vector<std::uint64_t> ids;
    };
    std::vector<Step> history_;
    std::vector<std::uint64_t> previous_;
    CrossingWindows previousCrossings_;
    CrossingWindows crossings_;
};

}  // namespace kova::cmd
