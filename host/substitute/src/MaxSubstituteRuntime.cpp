// The host's side of the Max C API for the operations tarvoverb~ uses: symbols, classes and
// their message tables, attributes bound to fields with clip filters and named properties,
// atoms, outlets and a console that record what they are given, dictionaries and atom
// arrays, box creation from a dictionary, and the DSP set-up. It holds no knowledge of any
// object: whatever a class needs it declares through these calls.
#include "MaxSubstitute.h"

#include "ext_dictobj.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <sstream>
#include <unordered_map>

namespace tarvo::maxsubstitute
{
namespace
{
/// Everything the host hands out as an opaque pointer is one of these.
struct Thing
{
    virtual ~Thing() = default;
};

struct Attribute : Thing
{
    t_symbol* name = nullptr;
    t_symbol* type = nullptr;
    long flags = 0;
    method getter = nullptr;
    method setter = nullptr;
    long offset = 0;
    bool isArray = false;
    long size = 1;
    long offsetCount = 0;
    bool clipMin = false, clipMax = false;
    double minimum = 0.0, maximum = 0.0;
    std::vector<std::pair<t_symbol*, std::vector<t_atom>>> properties;

    std::vector<t_atom>* property(t_symbol* key)
    {
        for (auto& [k, atoms] : properties)
            if (k == key)
                return &atoms;
        return nullptr;
    }
    void setProperty(t_symbol* key, std::vector<t_atom> atoms)
    {
        if (auto* existing = property(key))
            *existing = std::move(atoms);
        else
            properties.emplace_back(key, std::move(atoms));
    }
};

struct MethodEntry
{
    t_symbol* name;
    method function;
    std::vector<int> types;
};

struct RuntimeClass
{
    t_class head; // first: the object sees a t_class
    std::string name;
    method constructor = nullptr;
    std::vector<MethodEntry> methods;
    std::vector<Attribute*> attributes;
    bool dsp = false;
};

struct Outlet : Thing
{
    void* owner = nullptr;
    std::string kind;
};

struct DspChain : Thing
{
    t_perfroutine64 routine = nullptr;
    long flags = 0;
    void* userParam = nullptr;
};

struct Instance : Thing
{
    RuntimeClass* cls = nullptr;
    std::vector<Outlet*> outlets; // in order of creation
    std::vector<OutletMessage> traffic;
    std::map<t_symbol*, t_object*> obex;
    int signalInlets = 0;
    int notifications = 0;
    bool dspSetUp = false;
    DspChain* chain = nullptr;
};

struct Entry
{
    t_symbol* key;
    t_atom atom; // A_OBJ for an owned atom array or object
    bool owned = false;
};

struct Dictionary : Thing
{
    std::vector<Entry> entries;
    ~Dictionary() override;
    Entry* find(t_symbol* key)
    {
        for (Entry& e : entries)
            if (e.key == key)
                return &e;
        return nullptr;
    }
    void put(t_symbol* key, const t_atom& atom, bool owned);
    void clear();
};

struct AtomArray : Thing
{
    std::vector<t_atom> atoms;
};

struct Binbuf : Thing
{
    std::vector<std::vector<t_atom>> lines;
};

struct Host
{
    std::mutex mutex; // control threads only: the audio path never calls the host
    std::unordered_map<std::string, std::unique_ptr<t_symbol>> symbols;
    std::unordered_map<const void*, Thing*> things;
    std::map<std::string, RuntimeClass*> classes;
    std::map<t_symbol*, Dictionary*> registered;
    std::vector<ConsoleLine> console;
    std::map<short, std::string> paths;
    std::string saveDirectory, saveFileName;
    Binbuf presetBinbuf;
    bool dspOn = false;
    long uniqueCounter = 0;
    t_common_symbols_table common{};
};

Host& host()
{
    static Host* h = new Host; // lives until the process ends, as the host does
    return *h;
}

template <typename T>
T* thingAs(const void* p)
{
    if (p == nullptr)
        return nullptr;
    std::lock_guard<std::mutex> lock(host().mutex);
    const auto it = host().things.find(p);
    return it == host().things.end() ? nullptr : dynamic_cast<T*>(it->second);
}

template <typename T>
T* adopt(T* thing, const void* key = nullptr)
{
    std::lock_guard<std::mutex> lock(host().mutex);
    host().things[key != nullptr ? key : thing] = thing;
    return thing;
}

void forget(const void* key)
{
    std::lock_guard<std::mutex> lock(host().mutex);
    host().things.erase(key);
}

void Dictionary::put(t_symbol* key, const t_atom& atom, bool owned)
{
    if (Entry* existing = find(key))
    {
        if (existing->owned)
            object_free(existing->atom.a_w.w_obj);
        existing->atom = atom;
        existing->owned = owned;
    }
    else
        entries.push_back({key, atom, owned});
}

void Dictionary::clear()
{
    for (Entry& e : entries)
        if (e.owned)
            object_free(e.atom.a_w.w_obj);
    entries.clear();
}

Dictionary::~Dictionary()
{
    clear();
}

std::string format(const char* fmt, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    const int n = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    std::string text(static_cast<std::size_t>(std::max(n, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, fmt, args);
    return text;
}

void record(ConsoleLine::Kind kind, const void* object, std::string text)
{
    std::lock_guard<std::mutex> lock(host().mutex);
    host().console.push_back({kind, object, std::move(text)});
}

RuntimeClass* classOf(const void* x)
{
    Instance* instance = thingAs<Instance>(x);
    return instance != nullptr ? instance->cls : nullptr;
}

Attribute* findAttribute(RuntimeClass* cls, t_symbol* name)
{
    if (cls == nullptr)
        return nullptr;
    for (Attribute* a : cls->attributes)
        if (a->name == name)
            return a;
    return nullptr;
}

long fieldCount(Attribute* a, const void* x)
{
    if (!a->isArray)
        return 1;
    if (a->offsetCount == 0) // an array of fixed length
        return a->size;
    long count = 0;
    std::memcpy(&count, static_cast<const char*>(x) + a->offsetCount, sizeof count);
    return std::clamp(count, 0L, a->size);
}

/// The default getter: the field's values as atoms.
std::vector<t_atom> readField(Attribute* a, const void* x)
{
    std::vector<t_atom> atoms;
    const char* base = static_cast<const char*>(x) + a->offset;
    const Host& h = host();
    for (long i = 0; i < fieldCount(a, x); ++i)
    {
        t_atom atom{};
        if (a->type == h.common.s_long)
        {
            t_atom_long v;
            std::memcpy(&v, base + i * sizeof v, sizeof v);
            atom_setlong(&atom, v);
        }
        else if (a->type == h.common.s_float32)
        {
            float v;
            std::memcpy(&v, base + i * sizeof v, sizeof v);
            atom_setfloat(&atom, v);
        }
        else if (a->type == h.common.s_float64)
        {
            double v;
            std::memcpy(&v, base + i * sizeof v, sizeof v);
            atom_setfloat(&atom, v);
        }
        else if (a->type == h.common.s_symbol)
        {
            t_symbol* v;
            std::memcpy(&v, base + i * sizeof v, sizeof v);
            atom_setsym(&atom, v);
        }
        else
            continue;
        atoms.push_back(atom);
    }
    return atoms;
}

/// The default setter: atoms into the field, and the live count of an array.
void writeField(Attribute* a, void* x, long argc, const t_atom* argv)
{
    char* base = static_cast<char*>(x) + a->offset;
    const long n = std::min(argc, a->size);
    const Host& h = host();
    for (long i = 0; i < n; ++i)
    {
        if (a->type == h.common.s_long)
        {
            const t_atom_long v = atom_getlong(argv + i);
            std::memcpy(base + i * sizeof v, &v, sizeof v);
        }
        else if (a->type == h.common.s_float32)
        {
            const auto v = static_cast<float>(atom_getfloat(argv + i));
            std::memcpy(base + i * sizeof v, &v, sizeof v);
        }
        else if (a->type == h.common.s_float64)
        {
            const double v = atom_getfloat(argv + i);
            std::memcpy(base + i * sizeof v, &v, sizeof v);
        }
        else if (a->type == h.common.s_symbol)
        {
            t_symbol* v = atom_getsym(argv + i);
            std::memcpy(base + i * sizeof v, &v, sizeof v);
        }
    }
    if (a->isArray && a->offsetCount != 0)
        std::memcpy(static_cast<char*>(x) + a->offsetCount, &n, sizeof n);
}

/// Atoms from a format string as `class_attr_addattr_format` takes them.
std::vector<t_atom> atomsFromFormat(const char* fmt, va_list args)
{
    std::vector<t_atom> atoms;
    for (const char* c = fmt; *c != '\0'; ++c)
    {
        t_atom atom{};
        switch (*c)
        {
            case 's': atom_setsym(&atom, va_arg(args, t_symbol*)); break;
            case 'l':
            case 'i': atom_setlong(&atom, va_arg(args, t_atom_long)); break;
            case 'f':
            case 'd': atom_setfloat(&atom, va_arg(args, double)); break;
            case 'o': atom_setobj(&atom, va_arg(args, void*)); break;
            default: continue;
        }
        atoms.push_back(atom);
    }
    return atoms;
}

MethodEntry* findMethod(RuntimeClass* cls, const char* name)
{
    if (cls == nullptr)
        return nullptr;
    t_symbol* s = gensym(name);
    for (MethodEntry& m : cls->methods)
        if (m.name == s)
            return &m;
    return nullptr;
}

/// A method back to the signature its class declared it with.
template <typename Function>
Function callable(method m)
{
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(m));
}

void fillCommonSymbols(t_common_symbols_table& t)
{
    t.s_attr_modified = gensym("attr_modified");
    t.s_dictionary = gensym("dictionary");
    t.s_dumpout = gensym("dumpout");
    t.s_float32 = gensym("float32");
    t.s_float64 = gensym("float64");
    t.s_long = gensym("long");
    t.s_symbol = gensym("symbol");
    t.s_atom = gensym("atom");
    t.s_list = gensym("list");
    t.s_signal = gensym("signal");
    t.s_box = gensym("box");
    t.s_nothing = gensym("");
    // The preset object's binbuf, as the host binds it while a preset is stored.
    gensym("_preset")->s_thing = reinterpret_cast<t_object*>(&host().presetBinbuf);
}
} // namespace

// ---- the test-facing side ----

const std::vector<ConsoleLine>& console()
{
    return host().console;
}

void clearConsole()
{
    std::lock_guard<std::mutex> lock(host().mutex);
    host().console.clear();
}

std::vector<std::string> consoleTexts(ConsoleLine::Kind kind)
{
    std::lock_guard<std::mutex> lock(host().mutex);
    std::vector<std::string> texts;
    for (const ConsoleLine& line : host().console)
        if (line.kind == kind)
            texts.push_back(line.text);
    return texts;
}

void loadExternal(void (*entryPoint)(void*))
{
    static std::vector<void (*)(void*)> loaded;
    if (std::find(loaded.begin(), loaded.end(), entryPoint) != loaded.end())
        return;
    loaded.push_back(entryPoint);
    common_symbols_gettable();
    entryPoint(nullptr);
}

void setDspState(bool on)
{
    host().dspOn = on;
}

void setNextSaveDialogAnswer(const std::string& directory, const std::string& fileName)
{
    host().paths[1] = directory;
    host().saveDirectory = directory;
    host().saveFileName = fileName;
}

std::vector<std::vector<t_atom>> presetLines()
{
    return host().presetBinbuf.lines;
}

void clearPresetLines()
{
    host().presetBinbuf.lines.clear();
}

std::vector<t_atom> atomsOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<t_atom> atoms;
    for (std::string word; stream >> word;)
    {
        t_atom atom{};
        char* end = nullptr;
        const double value = std::strtod(word.c_str(), &end);
        if (end != word.c_str() && *end == '\0')
        {
            if (word.find_first_of(".eE") == std::string::npos)
                atom_setlong(&atom, static_cast<t_atom_long>(std::strtoll(word.c_str(), nullptr, 10)));
            else
                atom_setfloat(&atom, value);
        }
        else
            atom_setsym(&atom, gensym(word.c_str()));
        atoms.push_back(atom);
    }
    return atoms;
}

std::string textOf(const std::vector<t_atom>& atoms)
{
    std::string text;
    char number[64];
    for (const t_atom& a : atoms)
    {
        if (!text.empty())
            text += ' ';
        if (a.a_type == A_LONG)
            std::snprintf(number, sizeof number, "%lld", static_cast<long long>(a.a_w.w_long));
        else if (a.a_type == A_FLOAT)
            std::snprintf(number, sizeof number, "%g", a.a_w.w_float);
        else if (a.a_type == A_SYM)
        {
            text += a.a_w.w_sym->s_name;
            continue;
        }
        else
            std::snprintf(number, sizeof number, "<object>");
        text += number;
    }
    return text;
}

t_dictionary* findDictionary(const std::string& name)
{
    const auto it = host().registered.find(gensym(name.c_str()));
    return it == host().registered.end() ? nullptr : reinterpret_cast<t_dictionary*>(it->second);
}

std::vector<std::string> dictionaryLines(t_dictionary* d)
{
    std::vector<std::string> lines;
    if (Dictionary* dict = thingAs<Dictionary>(d))
        for (const Entry& e : dict->entries)
        {
            std::vector<t_atom> atoms{e.atom};
            if (AtomArray* array = thingAs<AtomArray>(e.atom.a_type == A_OBJ ? e.atom.a_w.w_obj : nullptr))
                atoms = array->atoms;
            lines.push_back(std::string(e.key->s_name) + " " + textOf(atoms));
        }
    return lines;
}

Box Box::create(const std::string& className, const std::vector<std::string>& attributes)
{
    t_dictionary* d = dictionary_new();
    for (const std::string& line : attributes)
    {
        std::vector<t_atom> atoms = atomsOf(line);
        if (atoms.empty() || atoms[0].a_type != A_SYM)
            continue;
        dictionary_appendatoms(d, atoms[0].a_w.w_sym, static_cast<long>(atoms.size() - 1), atoms.data() + 1);
    }
    // A new box holds the default of every attribute that declares one.
    const auto it = host().classes.find(className);
    if (it != host().classes.end())
        for (Attribute* a : it->second->attributes)
            if (std::vector<t_atom>* value = a->property(gensym("default")); value != nullptr && !value->empty())
                if (!dictionary_hasentry(d, a->name))
                    dictionary_appendatoms(d, a->name, static_cast<long>(value->size()), value->data());
    return createFromDictionary(className, d);
}

Box Box::createFromDictionary(const std::string& className, t_dictionary* dictionary)
{
    Box box;
    const auto it = host().classes.find(className);
    if (it == host().classes.end())
    {
        record(ConsoleLine::Kind::Error, nullptr, className + ": No such object");
        return box;
    }
    std::vector<t_atom> argv;
    if (dictionary != nullptr)
    {
        t_atom a{};
        atom_setobj(&a, dictionary);
        argv.push_back(a);
    }
    using Constructor = void* (*)(t_symbol*, long, t_atom*);
    box.instance = callable<Constructor>(it->second->constructor)(gensym(className.c_str()),
                                                                          static_cast<long>(argv.size()), argv.data());
    if (dictionary != nullptr)
        object_free(dictionary);
    return box;
}

Box::Box(Box&& other) noexcept : instance(other.instance)
{
    other.instance = nullptr;
}

Box::~Box()
{
    if (instance != nullptr)
        object_free(instance);
}

bool Box::send(const std::string& line)
{
    std::vector<t_atom> atoms = atomsOf(line);
    if (atoms.empty() || atoms[0].a_type != A_SYM)
        return false;
    const std::string selector = atoms[0].a_w.w_sym->s_name;
    atoms.erase(atoms.begin());
    return send(selector, std::move(atoms));
}

bool Box::send(const std::string& selector, std::vector<t_atom> atoms)
{
    Instance* self = thingAs<Instance>(instance);
    if (self == nullptr)
        return false;
    if (MethodEntry* m = findMethod(self->cls, selector.c_str()))
    {
        if (!m->types.empty() && m->types[0] == A_GIMME)
        {
            using Gimme = void (*)(void*, t_symbol*, long, t_atom*);
            callable<Gimme>(m->function)(instance, m->name, static_cast<long>(atoms.size()), atoms.data());
            return true;
        }
        if (m->types.empty())
        {
            using Plain = void (*)(void*);
            callable<Plain>(m->function)(instance);
            return true;
        }
        // A_CANT and the rest are not messages a patch can send.
    }
    if (Attribute* a = findAttribute(self->cls, gensym(selector.c_str())))
    {
        if ((a->flags & (ATTR_SET_OPAQUE | ATTR_SET_OPAQUE_USER)) == 0)
        {
            object_attr_setvalueof(instance, a->name, static_cast<long>(atoms.size()), atoms.data());
            return true;
        }
    }
    record(ConsoleLine::Kind::Error, instance, self->cls->name + ": doesn't understand \"" + selector + "\"");
    return false;
}

std::vector<t_atom> Box::get(const std::string& attribute) const
{
    long argc = 0;
    t_atom* argv = nullptr;
    std::vector<t_atom> atoms;
    if (object_attr_getvalueof(instance, gensym(attribute.c_str()), &argc, &argv) == MAX_ERR_NONE && argv != nullptr)
        atoms.assign(argv, argv + argc);
    sysmem_freeptr(argv);
    return atoms;
}

t_max_err Box::getValueOf(long* argc, t_atom** argv)
{
    MethodEntry* m = findMethod(classOf(instance), "getvalueof");
    if (m == nullptr)
        return MAX_ERR_GENERIC;
    using Get = t_max_err (*)(void*, long*, t_atom**);
    return callable<Get>(m->function)(instance, argc, argv);
}

t_max_err Box::setValueOf(std::vector<t_atom> atoms)
{
    MethodEntry* m = findMethod(classOf(instance), "setvalueof");
    if (m == nullptr)
        return MAX_ERR_GENERIC;
    using Set = t_max_err (*)(void*, long, t_atom*);
    return callable<Set>(m->function)(instance, static_cast<long>(atoms.size()), atoms.data());
}

std::string Box::assist(long io, long index)
{
    MethodEntry* m = findMethod(classOf(instance), "assist");
    if (m == nullptr)
        return {};
    char text[512] = {0};
    using Assist = void (*)(void*, void*, long, long, char*);
    callable<Assist>(m->function)(instance, nullptr, io, index, text);
    return text;
}

void Box::dsp(double sampleRate, long maxVectorSize, std::vector<short> connectedInlets,
              std::vector<short> connectedOutlets)
{
    Instance* self = thingAs<Instance>(instance);
    MethodEntry* m = findMethod(self != nullptr ? self->cls : nullptr, "dsp64");
    if (m == nullptr)
        return;
    connectedInlets.resize(static_cast<std::size_t>(signalInlets()), 1);
    connectedOutlets.resize(static_cast<std::size_t>(signalOutlets()), 1);
    std::vector<short> counts = connectedInlets;
    counts.insert(counts.end(), connectedOutlets.begin(), connectedOutlets.end());
    if (self->chain == nullptr)
        self->chain = adopt(new DspChain);
    *self->chain = DspChain{};
    using Dsp = void (*)(void*, t_object*, short*, double, long, long);
    callable<Dsp>(m->function)(instance, reinterpret_cast<t_object*>(self->chain), counts.data(), sampleRate,
                                       maxVectorSize, 0);
}

void Box::perform(double** inputs, long numInputs, double** outputs, long numOutputs, long frames)
{
    Instance* self = thingAs<Instance>(instance);
    if (self == nullptr || self->chain == nullptr || self->chain->routine == nullptr)
        return;
    self->chain->routine(static_cast<t_object*>(instance), reinterpret_cast<t_object*>(self->chain), inputs, numInputs,
                         outputs, numOutputs, frames, self->chain->flags, self->chain->userParam);
}

bool Box::hasPerformRoutine() const
{
    Instance* self = thingAs<Instance>(instance);
    return self != nullptr && self->chain != nullptr && self->chain->routine != nullptr;
}

int Box::signalInlets() const
{
    Instance* self = thingAs<Instance>(instance);
    return self != nullptr ? self->signalInlets : 0;
}

int Box::signalOutlets() const
{
    const auto kinds = outletKinds();
    return static_cast<int>(std::count(kinds.begin(), kinds.end(), "signal"));
}

std::vector<std::string> Box::outletKinds() const
{
    std::vector<std::string> kinds;
    if (Instance* self = thingAs<Instance>(instance))
        for (auto it = self->outlets.rbegin(); it != self->outlets.rend(); ++it) // the last made is leftmost
            kinds.push_back((*it)->kind);
    return kinds;
}

const std::vector<OutletMessage>& Box::outletTraffic() const
{
    static const std::vector<OutletMessage> none;
    Instance* self = thingAs<Instance>(instance);
    return self != nullptr ? self->traffic : none;
}

void Box::clearOutletTraffic()
{
    if (Instance* self = thingAs<Instance>(instance))
        self->traffic.clear();
}

int Box::notifications() const
{
    Instance* self = thingAs<Instance>(instance);
    return self != nullptr ? self->notifications : 0;
}

void Box::setDisabled(bool disabled)
{
    if (instance != nullptr)
        static_cast<t_pxobject*>(instance)->z_disabled = disabled ? 1 : 0;
}
} // namespace tarvo::maxsubstitute

