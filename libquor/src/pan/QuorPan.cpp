#include "pan/QuorPan.h"

#include "pan/QuorAmbisonicEquivalentPanningAnalytic2D.h"
#include "pan/QuorAmbisonicEquivalentPanningAnalytic3D.h"
#include "pan/QuorAmbisonicPanning.h"
#include "pan/QuorAngularPanning.h"
#include "pan/QuorDbapPanning2D.h"
#include "pan/QuorDbapPanning3D.h"
#include "pan/QuorDiffusePanning.h"
#include "pan/QuorHOA2DPanning.h"
#include "pan/QuorHOA3DPanning.h"
#include "pan/QuorHoaDiffusePanning2D.h"
#include "pan/QuorHoaDiffusePanning3D.h"
#include "pan/QuorKnnPanning.h"
#include "pan/QuorNFCHOAPanning2D.h"
#include "pan/QuorNFCHOAPanning3D.h"
#include "pan/QuorNullPanning.h"
#include "pan/QuorRecursivePanning.h"
#include "pan/QuorSPCAmplitudePanning.h"
#include "pan/QuorStereoABPanning.h"
#include "pan/QuorStereoMSPanning.h"
#include "pan/QuorSubwoofersPanning.h"
#include "pan/QuorStereoPanLaw.h"
#include "pan/QuorStereoXYPanning.h"
#include "pan/QuorSurroundPanning.h"
#include "pan/QuorVDbapPanning.h"
#include "pan/QuorVbap2DPanning.h"
#include "pan/QuorVbapPanning.h"
#include "pan/QuorVbip2DPanning.h"
#include "pan/QuorVbipPanning.h"

#include <cmath>
#include <map>
#include <utility>

