"""What the tests share: a bench for each test."""

import gc
import time
import unittest
from typing import Callable

from hy_wristlog import _library
from hy_wristlog.simulator import Bench

VIVID, KESTRIN2 = 0, 1
EVERY_FORMAT = {"DateFormat": 1, "TimeFormat": 3}


def comes_true(condition: Callable[[], bool]) -> bool:
    """What happens at the end of a thread happens a moment after its join."""
    deadline = time.monotonic() + 30
    while not condition() and time.monotonic() < deadline:
        time.sleep(0.001)
    return condition()


def can_unload() -> bool:
    gc.collect()
    return bool(_library.component().DllCanUnloadNow() == 0)


class BenchCase(unittest.TestCase):
    """Each test has a bench; at its end no object of the library may be left."""

    MODEL = "vivid"

    def setUp(self) -> None:
        self.bench = Bench(self.MODEL)
        self.addCleanup(self._end)

    def _end(self) -> None:
        self.bench.close()
        self.assertTrue(comes_true(can_unload), "an object or a reference is left")
