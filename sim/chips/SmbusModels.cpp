// The SMBus host controllers that a board file can name: every chipset of SmbusPlatforms.h, one row each.
#include <array>
#include <utility>

#include "sim/chips/SmbusPlatforms.h"

namespace sim {
namespace {

constexpr std::string_view kOptions[] = {"enabled", "hidden", "no_base", "second_bus", "pm_memory", "pm_ports"};

template <size_t index>
void Attach(Board& board, const SmbusSetup& setup) {
  AttachSmbus(board, SmbusPlatforms()[index], setup);
}

template <size_t... indices>
std::array<SmbusModel, sizeof...(indices)> Rows(std::index_sequence<indices...>) {
  return {SmbusModel{SmbusPlatforms()[indices].name, &Attach<indices>, kOptions}...};
}

}  // namespace

std::span<const SmbusModel> SmbusModels() {
  static const auto models = Rows(std::make_index_sequence<kSmbusPlatforms>());
  return models;
}

}  // namespace sim
