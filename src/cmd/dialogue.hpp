#pragma once

#include <coroutine>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cmd/keywords.hpp"
#include "cmd/point_input.hpp"
#include "cmd/tool.hpp"

namespace kova::cmd {

/// A piece of a command's dialogue as straight-line code: a coroutine that waits for answers with co_await. It starts
/// when it is awaited; a dialogue may await another one.
template <class T = void>
class Task {
    struct PromiseBase {
        std::coroutine_handle<> continuation;
        std::exception_ptr error;

        std::suspend_always initial_suspend() noexcept { return {}; }
        struct Final {
            bool await_ready() noexcept { return false; }
            template <class P>
            std::coroutine_handle<> await_suspend(std::coroutine_handle<P> h) noexcept {
                const auto next = h.promise().continuation;
                return next ? next : std::noop_coroutine();
            }
            void await_resume() noexcept {}
        };
        Final final_suspend() noexcept { return {}; }
        void unhandled_exception() { error = std::current_exception(); }
    };
    template <class V>
    struct ValuePromise : PromiseBase {
        std::optional<V> value;
        void return_value(V v) { value = std::move(v); }
        V take() { return std::move(*value); }
    };
    struct VoidPromise : PromiseBase {
        void return_void() {}
        void take() {}
    };

public:
    struct promise_type : std::conditional_t<std::is_void_v<T>, VoidPromise,
                                             ValuePromise<std::conditional_t<std::is_void_v<T>, int, T>>> {
        Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
    };

    Task() = default;
    Task(Task&& o) noexcept : handle_(std::exchange(o.handle_, nullptr)) {}
    Task& operator=(Task&& o) noexcept {
        if (this != &o) {
            destroy();
            handle_ = std::exchange(o.handle_, nullptr);
        }
        return *this;
    }
    ~Task() { destroy(); }

    bool valid() const { return static_cast<bool>(handle_); }
    bool done() const { return !handle_ || handle_.done(); }
    void start() { handle_.resume(); }
    /// Throws what the dialogue threw.
    void check() const {
        if (handle_ && handle_.promise().error) std::rethrow_exception(handle_.promise().error);
    }
    void destroy() {
        if (handle_) std::exchange(handle_, nullptr).destroy();
    }

    bool await_ready() const noexcept { return !handle_ || handle_.done(); }
    std::coroutine_handle<> await_suspend(std::coroutine_handle<> caller) noexcept {
        handle_.promise().continuation = caller;
        return handle_;
    }
    T await_resume() {
        check();
        return handle_.promise().take();
    }

private:
    explicit Task(std::coroutine_handle<promise_type> h) : handle_(h) {}
    std::coroutine_handle<promise_type> handle_ = nullptr;
};
using Dialogue = Task<void>;

/// What the user answered.
struct Answer {
    enum class Kind { Enter, Keyword, Point, Number, Text, Object, Selection };
    Kind kind = Kind::Enter;
    std::string word;                ///< Keyword: the whole word in upper case
    math::Vector2 point;             ///< Point; Object: where it was picked
    double number = 0.0;             ///< Number (distance, or angle in radians), integers too
    std::string text;                ///< the line as typed
    std::uint64_t id = 0;            ///< Object
    std::vector<std::uint64_t> ids;  ///< Selection

    bool isEnter() const { return kind == Kind::Enter; }
    bool isPoint() const { return kind == Kind::Point; }
    bool isNumber() const { return kind == Kind::Number; }
    bool isText() const { return kind == Kind::Text; }
    bool isObject() const { return kind == Kind::Object; }
    /// The keyword, by its whole word in any case.
    bool is(std::string_view keyword) const;
    int integer() const { return static_cast<int>(number); }
    double numberOr(double fallback) const { return isNumber() ? number : fallback; }
};

/// Bounds of a number at a prompt, ends included.
struct Range {
    double minimum = -1e300;
    double maximum = 1e300;
    bool nonZero = false;
};
inline constexpr Range kPositive{1e-300, 1e300};
inline constexpr Range kNotNegative{0.0, 1e300};

class DialogueTool;
class PointEntry;

/// The asking side of a dialogue: each function gives an object to co_await. Options are passed as one string of
/// words that show their short form in capitals ("3P 2P Ttr"); Enter is always an answer (Kind::Enter), and what it
/// means is the caller's. Anything else is refused in one line and asked again.
///
/// A statement with co_await holds no braced list and no ?: whose branches make objects (std::string): g++ 12 rejects
/// the one and destroys the other's temporaries twice. Such values go into a variable first.
class Ask {
public:
    explicit Ask(DialogueTool& tool) : tool_(tool) {}

