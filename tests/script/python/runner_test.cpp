#include "python_fixture.hpp"

#include <QFile>
#include <QTemporaryDir>

namespace kova::script::python {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST_F(PythonTest, OutputAndErrors) {
    Runner::Result result = runner.run("print('a')\nprint('b', end='')");
    EXPECT_EQ(result.output, "a\nb");
    EXPECT_FALSE(result.failed);
    result = runner.run("import sys\nprint('before')\nprint('error', file=sys.stderr)\nx = {}\nx['missing']");
    EXPECT_EQ(result.output, "before\nerror\n");
    EXPECT_TRUE(result.failed);
    EXPECT_THAT(result.error, HasSubstr("line 5, in <module>\n    x['missing']\n"));
    EXPECT_THAT(result.error, HasSubstr("KeyError: 'missing'"));
    // Frames of the package do not show, those of the code do.
    result = runner.run("def f():\n    doc.open('/no/such.dxf')\nf()");
    EXPECT_THAT(result.error, HasSubstr("in f\n"));
    EXPECT_THAT(result.error, Not(HasSubstr("<kova/")));
    EXPECT_THAT(result.error, Not(HasSubstr("_harness")));
    EXPECT_THAT(bad("if True print(1)"), HasSubstr("SyntaxError"));
    EXPECT_EQ(show("kova.__name__"), "'kova'");
}

TEST_F(PythonTest, NothingEndsTheProgram) {
    EXPECT_EQ(bad("import sys; sys.exit()"), "SystemExit");
    EXPECT_EQ(bad("exit(5)"), "SystemExit: 5");
    EXPECT_EQ(bad("raise KeyboardInterrupt"), "KeyboardInterrupt");
    EXPECT_EQ(bad("def f(): f()\nf()"), "RecursionError: maximum recursion depth exceeded");
    EXPECT_THAT(bad("class E(Exception):\n    def __str__(self): return str(self)\nraise E()"), HasSubstr("E"));
    EXPECT_THAT(bad("x = " + std::string(5000, '(') + std::string(5000, ')')),
                HasSubstr("too many nested parentheses"));
    EXPECT_EQ(bad("input()"), "EOFError: EOF when reading a line");
    EXPECT_THAT(bad(std::string("x = 1\0", 6)), HasSubstr("null bytes"));
}

// Values whose conversion changes what is being worked on.
TEST_F(PythonTest, HostileValues) {
    good(
        "class Deleting:\n    def __float__(self):\n        l.delete(); return 1.0\n"
        "class Clearing:\n    def __float__(self):\n        points.clear(); return 1.0\n"
        "class Renewing:\n    def __float__(self):\n        doc.new(); return 1.0\n"
        "l = ms.add(Line((0, 0), (1, 1)))");
    EXPECT_THAT(bad("l.end_z = Deleting()"), HasSubstr("EntityGoneError"));
    good("points = [(Clearing(), 1), (2, 2), (3, 3)]\np = Polyline(vertices=points)\nassert len(p.vertices) == 3");
    good("points = [[Clearing(), 1], [2, 2]]\npoints[0].extend([0])\np = Polyline(vertices=points)");
    EXPECT_THAT(bad("l = ms.add(Line((0, 0), (1, 1)))\nl.end_z = Renewing()"), HasSubstr("EntityGoneError"));
    // Spaces that change while they are passed over, or while entities come in.
    good("ms.extend([Circle((i, 0), 1) for i in range(100)])\nfor e in ms:\n    ms.clear()\nassert len(ms) == 0");
    good(
        "def some():\n    for i in range(10):\n        if i == 5: doc.new()\n        yield Circle((i, 0), "
        "1)\nms.extend(some())");
    EXPECT_EQ(show("len(ms)"), "5");
    EXPECT_FALSE(document().isGroupOpen());
    EXPECT_THAT(bad("it = iter(d.layouts[0])\nd.layouts.add('Z')\nd.layouts.remove(d.layouts[0].name)\nnext(it)"),
                HasSubstr("KeyError"));
    EXPECT_THAT(bad("object.__new__(Line)"), HasSubstr("not safe"));
    EXPECT_THAT(bad("Line.start.__get__(5)"), HasSubstr("an entity is wanted"));
    EXPECT_THAT(bad("import pickle; pickle.dumps(Line())"), HasSubstr("cannot pickle"));
    good(
        "import copy, gc, weakref\nl = Line((1, 2), (3, 4))\nassert copy.deepcopy(l).end == l.end\nr = weakref.ref(l); "
        "del l\n"
        "assert r() is None\nclass Mine(Circle): pass\nm = Mine((0, 0), 4); m.note = m; del m; gc.collect()\n"
        "x = ms.add(Mine((0, 0), 4)); assert ms[-1] == x");
}

TEST_F(PythonTest, OutputIsBounded) {
    const Runner::Result result = runner.run("for i in range(40): print('x' * 1000000)");
    EXPECT_FALSE(result.failed);
    EXPECT_LT(result.output.size(), 18'000'000u);
    EXPECT_THAT(result.output, HasSubstr("... (the rest of the output is left out)"));
    EXPECT_EQ(runner.run("print('\\ud800')").output, "?\n");
}

TEST_F(PythonTest, TheDrawingIsOfTheMainThread) {
    EXPECT_EQ(good("import threading\ncaught = []\ndef work():\n    try: ms.add(Line((0, 0), (1, 1)))\n"
                   "    except RuntimeError as e: caught.append(str(e))\nt = threading.Thread(target=work); t.start(); "
                   "t.join()\n"
                   "print(caught)"),
              "[\"kova works on the program's main thread only\"]");
    EXPECT_TRUE(model().empty());
}

TEST_F(PythonTest, FilesOfThePyCommands) {
    const QTemporaryDir folder;
    const auto write = [&](const char* name, const char* text) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName().toStdString();
    };
    const std::string script =
        write("draw.py",
              "import sys, plate_sizes\nfrom kova.doc import current\nfrom kova.ent import Circle\n"
              "print('drawing', __name__, len(sys.argv))\n"
              "current().model_space.add(Circle((0, 0), plate_sizes.RADIUS))\n");
    write("plate_sizes.py", "RADIUS = 6\n");
    EXPECT_THAT(session.feed("PYSCRIPT " + script), ElementsAre("Command: PYSCRIPT " + script, "drawing __main__ 1"));
    EXPECT_EQ(show("ms[0].radius"), "6.0");
    EXPECT_EQ(document().history().undoLabel(), "PYSCRIPT");
    session.feed("PYSCRIPT");
    EXPECT_EQ(session.currentPrompt(), "Enter Python script file name:");
    EXPECT_THAT(session.feed("/no/such.py"), Contains("Cannot read /no/such.py"));
    EXPECT_FALSE(session.isWaiting());

