// SPDX-License-Identifier: MIT
/// Findings for programs.
#pragma once

#include <string>

#include "vyntable/Judgement.h"

namespace vyntable {

/// An object with the findings and their numbers; docs/vyntable.md shows it.
std::string JsonReport(const Judgement& judgement);

/// A log in the Static Analysis Results Interchange Format, version 2.1.0.
std::string SarifReport(const Judgement& judgement, const std::string& version);

}  // namespace vyntable
