#include "text/TarvoDspVersion.h"

namespace ondo
{
std::string getLibraryVersionLine(bool withPrecision)
{
    std::string line = "libondo v" + std::to_string(versionMajor) + "." + std::to_string(versionMinor) + "." +
                       std::to_string(versionPatch);
    if (withPrecision)
        line += " (" + std::to_string(sizeof(float) * 8) + "-bit float" + ")";
    return line;
}
} // namespace ondo
