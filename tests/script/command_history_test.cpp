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

TEST(CommandHistoryTest, StepsBackAndForwardGoRound) {
  AppState empty;
  for (int i = 0; i < 2; ++i) EXPECT_EQ(HistoryBack(empty), nullptr);
  EXPECT_EQ(HistoryForward(empty), nullptr);
  AppState back;
  AppState forward;
  for (const char* line : {"SR 01 02", "GR 01", "GR 02"}) {
    HistoryStore(back, line);
    HistoryStore(forward, line);
  }
  for (const char* shown : {"GR 02", "GR 01", "SR 01 02", "GR 02", "GR 01"}) {
    EXPECT_STREQ(HistoryBack(back), shown);
  }
  for (const char* shown : {"SR 01 02", "GR 01", "GR 02", "SR 01 02"}) {
    EXPECT_STREQ(HistoryForward(forward), shown);
  }
  EXPECT_STREQ(HistoryBack(forward), "GR 02");
  // After Escape the first step back shows again what was shown last.
  forward.history_browse = 0;
  EXPECT_STREQ(HistoryBack(forward), "GR 02");
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
