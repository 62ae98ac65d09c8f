// What holds for every command: one step of UNDO, locked layers, P, Escape and Enter at every prompt, and any answer
// whatever. A table of conversations leads the commands that edit, draw and annotate to where they change something.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>

#include "cmd/console.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/point_input.hpp"
#include "io/native/native_file.hpp"
#include "io/native/sample_drawing.hpp"

namespace kova::cmd {
namespace {

/// The native text of a drawing that has something for every conversation: see kScene.
const std::vector<std::string> kScene = {"-LAYER Make Other Color 3",
                                         "",
                                         "",
                                         "-LAYER Make Walls Color 1",
                                         "",
                                         "",
                                         "LINE 0,0 10,0",
                                         "",
                                         "LINE 10,0 10,10",
                                         "",
                                         "LINE 0,5 8,5",
                                         "",
                                         "CIRCLE 5,30 3",
                                         "ARC 20,0 25,5 30,0",
                                         "RECTANGLE 20,20 40,30",
                                         "PLINE 50,0 60,0 60,10 70,10",
                                         "",
                                         "ELLIPSE 90,0 100,0 3",
                                         "SPLINE 0,50 5,59 10,50 20,55",
                                         "",
                                         "TEXT 0,80 2 0",
                                         "upper text",
                                         "",
                                         "TEXT 30,80 2 0",
                                         "more",
                                         "",
                                         "MTEXT 60,90 80,80 paragraph",
                                         "",
                                         "DIMLINEAR 0,0 10,0 5,-5",
                                         "DIMLINEAR 0,0 10,0 5,-9",
                                         "-HATCH 30,25",
                                         "",
                                         "ATTDEF",
                                         "",
                                         "TAG",
                                         "Prompt",
                                         "v",
                                         "200,200",
                                         "1",
                                         "0",
                                         "BLOCK B1 200,200 L",
                                         "",
                                         "",
                                         "INSERT B1 100,50 1 1 0 w",
                                         "MLEADER 0,100 10,110",
                                         "note",
                                         "",
                                         "MLEADER 40,100 50,110",
                                         "note 2",
                                         "",
                                         "LEADER 80,100 90,110",
                                         "",
                                         "old note",
                                         "",
                                         "TABLE",
                                         "2",
                                         "2",
                                         "150,150",
                                         "",
                                         "",
                                         "",
                                         "",
                                         "",
                                         "",
                                         "",
                                         "",
                                         "-LAYER Set Other",
                                         "",
                                         "LINE 300,0 310,0",
                                         "",
                                         "ELEV 5",
                                         "",
                                         "LINE 300,20 310,20",
                                         "",
                                         "ELEV 0",
                                         "",
                                         "LINE 300,40 310,40",
                                         "",
                                         "LINE 300,40 310,40",
                                         "",
                                         "COLOR 4",
                                         "LINE 300,60 310,60",
                                         "",
                                         "COLOR ByLayer",
                                         "LINE 4,-3 4,8",
                                         "",
                                         "TEXT 350,80 2 180",
                                         "turned",
                                         ""};

/// A command with the answers to its questions: what is selected first, then the rest.
struct Conversation {
    std::string command;
    std::vector<std::string> selection;  ///< without the Enter that ends it; empty: the command selects nothing
    std::vector<std::string> answers;
    bool selectsBefore = true;  ///< takes what stands selected
    std::string step = {};      ///< the label of the step of undo, when it is not the command's name
    std::size_t steps = 1;
};

const std::vector<Conversation>& conversations() {
    static const std::vector<Conversation> all = {
        // Editing
        {"ERASE", {"5,0", "27,30"}, {}},
        {"MOVE", {"5,0", "8,30"}, {"0,0", "3,4"}},
        {"COPY", {"5,0", "8,30"}, {"0,0", "3,4", "6,8", ""}},
        {"ROTATE", {"5,0", "27,30"}, {"0,0", "30"}},
        {"SCALE", {"5,0", "8,30"}, {"0,0", "2"}},
        {"MIRROR", {"5,0", "8,30"}, {"0,0", "1,1", "Y"}},
        {"MIRROR", {"5,0", "8,30"}, {"0,0", "1,1", "N"}},
        {"STRETCH", {"C", "12,12", "9,-1"}, {"0,0", "2,2"}},
        {"ALIGN", {"5,0"}, {"0,0", "50,50", "10,0", "50,70", "", "N"}},
        {"MOCORO", {"5,0"}, {"0,0", "M", "1,1", "R", "30", "S", "2", ""}},
        {"ARRAY", {"5,0"}, {"R", ""}},
        {"ARRAYRECT", {"5,0"}, {""}},
        {"ARRAYPOLAR", {"5,0"}, {"50,50", ""}},
        {"ARRAYPATH", {"8,30"}, {"55,0", ""}},
        {"EXPLODE", {"27,30"}, {}},
        {"XPLODE", {"27,30"}, {"C", "1"}},
        {"JOIN", {"5,0", "10,5"}, {}},
        {"REVERSE", {"5,0"}, {}},
        {"CHPROP", {"5,0"}, {"C", "2", ""}},
        {"CHANGE", {"5,0"}, {"P", "C", "2", ""}},
        {"DRAWORDER", {"5,0"}, {"F"}},
        {"DRAWORDER", {"L"}, {"B"}},
        {"FLATTEN", {}, {}},
        {"OVERKILL", {"ALL"}, {""}},
        {"SETBYLAYER", {"ALL"}, {"", ""}},
        {"BURST", {"L", "100,50"}, {}},
        {"TCASE", {"2,81"}, {"Upper"}},
        {"TCOUNT", {"2,81"}, {"X", "1,1", "P"}},
        {"TCIRCLE", {"2,81"}, {"0.35", "C", "C"}},
        {"TEXTMASK", {"2,81"}, {}},
        {"TORIENT", {}, {}},
        {"TXT2MTXT", {"2,81", "31,81"}, {}},
        {"SCALETEXT", {"2,81"}, {"E", "5"}},
        {"JUSTIFYTEXT", {"2,81"}, {"MC"}},
        {"TEXTALIGN", {"2,81", "31,81"}, {"2,81", "2,60"}},
        {"LENGTHEN", {}, {"DE", "2", "9,0", ""}},
        {"BREAK", {}, {"3,0", "6,0"}},
        {"FILLET", {}, {"R", "1", "5,0", "10,5"}},
        {"CHAMFER", {}, {"D", "1", "1", "5,0", "10,5"}},
        {"TRIM", {}, {"", "3,5", ""}},
        {"EXTEND", {}, {"", "7,5", ""}},
        {"OFFSET", {}, {"1", "5,0", "5,3", ""}},
        {"EXOFFSET", {}, {"1", "5,0", "5,3", ""}},
        {"PEDIT", {}, {"55,0", "W", "1", ""}},
        {"MPEDIT", {"55,0", "5,0"}, {"Y", "W", "1", ""}},
        {"SPLINEDIT", {}, {"0,50", "R", ""}},
        {"MATCHPROP", {}, {"305,0", "5,0", ""}},
        {"NCOPY", {}, {"5,0", "", "0,0", "0,20"}},
        {"HATCHEDIT", {}, {"30,25", "P", "ANSI32", "1", "0"}},
        {"DDEDIT", {}, {"2,81", "changed", ""}},
        // Drawing
        // Each line of LINE is a step of its own.
        {"LINE", {}, {"0,0", "1,1", "2,0", "C"}, true, {}, 3},
        {"PLINE", {}, {"0,0", "1,1", "A", "2,0", ""}},
        {"CIRCLE", {}, {"0,0", "1"}},
        {"ARC", {}, {"0,0", "1,1", "2,0"}},
        {"ELLIPSE", {}, {"0,0", "4,0", "1"}},
        {"RECTANGLE", {}, {"0,0", "4,3"}},
        {"POLYGON", {}, {"5", "0,0", "I", "3"}},
        {"POINT", {}, {"1,2"}},
        {"DONUT", {}, {"1", "2", "0,0", "5,5", ""}},
        {"RAY", {}, {"0,0", "1,1", "2,0", ""}},
        {"XLINE", {}, {"0,0", "1,1", "2,0", ""}},
        {"SOLID", {}, {"0,0", "1,0", "0,1", "1,1", ""}},
        {"SPLINE", {}, {"0,0", "1,1", "2,0", ""}},
        {"MLINE", {}, {"0,0", "10,0", "10,10", ""}},
        {"3DFACE", {}, {"0,0", "1,0", "1,1", "0,1", ""}},
        {"3DPOLY", {}, {"0,0,0", "1,0,1", "1,1,2", ""}},
        {"HELIX", {}, {"0,0", "2", "1", "10"}},
        {"REVCLOUD", {}, {"R", "0,0", "30,20"}},
        {"WIPEOUT", {}, {"0,0", "5,0", "5,5", ""}},
        {"BREAKLINE", {}, {"0,0", "20,0", ""}},
        {"BOUNDARY", {}, {"30,25", ""}},
        {"REGION", {"8,30"}, {}},
        {"-HATCH", {}, {"5,30", ""}},
        {"DIVIDE", {}, {"5,0", "4"}},
        {"MEASURE", {}, {"5,0", "3"}},
        {"ADDSELECTED", {}, {"8,30", "0,0", "4"}, true, "CIRCLE"},
        // Annotating
        {"TEXT", {}, {"0,0", "2", "0", "hello", ""}},
        {"MTEXT", {}, {"0,0", "10,10", "hello", ""}},
        {"DIMLINEAR", {}, {"0,0", "10,0", "5,5"}},
        {"DIMALIGNED", {}, {"0,0", "10,10", "5,9"}},
        {"DIMANGULAR", {}, {"5,0", "10,5", "8,2"}},
        {"DIMRADIUS", {}, {"8,30", "12,32"}},
        {"DIMDIAMETER", {}, {"8,30", "12,32"}},
        {"DIMJOGGED", {}, {"8,30", "0,20", "12,32", "10,31"}},
        {"DIMARC", {}, {"25,5", "25,8"}},
        {"DIMCENTER", {}, {"8,30"}},
        {"DIMORDINATE", {}, {"10,10", "10,20"}},
        {"DIMBASELINE", {}, {"5,-9", "20,0", "", ""}},
        {"DIMCONTINUE", {}, {"5,-9", "20,0", "", ""}},
        {"DIMEDIT", {}, {"R", "30", "5,-5", ""}},
        {"DIMTEDIT", {}, {"5,-5", "2,-5"}},
        {"DIMOVERRIDE", {}, {"DIMTXT", "5", "", "5,-5", ""}},
        {"DIMSPACE", {}, {"5,-5", "5,-9", "", "6"}},
        {"DIMDISASSOCIATE", {"5,-5"}, {}},
        {"QDIM", {"5,0", "10,5"}, {"5,20"}},
        {"LEADER", {}, {"0,0", "5,5", "", "note", ""}},
        {"QLEADER", {}, {"0,0", "5,5", "", "", "note", ""}},
        {"MLEADER", {}, {"0,0", "5,5", "note", ""}},
        {"MLEADERALIGN", {"51,110", "11,110"}, {"11,110", "10,200"}},
        {"TOLERANCE", {}, {"PO", "0.1", "", "", "0,0"}},
        {"TABLE", {}, {"2", "2", "0,0", "a", "", "", "", "", "", "", ""}},
        // Layers, groups and blocks
        {"LAYMCH", {"5,0"}, {"305,0"}},
        {"LAYCUR", {"5,0"}, {}},
        {"COPYTOLAYER", {"5,0"}, {"305,0", "X"}},
        {"LAYISO", {"305,0"}, {}},
        {"LAYOFF", {}, {"5,0", "", ""}},
        {"LAYFRZ", {}, {"5,0", "", ""}},
        {"LAYLCK", {}, {"5,0"}},
        {"LAYMCUR", {}, {"5,0"}},
        {"GROUP", {"5,0", "10,5"}, {}},
        {"BLOCK", {}, {"B9", "0,0", "5,0", ""}},
        {"INSERT", {}, {"B1", "5,5", "1", "1", "0", "x"}},
        {"MINSERT", {}, {"B1", "5,5", "1", "1", "0", "2", "2", "10", "10", "x"}},
        {"ATTDEF", {}, {"", "TAG", "Prompt", "v", "1,1", "1", "0"}},
        {"HIDEOBJECTS", {"5,0"}, {}},
        {"ISOLATEOBJECTS", {"5,0"}, {}},
        {"CUTCLIP", {"5,0"}, {}},
    };
    return all;
}

/// The drawing of kScene in native text; made once.
const std::string& scene() {
    static const std::string text = [] {
        Console c;
        c.run(kScene);
        EXPECT_TRUE(c.idle()) << c.prompt();
        return io::native::nativeText(c.drawing());
    }();
    return text;
}

/// What undo answers for. Variables, among them remembered defaults, and counters go their own ways.
nlohmann::json contents(Console& c) {
    nlohmann::json all = nlohmann::json::parse(io::native::nativeText(c.drawing()));
    all.erase("systemVariables");
    all.erase("nextHandle");
    return all;
}

/// Where two contents differ, in a few words.
std::string difference(const nlohmann::json& a, const nlohmann::json& b) {
    for (const auto& [name, value] : a.items()) {
        if (b.contains(name) && b[name] == value) continue;
        if (!b.contains(name)) return name + " is gone";
        if (!value.is_array() || value.size() != b[name].size())
            return name + ": " + std::to_string(value.size()) + " against " + std::to_string(b[name].size()) + " " +
                   value.dump().substr(0, 200) + " | " + b[name].dump().substr(0, 200);
        for (std::size_t i = 0; i < value.size(); ++i)
            if (value[i] != b[name][i]) return name + ":\n  " + value[i].dump() + "\n  " + b[name][i].dump();
    }
    return a == b ? "" : "a member more";
}

/// A console with the scene opened in it.
class Scene : public Console {
public:
    Scene() {
        auto drawing = std::make_unique<engine::Drawing>();
        EXPECT_EQ(io::native::loadNativeText(scene(), *drawing), "");
        document.setDrawing(std::move(drawing));
    }
};

std::vector<std::string> linesOf(const Conversation& talk) {
    std::vector<std::string> lines = {talk.command};
    lines.insert(lines.end(), talk.selection.begin(), talk.selection.end());
    if (!talk.selection.empty()) lines.emplace_back();
    lines.insert(lines.end(), talk.answers.begin(), talk.answers.end());
    return lines;
}

std::string plainName(const std::string& command) { return command[0] == '-' ? command.substr(1) : command; }

/// What is wrong with a conversation that has been held: it must end, change something, and be one step.
std::string faultOf(Scene& c, const nlohmann::json& before, const std::string& step, std::size_t expected) {
    if (!c.idle()) return "waits with " + c.prompt();
    const nlohmann::json after = contents(c);
    if (before == after) return "nothing changed";
    const std::size_t steps = c.document.history().undoCount();
    if (steps != expected) return std::to_string(steps) + " steps";
    if (const std::string label = c.document.history().undoLabel(); label != step) return "is undone as " + label;
    c.feed("UNDO " + std::to_string(steps));
    if (const std::string text = difference(before, contents(c)); !text.empty()) return "after UNDO " + text;
    c.feed("REDO " + std::to_string(steps));
    if (const std::string text = difference(after, contents(c)); !text.empty()) return "after REDO " + text;
    return {};
}

TEST(EveryCommand, IsOneStepOfUndo) {
    for (const Conversation& talk : conversations()) {
        Scene c;
        const nlohmann::json before = contents(c);
        c.run(linesOf(talk));
        EXPECT_EQ(faultOf(c, before, talk.step.empty() ? plainName(talk.command) : talk.step, talk.steps), "")
            << talk.command << ": " << testing::PrintToString(c.lines);
    }
}

TEST(EveryCommand, LeavesLockedAndFrozenLayersAlone) {
    for (const Conversation& talk : conversations()) {
        for (const char* how : {"LOck", "Freeze", "OFF"}) {
            SCOPED_TRACE(talk.command + " " + how);
            Scene c;
            c.run({std::string("-LAYER ") + how + " Walls", ""});
            while (!c.idle()) c.feed("");
            c.document.history().clear();
            // Hidden for a while is not changed.
            const auto walls = [&c] {
                std::map<std::uint64_t, nlohmann::json> found;
                nlohmann::json all = contents(c);
                for (nlohmann::json& e : all["entities"]) {
                    e.erase("visible");
                    if (e["layer"] == "Walls") found[e["handle"]] = e;
                }
                return found;
            };
            const auto before = walls();
            ASSERT_GT(before.size(), 15u);
            c.run(linesOf(talk));
            c.processor.cancel();
            const auto after = walls();
            for (const auto& [handle, entity] : before) {
                const auto now = after.find(handle);
                if (now != after.end() && now->second == entity) continue;
                ADD_FAILURE() << entity << "\n" << (now == after.end() ? nlohmann::json("is gone") : now->second);
                break;
            }
        }
    }
}

// Those that replace what was selected leave what came of it.
TEST(EveryCommand, LeavesItsSelectionAsThePreviousOne) {
    for (const Conversation& talk : conversations()) {
        if (talk.selection.empty()) continue;
        SCOPED_TRACE(talk.command);
        Scene c;
        c.feed("SELECT");
        c.run(talk.selection);
        const std::vector<std::uint64_t> wanted = c.selected();
        EXPECT_FALSE(wanted.empty());
        c.run({"", "DESELECT", "SELECT", "305,0", "", "DESELECT"});
        c.run(linesOf(talk));
        const std::vector<std::uint64_t>& previous = c.processor.previousSelection();
        for (const std::uint64_t id : wanted)
            EXPECT_TRUE(c.drawing().findById(id) == nullptr ||
                        std::find(previous.begin(), previous.end(), id) != previous.end())
                << previous.size();
        EXPECT_TRUE(c.selected().empty()) << c.selected().size();
    }
}

TEST(EveryCommand, TakesWhatStandsSelected) {
    for (const Conversation& talk : conversations()) {
        if (talk.selection.empty() || !talk.selectsBefore) continue;
        SCOPED_TRACE(talk.command);
        Scene c;
        c.run(linesOf(talk));
        Scene d;
        d.feed("SELECT");
        d.run(talk.selection);
        d.run({"", talk.command});
        // Those that show what is selected first are told to go on.
        if (d.processor.isActive() && d.processor.tool()->isSelectingObjects()) d.feed("");
        d.run(talk.answers);
        EXPECT_TRUE(d.idle()) << d.prompt();
        EXPECT_EQ(difference(contents(c), contents(d)), "");
    }
}

TEST(EveryCommand, EndsAtEscapeAtEveryPrompt) {
    for (const Conversation& talk : conversations()) {
        const std::vector<std::string> lines = linesOf(talk);
        for (std::size_t count = 1; count < lines.size(); ++count) {
            SCOPED_TRACE(talk.command + " after " + std::to_string(count));
            Scene c;
            const nlohmann::json before = contents(c);
            for (std::size_t i = 0; i < count; ++i) c.feed(lines[i]);
            c.processor.cancel();
            EXPECT_TRUE(c.idle());
            EXPECT_FALSE(c.document.isGroupOpen());
            if (!c.document.history().canUndo()) {
                EXPECT_EQ(difference(before, contents(c)), "");
                continue;
            }
            const nlohmann::json after = contents(c);
            const std::size_t steps = c.document.history().undoCount();
            EXPECT_LE(steps, talk.steps);
            c.feed("UNDO " + std::to_string(steps));
            EXPECT_EQ(difference(before, contents(c)), "");
            c.feed("REDO " + std::to_string(steps));
            EXPECT_EQ(difference(after, contents(c)), "");
        }
    }
}

TEST(EveryCommand, TakesEnterAtEveryPrompt) {
    for (const Conversation& talk : conversations()) {
        const std::vector<std::string> lines = linesOf(talk);
        for (std::size_t count = 1; count < lines.size(); ++count) {
            SCOPED_TRACE(talk.command + " after " + std::to_string(count));
            Scene c;
            const nlohmann::json before = contents(c);
            for (std::size_t i = 0; i < count; ++i) c.feed(lines[i]);
            for (int i = 0; i < 12 && !c.idle(); ++i) c.feed("");
            // Where Enter asks for the settings, it does so again and again.
            EXPECT_TRUE(c.idle() || c.prompt().ends_with("<Settings>:") || c.prompt().ends_with("<Options>:"))
                << c.prompt();
            c.processor.cancel();
            while (c.document.undo()) {
            }
            EXPECT_EQ(difference(before, contents(c)), "");
        }
    }
}

// Picks ------------------------------------------------------------------------------------------------------

/// The way to a question for one object, and a point that picks one there.
struct PickRow {
    std::vector<std::string> lines;
    std::string at;
};

const std::vector<PickRow>& pickRows() {
    static const std::vector<PickRow> all = {
        // Layers
        {{"LAYMCUR"}, "5,0"},
        {{"LAYFRZ"}, "5,0"},
        {{"LAYOFF"}, "5,0"},
        {{"LAYLCK"}, "5,0"},
        {{"LAYDEL"}, "5,0"},
        {{"LAYMRG"}, "5,0"},
        {{"LAYMRG", "5,0", ""}, "305,0"},
        {{"LAYMCH", "5,0", ""}, "305,0"},
        {{"COPYTOLAYER", "5,0", ""}, "305,0"},
        {{"-LAYER", "Set", ""}, "305,0"},
        // Selecting
        {{"GETSEL"}, "5,0"},
        {{"GETSEL", "*"}, "8,30"},
        {{"ADDSELECTED"}, "8,30"},
        {{"MATCHPROP"}, "5,0"},
        // Changing
        {{"BREAK"}, "5,0"},
        {{"TRIM", ""}, "3,5"},
        {{"EXTEND", ""}, "7,5"},
        {{"OFFSET", "1"}, "5,0"},
        {{"EXOFFSET", "1"}, "5,0"},
        {{"FILLET"}, "5,0"},
        {{"FILLET", "5,0"}, "10,5"},
        {{"FILLET", "P"}, "55,0"},
        {{"CHAMFER"}, "5,0"},
        {{"CHAMFER", "5,0"}, "10,5"},
        {{"CHAMFER", "P"}, "55,0"},
        {{"LENGTHEN"}, "5,0"},
        {{"LENGTHEN", "DE", "2"}, "9,0"},
        {{"DIVIDE"}, "5,0"},
        {{"MEASURE"}, "5,0"},
        {{"PEDIT"}, "55,0"},
        {{"SPLINEDIT"}, "0,50"},
        {{"ARRAYPATH", "8,30", ""}, "55,0"},
        {{"NCOPY"}, "5,0"},
        {{"HATCHEDIT"}, "30,25"},
        {{"DDEDIT"}, "2,81"},
        {{"TEXTFIT"}, "2,81"},
        {{"SCALETEXT", "2,81", "", "E", "M"}, "31,81"},
        {{"TEXTALIGN", "2,81", ""}, "31,81"},
        {{"TABLEDIT"}, "152,148"},
        {{"EATTEDIT"}, "100,50"},
        {{"ATTSYNC", ""}, "100,50"},
        {{"GATTE"}, "100,50"},
        {{"GATTE", "100,50"}, "100,50"},
        {{"REFEDIT"}, "100,50"},
        {{"XLIST"}, "100,50"},
        {{"XDLIST"}, "5,0"},
        // Drawing
        {{"CIRCLE", "T"}, "5,0"},
        {{"CIRCLE", "T", "5,0"}, "10,5"},
        {{"XLINE", "A", "R"}, "5,0"},
        {{"XLINE", "O", "1"}, "5,0"},
        {{"REVCLOUD", "O"}, "8,30"},
        {{"WIPEOUT", "P"}, "27,30"},
        {{"UCS", "OB"}, "5,0"},
        // Measuring and annotating
        {{"MEASUREGEOM", "R"}, "8,30"},
        {{"MEASUREGEOM", "A"}, "5,0"},
        {{"MEASUREGEOM", "A", "5,0"}, "10,5"},
        {{"DIMLINEAR", ""}, "5,0"},
        {{"DIMALIGNED", ""}, "5,0"},
        {{"DIMANGULAR"}, "5,0"},
        {{"DIMANGULAR", "5,0"}, "10,5"},
        {{"DIMRADIUS"}, "8,30"},
        {{"DIMDIAMETER"}, "8,30"},
        {{"DIMJOGGED"}, "8,30"},
        {{"DIMCENTER"}, "8,30"},
        {{"DIMARC"}, "25,5"},
        {{"DIMBASELINE", "Select"}, "10,-9"},
        {{"DIMCONTINUE", "Select"}, "10,-9"},
        {{"DIMTEDIT"}, "5,-5"},
        {{"DIMSPACE"}, "5,-5"},
        {{"DIMSTYLE", "", ""}, "5,-5"},
        {{"QLEADER", "", "C", "", "", "0,0", "5,5", ""}, "2,81"},
        {{"MLEADEREDIT"}, "10,110"},
        {{"MLEADERALIGN", "51,110", "11,110", ""}, "11,110"},
        {{"FIELD", "Object"}, "5,0"},
    };
    return all;
}

/// Brings the objects of the scene onto the sheet of a layout, which then is current.
void moveToSheet(Scene& c) {
    c.run({"-LAYOUT", "Set", "Layout1"});
    engine::EntityList& sheet = c.drawing().currentSpace();
    engine::EntityList& model = c.drawing().modelSpace();
    ASSERT_NE(&sheet, &model);
    for (engine::Entity* e : sheet.entities()) sheet.take(*e);
    for (engine::Entity* e : model.entities()) sheet.append(model.take(*e));
    c.document.history().clear();
}

/// The handle of an object that is newer than all of the scene.
constexpr std::uint64_t kTwin = 0xA000;

/// What a way of picking led to.
struct Outcome {
    std::vector<std::string> printed;
    std::string prompt;
    nlohmann::json contents;
    std::vector<std::uint64_t> selected;
    bool operator==(const Outcome&) const = default;
};
void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << testing::PrintToString(outcome.printed) << " " << outcome.prompt << " "
         << testing::PrintToString(outcome.selected) << " " << std::hash<nlohmann::json>{}(outcome.contents);
}

TEST(EveryCommand, ObjectPromptsTakeEveryKindOfPick) {
    for (const PickRow& row : pickRows()) {
        std::uint64_t picked = 0;
        for (const bool sheet : {false, true}) {
            SCOPED_TRACE(testing::PrintToString(row.lines) + (sheet ? " on a layout" : ""));
            // Where lines lead to behind the question. `newest`: the object of that handle gets a twin, the newest of all.
            const auto outcome = [&](const std::vector<std::string>& picks, std::uint64_t newest = 0) {
                Scene c;
                if (sheet) moveToSheet(c);
                if (engine::Entity* e = newest != 0 ? c.drawing().findByHandle(newest) : nullptr) {
                    std::unique_ptr<engine::Entity> twin = e->clone();
                    twin->setHandle(kTwin);
                    c.drawing().nextHandle = kTwin + 1;
                    engine::EntityList& space = c.drawing().currentSpace();
                    // Drawn first, so that the newest is not the last in the drawing order.
                    std::vector<engine::Entity*> order = space.entities();
                    order.insert(order.begin(), &space.append(std::move(twin)));
                    space.reorder(order);
                }
                c.run(row.lines);
                EXPECT_FALSE(c.idle());
                Outcome out;
                out.printed = c.run(picks);
                out.prompt = c.prompt();
                out.contents = contents(c);
                for (const std::uint64_t id : c.selected()) out.selected.push_back(c.drawing().findById(id)->handle());
                return out;
            };
            const auto expectTaken = [](const Outcome& outcome) {
                for (const char* refusal : {"No object found.", kUnusable, "Invalid input."})
                    EXPECT_THAT(outcome.printed, testing::Not(testing::Contains(refusal)));
            };
            const Outcome plain = outcome({row.at});
            expectTaken(plain);
            const std::vector<std::vector<std::string>> ways = {{"M2P", row.at, row.at},
                                                                {"_non", row.at},
                                                                {"NON " + row.at},
                                                                {"FROM 0,0 @" + row.at},
                                                                {".x " + row.at, row.at}};
            // Both spaces have one reading: a way or two tell for the sheet.
            for (std::size_t i = 0; i < (sheet ? 2 : ways.size()); ++i)
                EXPECT_EQ(outcome(ways[i]), plain) << testing::PrintToString(ways[i]);
            const auto p = parsePointInput(row.at, {}, {});
            ASSERT_TRUE(p);
            // One of the nearest objects is what the point picked: its handle does as well.
            Scene c;
            std::vector<engine::Entity*> near = c.entities();
            std::sort(near.begin(), near.end(), [&](const engine::Entity* a, const engine::Entity* b) {
                return a->distanceTo(*p) < b->distanceTo(*p);
            });
            for (std::size_t i = 0; i < 6 && picked == 0; ++i)
                if (outcome({namedPick(near[i]->handle(), &*p)}) == plain) picked = near[i]->handle();
            EXPECT_NE(picked, 0u);
            const Outcome twin = outcome({namedPick(kTwin)}, picked);
            expectTaken(twin);
            EXPECT_EQ(outcome({sheet ? "last" : "L"}, picked), twin);
        }
    }
}

// A question with a reading of its own would know less than the others.
TEST(EveryCommand, PicksAreReadInOnePlace) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(KOVA_SOURCE_DIR "/src/cmd/commands")) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path());
        const std::string text(std::istreambuf_iterator<char>(in), {});
        for (const char* reader : {"parsePointInput(", "parseNamedPick(", "spatialIndex().nearest("})
            EXPECT_EQ(text.find(reader), std::string::npos) << entry.path().filename() << " has " << reader;
    }
}

