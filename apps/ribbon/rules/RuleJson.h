// Rules as JSON.
#pragma once

#include <vector>

#include "ribbon/rules/DiffFile.h"
#include "ribbon/rules/Json.h"

namespace ribbon {

// An object with the rule's number, from 1, its line, its type as the diff file has it, its path,
// and what belongs to its type. Events give the value "from" that an attribute had.
void AppendRule(Json& json, const DiffFile& diff, std::size_t rule,
                const std::vector<RuleEvent>& events);

// An object with the rule's number, its line and path, the name of the fault, and the id or the
// value that it is about.
void AppendFault(Json& json, const DiffFile& diff, const RuleEvent& event);

}  // namespace ribbon
