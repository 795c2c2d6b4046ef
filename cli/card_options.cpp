// SPDX-License-Identifier: MIT

#include "cli/card_options.h"

#include <memory>
#include <string>

namespace vt63x {
namespace {

// Accepts texts of 2 * count hexadecimal digits, for the counts given.
CLI::Validator HexDigits(std::initializer_list<std::size_t> counts, const std::string& words) {
  const std::vector<std::size_t> allowed(counts);
  return {[allowed, words](const std::string& text) -> std::string {
            for (const std::size_t count : allowed) {
              if (BytesFromHex(text, count)) return "";
            }
            return "'" + text + "' is not " + words;
          },
          "", "hex"};
}

void AddBlock(CLI::App& command, CardOptions& options, const char* name, const char* words) {
  command.add_option(name, options.block, words)
      ->required()
      ->type_name("")
      ->check(CLI::Range(0, 255));
}

void AddData(CLI::App& command, CardOptions& options, std::size_t count) {
  const std::string words = std::to_string(2 * count) + " hexadecimal digits";
  command
      .add_option_function<std::string>(
          "HEX",
          [&options, count](const std::string& text) { options.data = *BytesFromHex(text, count); },
          "The data, " + words)
      ->required()
      ->type_name("")
      ->check(HexDigits({count}, words));
}

void AddKey(CLI::App& card, std::optional<Bytes>& key, const char* name, const char* words) {
  card.add_option_function<std::string>(
          name, [&key](const std::string& text) { key = *BytesFromHex(text, 6); }, words)
      ->type_name("HEX")
      ->check(HexDigits({6}, "a key of 12 hexadecimal digits"));
}

constexpr char kMoreOptions[] =
    "Line, keys, --uid and --json are options of `wcf card` and may stand here as well: see\n"
    "`wcf card --help`.";

bool UsesKeys(CardAction action) {
  return action != CardAction::kScan && action != CardAction::kHalt &&
         action != CardAction::kWritePage;
}

void AddTarget(CLI::App& command, CardOptions& options) {
  command
      .add_option("--to", options.target,
                  "Block of the same sector that takes the result; BLOCK itself if none")
      ->type_name("BLOCK")
      ->check(CLI::Range(0, 255));
}

}  // namespace

void AddCardCommands(CLI::App& card, CardOptions& options, const std::function<void()>& run) {
  CardOptions* const chosen = &options;
  card.require_subcommand(1);
  card.add_flag("--json", options.json, "One JSON object a line");
  AddKey(card, options.key_a, "--key-a", "Authenticate with this key A, 12 hexadecimal digits");
  AddKey(card, options.key_b, "--key-b", "Authenticate with this key B, 12 hexadecimal digits");
  card.add_option_function<std::string>(
          "--uid",
          [chosen](const std::string& text) {
            chosen->identifier = *BytesFromHex(text, text.size() / 2);
          },
          "The card with this identifier; any if none is given")
      ->type_name("HEX")
      ->check(HexDigits({4, 7, 10}, "an identifier of 8, 14 or 20 hexadecimal digits"));

  card.get_option("--key-a")->excludes("--key-b");

  const auto add = [chosen, run](CLI::App& parent, const char* name, const char* words,
                                 CardAction action) {
    CLI::App* const command = parent.add_subcommand(name, words);
    command->fallthrough()->footer(kMoreOptions);
    command->callback([chosen, run, action] {
      chosen->action = action;
      if (!UsesKeys(action) && (chosen->key_a || chosen->key_b)) {
        throw CLI::ValidationError("--key", "this command authenticates for nothing");
      }
      run();
    });
    return command;
  };
  const auto add_block = [&](CLI::App& parent, const char* name, const char* words,
                             CardAction action) {
    CLI::App* const command = add(parent, name, words, action);
    AddBlock(*command, options, "BLOCK", "Block, 0 to 255");
    return command;
  };

  add(card, "scan", "Every card in the field", CardAction::kScan);
  add(card, "halt", "Select a card and halt it", CardAction::kHalt);
  add_block(card, "auth", "Authenticate for a block", CardAction::kAuthenticate);
  add_block(card, "read", "Read a block of 16 bytes", CardAction::kRead);
  AddData(*add_block(card, "write", "Write a block of 16 bytes", CardAction::kWrite), options, 16);
  CLI::App* const page =
      add(card, "page", "Write a page of 4 bytes, without authentication", CardAction::kWritePage);
  AddBlock(*page, options, "PAGE", "Page, 0 to 255");
  AddData(*page, options, 4);

  CLI::App* const value = card.add_subcommand("value", "Value blocks");
  value->fallthrough()->require_subcommand(1);
  for (const auto& [name, words, action] :
       {std::tuple{"dec", "Take N off a value", CardAction::kDecrement},
        std::tuple{"inc", "Add N to a value", CardAction::kIncrement}}) {
    CLI::App* const command = add_block(*value, name, words, action);
    command->add_option("N", options.operand, "0 to 4294967295")->required()->type_name("");
    AddTarget(*command, options);
  }
  AddTarget(
      *add_block(*value, "restore", "Take a value over to another block", CardAction::kRestore),
      options);
  add_block(*value, "transfer", "Only the transfer that ends the others; cards refuse it by itself",
            CardAction::kTransfer);
}

}  // namespace vt63x
