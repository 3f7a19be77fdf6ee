// What Tab completes in fieldbook edit: commands, names of points, and the words that a command
// takes.
#pragma once

#include "fieldbook/console/LineEditor.h"
#include "fieldbook/points/PointList.h"

namespace fieldbook {

// For the text before the cursor. commands are the names of all of them. Names of points come in
// their natural order, and in quotes where one of them has to.
Completion CompleteEdit(const WString& before, const std::vector<WString>& commands,
                        const PointList& list);

}  // namespace fieldbook
