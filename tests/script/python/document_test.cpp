#include "python_fixture.hpp"

#include <QTemporaryDir>

#include "engine/model/drawing.hpp"

namespace kova::script::python {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST_F(PythonTest, TransactionsCommitOneGroupOrNothing) {
    good("c = ms.add(Circle((0, 0), 1))");
    EXPECT_EQ(bad("with transaction('half'):\n    ms.add(Line((0, 0), (1, 1))); c.radius = 9; d.layers.add('New')\n    "
                  "1 / 0"),
              "ZeroDivisionError: division by zero");
    EXPECT_EQ(show("(len(ms), c.radius, 'New' in d.layers, doc.current().undo_label)"), "(1, 1.0, False, 'Python')");
    good(
        "with transaction('outer'):\n    c.radius = 2\n    try:\n        with transaction('inner'):\n"
        "            c.radius = 3; raise KeyError\n    except KeyError: pass\n    ms.add(Line((0, 0), (1, 1)))");
    EXPECT_EQ(show("(c.radius, len(ms), doc.undo(), c.radius, len(ms), doc.redo(), len(ms))"),
              "(2.0, 2, 'outer', 1.0, 1, 'outer', 2)");
    // An empty one leaves no trace; rollback() ends one without an error.
    good("with transaction('empty'): pass\nwith transaction('back') as t:\n    c.radius = 50; t.rollback()");
    EXPECT_EQ(show("(c.radius, doc.current().undo_label)"), "(2.0, 'outer')");
    EXPECT_EQ(bad("with transaction('x'): doc.undo()"), "RuntimeError: undo is not possible inside a transaction");
    EXPECT_EQ(bad("with transaction('x'): doc.new()"),
              "RuntimeError: a new drawing is not possible inside a transaction");
}

TEST_F(PythonTest, ARunThatLeavesATransactionOpenIsRolledBack) {
    good("t = transaction('left'); t.__enter__(); ms.add(Line((0, 0), (1, 1)))");
    EXPECT_TRUE(model().empty());
    EXPECT_FALSE(document().isGroupOpen());
    good("t.__exit__(None, None, None)\nms.add(Line((0, 0), (1, 1)))");
    EXPECT_EQ(model().size(), 1u);
    EXPECT_FALSE(document().isGroupOpen());
    // A drawing that a command replaces inside a transaction takes its group along.
    good(
        "with transaction('gone'):\n    ms.add(Line((0, 0), (1, 1)))\n    cmd.run('NEW', '')\n    ms.add(Circle((0, "
        "0), 1))");
    EXPECT_FALSE(document().isGroupOpen());
}

TEST_F(PythonTest, WhatACallChangesIsOneGroup) {
    good("for i in range(5): ms.add(Line((i, 0), (i, 1)))\nms[0].start = (9, 9)");
    EXPECT_EQ(document().history().undoCount(), 1u);
    EXPECT_EQ(document().history().undoLabel(), "Python");
    // Transactions, commands and undo stand between the changes around them.
    good(
        "ms.add(Line((0, 0), (1, 1)))\nwith transaction('named'): ms.add(Circle((0, 0), 1))\nms.add(Line((0, 0), (1, "
        "1)))\n"
        "cmd.run('LINE', (0, 0), (1, 1), '')\nms.add(Line((0, 0), (1, 1)))");
    EXPECT_EQ(show("[doc.undo() for i in range(7)]"),
              "['Python', 'LINE', 'Python', 'named', 'Python', 'Python', None]");
    // A failing call keeps what it did, and it can be undone.
    bad("ms.add(Line((0, 0), (1, 1)))\n1 / 0");
    EXPECT_EQ(model().size(), 1u);
    session.feed("UNDO");
    EXPECT_TRUE(model().empty());
}

TEST_F(PythonTest, TablesAreMappings) {
    EXPECT_EQ(show("(list(d.layers), len(d.layers), '0' in d.layers, 'DEFPOINTS' in d.layers, d.layers.current)"),
              "(['0', 'Defpoints'], 2, True, True, '0')");
    good(
        "w = d.layers.add('Walls', color_index=3, frozen=False, description='thick')\nw.locked = True\nw.color = "
        "'blue'");
    EXPECT_EQ(show("(w.color, w.color_index, w.locked, w.on, w.description, d.layers['WALLS'] == w)"),
              "(5, 5, True, True, 'thick', True)");
    good("ms.add(Line((0, 0), (1, 1), layer_name='walls'))");
    EXPECT_EQ(bad("del d.layers['Walls']"), "ValueError: the layer 'Walls' is in use (1 references)");
    good("w.name = 'Mauern'");
    EXPECT_EQ(show("(ms[0].layer_name, 'Walls' in d.layers, w.locked)"), "('Mauern', False, True)");
    good("ms.clear(); del d.layers['Mauern']");
    EXPECT_THAT(bad("w.color"), StartsWith("KeyError"));
    EXPECT_EQ(bad("d.layers['None']"), "KeyError: 'None'");
    EXPECT_EQ(bad("d.layers.add('a*b')"), "ValueError: 'a*b' is no valid name");
    EXPECT_EQ(bad("d.layers.add('0')"), "ValueError: there is a record named '0' already");
    EXPECT_EQ(bad("d.layers['0'].colour = 3"), "AttributeError: layers have no field 'colour'");
    EXPECT_EQ(bad("d.layers.remove('0')"), "ValueError: '0' is current");
    good(
        "s = d.text_styles.add('Notes', font_file='arial.ttf', height=3); ds = d.dim_styles.ensure('Mine', "
        "text_height=7)");
    EXPECT_EQ(
        show("(s.height, ds.text_height, d.dim_styles['mine'].arrow_size, d.linetypes.load('Center').description)"),
        "(3.0, 7.0, 2.5, 'Center ____ _ ____ _ ____')");
    good("d.variables['LTSCALE'] = 2; d.variables['CLAYER'] = '0'");
    EXPECT_EQ(show("(d.variables['LTSCALE'], d.variables['clayer'], 'LUNITS' in d.variables, doc.undo(), "
                   "d.variables['LTSCALE'])"),
              "(2.0, '0', True, 'Python', 1.0)");
    EXPECT_EQ(bad("d.variables['NOSUCH']"), "KeyError: 'there is no system variable named NOSUCH'");
    EXPECT_THAT(bad("d.variables['LUNITS'] = 99"), StartsWith("ValueError: LUNITS: "));
}

TEST_F(PythonTest, FieldsNameRecordsThatAreThere) {
    good("w = d.layers.add('Walls'); s = d.dim_styles.ensure('Mine'); t = ms.add(Text((0, 0), 5, 0, 'x'))");
    EXPECT_EQ(bad("w.linetype = 'NOSUCH'"), "ValueError: there is no linetype named 'NOSUCH'");
    EXPECT_EQ(bad("d.layers.add('Other', linetype='NOSUCH')"), "ValueError: there is no linetype named 'NOSUCH'");
    EXPECT_EQ(bad("s.text_style = 'NOSUCH'"), "ValueError: there is no text style named 'NOSUCH'");
    EXPECT_EQ(bad("s.arrow_block = 'NOSUCH'"), "ValueError: there is no block named 'NOSUCH'");
    EXPECT_EQ(bad("d.table_styles['Standard'].set(text_style='NOSUCH')"),
              "ValueError: there is no text style named 'NOSUCH'");
    EXPECT_EQ(bad("t.text_style = 'NOSUCH'"), "ValueError: there is no text style named 'NOSUCH'");
    EXPECT_EQ(bad("t.copy().text_style = 'NOSUCH'"), "ValueError: there is no text style named 'NOSUCH'");
    EXPECT_EQ(bad("ms.add(Text((0, 0), 5, 0, 'y', text_style='NOSUCH'))"),
              "ValueError: there is no text style named 'NOSUCH'");
    EXPECT_EQ(bad("t.object_scales = ['1:12345']"), "ValueError: there is no annotation scale named '1:12345'");
    // What failed changed nothing.
    EXPECT_EQ(show("(w.linetype, 'Other' in d.layers, s.text_style, t.text_style, len(ms))"),
              "('Continuous', False, 'Standard', 'Standard', 1)");
    // What is there, what the library has, and the arrow heads that the program draws.
    good("d.text_styles.add('Notes'); w.linetype = 'dashed'; s.text_style = 'notes'; s.arrow_block = '_DOT'\n"
         "t.text_style = 'Notes'; ms.add(Text((0, 0), 5, 0, 'y', text_style='Notes'))");
    EXPECT_EQ(show("(w.linetype.lower(), 'Dashed' in d.linetypes, s.text_style.lower(), s.arrow_block, len(ms))"),
              "('dashed', True, 'notes', '_DOT', 2)");
}

TEST_F(PythonTest, BlocksAndLayoutsAreSpaces) {
    good(
        "b = d.blocks.add('Door', [Line((0, 0), (5, 0)), Circle((0, 0), 1)], base=(1, 1), description='a door')\n"
        "r = ms.add(BlockReference('Door', (10, 10), rotation=0.5))");
    EXPECT_EQ(show("(len(b), b.base, b.description, r.insertion_point, 'door' in d.blocks, d.blocks['DOOR'] == b)"),
              "(2, Vector2(1, 1), 'a door', Vector2(10, 10), True, True)");
    EXPECT_EQ(bad("b.add(BlockReference('Door', (0, 0)))"), "ValueError: the block 'Door' would contain itself");
    EXPECT_EQ(bad("ms.add(BlockReference('Window', (0, 0)))"), "ValueError: there is no block named 'Window'");
    EXPECT_THAT(bad("d.blocks.remove('Door')"), HasSubstr("is in use"));
    good("l = d.layouts.add('Plan'); l.add(Text((0, 0), 5, 0, 'Title')); l.paper_width = 594");
    EXPECT_EQ(show("(len(l), l.paper_width, l.name, len(ms), 'plan' in d.layouts, d.layouts[-1] == l)"),
              "(1, 594.0, 'Plan', 1, True, True)");
    good("d.layouts.remove('Plan')");
    EXPECT_EQ(bad("len(l)"), "KeyError: \"there is no layout named 'Plan'\"");
    EXPECT_EQ(show("(doc.undo(), len(l))"), "('Python', 1)");
}

TEST_F(PythonTest, FilesAreSavedAndOpened) {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("a.kvcad").toStdString();
    good("ms.add(Circle((0, 0), 4))\nprint(current().is_modified)\ndoc.save(" + ("'" + path + "'") + ")");
    EXPECT_EQ(show("(current().path, current().is_modified)"), "('" + path + "', False)");
    good("doc.new('imperial')");
    EXPECT_EQ(show("(len(ms), current().path, d.variables['MEASUREMENT'])"), "(0, '', 0)");
    good("import pathlib; doc.open(pathlib.Path('" + path + "'))");
    EXPECT_EQ(show("ms[0].radius"), "4.0");
    EXPECT_THAT(bad("doc.open('/no/such/file.kvcad')"), StartsWith("OSError: "));
    EXPECT_THAT(bad("doc.save('/no/such/folder/x.kvcad')"), StartsWith("OSError: "));
    EXPECT_EQ(show("len(ms)"), "1");
}

TEST_F(PythonTest, CommandsRunAndTheirLinesComeBack) {
    EXPECT_EQ(show("cmd.run('LINE', (0, 0), '@10,0', '')"),
              "['Command: LINE', 'Specify first point: 0,0', 'Specify next point or [Close/Undo]: @10,0', "
              "'Specify next point or [Close/Undo]: ']");
    EXPECT_EQ(session.takeOutput().size(), 4u);
    EXPECT_EQ(show("(cmd.run('line', (0, 0.5))[-1], cmd.is_waiting())"), "('*Cancel*', False)");
    EXPECT_EQ(bad("cmd.run('FROBNICATE')"), "kova.cmd.CommandError: unknown command: FROBNICATE");
    EXPECT_EQ(show("(cmd.feed('LINE', '1,1')[-1], cmd.is_waiting(), cmd.prompt())"),
              "('Specify first point: 1,1', True, 'Specify next point or [Close/Undo]:')");
    EXPECT_EQ(bad("cmd.run('CIRCLE')"),
              "kova.cmd.CommandError: another command waits for input: Specify next point or [Close/Undo]:");
    good("cmd.cancel()");
    EXPECT_EQ(show("('LINE' in cmd.names(), cmd.aliases()['L'])"), "(True, 'LINE')");
}

TEST_F(PythonTest, CommandsWrittenInPython) {
    good(
        "@cmd.command('PYGRID', aliases=['PYG'])\ndef grid(count='2'):\n    print('drawing', count)\n"
        "    for i in range(int(count)): ms.add(Line((i, 0), (i, 10)))\n    cmd.run('CIRCLE', (0, 0), 5)");
    EXPECT_THAT(session.feed("PYG 3"), ::testing::Contains("drawing 3"));
    EXPECT_EQ(model().size(), 4u);
    EXPECT_EQ(show("(doc.undo(), doc.undo())"), "('CIRCLE', 'PYGRID')");
    EXPECT_THAT(session.feed("PYGRID 3 4"), ::testing::Contains(HasSubstr("TypeError: grid() takes from 0 to 1")));
    EXPECT_EQ(bad("@cmd.command('LINE')\ndef f(): pass"), "ValueError: LINE is a command or an alias already");
    good("@cmd.command('PYGRID')\ndef grid(): print('anew')");
    EXPECT_THAT(session.feed("PYGRID"), ::testing::Contains("anew"));
    // A command that runs itself ends.
    good("@cmd.command\ndef pyloop(): cmd.run('PYLOOP')");
    EXPECT_THAT(session.feed("PYLOOP"),
                ::testing::Contains(HasSubstr("Python and commands call each other too deeply")));
    EXPECT_EQ(show("len(ms)"), "0");
}

// A generator asks wherever it yields, and waits for the line that is fed next.
TEST_F(PythonTest, CommandsThatAsk) {
    good(
        "from kova.cmd import ask\nended = []\n@cmd.command('PYASK')\ndef pyask():\n    try:\n"
        "        at = yield ask.point('Center:')\n        if at is None: return\n"
        "        size = yield ask.distance('Radius or [Unit]:', 'Unit', base=at)\n"
        "        ms.add(Circle(at, 1 if size == 'UNIT' else size))\n        many = yield ask.integer('Copies:', "
        "minimum=1)\n"
        "        for i in range(many): ms.add(Circle(at + (10 * (i + 1), 0), 1))\n"
        "        picked = yield ask.selection()\n        print('picked', len(picked), picked[0].kind)\n"
        "    finally: ended.append(1)");
    session.feed("PYASK");
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(session.currentPrompt(), "Center:");
    session.feed("5,5");
    EXPECT_EQ(session.currentPrompt(), "Radius or [Unit]:");
    session.feed("@3,4");
    EXPECT_EQ(show("ms[-1].radius"), "5.0");
    session.feed("0");
    EXPECT_EQ(session.currentPrompt(), "Copies:") << "too small: asked again";
    session.feed("2");
    EXPECT_EQ(model().size(), 3u);
    session.feed("ALL");
    EXPECT_THAT(session.feed(""), ::testing::Contains("picked 3 Circle"));
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(show("(doc.undo(), doc.undo(), len(ms), len(ended))"), "('PYASK', 'PYASK', 0, 1)");
    // Words on its line answer; Escape ends the generator where it stands.
    session.feed("PYASK 1,1 U");
    EXPECT_EQ(show("ms[-1].radius"), "1.0");
    session.cancel();
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(show("len(ended)"), "2");
    // From other code: answers are fed.
    good("cmd.run('PYASK', (0, 0), 2, 1, 'ALL', '')");
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(model().size(), 3u);
    // What goes wrong ends the command with a message.
    good(
        "@cmd.command('PYBAD')\ndef pybad():\n    word = yield ask.text('Word:')\n    if word == 'raise': raise "
        "ValueError('no')\n    if word == 'five': yield 5\n    if word == 'new': doc.new()\n    if word == 'run': "
        "cmd.run('LINE')\n    if word == 'cancel': cmd.cancel()\n    if word == 'stop': raise SystemExit(3)\n"
        "    with doc.transaction('T'):\n        ms.add(Line((0, 0), (1, 1)))\n        yield ask.point('P:')");
    const std::pair<const char*, const char*> cases[] = {
        {"raise", "ValueError: no"},
        {"five", "TypeError: a command yields questions of kova.cmd.ask, not int"},
        {"new", "RuntimeError: a new drawing is not possible in a command that asks"},
        {"run", "another command waits for input"},
        {"cancel", "RuntimeError: cancelling a command is not possible in a command that asks"},
        {"stop", "SystemExit: 3"},
        {"trans", "RuntimeError: a command cannot ask inside a transaction"}};
    for (const auto& [word, message] : cases) {
        session.feed("PYBAD");
        EXPECT_THAT(session.feed(word), ::testing::Contains(HasSubstr(message))) << word;
        EXPECT_FALSE(session.isWaiting()) << word;
    }
    EXPECT_EQ(model().size(), 3u) << "the transaction was rolled back";
    // A new drawing ends the command, as any other one.
    const std::string ended = show("len(ended)");
    session.feed("PYASK");
    session.newDrawing();
    EXPECT_FALSE(session.isWaiting());
    session.feed("1,1");
    EXPECT_EQ(show("len(ms)"), "0");
    EXPECT_EQ(show("len(ended)"), std::to_string(std::stoi(ended) + 1));
}

}  // namespace
}  // namespace kova::script::python
