#pragma once

// Between the words of the shell and the parsing library. The library gives a meaning of its own to
// some words ("[a]" is a list, "{}" is empty, "++" ends a command), which may be names of files:
// such words travel through it behind a guard character.

#include <string>
#include <string_view>
#include <vector>

namespace velloran::cli {

/// The words, guarded; of --option=value the value. Behind "--" all words are names.
std::vector<std::string> GuardWords(std::vector<std::string> words);

/// The word as it was typed.
std::string Unguard(std::string word);
std::vector<std::string> Unguard(std::vector<std::string> words);

}  // namespace velloran::cli