    enum class Kind { Point, Number, Distance, Angle, Integer, Keyword, Text, Object, Selection };
    struct Request {
        Kind kind = Kind::Point;
        std::string prompt;
        std::vector<Keyword> keywords;
        std::optional<math::Vector2> base;  ///< relative input and distances start here; the last point when absent
        Range range;
        bool enterAllowed = true;
        bool remember = true;  ///< a point becomes the command's last point
        std::function<bool(const engine::Entity&)> filter;
        std::string refusal;      ///< instead of the shared text
        bool restOfLine = false;  ///< inline answers give all the words that are left
    };
    struct Awaiter {
        Ask& ask;
        Request request;
        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> h) { ask.suspend(h, std::move(request)); }
        Answer await_resume() { return std::move(ask.answer_); }
    };

    /// A point; `base` is where relative input starts, the last point of the command when it is not given.
    Awaiter point(std::string prompt, std::string_view keywords = {}, std::optional<math::Vector2> base = {});
    Awaiter number(std::string prompt, std::string_view keywords = {}, Range range = {});
    /// A number, or a point whose distance from `base` counts; without a base two points.
    Awaiter distance(std::string prompt, std::string_view keywords = {}, std::optional<math::Vector2> base = {},
                     Range range = {});
    /// An angle in degrees (ANGDIR, ANGBASE), or a point in whose direction from `base` it lies; radians.
    Awaiter angle(std::string prompt, std::string_view keywords = {}, std::optional<math::Vector2> base = {});
    Awaiter integer(std::string prompt, int minimum, int maximum, std::string_view keywords = {});
    Awaiter keyword(std::string prompt, std::string_view keywords);
    /// A whole line as typed, blanks and all (keywords, when given, are recognised).
    Awaiter text(std::string prompt, std::string_view keywords = {});
    /// A line of text to be shown; as `text`, but inline answers need no quotes round blanks.
    Awaiter line(std::string prompt);
    /// One entity, by a point near it or L for the last one.
    Awaiter object(std::string prompt, std::string_view keywords = {},
                   std::function<bool(const engine::Entity&)> filter = {});
    /// The shared selection: what is selected already plus what the user adds, ended by Enter. The ids may be empty.
    /// Keywords must not be words of the selection itself (W, C, L, P, A ...); the prompt is shown while nothing is
    /// selected, and with keywords always.
    Awaiter selection(std::string prompt = {}, std::string_view keywords = {});
    Awaiter request(Request r) { return {*this, std::move(r)}; }

    /// The last point of the running command; the origin when there is none.
    math::Vector2 lastPoint() const { return lastPoint_.value_or(math::Vector2{}); }
    void setLastPoint(const math::Vector2& p) { lastPoint_ = p; }
    /// Run when the dialogue is cancelled, before it goes: commit what is to be kept.
    void onCancel(std::function<void()> action) { onCancel_ = std::move(action); }
    void message(const std::string& text) const;

private:
    friend class DialogueTool;
    void suspend(std::coroutine_handle<> handle, Request request);
    /// True when the line answers the request; answer_ is then filled.
    bool accept(const std::string& line);
    bool acceptMeasure(const std::string& line);
    /// Reads a point, with snap words and the like; nothing when the line is none or more is asked for, which is told.
    std::optional<math::Vector2> acceptPoint(const std::string& line, const math::Vector2& base, const char* refusal);
    bool isWithinPoint() const;
    void dropPointWords();
    void refuse(const char* text);
    std::string selectionText() const;

    DialogueTool& tool_;
    std::coroutine_handle<> waiting_;
    Request request_;
    Answer answer_;
    std::optional<math::Vector2> lastPoint_;
    std::optional<math::Vector2> firstOfTwo_;
    std::shared_ptr<PointEntry> entry_;  ///< words typed before a point; made when there are some
    std::function<void()> onCancel_;
};

/// A tool whose conversation is written as a coroutine.
class DialogueTool : public Tool {
public:
    DialogueTool() : ask_(*this) {}
    ~DialogueTool() override;

    void begin() override;
    void textInput(const std::string& line) override;
    void mousePress(const math::Vector2& point, int button) override;
    void cancel() override;
    bool isSelectingObjects() const override;
    void selectionChanged() override;
    bool takesRestOfLine() const override;

protected:
    /// The command's conversation. Changes of the drawing stand in groups that are closed before the next question.
    virtual Dialogue dialogue(Ask& ask) = 0;

private:
    friend class Ask;
    void resume();
    void settle();

    Ask ask_;
    Dialogue dialogue_;
    bool running_ = false;
};

/// Yes or No with a default for Enter.
Task<bool> askYesNo(Ask& ask, std::string prompt, bool fallback);

}  // namespace kova::cmd
