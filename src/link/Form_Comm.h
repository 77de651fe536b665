#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "link/Class_Packet.h"
#include "platform/platform.h"

namespace hy_wristlog {

/// What a link tells its owner.
class CommEvents {
 public:
  virtual ~CommEvents() = default;
  virtual void CommEventError(std::int32_t /*ErrorNum*/, std::string& /*ErrorDescription*/) {}
  virtual void XModemLostPacket(std::int16_t /*SendAttempt*/, std::int16_t /*MaxAttempts*/,
                                std::int16_t /*WhichPacket*/) {}
  virtual void XModemPacketSent(std::uint8_t /*ThisPacket*/, std::uint8_t /*TotalPackets*/) {}
  virtual void XmodemPacketReceived(std::uint8_t /*ThisPacket*/, std::int32_t /*BytesSoFar*/) {}
  virtual void CommProgress(std::string& /*ProgressText*/) {}
  virtual void AbortAcknowledged() {}
  virtual void CommRX(std::string& /*CharactersReceived*/) {}
};

struct CommState;

/// The one path of every byte to and from a logger: one serial port with its settings, its lines and its
/// events. Line settings are given as indices: BaudRate 1 to 16 (13 is 57600), Parity 1 to 5 (3 none),
/// StopBits 1 to 3 (3 two), DataBits 4 to 8; 0 means "as last set". Text that passes is one byte a character.
class Form_Comm {
 public:
  /// `owner`, when not null, must outlive the link.
  explicit Form_Comm(CommEvents* owner = nullptr);
  ~Form_Comm();
  Form_Comm(const Form_Comm&) = delete;
  Form_Comm& operator=(const Form_Comm&) = delete;

  std::int16_t CommPort = 0;
  std::int32_t BaudRate = 0, Parity = 0, StopBits = 0, DataBits = 0;
  std::int16_t RTStoggleInterval = 333;
  bool RaiseEventOnChar = false;

  /// The last event of the port, of any kind; `Overrun` (lost data) until a receive loop has seen it.
  std::int32_t Get_LastCOMerrorNum() const;
  bool Get_PortReady() const;
  bool Get_DoingXMODEM() const;
  /// The DSR line, which the logger's side sets. False when the port is closed.
  bool DSRHolding();

  /// Opens the port, closing an open one first, then waits `lngDelay` milliseconds. Raises InvalidSettings
  /// and the control's PortOpen to ControlBlockFailure: InvalidPort no such port, PortNotAvailable held by
  /// another program, PortStateFailure unusable or gone (after ten more tries). On a closed port every
  /// operation raises PortClosed.
  void subOpenPort(std::int16_t intPort, std::int32_t vBaudRate, std::int32_t vDataBits, std::int32_t vParity,
                   std::int32_t vStopBits, std::int32_t lngDelay, bool RTSenableFirst, bool DTRenableFirst);
  void subClosePort();
  void subEnableRTS();
  void subDisableRTS();
  void subEnableDTR();
  void subDisableDTR();
  void subToggleRTS();
  /// Inverts RTS every `intInterval` milliseconds while events are served; 0 keeps RTStoggleInterval. Raises
  /// InvalidCall for a negative interval.
  void subEnableRTStoggle(std::int16_t intInterval);
  void subDisableRTStoggle();
  /// Pulses RTS `NumResets` times, at least once, then waits; milliseconds, a width of 0 counting as 1.
  void subResetDevice(std::int32_t ResetEnableWidth, std::int32_t ResetDisableWidth, std::int32_t NumResets,
                      std::int32_t lngDelay);
  /// Ends a running XMODEM transfer within about 50 ms; at any other time sends CTRL-C.
  void subAbortProcess();

