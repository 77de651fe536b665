#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "tools/growing_array.h"

namespace hy_wristlog {

/// A field: its number if it is numeric, otherwise its text.
using NumberOrText = std::variant<double, std::string>;

/// The small operations that every room shares. An unexpected failure goes through the dispatcher with the
/// module "Class_Tools" and the operation's name, and then on to the caller. Texts are UTF-8.
class Class_Tools {
 public:
  // Bytes (Class_Tools_bytes.cpp)

  /// CRC-16/XMODEM (catalogue of parametrised CRC algorithms), 0 to 65535. Raises Subscript when there is no
  /// array: a span without data.
  static std::int32_t fncGetCRC16(std::span<const std::uint8_t> bytes);
  /// Two upper-case digits.
  static std::string fncConvertByteToHexString(std::uint8_t byte);
  /// Two upper-case digits a byte, nothing between them. Elements are counted from index 0, so an array with
  /// another lower bound raises Subscript; no array gives an empty text.
  static std::string fncConvertByteArrayToHexString(std::span<const std::uint8_t> bytes);
  static std::string fncConvertByteArrayToHexString(const GrowingArray<std::uint8_t>& bytes);
  /// The same for numbers and texts: numbers, and texts that are numbers, give their digits when these are
  /// one or two (0 to 255) and nothing otherwise; other texts are taken over. Raises Overflow for a number
  /// beyond 32 bits.
  static std::string fncConvertByteArrayToHexString(const GrowingArray<NumberOrText>& elements);
  /// The bytes as a 0-based array. An odd length, or a character that is no digit, gives the mark of an
  /// invalid text: one element at index -1. Raises Subscript for an empty text.
  static GrowingArray<std::uint8_t> fncConvertHexStringToByteArray(std::string_view text);
  /// The text becomes upper case. 0 when it is empty or has a character that is no digit; from 80000000 on
  /// negative. Raises Overflow beyond 32 bits.
  static std::int32_t fncConvertHexStringToLong(std::string& text);
  /// Two's complement, -128 to 127.
  static std::int16_t fncConvertSignedCharToInt(std::uint8_t byte);
  /// Raises NoSignedChar outside -128 to 127.
  static std::uint8_t fncConvertIntToSignedChar(std::int16_t value);
  /// The system's words for an error number; empty for an unknown one.
  static std::string fncGetErrorStringFromDLLerrorNum(std::int32_t number);

  // Text, numbers, waiting (Class_Tools_text.cpp)

  /// The fields between delimiters; those that are numeric as their leading number. The field after a
  /// delimiter begins one character after the delimiter's start, however long the delimiter is.
  static GrowingArray<NumberOrText> fncParseString(std::string_view text, std::int16_t lowerBound,
                                                   std::string_view delimiter);
  /// The same fields as texts, without the empty ones; no array when there are none.
  static GrowingArray<std::string> fncParseStringKeepString(std::string_view text, std::int16_t lowerBound,
                                                            std::string_view delimiter);
  /// The pieces that delimiters end, from index 1; what follows the last delimiter counts when it is longer
  /// than one character. Raises InvalidCall for an empty delimiter.
  static GrowingArray<std::string> fncStringToLineArray(std::string_view text, std::string_view delimiter);
  /// Lines joined with blanks; a last line of one character is dropped.
  static std::string fncStripVbCrLf(std::string_view text);
  /// "_" for blanks, "/" and ":"; control characters and all beyond ASCII are dropped. Other characters that
  /// file names cannot have pass.
  static std::string fncStripBlanksForFileName(std::string_view text);
  /// The text up to its first NUL.
  static std::string fncTrimNull(std::string_view text);
  /// The least whole number that is not below the value.
  static double fncTrueCeiling(double value);
  /// Whole years between two dates, by birthdays; one of 29 February falls on 1 March in other years. 0 for
  /// date 0. Raises InvalidCall for dates outside the years 100 to 9999.
  static std::int16_t fncAgeDiff(double from, double to);
  /// `hy_wristlog::fncRedimArray`.
  template <class T>
  static std::int32_t fncRedimArray(GrowingArray<T>& array, std::int16_t lowerBound = 1) {
    return hy_wristlog::fncRedimArray(array, lowerBound);
  }
  /// Serves the pending events once, then waits. With an interval, in milliseconds too, it serves them again
  /// while it waits, at most once an interval; so callers must expect to be re-entered. Where waits end with
  /// their input, events are always served, and an abort request ends the pause.
  static void subDelay(std::int32_t milliseconds, std::optional<double> eventInterval = std::nullopt);

  // Files and folders (Class_Tools_files.cpp). "\" and "/" both separate folders. What the system refuses is
  // raised as FileNotFound, DiskFull, PermissionDenied, PathFileAccess or PathNotFound, unless the result
  // tells it.