// ---- the C API ----

using namespace tarvo::maxsubstitute;

t_symbol* gensym(C74_CONST char* s)
{
    Host& h = host();
    std::lock_guard<std::mutex> lock(h.mutex);
    auto& slot = h.symbols[s != nullptr ? s : ""];
    if (!slot)
    {
        slot = std::make_unique<t_symbol>();
        const std::string& key = h.symbols.find(s != nullptr ? s : "")->first;
        slot->s_name = const_cast<char*>(key.c_str()); // keys of an unordered_map never move
        slot->s_thing = nullptr;
    }
    return slot.get();
}

t_symbol* gensym_tr(const char* s)
{
    return gensym(s);
}

char* str_tr(const char* s)
{
    return const_cast<char*>(s);
}

t_symbol* symbol_unique(void)
{
    char name[32];
    std::snprintf(name, sizeof name, "u%09ld", ++host().uniqueCounter);
    return gensym(name);
}

t_max_err symbolarray_sort(long ac, t_symbol** av)
{
    if (av == nullptr && ac > 0)
        return MAX_ERR_INVALID_PTR;
    std::sort(av, av + ac, [](t_symbol* a, t_symbol* b) { return std::strcmp(a->s_name, b->s_name) < 0; });
    return MAX_ERR_NONE;
}

