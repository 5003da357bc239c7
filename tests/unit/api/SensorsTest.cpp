// SPDX-License-Identifier: MIT
// The four readers: formulas, codes, the search by name.
#include <cmath>
#include <functional>
#include <list>

#include "tests/unit/api/ApiBoard.h"

using namespace apitest;
using sim::In8;
using sim::Sleep;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Reads a port for a place of 21 bytes. Only the opcode, the control word and the port matter to a sensor.
Command Short(uint16_t port) {
  Bytes bytes = Command::Port(port).Get().Build();
  bytes.resize(21);
  return Command::Raw(bytes);
}
Command Long(uint16_t port, unsigned width = 1) { return Command::Port(port).Get().Width(width); }

class Sensors : public Api {
 protected:
  Record& Sensor(const char* quantity, uint8_t subType, const char* name = "S") {
    records.push_back(Record::Sensor(quantity, subType).Name(name));
    return records.back();
  }
  /// With every sensor made so far.
  void StartSensors() {
    for (const Record& record : records) iadt.Add(record);
    Start();
  }

  float Voltage(const char* name = "S") { return Read(VynLibGetVoltage, name); }
  float Temperature(const char* name = "S") { return Read(VynLibGetTemperature, name); }
  float Current(const char* name = "S") { return Read(VynLibGetCurrent, name); }
  uint16_t FanSpeed(const char* name = "S") {
    uint16_t rpm = 12345;
    result = VynLibGetFanSpeed(name, &rpm, 2);
    return rpm;
  }
  void ExpectDone() {
    EXPECT_EQ(result, 1);
    EXPECT_EQ(VynLibDllGetLastError(), 0u);
  }
  void ExpectFailed(uint64_t code) {
    EXPECT_EQ(result, 0);
    EXPECT_EQ(VynLibDllGetLastError(), code);
  }

  std::list<Record> records;
  int result = -1;

 private:
  float Read(int (*read)(const char*, float*, uint8_t), const char* name) {
    float value = 12345;
    result = read(name, &value, 2);
    return value;
  }
};

class Readers : public Sensors {};
class Voltage2 : public Sensors {};
class Voltage3 : public Sensors {};
class Voltage4 : public Sensors {};
class VoltageSearch : public Sensors {};
class Temperature5 : public Sensors {};
class Temperature6 : public Sensors {};
class Temperature7 : public Sensors {};
class Temperature8 : public Sensors {};
class FanSpeed9 : public Sensors {};
class FanSpeed10 : public Sensors {};
class FanSpeed11 : public Sensors {};
class FanSpeedSearch : public Sensors {};
class Current12 : public Sensors {};

/// The four readers behind one signature, asking for a sensor "none" that no test makes.
struct ReaderCase {
  const char* quantity;
  std::function<int(uint8_t selector, double* result)> read;
  uint64_t absent, noSuchName;
};

template <typename T>
std::function<int(uint8_t, double*)> Wrap(int (*read)(const char*, T*, uint8_t)) {
  return [read](uint8_t selector, double* result) {
    T value = static_cast<T>(*result);
    const int done = read("none", &value, selector);
    *result = static_cast<double>(value);
    return done;
  };
}

const ReaderCase kReaders[] = {
    {"voltage", Wrap(VynLibGetVoltage), 0x300, 0x305},
    {"temperature", Wrap(VynLibGetTemperature), 0x400, 0x405},
    {"fan", Wrap(VynLibGetFanSpeed), 0x500, 0x506},
    {"current", Wrap(VynLibGetCurrent), 0x1A00, 0x1A05},
};

}  // namespace

// ---- what the four readers share ----

TEST_F(Readers, FailWithCode1BeforeTheStart) {
  for (const ReaderCase& reader : kReaders)
    for (const uint8_t selector : Numbers{0, 1, 2, 3}) {
      double value = 77;
      EXPECT_EQ(reader.read(selector, &value), 0) << reader.quantity;
      EXPECT_EQ(TakeCode(), 1u);
      EXPECT_EQ(value, 77);
    }
}

