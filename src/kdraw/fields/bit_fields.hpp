#pragma once

#include "kdraw/fields/bit_reader.hpp"
#include "kdraw/fields/bit_writer.hpp"
#include "kdraw/fields/fields.hpp"
#include "kdraw/fields/text_codec.hpp"

namespace kdraw {

/// Reads the fields of one record from its three streams. Before R2007 texts stand in the data stream.
class BitDecoder final : public Fields {
public:
    /// `codec` serves texts before R2007 and must outlive the decoder.
    BitDecoder(Version version, const TextCodec& codec) : Fields(Mode::Decode, version), codec_(codec) {}

    BitReader data, strings, handlesPart;
    Handle own = 0;  ///< what relative references count from
    /// Before R2007 the header variables have their handles inside the data.
    bool inlineHandles = false;

    /// Finds the string stream in front of `handleStart` (R2007 and later) and bounds the data.
    void partStreams(std::string_view bytes, std::size_t begin, std::size_t handleStart, std::size_t end);
    /// True when a read went past the end of a stream.
    bool damaged() const { return failed() || data.failed() || strings.failed() || handlesPart.failed(); }

    void whole(Width width, int code, std::int64_t& v) override;
    void bd(int, double& v) override { v = data.bd(); }
    void rd(int, double& v) override { v = data.rd(); }
    void dd(int, double& v, double fallback) override { v = data.dd(fallback); }
    void angle(int, double& v) override { v = data.bd(); }
    void thickness(int, double& v) override { v = data.b() ? 0.0 : data.bd(); }
    void extrusion(int, Vector3& v) override;
    void text(int, std::string& v) override;
    void bytes(int, std::string& v, std::size_t size) override;
    void color(int, int, Color& v) override;
    void rawColor(int, Color& v) override { color(0, 0, v); }
    void longColor(int, Color& v) override;
    void handle(Ref, int, Handle& v) override { v = (inlineHandles ? data : handlesPart).handle(own); }
    void record(Table, int, Handle& v, Ref) override { v = (inlineHandles ? data : handlesPart).handle(own); }
    std::size_t count(Width width, int code, std::size_t current, unsigned bits) override;
    void subclass(std::string_view) override {}
    void constant(int, std::int64_t) override {}
    void skipRest() override { data.seek(data.end()); }
    std::string fromCodePage(std::string_view bytes) override { return codec_.toUtf8(bytes); }

private:
    const TextCodec& codec_;
};

/// Writes the fields of one record to three streams. R2010 and later.
class BitEncoder final : public Fields {
public:
    explicit BitEncoder(Version version) : Fields(Mode::Encode, version) {}

    BitWriter data, strings, handlesPart;
    bool hasStrings = false;

    void clear();
    /// Data and strings joined as the format wants them, up to where the handles begin.
    void joinStrings();

    void whole(Width width, int code, std::int64_t& v) override;
    void bd(int, double& v) override { data.bd(v); }
    void rd(int, double& v) override { data.rd(v); }
    void dd(int, double& v, double fallback) override { data.dd(v, fallback); }
    void angle(int, double& v) override { data.bd(v); }
    void thickness(int, double& v) override;
    void extrusion(int, Vector3& v) override;
    void text(int, std::string& v) override;
    void bytes(int, std::string& v, std::size_t size) override;
    void color(int, int, Color& v) override { longColor(0, v); }
    void rawColor(int, Color& v) override { longColor(0, v); }
    void longColor(int, Color& v) override;
    void handle(Ref kind, int, Handle& v) override { handlesPart.handle(static_cast<unsigned>(kind), v); }
    void record(Table, int, Handle& v, Ref kind) override { handlesPart.handle(static_cast<unsigned>(kind), v); }
    std::size_t count(Width width, int code, std::size_t current, unsigned bits) override;
    void subclass(std::string_view) override {}
    void constant(int, std::int64_t) override {}
};

}  // namespace kdraw