// Any answer ------------------------------------------------------------------------------------------------

/// The scene with an entity of every kind, every field of it set to something.
std::unique_ptr<engine::Drawing> crowdedDrawing() {
    static const std::string text = [] {
        Scene c;
        for (int type = 0; type < engine::kEntityTypeCount; ++type) {
            engine::Entity& e = test::addFilledEntity(c.drawing().modelSpace(), static_cast<engine::EntityType>(type),
                                                      6000 + type * 40);
            e.layer = engine::Name("Walls");
        }
        return io::native::nativeText(c.drawing());
    }();
    auto drawing = std::make_unique<engine::Drawing>();
    EXPECT_EQ(io::native::loadNativeText(text, *drawing), "");
    return drawing;
}

/// The short forms of the options that a prompt offers in square brackets.
std::vector<std::string> optionsOf(const std::string& prompt) {
    std::vector<std::string> options;
    const std::size_t open = prompt.find('[');
    if (open == std::string::npos) return options;
    std::string option;
    for (std::size_t i = open + 1; i < prompt.size(); ++i) {
        const char ch = prompt[i];
        if (ch == '/' || ch == ']') {
            if (!option.empty()) options.push_back(std::exchange(option, {}));
            if (ch == ']') break;
        } else if (std::isupper(static_cast<unsigned char>(ch)) || std::isdigit(static_cast<unsigned char>(ch))) {
            option += ch;
        }
    }
    return options;
}