t_common_symbols_table* common_symbols_gettable(void)
{
    static bool filled = false;
    if (!filled)
    {
        filled = true;
        fillCommonSymbols(host().common);
    }
    return &host().common;
}

t_class* class_new(C74_CONST char* name, C74_CONST method mnew, C74_CONST method mfree, long size,
                   C74_CONST method /*mmenu*/, short /*type*/, ...)
{
    auto* cls = new RuntimeClass{};
    cls->name = name;
    cls->constructor = mnew;
    cls->head.c_sym = gensym(name);
    cls->head.c_freefun = mfree;
    cls->head.c_size = static_cast<t_getbytes_size>(size);
    return &cls->head;
}

t_max_err class_addmethod(t_class* c, C74_CONST method m, C74_CONST char* name, ...)
{
    if (c == nullptr || m == nullptr || name == nullptr)
        return MAX_ERR_INVALID_PTR;
    auto* cls = reinterpret_cast<RuntimeClass*>(c);
    MethodEntry entry{gensym(name), m, {}};
    va_list args;
    va_start(args, name);
    for (int type = va_arg(args, int); type != A_NOTHING; type = va_arg(args, int))
        entry.types.push_back(type);
    va_end(args);
    for (MethodEntry& existing : cls->methods)
        if (existing.name == entry.name)
        {
            existing = entry;
            return MAX_ERR_NONE;
        }
    cls->methods.push_back(entry);
    return MAX_ERR_NONE;
}

