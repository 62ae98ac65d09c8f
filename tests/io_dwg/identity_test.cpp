// A drawing that is saved as DWG and opened again is the same drawing, up to what the format cannot hold.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "engine/drawing.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dwg/dwg_save.hpp"
#include "io_dwg/drawing_difference.hpp"
#include "io_dxf/rich_drawing.hpp"
#include "io_native/sample_drawing.hpp"

namespace kova::test {

namespace {

/// Saves and opens the drawing in all versions that are written.
void expectIdentity(const engine::Drawing& drawing) {
    const QTemporaryDir folder;
    for (const char* version : {"R2010", "R2013", "R2018"}) {
        SCOPED_TRACE(version);
        const std::string path = folder.filePath("drawing.dwg").toStdString();
        io::dwg::DwgSaveReport report;
        ASSERT_EQ(io::dwg::saveDwg(drawing, path, version, &report), "");
        EXPECT_EQ(report.dropped, 0u);
        engine::Drawing again;
        const io::dwg::DwgLoadResult result = io::dwg::loadDwg(path, again);
        ASSERT_TRUE(result.success) << result.message;
        for (const std::string& line : result.lines) ADD_FAILURE() << line;
        const std::vector<std::string> found = differences(drawing, again);
        EXPECT_TRUE(found.empty()) << found.size() << " differences (saved | opened)" << listed(found);
    }
}

}  // namespace

TEST(DwgIdentity, NewDrawing) {
    engine::Drawing drawing;
    expectIdentity(drawing);
}

TEST(DwgIdentity, EveryKindAsAUserDrawsIt) {
    engine::Drawing drawing;
    fillRichDrawing(drawing);
    expectIdentity(drawing);
}

}  // namespace kova::test
