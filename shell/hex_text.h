// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_HEX_TEXT_H
#define VT63X_SHELL_HEX_TEXT_H

// Texts that users type and read, and the bytes they stand for.

#include <cstdint>

namespace vt63x {

// A register's address or value as typed, at most 9 characters: returns 0 to 255 and rewrites the
// text as two capital digits. Characters outside '0' to 'F' (the seven between '9' and 'A' pass)
// become '0'; a larger value loses all but its low 8 bits. Either sets *error to 1. Conversion
// stops at the first character that is no digit; an empty text is 0. `text` has room for 3.
std::uint8_t HexTextToByte(char* text, std::uint8_t* error);

// Eight characters '0' or '1', bit 7 first, and a terminator.
void ByteToBinaryText(std::uint8_t byte, char* text);

// The at most two hexadecimal digits at `text`; 0 when there is none.
std::uint8_t HexPairToByte(const char* text);

// 2 * count capital digits and a terminator.
void BytesToHexText(char* text, const std::uint8_t* bytes, int count);

}  // namespace vt63x

#endif