t_max_err class_register(t_symbol* /*name_space*/, t_class* c)
{
    auto* cls = reinterpret_cast<RuntimeClass*>(c);
    host().classes[cls->name] = cls;
    return MAX_ERR_NONE;
}

void class_dspinit(t_class* c)
{
    reinterpret_cast<RuntimeClass*>(c)->dsp = true;
}

void* object_alloc(t_class* c)
{
    if (c == nullptr)
        return nullptr;
    auto* cls = reinterpret_cast<RuntimeClass*>(c);
    void* memory = std::calloc(1, cls->head.c_size);
    if (memory == nullptr)
        return nullptr;
    auto* instance = new Instance;
    instance->cls = cls;
    adopt(instance, memory);
    return memory;
}

t_max_err object_free(void* x)
{
    if (x == nullptr)
        return MAX_ERR_INVALID_PTR;
    if (Instance* instance = thingAs<Instance>(x))
    {
        if (instance->cls->head.c_freefun != nullptr)
            callable<void (*)(void*)>(instance->cls->head.c_freefun)(x);
        for (Outlet* o : instance->outlets)
        {
            forget(o);
            delete o;
        }
        if (instance->chain != nullptr)
        {
            forget(instance->chain);
            delete instance->chain;
        }
        forget(x);
        delete instance;
        std::free(x);
        return MAX_ERR_NONE;
    }
    Thing* thing = thingAs<Thing>(x);
    if (thing == nullptr)
        return MAX_ERR_INVALID_PTR;
    for (auto it = host().registered.begin(); it != host().registered.end();)
        it = (static_cast<const void*>(it->second) == x) ? host().registered.erase(it) : std::next(it);
    forget(x);
    delete thing;
    return MAX_ERR_NONE;
}

