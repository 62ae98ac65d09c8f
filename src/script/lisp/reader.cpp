#include "script/lisp/reader.hpp"
#include "strings/numbers.hpp"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace kova::script::lisp {

namespace {

constexpr std::size_t kMaxOpenLists = 1'000'000;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isDelimiter(char c) { return c == '"' || c == '\'' || c == '(' || c == ')' || c == ';'; }
bool endsToken(char c) { return c == '\0' || isBlank(c) || isDelimiter(c); }

std::string place(std::size_t line, std::size_t column) {
    return " at line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace

/// A list, or a quote, that is being read.
struct Reader::Open {
    std::vector<Value> items;
    Value tail;
    enum class State : std::uint8_t { Items, Tail, Closing } state = State::Items;
    bool quote = false;
};

void Reader::advance() {
    if (text_[at_++] == '\n') {
        ++line_;
        column_ = 1;
    } else {
        ++column_;
    }
}

void Reader::skipBlanks() {
    while (!atEnd()) {
        if (peek() == ';') {
            while (!atEnd() && peek() != '\n') advance();
        } else if (isBlank(peek())) {
            advance();
        } else {
            return;
        }
    }
}

bool Reader::startsNumber() const {
    const char c = peek();
    if (isDigit(c)) return true;
    if (c == '+' || c == '-') return isDigit(peek(1)) || (peek(1) == '.' && isDigit(peek(2)));
    return c == '.' && isDigit(peek(1));
}

Value Reader::readString() {
    const std::size_t line = line_;
    const std::size_t column = column_;
    advance();
    std::string text;
    while (!atEnd()) {
        char c = peek();
        if (c == '"') {
            advance();
            return Value::string(std::move(text));
        }
        if (c != '\\') {
            text += c;
            advance();
            continue;
        }
        const std::string where = place(line_, column_);
        advance();
        if (atEnd()) throw LispError("Unterminated string escape" + where);
        c = peek();
        advance();
        switch (c) {
            case 'n':
                text += '\n';
                break;
            case 't':
                text += '\t';
                break;
            case 'r':
                text += '\r';
                break;
            case 'e':
                text += '\x1b';
                break;
            case '\\':
            case '"':
                text += c;
                break;
            default:
                // "\123" is a character in octal; any other character stands for itself, its backslash too.
                if (c >= '0' && c <= '7') {
                    int code = c - '0';
                    for (int i = 0; i < 2 && peek() >= '0' && peek() <= '7'; ++i) {
                        code = code * 8 + (peek() - '0');
                        advance();
                    }
                    text += static_cast<char>(code);
                } else {
                    text += '\\';
                    text += c;
                }
        }
    }
    throw LispError("Unterminated string starting" + place(line, column));
}

Value Reader::readNumber() {
    const std::size_t line = line_;
    const std::size_t column = column_;
    const std::size_t start = at_;
    bool real = false;
    if (peek() == '+' || peek() == '-') advance();
    while (isDigit(peek()) || (peek() == '.' && !real)) {
        real = real || peek() == '.';
        advance();
    }
    if (peek() == 'e' || peek() == 'E') {
        real = true;
        advance();
        if (peek() == '+' || peek() == '-') advance();
        if (!isDigit(peek())) throw LispError("Invalid number exponent" + place(line, column));
        while (isDigit(peek())) advance();
    }
    // What runs on behind the digits makes it a name: 3DPOLY, 1+, 1-.
    if (!atEnd() && !endsToken(peek())) {
        at_ = start;
        line_ = line;
        column_ = column;
        return readSymbol();
    }
    const std::string digits(text_.substr(start, at_ - start));
    errno = 0;
    if (real) {
        const std::size_t sign = digits.starts_with('+') ? 1 : 0;
        double v = 0.0;
        strings::readReal(digits.data() + sign, digits.data() + digits.size(), v);
        if (std::isinf(v)) throw LispError("stod argument out of range");
        return Value::real(v);
    }
    const long long v = std::strtoll(digits.c_str(), nullptr, 10);
    if (errno == ERANGE) throw LispError("stoll argument out of range");
    return Value::integer(v);
}

Value Reader::readSymbol() {
    const std::size_t start = at_;
    while (!atEnd() && !endsToken(peek())) advance();
    if (at_ == start) {
        throw LispError(std::string("Unexpected character '") + peek() + "'" + place(line_, column_));
    }
    const std::string_view name = text_.substr(start, at_ - start);
    if (name.size() == 3 && (name[0] | 32) == 'n' && (name[1] | 32) == 'i' && (name[2] | 32) == 'l') return {};
    return Value::symbol(symbols_.intern(name));
}

bool Reader::read(Value& result) {
    std::vector<Open> open;
    for (;;) {
        skipBlanks();
        if (atEnd()) {
            if (open.empty()) return false;
            const Open::State state = open.back().state;
            if (open.back().quote) throw LispError("Parser error: unexpected end of input");
            throw LispError(state == Open::State::Closing ? "Parser error: expected ')' after dotted pair"
                                                          : "Parser error: expected ')'");
        }
        Value value;
        const char c = peek();
        if (!open.empty() && open.back().state == Open::State::Closing && c != ')')
            throw LispError("Parser error: expected ')' after dotted pair");
        if (c == '(') {
            advance();
            if (open.size() >= kMaxOpenLists) throw LispError("Parser error: nested too deeply");
            open.emplace_back();
            continue;
        }
        if (c == '\'') {
            advance();
            if (open.size() >= kMaxOpenLists) throw LispError("Parser error: nested too deeply");
            open.emplace_back();
            open.back().quote = true;
            continue;
        }
        if (c == ')') {
            advance();
            if (open.empty() || open.back().quote || open.back().state == Open::State::Tail)
                throw LispError("Parser error: unexpected ')'");
            Open& done = open.back();
            value = Value::list(done.items.data(), done.items.size(), std::move(done.tail));
            open.pop_back();
        } else if (c == '.' && endsToken(peek(1))) {
            advance();
            if (open.empty() || open.back().quote || open.back().state != Open::State::Items)
                throw LispError("Parser error: unexpected '.'");
            if (open.back().items.size() != 1)
                throw LispError("Parser error: dotted pair must have exactly one element before the dot");
            open.back().state = Open::State::Tail;
            continue;
        } else if (c == '"') {
            value = readString();
        } else if (startsNumber()) {
            value = readNumber();
        } else {
            value = readSymbol();
        }
        // Hand the value to what is open, as far as it is complete.
        for (;;) {
            if (open.empty()) {
                result = std::move(value);
                return true;
            }
            Open& target = open.back();
            if (target.quote) {
                value = Value::list({Value::symbol(symbols_.quote), std::move(value)});
                open.pop_back();
                continue;
            }
            if (target.state == Open::State::Tail) {
                target.tail = std::move(value);
                target.state = Open::State::Closing;
            } else {
                target.items.push_back(std::move(value));
            }
            break;
        }
    }
}

}  // namespace kova::script::lisp
