// Names and the records they stand for.
#include "engine/entities/dimensions/arrowheads.hpp"
#include "io/dxf/writing/writer.hpp"
#include "strings/utf8.hpp"

namespace kova::io::dxf {

using engine::Name;

namespace {

bool isForbidden(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || std::string_view("<>/\\\":;?*|,=`").find(c) != std::string_view::npos;
}

}  // namespace

std::string_view Writer::symbol(Name name) {
    if (lastName_.identical(name)) return lastPlain_ ? name.view() : std::string_view(cleanNames_.at(&name.str()));
    const std::string_view text = name.view();
    std::size_t start = 0;
    // An asterisk in front marks anonymous blocks.
    if (text.size() > 1 && text.front() == '*') start = 1;
    bool plain = !text.empty() && text.size() <= 255;
    for (std::size_t i = start; i < text.size() && plain; ++i) plain = !isForbidden(text[i]) || text[i] == '|';
    lastName_ = name;
    lastPlain_ = plain;
    if (plain) return text;

    const auto [it, fresh] = cleanNames_.try_emplace(&name.str());
    if (!fresh) return it->second;
    // The same name in another case stays the same.
    const auto [known, first] = cleanOf_.try_emplace(name.key());
    if (first) {
        std::string clean(text.substr(0, strings::wholeCharacters(text, 200)));
        for (char& c : clean)
            if (isForbidden(c)) c = '_';
        if (clean.empty()) clean = "_";
        known->second = freeName(clean, cleanTaken_);
    }
    it->second = known->second;
    return it->second;
}

std::string Writer::freeName(const std::string& wanted, NumberedTexts& taken) {
    // The number goes on where it stopped for the same text: a thousand names may differ in one character only.
    std::string folded = engine::foldCase(wanted);
    if (taken.names.insert(folded).second) return wanted;
    std::size_t& number = taken.last.try_emplace(std::move(folded), 1).first->second;
    for (;;) {
        std::string candidate = wanted + "_" + std::to_string(++number);
        if (taken.names.insert(engine::foldCase(candidate)).second) return candidate;
    }
}

std::uint64_t Writer::recordHandle(HandleMap& map, std::vector<Name>& missing, Name name) {
    const auto [it, fresh] = map.try_emplace(name.key(), 0);
    if (fresh) {
        it->second = newHandle();
        missing.push_back(name);
    }
    return it->second;
}

std::uint64_t Writer::textStyleHandle(Name name) {
    return recordHandle(styles_, missingStyles_, name.empty() ? engine::commonNames().standard : name);
}

std::uint64_t Writer::dimStyleHandle(Name name) {
    return recordHandle(dimStyles_, missingDimStyles_, name.empty() ? engine::commonNames().standard : name);
}

std::uint64_t Writer::blockHandle(Name name) { return recordHandle(blockRecords_, missingBlocks_, name); }

std::uint64_t Writer::arrowHandle(Name name) {
    const engine::ArrowKind kind = engine::arrowKind(name.view());
    if (kind == engine::ArrowKind::ClosedFilled) return 0;
    if (kind == engine::ArrowKind::User) return blockHandle(name);
    return blockHandle(Name(engine::arrowBlockName(kind)));
}

void Writer::linetypeName(int code, Name name) {
    if (name.empty()) name = engine::commonNames().byLayer;
    linetypeHandle(name);
    out_->text(code, symbol(name));
}

void Writer::textStyleName(int code, Name name) {
    if (name.empty()) name = engine::commonNames().standard;
    textStyleHandle(name);
    out_->text(code, symbol(name));
}

void Writer::dimStyleName(int code, Name name) {
    if (name.empty()) name = engine::commonNames().standard;
    dimStyleHandle(name);
    out_->text(code, symbol(name));
}

}  // namespace kova::io::dxf