t_class* object_class(void* x)
{
    RuntimeClass* cls = classOf(x);
    return cls != nullptr ? &cls->head : nullptr;
}

t_symbol* object_classname(void* x)
{
    RuntimeClass* cls = classOf(x);
    return cls != nullptr ? cls->head.c_sym : nullptr;
}

void* object_method_imp(void* x, void* sym, void* p1, void* p2, void* p3, void* p4, void* p5, void* p6, void* p7,
                        void* p8)
{
    auto* selector = static_cast<t_symbol*>(sym);
    if (RuntimeClass* cls = classOf(x))
    {
        // A method of an object's class, called with the arguments as the caller passed them.
        MethodEntry* m = findMethod(cls, selector->s_name);
        if (m == nullptr)
            return nullptr;
        using Raw = void* (*)(void*, void*, void*, void*, void*, void*, void*, void*, void*);
        return callable<Raw>(m->function)(x, p1, p2, p3, p4, p5, p6, p7, p8);
    }
    if (Attribute* a = thingAs<Attribute>(x))
    {
        if (selector == gensym("gettype"))
            return a->type;
        if (selector == gensym("getname"))
            return a->name;
        if (selector == gensym("setmethod"))
        {
            auto* which = static_cast<t_symbol*>(p1);
            if (which == gensym("set"))
                a->setter = reinterpret_cast<method>(p2);
            else if (which == gensym("get"))
                a->getter = reinterpret_cast<method>(p2);
            return nullptr;
        }
        return nullptr;
    }
    if (DspChain* chain = thingAs<DspChain>(x); chain != nullptr && selector == gensym("dsp_add64"))
    {
        chain->routine = reinterpret_cast<t_perfroutine64>(p2);
        chain->flags = static_cast<long>(reinterpret_cast<t_ptr_int>(p3));
        chain->userParam = p4;
        (void)p1;
        return nullptr;
    }
    return nullptr;
}

t_max_err object_notify(void* x, t_symbol* /*s*/, void* /*data*/)
{
    if (Instance* instance = thingAs<Instance>(x))
        ++instance->notifications;
    return MAX_ERR_NONE;
}

void* outlet_new(void* x, C74_CONST char* s)
{
    Instance* instance = thingAs<Instance>(x);
    if (instance == nullptr)
        return nullptr;
    auto* outlet = adopt(new Outlet);
    outlet->owner = x;
    outlet->kind = s != nullptr ? s : "";
    instance->outlets.push_back(outlet);
    return outlet;
}

static void* sendOut(t_outlet* x, t_symbol* s, short ac, t_atom* av)
{
    Outlet* outlet = thingAs<Outlet>(x);
    if (outlet == nullptr)
        return nullptr;
    Instance* instance = thingAs<Instance>(outlet->owner);
    const auto created = std::find(instance->outlets.begin(), instance->outlets.end(), outlet);
    const int fromLeft = static_cast<int>(instance->outlets.end() - created) - 1;
    OutletMessage message{fromLeft, s != nullptr ? s->s_name : "", std::vector<t_atom>(av, av + std::max<short>(ac, 0)), {}};
    // A dictionary is read by whatever receives its name, before the sender moves on.
    if (message.selector == "dictionary" && ac == 1 && av[0].a_type == A_SYM)
        message.dictionary = dictionaryLines(dictobj_findregistered_retain(av[0].a_w.w_sym));
    instance->traffic.push_back(std::move(message));
    return nullptr;
}

void* outlet_anything(t_outlet* x, t_symbol* s, short ac, t_atom* av)
{
    return sendOut(x, s, ac, av);
}

void* outlet_list(t_outlet* x, t_symbol* /*s*/, short ac, t_atom* av)
{
    return sendOut(x, gensym("list"), ac, av);
}

#define TARVO_CONSOLE(kind)                                                                                            \
    va_list args;                                                                                                      \
    va_start(args, s);                                                                                                 \
    std::string text = format(s, args);                                                                                \
    va_end(args);                                                                                                      \
    record(kind, x, std::move(text));

void object_post(t_object* x, C74_CONST char* s, ...)
{
    TARVO_CONSOLE(ConsoleLine::Kind::Post)
}

void object_warn(t_object* x, C74_CONST char* s, ...)
{
    TARVO_CONSOLE(ConsoleLine::Kind::Warning)
}

void object_error(t_object* x, C74_CONST char* s, ...)
{
    TARVO_CONSOLE(ConsoleLine::Kind::Error)
}

void object_bug(t_object* x, C74_CONST char* s, ...)
{
    TARVO_CONSOLE(ConsoleLine::Kind::Bug)
}
#undef TARVO_CONSOLE

t_atom_long atom_getlong(const t_atom* a)
{
    if (a == nullptr)
        return 0;
    if (a->a_type == A_LONG)
        return a->a_w.w_long;
    if (a->a_type == A_FLOAT)
    {
        // Saturated: a huge or undefined number must not be undefined behaviour here.
        constexpr double limit = 4611686018427387904.0;
        const double v = a->a_w.w_float;
        return std::isnan(v) ? 0 : static_cast<t_atom_long>(std::clamp(v, -limit, limit));
    }
    return 0;
}

t_atom_float atom_getfloat(const t_atom* a)
{
    if (a == nullptr)
        return 0;
    if (a->a_type == A_FLOAT)
        return a->a_w.w_float;
    if (a->a_type == A_LONG)
        return static_cast<t_atom_float>(a->a_w.w_long);
    return 0;
}

t_symbol* atom_getsym(const t_atom* a)
{
    return (a != nullptr && a->a_type == A_SYM) ? a->a_w.w_sym : gensym("");
}

t_max_err atom_setlong(t_atom* a, t_atom_long b)
{
    a->a_type = A_LONG;
    a->a_w.w_long = b;
    return MAX_ERR_NONE;
}

t_max_err atom_setfloat(t_atom* a, double b)
{
    a->a_type = A_FLOAT;
    a->a_w.w_float = b;
    return MAX_ERR_NONE;
}

t_max_err atom_setsym(t_atom* a, t_symbol* b)
{
    a->a_type = A_SYM;
    a->a_w.w_sym = b;
    return MAX_ERR_NONE;
}

t_max_err atom_setobj(t_atom* a, void* b)
{
    a->a_type = A_OBJ;
    a->a_w.w_obj = static_cast<t_object*>(b);
    return MAX_ERR_NONE;
}

t_max_err atom_getfloat_array(long ac, t_atom* av, long count, float* vals)
{
    if (av == nullptr || vals == nullptr)
        return MAX_ERR_INVALID_PTR;
    for (long i = 0; i < std::min(ac, count); ++i)
        vals[i] = static_cast<float>(atom_getfloat(av + i));
    return MAX_ERR_NONE;
}

