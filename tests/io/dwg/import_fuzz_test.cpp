// A short run of the fuzz target over changed copies of its seeds.
#include <gtest/gtest.h>

#define LLVMFuzzerTestOneInput fuzzDwgImport
#include "../../../fuzz/dwg_import.cpp"
#undef LLVMFuzzerTestOneInput

#include "changed_bytes.hpp"

TEST(DwgImport, ChangedFilesDoNoHarm) {
    const std::vector<std::string> seeds = kova::test::fuzzSeeds("dwg_import");
    ASSERT_GE(seeds.size(), 2u);
    std::mt19937 random(6);
    for (const std::string& seed : seeds) {
        fuzzDwgImport(reinterpret_cast<const std::uint8_t*>(seed.data()), seed.size());
        for (int round = 0; round < 60; ++round) {
            const std::string bytes = kova::test::changed(seed, random);
            fuzzDwgImport(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        }
    }
}