  /// The lines of a file, from index 1. Raises Subscript when there are more of them than a third of the
  /// file's bytes, and for an empty file.
  static GrowingArray<std::string> fncReadFile2Array(std::string_view path);
  /// Replaces the file with the lines. False when the site's action for a failure is to leave quietly.
  static bool fncSaveFile(std::string_view path, std::span<const std::string> lines);
  /// The name after the last separator; a separator at the very end stays with the name.
  static std::string fncRemovePath(std::string_view path);
  /// The extension with its dot; empty when the name has no dot, or a blank after it.
  static std::string fncReturnFileExtension(std::string_view path);
  /// The folder of a path. Only a name with an extension counts as a file; without one the whole path is the
  /// folder. The flag adds (true) or takes away (false) a separator at the end; without it the folder is left
  /// as it is. An empty folder stays empty.
  static std::string fncRemoveFileName(std::string_view path,
                                       std::optional<bool> trailingBackslash = std::nullopt);
  /// True for a file; false for a folder.
  static bool fncFilePathExists(std::string_view path);
  /// True when the folder of the path exists.
  static bool fncDirDirectory(std::string_view path);
  /// "FileDoesNotExist", "FileExistsFullAccess", "FileExistsReadOnly", "FileExistsHidden" or
  /// "FileExistsReadOnlyAndHidden". A file that cannot be opened is a fault.
  static std::string fncCheckFileForReadWrite(std::string_view path);
  /// True when the folder of the path is there, or can be made, and a file can be written in it.
  static bool fncCheckPathforReadWrite(std::string_view path);
  /// Makes the folder of the path and all above it that are missing, for everyone to write in; below the
  /// user's own folders (the home, folders 5 and 26) with ordinary permissions. False when a file has its
  /// name.
  static bool fncMakeDirectorys(std::string_view path);
  /// Does nothing for "Everyone": there are no access lists here, and folders get their permissions when they
  /// are made. False, and a message to the user, for another account or a path that is not there.
  static bool fncSetAccess(std::string_view account, std::string_view path, std::int32_t accessMask);

  // INI files (Class_Tools_ini.cpp). Names of sections and keys in any case; values are trimmed and lose one
  // pair of quotes around them when read. Writing keeps all other lines.

  /// The value, at most 4095 bytes; the default when there is none.
  static std::string fncINIread(std::string_view section, std::string_view key, std::string_view defaultValue,
                                std::string_view file);
  /// The writing operations return false when the file cannot be read or written, and for names and values
  /// with line breaks. Deleting what is not there succeeds.
  static bool fncINIwrite(std::string_view section, std::string_view key, std::string_view value,
                          std::string_view file);
  static bool fncINIdeleteItem(std::string_view section, std::string_view key, std::string_view file);
  static bool fncINIdeleteSection(std::string_view section, std::string_view file);

  // Folders and formats of the user (Class_Tools_locale.cpp)

  /// 5 documents, 26 the user's application data, 35 application data of all users; empty for others. There
  /// are no windows, so the handle means nothing.
  static std::string fncGetSpecialFolderLocation(std::int64_t windowHandle, std::int32_t folderCode);
  /// Items 14 decimal separator, 31 short date, 32 long date, 4099 time; empty for others. The locale is
  /// always the user's.
  static std::string fncGetUserLocaleInfo(std::int32_t locale, std::int32_t item);
  /// As text, or as its code in code page 1252.
  static std::variant<std::string, std::int16_t> fncGetLocaleDecimalSeparator(bool asCode = false);
  static std::string fncGetLocaleLongDateFormat();
  static std::string fncGetLocaleShortDateFormat();
  /// With the flag a half-day mark reads "AMPM", as formatDate wants it, and not "tt".
  static std::string fncGetLocaleTimeFormat(bool ampm);
  /// The time format without seconds.
  static std::string fncGetLocaleMediumTimeFormat();

  // Devices and identifiers (Class_Tools_usb_ports.cpp, Class_Tools_identifiers.cpp)

  /// The COM port of the one present device of the class whose first hardware identifier contains both
  /// texts; 0 when none or several match, or the one has no port. `NumConnected` counts the matches. Raises
  /// the system's error number when the devices cannot be enumerated.
  static std::int16_t fncUSBdeviceCOMport(const std::string& VendorID, const std::string& ProductID,
                                          const std::string& DevIntClassGUID, std::int16_t& NumConnected);
  /// A random identifier (RFC 9562, version 4) as 32 upper-case hexadecimal digits.
  static std::string fncCreateGUID();
  /// MD5 (RFC 1321) of the text in code page 1252 as 32 upper-case hexadecimal digits. Raises the system's
  /// error number when the provider fails.
  static std::string fncGenerateMD5hash(std::string_view text);
};

/// The thread's one object.
Class_Tools& Tools();

}  // namespace hy_wristlog
