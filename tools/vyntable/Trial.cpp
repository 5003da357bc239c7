// SPDX-License-Identifier: MIT
// One list of tries, made from the table; each calls the library as an application would.
#include "vyntable/Trial.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include <fmt/core.h>

#include "boardfile/BoardFile.h"
#include "boardfile/EndlessLoop.h"
#include "diagnosis/CommandFacts.h"
#include "diagnosis/Words.h"
#include "layout/FanName.h"
#include "layout/Walk.h"
#include "sim/Board.h"
#include "vynlib/vynlib.h"
#include "vyntable/Files.h"

namespace vyntable {

using namespace diagnosis;

using namespace layout;
namespace {

constexpr uint8_t kPerform = 2;
constexpr uint8_t kWatchdogKind = 25, kFanKind = 26;
constexpr uint8_t kInterval = 60, kOtherInterval = 30;
constexpr uint8_t kWatchdogType = Feature("Watchdog").type, kFanConfigType = Feature("FanConfig").type,
                  kBoardVersionType = Feature("MBVersionState").type;

/// The functions of a feature, of one of the two shapes; null where it has none.
struct FeatureFunctions {
  uint8_t type;
  int (*get)(uint8_t*, uint8_t) = nullptr;
  int (*set)(uint8_t, uint8_t) = nullptr;
  int (*getOf)(uint8_t, uint8_t*, uint8_t) = nullptr;
  int (*setOf)(uint8_t, uint8_t, uint8_t) = nullptr;

