#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "engine/model/drawing.hpp"
#include "engine/entities/line.hpp"
#include "headless/terminal_progress.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/native/native_file.hpp"

namespace kova::headless {
namespace {

struct Notes : io::Progress {
    void tell(std::size_t done, std::size_t total) override {
        EXPECT_GE(done, last);
        if (total != 0) EXPECT_LE(done, total);
        last = done;
        ++count;
    }
    std::size_t last = 0;
    std::size_t count = 0;
};

TEST(Progress, ReadersAndWritersTellHowFarTheyAre) {
    QTemporaryDir directory;
    engine::Drawing drawing;
    for (std::size_t i = 0; i < 3 * io::kProgressStep; ++i)
        drawing.modelSpace().append(std::make_unique<engine::LineEntity>(math::Vector2{0, 0}, math::Vector2{1, 1}));
    const std::string dxf = directory.filePath("a.dxf").toStdString();
    const std::string native = directory.filePath("a.kvcad").toStdString();
    Notes notes[4];
    ASSERT_EQ(io::dxf::saveDxf(drawing, dxf, nullptr, &notes[0]), "");
    ASSERT_EQ(io::native::saveNative(drawing, native, nullptr, &notes[1]), "");
    engine::Drawing first;
    ASSERT_EQ(io::dxf::loadDxf(dxf, first, nullptr, &notes[2]), "");
    engine::Drawing second;
    ASSERT_EQ(io::native::loadNative(native, second, &notes[3]), "");
    for (const Notes& n : notes) EXPECT_EQ(n.count, 3u);
}

TEST(Progress, LineOnTheTerminal) {
    EXPECT_EQ(TerminalProgress::line("Opening a.dxf", 42, 100, 3), "Opening a.dxf: 42 %");
    EXPECT_EQ(TerminalProgress::line("Saving a.dxf", 7, 5, 3), "Saving a.dxf: 100 %");
    EXPECT_EQ(TerminalProgress::line("Opening a.kvcad", 4096, 0, 3), "Opening a.kvcad ... 3 s");
}

}  // namespace
}  // namespace kova::headless
