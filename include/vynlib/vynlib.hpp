// SPDX-License-Identifier: MIT
/// VynLib for C++17: a board that starts and ends the library, with sensors, features, fans and the watchdog as
/// objects.
///
///     vynlib::Result<vynlib::Board> board = vynlib::Board::Open();
///     if (!board) return Complain(board.error().words);
///     for (const vynlib::Sensor& sensor : board->voltages())
///       if (vynlib::Result<double> volts = sensor.Read()) std::printf("%s %.2f V\n", sensor.name().c_str(), *volts);
///     vynlib::Result<void> set = board->feature("wifi").Set(1);
///
/// Results    Whatever calls the library has a name with a capital and returns a value or an Error. Nothing is thrown,
///            but by value(), which throws an Exception where there is no value.
/// Threads    A board and all that comes from it may be used by any thread: calls and their error codes take turns, in
///            the process and, by vynlib/lock.h, with other programs. Signals wait until a call is done.
/// Lifetime   One board at a time. What comes from a board answers with an Error when the board is gone.
///
/// Header only; link with vynlib or vynlib-sim.
#ifndef VYNLIB_VYNLIB_HPP
#define VYNLIB_VYNLIB_HPP

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vynlib/error_text.h"
#include "vynlib/result.hpp"
#include "vynlib/session.hpp"
#include "vynlib/vynlib.h"

namespace vynlib {
namespace detail {

/// A feature: its functions are those of one shape, null where the library has none.
struct FeatureRow {
  const char* name;
  unsigned family;
  int (*get)(std::uint8_t*, std::uint8_t) = nullptr;
  int (*set)(std::uint8_t, std::uint8_t) = nullptr;
  int (*getAt)(std::uint8_t, std::uint8_t*, std::uint8_t) = nullptr;
  int (*setAt)(std::uint8_t, std::uint8_t, std::uint8_t) = nullptr;
  int (*getWord)(std::uint16_t*, std::uint8_t) = nullptr;

  constexpr bool Readable() const { return get != nullptr || getAt != nullptr || getWord != nullptr; }
  constexpr bool Settable() const { return set != nullptr || setAt != nullptr; }
  constexpr bool Indexed() const { return getAt != nullptr; }
};

// clang-format off
inline constexpr FeatureRow kFeatures[] = {
  {"com-type", VYNLIB_FAMILY_COM_TYPE, nullptr, nullptr, VynLibGetComType, VynLibSetComType},
  {"com-power", VYNLIB_FAMILY_COM_POWER, nullptr, nullptr, VynLibGetCOMPowerState, VynLibSetCOMPowerState},
  {"lvds-state", VYNLIB_FAMILY_LVDS_STATE, VynLibGetLVDSState, VynLibSetLVDSState},
  {"lvds-type", VYNLIB_FAMILY_LVDS_TYPE, VynLibGetLVDSType, VynLibSetLVDSType},
  {"backlight", VYNLIB_FAMILY_BACKLIGHT, nullptr, VynLibBacklightCtrl},
  {"usb-power", VYNLIB_FAMILY_USB_POWER, VynLibGetUsbPwrState, VynLibSetUsbPwrState},
  {"bluetooth", VYNLIB_FAMILY_BLUETOOTH, VynLibGetBTState, VynLibSetBTState},
  {"wifi", VYNLIB_FAMILY_WIFI, VynLibGetWifiState, VynLibSetWifiState},
  {"digital-io", VYNLIB_FAMILY_DIGITAL_IO, nullptr, nullptr, VynLibGetDigitalIOState, VynLibSetDigitalIOState},
  {"dio-config", VYNLIB_FAMILY_DIO_CONFIG, nullptr, nullptr, VynLibGetDioConfig, VynLibSetDioConfig},
  {"dio-enable", VYNLIB_FAMILY_DIO_ENABLE, VynLibGetDioEnPin, VynLibSetDioEnPin},
  {"user-led", VYNLIB_FAMILY_USER_LED_STATE, VynLibGetUserLEDState, VynLibSetUserLEDState},
  {"user-led-color", VYNLIB_FAMILY_USER_LED_COLOR, nullptr, nullptr, VynLibGetUserLEDColor, VynLibSetUserLEDColor},
  {"debug-led-color", VYNLIB_FAMILY_DEBUG_LED_COLOR, nullptr, nullptr, VynLibGetDbgLedColor, VynLibSetDbgLedColor},
  {"jgpio-power", VYNLIB_FAMILY_JGPIO_POWER, VynLibGetJGPIOPowerState, VynLibSetJGPIOPowerState},
  {"tpm", VYNLIB_FAMILY_ONBOARD_TPM, VynLibGetOnboardTPMState, VynLibSetOnboardTPMState},
  {"otp", VYNLIB_FAMILY_OTP, VynLibGetOTPState, VynLibSetOTPState},
  {"me-descriptor", VYNLIB_FAMILY_ME_DESCRIPTOR, VynLibGetMEDescriptorState, VynLibSetMEDescriptorState},
  {"intel-power", VYNLIB_FAMILY_INTEL_POWER, VynLibGetIntelPwrSolutionState, VynLibSetIntelPwrSolutionState},
  {"at-mode", VYNLIB_FAMILY_AT_MODE, VynLibGetATModeState},
  {"mfg-state", VYNLIB_FAMILY_MFG_STATE, VynLibGetMFGState},
  {"pcie-bandwidth", VYNLIB_FAMILY_PCIE_BANDWIDTH, VynLibGetPcieBandwidthMode},
  {"tb-cio-plug", VYNLIB_FAMILY_TB_CIO_PLUG, VynLibDetectTbCIOPlug},
  {"tb-frc-power", VYNLIB_FAMILY_TB_FRC_POWER, VynLibGetTbFRCPowerState},
  {"board-version", VYNLIB_FAMILY_BOARD_VERSION, nullptr, nullptr, nullptr, nullptr, VynLibMBVersionState},
};
// clang-format on

}  // namespace detail

enum class Quantity { kVoltage, kTemperature, kFanSpeed, kCurrent };

class Sensor {
 public:
  Sensor(detail::SharedSession session, Quantity quantity, std::string name)
      : session_(std::move(session)), quantity_(quantity), name_(std::move(name)) {}

