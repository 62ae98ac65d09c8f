#include "source_questions.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace kova::cmd {

namespace {

bool isWordStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isWordPart(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// A question to the user: it ends with a colon, or shows its options and gets its default added.
bool isPrompt(const std::string& text) {
    if (text.size() < 8 || std::isupper(static_cast<unsigned char>(text[0])) == 0) return false;
    if (text.find('\n') != std::string::npos) return false;
    return text.ends_with(':') || (text.ends_with(']') && text.find('[') != std::string::npos);
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

/// String literals that follow each other are one; escapes are undone as far as prompts have them.
SourceQuestions::Tokens SourceQuestions::tokensOf(const std::string& source) {
    Tokens tokens;
    const auto lineEnd = [&](std::size_t i) { return std::min(source.find('\n', i), source.size()); };
    for (std::size_t i = 0; i < source.size();) {
        const char c = source[i];
        if (std::isspace(static_cast<unsigned char>(c)) != 0) {
            ++i;
        } else if (c == '#' || source.compare(i, 2, "//") == 0) {
            i = lineEnd(i);
        } else if (c == '\'' && (i == 0 || std::isdigit(static_cast<unsigned char>(source[i - 1])) == 0)) {
            const std::size_t end = source.find('\'', source[i + 1] == '\\' ? i + 3 : i + 2);
            i = end == std::string::npos ? source.size() : end + 1;
        } else if (c == '"') {
            if (tokens.empty() || tokens.back().kind != Token::Kind::Text) tokens.push_back({Token::Kind::Text, {}});
            for (++i; i < source.size() && source[i] != '"'; ++i) {
                if (source[i] == '\\') ++i;
                tokens.back().text += source[i];
            }
            ++i;
        } else if (isWordStart(c)) {
            std::size_t end = i;
            while (end < source.size() && isWordPart(source[end])) ++end;
            tokens.push_back({Token::Kind::Word, source.substr(i, end - i)});
            i = end;
        } else {
            const bool scope = source.compare(i, 2, "::") == 0;
            tokens.push_back({Token::Kind::Sign, scope ? "::" : std::string(1, c)});
            i += scope ? 2 : 1;
        }
    }
    return tokens;
}

SourceQuestions::Chunk SourceQuestions::chunkOf(Tokens tokens, const std::string& owner) {
    Chunk chunk;
    chunk.owner = owner;
    std::size_t i = 0;
    const auto is = [&](std::size_t at, const char* text) { return at < tokens.size() && tokens[at].text == text; };
    if (is(0, "template"))
        for (int depth = 0; ++i < tokens.size();) {
            if (is(i, "<")) ++depth;
            if (is(i, ">") && --depth == 0) break;
        }
    const std::size_t head = is(0, "template") ? i + 1 : 0;
    const auto body = static_cast<std::size_t>(
        std::find_if(tokens.begin(), tokens.end(), [](const Token& t) { return t.text == "{"; }) - tokens.begin());
    if ((is(head, "class") || is(head, "struct")) && body < tokens.size()) {
        chunk.isClass = true;
        chunk.name = tokens[head + 1].text;
        for (std::size_t k = head + 2; k < body; ++k)
            if (tokens[k].kind == Token::Kind::Word) chunk.bases.push_back(tokens[k].text);
        chunk.members = chunksOf(tokens, body + 1, tokens.size() - 1, chunk.name);
    } else if (tokens[0].text.starts_with("KOVA_")) {
        chunk.name = tokens[0].text;
    } else {
        for (i = head; i < tokens.size(); ++i) {
            if (is(i, "(") || is(i, "=") || is(i, "{") || is(i, ";") || is(i, "[")) break;
            if (tokens[i].kind != Token::Kind::Word) continue;
            if (is(i + 1, "::")) chunk.owner = tokens[i].text;
            chunk.name = tokens[i].text;
        }
        chunk.entry = chunk.name == owner;
        for (; i < tokens.size() && !is(i, "{"); ++i) chunk.entry = chunk.entry || is(i, "override");
    }
    chunk.tokens = std::move(tokens);
    return chunk;
}

std::vector<SourceQuestions::Chunk> SourceQuestions::chunksOf(const Tokens& tokens, std::size_t from, std::size_t to,
                                                              const std::string& owner) {
    std::vector<Chunk> chunks;
    const auto is = [&](std::size_t at, const char* text) { return at < to && tokens[at].text == text; };
    for (std::size_t i = from; i < to;) {
        // What only encloses or divides declarations.
        if (is(i, "namespace")) {
            while (i < to && !is(i, "{") && !is(i, ";")) ++i;
            ++i;
            continue;
        }
        if (is(i, "}") || is(i, ";")) {
            ++i;
            continue;
        }
        if (tokens[i].kind == Token::Kind::Word && is(i + 1, ":")) {
            i += 2;
            continue;
        }
        const std::size_t begin = i;
        const bool macro = tokens[i].text.starts_with("KOVA_");
        int depth = 0;
        for (; i < to; ++i) {
            if (is(i, "(") || is(i, "{")) ++depth;
            if (is(i, ")") || is(i, "}")) --depth;
            if (depth > 0) continue;
            if (is(i, ";") || (macro && is(i, ")"))) break;
            if (is(i, "}") && !is(i + 1, ",") && !is(i + 1, "{") && !is(i + 1, ";") && !is(i + 1, ")")) break;
        }
        i = std::min(i + 1, to);
        chunks.push_back(chunkOf(Tokens(tokens.begin() + static_cast<std::ptrdiff_t>(begin),
                                        tokens.begin() + static_cast<std::ptrdiff_t>(i)),
                                 owner));
    }
    return chunks;
}

void SourceQuestions::read(const std::string& path) {
    const std::filesystem::path file(path);
    const std::string stem = (file.parent_path() / file.stem()).string();
    File& made = files_[stem];
    const std::string source = contentOf(path);
    std::vector<Chunk> chunks;
    {
        const Tokens tokens = tokensOf(source);
        chunks = chunksOf(tokens, 0, tokens.size(), {});
    }
    for (Chunk& chunk : chunks) made.chunks.push_back(std::move(chunk));
    // Questions are shared by the room of prompts, and by what stands beside the commands.
    std::istringstream lines(source);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("#include \"cmd/")) continue;
        const std::string included = line.substr(14, line.size() - 14 - 5);
        if (included.starts_with("commands/") || included.starts_with("prompts/"))
            made.shared.push_back((std::filesystem::path(KOVA_SOURCE_DIR "/src/cmd") / included).string());
    }
}

SourceQuestions::SourceQuestions(const std::string& folder) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".hpp")
            paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    for (const std::string& path : paths) read(path);
    for (const auto& [stem, file] : files_)
        for (const Chunk& chunk : file.chunks)
            for (std::size_t i = 0; i + 2 < chunk.tokens.size(); ++i)
                if (chunk.tokens[i].kind == Token::Kind::Text && chunk.tokens[i + 1].text == "," &&
                    chunk.tokens[i + 2].kind == Token::Kind::Text)
                    places_.emplace(std::pair(chunk.tokens[i].text, chunk.tokens[i + 2].text), Place{stem, &chunk, i});
}

