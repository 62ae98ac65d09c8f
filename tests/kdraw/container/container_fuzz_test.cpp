// A short run of the fuzz target over changed copies of small files.
#include <gtest/gtest.h>

#include <random>

#define LLVMFuzzerTestOneInput fuzzDwgContainer
#include "../../../fuzz/dwg_container.cpp"
#undef LLVMFuzzerTestOneInput

#include "small_files.hpp"

TEST(DwgContainer, ChangedFilesDoNoHarm) {
    using kdraw::Version;
    std::mt19937 random(20);
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
    for (const Version version : {Version::R2000, Version::R2004, Version::R2007, Version::R2010, Version::R2018}) {
        const std::string seed = kdraw::testing::smallFile(version);
        for (int round = 0; round < 400; ++round) {
            std::string file = seed;
            for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
                // Mostly in the headers and maps, at the start and the end.
                const std::size_t at = below(3) == 0 ? below(file.size())
                                       : below(2) == 0
                                           ? below(std::min<std::size_t>(file.size(), 0x500))
                                           : file.size() - 1 - below(std::min<std::size_t>(file.size(), 0x600));
                switch (below(4)) {
                    case 0:
                        file[at] = static_cast<char>(random());
                        break;
                    case 1:
                        file[at] = static_cast<char>(file[at] ^ (1 << below(8)));
                        break;
                    case 2:
                        for (std::size_t i = at; i < std::min(at + 4, file.size()); ++i) file[i] = '\xFF';
                        break;
                    default:
                        file.erase(at, 1 + below(8));
                        break;
                }
                if (file.empty()) break;
            }
            fuzzDwgContainer(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
        }
    }
}
