#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cmd/command.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection.hpp"

namespace kova::cmd {

/// The prompt shown while no command is running.
inline constexpr const char* kIdlePrompt = "Command:";

/// Runs commands: starts them by name, feeds lines to the active tool, ends it. One tool is active at a time;
/// one-shot commands may run beside it.
class CommandProcessor final : public ToolHost {
public:
    using MessageSink = std::function<void(const std::string&)>;

    CommandProcessor(doc::Document& document, CommandRegistry& registry, MessageSink sink);
    ~CommandProcessor() override;

    void setServices(AppServices* services) { services_ = services; }

    enum class Start { Unknown, Refused, Done };
    /// Starts the command that the line names, with the words behind the name as inline answers. A command that
    /// completes at once, and words left over then, are dealt with before this returns.
    Start startLine(std::string_view line);
    /// Runs a one-shot command beside the active tool; Refused for an interactive one.
    Start runTransparent(std::string_view name);
    /// Feeds one line to the active tool (or to the selection that it shares). An empty line is Enter.
    void input(const std::string& line);

    bool isActive() const { return tool_ != nullptr && tool_->isActive(); }
    /// The running command's name in upper case; empty when idle.
    const std::string& activeCommand() const { return activeName_; }
    /// The active tool is at work on a line, further up the stack; else it waits.
    bool isAtWork() const { return depth_ > 0; }
    /// The prompt being shown: "Command:" when idle.
    const std::string& prompt() const;
    /// Cancels the active tool as Escape would; false when there was none.
    bool cancel();
    Tool* tool() { return tool_.get(); }
    /// What P selects, by id; programs that select themselves set it too.
    const std::vector<std::uint64_t>& previousSelection() const { return selection_.previous(); }
    void setPreviousSelection(std::vector<std::uint64_t> ids, CrossingWindows crossings = {}) {
        selection_.setPrevious(std::move(ids), std::move(crossings));
    }
    void setViewport(Viewport* viewport) { viewport_ = viewport; }
    /// Forgets what P would select and ends any command without a word: the document is replaced. A command that is
    /// itself replacing the document ends by itself.
    void reset();

    void promptChanged(const std::string& text) override;
    void finished() override;
    void message(const std::string& text) override;
    AppServices* services() override { return services_; }
    CommandRegistry* registry() override { return &registry_; }

private:
    void run(Command& command, bool commandLine, std::vector<std::string> arguments, bool transparent);
    void activate(std::unique_ptr<Tool> tool, const std::string& name, bool commandLine, bool inlineInput);
    /// Lets the active tool, or a one-shot command, work. What it throws ends it with a line.
    void guarded(const std::function<void()>& work);
    void endSelecting();
    void settle();
    void tellWhatRemains();

    doc::Document& document_;
    CommandRegistry& registry_;
    MessageSink sink_;
    AppServices* services_ = nullptr;
    Viewport* viewport_ = nullptr;
    std::unique_ptr<Tool> tool_;
    std::string activeName_;
    std::string prompt_ = kIdlePrompt;
    std::string override_;
    SelectionDialogue selection_;
    bool selecting_ = false;
    bool preselected_ = false;  ///< the previous selection stood selected when the command began
    bool ended_ = false;
    int depth_ = 0;
};

/// Splits a line at blanks; text in double quotes stays one word, without its quotes.
std::vector<std::string> splitWords(std::string_view line);

}  // namespace kova::cmd
