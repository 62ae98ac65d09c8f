#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace kova::test {

/// The files of fuzz/corpus/NAME, in the order of their names.
inline std::vector<std::string> fuzzSeeds(const std::string& name) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(KOVA_SOURCE_DIR) + "/fuzz/corpus/" + name))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> seeds;
    for (const auto& path : paths) {
        std::ifstream in(path, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return seeds;
}

/// A copy with one to eight changes: bytes and bits that turn, runs of ones, pieces that are missing or come twice.
inline std::string changed(std::string bytes, std::mt19937& random) {
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
    for (std::size_t changes = 1 + below(8); changes > 0 && !bytes.empty(); --changes) {
        const std::size_t at = below(bytes.size());
        switch (below(5)) {
            case 0:
                bytes[at] = static_cast<char>(random());
                break;
            case 1:
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
                break;
            case 2:
                for (std::size_t i = at; i < std::min(at + 4, bytes.size()); ++i) bytes[i] = '\xFF';
                break;
            case 3:
                bytes.erase(at, 1 + below(16));
                break;
            default:
                bytes.insert(at, bytes.substr(below(bytes.size()), 1 + below(64)));
        }
    }
    return bytes;
}

}  // namespace kova::test
