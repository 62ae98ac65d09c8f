#include "cmd/selection.hpp"

#include <unordered_set>

#include "cmd/prompts/name_prompts.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/point_entry.hpp"
#include "engine/model/name.hpp"

namespace kova::cmd {

using math::Vector2;

namespace {

/// With the other members of the groups that the entities belong to, where picks take whole groups (PICKSTYLE).
std::vector<std::uint64_t> withGroups(doc::Document& document, std::vector<std::uint64_t> ids) {
    const engine::Drawing& drawing = document.drawing();
    if (ids.empty() || drawing.groups.empty() || (engine::sysVarInt(drawing, "PICKSTYLE", 1) & 1) == 0) return ids;
    std::unordered_set<std::uint64_t> taken(ids.begin(), ids.end());
    std::unordered_set<std::uint64_t> picked;
    for (const std::uint64_t id : taken)
        if (const engine::Entity* e = drawing.findById(id)) picked.insert(e->handle());
    // Most picks are of one object.
    const std::uint64_t only = picked.size() == 1 ? *picked.begin() : 0;
    const auto isPicked = [&](std::uint64_t handle) { return only != 0 ? handle == only : picked.contains(handle); };
    for (const engine::Group& group : drawing.groups) {
        if (!group.selectable) continue;
        if (std::none_of(group.memberHandles.begin(), group.memberHandles.end(), isPicked)) continue;
        for (const std::uint64_t handle : group.memberHandles) {
            const engine::Entity* e = drawing.findByHandle(handle);
            if (e != nullptr && document.isSelectable(*e) && taken.insert(e->id()).second) ids.push_back(e->id());
        }
    }
    return ids;
}

}  // namespace

bool isAllKeyword(std::string_view line) {
    static const std::vector<Keyword> all = {{"ALL", "ALL"}};
    return !matchKeyword(line, all).empty();
}

std::string selectionPrompt(std::size_t count) {
    return count == 0 ? "Select objects:" : std::to_string(count) + " found. Select objects or press Enter:";
}

void SelectThenExecuteTool::begin() {
    setPrompt(selectionPrompt(documentOrNull() != nullptr ? document().selection().size() : 0));
}

void SelectThenExecuteTool::textInput(const std::string& line) {
    if (line.empty()) return finishSelection();
    if (isAllKeyword(line) && documentOrNull() != nullptr) {
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
    crossings_.clear();
    host_.overridePrompt({});
}

bool SelectionDialogue::take(const std::string& line) {
    switch (state_) {
        case State::Idle:
            return takeIdle(line);
        case State::FirstCorner:
        case State::SecondCorner:
            takePoint(line);
            return true;
        case State::Points:
            takePolygonPoint(line);
            return true;
        case State::GroupName:
            if (!line.empty()) {
                const engine::Group* group = document_.drawing().groups.find(engine::Name(typedName(line)));
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
                apply(std::move(ids));
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
        {"WINDOW", "W"},   {"CROSSING", "C"}, {"BOX", "BOX"}, {"WPOLYGON", "WP"}, {"CPOLYGON", "CP"}, {"FENCE", "F"},
        {"LAST", "L"},     {"PREVIOUS", "P"}, {"GROUP", "G"}, {"ADD", "A"},       {"REMOVE", "R"},    {"UNDO", "U"},
        {"MULTIPLE", "M"}, {"SINGLE", "SI"},  {"AUTO", "AU"}, {"ALL", "ALL"}};
    const std::string word = matchKeyword(line, keywords);
    if (const auto named = parseNamedPick(document_, line)) {
        apply(named->entity != nullptr ? std::vector{named->entity->id()} : std::vector<std::uint64_t>{});
    } else if (word == "ALL") {
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
        if (ids.empty()) {
            host_.message("No previous selection set.");
        } else {
            if (!removing_) recallCrossings();
            apply(std::move(ids));
        }
    } else if (word == "GROUP") {
        state_ = State::GroupName;
        host_.overridePrompt("Enter group name:");
    } else if (word == "ADD" || word == "REMOVE") {
        removing_ = word == "REMOVE";
        host_.overridePrompt(removing_ ? "Remove objects:" : "");
    } else if (word == "UNDO") {
        undo();
    } else if (word == "SINGLE") {
        single_ = true;
    } else if (word == "MULTIPLE" || word == "AUTO") {
        // Picks are taken one by one and windows start on empty space in any case.
    } else {
        Vector2 p;
        if (!readPoint(line, p)) return false;
        if (const engine::Entity* e = pickEntity(document_, p)) {
            apply(withGroups(document_, {e->id()}));
        } else if (pickLocked(document_, p) != nullptr) {
            host_.message("1 was on a locked layer.");
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
    PointEntry entry;
    if (entry.feed(document_, line, base, {}, base) != PointEntry::Result::Point) return false;
    point = entry.point();
    return true;
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
    const Vector2 a = points_[0];
    const Vector2 b = points_[1];
    auto ids = withGroups(document_, selectBox(document_, a, b, crossing));
    const Vector2 corners[] = {a, {b.x, a.y}, b, {a.x, b.y}};
    if (crossing && !removing_) noteCrossing(corners);
    endSub();
    apply(std::move(ids));
}

void SelectionDialogue::takePolygonPoint(const std::string& line) {
    static const std::vector<Keyword> undo = {{"UNDO", "U"}};
    if (line.empty()) {
        std::vector<std::uint64_t> ids;
        if (fence_ && points_.size() >= 2)
            ids = selectFence(document_, points_);
        else if (!fence_ && points_.size() >= 3)
            ids = selectPolygon(document_, points_, mode_ == Mode::Crossing);
        if (!fence_ && mode_ == Mode::Crossing && !removing_ && points_.size() >= 3) noteCrossing(points_);
        endSub();
        apply(withGroups(document_, std::move(ids)));
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

void SelectionDialogue::apply(std::vector<std::uint64_t> ids) {
    doc::SelectionSet& selection = document_.selection();
    if (ids.empty()) return host_.message("0 found");
    picked_ = true;
    std::erase_if(ids, [&](std::uint64_t id) { return selection.contains(id) != removing_; });
    if (removing_) {
        const std::size_t count = selection.remove(ids);
        host_.message(std::to_string(count) + " removed, " + std::to_string(selection.size()) + " total");
    } else {
        selection.add(ids);
    }
    history_.push_back({removing_, std::move(ids)});
}

void SelectionDialogue::noteCrossing(std::span<const Vector2> corners) {
    crossings_.emplace_back(corners.begin(), corners.end());
    if (host_.crossing) host_.crossing(corners);
}

void SelectionDialogue::recallCrossings() {
    const CrossingWindows windows = previousCrossings_;
    for (const std::vector<Vector2>& window : windows) noteCrossing(window);
}

void SelectionDialogue::undo() {
    if (history_.empty()) return host_.message("Nothing to undo.");
    const Step step = std::move(history_.back());
    history_.pop_back();
    doc::SelectionSet& selection = document_.selection();
    if (step.removed)
        selection.add(step.ids);
    else
        selection.remove(step.ids);
}

void SelectionDialogue::endSub() {
    state_ = State::Idle;
    points_.clear();
    host_.overridePrompt(removing_ ? "Remove objects:" : "");
}

}  // namespace kova::cmd
