// SPDX-License-Identifier: MIT
// Places by name, and what selects among registers of one name.
#include "diagnosis/RegisterBits.h"

#include <fmt/format.h>

namespace diagnosis {

using namespace layout;
namespace {

/// The byte that holds a bit of the access.
std::string PlaceOf(const CommandFacts& c, unsigned bit) {
  const uint64_t address = c.Field(c.layout.address), byte = bit / 8;
  switch (c.layout.kind) {
    case kCommandMemory:
      return fmt::format("memory {:#x}", address + byte);
    case kCommandPort:
      if (!c.IsPair()) return fmt::format("port {:#x}", (address + byte) & 0xFFFF);
      return fmt::format("register {:#x} behind {:#x}/{:#x}", (c.Field(c.layout.third) + byte) & 0xFF, address & 0xFFFF,
                         c.Field(c.layout.second) & 0xFFFF);
    case kCommandSmbus:
      return fmt::format("register {:#x} of SMBus device {:#x}, byte {} of {}", c.Field(c.layout.second),
                         address & 0xFE, byte, c.Width());
    default:
      return fmt::format("PCI {:x}:{:x}.{:x} register {:#x}", address, c.Field(c.layout.second),
                         c.Field(c.layout.third), c.Field(c.layout.reg) + byte);
  }
}

/// The chip behind a pair or at an SMBus address, whose registers a selection changes; "" elsewhere.
std::string GroupOf(const CommandFacts& c) {
  const uint64_t address = c.Field(c.layout.address);
  if (c.IsPair()) return fmt::format("{:#x}/{:#x}", address & 0xFFFF, c.Field(c.layout.second) & 0xFFFF);
  if (c.Is(kCommandSmbus)) return fmt::format("SMBus {:#x}", address & 0xFE);
  return "";
}

std::string BitName(const CommandFacts& c, unsigned bit) { return fmt::format("{} bit {}", PlaceOf(c, bit), bit % 8); }

unsigned BitsOf(const CommandFacts& c) { return c.Is(kCommandPci) ? 32 : 8 * c.Width(); }

std::string WhatIsWritten(const CommandFacts& c, const DirectionBits& d) {
  if (c.NamesArgument()) return fmt::format("argument {}", c.Argument());
  return fmt::format("{:#x} {:#x}", c.AndMask(d), c.OrMask(d));
}

/// Whether a direct access to a port goes to one of the ports of a pair.
bool IsPortOf(const std::string& place, const CommandFacts& pair) {
  return place == fmt::format("port {:#x}", pair.Field(pair.layout.address) & 0xFFFF) ||
         place == fmt::format("port {:#x}", pair.Field(pair.layout.second) & 0xFFFF);
}

template <typename Action>
void EachTestedBit(const CommandFacts& c, const DirectionBits& d, Action action) {
  const uint64_t bits = c.TestedBits(d);
  for (unsigned bit = 0; bit < 64; ++bit)
    if (bits >> bit & 1) action(bit);
}

}  // namespace

RegisterBits::RegisterBits(const std::vector<RecordView>& records) {
  for (const RecordView& record : records) {
    const CommandContext context = ContextOf(record);
    if (!record.Row() || context.sensor) continue;
    for (const CommandView& command : Commands(record)) {
      if (!command.layout) continue;
      const CommandFacts c{command, *command.layout, context};
      if (c.Compares(kGetting)) EachTestedBit(c, kGetting, [&](unsigned bit) { tested_.insert(PlaceOf(c, bit)); });
    }
  }
}

std::string RegisterBits::Select(const CommandFacts& c, const Selected& selected) const {
  const std::string group = GroupOf(c);
  if (group.empty()) return "";
  std::string text;
  for (const Written& each : selected)
    if ((each.group == group && !tested_.contains(each.place)) || (c.IsPair() && IsPortOf(each.place, c)))
      text += each.place + " " + each.text + ";";
  return text;
}

unsigned RegisterBits::Number(const CommandFacts& c, unsigned bit, const Selected& selected) {
  const std::string name = PlaceOf(c, bit) + "|" + Select(c, selected) + "|" + std::to_string(bit % 8);
  return numbers_.emplace(name, static_cast<unsigned>(numbers_.size())).first->second;
}

void RegisterBits::AddTest(const CommandFacts& c, const DirectionBits& d, const Selected& selected, Reading* reading) {
  if (!c.FixedBitsFit(d)) reading->never = true;
  EachTestedBit(c, d, [&](unsigned bit) {
    const bool value = c.Field(c.layout.expected) >> bit & 1;
    const unsigned number = Number(c, bit, selected);
    // The same bit behind two selections may be one or two.
    if (reading->places.emplace(BitName(c, bit), number).first->second != number)
      reading->unknown = "the same register is tested behind two selections";
    const auto [known, fresh] = reading->tested.emplace(number, value);
    if (!fresh && known->second != value) reading->contradicts = true;
  });
}

void RegisterBits::AddWrite(const CommandFacts& c, const DirectionBits& d, const Selected& selected, Setting* setting) {
  setting->writes = true;
  // What a PCI write keeps is not the old value but 0.
  const uint64_t keeps = c.Is(kCommandPci) ? 0 : c.AndMask(d), ones = c.OrMask(d);
  for (unsigned bit = 0; bit < BitsOf(c); ++bit) {
    const unsigned number = Number(c, bit, selected);
    if (setting->places.emplace(BitName(c, bit), number).first->second != number)
      setting->unknown = "the same register is written behind two selections";
    if (c.NamesArgument())
      setting->written.erase(number);
    else if (ones >> bit & 1)
      setting->written[number] = true;
    else if (!(keeps >> bit & 1))
      setting->written[number] = false;
  }
}

Reading RegisterBits::ReadingOf(const RecordView& record) {
  Reading reading;
  Selected selected;
  const CommandContext context = ContextOf(record);
  for (const CommandView& command : Commands(record)) {
    if (!command.layout || !command.layout->steps) {
      reading.broken = true;
      return reading;
    }
    const CommandFacts c{command, *command.layout, context};
    if (c.Is(kCommandDelay)) {
      reading.never = reading.never || c.Reads(kGetting);
    } else if (c.Writes(kGetting)) {
      for (unsigned bit = 0; bit < BitsOf(c); bit += 8) {
        reading.written.insert(PlaceOf(c, bit));
        selected.push_back({GroupOf(c), PlaceOf(c, bit), WhatIsWritten(c, kGetting)});
      }
    } else if (c.Compares(kGetting)) {
      AddTest(c, kGetting, selected, &reading);
    }
  }
  return reading;
}

Setting RegisterBits::SettingOf(const RecordView& record) {
  Setting setting;
  Selected selected;
  const CommandContext context = ContextOf(record);
  for (const CommandView& command : Commands(record)) {
    if (!command.layout || !command.layout->steps) {
      setting.unknown = "its commands do not end";
      return setting;
    }
    const CommandFacts c{command, *command.layout, context};
    if (c.Compares(kSetting) || (c.Is(kCommandDelay) && c.Reads(kSetting)))
      setting.unknown = "setting it depends on what it reads";
    if (!c.Writes(kSetting) || c.Is(kCommandDelay)) continue;
    AddWrite(c, kSetting, selected, &setting);
    for (unsigned bit = 0; bit < BitsOf(c); bit += 8)
      selected.push_back({GroupOf(c), PlaceOf(c, bit), WhatIsWritten(c, kSetting)});
  }
  return setting;
}

}  // namespace diagnosis
