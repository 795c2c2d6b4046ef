// SPDX-License-Identifier: MIT

// The simulated chip with cards in its field, on a line that carries any bytes at any rate.

#include "simulator/card_options.h"
#include "simulator/serial_port.h"
#include "simulator/uart.h"
#include "tests/fuzz/fuzz_input.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  FuzzInput input(data, size);
  Chip chip;
  std::string error;
  for (const char* card : {"5A3C1E78", "04A1B2C3D4E5F6:ostrel-page", "5A3C1E70:plain"}) {
    chip.field().Add(MakeCard(*ParseCardOption(card, error), error), error);
  }
  ChipSerialPort port(chip);
  const std::uint32_t host_rates[] = {port.BitRate(), 57600, 115200, 0};
  const std::uint32_t host_rate = host_rates[input.Byte() & 3];
  for (const std::uint8_t byte : input.rest()) {
    const auto heard = HearByte(byte, host_rate, port.BitRate());
    if (!heard) continue;
    const LineAnswer answer = port.OnByte(*heard);
    Require(answer.count <= LineAnswer::kMaxBytes && answer.rate != 0, "an answer is one");
  }
  return 0;
}