  bool Indexed() const { return getOf != nullptr; }
  bool Gets() const { return get != nullptr || getOf != nullptr; }
  bool Sets() const { return set != nullptr || setOf != nullptr; }
  bool Get(uint8_t index, uint8_t* value) const {
    return (Indexed() ? getOf(index, value, kPerform) : get(value, kPerform)) != 0;
  }
  bool Set(uint8_t index, uint8_t value) const {
    return (Indexed() ? setOf(index, value, kPerform) : set(value, kPerform)) != 0;
  }
};

constexpr FeatureFunctions Plain(std::string_view name, int (*get)(uint8_t*, uint8_t), int (*set)(uint8_t, uint8_t)) {
  return {.type = FindFeature(name)->type, .get = get, .set = set};
}
constexpr FeatureFunctions Indexed(std::string_view name, int (*get)(uint8_t, uint8_t*, uint8_t),
                                   int (*set)(uint8_t, uint8_t, uint8_t)) {
  return {.type = FindFeature(name)->type, .getOf = get, .setOf = set};
}

constexpr FeatureFunctions kFunctions[] = {
    Indexed("ComType", VynLibGetComType, VynLibSetComType),
    Plain("LVDSState", VynLibGetLVDSState, VynLibSetLVDSState),
    Plain("LVDSType", VynLibGetLVDSType, VynLibSetLVDSType),
    Plain("MFGState", VynLibGetMFGState, nullptr),
    Plain("OnboardTPMState", VynLibGetOnboardTPMState, VynLibSetOnboardTPMState),
    Plain("MEDescriptorState", VynLibGetMEDescriptorState, VynLibSetMEDescriptorState),
    Plain("PcieBandwidthMode", VynLibGetPcieBandwidthMode, nullptr),
    Plain("UsbPwrState", VynLibGetUsbPwrState, VynLibSetUsbPwrState),
    Plain("BTState", VynLibGetBTState, VynLibSetBTState),
    Plain("WifiState", VynLibGetWifiState, VynLibSetWifiState),
    Plain("OTPState", VynLibGetOTPState, VynLibSetOTPState),
    Plain("ATModeState", VynLibGetATModeState, nullptr),
    Plain("IntelPwrSolutionState", VynLibGetIntelPwrSolutionState, VynLibSetIntelPwrSolutionState),
    Plain("TbCIOPlug", VynLibDetectTbCIOPlug, nullptr),
    Plain("TbFRCPowerState", VynLibGetTbFRCPowerState, nullptr),
    Indexed("DigitalIOState", VynLibGetDigitalIOState, VynLibSetDigitalIOState),
    Plain("Backlight", nullptr, VynLibBacklightCtrl),
    Plain("UserLEDState", VynLibGetUserLEDState, VynLibSetUserLEDState),
    Plain("JGPIOPowerState", VynLibGetJGPIOPowerState, VynLibSetJGPIOPowerState),
    Indexed("COMPowerState", VynLibGetCOMPowerState, VynLibSetCOMPowerState),
    Indexed("DbgLedColor", VynLibGetDbgLedColor, VynLibSetDbgLedColor),
    Indexed("UserLEDColor", VynLibGetUserLEDColor, VynLibSetUserLEDColor),
    Indexed("DioConfig", VynLibGetDioConfig, VynLibSetDioConfig),
    Plain("DioEnPin", VynLibGetDioEnPin, VynLibSetDioEnPin),
};

/// The functions of a record type; null where it has others or none.
const FeatureFunctions* FunctionsOf(uint8_t type) {
  const auto* const row = std::ranges::find(kFunctions, type, &FeatureFunctions::type);
  return row != std::end(kFunctions) ? row : nullptr;
}

std::string Code() { return fmt::format("code {:#x}", VynLibDllGetLastError()); }

/// What went wrong; nothing when all is as it should be.
using Outcome = std::optional<std::string>;

struct Try {
  RecordView record;
  std::function<Outcome()> run;
};

bool Sets(const RecordView& record) {
  const CommandContext context = ContextOf(record);
  for (const CommandView& command : Commands(record))
    if (command.layout && CommandFacts{command, *command.layout, context}.Writes(kSetting)) return true;
  return false;
}

// --- features ---

Outcome ReadState(const FeatureFunctions& functions, uint8_t index) {
  uint8_t value = 0;
  return functions.Get(index, &value) ? Outcome() : "no state is read: " + Code();
}

Outcome SetState(const FeatureFunctions& functions, uint8_t index, uint8_t value) {
  if (!functions.Set(index, value)) return "it cannot be set: " + Code();
  if (!functions.Gets()) return {};
  uint8_t read = 0;
  if (!functions.Get(index, &read)) return "it was set, and no state is read back: " + Code();
  return read == value ? Outcome() : fmt::format("it was set, and value {} is read back", read);
}

/// Every instance is read; its states are set where any of them writes.
void AddFeatures(const std::vector<RecordView>& records, std::vector<Try>* tries) {
  std::set<std::pair<uint8_t, int>> instances, settable;
  std::set<std::tuple<uint8_t, int, uint8_t>> states;
  const auto instance = [](const FeatureFunctions& functions, const RecordView& record) {
    return std::pair(record.Type(), functions.Indexed() ? int{record.Index()} : -1);
  };
  for (const RecordView& record : records)
    if (const FeatureFunctions* functions = FunctionsOf(record.Type()); functions && functions->Sets() && Sets(record))
      settable.insert(instance(*functions, record));
  for (const RecordView& record : records) {
    const FeatureFunctions* const functions = FunctionsOf(record.Type());
    if (!functions) continue;
    const uint8_t index = record.Index(), value = record.Value();
    const auto own = instance(*functions, record);
    if (functions->Gets() && instances.insert(own).second)
      tries->push_back({record, [=] { return ReadState(*functions, index); }});
    if (settable.contains(own) && states.emplace(own.first, own.second, value).second)
      tries->push_back({record, [=] { return SetState(*functions, index, value); }});
  }
}

// --- sensors ---

template <typename T>
Outcome ReadSensor(int (*read)(const char*, T*, uint8_t), const std::string& name) {
  T value{};
  return read(name.c_str(), &value, kPerform) ? Outcome() : "it cannot be read: " + Code();
}

Outcome ReadSensorOf(std::string_view quantity, const std::string& name) {
  if (quantity == "voltage") return ReadSensor(VynLibGetVoltage, name);
  if (quantity == "temperature") return ReadSensor(VynLibGetTemperature, name);
  if (quantity == "fan") return ReadSensor(VynLibGetFanSpeed, name);
  return ReadSensor(VynLibGetCurrent, name);
}

void AddSensors(const std::vector<RecordView>& records, std::vector<Try>* tries) {
  std::set<std::pair<std::string_view, std::string>> names;
  for (const RecordView& record : records) {
    const RecordType* const type = record.Row();
    if (!type || !type->IsSensor()) continue;
    const std::string name = NameText(record);
    if (names.emplace(type->name, name).second)
      tries->push_back({record, [=] { return ReadSensorOf(type->name, name); }});
  }
}

// --- fans ---

/// The mode with parameters that differ from each other, and whether both come back.
Outcome SetMode(const std::string& fan, uint8_t mode, unsigned count) {
  std::vector<uint8_t> block(count, mode), read(count, mode);
  for (size_t i = 1; i < count; ++i) block[i] = static_cast<uint8_t>(20 + 10 * i);
  auto size = static_cast<uint8_t>(count);
  if (!VynLibSetFANConfig(fan.c_str(), block.data(), size, kPerform)) return "the mode cannot be set: " + Code();
  if (!VynLibGetFANConfig(fan.c_str(), read.data(), &size, kPerform))
    return "the mode was set, and none is read back: " + Code();
  if (read[0] != mode) return fmt::format("the mode was set, and mode {} is read back", read[0]);
  for (size_t i = 1; i < count; ++i)
    if (read[i] != block[i])
      return fmt::format("parameter {} was set to {}, and {} is read back", i, block[i], read[i]);
  return {};
}

Outcome Identify(uint8_t kind, const std::string& name) {
  uint8_t chip = 0;
  VynLibGetWhichIOToBeUse(kind, name.c_str(), &chip);
  return VynLibDllGetLastError() == 0 ? Outcome() : "its chip is not identified: " + Code();
}

void AddFans(const std::vector<RecordView>& records, std::vector<Try>* tries) {
  std::set<std::pair<std::string, uint8_t>> modes;
  for (const RecordView& record : records) {
    if (record.Type() != kFanConfigType) continue;
    const std::string name = NameText(record), fan = FanText(record);
    const uint8_t mode = record.Value();
    const unsigned count = ContextOf(record).arguments;
    if (mode == iadt::kIdValue)
      tries->push_back({record, [=] { return Identify(kFanKind, name); }});
    else if (!FanNameMatches(name, kFanIdWord) && modes.emplace(fan, mode).second)
      tries->push_back({record, [=] { return SetMode(fan, mode, count); }});
  }
}

// --- watchdog ---

Outcome Interval(uint8_t wanted) {
  uint32_t interval = 0;
  if (!VynLibWDTGetInterval(&interval, kPerform)) return "the interval cannot be read: " + Code();
  return interval == wanted ? Outcome()
                            : fmt::format("the interval was set to {}, and {} is read back", wanted, interval);
}

Outcome CountMode(uint8_t wanted) {
  if (!VynLibWDTSetCountMode(wanted, kPerform)) return "the count mode cannot be set: " + Code();
  uint8_t mode = 0;
  if (!VynLibWDTGetCountMode(&mode, kPerform)) return "the count mode cannot be read: " + Code();
  return mode == wanted ? Outcome() : fmt::format("count mode {} was set, and {} is read back", wanted, mode);
}

/// From enabling to disabling, with a new interval in between.
Outcome Life(const std::set<uint8_t>& operations) {
  const bool mode1 = operations.contains(kWatchdogCountMode1) && !operations.contains(kWatchdogCountMode0);
  if (!VynLibWDTEnable(kInterval, mode1 ? 1 : 0, kPerform)) return "it cannot be enabled: " + Code();
  if (VynLibDllGetLastError() != 0) return "it is enabled and does not count: " + Code();
  if (Outcome wrong = Interval(kInterval)) return wrong;
  if (!VynLibWDTSetInterval(kOtherInterval, kPerform)) return "the interval cannot be set: " + Code();
  if (Outcome wrong = Interval(kOtherInterval)) return wrong;
  return VynLibWDTDisable(kPerform) ? Outcome() : "it cannot be disabled: " + Code();
}

void AddWatchdog(const std::vector<RecordView>& records, std::vector<Try>* tries) {
  std::set<uint8_t> operations;
  const RecordView* first = nullptr;
  for (const RecordView& record : records) {
    if (record.Type() != kWatchdogType) continue;
    const std::string name = NameText(record);
    const uint8_t value = record.Value();
    if (value == iadt::kIdValue) {
      tries->push_back({record, [=] { return Identify(kWatchdogKind, name); }});
      continue;
    }
    if (first == nullptr) first = &record;
    const bool fresh = operations.insert(value).second;
    if (fresh && (value == kWatchdogCountMode0 || value == kWatchdogCountMode1))
      tries->push_back({record, [=] { return CountMode(value == kWatchdogCountMode1 ? 1 : 0); }});
  }
  if (first != nullptr) tries->push_back({*first, [=] { return Life(operations); }});
}

void AddVersion(const std::vector<RecordView>& records, std::vector<Try>* tries) {
  const auto version = std::ranges::find(records, kBoardVersionType, &RecordView::Type);
  if (version == records.end()) return;
  tries->push_back({*version, []() -> Outcome {
                      uint16_t read = 0;
                      return VynLibMBVersionState(&read, kPerform) ? Outcome() : "no version is read: " + Code();
                    }});
}

// --- the board ---

/// The library over a board, from initialisation to its end.
class Session {
 public:
  explicit Session(const std::string& file) : loaded_(boardfile::LoadBoard(file)) {
    if (!loaded_.board) throw BadInput(loaded_.error);
    if (const auto endless = boardfile::FindEndlessLoop(loaded_.firmware))
      throw BadInput(boardfile::LineOf(*endless, file));
    sim::Board::MakeCurrent(loaded_.board.get());
    if (!VynLibDllInit()) throw BadInput(file + ": the library does not start on this board: " + Code());
    loaded_.board->logging = true;
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() {
    VynLibDllUnInit();
    sim::Board::MakeCurrent(nullptr);
  }

  void Forget() { loaded_.board->Log().clear(); }
  std::vector<std::string> Accesses() const {
    std::vector<std::string> lines;
    for (const sim::Access& access : loaded_.board->Log())
      if (access.kind != sim::Access::kOpen && access.kind != sim::Access::kClose && access.kind != sim::Access::kUnmap)
        lines.push_back(sim::ToString(access));
    return lines;
  }

 private:
  boardfile::LoadedBoard loaded_;
};

}  // namespace

TrialResult TryBoard(const std::string& file, const Image& iadt, const Progress& progress) {
  std::vector<RecordView> records;
  for (RecordCursor cursor(Covered(iadt.bytes)); cursor.Valid(); cursor.Next()) records.push_back(cursor.Current());
  std::vector<Try> tries;
  for (const auto add : {AddFeatures, AddVersion, AddSensors, AddFans, AddWatchdog}) add(records, &tries);
  Session session(file);
  TrialResult result;
  for (const Try& each : tries) {
    progress(result.tried++, tries.size());
    session.Forget();
    if (const Outcome wrong = each.run())
      result.failures.push_back(
          {PlaceOf(iadt, each.record.offset), Title(each.record) + ": " + *wrong, session.Accesses()});
  }
  return result;
}

}  // namespace vyntable
