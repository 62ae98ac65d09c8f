#pragma once

#include "engine/model/drawing.hpp"
#include "io/json/json_tree.hpp"
#include "io/json/json_writer.hpp"
#include "io/json/record_reader.hpp"

// Parts of the native file that the saver and the loader share.

namespace kova::io {
class Progress;
}

namespace kova::io::native {

/// The drawing's properties as a record.
struct PropertiesRecord {
    engine::DrawingProperties& properties;

    bool empty() const {
        return properties.title.empty() && properties.author.empty() && properties.subject.empty() &&
               properties.keywords.empty();
    }
    void describe(engine::FieldVisitor& v) {
        v.text("title", properties.title, "");
        v.text("author", properties.author, "");
        v.text("subject", properties.subject, "");
        v.text("keywords", properties.keywords, "");
    }
};

struct LimitsRecord {
    engine::Limits& limits;

    void describe(engine::FieldVisitor& v) {
        v.pointObject("lower", limits.lower);
        v.pointObject("upper", limits.upper);
        v.boolean("check", limits.check);
    }
};

/// The named-object dictionary: its entries stand in a list, because nothing keeps two from having one name.
struct DictionaryRecord {
    std::vector<engine::DictionaryEntry>& entries;

    void describe(engine::FieldVisitor& v) { v.objects("entries", entries); }
};

/// A user coordinate system in force that has no name, or that moved away from the named one.
inline constexpr std::string_view kUcsInForceKey = "currentUcsAxes";
struct UcsAxesRecord {
    engine::Ucs& ucs;

    void describe(engine::FieldVisitor& v) {
        v.point("origin", ucs.origin);
        v.point("xAxis", ucs.xAxis);
        v.point("yAxis", ucs.yAxis);
    }
};

/// What a layer state restores, and what the state says about itself.
struct LayerStateMaskRecord {
    engine::LayerState& state;

    void describe(engine::FieldVisitor& v) {
        state.mask.describe(v);
        v.text("stateDescription", state.description, "");
    }
};

/// The members of a layout except its entities.
struct LayoutRecord {
    engine::Layout& layout;

    void describe(engine::FieldVisitor& v) {
        v.name("name", layout.name);
        v.integer("tabOrder", layout.tabOrder);
        v.object("pageSetup", layout.pageSetup);
        v.optionalHandle("handle", layout.handle);
    }
};

/// Runs a record that is made of references, and so cannot be default-made, through a visitor.
template <class Record>
void writeMembers(JsonWriter& out, std::string_view key, Record record) {
    out.key(key);
    writeRecord(out, record);
}

/// The document itself.
void writeDrawing(JsonWriter& out, const engine::Drawing& drawing, Progress* progress = nullptr);

void writeSystemVariables(JsonWriter& out, const engine::Drawing& drawing);
/// Sets the variables of the object "systemVariables". `spaceIsGiven` tells that the file says elsewhere which tab
/// is current, so that CTAB adds nothing.
void readSystemVariables(JsonTree& tree, JsonTree::Index object, const RecordReader& reader, bool spaceIsGiven,
                         engine::Drawing& drawing);

/// Reads everything that stands in the tree: all but blocks, entities and layouts. `reader` has entered the root.
/// The first group stands in front of the blocks, the second behind the layouts, as the order of failures wants it.
void readLeadingSections(JsonTree& tree, JsonTree::Index root, RecordReader& reader, engine::Drawing& drawing);
void readTrailingSections(JsonTree& tree, JsonTree::Index root, RecordReader& reader, engine::Drawing& drawing);

}  // namespace kova::io::native
