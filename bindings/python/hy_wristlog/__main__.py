"""python3 -m hy_wristlog demo"""

import argparse
import sys
from typing import List, Optional

from . import demo
from .errors import ComponentError, HyWristlogError, LibraryNotFoundError
from .simulator import SimulatorError


def _days(text: str) -> float:
    days = float(text)
    if not 0 < days <= 30:
        raise argparse.ArgumentTypeError("from above 0 to 30")
    return days


def main(arguments: Optional[List[str]] = None) -> int:
    """0; 1 when something failed; 2 for wrong usage; 130 when interrupted."""
    parser = argparse.ArgumentParser(prog="python3 -m hy_wristlog", description="Wrist-worn activity loggers.")
    commands = parser.add_subparsers(dest="command", required=True, metavar="COMMAND")
    words = "configure, wear and retrieve a simulated logger"
    command = commands.add_parser("demo", help=words, description=words.capitalize() + ".")
    command.add_argument("--model", choices=sorted(demo.MODELS), default="vivid")
    command.add_argument("--days", type=_days, default=7.0, help="how long it is worn (default: 7)")
    command.add_argument("--json", action="store_true", help="one JSON document on standard output")
    options = parser.parse_args(arguments)
    if hasattr(sys.stdout, "reconfigure"):
        sys.stdout.reconfigure(encoding="utf-8")
    try:
        demo.run(options.model, options.days, options.json)
    except KeyboardInterrupt:
        return 130
    except (demo.DemoError, HyWristlogError, ComponentError, SimulatorError, LibraryNotFoundError) as why:
        print(why, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
