// SPDX-License-Identifier: MIT
/// The standard streams, where they may be closed, full or read by nobody.
#pragma once

#include <string>

namespace commandline {

/// Gives closed ones of the descriptors 0 to 2 a place where neither reading nor writing works, so that no file that is
/// opened later takes their numbers and receives messages.
void HoldStandardDescriptors();

/// Writes a message to standard error, broken into lines for a narrow terminal. Where that cannot be written nobody is
/// there to be told.
void Say(const std::string& text);

/// Writes all of `text` to a descriptor. False, with errno, when that fails.
bool WriteAll(int descriptor, const std::string& text);

/// Writes to standard output, broken into lines for a narrow terminal. False, after a message, when that fails.
bool Print(const char* tool, const std::string& text);

/// What stdio still holds for standard output, and whether all before it arrived. False, after a message, when not.
bool Flush(const char* tool);

}  // namespace commandline
