#pragma once

#include <QFile>
#include <QImageReader>
#include <string>

namespace kova::render {

/// A picture file that is read. Its path is bytes, as the system takes them: it need not be text in any encoding.
class PictureFile {
public:
    /// A file that cannot be opened gives a reader that reads nothing.
    explicit PictureFile(const std::string& path);
    QImageReader& reader() { return reader_; }

private:
    QFile file_;
    QImageReader reader_;
};

}  // namespace kova::render
