// SPDX-License-Identifier: MIT

#include "simulator/field_command.h"

#include <gtest/gtest.h>

#include <tuple>

#include "test_reader.h"

namespace vt63x {
namespace {

TEST(FieldCommand, CardsComeAndGo) {
  ReaderBench bench;
  auto& [chip, field, reader] = bench;
  EXPECT_EQ(RunFieldCommand(field, "card add 01020304"), "ok\n");
  EXPECT_EQ(RunFieldCommand(field, "  card add\t01020304050607:plain \r"), "ok\n");
  ASSERT_EQ(reader.Activate(), Bytes({1, 2, 3, 4}));  // 1 wins over 0 in the first bit
  EXPECT_TRUE(reader.Halt());
  ASSERT_EQ(reader.Activate(0x52), Bytes({1, 2, 3, 4}));
  EXPECT_EQ(RunFieldCommand(field, "field list"),
            "01020304 ostrel64 active*\n01020304050607 plain idle\nok\n");
  EXPECT_EQ(RunFieldCommand(field, "card remove 01020304"), "ok\n");
  EXPECT_TRUE(reader.Transceive({0x30, 0x00}).timeout);
  EXPECT_EQ(reader.Activate(), Bytes({0x88, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(RunFieldCommand(field, "card add 01020304"), "ok\n");
}

TEST(FieldCommand, FaultsAreSetAndTakenBack) {
  ReaderBench bench({"01020304"});
  auto& [chip, field, reader] = bench;
  EXPECT_EQ(RunFieldCommand(field, "air lost@1+1"), "ok\n");
  EXPECT_TRUE(reader.Request().timeout);
  reader.Request();  // back to idle
  EXPECT_EQ(RunFieldCommand(field, "air short"), "ok\n");
  EXPECT_EQ(reader.Request().bytes, Bytes({0x04}));
  reader.Request();
  EXPECT_EQ(RunFieldCommand(field, "air none"), "ok\n");
  EXPECT_TRUE(reader.Request().Is({0x04, 0x00}));
}

TEST(FieldCommand, WrongLinesAreRefusedAndChangeNothing) {
  Field field;
  field.Add(CardNamed("01020304"));
  using Case = std::tuple<const char*, const char*>;
  for (const auto& [line, reason] : {
           Case{"help", "unknown command; known are 'card add'"},
           Case{"card", "unknown command"},
           Case{"card addition", "unknown command"},
           Case{"card add", "has 0 digits"},
           Case{"card add 01020304", "already"},
           Case{"card add 0102", "has 4 digits"},
           Case{"card add 05060708=/no/such/folder/file", "no such directory"},
           Case{"card remove 05060708", "not in the field"},
           Case{"card remove", "has 0 digits"},
           Case{"field list all", "nothing goes behind"},
           Case{"air", "unknown fault"},
           Case{"air crc@x", "first answer"},
       }) {
    const std::string reply = RunFieldCommand(field, line);
    EXPECT_TRUE(reply.starts_with("error: ") && reply.ends_with("\n")) << reply;
    EXPECT_NE(reply.find(reason), std::string::npos) << reply;
    EXPECT_EQ(field.cards().size(), 1u);
  }
  EXPECT_EQ(RunFieldCommand(field, "  "), "");
}

}  // namespace
}  // namespace vt63x
