// SPDX-License-Identifier: MIT

#include "simulator/field_command.h"

#include <algorithm>
#include <iterator>

#include "simulator/card_options.h"

namespace vt63x {
namespace {

// Empty when all went well, else what was wrong. `output` takes lines of its own.
using Handler = std::string (*)(Field& field, std::string_view operand, std::string& output);

std::string AddCard(Field& field, std::string_view operand, std::string&) {
  std::string error;
  const auto option = ParseCardOption(operand, error);
  if (!option) return error;
  std::unique_ptr<Card> card = MakeCard(*option, error);
  if (card != nullptr) field.Add(std::move(card), error);
  return error;
}

std::string RemoveCard(Field& field, std::string_view operand, std::string&) {
  std::string error;
  const auto identifier = CardIdentifier::Parse(operand, error);
  if (!identifier) return error;
  if (field.Remove(*identifier) != nullptr) return "";
  return "the card " + identifier->Text() + " is not in the field";
}

std::string ListCards(Field& field, std::string_view operand, std::string& output) {
  if (!operand.empty()) return "nothing goes behind 'field list'";
  for (const auto& card : field.cards()) {
    output += card->identifier().Text() + " " + card->type_name() + " " +
              StateName(card->state(), card->starred()) + "\n";
  }
  return "";
}

std::string SetAirFault(Field& field, std::string_view operand, std::string&) {
  if (operand == "none") {
    field.faults().Clear();
    return "";
  }
  std::string error;
  const auto fault = ParseAirFault(operand, error);
  if (fault) field.faults().Set(*fault);
  return error;
}

struct Command {
  std::string_view words;
  Handler run;
};

constexpr Command kCommands[] = {
    {"card add", AddCard},
    {"card remove", RemoveCard},
    {"field list", ListCards},
    {"air", SetAirFault},
};

constexpr std::string_view kBlanks = " \t\r";

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Whether the line is this command: its words and nothing, or a blank and an operand, behind them.
bool IsCommand(std::string_view line, const Command& command) {
  return line.starts_with(command.words) &&
         (line.size() == command.words.size() ||
          kBlanks.find(line[command.words.size()]) != std::string_view::npos);
}

}  // namespace

std::string RunFieldCommand(Field& field, std::string_view line) {
  line = Trimmed(line);
  if (line.empty()) return "";
  const auto* const command = std::ranges::find_if(
      kCommands, [&](const Command& candidate) { return IsCommand(line, candidate); });
  if (command == std::end(kCommands)) {
    std::string known;
    for (const Command& candidate : kCommands) known += " " + Quoted(candidate.words);
    return "error: unknown command; known are" + known + "\n";
  }
  std::string output;
  const std::string error =
      command->run(field, Trimmed(line.substr(command->words.size())), output);
  return output + (error.empty() ? "ok\n" : "error: " + error + "\n");
}

}  // namespace vt63x
