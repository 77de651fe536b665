"""Recordings as plain data: from retrievals and folders, as arrays, frames and pictures."""

import importlib.util
import pathlib
import pickle
import tempfile
import unittest
from array import array
from datetime import timedelta
from typing import Tuple

from unittest.mock import patch

from hy_wristlog import (
    HyWristlogError,
    Main,
    ProgramError,
    ProgramNotFoundError,
    Recording,
    RecordingError,
    RetrieveResult,
    _library,
    enmDecodeResult,
)
from support import BenchCase

HAS_PANDAS = all(map(importlib.util.find_spec, ("numpy", "pandas")))


class Recordings(BenchCase):
    def setUp(self) -> None:
        super().setUp()
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def retrieved(self) -> Tuple[Recording, Recording, RetrieveResult]:
        """A part, the whole, and what brought the whole."""
        self.bench.set_up(7, 60)
        self.bench.wear(timedelta(days=1))
        self.bench.after_bytes(2000, "cut")
        with Main() as main:
            part = Recording.of(main.Retrieve(0))
            self.bench.act("reconnect")
            self.bench.advance(60)
            result = main.Retrieve(0)
            self.assertRaisesRegex(RecordingError, "10009", Recording.of, main.Retrieve(7))
        return part, Recording.of(result), result

    def test_of_a_retrieval_and_from_its_folder(self) -> None:
        part, whole, result = self.retrieved()
        logger = result.logger
        self.assertEqual((part.is_part, whole.is_part), (True, False))
        self.assertEqual((whole.verdict, whole.start), (enmDecodeResult.Decode_OK, logger.StartTimeGMT))
        self.assertEqual(whole.series["activity_counts"], logger.ActivityArray)
        off_wrist = array("b", [-1 if off is None else off for off in logger.WristStatusArray])
        self.assertEqual(whole.series["off_wrist"], off_wrist)
        self.assertEqual([event.text for event in whole.events], logger.EventTexts)
        self.assertRegex(repr(part), "V0012345: .*only a part")
        for recording, name in ((part, "part"), (whole, "whole")):
            recording.save(self.place / name)
            again = pickle.loads(pickle.dumps(Recording.open(self.place / name)))
            self.assertEqual((repr(again), again.saved), (repr(recording), recording.saved))
            self.assertEqual((again.series, again.events), (recording.series, recording.events))
            self.assertEqual((again.retrieved, again.low_battery), (recording.retrieved, False))
            self.assertRaises(FileExistsError, recording.save, self.place / name)

    def test_what_is_no_recording_is_refused(self) -> None:
        whole = self.retrieved()[1]
        folder = self.place / "w"
        self.assertRaisesRegex(RecordingError, "no folder", Recording.open, folder)
        whole.save(folder)
        text, raw = whole.saved
        for config, data, words in (
            (text, raw + b"x", f"{len(raw) + 1} bytes are there"),
            (text, raw[:-1] + b"x", "SHA-256"),
            (text.split("[Recording]")[0], raw[:-1], f"the logger held {len(raw)}"),
            (text.replace("[Conf", "[onf"), raw, "Raw Config Bytes"),
            ("nonsense", raw, "no INI file"),
            (text, b"", "it is empty"),
        ):
            with self.subTest(words):
                (folder / "config.ini").write_text(config)
                (folder / "raw.bin").write_bytes(data)
                self.assertRaisesRegex(RecordingError, words, Recording.open, folder)
        (folder / "config.ini").write_text(text)
        (folder / "raw.bin").write_bytes(raw + b"x")
        self.assertTrue(Recording.open(folder, unchecked=True).unchecked)
        (folder / "config.ini").write_text(text.replace("Bytes=", "Bytes=FF", 1))
        (folder / "raw.bin").write_bytes(raw)
        self.assertRaises(HyWristlogError, Recording.open, folder)
        (folder / "raw.bin").unlink()
        self.assertRaisesRegex(RecordingError, "raw.bin is not there", Recording.open, folder)

    def test_pictures(self) -> None:
        part = self.retrieved()[0]
        with patch.dict("os.environ", {"HY_WRISTLOG_PROGRAM": ""}):  # that beside the library
            for path in part.plot(self.place):
                self.assertIn("Beginning of a recording", path.read_text(encoding="utf-8"))
            self.assertRaisesRegex(ProgramError, "actogram.svg exists", part.plot, self.place)
            part.plot(self.place, force=True)
            with patch.object(_library, "folder_of_library", lambda: self.place), patch.dict("os.environ", PATH=""):
                self.assertRaisesRegex(ProgramNotFoundError, "HY_WRISTLOG_PROGRAM", part.plot, self.place)
        with patch.dict("os.environ", HY_WRISTLOG_PROGRAM="/nowhere/wristlog"):
            self.assertRaisesRegex(ProgramNotFoundError, "/nowhere/wristlog", part.plot, self.place)

    @unittest.skipUnless(HAS_PANDAS, "needs numpy and pandas")
    def test_frames(self) -> None:
        import numpy

        whole = self.retrieved()[1]
        counts = whole.series["activity_counts"]
        self.assertTrue(numpy.shares_memory(numpy.asarray(counts), numpy.frombuffer(counts, dtype="i")))
        counts[7] = -1
        frame = whole.to_dataframe("America/New_York")
        self.assertEqual(list(frame), ["logger", "participant", *whole.series])
        self.assertEqual((len(frame), frame.index[0]), (len(counts), whole.start))
        self.assertEqual(str(frame.index.tz), "America/New_York")
        self.assertEqual(frame.activity_counts[:9].tolist(), [*counts[:7], frame.activity_counts.iloc[7], counts[8]])
        self.assertEqual(frame.activity_counts.isna().sum(), 1)
        self.assertEqual(frame.marker.sum(), sum(one for one in whole.series["marker"] if one > 0))
        self.assertEqual((frame.light_lux.notna().all(), frame.red_uw_cm2.isna().all()), (True, True))
        events = whole.events_to_dataframe()
        self.assertEqual((list(events.event), events.time[0]), ([event.text for event in whole.events], whole.start))


if __name__ == "__main__":
    unittest.main()
