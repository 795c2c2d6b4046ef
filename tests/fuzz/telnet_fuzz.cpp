// SPDX-License-Identifier: MIT

// The decoder of RFC 2217, on bytes that come in two parts: it must not matter where they are cut.

#include "rfc2217/telnet.h"
#include "tests/fuzz/fuzz_input.h"

namespace vt63x {
namespace {

class Recorder final : public rfc2217::Listener {
 public:
  void OnData(rfc2217::Bytes data) override {
    for (const std::uint8_t byte : data) (text += 'd') += static_cast<char>(byte);
  }
  void OnNegotiation(rfc2217::Negotiation what, std::uint8_t option) override {
    ((text += 'n') += static_cast<char>(what)) += static_cast<char>(option);
  }
  void OnComPort(std::uint8_t command, rfc2217::Bytes value) override {
    (text += 'c') += static_cast<char>(command);
    text.append(value.begin(), value.end());
    rfc2217::BaudRateOf(value);
  }

  std::string text;
};

}  // namespace
}  // namespace vt63x

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vt63x;
  FuzzInput input(data, size);
  const std::uint8_t cut = input.Byte();
  Recorder whole, parts;
  rfc2217::Decoder().Take(input.rest(), whole);
  rfc2217::Decoder decoder;
  decoder.Take(input.Bytes(cut), parts);
  decoder.Take(input.rest(), parts);
  Require(whole.text == parts.text, "where the bytes are cut does not matter");
  return 0;
}
