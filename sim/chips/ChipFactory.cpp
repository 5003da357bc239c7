#include "sim/chips/ChipFactory.h"

namespace sim {

const SmbusModel* FindSmbusModel(std::string_view name) {
  for (const SmbusModel& model : SmbusModels())
    if (model.name == name) return &model;
  return nullptr;
}

}  // namespace sim
