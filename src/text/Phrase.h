#pragma once

// Sentences with gaps: "{0} of {1}" and what fills them. The order of the gaps belongs to the
// language, so that a whole sentence is one label.

#include <initializer_list>
#include <string>
#include <string_view>

#include "text/Label.h"

namespace velloran {

/// The label in the language in use as UTF-8, each {0} to {9} replaced by that part; parts are
/// taken as they are, whatever they hold. A gap without a part stays.
std::string Phrase(const Label& label, std::initializer_list<std::string_view> parts = {});

}  // namespace velloran
