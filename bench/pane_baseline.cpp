// SPDX-License-Identifier: MIT

#include "bench/pane_baseline.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QString>
#include <chrono>
#include <thread>

#include "bench/measure.h"
#include "shell/state/log.h"

namespace vt63x {
namespace {

// As large as the program's log pane.
constexpr int kWidth = 738;
constexpr int kHeight = 346;

struct Pane {
  Pane() {
    edit.setUndoRedoEnabled(false);
    edit.setLineWrapMode(QPlainTextEdit::NoWrap);
    edit.resize(kWidth, kHeight);
    edit.show();
    QApplication::processEvents();
  }
  void Paint() {
    edit.verticalScrollBar()->setValue(edit.verticalScrollBar()->maximum());
    QApplication::processEvents();
  }

  QPlainTextEdit edit;
};

}  // namespace

double MicrosecondsPerAppendedLine(const char* line, int lines, int batch, int pause_ms, int fill) {
  Pane pane;
  const QString text = QString::fromUtf8(line);
  pane.edit.setPlainText((text + QLatin1Char('\n')).repeated(fill / (text.size() + 1)));
  pane.Paint();
  qsizetype length = fill;
  const double start = ProcessorSeconds();
  for (int i = 0; i < lines; i += batch) {
    QString together = text;
    for (int k = 1; k < batch; ++k) together += QLatin1Char('\n') + text;
    if (length + together.size() + batch > static_cast<qsizetype>(LOG_CAPACITY)) {
      pane.edit.clear();
      length = 0;
    }
    pane.edit.appendPlainText(together);
    length += together.size() + batch;
    pane.Paint();
    std::this_thread::sleep_for(std::chrono::milliseconds(pause_ms));
  }
  return (ProcessorSeconds() - start) * 1e6 / lines;
}

double MicrosecondsPerReplacedText(const char* line, int lines, int fill) {
  Pane pane;
  const QString one = QString::fromUtf8(line) + QLatin1Char('\n');
  QString text = one.repeated(fill / one.size());
  const double start = ProcessorSeconds();
  for (int i = 0; i < lines; ++i) {
    text += one;
    pane.edit.setPlainText(text);
    pane.Paint();
  }
  return (ProcessorSeconds() - start) * 1e6 / lines;
}

}  // namespace vt63x
