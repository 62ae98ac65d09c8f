// Links and extended data of objects; images.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cmd/draw_harness.hpp"
#include "engine/entities/image.hpp"
#include "engine/entities/polyline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::ImageEntity;
using math::Vector2;

TEST(Hyperlink, InsertedListedAndRemoved) {
    DrawConsole c;
    auto& line = c.addLine(0, 0, 10, 0);
    EXPECT_EQ(c.run({"SHOWURLS"}), Lines{"No hyperlinks in the drawing."});
    c.run({"HYPERLINK", "", "", "5,0", "", "https://example.org/a b", "View 1", "The plan"});
    EXPECT_TRUE(c.idle());
    const auto* items = line.xdata()->find("PE_URL");
    ASSERT_NE(items, nullptr);
    ASSERT_EQ(items->size(), 5u);
    EXPECT_EQ(std::get<std::string>((*items)[0].value), "https://example.org/a b");
    EXPECT_EQ(std::get<std::string>((*items)[3].value), "View 1");
    EXPECT_EQ(c.lastStep(), "HYPERLINK");
    // A named location of this drawing, on a frame of its own.
    c.run({"HYPERLINK", "I", "A", "20,20", "30,25", "", "Front", ""});
    const auto& frame = c.last<engine::PolylineEntity>();
    EXPECT_TRUE(frame.closed);
    EXPECT_EQ(frame.layer, engine::Name("URLLAYER"));
    const Lines listed = c.run({"SHOWURLS"});
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_NE(listed[0].find("https://example.org/a b#View 1  \"The plan\""), std::string::npos);
    EXPECT_NE(listed[1].find("<current drawing>#Front"), std::string::npos);
    EXPECT_EQ(listed[2], "2 hyperlinks.");
    EXPECT_EQ(c.run({"HYPERLINKOPEN", "5,0", ""}).back(), "Hyperlink: https://example.org/a b#View 1  \"The plan\"");
    c.run({"HYPERLINK", "", "", "5,0", ""});
    EXPECT_EQ(c.run({"", "", ""}).back(), "A hyperlink needs an address or a named location.");
    c.feed("HYPERLINK");
    EXPECT_EQ(c.run({"R", "ALL", ""}).back(), "2 hyperlinks deleted.");
    EXPECT_EQ(line.xdata(), nullptr);
    c.feed("U");
    EXPECT_EQ(c.run({"SHOWURLS"}).size(), 3u);
}

TEST(Xdlist, ListsApplicationsAndBytes) {
    DrawConsole c;
    auto& line = c.addLine(0, 0, 10, 0);
    EXPECT_EQ(c.run({"XDLIST", "5,0", ""}).back(), "No extended data associated with the object.");
    line.ensureXdata().set("MINE", {{1000, std::string("abc")}, {1040, 2.5}, {1070, std::int64_t{7}}});
    line.ensureXdata().set("OTHER", {{1010, math::Vector3{1, 2, 3}}});
    EXPECT_EQ(
        c.run({"XDLIST", "5,0", "m*"}),
        Lines({"* Registered Application Name: MINE", "* Code 1000, ASCII string: abc", "* Code 1040, Real number: 2.5",
               "* Code 1070, 16-bit integer: 7", "Extended data uses 27 bytes."}));
    EXPECT_EQ(c.run({"XDLIST", "5,0", ""}).size(), 7u);
    EXPECT_EQ(c.run({"XDLIST", "5,0", "none"}).back(), "No extended data for application name \"none\".");
}

class ImageConsole : public DrawConsole {
public:
    ImageConsole()
        : path(std::filesystem::temp_directory_path() / ("kova_img_" + std::to_string(::getpid()) + ".png")) {
        std::ofstream(path).put('x');
    }
    ~ImageConsole() override { std::filesystem::remove(path); }
    std::optional<PictureSize> pictureSize(const std::string&) override { return size; }

    std::filesystem::path path;
    std::optional<PictureSize> size = PictureSize{400, 200, 4000.0};
};

TEST(Image, AttachedWithItsProportions) {
    ImageConsole c;
    EXPECT_EQ(c.run({"IMAGEATTACH", "missing.png"}).back(), "Image file \"missing.png\" not found.");
    EXPECT_EQ(c.feed("\"" + c.path.string() + "\"").size(), 0u);
    EXPECT_EQ(c.prompt(), "Specify insertion point <0,0>:");
    EXPECT_EQ(c.feed("10,20").back(), "Base image size: Width: 1.0000, Height: 0.5000, Unitless");
    c.run({"U", "MM"});
    EXPECT_EQ(c.lines.back(), "Base image size: Width: 100.0000, Height: 50.0000, Millimeters");
    c.run({"2", "90"});
    EXPECT_TRUE(c.idle());
    const auto& image = c.only<ImageEntity>();
    EXPECT_EQ(image.filePath, c.path.string());
    EXPECT_NEAR(image.width, 200.0, 1e-9);
    EXPECT_NEAR(image.height, 100.0, 1e-9);
    EXPECT_NEAR(image.rotation, math::kPi / 2, 1e-12);
    EXPECT_EQ(image.pixelWidth, 400);
    expectNear(image.corners()[2], {-90, 220}, 1e-9);
    c.size->pixelsPerMeter = 0.0;
    c.run({"IM", c.path.string(), "", "U", "INCH"});
    EXPECT_EQ(c.lines.back(), "The image file holds no resolution.");
    c.run({"", ""});
    EXPECT_EQ(c.last<ImageEntity>().width, 1.0);
    c.size.reset();
    EXPECT_NE(c.run({"IM", c.path.string()}).back().find("is not an image file"), std::string::npos);
}

TEST(Image, AdjustedAndClipped) {
    ImageConsole c;
    c.run({"IMAGEATTACH", c.path.string(), "0,0", "100", "0"});
    c.run({"IMAGEADJUST", "50,25", "", "", "70", "C", "101", "20", "F", "", "", ""});
    EXPECT_TRUE(c.idle());
    // Undo puts another object in its place.
    const auto image = [&]() -> ImageEntity& { return c.only<ImageEntity>(); };
    EXPECT_EQ(image().brightness, 70);
    EXPECT_EQ(image().contrast, 20);
    EXPECT_EQ(image().fade, 0);
    EXPECT_EQ(c.lastStep(), "IMAGEADJUST");
    c.feed("U");
    EXPECT_EQ(image().brightness, 50);

    EXPECT_EQ(c.run({"IMAGECLIP", "50,25", "OFF"}).back(), "No clipping boundary found.");
    c.run({"ICL", "50,25", "", "", "10,10", "60,40"});
    EXPECT_TRUE(image().isClipped());
    expectPoints(image().frame(), {{10, 10}, {60, 10}, {60, 40}, {10, 40}});
    c.run({"ICL", "50,25", "OFF"});
    EXPECT_FALSE(image().isClipped());
    c.run({"ICL", "50,25", "ON"});
    EXPECT_TRUE(image().isClipped());
    EXPECT_EQ(c.run({"ICL", "50,25", "N", "Y", "R", "500,500", "600,600"}).back(),
              "The boundary does not meet the image.");
    // Inverted: the picture with a hole.
    c.run({"ICL", "50,25", "N", "", "I", "P", "20,20", "40,20", "30,40", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_LT(image().distanceTo({5, 5}), 1e-9);
    EXPECT_GT(image().distanceTo({30, 26}), 1.0);
    c.run({"ICL", "5,5", "D"});
    EXPECT_TRUE(image().clipBoundary.empty());
}

}  // namespace
}  // namespace kova::cmd
