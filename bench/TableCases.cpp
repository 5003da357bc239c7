// SPDX-License-Identifier: MIT
// Starting, and cutting tables into lists.
#include <cstring>
#include <memory>

#include "bench/Case.h"
#include "bench/Fixture.h"
#include "firmware/IadtBuilder.h"
#include "hw/Platform.h"
#include "layout/LittleEndian.h"

using namespace layout;

namespace bench {

namespace {

volatile unsigned sink;

/// What a search that finds nothing does to the machine: spans of 4096 bytes that overlap by `overlap`.
void ReadSpans(uint32_t length, uint32_t overlap) {
  uint64_t address = kMemoryBase;
  unsigned sum = 0;
  for (uint32_t left = length; left > overlap;) {
    const uint32_t chunk = left < 4096 ? left : 4096;
    const int file = platform::Open("/dev/mem", platform::OpenMode::kRead);
    const uint64_t offset = address % 4096;
    void* base = platform::Map(file, address - offset, offset + chunk, false);
    const volatile uint8_t* bytes = static_cast<uint8_t*>(base) + offset;
    for (uint32_t i = 0; i < chunk; ++i) sum += bytes[i];
    platform::Unmap(base, offset + chunk);
    platform::Close(file);
    address += chunk - overlap;
    left -= chunk - overlap;
  }
  sink = sum;
}

uint32_t PciDword(uint32_t address) {
  platform::Out32(0xCF8, address);
  return platform::In32(0xCFC);
}

void SearchEveryDevice() {
  for (uint32_t slot = 0; slot < 256 * 32; ++slot) sink = PciDword(0x80000000 + (slot << 11));
}

void LookAtBusZeroFrom(uint32_t first) {
  for (uint32_t i = 0; i < 32; ++i) sink = PciDword(0x80000000 + ((first + i) % 32 << 11));
}

void LookAtClasses(uint32_t device) {
  for (const uint32_t function : {4, 5, 6, 7, 0, 1, 2, 3}) {
    platform::Out32(0xCF8, 0x80000008 + (device << 11) + (function << 8));
    sink = platform::In16(0xCFE);
  }
}

/// A machine without any PCI function: the places that the controller detection looks at, and its one search.
void InitByHand() {
  platform::SetIoPrivilegeLevel(3);
  ReadSpans(0x20000, 7);
  ReadSpans(0x20000, 0);
  const auto look = [](uint32_t address) { sink = PciDword(address); };
  look(0x80001000);         // SiS 964
  look(0x80001000);         // SiS 968
  look(0x8000F800);         // Intel SCH
  LookAtBusZeroFrom(3);     // ULI M1563
  LookAtBusZeroFrom(0x1E);  // ULI M1573
  LookAtBusZeroFrom(0x1E);  // ULI M1575
  look(0x80008800);         // VIA VX900
  look(0x8000F800);         // Intel ICHx
  look(0x80001000);         // SiS 962/963
  look(0x80001000);         // SiS 965/966
  SearchEveryDevice();      // nVidia MCP2, by class; then the identifier of what was not found
  look(0x80FFFF00);
  look(0x8000A000);        // AMD Promontory
  LookAtClasses(0x1F);     // Intel Auto PCH
  look(0x8000FC00);        // Intel Kaby lake
  look(0x8000FB00);        // Intel Avoton PCH
  look(0x8000FC00);        // Intel Skylake PCH
  look(0x8000FB00);        // Intel Braswell PCH
  look(0x80FFFF00);        // nVidia nForce3/CK804: what the search found
  look(0x8000F800);        // Intel PCH
  LookAtBusZeroFrom(0xF);  // ServerWorks
  look(0x80008800);        // VIA 8235
  look(0x8000F800);        // Intel ICH7
  look(0x8000A000);        // ATI
  platform::SetIoPrivilegeLevel(0);
}

firmware::Bytes RecordsTable(unsigned count) {
  firmware::IadtBuilder builder;
  for (unsigned i = 0; i < count; ++i)
    builder.Feature("LVDSState", static_cast<uint8_t>(i),
                    {firmware::Command::IndexData(kIndexPort, kDataPort, 0xF0).Get(1, 1)});
  return builder.Build();
}

/// A node per record in one allocation each, in order: what keeping the records takes at least.
void KeepByHand(const firmware::Bytes& table) {
  struct Node {
    std::unique_ptr<unsigned char[]> bytes;
    std::unique_ptr<Node> next;
  };
  std::unique_ptr<Node> head;
  std::unique_ptr<Node>* tail = &head;
  for (size_t at = 36; at < table.size();) {
    const uint32_t length = Load32(table.data() + at + 3);
    *tail = std::make_unique<Node>();
    (*tail)->bytes = std::make_unique<unsigned char[]>(length);
    std::memcpy((*tail)->bytes.get(), table.data() + at, length);
    tail = &(*tail)->next;
    at += length;
  }
  while (head) head = std::move(head->next);
}

Case Parsing(unsigned records) {
  auto table = std::make_shared<firmware::Bytes>(RecordsTable(records));
  return {.name = "parse/" + std::to_string(records),
          .setUp = [] { NullMachine::Get().Reset(); },
          .library = [table] { TIADTable().Fill(table->data(), static_cast<uint32_t>(table->size())); },
          .baseline = [table] { KeepByHand(*table); }};
}

firmware::IadtBuilder FanRecords(unsigned count) {
  firmware::IadtBuilder builder;
  for (unsigned i = 0; i < count; ++i)
    builder.Add(firmware::Record::Feature("FanConfig").Name(std::to_string(100000 + i) + " Fan Mode").Value(0));
  return builder;
}

/// Every record a fan of its own; the baseline looks at each name once.
Case FanNames(unsigned records) {
  constexpr double kInstructionsPerName = 2500;
  return {.name = "fan names/" + std::to_string(records),
          .setUp = [=] { StartLibrary(FanRecords(records)); },
          .library =
              [] {
                uint8_t count = 0;
                VynLibGetFanConfigNames(nullptr, &count, VYNLIB_PERFORM);
                sink = count;
              },
          .baseline =
              [] {
                unsigned sum = 0;
                for (const IadtEntry entry : TIADTable::GetInstance()->List(layout::FindFeature("FanConfig")->list))
                  sum += static_cast<unsigned>(std::strlen(entry.Name()));
                sink = sum;
              },
          .perCall = records,
          .targetInstructions = kInstructionsPerName};
}

}  // namespace

std::vector<Case> TableCases() {
  std::vector<Case> cases = {{.name = "init/no match",
                              .setUp =
                                  [] {
                                    VynLibDllUnInit();
                                    NullMachine::Get().Reset();
                                  },
                              .library =
                                  [] {
                                    VynLibDllInit();
                                    VynLibDllUnInit();
                                  },
                              .baseline = InitByHand,
                              .target = 1.5}};
  for (const unsigned records : {10, 100, 1000, 10000, 100000}) cases.push_back(Parsing(records));
  for (const unsigned records : {1000, 10000, 40000}) cases.push_back(FanNames(records));
  return cases;
}

}  // namespace bench
