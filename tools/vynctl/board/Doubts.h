/// Readings that may not be what they look like: where a register device is missing or a transfer fails, the library
/// computes with 0 and reports success.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Library.h"
#include "Value.h"

namespace vynctl {

class Doubts {
 public:
  /// What casts doubt on a reading is told by the bytes of the function description table; without them nothing does.
  /// @param msrOpens  whether processor registers can be read; asked after the reading, which loads their driver
  Doubts(const std::vector<uint8_t>& iadt, std::function<bool()> msrOpens);
  /// Of the board at hand.
  static Doubts About(const LoadOptions& options);

  /// Makes good readings doubtful: those from processor registers that cannot be read, and exact zeros from processor
  /// registers or the SMBus.
  void Mark(std::vector<Value>& sensors) const;
  /// Whether any sensor's reading could be doubtful.
  bool Any() const { return !sources_.empty(); }

 private:
  struct Source {
    bool msr = false;
    bool smbus = false;
  };
  std::string Reason(const Source& source, const Value& value) const;

  std::map<std::string, Source> sources_;  ///< by quantity and name
  std::function<bool()> msrOpens_;
};

}  // namespace vynctl
