// The packing of DWG files: compression of pages and whole containers, with the share of bytes that is left.
#include <benchmark/benchmark.h>

#include <random>

#include "kdraw/container/checksums.hpp"
#include "kdraw/container/container.hpp"
#include "kdraw/container/lz2004.hpp"
#include "kdraw/container/object_map.hpp"
#include "kdraw/container/section_frame.hpp"

using namespace kdraw;

namespace {

constexpr std::size_t pageSize = 0x7400;

/// Bytes like those of many small objects: records of 30 to 80 bytes at odd bit places, whose first half repeats from
/// record to record and whose coordinates do not.
std::string objectBytes(std::size_t size) {
    std::mt19937_64 random(11);
    std::string bits;
    std::uint64_t pending = 0;
    unsigned used = 0;
    const auto put = [&](std::uint64_t value, unsigned count) {
        for (unsigned i = count; i > 0; --i) {
            pending = pending << 1 | (value >> (i - 1) & 1);
            if (++used % 8 == 0) bits += static_cast<char>(pending);
        }
    };
    for (std::uint64_t record = 0; bits.size() < size; ++record) {
        used = 0;
        const unsigned kind = static_cast<unsigned>(random() % 5);
        put(0x1300 + kind, 16);
        put(0x40 + kind % 3, 5 + kind);
        put(record, 24);
        put(0x4C21'60A5'9100ull, 47);
        for (unsigned i = 0; i < 2 + kind; ++i)
            put(std::bit_cast<std::uint64_t>(static_cast<double>(random() % 100'000) * 0.125), 64);
        put(0x5510'1234ull + kind, 37);
        put(0, (8 - used % 8) % 8);
        const std::uint16_t crc = crc16(crcSeed, std::string_view(bits).substr(bits.size() - 20));
        put(crc, 16);
    }
    bits.resize(size);
    return bits;
}

void compressPages(benchmark::State& state) {
    const std::string source = objectBytes(100 * pageSize);
    std::string out;
    for (auto _ : state) {
        out.clear();
        for (std::size_t at = 0; at < source.size(); at += pageSize)
            compress2004(std::string_view(source).substr(at, pageSize), out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
    state.counters["left"] = static_cast<double>(out.size()) / static_cast<double>(source.size());
}
BENCHMARK(compressPages)->Unit(benchmark::kMillisecond);

Container bigContainer() {
    Container container;
    container.version = Version::R2018;
    container.sections.push_back(
        {std::string(section::header), writeFrame(FramedSection::Header, Version::R2018, "variables")});
    container.sections.push_back(
        {std::string(section::classes), writeFrame(FramedSection::Classes, Version::R2018, "classes")});
    container.sections.push_back({std::string(section::objects), objectBytes(16 << 20)});
    std::vector<ObjectMapEntry> map;
    for (std::uint64_t i = 0; i < 300'000; ++i) map.push_back({i + 1, 4 + i * 55});
    container.sections.push_back({std::string(section::handles), writeObjectMap(map)});
    return container;
}

void writeBigContainer(benchmark::State& state) {
    const Container container = bigContainer();
    std::string file;
    for (auto _ : state)
        if (!writeContainer(container, file).empty()) state.SkipWithError("not written");
    state.SetBytesProcessed(state.iterations() * (16 << 20));
    state.counters["fileSize"] = static_cast<double>(file.size());
}
BENCHMARK(writeBigContainer)->Unit(benchmark::kMillisecond);

void readBigContainer(benchmark::State& state) {
    std::string file;
    writeContainer(bigContainer(), file);
    for (auto _ : state) {
        Container container;
        if (!readContainer(file, container).empty() || !container.notes.empty()) state.SkipWithError("not read");
        benchmark::DoNotOptimize(readObjectMap(container.find(section::handles)->bytes, container.notes).size());
    }
    state.SetBytesProcessed(state.iterations() * (16 << 20));
}
BENCHMARK(readBigContainer)->Unit(benchmark::kMillisecond);

void checkObjects(benchmark::State& state) {
    const std::string source = objectBytes(8 << 20);
    for (auto _ : state)
        for (std::size_t at = 0; at + 80 <= source.size(); at += 80)
            benchmark::DoNotOptimize(crc16(crcSeed, std::string_view(source).substr(at, 80)));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
}
BENCHMARK(checkObjects)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