  /// `SendBytes` 1 sends character by character, 2 (or 0) also checks the echo of each, others send all at
  /// once; `CarraigeReturn` 1 sends a carriage return after them. Each character comes back `NumEchoedChars`
  /// times within `TXdelay`. Raises NoCharacters and WrongCharacters; times in milliseconds.
  void subSendChars(std::string_view Chars, std::int32_t SendBytes, std::int32_t CarraigeReturn,
                    std::int16_t NumEchoedChars, std::int32_t CharDelay, std::int32_t TXdelay,
                    std::int32_t CmdDelay);
  /// The text before `CharToWaitFor`, at most 4096 characters. `RXdelay` is how long the line may be silent;
  /// bytes that wait are no silence. Raises NoCharacters when nothing comes, NoFinalCharacter when the text
  /// has no end, is longer, or goes on slowly for two seconds more than its silence time.
  std::string fncGetCharLine(char CharToWaitFor, std::int32_t RXdelay);
  /// Reads `NumBytes` bytes at line settings of their own. `PageDelay` is the silence that ends the wait
  /// (4000 when negative), `CmdDelay` the pause after it (500 when negative). With `IgnoreLength` reads all
  /// that comes until `ByteDelay` of silence, perhaps nothing, and sets `NumBytes` to its length. At most
  /// 17000 bytes. Raises InvalidSettings to DataOverrun.
  std::vector<std::uint8_t> fncGetBinaryStream(std::int32_t& NumBytes, std::int32_t vBaudRate,
                                               std::int32_t vDataBits, std::int32_t vParity,
                                               std::int32_t vStopBits, std::int32_t PageDelay,
                                               std::int32_t CmdDelay, bool IgnoreLength,
                                               std::int32_t ByteDelay);

  /// Sends 1 to 255 packets. `CmdTimeout` bounds each wait for an answer, 3000 ms when negative;
  /// `ByteByByteDelay` is 1 ms when negative. An aborted transfer ends without a failure. Raises
  /// InvalidSettings and InvalidPacketArray to NoEndAcknowledgement.
  void subSendXmodemPackets(const PacketArray& Packets, std::int32_t vBaudRate, std::int32_t vDataBits,
                            std::int32_t vParity, std::int32_t vStopBits, std::int32_t CmdTimeout,
                            bool ByteByByte, std::int32_t ByteByByteDelay);
  /// The packets; no array when nothing came or the transfer was aborted. A packet that came again is in it
  /// twice. Raises InvalidSettings, RetriesExceeded, NoPacket, and Overflow when a packet other than 0
  /// follows packet 255.
  PacketArray fncReceiveXmodemPackets(std::int32_t vBaudRate, std::int32_t vDataBits, std::int32_t vParity,
                                      std::int32_t vStopBits, std::int32_t CmdTimeout);
  /// Hands over the good packets of the last receipt when it failed or was aborted, as they came; otherwise
  /// none.
  std::vector<Class_Packet> takeReceivedPackets();
  /// Sets how many bytes a transfer may bring before it ends with RetriesExceeded; 20 MiB at first.
  void boundTransfers(std::size_t bytes);
  void subSendXmodemAbort();
  void subSendCTRLCabort();
  void subSendXmodemACK();
  void subSendXmodemNAK();
  static std::string fncGetFriendlyPacketText(const PacketArray& Packets);

  /// The diagnostic console: shown by default when the host has a sink for it.
  bool Get_Visible() const;
  void show();
  void hide();
  void subShowCOM(std::string_view text);
  /// What was shown while visible, in UTF-8: all of it, or of more than 16 MiB the beginning and the end.
  const std::string& consoleText() const;
  /// Selects a part of the console's text, in bytes; what exceeds the text is left out, and a character is
  /// selected whole. Showing more text ends the selection and puts the caret after that text.
  void select(std::size_t start, std::size_t length);
  std::string_view selectedText() const;
  void cmdClear();
  /// These two do not change the clipboard when there is nothing to copy.
  void cmdCopySelection();
  void cmdCopyAll();
  /// Makes a running stream fail as if the port had lost data. Without one the mark stays until the port's
  /// next event overwrites it or a receive loop finds it.
  void cmdDataOverrun();

 private:
  std::unique_ptr<CommState> state_;
};

}  // namespace hy_wristlog
