// A drawing that is saved as DXF and opened again is the same drawing.
#include <gtest/gtest.h>

#include <sstream>

#include "engine/model/drawing.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/native/native_file.hpp"
#include "io/native/sample_drawing.hpp"

namespace kova::test {

using namespace engine;

namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

/// What differs, line by line with the lines around it; a line that was added or lost does not spoil the rest.
std::string differences(const std::string& before, const std::string& after, std::size_t limit = 60) {
    const auto a = linesOf(before);
    const auto b = linesOf(after);
    std::ostringstream out;
    std::size_t told = 0;
    std::size_t i = 0;
    std::size_t k = 0;
    while ((i < a.size() || k < b.size()) && told < limit) {
        if (i < a.size() && k < b.size() && a[i] == b[k]) {
            ++i;
            ++k;
            continue;
        }
        // The nearest place where both agree again.
        std::size_t skipA = 1;
        std::size_t skipB = 1;
        bool found = false;
        for (std::size_t sum = 1; sum < 400 && !found; ++sum)
            for (std::size_t da = 0; da <= sum && !found; ++da) {
                const std::size_t db = sum - da;
                const auto same = [&](std::size_t n) {
                    return i + da + n < a.size() && k + db + n < b.size() && a[i + da + n] == b[k + db + n];
                };
                if (same(0) && same(1) && same(2)) {
                    skipA = da;
                    skipB = db;
                    found = true;
                }
            }
        if (i > 0) out << "  " << a[i - 1] << "\n";
        for (std::size_t n = 0; n < skipA && i + n < a.size() && n < 6; ++n) out << "- " << a[i + n] << "\n";
        for (std::size_t n = 0; n < skipB && k + n < b.size() && n < 6; ++n) out << "+ " << b[k + n] << "\n";
        i += skipA;
        k += skipB;
        ++told;
    }
    return out.str();
}

/// The drawing as a native file before and after it has been a DXF file.
void expectIdentity(const Drawing& drawing) {
    io::dxf::DxfSaveReport saved;
    const std::string text = io::dxf::dxfText(drawing, &saved);
    Drawing again;
    io::dxf::DxfLoadReport report;
    ASSERT_EQ(io::dxf::loadDxfText(text, again, &report), "");
    for (const std::string& line : report.lines) ADD_FAILURE() << line;
    const std::string before = io::native::nativeText(drawing);
    const std::string after = io::native::nativeText(again);
    EXPECT_TRUE(before == after) << differences(before, after);
}

}  // namespace

TEST(DxfIdentity, NewDrawing) {
    Drawing drawing;
    expectIdentity(drawing);
}

TEST(DxfIdentity, EveryKindAndRecordWithEveryField) {
    Drawing drawing;
    fillDrawing(drawing);
    soundShapes(drawing);
    expectIdentity(drawing);
}

}  // namespace kova::test
