// SPDX-License-Identifier: MIT
// Runs cases of the model against the library: one JSON case per line in, one JSON outcome per line out.
//
// A case holds a machine, calls to make before starting the library, after starting and after stopping it, and access
// commands to run by themselves. The outcome holds what each call returned, stored, left as last error, printed, and
// did to the machine; of each command what it made of its arguments and of its own bytes besides.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "smbus/TSMBus.h"
#include "tables/TIAxTCommon.h"
#include "tests/support/CurrentBoard.h"
#include "vynlib/vynlib.h"

namespace {

using nlohmann::json;

// What results hold before a call.
constexpr uint8_t kUntouched8 = 0xA5;
constexpr uint16_t kUntouched16 = 0xA5A5;

using PlainRead = int (*)(uint8_t*, uint8_t);
using PlainWrite = int (*)(uint8_t, uint8_t);
using IndexedRead = int (*)(uint8_t, uint8_t*, uint8_t);
using IndexedWrite = int (*)(uint8_t, uint8_t, uint8_t);

const std::map<std::string, PlainRead> kPlainReads = {
    {"VynLibGetLVDSState", VynLibGetLVDSState},
    {"VynLibGetLVDSType", VynLibGetLVDSType},
    {"VynLibGetMFGState", VynLibGetMFGState},
    {"VynLibGetOnboardTPMState", VynLibGetOnboardTPMState},
    {"VynLibGetMEDescriptorState", VynLibGetMEDescriptorState},
    {"VynLibGetPcieBandwidthMode", VynLibGetPcieBandwidthMode},
    {"VynLibGetUsbPwrState", VynLibGetUsbPwrState},
    {"VynLibGetBTState", VynLibGetBTState},
    {"VynLibGetWifiState", VynLibGetWifiState},
    {"VynLibGetOTPState", VynLibGetOTPState},
    {"VynLibGetATModeState", VynLibGetATModeState},
    {"VynLibGetIntelPwrSolutionState", VynLibGetIntelPwrSolutionState},
    {"VynLibDetectTbCIOPlug", VynLibDetectTbCIOPlug},
    {"VynLibGetTbFRCPowerState", VynLibGetTbFRCPowerState},
    {"VynLibGetDioEnPin", VynLibGetDioEnPin},
    {"VynLibGetUserLEDState", VynLibGetUserLEDState},
    {"VynLibGetJGPIOPowerState", VynLibGetJGPIOPowerState},
};
const std::map<std::string, PlainWrite> kPlainWrites = {
    {"VynLibSetLVDSState", VynLibSetLVDSState},
    {"VynLibSetLVDSType", VynLibSetLVDSType},
    {"VynLibBacklightCtrl", VynLibBacklightCtrl},
    {"VynLibSetOnboardTPMState", VynLibSetOnboardTPMState},
    {"VynLibSetMEDescriptorState", VynLibSetMEDescriptorState},
    {"VynLibSetUsbPwrState", VynLibSetUsbPwrState},
    {"VynLibSetBTState", VynLibSetBTState},
    {"VynLibSetWifiState", VynLibSetWifiState},
    {"VynLibSetOTPState", VynLibSetOTPState},
    {"VynLibSetIntelPwrSolutionState", VynLibSetIntelPwrSolutionState},
    {"VynLibSetDioEnPin", VynLibSetDioEnPin},
    {"VynLibSetUserLEDState", VynLibSetUserLEDState},
    {"VynLibSetJGPIOPowerState", VynLibSetJGPIOPowerState},
};
const std::map<std::string, IndexedRead> kIndexedReads = {
    {"VynLibGetComType", VynLibGetComType},
    {"VynLibGetDigitalIOState", VynLibGetDigitalIOState},
    {"VynLibGetDioConfig", VynLibGetDioConfig},
    {"VynLibGetUserLEDColor", VynLibGetUserLEDColor},
    {"VynLibGetCOMPowerState", VynLibGetCOMPowerState},
    {"VynLibGetDbgLedColor", VynLibGetDbgLedColor},
};
const std::map<std::string, IndexedWrite> kIndexedWrites = {
    {"VynLibSetComType", VynLibSetComType},
    {"VynLibSetDigitalIOState", VynLibSetDigitalIOState},
    {"VynLibSetDioConfig", VynLibSetDioConfig},
    {"VynLibSetUserLEDColor", VynLibSetUserLEDColor},
    {"VynLibSetCOMPowerState", VynLibSetCOMPowerState},
    {"VynLibSetDbgLedColor", VynLibSetDbgLedColor},
};

constexpr const char* kAccessNames[] = {"iopl",  "in",       "out",   "open",    "close", "map",
                                        "unmap", "memwrite", "pread", "command", "sleep"};

/// Takes over standard output, so that what the library prints can be told from what the driver answers.
class Printed {
 public:
  Printed() : answers_(fdopen(dup(STDOUT_FILENO), "w")), file_(memfd_create("printed", 0)) {
    dup2(file_, STDOUT_FILENO);
  }
  /// What was printed since the last call.
  std::string Take() {
    std::fflush(stdout);
    std::string text(static_cast<size_t>(lseek(file_, 0, SEEK_CUR)), '\0');
    if (pread(file_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) std::abort();
    lseek(file_, 0, SEEK_SET);
    return text;
  }
  void Answer(const std::string& line) {
    std::fputs(line.c_str(), answers_);
    std::fputc('\n', answers_);
    std::fflush(answers_);
  }

 private:
  std::FILE* answers_;
  int file_;
};

std::vector<uint8_t> FromHex(const std::string& text) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 2)
    bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
  return bytes;
}

