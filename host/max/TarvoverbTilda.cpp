#include "TarvoverbTilda.h"

#include "MaxXmlDocumentation.h"
#include "QuorMaxMspExternalDocumentation.h"
#include "TarvoMaxServices.h"
#include "TarvoverbAttributeTable.h"
#include "TarvoverbCore.h"
#include "TarvoverbServices.h"
#include "reverb/QuorTarvoVerb.h"
#include "text/TarvoDspVersion.h"

#include <cstddef>
#include <cstdio>
#include <string>

t_class* tarvoverb_class = nullptr;

namespace
{
using tarvo::host::AttributeEntry;

/// The core's reports, tagged with the object.
class MaxConsole : public tarvo::host::Console
{
public:
    explicit MaxConsole(void* object) : x(static_cast<t_object*>(object)) {}
    void post(const std::string& text) override { object_post(x, "%s", text.c_str()); }
    void warn(const std::string& text) override { object_warn(x, "%s", text.c_str()); }
    void error(const std::string& text) override { object_error(x, "%s", text.c_str()); }
    void bug(const std::string& text) override { object_bug(x, "%s", text.c_str()); }

private:
    t_object* x;
};

/// The core over an instance's state for the length of one call.
struct Core
{
    explicit Core(TarvoverbTilda* x) : console(x), core(x->state, console) {}
    MaxConsole console;
    tarvo::host::TarvoverbCore core;
};

void notifyChange(TarvoverbTilda* x)
{
    object_notify(x, _sym_attr_modified, nullptr);
}

void* callMethod(void* x, const char* selector, void* p1 = nullptr, void* p2 = nullptr, void* p3 = nullptr,
                 void* p4 = nullptr)
{
    return object_method_imp(x, gensym(selector), p1, p2, p3, p4, nullptr, nullptr, nullptr, nullptr);
}

/// A function as the host's generic method type; the host calls it back with its own
/// signature. The detour through `void (*)()` says the cast is meant.
template <typename Function>
method asMethod(Function f)
{
    return reinterpret_cast<method>(reinterpret_cast<void (*)()>(f));
}

constexpr long stateOffset = static_cast<long>(offsetof(TarvoverbTilda, state));

// ---- attributes ----

t_max_err tarvoverb_setattr(TarvoverbTilda* x, void* attr, long argc, t_atom* argv)
{
    if (argc == 0 || argv == nullptr)
        return MAX_ERR_NONE;
    auto* name = static_cast<t_symbol*>(callMethod(attr, "getname"));
    if (name == nullptr)
        return MAX_ERR_GENERIC;
    Core c(x);
    if (c.core.setAttribute(name->s_name, tarvomax_atoms(argc, argv)))
        notifyChange(x);
    return MAX_ERR_NONE;
}

t_max_err tarvoverb_setautomute(TarvoverbTilda* x, void* attr, long argc, t_atom* argv)
{
    auto* name = static_cast<t_symbol*>(callMethod(attr, "getname"));
    if (argc == 0 || argv == nullptr || name != gensym("automute") || x->state.processor == nullptr)
        return MAX_ERR_NONE;
    Core c(x);
    if (c.core.setAutomute(static_cast<float>(atom_getfloat(argv))))
        notifyChange(x);
    return MAX_ERR_NONE;
}

long countOffset(const AttributeEntry& entry)
{
    using L = AttributeEntry::Length;
    using tarvo::host::ObjectState;
    switch (entry.length)
    {
        case L::SourcesCount: return stateOffset + static_cast<long>(offsetof(ObjectState, sourcesCount));
        case L::SpeakersCount: return stateOffset + static_cast<long>(offsetof(ObjectState, speakersCount));
        case L::NumInternals: return stateOffset + static_cast<long>(offsetof(ObjectState, numinternals));
        default: return 0; // a fixed length
    }
}

void addTextProperty(t_class* c, const char* attribute, const char* key, const char* text)
{
    if (text != nullptr && text[0] != '\0')
        class_attr_addattr_format(c, attribute, key, _sym_symbol, 0, "s", gensym_tr(text));
}

void addDocumentationAttribute(t_class* c, const char* name, long offset, const std::string& value)
{
    t_object* attr = attr_offset_new(name, _sym_symbol, ATTR_SET_OPAQUE | ATTR_SET_OPAQUE_USER, nullptr, nullptr, offset);
    class_addattr(c, attr);
    class_attr_addattr_parse(c, name, "invisible", _sym_long, 0, "1");
    addTextProperty(c, name, "category", "documentation");
    class_attr_addattr_format(c, name, "label", _sym_symbol, 0, "s", gensym_tr(value.c_str()));
}

void declareAttributes(t_class* c)
{
    const std::string className = "tarvoverb~";
    addDocumentationAttribute(c, "classdigest", offsetof(TarvoverbTilda, classdigest),
                              Quor::MaxMspExternalDocumentation::digestOf(className));
    addDocumentationAttribute(c, "classdescription", offsetof(TarvoverbTilda, classdescription),
                              Quor::MaxMspExternalDocumentation::descriptionOf(className));
    addDocumentationAttribute(c, "classseealso", offsetof(TarvoverbTilda, classseealso),
                              Quor::MaxMspExternalDocumentation::seeAlsoOf(className));
    addDocumentationAttribute(c, "externalversion", offsetof(TarvoverbTilda, externalversion),
                              tarvo::host::externalVersion());

    for (const AttributeEntry& entry : tarvo::host::attributeTable())
    {
        t_symbol* type = entry.type == AttributeEntry::Type::Long ? _sym_long : _sym_float32;
        method setter = nullptr;
        if (entry.setter == AttributeEntry::Setter::Common)
            setter = asMethod(tarvoverb_setattr);
        else if (entry.setter == AttributeEntry::Setter::Own)
            setter = asMethod(tarvoverb_setautomute);
        const long offset = stateOffset + static_cast<long>(entry.offset);
        t_object* attr = entry.length == AttributeEntry::Length::Single
                             ? attr_offset_new(entry.name, type, 0, nullptr, setter, offset)
                             : attr_offset_array_new(entry.name, type, entry.capacity, 0, nullptr, setter,
                                                     countOffset(entry), offset);
        class_addattr(c, attr);
        if (entry.clip)
            attr_addfilter_clip(attr, entry.minimum, entry.maximum, 1, 1);
        if (entry.rangeProperties)
        {
            class_attr_addattr_parse(c, entry.name, "minvalue", _sym_symbol, 0,
                                     tarvo::host::formatPropertyNumber(entry.minimum).c_str());
            class_attr_addattr_parse(c, entry.name, "maxvalue", _sym_symbol, 0,
                                     tarvo::host::formatPropertyNumber(entry.maximum).c_str());
        }
        if (entry.defaultValue[0] != '\0')
            class_attr_addattr_parse(c, entry.name, "default", type, 0, entry.defaultValue);
        addTextProperty(c, entry.name, "label", entry.label);
        addTextProperty(c, entry.name, "style", entry.style);
        addTextProperty(c, entry.name, "units", entry.units);
        addTextProperty(c, entry.name, "category", entry.category);
        addTextProperty(c, entry.name, "description", entry.description);
        if (entry.order > 0)
            class_attr_addattr_parse(c, entry.name, "order", _sym_long, 0, std::to_string(entry.order).c_str());
        if (entry.dontReset)
            class_attr_addattr_parse(c, entry.name, "dontreset", _sym_long, 0, "1");
    }
    // An order for an attribute the class does not have: the host ignores it.
    class_attr_addattr_parse(c, "reverb_distr", "order", _sym_long, 0, "29");
}

// ---- lifecycle ----

void tarvoverb_free(TarvoverbTilda* x)
{
    if (x == nullptr)
        return;
    if (x->dspReady)
        z_dsp_free(&x->header);
    Core(x).core.destroyEngine();
}

/// Gives up a construction half made.
void* abandon(TarvoverbTilda* x)
{
    object_free(x);
    return nullptr;
}

void* tarvoverb_new(t_symbol*, long argc, t_atom* argv)
{
    auto* x = static_cast<TarvoverbTilda*>(object_alloc(tarvoverb_class));
    if (x == nullptr)
    {
        object_error(nullptr, "couldnt allocate memory");
        return nullptr;
    }
    x->state.processor = nullptr;
    x->state.initialized = false;
    x->dspReady = false;

    t_dictionary* d = object_dictionaryarg(argc, argv);
    if (d == nullptr)
    {
        object_bug(reinterpret_cast<t_object*>(x), "couldnt process dictionnary");
        return abandon(x);
    }
    // The counts first, through the attributes so that their clip filters apply.
    bool countsRead = true;
    for (const char* name : {"numsources", "numspeakers", "numinternals"})
    {
        t_symbol* key = gensym(name);
        t_atom value{};
        if (dictionary_hasentry(d, key) == 0)
        {
            object_error(reinterpret_cast<t_object*>(x), "dictionary doesnt have entry for %s", name);
            countsRead = false;
        }
        else if (dictionary_getatom(d, key, &value) != MAX_ERR_NONE)
        {
            object_error(reinterpret_cast<t_object*>(x), "error getting atom value from dict for entry %s", name);
            countsRead = false;
        }
        else
            object_attr_setvalueof(x, key, 1, &value);
    }
    if (!countsRead)
    {
        object_error(reinterpret_cast<t_object*>(x), "error parsing dictionary");
        return abandon(x);
    }

    Core(x).core.createEngine();
    if (x->state.processor == nullptr)
    {
        object_error(reinterpret_cast<t_object*>(x), "couldnt create object");
        return abandon(x);
    }

    tarvomax_resetall(x);
    attr_dictionary_check(x, d);
    attr_dictionary_process(x, d);

    object_obex_store(x, _sym_dumpout, static_cast<t_object*>(outlet_new(x, nullptr)));
    z_dsp_setup(&x->header, static_cast<long>(x->state.numsources));
    for (long i = 0; i < x->state.numspeakers; ++i)
        outlet_new(x, "signal");
    x->header.z_misc |= Z_NO_INPLACE;
    x->dspReady = true;
    return x;
}

// ---- signal ----

void tarvoverb_perform64(t_object* object, t_object*, double** ins, long, double** outs, long, long sampleframes,
                         long, void*)
{
    auto* x = reinterpret_cast<TarvoverbTilda*>(object);
    Quor::TarvoVerb* engine = x->state.processor;
    if (engine != nullptr)
        engine->perform(outs, ins, static_cast<std::uint32_t>(sampleframes), static_cast<std::int32_t>(x->state.mute),
                        static_cast<std::int32_t>(x->state.bypass), static_cast<std::int32_t>(x->header.z_disabled));
}

void tarvoverb_dsp64(TarvoverbTilda* x, t_object* dsp64, short* count, double samplerate, long maxvectorsize, long)
{
    Quor::TarvoVerb* engine = x->state.processor;
    if (engine == nullptr)
        return;
    // The core readies the engine as if it had been built at this rate and vector size.
    Core(x).core.prepare(static_cast<float>(samplerate), static_cast<std::uint32_t>(maxvectorsize));
    engine->setConnections(count);
    callMethod(dsp64, "dsp_add64", x, reinterpret_cast<void*>(&tarvoverb_perform64), nullptr, nullptr);
}

void tarvoverb_assist(TarvoverbTilda* x, void*, long io, long index, char* s)
{
    const Core c(x);
    const std::string text = io == ASSIST_INLET ? c.core.inletText(index) : c.core.outletText(index);
    std::snprintf(s, 256, "%s", text.c_str());
}

void tarvoverb_clear(TarvoverbTilda* x)
{
    if (x->state.processor != nullptr)
        x->state.processor->clear();
}

void tarvoverb_postdspstate(TarvoverbTilda* x)
{
    for (const std::string& line : Core(x).core.describeDsp())
        object_post(reinterpret_cast<t_object*>(x), "%s", line.c_str());
}

// ---- messages ----

void tarvoverb_reverb(TarvoverbTilda* x, t_symbol*, long argc, t_atom* argv)
{
    Core c(x);
    const auto change = c.core.reverbMessage(tarvomax_atoms(argc, argv));
    if (!change)
        return;
    t_symbol* name = gensym(change->attribute->name);
    if (change->attribute->type == AttributeEntry::Type::Long)
        object_attr_setlong(x, name, static_cast<t_atom_long>(change->value));
    else
        object_attr_setfloat(x, name, change->value);
}

void tarvoverb_source(TarvoverbTilda* x, t_symbol*, long argc, t_atom* argv)
{
    Core c(x);
    if (c.core.sourceMessage(tarvomax_atoms(argc, argv)))
        notifyChange(x);
}

void tarvoverb_speaker(TarvoverbTilda* x, t_symbol*, long argc, t_atom* argv)
{
    Core c(x);
    if (c.core.speakerMessage(tarvomax_atoms(argc, argv)))
        notifyChange(x);
}

void tarvoverb_speakers(TarvoverbTilda* x, t_symbol*, long argc, t_atom* argv)
{
    Core c(x);
    if (c.core.speakersMessage(tarvomax_atoms(argc, argv)))
        notifyChange(x);
}

void tarvoverb_generatexml(TarvoverbTilda* x, t_symbol*, long argc, t_atom* argv)
{
    const char* directory = (argc >= 1 && argv[0].a_type == A_SYM) ? atom_getsym(argv)->s_name : ".";
    MaxXmlDocumentation(x, directory, "./_c74_ref.xsl").write();
}

/// Adds a message; a failure is posted and set-up goes on.
void addMessage(t_class* c, method m, const char* name, int type)
{
    const t_max_err error = type == A_NOTHING ? class_addmethod(c, m, name, A_NOTHING)
                                              : class_addmethod(c, m, name, type, A_NOTHING);
    if (error != MAX_ERR_NONE)
        object_post(nullptr, "error when adding method %s", name);
}

void declareMessages(t_class* c)
{
    const auto addMethodDocumentation = &MaxXmlDocumentation::addMethodDocumentation;
    const auto addArgumentDocumentation = &MaxXmlDocumentation::addArgumentDocumentation;
    using Quor::MaxMspExternalDocumentation;

    addMessage(c, asMethod(tarvoverb_generatexml), "generatexml", A_GIMME);
    addMethodDocumentation(c, "generatexml", "this method is for service use only.");
    addMessage(c, asMethod(tarvomax_version), "version", A_NOTHING);
    addMethodDocumentation(c, "version", "post version of the object to the Max window.");
    addMessage(c, asMethod(tarvomax_postattributes), "postattributes", A_GIMME);
    addMethodDocumentation(c, "postattributes",
                           "post the value of an attribute to Max window. <br/> if no attribute name is specified "
                           "this post the value of all attributes.");
    addArgumentDocumentation(c, "postattributes", "name of the attribute", "symbol");
    addMessage(c, asMethod(tarvomax_getvalueof), "getvalueof", A_CANT);
    addMessage(c, asMethod(tarvomax_setvalueof), "setvalueof", A_CANT);
    addMessage(c, asMethod(tarvomax_preset), "preset", A_NOTHING);
    addMessage(c, asMethod(tarvomax_recallpreset), "recallpreset", A_GIMME);
    addMethodDocumentation(c, "recallpreset",
                           "recalls a state stored by a <o>preset</o> object; keeps the object compatible with it.");
    addMessage(c, asMethod(tarvomax_exportdict), "exportdict", A_GIMME);
    addMethodDocumentation(c, "exportdict", "export current state as a JSON file.");
    addMessage(c, asMethod(tarvomax_dumpdict), "dumpdict", A_GIMME);
    addMethodDocumentation(c, "dumpdict", "outputs current state as a dictionary (through the dump outlet).");
    addMessage(c, asMethod(tarvomax_readdict), "dictionary", A_GIMME);
    addMethodDocumentation(c, "readdict", "receives and parses a dictionary (of attributes).");
    addMessage(c, asMethod(tarvomax_reset), "reset", A_GIMME);
    addMethodDocumentation(c, "reset",
                           "reset one attribute to its default value. <br/> if no attribute name is specified this "
                           "will reset the value of all attributes.");
    addArgumentDocumentation(c, "reset", "name of the attribute", "symbol");
    addMessage(c, asMethod(tarvomax_postdspstatus), "postdspstatus", A_NOTHING);
    addMethodDocumentation(c, "postdspstatus", "post information about the dsp status in the Max window.");
    addMessage(c, asMethod(tarvomax_dump), "dump", A_GIMME);
    addMethodDocumentation(c, "dump",
                           "dump value of an attribute. <br/> if no attribute-name is specified this will dump the "
                           "value of all attributes.");
    addArgumentDocumentation(c, "dump", "name of the attribute", "symbol");
    addMessage(c, asMethod(tarvoverb_dsp64), "dsp64", A_CANT);
    addMessage(c, asMethod(tarvoverb_postdspstate), "postdspstate", A_NOTHING);
    addMethodDocumentation(c, "postdspstate", "post information about the dsp connections.");
    addMessage(c, asMethod(tarvoverb_assist), "assist", A_CANT);
    addMessage(c, asMethod(tarvoverb_clear), "clear", A_NOTHING);
    addMethodDocumentation(c, "clear", MaxMspExternalDocumentation::getMethodDescription("clear").c_str());
    addMessage(c, asMethod(tarvoverb_reverb), "reverb", A_GIMME);
    addMessage(c, asMethod(tarvoverb_source), "source", A_GIMME);
    for (const char* name : {"loudspeakers", "speakers"})
    {
        addMessage(c, asMethod(tarvoverb_speakers), name, A_GIMME);
        addMethodDocumentation(c, name, MaxMspExternalDocumentation::getMethodDescription(name).c_str());
    }
    for (const char* name : {"loudspeaker", "speaker"})
    {
        addMessage(c, asMethod(tarvoverb_speaker), name, A_GIMME);
        addMethodDocumentation(c, name, MaxMspExternalDocumentation::getMethodDescription(name).c_str());
    }
    addArgumentDocumentation(c, "speaker", "speaker index", "int");
    addArgumentDocumentation(c, "speaker", "name of the property", "symbol");
    addArgumentDocumentation(c, "speaker", "value", "list of int or float or symbol");
}
} // namespace

/// The host's entry point: builds the class once.
void ext_main(void*)
{
    common_symbols_init();
    object_post(nullptr, "%s", ondo::getLibraryVersionLine(true).c_str());

    t_class* c = class_new("tarvoverb~", asMethod(tarvoverb_new), asMethod(tarvoverb_free),
                           static_cast<long>(sizeof(TarvoverbTilda)), nullptr, A_GIMME, 0);
    c->c_flags |= CLASS_FLAG_NEWDICTIONARY;
    declareAttributes(c);
    declareMessages(c);
    class_dspinit(c);
    class_register(CLASS_BOX, c);
    tarvoverb_class = c;
}
