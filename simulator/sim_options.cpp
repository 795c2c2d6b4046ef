// SPDX-License-Identifier: MIT

#include "simulator/sim_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <string_view>

#include "simulator/chip.h"

namespace vt63x {
namespace {

constexpr const char* kDescription =
    "Simulates the chip on a pseudo terminal, which any program can open as its serial port; with\n"
    "--rfc2217 on the network, as an access server offers a board; with --port at the far end of "
    "a\n"
    "null-modem cable. Windows has --port only.\n"
    "Prints the path of the device on one line and serves it until SIGINT, SIGTERM or SIGHUP.\n"
    "With -- COMMAND, prints no path but runs the command with VT63X_COM1 set to it, and serves\n"
    "it until the command ends. The line starts at 9600 bps on either side.";

constexpr const char* kFooter = R"(
Faults: NAME[=VALUE][@FIRST[+COUNT]]. FIRST is the first access concerned, counted from 1
(default 1), COUNT how many are (default: all from there on). The chip carries every access out;
what suffers is its answer:
  silence       no answer
  wrong-echo    the echo of a write is another address
  delay=MS      the answer comes MS milliseconds late (1 to 60000)
  rubbish       a byte of the answer is changed, or random bytes come before or after it;
                rubbish=SEED picks another sequence
  hang-up       the line goes away instead of the answer

Cards: UID[:TYPE][=FILE]. UID is 8, 14 or 20 hexadecimal digits; FILE keeps the memory of the card
and is made by the first change when there is none. One program at a time has it, shown by a file
FILE.lock beside it; a link is followed. TYPE:
  ostrel64      64 blocks of 16 bytes in sectors of four; keys 3C9A5E71B2D4 (the default)
  ostrel256     256 such blocks
  ostrel-page   64 pages of 4 bytes, without keys
  plain         no memory

Faults in the air: NAME[@FIRST[+COUNT]], counting the answers of cards:
  lost          the answer does not arrive
  short         the second half of the answer does not arrive
  crc           the CRC of the answer is wrong, if it has one
  parity        a parity bit of the answer is wrong

Commands on standard input, with --control; each is answered with "ok" or "error: ..." on standard
output:
  card add UID[:TYPE][=FILE]    card remove UID    field list    air FAULT    air none
and with --rfc2217, for the ring indicator of the line:
  ring on    ring off    ring pulse MILLISECONDS

Examples:
  vt63x-sim                              print the device path and serve it
  vt63x-sim --link /tmp/reader           the same under a path of your own
  vt63x-sim --port COM5                  serve the chip on this port
  vt63x-sim --rfc2217 127.0.0.1:4001     serve it as rfc2217://127.0.0.1:4001; port 0 takes any
  vt63x-sim -- wcf dump --port COM1:     run a program against the chip
  vt63x-sim --fault silence@5+1          the fifth access gets no answer
  vt63x-sim --fault delay=600 --pace     every answer 600 ms late, bytes at line speed
  vt63x-sim --register 37=92 --register 1F=79
                                         another version, and 115200 bps from the start
  vt63x-sim --card 04A1B2C3 --card 04112233445566:ostrel-page=page.bin
                                         two cards, the second with a memory that lasts

Exit code: 0 after a signal or when a fault has taken the line away; 2 for wrong options; 3 when
the device, the trace or the file of a card could not be had, or when in the place of the link
there is anything but a link to a device that is gone. With a command: its own exit code, 128 plus
the signal when one ended it, 127 when there is no such command, 126 when it cannot be run.
A SIGTERM or SIGHUP is passed on to the command, which has 5 seconds to end before it is killed.)";

std::optional<std::uint8_t> ParseHexByte(std::string_view text, unsigned limit) {
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  unsigned value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, code] = std::from_chars(text.data(), end, value, 16);
  if (code != std::errc{} || stop != end || value >= limit) return std::nullopt;
  return static_cast<std::uint8_t>(value);
}

void AddRegister(const std::string& text, SimOptions& options) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const std::string_view view = text;
  const auto address = ParseHexByte(view.substr(0, equals), Chip::kRegisterCount);
  const auto value = ParseHexByte(view.substr(std::min(equals + 1, text.size())), 0x100);
  if (!address || !value) {
    throw CLI::ValidationError("--register", "'" + text +
                                                 "' is not ADDR=VALUE with hexadecimal numbers, "
                                                 "ADDR 00 to 3F and VALUE 00 to FF");
  }
  options.registers.emplace_back(*address, *value);
}

void AddFault(const std::string& text, SimOptions& options) {
  std::string error;
  const auto fault = ParseFault(text, error);
  if (!fault) throw CLI::ValidationError("--fault", "'" + text + "': " + error);
  options.faults.push_back(*fault);
}

void AddCardOption(const std::string& text, SimOptions& options) {
  std::string error;
  const auto card = ParseCardOption(text, error);
  if (!card) throw CLI::ValidationError("--card", "'" + text + "': " + error);
  options.cards.push_back(*card);
}

