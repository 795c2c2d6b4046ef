// SPDX-License-Identifier: MIT

#include "shell/card_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "shell/component_stack.h"
#include "shell/hex_text.h"
#include "simulator/card_options.h"
#include "simulator/chip.h"
#include "simulator/simulated_bus.h"
#include "tests/support/program_state.h"

namespace vt63x {
namespace {

using Texts = std::vector<std::string>;

// A reader on a simulated chip with cards in its field.
class CardReaderTest : public testing::Test {
 protected:
  Card* Add(const std::string& text) {
    std::string error;
    const auto option = ParseCardOption(text, error);
    EXPECT_TRUE(option.has_value()) << text << ": " << error;
    return chip.field().Add(MakeCard(*option, error));
  }
  std::string Identifier() const {
    std::uint8_t identifier[10];
    const int count = IdentifierBytes(reader.uid, reader.bit_count, identifier);
    char text[21];
    BytesToHexText(text, identifier, count);
    return text;
  }

  // Every card that a scan finds, sorted; ends at the first silence.
  Texts Scan() {
    Texts found;
    while (found.size() <= Field::kMaxCards) {
      const HFLSTATUS request = reader.Request(REQUEST_REQA);
      if (request != HFL_SUCCESS && request != HFL_COLLISION) break;
      const HFLSTATUS select = reader.AnticollisionSelect();
      EXPECT_EQ(select, HFL_SUCCESS);
      if (select != HFL_SUCCESS) break;
      found.push_back(Identifier());
      EXPECT_EQ(reader.Halt(), HFL_SUCCESS);
    }
    std::sort(found.begin(), found.end());
    return found;
  }

  bool Select() {
    return reader.Request(REQUEST_WUPA) == HFL_SUCCESS &&
           reader.AnticollisionSelect() == HFL_SUCCESS;
  }
  static constexpr std::uint8_t kKey[6] = {0x3C, 0x9A, 0x5E, 0x71, 0xB2, 0xD4};

