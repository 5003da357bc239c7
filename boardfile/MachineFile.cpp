// SPDX-License-Identifier: MIT
// Memory, registers, functions and chips from their sections.
#include "boardfile/MachineFile.h"

#include <charconv>
#include <functional>

#include "boardfile/PciPlace.h"
#include "sim/chips/RegisterChips.h"
#include "sim/chips/SmbusPlatforms.h"
#include "sim/chips/SuperIo.h"

namespace boardfile {

using namespace sim;
using firmware::Bytes;

namespace {

constexpr uint64_t kByte = 0xFF, kWord = 0xFFFF, kDword = 0xFFFFFFFF;
constexpr uint64_t kMemoryLimit = uint64_t{16} << 20;
constexpr size_t kTextLimit = 64;
constexpr unsigned kPciConfigBytes = 4096, kPciIdentityBytes = 16;
constexpr unsigned kClassOffset = 0x08, kHeaderTypeOffset = 0x0E, kSubsystemOffset = 0x2C;

/// Register files by the names that [[chip]] sections refer to.
using Names = std::map<std::string, Registers>;

void Name(TomlSection* section, const Registers& registers, Names* names) {
  const auto name = section->Text("name", kTextLimit);
  if (name && !names->emplace(*name, registers).second) section->Fail("name", "different from other names");
}

using Store = std::function<void(uint64_t number, uint8_t value)>;

/// `{ 0x10 = 0x26, 0x20 = [1, 2], 0x30 = "0A 0B" }`: register numbers up to `last`, one byte or several in a row.
void ReadRegisters(TomlSection* section, std::string_view key, uint64_t last, const Store& store) {
  auto table = section->Sub(key);
  if (!table) return;
  for (const std::string& name : table->Keys()) {
    const auto first = ParseNumber(name);
    if (!first || *first > last)
      throw BoardFileError(table->WhereOf(name),
                           "\"" + name + "\" is not a register number up to " + std::to_string(last));
    const auto bytes =
        table->IsList(name) ? *table->ByteList(name) : Bytes{static_cast<uint8_t>(table->Need(name, kByte))};
    for (size_t i = 0; i < bytes.size() && *first + i <= last; ++i) store(*first + i, bytes[i]);
  }
}

void Fill(TomlSection* section, Board* board, const Registers& registers) {
  board->registerFiles.push_back(registers);
  registers->fill(static_cast<uint8_t>(section->Number("fill", kByte, 0)));
  ReadRegisters(section, "registers", kByte, [&](uint64_t number, uint8_t value) { (*registers)[number] = value; });
}

/// `bytes`, or `count` times `fill`.
Bytes ReadContent(TomlSection* section, std::string_view count, uint64_t limit) {
  if (auto bytes = section->ByteList("bytes")) {
    if (bytes->size() > limit) section->Fail("bytes", "at most " + std::to_string(limit) + " bytes");
    return *bytes;
  }
  const uint64_t size = section->Need(count, limit);
  return Bytes(size, static_cast<uint8_t>(section->Number("fill", kByte, 0)));
}

void ReadBoard(TomlSection* root, Board* board) {
  auto section = root->Sub("board");
  if (!section) return;
  (void)section->Text("name", 256);
  board->live = section->Flag("live", board->live);
  board->privileged = section->Flag("privileged", true);
  board->memDevice = section->Flag("mem_device", true);
  board->msrDevice = section->Flag("msr_device", true);
  section->Finish();
}

void ReadMemory(TomlSection* root, Board* board) {
  uint64_t total = 0;
  for (TomlSection& section : root->List("memory")) {
    const uint64_t at = section.Need("at", ~uint64_t{0});
    const Bytes bytes = ReadContent(&section, "size", kMemoryLimit);
    total += bytes.size();
    if (total > kMemoryLimit) throw BoardFileError(section.Where(), "all [[memory]] together is at most 16 MiB");
    board->Memory(at, bytes);
    section.Finish();
  }
}

void ReadPorts(TomlSection* root, Board* board) {
  for (TomlSection& section : root->List("ports")) {
    const uint64_t first = section.Need("first", kWord);
    board->Ports(static_cast<uint16_t>(first), ReadContent(&section, "count", kWord + 1 - first));
    section.Finish();
  }
}

void ReadIndexData(TomlSection* root, Board* board, Names* names) {
  for (TomlSection& section : root->List("index_data")) {
    const auto registers = board->IndexData(static_cast<uint16_t>(section.Need("index_port", kWord)),
                                            static_cast<uint16_t>(section.Need("data_port", kWord)));
    Fill(&section, board, registers);
    Name(&section, registers, names);
    section.Finish();
  }
}

void ReadSuperIo(TomlSection* root, Board* board, Names* names) {
  for (TomlSection& section : root->List("super_io")) {
    const auto indexPort = static_cast<uint16_t>(section.Need("index_port", kWord));
    const auto dataPort = static_cast<uint16_t>(section.Need("data_port", kWord));
    const auto chip = std::make_shared<SuperIo>(indexPort, section.ByteList("enter").value_or(Bytes{}),
                                                static_cast<uint8_t>(section.Number("leave", kByte, 0xAA)));
    Fill(&section, board, chip->global);
    for (TomlSection& device : section.List("device")) {
      const Registers registers = std::make_shared<std::array<uint8_t, 256>>();
      Fill(&device, board, registers);
      Name(&device, registers, names);
      chip->devices[static_cast<uint8_t>(device.Need("number", kByte))] = registers;
      device.Finish();
    }
    section.Finish();
    board->Attach(indexPort, 1, chip).Attach(dataPort, 1, chip);
  }
}

/// "8086:2930" as the dword that the identity register reads.
uint32_t ReadPciId(TomlSection* section, std::string_view key) {
  const std::string text = section->NeedText(key, kTextLimit);
  uint32_t vendor = 0, device = 0;
  const char* end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, vendor, 16);
  const bool colon = first.ec == std::errc() && first.ptr != end && *first.ptr == ':';
  const auto second = colon ? std::from_chars(first.ptr + 1, end, device, 16) : first;
  if (!colon || second.ec != std::errc() || second.ptr != end || vendor > kWord || device > kWord)
    section->Fail(key, "vendor:device, \"8086:2930\"");
  return device << 16 | vendor;
}

void ReadPci(TomlSection* root, Board* board) {
  for (TomlSection& section : root->List("pci")) {
    const PciPlace place = ReadPciPlace(&section, "at");
    PciFunction& function = board->Pci(place.bus, place.device, place.function);
    std::fill_n(function.writeMask.begin(), kPciIdentityBytes, uint8_t{0});
    function.Set(0, 4, ReadPciId(&section, "id"));
    function.Set(kClassOffset + 1, 3, static_cast<uint32_t>(section.Number("class", 0xFFFFFF, 0)));
    function.Set(kClassOffset, 1, static_cast<uint32_t>(section.Number("revision", kByte, 0)));
    function.Set(kHeaderTypeOffset, 1, static_cast<uint32_t>(section.Number("header_type", kByte, 0)));
    if (section.Has("subsystem")) function.Set(kSubsystemOffset, 4, ReadPciId(&section, "subsystem"));
    ReadRegisters(&section, "registers", kPciConfigBytes - 1,
                  [&](uint64_t number, uint8_t value) { function.Set(static_cast<unsigned>(number), 1, value); });
    ReadRegisters(&section, "write_mask", kPciConfigBytes - 1,
                  [&](uint64_t number, uint8_t value) { function.writeMask[number] = value; });
    section.Finish();
  }
}

void ReadMsrs(TomlSection* root, Board* board) {
  for (TomlSection& section : root->List("msr")) {
    board->Msr(static_cast<uint32_t>(section.Need("number", kDword)), section.Need("value", ~uint64_t{0}));
    section.Finish();
  }
}

void ReadSlaves(TomlSection* section, Board* board, Names* names, SmbusSetup* setup) {
  for (TomlSection& device : section->List("device")) {
    const auto slave = std::make_shared<SmbusSlave>();
    const Registers registers(slave, &slave->registers);
    const auto address = static_cast<uint8_t>(device.Need("address", kByte));
    if (address & 1) device.Fail("address", "an address byte with bit 0 clear (0xA0)");
    Fill(&device, board, registers);
    Name(&device, registers, names);
    device.Finish();
    setup->slaves[address] = slave;
  }
}

void ReadSmbus(TomlSection* root, Board* board, Names* names) {
  for (TomlSection& section : root->List("smbus")) {
    const SmbusPlatform* platform = FindSmbusPlatform(section.NeedText("model", kTextLimit));
    if (!platform) section.Fail("model", "the name of an SMBus controller model (docs/board-files.md lists them)");
    SmbusSetup setup;
    if (section.Has("pci")) {
      const PciPlace place = ReadPciPlace(&section, "pci");
      setup.bus = place.bus;
      setup.device = place.device;
      setup.function = place.function;
    }
    setup.base = static_cast<uint16_t>(section.Number("base", kWord, 0));
    for (std::string_view option : kSmbusOptions)
      if (const auto value = section.Number(option, kDword)) setup.options.emplace(option, *value);
    ReadSlaves(&section, board, names, &setup);
    section.Finish();
    AttachSmbus(*board, *platform, setup);
  }
}

void ReadChips(TomlSection* root, Board* board, const Names& names) {
  for (TomlSection& section : root->List("chip")) {
    const ChipModel* model = FindChipModel(section.NeedText("model", kTextLimit));
    if (!model) section.Fail("model", "watchdog, fan or drift");
    const auto registers = names.find(section.NeedText("on", kTextLimit));
    if (registers == names.end()) section.Fail("on", "the name of an index_data, super_io or smbus device");
    Options options;
    for (const ChipOption& option : model->options)
      options.emplace(option.name, option.otherwise == ChipOption::kRequired
                                       ? section.Need(option.name, option.max)
                                       : section.Number(option.name, option.max, option.otherwise));
    section.Finish();
    model->attach(*board, registers->second, options);
  }
}

}  // namespace

void ReadMachine(TomlSection* root, Board* board) {
  Names names;
  root->Try([&] { ReadBoard(root, board); });
  root->Try([&] { ReadMemory(root, board); });
  root->Try([&] { ReadPorts(root, board); });
  root->Try([&] { ReadIndexData(root, board, &names); });
  root->Try([&] { ReadSuperIo(root, board, &names); });
  root->Try([&] { ReadPci(root, board); });
  root->Try([&] { ReadMsrs(root, board); });
  root->Try([&] { ReadSmbus(root, board, &names); });
  root->Try([&] { ReadChips(root, board, names); });
}

}  // namespace boardfile
