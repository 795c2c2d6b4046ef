// SPDX-License-Identifier: MIT

#include "rfc2217/telnet.h"

#include <algorithm>

namespace vt63x::rfc2217 {
namespace {

// RFC 854, "TELNET COMMAND STRUCTURE".
constexpr std::uint8_t kTextEnd = 240;
constexpr std::uint8_t kTextBegin = 250;
constexpr std::uint8_t kCommandByte = 255;

void Append(std::string& out, std::uint8_t byte) { out.push_back(static_cast<char>(byte)); }

}  // namespace

void AppendData(std::string& out, Bytes data) {
  for (const std::uint8_t byte : data) {
    if (byte == kCommandByte) Append(out, byte);
    Append(out, byte);
  }
}

void AppendNegotiation(std::string& out, Negotiation what, std::uint8_t option) {
  for (const std::uint8_t byte : {kCommandByte, static_cast<std::uint8_t>(what), option}) {
    Append(out, byte);
  }
}

void AppendComPort(std::string& out, std::uint8_t command, Bytes value) {
  for (const std::uint8_t byte : {kCommandByte, kTextBegin, kOptionComPort, command}) {
    Append(out, byte);
  }
  AppendData(out, value);
  Append(out, kCommandByte);
  Append(out, kTextEnd);
}

void AppendComPort(std::string& out, std::uint8_t command, std::uint8_t value) {
  AppendComPort(out, command, Bytes(&value, 1));
}

void AppendBaudRate(std::string& out, std::uint8_t command, std::uint32_t bits_per_second) {
  std::array<std::uint8_t, 4> value{};
  for (std::size_t i = 0; i < value.size(); ++i) {
    value[i] = static_cast<std::uint8_t>(bits_per_second >> (24 - 8 * i));
  }
  AppendComPort(out, command, value);
}

std::uint32_t BaudRateOf(Bytes value) {
  if (value.size() != 4) return 0;
  std::uint32_t rate = 0;
  for (const std::uint8_t byte : value) rate = rate << 8 | byte;
  return rate;
}

void Decoder::Take(Bytes bytes, Listener& listener) {
  while (!bytes.empty()) {
    if (state_ == State::kData) {
      const auto end = std::find(bytes.begin(), bytes.end(), kCommandByte);
      const auto count = static_cast<std::size_t>(end - bytes.begin());
      if (count > 0) listener.OnData(bytes.first(count));
      bytes = bytes.subspan(count);
      if (bytes.empty()) return;
    }
    const std::uint8_t byte = bytes.front();
    switch (state_) {
      case State::kData:
        state_ = State::kCommand;
        break;
      case State::kCommand:
        // The second of two stands for one byte of data.
        if (byte == kCommandByte) listener.OnData(bytes.first(1));
        TakeCommand(byte);
        break;
      case State::kOption:
        state_ = State::kData;
        listener.OnNegotiation(negotiation_, byte);
        break;
      case State::kText:
        if (byte == kCommandByte) {
          state_ = State::kTextCommand;
        } else {
          AddToText(byte);
        }
        break;
      case State::kTextCommand:
        TakeTextCommand(byte, listener);
        break;
    }
    bytes = bytes.subspan(1);
  }
}

void Decoder::TakeCommand(std::uint8_t byte) {
  state_ = State::kData;
  if (byte == kTextBegin) {
    state_ = State::kText;
    length_ = 0;
  } else if (byte > kTextBegin && byte < kCommandByte) {
    state_ = State::kOption;
    negotiation_ = static_cast<Negotiation>(byte);
  }
}

void Decoder::TakeTextCommand(std::uint8_t byte, Listener& listener) {
  if (byte == kCommandByte) {
    state_ = State::kText;
    AddToText(byte);
    return;
  }
  // Anything else ends the text, though only kTextEnd should.
  state_ = State::kData;
  if (byte != kTextEnd || length_ < 2 || length_ > kMaxText || text_[0] != kOptionComPort) return;
  listener.OnComPort(text_[1], Bytes(text_).subspan(2, length_ - 2));
}

void Decoder::AddToText(std::uint8_t byte) {
  if (length_ < kMaxText) text_[length_] = byte;
  length_ = std::min(length_ + 1, kMaxText + 1);
}

}  // namespace vt63x::rfc2217
