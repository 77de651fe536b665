"""Whole sessions with simulated loggers, through the component alone."""

import os
import signal
import threading
import unittest
from datetime import datetime, timedelta, timezone
from typing import Any, List, Tuple

from hy_wristlog import (
    HyWristlogError,
    Main,
    Subject,
    VardenLogger,
    dock_in_use,
    docks,
    enmDecodeResult,
    enmDeviceType,
    enmLoggerPointer,
    enmVardenLoggingMode,
    use_all_docks,
    use_dock,
)
from hy_wristlog.demo import demo_subject
from hy_wristlog.simulator import Bench, SimulatorError
from support import EVERY_FORMAT, KESTRIN2, VIVID, BenchCase

ABORTED = 10013


class Sessions(unittest.TestCase):
    def test_configure_wear_status_retrieve(self) -> None:
        light = enmVardenLoggingMode.VardenMode_ActivityAndStandardLight
        for model, pointer, kind, colours in (
            ("vivid", enmLoggerPointer.LggrPntr_KRVivid, enmDeviceType.KR_QUILLANDER, True),
            ("kestrin2", enmLoggerPointer.LggrPntr_KRII, enmDeviceType.KR_TOLKA, False),
        ):
            begins = datetime(2027, 1, 5, 12, tzinfo=timezone.utc)
            with self.subTest(model), Bench(model, begins=begins) as bench, Main() as main:
                told: List[str] = []
                waits: List[int] = []
                main.on_progress = told.append
                main.on_wait = lambda: waits.append(1)
                self.assertEqual(bench.now, begins)
                subject = Subject()
                subject.Identity, subject.Gender, subject.DOB = "Zoë", "f", datetime(1984, 5, 6)
                subject.Weight, subject.Height = 70.5, 168.0
                configured = main.Configure(pointer, light, 30, subject, "EST", **EVERY_FORMAT)
                self.assertEqual(configured.code, 0)
                self.assertGreater(configured.battery_life_remaining, 1)
                self.assertTrue(any("EOT" in text for text in told), told)
                self.assertGreater(len(waits), 100)

                bench.wear(timedelta(hours=6))
                status = main.GetStatus(pointer)
                self.assertEqual((status.code, status.simple_status), (0, "Collecting Data"))
                self.assertEqual(status.logger.SerialNumber, configured.device_serial_number)
                self.assertEqual(status.logger.DeviceType, kind)
                self.assertEqual(status.subject.Identity, "Zoë")

                own = Subject()
                bytes_told: List[Tuple[int, int]] = []
                main.on_download = lambda so_far, expected: bytes_told.append((so_far, expected))
                result = main.Retrieve(pointer, own)
                self.assertEqual(bytes_told[-1][1], result.logger.BytesUsed)
                self.assertGreaterEqual(bytes_told[-1][0], result.logger.BytesUsed)
                self.assertEqual((result.code, result.decode_result), (0, enmDecodeResult.Decode_OK))
                self.assertFalse(result.low_battery_detected)
                self.assertIs(result.subject, own)
                self.assertEqual((own.Identity, own.Gender, own.DOB), ("Zoë", "F", datetime(1984, 5, 6)))
                logger = result.logger
                self.assertEqual((logger.EpochLength, logger.AcquisitionMode), (30, light))
                self.assertLess(abs(logger.StartTimeGMT - begins), timedelta(minutes=5))
                self.assertAlmostEqual(logger.Samples, 6 * 120, delta=10)
                names = ("RedLightArray", "GreenLightArray", "BlueLightArray") if colours else ("LightArray",)
                lights = [getattr(logger, name) for name in names]
                series = [logger.ActivityArray, logger.MarkerArray, *lights]
                self.assertEqual({len(one) for one in series}, {logger.Samples})
                self.assertEqual(len(logger.WristStatusArray), logger.Samples if colours else 0)
                self.assertGreater(max(lights[0]), 1)
                self.assertEqual(logger.MarkerArray.count(True), logger.MarkerCount)

    def test_a_thread_chooses_its_dock(self) -> None:
        with Bench("kestrin2"), Main() as main:
            (dock,) = docks()
            self.assertEqual(dock, ("usb-1-1", ("COM33",), enmLoggerPointer.LggrPntr_KRII, 33))
            refused: List[int] = []

            def choose(name: str) -> None:
                try:
                    use_dock(name)
                except HyWristlogError as failure:
                    refused.append(failure.number)

            choose("usb-9")
            use_dock("com33", KESTRIN2)
            main.on_wait = lambda: choose("usb-1-1")
            self.assertEqual(main.GetStatus(KESTRIN2).simple_status, "Ready to Configure")
            self.assertEqual((refused[0], set(refused[1:])), (10003, {5}))
            self.assertEqual(dock_in_use(), "usb-1-1")
            use_all_docks()
            self.assertIsNone(dock_in_use())

    def test_codes_and_faults(self) -> None:
        with Bench() as bench, Main() as main, demo_subject() as subject:
            bench.act("pull out")
            self.assertEqual(main.Configure(VIVID, 1, 60, subject, **EVERY_FORMAT)[:3], (10003, None, None))
            missing = main.Retrieve(VIVID)
            self.assertEqual((missing.code, missing.decode_result), (10003, None))
            self.assertEqual(main.GetStatus(7), (10009, "", "", None, None, None))
            bench.act("insert")
            late_to_early = {
                "DataCollectionLocalStartTime": datetime(2026, 3, 3, 10),
                "DataCollectionLocalEndTime": datetime(2026, 3, 2, 10),
            }
            self.assertEqual(main.Configure(VIVID, 1, 60, subject, **late_to_early, **EVERY_FORMAT).code, 10023)
            self.assertRaises(TypeError, main.Configure, VIVID, 1, 60, main)
            self.assertRaises(TypeError, main.Retrieve, VIVID, "x")
            with self.assertRaises(ValueError):
                main.Configure(VIVID, 1, 60, subject, LoggerLocalSetTime=bench.now)
            bench.set_up(1, 30)
            bench.wear(timedelta(days=1))
            bench.after_bytes(2000, "cut")
            broken = main.Retrieve(VIVID)
            self.assertIn(broken.code, range(3001, 3014))
            part = broken.logger
            self.assertEqual((part.RawDataIsPart, part.RetrieveStep.name), (True, "RetrieveStep_Downloading"))
            self.assertLess(0, len(part.RawData))
            self.assertLess(len(part.RawData), part.BytesInLogger)
            bench.act("reconnect")
            bench.advance(60)
            main.MaxCommunicationRetries = 2
            for times, code in ((-1, 10003), (1, 0)):
                bench.set_fault("lose echo", 20, times)
                result = main.Retrieve(VIVID)
                self.assertEqual(result.code, code)
                bench.advance(60)
            whole = result.logger
            self.assertTrue(whole.RawData.startswith(part.RawData))
            self.assertEqual((whole.RawDataIsPart, len(whole.RawData)), (False, whole.BytesInLogger))
            with VardenLogger() as saved:
                for raw in (part.RawData, whole.RawData):
                    decoded = saved.DecodeRecording(part.ConfigBlock, raw)
                    self.assertEqual(decoded, (enmDecodeResult.Decode_OK, False))
                    self.assertEqual(saved.ActivityArray, whole.ActivityArray[: saved.Samples])
                    self.assertEqual(saved.EventTimes, whole.EventTimes[: len(saved.EventTimes)])
                self.assertEqual(saved.EventTexts, whole.EventTexts)
                self.assertTrue(saved.EventRecords[0].startswith("FD"), saved.EventRecords)
                self.assertEqual(saved.EventTimes[0], whole.StartTimeGMT)
                self.assertEqual(saved.Marker2Array.count(True), saved.Marker2Count)
                with self.assertRaises(HyWristlogError) as refused:
                    saved.DecodeRecording(b"", part.RawData)
                self.assertEqual(refused.exception.number, 11503)
                self.assertRaises(TypeError, saved.DecodeRecording, "x", part.RawData)


