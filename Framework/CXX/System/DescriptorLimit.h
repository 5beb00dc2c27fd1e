#pragma once

namespace Halden::System {

/// Lets this process have as many descriptors as the system grants it, instead of the 1024 or so that are usual. Those
/// beyond 1023 are none for select(), which nothing here uses. Processes started from here inherit the limit.
void useAllDescriptors();

} // namespace Halden::System