// ---- attributes ----

static t_object* newAttribute(C74_CONST char* name, C74_CONST t_symbol* type, long flags, method mget, method mset)
{
    auto* a = adopt(new Attribute);
    a->name = gensym(name);
    a->type = const_cast<t_symbol*>(type);
    a->flags = flags;
    a->getter = mget;
    a->setter = mset;
    return reinterpret_cast<t_object*>(a);
}

t_object* attr_offset_new(C74_CONST char* name, C74_CONST t_symbol* type, long flags, C74_CONST method mget,
                          C74_CONST method mset, long offset)
{
    t_object* o = newAttribute(name, type, flags, mget, mset);
    reinterpret_cast<Attribute*>(o)->offset = offset;
    return o;
}

t_object* attr_offset_array_new(C74_CONST char* name, t_symbol* type, long size, long flags, method mget, method mset,
                                long offsetcount, long offset)
{
    t_object* o = newAttribute(name, type, flags, mget, mset);
    auto* a = reinterpret_cast<Attribute*>(o);
    a->offset = offset;
    a->isArray = true;
    a->size = size;
    a->offsetCount = offsetcount;
    return o;
}

t_max_err class_addattr(t_class* c, t_object* attr)
{
    Attribute* a = thingAs<Attribute>(attr);
    if (c == nullptr || a == nullptr)
        return MAX_ERR_INVALID_PTR;
    reinterpret_cast<RuntimeClass*>(c)->attributes.push_back(a);
    return MAX_ERR_NONE;
}

void* class_attr_get(t_class* x, t_symbol* attrname)
{
    return x != nullptr ? findAttribute(reinterpret_cast<RuntimeClass*>(x), attrname) : nullptr;
}

t_max_err attr_addfilter_clip(void* x, double min, double max, long usemin, long usemax)
{
    Attribute* a = thingAs<Attribute>(x);
    if (a == nullptr)
        return MAX_ERR_INVALID_PTR;
    a->minimum = min;
    a->maximum = max;
    a->clipMin = usemin != 0;
    a->clipMax = usemax != 0;
    return MAX_ERR_NONE;
}

t_max_err class_attr_addattr_parse(t_class* c, C74_CONST char* attrname, C74_CONST char* attrname2, t_symbol* /*type*/,
                                   long /*flags*/, C74_CONST char* parsestr)
{
    Attribute* a = findAttribute(reinterpret_cast<RuntimeClass*>(c), gensym(attrname));
    if (a == nullptr)
        return MAX_ERR_GENERIC; // a property of an attribute the class does not have
    a->setProperty(gensym(attrname2), atomsOf(parsestr != nullptr ? parsestr : ""));
    return MAX_ERR_NONE;
}

t_max_err class_attr_addattr_format(t_class* c, C74_CONST char* attrname, C74_CONST char* attrname2,
                                    C74_CONST t_symbol* /*type*/, long /*flags*/, C74_CONST char* fmt, ...)
{
    Attribute* a = findAttribute(reinterpret_cast<RuntimeClass*>(c), gensym(attrname));
    if (a == nullptr)
        return MAX_ERR_GENERIC;
    va_list args;
    va_start(args, fmt);
    a->setProperty(gensym(attrname2), atomsFromFormat(fmt, args));
    va_end(args);
    return MAX_ERR_NONE;
}

t_max_err object_addattr_format(t_object* x, C74_CONST char* attrname, t_symbol* /*type*/, long /*flags*/,
                                C74_CONST char* fmt, ...)
{
    Attribute* a = thingAs<Attribute>(x);
    if (a == nullptr)
        return MAX_ERR_INVALID_PTR;
    va_list args;
    va_start(args, fmt);
    a->setProperty(gensym(attrname), atomsFromFormat(fmt, args));
    va_end(args);
    return MAX_ERR_NONE;
}

void* object_attr_get(void* x, t_symbol* attrname)
{
    return findAttribute(classOf(x), attrname);
}

t_max_err object_attr_getnames(void* x, long* argc, t_symbol*** argv)
{
    std::vector<t_symbol*> names;
    if (Attribute* a = thingAs<Attribute>(x))
        for (auto& [key, atoms] : a->properties)
            names.push_back(key);
    else if (RuntimeClass* cls = classOf(x))
        for (Attribute* attribute : cls->attributes)
            names.push_back(attribute->name);
    else
        return MAX_ERR_INVALID_PTR;
    *argc = static_cast<long>(names.size());
    *argv = reinterpret_cast<t_symbol**>(sysmem_newptr(std::max<std::size_t>(1, names.size()) * sizeof(t_symbol*)));
    std::copy(names.begin(), names.end(), *argv);
    return MAX_ERR_NONE;
}

t_object* object_attr_getobj(void* x, t_symbol* s)
{
    std::vector<t_atom> atoms;
    if (Attribute* a = thingAs<Attribute>(x))
    {
        if (std::vector<t_atom>* p = a->property(s))
            atoms = *p;
    }
    else if (Attribute* a2 = findAttribute(classOf(x), s))
        atoms = readField(a2, x);
    return (!atoms.empty() && atoms[0].a_type == A_OBJ) ? atoms[0].a_w.w_obj : nullptr;
}

t_max_err object_attr_getvalueof(void* x, t_symbol* s, long* argc, t_atom** argv)
{
    if (argc == nullptr || argv == nullptr)
        return MAX_ERR_INVALID_PTR;
    std::vector<t_atom> atoms;
    if (Attribute* property = thingAs<Attribute>(x))
    {
        std::vector<t_atom>* p = property->property(s);
        if (p == nullptr)
            return MAX_ERR_GENERIC;
        atoms = *p;
    }
    else
    {
        Attribute* a = findAttribute(classOf(x), s);
        if (a == nullptr)
            return MAX_ERR_GENERIC;
        if ((a->flags & ATTR_GET_OPAQUE) != 0)
            return MAX_ERR_GENERIC;
        if (a->getter != nullptr)
        {
            long n = 0;
            t_atom* av = nullptr;
            using Getter = t_max_err (*)(void*, void*, long*, t_atom**);
            const t_max_err err = callable<Getter>(a->getter)(x, a, &n, &av);
            if (err != MAX_ERR_NONE)
                return err;
            atoms.assign(av, av + n);
            sysmem_freeptr(av);
        }
        else
            atoms = readField(a, x);
    }
    // Memory passed in is used when it is large enough; otherwise the caller gets new memory.
    if (*argv == nullptr || *argc < static_cast<long>(atoms.size()))
        *argv = reinterpret_cast<t_atom*>(sysmem_newptr(std::max<std::size_t>(1, atoms.size()) * sizeof(t_atom)));
    std::copy(atoms.begin(), atoms.end(), *argv);
    *argc = static_cast<long>(atoms.size());
    return MAX_ERR_NONE;
}

