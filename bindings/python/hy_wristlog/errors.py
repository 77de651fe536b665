"""What the package raises."""

from ._library import LibraryNotFoundError

__all__ = [
    "ComponentError",
    "HyWristlogError",
    "LibraryNotFoundError",
    "ProgramError",
    "ProgramNotFoundError",
    "RecordingError",
]


class HyWristlogError(Exception):
    """A failure of the library: its number, where it was first seen, and what it is in words.

    `docs/contract.md` lists the numbers.
    """

    def __init__(self, number: int, source: str, description: str) -> None:
        super().__init__(number, source, description)
        self.number = number
        self.source = source
        self.description = description

    def __str__(self) -> str:
        return f"{self.description} ({self.number}, {self.source})"

    @property
    def name(self) -> str:
        """The name of the number, such as OutOfRange; empty when the library has none for it."""
        from .main import Code

        return Code(self.number).name

    @property
    def meaning(self) -> str:
        """What the number means in general, and what to do about it."""
        from .main import Code

        return Code(self.number).meaning


class ComponentError(RuntimeError):
    """The component refused a call: it came from another thread, its object has ended, and the like."""

    def __init__(self, result: int, words: str) -> None:
        super().__init__(words)
        self.result = result
        """The call's result code, unsigned, as `component.h` writes it."""


class RecordingError(ValueError):
    """There is no recording, its files cannot be read, or its bytes are not those that its configuration tells of."""


class ProgramNotFoundError(OSError):
    """The program `wristlog` is not there, or cannot be run."""


class ProgramError(RuntimeError):
    """The program `wristlog` did not do what it was asked for, in its own words."""

    def __init__(self, status: int, words: str) -> None:
        super().__init__(words)
        self.status = status
        """Its exit status: 1 for a failure, 2 for wrong usage."""
