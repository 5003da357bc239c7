// SPDX-License-Identifier: MIT
/// Another user of an SMBus host, as the kernel's driver is one.
#pragma once

#include "sim/chips/SmbusHost.h"

namespace sim {

/// Reads one byte of a device again and again until its time is over. Where the host has a semaphore it waits for that
/// by reading the status, keeps it from its first transfer to its last and gives it back; it begins nothing while the
/// host is busy, clears just the bits that its own transfers leave, and believes what they say. It acts at the ticks of
/// the board, and its accesses neither take time nor show in the log.
class SmbusUser {
 public:
  struct Plan {
    uint64_t from = 0;     ///< microseconds of the board
    uint64_t until = 0;    ///< no further transfer begins, and the semaphore goes back
    uint8_t address = 0;   ///< of the device
    uint8_t command = 0;   ///< its register
    uint8_t expected = 0;  ///< what that holds
    bool asks = true;      ///< false: drives the host without taking its semaphore
  };
  /// What its transfers came to.
  struct Tally {
    unsigned right = 0, wrong = 0;
    unsigned errors = 0;  ///< ended with an error bit
    unsigned lost = 0;    ///< over, with no bit that says so
    bool operator==(const Tally&) const = default;
  };

  /// Begins when the plan says, and acts for as long as the board lives.
  static std::shared_ptr<SmbusUser> Start(Board& board, std::shared_ptr<SmbusHost> host, const Plan& plan);

  const Tally& Reads() const { return tally_; }
  bool Over() const { return stage_ == Stage::kOver; }

 private:
  enum class Stage { kAsking, kWaiting, kOver };

  SmbusUser(std::shared_ptr<SmbusHost> host, const Plan& plan)
      : host_(std::move(host)), plan_(plan), next_(plan.from) {}
  void Act(Board& board);
  void Ask(Board& board);
  void StartRead(Board& board);
  void TakeResult(Board& board);
  void GiveBack(Board& board);
  bool HostBusy(Board& board);
  uint8_t Status(Board& board);

  std::shared_ptr<SmbusHost> host_;
  Plan plan_;
  Tally tally_;
  Stage stage_ = Stage::kAsking;
  uint64_t next_;
  bool owns_ = false;
};

}  // namespace sim
