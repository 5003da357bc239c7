// SPDX-License-Identifier: MIT
// The search for the BIOS information record.
#include "api/TVyn.h"

#include <cstring>

#include "firmware/BiosInfo.h"
#include "hw/TReadWrite.h"
#include "tests/unit/api/ApiBoard.h"

using apitest::Bytes;

namespace {

class BiosInfoSearch : public testing::Test, protected support::Machine {
 protected:
  void Put(uint32_t address, const firmware::BiosInfo& info) { board.Memory(address, info.Build()); }
  /// What creating the object prints.
  std::string Search() {
    return support::Printed([this] { vyn = std::make_unique<TVyn>(); });
  }

  std::unique_ptr<TVyn> vyn;
};

class TVynInterface : public BiosInfoSearch {};

}  // namespace

TEST_F(BiosInfoSearch, TakesAValidRecord) {
  Put(0xE1234, {.model = "VX-2000"});
  EXPECT_EQ(Search(), "");
  EXPECT_EQ(vyn->BiosInfoFound, 1);
  EXPECT_EQ(vyn->ModelName(), "VX-2000");
  const Bytes record = firmware::BiosInfo{.model = "VX-2000"}.Build();
  EXPECT_EQ(std::memcmp(&vyn->BiosInfo, record.data(), 64), 0);
}

TEST_F(BiosInfoSearch, TakesAnyAddressFromTheFirstOfTheAreaOn) {
  Put(0xE0000, {.model = "first"});
  EXPECT_EQ(Search(), "");
  EXPECT_EQ(vyn->ModelName(), "first");
}

TEST_F(BiosInfoSearch, TakesARecordThatEndsWithTheArea) {
  Put(0xFFFC0, {.model = "last"});
  EXPECT_EQ(Search(), "");
  EXPECT_EQ(vyn->BiosInfoFound, 1);
  EXPECT_EQ(vyn->ModelName(), "last");
}

TEST_F(BiosInfoSearch, FindsASignatureInTheLastEightBytesOfTheArea) {
  Put(0xFFFF8, {.model = "top"});
  EXPECT_EQ(Search(), "");
  EXPECT_EQ(vyn->ModelName(), "top");
}

TEST_F(BiosInfoSearch, FindsNoSignatureOutsideTheArea) {
  Put(0xFFFF9, {.model = "above"});
  Put(0xDFFC0, {.model = "below"});
  EXPECT_EQ(Search(), "Is Core8 ... ???\n");
  EXPECT_EQ(vyn->BiosInfoFound, 0);
}

TEST_F(BiosInfoSearch, TriesTheNextCopyAfterABadChecksum) {
  Put(0xE0000, {.model = "bad", .checksum = 0x11});
  Put(0xF0001, {.model = "good"});
  EXPECT_EQ(Search(), "");
  EXPECT_EQ(vyn->BiosInfoFound, 1);
  EXPECT_EQ(vyn->ModelName(), "good");
}

TEST_F(BiosInfoSearch, StopsAtTheFirstValidCopy) {
  Put(0xE0000, {.model = "good"});
  Put(0xF0000, {.model = "later"});
  Search();
  EXPECT_EQ(vyn->ModelName(), "good");
}

TEST_F(BiosInfoSearch, PrintsOneLineAfterAllCandidatesFailed) {
  Put(0xE0000, {.model = "one", .checksum = 0x11});
  Put(0xE1000, {.model = "two", .checksum = 0x11});
  Put(0xE2000, {.model = "three", .checksum = 0x11});
  EXPECT_EQ(Search(), "Is Core8 ... ???\n");
  EXPECT_EQ(vyn->BiosInfoFound, 0);
  EXPECT_EQ(vyn->ModelName(), "three");
}

