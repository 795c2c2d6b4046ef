// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_TEXT_CODEC_H
#define VT63X_PLATFORM_WINDOW_TEXT_CODEC_H

// Texts of the program are bytes, UTF-8 as a rule; a log may hold any. A byte that is not valid
// UTF-8 becomes the lone surrogate 0xDC00 + byte on the screen and comes back as it was.

#include <QString>
#include <string>
#include <string_view>

namespace vt63x::ui {

// Both ways for texts of one line, or where line ends do not matter.
QString FromProgram(std::string_view text);
std::string ToProgram(QStringView text);

// For a multi-line edit: CR LF becomes one line end of the toolkit's; a CR or LF alone becomes a
// lone surrogate (0xDC0D, 0xDC0A), so that it comes back as it was.
QString LinesFromProgram(std::string_view text);
// Takes the line ends of both plain texts and the toolkit's documents.
std::string LinesToProgram(QStringView text);

}  // namespace vt63x::ui

#endif
