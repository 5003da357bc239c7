#include "sim/chips/ChipFactory.h"

namespace sim {
namespace {

template <typename Model>
const Model* Find(std::span<const Model> models, std::string_view name) {
  for (const Model& model : models)
    if (model.name == name) return &model;
  return nullptr;
}

}  // namespace

const SmbusModel* FindSmbusModel(std::string_view name) { return Find(SmbusModels(), name); }

const ChipModel* FindChipModel(std::string_view name) { return Find(ChipModels(), name); }

}  // namespace sim
