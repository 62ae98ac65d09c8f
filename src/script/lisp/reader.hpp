#pragma once

#include <string_view>

#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// Reads expressions from a text, one after the other. Nesting costs no stack.
class Reader {
public:
    /// The text must outlive the reader.
    Reader(std::string_view text, SymbolTable& symbols) : text_(text), symbols_(symbols) {}

    /// The next expression; false at the end of the text. Throws LispError.
    bool read(Value& result);
    /// Offset behind what was read.
    std::size_t position() const { return at_; }

private:
    struct Open;

    bool atEnd() const { return at_ >= text_.size(); }
    char peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
    void advance();
    void skipBlanks();
    bool startsNumber() const;
    Value readString();
    Value readNumber();
    Value readSymbol();

    std::string_view text_;
    SymbolTable& symbols_;
    std::size_t at_ = 0;
    std::size_t line_ = 1;
    std::size_t column_ = 1;
};

}  // namespace kova::script::lisp
