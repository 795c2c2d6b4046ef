// SPDX-License-Identifier: MIT

#include "script/command_help.h"

#include <string>

#include "shell/state/log.h"

namespace vt63x {
namespace {

constexpr int kMostLines = 4;

struct CommandBlock {
  const char* word;
  const char* synopsis;
  const char* description[kMostLines];  // null behind the last
};

constexpr CommandBlock kHardware[] = {
    {"SR",
     "SR <address> <data>",
     {"The SR function sets a Vt63x register, located at address <address>",
      "according to data <data>, both specified as an 8-bit HEX value."}},
    {"GR",
     "GR <address>",
     {"The GR function gets data from a Vt63x register, located at",
      "address <address> (8-bit HEX). The retrieved value is stored in IOR."}},
    {"MR",
     "MR <address> <mask> <set>",
     {"The MR function modifies a Vt63x register, located at address <address>.",
      "The mask <mask> specifies which bits to modify by having the corresponding bits",
      "set. If the <set> parameter is nonzero, the corresponding bits are set, otherwise",
      "cleared. All values are in 8-bit HEX format."}},
    {"RE",
     "RE <address> <data>",
     {"The RE function compares a Vt63x register, located at address <address> to",
      "data, specified in the <data> parameter. If equal, IOR is 0, otherwise 1.",
      "All values are in 8-bit HEX format."}},
    {"RF",
     "RF <address> <data> <mask>",
     {"The RF function compares a Vt63x register, located at address <address> to",
      "data, specified in the <data> parameter, AND'ed with the content of <mask>.",
      "If equal, IOR is 0, otherwise 1. All values are in 8-bit HEX format."}},
};

constexpr CommandBlock kApplication[] = {
    {"CHB",
     "CHB <bitrate>",
     {"The CHB function sets the <bitrate> (in bps) of the PC serial port.",
      "Possible values are: {9600, 19200, 38400, 57600, 115200}."}},
    {"WIE",
     "WIE <timeout_ms>",
     {"The WIE function waits for an edge at the serial port's RI pin.",
      "Maximum waiting time is specified by <timeout_ms>, in [ms].",
      "This function should be used with caution only (not recommended)."}},
    {"WIL",
     "WIL <level> <timeout_ms>",
     {"The WIL function waits for the serial port's RI pin to reach a certain",
      "logical level, specified by <level>, (= {0, 1}) Maximum waiting time",
      "is specified by <timeout_ms>, in [ms]. This is the preferred intr. function."}},
    {"SLP",
     "SLP <timeout_ms>",
     {"The SLP function waits for the time is specified by <timeout_ms>, in [ms]", "to expire."}},
    {"CLL", "CLL", {"The CLL function removes all content from the application's LOG window."}},
    {"//",
     "// <Comment Text>",
     {"The // function does nothing but allow comments being added to a script.",
      "The text <Comment Text> must be separated from the command by at least one blank."}},
    {"//>",
     "//> <Message Text>",
     {"The //> function allows messages to be displayed during script execution.",
      "The text <Message Text> must be separated from the command by at least one blank."}},
    {"//#",
     "//# <data>",
     {"The //# function allows data to be displayed during script execution.",
      "The <data> parameter can be either plain data (8-bit HEX) or a User Register."}},
    {"JMP",
     "JMP <destination>",
     {"The JMP function skips script commands until a label with the name <destination>",
      "is found. The label name <destination> should contain only {a..z, A..Z, _}."}},
    {"JNE",
     "JNE <value> <compare_value> <destination>",
     {"The JNE function compares User Register or plain data <value> to",
      "<compare_value>. If unequal, the function skips script commands until",
      "a label with the name <destination> is found. Data are in 8-bit HEX format."}},
    {":::",
     "::: <destination>",
     {"The ::: function is the <destination> of the JUMP commands.",
      "The label name <destination> should contain only {a..z, A..Z, _}."}},
    {"MOV",
     "MOV <destination> <source>",
     {"The MOV function copies User Register or plain data from <source>",
      "to <destination>. Data are in 8-bit HEX format."}},
    {"INC", "INC <user_register>", {"The INC function increments a user register."}},
    {"DEC", "DEC <user_register>", {"The DEC function decrements a user register."}},
    {"BRK", "BRK", {"The BRK function stopps the execution of the current script."}},
    {"SAV",
     "SAV [<File Name>]",
     {"The SAV function stores the log output to the current working directory.",
      "The File Name is used if present (max. length of 32 char). If no parameter is",
      "present a file dialog is opened to specifiy the location and the name."}},
};

constexpr const char* kUserRegisters[] = {
    "User registers are divided into special purpose registers IOR and IOE",
    "and general purpose registers MLn, where n = 0..7. The special purpose",
    "register IOR contains the result (data, if any) of an I/O operation.",
    "IOE is the error register, zero means success, one failure.",
    "_",
};

constexpr char kBlankLine[] = " ";

class Reference {
 public:
  explicit Reference(const action_param* action) : action_(action) {}

  void Line(const std::string& text) { log_append(action_, text.c_str(), 1); }

  void Heading(const char* text) {
    Line(text);
    Line(kBlankLine);
  }

  template <typename Blocks>
  void Section(const char* heading, const Blocks& blocks) {
    Heading(heading);
    for (const CommandBlock& block : blocks) Block(block);
    Line(kBlankLine);
  }

 private:
  void Block(const CommandBlock& block) {
    Line(std::string("Command:  ") + block.word);
    Line(std::string("Synopsis: ") + block.synopsis);
    Line("Description:");
    for (const char* const line : block.description) {
      if (line != nullptr) Line(line);
    }
    Line(kBlankLine);
  }

  const action_param* action_;
};

}  // namespace

void ShowCommandHelp(const action_param* action) {
  log_clear(action);
  Reference reference(action);
  reference.Section("H A R D W A R E   C O M M A N D S :", kHardware);
  reference.Section("A P P L I C A T I O N   C O M M A N D S :", kApplication);
  reference.Heading("U S E R   R E G I S T E R S :");
  for (const char* const line : kUserRegisters) reference.Line(line);
}

}  // namespace vt63x
