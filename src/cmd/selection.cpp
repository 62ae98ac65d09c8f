#include "cmd/selection.hpp"

#include "cmd/picking.hpp"
#include "cmd/point_input.hpp"
#include "engine/name.hpp"

namespace kova::cmd {

using math::Vector2;

std::string selectionPrompt(std::size_t count) {
    return count == 0 ? "Select objects:" : std::to_string(count) + " found. Select objects or press Enter:";
}

void SelectThenExecuteTool::begin() {
    setPrompt(selectionPrompt(documentOrNull() != nullptr ? document().selection().size() : 0));
}

void SelectThenExecuteTool::textInput(const std::string& line) {
    if (line.empty()) return finishSelection();
    if (engine::upperCase(line) == "ALL" && documentOrNull() != nullptr) {
        document().selection().add(selectAll(document()));
        setPrompt(selectionPrompt(document().selection().size()));
        return;
    }
    setPrompt(kSelectionHelpPrompt);
}

void SelectThenExecuteTool::mousePress(const Vector2&, int button) {
    if (button == kRightButton && documentOrNull() != nullptr) finishSelection();
}

void SelectThenExecuteTool::selectionChanged() { setPrompt(selectionPrompt(document().selection().size())); }

void SelectThenExecuteTool::finishSelection() {
    if (documentOrNull() != nullptr && !document().selection().empty()) {
        OperationContext context{documentOrNull(), viewport(), 0};
        if (operation_->run(context)) operation_->commit(context);
        repaint();
    }
    finish();
}

void SelectionDialogue::reset() {
    state_ = State::Idle;
    removing_ = single_ = picked_ = false;
    points_.clear();
    history_.clear();
    host_.overridePrompt({});
}

bool SelectionDialogue::take(const std::string& line) {
    switch (state_) {
        case State::Idle: return takeIdle(line);
        case State::FirstCorner:
        case State::SecondCorner: takePoint(line); return true;
        case State::Points: takePolygonPoint(line); return true;
        case State::GroupName:
            if (!line.empty()) {
                const engine::Group* group = document_.drawing().groups.find(line);
                if (group == nullptr) {
                    host_.message("Invalid group name.");
                    return true;
                }
                std::vector<std::uint64_t> ids;
                for (const std::uint64_t handle : group->memberHandles) {
                    const engine::Entity* e = document_.drawing().findByHandle(handle);
                    if (e != nullptr && document_.isSelectable(*e)) ids.push_back(e->id());
                }
                endSub();
                apply(ids);
                return true;
            }
            endSub();
            return true;
    }
    return false;
}

bool SelectionDialogue::takeIdle(const std::string& line) {
    if (line.empty()) return false;
    static const std::vector<Keyword> keywords = {
        {"WINDOW", "W"}, {"CROSSING", "C"}, {"BOX", "BOX"}, {"WPOLYGON", "WP"}, {"CPOLYGON", "CP"}, {"FENCE", "F"},
        {"LAST", "L"}, {"PREVIOUS", "P"}, {"GROUP", "G"}, {"ADD", "A"}, {"REMOVE", "R"}, {"UNDO", "U"},
        {"MULTIPLE", "M"}, {"SINGLE", "SI"}, {"AUTO", "AU"}, {"ALL", "ALL"}};
    const std::string word = matchKeyword(line, keywords);
    if (word == "ALL") {
        // Adding all is the tool's own keyword; taking all out again is only known here.
        if (!removing_) return false;
        apply(selectAll(document_));
    } else if (word == "WINDOW" || word == "CROSSING" || word == "BOX") {
        mode_ = word == "WINDOW" ? Mode::Window : word == "CROSSING" ? Mode::Crossing : Mode::Either;
        points_.clear();
        state_ = State::FirstCorner;
        host_.overridePrompt("Specify first corner:");
    } else if (word == "WPOLYGON" || word == "CPOLYGON" || word == "FENCE") {
        fence_ = word == "FENCE";
        mode_ = word == "WPOLYGON" ? Mode::Window : Mode::Crossing;
        points_.clear();
        state_ = State::Points;
        host_.overridePrompt(fence_ ? "Specify first fence point:" : "First polygon point:");
    } else if (word == "LAST") {
        const std::uint64_t id = lastEntity(document_);
        apply(id != 0 ? std::vector{id} : std::vector<std::uint64_t>{});
    } else if (word == "PREVIOUS") {
        std::vector<std::uint64_t> ids;
        for (const std::uint64_t id : previous_) {
            const engine::Entity* e = document_.drawing().findById(id);
            if (e != nullptr && document_.isSelectable(*e)) ids.push_back(id);
        }
        if (ids.empty()) host_.message("No previous selection set.");
        else apply(ids);
    } else if (word == "GROUP") {
        state_ = State::GroupName;
        host_.overridePrompt("Enter group name:");
    } else if (word == "ADD" || word == "REMOVE") {
        removing_ = word == "REMOVE";
        host_.overridePrompt(removing_ ? "Remove objects:" : "");
    } else if (word == "UNDO") {
        if (history_.empty()) {
            host_.message("Nothing to undo.");
        } else {
            document_.selection().set(std::move(history_.back()));
            history_.pop_back();
        }
    } else if (word == "SINGLE") {
        single_ = true;
    } else if (word == "MULTIPLE" || word == "AUTO") {
        // Picks are taken one by one and windows start on empty space in any case.
    } else {
        Vector2 p;
        if (!readPoint(line, p)) return false;
        if (const engine::Entity* e = pickEntity(document_, p)) {
            apply({e->id()});
        } else {
            mode_ = Mode::Either;
            points_ = {p};
            state_ = State::SecondCorner;
            host_.overridePrompt("Specify opposite corner:");
        }
    }
    return true;
}

bool SelectionDialogue::readPoint(const std::string& line, Vector2& point) const {
    // A bare number is no pick: it would be an x coordinate nobody meant.
    if (parseNumber(line)) return false;
    const Vector2 base = points_.empty() ? Vector2{} : points_.back();
    const auto p = parsePointInput(line, base, {}, PointContext::of(document_.drawing()));
    if (p) point = *p;
    return p.has_value();
}

void SelectionDialogue::takePoint(const std::string& line) {
    Vector2 p;
    if (line.empty()) return endSub();
    if (!readPoint(line, p)) return host_.message("Invalid point.");
    points_.push_back(p);
    if (points_.size() == 1) {
        state_ = State::SecondCorner;
        host_.overridePrompt("Specify opposite corner:");
        return;
    }
    // A box drawn from right to left takes what it crosses, as users know it.
    const bool crossing = mode_ == Mode::Crossing || (mode_ == Mode::Either && points_[1].x < points_[0].x);
    const auto ids = selectBox(document_, points_[0], points_[1], crossing);
    endSub();
    apply(ids);
}

void SelectionDialogue::takePolygonPoint(const std::string& line) {
    static const std::vector<Keyword> undo = {{"UNDO", "U"}};
    if (line.empty()) {
        std::vector<std::uint64_t> ids;
        if (fence_ && points_.size() >= 2) ids = selectFence(document_, points_);
        else if (!fence_ && points_.size() >= 3) ids = selectPolygon(document_, points_, mode_ == Mode::Crossing);
        endSub();
        apply(ids);
        return;
    }
    Vector2 p;
    if (!matchKeyword(line, undo).empty()) {
        if (!points_.empty()) points_.pop_back();
    } else if (readPoint(line, p)) {
        points_.push_back(p);
    } else {
        host_.message("Invalid point.");
        return;
    }
    if (!points_.empty())
        host_.overridePrompt(fence_ ? "Specify next fence point or [Undo]:" : "Specify endpoint of line or [Undo]:");
}

void SelectionDialogue::apply(const std::vector<std::uint64_t>& ids) {
    doc::SelectionSet& selection = document_.selection();
    if (ids.empty()) return host_.message("0 found");
    picked_ = true;
    std::vector<std::uint64_t> before = selection.ids();
    if (removing_) {
        const std::size_t count = selection.remove(ids);
        host_.message(std::to_string(count) + " removed, " + std::to_string(selection.size()) + " total");
    } else {
        selection.add(ids);
    }
    history_.push_back(std::move(before));
}

void SelectionDialogue::endSub() {
    state_ = State::Idle;
    points_.clear();
    host_.overridePrompt(removing_ ? "Remove objects:" : "");
}

}  // namespace kova::cmd
