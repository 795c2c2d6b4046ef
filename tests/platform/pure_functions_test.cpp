// Names, settings, time-outs and error numbers: values in, values out.

#include <gtest/gtest.h>

#include <cerrno>

#include "platform/kernel/errno_map.h"
#include "platform/kernel/port_name.h"
#include "platform/kernel/timeout_plan.h"
#include "platform/kernel/tty_settings.h"

namespace vt63x::kernel {
namespace {

using std::chrono::milliseconds;

TEST(PortName, NumberOfEveryFormAndOfNoOther) {
  const std::pair<const char*, int> cases[] = {
      {"COM1:", 1},  {"COM1", 1},   {"COM9:", 9}, {"COM16:", 16}, {"com3", 3},  {"COM0:", 0},
      {"COM17:", 0}, {"COM01", 0},  {"COM", 0},   {"COM:", 0},    {"", 0},      {":", 0},
      {"COM1::", 0}, {"COM1 :", 0}, {"LPT1", 0},  {"XCOM1", 0},   {"COM1x", 0}, {"/dev/ttyS0", 0},
  };
  for (const auto& [name, number] : cases) EXPECT_EQ(PortNumber(name), number) << name;
}

TEST(PortName, DeviceIsTheVariableOrTheUartOneBelow) {
  EXPECT_EQ(PortVariable(16), "VT63X_COM16");
  EXPECT_EQ(PortDevice(1, nullptr), "/dev/ttyS0");
  EXPECT_EQ(PortDevice(16, ""), "/dev/ttyS15");
  EXPECT_EQ(PortDevice(3, "/dev/ttyUSB0"), "/dev/ttyUSB0");
}

TEST(ErrnoMap, DeviceThatDoesNotAnswerIsAbsentAtOpeningAndGoneInUse) {
  EXPECT_EQ(OpenError(EIO), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(UseError(EIO), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(OpenError(EBUSY), ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenError(EWOULDBLOCK), ERROR_ACCESS_DENIED);
  EXPECT_EQ(OpenError(ENXIO), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(UseError(ENXIO), ERROR_DEVICE_NOT_CONNECTED);
  EXPECT_EQ(UseError(EDOM), ERROR_GEN_FAILURE);
}

TEST(TimeoutPlan, ReadFormsAndTheirNeighbours) {
  struct Case {
    DWORD interval, multiplier, constant;
    bool supported;
    DWORD wanted;  // for a read of 3 bytes
    std::int64_t limit_ms;
  };
  constexpr std::int64_t kNone = -1;
  const Case cases[] = {
      {MAXDWORD, 0, 0, true, 0, 0},
      {MAXDWORD, MAXDWORD, 1, true, 1, 1},
      {MAXDWORD, MAXDWORD, 500, true, 1, 500},
      {MAXDWORD, MAXDWORD, MAXDWORD - 1, true, 1, MAXDWORD - 1},
      {MAXDWORD, MAXDWORD, MAXDWORD, false, 0, 0},
      {MAXDWORD, MAXDWORD, 0, false, 0, 0},
      {MAXDWORD, 0, 500, false, 0, 0},
      {MAXDWORD, 5, 500, false, 0, 0},
      {0, 0, 0, true, 3, kNone},
      {0, 10, 7, true, 3, 37},
      {0, 0, 7, true, 3, 7},
      {0, MAXDWORD, MAXDWORD, true, 3, MAXDWORD},  // cut to the longest limit
      {1, 0, 0, false, 0, 0},
      {MAXDWORD - 1, MAXDWORD, 500, false, 0, 0},
  };
  for (const Case& c : cases) {
    const COMMTIMEOUTS timeouts{c.interval, c.multiplier, c.constant, 0, 0};
    SCOPED_TRACE(testing::Message() << c.interval << " " << c.multiplier << " " << c.constant);
    EXPECT_EQ(IsSupported(timeouts), c.supported);
    if (!c.supported) continue;
    const TransferPlan plan = PlanRead(timeouts, 3);
    EXPECT_EQ(plan.wanted, c.wanted);
    EXPECT_EQ(plan.limit ? plan.limit->count() : kNone, c.limit_ms);
    EXPECT_EQ(PlanRead(timeouts, 0).wanted, 0u);
  }
}

TEST(TimeoutPlan, WriteAlwaysHasALimit) {
  EXPECT_EQ(PlanWrite({0, 0, 0, 0, 0}, 9).limit, milliseconds(5000));
  EXPECT_EQ(PlanWrite({0, 0, 0, 2, 5}, 9).limit, milliseconds(23));
  EXPECT_EQ(PlanWrite({0, 0, 0, MAXDWORD, MAXDWORD}, MAXDWORD).limit, kLongestLimit);
  EXPECT_EQ(PlanWrite({0, 0, 0, 0, 0}, 9).wanted, 9u);
}

TEST(TtySettings, EveryOtherFieldOfTheSettingsIsRefused) {
  DCB good{};
  good.DCBlength = sizeof(DCB);
  good.BaudRate = 9600;
  good.fBinary = 1;
  good.ByteSize = 8;
  ASSERT_TRUE(IsSupported(good));

  struct Case {
    const char* name;
    void (*spoil)(DCB&);
  };
  const Case cases[] = {
      {"DCBlength", [](DCB& d) { d.DCBlength = 27; }},
      {"rate 0", [](DCB& d) { d.BaudRate = 0; }},
      {"rate too high", [](DCB& d) { d.BaudRate = kHighestBitRate + 1; }},
      {"fBinary", [](DCB& d) { d.fBinary = 0; }},
      {"fParity", [](DCB& d) { d.fParity = 1; }},
      {"fOutxCtsFlow", [](DCB& d) { d.fOutxCtsFlow = 1; }},
      {"fOutxDsrFlow", [](DCB& d) { d.fOutxDsrFlow = 1; }},
      {"fDtrControl", [](DCB& d) { d.fDtrControl = 1; }},
      {"fDsrSensitivity", [](DCB& d) { d.fDsrSensitivity = 1; }},
      {"fTXContinueOnXoff", [](DCB& d) { d.fTXContinueOnXoff = 1; }},
      {"fOutX", [](DCB& d) { d.fOutX = 1; }},
      {"fInX", [](DCB& d) { d.fInX = 1; }},
      {"fErrorChar", [](DCB& d) { d.fErrorChar = 1; }},
      {"fNull", [](DCB& d) { d.fNull = 1; }},
      {"fRtsControl", [](DCB& d) { d.fRtsControl = 2; }},
      {"fAbortOnError", [](DCB& d) { d.fAbortOnError = 1; }},
      {"fDummy2", [](DCB& d) { d.fDummy2 = 1; }},
      {"wReserved", [](DCB& d) { d.wReserved = 1; }},
      {"XonLim", [](DCB& d) { d.XonLim = 1; }},
      {"XoffLim", [](DCB& d) { d.XoffLim = 1; }},
      {"ByteSize", [](DCB& d) { d.ByteSize = 7; }},
      {"Parity", [](DCB& d) { d.Parity = 2; }},
      {"StopBits", [](DCB& d) { d.StopBits = 2; }},
      {"XonChar", [](DCB& d) { d.XonChar = 17; }},
      {"XoffChar", [](DCB& d) { d.XoffChar = 19; }},
      {"ErrorChar", [](DCB& d) { d.ErrorChar = 1; }},
      {"EofChar", [](DCB& d) { d.EofChar = 26; }},
      {"EvtChar", [](DCB& d) { d.EvtChar = 10; }},
      {"wReserved1", [](DCB& d) { d.wReserved1 = 1; }},
  };
  for (const Case& c : cases) {
    DCB spoilt = good;
    c.spoil(spoilt);
    EXPECT_FALSE(IsSupported(spoilt)) << c.name;
  }
  good.BaudRate = kHighestBitRate;
  EXPECT_TRUE(IsSupported(good));
}

TEST(TtySettings, RawKeepsTheRateAndNothingElse) {
  termios2 settings{};
  settings.c_iflag = IXON | ICRNL | ISTRIP;
  settings.c_oflag = OPOST;
  settings.c_lflag = ICANON | ECHO | ISIG;
  settings.c_cflag = B57600 | (B57600 << IBSHIFT) | CS7 | PARENB | CSTOPB | CRTSCTS | HUPCL;
  MakeRaw(&settings);
  EXPECT_EQ(settings.c_iflag, 0u);
  EXPECT_EQ(settings.c_oflag, 0u);
  EXPECT_EQ(settings.c_lflag, 0u);
  EXPECT_EQ(settings.c_cflag, tcflag_t{B57600 | (B57600 << IBSHIFT) | CS8 | CREAD | CLOCAL});
  EXPECT_EQ(settings.c_cc[VMIN], 0);
  EXPECT_EQ(settings.c_cc[VTIME], 1);
}

TEST(TtySettings, RateIsAConstantWhereThereIsOneAndANumberElsewhere) {
  const std::pair<DWORD, tcflag_t> cases[] = {
      {9600, B9600},     {14400, BOTHER},  {19200, B19200},  {38400, B38400},     {57600, B57600},
      {115200, B115200}, {128000, BOTHER}, {256000, BOTHER}, {4000000, B4000000}, {1, BOTHER},
  };
  for (const auto& [rate, constant] : cases) {
    termios2 settings{};
    settings.c_cflag = B38400 | (B38400 << IBSHIFT) | CS8;
    SetBitRate(&settings, rate);
    EXPECT_EQ(settings.c_cflag, constant | (constant << IBSHIFT) | CS8) << rate;
    EXPECT_EQ(settings.c_ospeed, rate);
    EXPECT_EQ(settings.c_ispeed, rate);
  }
}

TEST(TtySettings, RateToleranceEndsAtThreePercent) {
  EXPECT_TRUE(IsCloseTo(9600, 9600));
  EXPECT_TRUE(IsCloseTo(9888, 9600));
  EXPECT_FALSE(IsCloseTo(9889, 9600));
  EXPECT_TRUE(IsCloseTo(9312, 9600));
  EXPECT_FALSE(IsCloseTo(9311, 9600));
  EXPECT_FALSE(IsCloseTo(0, 1));
  EXPECT_FALSE(IsCloseTo(MAXDWORD, 4000000));
}

}  // namespace
}  // namespace vt63x::kernel