namespace Quor
{
namespace
{
using ondo::String;

/// Names of each type; the first is the printed one.
const std::vector<std::pair<Pan::Type, std::vector<const char*>>>& typeNames()
{
    static const std::vector<std::pair<Pan::Type, std::vector<const char*>>> names = {
        {Pan::Binaural, {"binaural"}},
        {Pan::StereoXY, {"xy", "stereo xy"}},
        {Pan::StereoMS, {"ms", "stereo ms", "m/s"}},
        {Pan::StereoAB, {"ab", "ortf", "stereo ab"}},
        {Pan::StereoPan, {"stereopan", "panlaw", "deltai"}},
        {Pan::Surround, {"surround"}},
        {Pan::Recursive, {"panr"}},
        {Pan::Angular, {"angular"}},
        {Pan::Vbap2D, {"vbap2d", "vbap-2d"}},
        {Pan::Vbip2D, {"vbip2d", "vbip-2d"}},
        {Pan::Vbap3D, {"vbap", "vbap3d", "vbap-3D"}},
        {Pan::Vbip3D, {"vbip", "vbip3d", "vbip-3d"}},
        {Pan::Dbap2D, {"dbap", "dbap2d"}},
        {Pan::Dbap3D, {"dbap3d"}},
        {Pan::BFormat, {"bformat", "b-format", "format-b"}},
        {Pan::Hoa2D, {"hoa2d", "hoa-2d"}},
        {Pan::Hoa3D, {"hoa3d", "hoa-3d", "hoa", "ambisonic"}},
        {Pan::VDbap, {"vdbap"}},
        {Pan::NfcHoa2D, {"nfchoa2d", "nfchoa-2d"}},
        {Pan::NfcHoa3D, {"nfchoa3d", "nfchoa", "nfc-hoa", "nfchoa3D"}},
        {Pan::Spcap, {"spcap"}},
        {Pan::Knn, {"knn", "nearestneighbors"}},
        {Pan::Subwoofers, {"subwoofers", "subwoofer", "lfe"}},
        {Pan::Aep2D, {"aep2d", "aep-2d"}},
        {Pan::Aep3D, {"aep3d", "aep-3d"}},
    };
    return names;
}

const std::vector<std::pair<Pan::SubType, std::vector<const char*>>>& subTypeNames()
{
    static const std::vector<std::pair<Pan::SubType, std::vector<const char*>>> names = {
        {Pan::Direct, {"direct"}},
        {Pan::Early, {"early"}},
        {Pan::Diffuse, {"diffuse"}},
        {Pan::Nearfield, {"nearfield"}},
        {Pan::SphericalHeadModel, {"sphericalheadmodel"}},
        {Pan::SnowmanModel, {"snowmanmodel", "snowman"}},
        {Pan::Continuous, {"continuous"}},
    };
    return names;
}

/// A name-to-value table from a list of values and their names.
template <typename Enum>
std::map<String, Enum> nameTable(const std::vector<std::pair<Enum, std::vector<const char*>>>& names)
{
    std::map<String, Enum> table;
    for (const auto& [value, list] : names)
        for (const char* n : list)
            table.emplace(n, value);
    return table;
}

template <typename Enum>
Enum lookUp(const std::map<String, Enum>& table, const String& name, Enum unknown)
{
    const auto it = table.find(name);
    return it == table.end() ? unknown : it->second;
}

const std::vector<std::pair<Pan::ItdType, std::vector<const char*>>>& itdTypeNames()
{
    static const std::vector<std::pair<Pan::ItdType, std::vector<const char*>>> names = {
        {0, {"basic", "BasicModel", "SphericalHeadBasicModel"}},
        {1, {"woodworth", "WoodworthModel", "SphericalHeadWoodworthModel"}},
        {2, {"measurement", "ITDFromMeasurement"}},
        {3, {"larcherjot", "LarcherJotModel", "Woodworth3d", "woodworth3d", "woodworth3D"}},
        {4, {"savioja", "SaviojaModel"}},
        {5, {"miller", "MillerModel"}},
        {6, {"NoITD"}},
    };
    return names;
}

const std::vector<std::pair<Pan::ItdLatencyMode, std::vector<const char*>>>& itdLatencyModeNames()
{
    static const std::vector<std::pair<Pan::ItdLatencyMode, std::vector<const char*>>> names = {
        {0, {"fixedlatency"}},
        {1, {"nolatency"}},
    };
    return names;
}

/// The printed name of a value: the first of its list, "null" when it has none.
template <typename Enum>
String firstName(const std::vector<std::pair<Enum, std::vector<const char*>>>& names, std::int32_t value)
{
    for (const auto& [v, list] : names)
        if (v == value)
            return list.front();
    return "null";
}

/// 2M + 1, tested in single precision as the Ambisonic order is.
bool isOddForm(std::uint32_t n)
{
    const float order = (static_cast<float>(n) - 1.0f) / 2.0f;
    return order == std::trunc(order);
}

/// (M + 1)^2, tested in single precision; 0 passes, as sqrt(0) - 1 is whole.
bool isSquareForm(std::uint32_t n)
{
    const float order = std::sqrt(static_cast<float>(n)) - 1.0f;
    return order == std::trunc(order);
}

/// `T` when `allowed`, else the silent panner. The families still to come are built as
/// `NullPanning` with their class named beside: one line each to switch on.
template <typename T>
std::unique_ptr<Pan> make(bool allowed, std::uint32_t numSources, std::uint32_t numSpeakers)
{
    if (!allowed)
        return std::make_unique<NullPanning>(numSources, numSpeakers);
    return std::make_unique<T>(numSources, numSpeakers);
}

std::unique_ptr<Pan> build(std::uint32_t ns, std::uint32_t nk, Pan::Type type, Pan::SubType subType)
{
    const bool stereo = nk == 2;
    if (subType == Pan::Diffuse)
    {
        switch (type)
        {
            case Pan::Binaural: return make<NullPanning /* BinauralPanningIACC */>(stereo && ns >= nk, ns, nk);
            case Pan::Hoa2D:
            case Pan::NfcHoa2D:
                return isOddForm(nk) ? make<HoaDiffusePanning2D>(true, ns, nk)
                                     : make<DiffusePanning>(true, ns, nk);
            case Pan::Hoa3D:
            case Pan::NfcHoa3D:
                return isSquareForm(nk) ? make<HoaDiffusePanning3D>(true, ns, nk)
                                        : make<DiffusePanning>(true, ns, nk);
            default: return make<DiffusePanning>(true, ns, nk);
        }
    }
    if (type == Pan::Binaural)
    {
        switch (subType)
        {
            case Pan::Early: return make<NullPanning /* BinauralPanningITD */>(stereo, ns, nk);
            case Pan::Nearfield: return make<NullPanning /* BinauralPanningNearfield */>(stereo, ns, nk);
            case Pan::SphericalHeadModel:
                return make<NullPanning /* BinauralPanningSphericalHeadModel */>(stereo, ns, nk);
            case Pan::SnowmanModel: return make<NullPanning /* BinauralPanningSnowmanModel */>(stereo, ns, nk);
            case Pan::Continuous: return make<NullPanning /* BinauralPanningContinuous */>(stereo, ns, nk);
            default: return make<NullPanning /* BinauralPanningDirect */>(stereo, ns, nk);
        }
    }
    switch (type)
    {
        case Pan::StereoXY: return make<StereoXYPanning>(stereo, ns, nk);
        case Pan::StereoMS: return make<StereoMSPanning>(stereo, ns, nk);
        case Pan::StereoAB: return make<StereoABPanning>(stereo, ns, nk);
        case Pan::StereoPan: return make<StereoPanLaw>(stereo, ns, nk);
        case Pan::Surround: return make<SurroundPanning>(nk == 3 || nk == 4, ns, nk);
        case Pan::Recursive: return make<RecursivePanning>((nk >= 4 && nk <= 8) || nk == 12, ns, nk);
        case Pan::Angular: return make<AngularPanning>(true, ns, nk);
        case Pan::Vbap2D: return make<Vbap2DPanning>(nk >= 2, ns, nk);
        case Pan::Vbip2D: return make<Vbip2DPanning>(nk >= 2, ns, nk);
        case Pan::Vbap3D: return make<VbapPanning>(nk >= 3, ns, nk);
        case Pan::Vbip3D: return make<VbipPanning>(nk >= 3, ns, nk);
        case Pan::Dbap2D: return make<DbapPanning2D>(nk != 0, ns, nk);
        case Pan::Dbap3D: return make<DbapPanning3D>(nk != 0, ns, nk);
        case Pan::BFormat: return make<AmbisonicPanning>(nk == 3 || nk == 4, ns, nk);
        case Pan::Hoa2D: return make<HOA2DPanning>(isOddForm(nk), ns, nk);
        case Pan::Hoa3D: return make<HOA3DPanning>(isSquareForm(nk), ns, nk);
        case Pan::VDbap: return make<VDbapPanning>(nk >= 3, ns, nk);
        case Pan::NfcHoa2D: return make<NFCHOAPanning2D>(isOddForm(nk), ns, nk);
        case Pan::NfcHoa3D: return make<NFCHOAPanning3D>(isSquareForm(nk), ns, nk);
        case Pan::Spcap: return make<SPCAmplitudePanning>(ns != 0, ns, nk);
        case Pan::Knn: return make<KnnPanning>(nk != 0, ns, nk);
        case Pan::Subwoofers: return make<SubwoofersPanning>(nk != 0, ns, nk);
        case Pan::Aep2D: return make<AmbisonicEquivalentPanningAnalytic2D>(nk >= 5, ns, nk);
        case Pan::Aep3D: return make<AmbisonicEquivalentPanningAnalytic3D>(nk >= 5, ns, nk);
        default: return make<NullPanning>(false, ns, nk);
    }
}
} // namespace

Pan::Pan(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AudioProcessorWithOscInAudioInterrupt(numSources, numSpeakers), sourcesPosition(numSources),
      speakersPosition(numSpeakers), sourcesMute(numSources)
{
    sourcesPosition.fill(ondo::Point3::defaultDirection());
}

std::unique_ptr<Pan> Pan::create(std::uint32_t numSources, std::uint32_t numSpeakers, Type type, SubType subType)
{
    std::unique_ptr<Pan> panner;
    try
    {
        panner = build(numSources, numSpeakers, type, subType);
    }
    catch (...)
    {
        // A panner that fails to build is replaced by the silent one, without a word.
        panner = std::make_unique<NullPanning>(numSources, numSpeakers);
    }
    if (dynamic_cast<NullPanning*>(panner.get()) != nullptr)
    {
        panner->type = Null;
        panner->subType = Direct;
    }
    else
    {
        panner->type = type;
        panner->subType = subType;
    }
    return panner;
}

bool Pan::isConfigurationValid(std::int32_t type, std::uint32_t n)
{
    switch (type)
    {
        case Binaural:
        case StereoXY:
        case StereoMS:
        case StereoAB:
        case StereoPan: return n == 2;
        case Surround:
        case BFormat: return n == 3 || n == 4;
        case Recursive: return (n >= 4 && n <= 8) || n == 12;
        case Angular:
        case Spcap:
        case Knn:
        case Subwoofers: return n >= 1;
        case Vbap2D:
        case Vbip2D: return n >= 2;
        case Vbap3D:
        case Vbip3D:
        case Dbap2D:
        case Dbap3D:
        case VDbap: return n >= 3;
        case Hoa2D:
        case NfcHoa2D: return isOddForm(n);
        case Hoa3D:
        case NfcHoa3D: return isSquareForm(n);
        case Aep2D:
        case Aep3D: return n >= 5;
        default: return false;
    }
}

String Pan::typeToString(std::int32_t value)
{
    return firstName(typeNames(), value);
}

Pan::Type Pan::stringToType(const String& name)
{
    static const auto table = nameTable(typeNames());
    return lookUp(table, name, Null);
}

String Pan::subTypeToString(std::int32_t value)
{
    return firstName(subTypeNames(), value);
}

Pan::SubType Pan::stringToSubType(const String& name)
{
    static const auto table = nameTable(subTypeNames());
    return lookUp(table, name, Direct);
}

void Pan::setSourceMute(std::uint32_t source, bool muted)
{
    if (source < sourcesMute.size())
        // The audio thread of a per-voice panner reads it while it changes.
        std::atomic_ref<std::int16_t>(sourcesMute[source]).store(muted ? 1 : 0, std::memory_order_relaxed);
}

String Pan::itdTypeToString(ItdType itdType)
{
    for (const auto& [value, names] : itdTypeNames())
        if (value == itdType)
            return names.front();
    return itdTypeNames().front().second.front();
}

String Pan::itdLatencyModeToString(ItdLatencyMode mode)
{
    for (const auto& [value, names] : itdLatencyModeNames())
        if (value == mode)
            return names.front();
    return itdLatencyModeNames().front().second.front();
}

bool Pan::receiveOscMessage(const ondo::OSCMessage& message, std::int32_t& context)
{
    return handleProcessorMessages(message, context) || oscReceiver.processOscMessage(message, context);
}

ondo::OSCBundle Pan::getOscState() const
{
    ondo::OSCBundle state = getProcessorState();
    state.addFlattened(oscReceiver.getState());
    return state;
}

void Pan::setItdType(const String& name)
{
    static const auto table = nameTable(itdTypeNames());
    setItdType(lookUp(table, name, ItdType{2}));
}

void Pan::setItdLatencyMode(const String& name)
{
    static const auto table = nameTable(itdLatencyModeNames());
    setItdLatencyMode(lookUp(table, name, ItdLatencyMode{0}));
}

void Pan::getInfos(StringArray& lines) const
{
    lines.push_back("panning type : " + getTypeName());
    lines.push_back("panning subtype : " + getSubTypeName());
}

void Pan::recomputeAllSources()
{
    for (std::uint32_t s = 0; s < sourcesPosition.size(); ++s)
        setSourcePosition(s, sourcesPosition[s], false);
}
} // namespace Quor
