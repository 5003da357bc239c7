// SPDX-License-Identifier: MIT
// Records, tables and the BIOS information record from their sections.
#include "boardfile/FirmwareFile.h"

#include <algorithm>
#include <set>

#include "boardfile/CommandFile.h"
#include "boardfile/CommandWords.h"
#include "boardfile/FieldFile.h"
#include "firmware/AcpiTable.h"
#include "firmware/BiosInfo.h"
#include "firmware/IadtBuilder.h"
#include "firmware/IamtBuilder.h"
#include "layout/AcpiLayout.h"
#include "layout/BoardRecord.h"

namespace boardfile {

using namespace firmware;
using namespace layout;

namespace {

constexpr uint64_t kByte = 0xFF, kWord = 0xFFFF, kDword = 0xFFFFFFFF;
constexpr uint32_t kBiosInfoAddress = 0xE8000, kRootPointer = 0xF0000, kTables = 0x7F000000;
constexpr size_t kTextLimit = 64;
/// More firmware than this is a mistake in the file.
constexpr size_t kTableLimit = size_t{16} << 20;

std::optional<uint8_t> Byte8(TomlSection* section, std::string_view key) {
  const auto value = section->Number(key, kByte);
  return value ? std::optional(static_cast<uint8_t>(*value)) : std::nullopt;
}

std::optional<uint32_t> Dword32(TomlSection* section, std::string_view key) {
  const auto value = section->Number(key, kDword);
  return value ? std::optional(static_cast<uint32_t>(*value)) : std::nullopt;
}

void ReadHeader(TomlSection* section, AcpiHeader* header) {
  header->revision = Byte8(section, "revision").value_or(header->revision);
  header->oemId = section->Text("oem_id", 6).value_or(header->oemId);
  header->oemTableId = section->Text("oem_table_id", 8).value_or(header->oemTableId);
  header->oemRevision = Dword32(section, "oem_revision").value_or(header->oemRevision);
  header->creatorId = section->Text("creator_id", 4).value_or(header->creatorId);
  header->creatorRevision = Dword32(section, "creator_revision").value_or(header->creatorRevision);
  header->length = Dword32(section, "length");
  header->checksum = Byte8(section, "checksum");
}

/// A header that its fields cannot express, as it stands.
void ReplaceHeader(TomlSection* section, Bytes* table) {
  const auto bytes = section->ByteList("header_bytes");
  if (!bytes) return;
  if (bytes->size() != acpi::kHeaderBytes) section->Fail("header_bytes", "exactly 36 bytes");
  std::copy(bytes->begin(), bytes->end(), table->begin());
}

/// A vendor table, and its address where the file names one.
struct VendorTable {
  Bytes bytes;
  std::optional<uint32_t> at = {};
  std::vector<Origin> origins = {};
  bool owned = true;  ///< the file says whose table it is
  std::vector<Allowance> allowed = {};
};

/// Rules that a section's bytes may break; those of the file may be broken everywhere.
void ReadAllowed(TomlSection* section, size_t first, size_t end, std::vector<Allowance>* allowed) {
  for (const std::string& rule : section->Texts("allow", kTextLimit))
    allowed->push_back({rule, first, end, section->WhereOf("allow")});
}

/// The table that `builder` holds, with what its section says of its header and place.
template <typename Builder>
VendorTable FinishTable(TomlSection* section, Builder* builder) {
  const bool owned = section->Has("oem_id");
  // Of a maker who names no table, no other name is assumed.
  if (owned) builder->header.oemTableId.clear();
  ReadHeader(section, &builder->header);
  VendorTable table{.bytes = builder->Build(), .at = Dword32(section, "at"), .origins = {{0, section->Where()}}};
  table.owned = owned || section->Has("header_bytes");
  ReadAllowed(section, 0, table.bytes.size(), &table.allowed);
  ReplaceHeader(section, &table.bytes);
  section->Finish();
  return table;
}

/// A table that does not say whose it is carries the identifiers of this program's makers.
void RemarkOnOwner(const VendorTable& table, const char* section, std::vector<Complaint>* remarks) {
  if (table.bytes.empty() || table.owned) return;
  remarks->push_back({.spot = table.origins.front().spot,
                      .text = std::string("[") + section +
                              "] needs \"oem_id\", the name of the board's maker in up to " +
                              "6 characters: without it the table says \"" + AcpiHeader{}.oemId + "\""});
}

// --- function description records ---

/// A record, and where its parts come from, by their offsets in it.
struct PlacedRecord {
  Record record;
  std::vector<Origin> origins;
};

/// Where the parts of a record's head come from.
std::vector<Origin> HeadOrigins(const TomlSection& section, std::string_view value) {
  const std::string_view name = section.Has("name_bytes") ? "name_bytes" : "name";
  return {{iadt::kType, section.Where()},
          {iadt::kIndex, section.WhereOf("index")},
          {iadt::kValue, section.WhereOf(value)},
          {iadt::kLength, section.WhereOf("length")},
          {iadt::kName, section.WhereOf(name)}};
}

Record StartFeature(TomlSection* section) {
  if (const auto type = Byte8(section, "type")) {
    if (section->Has("function")) section->Fail("function", "left out where \"type\" is given");
    return Record::Type(*type);
  }
  const std::string function = section->NeedText("function", kTextLimit);
  if (!FindFeature(function))
    section->Fail("function", "the name of a feature (docs/board-files.md lists them)", function, FeatureNames());
  return Record::Feature(function);
}

void ReadRecordHead(TomlSection* section, Record* record) {
  record->Index(Byte8(section, "index").value_or(0));
  if (const auto name = section->Text("name", iadt::kNameBytes)) record->Name(*name);
  if (const auto bytes = section->ByteList("name_bytes")) {
    if (bytes->size() > iadt::kNameBytes) section->Fail("name_bytes", "at most 20 bytes");
    record->Name({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
  }
}

void ReadRecordTail(TomlSection* section, Record* record) {
  if (const auto extra = section->ByteList("extra")) record->Append(*extra);
  if (const auto length = Dword32(section, "length")) record->Length(*length);
  section->Finish();
}

/// Without its key, a feature's commands and fields are looked at all the same.
Record FeatureOrNone(TomlSection* section) {
  Record record = Record::Type(0);
  section->Try([&] { record = StartFeature(section); });
  return record;
}

PlacedRecord ReadFeature(TomlSection* section, const Sequences& sequences) {
  PlacedRecord placed{FeatureOrNone(section), HeadOrigins(*section, "value")};
  ReadRecordHead(section, &placed.record);
  const CommandList list = ReadCommands(section, "commands", sequences);
  size_t offset = iadt::kBody;
  for (size_t i = 0; i < list.commands.size(); ++i) {
    placed.origins.push_back({offset, list.spots[i]});
    offset += list.commands[i].Build().size();
  }
  if (section->Has("extra")) placed.origins.push_back({offset, section->WhereOf("extra")});
  placed.record.Value(Byte8(section, "value").value_or(0)).Commands(list.commands);
  ReadRecordTail(section, &placed.record);
  return placed;
}

void PlaceCommands(TomlSection* section, const RecordType& type, const Sequences& sequences, PlacedRecord* placed) {
  const auto [commands, spots] = ReadCommands(section, "commands", sequences);
  if (commands.size() > type.places.size())
    section->Fail("commands", "at most " + std::to_string(type.places.size()) + " commands");
  for (size_t i = 0; i < commands.size(); ++i)
    if (commands[i].Build().size() > type.places[i].bytes)
      section->Fail("commands", "of at most " + std::to_string(type.places[i].bytes) + " bytes each in this record");
  for (size_t i = 0; i < commands.size(); ++i) placed->origins.push_back({type.places[i].offset, spots[i]});
  placed->record.Commands(commands);
}

std::vector<std::string> Quantities() {
  std::set<std::string> names;
  for (const RecordType& row : kRecordTypes)
    if (row.IsSensor()) names.emplace(row.name);
  return {names.begin(), names.end()};
}

PlacedRecord ReadSensor(TomlSection* section, const Sequences& sequences) {
  const std::string quantity = section->NeedText("quantity", kTextLimit);
  const auto kind = static_cast<uint8_t>(section->Need("kind", kByte));
  const RecordType* type = FindSensor(quantity, kind);
  if (!type)
    section->Fail(FindSensor(quantity, 1) ? "kind" : "quantity",
                  "voltage (1 to 3), temperature (1 to 4), fan (1 to 3) or current (1)", quantity, Quantities());
  PlacedRecord placed{Record::Sensor(quantity, kind), HeadOrigins(*section, "kind")};
  ReadRecordHead(section, &placed.record);
  for (const RecordParameter& parameter : type->parameters)
    if (const auto value = Byte8(section, parameter.name)) {
      placed.record.Parameter(parameter.name, *value);
      placed.origins.push_back({parameter.offset, section->WhereOf(parameter.name)});
    }
  PlaceCommands(section, *type, sequences, &placed);
  ReadRecordTail(section, &placed.record);
  std::ranges::stable_sort(placed.origins, {}, &Origin::offset);
  return placed;
}

/// Every entry of a field comes from the whole of it.
std::vector<PlacedRecord> ReadFieldRecords(TomlSection* section, const Sequences& sequences) {
  std::vector<PlacedRecord> records;
  for (const FieldEntry& entry : ReadField(section, sequences)) {
    const Record record =
        Record::Type(entry.type->type).Index(entry.index).Value(entry.value).Name(entry.name).Commands(entry.commands);
    records.push_back({record, {{0, section->Where()}}});
  }
  return records;
}

template <PlacedRecord (*read)(TomlSection*, const Sequences&)>
std::vector<PlacedRecord> One(TomlSection* section, const Sequences& sequences) {
  return {read(section, sequences)};
}

PlacedRecord ReadRaw(TomlSection* section, const Sequences&) {
  const auto raw = section->ByteList("raw");
  if (!raw) throw BoardFileError(section->Where(), "[[record]] needs \"raw\", the bytes of the record");
  section->Finish();
  return {Record::Raw(*raw), {{0, section->WhereOf("raw")}}};
}

struct RecordReader {
  std::string_view key;
  std::vector<PlacedRecord> (*read)(TomlSection*, const Sequences&);
};
constexpr RecordReader kFieldReader = {"field", ReadFieldRecords};
constexpr RecordReader kReaders[] = {
    {"feature", One<ReadFeature>}, {"sensor", One<ReadSensor>}, {"record", One<ReadRaw>}, kFieldReader};

/// A section that describes a record, and what reads it.
struct RecordSection {
  TomlSection section;
  const RecordReader* reader;
};

/// Of all three kinds, in the order in which they stand in the file.
std::vector<RecordSection> RecordSections(TomlSection* root) {
  std::vector<RecordSection> found;
  for (const RecordReader& reader : kReaders)
    for (TomlSection& section : root->List(reader.key)) found.push_back({section, &reader});
  for (TomlSection& group : root->List("fields")) {
    for (TomlSection& section : group.List("each")) found.push_back({section, &kFieldReader});
    group.Finish();
  }
  std::ranges::stable_sort(found, {}, [](const RecordSection& each) { return each.section.Where(); });
  return found;
}

VendorTable ReadIadt(TomlSection* root, std::vector<IncludedFile>* included) {
  Sequences sequences;
  std::vector<RecordSection> found;
  const auto take = [&](TomlSection* file) {
    sequences = ReadSequences(file, sequences);
    const std::vector<RecordSection> more = RecordSections(file);
    found.insert(found.end(), more.begin(), more.end());
  };
  for (IncludedFile& file : *included) file.root.Try([&] { take(&file.root); });
  take(root);
  auto own = root->Sub("iadt");
  if (found.empty() && !own) return {};
  IadtBuilder builder;
  std::vector<Origin> origins;
  std::vector<Allowance> allowed;
  size_t size = 0;
  for (RecordSection& each : found) {
    each.section.Try([&] {
      each.section.Skip("allow");
      const size_t first = acpi::kHeaderBytes + size;
      for (const PlacedRecord& placed : each.reader->read(&each.section, sequences)) {
        for (const Origin& origin : placed.origins)
          origins.push_back({acpi::kHeaderBytes + size + origin.offset, origin.spot});
        size += placed.record.Build().size();
        builder.Add(placed.record);
      }
      ReadAllowed(&each.section, first, acpi::kHeaderBytes + size, &allowed);
    });
    if (size > kTableLimit) throw BoardFileError(each.section.Where(), "the records must fit into 16 MiB");
  }
  VendorTable table{.bytes = {}, .at = {}, .origins = {{0, Spot{}}}, .owned = false};
  if (own)
    table = FinishTable(&*own, &builder);
  else
    table.bytes = builder.Build();
  table.origins.insert(table.origins.end(), origins.begin(), origins.end());
  table.allowed.insert(table.allowed.end(), allowed.begin(), allowed.end());
  return table;
}

// --- board information table ---

uint16_t ChipOf(const std::vector<uint64_t>& chips, size_t i) {
  return i < chips.size() ? static_cast<uint16_t>(chips[i]) : uint16_t{0};
}

std::vector<uint64_t> ReadChips(TomlSection* section) {
  std::vector<uint64_t> chips = section->Numbers("chips", kWord);
  if (chips.size() > 3) section->Fail("chips", "at most three chip identifiers");
  return chips;
}

Bytes ReadBoardRecord(TomlSection* section) {
  if (const auto raw = section->ByteList("raw")) {
    section->Finish();
    return *raw;
  }
  const auto size = section->Number("size", kByte, iamt::kBoardRecordBytes);
  if (size <= iamt::kLength) section->Fail("size", "at least 4, up to the record length");
  Bytes record(size, 0);
  record[0] = Byte8(section, "type").value_or(0);
  record[iamt::kLength] = Byte8(section, "length").value_or(static_cast<uint8_t>(size));
  const std::vector<uint64_t> chips = ReadChips(section);
  if (!chips.empty() && size < iamt::kChipIdsEnd) section->Fail("chips", "within the record's size");
  for (size_t i = 0; i < chips.size(); ++i) Put(&record, iamt::kChipIds[i], 2, chips[i]);
  section->Finish();
  return record;
}

VendorTable ReadIamt(TomlSection* root) {
  auto section = root->Sub("iamt");
  if (!section) return {};
  IamtBuilder builder;
  const std::vector<uint64_t> chips = ReadChips(&*section);
  std::vector<Origin> origins;
  size_t size = iamt::kRecords;
  if (!chips.empty()) {
    origins.push_back({size, section->WhereOf("chips")});
    size += iamt::kBoardRecordBytes;
    builder.Chips(ChipOf(chips, 0), ChipOf(chips, 1), ChipOf(chips, 2));
  }
  for (TomlSection& record : section->List("record")) {
    record.Try([&] {
      const Bytes bytes = ReadBoardRecord(&record);
      origins.push_back({size, record.Where()});
      size += bytes.size();
      builder.Add(bytes);
    });
  }
  VendorTable table = FinishTable(&*section, &builder);
  table.origins.insert(table.origins.end(), origins.begin(), origins.end());
  return table;
}

// --- BIOS information record ---

void ReadBios(TomlSection* root, Firmware* firmware) {
  auto section = root->Sub("bios");
  if (!section) return;
  firmware->biosInfoOrigins = {{0, section->Where()}};
  ReadAllowed(&*section, 0, bios::kRecordBytes, &firmware->biosInfoAllowed);
  firmware->biosInfoAddress = Dword32(&*section, "at").value_or(kBiosInfoAddress);
  if (const auto raw = section->ByteList("raw")) {
    firmware->biosInfo = *raw;
    return section->Finish();
  }
  BiosInfo info{.model = section->NeedText("model", bios::kModelBytes), .checksum = {}};
  info.signature = section->Text("signature", 8).value_or(info.signature);
  info.unused = static_cast<uint16_t>(section->Number("unused", kWord, 0));
  info.checksumOffset = section->Number("checksum_at", bios::kRecordBytes - 1, info.checksumOffset);
  info.checksum = Byte8(&*section, "checksum");
  section->Finish();
  firmware->biosInfo = info.Build();
}

// --- [acpi] ---

void AddFixedTables(TomlSection* acpi, AcpiImage* image) {
  if (auto fadt = acpi->Sub("fadt")) {
    const auto dsdt = static_cast<uint32_t>(fadt->Need("dsdt_at", kDword));
    image->Table(FadtTable(dsdt, static_cast<uint32_t>(fadt->Number("facs_at", kDword, 0)),
                           static_cast<uint16_t>(fadt->Number("sci_interrupt", kWord, 9)),
                           static_cast<uint32_t>(fadt->Number("pm1a_event", kDword, 0x800)),
                           static_cast<uint32_t>(fadt->Number("pm_timer", kDword, 0x808))));
    image->UnlistedAt(dsdt, DsdtTable());
    fadt->Finish();
  }
  if (auto mcfg = acpi->Sub("mcfg")) {
    image->Table(McfgTable({mcfg->Need("base", ~uint64_t{0})}));
    mcfg->Finish();
  }
  if (auto madt = acpi->Sub("madt")) {
    image->Table(MadtTable(IoApicSubtable(static_cast<uint32_t>(madt->Need("io_apic", kDword)),
                                          static_cast<uint32_t>(madt->Number("interrupt_base", kDword, 0)))));
    madt->Finish();
  }
  if (auto ecdt = acpi->Sub("ecdt")) {
    image->Table(EcdtTable(static_cast<uint16_t>(ecdt->Need("command_port", kWord)),
                           static_cast<uint16_t>(ecdt->Need("data_port", kWord))));
    ecdt->Finish();
  }
}

void AddTable(AcpiImage* image, std::optional<uint32_t> at, const Bytes& table, bool listed) {
  if (!listed && at)
    image->UnlistedAt(*at, table);
  else if (at)
    image->TableAt(*at, table);
  else
    image->Table(table);
}

void AddOtherTables(TomlSection* acpi, AcpiImage* image) {
  for (TomlSection& section : acpi->List("table")) {
    AcpiHeader header{.signature = section.NeedText("signature", 4)};
    ReadHeader(&section, &header);
    const Bytes table = AcpiTable(header, section.ByteList("body").value_or(Bytes{}));
    const auto at = Dword32(&section, "at");
    const bool listed = section.Flag("listed", true);
    if (!listed && !at) section.Fail("listed", "true, or \"at\" given");
    section.Finish();
    AddTable(image, at, table, listed);
  }
  for (uint64_t entry : acpi->Numbers("entries", kDword)) image->Entry(static_cast<uint32_t>(entry));
}

void AddVendorTable(AcpiImage* image, const VendorTable& table) {
  if (!table.bytes.empty()) AddTable(image, table.at, table.bytes, true);
}

/// Empty when the board has no root pointer.
std::optional<AcpiImage> ReadAcpi(TomlSection* root, const VendorTable& iamt, const VendorTable& iadt) {
  AcpiImage image;
  bool present = true;
  if (auto acpi = root->Sub("acpi")) {
    present = acpi->Flag("present", true);
    image.RootPointerAt(Dword32(&*acpi, "root_pointer").value_or(kRootPointer));
    image.RootPointerRevision(Byte8(&*acpi, "revision").value_or(0));
    image.TablesAt(Dword32(&*acpi, "tables_at").value_or(kTables));
    AddFixedTables(&*acpi, &image);
    AddOtherTables(&*acpi, &image);
    acpi->Finish();
  }
  AddVendorTable(&image, iamt);
  AddVendorTable(&image, iadt);
  return present ? std::optional(image) : std::nullopt;
}

}  // namespace

Firmware ReadFirmware(TomlSection* root, std::vector<IncludedFile>* included) {
  VendorTable iadt, iamt;
  root->Try([&] { iadt = ReadIadt(root, included); });
  root->Try([&] { iamt = ReadIamt(root); });
  Firmware firmware{.iadt = iadt.bytes,
                    .iamt = iamt.bytes,
                    .biosInfo = {},
                    .iadtOrigins = iadt.origins,
                    .iamtOrigins = iamt.origins,
                    .iadtAllowed = iadt.allowed,
                    .iamtAllowed = iamt.allowed,
                    .acpi = ReadAcpi(root, iamt, iadt)};
  for (auto* allowed : {&firmware.iadtAllowed, &firmware.iamtAllowed, &firmware.biosInfoAllowed})
    root->Try([&] { ReadAllowed(root, 0, kTableLimit, allowed); });
  RemarkOnOwner(iadt, "iadt", &firmware.remarks);
  RemarkOnOwner(iamt, "iamt", &firmware.remarks);
  root->Try([&] { ReadBios(root, &firmware); });
  return firmware;
}

}  // namespace boardfile