    good("import kova._harness\nkova._harness._loaded.clear()");
    EXPECT_THAT(session.feed("PYRELOAD"), Contains("No Python files are loaded."));
    const std::string plugin =
        write("plugin.py", "import kova\n@kova.cmd.command\ndef pyhello(): print('hello one')\n");
    EXPECT_THAT(session.feed("PYLOAD " + plugin), Contains("Loaded: " + plugin));
    EXPECT_THAT(session.feed("PYHELLO"), Contains("hello one"));
    write("plugin.py", "import kova\n@kova.cmd.command\ndef pyhello(): print('hello two')\n");
    session.feed("PYRELOAD");
    EXPECT_THAT(session.feed("PYHELLO"), Contains("hello two"));
    const std::string broken = write("broken.py", "def f():\n    raise ValueError('broken')\nf()\n");
    const std::vector<std::string> lines = session.feed("PYSCRIPT " + broken);
    EXPECT_THAT(lines, Contains(HasSubstr("broken.py\", line 2, in f")));
    EXPECT_EQ(lines.back(), "ValueError: broken");
    EXPECT_THAT(session.feed("PYLOAD"), ::testing::SizeIs(1));
    EXPECT_EQ(session.currentPrompt(), "Enter name of Python file to load:");
    session.cancel();
}

}  // namespace
}  // namespace kova::script::python
