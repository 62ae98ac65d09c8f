// Command lines, one a line, typed into a fresh session. Nothing may crash, hang or leave a command that cannot be
// cancelled; saving, undoing all of it and making it again must work from wherever it ended.
#include <cstdint>
#include <string_view>

#include "command_session.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kova::fuzzing::CommandSession session;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        session.feed(std::string(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    session.finish();
    return 0;
}
