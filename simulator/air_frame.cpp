// SPDX-License-Identifier: MIT

#include "simulator/air_frame.h"

#include "simulator/crc16.h"

namespace vt63x {

AirFrame AirFrame::OfBytes(std::span<const std::uint8_t> data) {
  AirFrame frame;
  for (const std::uint8_t byte : data) frame.AppendByte(byte);
  return frame;
}

AirFrame AirFrame::WithCrcA(std::span<const std::uint8_t> data) {
  AirFrame frame = OfBytes(data);
  frame.AppendCrcA();
  return frame;
}

AirFrame AirFrame::OfBits(std::uint8_t byte, std::size_t bit_count) {
  AirFrame frame;
  frame.AppendByte(byte);
  frame.Truncate(bit_count);
  return frame;
}

void AirFrame::AppendBit(bool bit) {
  if (bit_count >= kMaxBytes * 8) return;
  if (bit) {
    const unsigned mask = 1U << (bit_count % 8);
    bytes[bit_count / 8] = static_cast<std::uint8_t>(bytes[bit_count / 8] | mask);
  }
  ++bit_count;
}

void AirFrame::AppendByte(std::uint8_t byte) {
  for (unsigned bit = 0; bit < 8; ++bit) AppendBit(((byte >> bit) & 1) != 0);
}

void AirFrame::AppendCrcA() {
  const std::uint16_t crc = CrcA(Bytes());
  AppendByte(static_cast<std::uint8_t>(crc & 0xFF));
  AppendByte(static_cast<std::uint8_t>(crc >> 8));
  has_crc = true;
}

void AirFrame::Truncate(std::size_t new_bit_count) {
  while (bit_count > new_bit_count) {
    --bit_count;
    const unsigned mask = 1U << (bit_count % 8);
    bytes[bit_count / 8] = static_cast<std::uint8_t>(bytes[bit_count / 8] & ~mask);
  }
}

bool AirFrame::EndsWithCrcA() const {
  if (!IsWhole() || ByteCount() < 2) return false;
  const std::span<const std::uint8_t> all = Bytes();
  const std::uint16_t crc = CrcA(BytesBeforeCrc());
  return all[all.size() - 2] == (crc & 0xFF) && all[all.size() - 1] == crc >> 8;
}

}  // namespace vt63x
