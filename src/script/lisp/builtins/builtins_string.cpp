// Strings and conversions.

#include <cmath>

#include "strings/wildcards.hpp"
#include "engine/text/text_codes.hpp"
#include "engine/model/units.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/printer.hpp"
#include "script/lisp/reader.hpp"
#include "strings/case_fold.hpp"
#include "strings/numbers.hpp"
#include "strings/utf8.hpp"

namespace kova::script::lisp {

namespace {

// Positions count characters, which take more than one byte outside of ASCII.

using strings::appendUtf8;
using strings::isContinuation;

/// Offset of a character; the text's size beyond its end.
std::size_t offsetOf(std::string_view text, std::size_t character) {
    std::size_t i = 0;
    while (i < text.size()) {
        if (!isContinuation(text[i]) && character-- == 0) return i;
        ++i;
    }
    return i;
}

std::int64_t firstCode(std::string_view text) {
    if (text.empty()) return 0;
    std::size_t i = 0;
    return static_cast<std::int64_t>(strings::nextCodePoint(text, i));
}

Value strcat(Machine&, Value* v, int n) {
    std::size_t size = 0;
    for (int i = 0; i < n; ++i) size += stringArgument("STRCAT", v[i]).size();
    Heap::charge(size);
    Heap::release(size);
    std::string out;
    out.reserve(size);
    for (int i = 0; i < n; ++i) out += v[i].text();
    return Value::string(std::move(out));
}

Value strlen(Machine&, Value* v, int n) {
    std::size_t count = 0;
    for (int i = 0; i < n; ++i) count += strings::countCharacters(stringArgument("STRLEN", v[i]));
    return Value::integer(static_cast<std::int64_t>(count));
}

Value substr(Machine&, Value* v, int n) {
    const std::string& text = stringArgument("SUBSTR", v[0]);
    const std::int64_t start = integerArgument("SUBSTR", v[1]);
    if (start < 1) badArgument("SUBSTR", "a start from 1", v[1]);
    const std::size_t from = offsetOf(text, static_cast<std::size_t>(start - 1));
    std::string_view rest = std::string_view(text).substr(from);
    if (n > 2) {
        const std::int64_t length = integerArgument("SUBSTR", v[2]);
        if (length < 0) badArgument("SUBSTR", "a length that is not negative", v[2]);
        rest = rest.substr(0, offsetOf(rest, static_cast<std::size_t>(length)));
    }
    return Value::string(std::string(rest));
}

Value strcase(Machine&, Value* v, int n) {
    const std::string& text = stringArgument("STRCASE", v[0]);
    return Value::string(n > 1 && v[1].isTrue() ? strings::lowerCase(text) : strings::upperCase(text));
}

Value wcmatch(Machine& m, Value* v, int) {
    return boolean(m, cmd::matchesWildcards(stringArgument("WCMATCH", v[0]), stringArgument("WCMATCH", v[1]), true));
}

template <bool Left, bool Right>
Value trim(Machine&, Value* v, int) {
    const char* name = Left && Right ? "VL-STRING-TRIM" : Left ? "VL-STRING-LEFT-TRIM" : "VL-STRING-RIGHT-TRIM";
    const std::string& set = stringArgument(name, v[0]);
    std::string_view text = stringArgument(name, v[1]);
    if (Left) {
        const std::size_t from = text.find_first_not_of(set);
        text.remove_prefix(from == std::string_view::npos ? text.size() : from);
    }
    if (Right) {
        const std::size_t to = text.find_last_not_of(set);
        text = text.substr(0, to == std::string_view::npos ? 0 : to + 1);
    }
    return Value::string(std::string(text));
}

/// Character position of a byte offset, or nil.
Value positionOf(std::string_view text, std::size_t offset) {
    if (offset == std::string_view::npos) return {};
    return Value::integer(static_cast<std::int64_t>(strings::countCharacters(text.substr(0, offset))));
}

std::size_t startArgument(const char* function, std::string_view text, Value* v, int n, int at) {
    if (n <= at) return 0;
    const std::int64_t start = integerArgument(function, v[at]);
    if (start < 0) badArgument(function, "a start from 0", v[at]);
    return offsetOf(text, static_cast<std::size_t>(start));
}

Value search(Machine&, Value* v, int n) {
    const std::string& pattern = stringArgument("VL-STRING-SEARCH", v[0]);
    const std::string& text = stringArgument("VL-STRING-SEARCH", v[1]);
    return positionOf(text, text.find(pattern, startArgument("VL-STRING-SEARCH", text, v, n, 2)));
}

Value positionOfCharacter(Machine&, Value* v, int n) {
    std::string pattern;
    appendUtf8(pattern, static_cast<char32_t>(integerArgument("VL-STRING-POSITION", v[0]) & 0x1FFFFF));
    const std::string& text = stringArgument("VL-STRING-POSITION", v[1]);
    const std::size_t start = startArgument("VL-STRING-POSITION", text, v, n, 2);
    return positionOf(text, n > 3 && v[3].isTrue() ? text.rfind(pattern) : text.find(pattern, start));
}

Value substitute(Machine&, Value* v, int n) {
    const std::string& with = stringArgument("VL-STRING-SUBST", v[0]);
    const std::string& pattern = stringArgument("VL-STRING-SUBST", v[1]);
    const std::string& text = stringArgument("VL-STRING-SUBST", v[2]);
    const std::size_t at = text.find(pattern, startArgument("VL-STRING-SUBST", text, v, n, 3));
    if (at == std::string::npos || pattern.empty()) return v[2];
    std::string out = text;
    out.replace(at, pattern.size(), with);
    return Value::string(std::move(out));
}

Value translate(Machine&, Value* v, int) {
    const std::string& from = stringArgument("VL-STRING-TRANSLATE", v[0]);
    const std::string& to = stringArgument("VL-STRING-TRANSLATE", v[1]);
    std::string text = stringArgument("VL-STRING-TRANSLATE", v[2]);
    for (char& c : text) {
        const std::size_t at = from.find(c);
        if (at != std::string::npos && at < to.size()) c = to[at];
    }
    return Value::string(std::move(text));
}

Value stringElement(Machine&, Value* v, int) {
    const std::string& text = stringArgument("VL-STRING-ELT", v[0]);
    const std::int64_t index = integerArgument("VL-STRING-ELT", v[1]);
    const std::size_t at = index < 0 ? text.size() : offsetOf(text, static_cast<std::size_t>(index));
    if (at >= text.size()) badArgument("VL-STRING-ELT", "a position in the string", v[1]);
    return Value::integer(firstCode(std::string_view(text).substr(at)));
}

Value mismatch(Machine&, Value* v, int) {
    const std::string& a = stringArgument("VL-STRING-MISMATCH", v[0]);
    const std::string& b = stringArgument("VL-STRING-MISMATCH", v[1]);
    std::size_t i = 0;
    while (i < a.size() && i < b.size() && a[i] == b[i]) ++i;
    return Value::integer(static_cast<std::int64_t>(strings::countCharacters(std::string_view(a).substr(0, i))));
}

Value stringToList(Machine&, Value* v, int) {
    const std::string& text = stringArgument("VL-STRING->LIST", v[0]);
    ListBuilder codes;
    for (std::size_t i = 0; i < text.size();)
        codes.add(Value::integer(static_cast<std::int64_t>(strings::nextCodePoint(text, i))));
    return codes.finish();
}

Value listToString(Machine&, Value* v, int) {
    std::string text;
    for (ListView item(listArgument("VL-LIST->STRING", v[0])); item; ++item)
        appendUtf8(text, static_cast<char32_t>(integerArgument("VL-LIST->STRING", *item) & 0x1FFFFF));
    return Value::string(std::move(text));
}

// Conversions -------------------------------------------------------------------------------------------------

Value atoi(Machine&, Value* v, int) {
    const std::string& text = stringArgument("ATOI", v[0]);
    return Value::integer(std::strtoll(text.c_str(), nullptr, 10));
}

Value atof(Machine&, Value* v, int) {
    const std::string& text = stringArgument("ATOF", v[0]);
    // Decimal numbers only: no hexadecimal ones, no "inf".
    const std::size_t start = text.find_first_not_of(" \t\n\r");
    if (start == std::string::npos) return Value::real(0.0);
    std::string_view digits = std::string_view(text).substr(start);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    double result = 0.0;
    strings::readReal(digits.data(), digits.data() + digits.size(), result);
    return Value::real(std::isfinite(result) ? result : 0.0);
}

Value itoa(Machine&, Value* v, int) { return Value::string(std::to_string(integerArgument("ITOA", v[0]))); }

Value rtos(Machine& m, Value* v, int n) {
    const double number = numberArgument("RTOS", v[0]);
    engine::LinearFormat format;
    format.units = n > 1 && v[1].isTrue()
                       ? static_cast<int>(std::clamp<std::int64_t>(integerArgument("RTOS", v[1]), 0, 100))
                       : engine::sysVarInt(m.drawing(), "LUNITS", 2);
    format.precision = n > 2 ? static_cast<int>(std::clamp<std::int64_t>(integerArgument("RTOS", v[2]), 0, 16))
                             : engine::sysVarInt(m.drawing(), "LUPREC", 4);
    format.zeros = engine::sysVarInt(m.drawing(), "DIMZIN", 0);
    format.precision = std::min(format.precision, 8);
    return Value::string(engine::formatLinear(number, format));
}

Value angtos(Machine& m, Value* v, int n) {
    const engine::Drawing& d = m.drawing();
    const double angle = numberArgument("ANGTOS", v[0]);
    const std::int64_t mode =
        n > 1 && v[1].isTrue() ? integerArgument("ANGTOS", v[1]) : engine::sysVarInt(d, "AUNITS", 0);
    const std::int64_t precision = n > 2 ? integerArgument("ANGTOS", v[2]) : engine::sysVarInt(d, "AUPREC", 0);
    return Value::string(engine::formatAngle(angle, static_cast<int>(std::clamp<std::int64_t>(mode, 0, 4)),
                                             static_cast<int>(std::clamp<std::int64_t>(precision, 0, 8)),
                                             engine::sysVarReal(d, "ANGBASE"), engine::sysVarInt(d, "ANGDIR") != 0,
                                             engine::sysVarInt(d, "DIMZIN") & 12));
}

Value distof(Machine&, Value* v, int n) {
    const std::string& text = stringArgument("DISTOF", v[0]);
    if (n > 1 && v[1].isTrue()) integerArgument("DISTOF", v[1]);
    const auto distance = engine::parseDistance(text);
    return distance ? Value::real(*distance) : Value();
}

Value angtof(Machine& m, Value* v, int n) {
    const engine::Drawing& d = m.drawing();
    const std::string& text = stringArgument("ANGTOF", v[0]);
    const std::int64_t mode =
        n > 1 && v[1].isTrue() ? integerArgument("ANGTOF", v[1]) : engine::sysVarInt(d, "AUNITS", 0);
    const auto angle = engine::parseAngle(text, static_cast<int>(std::clamp<std::int64_t>(mode, 0, 4)),
                                          engine::sysVarReal(d, "ANGBASE"), engine::sysVarInt(d, "ANGDIR") != 0);
    return angle ? Value::real(*angle) : Value();
}

Value ascii(Machine&, Value* v, int) { return Value::integer(firstCode(stringArgument("ASCII", v[0]))); }

Value chr(Machine&, Value* v, int) {
    const std::int64_t code = integerArgument("CHR", v[0]);
    if (code < 0 || code > 0x10FFFF) badArgument("CHR", "a character code", v[0]);
    std::string text;
    if (code > 0) appendUtf8(text, static_cast<char32_t>(code));
    return Value::string(std::move(text));
}

Value read(Machine& m, Value* v, int n) {
    if (n == 0) return {};
    const std::string& text = stringArgument("READ", v[0]);
    Reader reader(text, m.symbols());
    Value result;
    reader.read(result);
    return result;
}

Value cvunit(Machine&, Value* v, int) {
    struct Unit {
        std::string_view names;
        double size;
        char kind;
    };
    static constexpr Unit units[] = {
        {"mm,millimeter,millimeters,millimetre,millimetres,", 0.001, 'l'},
        {"cm,centimeter,centimeters,centimetre,centimetres,", 0.01, 'l'},
        {"m,meter,meters,metre,metres,", 1.0, 'l'},
        {"km,kilometer,kilometers,kilometre,kilometres,", 1000.0, 'l'},
        {"in,inch,inches,\",", 0.0254, 'l'},
        {"ft,foot,feet,',", 0.3048, 'l'},
        {"yd,yard,yards,", 0.9144, 'l'},
        {"mi,mile,miles,", 1609.344, 'l'},
        {"radian,radians,rad,", 1.0, 'a'},
        {"degree,degrees,deg,", 3.14159265358979323846 / 180, 'a'},
        {"grad,grads,gon,", 3.14159265358979323846 / 200, 'a'},
    };
    const auto find = [](const Value& name) -> const Unit* {
        const std::string key = engine::foldCase(stringArgument("CVUNIT", name)) + ",";
        for (const Unit& u : units)
            if (u.names.starts_with(key) || u.names.find("," + key) != std::string_view::npos) return &u;
        return nullptr;
    };
    const Unit* from = find(v[1]);
    const Unit* to = find(v[2]);
    if (from == nullptr || to == nullptr || from->kind != to->kind) return {};
    const double factor = from->size / to->size;
    if (!v[0].isCons()) return Value::real(numberArgument("CVUNIT", v[0]) * factor);
    ListBuilder out;
    for (ListView item(v[0]); item; ++item) out.add(Value::real(numberArgument("CVUNIT", *item) * factor));
    return out.finish();
}

// Output ------------------------------------------------------------------------------------------------------

/// Writes to an open file, or to the transcript.
void write(Machine& m, const char* function, const std::string& text, Value* v, int n) {
    if (n > 1 && v[1].isTrue()) {
        FileObject* file = fileArgument(function, v[1]);
        if (file->file == nullptr) throw LispError(std::string(function) + ": the file is closed");
        std::fwrite(text.data(), 1, text.size(), file->file);
    } else {
        m.print(text);
    }
}

Value princ(Machine& m, Value* v, int n) {
    if (n == 0) return Value::quiet();
    write(m, "PRINC", printed(v[0], false), v, n);
    return v[0];
}

Value prin1(Machine& m, Value* v, int n) {
    if (n == 0) return Value::quiet();
    write(m, "PRIN1", printed(v[0]), v, n);
    return v[0];
}

Value print(Machine& m, Value* v, int n) {
    if (n == 0) return Value::quiet();
    write(m, "PRINT", "\n" + printed(v[0]) + " ", v, n);
    return v[0];
}

Value prompt(Machine& m, Value* v, int) {
    m.print(stringArgument("PROMPT", v[0]));
    return {};
}

Value terpri(Machine& m, Value*, int) {
    m.print("\n");
    return {};
}

Value alert(Machine& m, Value* v, int) {
    m.flush();
    std::string text = stringArgument("ALERT", v[0]);
    m.print("[ALERT] " + text + "\n");
    return {};
}

Value prin1ToString(Machine&, Value* v, int) { return Value::string(printed(v[0])); }
Value princToString(Machine&, Value* v, int) { return Value::string(printed(v[0], false)); }

}  // namespace

std::span<const BuiltinDef> stringBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"STRCAT", 0, kAny, strcat, "[string ...]", "The strings in one.", "(strcat \"a\" \"b\") -> \"ab\""},
        {"STRLEN", 0, kAny, strlen, "[string ...]", "The number of characters of all strings.",
         "(strlen \"abc\" \"de\") -> 5"},
        {"SUBSTR", 2, 3, substr, "string start [length]", "A part of a string; positions count from 1.",
         "(substr \"abcde\" 2 3) -> \"bcd\""},
        {"STRCASE", 1, 2, strcase, "string [lower]", "The string in upper case, or in lower case.",
         "(strcase \"aB\") -> \"AB\""},
        {"WCMATCH", 2, 2, wcmatch, "string patterns",
         "T when the string matches one of the patterns, which are parted by commas: * any characters, ? one "
         "character, # a digit, @ a letter, . what is neither, [abc] [a-z] one of a set, [~abc] none of it, ~ in front "
         "turns the pattern round, ` takes the next character as it is. Case matters.",
         "(wcmatch \"Wall-12\" \"W*-##\") -> T"},
        {"VL-STRING-TRIM", 2, 2, trim<true, true>, "characters string",
         "The string without such characters at its ends.", "(vl-string-trim \" \" \" a b \") -> \"a b\""},
        {"VL-STRING-LEFT-TRIM", 2, 2, trim<true, false>, "characters string", "The same at its start only.",
         "(vl-string-left-trim \"0\" \"007\") -> \"7\""},
        {"VL-STRING-RIGHT-TRIM", 2, 2, trim<false, true>, "characters string", "The same at its end only.",
         "(vl-string-right-trim \"0\" \"1.500\") -> \"1.5\""},
        {"VL-STRING-SEARCH", 2, 3, search, "pattern string [start]", "Where the pattern stands, from 0; nil: nowhere.",
         "(vl-string-search \"na\" \"banana\") -> 2"},
        {"VL-STRING-POSITION", 2, 4, positionOfCharacter, "code string [start [from-end]]",
         "Where a character stands, from 0.", "(vl-string-position 98 \"abc\") -> 1"},
        {"VL-STRING-SUBST", 3, 4, substitute, "new pattern string [start]", "Replaces the first occurrence.",
         "(vl-string-subst \"x\" \"b\" \"abcb\") -> \"axcb\""},
        {"VL-STRING-TRANSLATE", 3, 3, translate, "from to string", "Replaces characters by those of the same place.",
         "(vl-string-translate \"ab\" \"xy\" \"abba\") -> \"xyyx\""},
        {"VL-STRING-ELT", 2, 2, stringElement, "string index", "The code of a character; positions count from 0.",
         "(vl-string-elt \"abc\" 1) -> 98"},
        {"VL-STRING-MISMATCH", 2, 2, mismatch, "string string", "The length of the common beginning.",
         "(vl-string-mismatch \"abc\" \"abd\") -> 2"},
        {"VL-STRING->LIST", 1, 1, stringToList, "string", "The codes of its characters.",
         "(vl-string->list \"AB\") -> (65 66)"},
        {"VL-LIST->STRING", 1, 1, listToString, "list", "The string of character codes.",
         "(vl-list->string '(65 66)) -> \"AB\""},
    };
    return rows;
}