  const std::string& name() const { return name_; }
  Quantity quantity() const { return quantity_; }
  /// "V", "C", "rpm", "A" (the firmware's unit on some boards)
  const char* unit() const {
    constexpr const char* kUnits[] = {"V", "C", "rpm", "A"};
    return kUnits[static_cast<int>(quantity_)];
  }

  Result<double> Read() const {
    if (quantity_ == Quantity::kFanSpeed) return Read<std::uint16_t>(VynLibGetFanSpeed);
    constexpr Reader<float>* kReaders[] = {VynLibGetVoltage, VynLibGetTemperature, nullptr, VynLibGetCurrent};
    return Read<float>(kReaders[static_cast<int>(quantity_)]);
  }

 private:
  template <typename Value>
  using Reader = int(const char* name, Value* value, std::uint8_t selector);
  template <typename Value>
  Result<double> Read(Reader<Value>* reader) const {
    const Result<Value> reading = session_->Read<Value>(
        [&](Value* value) { return detail::CodeOf(reader, name_.c_str(), value, std::uint8_t{VYNLIB_PERFORM}); });
    if (!reading) return reading.error();
    return static_cast<double>(*reading);
  }

  detail::SharedSession session_;
  Quantity quantity_;
  std::string name_;
};

/// A state that the firmware describes. What its values mean is the firmware's business. A feature without instances
/// has the one of number 0.
class Feature {
 public:
  Feature(detail::SharedSession session, std::string name, const detail::FeatureRow* row)
      : session_(std::move(session)), name_(std::move(name)), row_(row) {}

  const std::string& name() const { return name_; }
  /// For people: "COM port type"; the name itself where the library knows no such feature.
  std::string title() const { return row_ != nullptr ? vynlib_error_family(row_->family) : name_; }
  bool readable() const { return row_ != nullptr && row_->Readable(); }
  bool settable() const { return row_ != nullptr && row_->Settable(); }
  bool indexed() const { return row_ != nullptr && row_->Indexed(); }

