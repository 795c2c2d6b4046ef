// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CONTROL_INPUT_H
#define VT63X_SIMULATOR_CONTROL_INPUT_H

#include <string>
#include <string_view>

#include "simulator/field.h"
#include "simulator/ring_indicator.h"
#include "simulator/served_line.h"

namespace vt63x {

// Commands for the field (field_command.h) and the ring indicator on standard input, one a line,
// carried out one by one on the thread that serves the line, so that the field has one user only.
// What there is to say about them goes to standard output; when nobody reads that, so that it would
// have to wait, it is dropped. After the end of the input the field stays as it is.
class ControlInput final : public SideInput {
 public:
  // A longer line is answered with an error and left out.
  static constexpr std::size_t kMaxLine = 4096;

  // `field` and `ring`, which is null where there is none, are the caller's and outlive the object.
  ControlInput(Field& field, RingIndicator* ring) : field_(field), ring_(ring) {}

  int fd() const override { return fd_; }
  void OnReadable() override;

 private:
  void Take(char character);
  std::string Run();
  void Reply(std::string_view text);

  Field& field_;
  RingIndicator* const ring_;
  int fd_ = 0;  // standard input; -1 after its end
  std::string line_;
  bool too_long_ = false;
};

}  // namespace vt63x

#endif
