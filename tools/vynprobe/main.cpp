// SPDX-License-Identifier: MIT
// Runs one script or one SMBus transaction and prints every access it made.
#include <algorithm>
#include <cstdio>

#include "AccessLog.h"
#include "commandline/Command.h"
#include "commandline/Streams.h"
#include "hw/TReadWrite.h"
#include "script/TInterpreter.h"
#include "smbus/TSMBus.h"

namespace {

constexpr char kTool[] = "vynprobe";
constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kMostBytes = 256;
constexpr char kScript[] = "script";
constexpr char kDetect[] = "detect";

struct Request {
  std::string script;
  unsigned address = 0, command = 0;
  int count = 1;
  std::vector<unsigned> values;
  bool quiet = false, detection = false;
  std::string board;
};

/// Lines that repeat are printed once, with their number.
void PrintAccesses(const Request& request) {
  const std::vector<std::string> accesses = probe::TakeAccesses();
  if (request.quiet) return;
  for (auto line = accesses.begin(); line != accesses.end();) {
    const auto next = std::find_if(line, accesses.end(), [&](const std::string& other) { return other != *line; });
    const auto times = static_cast<long>(next - line);
    if (times > 1)
      std::printf("%s (%ld times)\n", line->c_str(), times);
    else
      std::puts(line->c_str());
    line = next;
  }
}

int Report(const Request& request, bool done) {
  PrintAccesses(request);
  std::puts(done ? "ok" : "failed");
  return done ? 0 : kFailed;
}

int RunScript(const Request& request) {
  TInterpreter interpreter;
  if (!request.detection) probe::TakeAccesses();
  unsigned int result = 0xFFFFFFFF;
  const bool done = interpreter.Interpret(request.script.c_str(), &result);
  PrintAccesses(request);
  std::printf("result 0x%08x\n", result);
  for (int i = 0; i < TInterpreter::kVariables; ++i)
    if (interpreter.Locals[i] != 0) std::printf("Local%X 0x%08x\n", static_cast<unsigned>(i), interpreter.Locals[i]);
  return Report(request, done);
}

/// Detects; the accesses of that are not shown unless asked for.
TSMBus& Bus(const Request& request) {
  TSMBus& bus = *TSMBus::GetInstance();
  if (request.detection)
    PrintAccesses(request);
  else
    probe::TakeAccesses();
  return bus;
}

int Detect(const Request& request) {
  const TSMBusCfg* config = Bus(request).GetSMBusConfig();
  std::printf("%s\n", config ? config->Name.c_str() : "no SMBus controller that a record describes");
  return config ? 0 : kFailed;
}

/// What a transaction is made of: the bytes to write, or room for the bytes read.
struct Bytes {
  unsigned char data[kMostBytes * 2] = {};
  explicit Bytes(const Request& request) {
    for (size_t i = 0; i < request.values.size() && i < sizeof data; ++i)
      data[i] = static_cast<unsigned char>(request.values[i]);
  }
};

struct Transaction {
  const char* name;
  const char* help;
  bool write;
  /// @return whether it succeeded; `*bytes` becomes the number of bytes read
  int (*run)(TSMBus& bus, const Request& request, unsigned char* data, int* bytes);
};

unsigned char Address(const Request& request) { return static_cast<unsigned char>(request.address); }
unsigned char Command(const Request& request) { return static_cast<unsigned char>(request.command); }
int Given(const Request& request) { return static_cast<int>(request.values.size()); }

constexpr Transaction kTransactions[] = {
    {"read-byte", "Read COUNT registers from COMMAND on", false,
     [](TSMBus& bus, const Request& r, unsigned char* data, int* bytes) {
       *bytes = r.count;
       return bus.ReadSmbusByte(Address(r), data, Command(r), r.count);
     }},
    {"write-byte", "Write one register per value, from COMMAND on", true,
     [](TSMBus& bus, const Request& r, unsigned char* data, int*) {
       return bus.WriteSmbusByte(Address(r), data, Command(r), Given(r));
     }},
    {"read-word", "Read COUNT words from COMMAND on", false,
     [](TSMBus& bus, const Request& r, unsigned char* data, int* bytes) {
       *bytes = 2 * r.count;
       return bus.ReadSmbusWord(Address(r), data, Command(r), r.count);
     }},
    {"write-word", "Write a word from each two values (low byte first), from COMMAND on", true,
     [](TSMBus& bus, const Request& r, unsigned char* data, int*) {
       return bus.WriteSmbusWord(Address(r), data, Command(r), Given(r) / 2);
     }},
    {"read-block", "Read the block at COMMAND", false,
     [](TSMBus& bus, const Request& r, unsigned char* data, int* bytes) {
       return bus.ReadSmbusBlock(Address(r), data, Command(r), bytes);
     }},
    {"write-block", "Write the values as a block at COMMAND", true,
     [](TSMBus& bus, const Request& r, unsigned char* data, int*) {
       return bus.WriteSmbusBlock(Address(r), data, Command(r), Given(r));
     }},
};

int Transfer(const Request& request, const Transaction& transaction) {
  TSMBus& bus = Bus(request);
  Bytes bytes(request);
  int read = 0;
  const int done = transaction.run(bus, request, bytes.data, &read);
  PrintAccesses(request);
  if (done != 0 && read > 0) {
    std::printf("data");
    for (int i = 0; i < read; ++i) std::printf(" %02x", bytes.data[i]);
    std::printf("\n");
  }
  return Report(request, done != 0);
}

std::vector<commandline::Argument> Arguments(const Transaction& transaction, Request& request) {
  constexpr commandline::Range kByte{0, 255};
  std::vector<commandline::Argument> arguments = {{.name = "address",
                                                   .target = &request.address,
                                                   .help = "Slave address byte, such as 0xA0",
                                                   .required = true,
                                                   .range = kByte},
                                                  {.name = "command",
                                                   .target = &request.command,
                                                   .help = "Command (register) number",
                                                   .required = true,
                                                   .range = kByte}};
  if (transaction.write) {
    arguments.push_back({.name = "values",
                         .target = &request.values,
                         .help = "Bytes",
                         .required = true,
                         .range = kByte,
                         .least = 1,
                         .most = kMostBytes});
  } else {
    arguments.push_back({.name = "--count", .target = &request.count, .help = "How many", .range = {1, kMostBytes}});
  }
  return arguments;
}

commandline::Program Describe(Request& request, std::string& chosen) {
  commandline::Command root{
      .name = kTool,
      .summary = "Runs one script or one SMBus transaction and prints every access it made",
      .arguments =
          {{.name = "-q,--quiet", .target = &request.quiet, .help = "Print the outcome alone"},
           {.name = "--all", .target = &request.detection, .help = "Print the accesses of the detection too"},
           {.name = "--board", .target = &request.board, .help = "Board file (simulated machine)", .file = "TEXT"}},
      .commands = {{.name = kScript,
                    .summary = "Run a script text",
                    .arguments = {{.name = "text", .target = &request.script, .required = true}}},
                   {.name = kDetect, .summary = "Name the record of the SMBus controller"}},
      .chosen = &chosen};
  for (const Transaction& transaction : kTransactions)
    root.commands.push_back(
        {.name = transaction.name, .summary = transaction.help, .arguments = Arguments(transaction, request)});
  return {.command = root, .version = "", .everywhere = true};
}

int Run(const Request& request, const std::string& chosen) {
  if (chosen == kScript) return RunScript(request);
  if (chosen == kDetect) return Detect(request);
  const auto named = [&](const Transaction& transaction) { return transaction.name == chosen; };
  return Transfer(request, *std::find_if(std::begin(kTransactions), std::end(kTransactions), named));
}

int Main(int argc, char** argv) {
  Request request;
  std::string chosen;
  const commandline::Outcome read = commandline::Parse(Describe(request, chosen), argc, argv);
  if (read.kind == commandline::Outcome::kAnswer) return commandline::Print(kTool, read.text) ? 0 : kFailed;
  std::string mistake = read.text;
  if (mistake.empty() && !probe::UseBoard(request.board) && !request.board.empty())
    mistake = "vynprobe: --board is for vynprobe-sim\n";
  if (mistake.empty()) return Run(request, chosen);
  commandline::Say(mistake);
  return kUsage;
}

}  // namespace

int main(int argc, char** argv) {
  commandline::HoldStandardDescriptors();
  const int status = Main(argc, argv);
  return commandline::Flush(kTool) ? status : kFailed;
}
