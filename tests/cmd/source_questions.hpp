#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace kova::cmd {

/// Which questions a command can ask, read from the sources of the commands: those in the functions that its tool
/// reaches, by name, in its own file and in the files of shared questions that this includes.
class SourceQuestions {
public:
    /// Reads all command sources below the folder of the module's sources.
    explicit SourceQuestions(const std::string& folder);
    /// True when some file registers a command of that name and title.
    bool knows(const std::string& name, const std::string& title) const { return !find(name, title).file.empty(); }
    /// The questions, in the order of the source; empty for a command that asks nothing.
    std::vector<std::string> of(const std::string& name, const std::string& title) const;
    /// The file that registers the command, without extension; empty: none.
    std::string fileOf(const std::string& name, const std::string& title) const { return find(name, title).file; }

private:
    struct Token {
        enum class Kind { Word, Text, Sign } kind;
        std::string text;
    };
    using Tokens = std::vector<Token>;
    /// A declaration: a function, a variable, a class with its members, or the use of a macro.
    struct Chunk {
        std::string name;
        std::string owner;  ///< the class before "::", or the one that it stands in
        bool isClass = false;
        bool entry = false;  ///< called from outside: a constructor or what overrides
        std::vector<std::string> bases;
        Tokens tokens;
        std::vector<Chunk> members;
    };
    struct File {
        std::vector<Chunk> chunks;
        std::vector<std::string> shared;  ///< included files of shared questions
    };
    struct Place {
        std::string file;
        const Chunk* chunk = nullptr;
        std::size_t token = 0;  ///< of the name
    };
    class Walk;

    static Tokens tokensOf(const std::string& source);
    static std::vector<Chunk> chunksOf(const Tokens& tokens, std::size_t from, std::size_t to, const std::string& owner);
    static Chunk chunkOf(Tokens tokens, const std::string& owner);
    void read(const std::string& path);
    Place find(const std::string& name, const std::string& title) const;

    std::map<std::string, File> files_;                              ///< by path, without extension
    std::map<std::pair<std::string, std::string>, Place> places_;  ///< by two texts that follow each other
};

}  // namespace kova::cmd
