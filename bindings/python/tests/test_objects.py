"""The typed objects: properties, dates, series, and how they end."""

import gc
import math
import os
import resource
import unittest
from array import array
from datetime import datetime, time, timedelta, timezone
from typing import Any

from hy_wristlog import (
    EMPTY_NUMBER,
    ComponentError,
    Main,
    Pendrel,
    Subject,
    VardenLogger,
    dates,
    enmDeviceType,
    enmPDLoggingMode,
    enmVardenLoggingMode,
)
from hy_wristlog._values import Variant, numbers, truths
from support import BenchCase, can_unload

UTC = timezone.utc


class Dates(unittest.TestCase):
    def test_day_counts(self) -> None:
        for value, expected in (
            (0.0, None),
            (-1.0, None),
            (1.0, datetime(1899, 12, 31)),
            (-1.25, datetime(1899, 12, 29, 6)),
            (-2.0, datetime(1899, 12, 28)),
            (25569.0, datetime(1970, 1, 1)),
            (46083.5 + 1 / 86400, datetime(2026, 3, 2, 12, 0, 1)),
            (46083.999999, datetime(2026, 3, 3)),
            (-657434.0, datetime(100, 1, 1)),
            (2958465.0, datetime(9999, 12, 31)),
        ):
            self.assertEqual(dates.from_date(value, utc=False), expected, value)
            if expected is not None and value != 46083.999999:
                self.assertAlmostEqual(dates.to_date(expected), value, 9)
        for value in (math.nan, math.inf, 3e6, -1e9, 1e300):
            with self.assertRaises(ValueError):
                dates.from_date(value, utc=True)

    def test_the_library_agrees(self) -> None:
        with Main() as main:
            for seconds in (-(2**31), -1, 1, 86399, 951782400, 2**31 - 1):
                moment = datetime(1970, 1, 1) + timedelta(seconds=seconds)
                self.assertEqual(main.LoggerSecondsToDate(seconds), moment)
                self.assertEqual(main.DateToLoggerSeconds(moment), seconds)
                self.assertEqual(dates.to_logger_seconds(moment), seconds)
            self.assertEqual(main.DateToLoggerSeconds(datetime(2100, 1, 1)), 0)
            east = timezone(timedelta(hours=2))
            self.assertEqual(main.DateToLoggerSeconds(datetime(1970, 1, 2, tzinfo=east)), 86400)


class Properties(BenchCase):
    def test_values_come_back(self) -> None:
        with VardenLogger() as varden, Pendrel() as pendrel, Subject() as subject:
            for one, name, value in (
                (varden, "EpochLength", -32768),
                (varden, "AcquisitionMode", enmVardenLoggingMode.VardenMode_Off),
                (varden, "DeviceType", enmDeviceType.KR_TOLKA),
                (varden, "StartTimeGMT", datetime(2026, 3, 8, 6, 59, 59, tzinfo=UTC)),
                (varden, "EndTimeGMT", None),
                (varden, "SubjectDOB", datetime(1850, 2, 3, 4, 5, 6)),
                (varden, "SubjectHeight", 1.5),
                (varden, "AutoDSTadjust", True),
                (varden, "TZdaylightAbbrev", "EDT"),
                (varden, "ScoreMax", 255),
                (pendrel, "AcquisitionMode", enmPDLoggingMode.PD_Mode_ActivityAndSteps),
                (pendrel, "StartTime", time(23, 59, 59)),
                (pendrel, "StartTime", time(0)),
                (pendrel, "StartTime", None),
                (pendrel, "StartDate", None),
                (pendrel, "BatteryDate", datetime(2026, 1, 2)),
                (pendrel, "GMToffset", -300),
                (subject, "Weight", -0.5),
                (subject, "DOB", datetime(1990, 6, 15)),
            ):
                setattr(one, name, value)
                got = getattr(one, name)
                self.assertEqual(got, value, name)
                self.assertIs(type(got), type(value), name)
            varden.StartTimeGMT = datetime(2026, 3, 8, 1, tzinfo=timezone(timedelta(hours=-5)))
            self.assertEqual(varden.StartTimeGMT, datetime(2026, 3, 8, 6, tzinfo=UTC))
            subject.Gender = "weiblich"
            self.assertEqual(subject.Gender, "W")
            subject.DOB = None
            self.assertEqual((subject.DOB, subject.Age), (None, "0"))

    def test_what_does_not_fit_is_refused(self) -> None:
        with VardenLogger() as varden, Pendrel() as pendrel, Subject() as subject:
            for one, name, value, kind in (
                (varden, "EpochLength", 32768, ValueError),
                (varden, "EpochLength", 2**80, ValueError),
                (varden, "EpochLength", "60", TypeError),
                (varden, "EpochLength", 60.0, TypeError),
                (varden, "EpochLength", True, TypeError),
                (varden, "EpochLength", None, TypeError),
                (varden, "ScoreMax", 256, ValueError),
                (varden, "ScoreMax", -1, ValueError),
                (varden, "AcquisitionMode", 10, ValueError),
                (varden, "AutoDSTadjust", 1, TypeError),
                (varden, "SubjectIdentity", b"x", TypeError),
                (varden, "SubjectHeight", "170", TypeError),
                (varden, "SubjectHeight", 1e39, ValueError),
                (varden, "StartTimeGMT", datetime(2026, 1, 1), ValueError),
                (varden, "StartTimeGMT", 46083.5, TypeError),
                (varden, "StartTimeGMT", datetime(1, 1, 1, tzinfo=timezone(timedelta(hours=5))), ValueError),
                (varden, "SubjectDOB", datetime(2026, 1, 1, tzinfo=UTC), ValueError),
                (varden, "SerialNumber", "V1", AttributeError),
                (varden, "ActivityArray", array("i"), AttributeError),
                (pendrel, "ActivityArray", array("f"), TypeError),
                (pendrel, "ActivityArray", [1], TypeError),
                (pendrel, "MarkerArray", [1], TypeError),
                (pendrel, "MarkerArray", array("i"), TypeError),
                (pendrel, "StartTime", datetime(2026, 1, 1), TypeError),
                (subject, "Age", "3", AttributeError),
            ):
                with self.subTest(name=name, value=value):
                    with self.assertRaises(kind) as caught:
                        setattr(one, name, value)
                    self.assertIs(type(caught.exception), kind)
                    self.assertIn(name, str(caught.exception))

    def test_a_number_outside_its_enumeration_is_a_number(self) -> None:
        with VardenLogger() as varden:
            varden._dispatch.put("DeviceType", 99)
            self.assertEqual(varden.DeviceType, 99)


