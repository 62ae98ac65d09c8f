#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kdraw/fields/values.hpp"
#include "kdraw/fields/version.hpp"

namespace kdraw {

class DxfInput;   // groups of a record that is being read (kdraw/dxf/dxf_input.hpp)
class DxfOutput;  // groups of a record that is being written (kdraw/dxf/dxf_output.hpp)

/// Names of table records stand in DXF where DWG has handles of them.
enum class Table : std::uint8_t { Block, Layer, Style, Linetype, View, Ucs, Viewport, AppId, DimStyle };

/// How a whole number is stored.
enum class Width : std::uint8_t {
    B,    ///< 1 bit
    BB,   ///< 2 bits
    RC,   ///< 8 bits
    RS,   ///< 16 bits
    RL,   ///< 32 bits
    BS,   ///< bit short
    BL,   ///< bit long
    BLL,  ///< bit long long
};

/// What a record's description talks to. A kind names its fields once, in the order of the binary format, each with its
/// DXF group code; the four implementations decode, encode, read groups and write groups.
///
/// - `code` is the DXF group; 0: the field has none, and keeps its value when groups are read or written.
/// - A field that only some versions have stands under `if (f.since(Version::R2007))`. With groups, since() is true for
///   every version: they always carry the newest form.
/// - Where groups differ too much from the binary order (parallel lists, packed flags) a description branches on dxf(),
///   and may use input()/output() directly.
/// - Reading never trusts a count: count() bounds it by what is left of the record. After damage every further read
///   gives zeros and failed() is true; a description then just returns.
class Fields {
public:
    enum class Mode : std::uint8_t { Decode, Encode, FromDxf, ToDxf };
    virtual ~Fields() = default;

    Mode mode() const { return mode_; }
    bool reading() const { return mode_ == Mode::Decode || mode_ == Mode::FromDxf; }
    bool dxf() const { return mode_ == Mode::FromDxf || mode_ == Mode::ToDxf; }
    bool since(Version v) const { return version_ >= v; }
    bool before(Version v) const { return version_ < v; }
    Version version() const { return version_; }
    bool failed() const { return failed_; }
    void fail() { failed_ = true; }

    // Numbers. Signed values are sign-extended from the width where the format stores them signed.
    virtual void whole(Width width, int code, std::int64_t& v) = 0;
    template <class Int>
    void integer(Width width, int code, Int& v) {
        std::int64_t wide = static_cast<std::int64_t>(v);
        whole(width, code, wide);
        if (reading()) v = static_cast<Int>(wide);
    }
    template <class Int> void bb(int code, Int& v) { integer(Width::BB, code, v); }
    template <class Int> void rc(int code, Int& v) { integer(Width::RC, code, v); }
    template <class Int> void rs(int code, Int& v) { integer(Width::RS, code, v); }
    template <class Int> void rl(int code, Int& v) { integer(Width::RL, code, v); }
    template <class Int> void bs(int code, Int& v) { integer(Width::BS, code, v); }
    template <class Int> void bl(int code, Int& v) { integer(Width::BL, code, v); }
    template <class Int> void bll(int code, Int& v) { integer(Width::BLL, code, v); }
    void b(int code, bool& v) {
        std::int64_t wide = v ? 1 : 0;
        whole(Width::B, code, wide);
        if (reading()) v = wide != 0;
    }
    virtual void bd(int code, double& v) = 0;
    virtual void rd(int code, double& v) = 0;
    /// With a default that is stored in two bits.
    virtual void dd(int code, double& v, double fallback) = 0;
    /// A BD of radians, degrees in groups.
    virtual void angle(int code, double& v) = 0;
    /// Thickness: one bit when 0. In groups it is left off when 0.
    virtual void thickness(int code, double& v) = 0;
    /// Extrusion: one bit when (0, 0, 1). In groups it is left off then.
    virtual void extrusion(int code, Vector3& v) = 0;
    // Points: groups code, code + 10 (and code + 20).
    void rd2(int code, Vector2& v) { rd(code, v.x), rd(code == 0 ? 0 : code + 10, v.y); }
    void bd2(int code, Vector2& v) { bd(code, v.x), bd(code == 0 ? 0 : code + 10, v.y); }
    void rd3(int code, Vector3& v) {
        rd(code, v.x), rd(code == 0 ? 0 : code + 10, v.y), rd(code == 0 ? 0 : code + 20, v.z);
    }
    void bd3(int code, Vector3& v) {
        bd(code, v.x), bd(code == 0 ? 0 : code + 10, v.y), bd(code == 0 ? 0 : code + 20, v.z);
    }