  ProgramState program;
  Chip chip;
  SimulatedBus bus{chip};
  ComponentStack stack{program.state, &bus};
  Texts lines;
  std::vector<HFLSTATUS> set_up_failures;
  std::vector<HFLSTATUS> timer_failures;
  CardReader reader{&program.action,
                    {[this](const char* line) { lines.push_back(line); },
                     [this](HFLSTATUS status) { set_up_failures.push_back(status); },
                     [this](HFLSTATUS status) { timer_failures.push_back(status); }}};
};

TEST(IdentifierBytesTest, CascadeTagsAreLeftOut) {
  const std::uint8_t uid[12] = {0x88, 1, 2, 3, 0x88, 4, 5, 6, 7, 8, 9, 10};
  std::uint8_t identifier[10] = {};
  using Case = std::tuple<std::uint8_t, std::vector<std::uint8_t>>;
  for (const auto& [bit_count, bytes] :
       {Case{32, {0x88, 1, 2, 3}}, Case{64, {1, 2, 3, 0x88, 4, 5, 6}},
        Case{96, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}}, Case{0, {}}, Case{40, {}}, Case{128, {}}}) {
    const int count = IdentifierBytes(uid, bit_count, identifier);
    EXPECT_EQ(std::vector<std::uint8_t>(identifier, identifier + count), bytes);
  }
}

TEST_F(CardReaderTest, EachOperationGivesItsLine) {
  // 1000, its complement, 1000 again, and the address 5 four times.
  const std::uint8_t value[16] = {0xE8, 3, 0, 0, 0x17, 0xFC, 0xFF, 0xFF,
                                  0xE8, 3, 0, 0, 5,    0xFA, 5,    0xFA};
  std::uint8_t read[16];
  Add("5A3C1E78");
  ASSERT_EQ(reader.SetUp(), HFL_SUCCESS);
  EXPECT_TRUE(lines.empty());
  reader.block = 5;
  for (const HFLSTATUS status :
       {reader.Request(REQUEST_WUPA), reader.AnticollisionSelect(), reader.Authenticate(0x60, kKey),
        reader.Write(value), reader.Value(0xC1, 25),
        reader.Read(read),  // not before the transfer
        reader.Value(0xC1, 25), reader.Value(0xB0, 0), reader.Value(0xC0, 1024),
        reader.Value(0xB0, 0), reader.Value(0xC2, 0)}) {
    EXPECT_EQ(status, HFL_SUCCESS);
  }
  reader.block = 6;
  EXPECT_EQ(reader.Value(0xB0, 0), HFL_SUCCESS);
  EXPECT_EQ(reader.Read(read), HFL_SUCCESS);
  EXPECT_EQ(reader.Halt(), HFL_SUCCESS);
  EXPECT_EQ(reader.Request(REQUEST_REQA), HFL_NO_ANSWER);
  EXPECT_EQ(reader.Read(read), HFL_NO_ANSWER);  // shows the timer bytes and zeros
  EXPECT_EQ(
      lines,
      (Texts{"Request(0x52, 0x0400) --> Status: 0x0000",
             "Anticollision/Select(0x93, 0x08, 0x5A3C1E78) --> Status: 0x0000",
             "Authentication KeyA(0x05, 0x3C9A5E71B2D4) --> Status: 0x0000",
             "Write(0x05, 0xE803000017FCFFFFE803000005FA05FA) --> Status: 0x0000",
             "Increment(0x05, 25) --> Status: 0x0000",
             "Read(0x05, 0xE803000017FCFFFFE803000005FA05FA) --> Status: 0x0000",
             "Increment(0x05, 25) --> Status: 0x0000", "Transfer(0x05) --> Status: 0x0000",
             "Decrement(0x05, 1024) --> Status: 0x0000", "Transfer(0x05) --> Status: 0x0000",
             "Restore(0x05) --> Status: 0x0000", "Transfer(0x06) --> Status: 0x0000",
             "Read(0x06, 0x01000000FEFFFFFF0100000005FA05FA) --> Status: 0x0000",
             "Halt(0x50, 0x00) --> Status: 0x0000", "Request(0x26, 0x0000) --> Status: 0x0001",
             "Read(0x06, 0xA5023200000000000000000000000000) --> Status: 0x0001"}));
}

TEST_F(CardReaderTest, LinesOfOtherCardsAndOfNone) {
  const std::uint8_t page[4] = {0xDE, 0xAD, 0xBE, 0xEF};
  const auto last_after = [&](HFLSTATUS) { return lines.back(); };
  Add("04A1B2C3D4E5F6071829");
  ASSERT_EQ(reader.SetUp(), HFL_SUCCESS);
  ASSERT_TRUE(Select());
  EXPECT_EQ(lines.back(),
            "Anticollision/Select(0x93, 0x08, 0x04A1B2C3D4E5F6071829) --> Status: 0x0000");
  reader.block = 0x2A;
  EXPECT_EQ(last_after(reader.Authenticate(0x61, kKey)),
            "Authentication KeyB(0x2A, 0x3C9A5E71B2D4) --> Status: 0x0000");
  ASSERT_EQ(reader.SetUp(), HFL_SUCCESS);
  EXPECT_EQ(last_after(reader.AnticollisionSelect()),
            "Anticollision/Select(0x93, 0x00, 0x00000000) --> Status: 0x0001");
  chip.field().Remove(chip.field().cards().front()->identifier());
  Add("04112233445566:ostrel-page");
  ASSERT_TRUE(Select());
  EXPECT_EQ(lines.back(), "Anticollision/Select(0x93, 0x00, 0x04112233445566) --> Status: 0x0000");
  reader.block = 8;
  EXPECT_EQ(last_after(reader.WritePage(page)), "WritePG(0x08, 0xDEADBEEF) --> Status: 0x0000");
}

// The writes of a chip operation, as they crossed the bus: "AA=VV " in hexadecimal.
std::string Writes(const SimulatedBus& bus) {
  std::string writes;
  int address = -1;
  for (const RecordedByte& byte : bus.recording()) {
    if (!byte.to_chip || (address < 0 && (byte.byte & 0x80) != 0)) continue;
    char text[4];
    std::snprintf(text, sizeof text, address < 0 ? "%02X=" : "%02X ", byte.byte);
    writes += text;
    address = address < 0 ? byte.byte : -1;
  }
  return writes;
}

TEST_F(CardReaderTest, SetUpWritesTheChipInThisOrder) {
  bus.StartRecording(10000);
  ASSERT_EQ(reader.SetUp(), HFL_SUCCESS);
  EXPECT_EQ(Writes(bus),
            "01=0F 14=80 "                                                  // soft reset
            "08=00 12=80 13=80 24=26 15=40 18=55 24=26 19=4D 26=59 27=F4 "  // speeds of type A
            "28=3F 29=11 14=83 "                                            // antenna on
            "2A=80 2B=A6 2A=82 2D=E8 2C=03 "                                // timer
            "01=00 ");                                                      // receiver on
}

TEST_F(CardReaderTest, EveryOperationSetsItsOwnTimer) {
  Add("5A3C1E78");
  std::uint8_t data[16] = {};
  using Case = std::pair<const char*, std::function<void()>>;
  for (const auto& [reload, operation] :
       {Case{"2D=03", [&] { reader.Request(REQUEST_REQA); }},
        Case{"2D=03", [&] { reader.AnticollisionSelect(); }},
        Case{"2D=64", [&] { reader.Authenticate(0x60, kKey); }},
        Case{"2D=32", [&] { reader.Read(data); }}, Case{"2D=64", [&] { reader.Write(data); }},
        Case{"2D=64", [&] { reader.WritePage(data); }},
        Case{"2D=64", [&] { reader.Value(0xC0, 1); }}}) {
    ASSERT_EQ(reader.SetUp(), HFL_SUCCESS);
    bus.StartRecording(10000);
    operation();
    EXPECT_TRUE(
        Writes(bus).starts_with("2A=82 2A=82 2B=A5 2A=82 " + std::string(reload) + " 2C=00 "));
  }
  bus.StartRecording(10000);
  reader.Halt();
  EXPECT_TRUE(Writes(bus).starts_with("2D=32 2C=00 ") && Writes(bus).ends_with("2D=E8 2C=03 "));
}

TEST_F(CardReaderTest, RandomFieldsAreFullyEnumerated) {
  std::mt19937 random(20260514);
  ASSERT_EQ(reader.SetUp(), HFL_SUCCESS);
  for (int round = 0; round < 150; ++round) {
    Texts expected;
    // Few different bytes make for many long common beginnings.
    const unsigned alphabet = round % 3 == 0 ? 256 : 3;
    const unsigned count = 1 + random() % 8;
    while (expected.size() < count) {
      std::uint8_t bytes[10];
      for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(1 + random() % alphabet);
      char text[21];
      BytesToHexText(text, bytes, 4 + 3 * static_cast<int>(random() % 3));
      std::string error;
      if (!CardIdentifier::Parse(text, error)) continue;
      if (std::find(expected.begin(), expected.end(), text) != expected.end()) continue;
      expected.push_back(text);
      Add(text);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Scan(), expected) << "round " << round;
    while (!chip.field().cards().empty()) {
      chip.field().Remove(chip.field().cards().front()->identifier());
    }
  }
}

TEST_F(CardReaderTest, SilentChipFailsEveryStepAndTheOperationsRunAllTheSame) {
  SimulatedBus silent(chip, {Fault{FaultKind::kSilence, 0, {}}});
  ComponentStack silent_stack(program.state, &silent);
  EXPECT_EQ(reader.SetUp(), HFL_LINK_FAILED);
  EXPECT_EQ(set_up_failures, std::vector<HFLSTATUS>(7, HFL_LINK_FAILED));
  EXPECT_TRUE(timer_failures.empty());
  EXPECT_EQ(reader.Request(REQUEST_REQA), HFL_LINK_FAILED);
  EXPECT_EQ(timer_failures, std::vector<HFLSTATUS>{HFL_LINK_FAILED});
  EXPECT_EQ(lines, (Texts{"Timeout Setting Errornous(Status: 0x0104",
                          "Request(0x26, 0x0000) --> Status: 0x0104"}));
}

TEST_F(CardReaderTest, HostAt115200GoesThereTogetherWithTheResetChip) {
  program.state.baudrate_index = 2;
  // Without a port the host's side is what the view is told.
  bus.SetHostRate(115200);
  chip.Preset(0x1F, 0x79);
  class FollowingView final : public MainView {
   public:
    explicit FollowingView(SimulatedBus& b) : bus_(b) {}
    void ShowBitRate(const char* text) override {
      bus_.SetHostRate(static_cast<std::uint32_t>(std::stoul(text)));
    }

   private:
    SimulatedBus& bus_;
  } view(bus);
  program.state.view = &view;
  EXPECT_EQ(reader.SetUp(), HFL_SUCCESS);
  EXPECT_EQ(program.state.baudrate_index, 2);
  EXPECT_EQ(chip.SerialRate() / 1000, 116u);
}

}  // namespace
}  // namespace vt63x
