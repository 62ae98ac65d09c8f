"""Runs a user's code: catches what it prints and everything it raises."""

import builtins
import io
import linecache
import os
import sys
import traceback
import types

import _kova

_OWN = "<kova/"
_MOST_OUTPUT = 16 << 20
_main = types.ModuleType("__main__")
_loaded = {}
_cells = 0


class _Stream:
    """A text stream that hands over what is written."""

    encoding = "utf-8"
    errors = "replace"
    closed = False

    def writable(self):
        return True

    def readable(self):
        return False

    def isatty(self):
        return False

    def flush(self):
        pass

    def writelines(self, lines):
        for line in lines:
            self.write(line)


class _Collected(_Stream):
    """Keeps what is written, up to a limit."""

    def __init__(self):
        self.parts = []
        self.size = 0

    def write(self, text):
        if not isinstance(text, str):
            raise TypeError(f"write() argument must be str, not {type(text).__name__}")
        if self.size <= _MOST_OUTPUT:
            self.parts.append(text[: max(0, _MOST_OUTPUT - self.size)])
            if self.size + len(text) > _MOST_OUTPUT:
                self.parts.append("\n... (the rest of the output is left out)\n")
        self.size += len(text)
        return len(text)

    def text(self):
        return _clean("".join(self.parts))


class _Transcript(_Stream):
    """Gives whole lines to the transcript."""

    def __init__(self):
        self.rest = ""

    def write(self, text):
        if not isinstance(text, str):
            raise TypeError(f"write() argument must be str, not {type(text).__name__}")
        *lines, self.rest = (self.rest + text).split("\n")
        for line in lines:
            _kova.message(_clean(line))
        return len(text)

    def finish(self):
        if self.rest:
            _kova.message(_clean(self.rest))
        self.rest = ""


def _clean(text):
    return text.encode("utf-8", "replace").decode("utf-8")


def _error_text(error):
    """The traceback without the program's own frames."""
    try:
        text = traceback.TracebackException(type(error), error, error.__traceback__, compact=True)
        _drop_own_frames(text, set())
        if not text.stack:
            text.stack = None
        return _clean("".join(text.format())).rstrip("\n")
    except RecursionError:
        return f"{type(error).__name__}: {error}"


def _drop_own_frames(text, seen):
    if text is None or id(text) in seen:
        return
    seen.add(id(text))
    if text.stack is not None:
        text.stack = traceback.StackSummary.from_list(
            [frame for frame in text.stack if not frame.filename.startswith(_OWN)])
    _drop_own_frames(text.__cause__, seen)
    _drop_own_frames(text.__context__, seen)
    for inner in getattr(text, "exceptions", None) or ():
        _drop_own_frames(inner, seen)


def _guarded(stream, work):
    """Runs `work` with its output going to the stream. The error's text, or None."""
    before = sys.stdout, sys.stderr
    sys.stdout = sys.stderr = stream
    sys.stdin = io.StringIO()
    try:
        work()
        return None
    except BaseException as error:  # SystemExit and KeyboardInterrupt must not end the program either
        return _error_text(error)
    finally:
        sys.stdout, sys.stderr = before


def _namespace():
    if "kova" not in _main.__dict__:
        import kova

        _main.__dict__.update(__builtins__=builtins, kova=kova)
    sys.modules["__main__"] = _main
    return _main.__dict__


def run_code(code):
    global _cells
    _cells += 1
    name = f"<python {_cells}>"
    linecache.cache[name] = (len(code), None, code.splitlines(True), name)
    linecache.cache.pop(f"<python {_cells - 50}>", None)
    stream = _Collected()
    error = _guarded(stream, lambda: exec(compile(code, name, "exec"), _namespace()))
    return stream.text(), error


def _read(path):
    import tokenize

    with tokenize.open(path) as file:
        return file.read()


def _for_command(work):
    stream = _Transcript()
    error = _guarded(stream, work)
    stream.finish()
    if error is not None:
        for line in error.split("\n"):
            _kova.message(line)
    return error is None


