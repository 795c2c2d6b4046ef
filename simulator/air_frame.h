// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_AIR_FRAME_H
#define VT63X_SIMULATOR_AIR_FRAME_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vt63x {

// One frame between the chip and the cards: up to kMaxBytes bytes, lowest bit first, of which the
// last may be incomplete. Parity bits are not kept one by one: they are all right, or they are not.
struct AirFrame {
  static constexpr std::size_t kMaxBytes = 66;  // the chip's FIFO and a CRC

  std::array<std::uint8_t, kMaxBytes> bytes{};  // bits from bit_count on are 0
  std::size_t bit_count = 0;
  bool parity_ok = true;
  bool has_crc = false;     // its sender ended it with a CRC
  bool enciphered = false;  // nothing is enciphered: marks the frames that would be

  // Bytes and bits that find no room are left out.
  static AirFrame OfBytes(std::span<const std::uint8_t> data);
  // The same, with a CRC_A behind.
  static AirFrame WithCrcA(std::span<const std::uint8_t> data);
  // The low `bit_count` bits of a byte, 1 to 8.
  static AirFrame OfBits(std::uint8_t byte, std::size_t bit_count);

  bool Bit(std::size_t index) const { return ((bytes[index / 8] >> (index % 8)) & 1) != 0; }
  void AppendBit(bool bit);
  void AppendByte(std::uint8_t byte);
  void AppendCrcA();
  // Keeps the first `new_bit_count` bits, or all when there are fewer.
  void Truncate(std::size_t new_bit_count);

  bool IsWhole() const { return bit_count % 8 == 0; }
  std::size_t ByteCount() const { return (bit_count + 7) / 8; }  // an incomplete one counts
  std::span<const std::uint8_t> Bytes() const { return {bytes.data(), ByteCount()}; }
  // Only when EndsWithCrcA.
  std::span<const std::uint8_t> BytesBeforeCrc() const { return Bytes().first(ByteCount() - 2); }
  // Whether these are complete bytes of which the last two are the CRC_A of those before.
  bool EndsWithCrcA() const;
};

}  // namespace vt63x

#endif
