// SPDX-License-Identifier: MIT

#include "cli/card_commands.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "cli/status_text.h"
#include "shell/card_reader.h"
#include "shell/hex_text.h"

namespace vt63x {
namespace {

using Json = nlohmann::ordered_json;

// A field that answers without end (a card that does not obey a halt) must not hold the scan.
constexpr int kMostCards = 64;

constexpr std::uint8_t kKeyA = 0x60;
constexpr std::uint8_t kKeyB = 0x61;
constexpr std::uint8_t kDecrementCommand = 0xC0;
constexpr std::uint8_t kIncrementCommand = 0xC1;
constexpr std::uint8_t kRestoreCommand = 0xC2;
constexpr std::uint8_t kTransferCommand = 0xB0;

std::string HexText(const std::uint8_t* bytes, std::size_t count) {
  std::string text(2 * count, '\0');
  BytesToHexText(text.data(), bytes, static_cast<int>(count));
  return text;
}

class CardCommand {
 public:
  CardCommand(Session& session, const CardOptions& options)
      : session_(session),
        options_(options),
        reader_(session.action(), {[this](const char* line) { session_.Print(line); },
                                   [this](HFLSTATUS status) { SetUpFailed(status); },
                                   [this](HFLSTATUS status) { Check("timer set-up", status); }}) {
    reader_.block = static_cast<std::uint8_t>(options.block);
  }

  void Run() {
    if (reader_.SetUp() != HFL_SUCCESS) return ReportSetUp();
    if (options_.action == CardAction::kScan) return Scan();
    if (!Find()) return;
    if (options_.action == CardAction::kHalt) {
      Report("halt", reader_.Halt(), Identity());
      return;
    }
    if (NeedsKey() && !Authenticate()) return;
    if (!session_.interrupted()) Access();
  }

 private:
  void Object(const Json& object) {
    if (options_.json) session_.PrintObject(object.dump());
  }

  // On a dead line every step fails alike; the first says it.
  void SetUpFailed(HFLSTATUS status) {
    if (set_up_status_ == HFL_SUCCESS) set_up_status_ = status;
  }
  void ReportSetUp() { Report("set-up", set_up_status_, Json::object()); }

  // Cards that have keys say so in their SAK (bit 0x08).
  bool NeedsKey() const {
    constexpr std::uint8_t kHasKeys = 0x08;
    if (options_.action == CardAction::kWritePage) return false;
    const bool asked =
        options_.key_a || options_.key_b || options_.action == CardAction::kAuthenticate;
    return asked || (reader_.sak & kHasKeys) != 0;
  }

  bool Check(const char* operation, HFLSTATUS status) {
    if (status == HFL_SUCCESS) return true;
    session_.Fail(std::string(operation) + ": " + StatusText(status) + " (status " +
                  StatusDigits(status) + ")");
    return false;
  }
  bool Report(const char* operation, HFLSTATUS status, const Json& details) {
    if (status != HFL_SUCCESS && session_.interrupted()) return false;
    Json object = {{"operation", operation}};
    object.update(details);
    object["status"] = StatusDigits(status);
    Object(object);
    return Check(operation, status);
  }

  std::string Identifier() const {
    std::uint8_t identifier[10];
    const int count = IdentifierBytes(reader_.uid, reader_.bit_count, identifier);
    return HexText(identifier, static_cast<std::size_t>(count));
  }
  Json Identity() const {
    return {{"uid", Identifier()},
            {"atqa", HexText(reader_.atqa, sizeof reader_.atqa)},
            {"sak", HexText(&reader_.sak, 1)}};
  }

  enum class Found { kCard, kNobody, kFailure };

  // Requests and selects a card. Nobody is there only when nobody answers the request.
  Found Select(std::uint8_t request_code) {
    status_ = reader_.Request(request_code);
    if (status_ == HFL_NO_ANSWER) return Found::kNobody;
    if (status_ != HFL_SUCCESS && status_ != HFL_COLLISION) return Found::kFailure;
    status_ = reader_.AnticollisionSelect();
    return status_ == HFL_SUCCESS ? Found::kCard : Found::kFailure;
  }

