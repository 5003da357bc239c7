// SPDX-License-Identifier: MIT
// Board information records one after another.
#include "firmware/IamtBuilder.h"

#include "layout/BoardRecord.h"

namespace firmware {

using namespace layout;

IamtBuilder& IamtBuilder::Chips(uint16_t first, uint16_t second, uint16_t third) {
  Bytes record(iamt::kBoardRecordBytes, 0);
  Put(&record, iamt::kLength, 1, iamt::kBoardRecordBytes);
  Put(&record, iamt::kChipIds[0], 2, first);
  Put(&record, iamt::kChipIds[1], 2, second);
  Put(&record, iamt::kChipIds[2], 2, third);
  return Add(record);
}

IamtBuilder& IamtBuilder::Add(const Bytes& record) {
  body_.insert(body_.end(), record.begin(), record.end());
  return *this;
}

IamtBuilder& IamtBuilder::Length(uint32_t length) {
  header.length = length;
  return *this;
}

IamtBuilder& IamtBuilder::Checksum(uint8_t checksum) {
  header.checksum = checksum;
  return *this;
}

}  // namespace firmware
