// Command lines, one a line, typed into a fresh session. Nothing may crash, hang or leave a command that cannot be
// cancelled; undoing all of it and making it again must work from wherever it ended.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "engine/sysvar.hpp"
#include "headless/session.hpp"

namespace {

/// What commands may do to the world outside: nothing. Drawings are made, lines are queued; files are not touched.
class SealedServices final : public kova::cmd::AppServices {
public:
    explicit SealedServices(kova::headless::Session& session) : session_(session) {}
    std::string open(const std::string&) override { return "Not here."; }
    std::string save(const std::string&) override { return "Not here."; }
    void newDrawing(const std::string&) override { session_.newDrawing(); }
    void queueLines(std::vector<std::string> lines) override { session_.queueLines(std::move(lines)); }
    void wait(int) override {}

private:
    kova::headless::Session& session_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kova;
    engine::resetProfileVariables();
    cmd::CommandRegistry::instance().resetAliases();
    headless::Session session;
    SealedServices services(session);
    session.processor().setServices(&services);
    // LISP could write files; it has a target of its own.
    session.setLisp(nullptr);

    std::string_view text(reinterpret_cast<const char*>(data), size);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        session.feed(std::string(text.substr(0, end)));
        if (session.currentPrompt().empty()) std::abort();
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    session.cancel();
    if (session.isWaiting()) std::abort();
    session.takeOutput();

    doc::Document& document = session.document();
    while (document.isGroupOpen()) document.endGroup();
    const std::size_t entities = document.drawing().entityCount();
    const std::size_t steps = document.history().undoCount();
    document.undoTo(0);
    for (std::size_t i = 0; i < steps; ++i)
        if (!document.redo()) std::abort();
    if (document.drawing().entityCount() != entities) std::abort();
    return 0;
}