def _source(path):
    """The text of a file; a name without .py is tried with it, too."""
    for candidate in (path, path + ".py"):
        if os.path.isfile(candidate):
            try:
                return candidate, _read(candidate)
            except (OSError, SyntaxError, UnicodeError):
                break
    _kova.message("Cannot read " + path)
    return None, None


def run_file(path):
    """PYSCRIPT: runs a file as a program of its own."""
    file, text = _source(path)
    if text is None:
        return

    def work():
        import kova

        module = types.ModuleType("__main__")
        module.__dict__.update(__builtins__=builtins, __file__=file, kova=kova)
        sys.modules["__main__"] = module
        folder = os.path.dirname(os.path.abspath(file))
        arguments, path_before = sys.argv if hasattr(sys, "argv") else [""], list(sys.path)
        sys.argv = [file]
        sys.path.insert(0, folder)
        try:
            exec(compile(text, file, "exec"), module.__dict__)
        except SystemExit as end:
            if end.code not in (None, 0):
                raise
        finally:
            sys.argv, sys.path[:] = arguments, path_before

    _for_command(work)


def load_file(path):
    """PYLOAD: runs a file whose definitions stay. True when it went well."""
    import kova

    file, text = _source(path)
    if text is None:
        return False
    file = os.path.abspath(file)
    module = types.ModuleType(os.path.splitext(os.path.basename(file))[0])
    module.__dict__.update(__builtins__=builtins, __file__=file, kova=kova)
    _loaded[file] = module
    linecache.checkcache(file)
    good = _for_command(lambda: exec(compile(text, file, "exec"), module.__dict__))
    if good:
        _kova.message("Loaded: " + path)
    return good


def reload_files():
    """PYRELOAD."""
    if not _loaded:
        _kova.message("No Python files are loaded.")
        return
    for file in list(_loaded):
        load_file(file)


def run_command(name, arguments):
    """A command written in Python."""
    from kova import cmd

    function = cmd._functions.get(name)
    if function is None:
        _kova.message(name + " is not defined any more.")
        return
    _for_command(lambda: function(*arguments))


_dialogues = {}
_whole = set()  # those that wait for a whole number


def _advance(token, step):
    """Runs a command's generator up to its next question; gives that, or None at the end."""
    from kova import cmd

    asked = []

    def work():
        generator = _dialogues[token]
        try:
            question = step(generator)
            if _kova.in_transaction():
                question = generator.throw(RuntimeError("a command cannot ask inside a transaction"))
        except StopIteration:
            return
        if not isinstance(question, cmd.Question):
            raise TypeError(f"a command yields questions of kova.cmd.ask, not {type(question).__name__}")
        if question.kind == "integer":
            _whole.add(token)
        asked.append((question.kind, question.prompt, question.keywords, question.base, question.minimum,
                      question.maximum))

    if _for_command(work) and asked:
        return asked[0]
    end_dialogue(token)
    return None


def begin_dialogue(token, name):
    """Starts a command that asks."""
    from kova import cmd

    function = cmd._functions.get(name)
    if function is None:
        _kova.message(name + " is not defined any more.")
        return None

    def start(generator):
        return next(generator)

    def make():
        _dialogues[token] = function()

    if not _for_command(make):
        return None
    return _advance(token, start)


def answer_dialogue(token, answer):
    """Goes on with the answer to the last question."""
    if token not in _dialogues:
        return None
    if isinstance(answer, tuple):
        from kova.geom import Vector2

        answer = Vector2(*answer)
    if token in _whole:
        _whole.discard(token)
        if isinstance(answer, float):
            answer = int(answer)
    return _advance(token, lambda generator: generator.send(answer))


def end_dialogue(token):
    """Ends a command that asks, where it stands."""
    generator = _dialogues.pop(token, None)
    _whole.discard(token)
    if generator is not None:
        _for_command(generator.close)
