"""The package has names and types of its own; here they are held against the library and its headers."""

import enum
import inspect
import pathlib
import re
import unittest
from typing import Dict, List

import hy_wristlog
from hy_wristlog import Main, Pendrel, Subject, VardenLogger, enums
from hy_wristlog._properties import Enumeration, Property
from support import BenchCase

HEADERS = pathlib.Path(__file__).resolve().parents[3] / "include" / "hy_wristlog"
TABLES = {
    Main: "main_members",
    VardenLogger: "varden_properties",
    Pendrel: "pendrel_properties",
    Subject: "subject_properties",
}
KINDS = {"float": float, "std::string": str, "bool": bool}


def rows_of(kind: type) -> Dict[str, List[str]]:
    """The members of a class in the order of their numbers, with the words of their rows in the library's table."""
    text = (HEADERS / f"{TABLES[kind]}.inc").read_text(encoding="utf-8")
    rows = [re.findall(r"[\w:]+", row) for row in re.split(r"\n(?=HY_)", text.split("\n#undef")[0])[1:]]
    return {row[1]: row for row in rows}


class Names(BenchCase):
    def test_members_are_those_of_the_tables(self) -> None:
        for kind in TABLES:
            with self.subTest(kind.__name__), kind() as made:
                rows = rows_of(kind)
                methods = {name for name, row in rows.items() if row[0] in ("HY_METHOD", "HY_WORKFLOW")}
                own = {name: value for name, value in vars(kind).items() if isinstance(value, Property)}
                self.assertEqual(list(own), [name for name in rows if name not in methods])
                for number, (name, row) in enumerate(rows.items(), 1):
                    self.assertEqual(made._dispatch.number(name), number, name)
                    if name in methods:
                        given = [word for way, word in zip(row, row[1:]) if way in ("HY_IN", "HY_IN_OUT")]
                        self.assertEqual(list(inspect.signature(getattr(kind, name)).parameters)[1:], given, name)
                        continue
                    writable = row[0] != "HY_COMPUTED" and "GetOnly" not in row
                    self.assertEqual((own[name].writable, bool(own[name].__doc__)), (writable, True), name)
                    rows_used = own[name].rows.__name__ if isinstance(own[name], Enumeration) else None
                    self.assertEqual(rows_used, row[2] if row[2].startswith("enm") else None, name)

    def test_every_property_reads_as_its_type(self) -> None:
        for kind in (VardenLogger, Pendrel, Subject):
            with kind() as made:
                for name, row in rows_of(kind).items():
                    if row[0] == "HY_METHOD":
                        continue
                    try:
                        value = getattr(made, name)
                    except hy_wristlog.HyWristlogError as failure:
                        self.assertEqual((failure.number, kind), (11502, VardenLogger), name)
                        continue
                    expected = int if row[2].endswith("int_t") else KINDS.get(row[2])
                    if expected is not None:
                        self.assertIs(type(value), expected, name)

    def test_enumerations_are_those_of_the_header(self) -> None:
        text = (HEADERS / "enumerations.h").read_text(encoding="utf-8")
        declared = {
            name: {row: int(value) for row, value in re.findall(r"(\w+) = (-?\d+),", body)}
            for name, body in re.findall(r"enum (enm\w+) : std::int32_t \{(.*?)\};", text, re.S)
        }
        used = {name: declared[name] for name in declared if name != "enmButtonMap"}  # of no public member
        own = {
            name: {row: int(value) for row, value in kind.__members__.items()}
            for name, kind in vars(enums).items()
            if isinstance(kind, enum.EnumMeta) and issubclass(kind, enum.IntEnum) and kind is not enum.IntEnum
        }
        self.assertEqual(own, used)
        self.assertEqual(set(enums.__all__), set(used))
        self.assertLessEqual(set(enums.__all__), set(hy_wristlog.__all__))


if __name__ == "__main__":
    unittest.main()
