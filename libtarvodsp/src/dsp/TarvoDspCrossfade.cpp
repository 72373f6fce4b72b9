#include "dsp/TarvoDspCrossfade.h"

namespace ondo
{
namespace
{
const char* const names[] = {"linear", "cosine", "squareCosine"};
}

std::string Crossfade::toText(int type)
{
    return names[(type >= linear && type <= squareCosine) ? type : linear];
}

Crossfade::Type Crossfade::fromText(const std::string& text)
{
    for (int t = linear; t <= squareCosine; ++t)
        if (text == names[t])
            return static_cast<Type>(t);
    return linear;
}
} // namespace ondo
