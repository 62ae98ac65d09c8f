#include "script/lisp/printer.hpp"

#include <cmath>
#include <cstdio>

#include "script/lisp/function_table.hpp"
#include "strings/numbers.hpp"

namespace kova::script::lisp {

namespace {

constexpr std::size_t kMaxText = std::size_t{64} << 20;

void appendHex(std::string& out, std::uint64_t v) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%llX", static_cast<unsigned long long>(v));
    out += buffer;
}

void appendAtom(std::string& out, const Value& v, bool quoted) {
    switch (v.kind()) {
        case Kind::Nil:
            out += "nil";
            break;
        case Kind::Quiet:
        case Kind::Unbound:
            break;
        case Kind::Integer:
            out += std::to_string(v.asInteger());
            break;
        case Kind::Real:
            out += realText(v.asReal());
            break;
        case Kind::Symbol:
            out += v.asSymbol()->name;
            break;
        case Kind::Builtin:
            out += "<builtin: " + std::string(v.asBuiltin()->name) + ">";
            break;
        case Kind::Entity:
            out += "<Entity name: ";
            appendHex(out, v.handle());
            out += '>';
            break;
        case Kind::String:
            if (quoted)
                out += quotedText(v.text());
            else
                out += v.text();
            break;
        case Kind::Function:
            out += "<function>";
            break;
        case Kind::Selection:
            out += "<Selection set: " + std::to_string(v.as<SelectionObject>()->handles.size()) + ">";
            break;
        case Kind::File:
            out += "<file: " + v.as<FileObject>()->path + ">";
            break;
        case Kind::Error:
            out += "<error: " + v.as<ErrorObject>()->message + ">";
            break;
        case Kind::Cons:
        case Kind::Code:
        case Kind::Environment:
            break;
    }
}

}  // namespace

std::string realText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    const double size = std::abs(value);
    if (value == std::trunc(value) && size < 1e15) return value == 0.0 ? "0.0" : strings::fixed(value, 1);
    int digits = 6;
    for (double limit = 1000.0; size >= limit && digits < 15; limit *= 10.0) ++digits;
    std::string text = strings::general(value, digits);
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

std::string quotedText(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\x1b':
                out += "\\e";
                break;
            default:
                out += c;
        }
    }
    return out + '"';
}

std::string printed(const Value& value, bool quoted) {
    std::string out;
    if (!value.isCons()) {
        appendAtom(out, value, quoted);
        return out;
    }
    // What is left to be printed of the lists that are open.
    struct Rest {
        const Value* at;
        bool first = true;
    };
    std::vector<Rest> open{{&value}};
    out = "(";
    while (!open.empty()) {
        const Value* at = open.back().at;
        if (out.size() > kMaxText) throw LispError("The value is too large to print");
        if (at->isCons()) {
            const Value& item = at->car();
            if (!std::exchange(open.back().first, false)) out += ' ';
            open.back().at = &at->cdr();
            if (item.isCons()) {
                out += '(';
                open.push_back({&item});
            } else {
                appendAtom(out, item, quoted);
            }
            continue;
        }
        if (at->isTrue()) {
            out += " . ";
            appendAtom(out, *at, quoted);
        }
        out += ')';
        open.pop_back();
    }
    return out;
}

}  // namespace kova::script::lisp
