#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/platform.h"
#include "platform/telnet.h"

/// The messages of telnet's option for serial ports (RFC 2217), for either end. A message is the content of a
/// subnegotiation of `telnet::ComPort`: its number and its value.
namespace hy_wristlog::platform::com_port {

/// The numbers of a client's messages. A server's answer to one has ServerOffset added.
inline constexpr std::uint8_t Signature = 0, SetBaudRate = 1, SetDataSize = 2, SetParity = 3, SetStopSize = 4,
                              SetControl = 5, NotifyLineState = 6, NotifyModemState = 7, SuspendFlow = 8,
                              ResumeFlow = 9, SetLineStateMask = 10, SetModemStateMask = 11, PurgeData = 12;
inline constexpr std::uint8_t ServerOffset = 100;

/// A value that asks for what is set, and sets nothing.
inline constexpr std::uint8_t AskValue = 0;

/// Values of SetParity, SetStopSize and PurgeData.
inline constexpr std::uint8_t NoParity = 1, OddParity = 2, EvenParity = 3, MarkParity = 4, SpaceParity = 5;
inline constexpr std::uint8_t OneStopBit = 1, TwoStopBits = 2, OneAndHalfStopBits = 3;
inline constexpr std::uint8_t PurgeReceived = 1, PurgeToSend = 2, PurgeBoth = 3;

/// Values of SetControl.
inline constexpr std::uint8_t AskFlowControl = 0, NoFlowControl = 1, XonXoff = 2, HardwareFlowControl = 3,
                              AskBreak = 4, BreakOn = 5, BreakOff = 6, AskDtr = 7, DtrOn = 8, DtrOff = 9,
                              AskRts = 10, RtsOn = 11, RtsOff = 12, AskInboundFlowControl = 13,
                              NoInboundFlowControl = 14, InboundXonXoff = 15, InboundHardwareFlowControl = 16,
                              DcdFlowControl = 17, DtrFlowControl = 18, DsrFlowControl = 19;

/// Bits of NotifyLineState and SetLineStateMask.
inline constexpr std::uint8_t LineTimeOut = 128, LineShiftEmpty = 64, LineHoldingEmpty = 32, LineBreak = 16,
                              LineFraming = 8, LineParityError = 4, LineOverrun = 2, LineDataReady = 1;

/// Bits of NotifyModemState and SetModemStateMask.
inline constexpr std::uint8_t ModemCd = 128, ModemRing = 64, ModemDsr = 32, ModemCts = 16, ModemCdChanged = 8,
                              ModemRingEnded = 4, ModemDsrChanged = 2, ModemCtsChanged = 1;

/// A message as it was received.
struct Message {
  std::uint8_t Number = 0;
  std::span<const std::uint8_t> Value;

  /// The value as one byte; none when it has another length.
  std::optional<std::uint8_t> byte() const;
  /// The value as four bytes, the highest first; none when it has another length.
  std::optional<std::uint32_t> number() const;
};

/// None for an empty subnegotiation.
std::optional<Message> messageOf(std::span<const std::uint8_t> content);

void addMessage(telnet::Bytes& out, std::uint8_t number, std::span<const std::uint8_t> value);
void addByteMessage(telnet::Bytes& out, std::uint8_t number, std::uint8_t value);
void addNumberMessage(telnet::Bytes& out, std::uint8_t number, std::uint32_t value);

std::uint8_t codeOf(LineParity parity);
std::uint8_t codeOf(LineStopBits stopBits);
/// None for a value that is not in the list above.
std::optional<LineParity> parityOf(std::uint8_t code);
std::optional<LineStopBits> stopBitsOf(std::uint8_t code);

/// The lines of a modem state, without what it says of changes.
ModemLines linesOf(std::uint8_t modemState);
std::uint8_t modemStateOf(const ModemLines& lines);

}  // namespace hy_wristlog::platform::com_port