t_max_err object_attr_setvalueof(void* x, t_symbol* s, long argc, t_atom* argv)
{
    Attribute* a = findAttribute(classOf(x), s);
    if (a == nullptr)
        return MAX_ERR_GENERIC;
    if ((a->flags & ATTR_SET_OPAQUE) != 0)
        return MAX_ERR_GENERIC;
    std::vector<t_atom> atoms(argv, argv + std::max(argc, 0L));
    // The clip filter acts on numbers; words pass as they are.
    for (t_atom& atom : atoms)
    {
        if (atom.a_type == A_LONG)
        {
            if (a->clipMin && static_cast<double>(atom.a_w.w_long) < a->minimum)
                atom.a_w.w_long = static_cast<t_atom_long>(std::ceil(a->minimum));
            if (a->clipMax && static_cast<double>(atom.a_w.w_long) > a->maximum)
                atom.a_w.w_long = static_cast<t_atom_long>(std::floor(a->maximum));
        }
        else if (atom.a_type == A_FLOAT)
        {
            if (a->clipMin)
                atom.a_w.w_float = std::max(atom.a_w.w_float, a->minimum);
            if (a->clipMax)
                atom.a_w.w_float = std::min(atom.a_w.w_float, a->maximum);
        }
    }
    if (a->setter != nullptr)
    {
        using Setter = t_max_err (*)(void*, void*, long, t_atom*);
        return callable<Setter>(a->setter)(x, a, static_cast<long>(atoms.size()), atoms.data());
    }
    writeField(a, x, static_cast<long>(atoms.size()), atoms.data());
    return MAX_ERR_NONE;
}

t_max_err object_attr_setlong(void* x, t_symbol* s, t_atom_long c)
{
    t_atom a{};
    atom_setlong(&a, c);
    return object_attr_setvalueof(x, s, 1, &a);
}

t_max_err object_attr_setfloat(void* x, t_symbol* s, t_atom_float c)
{
    t_atom a{};
    atom_setfloat(&a, c);
    return object_attr_setvalueof(x, s, 1, &a);
}

long object_attr_usercanset(void* x, t_symbol* s)
{
    Attribute* a = findAttribute(classOf(x), s);
    return (a != nullptr && (a->flags & (ATTR_SET_OPAQUE | ATTR_SET_OPAQUE_USER)) == 0) ? 1 : 0;
}

t_dictionary* object_dictionaryarg(long ac, t_atom* av)
{
    for (long i = 0; i < ac; ++i)
        if (av[i].a_type == A_OBJ && thingAs<Dictionary>(av[i].a_w.w_obj) != nullptr)
            return reinterpret_cast<t_dictionary*>(av[i].a_w.w_obj);
    return nullptr;
}

void attr_dictionary_check(void* /*x*/, t_dictionary* /*d*/)
{
    // The substitute's boxes never carry stale attribute arguments to convert.
}

void attr_dictionary_process(void* x, t_dictionary* d)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    RuntimeClass* cls = classOf(x);
    if (dict == nullptr || cls == nullptr)
        return;
    for (const Entry& e : dict->entries)
    {
        if (findAttribute(cls, e.key) == nullptr)
            continue;
        std::vector<t_atom> atoms{e.atom};
        if (AtomArray* array = thingAs<AtomArray>(e.atom.a_type == A_OBJ ? e.atom.a_w.w_obj : nullptr))
            atoms = array->atoms;
        object_attr_setvalueof(x, e.key, static_cast<long>(atoms.size()), atoms.data());
    }
}

t_max_err object_obex_store(void* x, t_symbol* key, t_object* val)
{
    Instance* instance = thingAs<Instance>(x);
    if (instance == nullptr)
        return MAX_ERR_INVALID_PTR;
    instance->obex[key] = val;
    return MAX_ERR_NONE;
}

t_max_err object_obex_lookup(void* x, t_symbol* key, t_object** val)
{
    Instance* instance = thingAs<Instance>(x);
    if (instance == nullptr || val == nullptr)
        return MAX_ERR_INVALID_PTR;
    const auto it = instance->obex.find(key);
    *val = it == instance->obex.end() ? nullptr : it->second;
    return it == instance->obex.end() ? MAX_ERR_GENERIC : MAX_ERR_NONE;
}

// ---- DSP ----

void z_dsp_setup(t_pxobject* x, long nsignals)
{
    if (Instance* instance = thingAs<Instance>(x))
    {
        instance->signalInlets = static_cast<int>(nsignals);
        instance->dspSetUp = true;
    }
    x->z_count = static_cast<short>(nsignals);
}

void z_dsp_free(t_pxobject* x)
{
    if (Instance* instance = thingAs<Instance>(x))
        instance->dspSetUp = false;
}

int sys_getdspstate(void)
{
    return host().dspOn ? 1 : 0;
}

// ---- dictionaries and atom arrays ----

t_dictionary* dictionary_new(void)
{
    return reinterpret_cast<t_dictionary*>(adopt(new Dictionary));
}

t_max_err dictionary_clear(t_dictionary* d)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    if (dict == nullptr)
        return MAX_ERR_INVALID_PTR;
    dict->clear();
    return MAX_ERR_NONE;
}

long dictionary_hasentry(C74_CONST t_dictionary* d, t_symbol* key)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    return (dict != nullptr && dict->find(key) != nullptr) ? 1 : 0;
}

t_max_err dictionary_getatom(C74_CONST t_dictionary* d, t_symbol* key, t_atom* value)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    if (dict == nullptr || value == nullptr)
        return MAX_ERR_INVALID_PTR;
    Entry* e = dict->find(key);
    if (e == nullptr)
        return MAX_ERR_GENERIC;
    *value = e->atom;
    return MAX_ERR_NONE;
}

t_max_err dictionary_getobject(C74_CONST t_dictionary* d, t_symbol* key, t_object** value)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    if (dict == nullptr || value == nullptr)
        return MAX_ERR_INVALID_PTR;
    Entry* e = dict->find(key);
    if (e == nullptr || e->atom.a_type != A_OBJ)
        return MAX_ERR_GENERIC;
    *value = e->atom.a_w.w_obj;
    return MAX_ERR_NONE;
}