class Events(BenchCase):
    def setUp(self) -> None:
        super().setUp()
        self.bench.set_up(1, 30)
        self.bench.wear(timedelta(days=1))

    def after(self, waits: int, action: Any) -> Any:
        """A callback that does something once."""
        count = [0]

        def callback() -> None:
            count[0] += 1
            if count[0] == waits:
                action()

        return callback

    def test_abort(self) -> None:
        with Main() as main:
            acknowledged: List[bool] = []
            main.on_abort = lambda: acknowledged.append(True)
            main.AbortComms()  # between workflows it does nothing
            for waits in range(1, 701, 30):
                main.on_wait = self.after(waits, main.AbortComms)
                self.assertEqual(main.Retrieve(VIVID).code, ABORTED)
            self.assertTrue(acknowledged, "a transfer that is broken off says so")
            main.on_wait = None
            self.assertEqual(main.Retrieve(VIVID).code, 0)

    def test_what_a_callback_raises_is_not_lost(self) -> None:
        class Mine(BaseException):
            pass

        with Main() as main:
            calls: List[int] = []

            def fail() -> None:
                calls.append(1)
                raise Mine("stop")

            before = self.bench.elapsed
            main.on_wait = fail
            with self.assertRaises(Mine) as caught:
                main.Retrieve(VIVID)
            self.assertEqual(len(calls), 1, "no callback after the first that failed")
            self.assertIsNone(caught.exception.__context__)
            self.assertLess(self.bench.elapsed - before, 10, "it does not go on for long")
            main.on_wait = None
            self.assertEqual(main.Retrieve(VIVID).code, 0)

    def test_a_workflow_inside_a_workflow(self) -> None:
        with Main() as main, Main() as other:
            seen: List[Any] = []

            def nested() -> None:
                tries = (lambda: main.GetStatus(VIVID), lambda: main.Version, self.bench.close, Bench)
                for use in tries:
                    try:
                        seen.append(use())
                    except (HyWristlogError, SimulatorError) as failure:
                        seen.append(failure)

            main.on_wait = self.after(5, nested)
            self.assertEqual(main.Retrieve(VIVID).code, 0)
            self.assertEqual((type(seen[0]), seen[0].number), (HyWristlogError, 5))
            self.assertEqual(seen[1], main.Version)
            self.assertEqual([type(refused) for refused in seen[2:]], [SimulatorError] * 2)
            self.assertEqual(other.GetStatus(VIVID).code, 0)

    def test_an_object_may_be_closed_inside_its_event(self) -> None:
        main = Main()
        main.on_wait = self.after(50, main.close)
        self.assertEqual(main.Retrieve(VIVID).code, 0)
        self.assertTrue(main.closed)

        def close_and_fail() -> None:
            main.close()
            raise LookupError

        main = Main()
        main.on_wait = self.after(5, close_and_fail)
        before = self.bench.elapsed
        with self.assertRaises(LookupError):
            main.Retrieve(VIVID)
        self.assertLess(self.bench.elapsed - before, 10, "it is aborted all the same")

    def test_interrupt(self) -> None:
        def interrupt() -> None:
            os.kill(os.getpid(), signal.SIGINT)

        handler = signal.getsignal(signal.SIGINT)
        signal.signal(signal.SIGINT, signal.default_int_handler)
        self.addCleanup(signal.signal, signal.SIGINT, handler)
        with Main() as main:
            for when in (1, 50, 150):
                main.on_wait = self.after(when, interrupt)
                before = self.bench.elapsed
                with self.assertRaises(KeyboardInterrupt):
                    main.Retrieve(VIVID)
                self.assertLess(self.bench.elapsed - before, 10)
                self.assertIs(signal.getsignal(signal.SIGINT), signal.default_int_handler)
            # Whoever has a handler of his own keeps it.
            noted: List[int] = []
            signal.signal(signal.SIGINT, lambda *_: noted.append(1))
            main.on_wait = self.after(5, interrupt)
            self.assertEqual(main.Retrieve(VIVID).code, 0)
            self.assertEqual(noted, [1])


