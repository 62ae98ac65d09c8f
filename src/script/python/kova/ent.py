"""The kinds of entities. Make one with keyword arguments, and add it to a space:

    current().model_space.add(Circle(center=(0, 0), radius=5, layer_name="Walls"))

Every described field of a kind is an attribute; lengths are drawing units, angles radians.
"""

from typing import List as _List

import _kova
from _kova import Entity, EntityGoneError

_KINDS = [value for value in vars(_kova).values() if isinstance(value, type) and value.__base__ is Entity]
globals().update((kind.__name__, kind) for kind in _KINDS)

__all__ = ["Entity", "EntityGoneError"] + [kind.__name__ for kind in _KINDS]


def kinds() -> _List[type]:
    """All kinds, in the order of their numbers."""
    return list(_KINDS)
