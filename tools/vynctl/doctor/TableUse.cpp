// SPDX-License-Identifier: MIT
// Walks over the records and commands of a table and notes what each command that does something reaches.
#include "doctor/TableUse.h"

#include <algorithm>

#include "layout/Walk.h"

namespace vynctl::doctor {
namespace {

using layout::CommandView;

constexpr uint16_t kDoesSomething = layout::kGetReads | layout::kGetWrites | layout::kSetReads | layout::kSetWrites;
constexpr unsigned kWidestPort = 4;
constexpr uint64_t kPortMask = 0xFFFF;

Range Ports(uint64_t first, unsigned width) {
  const uint64_t port = first & kPortMask;
  return {port, port + std::min(width, kWidestPort) - 1};
}

void Note(const CommandView& command, TableUse* use) {
  const layout::CommandLayout& row = *command.layout;
  const unsigned width = layout::WidthOf(command.Opcode());
  const uint64_t address = command.Field(row.address);
  switch (row.kind) {
    case layout::kCommandMemory:
      use->memory.insert({address, address + width - 1});
      break;
    case layout::kCommandPort:
      if (row.form == layout::kFormIndexData) use->ports.insert(Ports(command.Field(row.second), width));
      use->ports.insert(Ports(address, row.form == layout::kFormIndexData ? 1 : width));
      break;
    case layout::kCommandMsr:
      use->msr = true;
      break;
    case layout::kCommandSmbus:
      use->smbus = true;
      break;
    default:
      break;
  }
}

}  // namespace

TableUse UseOf(std::string_view table) {
  TableUse use;
  const layout::View bytes(reinterpret_cast<const uint8_t*>(table.data()), table.size());
  for (layout::RecordCursor cursor(layout::Covered(bytes)); cursor.Valid(); cursor.Next()) {
    const layout::RecordView record = cursor.Current();
    const layout::RecordType* type = record.Row();
    if (type == nullptr) continue;
    for (const CommandView& command : type->IsSensor() ? layout::SensorCommands(record) : layout::Commands(record)) {
      if (command.layout != nullptr && (command.Control() & kDoesSomething) != 0) Note(command, &use);
    }
  }
  return use;
}

}  // namespace vynctl::doctor
