// SPDX-License-Identifier: MIT

#include "shell/hex_text.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace vt63x {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

}  // namespace

std::uint8_t HexTextToByte(char* text, std::uint8_t* error) {
  for (char* c = text; *c != '\0'; ++c) {
    if (*c >= '0' && *c <= 'F') continue;
    *c = '0';
    *error = 1;
  }
  // At most nine digits; above 32 bits signed the number saturates.
  const unsigned long long value = std::min(std::strtoull(text, nullptr, 16), 0x7FFF'FFFFULL);
  if (value > 0xFF) *error = 1;
  const auto byte = static_cast<std::uint8_t>(value & 0xFF);
  BytesToHexText(text, &byte, 1);
  return byte;
}

void ByteToBinaryText(std::uint8_t byte, char* text) {
  for (int bit = 7; bit >= 0; --bit) *text++ = ((byte >> bit) & 1) != 0 ? '1' : '0';
  *text = '\0';
}

std::uint8_t HexPairToByte(const char* text) {
  std::uint8_t byte = 0;
  std::from_chars(text, text + strnlen(text, 2), byte, 16);  // knows neither signs nor blanks
  return byte;
}

void BytesToHexText(char* text, const std::uint8_t* bytes, int count) {
  for (int i = 0; i < count; ++i) {
    *text++ = kDigits[bytes[i] >> 4];
    *text++ = kDigits[bytes[i] & 0x0F];
  }
  *text = '\0';
}

}  // namespace vt63x