SourceQuestions::Place SourceQuestions::find(const std::string& name, const std::string& title) const {
    const auto place = places_.find({name, title});
    return place == places_.end() ? Place() : place->second;
}

/// Goes from a command's tool to all that it names.
class SourceQuestions::Walk {
public:
    Walk(const SourceQuestions& all, std::string file) : all_(all), file_(std::move(file)) {}

    void tool(const Chunk& made, const std::string& file) {
        std::vector<std::pair<const Chunk*, std::string>> chain;
        std::set<std::string> named;
        line(made, file, chain);
        for (const auto& [owner, where] : chain) {
            std::set<std::string> here;
            for (const Chunk* member : membersOf(*owner, where)) {
                if ((!member->entry && member->name != "operator") || named.contains(member->name)) continue;
                here.insert(member->name);
                follow(*member, where, chain);
            }
            named.insert(here.begin(), here.end());
        }
    }
    /// Whatever a helper's members name.
    void whole(const Chunk& made, const std::string& file) {
        if (!made.isClass) return follow(made, file, {});
        std::vector<std::pair<const Chunk*, std::string>> chain;
        line(made, file, chain);
        for (const Chunk* member : membersOf(made, file)) follow(*member, file, chain);
    }
    void words(const Tokens& tokens, std::size_t from, std::size_t to, const std::string& file) {
        for (std::size_t i = from; i < to; ++i) take(tokens, i, file, {});
    }
    std::vector<std::string> questions;

private:
    using Chain = std::vector<std::pair<const Chunk*, std::string>>;

