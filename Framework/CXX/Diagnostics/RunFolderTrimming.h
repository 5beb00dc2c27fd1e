#pragma once

#include <string>

namespace Halden {

/// Removes the oldest run folders below the parent of the folder of all runs, until at most that many are left, and at
/// least one. A folder of runs that can't be read is told on standard output, one that can't be removed is not.
void trimRunFolders(const std::u16string& baseFolder, int keepCount);

} // namespace Halden
