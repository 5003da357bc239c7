// SPDX-License-Identifier: MIT
/// Published table layouts (ACPI 6, section 5.2, the ECDT in 5.2.15; the MCFG from PCI Firmware 3), as byte offsets
/// from the first byte of a table. Numbers are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace layout::acpi {

inline constexpr size_t kSignatureBytes = 4;
inline constexpr size_t kHeaderBytes = 36;
inline constexpr size_t kLengthOffset = 4, kRevisionOffset = 8, kChecksumOffset = 9;
inline constexpr size_t kOemId = 10, kOemIdBytes = 6, kOemTableId = 16, kOemTableIdBytes = 8, kOemRevision = 24;
inline constexpr size_t kCreatorId = 28, kCreatorIdBytes = 4, kCreatorRevision = 32;

/// Where firmware with a BIOS leaves its root pointer and the BIOS information record.
inline constexpr uint32_t kBiosArea = 0xE0000, kBiosAreaBytes = 0x20000;

/// Far above what firmware publishes; they end the reading of hostile tables.
namespace limits {
inline constexpr size_t kMostTables = 4096;
inline constexpr uint32_t kLargestTable = 16u << 20;    ///< bytes
inline constexpr uint64_t kMostBytesRead = 256u << 20;  ///< of all tables together
}  // namespace limits

/// Root pointer, in the BIOS area on a 16-byte boundary.
namespace rsdp {
inline constexpr char kSignature[] = "RSD PTR ";
inline constexpr size_t kChecksummedBytes = 20;  ///< also its length in revision 0
inline constexpr size_t kBytes = 36;
inline constexpr size_t kSignatureBytes = sizeof kSignature - 1;
inline constexpr size_t kChecksum = 8, kRevision = 15, kRsdtAddress = 16, kLength = 20;
}  // namespace rsdp

namespace rsdt {
inline constexpr char kSignature[] = "RSDT";
inline constexpr size_t kEntries = 36, kEntryBytes = 4;
}  // namespace rsdt

namespace fadt {
inline constexpr size_t kFacs = 36, kDsdt = 40, kSciInterrupt = 46, kSmiCommand = 48, kAcpiEnable = 52,
                        kAcpiDisable = 53, kS4BiosRequest = 54, kPstateControl = 55, kPm1aEventBlock = 56,
                        kPmTimerBlock = 76, kFlags = 112, kMinimumBytes = 116;
inline constexpr unsigned kTimerIs32Bits = 0x100;
}  // namespace fadt

namespace madt {
inline constexpr size_t kFirstSubtable = 44, kMinimumBytes = 44, kIoApicBytes = 12;
inline constexpr size_t kIoApicAddress = 4, kIoApicInterruptBase = 8;  ///< from the subtable's first byte
inline constexpr unsigned kIoApicType = 1;
}  // namespace madt

namespace ecdt {
inline constexpr size_t kControl = 36, kCommandPort = 40, kDataPort = 52, kMinimumBytes = 54;
}

namespace mcfg {
inline constexpr size_t kAllocations = 44, kAllocationBytes = 16, kMinimumBytes = 44;
}

}  // namespace layout::acpi