TEST_F(BiosInfoSearch, MapsTwicePerFalseRecordHoweverManyThereAre) {
  constexpr unsigned kRecords = 0x10000 / 8;
  firmware::Bytes signatures;
  for (unsigned i = 0; i < kRecords; ++i) signatures.insert(signatures.end(), {'$', 'C', 'N', '1', '3', '6', '8', '$'});
  signatures.back() = 1;  // the last one is none, and nothing sums to 0
  board.Memory(0xE0000, signatures);
  EXPECT_EQ(Search(), "Is Core8 ... ???\n");
  const auto maps =
      std::count_if(board.Log().begin(), board.Log().end(), [](const auto& a) { return a.kind == sim::Access::kMap; });
  // One map finds a record and one reads it; 17 go through the 64 KiB behind the last.
  EXPECT_EQ(maps, 2 * (kRecords - 1) + 17);
}

TEST_F(BiosInfoSearch, LeavesAZeroedRecordWithoutACandidate) {
  EXPECT_EQ(Search(), "Is Core8 ... ???\n");
  const char zeros[64] = {};
  EXPECT_EQ(std::memcmp(&vyn->BiosInfo, zeros, 64), 0);
  EXPECT_EQ(vyn->ModelName(), "");
}

TEST_F(BiosInfoSearch, AcceptsTheChecksumByteAnywhere) {
  Put(0xE0000, {.model = "X", .checksumOffset = 63});
  EXPECT_EQ(Search(), "");
}

TEST_F(BiosInfoSearch, ReadsAtMost54BytesOfAModelNameWithoutTerminator) {
  const std::string name(54, 'M');
  Put(0xE0000, {.model = name});
  Search();
  EXPECT_EQ(vyn->ModelName(), name);
}

TEST_F(BiosInfoSearch, FindsNothingWithoutPrivilege) {
  Put(0xE0000, {.model = "X"});
  board.privileged = false;
  EXPECT_EQ(Search(), "Please run as root!\nIs Core8 ... ???\n");
}

TEST_F(TVynInterface, SearchesIntoACallersRecordWithoutTouchingItsOwn) {
  Put(0xE0000, {.model = "VX-2000"});
  Search();
  vyn->BiosInfoFound = 7;
  vyn->BiosInfo = {};
  _VYNMAR_BIOS_INFO record = {};
  testing::internal::CaptureStdout();
  EXPECT_EQ(vyn->GetVynmarBiosInfo(&record), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_STREQ(record.ModelName, "VX-2000");
  EXPECT_EQ(vyn->BiosInfoFound, 7);
  EXPECT_EQ(vyn->BiosInfo.ModelName[0], 0);
}

TEST_F(TVynInterface, SearchesInVainWithoutPrinting) {
  Search();
  _VYNMAR_BIOS_INFO record = {};
  testing::internal::CaptureStdout();
  EXPECT_EQ(vyn->GetVynmarBiosInfo(&record), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(TVynInterface, SumsTheFirstBytesModulo256) {
  Search();
  _VYNMAR_BIOS_INFO record = {};
  record.Signature[0] = 0x70;
  record.Signature[1] = 0x70;
  record.Signature[2] = 0x20;
  record.Signature[3] = 0x01;
  EXPECT_EQ(vyn->BiosInfoChecksum(&record, 3), 1);
  EXPECT_EQ(vyn->BiosInfoChecksum(&record, 4), 0);
  EXPECT_EQ(vyn->BiosInfoChecksum(&record, 2), 0);
}

TEST_F(TVynInterface, SumsNothingToValid) {
  Search();
  _VYNMAR_BIOS_INFO record = {};
  record.Signature[0] = 1;
  EXPECT_EQ(vyn->BiosInfoChecksum(&record, 0), 1);
}

TEST_F(TVynInterface, NamesNoProject) {
  Search();
  EXPECT_EQ(vyn->GetProjectName("anything"), "");
  vyn->RetrieveSmbiosInformation();
  EXPECT_EQ(vyn->Text1 + vyn->Text2 + vyn->Text3 + vyn->Text4, "");
  EXPECT_EQ(vyn->ReadWrite, TReadWrite::g_Instance);
}