void AddAirFault(const std::string& text, SimOptions& options) {
  std::string error;
  const auto fault = ParseAirFault(text, error);
  if (!fault) throw CLI::ValidationError("--air", "'" + text + "': " + error);
  options.air_faults.push_back(*fault);
}

// What the one line can do and the other cannot.
void CheckLine(const SimOptions& options, bool has_command) {
  if (!options.rfc2217.empty() && !options.link.empty()) {
    throw CLI::ValidationError("--rfc2217", "there is no device that --link could name");
  }
  if (options.port.empty()) {
    if (!kHasOwnLines)
      throw CLI::ValidationError("--port", "which port to serve must be said here");
    return;
  }
  const std::pair<bool, const char*> others[] = {{options.pace, "--pace"},
                                                 {!options.rfc2217.empty(), "--rfc2217"},
                                                 {!options.link.empty(), "--link"},
                                                 {options.control, "--control"},
                                                 {has_command, "a COMMAND"}};
  for (const auto& [given, name] : others) {
    if (given) throw CLI::ValidationError("--port", std::string("not together with ") + name);
  }
}

class UsageWithCommand final : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App*, std::string name) const override {
    return "Usage: " + name + " [OPTIONS] [-- COMMAND...]\n";
  }
};

// One argument for each time the option is given.
template <typename Add>
void AddRepeated(CLI::App& app, const std::string& name, const char* help, const char* type,
                 Add add) {
  app.add_option_function<std::vector<std::string>>(
         name,
         [add](const std::vector<std::string>& texts) {
           for (const std::string& text : texts) add(text);
         },
         help)
      ->type_name(type)
      ->allow_extra_args(false);
}

}  // namespace

std::optional<SimOptions> ParseSimOptions(int argc, char** argv, int& exit_code) {
  SimOptions options;
  char** const end = argv + argc;
  char** const separator =
      std::find_if(argv, end, [](const char* text) { return std::strcmp(text, "--") == 0; });

  CLI::App app(kDescription, "vt63x-sim");
  app.formatter(std::make_shared<UsageWithCommand>());
  app.footer(kFooter);
  app.set_version_flag("--version", "vt63x-sim " VT63X_VERSION);
  app.add_flag("--pace", options.pace,
               "bytes take ten bit times each way, as on a real line; how late\nanswers were is "
               "reported at the end");
  AddRepeated(app, "--fault", "make the chip misbehave (see below); may be given several times",
              "FAULT", [&](const std::string& text) { AddFault(text, options); });
  AddRepeated(app, "--card", "put a card in the field (see below); may be repeated", "CARD",
              [&](const std::string& text) { AddCardOption(text, options); });
  std::vector<std::string> card_files;
  AddRepeated(app, "--card-file",
              "keep the memory of the first card without a file in this one, the\nsame as =FILE; "
              "may be repeated",
              "FILE", [&](const std::string& text) { card_files.push_back(text); });
  AddRepeated(app, "--air", "spoil what cards answer (see below); may be repeated", "FAULT",
              [&](const std::string& text) { AddAirFault(text, options); });
  app.add_flag("--control", options.control,
               "take commands from standard input, to change cards and faults in\nthe air while "
               "it runs (see below); not with a COMMAND, whose input it is");
  AddRepeated(app, "--register",
              "start with this value in a register (hexadecimal); may be repeated", "ADDR=VALUE",
              [&](const std::string& text) { AddRegister(text, options); });
  app.add_option("--port", options.port,
                 "serve on this port, a COM name or the path of a device, instead of a\npseudo "
                 "terminal; without --rfc2217, --pace, --link, --control and COMMAND")
      ->type_name("NAME");
  if (kHasOwnLines) {
    app.add_option(
           "--rfc2217", options.rfc2217,
           "serve on this TCP port by RFC 2217, one client at a time, instead\nof a pseudo "
           "terminal; a client that vanished makes room within 20 s, one\nthat does not speak "
           "RFC 2217 within 5 s")
        ->type_name("HOST:PORT");
  }
  app.add_option("--link", options.link, "make a symbolic link to the device while it is there")
      ->type_name("PATH");
  app.add_option("--trace", options.trace,
                 "write one line per access to a file: microseconds, R or W,\naddress, value, "
                 "answer")
      ->type_name("FILE");
  try {
    app.parse(static_cast<int>(separator - argv), argv);
    if (separator != end && separator + 1 == end) {
      throw CLI::ValidationError("--", "no command follows");
    }
    CheckLine(options, separator != end);
    std::string card_error;
    for (const std::string& file : card_files) {
      if (!KeepCardIn(file, options.cards, card_error)) {
        throw CLI::ValidationError("--card-file", card_error);
      }
    }
    if (options.control && separator != end) {
      throw CLI::ValidationError("--control", "the command has the standard input");
    }
  } catch (const CLI::ParseError& error) {
    exit_code = app.exit(error) == 0 ? 0 : kExitUsage;
    return std::nullopt;
  }
  if (separator != end) options.command.assign(separator + 1, end);
  return options;
}

}  // namespace vt63x
