#include "TarvoverbCore.h"

#include "TarvoverbNotation.h"
#include "common/TarvoDspException.h"
#include "osc/TarvoDspOscMessage.h"
#include "reverb/QuorTarvoVerb.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <new>

namespace tarvo::host
{
namespace
{
bool is(std::string_view name, const char* candidate)
{
    return name == candidate;
}

float clipFloat(float value, float low, float high)
{
    return std::min(std::max(value, low), high);
}
} // namespace

void TarvoverbCore::createEngine()
{
    if (s.initialized)
        return;
    if (!Quor::TarvoVerb::isConfigurationValid(static_cast<std::uint32_t>(s.numsources),
                                               static_cast<std::uint32_t>(s.numspeakers),
                                               static_cast<std::uint32_t>(s.numinternals)))
    {
        console.error("Configuration not supported");
        return;
    }
    Quor::TarvoVerb* engine = nullptr;
    try
    {
        engine = new Quor::TarvoVerb(static_cast<std::uint32_t>(s.numinternals));
        engine->configure(creationSampleRate, creationBlockSize, static_cast<std::uint32_t>(s.numsources),
                          static_cast<std::uint32_t>(s.numspeakers));
    }
    catch (const std::exception&)
    {
        delete engine;
        console.error("couldnt create object");
        return;
    }
    if (!engine->isConfigured())
    {
        console.error("object not properly initialized");
        delete engine;
        return;
    }
    s.processor = engine;
    s.initialized = true;
    // The stored points start where the engine puts them, so that a relative notation
    // ("source 2 azim 45") moves from a real position.
    for (std::int64_t i = 0; i < s.numsources; ++i)
    {
        const ondo::Point3& p = engine->getSourcePositions()[static_cast<std::size_t>(i)];
        s.sourcespositions[3 * i] = p.x;
        s.sourcespositions[3 * i + 1] = p.y;
        s.sourcespositions[3 * i + 2] = p.z;
    }
    for (std::int64_t i = 0; i < s.numspeakers; ++i)
    {
        const ondo::Point3& p = engine->getSpeakerPositions()[static_cast<std::size_t>(i)];
        s.speakerspositions[3 * i] = p.x;
        s.speakerspositions[3 * i + 1] = p.y;
        s.speakerspositions[3 * i + 2] = p.z;
    }
}

void TarvoverbCore::destroyEngine()
{
    delete s.processor;
    s.processor = nullptr;
    s.initialized = false;
}

void TarvoverbCore::prepare(float sampleRate, std::uint32_t blockSize)
{
    Quor::TarvoVerb* engine = s.processor;
    if (engine == nullptr)
        return;
    if (engine->getSampleRate() == Quor::TarvoVerb::clampSampleRate(sampleRate) && engine->getBufferSize() == blockSize)
    {
        engine->clear();
        return;
    }
    engine->setup(sampleRate, blockSize, true);
    applyStoredValues();
    engine->clear();
}

void TarvoverbCore::applyStoredValues()
{
    Quor::TarvoVerb* engine = s.processor;
    if (engine == nullptr)
        return;
    const auto shelf = [](const float* v) { return ondo::HLShelfParameters{v[0], v[1], v[2], v[3], v[4], v[5]}; };
    engine->setDirectFilter(shelf(s.direct));
    engine->setRoomFilter(shelf(s.room));
    engine->setEarlyFilter(shelf(s.early));
    engine->setClusterFilter(shelf(s.cluster));
    reverbStep();
    structureStep();
    speakersStep();
}

bool TarvoverbCore::setAutomute(float seconds)
{
    if (s.processor == nullptr)
        return false;
    s.automute = seconds;
    s.processor->setAutoMuteAttack(seconds);
    return true;
}

bool TarvoverbCore::setCountAttribute(std::int64_t& field, std::int64_t* count, Atoms atoms, const char* what)
{
    const auto value = static_cast<std::int64_t>(atoms.front().integer());
    if (!s.initialized)
    {
        field = value;
        if (count != nullptr)
            *count = 3 * value;
        return true;
    }
    if (value != field)
        console.error(std::string("could not dynamically change number of ") + what);
    return false;
}

bool TarvoverbCore::setFilter(float* field, Atoms atoms, const char* name,
                              void (Quor::TarvoVerb::*setter)(const ondo::HLShelfParameters&))
{
    if (atoms.size() != 6)
    {
        reportInvalidMessage(console, std::string("invalid ") + name + " parameters", atoms);
        return false;
    }
    // A word where a crossover belongs gives the usual crossover, not 0 Hz.
    float v[6];
    for (std::size_t i = 0; i < 6; ++i)
        v[i] = atoms[i].isNumber() ? atoms[i].plainNumber() : (i == 4 ? 250.0f : i == 5 ? 4000.0f : 0.0f);
    v[0] = clipFloat(v[0], -200.0f, 30.0f);
    for (int i = 1; i < 4; ++i)
        v[i] = clipFloat(v[i], -30.0f, 30.0f);
    v[4] = clipFloat(v[4], 20.0f, 20000.0f);
    v[5] = clipFloat(v[5], 20.0f, 20000.0f);
    std::copy_n(v, 6, field);
    if (s.processor != nullptr)
        (s.processor->*setter)({v[0], v[1], v[2], v[3], v[4], v[5]});
    return true;
}

bool TarvoverbCore::setAttribute(std::string_view name, Atoms atoms)
{
    if (atoms.empty())
        return false;
    const float number = atoms.front().plainNumber();
    if (is(name, "numsources"))
        return setCountAttribute(s.numsources, &s.sourcesCount, atoms, "sources");
    if (is(name, "numspeakers"))
        return setCountAttribute(s.numspeakers, &s.speakersCount, atoms, "speakers");
    if (is(name, "numinternals"))
        return setCountAttribute(s.numinternals, nullptr, atoms, "internal channels");
    if (is(name, "sourcespositions") || is(name, "speakerspositions"))
    {
        const bool sources = is(name, "sourcespositions");
        float* field = sources ? s.sourcespositions : s.speakerspositions;
        const std::size_t live = static_cast<std::size_t>(std::max<std::int64_t>(0, sources ? s.sourcesCount : s.speakersCount));
        const std::size_t n = std::min(atoms.size(), live);
        for (std::size_t i = 0; i < n; ++i)
            field[i] = atoms[i].plainNumber();
        if (sources)
            sendSourcePositions();
        else
            speakersStep();
        return true;
    }
    if (is(name, "infinite") || is(name, "air"))
    {
        (is(name, "air") ? s.air : s.infinite) = atoms.front().integer() != 0 ? 1 : 0;
        reverbStep();
        return true;
    }
    static constexpr const char* reverbNames[] = {"airfreq", "tr0", "trl", "trm", "trh", "fl", "fh", "gain"};
    float* reverbFields[] = {&s.airfreq, &s.tr0, &s.trl, &s.trm, &s.trh, &s.fl, &s.fh, &s.gain};
    for (std::size_t i = 0; i < std::size(reverbNames); ++i)
        if (is(name, reverbNames[i]))
        {
            *reverbFields[i] = number;
            reverbStep();
            return true;
        }
    if (is(name, "delays"))
    {
        if (static_cast<long long>(atoms.size()) != s.numinternals)
        {
            console.error("Wrong number of delays");
            return false;
        }
        // Kept for the user to read back; the engine derives its own delays.
        for (std::size_t i = 0; i < atoms.size(); ++i)
            s.delays[i] = std::max(0.0f, atoms[i].plainNumber());
        return true;
    }
    if (is(name, "direct"))
        return setFilter(s.direct, atoms, "direct", &Quor::TarvoVerb::setDirectFilter);
    if (is(name, "room"))
        return setFilter(s.room, atoms, "room", &Quor::TarvoVerb::setRoomFilter);
    if (is(name, "early") || is(name, "cluster"))
    {
        const bool early = is(name, "early");
        if (atoms.size() == 6)
            return early ? setFilter(s.early, atoms, "early", &Quor::TarvoVerb::setEarlyFilter)
                         : setFilter(s.cluster, atoms, "cluster", &Quor::TarvoVerb::setClusterFilter);
        if (atoms.size() == 2 && atoms[0].type == Atom::Type::Symbol)
        {
            const std::string_view word = atoms[0].symbol;
            float* field = nullptr;
            if (word == "start")
                field = early ? &s.early_start : &s.cluster_start;
            else if (word == "end")
                field = early ? &s.early_end : &s.cluster_end;
            else if (word == "distr")
                field = early ? &s.early_distr : &s.cluster_distr;
            else if (early && word == "width")
                field = &s.early_width;
            else if (early && word == "shape")
                field = &s.early_shape;
            if (field != nullptr)
            {
                *field = atoms[1].plainNumber();
                structureStep();
                return true;
            }
        }
        reportInvalidMessage(console, std::string("invalid ") + (early ? "early" : "cluster") + " parameters", atoms);
        return false;
    }
    static constexpr const char* structureNames[] = {"early_start",   "early_end",   "early_distr",
                                                     "early_width",   "early_shape", "cluster_start",
                                                     "cluster_end",   "cluster_distr", "reverb_start"};
    float* structureFields[] = {&s.early_start,   &s.early_end,   &s.early_distr,
                                &s.early_width,   &s.early_shape, &s.cluster_start,
                                &s.cluster_end,   &s.cluster_distr, &s.reverb_start};
    for (std::size_t i = 0; i < std::size(structureNames); ++i)
        if (is(name, structureNames[i]))
        {
            *structureFields[i] = number;
            structureStep();
            return true;
        }
    if (is(name, "modaldensity"))
    {
        s.modaldensity = number;
        reverbStep();
        return true;
    }
    console.error("unknown attribute " + std::string(name));
    return false;
}

void TarvoverbCore::reverbStep()
{
    Quor::TarvoVerb* engine = s.processor;
    if (engine == nullptr)
        return;
    engine->setReverbTimes({s.tr0, s.trl, s.trm, s.trh, s.fl, s.fh}, s.gain);
    engine->setReverbDensity(s.modaldensity);
    engine->setAirEnabled(s.air != 0);
    engine->setAirCutoff(s.airfreq);
    engine->setInfinite(s.infinite != 0);
}

void TarvoverbCore::structureStep()
{
    Quor::TarvoVerb* engine = s.processor;
    if (engine == nullptr)
        return;
    engine->setEarlyMin(s.early_start);
    engine->setEarlyMax(s.early_end);
    engine->setEarlyDistribution(s.early_distr);
    engine->setClusterMin(s.cluster_start);
    engine->setClusterMax(s.cluster_end);
    engine->setClusterDistribution(s.cluster_distr);
    engine->setReverbMin(s.reverb_start);
    engine->setEarlyWidth(s.early_width);
    engine->setEarlyShape(s.early_shape);
}

void TarvoverbCore::sendSourcePositions()
{
    if (s.processor == nullptr)
        return;
    for (std::int64_t i = 0; i < s.numsources; ++i)
    {
        const float* p = s.sourcespositions + 3 * i;
        s.processor->setSourcePosition(static_cast<std::uint32_t>(i), ondo::Point3(p[0], p[1], p[2]));
    }
}

void TarvoverbCore::speakersStep()
{
    if (s.processor == nullptr || s.numspeakers <= 0)
        return;
    try
    {
        ondo::Point3Array positions(static_cast<std::size_t>(s.numspeakers));
        for (std::int64_t i = 0; i < s.numspeakers; ++i)
        {
            const float* p = s.speakerspositions + 3 * i;
            positions[static_cast<std::size_t>(i)] = ondo::Point3(p[0], p[1], p[2]);
        }
        s.processor->setSpeakerPositions(positions);
        // The panners have changed: every source is placed again.
        sendSourcePositions();
    }
    catch (const ondo::Exception& failure)
    {
        console.error(failure.getMessage());
    }
    catch (const std::bad_alloc& failure)
    {
        console.error(std::string("out of memory : ") + failure.what());
    }
    catch (...)
    {
        console.error("unknown exception");
    }
}

bool TarvoverbCore::sourceMessage(Atoms atoms)
{
    const long long number = atoms.empty() ? 0 : atoms.front().integer();
    if (number < 1 || number > s.numsources)
    {
        console.error("invalid source index " + std::to_string(number));
        return false;
    }
    float* stored = s.sourcespositions + 3 * (number - 1);
    ondo::Point3 point(stored[0], stored[1], stored[2]);
    if (!parseSourceCoordinates(atoms.subspan(1), point, console))
        return false;
    stored[0] = point.x;
    stored[1] = point.y;
    stored[2] = point.z;
    if (s.processor != nullptr)
        s.processor->setSourcePosition(static_cast<std::uint32_t>(number - 1), point);
    return true;
}

bool TarvoverbCore::speakerMessage(Atoms atoms)
{
    std::int32_t index = 0; // from 0
    ondo::Point3 point;
    if (!parseSpeaker(atoms, static_cast<std::int32_t>(s.numspeakers), index, point, console))
        return false;
    float* stored = s.speakerspositions + 3 * index;
    stored[0] = point.x;
    stored[1] = point.y;
    stored[2] = point.z;
    speakersStep();
    return true;
}

bool TarvoverbCore::speakersMessage(Atoms atoms)
{
    if (s.numspeakers <= 0)
        return false;
    ondo::Point3Array positions(static_cast<std::size_t>(s.numspeakers));
    for (std::int64_t i = 0; i < s.numspeakers; ++i)
        positions[static_cast<std::size_t>(i)] =
            ondo::Point3(s.speakerspositions[3 * i], s.speakerspositions[3 * i + 1], s.speakerspositions[3 * i + 2]);
    if (!parseSpeakers(atoms, positions, console))
        return false;
    for (std::int64_t i = 0; i < s.numspeakers; ++i)
    {
        const ondo::Point3& p = positions[static_cast<std::size_t>(i)];
        s.speakerspositions[3 * i] = p.x;
        s.speakerspositions[3 * i + 1] = p.y;
        s.speakerspositions[3 * i + 2] = p.z;
    }
    speakersStep();
    return true;
}

std::optional<TarvoverbCore::AttributeChange> TarvoverbCore::reverbMessage(Atoms atoms)
{
    if (matchesPattern("sn", atoms, true))
    {
        const std::string_view word = atoms[0].symbol;
        static constexpr const char* names[] = {"airfreq", "tr0", "trl",          "trm",  "trh",
                                                "fl",      "fh",  "modaldensity", "gain", "infinite", "air"};
        const AttributeEntry* entry = word == "start" ? findAttribute("reverb_start") : nullptr;
        for (const char* candidate : names)
            if (word == candidate)
                entry = findAttribute(candidate);
        if (entry != nullptr)
        {
            const double value = entry->type == AttributeEntry::Type::Long ? static_cast<double>(atoms[1].integer())
                                                                         : static_cast<double>(atoms[1].plainNumber());
            return AttributeChange{entry, value};
        }
    }
    reportInvalidMessage(console, "unknwon message : reverb", atoms);
    return std::nullopt;
}

int TarvoverbCore::liveLength(const AttributeEntry& entry) const
{
    switch (entry.length)
    {
        case AttributeEntry::Length::Single: return 1;
        case AttributeEntry::Length::SourcesCount: return s.sourcesCount;
        case AttributeEntry::Length::SpeakersCount: return s.speakersCount;
        case AttributeEntry::Length::NumInternals: return s.numinternals;
        case AttributeEntry::Length::Fixed6: return 6;
    }
    return 0;
}

std::vector<Atom> TarvoverbCore::valuesOf(const AttributeEntry& entry) const
{
    std::vector<Atom> values;
    const auto* base = reinterpret_cast<const unsigned char*>(&s) + entry.offset;
    for (int i = 0; i < std::clamp(liveLength(entry), 0, entry.capacity); ++i)
    {
        if (entry.type == AttributeEntry::Type::Long)
        {
            std::int64_t v = 0;
            std::memcpy(&v, base + 8 * i, 8);
            values.push_back(Atom::fromLong(v));
        }
        else if (entry.type == AttributeEntry::Type::Float32)
        {
            float v = 0.0f;
            std::memcpy(&v, base + 4 * i, 4);
            values.push_back(Atom::fromFloat(v));
        }
    }
    return values;
}

std::string TarvoverbCore::inletText(long index) const
{
    if (s.processor == nullptr || index < 0 || index >= static_cast<long>(s.processor->getNumInputs()))
        return {};
    return s.processor->getInletName(static_cast<std::int32_t>(index));
}

std::string TarvoverbCore::outletText(long index) const
{
    if (s.processor == nullptr || index < 0 || index >= static_cast<long>(s.processor->getNumOutputs()))
        return {};
    return s.processor->getOutletName(static_cast<std::int32_t>(index));
}

std::vector<std::string> TarvoverbCore::describeDsp() const
{
    return s.processor != nullptr ? s.processor->getDescription() : std::vector<std::string>{};
}

double TarvoverbCore::clip(const AttributeEntry& entry, double value)
{
    return entry.clip ? std::clamp(value, entry.minimum, entry.maximum) : value;
}
bool TarvoverbCore::oscMessage(std::string_view address, Atoms atoms)
{
    if (s.processor == nullptr)
        return false;
    try
    {
        ondo::OSCMessage message(address);
        for (const Atom& atom : atoms)
        {
            if (atom.type == Atom::Type::Long)
                message.addArgument(static_cast<std::int32_t>(atom.integer()));
            else if (atom.type == Atom::Type::Float)
                message.addArgument(static_cast<float>(atom.number));
            else if (atom.type == Atom::Type::Symbol)
                message.addArgument(std::string(atom.symbol).c_str());
        }
        std::int32_t context = ondo::OscInterface::setContext;
        const bool understood = s.processor->processOscMessage(message, context);
        // Even a preset load that refused some of its lines applied the others.
        adoptEngineState();
        if (understood)
            return true;
        if (message.matches("/preset/load"))
            console.error("preset " + renderAtoms(atoms) + ": the lines above were not understood");
        else
            reportInvalidMessage(console, "unknown OSC message : " + std::string(address), atoms);
    }
    catch (const ondo::Exception& failure)
    {
        console.error(failure.getMessage());
    }
    catch (const std::bad_alloc& failure)
    {
        console.error(std::string("out of memory : ") + failure.what());
    }
    return false;
}

void TarvoverbCore::adoptEngineState()
{
    const Quor::TarvoVerb& engine = *s.processor;
    const Quor::TarvoVerb::ParametersRecord& p = engine.getParameters();
    const auto shelf = [](float* field, const ondo::HLShelfParameters& v) {
        const float values[] = {v.G0, v.Gl, v.Gm, v.Gh, v.fl, v.fh};
        std::copy_n(values, 6, field);
    };
    shelf(s.direct, p.directFilterParams);
    shelf(s.room, p.roomFilterParams);
    shelf(s.early, p.earlyFilterParams);
    shelf(s.cluster, p.clusterFilterParams);
    s.early_start = p.earlyMin;
    s.early_end = p.earlyMax;
    s.early_distr = p.earlyDistribution;
    s.early_width = p.earlyWidth;
    s.early_shape = p.earlyShape;
    s.cluster_start = p.clusterMin;
    s.cluster_end = p.clusterMax;
    s.cluster_distr = p.clusterDistribution;
    s.reverb_start = p.reverbMin;
    s.tr0 = p.tr0;
    s.trl = p.trl;
    s.trm = p.trm;
    s.trh = p.trh;
    s.fl = p.fl;
    s.fh = p.fh;
    s.gain = p.reverbGainDb;
    s.modaldensity = p.reverbDensity;
    s.air = p.airEnabled ? 1 : 0;
    s.airfreq = engine.getReverb().getAirCutoff();
    s.infinite = engine.getReverb().isInfinite() ? 1 : 0;
    const auto points = [](float* field, const ondo::Point3Array& positions, std::int64_t count) {
        for (std::int64_t i = 0; i < count && static_cast<std::size_t>(i) < positions.size(); ++i)
        {
            const ondo::Point3& q = positions[static_cast<std::size_t>(i)];
            field[3 * i] = q.x;
            field[3 * i + 1] = q.y;
            field[3 * i + 2] = q.z;
        }
    };
    points(s.sourcespositions, engine.getSourcePositions(), s.numsources);
    points(s.speakerspositions, engine.getSpeakerPositions(), s.numspeakers);
}

bool TarvoverbCore::presetMessage(Atoms atoms, const std::string& directory)
{
    const bool understood = matchesPattern("ss", atoms, true) && (atoms[0].symbol == "load" || atoms[0].symbol == "export");
    if (!understood)
    {
        reportInvalidMessage(console, "invalid message : preset", atoms);
        return false;
    }
    std::filesystem::path file(atoms[1].symbol);
    if (file.is_relative() && !directory.empty())
        file = std::filesystem::path(directory) / file;
    const std::string path = file.string();
    const Atom argument = Atom::fromSymbol(path);
    return oscMessage(atoms[0].symbol == "load" ? "/preset/load" : "/preset/export", Atoms(&argument, 1));
}
} // namespace tarvo::host
