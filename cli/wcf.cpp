// SPDX-License-Identifier: MIT

// wcf: command files and single lines without a window. Options and their help; the work is done
// by Session.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "cli/break_off.h"
#include "cli/card_commands.h"
#include "cli/card_options.h"
#include "cli/check.h"
#include "cli/error_text.h"
#include "cli/exit_code.h"
#include "cli/output.h"
#include "cli/port_choice.h"
#include "cli/session.h"
#include "script/command_help.h"
#include "simulator/card_options.h"

namespace {

using vt63x::ExitCode;

constexpr char kAbout[] =
    "wcf runs command files against a Vt63x chip on a serial line, without a window.\n"
    "\n"
    "Log lines go to standard output as they come; messages that name the file and line,\n"
    "and the verdict as the last line, go to standard error.";

constexpr char kExitCodes[] =
    "Exit code, the highest that applies:\n"
    "  0    every line did its work\n"
    "  1    a comparison found a difference, an access or card operation failed, or the port\n"
    "       does not take a bit rate\n"
    "  2    the call itself was wrong\n"
    "  3    a file or the port could not be opened, or a file or standard output not be written\n"
    "  4    lines that are no commands\n"
    "  5    the line went away, which breaks the run off\n"
    "  129  broken off: the terminal was closed (SIGHUP)\n"
    "  130  broken off with Ctrl-C (SIGINT)\n"
    "  143  broken off: told to end (SIGTERM)\n"
    "A run is broken off between two lines, SLP, WIE and WIL at once, and the verdict follows. "
    "What\n"
    "does not end so within 0.7 s (a FIFO without reader, a line that takes nothing) is given up.";

constexpr char kPorts[] =
    "A port is COM1 to COM16, and on Linux the device itself (/dev/ttyUSB0) or a board behind an\n"
    "access server (rfc2217://host:port). There COMn is what the environment variable VT63X_COMn\n"
    "names, else /dev/ttyS(n-1).";

// The field of a simulated chip when nobody says what is in it.
const std::vector<std::string> kDefaultField = {"5A3C1E78", "04112233445566",
                                                "04A1B2C3D4E5F6071829"};

std::vector<vt63x::CardOption> ParseCards(const std::vector<std::string>& texts) {
  std::vector<vt63x::CardOption> cards;
  for (const std::string& text : texts) {
    std::string error;
    const auto card = vt63x::ParseCardOption(text, error);
    if (!card) throw CLI::ValidationError("--card", error);
    cards.push_back(*card);
  }
  return cards;
}

void KeepCards(const std::vector<std::string>& files, std::vector<vt63x::CardOption>& cards) {
  std::string error;
  for (const std::string& file : files) {
    if (!vt63x::KeepCardIn(file, cards, error)) throw CLI::ValidationError("--card-file", error);
  }
}

void AddLineOptions(CLI::App& command, vt63x::SessionOptions& options) {
  CLI::Option_group* const line = command.add_option_group("Line", "one of the two is needed");
  line->add_option("-p,--port", options.port, "Serial port of the chip")
      ->type_name("NAME")
      ->check([](const std::string& name) {
        return vt63x::IsPortName(name) ? "" : "'" + name + "' is not the name of a port";
      });
  CLI::Option* const sim =
      line->add_flag("--sim", options.simulate, "The simulated chip, in this program");
  line->require_option(1);
  command
      .add_option_function<std::vector<std::string>>(
          "--card", [&options](const auto& texts) { options.cards = ParseCards(texts); },
          "With --sim: a card in its field, UID[:TYPE][=FILE] as for vt63x-sim; may be repeated.\n"
          "Without any there are three, with identifiers of 4, 7 and 10 bytes")
      ->type_name("CARD")
      ->allow_extra_args(false)
      ->needs(sim);
  command
      .add_option_function<std::vector<std::string>>(
          "--card-file", [&options](const auto& files) { KeepCards(files, options.cards); },
          "With --sim: keep the memory of the first card without a file in this one,\n"
          "the same as =FILE; may be repeated")
      ->type_name("FILE")
      ->allow_extra_args(false)
      ->needs(sim);
  command.add_option("--log", options.log_file, "Append the log to this file as well")
      ->type_name("FILE");
  command.footer(std::string(kPorts) + "\n\n" + kExitCodes);
}

// Opens the line, does the work and closes it.
template <typename Work>
ExitCode WithSession(const vt63x::SessionOptions& options, const Work& work) {
  vt63x::Session session(options);
  return session.Open() ? work(session) : session.Conclude();
}

ExitCode CheckFile(const std::string& path) {
  std::string content;
  const int error = vt63x::ReadWholeFile(path.c_str(), content);
  if (error != 0) {
    vt63x::PrintMessage(path + ": " + vt63x::FileErrorText(error));
    return vt63x::EXIT_FILE_OR_PORT;
  }
  const vt63x::CommandFile file(content);
  unsigned errors = 0;
  unsigned warnings = 0;
  const std::vector<vt63x::Finding> findings = vt63x::CheckCommandFile(file);
  for (const vt63x::Finding& finding : findings) {
    vt63x::PrintMessage(path + ":" + std::to_string(finding.line) + ": " + finding.text);
    ++(finding.error ? errors : warnings);
  }
  if (findings.size() >= vt63x::MOST_FINDINGS) {
    vt63x::PrintMessage(path + ": that is enough; the rest is not looked at");
  }
  vt63x::PrintMessage(path + ": " + std::to_string(file.line_count()) + " lines, " +
                      std::to_string(errors) + " errors, " + std::to_string(warnings) +
                      " warnings");
  return errors > 0 ? vt63x::EXIT_BAD_LINES : vt63x::EXIT_ALL_DONE;
}

ExitCode CheckFiles(const std::vector<std::string>& paths) {
  ExitCode code = vt63x::EXIT_ALL_DONE;
  for (const std::string& path : paths) vt63x::Raise(code, CheckFile(path));
  return code;
}

int Main(int argc, char** argv) {
  CLI::App app(kAbout, "wcf");
  app.set_version_flag("--version", "wcf " VT63X_VERSION);
  app.require_subcommand(1);
  app.footer(kExitCodes);
  ExitCode code = vt63x::EXIT_ALL_DONE;
  vt63x::SessionOptions options;
  options.cards = ParseCards(kDefaultField);

  std::string file;
  std::int32_t resume_line = 0;
  CLI::App* const run = app.add_subcommand("run", "Run a command file");
  run->add_option("FILE", file, "Command file (.wcf)")->required()->type_name("");
  run->add_option("--resume", resume_line, "Skip the first LINE lines, as after a BRK on line LINE")
      ->type_name("LINE")
      ->check(CLI::Range(0, std::numeric_limits<std::int32_t>::max()));
  AddLineOptions(*run, options);
  run->callback([&] {
    options.script = true;
    code = WithSession(options, [&](auto& session) { return session.Run(file, resume_line); });
  });

  std::vector<std::string> lines;
  CLI::App* const exec = app.add_subcommand(
      "exec", "Run lines of the command language, as if they stood in a command file");
  exec->add_option("LINE", lines, "For example 'GR 37' 'RE 37 91'")->required()->type_name("");
  AddLineOptions(*exec, options);
  exec->callback([&] {
    options.script = true;
    code = WithSession(options, [&](auto& session) { return session.Execute(lines); });
  });

  std::vector<std::string> files;
  CLI::App* const check =
      app.add_subcommand("check", "Report what is wrong with command files, without a port");
  check->add_option("FILE", files, "Command files (.wcf)")->required()->type_name("");
  check->footer(kExitCodes);
  check->callback([&] { code = CheckFiles(files); });

  app.add_subcommand("commands", "Print the reference of the command language")->callback([&] {
    vt63x::Session session(options);
    vt63x::ShowCommandHelp(session.action());
    code = session.exit_code();
  });

  CLI::App* const dump = app.add_subcommand("dump", "Print the chip's registers");
  AddLineOptions(*dump, options);
  dump->callback(
      [&] { code = WithSession(options, [](auto& session) { return session.Dump(); }); });

  vt63x::CardOptions card_options;
  CLI::App* const card = app.add_subcommand("card", "Drive a card in front of the chip");
  AddLineOptions(*card, options);
  vt63x::AddCardCommands(*card, card_options, [&] {
    options.objects_only = card_options.json;
    code = WithSession(options,
                       [&](auto& session) { return vt63x::RunCardCommand(session, card_options); });
  });

  try {
    app.parse(argc, argv);
  } catch (const CLI::RequiredError& error) {
    // The library asks for a command without naming the word that is none.
    for (const std::string& word : app.remaining(true)) {
      if (word[0] == '-') continue;
      vt63x::PrintMessage("there is no command '" + word + "'");
      break;
    }
    app.exit(error);
    return vt63x::EXIT_USAGE;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? vt63x::EXIT_ALL_DONE : vt63x::EXIT_USAGE;
  }
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  vt63x::WatchForBreak();
  vt63x::MakeUnbuffered(stdout);
  try {
    return Main(argc, argv);
  } catch (const std::exception& error) {
    vt63x::PrintMessage(error.what());
    return vt63x::EXIT_FILE_OR_PORT;
  }
}
