"""A host in Python: a simulated Kestrin Vivid is configured, worn for a day, retrieved, and its recording looked at.

With a real logger in its dock, leave out the bench.
"""

from datetime import datetime, timedelta

from hy_wristlog import Main, Recording, Subject, enmDateFormat, enmLoggerPointer, enmTimeFormat, enmVardenLoggingMode
from hy_wristlog.simulator import Bench

VIVID = enmLoggerPointer.LggrPntr_KRVivid

with Bench("vivid") as bench, Main() as main:
    main.on_progress = lambda text: print("  ", text)
    main.on_error = lambda number, description: print("   trouble on the link:", number, description)

    subject = Subject()
    subject.Identity, subject.Gender, subject.DOB = "Subject 17", "F", datetime(1990, 6, 15)
    configured = main.Configure(
        VIVID,
        enmVardenLoggingMode.VardenMode_ActivityAndSpecialLight,
        60,
        subject,
        AutoDSTadjust=True,
        DateFormat=enmDateFormat.DateFormat_MMDD,
        TimeFormat=enmTimeFormat.TimeFormat_24hour,
    )
    if configured.code != 0:
        raise SystemExit(f"Configure: code {configured.code}")
    print(f"Configured {configured.device_serial_number}.")

    bench.wear(timedelta(days=1))
    print("Status:", main.GetStatus(VIVID).simple_status)

    # main.AbortComms() would end it here.
    main.on_download = lambda so_far, expected: print("  ", so_far, "of", expected, "bytes")
    result = main.Retrieve(VIVID)
    if result.code != 0:
        raise SystemExit(f"Retrieve: code {result.code}")
    recording = Recording.of(result)

activity, light = recording.series["activity_counts"], recording.series["light_lux"]
print(f"{recording.samples} epochs from {recording.start} on, by {recording.participant}.")
print(f"At most {max(activity)} counts in an epoch and {max(light):.0f} lux.")
# recording.to_dataframe() is a pandas data frame, recording.plot("pictures") draws it.
