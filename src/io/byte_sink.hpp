#pragma once

#include <cstddef>

namespace kova::io {

/// Takes the bytes of a file as they are produced.
class ByteSink {
public:
    virtual ~ByteSink() = default;
    /// False when the bytes could not be taken; the sink remembers why.
    virtual bool write(const char* data, std::size_t size) = 0;
};

}  // namespace kova::io
