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
    std::string clean(text.substr(0, strings::wholeCharacters(text, 200)));
    for (char& c : clean)
        if (isForbidden(c)) c = '_';
    if (clean.empty()) clean = "_";
    // Different names stay different; the same name in another case stays the same.
    std::string candidate = clean;
    const std::string folded = engine::foldCase(text);
    for (int n = 2; !cleanTaken_.insert(engine::foldCase(candidate) + '\n' + folded).second ||
                    std::any_of(cleanNames_.begin(), cleanNames_.end(),
                                [&](const auto& other) {
                                    return other.first != &name.str() && engine::equalNoCase(other.second, candidate) &&
                                           !engine::equalNoCase(*other.first, text);
                                });
         ++n)
        candidate = clean + "_" + std::to_string(n);
    it->second = candidate;
    return it->second;
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
