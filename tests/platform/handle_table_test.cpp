// SPDX-License-Identifier: MIT

#include "platform/kernel/handle_table.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "platform/kernel/event.h"

namespace vt63x::kernel {
namespace {

TEST(HandleTable, NoValueComesTwiceAndStaleOnesReachNothing) {
  HandleTable table;
  std::set<HANDLE> seen{nullptr, INVALID_HANDLE_VALUE};
  HANDLE stale = nullptr;
  for (int round = 0; round < 1000; ++round) {
    const HANDLE handle = table.Add(std::make_shared<Event>());
    EXPECT_TRUE(seen.insert(handle).second);
    EXPECT_EQ(table.Find(stale), nullptr);
    EXPECT_EQ(table.Remove(stale), nullptr);
    EXPECT_NE(table.Remove(handle), nullptr);
    stale = handle;
  }
}

TEST(HandleTable, FullTableRefusesAndRecovers) {
  HandleTable table;
  const auto object = std::make_shared<Event>();
  std::vector<HANDLE> handles;
  for (std::size_t i = 0; i < HandleTable::kCapacity; ++i) handles.push_back(table.Add(object));
  EXPECT_NE(handles.back(), nullptr);
  EXPECT_EQ(table.Add(object), nullptr);
  table.Remove(handles[100]);
  EXPECT_NE(table.Add(object), nullptr);
}

}  // namespace
}  // namespace vt63x::kernel
