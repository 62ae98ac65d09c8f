#pragma once

#include <string>
#include <string_view>

namespace kova::engine {

/// A layer, linetype or style name: an 8-byte handle to an interned string that reads as a string.
///
/// Names are shared, never copied: a million entities on one layer hold one text. They compare without
/// regard to case (as symbol tables do) and keep the case they were given. Interned texts live until the
/// process ends; names are used on the main thread only.
class Name {
public:
    /// The empty name.
    Name() noexcept;
    Name(std::string_view text);                                        // NOLINT: implicit on purpose
    Name(const std::string& text) : Name(std::string_view(text)) {}     // NOLINT
    Name(const char* text) : Name(std::string_view(text)) {}            // NOLINT

    const std::string& str() const noexcept { return entry_->text; }
    std::string_view view() const noexcept { return entry_->text; }
    operator std::string_view() const noexcept { return entry_->text; }  // NOLINT
    bool empty() const noexcept { return entry_->text.empty(); }

    /// The same for all names that are equal without regard to case; usable as a hash key.
    const void* key() const noexcept { return entry_->folded; }
    /// The name in folded (lower) case.
    const std::string& folded() const noexcept { return entry_->folded->text; }

    /// Equal without regard to case.
    friend bool operator==(const Name& a, const Name& b) noexcept { return a.entry_->folded == b.entry_->folded; }
    friend bool operator==(const Name& a, std::string_view b) { return a == Name(b); }
    friend bool operator==(const Name& a, const char* b) { return a == Name(b); }
    /// Equal to the letter.
    bool identical(const Name& o) const noexcept { return entry_ == o.entry_; }

private:
    friend class NamePool;
    struct Entry {
        std::string text;
        const Entry* folded;
    };
    const Entry* entry_;
};

struct NameHash {
    std::size_t operator()(const Name& n) const noexcept { return std::hash<const void*>{}(n.key()); }
};

/// Names that the model uses everywhere, interned once.
struct CommonNames {
    Name empty;
    Name layerZero{"0"};
    Name byLayer{"ByLayer"};
    Name byBlock{"ByBlock"};
    Name continuous{"Continuous"};
    Name standard{"Standard"};
    Name defpoints{"Defpoints"};
    Name normal{"Normal"};
};
const CommonNames& commonNames();

/// UTF-8 text folded for comparison without regard to case.
std::string foldCase(std::string_view text);
/// UTF-8 text in upper case, as keywords and command names are compared.
std::string upperCase(std::string_view text);
/// Equal without regard to case, for UTF-8 texts that are not worth interning.
bool equalNoCase(std::string_view a, std::string_view b);

}  // namespace kova::engine