t_max_err dictionary_getkeys(C74_CONST t_dictionary* d, long* numkeys, t_symbol*** keys)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    if (dict == nullptr || numkeys == nullptr || keys == nullptr)
        return MAX_ERR_INVALID_PTR;
    *numkeys = static_cast<long>(dict->entries.size());
    *keys = reinterpret_cast<t_symbol**>(sysmem_newptr(std::max<std::size_t>(1, dict->entries.size()) * sizeof(t_symbol*)));
    for (std::size_t i = 0; i < dict->entries.size(); ++i)
        (*keys)[i] = dict->entries[i].key;
    return MAX_ERR_NONE;
}

t_max_err dictionary_getkeys_ordered(C74_CONST t_dictionary* d, long* numkeys, t_symbol*** keys)
{
    return dictionary_getkeys(d, numkeys, keys);
}

void dictionary_freekeys(t_dictionary* /*d*/, long /*numkeys*/, t_symbol** keys)
{
    sysmem_freeptr(keys);
}

static t_max_err appendAtom(t_dictionary* d, t_symbol* key, const t_atom& atom, bool owned)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    if (dict == nullptr)
        return MAX_ERR_INVALID_PTR;
    dict->put(key, atom, owned);
    return MAX_ERR_NONE;
}

t_max_err dictionary_appendlong(t_dictionary* d, t_symbol* key, t_atom_long value)
{
    t_atom a{};
    atom_setlong(&a, value);
    return appendAtom(d, key, a, false);
}

t_max_err dictionary_appendfloat(t_dictionary* d, t_symbol* key, double value)
{
    t_atom a{};
    atom_setfloat(&a, value);
    return appendAtom(d, key, a, false);
}

t_max_err dictionary_appendsym(t_dictionary* d, t_symbol* key, t_symbol* value)
{
    t_atom a{};
    atom_setsym(&a, value);
    return appendAtom(d, key, a, false);
}

t_max_err dictionary_appendatoms(t_dictionary* d, t_symbol* key, long argc, t_atom* argv)
{
    // One atom is kept as it is; a list becomes an atom array the dictionary owns.
    if (argc == 1)
        return appendAtom(d, key, argv[0], false);
    t_atom a{};
    atom_setobj(&a, atomarray_new(argc, argv));
    return appendAtom(d, key, a, true);
}

t_max_err dictionary_appendobject(t_dictionary* d, t_symbol* key, t_object* value)
{
    t_atom a{};
    atom_setobj(&a, value);
    return appendAtom(d, key, a, true);
}

t_dictionary* dictobj_register(t_dictionary* d, t_symbol** name)
{
    Dictionary* dict = thingAs<Dictionary>(d);
    if (dict == nullptr || name == nullptr)
        return nullptr;
    if (*name == nullptr)
        *name = symbol_unique();
    host().registered[*name] = dict;
    return d;
}

t_dictionary* dictobj_findregistered_retain(t_symbol* name)
{
    const auto it = host().registered.find(name);
    return it == host().registered.end() ? nullptr : reinterpret_cast<t_dictionary*>(it->second);
}

t_max_err dictobj_release(t_dictionary* d)
{
    return thingAs<Dictionary>(d) != nullptr ? MAX_ERR_NONE : MAX_ERR_INVALID_PTR;
}

t_atomarray* atomarray_new(long ac, t_atom* av)
{
    auto* array = adopt(new AtomArray);
    if (av != nullptr && ac > 0)
        array->atoms.assign(av, av + ac);
    return reinterpret_cast<t_atomarray*>(array);
}

t_atom_long atomarray_getsize(t_atomarray* x)
{
    AtomArray* array = thingAs<AtomArray>(x);
    return array != nullptr ? static_cast<t_atom_long>(array->atoms.size()) : 0;
}

t_max_err atomarray_getindex(t_atomarray* x, long index, t_atom* av)
{
    AtomArray* array = thingAs<AtomArray>(x);
    if (array == nullptr || av == nullptr || index < 0 || index >= static_cast<long>(array->atoms.size()))
        return MAX_ERR_GENERIC;
    *av = array->atoms[static_cast<std::size_t>(index)];
    return MAX_ERR_NONE;
}

t_max_err atomarray_copyatoms(t_atomarray* x, long* ac, t_atom** av)
{
    AtomArray* array = thingAs<AtomArray>(x);
    if (array == nullptr || ac == nullptr || av == nullptr)
        return MAX_ERR_INVALID_PTR;
    *ac = static_cast<long>(array->atoms.size());
    *av = reinterpret_cast<t_atom*>(sysmem_newptr(std::max<std::size_t>(1, array->atoms.size()) * sizeof(t_atom)));
    std::copy(array->atoms.begin(), array->atoms.end(), *av);
    return MAX_ERR_NONE;
}

void atomarray_appendatoms(t_atomarray* x, long ac, t_atom* av)
{
    if (AtomArray* array = thingAs<AtomArray>(x); array != nullptr && av != nullptr && ac > 0)
        array->atoms.insert(array->atoms.end(), av, av + ac);
}

long atomisatomarray(t_atom* a)
{
    return (a != nullptr && a->a_type == A_OBJ && thingAs<AtomArray>(a->a_w.w_obj) != nullptr) ? 1 : 0;
}

// ---- memory, files, presets ----

t_ptr sysmem_newptr(t_ptr_size size)
{
    return static_cast<t_ptr>(std::calloc(1, std::max<t_ptr_size>(size, 1)));
}

void sysmem_freeptr(void* ptr)
{
    std::free(ptr);
}

void binbuf_insert(t_binbuf* x, t_symbol* /*s*/, short argc, t_atom* argv)
{
    if (x == static_cast<void*>(&host().presetBinbuf) && argv != nullptr && argc > 0)
        host().presetBinbuf.lines.emplace_back(argv, argv + argc);
}

short path_topotentialname(C74_CONST short path, C74_CONST char* file, char* name, short /*check*/)
{
    const auto it = host().paths.find(path);
    const std::string full = (it != host().paths.end() ? it->second + "/" : std::string()) + file;
    std::snprintf(name, 4096, "%s", full.c_str());
    return 0;
}

short saveasdialog_extended(char* name, short* vol, t_fourcc* /*type*/, t_fourcc* /*typelist*/, short /*numtypes*/)
{
    Host& h = host();
    if (h.saveFileName.empty())
        return 1; // cancelled
    std::snprintf(name, 4096, "%s", h.saveFileName.c_str());
    *vol = 1;
    h.saveFileName.clear();
    return 0;
}
