#pragma once

#include "cmd/dialogue.hpp"
#include "doc/step_group.hpp"
#include "engine/entities/mesh.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"

namespace kova::cmd::commands {

/// The vertex editing of PEDIT: a marker that walks over the vertices of one polyline, plane or in space; of a fitted
/// one over those of its frame. Each change is a step of the group.
class VertexEditor {
public:
    VertexEditor(doc::Document& document, StepGroup& group, std::uint64_t id)
        : document_(document), group_(group), id_(id) {}

    Dialogue run(Ask& ask);

private:
    engine::PolylineEntity* polyline() const;
    engine::Polyline3DEntity* spacePolyline() const;
    /// Vertices that the marker walks over.
    std::size_t count() const;
    bool closed() const;
    math::Vector3 place(std::size_t index) const;
    void change(const std::function<void(engine::PolylineEntity&)>& edit);
    void changeSpace(const std::function<void(engine::Polyline3DEntity&)>& edit);
    void step(std::size_t& index, int by) const;
    void tell(Ask& ask, std::size_t index) const;
    Dialogue insert(Ask& ask);
    Dialogue move(Ask& ask);
    Dialogue tangent(Ask& ask);
    Dialogue width(Ask& ask);
    /// Break (`breaks`) and Straighten: from the marked vertex to a second one.
    Dialogue stretch(Ask& ask, bool breaks);
    void straighten(std::size_t first, std::size_t last);
    void breakBetween(std::size_t first, std::size_t last);
    void breakInSpace(std::size_t first, std::size_t last);

    doc::Document& document_;
    StepGroup& group_;
    std::uint64_t id_;
    std::size_t marker_ = 0;
};

/// PEDIT for a polygon mesh: its options, and a marker that walks over its vertices, or those of its frame.
class MeshEditor {
public:
    MeshEditor(doc::Document& document, StepGroup& group, std::uint64_t id)
        : document_(document), group_(group), id_(id) {}

    Dialogue run(Ask& ask);

private:
    engine::MeshEntity* mesh() const;
    void change(const std::function<void(engine::MeshEntity&)>& edit);
    void smooth(Ask& ask);
    Dialogue editVertices(Ask& ask);

    doc::Document& document_;
    StepGroup& group_;
    std::uint64_t id_;
};

}  // namespace kova::cmd::commands
