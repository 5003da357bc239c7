// SPDX-License-Identifier: MIT
// The four functions that list sensor names.
#include <cstring>
#include <memory>

#include "tests/unit/api/ApiBoard.h"

using namespace apitest;

namespace {

/// Name buffers of 20 bytes, each with a fence behind it.
class Buffers {
 public:
  explicit Buffers(size_t count) : bytes_(count * 24, '#'), pointers_(count) {
    for (size_t i = 0; i < count; ++i) pointers_[i] = &bytes_[i * 24];
  }
  char** Pointers() { return pointers_.data(); }
  std::string Name(size_t i) const { return std::string(&bytes_[i * 24]); }
  bool Untouched(size_t i) const { return bytes_.compare(i * 24, 20, std::string(20, '#')) == 0; }
  void ExpectFences() const {
    for (size_t i = 0; i < pointers_.size(); ++i) EXPECT_EQ(bytes_.substr(i * 24 + 20, 4), "####") << i;
  }

 private:
  std::string bytes_;
  std::vector<char*> pointers_;
};

struct NamesCase {
  const char* quantity;
  uint8_t subTypes;
  int (*names)(char**, uint8_t*, uint8_t);
  uint64_t absent, nullBuffer;
};

constexpr NamesCase kNames[] = {
    {"voltage", 3, VynLibGetVoltageNames, 0x300, 0x304},
    {"temperature", 4, VynLibGetTemperatureNames, 0x400, 0x404},
    {"fan", 3, VynLibGetFanSpeedNames, 0x500, 0x505},
    {"current", 1, VynLibGetCurrentNames, 0x1A00, 0x1A03},
};

class SensorNames : public Api {
 protected:
  /// Two sensors of each sub-type of each quantity, the highest sub-type first in the table; the first is called
  /// "<sub-type> a", the second "<sub-type> b".
  void StartWithSensors() {
    for (const NamesCase& each : kNames)
      for (uint8_t subType = each.subTypes; subType > 0; --subType)
        for (const char* name : {" a", " b"})
          iadt.Add(Record::Sensor(each.quantity, subType).Name(std::to_string(subType) + name));
    Start();
  }
};

}  // namespace

TEST_F(SensorNames, FailWithCode1BeforeTheStart) {
  for (const NamesCase& each : kNames)
    for (const uint8_t selector : Numbers{0, 1, 2, 3}) {
      uint8_t count = 77;
      EXPECT_EQ(each.names(nullptr, &count, selector), 0);
      EXPECT_EQ(TakeCode(), 1u);
      EXPECT_EQ(count, 77);
    }
}

TEST_F(SensorNames, FailWithCode12ForAnotherSelector) {
  StartWithSensors();
  for (const NamesCase& each : kNames)
    for (const uint8_t selector : Numbers{3, 255}) {
      uint8_t count = 77;
      EXPECT_EQ(each.names(nullptr, &count, selector), 0);
      EXPECT_EQ(TakeCode(), 12u);
      EXPECT_EQ(count, 77);
    }
}

TEST_F(SensorNames, AreAbsentOnABoardWithoutTheQuantity) {
  Start();
  for (const NamesCase& each : kNames)
    for (const uint8_t selector : Numbers{0, 1, 2}) {
      uint8_t count = 77;
      EXPECT_EQ(each.names(nullptr, &count, selector), 0);
      EXPECT_EQ(TakeCode(), each.absent);
      EXPECT_EQ(count, 77);
    }
}

TEST_F(SensorNames, AreOfferedByEachListAlone) {
  for (const NamesCase& only : kNames)
    for (uint8_t subType = 1; subType <= only.subTypes; ++subType) {
      SCOPED_TRACE(std::string(only.quantity) + std::to_string(subType));
      iadt.Add(Record::Sensor(only.quantity, subType));
      Start();
      for (const NamesCase& each : kNames) {
        EXPECT_EQ(each.names(nullptr, nullptr, 0), each.names == only.names ? 1 : 0);
        EXPECT_EQ(TakeCode(), each.names == only.names ? 0 : each.absent);
      }
      StartOver();
    }
}

