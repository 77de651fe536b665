#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engineering/saved_recording.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_Subject.h"

/// A saved recording of the older family: the memory image from address 0, and in its INI text the set-up
/// answer and, in the section "Recording", what a retrieval has put in the place of values that the answer
/// does not tell.
namespace hy_wristlog::engineering {

/// Whether a configuration's text is a Pendrel's: an INI text with a set-up answer or, as older versions have
/// written it, the answer alone.
bool isPendrelConfig(std::string_view text);

/// The recording that a retrieval has brought, seen from now. `memory` is what was read of the image.
SavedRecording savedRecording(const Class_Pendrel& retrieved, std::vector<std::uint8_t> memory);

/// The INI text of a configuration for which `isPendrelConfig` holds.
std::string pendrelIni(std::string_view text);
/// What tells that the answer of a configuration is not the one that was retrieved; empty when nothing does.
std::string setupMismatch(const std::string& ini);
/// Marks whole blocks that are fewer than the recording fills as a part of it, as older versions have kept
/// them, where nothing tells how many bytes were read.
void markOlderPart(SavedRecording& recording);
/// Raises OutOfRange: a configuration is a Pendrel's where that of a Varden logger is wanted.
[[noreturn]] void refusePendrel(const char* source);
/// How many bytes of the memory image a recording fills, in whole blocks.
std::int64_t pendrelBytes(const std::string& ini);
/// Whether a recording is of the same logger and configuration as one with more bytes, which begins with its
/// bytes.
bool isBeginningOfSame(const SavedRecording& part, const SavedRecording& whole);

/// The logger with its set-up and memory image, not decoded. Raises OutOfRange for an answer that cannot be
/// read or does not tell what decoding needs, TypeMismatch for a value in its place that cannot be read.
std::shared_ptr<Class_Pendrel> openPendrel(const SavedRecording& recording);
/// Decodes the image. False when it ends before the recording does; what may be cut off is then left out: the
/// last sample, unless its marker is there. Raises OutOfRange when no sample is there.
bool decode(Class_Pendrel& logger);

/// The logger's model in words, "Pendrel Steps".
std::string modelWords(const Class_Pendrel& logger);
Class_Subject subjectOf(const Class_Pendrel& logger);
/// The set-up answer of a Pendrel's recording as text. Raises OutOfRange when it cannot be read.
std::string setupText(const SavedRecording& recording);

}  // namespace hy_wristlog::engineering