    /// The class and its bases, the derived ones first.
    void line(const Chunk& made, const std::string& file, Chain& chain) const {
        for (const auto& known : chain)
            if (known.first == &made) return;
        chain.emplace_back(&made, file);
        for (const std::string& base : made.bases)
            for (const auto& [chunk, where] : named(base, file))
                if (chunk->isClass) line(*chunk, where, chain);
    }
    /// Those within the class and those written outside of it.
    std::vector<const Chunk*> membersOf(const Chunk& made, const std::string& file) const {
        std::vector<const Chunk*> members;
        for (const Chunk& member : made.members) members.push_back(&member);
        for (const Chunk& chunk : all_.files_.at(file).chunks)
            if (!chunk.isClass && chunk.owner == made.name && !made.name.empty()) members.push_back(&chunk);
        return members;
    }
    /// What the name means in a file: its own, else of the shared files that it includes.
    std::vector<std::pair<const Chunk*, std::string>> named(const std::string& name, const std::string& file) const {
        std::vector<std::pair<const Chunk*, std::string>> found;
        const auto look = [&](const std::string& where) {
            const auto known = all_.files_.find(where);
            if (known == all_.files_.end()) return;
            for (const Chunk& chunk : known->second.chunks)
                if (chunk.name == name && (chunk.isClass || chunk.owner.empty())) found.emplace_back(&chunk, where);
        };
        look(file);
        if (!found.empty()) return found;
        const auto known = all_.files_.find(file);
        if (known == all_.files_.end()) return found;
        for (const std::string& where : known->second.shared)
            if (where != file) look(where);
        return found;
    }
    void follow(const Chunk& chunk, const std::string& file, const Chain& chain) {
        if (!seen_.insert({&chunk, chain.empty() ? nullptr : chain.front().first}).second) return;
        for (std::size_t i = 0; i < chunk.tokens.size(); ++i) take(chunk.tokens, i, file, chain);
    }
    void take(const Tokens& tokens, std::size_t i, const std::string& file, const Chain& chain) {
        const Token& token = tokens[i];
        if (token.kind == Token::Kind::Text) {
            if (isPrompt(token.text) && std::find(questions.begin(), questions.end(), token.text) == questions.end())
                questions.push_back(token.text);
            return;
        }
        if (token.kind != Token::Kind::Word) return;
        for (const auto& [owner, where] : chain) {
            if (owner->name == token.text) return;
            bool any = false;
            for (const Chunk* member : membersOf(*owner, where)) {
                if (member->name != token.text || member->isClass) continue;
                any = true;
                follow(*member, where, chain);
            }
            if (any) return;
        }
        const bool member = i > 0 && (tokens[i - 1].text == "." || (tokens[i - 1].text == ">" && i > 1 && tokens[i - 2].text == "-"));
        if (member) return;
        for (const auto& [chunk, where] : named(token.text, file)) {
            if (!seen_.insert({chunk, chunk}).second) continue;
            whole(*chunk, where);
        }
    }

    const SourceQuestions& all_;
    std::string file_;
    std::set<std::pair<const Chunk*, const Chunk*>> seen_;
};

std::vector<std::string> SourceQuestions::of(const std::string& name, const std::string& title) const {
    const Place place = find(name, title);
    if (place.chunk == nullptr) return {};
    const std::vector<Chunk>& chunks = files_.at(place.file).chunks;
    Walk walk(*this, place.file);
    const Tokens& tokens = place.chunk->tokens;
    if (place.chunk->isClass) {
        walk.tool(*place.chunk, place.file);
    } else if (place.chunk->name == "KOVA_TOOL_COMMAND") {
        const std::string tool = tokens[2].text + "Tool";
        for (const Chunk& chunk : chunks)
            if (chunk.isClass && chunk.name == tool) walk.tool(chunk, place.file);
    } else {
        // A row of a table: its own words, and what the tools that read the table ask.
        std::size_t from = place.token;
        std::size_t to = place.token;
        for (int depth = 0; to < tokens.size(); ++to) {
            if (tokens[to].text == "{") ++depth;
            if (tokens[to].text == "}" && --depth < 0) break;
        }
        while (from > 0 && tokens[from].text != "{") --from;
        walk.words(tokens, from, to, place.file);
    }
    return walk.questions;
}

}  // namespace kova::cmd
