#include "simulator/faults.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/serial_port.h"

namespace vt63x {
namespace {

using Bytes = std::vector<std::uint8_t>;

Fault Parsed(const std::string& text) {
  std::string error;
  const auto fault = ParseFault(text, error);
  EXPECT_TRUE(fault) << text << ": " << error;
  return fault.value_or(Fault{});
}

TEST(FaultGrammar, TextsWithinTheLimitsAreTaken) {
  struct Case {
    const char* text;
    FaultKind kind;
    std::uint32_t value;
    std::uint64_t first, count;
  };
  for (const Case& c : {
           Case{"silence", FaultKind::kSilence, 0, 1, FaultRange::kAll},
           Case{"wrong-echo@1", FaultKind::kWrongEcho, 0, 1, FaultRange::kAll},
           Case{"silence@7+1", FaultKind::kSilence, 0, 7, 1},
           Case{"delay=1", FaultKind::kDelay, 1, 1, FaultRange::kAll},
           Case{"delay=60000@2+3", FaultKind::kDelay, 60000, 2, 3},
           Case{"rubbish", FaultKind::kRubbish, 1, 1, FaultRange::kAll},
           Case{"rubbish=2147483646@9", FaultKind::kRubbish, 2147483646, 9, FaultRange::kAll},
           Case{"hang-up@18446744073709551615+1", FaultKind::kHangUp, 0, FaultRange::kAll, 1},
       }) {
    const Fault fault = Parsed(c.text);
    EXPECT_EQ(fault.kind, c.kind) << c.text;
    EXPECT_EQ(fault.value, c.value) << c.text;
    EXPECT_EQ(fault.accesses.first, c.first) << c.text;
    EXPECT_EQ(fault.accesses.count, c.count) << c.text;
  }
}

TEST(FaultGrammar, TextsBeyondTheLimitsAreRefusedWithAReason) {
  struct Case {
    const char* text;
    const char* reason;
  };
  for (const Case& c : {
           Case{"", "unknown fault"},
           Case{"Silence", "unknown fault"},
           Case{"silence ", "unknown fault"},
           Case{"@1", "unknown fault"},
           Case{"silence=1", "takes no value"},
           Case{"silence=", "takes no value"},
           Case{"delay", "needs a number"},
           Case{"delay=", "needs a number"},
           Case{"delay=0", "needs a number"},
           Case{"delay=60001", "needs a number"},
           Case{"delay=-5", "needs a number"},
           Case{"delay=5ms", "needs a number"},
           Case{"delay@3=5", "needs a number"},
           Case{"rubbish=0", "needs a number"},
           Case{"rubbish=2147483647", "needs a number"},
           Case{"silence@", "first access"},
           Case{"silence@0", "first access"},
           Case{"silence@x", "first access"},
           Case{"silence@18446744073709551616", "first access"},
           Case{"silence@+2", "first access"},
           Case{"silence@1+", "count"},
           Case{"silence@1+0", "count"},
           Case{"silence@1+2+3", "count"},
           Case{"silence@1+-1", "count"},
       }) {
    std::string error;
    EXPECT_FALSE(ParseFault(c.text, error)) << c.text;
    EXPECT_NE(error.find(c.reason), std::string::npos) << c.text << ": " << error;
  }
}

TEST(FaultRange, CoversExactlyTheAccessesNamed) {
  const auto concerned = [](const char* text) {
    const Fault fault = Parsed(text);
    std::string marks;
    for (std::uint64_t access = 1; access <= 6; ++access) {
      marks += fault.accesses.Concerns(access) ? 'x' : '.';
    }
    return marks;
  };
  EXPECT_EQ(concerned("silence"), "xxxxxx");
  EXPECT_EQ(concerned("silence@3"), "..xxxx");
  EXPECT_EQ(concerned("silence@3+2"), "..xx..");
  EXPECT_EQ(concerned("silence@6+18446744073709551615"), ".....x");
}

// A chip with faults, asked through its serial port.
class FaultyChip {
 public:
  explicit FaultyChip(const std::vector<std::string>& texts) : port_(chip, Parse(texts)) {}

  LineAnswer Read(std::uint8_t address) {
    return port_.OnByte(static_cast<std::uint8_t>(address | 0x80));
  }
  LineAnswer Write(std::uint8_t address, std::uint8_t data) {
    port_.OnByte(address);
    return port_.OnByte(data);
  }

  Chip chip;

 private:
  static std::vector<Fault> Parse(const std::vector<std::string>& texts) {
    std::vector<Fault> faults;
    faults.reserve(texts.size());
    for (const std::string& text : texts) faults.push_back(Parsed(text));
    return faults;
  }

  ChipSerialPort port_;
};

Bytes BytesOf(const LineAnswer& answer) {
  return {answer.bytes.begin(), answer.bytes.begin() + static_cast<std::ptrdiff_t>(answer.count)};
}

TEST(Faults, SilentChipStillCarriesTheAccessOut) {
  FaultyChip faulty({"silence@1+1"});
  EXPECT_EQ(BytesOf(faulty.Write(0x15, 0x0F)), Bytes());
  EXPECT_EQ(BytesOf(faulty.Read(0x15)), Bytes({0x0F}));
}

TEST(Faults, WrongEchoConcernsWritesAlone) {
  FaultyChip faulty({"wrong-echo"});
  EXPECT_EQ(BytesOf(faulty.Read(0x37)), Bytes({0x91}));
  const Bytes echo = BytesOf(faulty.Write(0x15, 0x0F));
  ASSERT_EQ(echo.size(), 1u);
  EXPECT_NE(echo[0], 0x15);
  EXPECT_EQ(faulty.chip.Read(0x15), 0x0F);
}

TEST(Faults, DelaysOfOneAccessAddUp) {
  FaultyChip faulty({"delay=20", "delay=5@2"});
  EXPECT_EQ(faulty.Read(0x37).delay_ms, 20u);
  EXPECT_EQ(faulty.Read(0x37).delay_ms, 25u);
}

TEST(Faults, HangUpWinsOverSilenceAndSilenceOverTheRest) {
  FaultyChip faulty({"rubbish", "wrong-echo", "silence@1+2", "hang-up@2"});
  const LineAnswer silent = faulty.Write(0x15, 0x0F);
  EXPECT_EQ(silent.count, 0u);
  EXPECT_FALSE(silent.hang_up);
  const LineAnswer gone = faulty.Read(0x37);
  EXPECT_EQ(gone.count, 0u);
  EXPECT_TRUE(gone.hang_up);
}

TEST(Faults, RubbishAlwaysDiffersStaysWithinTheAnswerAndRepeats) {
  FaultyChip one({"rubbish=5"}), same({"rubbish=5"}), other({"rubbish=6"});
  bool other_differs = false;
  bool shorter = false, longest = false;
  for (int access = 0; access < 2000; ++access) {
    const Bytes answer = BytesOf(one.Read(0x37));
    ASSERT_NE(answer, Bytes({0x91}));
    ASSERT_GE(answer.size(), 1u);
    ASSERT_LE(answer.size(), LineAnswer::kMaxBytes);
    if (answer.size() > 1) {
      ASSERT_TRUE(answer.front() == 0x91 || answer.back() == 0x91);
    }
    shorter = shorter || answer.size() == 1;
    longest = longest || answer.size() == LineAnswer::kMaxBytes;
    EXPECT_EQ(BytesOf(same.Read(0x37)), answer);
    other_differs = other_differs || BytesOf(other.Read(0x37)) != answer;
  }
  EXPECT_TRUE(other_differs);
  EXPECT_TRUE(shorter && longest);
}

}  // namespace
}  // namespace vt63x
