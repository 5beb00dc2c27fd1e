#pragma once

/// In this program a name for 127.0.0.2, and after it 127.0.0.1.
constexpr const char* nameOfTwoAddresses = "two-addresses";
