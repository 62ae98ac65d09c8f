#include "cmd/dialogue.hpp"

#include "cmd/limits_check.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/point_entry.hpp"
#include "cmd/selection.hpp"
#include "engine/model/name.hpp"
#include "math/angles.hpp"

namespace kova::cmd {

using math::Vector2;

namespace {

const std::string kSecondPoint = "Specify second point:";

}  // namespace

bool Answer::is(std::string_view keyword) const { return kind == Kind::Keyword && engine::equalNoCase(word, keyword); }

Ask::Awaiter Ask::point(std::string prompt, std::string_view keywords, std::optional<Vector2> base) {
    return {*this, {Kind::Point, std::move(prompt), parseKeywords(keywords), base}};
}

Ask::Awaiter Ask::number(std::string prompt, std::string_view keywords, Range range) {
    return {*this, {Kind::Number, std::move(prompt), parseKeywords(keywords), {}, range}};
}

Ask::Awaiter Ask::distance(std::string prompt, std::string_view keywords, std::optional<Vector2> base, Range range) {
    return {*this, {Kind::Distance, std::move(prompt), parseKeywords(keywords), base, range}};
}

Ask::Awaiter Ask::angle(std::string prompt, std::string_view keywords, std::optional<Vector2> base) {
    return {*this, {Kind::Angle, std::move(prompt), parseKeywords(keywords), base}};
}

Ask::Awaiter Ask::integer(std::string prompt, int minimum, int maximum, std::string_view keywords) {
    return {*this,
            {Kind::Integer,
             std::move(prompt),
             parseKeywords(keywords),
             {},
             Range{static_cast<double>(minimum), static_cast<double>(maximum)}}};
}

Ask::Awaiter Ask::keyword(std::string prompt, std::string_view keywords) {
    return {*this, {Kind::Keyword, std::move(prompt), parseKeywords(keywords)}};
}

Ask::Awaiter Ask::text(std::string prompt, std::string_view keywords) {
    return {*this, {Kind::Text, std::move(prompt), parseKeywords(keywords)}};
}

Ask::Awaiter Ask::line(std::string prompt) {
    Request request{Kind::Text, std::move(prompt)};
    request.restOfLine = true;
    return {*this, std::move(request)};
}

Ask::Awaiter Ask::object(std::string prompt, std::string_view keywords,
                         std::function<bool(const engine::Entity&)> filter) {
    Request request{Kind::Object, std::move(prompt), parseKeywords(keywords)};
    request.filter = std::move(filter);
    return {*this, std::move(request)};
}

Ask::Awaiter Ask::selection(std::string prompt, std::string_view keywords) {
    return {*this, {Kind::Selection, std::move(prompt), parseKeywords(keywords)}};
}

void Ask::message(const std::string& text) const { tool_.message(text); }

void Ask::suspend(std::coroutine_handle<> handle, Request request) {
    waiting_ = handle;
    request_ = std::move(request);
    firstOfTwo_.reset();
    if (entry_) entry_->reset();
    if (request_.kind == Kind::Selection)
        tool_.setPrompt(selectionText());
    else
        tool_.setPrompt(request_.prompt);
}

std::string Ask::selectionText() const {
    const std::size_t count = tool_.document().selection().size();
    const bool own = !request_.prompt.empty() && (count == 0 || !request_.keywords.empty());
    return own ? request_.prompt : selectionPrompt(count);
}

void Ask::refuse(const char* text) { tool_.message(request_.refusal.empty() ? text : request_.refusal); }

bool Ask::isWithinPoint() const { return entry_ && entry_->waiting(); }

void Ask::dropPointWords() {
    if (!isWithinPoint()) return;
    entry_->reset();
    tool_.setPrompt(firstOfTwo_ ? kSecondPoint : request_.prompt);
}

std::optional<Vector2> Ask::acceptPoint(const std::string& line, const Vector2& base, const char* refusal) {
    // A bare number picks nothing along the way to the cursor.
    const Vector2 cursor = request_.kind == Kind::Object ? base : tool_.cursor();
    if (!entry_) {
        const auto p = parsePointInput(line, base, cursor - base, PointContext::of(tool_.drawing()));
        if (p) return p;
        entry_ = std::make_shared<PointEntry>();
    }
    const bool waited = entry_->waiting();
    const std::optional<Vector2> from = request_.base ? request_.base : firstOfTwo_ ? firstOfTwo_ : lastPoint_;
    const PointEntry::Result result = entry_->feed(tool_.document(), line, base, from, cursor);
    if (result == PointEntry::Result::NotMine && refusal != nullptr)
        request_.kind == Kind::Object ? tool_.message(refusal) : refuse(refusal);
    else if (result == PointEntry::Result::Refused)
        tool_.message(entry_->refusal());
    if (entry_->waiting())
        tool_.setPrompt(entry_->prompt());
    else if (waited)
        tool_.setPrompt(firstOfTwo_ ? kSecondPoint : request_.prompt);
    if (result != PointEntry::Result::Point) return std::nullopt;
    return entry_->point();
}

bool Ask::acceptMeasure(const std::string& line) {
    const bool angle = request_.kind == Kind::Angle;
    const char* const refusal = request_.keywords.empty() ? "Invalid value." : "Invalid option keyword.";
    std::optional<double> value;
    // A bare number among the points of a word is a point's.
    if (!isWithinPoint()) value = angle ? parseAngleInput(line, PointContext::of(tool_.drawing())) : parseNumber(line);
    if (!value) {
        if (request_.kind == Kind::Number) {
            refuse(refusal);
            return false;
        }
        const Vector2 base = firstOfTwo_ ? *firstOfTwo_ : request_.base.value_or(lastPoint());
        const auto p = acceptPoint(line, base, refusal);
        if (!p) return false;
        if (!request_.base && !lastPoint_ && !firstOfTwo_) {
            firstOfTwo_ = *p;
            tool_.setPrompt(kSecondPoint);
            return false;
        }
        value = angle ? (*p - base).angle() : base.distance_to(*p);
        answer_.point = *p;
    }
    if (*value < request_.range.minimum || *value > request_.range.maximum ||
        (request_.range.nonZero && *value == 0.0)) {
        refuse("Invalid value.");
        return false;
    }
    answer_.kind = Answer::Kind::Number;
    answer_.number = *value;
    return true;
}

bool Ask::accept(const std::string& line) {
    answer_ = {};
    answer_.text = line;
    if (request_.kind == Kind::Selection) {
        doc::SelectionSet& selection = tool_.document().selection();
        if (std::string word = matchKeyword(line, request_.keywords); !word.empty()) {
            answer_.kind = Answer::Kind::Keyword;
            answer_.word = std::move(word);
            return true;
        }
        if (line.empty()) {
            answer_.kind = Answer::Kind::Selection;
            answer_.ids = selection.ids();
            return true;
        }
        if (isAllKeyword(line)) {
            selection.add(selectAll(tool_.document()));
            tool_.setPrompt(selectionText());
        } else {
            tool_.setPrompt(kSelectionHelpPrompt);
        }
        return false;
    }
    if (line.empty() && !isWithinPoint()) {
        answer_.kind = Answer::Kind::Enter;
        if (!request_.enterAllowed) refuse("Invalid input.");
        return request_.enterAllowed;
    }
    if (std::string word = matchKeyword(line, request_.keywords); !word.empty()) {
        answer_.kind = Answer::Kind::Keyword;
        answer_.word = std::move(word);
        return true;
    }
    const char* const noPoint = request_.keywords.empty() ? "Invalid input." : "Invalid point or option keyword.";
    switch (request_.kind) {
        case Kind::Text:
            answer_.kind = Answer::Kind::Text;
            return true;
        case Kind::Keyword:
            refuse("Invalid option keyword.");
            return false;
        case Kind::Integer: {
            const auto value = parseInteger(line);
            if (!value || *value < request_.range.minimum || *value > request_.range.maximum) {
                refuse("Invalid value.");
                return false;
            }
            answer_.kind = Answer::Kind::Number;
            answer_.number = *value;
            return true;
        }
        case Kind::Number:
        case Kind::Distance:
        case Kind::Angle:
            return acceptMeasure(line);
        case Kind::Point: {
            const auto p = acceptPoint(line, request_.base.value_or(lastPoint()), noPoint);
            if (!p) return false;
            if (const char* refusal = limitsRefusal(tool_.host(), tool_.drawing(), *p); *refusal != '\0') {
                tool_.message(refusal);
                return false;
            }
            answer_.kind = Answer::Kind::Point;
            answer_.point = *p;
            if (request_.remember) lastPoint_ = *p;
            return true;
        }
        case Kind::Object: {
            PickFilter filter;
            if (const auto* given = request_.filter.target<PickFilter>())
                filter = *given;
            else
                filter.rules.usable = request_.filter;
            const bool within = isWithinPoint();
            if (!within && filter.isName && filter.isName(line)) {
                answer_.kind = Answer::Kind::Text;
                return true;
            }
            std::optional<Picked> picked;
            if (!within) picked = pickByWord(tool_.document(), line, filter.rules);
            if (!picked) {
                // Where names may be typed, what is no point may be one.
                const auto p = acceptPoint(line, lastPoint(), filter.isName && !within ? nullptr : noPoint);
                if (!p && filter.isName && !within && !isWithinPoint() && entry_->refusal().empty()) {
                    answer_.kind = Answer::Kind::Text;
                    return true;
                }
                if (!p) return false;
                picked = pickAt(tool_.document(), *p, filter.rules);
            }
            if (picked->entity == nullptr) {
                picked->refusal == std::string_view(kUnusable) ? refuse(kUnusable) : tool_.message(picked->refusal);
                return false;
            }
            answer_.kind = Answer::Kind::Object;
            answer_.id = picked->entity->id();
            answer_.point = picked->point;
            return true;
        }
        case Kind::Selection:
            break;
    }
    return false;
}

DialogueTool::~DialogueTool() = default;

void DialogueTool::begin() {
    dialogue_ = dialogue(ask_);
    running_ = true;
    dialogue_.start();
    running_ = false;
    settle();
}

void DialogueTool::textInput(const std::string& line) {
    if (running_ || !isActive() || !ask_.waiting_) return;
    if (ask_.accept(line)) resume();
}

void DialogueTool::mousePress(const Vector2& point, int button) {
    if (button == kRightButton) return textInput({});
    if (running_ || !isActive() || !ask_.waiting_ || ask_.request_.kind != Ask::Kind::Point) return;
    ask_.dropPointWords();
    if (const char* refusal = limitsRefusal(host(), drawing(), point); *refusal != '\0') return message(refusal);
    ask_.answer_ = {};
    ask_.answer_.kind = Answer::Kind::Point;
    ask_.answer_.point = point;
    if (ask_.request_.remember) ask_.lastPoint_ = point;
    resume();
}

void DialogueTool::resume() {
    running_ = true;
    std::exchange(ask_.waiting_, nullptr).resume();
    running_ = false;
    settle();
}

void DialogueTool::settle() {
    if (!dialogue_.done()) return;
    try {
        dialogue_.check();
    } catch (const std::exception& error) {
        message(std::string("Command failed: ") + error.what());
    }
    finish();
}

void DialogueTool::cancel() {
    if (ask_.onCancel_) std::exchange(ask_.onCancel_, nullptr)();
    // Destroying the coroutine closes the groups that it may hold open.
    dialogue_.destroy();
    ask_.waiting_ = nullptr;
    finish();
}

bool DialogueTool::isSelectingObjects() const {
    return isActive() && ask_.waiting_ && ask_.request_.kind == Ask::Kind::Selection;
}

bool DialogueTool::takesRestOfLine() const { return isActive() && ask_.waiting_ && ask_.request_.restOfLine; }

void DialogueTool::selectionChanged() {
    if (isSelectingObjects()) setPrompt(ask_.selectionText());
}

Task<bool> askYesNo(Ask& ask, std::string prompt, bool fallback) {
    const Answer answer = co_await ask.keyword(std::move(prompt), "Yes No");
    co_return answer.isEnter() ? fallback : answer.is("Yes");
}

}  // namespace kova::cmd
