// tarvoverb~ for Pure Data: a skin over the host-neutral core. Pd hands creation arguments,
// messages and the DSP set-up here; the core stores attributes, parses notations and drives
// the engine, and its reports come back to Pd's window.

#include "m_pd.h"

#include "TarvoverbAttributeStore.h"
#include "TarvoverbCore.h"
#include "TarvoverbNotation.h"
#include "TarvoverbServices.h"
#include "osc/TarvoDspMaxConsoleNotifier.h"
#include "reverb/QuorTarvoVerb.h"
#include "text/TarvoDspVersion.h"

#ifdef TARVO_PD_COUNT_ALLOCATIONS
#include "AllocationCounter.h"
#endif

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <vector>

static_assert(sizeof(t_sample) == sizeof(float), "the engine processes 32-bit blocks: build against a 32-bit Pd");

namespace
{
using tarvo::host::Atom;
using tarvo::host::AttributeEntry;

t_class* tarvoverbClass = nullptr;

/// The core's reports in Pd's window. Errors go through `pd_error` with the object, so that
/// "Find last error" shows it; while the object is being made there is none yet.
class PdConsole : public tarvo::host::Console
{
public:
    void post(const std::string& text) override { ::post("tarvoverb~: %s", text.c_str()); }
    void warn(const std::string& text) override { ::post("warning: tarvoverb~: %s", text.c_str()); }
    void error(const std::string& text) override { pd_error(object, "tarvoverb~: %s", text.c_str()); }
    void bug(const std::string& text) override { pd_error(object, "tarvoverb~: bug: %s", text.c_str()); }

    const void* object = nullptr;
};

/// The engine's own texts (its OSC services, preset loads) in the same window. Pd runs
/// messages and audio on one thread, so a notification from the audio routine is safe here.
class EngineListener : public ondo::MaxConsoleNotifier::Listener
{
public:
    explicit EngineListener(PdConsole& console) : console(console) {}
    void notify(ondo::MaxConsoleNotifier&, const std::int32_t& level, const ondo::String& text) override
    {
        if (level >= ondo::MaxConsoleNotifier::problem)
            console.error(text);
        else
            console.post(text);
    }

private:
    PdConsole& console;
};

/// What an instance holds beside Pd's header: the state the core works on and the buffers
/// of the audio routine.
struct Instance
{
    tarvo::host::ObjectState state{};
    PdConsole console;
    tarvo::host::TarvoverbCore core{state, console};
    tarvo::host::AttributeStore store{core, state, console};
    tarvo::host::Services services{core, store, console};
    EngineListener listener{console};
    t_canvas* canvas = nullptr;
    t_outlet* dumpOutlet = nullptr;