std::span<const BuiltinDef> conversionBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"ATOI", 1, 1, atoi, "string", "The integer that the string begins with, or 0.", "(atoi \"12abc\") -> 12"},
        {"ATOF", 1, 1, atof, "string", "The real that the string begins with, or 0.0.", "(atof \"2.5mm\") -> 2.5"},
        {"ITOA", 1, 1, itoa, "integer", "The integer as text.", "(itoa 12) -> \"12\""},
        {"RTOS", 1, 3, rtos, "number [mode [precision]]",
         "A length as text: mode 1 scientific, 2 decimal, 3 engineering, 4 architectural, 5 fractional; LUNITS and "
         "LUPREC "
         "unless given. DIMZIN says which zeros are left out.",
         "(rtos 3.14159 2 2) -> \"3.14\""},
        {"ANGTOS", 1, 3, angtos, "angle [mode [precision]]",
         "An angle in radians as text: mode 0 degrees, 1 degrees, minutes, seconds, 2 grads, 3 radians, 4 surveyor's "
         "units; AUNITS and AUPREC unless given.",
         "(angtos (/ pi 2) 0 0) -> \"90\""},
        {"DISTOF", 1, 2, distof, "string [mode]", "The length that a text means; nil: none.",
         "(distof \"2-1/2\") -> 2.5"},
        {"ANGTOF", 1, 2, angtof, "string [mode]", "The angle that a text means, in radians; nil: none.",
         "(angtof \"180\" 0) -> 3.14159"},
        {"ASCII", 1, 1, ascii, "string", "The code of the first character.", "(ascii \"A\") -> 65"},
        {"CHR", 1, 1, chr, "code", "The character of a code.", "(chr 65) -> \"A\""},
        {"READ", 0, 1, read, "[string]", "The first expression in a text, not evaluated.", "(read \"(a b)\") -> (A B)"},
        {"CVUNIT", 3, 3, cvunit, "value from to",
         "A number, or a list of them, in another unit; nil for unknown units.", "(cvunit 1 \"inch\" \"mm\") -> 25.4"},
    };
    return rows;
}

