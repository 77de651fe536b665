"""The package has names and types of its own; here they are held against those of the library."""

import enum
import inspect
import pathlib
import re
import unittest
from typing import Any, Dict

import hy_wristlog
from hy_wristlog import Main, Pendrel, Subject, VardenLogger, enums
from hy_wristlog._component import METHOD, PROPERTYGET, PROPERTYPUT
from hy_wristlog._properties import Enumeration, Property
from support import BenchCase, members_of

HEADERS = pathlib.Path(__file__).resolve().parents[3] / "include" / "hy_wristlog"
GIVEN_AS_RESULT = {
    "Configure": {"BatteryLifeRemaining", "DeviceSerialNumber"},
    "GetStatus": {"SimpleStatus", "LongStatus", "KestrinData", "Subject", "BatteryLifeRemaining"},
    # Nothing reads or writes XMLfilePath.
    "Retrieve": {"KestrinData", "DecodeResult", "LowBatteryDetected", "XMLfilePath"},
}


def properties_of(kind: type) -> Dict[str, Property[Any]]:
    return {name: value for name, value in vars(kind).items() if isinstance(value, Property)}


class Names(BenchCase):
    def test_members_are_those_of_the_type_information(self) -> None:
        for kind in (Main, VardenLogger, Pendrel, Subject):
            with self.subTest(kind.__name__), kind() as made:
                members = members_of(made._dispatch)
                told = {name: member for name, member in members.items() if member.kinds != METHOD}
                own = properties_of(kind)
                self.assertEqual(list(own), list(told), "names in the order of the slots")
                for name, member in told.items():
                    self.assertEqual(bool(member.kinds & PROPERTYPUT), own[name].writable, name)
                    self.assertTrue(member.kinds & PROPERTYGET, name)
                    self.assertTrue(own[name].__doc__, name)
                for name in set(members) - set(told):
                    parameters = list(inspect.signature(getattr(kind, name)).parameters)[1:]
                    given = [n for n, _ in members[name].parameters if n not in GIVEN_AS_RESULT.get(name, ())]
                    self.assertEqual(parameters, given, name)

    def test_every_property_reads_as_its_type(self) -> None:
        kinds = {2: int, 3: int, 17: int, 4: float, 8: str, 11: bool}
        for kind in (Main, VardenLogger, Pendrel, Subject):
            with kind() as made:
                for name, member in members_of(made._dispatch).items():
                    if member.kinds == METHOD:
                        continue
                    try:
                        value = getattr(made, name)
                    except hy_wristlog.HyWristlogError as failure:
                        self.assertEqual((failure.number, kind), (11502, VardenLogger), name)
                        continue
                    expected = kinds.get(member.type)
                    if expected is not None:
                        self.assertIsInstance(value, expected, name)
                        self.assertEqual(isinstance(value, bool), member.type == 11, name)

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

    def test_properties_have_the_enumerations_of_the_tables(self) -> None:
        for kind, file in ((VardenLogger, "varden"), (Pendrel, "pendrel"), (Subject, "subject")):
            text = (HEADERS / f"{file}_properties.inc").read_text(encoding="utf-8")
            for name, declared in re.findall(r"^HY_\w+\((\w+), ([\w:]+)", text, re.M):
                own = properties_of(kind)[name]
                rows = own.rows.__name__ if isinstance(own, Enumeration) else None
                self.assertEqual(rows, declared if declared.startswith("enm") else None, name)


if __name__ == "__main__":
    unittest.main()
