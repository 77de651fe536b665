/// Simulated loggers for hosts in any language that can call C: `libhy_wristlog_simulator.so`, which belongs
/// to one `libhy_wristlog.so`. A bench is a world for the calling thread: its own simulated time, one dock
/// and one logger in it. While it is open, everything that the thread does with the library happens there.
///
/// Functions return a HySimulatorResult. Only the thread that opened a bench can use its number.
#ifndef HY_WRISTLOG_SIMULATOR_C_API_H
#define HY_WRISTLOG_SIMULATOR_C_API_H

#include <stdint.h>

#if defined(__cplusplus)
extern "C" {
#endif
#define HY_SIMULATOR_API __attribute__((visibility("default")))

enum {
  HY_SIMULATOR_OK = 0,
  HY_SIMULATOR_NO_BENCH = -1,  ///< no open bench of this thread has that number
  HY_SIMULATOR_ARGUMENT = -2,  ///< a null pointer, or a value out of range
  HY_SIMULATOR_REFUSED = -3    ///< the simulated world does not allow it
};
typedef int32_t HySimulatorResult;

/// What was wrong with the calling thread's last call that failed, in UTF-8. Valid until the next one fails.
HY_SIMULATOR_API const char* hySimulatorLastError(void);

/// Makes a new bench the calling thread's world. `model` is "vivid", "kestrin2", or a Pendrel logger:
/// "pendrel13" (no checksums), "pendrel14" or "pendrel27" (steps). `zone` is the machine's zone by its
/// catalogue key, null for "Eastern Standard Time"; `begins` the UTC time in seconds since 1970, 0 for 2
/// March 2026, 14:00, otherwise a moment of the years 1971 to 2037. Refused inside a workflow.
HY_SIMULATOR_API HySimulatorResult hySimulatorOpen(const char* model, const char* zone, int64_t begins,
                                                   int32_t* bench);
/// Ends a bench. The thread goes back to the bench that it opened before, or to the machine. Refused inside a
/// workflow.
HY_SIMULATOR_API HySimulatorResult hySimulatorClose(int32_t bench);

/// Sets the logger up as a PC would, without the dock: `mode` is the logger's own number of it (1 activity, 3
/// activity and light, 7 activity and special light; a Pendrel logger with steps counts them unless it is 1),
/// `epoch` in seconds. It starts at the next full minute.
HY_SIMULATOR_API HySimulatorResult hySimulatorSetUp(int32_t bench, int32_t mode, int32_t epoch);
/// Lets a person wear the logger for so many seconds (up to ten years). Afterwards it is back in its dock if
/// it was in one. Equal seeds give equal days.
HY_SIMULATOR_API HySimulatorResult hySimulatorWear(int32_t bench, double seconds, uint32_t seed);
/// Lets time pass, up to ten years.
HY_SIMULATOR_API HySimulatorResult hySimulatorAdvance(int32_t bench, double seconds);
/// Simulated seconds since the bench was opened.
HY_SIMULATOR_API HySimulatorResult hySimulatorElapsed(int32_t bench, double* seconds);
/// UTC seconds since 1970.
HY_SIMULATOR_API HySimulatorResult hySimulatorNow(int32_t bench, int64_t* seconds);

/// What happens to the hardware: "pull out", "insert", "unplug", "plug", "power reset", "hold port", "free
/// port", "lock up", "reconnect".
HY_SIMULATOR_API HySimulatorResult hySimulatorDo(int32_t bench, const char* deed);
/// Lets `skip` occurrences pass and spoils `times` of them, all that follow with -1: "lose echo", "alter
/// echo", "delay echo"; bytes on the line: "lose to pc", "lose to logger", "alter to pc", "alter to logger";
/// and, for Vivid and Kestrin 2, "bad line checksum", "ignore command", "refuse clock", "misstore config",
/// "bad config checksum". `wristlog simulate --help` lists the others, with hyphens in the place of blanks;
/// those that need an argument are refused here. "silent" stays until `times` is 0.
HY_SIMULATOR_API HySimulatorResult hySimulatorSetFault(int32_t bench, const char* fault, int32_t skip,
                                                       int32_t times);
/// Does something after so many more bytes have passed, both directions together: "cut", "pull out",
/// "unplug".
HY_SIMULATOR_API HySimulatorResult hySimulatorAfterBytes(int32_t bench, uint64_t bytes, const char* deed);

#if defined(__cplusplus)
}
#endif

#endif