std::span<const BuiltinDef> outputBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"PRINC", 0, 2, princ, "[value [file]]",
         "Writes a value, strings without quotes. Without arguments nothing is written, not even the value: the quiet "
         "end of a command.",
         "(princ \"text\") -> \"text\""},
        {"PRIN1", 0, 2, prin1, "[value [file]]", "Writes a value as it is read back.", "(prin1 \"a\") -> \"a\""},
        {"PRINT", 0, 2, print, "[value [file]]", "As PRIN1, on a line of its own.", "(print 'a) -> A"},
        {"PROMPT", 1, 1, prompt, "string", "Writes a text.", "(prompt \"Working ...\") -> nil"},
        {"TERPRI", 0, 0, terpri, "", "Ends the line.", "(terpri) -> nil"},
        {"ALERT", 1, 1, alert, "string", "Writes a transcript line marked [ALERT].", "(alert \"Done\") -> nil"},
        {"VL-PRIN1-TO-STRING", 1, 1, prin1ToString, "value", "What PRIN1 would write.",
         "(vl-prin1-to-string '(a \"b\")) -> \"(A \\\"b\\\")\""},
        {"VL-PRINC-TO-STRING", 1, 1, princToString, "value", "What PRINC would write.",
         "(vl-princ-to-string '(a \"b\")) -> \"(A b)\""},
    };
    return rows;
}

}  // namespace kova::script::lisp
