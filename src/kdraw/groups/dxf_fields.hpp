#pragma once

#include "kdraw/groups/dxf_input.hpp"
#include "kdraw/groups/dxf_output.hpp"
#include "kdraw/fields/object.hpp"

namespace kdraw {

/// Writes a record's fields as groups.
class DxfWriteFields final : public Fields {
public:
    explicit DxfWriteFields(DxfOutput& out) : Fields(Mode::ToDxf, Version::R2018), out_(out) {}

    void whole(Width width, int code, std::int64_t& v) override;
    void bd(int code, double& v) override;
    void rd(int code, double& v) override { bd(code, v); }
    void dd(int code, double& v, double) override { bd(code, v); }
    void angle(int code, double& v) override;
    void thickness(int code, double& v) override;
    void extrusion(int code, Vector3& v) override;
    void text(int code, std::string& v) override;
    void bytes(int code, std::string& v, std::size_t size) override;
    void color(int code, int trueCode, Color& v) override;
    void rawColor(int code, Color& v) override;
    void longColor(int code, Color& v) override { rawColor(code, v); }
    void handle(Ref kind, int code, Handle& v) override;
    void record(Table table, int code, Handle& v, Ref kind) override;
    std::size_t count(Width width, int code, std::size_t current, unsigned bits) override;
    void subclass(std::string_view marker) override { out_.subclass(marker); }
    void constant(int code, std::int64_t v) override { out_.integer(code, v); }
    bool variable(std::string_view name) override {
        out_.word(9, name);
        return true;
    }
    DxfOutput* output() override { return &out_; }

private:
    DxfOutput& out_;
};

/// Takes a record's fields from its groups. A field looks for its code from the cursor on within the part of its class;
/// when it stands before the cursor it is taken from there, and the cursor stays. What is missing keeps its value.
class DxfReadFields final : public Fields {
public:
    explicit DxfReadFields(DxfInput& in) : Fields(Mode::FromDxf, Version::R2018), in_(in) {}

    void whole(Width width, int code, std::int64_t& v) override;
    void bd(int code, double& v) override;
    void rd(int code, double& v) override { bd(code, v); }
    void dd(int code, double& v, double) override { bd(code, v); }
    void angle(int code, double& v) override;
    void thickness(int code, double& v) override { bd(code, v); }
    void extrusion(int code, Vector3& v) override { bd3(code, v); }
    void text(int code, std::string& v) override;
    void bytes(int code, std::string& v, std::size_t size) override;
    void color(int code, int trueCode, Color& v) override;
    void rawColor(int code, Color& v) override;
    void longColor(int code, Color& v) override { rawColor(code, v); }
    void handle(Ref kind, int code, Handle& v) override;
    void record(Table table, int code, Handle& v, Ref kind) override;
    std::size_t count(Width width, int code, std::size_t current, unsigned bits) override;
    void subclass(std::string_view marker) override { in_.enter(marker); }
    void constant(int, std::int64_t) override {}
    bool variable(std::string_view name) override { return in_.enterVariable(name); }
    DxfInput* input() override { return &in_; }

private:
    /// Calls `take` with the cursor on a group of the code; false: none.
    template <class F>
    bool at(int code, F take);

    DxfInput& in_;
};

// The groups that all objects have. Names of layers and linetypes need their tables to be in the database.
void writeCommonGroups(DxfOutput& out, const Object& object, const ObjectKind& kind, bool paperSpace);
void readCommonGroups(DxfInput& in, Object& object);
/// Extended data: groups from 1001 on.
void writeExtendedGroups(DxfOutput& out, const Object& object);
void readExtendedGroups(DxfInput& in, Object& object);

/// Hexadecimal digits as bytes; stops at what is none.
void appendHex(std::string& bytes, std::string_view digits);

}  // namespace kdraw