std::string anyAnswer(std::mt19937& random, const std::string& prompt) {
    static const std::vector<std::string> junk = {
        "@",  "<",        "1e999",        "nan", std::string(10000, 'w'), "'", ")",  "(",  "\"", "\"a b\"",
        "*",  "?",        "-1",           "0",   "1e300,1e300",           "#", "@<", "1<", ",",  "1,,2",
        "%%", "\xff\xfe", "-99999999999", "~"};
    static const std::vector<std::string> sound = {
        "",     "",     "ALL", "0,0", "10,0", "5,5", "@3,4", "1",      "2",     "0.5", "45",       "L",     "5,0",
        "8,30", "2,81", "B1",  "Y",   "N",    "P",   "5,-5", "50,110", "Walls", "red", "Standard", "100,50"};
    const std::vector<std::string> options = optionsOf(prompt);
    switch (random() % 4) {
        case 0:
            return junk[random() % junk.size()];
        case 1:
            if (!options.empty()) return options[random() % options.size()];
            [[fallthrough]];
        default:
            return sound[random() % sound.size()];
    }
}

/// Commands that reach outside of the program with whatever they are told.
bool reachesOut(const std::string& name) { return name == "SHELL" || name == "DELAY"; }

TEST(EveryCommand, TakesAnyAnswerAndCanBeUndone) {
    const std::filesystem::path old = std::filesystem::current_path();
    const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "every_command";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    const char* rounds = std::getenv("KOVA_FUZZ_ROUNDS");
    const char* seed = std::getenv("KOVA_FUZZ_SEED");
    const bool echo = std::getenv("KOVA_FUZZ_ECHO") != nullptr;
    const unsigned first = seed != nullptr ? static_cast<unsigned>(std::atoi(seed)) : 1;
    const unsigned count = rounds != nullptr ? static_cast<unsigned>(std::atoi(rounds)) : 1;
    const std::vector<Command*> commands = CommandRegistry::instance().commands();
    for (unsigned round = first; round < first + count; ++round) {
        for (const Command* command : commands) {
            if (reachesOut(command->name())) continue;
            std::mt19937 random(round * 7919u + static_cast<unsigned>(std::hash<std::string>{}(command->name())));
            Console c;
            c.document.setDrawing(crowdedDrawing());
            const engine::Drawing* drawing = &c.drawing();
            static const nlohmann::json before = contents(c);
            std::string said = (random() % 4 == 0 ? "-" : "") + command->name();
            if (random() % 3 == 0) c.run({"SELECT", random() % 2 == 0 ? "ALL" : "5,0", ""});
            if (echo) std::fprintf(stderr, "%u %s\n", round, said.c_str());
            c.feed(said);
            for (int i = 0; i < 25 && !c.idle(); ++i) {
                const std::string prompt = c.prompt();
                const std::string line = anyAnswer(random, prompt);
                if (echo) std::fprintf(stderr, "  %s %s\n", prompt.c_str(), line.substr(0, 40).c_str());
                said += " | " + line.substr(0, 40);
                const std::vector<std::string> output = c.feed(line);
                EXPECT_FALSE(c.prompt().empty()) << said;
                // Options may list something, a point is an answer, and "*", "?" and "~" ask for it.
                if (c.prompt() == prompt && line != "@3,4" && line.find_first_of("?*~") == std::string::npos &&
                    line.find_first_of("@<>()#\\\"'%w\xff") != std::string::npos) {
                    EXPECT_LE(output.size(), 1u) << said << testing::PrintToString(output);
                }
            }
            c.processor.cancel();
            EXPECT_TRUE(c.idle()) << said;
            if (c.document.isGroupOpen()) {
                EXPECT_EQ(command->name(), "UNDO") << said;
                continue;
            }
            if (&c.drawing() != drawing || !c.document.history().canUndo()) {
                if (&c.drawing() == drawing && !c.document.history().canRedo()) {
                    EXPECT_EQ(difference(before, contents(c)), "") << said << " left no step";
                }
                continue;
            }
            const nlohmann::json after = contents(c);
            engine::Drawing again;
            EXPECT_EQ(io::native::loadNativeText(io::native::nativeText(c.drawing()), again), "") << said;
            std::size_t steps = 0;
            while (c.document.undo()) ++steps;
            EXPECT_EQ(difference(before, contents(c)), "") << said << " undone";
            while (c.document.redo()) --steps;
            EXPECT_EQ(steps, 0u) << said;
            EXPECT_EQ(difference(after, contents(c)), "") << said << " made again";
        }
    }
    std::filesystem::current_path(old);
    engine::resetProfileVariables();
    CommandRegistry::instance().resetAliases();
}

}  // namespace
}  // namespace kova::cmd
