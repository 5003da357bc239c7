/// Builds firmware bytes: ACPI tables, function description records (IADT) with their access commands, board
/// information records (IAMT), and the BIOS information record. Everything comes out right by default, and every length
/// and checksum can be set wrong on purpose.
///
///     Bytes iadt = IadtBuilder()
///                      .Feature("LVDSState", 1, {Command::IndexData(0x2E, 0x2F, 0xF0).Get(0x01, 0x01),
///                                                Command::IndexData(0x2E, 0x2F, 0xF0).Set(0xFE, 0x01)})
///                      .Add(Record::Sensor("voltage", 3).Name("+5V").Parameter("step", 16)
///                               .Commands({Command::Smbus(0x5A, 0x20).Get()}))
///                      .Build();
///     AcpiImage().Table(iadt).Table(iamt).PutInto(&board);
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "layout/AccessCommand.h"
#include "layout/BiosRecord.h"
#include "layout/RecordLayout.h"

namespace sim {

class Board;

using Bytes = std::vector<uint8_t>;

/// Little-endian store of `size` bytes at `offset`, growing the buffer when it is too short.
void Put(Bytes* bytes, size_t offset, size_t size, uint64_t value);
/// Little-endian load of `size` bytes (at most 8); bytes beyond the end read 0.
uint64_t Take(const Bytes& bytes, size_t offset, size_t size);
/// The value of the byte at `offset` that makes all bytes sum to 0 modulo 256.
uint8_t ChecksumFor(const Bytes& bytes, size_t offset);

/// One access command. Masks default to 0, the argument index to kNoArgument, the control word to 0 (applies to neither
/// direction). Setting a field that the kind and form do not have throws std::logic_error.
class Command {
 public:
  static Command Memory(uint32_t address);
  static Command Port(uint16_t port);
  static Command IndexData(uint16_t indexPort, uint16_t dataPort, uint8_t index);
  /// `slave`: the address byte as it goes over the wire, bit 0 clear.
  static Command Smbus(uint8_t slave, uint8_t command);
  static Command Pci(uint8_t bus, uint8_t device, uint8_t function, uint16_t reg);
  static Command Msr(uint32_t number);
  static Command Delay(layout::DelayUnit unit, uint16_t count);
  /// Any bytes at all.
  static Command Raw(Bytes bytes);

  Command& Width(unsigned bytes);  ///< 1 (default), 2, 4 or 8
  /// Reading compares: (value AND `mask`) must equal `expected`.
  Command& Get(uint64_t mask, uint32_t expected);
  /// Reading without masks, for sensors and arguments.
  Command& Get();
  /// Setting writes (old value AND `keep`) OR `bits`.
  Command& Set(uint64_t keep, uint64_t bits);
  /// Setting writes without masks, for arguments.
  Command& Set();
  /// Names an argument slot and turns argument mode on.
  Command& Argument(uint32_t index);

  Command& Control(uint16_t control);  ///< replaces the control word
  Command& AddControl(uint16_t bits);
  Command& And(uint64_t mask);
  Command& Or(uint64_t mask);
  Command& Expected(uint32_t value);
  Command& ArgumentIndex(uint32_t index);  ///< the field alone
  Command& Opcode(uint8_t opcode);         ///< replaces the opcode, keeps the layout
  Command& Byte(size_t offset, uint8_t value);

  const Bytes& Build() const { return bytes_; }

 private:
  Command(layout::CommandKind kind, layout::CommandForm form);
  Command& Field(layout::CommandField layout::CommandLayout::*field, uint64_t value);
  Bytes bytes_;
  const layout::CommandLayout* layout_ = nullptr;
};

/// One function description record.
class Record {
 public:
  /// An ordinary record by the name of its type (layout/RecordLayout.h), for example "LVDSState"; throws when unknown.
  static Record Feature(std::string_view function);
  /// A sensor record by quantity ("voltage", "temperature", "fan", "current") and sub-type; throws when unknown.
  static Record Sensor(std::string_view quantity, uint8_t subType);
  static Record Type(uint8_t type);
  static Record Raw(Bytes bytes);

  Record& Index(uint8_t index);
  Record& Value(uint8_t value);
  Record& Name(std::string_view name);                     ///< at most 20 bytes are taken; 20 leave no terminator
  Record& Commands(const std::vector<Command>& commands);  ///< sensors: in the order of their places, the rest stays 0
  Record& Parameter(std::string_view name, uint8_t value);
  Record& Append(const Bytes& bytes);
  Record& Byte(size_t offset, uint8_t value);
  Record& Length(uint32_t length);  ///< instead of the right one

  Bytes Build() const;

