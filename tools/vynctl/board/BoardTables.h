/// The firmware's function description table (IADT) of the board at hand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vynctl {

/// Of this machine as the kernel shows it, of a simulated board as its description says. Reads on the first question.
class BoardTables {
 public:
  /// @param board  the description of the simulated board; empty: this machine
  /// @param kernelTables  the folder where the kernel shows the machine's tables
  explicit BoardTables(std::string board, std::string kernelTables = "/sys/firmware/acpi/tables");

  /// The table's bytes with its header; empty when the board has none or it cannot be read.
  const std::vector<uint8_t>& Iadt();
  /// What is wrong with the description of a simulated board, "FILE:LINE: ..."; empty when nothing is.
  std::string Trouble() const;
  /// Whether a simulated board has the device file of the processor's registers.
  bool HasMsrDevice() const;
  /// The bytes of the board information table (IAMT), likewise.
  std::vector<uint8_t> Iamt() const;

 private:
  std::vector<uint8_t> ReadIadt() const;

  std::string board_;
  std::string kernelTables_;
  bool read_ = false;
  std::vector<uint8_t> iadt_;
};

}  // namespace vynctl
