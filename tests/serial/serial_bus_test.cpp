// SPDX-License-Identifier: MIT

#include "serial/serial_bus.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/serial/serial_line.h"

namespace vt63x {
namespace {

double ElapsedMs(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

TEST(SerialBusTest, WithoutAPortBothOperationsFailAndTouchNothing) {
  SerialBusWrapper bus;
  bus.Init(SerialBusOpen);
  SerialBusCore* const garbage = reinterpret_cast<SerialBusCore*>(0x10);
  bus_byte_param param{0x55, garbage};
  EXPECT_EQ(bus.WriteByte(&param), HFL_LINK_FAILED);
  EXPECT_EQ(bus.ReadByte(&param), HFL_LINK_FAILED);
  EXPECT_EQ(param.data, 0x55);
  EXPECT_EQ(param.self, garbage);
}

TEST(SerialBusTest, ReadGivesUpAfterHalfASecondNotBefore) {
  SerialLine line;
  OpenPort(&line.action);
  bus_byte_param param{0x55, nullptr};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(line.bus.ReadByte(&param), HFL_LINK_FAILED);
  EXPECT_GE(ElapsedMs(start), 499.0);
  EXPECT_LT(ElapsedMs(start), 20'000.0);
  EXPECT_EQ(param.data, 0x55);
}

TEST(SerialBusTest, BytesGoOutInOrderAndAnswersWaitInTheDriver) {
  SerialLine line;
  OpenPort(&line.action);
  for (const int byte : {0x2A, 0x17, 0xAA, 0xB7}) {
    bus_byte_param param{static_cast<std::uint8_t>(byte), nullptr};
    EXPECT_EQ(line.bus.WriteByte(&param), HFL_SUCCESS);
  }
  for (const int expected : {0x2A, 0x17, 0x91}) {
    bus_byte_param param{0, nullptr};
    EXPECT_EQ(line.bus.ReadByte(&param), HFL_SUCCESS);
    EXPECT_EQ(param.data, expected);
  }
}

TEST(SerialBusTest, LineThatGoesAwayFailsEveryAccessAtOnce) {
  SerialLine line(Misbehaving("hang-up@2"));
  OpenPort(&line.action);
  std::uint8_t data = 0;
  EXPECT_EQ(line.Read(0x37, data), HFL_SUCCESS);
  EXPECT_EQ(line.Read(0x37, data), HFL_LINK_FAILED);
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(line.Read(0x37, data), HFL_LINK_FAILED);
  EXPECT_LT(ElapsedMs(start), 20'000.0) << "a time-out each would take 500 s";
}

}  // namespace
}  // namespace vt63x
