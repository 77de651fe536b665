"""The package as its users get it: the demo, the example, finding the library, installing, and ending."""

import importlib.util
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
from typing import Any, Dict

from hy_wristlog import _library

PACKAGE = pathlib.Path(__file__).resolve().parents[1]
CHECKOUT = PACKAGE.parents[1]


def run(*arguments: str, **variables: str) -> "subprocess.CompletedProcess[str]":
    """Runs Python in a process of its own, in an empty folder."""
    environment: Dict[str, Any] = {**os.environ, "PYTHONPATH": str(PACKAGE), **variables}
    with tempfile.TemporaryDirectory() as folder:
        return subprocess.run(
            [sys.executable, "-X", "faulthandler", "-W", "error", *arguments],
            cwd=folder,
            env={name: value for name, value in environment.items() if value},
            capture_output=True,
            encoding="utf-8",
            timeout=250,
        )


class Programs(unittest.TestCase):
    def test_demo(self) -> None:
        shown = run("-m", "hy_wristlog", "demo", "--days", "2")
        self.assertEqual((shown.returncode, shown.stderr), (0, ""))
        self.assertIn("Status: Collecting Data\n", shown.stdout)
        self.assertIn("The recording is sound.", shown.stdout)
        self.assertRegex(shown.stdout, r"(?m)^2026-03-0[234]  .*[▁▂▃▄▅▆▇█]{5}")

        told = run("-m", "hy_wristlog", "demo", "--json", "--model", "kestrin2", "--days", "1", LC_ALL="C")
        self.assertEqual((told.returncode, told.stderr), (0, ""))
        document = json.loads(told.stdout)
        self.assertEqual(document["decode_result_name"], "Decode_OK")
        self.assertEqual(document["samples"], len(document["activity"]))
        self.assertEqual(document["marker"].count(True), document["marker_count"])
        for wrong in (["nothing"], ["demo", "--days", "0"], ["demo", "--model", "pendrel13"], []):
            self.assertEqual(run("-m", "hy_wristlog", *wrong).returncode, 2, wrong)

    def test_example(self) -> None:
        shown = run(str(CHECKOUT / "examples" / "python_host.py"))
        self.assertEqual((shown.returncode, shown.stderr), (0, ""))
        self.assertRegex(shown.stdout, r"14\d\d epochs from 2026-03-02 14:0\d:00\+00:00 on, by Subject 17")
        self.assertIn("sending EOT", shown.stdout)


class Library(unittest.TestCase):
    def test_what_is_not_found_is_told(self) -> None:
        for named, words in (("/nowhere/x.so", "not there"), ("libc.so.6", "DllGetClassObject")):
            gone = run("-m", "hy_wristlog", "demo", HY_WRISTLOG_LIBRARY=named)
            self.assertEqual(gone.returncode, 1)
            self.assertIn("./dev build", gone.stderr)
            self.assertIn(words, gone.stderr)
            self.assertNotIn("Traceback", gone.stderr)
        self.assertEqual(run("-c", "import hy_wristlog", HY_WRISTLOG_LIBRARY="/nowhere").returncode, 0)

    @unittest.skipUnless(shutil.which("mypy"), "needs mypy")
    def test_types_are_sound(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            checked = subprocess.run(
                ["mypy", "--cache-dir", folder], cwd=PACKAGE, capture_output=True, encoding="utf-8",
                env={**os.environ, "LD_PRELOAD": ""},
            )
        self.assertEqual(checked.returncode, 0, checked.stdout)

    @unittest.skipUnless(importlib.util.find_spec("pip"), "needs pip")
    def test_pip_installs_it(self) -> None:
        library = _library.folder_of_library()
        with tempfile.TemporaryDirectory() as folder:
            checkout, target = pathlib.Path(folder, "checkout"), os.path.join(folder, "target")
            shutil.copytree(PACKAGE, checkout / "bindings" / "python")
            shutil.copytree(CHECKOUT / "include", checkout / "include")
            shutil.copy(CHECKOUT / "CMakeLists.txt", checkout)
            (checkout / "build").symlink_to(library)
            options = ["--no-build-isolation", "--no-deps", "--no-index", "--disable-pip-version-check", "-q"]
            options += ["--root-user-action=ignore", "--target", target]
            made = subprocess.run(
                [sys.executable, "-m", "pip", "install", *options, str(checkout / "bindings" / "python")],
                env={**os.environ, "LD_PRELOAD": "", "PYTHONPATH": ""},
                capture_output=True,
                encoding="utf-8",
            )
            self.assertEqual(made.returncode, 0, made.stderr)
            self.assertTrue(os.path.exists(os.path.join(target, "hy_wristlog", "py.typed")))
            for named in ("", str(library / "libhy_wristlog.so")):
                arguments = ("-m", "hy_wristlog", "demo", "--days", "0.1")
                shown = run(*arguments, PYTHONPATH=target, HY_WRISTLOG_LIBRARY=named)
                self.assertEqual((shown.returncode, shown.stderr), (0, ""))
                self.assertIn("sound", shown.stdout)


class Ends(unittest.TestCase):
    """However a program ends, it ends cleanly: objects with callbacks in all sorts of places."""

    PREPARED = """
import os, signal, sys, threading
from hy_wristlog import Main, Subject, VardenLogger
from hy_wristlog.simulator import Bench
bench = Bench()
bench.set_up(1, 30)
bench.wear(86400)
main = Main()
main.on_wait = lambda: main.AbortComms
main.GetStatus(0)
class Keeper:
    held = main.GetStatus(0)
    def __del__(self):
        try: self.held.logger.SerialNumber
        except Exception: pass
keeper = Keeper()
sys.modules["kept"] = keeper
"""

    def test_ends(self) -> None:
        for name, code, status in (
            ("in a callback", "main.on_wait = lambda: sys.exit(4)\nmain.Retrieve(0)", 4),
            (
                "threads have objects too",
                "def work():\n"
                "    with Bench('kestrin2'):\n"
                "        kept.append(Main()); kept[-1].on_wait = lambda: None; kept[-1].GetStatus(1)\n"
                "kept = []\n"
                "threads = [threading.Thread(target=work) for _ in range(3)]\n"
                "[t.start() for t in threads]; [t.join() for t in threads]",
                0,
            ),
            (
                "a daemon is at work",
                "def work():\n"
                "    started.set()\n"
                "    with Bench():\n"
                "        own = Main(); own.on_wait = lambda: None\n"
                "        while True: own.GetStatus(0)\n"
                "started = threading.Event()\n"
                "for _ in range(4): threading.Thread(target=work, daemon=True).start()\n"
                "started.wait()",
                0,
            ),
        ):
            with self.subTest(name):
                ended = run("-c", self.PREPARED + code)
                self.assertEqual((ended.returncode, ended.stderr), (status, ""))

    def test_an_interrupt_from_outside(self) -> None:
        program = self.PREPARED + (
            "def once():\n"
            "    main.on_wait = None\n"
            "    threading.Thread(target=lambda: os.kill(os.getpid(), signal.SIGINT)).start()\n"
            "main.on_wait = once\n"
            "signal.signal(signal.SIGINT, signal.default_int_handler)\n"
            "try:\n"
            "    for _ in range(100): main.Retrieve(0, IgnoreWarnings=True)\n"
            "except KeyboardInterrupt:\n"
            "    print('interrupted', main.GetStatus(0).code)\n"
        )
        ended = run("-c", program)
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, "interrupted 0\n", ""))


if __name__ == "__main__":
    unittest.main()
