// SPDX-License-Identifier: MIT

// The files that keep cards' memories.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>

#include "simulator/block_card.h"
#include "simulator/card_image.h"
#include "test_reader.h"
#include "tests/support/temp_directory.h"

namespace vt63x {
namespace {

namespace fs = std::filesystem;

class CardFileTest : public testing::Test {
 protected:
  static Bytes Content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void Put(const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  std::unique_ptr<Card> Make(const std::string& name) {
    const auto option = ParseCardOption(name + "=" + path.string(), error);
    return option ? MakeCard(*option, error) : nullptr;
  }

  const TempDirectory directory;
  const fs::path& folder = directory.path();
  const fs::path path = folder / "card.bin";
  std::string error;
};

TEST_F(CardFileTest, MemoryIsThereAgainWithTheNextCard) {
  const Bytes data(16, 0x5A);
  for (const bool first : {true, false}) {
    ReaderBench bench;
    TestReader& reader = bench.reader;
    ASSERT_TRUE(bench.field.Add(Make("01020304")));
    ASSERT_TRUE(reader.Activate());
    ASSERT_TRUE(reader.Authenticate(0x60, 4, kKey, {1, 2, 3, 4}));
    EXPECT_EQ(reader.Transceive({0x30, 4}).Is(data), !first);
    EXPECT_TRUE(reader.Transceive({0xA0, 4}).IsNibble(0xA));
    EXPECT_TRUE(reader.Transceive(data).IsNibble(0xA));
  }
  EXPECT_EQ(fs::file_size(path), 1024u);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);  // nothing else left behind
}

TEST_F(CardFileTest, FileThatDoesNotFitIsRefusedAndLeftAlone) {
  std::unique_ptr<Card> card = Make("01020304");
  ASSERT_TRUE(card);
  EXPECT_FALSE(fs::exists(path)) << "made by the first change";
  const auto memory = dynamic_cast<const BlockCard&>(*card).memory();
  const Bytes good(memory.begin(), memory.end());
  card.reset();
  Bytes other = good, longer = good;
  other[3] = 0xFF;
  longer.push_back(0);
  using Case = std::tuple<const char*, Bytes, const char*>;
  for (const auto& [name, content, reason] : {
           Case{"01020304", Bytes(good.begin(), good.end() - 1), "1024 bytes"},
           Case{"01020304", longer, "1024 bytes"},
           Case{"01020304:ostrel256", good, "4096 bytes"},
           Case{"01020304", other, "another card"},
       }) {
    Put(content);
    EXPECT_FALSE(Make(name)) << reason;
    EXPECT_NE(error.find(reason), std::string::npos) << error;
    EXPECT_EQ(Content(path), content);
  }
}

TEST_F(CardFileTest, WhatIsNoFileOrCannotBeMadeIsRefused) {
  fs::create_directory(path);
  EXPECT_FALSE(Make("01020304"));
  EXPECT_NE(error.find("is not a file"), std::string::npos) << error;
  fs::remove(path);
  const auto option = ParseCardOption("01020304=" + (folder / "no" / "card").string(), error);
  EXPECT_FALSE(MakeCard(*option, error));
  EXPECT_NE(error.find("no such directory"), std::string::npos) << error;
}

TEST_F(CardFileTest, NameWithoutAFolderIsOneOfTheCurrentFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder);
  auto image = CardImage::Open("card.bin", Bytes(16, 0), 0, error);
  fs::current_path(before);
  ASSERT_TRUE(image) << error;
  EXPECT_TRUE(image->Change(0, Bytes{1, 2}));
  EXPECT_EQ(fs::file_size(path), 16u);
}

// Whether the file is there already or not.
TEST_F(CardFileTest, FileInUseIsRefused) {
  for (const bool exists : {false, true}) {
    ASSERT_EQ(fs::exists(path), exists);
    auto first = CardImage::Open(path, Bytes(16, 0), 0, error);
    ASSERT_TRUE(first) << error;
    EXPECT_FALSE(CardImage::Open(path, Bytes(16, 0), 0, error));
    EXPECT_NE(error.find("in use"), std::string::npos) << error;
    EXPECT_TRUE(first->Change(0, Bytes{1, 2}));
    EXPECT_FALSE(CardImage::Open(path, Bytes(16, 0), 0, error)) << "replaced and free";
  }
}

TEST_F(CardFileTest, LinkAndPermissionsOutliveAChange) {
  constexpr fs::perms kPrivate = fs::perms::owner_read | fs::perms::owner_write;
  const fs::path target = folder / "target";
  const fs::path bystander = folder / "bystander";
  std::ofstream(bystander) << "text";
  std::error_code no_links;
  fs::create_symlink("target", path, no_links);
  if (no_links) GTEST_SKIP() << "no symbolic links here";
  EXPECT_FALSE(CardImage::Open(path, Bytes(16, 0), 0, error));
  EXPECT_NE(error.find("leads nowhere"), std::string::npos) << error;
  for (const char* suffix : {".new", ".lock"}) {
    fs::create_symlink(bystander, target.string() + suffix);
  }
  EXPECT_FALSE(CardImage::Open(target, Bytes(16, 0), 0, error)) << "locks what a link leads to";
  fs::remove(target.string() + ".lock");
  for (const fs::perms permissions : {kPrivate, kPrivate | fs::perms::group_read}) {
    if (fs::exists(target)) fs::permissions(target, permissions);
    auto image = CardImage::Open(fs::exists(target) ? path : target, Bytes(16, 0), 0, error);
    ASSERT_TRUE(image) << error;
    EXPECT_TRUE(image->Change(0, Bytes{1, 2}));
    EXPECT_EQ(fs::status(target).permissions(), permissions);
  }
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_EQ(Content(target)[1], 2);
  EXPECT_EQ(fs::file_size(bystander), 4u);
}

// A directory in the place of the file cannot be replaced by one.
TEST_F(CardFileTest, ChangeThatCannotBeKeptIsRefusedAndUndone) {
  ReaderBench bench;
  auto& [chip, field, reader] = bench;
  ASSERT_TRUE(field.Add(Make("01020304:ostrel-page")));
  fs::create_directories(path / "full");
  ASSERT_TRUE(reader.Activate());
  EXPECT_TRUE(reader.Transceive({0xA2, 0x04, 1, 2, 3, 4}).IsNibble(0x4));
  ASSERT_EQ(StoreErrors(field).size(), 1u);
  EXPECT_NE(StoreErrors(field)[0].find("cannot be written"), std::string::npos);
  ASSERT_TRUE(reader.Activate());
  EXPECT_TRUE(reader.Transceive({0x30, 0x04}).Is(Bytes(16, 0)));
  fs::remove_all(path);
  EXPECT_TRUE(reader.Transceive({0xA2, 0x04, 1, 2, 3, 4}).IsNibble(0xA));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2);  // and the lock
}

TEST(CardImage, ChangeOutsideIsRefused) {
  CardImage image(Bytes(16, 0));
  const Bytes two = {1, 2};
  EXPECT_TRUE(image.Change(14, two));
  EXPECT_FALSE(image.Change(15, two));
  EXPECT_FALSE(image.Change(17, {}));
  EXPECT_FALSE(image.Change(static_cast<std::size_t>(-1), two));
  EXPECT_EQ(image.bytes()[15], 2);
}

}  // namespace
}  // namespace vt63x
