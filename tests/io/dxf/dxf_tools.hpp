#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <QProcess>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/model/drawing.hpp"
#include "io/dxf/dxf_save.hpp"

namespace kova::test {

/// One group of a DXF text.
struct DxfGroup {
    int code;
    std::string value;
};

inline std::vector<DxfGroup> dxfGroups(const std::string& text) {
    std::vector<DxfGroup> groups;
    std::size_t at = 0;
    const auto line = [&] {
        const std::size_t end = text.find('\n', at);
        std::string value = text.substr(at, end - at);
        at = end == std::string::npos ? text.size() : end + 1;
        return value;
    };
    while (at < text.size()) {
        const std::string code = line();
        groups.push_back({std::stoi(code), line()});
    }
    return groups;
}

/// A folder that goes with its object.
class DxfFolder {
public:
    DxfFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kova-dxf-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~DxfFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    DxfFolder(const DxfFolder&) = delete;
    DxfFolder& operator=(const DxfFolder&) = delete;
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

/// Has other people's software look at the files: no error, nothing to mend. `output` gets what it says, with the
/// numbers of entities by kind. Skips the test when ezdxf is missing.
inline void expectCleanAudit(const std::vector<std::string>& files, std::string& output) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    QStringList arguments{QString::fromUtf8(KOVA_SOURCE_DIR "/tests/io/dxf/audit.py")};
    for (const std::string& file : files) arguments << QString::fromStdString(file);
    process.start("/usr/bin/python3", arguments);
    if (!process.waitForStarted()) GTEST_SKIP() << "no /usr/bin/python3";
    ASSERT_TRUE(process.waitForFinished(120000));
    output = process.readAll().toStdString();
    if (process.exitCode() == 77) GTEST_SKIP() << output;
    EXPECT_EQ(process.exitCode(), 0) << output;
}

}  // namespace kova::test