  /// One byte; of the board version two (docs of VynLibMBVersionState()).
  Result<unsigned> Get(std::uint8_t instance = 0) const {
    if (!readable()) return Impossible("read");
    return session_->Read<unsigned>([&](unsigned* value) { return CallGetter(instance, value, VYNLIB_PERFORM); });
  }
  Result<void> Set(std::uint8_t value, std::uint8_t instance = 0) const {
    if (!settable()) return Impossible("set");
    return session_->Perform([&] { return CallSetter(instance, value, VYNLIB_PERFORM); });
  }
  /// The numbers of the instances that the board has; found by asking for all 256.
  Result<std::vector<std::uint8_t>> Instances() const {
    if (!indexed()) return std::vector<std::uint8_t>{0};
    std::vector<std::uint8_t> instances;
    for (unsigned i = 0; i <= UINT8_MAX; ++i) {
      const Result<unsigned> state = Get(static_cast<std::uint8_t>(i));
      if (!state && VYNLIB_FAMILY(state.error().code) != row_->family) return state.error();
      if (!state && VYNLIB_SUB(state.error().code) == 0) return state.error();
      if (state || VYNLIB_SUB(state.error().code) != kNoSuchInstance) instances.push_back(static_cast<std::uint8_t>(i));
    }
    return instances;
  }
  /// Whether the board has it. Touches no hardware.
  bool Offered() const {
    if (row_ == nullptr) return false;
    unsigned ignored = 0;
    return static_cast<bool>(session_->Perform(
        [&] { return readable() ? CallGetter(0, &ignored, VYNLIB_QUERY) : CallSetter(0, 0, VYNLIB_QUERY); }));
  }

 private:
  static constexpr unsigned kNoSuchInstance = 0x04;

  Error Impossible(const char* what) const {
    if (row_ == nullptr) return {0, "no feature is called '" + name_ + "'"};
    return {0, name_ + " cannot be " + what};
  }
  std::uint64_t CallGetter(std::uint8_t instance, unsigned* value, std::uint8_t selector) const {
    std::uint8_t byte = 0;
    std::uint16_t word = 0;
    std::uint64_t code = VYNLIB_OK;
    if (row_->getWord != nullptr)
      code = detail::CodeOf(row_->getWord, &word, selector);
    else if (row_->getAt != nullptr)
      code = detail::CodeOf(row_->getAt, instance, &byte, selector);
    else
      code = detail::CodeOf(row_->get, &byte, selector);
    *value = row_->getWord != nullptr ? word : byte;
    return code;
  }
  std::uint64_t CallSetter(std::uint8_t instance, std::uint8_t value, std::uint8_t selector) const {
    if (row_->setAt != nullptr) return detail::CodeOf(row_->setAt, instance, value, selector);
    return detail::CodeOf(row_->set, value, selector);
  }

  detail::SharedSession session_;
  std::string name_;
  const detail::FeatureRow* row_;
};

/// What a fan is set to. The meaning of modes and parameters is the firmware's.
struct FanSetting {
  std::uint8_t mode;
  std::vector<std::uint8_t> parameters;
};

/// A fan that can be controlled.
class Fan {
 public:
  /// @param key  the name as the library has it, which may end with a space
  Fan(detail::SharedSession session, std::string key) : session_(std::move(session)), key_(std::move(key)) {}

  /// Without spaces at its ends.
  std::string name() const {
    const std::size_t first = key_.find_first_not_of(' '), last = key_.find_last_not_of(' ');
    return first == std::string::npos ? "" : key_.substr(first, last - first + 1);
  }

