// What a user has set for a queue of CUPS; internal to the layer.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace winapi {

// The file of the user's options, ~/.cups/lpoptions, whose lines are "Dest queue name=value ..."
// and "Default ..." for the default queue. Gives these options of a queue values, in place of those
// that they have; all else in the file stays. The new file is written beside it and renamed. False
// with the last error.
bool SetUserOptions(const std::string& queue,
                    const std::vector<std::pair<std::string, std::string>>& options);

}  // namespace winapi
