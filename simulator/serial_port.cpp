// SPDX-License-Identifier: MIT

#include "simulator/serial_port.h"

#include <utility>

namespace vt63x {
namespace {

constexpr std::uint8_t kReadFlag = 0x80;

// For a counter that one thread alone writes.
void Increment(std::atomic<std::uint64_t>& counter) {
  counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

}  // namespace

ChipSerialPort::ChipSerialPort(Chip& chip, std::vector<Fault> faults)
    : chip_(chip), faults_(std::move(faults)) {}

LineAnswer ChipSerialPort::OnByte(std::uint8_t byte) {
  LineAnswer answer;
  answer.rate = BitRate();
  if (!write_address_ && (byte & kReadFlag) == 0) {
    write_address_ = byte;
    return answer;
  }
  const Access access = Carry(byte);
  answer.access = access;
  answer.bytes[0] = access.is_write ? access.address : access.value;
  answer.count = 1;
  faults_.Apply(access, answer);
  return answer;
}

// Carries out the access that `byte` completes.
Access ChipSerialPort::Carry(std::uint8_t byte) {
  Access access;
  access.is_write = write_address_.has_value();
  if (access.is_write) {
    access.address = *write_address_;
    access.value = byte;
    write_address_.reset();
    chip_.Write(access.address, byte);
    Increment(writes_);
  } else {
    access.address = byte & static_cast<std::uint8_t>(~kReadFlag);
    access.value = chip_.Read(access.address);
    Increment(reads_);
  }
  access.number = reads() + writes();
  return access;
}

}  // namespace vt63x