void AddPorts(const json& machine, sim::Board* board) {
  for (const json& port : machine["ports"]) board->SetPort(port[0], port[1]);
  for (const json& pair : machine["pairs"]) {
    const auto registers = board->IndexData(pair[0], pair[1]);
    const auto values = FromHex(pair[2]);
    std::copy(values.begin(), values.end(), registers->begin());
  }
}

void AddMachine(const json& machine, sim::Board* board) {
  board->privileged = machine["privileged"];
  board->memDevice = machine["memory_device"];
  board->msrDevice = machine["msr_device"];
  AddPorts(machine, board);
  for (const json& function : machine["pci"]) {
    sim::PciFunction& pci = board->Pci(function[0][0], function[0][1], function[0][2]);
    const auto config = FromHex(function[1]);
    std::copy(config.begin(), config.end(), pci.config.begin());
  }
  for (const json& piece : machine["memory"]) board->Memory(piece[0], FromHex(piece[1]));
  for (const json& msr : machine["msr"]) board->Msr(msr[0], msr[1]);
}

json LogOf(const std::vector<sim::Access>& log) {
  json entries = json::array();
  for (const sim::Access& access : log)
    entries.push_back({kAccessNames[access.kind], access.address, access.width, access.value, access.text});
  return entries;
}

/// Returns what the call returned and stored.
json Perform(const json& call) {
  const std::string name = call["name"];
  const uint8_t selector = call["selector"], index = call["index"], value = call["value"];
  uint8_t result = kUntouched8;
  if (const auto f = kPlainReads.find(name); f != kPlainReads.end()) {
    const int returned = f->second(&result, selector);
    return {returned, result};
  }
  if (const auto f = kIndexedReads.find(name); f != kIndexedReads.end()) {
    const int returned = f->second(index, &result, selector);
    return {returned, result};
  }
  if (const auto f = kPlainWrites.find(name); f != kPlainWrites.end()) return {f->second(value, selector), result};
  if (const auto f = kIndexedWrites.find(name); f != kIndexedWrites.end())
    return {f->second(index, value, selector), result};
  if (name != "VynLibMBVersionState") throw std::invalid_argument("no function " + name);
  uint16_t version = kUntouched16;
  const int returned = VynLibMBVersionState(&version, selector);
  return {returned, version};
}

json Outcomes(const json& calls, sim::Board* board, Printed* printed) {
  json outcomes = json::array();
  for (const json& call : calls) {
    board->Log().clear();
    json outcome = {{"returned", Perform(call)}, {"code", VynLibDllGetLastError()}};
    outcome["printed"] = printed->Take();
    outcome["log"] = LogOf(board->Log());
    outcomes.push_back(outcome);
  }
  return outcomes;
}

std::string ToHex(const std::vector<uint8_t>& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : bytes) text += {kDigits[byte >> 4], kDigits[byte & 15]};
  return text;
}

/// Runs access commands, each given as [bytes, direction, [arguments]].
json RunCommands(const json& commands, sim::Board* board, Printed* printed) {
  json outcomes = json::array();
  for (const json& command : commands) {
    board->Log().clear();
    auto bytes = FromHex(command[0]);
    std::vector<unsigned long long> args = command[2];
    unsigned char* cursor = bytes.data();
    const int returned =
        TIAxTCommon::GetInstance()->IAxTRW(&cursor, command[1], args.data(), static_cast<unsigned char>(args.size()));
    json outcome = {{"returned", returned}, {"slots", args}, {"bytes", ToHex(bytes)}, {"printed", printed->Take()}};
    outcome["log"] = LogOf(board->Log());
    outcomes.push_back(outcome);
  }
  return outcomes;
}

/// Keeps the detection of the first case: no case has a controller, and looking for one costs more than all the rest.
void KeepDetection() {
  if (TIAxTCommon::g_Instance) TIAxTCommon::g_Instance->SMBus = nullptr;
}

json Run(const json& request, Printed* printed) {
  support::CurrentBoard current;
  sim::Board& board = current.board;
  AddMachine(request["machine"], &board);
  json answer;
  answer["before"] = Outcomes(request["before"], &board, printed);
  board.logging = false;
  answer["init"] = {VynLibDllInit(), VynLibDllGetLastError()};
  board.logging = true;
  printed->Take();
  answer["calls"] = Outcomes(request["calls"], &board, printed);
  answer["commands"] = RunCommands(request["commands"], &board, printed);
  KeepDetection();
  board.logging = false;
  answer["uninit"] = {VynLibDllUnInit(), VynLibDllGetLastError()};
  board.logging = true;
  answer["after"] = Outcomes(request["after"], &board, printed);
  answer["open"] = board.OpenDescriptors();
  answer["mapped"] = board.LiveMappings();
  return answer;
}

}  // namespace

int main() {
  Printed printed;
  {
    support::CurrentBoard empty;
    empty.board.logging = false;
    TSMBus::GetInstance();
  }
  for (std::string line; std::getline(std::cin, line);) printed.Answer(Run(json::parse(line), &printed).dump());
  TSMBus::FreeInstance();
  return 0;
}
