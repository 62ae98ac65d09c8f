#include <gtest/gtest.h>

#include <QApplication>
#include <filesystem>

// Tests run under a widget application without windows, as the program itself does, and leave what they write, temporary
// files included, in a folder of their own in the build folder.
int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const fs::path folder = fs::path(KOVA_TEST_FOLDER) / fs::path(argv[0]).filename();
    ::testing::InitGoogleTest(&argc, argv);
    fs::create_directories(folder / "tmp");
    fs::current_path(folder);
    for (const char* name : {"TMPDIR", "TEST_TMPDIR"}) qputenv(name, (folder / "tmp").c_str());
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
