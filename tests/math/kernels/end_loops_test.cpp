#include "math/kernels/end_loops.hpp"

#include <gtest/gtest.h>

#include "math/curves/collinear.hpp"
#include "math/curves/polygon.hpp"

namespace kova::math {
namespace {

void addChain(std::vector<BoundaryPiece>& out, const std::vector<Vector2>& points) {
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        out.push_back({points[i], points[i + 1], 0.0, static_cast<int>(out.size())});
}

double totalArea(const EndLoops& found) {
    double sum = 0.0;
    for (const BoundaryLoop& loop : found.loops) sum += signedArea(loop.points, loop.bulges);
    return sum;
}

TEST(EndLoops, CellsOfBranchingLinesEachOnce) {
    std::vector<BoundaryPiece> pieces;
    addChain(pieces, {{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}});
    addChain(pieces, {{2, 0}, {5, 0}, {5, 2}, {2, 2}});  // a neighbour on the common side
    addChain(pieces, {{2, 2}, {2, 0}});                  // drawn twice
    addChain(pieces, {{5, 2}, {8, 2}, {9, 5}});          // loose
    pieces.push_back({{10, 0}, {12, 0}, 1.0, 90});       // a circle in halves
    pieces.push_back({{12, 0}, {10, 0}, 1.0, 91});
    const EndLoops found = endLoops(pieces, 1e-9);
    ASSERT_EQ(found.loops.size(), 3u);
    EXPECT_NEAR(totalArea(found), 4.0 + 6.0 + 3.141592653589793, 1e-9);
    EXPECT_EQ(found.crossing, 0u);
    for (const BoundaryLoop& loop : found.loops)
        for (const int source : loop.sources) EXPECT_TRUE(source < 8 || source >= 90);
}

TEST(EndLoops, BridgesTieFiguresWithoutChangingThem) {
    std::vector<BoundaryPiece> pieces;
    addChain(pieces, {{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}});
    addChain(pieces, {{3, 3}, {6, 3}, {6, 6}, {3, 6}, {3, 3}});
    addChain(pieces, {{0, 0}, {3, 3}});
    const EndLoops found = endLoops(pieces, 1e-9);
    ASSERT_EQ(found.loops.size(), 2u);
    EXPECT_NEAR(totalArea(found), 81.0 + 9.0, 1e-9);
}

TEST(EndLoops, LeavesOutWhatCrossesItselfAndBadNumbers) {
    std::vector<BoundaryPiece> pieces;
    addChain(pieces, {{0, 0}, {4, 4}, {4, 0}, {0, 3}, {0, 0}});  // a bow tie
    addChain(pieces, {{10, 0}, {14, 4}});                        // crossing lines share no ends
    addChain(pieces, {{10, 4}, {14, 0}});
    pieces.push_back({{NAN, 0}, {1, 1}, 0.0, 0});
    pieces.push_back({{5, 5}, {5, 5}, 2.0, 0});
    const EndLoops found = endLoops(pieces, 1e-9);
    EXPECT_TRUE(found.loops.empty());
    EXPECT_EQ(found.crossing, 1u);
    EXPECT_TRUE(endLoops({}, 1e-9).loops.empty());
}

TEST(EndLoops, AStarOfManyLinesAndALongRing) {
    std::vector<BoundaryPiece> pieces;
    constexpr int kCount = 100000;
    for (int i = 0; i < kCount; ++i) addChain(pieces, {{0, 0}, Vector2::from_angle(i * 6.0 / kCount) * 50.0});
    std::vector<Vector2> ring;
    for (int i = 0; i <= kCount; ++i) ring.push_back(Vector2::from_angle(i % kCount * 6.283185307 / kCount) * 80.0);
    addChain(pieces, ring);
    EXPECT_EQ(endLoops(pieces, 1e-9).loops.size(), 1u);
}

TEST(CollinearGroups, LinesOfOneLineWithinTheTolerance) {
    const std::vector<FlatSegment> segments{{{0, 0}, {4, 0}},         {{9, 1e-8}, {6, 0}}, {{0, 1}, {4, 1}},
                                            {{10, 0}, {12, 0}, 5.0},  {{0, 0}, {0, 0}},    {{NAN, 0}, {1, 0}},
                                            {{1e6, 1e6}, {2e6, 2e6}}, {{3, 3}, {-5, -5}}};
    const auto groups = collinearGroups(segments, 1e-6);
    ASSERT_EQ(groups.size(), 2u);
    std::vector<std::size_t> first;
    for (const auto& s : groups[0].stretches) first.push_back(s.index);
    std::sort(first.begin(), first.end());
    EXPECT_EQ(first, (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(groups[1].stretches.size(), 2u);
    EXPECT_TRUE(inLineWith(segments[7], segments[6], 1e-6));
    EXPECT_FALSE(inLineWith(segments[2], segments[0], 1e-6));
}

}  // namespace
}  // namespace kova::math