class Series(BenchCase):
    def test_series_come_back(self) -> None:
        with Pendrel() as pendrel, VardenLogger() as varden:
            for counts in ([], [0], [1, EMPTY_NUMBER, -1, 2**31 - 1], list(range(1000)), [EMPTY_NUMBER] * 3):
                pendrel.ActivityArray = array("i", counts)
                self.assertEqual(pendrel.ActivityArray, array("i", counts))
            for marks in ([], [True], [None, False, True], [None] * 9 + [True], [False] * 100):
                pendrel.MarkerArray = marks
                self.assertEqual(pendrel.MarkerArray, marks)
            for name in ("ActivityArray", "LightArray", "RedLightArray"):
                self.assertEqual(len(getattr(varden, name)), 0)
            self.assertEqual(varden.WristStatusArray, [])

    def test_real_series(self) -> None:
        # No property takes one, so the elements are laid out here as the component lays them out.
        import ctypes
        from hy_wristlog._values import Array, ArrayBound

        elements = (Variant * 3)()
        elements[0].vt, elements[0].fltVal = 4, 1.5
        elements[2].vt, elements[2].fltVal = 4, -1.0
        bound = (ArrayBound * 1)(ArrayBound(3, 0))
        laid = Array(1, 0x800, ctypes.sizeof(Variant), 0, ctypes.addressof(elements), bound)
        value = Variant()
        value.vt, value.pointer = 0x2000 | 12, ctypes.addressof(laid)
        series = numbers(value, "f")
        self.assertEqual((series[0], series[2], math.isnan(series[1])), (1.5, -1.0, True))
        with self.assertRaises(ValueError):
            numbers(value, "i")
        with self.assertRaises(ValueError):
            truths(value)
        laid.rgsabound[0].lLbound = -1
        self.assertEqual(len(numbers(value, "f")), 0, "the sign for no values")
        for vt in (3, 0x2000 | 3):
            value.vt = vt
            with self.assertRaises(ValueError):
                numbers(value, "f")

    def test_nothing_is_lost_and_it_is_quick(self) -> None:
        with Pendrel() as pendrel:
            counts = array("i", range(500_000))
            pendrel.ActivityArray = counts
            pendrel.SubjectIdentity = "x" * 1_000_000

            def read(times: int) -> int:
                for _ in range(times):
                    assert pendrel.ActivityArray == counts
                    assert len(pendrel.SubjectIdentity) == 1_000_000
                return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

            first = read(5)
            # A leak of the 12 MB of variants, or of the 2 MB of text, would show twenty times.
            growth = read(20) - first
            if "libasan" not in os.environ.get("LD_PRELOAD", ""):  # which keeps what is freed
                self.assertLess(growth, 30_000, "kilobytes")


class Lives(unittest.TestCase):
    def test_objects_end(self) -> None:
        self.assertTrue(can_unload())
        with Main() as main:
            self.assertFalse(can_unload())
            self.assertFalse(main.closed)
        self.assertTrue(can_unload())
        self.assertTrue(main.closed)
        main.close()
        for use in (lambda: main.Version, lambda: main.GetStatus(0), main.AbortComms):
            with self.assertRaises(ComponentError):
                use()
        self.assertIn("closed", repr(main))
        # With callbacks that know the object there is a circle, which the collector opens.
        kept: Any = Main()
        kept.on_wait = lambda: kept.AbortComms()
        del kept
        gc.collect()
        self.assertTrue(can_unload())


if __name__ == "__main__":
    unittest.main()
