// SPDX-License-Identifier: MIT

#include "platform/window/text_codec.h"

#include <gtest/gtest.h>

#include <random>

namespace vt63x::ui {
namespace {

// A log may hold any bytes; saved after they were shown they are the same.
TEST(TextCodecTest, AnyBytesComeBackAsTheyWere) {
  for (const std::string& text : {
           std::string(""),
           std::string("plain"),
           std::string("gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80"),
           std::string("\xC3"),                  // cut short
           std::string("\xE2\x82"),              // cut short
           std::string("\x80\xBF"),              // no lead
           std::string("\xC0\x80"),              // overlong
           std::string("\xED\xB0\x8A"),          // a surrogate, the one that stands for a line feed
           std::string("\xF4\x90\x80\x80"),      // beyond the last character
           std::string("\xF0\x9F\x98\x80\x80"),  // a stray byte behind a pair of surrogates
           std::string("a\rb\nc\r\nd\n\re\r\r\n"),
           std::string("\xE2\x80\xA9 is the toolkit's line end"),
       }) {
    EXPECT_EQ(ToProgram(FromProgram(text)), text);
  }
  std::mt19937 random(20261123);  // NOLINT: the same every time
  for (int i = 0; i < 2000; ++i) {
    std::string text;
    for (auto k = random() % 24; k > 0; --k) text += static_cast<char>(random() & 0xff);
    EXPECT_EQ(ToProgram(FromProgram(text)), text);
    if (text.find("\xE2\x80\xA9") == std::string::npos) {
      EXPECT_EQ(LinesToProgram(LinesFromProgram(text)), text);
    }
  }
}

TEST(TextCodecTest, LineEndsOfTheProgramAreThoseOfTheScreen) {
  EXPECT_EQ(LinesFromProgram("a\r\nb").count(QChar('\n')), 1);
  EXPECT_EQ(LinesFromProgram("a\nb\rc").count(QChar('\n')), 0);
  EXPECT_EQ(LinesToProgram(LinesFromProgram("a\rb\nc\r\nd\n\re\r\r\n")), "a\rb\nc\r\nd\n\re\r\r\n");
  EXPECT_EQ(FromProgram("\xF0\x9F\x98\x80").size(), 2);
}

}  // namespace
}  // namespace vt63x::ui
