// SPDX-License-Identifier: MIT

#include "contactless/chip_command.h"

#include <algorithm>
#include <iterator>

#include "contactless/command_run.h"
#include "contactless/register_sequence.h"
#include "frontend/chip_registers.h"

namespace vt63x {
namespace {

// Error bits that hide a CRC error.
constexpr std::uint8_t kAboveCrcError = reg::kProtocolError | reg::kOverflowError;

// Interrupt bits that each command enables and awaits.
struct CommandRow {
  std::uint8_t code;
  std::uint8_t commIrqEn;
  std::uint8_t waitForComm;
  std::uint8_t divIrqEn;
  std::uint8_t waitForDiv;
  bool has_answer;
};

constexpr CommandRow kCommands[] = {
    {kCommandIdle, 0x00, 0x00, 0x00, 0x00, false},
    {kCommandCalculateCrc, 0x00, 0x00, 0x00, 0x00, false},
    {kCommandTransmit, 0x41, 0x40, 0x00, 0x00, false},
    {kCommandReceive, 0x23, 0x21, 0x00, 0x00, true},
    {kCommandTransceive, 0x23, 0x21, 0x00, 0x00, true},
    {kCommandAuthenticate, 0x13, 0x11, 0x00, 0x00, false},
    {kCommandSoftReset, 0x00, 0x00, 0x00, 0x00, false},
};

// Error register bits in the order in which they win.
struct ErrorRow {
  std::uint8_t bit;
  HFLSTATUS status;
};

constexpr ErrorRow kErrors[] = {
    {reg::kWriteError, HFL_WRITE_ERROR},       {reg::kProtocolError, HFL_PROTOCOL_ERROR},
    {reg::kOverflowError, HFL_OVERFLOW},       {reg::kCrcError, HFL_CRC_ERROR},
    {reg::kTemperatureError, HFL_TEMPERATURE}, {reg::kCollisionError, HFL_COLLISION},
    {reg::kParityError, HFL_PARITY_ERROR}};

HFLSTATUS StatusOfErrors(std::uint8_t errors) {
  if (errors == 0) return HFL_SUCCESS;
  const auto row = std::find_if(std::begin(kErrors), std::end(kErrors),
                                [errors](const ErrorRow& r) { return (errors & r.bit) != 0; });
  return row == std::end(kErrors) ? HFL_CHIP_ERROR : row->status;
}

void ClearAndFlush(RegisterSequence& chip, std::uint8_t comm, std::uint8_t div) {
  chip.Write(reg::kCommIrqRequest, comm);
  chip.Write(reg::kDivIrqRequest, div);
  chip.Write(reg::kFifoLevel, reg::kFlushFifo);
}

// The state of one command between its steps.
class CommandRun {
 public:
  CommandRun(single_command_param* param, const CommandRow& row, RegisterSequence& chip,
             WaitClock now)
      : param_(param),
        chip_(chip),
        now_(now),
        capacity_(param->receive_length),
        commIrqEn_(row.commIrqEn),
        divIrqEn_(row.divIrqEn),
        waitForComm_(row.waitForComm),
        waitForDiv_(row.waitForDiv) {
    param->receive_length = 0;
  }

  HFLSTATUS Run(bool has_answer) {
    ClearAndFlush(chip_, waitForComm_, waitForDiv_);
    chip_.Merge(reg::kCommIrqEnable, 0xFF, commIrqEn_);
    chip_.Merge(reg::kDivIrqEnable, 0xFF, divIrqEn_);
    Start();
    if (!chip_.ok()) return HFL_SUCCESS;
    Wait();
    waitForComm_ &= comm_request_;
    waitForDiv_ &= div_request_;
    if ((comm_request_ & reg::kTimerIrq) != 0) result_ = HFL_NO_ANSWER;
    chip_.ClearBits(reg::kCommIrqEnable, commIrqEn_);
    chip_.ClearBits(reg::kDivIrqEnable, divIrqEn_);
    if (has_answer && result_ == HFL_SUCCESS && chip_.ok()) FetchAnswer();
    ClearAndFlush(chip_, waitForComm_, waitForDiv_);
    chip_.Write(reg::kCommIrqRequest, reg::kTimerIrq);
    return result_;
  }

 private:
  void Start() {
    if (param_->send_length > 0) {
      chip_.WriteAll(reg::kFifoData, param_->send_buffer, param_->send_length);
    }
    if (param_->command == kCommandTransceive) {
      chip_.SetBits(reg::kBitFraming, reg::kStartSending);
    } else {
      chip_.Merge(reg::kCommand, static_cast<std::uint8_t>(~reg::kCommandMask), param_->command);
    }
  }

  void Wait() {
    if (param_->wait_cb != nullptr) {
      CallBack();
    } else if ((waitForComm_ | waitForDiv_) != 0) {
      PollRequests();
    } else {
      PollForIdle();
    }
  }

