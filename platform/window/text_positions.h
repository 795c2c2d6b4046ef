// SPDX-License-Identifier: MIT

#ifndef VT63X_PLATFORM_WINDOW_TEXT_POSITIONS_H
#define VT63X_PLATFORM_WINDOW_TEXT_POSITIONS_H

// Positions in a multi-line text: the program counts CR LF as two characters, the toolkit a line
// end as one. Both directions in logarithmic time.

#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>

namespace vt63x::ui {

inline int ProgramPosition(const QTextDocument& document, int position) {
  const QTextBlock block = document.findBlock(position);
  const int line = block.isValid() ? block.blockNumber() : document.blockCount() - 1;
  return position + line;
}

inline int ProgramLength(const QTextDocument& document) {
  return document.characterCount() - 1 + document.blockCount() - 1;
}

// A position between CR and LF becomes the one before them; beyond the end, the end.
inline int ToolkitPosition(const QTextDocument& document, int position) {
  if (position >= ProgramLength(document)) return document.characterCount() - 1;
  int first = 0;
  int last = document.blockCount() - 1;
  while (first < last) {
    const int middle = (first + last + 1) / 2;
    if (document.findBlockByNumber(middle).position() + middle <= position) {
      first = middle;
    } else {
      last = middle - 1;
    }
  }
  const QTextBlock block = document.findBlockByNumber(first);
  return std::min(position - first, block.position() + block.length() - 1);
}

}  // namespace vt63x::ui

#endif
