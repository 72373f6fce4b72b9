#include "dsp/TarvoDspFir.h"

#include "common/TarvoDspException.h"
#include "dsp/TarvoDspFirTimeDomain.h"

#include <string>

namespace ondo
{
namespace
{
void refuseUnknown(int method)
{
    if (method != Fir::timeDomain)
        throw Exception("unknown FIR method " + std::to_string(method) + ": only the time domain (0) exists",
                        ONDO_SOURCE_LOCATION);
}
} // namespace

Fir::Fir(int order, const Method& requested) : method(requested)
{
    refuseUnknown(requested);
    implementation = std::make_unique<FirTimeDomain>(order);
}

void Fir::copyStateFrom(const Filter& other)
{
    const auto* wrapper = dynamic_cast<const Fir*>(&other);
    implementation->copyStateFrom(wrapper != nullptr ? *wrapper->implementation : other);
}

void Fir::setMethod(Method newMethod)
{
    // The time domain is the only implementation, so any other request is refused here.
    if (newMethod != method)
        refuseUnknown(newMethod);
}

void Fir::setNumCoefficients(int n)
{
    static_cast<FirTimeDomain&>(*implementation).setNumCoefficients(n);
}
} // namespace ondo
