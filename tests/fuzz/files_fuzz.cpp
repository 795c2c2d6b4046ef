// SPDX-License-Identifier: MIT

// Files of cards and the configuration file with any content, in the current directory. A card with
// any memory is then used.

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "shell/card_reader.h"
#include "shell/component_stack.h"
#include "shell/configuration_file.h"
#include "simulator/block_card.h"
#include "simulator/card_options.h"
#include "simulator/page_card.h"
#include "simulator/simulated_bus.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

void Put(const char* name, std::span<const std::uint8_t> bytes) {
  std::ofstream(name, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

void ReadAnyConfiguration(std::span<const std::uint8_t> bytes) {
  Put("wps_start.cfg", bytes);
  ProgramState program;
  ReadConfiguration(program.state);
  Require(program.state.port_index < std::size(program.state.port_names), "there is such a port");
}

void UseCard(std::unique_ptr<Card> card) {
  Chip chip;
  chip.field().Add(std::move(card));
  SimulatedBus bus(chip);
  ProgramState program;
  const ComponentStack stack(program.state, &bus);
  CardReader reader(&program.action, {[](const char*) {}, [](HFLSTATUS) {}, [](HFLSTATUS) {}});
  constexpr std::uint8_t kKey[] = {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4};
  std::uint8_t data[16] = {};
  reader.SetUp();
  reader.block = 4;
  reader.Request(REQUEST_WUPA);
  reader.AnticollisionSelect();
  reader.Authenticate(0x60, kKey);
  for (const std::uint8_t command : {0xC0, 0xB0}) reader.Value(command, 7);
  reader.Read(data);
  reader.Write(data);
  reader.WritePage(data);
}

std::span<const std::uint8_t> MemoryOf(const Card& card) {
  const auto* const block_card = dynamic_cast<const BlockCard*>(&card);
  return block_card != nullptr ? block_card->memory()
                               : dynamic_cast<const PageCard&>(card).memory();
}

// A card whose file holds `bytes`, or what it was delivered with and `bytes` behind the first 16.
void UseAnyCard(const std::string& name, bool alone, std::span<const std::uint8_t> bytes) {
  std::string error;
  CardOption option = *ParseCardOption(name, error);
  const std::unique_ptr<Card> fresh = MakeCard(option, error);
  std::vector<std::uint8_t> content(bytes.begin(), bytes.end());
  if (!alone) {
    content.assign(MemoryOf(*fresh).begin(), MemoryOf(*fresh).end());
    std::copy_n(bytes.begin(), std::min(bytes.size(), content.size() - 16), content.begin() + 16);
  }
  Put("card.bin", content);
  option.file = "card.bin";
  std::unique_ptr<Card> card = MakeCard(option, error);
  Require(card != nullptr || (alone && !error.empty()), "a card's file is taken or refused");
  if (card != nullptr) UseCard(std::move(card));
}

}  // namespace
}  // namespace vt63x

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  constexpr const char* kCards[] = {"01020304", "01020304:ostrel256", "01020304:ostrel-page"};
  FuzzInput input(data, size);
  const std::uint8_t what = input.Byte();
  const std::size_t kind = what & 3;
  if (kind == std::size(kCards)) {
    ReadAnyConfiguration(input.rest());
  } else {
    UseAnyCard(kCards[kind], (what & 4) != 0, input.rest());
  }
  return 0;
}
