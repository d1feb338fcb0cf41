#pragma once

#include <FCurveLib/Forward.h>

#include <string>
#include <string_view>
#include <vector>

namespace fcurvetool {

/// To standard output. Failure when that takes no more.
void Print(std::string_view text);

/// Replaces the file as a whole, as FileReplacement does, whose SaveErrors pass; prints the text for "-".
void WriteFile(const std::string& path, std::string_view text);

/// The line for the user.
std::string Describe(const VEM_FN::FCurveLib::LoadError& error);
std::string Describe(const VEM_FN::FCurveLib::SaveError& error);

/// A text of any length, for as long as the stream takes it.
void Append(VEM_FN::FCurveLib::Stream& stream, std::string_view text);

/// Whether both paths lead to one file that exists.
bool IsSameFile(const std::string& a, const std::string& b);

/// Whether what is written to one replaces what is written to the other; so for - twice. Neither needs to be there.
bool IsSamePlace(const std::string& a, const std::string& b);

/// UsageError where the output is one of the inputs: no input is replaced unless the user says so.
void RefuseInput(const std::string& output, const std::vector<std::string>& inputs, const std::string& advice);

} // namespace fcurvetool
