// SPDX-License-Identifier: MIT
// Exported functions in any order with any arguments, over arbitrary tables. Every output buffer is a heap block of
// exactly the documented size, so that one byte too many is caught.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "api/Library.h"
#include "api/TVyn.h"
#include "fuzz/Bounded.h"
#include "fuzz/FuzzMachine.h"
#include "layout/LittleEndian.h"
#include "vynlib/vynlib.h"

using namespace layout;

namespace {

constexpr uint32_t kBiosRecord = 0xE0040;
constexpr uint32_t kRsdt = 0xE0100;
constexpr uint32_t kIamt = 0xE0200;
constexpr uint32_t kIadt = 0xE0400;

/// What a call takes from the input, as exact heap blocks that live as long as the call.
class Arguments {
 public:
  explicit Arguments(fuzz::Input& input) : input_(input) {}

  uint8_t Byte() { return input_.Byte(); }
  /// One object, or null now and then.
  template <typename T>
  T* Output() {
    return input_.Byte() % 16 == 0 ? nullptr : reinterpret_cast<T*>(Block(sizeof(T)));
  }
  char* Text() {
    const auto bytes = input_.Bytes(input_.Byte() % 32);
    char* text = reinterpret_cast<char*>(Block(bytes.size() + 1));
    std::copy(bytes.begin(), bytes.end(), text);
    return text;
  }
  uint8_t* Block(size_t size) { return blocks_.emplace_back(new uint8_t[size]()).get(); }
  /// `count` name buffers, some of which may be missing.
  char** Names(uint8_t count) {
    auto** names = reinterpret_cast<char**>(Block(count * sizeof(char*)));
    const bool complete = input_.Flag();
    for (int i = 0; i < count; ++i)
      names[i] = complete || input_.Flag() ? reinterpret_cast<char*>(Block(VYNLIB_NAME_BYTES)) : nullptr;
    return names;
  }