    // The audio routine's view of Pd's signal vectors, set by the DSP method.
    std::vector<t_sample*> pdInputs;
    std::vector<t_sample*> pdOutputs;
    /// Pd may hand one buffer as an input and an output: inputs are copied here first.
    std::vector<float> inputCopies;
    std::vector<float*> inputs;

#ifdef TARVO_PD_COUNT_ALLOCATIONS
    std::size_t performAllocations = 0;
    std::size_t performBlocks = 0;
#endif
};

struct TarvoverbPd
{
    t_object header;
    t_float mainInletScalar; ///< Pd's scalar for the leftmost signal inlet
    Instance* self;
};

/// Pd's atoms as the core reads them. Pd has only floats: whole ones become whole numbers,
/// so that texts and integer attributes read them as the Max object does.
std::vector<Atom> coreAtoms(int argc, const t_atom* argv)
{
    std::vector<Atom> atoms;
    atoms.reserve(static_cast<std::size_t>(argc));
    for (int i = 0; i < argc; ++i)
    {
        if (argv[i].a_type == A_FLOAT)
        {
            const double value = argv[i].a_w.w_float;
            const bool whole = std::isfinite(value) && value == std::floor(value) && std::fabs(value) < 4.0e15;
            atoms.push_back(whole ? Atom::fromLong(static_cast<long long>(value)) : Atom::fromFloat(value));
        }
        else if (argv[i].a_type == A_SYMBOL)
            atoms.push_back(Atom::fromSymbol(argv[i].a_w.w_symbol->s_name));
        else
            atoms.push_back(Atom{});
    }
    return atoms;
}

std::vector<t_atom> pdAtoms(const std::vector<Atom>& atoms)
{
    std::vector<t_atom> out(atoms.size());
    for (std::size_t i = 0; i < atoms.size(); ++i)
    {
        if (atoms[i].type == Atom::Type::Symbol)
            SETSYMBOL(&out[i], gensym(std::string(atoms[i].symbol).c_str()));
        else
            SETFLOAT(&out[i], static_cast<t_float>(atoms[i].number));
    }
    return out;
}

/// Creation arguments: up to three leading numbers (sources, speakers, internal channels),
/// then "@name values..." groups, any attribute, in any order.
struct CreationArguments
{
    std::vector<Atom> positional;
    std::vector<std::pair<std::string, std::vector<Atom>>> attributes;
    std::vector<std::string> stray;
};

CreationArguments readCreationArguments(const std::vector<Atom>& atoms)
{
    CreationArguments result;
    std::size_t i = 0;
    for (; i < atoms.size() && atoms[i].isNumber(); ++i)
        result.positional.push_back(atoms[i]);
    for (; i < atoms.size(); ++i)
    {
        const bool flag = atoms[i].type == Atom::Type::Symbol && atoms[i].symbol.size() > 1 && atoms[i].symbol[0] == '@';
        if (flag)
            result.attributes.push_back({std::string(atoms[i].symbol.substr(1)), {}});
        else if (!result.attributes.empty())
            result.attributes.back().second.push_back(atoms[i]);
        else
            result.stray.push_back(atoms[i].type == Atom::Type::Symbol ? std::string(atoms[i].symbol)
                                                                        : tarvo::host::renderAtoms({&atoms[i], 1}));
    }
    return result;
}

void destroy(TarvoverbPd* x)
{
    if (x->self == nullptr)
        return;
    if (x->self->state.processor != nullptr)
        x->self->state.processor->removeListener(&x->self->listener);
    x->self->core.destroyEngine();
    delete x->self;
    x->self = nullptr;
}

void* tarvoverb_new(t_symbol*, int argc, t_atom* argv)
{
    auto* x = reinterpret_cast<TarvoverbPd*>(pd_new(tarvoverbClass));
    x->self = new (std::nothrow) Instance;
    if (x->self == nullptr)
    {
        pd_error(nullptr, "tarvoverb~: couldnt allocate memory");
        pd_free(&x->header.ob_pd);
        return nullptr;
    }
    Instance& self = *x->self;
    self.canvas = canvas_getcurrent();

    // Creation arguments are bound to strings of this call: keep the atoms alive.
    const std::vector<Atom> atoms = coreAtoms(argc, argv);
    const CreationArguments arguments = readCreationArguments(atoms);
    const auto count = [&](const char* name, const std::vector<Atom>& value) {
        self.store.set(*tarvo::host::findAttribute(name), value);
    };
    // The counts first, through their clip filters, so that the engine is built once.
    static const char* countNames[] = {"numsources", "numspeakers", "numinternals"};
    for (const char* name : countNames)
        self.store.reset(*tarvo::host::findAttribute(name), true, false);
    if (arguments.positional.size() > 3)
        self.console.error("too many numbers: [tarvoverb~ sources speakers internals]; the rest is ignored");
    for (std::size_t i = 0; i < std::min<std::size_t>(3, arguments.positional.size()); ++i)
        count(countNames[i], {arguments.positional[i]});
    for (const auto& [name, values] : arguments.attributes)
        for (const char* countName : countNames)
            if (name == countName)
                count(countName, values);

    self.core.createEngine();
    if (self.state.processor == nullptr)
    {
        self.console.error("couldnt create object");
        destroy(x);
        pd_free(&x->header.ob_pd);
        return nullptr;
    }
    self.console.object = x;
    self.state.processor->addListener(&self.listener);

    self.store.resetAll();
    for (const std::string& word : arguments.stray)
        self.console.error("creation argument " + word + " ignored: attributes are given as @name values");
    for (const auto& [name, values] : arguments.attributes)
    {
        if (values.empty())
            self.console.error("no value for @" + name);
        else
            self.store.set(name, values);
    }

    for (std::int64_t i = 1; i < self.state.numsources; ++i)
        inlet_new(&x->header, &x->header.ob_pd, &s_signal, &s_signal);
    for (std::int64_t i = 0; i < self.state.numspeakers; ++i)
        outlet_new(&x->header, &s_signal);
    self.dumpOutlet = outlet_new(&x->header, nullptr);
    return x;
}

void tarvoverb_free(TarvoverbPd* x)
{
    destroy(x);
}

// ---- signal ----

t_int* tarvoverb_perform(t_int* w)
{
    auto* x = reinterpret_cast<TarvoverbPd*>(w[1]);
    const auto n = static_cast<std::size_t>(w[2]);
    Instance& self = *x->self;
#ifdef TARVO_PD_COUNT_ALLOCATIONS
    const std::size_t before = tarvo::testing::threadAllocationCount();
#endif
    for (std::size_t c = 0; c < self.pdInputs.size(); ++c)
        std::memcpy(self.inputs[c], self.pdInputs[c], n * sizeof(float));
    Quor::TarvoVerb& engine = *self.state.processor;
    engine.setMute(self.state.mute == 1);
    engine.setBypass(self.state.bypass == 1);
    engine.processBlock(self.pdOutputs.data(), self.inputs.data(), static_cast<std::uint32_t>(n));
#ifdef TARVO_PD_COUNT_ALLOCATIONS
    self.performAllocations += tarvo::testing::threadAllocationCount() - before;
    ++self.performBlocks;
#endif
    return w + 3;
}

/// Follows the rate and block size of the canvas the object sits in, [block~] and
/// up/down-sampled subpatches included.
void tarvoverb_dsp(TarvoverbPd* x, t_signal** sp)
{
    Instance& self = *x->self;
    Quor::TarvoVerb& engine = *self.state.processor;
    const auto sources = static_cast<std::size_t>(self.state.numsources);
    const auto speakers = static_cast<std::size_t>(self.state.numspeakers);
    const auto n = static_cast<std::size_t>(sp[0]->s_n);
    self.core.prepare(sp[0]->s_sr, static_cast<std::uint32_t>(n));
    // Pd does not say what is connected: every inlet and outlet counts as connected.
    const std::vector<std::int16_t> connections(sources + speakers, 1);
    engine.setConnections(connections.data());

    self.pdInputs.resize(sources);
    self.pdOutputs.resize(speakers);
    self.inputCopies.assign(sources * n, 0.0f);
    self.inputs.resize(sources);
    for (std::size_t c = 0; c < sources; ++c)
    {
        self.pdInputs[c] = sp[c]->s_vec;
        self.inputs[c] = self.inputCopies.data() + c * n;
    }
    for (std::size_t c = 0; c < speakers; ++c)
        self.pdOutputs[c] = sp[sources + c]->s_vec;
    dsp_add(tarvoverb_perform, 2, x, static_cast<t_int>(n));
}

// ---- messages ----

std::string canvasDirectory(const Instance& self)
{
    return self.canvas != nullptr ? canvas_getdir(self.canvas)->s_name : std::string();
}

void outletDump(Instance& self, std::string_view name, const std::vector<Atom>& values)
{
    std::vector<t_atom> atoms = pdAtoms(values);
    outlet_anything(self.dumpOutlet, gensym(std::string(name).c_str()), static_cast<int>(atoms.size()), atoms.data());
}

void tarvoverb_anything(TarvoverbPd* x, t_symbol* s, int argc, t_atom* argv)
{
    Instance& self = *x->self;
    const std::vector<Atom> atoms = coreAtoms(argc, argv);
    const std::string_view name = s->s_name;
    if (!name.empty() && name[0] == '/')
        self.core.oscMessage(name, atoms);
    else if (tarvo::host::findAttribute(name) != nullptr)
        self.store.set(name, atoms);
    else
        tarvo::host::reportInvalidMessage(self.console, "unknown message : " + std::string(name), atoms);
}

void tarvoverb_source(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    x->self->core.sourceMessage(coreAtoms(argc, argv));
}

void tarvoverb_speaker(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    x->self->core.speakerMessage(coreAtoms(argc, argv));
}

void tarvoverb_speakers(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    x->self->core.speakersMessage(coreAtoms(argc, argv));
}

void tarvoverb_reverb(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    Instance& self = *x->self;
    const auto change = self.core.reverbMessage(coreAtoms(argc, argv));
    if (change)
    {
        const Atom value = change->attribute->type == AttributeEntry::Type::Long
                               ? Atom::fromLong(static_cast<long long>(change->value))
                               : Atom::fromFloat(change->value);
        self.store.set(*change->attribute, {&value, 1});
    }
}

void tarvoverb_preset(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    Instance& self = *x->self;
    self.core.presetMessage(coreAtoms(argc, argv), canvasDirectory(self));
}

void tarvoverb_dump(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    Instance& self = *x->self;
    self.services.dump(coreAtoms(argc, argv),
                       [&self](std::string_view name, const std::vector<Atom>& values) { outletDump(self, name, values); });
}

void tarvoverb_postattributes(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    x->self->services.postAttributes(coreAtoms(argc, argv));
}

void tarvoverb_reset(TarvoverbPd* x, t_symbol*, int argc, t_atom* argv)
{
    x->self->services.reset(coreAtoms(argc, argv));
}

void tarvoverb_version(TarvoverbPd* x)
{
    x->self->services.version();
}

void tarvoverb_postdspstatus(TarvoverbPd* x)
{
    x->self->services.postDspStatus(false, canvas_dspstate != 0);
}

void tarvoverb_postdspstate(TarvoverbPd* x)
{
    for (const std::string& line : x->self->core.describeDsp())
        x->self->console.post(line);
}

void tarvoverb_clear(TarvoverbPd* x)
{
    x->self->state.processor->clear();
}

#ifdef TARVO_PD_COUNT_ALLOCATIONS
/// Test builds only: what the audio routine allocated since the object was made.
void tarvoverb_allocations(TarvoverbPd* x)
{
    const Instance& self = *x->self;
    x->self->console.post("perform allocated " + std::to_string(self.performAllocations) + " times in " +
                          std::to_string(self.performBlocks) + " blocks");
}
#endif

template <typename Function>
t_method asMethod(Function f)
{
    return reinterpret_cast<t_method>(reinterpret_cast<void (*)()>(f));
}
} // namespace

