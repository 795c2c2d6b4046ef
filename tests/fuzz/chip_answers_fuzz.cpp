// SPDX-License-Identifier: MIT

// The card operations on a chip that answers anything: each of them ends.

#include <optional>

#include "shell/card_reader.h"
#include "shell/component_stack.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

// 3 levels with 32 passes and a selection each, of 400 polls at most (2 s, two in 10 ms) and an
// answer.
constexpr int kMostAccesses = 50'000;

// Writes are echoed as they should be; what registers hold comes from the input. At its end the
// line is dead, or the last value stays for ever.
class AnyChip final : public SerialBusInterface {
 public:
  explicit AnyChip(FuzzInput& input) : input_(input), dies_((input.Byte() & 1) != 0) {}

  HFLSTATUS WriteByte(bus_byte_param* param) override {
    Require(++accesses < kMostAccesses, "an operation ends");
    const std::uint8_t byte = param->data;
    if (!address_ && (byte & 0x80) == 0) {
      address_ = byte;
      return HFL_SUCCESS;
    }
    if (!address_ && !input_.empty()) value_ = input_.Byte();
    answer_ = address_.value_or(value_);
    address_.reset();
    return HFL_SUCCESS;
  }
  HFLSTATUS ReadByte(bus_byte_param* param) override {
    if (dies_ && input_.empty()) return HFL_LINK_FAILED;
    param->data = answer_;
    return HFL_SUCCESS;
  }

  int accesses = 0;

 private:
  FuzzInput& input_;
  const bool dies_;
  std::optional<std::uint8_t> address_;  // of a write whose data is still to come
  std::uint8_t value_ = 0;
  std::uint8_t answer_ = 0;
};

using Operation = void (*)(CardReader&, std::uint8_t* data);
constexpr Operation kOperations[] = {
    [](CardReader& reader, std::uint8_t*) { reader.SetUp(); },
    [](CardReader& reader, std::uint8_t*) { reader.Request(REQUEST_WUPA); },
    [](CardReader& reader, std::uint8_t*) { reader.AnticollisionSelect(); },
    [](CardReader& reader, std::uint8_t*) { reader.Halt(); },
    [](CardReader& reader, std::uint8_t* data) { reader.Authenticate(0x60, data); },
    [](CardReader& reader, std::uint8_t* data) { reader.Read(data); },
    [](CardReader& reader, std::uint8_t* data) { reader.Write(data); },
    [](CardReader& reader, std::uint8_t* data) { reader.WritePage(data); },
    [](CardReader& reader, std::uint8_t* data) {
      for (const std::uint8_t command : {0xC0, 0xC1, 0xC2, 0xB0}) reader.Value(command, data[0]);
    },
};

}  // namespace
}  // namespace vt63x

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  FuzzInput input(data, size);
  AnyChip chip(input);
  ProgramState program;
  const ComponentStack stack(program.state, &chip);
  CardReader reader(&program.action, {[](const char*) {}, [](HFLSTATUS) {}, [](HFLSTATUS) {}});
  while (!input.empty()) {
    chip.accesses = 0;
    std::uint8_t block[16] = {};
    kOperations[input.Byte() % std::size(kOperations)](reader, block);
  }
  return 0;
}
