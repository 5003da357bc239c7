// SPDX-License-Identifier: MIT
// The record with its checksum.
#include "firmware/BiosInfo.h"

namespace firmware {

using namespace layout;

Bytes BiosInfo::Build() const {
  Bytes bytes(bios::kRecordBytes, 0);
  PutText(&bytes, 0, bios::kSignatureBytes, signature);
  Put(&bytes, bios::kUnused, 2, unused);
  PutText(&bytes, bios::kModel, bios::kModelBytes, model);
  bytes.at(checksumOffset) = checksum.value_or(ChecksumFor(bytes, checksumOffset));
  return bytes;
}

}  // namespace firmware
