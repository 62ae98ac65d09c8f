// A short run of the fuzz target over changed copies of its seeds.
#include <gtest/gtest.h>

#define LLVMFuzzerTestOneInput fuzzDwgObjects
#include "../../../fuzz/dwg_objects.cpp"
#undef LLVMFuzzerTestOneInput

#include "changed_bytes.hpp"

TEST(DwgObjects, ChangedRecordsDoNoHarm) {
    const std::vector<std::string> seeds = kova::test::fuzzSeeds("dwg_objects");
    ASSERT_GE(seeds.size(), 3u);
    std::mt19937 random(5);
    for (const std::string& seed : seeds) {
        fuzzDwgObjects(reinterpret_cast<const std::uint8_t*>(seed.data()), seed.size());
        for (int round = 0; round < 150; ++round) {
            const std::string bytes = kova::test::changed(seed, random);
            fuzzDwgObjects(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        }
    }
}

TEST(DwgObjects, SeedsHoldRecordsOfManyKinds) {
    // A seed whose records no longer decode would make the run above worthless.
    for (const std::string& seed : kova::test::fuzzSeeds("dwg_objects")) {
        if (seed.starts_with("AC1")) continue;
        kdraw::Database database;
        ASSERT_TRUE(kdraw::fuzz::databaseOf(seed, database));
        std::size_t entities = 0;
        for (const auto& object : database.objects) entities += object->isEntity() ? 1 : 0;
        EXPECT_GT(entities, 25u);
    }
}
