// SPDX-License-Identifier: MIT
// A search that takes the combination with the fewest open bits first.
#include "diagnosis/Satisfy.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace diagnosis {
namespace {

/// More steps than this are not worth the wait: tables of real boards take a few dozen.
constexpr unsigned kMostSteps = 100000;

class Search {
 public:
  Search(Bits given, std::span<const Bits> forbidden) : bits_(std::move(given)), forbidden_(forbidden) {}

  Answer Run() {
    if (++steps_ > kMostSteps) return Answer::kUnknown;
    const Bits* narrowest = nullptr;
    std::vector<std::pair<unsigned, bool>> open;
    for (const Bits& combination : forbidden_) {
      std::vector<std::pair<unsigned, bool>> left;
      if (IsAvoided(combination, &left)) continue;
      if (left.empty()) return Answer::kNo;
      if (narrowest == nullptr || left.size() < open.size()) {
        narrowest = &combination;
        open = std::move(left);
      }
    }
    return narrowest == nullptr ? Answer::kYes : Branch(open);
  }

 private:
  /// Whether a bit has another value already; else which bits are open.
  bool IsAvoided(const Bits& combination, std::vector<std::pair<unsigned, bool>>* left) const {
    for (const auto& [bit, value] : combination) {
      const auto found = bits_.find(bit);
      if (found == bits_.end())
        left->emplace_back(bit, value);
      else if (found->second != value)
        return true;
    }
    return false;
  }

  /// One of the open bits must have the other value: the first, or the second while the first has not, and so on.
  Answer Branch(const std::vector<std::pair<unsigned, bool>>& open) {
    Answer answer = Answer::kNo;
    for (const auto& [bit, value] : open) {
      bits_[bit] = !value;
      answer = Run();
      if (answer != Answer::kNo) break;
      bits_[bit] = value;
    }
    for (const auto& [bit, value] : open) bits_.erase(bit);
    return answer;
  }

  Bits bits_;
  std::span<const Bits> forbidden_;
  unsigned steps_ = 0;
};

}  // namespace

Answer CanAvoid(const Bits& given, std::span<const Bits> forbidden) { return Search(given, forbidden).Run(); }

bool Agree(const Bits& one, const Bits& other) {
  return std::ranges::all_of(one, [&](const auto& each) {
    const auto found = other.find(each.first);
    return found == other.end() || found->second == each.second;
  });
}

}  // namespace diagnosis
