# Made by the program itself; see docs/python.md.
from collections.abc import Callable, Iterable, Iterator, Mapping, MutableMapping, Sequence
from typing import Any, Dict, List, Optional, TypeVar

class CommandError(RuntimeError): ...

def aliases() -> Dict[str, str]:
    """Short names: alias to command."""

def cancel() -> None:
    """Ends the command that waits for input, as Escape does."""

def command(name: str | Callable | None = None, *, title: Optional[str] = None, aliases: Sequence[str] = ()) -> Callable:
    """Makes a command of a function: `@command("GRID10")`, or `@command` for the function's own name.

    The words behind the command's name on its line are the function's arguments. What it prints goes to the transcript,
    and what it changes is one undo group. To define the command again replaces the function.

    A generator function asks: `center = yield ask.point("Center:")`. It has no arguments (the words behind its name are
    its first answers); what it changes between two questions is one undo group, and transactions end before a question."""

def feed(*lines: Any) -> List[str]:
    """Feeds lines as they would be typed and gives the transcript lines; a command may go on waiting."""

def is_waiting() -> bool:
    """True while a command waits for input."""

def names() -> List[str]:
    """The names of all commands, sorted."""

def prompt() -> str:
    """The prompt being shown; "Command:" when no command waits."""

def run(name: str, *inputs: Any) -> List[str]:
    """Runs a command with its answers ("" is Enter) and gives the transcript lines.

    Points may be tuples. A command that still waits at the end is cancelled. CommandError for an unknown name."""
