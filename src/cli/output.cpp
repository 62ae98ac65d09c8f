#include "cli/output.hpp"

#include <cstdio>
#include <string>

namespace kova::cli {

namespace {

void print(std::FILE* stream, std::string_view text) {
    std::string line;
    line.reserve(text.size() + 1);
    line.append(text).push_back('\n');
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fflush(stream);
}

}  // namespace

void printOut(std::string_view text) { print(stdout, text); }
void printError(std::string_view text) { print(stderr, text); }

}  // namespace kova::cli
