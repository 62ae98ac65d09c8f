#include "cmd/processor.hpp"

#include "engine/inquiry/value_text.hpp"
#include "engine/associativity/associativity.hpp"

namespace kova::cmd {

namespace {

/// Stands among inline answers for an Enter between two blanks; no typed word can be it.
const std::string kEnterWord = "\n";

/// With `enters` each further blank of a run between words behind the first gives kEnterWord; a run with a tab in it,
/// which only aligns, gives none.
std::vector<std::string> words(std::string_view line, bool enters) {
    std::vector<std::string> words;
    std::size_t i = 0;
    while (i < line.size()) {
        if (line[i] == ' ' || line[i] == '\t') {
            const std::size_t from = i;
            i = std::min(line.find_first_not_of(" \t", from), line.size());
            const std::string_view blanks = line.substr(from, i - from);
            if (enters && !words.empty() && i < line.size() && blanks.find('\t') == std::string_view::npos)
                words.insert(words.end(), blanks.size() - 1, kEnterWord);
            continue;
        }
        std::string word;
        bool quoted = false;
        for (; i < line.size() && (quoted || (line[i] != ' ' && line[i] != '\t')); ++i) {
            if (line[i] == '"' && (quoted || word.empty()) &&
                (quoted || line.find('"', i + 1) != std::string_view::npos))
                quoted = !quoted;
            else
                word += line[i];
        }
        words.push_back(std::move(word));
    }
    return words;
}

}  // namespace

std::vector<std::string> splitWords(std::string_view line) { return words(line, false); }

CommandProcessor::CommandProcessor(doc::Document& document, CommandRegistry& registry, MessageSink sink)
    : document_(document),
      registry_(registry),
      sink_(std::move(sink)),
      selection_(document, {[this](const std::string& text) { message(text); },
                            [this](const std::string& text) { override_ = text; },
                            [this](std::span<const math::Vector2> corners) {
                                if (tool_) tool_->crossingSelected(corners);
                            }}) {}

CommandProcessor::~CommandProcessor() = default;

const std::string& CommandProcessor::prompt() const {
    static const std::string idle = kIdlePrompt;
    if (!isActive()) return idle;
    return override_.empty() ? prompt_ : override_;
}

void CommandProcessor::promptChanged(const std::string& text) { prompt_ = text; }
void CommandProcessor::finished() { ended_ = true; }

void CommandProcessor::message(const std::string& text) {
    if (!text.empty()) sink_(text);
}

CommandProcessor::Start CommandProcessor::startLine(std::string_view line) {
    std::vector<std::string> typed = words(line, true);
    if (typed.empty()) return Start::Unknown;
    const auto [command, commandLine] = registry_.resolve(typed.front());
    if (command == nullptr) return Start::Unknown;
    typed.erase(typed.begin());
    run(*command, commandLine, std::move(typed), false);
    return Start::Done;
}

CommandProcessor::Start CommandProcessor::runTransparent(std::string_view name) {
    const auto [command, commandLine] = registry_.resolve(name);
    if (command == nullptr) return Start::Unknown;
    if (command->isInteractive()) return Start::Refused;
    run(*command, commandLine, {}, isActive());
    if (isActive() && tool_->isSelectingObjects()) guarded([this] { tool_->selectionChanged(); });
    return Start::Done;
}

namespace {

/// Commands that go to another space, or work between spaces.
bool leavesBlockEditor(std::string_view name) {
    static constexpr std::string_view kNames[] = {"CHSPACE", "LAYOUT", "MSPACE", "MVIEW", "PSPACE", "VPLAYER"};
    return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

}  // namespace

void CommandProcessor::run(Command& command, bool commandLine, std::vector<std::string> arguments, bool transparent) {
    if (document_.blockEdit() && leavesBlockEditor(command.name()))
        return message(command.name() + " is not allowed in the block editor.");
    document_.associativity().takeLostHatches();  // by whatever came before
    document_.takeUntransformed();
    if (!command.isInteractive()) {
        std::erase(arguments, kEnterWord);
        CommandContext context{document_, *this, std::move(arguments), transparent, commandLine, nullptr};
        try {
            command.execute(context);
        } catch (const std::exception& error) {
            message(std::string("Command failed: ") + error.what());
            return;
        }
        tellWhatRemains();
        if (context.previous) selection_.setPrevious(std::move(*context.previous));
        if (!context.handOver || transparent) return;
        arguments = std::move(context.arguments);
        activate(std::move(context.handOver), command.name(), commandLine, !arguments.empty());
    } else {
        std::unique_ptr<Tool> tool = command.createTool();
        if (!tool) return;
        activate(std::move(tool), command.name(), commandLine, !arguments.empty());
    }
    // The words behind the name answer the first prompts; what is left when the command has ended is a line of
    // its own.
    std::size_t next = 0;
    const auto isQuoted = [](const std::string& word) {
        return word.empty() || word.find_first_of(" \t") != std::string::npos;
    };
    while (next < arguments.size() && isActive()) {
        std::string word = arguments[next++];
        if (word == kEnterWord) {
            input({});
            continue;
        }
        // A line of text goes on to the end of the line, or to what stands in quotes.
        if (tool_->takesRestOfLine() && !isQuoted(word))
            for (; next < arguments.size() && !isQuoted(arguments[next]); ++next)
                if (arguments[next] == kEnterWord)
                    word += ' ';
                else
                    word += ' ' + arguments[next];
        input(word);
    }
    while (next < arguments.size() && arguments[next] == kEnterWord) ++next;
    if (next >= arguments.size()) return;
    if (services_ == nullptr) return;
    std::string rest;
    for (; next < arguments.size(); ++next) {
        const std::string& word = arguments[next];
        if (word == kEnterWord)
            rest += ' ';
        else
            rest += (rest.empty() ? "" : " ") + (isQuoted(word) ? '"' + word + '"' : word);
    }
    services_->queueLines({rest});
}

void CommandProcessor::guarded(const std::function<void()>& work) {
    ++depth_;
    try {
        work();
    } catch (const std::exception& error) {
        message(std::string("Command failed: ") + error.what());
        ended_ = true;
    }
    --depth_;
    settle();
}

void CommandProcessor::activate(std::unique_ptr<Tool> tool, const std::string& name, bool commandLine,
                                bool inlineInput) {
    tool_ = std::move(tool);
    activeName_ = name;
    prompt_.clear();
    override_.clear();
    ended_ = false;
    selecting_ = false;
    const std::vector<std::uint64_t>& chosen = document_.selection().ids();
    preselected_ = !chosen.empty() && chosen == selection_.previous();
    tool_->attach(&document_, viewport_, this);
    tool_->setCommandLineVariant(commandLine);
    tool_->setInlineInput(inlineInput);
    tool_->activate();
    guarded([this] { tool_->begin(); });
}

void CommandProcessor::input(const std::string& line) {
    if (!isActive()) return;
    if (tool_->isSelectingObjects()) {
        if (!selecting_) {
            selecting_ = true;
            selection_.reset();
            if (std::exchange(preselected_, false)) selection_.recallCrossings();
        }
        if (selection_.take(line)) {
            guarded([this] { tool_->selectionChanged(); });
            if (!isActive() || !selection_.wantsEnd()) return;
            endSelecting();
            guarded([this] { tool_->textInput({}); });
            return;
        }
        // Enter completes the selection; a command that then asks for another one begins it anew.
        if (line.empty()) endSelecting();
    }
    guarded([&] { tool_->textInput(line); });
}

void CommandProcessor::endSelecting() {
    selecting_ = false;
    override_.clear();
    // What was selected is what P selects from now on, also while the command goes on.
    if (!document_.selection().empty()) selection_.setPrevious(document_.selection().ids(), selection_.crossings());
}

void CommandProcessor::settle() {
    if (depth_ > 0 || !tool_) return;
    if (selecting_ && !tool_->isSelectingObjects()) endSelecting();
    if (!ended_) return;
    const bool keep = tool_->keepsSelection();
    tool_->end();
    tool_.reset();
    activeName_.clear();
    override_.clear();
    ended_ = false;
    tellWhatRemains();
    if (!document_.selection().empty()) {
        if (document_.selection().ids() != selection_.previous()) selection_.setPrevious(document_.selection().ids());
        if (!keep) document_.selection().clear();
    }
}

void CommandProcessor::tellWhatRemains() {
    if (document_.associativity().takeLostHatches() > 0) message("Hatch boundary associativity removed.");
    if (const std::size_t count = document_.takeUntransformed(); count > 0)
        message(counted(count, "solid") + " left unchanged: the modeller data cannot be transformed.");
}

bool CommandProcessor::cancel() {
    if (!isActive()) return false;
    guarded([this] {
        tool_->cancel();
        ended_ = true;
    });
    return true;
}

void CommandProcessor::reset() {
    selection_.setPrevious({});
    if (depth_ > 0) return;
    tool_.reset();
    activeName_.clear();
    override_.clear();
    ended_ = false;
    selecting_ = false;
}

}  // namespace kova::cmd
