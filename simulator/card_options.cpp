// SPDX-License-Identifier: MIT

#include "simulator/card_options.h"

#include <algorithm>
#include <iterator>

#include "simulator/block_card.h"
#include "simulator/fault_text.h"
#include "simulator/page_card.h"

namespace vt63x {
namespace {

using Identifier = const CardIdentifier&;
using File = const std::string&;

template <BlockCard::Size size>
std::unique_ptr<Card> MakeBlockCard(Identifier identifier, File file, std::string& error) {
  return BlockCard::Make(identifier, size, file, error);
}

std::unique_ptr<Card> MakePageCard(Identifier identifier, File file, std::string& error) {
  return PageCard::Make(identifier, file, error);
}

std::unique_ptr<Card> MakePlainCard(Identifier identifier, File, std::string&) {
  return std::make_unique<PlainCard>(identifier);
}

struct CardType {
  std::string_view name;
  bool has_memory;
  std::unique_ptr<Card> (*make)(Identifier, File, std::string& error);
};

constexpr CardType kTypes[] = {
    {"ostrel64", true, MakeBlockCard<BlockCard::Size::k64Blocks>},
    {"ostrel256", true, MakeBlockCard<BlockCard::Size::k256Blocks>},
    {"ostrel-page", true, MakePageCard},
    {"plain", false, MakePlainCard},
};

const CardType* FindType(std::string_view name) {
  const auto* const found = std::ranges::find(kTypes, name, &CardType::name);
  return found == std::end(kTypes) ? nullptr : found;
}

}  // namespace

std::optional<CardOption> ParseCardOption(std::string_view text, std::string& error) {
  const std::optional<std::string_view> file = CutAt(text, '=');
  const std::string_view type_name = CutAt(text, ':').value_or(kTypes[0].name);
  const auto identifier = CardIdentifier::Parse(text, error);
  if (!identifier) return std::nullopt;
  const CardType* const type = FindType(type_name);
  if (type == nullptr) {
    error = "unknown kind of card " + Quoted(type_name) + "; known are";
    for (const CardType& known : kTypes) error.append(1, ' ').append(known.name);
    return std::nullopt;
  }
  if (file && (file->empty() || !type->has_memory)) {
    error = file->empty() ? "no file is named behind the =" : "a plain card has no memory to keep";
    return std::nullopt;
  }
  return CardOption{*identifier, std::string(type_name), std::string(file.value_or(""))};
}

bool KeepCardIn(const std::string& file, std::vector<CardOption>& cards, std::string& error) {
  for (CardOption& card : cards) {
    if (!card.file.empty() || !FindType(card.type)->has_memory) continue;
    card.file = file;
    return true;
  }
  error = "there is no card whose memory " + Quoted(file) + " could keep";
  return false;
}

bool FillField(Field& field, const std::vector<CardOption>& cards, std::string& error) {
  for (const CardOption& option : cards) {
    std::unique_ptr<Card> card = MakeCard(option, error);
    if (card == nullptr || field.Add(std::move(card), error) == nullptr) return false;
  }
  return true;
}

std::vector<std::string> StoreErrors(const Field& field) {
  std::vector<std::string> errors;
  for (const auto& card : field.cards()) {
    if (!card->store_error().empty()) errors.push_back(card->store_error());
  }
  return errors;
}

std::unique_ptr<Card> MakeCard(const CardOption& option, std::string& error) {
  const CardType* const type = FindType(option.type);
  if (type == nullptr) {
    error = "unknown kind of card " + Quoted(option.type);
    return nullptr;
  }
  return type->make(option.identifier, option.file, error);
}

}  // namespace vt63x