    /// T or TV: UTF-8 here whatever the file has.
    virtual void text(int code, std::string& v) = 0;
    /// Raw bytes whose number is known (counted by the caller with count()); in groups hexadecimal in pieces.
    virtual void bytes(int code, std::string& v, std::size_t size) = 0;

    /// CMC: `code` is the group of the index, `trueCode` that of a true colour (0: none).
    virtual void color(int code, int trueCode, Color& v) = 0;
    /// CMC whose group is the raw 32-bit value (multileaders, tables).
    virtual void rawColor(int code, Color& v) = 0;
    /// CMC in the form of 2004 and later in every version.
    virtual void longColor(int code, Color& v) = 0;

    /// A reference of the handle stream; a handle in groups.
    virtual void handle(Ref kind, int code, Handle& v) = 0;
    /// A hard pointer to a table record; its name in groups.
    virtual void record(Table table, int code, Handle& v, Ref kind = Ref::HardPointer) = 0;

    /// A count of things that follow, each of at least `bits` bits in the stream that they come from (2 at least for a
    /// text, 8 for a handle). Reading: damage when that many cannot be left. Writing: gives `current`.
    virtual std::size_t count(Width width, int code, std::size_t current, unsigned bits) = 0;
    /// A counted list. `each` is called with every item in turn.
    template <class T, class F>
    void list(Width width, int code, std::vector<T>& items, unsigned bits, F each) {
        rest(items, count(width, code, items.size(), bits), each);
    }
    /// The items of a list whose count was named before.
    template <class T, class F>
    void rest(std::vector<T>& items, std::size_t n, F each) {
        if (!reading()) {
            for (T& item : items) each(item);
            return;
        }
        items.clear();
        for (std::size_t i = 0; i < n && !failed(); ++i) {
            items.emplace_back();
            each(items.back());
        }
    }
    /// A counted list of references.
    void handles(Width width, Ref kind, int code, int countCode, std::vector<Handle>& v) {
        restOfHandles(kind, code, v, count(width, countCode, v.size(), 8));
    }
    void restOfHandles(Ref kind, int code, std::vector<Handle>& v, std::size_t n) {
        rest(v, n, [&](Handle& h) { handle(kind, code, h); });
    }

    /// The marker of a class's part of the record (group 100). Nothing in the binary format.
    virtual void subclass(std::string_view marker) = 0;
    /// A constant group that the binary format does not have; reading passes over it.
    virtual void constant(int code, std::int64_t v) = 0;

    /// Names the header variable ("$LTSCALE") that the next field is, in the header of DXF. False: it is not there, and
    /// the field is to be passed over. Always true in the binary format.
    virtual bool variable(std::string_view name) {
        (void)name;
        return true;
    }
    /// UTF-8 of a text that stands among raw bytes in the drawing's code page (before 2007).
    virtual std::string fromCodePage(std::string_view bytes) {
        std::string text;
        for (const char c : bytes) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte >= 0x80) text += static_cast<char>(0xC0 | byte >> 6);
            text += static_cast<char>(byte < 0x80 ? byte : (0x80 | (byte & 0x3F)));
        }
        return text;
    }

    /// Passes over what is left of a record's data: fields that nobody needs and whose damage does not matter.
    virtual void skipRest() {}

    virtual DxfInput* input() { return nullptr; }    ///< not null with FromDxf
    virtual DxfOutput* output() { return nullptr; }  ///< not null with ToDxf

protected:
    Fields(Mode mode, Version version) : version_(version), mode_(mode) {}

private:
    Version version_;
    Mode mode_;
    bool failed_ = false;
};

}  // namespace kdraw
