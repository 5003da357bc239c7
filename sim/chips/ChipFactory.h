/// How a board comes by its chips: SMBus host controllers by model name with the slave devices behind them, and chips
/// that act on a set of registers (watchdog, fan, drifting reading).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace sim {

class Board;

/// 256 one-byte registers, shared by the device that gives access to them and the chips that act on them.
using Registers = std::shared_ptr<std::array<uint8_t, 256>>;
/// Numbers from a board file by name.
using Options = std::map<std::string, uint64_t, std::less<>>;

/// A device on the SMBus. `command` numbers its registers; the default keeps 256 one-byte registers, and a word is two
/// neighbours, the lower one first.
class SmbusSlave {
 public:
  virtual ~SmbusSlave() = default;
  virtual uint8_t ReadByte(Board&, uint8_t command) { return registers[command]; }
  virtual void WriteByte(Board&, uint8_t command, uint8_t value) { registers[command] = value; }

  std::array<uint8_t, 256> registers{};
};

/// What a controller model is given.
struct SmbusSetup {
  unsigned bus = 0, device = 0, function = 0;  ///< the controller's PCI function; made by the board file or the model
  uint16_t base = 0;                           ///< first I/O port
  /// By address byte as it goes over the wire, bit 0 clear (0xA0 for the first EEPROM).
  std::map<uint8_t, std::shared_ptr<SmbusSlave>> slaves;
  Options options;  ///< numbers that one model needs and others do not know

  uint64_t Option(std::string_view name, uint64_t otherwise) const {
    const auto found = options.find(name);
    return found == options.end() ? otherwise : found->second;
  }
};

struct SmbusModel {
  std::string_view name;  ///< as board files write it
  void (*attach)(Board& board, const SmbusSetup& setup);
  std::span<const std::string_view> options = {};  ///< names it understands in `SmbusSetup::options`
};

/// Every controller model there is (SmbusModels.cpp).
std::span<const SmbusModel> SmbusModels();
const SmbusModel* FindSmbusModel(std::string_view name);

/// A number that a register chip takes from the board file.
struct ChipOption {
  static constexpr uint64_t kRequired = ~uint64_t{0};
  std::string_view name;
  uint64_t max;
  uint64_t otherwise = kRequired;
};

/// A chip that acts on registers as time goes by. `options` holds every option that the model lists.
struct ChipModel {
  std::string_view name;
  std::span<const ChipOption> options;
  void (*attach)(Board& board, const Registers& registers, const Options& options);
};

/// "watchdog", "fan" and "drift" (RegisterChips.cpp).
std::span<const ChipModel> ChipModels();
const ChipModel* FindChipModel(std::string_view name);

}  // namespace sim
