#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace kova::cmd {

/// Within the tolerance of each other; infinite ones when they are the same.
inline bool near(double a, double b, double tolerance) { return std::abs(a - b) <= tolerance || a == b; }

/// Finds things by place: each in the cells of its numbers, and looked for in all cells within the tolerance.
class CellIndex {
public:
    explicit CellIndex(double tolerance) : tolerance_(tolerance), cell_(std::max(8.0 * tolerance, 1e-9)) {}

    using Place = std::array<double, 4>;
    void insert(std::size_t what, std::size_t seed, const Place& place) { cells_[key(seed, place)].push_back(what); }
    /// Calls use(what) for what may lie at the place, until it gives true.
    template <class Use>
    bool look(std::size_t seed, const Place& place, const Use& use) const {
        std::size_t seen[16];
        std::size_t count = 0;
        for (unsigned corner = 0; corner < 16; ++corner) {
            Place at = place;
            for (std::size_t i = 0; i < 4; ++i) at[i] += ((corner >> i) & 1U) != 0 ? tolerance_ : -tolerance_;
            const std::size_t k = key(seed, at);
            if (std::find(seen, seen + count, k) != seen + count) continue;
            seen[count++] = k;
            const auto it = cells_.find(k);
            if (it == cells_.end()) continue;
            for (const std::size_t what : it->second)
                if (use(what)) return true;
        }
        return false;
    }

private:
    std::size_t key(std::size_t seed, const Place& place) const {
        std::size_t k = seed;
        for (const double v : place) {
            const double c = std::floor(v / cell_);
            const std::int64_t n = std::isfinite(c) && std::abs(c) < 9e18 ? static_cast<std::int64_t>(c) : 0;
            k = (k ^ std::hash<std::int64_t>{}(n)) * 0x9E3779B97F4A7C15ULL;
            k ^= k >> 29;
        }
        return k;
    }

    double tolerance_;
    double cell_;
    std::unordered_map<std::size_t, std::vector<std::size_t>> cells_;
};

}  // namespace kova::cmd