  // Cards that have been halted do not answer the next request.
  void Scan() {
    int cards = 0;
    Found found = Found::kCard;
    while (cards < kMostCards && !session_.interrupted()) {
      found = Select(REQUEST_REQA);
      if (found != Found::kCard) break;
      ++cards;
      Json object = Identity();
      object["collision"] = (reader_.collision & 0x01) != 0;
      Report("scan", HFL_SUCCESS, object);
      if (!Check("halt", reader_.Halt())) break;
    }
    // Silence ends a scan; it is a failure when nothing came before it.
    const bool failed = found == Found::kFailure || (found == Found::kNobody && cards == 0);
    if (failed) Report("scan", status_, Json::object());
    const std::string count = std::to_string(cards) + (cards == 1 ? " card" : " cards");
    if (found == Found::kNobody) return session_.Complain(count);
    session_.Fail("the scan ended after " + count);
  }

  // Selects the card that is asked for, or any.
  bool Find() {
    if (!options_.identifier) {
      return Select(REQUEST_WUPA) == Found::kCard || Report("select", status_, Json::object());
    }
    const std::string wanted = HexText(options_.identifier->data(), options_.identifier->size());
    Found found = Found::kCard;
    for (int cards = 0; cards < kMostCards && !session_.interrupted(); ++cards) {
      found = Select(REQUEST_REQA);
      if (found != Found::kCard) break;
      if (Identifier() == wanted) return true;
      if (!Check("halt", reader_.Halt())) return false;
    }
    if (found == Found::kNobody) session_.Complain("there is no card " + wanted + " in the field");
    if (found == Found::kCard) session_.Fail("the search for card " + wanted + " was given up");
    return found != Found::kCard && Report("select", status_, {{"uid", wanted}});
  }

  bool Authenticate() {
    std::uint8_t key[6];
    for (std::size_t i = 0; i < sizeof key; ++i) key[i] = HexPairToByte(DEFAULT_KEY_TEXT + 2 * i);
    const std::uint8_t command = options_.key_b ? kKeyB : kKeyA;
    const auto& given = options_.key_b ? options_.key_b : options_.key_a;
    if (given) std::copy_n(given->begin(), sizeof key, key);
    const HFLSTATUS status = reader_.Authenticate(command, key);
    const bool alone = options_.action == CardAction::kAuthenticate;
    if (status == HFL_SUCCESS && !alone) return true;
    return Report("authenticate", status,
                  {{"block", options_.block}, {"key", command == kKeyA ? "A" : "B"}});
  }

  void Access() {
    const Json block = {{"block", options_.block}};
    std::uint8_t data[16];
    switch (options_.action) {
      case CardAction::kRead: {
        const HFLSTATUS status = reader_.Read(data);
        Json object = block;
        if (status == HFL_SUCCESS) object["data"] = HexText(data, sizeof data);
        Report("read", status, object);
        return;
      }
      case CardAction::kWrite:
        Report("write", reader_.Write(options_.data.data()), block);
        return;
      case CardAction::kWritePage:
        Report("page", reader_.WritePage(options_.data.data()), {{"page", options_.block}});
        return;
      case CardAction::kDecrement:
        return ChangeValue("decrement", kDecrementCommand);
      case CardAction::kIncrement:
        return ChangeValue("increment", kIncrementCommand);
      case CardAction::kRestore:
        return ChangeValue("restore", kRestoreCommand);
      case CardAction::kTransfer:
        Report("transfer", reader_.Value(kTransferCommand, 0), block);
        return;
      default:
        return;
    }
  }

  // The card works in its transfer buffer; a transfer makes the result last.
  void ChangeValue(const char* operation, std::uint8_t command) {
    const HFLSTATUS status = reader_.Value(command, options_.operand);
    Json details = {{"block", options_.block}};
    if (command != kRestoreCommand) details["operand"] = options_.operand;
    if (!Report(operation, status, details)) return;
    const int target = options_.target.value_or(options_.block);
    reader_.block = static_cast<std::uint8_t>(target);
    Report("transfer", reader_.Value(kTransferCommand, 0), {{"block", target}});
  }

  Session& session_;
  const CardOptions& options_;
  CardReader reader_;
  HFLSTATUS set_up_status_ = HFL_SUCCESS;  // of the first step that failed
  HFLSTATUS status_ = HFL_SUCCESS;         // of the last request or selection
};

}  // namespace

std::optional<Bytes> BytesFromHex(const std::string& text, std::size_t count) {
  constexpr char kHexDigits[] = "0123456789abcdefABCDEF";
  if (text.size() != 2 * count) return {};
  if (text.find_first_not_of(kHexDigits) != std::string::npos) return {};
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = HexPairToByte(text.c_str() + 2 * i);
  return bytes;
}

ExitCode RunCardCommand(Session& session, const CardOptions& options) {
  CardCommand(session, options).Run();
  return session.Conclude();
}

}  // namespace vt63x
