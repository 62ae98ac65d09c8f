#include "io/content.hpp"

#include "io/file_content.hpp"
#include "strings/case_fold.hpp"

namespace kova::io {

namespace {

constexpr std::size_t kHeadSize = 63;

bool endsWithNoCase(std::string_view text, std::string_view lowerTail) {
    return text.size() >= lowerTail.size() &&
           strings::equalNoCase(text.substr(text.size() - lowerTail.size()), lowerTail);
}

}  // namespace

FileKind kindByExtension(std::string_view path) {
    if (endsWithNoCase(path, ".dxf")) return FileKind::Dxf;
    if (endsWithNoCase(path, ".dwg")) return FileKind::Dwg;
    return FileKind::Native;
}

FileKind kindByContent(std::string_view head) {
    head = head.substr(0, kHeadSize);
    if (head.starts_with(kBinaryDxfMark)) return FileKind::Dxf;
    if (head.starts_with("\xEF\xBB\xBF")) head.remove_prefix(3);
    const std::size_t start = head.find_first_not_of(" \t\r\n\v\f");
    if (start == std::string_view::npos) return FileKind::Native;
    head.remove_prefix(start);
    const std::size_t digits = std::min(head.find_first_not_of("0123456789"), head.size());
    const bool lineEnds = digits < head.size() && (head[digits] == '\n' || head[digits] == '\r');
    return digits > 0 && lineEnds ? FileKind::Dxf : FileKind::Native;
}

FileKind recognise(const std::string& path) {
    const FileKind named = kindByExtension(path);
    if (named != FileKind::Native) return named;
    std::string head;
    if (!readFile(path, head, kHeadSize).empty()) return FileKind::Native;
    return kindByContent(head);
}

}  // namespace kova::io
