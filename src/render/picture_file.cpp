#include "render/picture_file.hpp"

#include <fcntl.h>

#include <filesystem>

namespace kova::render {

PictureFile::PictureFile(const std::string& path) {
    // Qt's own names of files are Unicode: what is none would be another file's name.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor >= 0) file_.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    reader_.setDevice(&file_);
    // The ending says which format is tried first; the content decides.
    const std::string ending = std::filesystem::path(path).extension().string();
    if (ending.size() > 1) reader_.setFormat(QByteArray::fromStdString(ending.substr(1)).toLower());
}

}  // namespace kova::render