  /// The modes that it has. Touches no hardware.
  Result<std::vector<std::uint8_t>> Modes() const {
    constexpr std::uint8_t kModes = 3;
    const Result<std::uint8_t> mask = session_->Read<std::uint8_t>(
        [&](std::uint8_t* bits) { return detail::CodeOf(VynLibGetFANModeSupport, key_.c_str(), bits); });
    if (!mask) return mask.error();
    std::vector<std::uint8_t> modes;
    for (std::uint8_t mode = 0; mode < kModes; ++mode)
      if ((*mask >> mode) & 1) modes.push_back(mode);
    return modes;
  }
  Result<FanSetting> Read() const {
    using Block = std::pair<std::array<std::uint8_t, 256>, std::uint8_t>;
    const Result<Block> got = session_->Read<Block>([&](Block* block) {
      block->second = kAskForMode;
      const std::uint64_t code = ReadBlock(block->first.data(), &block->second);
      return code == VYNLIB_OK && block->second > 1 ? ReadBlock(block->first.data(), &block->second) : code;
    });
    if (!got) return got.error();
    const auto& [bytes, count] = *got;
    return FanSetting{bytes[0], {bytes.begin() + 1, bytes.begin() + std::max<std::uint8_t>(count, 1)}};
  }
  Result<void> Set(const FanSetting& setting) const {
    constexpr std::uint64_t kOtherCount = VYNLIB_FAMILY_FAN_CONFIG * 256 + 0x05;
    if (setting.parameters.size() >= kAskForMode) return detail::ErrorOf(kOtherCount);
    std::vector<std::uint8_t> block{setting.mode};
    block.insert(block.end(), setting.parameters.begin(), setting.parameters.end());
    const std::uint8_t* const bytes = block.data();
    return session_->Call(VynLibSetFANConfig, key_.c_str(), bytes, static_cast<std::uint8_t>(block.size()),
                          std::uint8_t{VYNLIB_PERFORM});
  }

 private:
  static constexpr std::uint8_t kAskForMode = 255;
  std::uint64_t ReadBlock(std::uint8_t* block, std::uint8_t* count) const {
    return detail::CodeOf(VynLibGetFANConfig, key_.c_str(), block, count, std::uint8_t{VYNLIB_PERFORM});
  }

  detail::SharedSession session_;
  std::string key_;
};

/// The unit of the interval (seconds on most boards, minutes in count mode 1) and the count modes are the firmware's.
class Watchdog {
 public:
  explicit Watchdog(detail::SharedSession session) : session_(std::move(session)) {}

  /// Whether the board has one. Touches no hardware.
  bool Offered() const {
    return static_cast<bool>(
        session_->Call(VynLibWDTEnable, std::uint8_t{0}, std::uint8_t{0}, std::uint8_t{VYNLIB_QUERY}));
  }
  /// An error too when it is active but does not count.
  Result<void> Start(std::uint8_t interval, std::uint8_t mode = 0) const {
    return session_->Perform([&] {
      VynLibWDTEnable(interval, mode, VYNLIB_PERFORM);
      return VynLibDllGetLastError();
    });
  }
  /// Writes the interval again.
  Result<void> Feed(std::uint8_t interval) const {
    return session_->Call(VynLibWDTSetInterval, interval, std::uint8_t{VYNLIB_PERFORM});
  }
  Result<void> Stop() const { return session_->Call(VynLibWDTDisable, std::uint8_t{VYNLIB_PERFORM}); }
  /// What is left of it, on boards that count down in the register.
  Result<std::uint32_t> Interval() const { return Read<std::uint32_t>(VynLibWDTGetInterval); }
  Result<std::uint8_t> Mode() const { return Read<std::uint8_t>(VynLibWDTGetCountMode); }

 private:
  template <typename Value>
  Result<Value> Read(int (*getter)(Value*, std::uint8_t)) const {
    return session_->Read<Value>(
        [&](Value* value) { return detail::CodeOf(getter, value, std::uint8_t{VYNLIB_PERFORM}); });
  }

  detail::SharedSession session_;
};

/// The board. The library runs for as long as this exists.
class Board {
 public:
  static Result<Board> Open(const Settings& settings = {}) {
    Board board(std::make_shared<detail::Session>(settings));
    if (const Result<void> started = board.session_->Start(); !started) return started.error();
    if (const Result<void> listed = board.List(); !listed) return listed.error();
    return board;
  }
  ~Board() { Close(); }
  Board(Board&& other) = default;
  Board& operator=(Board&& other) {
    if (this == &other) return *this;
    Close();
    session_ = std::move(other.session_);
    lists_ = std::move(other.lists_);
    return *this;
  }

  /// Ends the library. What came from this board answers with an error from now on.
  void Close() {
    if (session_) session_->End();
  }

