"""A recording as it is kept in a folder: its bytes, and the configuration that tells of them."""

import configparser
import hashlib
import json
from datetime import datetime, timezone
from pathlib import Path
from typing import List, NamedTuple, Optional

from .errors import RecordingError
from .loggers import VardenLogger

CONFIGURATION = "config.ini"
WHOLE, PART = "raw.bin", "raw.partial.bin"
PENDREL_SETUP = "setup.txt"
_SUMMARY = "recording.json"
_BLOCK, _FACTS, _RECORDING = "Configuration Bytes", "Read Only Config Data", "Recording"
_MOMENT = "%Y-%m-%dT%H:%M:%SZ"


class Saved(NamedTuple):
    """`configuration` is the text of config.ini."""

    configuration: str
    raw: bytes

    def fact(self, section: str, name: str) -> str:
        """Empty for one that is not told."""
        file = configparser.ConfigParser(interpolation=None, strict=False)
        try:
            file.read_string(self.configuration)
            return file.get(section, name, fallback="").strip('"')
        except configparser.Error as why:
            raise RecordingError(f"{CONFIGURATION} is no INI file: {why}") from None

    @property
    def block(self) -> bytes:
        """Raises RecordingError."""
        try:
            block = bytes.fromhex(self.fact(_BLOCK, "Raw Config Bytes"))
        except ValueError:
            raise RecordingError(f"{CONFIGURATION}: the config block is not hexadecimal") from None
        if not block:
            raise RecordingError(f'{CONFIGURATION} has no "Raw Config Bytes" in a section "{_BLOCK}"')
        return block

    @property
    def firmware(self) -> str:
        return self.fact(_FACTS, "Firmware Version")

    @property
    def retrieved(self) -> Optional[datetime]:
        try:
            moment = datetime.strptime(self.fact(_RECORDING, "Retrieved"), _MOMENT)
        except ValueError:
            return None
        return moment.replace(tzinfo=timezone.utc)

    @property
    def low_battery(self) -> bool:
        return self.fact(_RECORDING, "Low Battery") == "1"

    def is_part(self, in_logger: int) -> bool:
        return self.fact(_RECORDING, "Part") == "1" and len(self.raw) < in_logger

    def mismatch(self, in_logger: Optional[int] = None) -> str:
        """How the bytes differ from those that the configuration tells of; empty when they do not. How many bytes the
        logger held is known when the block was read."""
        told, digest = self.fact(_RECORDING, "Bytes"), self.fact(_RECORDING, "SHA-256")
        if in_logger is not None and len(self.raw) != in_logger and not self.is_part(in_logger):
            return f"{len(self.raw)} bytes are there, and the logger held {in_logger}"
        if told and told != str(len(self.raw)):
            return f"{len(self.raw)} bytes are there, and {told} were retrieved"
        if digest and digest.upper() != _digest(self.raw):
            return "their SHA-256 is not that of what was retrieved"
        return ""

    def write(self, folder: Path, is_part: bool) -> None:
        """Both files or none, where no recording is yet. Raises OSError."""
        folder.mkdir(parents=True, exist_ok=True)
        present = [name for name in (CONFIGURATION, WHOLE, PART) if (folder / name).exists()]
        if present:
            raise FileExistsError(f"{folder / present[0]} exists")
        made: List[Path] = []
        try:
            for name, data in ((PART if is_part else WHOLE, self.raw), (CONFIGURATION, self.configuration.encode())):
                with open(folder / name, "xb") as file:
                    made.append(folder / name)
                    file.write(data)
        except BaseException:
            for path in made:
                path.unlink()
            raise


def _digest(raw: bytes) -> str:
    return hashlib.sha256(raw).hexdigest().upper()


def of_logger(logger: VardenLogger, low_battery: bool) -> Saved:
    """What a retrieval has left in a logger's object. Its `raw` is empty when that is nothing."""
    raw, in_logger = logger.RawData, logger.BytesInLogger
    moments = {"Logger Time": logger.LastLoggerTime, "Retrieved": logger.LastTimeLoggerRead}
    told = {name: moment.strftime(_MOMENT) if moment else "" for name, moment in moments.items()}
    facts = {
        "Firmware Version": logger.FirmwareVersion,
        "LCD Firmware Version": logger.LCDfirmwareVersion,
        "Battery Voltage": f"{logger.BatteryVoltage:.7g}",
        "Loaded Battery Voltage": f"{logger.LoadedBattVoltage:.7g}",
        "Logger Time": told["Logger Time"],
    }
    recording = {
        "Bytes": str(len(raw)),
        "Bytes in Logger": str(in_logger),
        "SHA-256": _digest(raw),
        "Part": "1" if logger.RawDataIsPart else "",
        "Retrieved": told["Retrieved"],
        "Low Battery": str(int(low_battery)),
    }
    block = {"Raw Config Bytes": logger.ConfigBlock.hex().upper()}
    lines = []
    for section, keys in ((_BLOCK, block), (_FACTS, facts), (_RECORDING, recording)):
        lines += [f"[{section}]", *(f"{name}={value}" for name, value in keys.items() if value)]
    return Saved("\n".join(lines) + "\n", raw)


def in_folder(folder: Path) -> Saved:
    """Raises RecordingError, and OSError for files that cannot be read."""
    raw = folder / (PART if not (folder / WHOLE).is_file() and (folder / PART).is_file() else WHOLE)
    if not folder.is_dir():
        raise RecordingError(f"{folder} is no folder")
    if (folder / PENDREL_SETUP).is_file():
        raise RecordingError(
            f"{folder} holds a recording of a Pendrel logger, which 'wristlog decode' and 'wristlog study' read"
        )
    for path in (folder / CONFIGURATION, raw):
        if not path.is_file():
            raise RecordingError(
                f"{folder} holds no recording of a Kestrin Vivid or Kestrin 2: {path.name} is not there"
            )
    try:
        configuration = (folder / CONFIGURATION).read_text(encoding="utf-8-sig")
    except UnicodeDecodeError:
        raise RecordingError(f"{folder / CONFIGURATION} is not UTF-8") from None
    saved = Saved(configuration, raw.read_bytes())
    if not saved.raw:
        raise RecordingError(f"{raw} holds no recording: it is empty")
    return saved


def zone_in(folder: Path) -> Optional[str]:
    """The tz database's name of the logger's zone, which the program writes beside the recording."""
    try:
        summary = json.loads((folder / _SUMMARY).read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return None
    told = summary.get("time_zone_iana") if isinstance(summary, dict) else None
    return told if isinstance(told, str) else None