class Simulator(unittest.TestCase):
    def test_benches(self) -> None:
        for wrong in ({"model": "vivid2"}, {"zone": "Nowhere"}, {"begins": datetime(2026, 1, 1)}):
            self.assertRaises(ValueError, Bench, **wrong)
        with Bench() as bench:
            bench.set_up(1, 30)
            bench.wear(3600)
            bench.advance(timedelta(seconds=1.5))
            self.assertAlmostEqual(bench.elapsed, 3601.5, 3)
            self.assertRaises(ValueError, bench.wear, float("nan"))
            self.assertRaises(ValueError, bench.act, "dance")
            self.assertRaises(ValueError, bench.after_bytes, 2**64 + 1, "cut")
            self.assertRaises(SimulatorError, bench.act, "insert")
        self.assertRaises(SimulatorError, bench.wear, 1)

    def test_each_thread_has_its_own(self) -> None:
        outer = Bench("vivid")
        serials: List[str] = []

        def work() -> None:
            self.assertRaises(SimulatorError, outer.advance, 1)
            Bench("vivid")  # left open: it ends with the thread
            with Bench("kestrin2"), Main() as main:
                serials.append(main.GetStatus(KESTRIN2).logger.SerialNumber)

        thread = threading.Thread(target=work)
        thread.start()
        thread.join()
        # Benches may be closed in any order; the youngest that is open is the world.
        with Bench("kestrin2"), Main() as main:
            outer.close()
            serials.append(main.GetStatus(KESTRIN2).logger.SerialNumber)
        self.assertEqual(serials, ["K0054321"] * 2)


if __name__ == "__main__":
    unittest.main()
