#include "cmd/dialogue.hpp"

#include "cmd/picking.hpp"
#include "cmd/selection.hpp"
#include "engine/name.hpp"
#include "math/angles.hpp"

namespace kova::cmd {

using math::Vector2;

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

bool Ask::acceptMeasure(const std::string& line) {
    const PointContext context = PointContext::of(tool_.drawing());
    const bool angle = request_.kind == Kind::Angle;
    std::optional<double> value = angle ? parseAngleInput(line, context) : parseNumber(line);
    if (!value && request_.kind != Kind::Number && request_.kind != Kind::Integer) {
        const Vector2 base = firstOfTwo_ ? *firstOfTwo_ : request_.base.value_or(lastPoint());
        if (const auto p = parsePointInput(line, base, tool_.cursor() - base, context)) {
            if (!request_.base && !lastPoint_ && !firstOfTwo_) {
                firstOfTwo_ = *p;
                tool_.setPrompt("Specify second point:");
                return false;
            }
            value = angle ? (*p - base).angle() : base.distance_to(*p);
            answer_.point = *p;
        }
    }
    if (!value) {
        refuse(request_.keywords.empty() ? "Invalid value." : "Invalid option keyword.");
        return false;
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
    if (line.empty()) {
        answer_.kind = Answer::Kind::Enter;
        if (!request_.enterAllowed) refuse("Invalid input.");
        return request_.enterAllowed;
    }
    if (std::string word = matchKeyword(line, request_.keywords); !word.empty()) {
        answer_.kind = Answer::Kind::Keyword;
        answer_.word = std::move(word);
        return true;
    }
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
            const Vector2 base = request_.base.value_or(lastPoint());
            const auto p = parsePointInput(line, base, tool_.cursor() - base, PointContext::of(tool_.drawing()));
            if (!p) {
                refuse(request_.keywords.empty() ? "Invalid input." : "Invalid point or option keyword.");
                return false;
            }
            answer_.kind = Answer::Kind::Point;
            answer_.point = *p;
            if (request_.remember) lastPoint_ = *p;
            return true;
        }
        case Kind::Object: {
            engine::Entity* entity = nullptr;
            const std::string upper = engine::upperCase(line);
            if (upper == "L" || upper == "LAST") {
                entity = tool_.drawing().findById(lastEntity(tool_.document()));
                if (entity != nullptr) answer_.point = entity->nearestPoint(entity->bounds().center());
            } else if (const auto named = parseNamedPick(tool_.document(), line)) {
                entity = named->entity;
                answer_.point = named->point;
            } else if (const auto p = parsePointInput(line, lastPoint(), {}, PointContext::of(tool_.drawing()))) {
                // What lies in front but is of no use here does not hide what is.
                entity = pickEntity(tool_.document(), *p, request_.filter);
                if (entity == nullptr && request_.filter) entity = pickEntity(tool_.document(), *p);
                answer_.point = *p;
            } else {
                refuse(request_.keywords.empty() ? "Invalid input." : "Invalid point or option keyword.");
                return false;
            }
            if (entity == nullptr || (request_.filter && !request_.filter(*entity))) {
                refuse(entity == nullptr ? "No object found." : "Object cannot be used here.");
                return false;
            }
            answer_.kind = Answer::Kind::Object;
            answer_.id = entity->id();
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

void DialogueTool::selectionChanged() {
    if (isSelectingObjects()) setPrompt(ask_.selectionText());
}

Task<bool> askYesNo(Ask& ask, std::string prompt, bool fallback) {
    const Answer answer = co_await ask.keyword(std::move(prompt), "Yes No");
    co_return answer.isEnter() ? fallback : answer.is("Yes");
}

}  // namespace kova::cmd
