"""Command lines, as a user types them, and commands written in Python."""

import inspect
from typing import Any, Callable, Dict, List, Optional, Sequence

import _kova

__all__ = ["CommandError", "Question", "aliases", "ask", "cancel", "command", "feed", "is_waiting", "names", "prompt", "run"]

_functions: Dict[str, Callable] = {}


class CommandError(RuntimeError):
    """A command cannot be run."""


class Question:
    """What a command written in Python asks for; made by the functions of `ask`."""

    __slots__ = ("kind", "prompt", "keywords", "base", "minimum", "maximum")

    def __init__(self, kind: str, prompt: str, keywords: str = "", base: Any = None,
                 minimum: float = -1e300, maximum: float = 1e300) -> None:
        if not isinstance(prompt, str) or not isinstance(keywords, str):
            raise TypeError("prompt and keywords must be texts")
        self.kind, self.prompt, self.keywords = kind, prompt, keywords
        self.base = None if base is None else (float(base[0]), float(base[1]))
        self.minimum, self.maximum = float(minimum), float(maximum)


class ask:
    """Questions of a command that is a generator: `center = yield ask.point("Center:")`.

    The command then waits for the next line. Enter gives None; one of the keywords ("Yes No eXit": the capitals suffice as
    an answer) gives its word in upper case. What cannot be an answer is refused in a line and asked again.
    """

    @staticmethod
    def point(prompt: str, keywords: str = "", base: Any = None) -> Question:
        """A point, as a Vector2; typed relative to `base`, or to the command's last point."""
        return Question("point", prompt, keywords, base)

    @staticmethod
    def number(prompt: str, keywords: str = "", minimum: float = -1e300, maximum: float = 1e300) -> Question:
        """A number."""
        return Question("number", prompt, keywords, None, minimum, maximum)

    @staticmethod
    def integer(prompt: str, keywords: str = "", minimum: int = -2147483648, maximum: int = 2147483647) -> Question:
        """A whole number."""
        return Question("integer", prompt, keywords, None, minimum, maximum)

    @staticmethod
    def distance(prompt: str, keywords: str = "", base: Any = None, minimum: float = -1e300) -> Question:
        """A number, or a point whose distance from `base` counts; without a base two points."""
        return Question("distance", prompt, keywords, base, minimum)

    @staticmethod
    def angle(prompt: str, keywords: str = "", base: Any = None) -> Question:
        """An angle typed in the drawing's unit, or shown by a point; radians."""
        return Question("angle", prompt, keywords, base)

    @staticmethod
    def keyword(prompt: str, keywords: str) -> Question:
        """One of the keywords."""
        return Question("keyword", prompt, keywords)

    @staticmethod
    def text(prompt: str) -> Question:
        """The whole line."""
        return Question("text", prompt)

    @staticmethod
    def entity(prompt: str, keywords: str = "") -> Question:
        """One entity, by a point on it."""
        return Question("entity", prompt, keywords)

    @staticmethod
    def selection(prompt: str = "") -> Question:
        """Entities, as a list: what is selected already and what the user adds, up to Enter."""
        return Question("selection", prompt)


def _line(value: Any) -> str:
    """An input as it would be typed: texts as they are, numbers in full, points as x,y."""
    if isinstance(value, str):
        return value
    if isinstance(value, bool) or value is None:
        raise TypeError(f"{value!r} is no input of a command")
    if isinstance(value, (int, float)):
        return repr(value).removesuffix(".0")
    return ",".join(repr(float(part)).removesuffix(".0") for part in value)


def run(name: str, *inputs: Any) -> List[str]:
    """Runs a command with its answers ("" is Enter) and gives the transcript lines.

    Points may be tuples. A command that still waits at the end is cancelled. CommandError for an unknown name.
    """
    if not isinstance(name, str):
        raise TypeError("a command's name must be a text")
    word = name.split()[0].lstrip("_.-'").upper() if name.split() else ""
    if _kova.is_waiting():
        raise CommandError("another command waits for input: " + _kova.prompt())
    if word not in _kova.aliases() and word not in _kova.command_names() and not name.startswith("("):
        raise CommandError(f"unknown command: {name}")
    lines = _kova.feed([name] + [_line(value) for value in inputs])
    if _kova.is_waiting():
        _kova.cancel()
        lines.append("*Cancel*")
    return lines


def feed(*lines: Any) -> List[str]:
    """Feeds lines as they would be typed and gives the transcript lines; a command may go on waiting."""
    return _kova.feed([_line(line) for line in lines])


def cancel() -> None:
    """Ends the command that waits for input, as Escape does."""
    _kova.cancel()


def is_waiting() -> bool:
    """True while a command waits for input."""
    return _kova.is_waiting()


def prompt() -> str:
    """The prompt being shown; "Command:" when no command waits."""
    return _kova.prompt()


def names() -> List[str]:
    """The names of all commands, sorted."""
    return sorted(_kova.command_names())


def aliases() -> Dict[str, str]:
    """Short names: alias to command."""
    return _kova.aliases()


def command(name: "str | Callable | None" = None, *, title: Optional[str] = None,
            aliases: Sequence[str] = ()) -> Callable:
    """Makes a command of a function: `@command("GRID10")`, or `@command` for the function's own name.

    The words behind the command's name on its line are the function's arguments. What it prints goes to the transcript,
    and what it changes is one undo group. To define the command again replaces the function.

    A generator function asks: `center = yield ask.point("Center:")`. It has no arguments (the words behind its name are
    its first answers); what it changes between two questions is one undo group, and transactions end before a question.
    """
    if callable(name):
        return command()(name)

    def define(function: Callable) -> Callable:
        word = (name or function.__name__).upper()
        if not word or any(c.isspace() or c in "'\"()" for c in word):
            raise ValueError(f"{word!r} is no name for a command")
        _kova.define_command(word, title or word.title(), list(aliases), inspect.isgeneratorfunction(function))
        _functions[word] = function
        return function

    return define
