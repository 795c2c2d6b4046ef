// SPDX-License-Identifier: MIT

#include "script/command_history.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vt63x {
namespace {

std::vector<std::string> Entries(const AppState& state) {
  std::vector<std::string> entries;
  for (const history_entry& entry : state.cmd_history) entries.push_back(entry.data());
  return entries;
}

TEST(CommandHistoryTest, EmptyHistoryHasNothingToShow) {
  AppState state;
  EXPECT_EQ(HistoryBack(state), nullptr);
  EXPECT_EQ(HistoryBack(state), nullptr);
  EXPECT_EQ(HistoryForward(state), nullptr);
}

TEST(CommandHistoryTest, BackStartsAtTheLastLineAndGoesRound) {
  AppState state;
  for (const char* line : {"SR 01 02", "GR 01", "GR 02"}) HistoryStore(state, line);
  for (const char* shown : {"GR 02", "GR 01", "SR 01 02", "GR 02", "GR 01"}) {
    EXPECT_STREQ(HistoryBack(state), shown);
  }
}

TEST(CommandHistoryTest, ForwardRightAfterALineShowsTheOldest) {
  AppState state;
  for (const char* line : {"SR 01 02", "GR 01", "GR 02"}) HistoryStore(state, line);
  for (const char* shown : {"SR 01 02", "GR 01", "GR 02", "SR 01 02"}) {
    EXPECT_STREQ(HistoryForward(state), shown);
  }
  EXPECT_STREQ(HistoryBack(state), "GR 02");
  // After Escape the first step back shows again what was shown last.
  state.history_browse = 0;
  EXPECT_STREQ(HistoryBack(state), "GR 02");
}

TEST(CommandHistoryTest, EqualLineMovesToTheEnd) {
  AppState state;
  for (const char* line : {"A", "B", "A"}) HistoryStore(state, line);
  EXPECT_EQ(Entries(state), (std::vector<std::string>{"B", "A"}));
  EXPECT_EQ(state.history_index, 1u);
}

TEST(CommandHistoryTest, SeventeenthLineTakesTheOldestAway) {
  AppState state;
  for (int i = 0; i < 17; ++i) HistoryStore(state, ("L" + std::to_string(i)).c_str());
  EXPECT_EQ(state.cmd_history.size(), 16u);
  EXPECT_EQ(Entries(state).front(), "L1");
  HistoryStore(state, "L5");  // in a full list
  EXPECT_EQ(state.cmd_history.size(), 16u);
  EXPECT_EQ(Entries(state).front(), "L1");
  EXPECT_EQ(Entries(state).back(), "L5");
}

TEST(CommandHistoryTest, LongLineIsCutToItsEntry) {
  AppState state;
  HistoryStore(state, std::string(500, 'x').c_str());
  EXPECT_EQ(Entries(state).front(), std::string(127, 'x'));
}

}  // namespace
}  // namespace vt63x
