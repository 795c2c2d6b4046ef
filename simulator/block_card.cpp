// SPDX-License-Identifier: MIT

#include "simulator/block_card.h"

#include <algorithm>
#include <utility>

namespace vt63x {
namespace {

constexpr std::size_t kKeySize = 6;
constexpr std::size_t kBitsAt = 6;  // in a trailer: the condition bits and the byte for anything
constexpr std::size_t kKeyBAt = 10;

struct Model {
  std::size_t blocks;
  std::uint8_t atqa;
  std::uint8_t sak;
  const char* name;
};

const Model& ModelOf(BlockCard::Size size) {
  static constexpr Model kModels[] = {{64, 0x04, 0x08, "ostrel64"}, {256, 0x02, 0x18, "ostrel256"}};
  return kModels[size == BlockCard::Size::k64Blocks ? 0 : 1];
}

CardReply Refuse() { return {CardReply::Kind::kRefusal}; }
CardReply Acknowledge() { return {CardReply::Kind::kAcknowledge}; }

CardReply Answer(BlockView data) { return {CardReply::Kind::kData, AirFrame::WithCrcA(data)}; }

}  // namespace

struct BlockCard::Command {
  std::uint8_t code;
  CardReply (BlockCard::*run)(std::uint8_t block);
};

constexpr BlockCard::Command BlockCard::kCommands[] = {
    {0x30, &BlockCard::Read},           {0xA0, &BlockCard::BeginWrite},
    {0xB0, &BlockCard::Transfer},       {0xC0, &BlockCard::BeginDecrement},
    {0xC1, &BlockCard::BeginIncrement}, {0xC2, &BlockCard::BeginRestore},
};

BlockCard::BlockCard(const CardIdentifier& identifier, Size size, std::vector<std::uint8_t> fresh)
    : Card(identifier, ModelOf(size).atqa, ModelOf(size).sak),
      size_(size),
      image_(std::move(fresh)) {}

std::unique_ptr<BlockCard> BlockCard::Make(const CardIdentifier& identifier, Size size,
                                           const std::string& file, std::string& error) {
  std::unique_ptr<BlockCard> card(new BlockCard(identifier, size, {}));
  if (file.empty()) {
    card->image_ = CardImage(card->Delivered());
    return card;
  }
  auto image = CardImage::Open(file, card->Delivered(), identifier.bytes().size(), error);
  if (!image) return nullptr;
  card->image_ = *std::move(image);
  return card;
}

const char* BlockCard::type_name() const { return ModelOf(size_).name; }

// Block 0: the identifier, the check byte of a short one, then what the card answers to selection
// and request. Every trailer: the default keys, all data blocks open to either key.
std::vector<std::uint8_t> BlockCard::Delivered() const {
  constexpr std::uint8_t kTransportBits[] = {0xFF, 0x07, 0x80, 0x69};
  std::vector<std::uint8_t> memory(ModelOf(size_).blocks * kBlockSize);
  auto at = std::ranges::copy(identifier().bytes(), memory.begin()).out;
  if (identifier().LevelCount() == 1) *at++ = CheckByteOf(identifier().LevelBytes(0));
  *at++ = sak();
  std::ranges::copy(Atqa(), at);
  constexpr std::size_t kSectorSize = kBlocksPerSector * kBlockSize;
  for (std::size_t sector = 0; sector < memory.size(); sector += kSectorSize) {
    const auto trailer = memory.begin() + static_cast<std::ptrdiff_t>(sector + 3 * kBlockSize);
    std::ranges::copy(kDefaultKey, trailer);
    std::ranges::copy(kTransportBits, trailer + kBitsAt);
    std::ranges::copy(kDefaultKey, trailer + kKeyBAt);
  }
  return memory;
}

CardReply BlockCard::OnCommand(Data data) {
  if (second_step_ != nullptr) return (this->*std::exchange(second_step_, nullptr))(data);
  const auto* const command = std::ranges::find(kCommands, data[0], &Command::code);
  if (command == std::end(kCommands) || data.size() != 2) return {};
  const std::uint8_t block = data[1];
  if (!IsOpen(block)) return Refuse();
  return (this->*command->run)(block);
}

bool BlockCard::AcceptsKey(const KeyClaim& claim) {
  if (second_step_ != nullptr || claim.block >= ModelOf(size_).blocks) return false;
  const BlockView trailer = TrailerOf(claim.block);
  const auto key = trailer.subspan(claim.key_b ? kKeyBAt : 0, kKeySize);
  if (!ConditionOf(trailer, 3) || !std::ranges::equal(key, claim.key)) return false;
  key_ = claim.key_b ? kKeyB : kKeyA;
  sector_ = claim.block / kBlocksPerSector;
  return true;
}

void BlockCard::OnDeselect() {
  key_ = kNever;
  number_.reset();
  second_step_ = nullptr;
}

BlockView BlockCard::Block(std::size_t block) const {
  return image_.bytes().subspan(block * kBlockSize).first<kBlockSize>();
}

bool BlockCard::IsOpen(std::uint8_t block) const {
  return key_ != kNever && block < ModelOf(size_).blocks && block / kBlocksPerSector == sector_;
}

// The key accepted, as far as it opens anything in the open sector.
KeySet BlockCard::UsableKey(std::uint8_t block) const {
  const auto condition = ConditionOf(TrailerOf(block), 3);
  if (!condition) return kNever;
  const bool key_b_is_data = TrailerConditionsOf(*condition).key_b_read != kNever;
  return key_ == kKeyB && key_b_is_data ? kNever : key_;
}

bool BlockCard::MayUse(std::uint8_t block, KeySet DataConditions::*condition) const {
  const auto bits = ConditionOf(TrailerOf(block), block % kBlocksPerSector);
  return bits && (DataConditionsOf(*bits).*condition & UsableKey(block)) != 0;
}

// The conditions of the trailer with the keys taken out that are not the one in use.
TrailerConditions BlockCard::OpenTrailer(std::uint8_t block) const {
  const KeySet key = UsableKey(block);
  const auto bits = ConditionOf(TrailerOf(block), 3);
  if (!bits) return {};
  TrailerConditions open = TrailerConditionsOf(*bits);
  for (KeySet TrailerConditions::*part :
       {&TrailerConditions::key_a_write, &TrailerConditions::bits_read,
        &TrailerConditions::bits_write, &TrailerConditions::key_b_read,
        &TrailerConditions::key_b_write}) {
    open.*part = static_cast<KeySet>(open.*part & key);
  }
  return open;
}

CardReply BlockCard::Read(std::uint8_t block) {
  if (block % kBlocksPerSector == 3) return ReadTrailer(Block(block), OpenTrailer(block));
  if (!MayUse(block, &DataConditions::read)) return Refuse();
  return Answer(Block(block));
}

CardReply BlockCard::ReadTrailer(BlockView trailer, const TrailerConditions& conditions) const {
  if (conditions.bits_read == kNever) return Refuse();
  std::array<std::uint8_t, kBlockSize> shown{};
  const std::size_t end = conditions.key_b_read != kNever ? kBlockSize : kKeyBAt;
  for (std::size_t index = kBitsAt; index < end; ++index) shown[index] = trailer[index];
  return Answer(shown);
}

CardReply BlockCard::BeginWrite(std::uint8_t block) {
  const TrailerConditions trailer = OpenTrailer(block);
  const bool allowed =
      block % kBlocksPerSector == 3
          ? (trailer.key_a_write | trailer.bits_write | trailer.key_b_write) != kNever
          : block != 0 && MayUse(block, &DataConditions::write);
  if (!allowed) return Refuse();
  step_block_ = block;
  second_step_ = &BlockCard::FinishWrite;
  return Acknowledge();
}

CardReply BlockCard::FinishWrite(Data data) {
  if (data.size() != kBlockSize) return {};
  if (step_block_ % kBlocksPerSector == 3) return WriteTrailer(data);
  return image_.Change(step_block_ * kBlockSize, data) ? Acknowledge() : Refuse();
}

CardReply BlockCard::WriteTrailer(Data data) {
  const TrailerConditions may = OpenTrailer(step_block_);
  std::array<std::uint8_t, kBlockSize> trailer{};
  std::ranges::copy(Block(step_block_), trailer.begin());
  const auto replace = [&](KeySet allowed, std::size_t from, std::size_t to) {
    for (std::size_t index = from; allowed != kNever && index < to; ++index) {
      trailer[index] = data[index];
    }
  };
  replace(may.key_a_write, 0, kBitsAt);
  replace(may.bits_write, kBitsAt, kKeyBAt);
  replace(may.key_b_write, kKeyBAt, kBlockSize);
  return image_.Change(step_block_ * kBlockSize, trailer) ? Acknowledge() : Refuse();
}

CardReply BlockCard::BeginNumber(std::uint8_t block, KeySet DataConditions::*condition,
                                 CardReply (BlockCard::*finish)(Data)) {
  const bool is_data = block != 0 && block % kBlocksPerSector != 3;
  if (!is_data || !MayUse(block, condition) || !UnpackValue(Block(block))) return Refuse();
  step_block_ = block;
  second_step_ = finish;
  return Acknowledge();
}

CardReply BlockCard::BeginIncrement(std::uint8_t block) {
  return BeginNumber(block, &DataConditions::increment, &BlockCard::FinishIncrement);
}

CardReply BlockCard::BeginDecrement(std::uint8_t block) {
  return BeginNumber(block, &DataConditions::decrement, &BlockCard::FinishDecrement);
}

CardReply BlockCard::BeginRestore(std::uint8_t block) {
  return BeginNumber(block, &DataConditions::decrement, &BlockCard::FinishRestore);
}

CardReply BlockCard::FinishIncrement(Data data) {
  if (data.size() != 4) return {};
  return LoadNumber(AddAmount(UnpackValue(Block(step_block_))->value, data.first<4>()));
}

CardReply BlockCard::FinishDecrement(Data data) {
  if (data.size() != 4) return {};
  return LoadNumber(TakeAmount(UnpackValue(Block(step_block_))->value, data.first<4>()));
}

CardReply BlockCard::FinishRestore(Data data) {
  if (data.size() != 4) return {};
  return LoadNumber(UnpackValue(Block(step_block_))->value);
}

// Success is silent.
CardReply BlockCard::LoadNumber(std::optional<std::int32_t> value) {
  if (!value) return Refuse();
  number_ = ValueBlock{*value, UnpackValue(Block(step_block_))->address};
  return {CardReply::Kind::kSilence};
}

CardReply BlockCard::Transfer(std::uint8_t block) {
  const bool is_data = block != 0 && block % kBlocksPerSector != 3;
  if (!number_ || !is_data || !MayUse(block, &DataConditions::decrement)) return Refuse();
  return image_.Change(block * kBlockSize, PackValue(*number_)) ? Acknowledge() : Refuse();
}

}  // namespace vt63x
