// SPDX-License-Identifier: MIT

#include "platform/window/text_codec.h"

namespace vt63x::ui {
namespace {

constexpr char16_t kEscape = 0xDC00;
constexpr char16_t kEscapedLineFeed = kEscape + '\n';
constexpr char16_t kEscapedReturn = kEscape + '\r';
constexpr char16_t kParagraph = 0x2029;  // what the toolkit's documents have for a line end

// Length of the valid UTF-8 sequence at the start of `text`, 0 for none. RFC 3629, 4.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool surrogate = lead == 0xED && byte(1) >= 0xA0;
  const bool too_high = lead == 0xF4 && byte(1) >= 0x90;
  return overlong || surrogate || too_high ? 0 : length;
}

bool IsEscape(char16_t unit) {
  return unit == kEscapedLineFeed || unit == kEscapedReturn ||
         (unit >= kEscape + 0x80 && unit <= kEscape + 0xFF);
}

}  // namespace

QString FromProgram(std::string_view text) {
  QString result;
  result.reserve(static_cast<qsizetype>(text.size()));
  std::size_t valid = 0;  // bytes at the start of `text` that are good
  while (valid < text.size()) {
    const std::size_t length = SequenceLength(text.substr(valid));
    if (length != 0) {
      valid += length;
      continue;
    }
    result += QString::fromUtf8(text.data(), static_cast<qsizetype>(valid));
    result += QChar(static_cast<char16_t>(kEscape + static_cast<unsigned char>(text[valid])));
    text.remove_prefix(valid + 1);
    valid = 0;
  }
  return result + QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string ToProgram(QStringView text) {
  std::string result;
  qsizetype begin = 0;
  for (qsizetype i = 0; i <= text.size(); ++i) {
    const bool after_high = i > 0 && i < text.size() && text[i - 1].isHighSurrogate();
    if (i < text.size() && (after_high || !IsEscape(text[i].unicode()))) continue;
    result += text.mid(begin, i - begin).toUtf8().toStdString();
    if (i < text.size()) result += static_cast<char>(text[i].unicode() - kEscape);
    begin = i + 1;
  }
  return result;
}

QString LinesFromProgram(std::string_view text) {
  QString result = FromProgram(text);
  if (text.find_first_of("\r\n") == std::string_view::npos) return result;
  result.replace(QStringLiteral("\r\n"), QString(QChar(kParagraph)));
  result.replace(QChar('\n'), QChar(kEscapedLineFeed));
  result.replace(QChar('\r'), QChar(kEscapedReturn));
  result.replace(QChar(kParagraph), QChar('\n'));
  return result;
}

std::string LinesToProgram(QStringView text) {
  QString lines = text.toString();
  lines.replace(QChar(kParagraph), QChar('\n'));
  lines.replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
  return ToProgram(lines);
}

}  // namespace vt63x::ui