  /// In firmware order.
  std::vector<Sensor> voltages() const { return Sensors(Quantity::kVoltage); }
  std::vector<Sensor> temperatures() const { return Sensors(Quantity::kTemperature); }
  std::vector<Sensor> fanSpeeds() const { return Sensors(Quantity::kFanSpeed); }
  std::vector<Sensor> currents() const { return Sensors(Quantity::kCurrent); }
  /// By name; one that the board does not have says so when it is read.
  Sensor voltage(std::string name) const { return {session_, Quantity::kVoltage, std::move(name)}; }
  Sensor temperature(std::string name) const { return {session_, Quantity::kTemperature, std::move(name)}; }
  Sensor fanSpeed(std::string name) const { return {session_, Quantity::kFanSpeed, std::move(name)}; }
  Sensor current(std::string name) const { return {session_, Quantity::kCurrent, std::move(name)}; }

  /// Those that the board offers.
  std::vector<Feature> features() const {
    std::vector<Feature> offered;
    for (const detail::FeatureRow* row : lists_.features) offered.emplace_back(session_, row->name, row);
    return offered;
  }
  /// By the name that vynctl has for it; one that the library or the board does not have says so when it is used.
  Feature feature(std::string_view name) const {
    const detail::FeatureRow* found = nullptr;
    for (const detail::FeatureRow& row : detail::kFeatures)
      if (name == row.name) found = &row;
    return {session_, std::string(name), found};
  }

  /// Those that can be controlled.
  std::vector<Fan> fans() const {
    std::vector<Fan> all;
    for (const std::string& key : lists_.fans) all.emplace_back(session_, key);
    return all;
  }
  /// By name; one that the board does not have says so when it is used.
  Fan fan(const std::string& name) const {
    for (Fan& known : fans())
      if (known.name() == name) return std::move(known);
    return {session_, name};
  }

  Watchdog watchdog() const { return Watchdog(session_); }

  /// Whether the firmware has both tables; without, the board offers nothing.
  bool tablesFound() const { return lists_.tablesFound; }

 private:
  /// What the board has: fixed from the start of the library.
  struct Lists {
    std::array<std::vector<std::string>, 4> sensors;
    std::vector<std::string> fans;
    std::vector<const detail::FeatureRow*> features;
    bool tablesFound = false;
  };

  /// The one function that throws, where a table is missing.
  static bool AsksForTables() {
    try {
      return VynLibTableSupported(VYNLIB_PERFORM) != 0;
    } catch (const std::logic_error&) {
      return false;
    }
  }

  explicit Board(detail::SharedSession session) : session_(std::move(session)) {}

  Result<void> List() {
    const Result<void> asked = session_->Perform([this] {
      lists_.tablesFound = AsksForTables();
      return VYNLIB_OK;
    });
    if (!asked) return asked;
    constexpr detail::NamesFunction* kNames[] = {VynLibGetVoltageNames, VynLibGetTemperatureNames,
                                                 VynLibGetFanSpeedNames, VynLibGetCurrentNames};
    for (std::size_t i = 0; i < lists_.sensors.size(); ++i) {
      Result<std::vector<std::string>> names = detail::Names(*session_, kNames[i]);
      if (!names) return names.error();
      lists_.sensors[i] = *std::move(names);
    }
    Result<std::vector<std::string>> names = detail::Names(*session_, VynLibGetFanConfigNames);
    if (!names) return names.error();
    // Entries that only identify the controller's chip contain "Id" and have no modes.
    for (const std::string& name : *names)
      if (name.find("Id") == std::string::npos || Fan(session_, name).Modes()) lists_.fans.push_back(name);
    for (const detail::FeatureRow& row : detail::kFeatures)
      if (Feature(session_, row.name, &row).Offered()) lists_.features.push_back(&row);
    return {};
  }
  std::vector<Sensor> Sensors(Quantity quantity) const {
    std::vector<Sensor> sensors;
    for (const std::string& name : lists_.sensors[static_cast<std::size_t>(quantity)])
      sensors.emplace_back(session_, quantity, name);
    return sensors;
  }

  detail::SharedSession session_;
  Lists lists_;
};

}  // namespace vynlib

#endif
