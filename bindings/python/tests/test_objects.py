"""The typed objects: properties, dates, series, and how they end."""

import gc
import math
import os
import resource
import threading
import unittest
from array import array
from datetime import datetime, time, timedelta, timezone
from typing import Any, List

from hy_wristlog import (
    EMPTY_NUMBER,
    ComponentError,
    HyWristlogError,
    Main,
    Pendrel,
    Subject,
    VardenLogger,
    dates,
    enmPDLoggingMode,
    enmVardenLoggingMode,
)
from hy_wristlog import _component as component
from hy_wristlog._sinks import _living, listen
from support import BenchCase, can_unload, comes_true

UTC = timezone.utc


class Dates(unittest.TestCase):
    def test_day_counts(self) -> None:
        for value, expected in (
            (0.0, None),
            (-1.0, None),
            (-1.25, datetime(1899, 12, 29, 6)),
            (46083.5 + 1 / 86400, datetime(2026, 3, 2, 12, 0, 1)),
            (46083.999999, datetime(2026, 3, 3)),
            (-657434.0, datetime(100, 1, 1)),
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
                (varden, "StartTimeGMT", datetime(2026, 3, 8, 6, 59, 59, tzinfo=UTC)),
                (varden, "EndTimeGMT", None),
                (varden, "SubjectDOB", datetime(1850, 2, 3, 4, 5, 6)),
                (varden, "ScoreMax", 255),
                (pendrel, "AcquisitionMode", enmPDLoggingMode.PD_Mode_ActivityAndSteps),
                (pendrel, "StartTime", time(23, 59, 59)),
                (pendrel, "StartTime", None),
            ):
                setattr(one, name, value)
                got = getattr(one, name)
                self.assertEqual(got, value, name)
                self.assertIs(type(got), type(value), name)
            varden.StartTimeGMT = datetime(2026, 3, 8, 1, tzinfo=timezone(timedelta(hours=-5)))
            self.assertEqual(varden.StartTimeGMT, datetime(2026, 3, 8, 6, tzinfo=UTC))
            subject.DOB = None
            self.assertEqual((subject.DOB, subject.Age), (None, "0"))

    def test_what_does_not_fit_is_refused(self) -> None:
        with VardenLogger() as varden, Pendrel() as pendrel:
            for one, name, value, kind in (
                (varden, "EpochLength", 32768, ValueError),
                (varden, "EpochLength", 60.0, TypeError),
                (varden, "AcquisitionMode", 10, ValueError),
                (varden, "SubjectIdentity", b"x", TypeError),
                (varden, "SubjectHeight", 1e39, ValueError),
                (varden, "StartTimeGMT", datetime(2026, 1, 1), ValueError),
                (varden, "SerialNumber", "V1", AttributeError),
                (pendrel, "ActivityArray", array("f"), TypeError),
                (pendrel, "MarkerArray", [1], TypeError),
            ):
                with self.subTest(name=name, value=value):
                    with self.assertRaises(kind) as caught:
                        setattr(one, name, value)
                    self.assertIs(type(caught.exception), kind)
                    self.assertIn(name, str(caught.exception))

    def test_numbers_outside_the_enumeration_and_failures(self) -> None:
        with VardenLogger() as varden:
            varden._dispatch.put("DeviceType", 99)
            self.assertEqual(varden.DeviceType, 99)
            with self.assertRaisesRegex(HyWristlogError, "11502.*BatteryPercent") as caught:
                varden.BatteryPercent
            self.assertEqual(caught.exception.number, 11502)
            self.assertEqual(caught.exception.name, "WrongDeviceType")
            self.assertEqual(caught.exception.meaning, "This type of device is not supported.")

    def test_unknown_names_are_refused(self) -> None:
        for one, name, right in (
            (Subject(), "identity", "Identity"),
            (VardenLogger(), "epoch_length", "EpochLength"),
            (Main(), "on_Progress", "on_progress"),
            (self.bench, "modle", "model"),
        ):
            with self.assertRaisesRegex(AttributeError, f"no attribute '{name}'. Did you mean '{right}'"):
                setattr(one, name, None)
        with self.assertRaisesRegex(AttributeError, "no attribute 'xyz'$"):
            Main().xyz = 1  # type: ignore[attr-defined]
        pendrel = Pendrel()
        pendrel.SerialNumber = "1234567"
        self.assertEqual(repr(pendrel), "<hy_wristlog.Pendrel 1234567>")

    def test_text_is_utf_16(self) -> None:
        with Subject() as subject:
            for words in ("", "a\0b", "Zoë €", "😀", "\ud800x", "x" * 70000):
                subject.Identity = words
                self.assertEqual(subject.Identity, words.replace("\ud800", "\ufffd"))


class Series(BenchCase):
    def test_series_come_back(self) -> None:
        with Pendrel() as pendrel:
            for counts in ([], [0], [1, EMPTY_NUMBER, -1, 2**31 - 1], [EMPTY_NUMBER] * 3):
                pendrel.ActivityArray = array("i", counts)
                self.assertEqual(pendrel.ActivityArray, array("i", counts))
            for marks in ([], [True], [None, False, True], [None] * 9 + [True], [False] * 100):
                pendrel.MarkerArray = marks
                self.assertEqual(pendrel.MarkerArray, marks)

    def test_reading_leaks_nothing(self) -> None:
        with Pendrel() as pendrel:
            counts = array("i", range(500_000))
            pendrel.ActivityArray, pendrel.SubjectIdentity = counts, "x" * 1_000_000

            def read(times: int) -> int:
                for _ in range(times):
                    assert pendrel.ActivityArray == counts and len(pendrel.SubjectIdentity) == 1_000_000
                return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

            first = read(5)
            # A leak of the 12 MB of variants, or of the 2 MB of text, would show twenty times.
            if "libasan" not in os.environ.get("LD_PRELOAD", ""):  # which keeps what is freed
                self.assertLess(read(20) - first, 30_000, "kilobytes")


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

    def test_sinks_live_as_long_as_their_source(self) -> None:
        class Hearer:
            def hear(self, *told: Any) -> None: ...

        before = len(_living)
        for make, events in (
            (Main, component.DIID_VARDEN_LOGGER_EVENTS),
            (Main, component.DIID_HOST_EVENTS),
            (VardenLogger, component.DIID_VARDEN_LOGGER_EVENTS),
            (Pendrel, component.DIID_PENDREL_EVENTS),
        ):
            with make() as source:
                connection, other = (listen(source._dispatch, events, Hearer()) for _ in range(2))
                self.assertNotIn(0, {connection.cookie, other.cookie})
                self.assertEqual(len(_living), before + 2)
                connection.disconnect()
                self.assertEqual(len(_living), before + 1)
                other.close()
            self.assertEqual(len(_living), before)
        with Pendrel() as source, self.assertRaises(ComponentError):
            listen(source._dispatch, component.DIID_HOST_EVENTS, Hearer())

        left: List[VardenLogger] = []

        def leave() -> None:
            left.append(VardenLogger())
            listen(left[0]._dispatch, component.DIID_VARDEN_LOGGER_EVENTS, Hearer()).close()

        thread = threading.Thread(target=leave)  # which leaves the logger to this one
        thread.start()
        thread.join()
        self.assertTrue(comes_true(lambda: len(_living) == before))
        with self.assertRaises(ComponentError) as caught:
            left[0].SerialNumber
        self.assertEqual(caught.exception.result, component.RPC_E_WRONG_THREAD)
        left[0].close()


if __name__ == "__main__":
    unittest.main()