/// Pd's entry point for [tarvoverb~]: builds the class once.
extern "C" __attribute__((visibility("default"))) void tarvoverb_tilde_setup()
{
    post("%s", ondo::getLibraryVersionLine(true).c_str());
    tarvoverbClass = class_new(gensym("tarvoverb~"), reinterpret_cast<t_newmethod>(reinterpret_cast<void (*)()>(tarvoverb_new)),
                               asMethod(tarvoverb_free), sizeof(TarvoverbPd), CLASS_DEFAULT, A_GIMME, 0);
    CLASS_MAINSIGNALIN(tarvoverbClass, TarvoverbPd, mainInletScalar);
    class_addmethod(tarvoverbClass, asMethod(tarvoverb_dsp), gensym("dsp"), A_CANT, 0);
    class_addanything(tarvoverbClass, asMethod(tarvoverb_anything));
    const struct
    {
        const char* name;
        t_method method;
        bool arguments;
    } messages[] = {
        {"source", asMethod(tarvoverb_source), true},
        {"speaker", asMethod(tarvoverb_speaker), true},
        {"loudspeaker", asMethod(tarvoverb_speaker), true},
        {"speakers", asMethod(tarvoverb_speakers), true},
        {"loudspeakers", asMethod(tarvoverb_speakers), true},
        {"reverb", asMethod(tarvoverb_reverb), true},
        {"preset", asMethod(tarvoverb_preset), true},
        {"dump", asMethod(tarvoverb_dump), true},
        {"postattributes", asMethod(tarvoverb_postattributes), true},
        {"reset", asMethod(tarvoverb_reset), true},
        {"version", asMethod(tarvoverb_version), false},
        {"postdspstatus", asMethod(tarvoverb_postdspstatus), false},
        {"postdspstate", asMethod(tarvoverb_postdspstate), false},
        {"clear", asMethod(tarvoverb_clear), false},
#ifdef TARVO_PD_COUNT_ALLOCATIONS
        {"allocations", asMethod(tarvoverb_allocations), false},
#endif
    };
    for (const auto& m : messages)
    {
        if (m.arguments)
            class_addmethod(tarvoverbClass, m.method, gensym(m.name), A_GIMME, 0);
        else
            class_addmethod(tarvoverbClass, m.method, gensym(m.name), A_NULL);
    }
}