TEST_F(SensorNames, CountTheRecordsOfAllListsWithoutAnArray) {
  StartWithSensors();
  for (const NamesCase& each : kNames)
    for (const uint8_t selector : Numbers{1, 2}) {
      uint8_t count = 77;
      api::LastErrorCode = 99;
      EXPECT_EQ(each.names(nullptr, &count, selector), 1);
      EXPECT_EQ(TakeCode(), 0u);
      EXPECT_EQ(count, each.subTypes * 2);
    }
}

TEST_F(SensorNames, AreCopiedListByListAndLeaveTheCode) {
  StartWithSensors();
  for (const NamesCase& each : kNames)
    for (const uint8_t selector : Numbers{1, 2}) {
      auto count = static_cast<uint8_t>(each.subTypes * 2);
      Buffers buffers(count);
      api::LastErrorCode = 99;
      EXPECT_EQ(each.names(buffers.Pointers(), &count, selector), 1);
      EXPECT_EQ(TakeCode(), 99u);
      EXPECT_EQ(count, each.subTypes * 2);
      for (unsigned i = 0; i < count; ++i)
        EXPECT_EQ(buffers.Name(i), std::to_string(i / 2 + 1) + (i % 2 == 0 ? " a" : " b"));
      buffers.ExpectFences();
    }
}

TEST_F(SensorNames, DoNothingAndSucceedForAnotherCount) {
  StartWithSensors();
  for (const NamesCase& each : kNames)
    for (const int difference : {-1, 1}) {
      auto count = static_cast<uint8_t>(each.subTypes * 2 + difference);
      const uint8_t before = count;
      Buffers buffers(count);
      api::LastErrorCode = 99;
      EXPECT_EQ(each.names(buffers.Pointers(), &count, 2), 1);
      EXPECT_EQ(TakeCode(), 99u);
      EXPECT_EQ(count, before);
      for (size_t i = 0; i < count; ++i) EXPECT_TRUE(buffers.Untouched(i));
    }
}

TEST_F(SensorNames, FailAtABufferThatIsNullAndKeepTheOnesBefore) {
  StartWithSensors();
  for (const NamesCase& each : kNames) {
    auto count = static_cast<uint8_t>(each.subTypes * 2);
    Buffers buffers(count);
    buffers.Pointers()[1] = nullptr;
    EXPECT_EQ(each.names(buffers.Pointers(), &count, 2), 0);
    EXPECT_EQ(TakeCode(), each.nullBuffer);
    EXPECT_EQ(buffers.Name(0), "1 a");
    for (size_t i = 2; i < count; ++i) EXPECT_TRUE(buffers.Untouched(i));
  }
}

TEST_F(SensorNames, AreEmptyWithoutATerminatorInTheirTwentyBytes) {
  iadt.Add(Record::Sensor("voltage", 1).Name("abcdefghijklmnopqrst"));
  iadt.Add(Record::Sensor("voltage", 1).Name("abcdefghijklmnopqrs"));
  Start();
  uint8_t count = 2;
  Buffers buffers(2);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(VynLibGetVoltageNames(buffers.Pointers(), &count, 2), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(buffers.Name(0), "");
  EXPECT_EQ(buffers.Name(1), "abcdefghijklmnopqrs");
  buffers.ExpectFences();
}

TEST_F(SensorNames, AreCountedIn8Bits) {
  for (int i = 0; i < 258; ++i) iadt.Add(Record::Sensor("current", 1).Name("C" + std::to_string(i)));
  Start();
  uint8_t count = 0;
  EXPECT_EQ(VynLibGetCurrentNames(nullptr, &count, 2), 1);
  EXPECT_EQ(count, 2);
  Buffers buffers(2);
  api::LastErrorCode = 99;
  EXPECT_EQ(VynLibGetCurrentNames(buffers.Pointers(), &count, 2), 1);
  EXPECT_EQ(TakeCode(), 99u);
  EXPECT_EQ(buffers.Name(0), "C0");
  EXPECT_EQ(buffers.Name(1), "C1");
}

TEST_F(SensorNames, TouchNoHardware) {
  StartWithSensors();
  uint8_t count = 6;
  Buffers buffers(6);
  VynLibGetVoltageNames(buffers.Pointers(), &count, 2);
  VynLibGetTemperatureNames(nullptr, &count, 2);
  EXPECT_THAT(board.Log(), testing::IsEmpty());
}
