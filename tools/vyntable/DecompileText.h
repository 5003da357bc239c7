/// Tables as the text of board files.
#pragma once

#include <string>

#include "vyntable/Files.h"

namespace vyntable {

/// Each returns TOML that compiles to exactly the image's bytes.
std::string IadtText(const Image& iadt);
std::string IamtText(const Image& iamt);
std::string BiosInfoText(const Image& biosInfo);

}  // namespace vyntable