TEST_F(Readers, FailWithCode12ForAnotherSelector) {
  Start();
  for (const ReaderCase& reader : kReaders)
    for (const uint8_t selector : Numbers{3, 255}) {
      double value = 77;
      EXPECT_EQ(reader.read(selector, &value), 0) << reader.quantity;
      EXPECT_EQ(TakeCode(), 12u);
      EXPECT_EQ(value, 77);
    }
}

TEST_F(Readers, StoreA0AndFailOnABoardWithoutTheQuantity) {
  Start();
  for (const ReaderCase& reader : kReaders)
    for (const uint8_t selector : Numbers{1, 2}) {
      double value = 77;
      EXPECT_EQ(reader.read(selector, &value), 0) << reader.quantity;
      EXPECT_EQ(TakeCode(), reader.absent);
      EXPECT_EQ(value, 0);
    }
}

TEST_F(Readers, StoreA0AndFailForANameThatNoSensorHas) {
  Sensor("voltage", 1);
  Sensor("temperature", 2);
  Sensor("fan", 2);
  Sensor("current", 1);
  StartSensors();
  for (const ReaderCase& reader : kReaders)
    for (const uint8_t selector : Numbers{1, 2}) {
      double value = 77;
      EXPECT_EQ(reader.read(selector, &value), 0) << reader.quantity;
      EXPECT_EQ(TakeCode(), reader.noSuchName);
      EXPECT_EQ(value, 0);
    }
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(Readers, AnswerTheQueryWithoutTouchingAnything) {
  Sensor("voltage", 1);
  Sensor("temperature", 2);
  Sensor("fan", 2);
  Sensor("current", 1);
  StartSensors();
  for (const ReaderCase& reader : kReaders) {
    double value = 77;
    EXPECT_EQ(reader.read(0, &value), 1) << reader.quantity;
    EXPECT_EQ(TakeCode(), 0u);
    EXPECT_EQ(value, 77);
  }
  EXPECT_THAT(board.Log(), IsEmpty());
}

TEST_F(Readers, AnswerTheQueryByTheListsThatThereAre) {
  struct Case {
    const char* quantity;
    uint8_t subType;  // the only sensors on the board
    int voltage, temperature, fan, current;
  };
  // A board without any voltage list is said to have one, a board with list 4 alone to have none.
  for (const Case& each :
       {Case{"voltage", 1, 1, 0, 0, 0}, Case{"voltage", 2, 1, 0, 0, 0}, Case{"voltage", 3, 0, 0, 0, 0},
        Case{"temperature", 1, 1, 1, 0, 0}, Case{"temperature", 2, 1, 1, 0, 0}, Case{"temperature", 3, 1, 1, 0, 0},
        Case{"temperature", 4, 1, 1, 0, 0}, Case{"fan", 1, 1, 0, 1, 0}, Case{"fan", 2, 1, 0, 1, 0},
        Case{"fan", 3, 1, 0, 1, 0}, Case{"current", 1, 1, 0, 0, 1}}) {
    SCOPED_TRACE(std::string(each.quantity) + std::to_string(each.subType));
    Sensor(each.quantity, each.subType);
    StartSensors();
    const int expected[] = {each.voltage, each.temperature, each.fan, each.current};
    for (size_t i = 0; i < std::size(kReaders); ++i) {
      double value = 0;
      EXPECT_EQ(kReaders[i].read(0, &value), expected[i]) << kReaders[i].quantity;
      EXPECT_EQ(TakeCode(), expected[i] != 0 ? 0 : kReaders[i].absent);
    }
    StartOver();
    records.clear();
  }
}

TEST_F(Readers, AnswerTheVoltageQueryWithAnotherListBesideList4) {
  Sensor("voltage", 3);
  Sensor("voltage", 2);
  StartSensors();
  EXPECT_EQ(VynLibGetVoltage(nullptr, nullptr, 0), 1);
}

TEST_F(Readers, CompareAtMost20CharactersOfTheName) {
  board.Ports(0x300, {45, 46});
  Sensor("temperature", 2, "abcdefghijklmnopqrst").Commands({Long(0x300)});
  Sensor("temperature", 2, "abc").Commands({Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature("abcdefghijklmnopqrst"), 45.0f);
  EXPECT_EQ(Temperature("abcdefghijklmnopqrst and more"), 45.0f);
  EXPECT_EQ(Temperature("abc"), 46.0f);
  Temperature("abcd");
  ExpectFailed(0x405);
  Temperature("abcdefghijklmnopqrsX");
  ExpectFailed(0x405);
  Temperature("");
  ExpectFailed(0x405);
}

TEST_F(Readers, TakeSelector1AsWell) {
  board.Ports(0x300, {45});
  Sensor("temperature", 2).Commands({Long(0x300)});
  StartSensors();
  float value = 0;
  EXPECT_EQ(VynLibGetTemperature("S", &value, 1), 1);
  EXPECT_EQ(value, 45.0f);
}

TEST_F(Readers, TakeAFailedAccessForItsRawValue) {
  // Expected values do not match, which reading sensors ignores.
  board.Ports(0x300, {45});
  Sensor("temperature", 2).Commands({Command::Port(0x300).Get(0xFF, 99)});
  StartSensors();
  EXPECT_EQ(Temperature(), 45.0f);
  ExpectDone();
}

// ---- voltage ----

TEST_F(Voltage2, ScalesByTheDividerAnd8MillivoltsPerCount) {
  // (10 + 10) / 10 * 100 * 8 * 0.001 = 1.6
  board.Ports(0x300, {100});
  Sensor("voltage", 1).Parameter("r1", 10).Parameter("r2", 10).Commands({Long(0x3F0), Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 1.6f);
  ExpectDone();
}

TEST_F(Voltage2, ScalesWithoutADividerWhenEitherResistorIs0) {
  board.Ports(0x300, {100});
  Sensor("voltage", 1, "no R2").Parameter("r1", 10).Commands({Long(0x3F0), Long(0x300)});
  Sensor("voltage", 1, "no R1").Parameter("r2", 10).Commands({Long(0x3F0), Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage("no R2"), 0.8f);
  EXPECT_EQ(Voltage("no R1"), 0.8f);
}

TEST_F(Voltage2, WorksOutTheDividerInFloatAndTheStepToVoltsInDouble) {
  // 4/3 in float is 1.3333333731; times 7 rounds to 9.3333339691, times 8 is 74.6666717529; times 0.001 in double and
  // stored as float this is 0.0746666715. All in double it would be 0.0746666640, all in float 0.0746666789.
  board.Ports(0x300, {7});
  Sensor("voltage", 1).Parameter("r1", 1).Parameter("r2", 3).Commands({Long(0x3F0), Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 0.0746666715f);
}

TEST_F(Voltage2, WithoutADividerIsWorkedOutInDouble) {
  // 40 * 0.001 in double, stored as float, is the float next to 0.04; in float it would be the one above.
  board.Ports(0x300, {5});
  Sensor("voltage", 1).Commands({Long(0x3F0), Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 0.04f);
}

TEST_F(Voltage2, RunsBothCommandsInOrderIntoOneRawValue) {
  board.Ports(0x300, {0x11, 0x22});
  Sensor("voltage", 1).Commands({Long(0x300), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Voltage(), 0.272f);  // 34 * 8 mV
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0x11), In8(0x301, 0x22)));
}

TEST_F(Voltage2, FailsOnARawValueOf0) {
  board.Ports(0x300, {0});
  Sensor("voltage", 1).Commands({Long(0x300), Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 0.0f);
  ExpectFailed(0x301);
}

TEST_F(Voltage2, GoesOnWithTheNextRecordOfTheNameAfterA0) {
  board.Ports(0x300, {0, 125});
  Sensor("voltage", 1).Commands({Long(0x300), Long(0x300)});
  Sensor("voltage", 1, "other").Commands({Long(0x301), Long(0x301)});
  Sensor("voltage", 1).Commands({Long(0x301), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Voltage(), 1.0f);
  ExpectDone();
  EXPECT_EQ(board.PortLog().size(), 4u);
}

TEST_F(Voltage3, ReadsAModelSpecificRegister) {
  board.Msr(0x19C, 100);
  Sensor("voltage", 2).Commands({Command::Msr(0x19C).Get()});
  StartSensors();
  EXPECT_FLOAT_EQ(Voltage(), 0.8f);
}

TEST_F(Temperature6, ReadsAModelSpecificRegister) {
  board.Msr(0x19C, 100);
  Sensor("temperature", 2).Commands({Command::Msr(0x19C).Get()});
  StartSensors();
  EXPECT_FLOAT_EQ(Temperature(), 100.0f);
}

TEST_F(Voltage3, ScalesByTheDividerAnd8MillivoltsPerCount) {
  // (20 + 10) / 10 * 50 * 8 * 0.001 = 1.2
  board.Ports(0x300, {50});
  Sensor("voltage", 2).Parameter("r1", 20).Parameter("r2", 10).Commands({Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 1.2f);
  ExpectDone();
}

TEST_F(Voltage3, FailsOnARawValueOf0) {
  board.Ports(0x300, {0});
  Sensor("voltage", 2).Commands({Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 0.0f);
  ExpectFailed(0x302);
}

TEST_F(Voltage4, ScalesByItsOwnStep) {
  board.Ports(0x300, {250});
  Sensor("voltage", 3, "plain").Parameter("step", 16).Commands({Short(0x300)});
  Sensor("voltage", 3, "divided")
      .Parameter("step", 16)
      .Parameter("r1", 10)
      .Parameter("r2", 10)
      .Commands({Short(0x300)});
  Sensor("voltage", 3, "one resistor").Parameter("step", 16).Parameter("r1", 10).Commands({Short(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage("plain"), 4.0f);
  EXPECT_EQ(Voltage("divided"), 8.0f);
  EXPECT_EQ(Voltage("one resistor"), 4.0f);
  ExpectDone();
}

TEST_F(Voltage4, WithoutADividerIsWorkedOutInDouble) {
  board.Ports(0x300, {5});  // as for list 2
  Sensor("voltage", 3).Parameter("step", 8).Commands({Short(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 0.04f);
}

TEST_F(Voltage4, FailsOnARawValueOf0) {
  board.Ports(0x300, {0});
  Sensor("voltage", 3).Parameter("step", 16).Commands({Short(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 0.0f);
  ExpectFailed(0x306);
}

TEST_F(VoltageSearch, GoesThroughLists2And3And4) {
  board.Ports(0x300, {0, 0, 250});
  Sensor("voltage", 3).Parameter("step", 16).Commands({Short(0x302)});
  Sensor("voltage", 2).Commands({Long(0x301)});
  Sensor("voltage", 1).Commands({Long(0x300), Long(0x300)});
  StartSensors();
  EXPECT_EQ(Voltage(), 4.0f);
  ExpectDone();
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 0), In8(0x300, 0), In8(0x301, 0), In8(0x302, 250)));
}

TEST_F(VoltageSearch, LeavesTheCodeOfTheLastRecordThatRead0) {
  board.Ports(0x300, {0});
  Sensor("voltage", 1).Commands({Long(0x300), Long(0x300)});
  Sensor("voltage", 2).Commands({Long(0x300)});
  Sensor("voltage", 3, "other").Commands({Short(0x300)});
  StartSensors();
  Voltage();
  ExpectFailed(0x302);
}

// ---- temperature ----

TEST_F(Temperature5, AddsAFractionToAWholeNumber) {
  // 50 / 1 + (128 >> 6) / 4 = 50.5
  board.Ports(0x300, {50, 128});
  Sensor("temperature", 1)
      .Parameter("divisor", 1)
      .Parameter("fraction_shift", 6)
      .Parameter("fraction_divisor", 4)
      .Commands({Long(0x3F0), Long(0x300), Long(0x3F0), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), 50.5f);
  ExpectDone();
}

TEST_F(Temperature5, RunsTheTwoCommandsOfTheWholePartFirst) {
  board.Ports(0x300, {1, 2, 3, 4});
  Sensor("temperature", 1)
      .Parameter("divisor", 1)
      .Parameter("fraction_divisor", 1)
      .Commands({Long(0x300), Long(0x301), Long(0x302), Long(0x303)});
  StartSensors();
  EXPECT_EQ(Temperature(), 6.0f);  // 2 + 4
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 1), In8(0x301, 2), In8(0x302, 3), In8(0x303, 4)));
}

TEST_F(Temperature5, DividesAPositiveWholePartInFloat) {
  // (102 >> 1) / 2 = 25.5
  board.Ports(0x300, {102, 0});
  Sensor("temperature", 1)
      .Parameter("divisor", 2)
      .Parameter("shift", 1)
      .Parameter("fraction_divisor", 4)
      .Commands({Long(0x3F0), Long(0x300), Long(0x3F0), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), 25.5f);
}

TEST_F(Temperature5, AddsTheFractionToANegativeWholeNumberToo) {
  // 256 - 246 = 10; -10 + 0.5 = -9.5
  board.Ports(0x300, {0xF6, 2});
  Sensor("temperature", 1)
      .Parameter("divisor", 1)
      .Parameter("fraction_divisor", 4)
      .Commands({Long(0x3F0), Long(0x300), Long(0x3F0), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), -9.5f);
}

TEST_F(Temperature5, DividesANegativeWholePartInIntegers) {
  // 247 / 2 = 123; 256 - 123 = 133
  board.Ports(0x300, {0xF7, 0});
  Sensor("temperature", 1)
      .Parameter("divisor", 2)
      .Parameter("fraction_divisor", 1)
      .Commands({Long(0x3F0), Long(0x300), Long(0x3F0), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), -133.0f);
}

TEST_F(Temperature5, TakesTheSignBeforeShifting) {
  // 0x80 >> 1 = 64; 256 - 64 = 192
  board.Ports(0x300, {0x80, 0});
  Sensor("temperature", 1)
      .Parameter("divisor", 1)
      .Parameter("shift", 1)
      .Parameter("fraction_divisor", 1)
      .Commands({Long(0x3F0), Long(0x300), Long(0x3F0), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), -192.0f);
}

TEST_F(Temperature5, TakesAQuotientOf0ForADivisorOf0OnTheNegativePath) {
  board.Ports(0x300, {0xF6, 2});
  Sensor("temperature", 1)
      .Parameter("fraction_divisor", 4)
      .Commands({Long(0x3F0), Long(0x300), Long(0x3F0), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), -255.5f);
  ExpectDone();
}

TEST_F(Temperature5, IsInfiniteForADivisorOf0OnThePositivePath) {
  board.Ports(0x300, {50, 2});
  Sensor("temperature", 1)
      .Parameter("fraction_divisor", 4)
      .Commands({Long(0x3F0), Long(0x300), Long(0x3F0), Long(0x301)});
  StartSensors();
  EXPECT_TRUE(std::isinf(Temperature()));
  ExpectDone();
}

TEST_F(Temperature6, IsTwosComplementOf8Bits) {
  board.Ports(0x300, {0xF6, 0x2D, 0x80, 0x7F, 0xFF, 0x00});
  for (int i = 0; i < 6; ++i)
    Sensor("temperature", 2, std::to_string(i).c_str()).Commands({Long(static_cast<uint16_t>(0x300 + i))});
  StartSensors();
  EXPECT_EQ(Temperature("0"), -10.0f);
  EXPECT_EQ(Temperature("1"), 45.0f);
  EXPECT_EQ(Temperature("2"), -128.0f);
  EXPECT_EQ(Temperature("3"), 127.0f);
  EXPECT_EQ(Temperature("4"), -1.0f);
  EXPECT_EQ(Temperature("5"), 0.0f);
  ExpectDone();
}

TEST_F(Temperature6, TakesAWiderValueWholeUnlessItsBit7IsSet) {
  board.Ports(0x300, {0x10, 0x01, 0xF6, 0x01});
  Sensor("temperature", 2, "272").Commands({Long(0x300, 2)});
  Sensor("temperature", 2, "-10").Commands({Long(0x302, 2)});
  StartSensors();
  EXPECT_EQ(Temperature("272"), 272.0f);
  EXPECT_EQ(Temperature("-10"), -10.0f);
}

TEST_F(Temperature7, SubtractsTwoBitFields) {
  // 163 is 40 << 2 and 3 below it; 25 | 0xC0 has two bits above a width of 6.
  board.Ports(0x300, {163, 25 | 0xC0});
  Sensor("temperature", 3)
      .Parameter("shift", 2)
      .Parameter("width", 6)
      .Parameter("subtrahend_width", 6)
      .Commands({Long(0x300), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), 15.0f);
  ExpectDone();
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 163), In8(0x301, 25 | 0xC0)));
}

TEST_F(Temperature7, WrapsWhenTheSecondFieldIsTheLarger) {
  board.Ports(0x300, {25, 40});
  Sensor("temperature", 3).Parameter("width", 8).Parameter("subtrahend_width", 8).Commands({Long(0x300), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), 18446744073709551616.0f);  // 2^64 - 15 as float
  ExpectDone();
}

TEST_F(Temperature7, TakesAWidthOf0ForAnEmptyField) {
  board.Ports(0x300, {25, 40});
  Sensor("temperature", 3).Parameter("width", 8).Commands({Long(0x300), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), 25.0f);
}

TEST_F(Temperature7, TakesAWidthOf64AndMoreForTheWholeValue) {
  board.Ports(0x300, {25, 5});
  Sensor("temperature", 3)
      .Parameter("width", 64)
      .Parameter("subtrahend_width", 255)
      .Commands({Long(0x300), Long(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), 20.0f);
}

TEST_F(Temperature8, IsInHundredthsOfADegree) {
  struct Case {
    uint8_t high, low;
    float celsius;
  };
  for (const Case& each : {Case{0x0B, 0xB8, 30.0f}, Case{0xFF, 0x9C, -1.0f}, Case{0x00, 0x01, 0.01f},
                           Case{0x01, 0x00, 2.56f}, Case{0x7F, 0xFF, 327.67f}, Case{0x80, 0x00, -327.68f}}) {
    board.Ports(0x300, {each.high, each.low});
    Sensor("temperature", 4).Commands({Short(0x300), Short(0x301)});
    StartSensors();
    EXPECT_EQ(Temperature(), each.celsius);
    ExpectDone();
    StartOver();
    records.clear();
  }
}

TEST_F(Temperature8, WrapsIn32BitsWhenItIsNegative) {
  // 65536 - 0x180 * 256 = -32768, in 32 bits 4294934528; a hundredth of it, negated, to the 4 degrees
  // that a float tells apart.
  board.Ports(0x300, {0x80, 0x01, 0x00});
  Bytes wide = Long(0x300, 2).Build();
  wide.resize(21);
  Sensor("temperature", 4).Commands({Command::Raw(wide), Short(0x302)});
  StartSensors();
  EXPECT_EQ(Temperature(), -42949344.0f);
  ExpectDone();
}

TEST_F(Temperature8, WaitsFiveMillisecondsBeforeEachMatchingRecord) {
  board.Ports(0x300, {0, 0, 0x0B, 0xB8});
  Sensor("temperature", 4, "other").Commands({Short(0x302), Short(0x303)});
  Sensor("temperature", 4).Commands({Short(0x300), Short(0x301)});
  Sensor("temperature", 4).Commands({Short(0x302), Short(0x303)});
  StartSensors();
  EXPECT_EQ(Temperature(), 30.0f);
  ExpectDone();
  EXPECT_THAT(board.PortLog(),
              ElementsAre(Sleep(5000), In8(0x300, 0), In8(0x301, 0), Sleep(5000), In8(0x302, 0x0B), In8(0x303, 0xB8)));
}

TEST_F(Temperature8, FailsWhenEveryRecordReads0InBothBytes) {
  board.Ports(0x300, {0, 0});
  Sensor("temperature", 4).Commands({Short(0x300), Short(0x301)});
  Sensor("temperature", 4).Commands({Short(0x300), Short(0x301)});
  StartSensors();
  EXPECT_EQ(Temperature(), 0.0f);
  ExpectFailed(0x407);
}

TEST_F(Temperature8, ComesAfterTheOtherLists) {
  board.Ports(0x300, {45});
  Sensor("temperature", 4).Commands({Short(0x300), Short(0x300)});
  Sensor("temperature", 2).Commands({Long(0x300)});
  StartSensors();
  EXPECT_EQ(Temperature(), 45.0f);
  EXPECT_EQ(board.Microseconds(), 0u);
}

// ---- fan speed ----

TEST_F(FanSpeed9, IsTheHighByteTimes256PlusTheLow) {
  board.Ports(0x300, {1, 0x05, 2, 0xDC});
  Sensor("fan", 1).Commands({Long(0x300), Long(0x301), Long(0x302), Long(0x303)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 1500);
  ExpectDone();
  EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, 1), In8(0x301, 0x05), In8(0x302, 2), In8(0x303, 0xDC)));
}

TEST_F(FanSpeed9, FailsWhenBothBytesReadAllOnes) {
  board.Ports(0x300, {0xFF});
  Sensor("fan", 1).Commands({Long(0x300), Long(0x300), Long(0x300), Long(0x300)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 0);
  ExpectFailed(0x501);
}

TEST_F(FanSpeed9, KnowsNoOtherStalledReading) {
  board.Ports(0x300, {0x0F, 0xFF});
  Sensor("fan", 1).Commands({Long(0x300), Long(0x300), Long(0x301), Long(0x301)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 4095);
  ExpectDone();
}

TEST_F(FanSpeed9, GoesOnWithTheNextRecordOfTheName) {
  board.Ports(0x300, {0xFF, 0x05, 0xDC});
  Sensor("fan", 1).Commands({Long(0x300), Long(0x300), Long(0x300), Long(0x300)});
  Sensor("fan", 1).Commands({Long(0x301), Long(0x301), Long(0x302), Long(0x302)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 1500);
  ExpectDone();
}

TEST_F(FanSpeed9, DoesNotClearWhatAnEarlierRecordRead) {
  // The second record reads the low byte alone; the high byte stays 0xFF.
  board.Ports(0x300, {0xFF, 0x10});
  Sensor("fan", 1).Commands({Long(0x300), Long(0x300), Long(0x300), Long(0x300)});
  Sensor("fan", 1).Commands({Command::Port(0x301), Command::Port(0x301), Long(0x301), Long(0x301)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 0xFF10);
}

TEST_F(FanSpeed9, ComparesTheWholeValuesWithAllOnes) {
  // 0x1FF is not 0xFF: 0x1FF * 256 + 0xFF, of which 16 bits are kept.
  board.Ports(0x300, {0xFF, 0x01});
  Sensor("fan", 1).Commands({Long(0x300, 2), Long(0x300, 2), Long(0x300), Long(0x300)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 0xFFFF);
  ExpectDone();
}

TEST_F(FanSpeed10, Is1500000ByTheCount) {
  struct Case {
    uint8_t high, low;
    uint16_t rpm;
  };
  // 1500 counts; 22: 68181 - 65536; 1: 1500000 - 22 * 65536; a missing or stalled fan.
  for (const Case& each :
       {Case{0x05, 0xDC, 1000}, Case{0x00, 0x17, 65217}, Case{0x00, 0x16, 2645}, Case{0x00, 0x01, 58208},
        Case{0xFF, 0xFE, 22}, Case{0xFF, 0xFF, 0}, Case{0x0F, 0xFF, 0}, Case{0x00, 0x00, 0}}) {
    board.Ports(0x300, {each.high, each.low});
    Sensor("fan", 2).Commands({Long(0x300), Long(0x301)});
    StartSensors();
    EXPECT_EQ(FanSpeed(), each.rpm);
    ExpectDone();
    EXPECT_THAT(board.PortLog(), ElementsAre(In8(0x300, each.high), In8(0x301, each.low)));
    StartOver();
    records.clear();
  }
}

TEST_F(FanSpeed10, CountsIn32Bits) {
  // 0x100 * 256 = 65536 counts: 22; in 16 bits it would be a stalled fan.
  board.Ports(0x300, {0x00, 0x01, 0x00});
  Sensor("fan", 2).Commands({Long(0x300, 2), Long(0x302)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 22);
  ExpectDone();
}

TEST_F(FanSpeed11, IsTheCountUnlessTheFanIsMissingOrStalled) {
  struct Case {
    uint8_t high, low;
    uint16_t rpm;
  };
  for (const Case& each : {Case{0x04, 0xB0, 1200}, Case{0xFF, 0xFE, 65534}, Case{0xFF, 0xFF, 0}, Case{0x0F, 0xFF, 0},
                           Case{0x00, 0x00, 0}}) {
    board.Ports(0x300, {each.high, each.low});
    Sensor("fan", 3).Commands({Short(0x300), Short(0x301)});
    StartSensors();
    EXPECT_EQ(FanSpeed(), each.rpm);
    ExpectDone();
    StartOver();
    records.clear();
  }
}

TEST_F(FanSpeedSearch, GoesOnToList10WhenList9ReadsAllOnes) {
  board.Ports(0x300, {0xFF, 0x05, 0xDC});
  Sensor("fan", 2).Commands({Long(0x301), Long(0x302)});
  Sensor("fan", 1).Commands({Long(0x300), Long(0x300), Long(0x300), Long(0x300)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 1000);
  ExpectDone();
}

TEST_F(FanSpeedSearch, EndsAtTheFirstMatchOfList10) {
  board.Ports(0x300, {0, 0x04, 0xB0});
  Sensor("fan", 2).Commands({Long(0x300), Long(0x300)});
  Sensor("fan", 2).Commands({Long(0x301), Long(0x302)});
  Sensor("fan", 3).Commands({Short(0x301), Short(0x302)});
  StartSensors();
  EXPECT_EQ(FanSpeed(), 0);
  ExpectDone();
  EXPECT_EQ(board.PortLog().size(), 2u);
}

TEST_F(FanSpeedSearch, LeavesTheCodeOfList9WhenNoOtherListHasTheName) {
  board.Ports(0x300, {0xFF});
  Sensor("fan", 1).Commands({Long(0x300), Long(0x300), Long(0x300), Long(0x300)});
  Sensor("fan", 2, "other").Commands({Long(0x300), Long(0x300)});
  StartSensors();
  FanSpeed();
  ExpectFailed(0x501);
}

// ---- current ----

TEST_F(Current12, IsInTenths) {
  board.Ports(0x300, {25, 3});
  Sensor("current", 1, "a").Commands({Short(0x300)});
  Sensor("current", 1, "b").Commands({Short(0x301)});
  StartSensors();
  EXPECT_EQ(Current("a"), 2.5f);
  ExpectDone();
  EXPECT_EQ(Current("b"), 0.3f);
}

TEST_F(Current12, IsWorkedOutInDouble) {
  // 9 * 0.1 in double, stored as float, is the float next to 0.9; in float it would be the one above.
  board.Ports(0x300, {9});
  Sensor("current", 1).Commands({Short(0x300)});
  StartSensors();
  EXPECT_EQ(Current(), 0.9f);
}

TEST_F(Current12, FailsOnARawValueOf0) {
  board.Ports(0x300, {0});
  Sensor("current", 1).Commands({Short(0x300)});
  StartSensors();
  EXPECT_EQ(Current(), 0.0f);
  ExpectFailed(0x1A04);
}

TEST_F(Current12, GoesOnWithTheNextRecordOfTheNameAfterA0) {
  board.Ports(0x300, {0, 25});
  Sensor("current", 1).Commands({Short(0x300)});
  Sensor("current", 1).Commands({Short(0x301)});
  StartSensors();
  EXPECT_EQ(Current(), 2.5f);
  ExpectDone();
}
