#include "dsp/TarvoDspFadedHLShelf.h"

namespace ondo
{
FadedHLShelf::FadedHLShelf()
{
    const HLShelfParameters defaults;
    const float values[] = {defaults.G0, defaults.Gl, defaults.Gm, defaults.Gh, defaults.fl, defaults.fh};
    for (int i = 0; i < 6; ++i)
        parameters[i] = values[i];
}

void FadedHLShelf::setParameters(const HLShelfParameters& p, bool immediately)
{
    const float values[] = {p.G0, p.Gl, p.Gm, p.Gh, p.fl, p.fh};
    for (int i = 0; i < 6; ++i)
        parameters[i] = values[i];
    setCoefficients(designHLShelf(p, sampleRate), immediately);
}

void FadedHLShelf::setParameters(float G0, float Gl, float Gm, float Gh, float fl, float fh, bool immediately)
{
    setParameters(HLShelfParameters{G0, Gl, Gm, Gh, fl, fh}, immediately);
}

HLShelfParameters FadedHLShelf::getParameters() const
{
    return {parameters[0], parameters[1], parameters[2], parameters[3], parameters[4], parameters[5]};
}
} // namespace ondo
