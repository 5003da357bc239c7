// Runs one script or one SMBus transaction and prints every access it made.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "AccessLog.h"
#include "hw/TReadWrite.h"
#include "script/TInterpreter.h"
#include "smbus/TSMBus.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kMostBytes = 256;

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

void AddTransactions(CLI::App& app, Request& request, std::function<int()>& chosen) {
  for (const Transaction& transaction : kTransactions) {
    CLI::App* sub = app.add_subcommand(transaction.name, transaction.help);
    sub->add_option("address", request.address, "Slave address byte, such as 0xA0")
        ->required()
        ->check(CLI::Range(0, 255));
    sub->add_option("command", request.command, "Command (register) number")->required()->check(CLI::Range(0, 255));
    if (transaction.write)
      sub->add_option("values", request.values, "Bytes")
          ->required()
          ->expected(1, kMostBytes)
          ->check(CLI::Range(0, 255));
    else
      sub->add_option("--count", request.count, "How many")->check(CLI::Range(1, kMostBytes));
    sub->callback([&request, &transaction, &chosen] {
      chosen = [&request, &transaction] { return Transfer(request, transaction); };
    });
  }
}

}  // namespace

int main(int argc, char** argv) {
  Request request;
  std::function<int()> chosen;
  CLI::App app("Runs one script or one SMBus transaction and prints every access it made");
  app.require_subcommand(1);
  app.fallthrough();
  app.add_flag("-q,--quiet", request.quiet, "Print the outcome alone");
  app.add_flag("--all", request.detection, "Print the accesses of the detection too");
  app.add_option("--board", request.board, "Board file (simulated machine)")->check(CLI::ExistingFile);
  CLI::App* script = app.add_subcommand("script", "Run a script text");
  script->add_option("text", request.script)->required();
  script->callback([&] { chosen = [&] { return RunScript(request); }; });
  CLI::App* detect = app.add_subcommand("detect", "Name the record of the SMBus controller");
  detect->callback([&] { chosen = [&] { return Detect(request); }; });
  AddTransactions(app, request, chosen);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  if (!probe::UseBoard(request.board) && !request.board.empty()) {
    std::fputs("--board is for vynprobe-sim\n", stderr);
    return kUsage;
  }
  return chosen();
}
