// SPDX-License-Identifier: MIT

#ifndef VT63X_CONTACTLESS_REGISTER_SEQUENCE_H
#define VT63X_CONTACTLESS_REGISTER_SEQUENCE_H

#include <cstdint>

#include "frontend/register_control.h"
#include "frontend/status.h"

namespace vt63x {

// A run of register accesses that ends at the first failure: from then on every access is skipped
// (reads give 0) and status() stays what the failing access returned. One object serves one
// operation; it owns nothing.
class RegisterSequence {
 public:
  explicit RegisterSequence(RegisterControlCore* lower) : lower_(lower) {}

  std::uint8_t Read(std::uint8_t address) {
    getreg_param param{address, 0, lower_};
    if (ok()) status_ = lower_->GetRegister(&param);
    return ok() ? param.data : std::uint8_t{0};
  }

  void Write(std::uint8_t address, int value) {
    setreg_param param{address, static_cast<std::uint8_t>(value), lower_};
    if (ok()) status_ = lower_->SetRegister(&param);
  }

  void SetBits(std::uint8_t address, std::uint8_t mask) { Modify(address, mask, 1); }
  void ClearBits(std::uint8_t address, std::uint8_t mask) { Modify(address, mask, 0); }
  void Modify(std::uint8_t address, std::uint8_t mask, std::uint8_t set) {
    modify_param param{address, mask, set, lower_};
    if (ok()) status_ = lower_->ModifyRegister(&param);
  }

  // A read and a write: the register becomes (old & keep) | set.
  void Merge(std::uint8_t address, std::uint8_t keep, int set) {
    const std::uint8_t old_value = Read(address);
    Write(address, (old_value & keep) | set);
  }

  void WriteAll(std::uint8_t address, const std::uint8_t* bytes, std::uint16_t length) {
    setmulti_param param{address, length, bytes, lower_};
    if (ok()) status_ = lower_->SetRegisterMultiple(&param);
  }

  void ReadAll(std::uint8_t address, std::uint8_t* bytes, std::uint16_t length) {
    getmulti_param param{address, length, bytes, lower_};
    if (ok()) status_ = lower_->GetRegisterMultiple(&param);
  }

  bool ok() const { return status_ == HFL_SUCCESS; }
  HFLSTATUS status() const { return status_; }

 private:
  RegisterControlCore* lower_;
  HFLSTATUS status_ = HFL_SUCCESS;
};

}  // namespace vt63x

#endif
