#pragma once

#include <memory>
#include <vector>

/// Bytes that many hold and nobody changes.
using SharedBytes = std::shared_ptr<const std::vector<unsigned char>>;
