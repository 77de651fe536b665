"""Attributes that an object does not have are refused, and the right one is named."""

import difflib
from typing import Any, Dict


def _plain(name: str) -> str:
    return name.replace("_", "").lower()


class FixedAttributes:
    """Has the attributes that its class declares, and no others. Subclasses of other packages may have more."""

    def __setattr__(self, name: str, value: Any) -> None:
        kind = type(self)
        if not name.startswith("_") and not hasattr(kind, name) and kind.__module__.startswith(f"{__package__}."):
            raise AttributeError(f"{kind.__name__} has no attribute {name!r}{_nearest(kind, name)}")
        super().__setattr__(name, value)


def _nearest(kind: type, name: str) -> str:
    public: Dict[str, str] = {_plain(known): known for known in dir(kind) if not known.startswith("_")}
    near = difflib.get_close_matches(_plain(name), public, n=1)
    return f". Did you mean {public[near[0]]!r}?" if near else ""
