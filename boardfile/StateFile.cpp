// SPDX-License-Identifier: MIT
// The state is TOML: tables of bytes that differ from those of a fresh board, by their numbers.
#include "boardfile/StateFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

#include "boardfile/BoardFile.h"
#include "boardfile/TomlSection.h"

namespace boardfile {

namespace {

using sim::Board;
using sim::Cells;

constexpr uint64_t kLargest = INT64_MAX;  // of TOML
constexpr size_t kTextLimit = 64;

struct Place {
  const char* name;
  Cells::Bytes Cells::*bytes;
};
constexpr Place kPlaces[] = {
    {"ports", &Cells::ports}, {"memory", &Cells::memory}, {"pci", &Cells::pci}, {"registers", &Cells::registers}};

struct State {
  std::string board;   ///< fingerprint of its file
  uint64_t saved = 0;  ///< microseconds of the time of day
  uint64_t clock = 0;  ///< microseconds of the board's
  Cells cells;
  std::map<std::string, uint64_t> remembered;
};

uint64_t TimeOfDay() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

std::string ReadAll(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Tells board files apart: FNV-1a of their text.
std::string Fingerprint(std::string_view text) {
  uint64_t sum = 0xCBF29CE484222325;
  for (const char c : text) sum = (sum ^ static_cast<uint8_t>(c)) * 0x100000001B3;
  return fmt::format("{:016x}", sum);
}

// ---- text ----

void ReadBytes(TomlSection* root, const char* name, Cells::Bytes* bytes) {
  auto table = root->Sub(name);
  if (!table) return;
  for (const std::string& key : table->Keys()) {
    const auto number = ParseNumber(key);
    if (!number) throw BoardFileError(table->WhereOf(key), "\"" + key + "\" is not a number");
    (*bytes)[*number] = static_cast<uint8_t>(table->Need(key, UINT8_MAX));
  }
}

State ReadState(TomlSection* root) {
  State state;
  state.board = root->NeedText("board", kTextLimit);
  state.saved = root->Need("saved", kLargest);
  state.clock = root->Need("clock", kLargest);
  for (const Place& place : kPlaces) ReadBytes(root, place.name, &(state.cells.*place.bytes));
  if (auto chips = root->Sub("chips"))
    for (const std::string& key : chips->Keys()) state.remembered[key] = chips->Need(key, kLargest);
  root->Finish();
  return state;
}

/// @throws BoardFileError
State ParseState(const std::string& text, const std::string& path) {
  TomlSection root = TomlSection::Parse(text, path, "the state");
  State state;
  root.Try([&] { state = ReadState(&root); });
  for (const Complaint& complaint : root.Complaints()) throw BoardFileError(complaint);
  return state;
}

std::string TextOf(const State& state) {
  std::string text = fmt::format(
      "# What programs changed on a simulated board. Without this file they find a fresh one.\nboard = \"{}\"\n"
      "saved = {}\nclock = {}\n",
      state.board, state.saved, state.clock);
  for (const Place& place : kPlaces) {
    text += fmt::format("\n[{}]\n", place.name);
    for (const auto& [number, value] : state.cells.*place.bytes) text += fmt::format("0x{:X} = {}\n", number, value);
  }
  text += "\n[chips]\n";
  for (const auto& [name, value] : state.remembered) text += fmt::format("{} = {}\n", name, value);
  return text;
}

// ---- file ----

/// The state file, to which nobody else has access while this exists.
class Held {
 public:
  explicit Held(const std::string& path) : path_(path) {
    do {
      if (descriptor_ >= 0) close(descriptor_);
      descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
      if (descriptor_ < 0) throw std::runtime_error(std::strerror(errno));
      if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) throw std::runtime_error("another program uses it");
    } while (!IsNamed());
  }
  ~Held() { close(descriptor_); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  /// In one step: a program that is killed meanwhile leaves the former content.
  void Replace(const std::string& text) const {
    const std::string next = path_ + ".new";
    std::ofstream file(next, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file || std::rename(next.c_str(), path_.c_str()) != 0)
      fmt::print(stderr, "{}: cannot be written: {}\n", path_, std::strerror(errno));
  }

 private:
  /// Whether the open file still has the name: who had it before may have replaced it.
  bool IsNamed() const {
    struct stat opened {
    }, named{};
    return fstat(descriptor_, &opened) == 0 && stat(path_.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
           opened.st_dev == named.st_dev;
  }

  const std::string path_;
  int descriptor_ = -1;
};

// ---- boards ----

/// The board goes on where it was, and has slept since.
void GoOn(const State& state, Board* board) {
  board->Sleep(state.clock);
  board->Restore(state.cells);
  for (const auto& [name, value] : state.remembered) board->remembered[name] = value;
  const uint64_t now = TimeOfDay();
  board->Sleep(now > state.saved ? now - state.saved : 0);
}

State StateOf(const Board& board, const Cells& fresh, const std::string& fingerprint) {
  State state{.board = fingerprint,
              .saved = TimeOfDay(),
              .clock = board.Microseconds(),
              .cells = board.State(),
              .remembered = board.remembered};
  for (const Place& place : kPlaces)
    std::erase_if(state.cells.*place.bytes, [&](const auto& cell) {
      const auto before = (fresh.*place.bytes).find(cell.first);
      return before != (fresh.*place.bytes).end() && before->second == cell.second;
    });
  return state;
}

void Keep(const std::string& path, const std::string& boardPath, Board* board) {
  const auto file = std::make_shared<Held>(path);
  const std::string text = ReadAll(path), fingerprint = Fingerprint(ReadAll(boardPath));
  const Cells fresh = board->State();
  if (!text.empty()) {
    const State state = ParseState(text, path);
    if (state.board != fingerprint) throw std::runtime_error("the state of another board than " + boardPath);
    GoOn(state, board);
  }
  board->realTime = true;
  board->atEnd = [=](const Board& ended) { file->Replace(TextOf(StateOf(ended, fresh, fingerprint))); };
}

}  // namespace

std::string KeepState(const std::string& path, const std::string& boardPath, Board* board) {
  try {
    Keep(path, boardPath, board);
    return "";
  } catch (const BoardFileError& error) {
    return LineOf(error.complaint, path);
  } catch (const std::runtime_error& error) {
    return path + ": " + error.what();
  }
}

}  // namespace boardfile