 private:
  Bytes bytes_ = Bytes(layout::iadt::kBody, 0);
  const layout::RecordType* type_ = nullptr;
  std::optional<uint32_t> length_;
  bool raw_ = false;
};

/// The fields of a standard ACPI table header.
struct AcpiHeader {
  std::string signature;
  uint8_t revision = 1;
  std::string oemId = "VYNMAR", oemTableId = "BOARDTBL";
  uint32_t oemRevision = 1;
  std::string creatorId = "VYNT";
  uint32_t creatorRevision = 1;
  std::optional<uint32_t> length = {};   ///< instead of the right one
  std::optional<uint8_t> checksum = {};  ///< instead of the right one
};

/// Header and body with length and checksum filled in.
Bytes AcpiTable(const AcpiHeader& header, const Bytes& body);

/// The function description table. `Header` gives access to every header field.
class IadtBuilder {
 public:
  AcpiHeader header{.signature = "IADT"};

  IadtBuilder& Add(const Record& record);
  IadtBuilder& Feature(std::string_view function, uint8_t value, const std::vector<Command>& commands);
  IadtBuilder& Feature(std::string_view function, uint8_t index, uint8_t value, const std::vector<Command>& commands);
  IadtBuilder& Length(uint32_t length);
  IadtBuilder& Checksum(uint8_t checksum);
  Bytes Build() const { return AcpiTable(header, body_); }

 private:
  Bytes body_;
};

/// The board information table.
class IamtBuilder {
 public:
  AcpiHeader header{.signature = "IAMT"};

  /// A board information record (type 0, 55 bytes) with its three chip identifiers.
  IamtBuilder& Chips(uint16_t first, uint16_t second, uint16_t third);
  /// Any record; its length byte is what the bytes say.
  IamtBuilder& Add(const Bytes& record);
  IamtBuilder& Length(uint32_t length);
  IamtBuilder& Checksum(uint8_t checksum);
  Bytes Build() const { return AcpiTable(header, body_); }

 private:
  Bytes body_;
};

/// Pieces of the other tables that the discovery reads.
Bytes FadtTable(uint32_t dsdt, uint32_t facs = 0, uint16_t sciInterrupt = 9, uint32_t pm1aEvent = 0x800,
                uint32_t pmTimer = 0x808);
/// `bases`: one allocation each, segment 0, buses 0 to 255.
Bytes McfgTable(const std::vector<uint64_t>& bases);
/// `subtables` follow the local APIC address and flags.
Bytes MadtTable(const Bytes& subtables);
Bytes IoApicSubtable(uint32_t address, uint32_t interruptBase);
Bytes EcdtTable(uint16_t commandPort, uint16_t dataPort);
Bytes DsdtTable(const Bytes& aml = {});
Bytes RsdtTable(const std::vector<uint32_t>& entries);

/// A root pointer: 20 bytes for revision 0, else 36, with right checksums.
Bytes Rsdp(uint32_t rsdt, uint8_t revision = 0);

/// A root pointer, an RSDT and tables, laid out in physical memory one after the other on 64-byte boundaries.
class AcpiImage {
 public:
  AcpiImage& RootPointerAt(uint32_t address);  ///< default 0xF0000; a multiple of 16 in 0xE0000..0xFFFFF is found
  AcpiImage& RootPointerRevision(uint8_t revision);
  AcpiImage& TablesAt(uint32_t address);  ///< default 0x7F000000, where the RSDT goes
  AcpiImage& Table(Bytes table);          ///< at the next free address, listed in the RSDT
  AcpiImage& TableAt(uint32_t address, Bytes table);
  AcpiImage& UnlistedAt(uint32_t address, Bytes table);  ///< in memory, but not in the RSDT
  AcpiImage& Entry(uint32_t address);                    ///< an RSDT entry with nothing behind it, 0 included

  /// The pieces as (address, bytes), root pointer first.
  std::vector<std::pair<uint32_t, Bytes>> Build() const;
  void PutInto(Board* board) const;

 private:
  struct Piece {
    std::optional<uint32_t> address;
    Bytes bytes;
    bool listed;
  };
  uint32_t root_ = 0xF0000, tables_ = 0x7F000000;
  uint8_t revision_ = 0;
  std::vector<Piece> pieces_;
};

/// The BIOS information record, 64 bytes; `checksumOffset` (9 by default) is the byte that makes the sum right.
struct BiosInfo {
  std::string model;
  std::string signature = layout::bios::kSignature;
  uint16_t unused = 0;  ///< bytes 8 and 9; the checksum overwrites its byte
  size_t checksumOffset = 9;
  std::optional<uint8_t> checksum = {};  ///< instead of the right one
  Bytes Build() const;
};

}  // namespace sim
