#pragma once

#include <string>

namespace ondo
{
inline constexpr int versionMajor = 5;
inline constexpr int versionMinor = 0;
inline constexpr int versionPatch = 0;

/// "libondo v5.0.0", or "libondo v5.0.0 (32-bit float)" with the sample precision.
std::string getLibraryVersionLine(bool withPrecision = false);
} // namespace ondo
