// SPDX-License-Identifier: MIT

#ifndef VT63X_SIMULATOR_CARD_OPTIONS_H
#define VT63X_SIMULATOR_CARD_OPTIONS_H

// Cards as users name them: UID[:TYPE][=FILE]. UID is 8, 14 or 20 hexadecimal digits, FILE the file
// that keeps the card's memory (made by the first change when there is none), and TYPE one of
//
//   ostrel64      64 blocks of 16 bytes in sectors of four, with keys (the default)
//   ostrel256     256 such blocks
//   ostrel-page   64 pages of 4 bytes, without keys
//   plain         can be found and selected, has no memory and takes no FILE

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/card.h"
#include "simulator/card_identifier.h"
#include "simulator/field.h"

namespace vt63x {

struct CardOption {
  CardIdentifier identifier;
  std::string type;  // one of the names above
  std::string file;  // empty: none
};

// Nothing, and in `error` a line without full stop, when the text does not name a card.
std::optional<CardOption> ParseCardOption(std::string_view text, std::string& error);

// Makes `file` keep the memory of the first card in the list that has a memory and no file yet.
// False, and a line without full stop in `error`, when there is none.
bool KeepCardIn(const std::string& file, std::vector<CardOption>& cards, std::string& error);

// Puts all of them into a field; false, and a line for the user in `error`, when one does not fit
// or its file is not to be had.
bool FillField(Field& field, const std::vector<CardOption>& cards, std::string& error);

// What could not be stored by the cards of a field, a line for the user each.
std::vector<std::string> StoreErrors(const Field& field);

// Null, and a line for the user in `error`, when the file is not to be had or not this card's.
std::unique_ptr<Card> MakeCard(const CardOption& option, std::string& error);

}  // namespace vt63x

#endif