 private:
  fuzz::Input& input_;
  std::vector<std::unique_ptr<uint8_t[]>> blocks_;
};

using Call = void (*)(Arguments& with);

template <int (*function)(uint8_t*, uint8_t)>
void Read(Arguments& with) {
  uint8_t* result = with.Output<uint8_t>();
  function(result, with.Byte());
}

template <int (*function)(uint8_t, uint8_t*, uint8_t)>
void IndexedRead(Arguments& with) {
  const uint8_t index = with.Byte();
  uint8_t* result = with.Output<uint8_t>();
  function(index, result, with.Byte());
}

template <int (*function)(uint8_t, uint8_t)>
void Write(Arguments& with) {
  const uint8_t value = with.Byte();
  function(value, with.Byte());
}

template <int (*function)(uint8_t, uint8_t, uint8_t)>
void IndexedWrite(Arguments& with) {
  const uint8_t index = with.Byte();
  const uint8_t value = with.Byte();
  function(index, value, with.Byte());
}

template <typename T, int (*function)(const char*, T*, uint8_t)>
void Sensor(Arguments& with) {
  const char* name = with.Text();
  T* result = with.Output<T>();
  function(name, result, with.Byte());
}

template <int (*function)(char**, uint8_t*, uint8_t)>
void NamesOf(Arguments& with) {
  uint8_t count = 0;
  function(nullptr, &count, 1);
  if (with.Byte() % 4 == 0) count = with.Byte();
  function(with.Names(count), &count, with.Byte());
}

void GetFanConfig(Arguments& with) {
  const char* name = with.Text();
  uint8_t* block = with.Block(1);
  block[0] = with.Byte();
  uint8_t count = 255;
  VynLibGetFANConfig(name, block, &count, 1);
  count = with.Byte();
  if (count == 255) return;
  uint8_t* exact = with.Block(std::max<size_t>(count, 1));
  exact[0] = block[0];
  VynLibGetFANConfig(name, exact, &count, with.Byte());
}

void SetFanConfig(Arguments& with) {
  const char* name = with.Text();
  const uint8_t count = with.Byte();
  uint8_t* block = with.Block(std::max<size_t>(count, 1));
  block[0] = with.Byte();
  VynLibSetFANConfig(name, block, count, with.Byte());
}

/// A start without a tear-down drops the board-information object by contract; here it is freed.
void Init() {
  const std::unique_ptr<TVyn> dropped(api::vyn);
  api::vyn = nullptr;
  VynLibDllInit();
}

constexpr Call kCalls[] = {
    [](Arguments&) { Init(); },
    [](Arguments&) { VynLibDllUnInit(); },
    [](Arguments&) { VynLibDllGetLastError(); },
    IndexedRead<VynLibGetComType>,
    IndexedWrite<VynLibSetComType>,
    Read<VynLibGetLVDSState>,
    Write<VynLibSetLVDSState>,
    Write<VynLibBacklightCtrl>,
    Read<VynLibGetMFGState>,
    [](Arguments& with) {
      auto* result = with.Output<uint16_t>();
      VynLibMBVersionState(result, with.Byte());
    },
    IndexedRead<VynLibGetDigitalIOState>,
    IndexedWrite<VynLibSetDigitalIOState>,
    IndexedRead<VynLibGetUserLEDColor>,
    IndexedWrite<VynLibSetUserLEDColor>,
    Read<VynLibGetJGPIOPowerState>,
    Write<VynLibSetJGPIOPowerState>,
    Sensor<float, VynLibGetVoltage>,
    Sensor<float, VynLibGetTemperature>,
    Sensor<uint16_t, VynLibGetFanSpeed>,
    Sensor<float, VynLibGetCurrent>,
    NamesOf<VynLibGetVoltageNames>,
    NamesOf<VynLibGetTemperatureNames>,
    NamesOf<VynLibGetFanSpeedNames>,
    NamesOf<VynLibGetCurrentNames>,
    NamesOf<VynLibGetFanConfigNames>,
    IndexedWrite<VynLibWDTEnable>,
    [](Arguments& with) { VynLibWDTDisable(with.Byte()); },
    Write<VynLibWDTSetInterval>,
    [](Arguments& with) {
      auto* result = with.Output<uint32_t>();
      VynLibWDTGetInterval(result, with.Byte());
    },
    Write<VynLibWDTSetCountMode>,
    Read<VynLibWDTGetCountMode>,
    [](Arguments& with) {
      const char* name = with.Text();
      VynLibGetFANModeSupport(name, with.Output<uint8_t>());
    },
    GetFanConfig,
    SetFanConfig,
    [](Arguments& with) {
      try {
        VynLibTableSupported(with.Byte());
      } catch (const std::logic_error&) {
      }
    },
    [](Arguments& with) {
      const uint8_t kind = with.Byte();
      const char* name = with.Text();
      VynLibGetWhichIOToBeUse(kind, name, with.Output<uint8_t>());
    },
};

/// A root pointer and an RSDT that lists both vendor tables, with the input as their records.
std::vector<uint8_t> Image(std::span<const uint8_t> iamt, std::span<const uint8_t> iadt) {
  std::vector<uint8_t> image(kIadt - fuzz::kBiosArea + 36 + iadt.size());
  const auto at = [&](uint64_t address) { return image.data() + (address - fuzz::kBiosArea); };
  const auto header = [&](uint64_t address, const char* signature, size_t length) {
    std::memcpy(at(address), signature, 4);
    Store32(at(address) + 4, static_cast<uint32_t>(length));
  };
  Store32(at(fuzz::kBiosArea) + 16, kRsdt);
  fuzz::SealRootPointer(at(fuzz::kBiosArea));
  std::memcpy(at(kBiosRecord), "$CN1368$\x55", 9);  // the ninth byte makes them sum to 0
  header(kRsdt, "RSDT", 44);
  Store32(at(kRsdt) + 36, kIamt);
  Store32(at(kRsdt) + 40, kIadt);
  header(kIamt, "IAMT", 36 + iamt.size());
  std::copy(iamt.begin(), iamt.end(), at(kIamt) + 36);
  header(kIadt, "IADT", 36 + iadt.size());
  std::copy(iadt.begin(), iadt.end(), at(kIadt) + 36);
  return image;
}

void CallAll(fuzz::Input& input) {
  Init();
  while (!input.Empty()) {
    if (api::IADTable != nullptr) fuzz::FitForms(*api::IADTable);
    Arguments with(input);
    kCalls[input.Byte() % std::size(kCalls)](with);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input({data, size});
  const auto answers = input.Bytes(input.Byte() % 64);
  const auto iamt = input.Bytes(input.Byte() % 128);
  const auto iadt = input.Bytes(input.Dword() % 4096);
  const std::vector<uint8_t> image = Image(iamt, iadt);

  fuzz::Start({.answers = answers, .memory = image, .hasController = true, .callsLeft = 60000});
  api::InitOk = 0;
  try {
    CallAll(input);
  } catch (const fuzz::Exhausted&) {
  }
  if (VynLibDllUnInit() == 0) delete std::exchange(api::vyn, nullptr);
  fuzz::Finish();
  return 0;
}
