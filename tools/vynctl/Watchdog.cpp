#include "Watchdog.h"

namespace vynctl {
namespace {

Value ReadInterval(const Library& library) {
  Value value{.id = "watchdog/interval", .name = "watchdog interval", .quantity = "interval"};
  uint32_t interval = 0;
  if (library.Functions().WDTGetInterval(&interval, VYNLIB_PERFORM) == 0) return Failed(value, library.LastError());
  value.data = int64_t{interval};
  return value;
}

Value ReadMode(const Library& library) {
  Value value{.id = "watchdog/mode", .name = "watchdog count mode", .quantity = "mode"};
  uint8_t mode = 0;
  if (library.Functions().WDTGetCountMode(&mode, VYNLIB_PERFORM) == 0) return Failed(value, library.LastError());
  value.data = int64_t{mode};
  return value;
}

}  // namespace

bool OffersWatchdog(const Library& library) { return library.Functions().WDTEnable(0, 0, VYNLIB_QUERY) != 0; }

std::vector<Value> ReadWatchdog(const Library& library) { return {ReadInterval(library), ReadMode(library)}; }

}  // namespace vynctl