  void CallBack() {
    wait_event_cb_param event{0,
                              0,
                              &commIrqEn_,
                              &divIrqEn_,
                              &waitForComm_,
                              &waitForDiv_,
                              param_->command,
                              param_->lower,
                              param_->wait_cb_context};
    result_ = param_->wait_cb(&event);
    // The callback's status tells more than a failure of one of these.
    comm_request_ = RegisterSequence(param_->lower).Read(reg::kCommIrqRequest);
    div_request_ = RegisterSequence(param_->lower).Read(reg::kDivIrqRequest);
  }

  // The clock is read before the registers, so that even a line slower than the limit gets one
  // look at the chip after it.
  void PollRequests() {
    const auto deadline = now_() + kWaitLimit;
    bool last = false;
    do {
      last = now_() >= deadline;
      comm_request_ = chip_.Read(reg::kCommIrqRequest);
      div_request_ = chip_.Read(reg::kDivIrqRequest);
      if ((waitForComm_ & comm_request_) != 0 || (waitForDiv_ & div_request_) != 0) return;
    } while (chip_.ok() && !last);
    result_ = HFL_NO_ANSWER;
  }

  void PollForIdle() {
    const auto deadline = now_() + kUnreportedEndLimit;
    bool last = false;
    do {
      last = now_() >= deadline;
      if ((chip_.Read(reg::kCommand) & reg::kCommandMask) == kCommandIdle) return;
      if ((chip_.Read(reg::kCoprocessorStatus) & reg::kCrcReady) != 0) return;
    } while (chip_.ok() && !last);
  }

  void FetchAnswer() {
    param_->receive_length = chip_.Read(reg::kFifoLevel);
    if (!chip_.ok()) return;
    const std::uint8_t control = chip_.Read(reg::kControl);
    if (!chip_.ok()) return;
    param_->receive_last_bits = control & reg::kLastBitsMask;
    const std::uint8_t errors = chip_.Read(reg::kError);
    if (errors != 0) {
      result_ = StatusOfErrors(errors);
      if (IsShortAnswer(errors)) FetchShortAnswer();
      chip_.Write(reg::kError, 0x00);
    }
    if (chip_.ok() && result_ != HFL_SHORT_ANSWER) FetchFifo();
  }

  // A card's acknowledge is 4 bits without CRC, where the receiver expects one.
  bool IsShortAnswer(std::uint8_t errors) const {
    const std::uint16_t bits = param_->receive_last_bits;
    return (errors & reg::kCrcError) != 0 && (errors & kAboveCrcError) == 0 &&
           param_->receive_length == 1 && capacity_ >= 1 && (bits == 4 || bits == 0);
  }

  void FetchShortAnswer() {
    const std::uint8_t byte = chip_.Read(reg::kFifoData);
    if (!chip_.ok()) return;
    param_->receive_buffer[0] = byte;
    if (result_ == HFL_CRC_ERROR) result_ = HFL_SHORT_ANSWER;
  }

  void FetchFifo() {
    if (param_->receive_length > capacity_) {
      param_->receive_length = capacity_;
      result_ = HFL_BUFFER_SIZE;
    }
    chip_.ReadAll(reg::kFifoData, param_->receive_buffer, param_->receive_length);
    if (!chip_.ok()) return;
    if (param_->receive_last_bits != 0 && param_->receive_length != 0) --param_->receive_length;
  }

  single_command_param* param_;
  RegisterSequence& chip_;
  WaitClock now_;
  std::uint16_t capacity_;  // of the receive buffer, bytes
  std::uint8_t commIrqEn_;
  std::uint8_t divIrqEn_;
  std::uint8_t waitForComm_;
  std::uint8_t waitForDiv_;
  std::uint8_t comm_request_ = 0;  // the request registers as last read
  std::uint8_t div_request_ = 0;
  HFLSTATUS result_ = HFL_SUCCESS;
};

}  // namespace

CommandResult RunSingleCommand(single_command_param* param, WaitClock now) {
  if (param->clear_switch != 0) param->spare = 0;
  RegisterSequence chip(param->lower);
  const auto row = std::find_if(std::begin(kCommands), std::end(kCommands),
                                [param](const CommandRow& r) { return r.code == param->command; });
  // A transceive is armed before the FIFO is filled and sends when it is told to.
  const std::uint8_t armed =
      param->command == kCommandTransceive ? kCommandTransceive : kCommandIdle;
  chip.Merge(reg::kCommand, static_cast<std::uint8_t>(~reg::kCommandMask), armed);
  HFLSTATUS result = HFL_UNKNOWN_COMMAND;
  if (row == std::end(kCommands)) {
    param->receive_length = 0;
  } else {
    result = CommandRun(param, *row, chip, now).Run(row->has_answer);
  }
  return chip.ok() ? CommandResult{result, false} : CommandResult{chip.status(), true};
}

HFLSTATUS ExecuteSingleCommand(single_command_param* param) {
  return RunSingleCommand(param).status;
}

HFLSTATUS ClearIrqAndFlushFifo(RegisterControlCore* lower, std::uint8_t comm, std::uint8_t div) {
  RegisterSequence chip(lower);
  ClearAndFlush(chip, comm, div);
  return chip.status();
}

}  // namespace vt63x
