#include "TarvoMaxServices.h"

#include "ext_dictobj.h"
#include "z_dsp.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace
{
/// Atoms the host allocated, freed on leaving.
struct HostAtoms
{
    long argc = 0;
    t_atom* argv = nullptr;
    ~HostAtoms() { sysmem_freeptr(argv); }
};

t_outlet* dumpOutlet(void* x)
{
    t_object* outlet = nullptr;
    object_obex_lookup(x, _sym_dumpout, &outlet);
    return reinterpret_cast<t_outlet*>(outlet);
}

bool isParameterAttribute(const char* name)
{
    return std::strncmp(name, "_parameter_", 11) == 0 || std::strcmp(name, "annotation_name") == 0;
}

std::string atomsText(const std::vector<t_atom>& atoms)
{
    return tarvo::host::renderAtoms(tarvomax_atoms(static_cast<long>(atoms.size()), atoms.data()));
}

/// The dictionary of the named attributes' values.
t_dictionary* buildDictionary(void* x, const std::vector<t_symbol*>& names)
{
    t_dictionary* d = dictionary_new();
    for (t_symbol* name : names)
    {
        if (object_attr_get(x, name) == nullptr)
        {
            object_error(static_cast<t_object*>(x), "no attribute %s", name->s_name);
            continue;
        }
        std::vector<t_atom> atoms;
        if (!MaxAttribute::values(x, name, atoms) || atoms.empty())
            continue;
        if (atoms.size() > 1)
            dictionary_appendatoms(d, name, static_cast<long>(atoms.size()), atoms.data());
        else if (atoms[0].a_type == A_LONG)
            dictionary_appendlong(d, name, atom_getlong(&atoms[0]));
        else if (atoms[0].a_type == A_FLOAT)
            dictionary_appendfloat(d, name, atom_getfloat(&atoms[0]));
        else if (atoms[0].a_type == A_SYM)
            dictionary_appendsym(d, name, atom_getsym(&atoms[0]));
        else
            object_warn(static_cast<t_object*>(x), "unknown atom type for attribute %s", name->s_name);
    }
    return d;
}

std::string jsonValue(const t_atom& atom)
{
    char number[64];
    switch (atom.a_type)
    {
        case A_LONG:
            std::snprintf(number, sizeof number, "%lld", static_cast<long long>(atom.a_w.w_long));
            return number;
        case A_FLOAT: std::snprintf(number, sizeof number, "%f", atom.a_w.w_float); return number;
        case A_SYM:
        {
            std::string text = "\"";
            for (const char* c = atom.a_w.w_sym->s_name; *c != '\0'; ++c)
            {
                if (*c == '"' || *c == '\\')
                    text += '\\';
                text += *c;
            }
            return text + "\"";
        }
        default: return "null";
    }
}
} // namespace

namespace MaxAttribute
{
std::vector<t_atom> property(t_object* attribute, const char* key)
{
    HostAtoms atoms;
    std::vector<t_atom> result;
    if (attribute != nullptr && object_attr_getvalueof(attribute, gensym(key), &atoms.argc, &atoms.argv) == MAX_ERR_NONE)
        result.assign(atoms.argv, atoms.argv + atoms.argc);
    return result;
}

std::vector<t_symbol*> attributeNames(void* x, bool sorted)
{
    long argc = 0;
    t_symbol** argv = nullptr;
    std::vector<t_symbol*> names;
    if (object_attr_getnames(x, &argc, &argv) != MAX_ERR_NONE)
        return names;
    if (sorted)
        symbolarray_sort(argc, argv);
    names.assign(argv, argv + argc);
    sysmem_freeptr(argv);
    if (!sorted)
    {
        const auto orderOf = [x](t_symbol* name) {
            const std::vector<t_atom> order = property(static_cast<t_object*>(object_attr_get(x, name)), "order");
            return order.empty() ? 0L : static_cast<long>(atom_getlong(&order[0]));
        };
        std::stable_sort(names.begin(), names.end(), [&](t_symbol* a, t_symbol* b) {
            const long oa = orderOf(a), ob = orderOf(b);
            if ((oa > 0) != (ob > 0))
                return oa > 0;
            if (oa > 0 && oa != ob)
                return oa < ob;
            return std::strcmp(a->s_name, b->s_name) < 0;
        });
    }
    return names;
}

std::vector<t_symbol*> filterAttributes(void* x, const std::vector<t_symbol*>& names)
{
    std::vector<t_symbol*> kept;
    for (t_symbol* name : names)
    {
        auto* attribute = static_cast<t_object*>(object_attr_get(x, name));
        if (attribute == nullptr || isParameterAttribute(name->s_name))
            continue;
        const std::vector<t_atom> invisible = property(attribute, "invisible");
        if (!invisible.empty() && atom_getlong(&invisible[0]) == 1)
            continue;
        if (object_attr_usercanset(x, name) == 0) // read-only
            continue;
        HostAtoms atoms;
        if (object_attr_getvalueof(x, name, &atoms.argc, &atoms.argv) != MAX_ERR_NONE || atoms.argc < 1)
            continue;
        kept.push_back(name);
    }
    return kept;
}

bool values(void* x, t_symbol* name, std::vector<t_atom>& atoms)
{
    HostAtoms got;
    const t_max_err error = object_attr_getvalueof(x, name, &got.argc, &got.argv);
    if (error != MAX_ERR_NONE)
    {
        object_bug(static_cast<t_object*>(x), "PostValueOfAttribute : %s in object_attr_getvalueof (%s)",
                   tarvomax_errorname(error), name->s_name);
        return false;
    }
    atoms.assign(got.argv, got.argv + got.argc);
    return true;
}

void reset(void* x, t_symbol* name, bool force, bool verbose)
{
    auto* attribute = static_cast<t_object*>(object_attr_get(x, name));
    if (attribute == nullptr)
    {
        object_error(static_cast<t_object*>(x), "no attribute %s", name->s_name);
        return;
    }
    const std::vector<t_atom> dontReset = property(attribute, "dontreset");
    if (!force && !dontReset.empty() && atom_getlong(&dontReset[0]) == 1)
        return;
    std::vector<t_atom> value = property(attribute, "default");
    if (!value.empty())
        object_attr_setvalueof(x, name, static_cast<long>(value.size()), value.data());
    else if (verbose)
        object_warn(static_cast<t_object*>(x), "attribute %s doesnt have a default value", name->s_name);
}
} // namespace MaxAttribute

const char* tarvomax_errorname(t_max_err error)
{
    switch (error)
    {
        case MAX_ERR_NONE: return "MAX_ERR_NONE";
        case MAX_ERR_GENERIC: return "MAX_ERR_GENERIC";
        case MAX_ERR_INVALID_PTR: return "MAX_ERR_INVALID_PTR";
        case MAX_ERR_DUPLICATE: return "MAX_ERR_DUPLICATE";
        case MAX_ERR_OUT_OF_MEM: return "MAX_ERR_OUT_OF_MEM";
        default: return "unknown MAX_ERR";
    }
}

std::vector<tarvo::host::Atom> tarvomax_atoms(long argc, const t_atom* argv)
{
    using tarvo::host::Atom;
    std::vector<Atom> atoms;
    for (long i = 0; argv != nullptr && i < argc; ++i)
    {
        const t_atom& a = argv[i];
        if (a.a_type == A_LONG)
            atoms.push_back(Atom::fromLong(a.a_w.w_long));
        else if (a.a_type == A_FLOAT)
            atoms.push_back(Atom::fromFloat(a.a_w.w_float));
        else if (a.a_type == A_SYM && a.a_w.w_sym != nullptr)
            atoms.push_back(Atom::fromSymbol(a.a_w.w_sym->s_name));
        else
            atoms.push_back(Atom{});
    }
    return atoms;
}

void tarvomax_reportinvalid(void* x, long argc, const t_atom* argv, const char* text)
{
    const std::string line = tarvo::host::renderAtoms(tarvomax_atoms(argc, argv));
    if (line.empty())
        object_error(static_cast<t_object*>(x), "%s", text);
    else
        object_error(static_cast<t_object*>(x), "%s %s", text, line.c_str());
}

void tarvomax_dump(void* x, t_symbol*, long argc, t_atom* argv)
{
    auto* self = static_cast<t_object*>(x);
    t_outlet* outlet = dumpOutlet(x);
    if (outlet == nullptr)
    {
        object_error(self, "no dump outlet");
        return;
    }
    if (argc == 0)
    {
        const std::vector<t_symbol*> names = MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, true));
        std::vector<std::vector<t_atom>> all(names.size());
        long allocated = 0;
        for (std::size_t i = 0; i < names.size(); ++i)
        {
            MaxAttribute::values(x, names[i], all[i]);
            allocated += static_cast<long>(all[i].size()) + 2;
        }
        std::vector<t_atom> list;
        list.reserve(static_cast<std::size_t>(allocated));
        for (std::size_t i = 0; i < names.size(); ++i)
        {
            t_atom a{};
            atom_setsym(&a, names[i]);
            list.push_back(a);
            for (const t_atom& v : all[i])
            {
                if (v.a_type == A_LONG || v.a_type == A_FLOAT || v.a_type == A_SYM)
                    list.push_back(v);
                else
                    object_warn(self, "unknown atom type in tarvomax_dumpattributes");
            }
            atom_setsym(&a, gensym(","));
            list.push_back(a);
        }
        if (static_cast<long>(list.size()) != allocated)
            object_error(self, "%d atoms allocated but %d atoms dumped", static_cast<int>(allocated),
                         static_cast<int>(list.size()));
        outlet_list(outlet, nullptr, static_cast<short>(list.size()), list.data());
        return;
    }
    if (argc == 1 && argv[0].a_type == A_SYM)
    {
        t_symbol* name = atom_getsym(argv);
        if (object_attr_get(x, name) == nullptr)
        {
            object_error(self, "no attribute %s", name->s_name);
            return;
        }
        std::vector<t_atom> atoms;
        if (MaxAttribute::values(x, name, atoms))
            outlet_anything(outlet, name, static_cast<short>(atoms.size()), atoms.data());
        return;
    }
    tarvomax_reportinvalid(x, argc, argv, "invalid message : dump");
}

void tarvomax_postattributes(void* x, t_symbol*, long argc, t_atom* argv)
{
    auto* self = static_cast<t_object*>(x);
    const auto postOne = [&](t_symbol* name) {
        std::vector<t_atom> atoms;
        if (MaxAttribute::values(x, name, atoms))
            object_post(self, "%s %s", name->s_name, atomsText(atoms).c_str());
    };
    if (argc == 0)
    {
        const std::vector<t_symbol*> names = MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, false));
        object_post(self, "found %d attributes", static_cast<int>(names.size()));
        for (t_symbol* name : names)
            postOne(name);
        return;
    }
    if (argc == 1 && argv[0].a_type == A_SYM)
    {
        t_symbol* name = atom_getsym(argv);
        if (object_attr_get(x, name) == nullptr)
            object_error(self, "no attribute %s", name->s_name);
        else
            postOne(name);
        return;
    }
    tarvomax_reportinvalid(x, argc, argv, "invalid message : postattributes");
}

void tarvomax_resetall(void* x)
{
    for (t_symbol* name : MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, false)))
        MaxAttribute::reset(x, name, false, false);
}

void tarvomax_reset(void* x, t_symbol*, long argc, t_atom* argv)
{
    if (argc == 0)
        tarvomax_resetall(x);
    else if (argc == 1 && argv[0].a_type == A_SYM)
        MaxAttribute::reset(x, atom_getsym(argv), true, true);
    else
        tarvomax_reportinvalid(x, argc, argv, "invalid message : reset");
}

void tarvomax_version(void* x)
{
    auto* self = static_cast<t_object*>(x);
    auto* attribute = static_cast<t_object*>(object_attr_get(x, gensym("externalversion")));
    if (attribute == nullptr)
    {
        object_error(self, "Couldnt get external version");
        return;
    }
    const std::vector<t_atom> label = MaxAttribute::property(attribute, "label");
    if (label.size() == 1 && label[0].a_type == A_SYM && atom_getsym(&label[0])->s_name[0] != '\0')
        object_post(self, "Version %s", atom_getsym(&label[0])->s_name);
    else
        object_post(self, "unknown version");
}

void tarvomax_postdspstatus(void* x)
{
    auto* self = static_cast<t_object*>(x);
    const auto flag = [x](const char* name) {
        std::vector<t_atom> atoms;
        return MaxAttribute::values(x, gensym(name), atoms) && !atoms.empty() && atom_getlong(&atoms[0]) == 1;
    };
    if (flag("mute") || static_cast<t_pxobject*>(x)->z_disabled != 0)
        object_post(self, "dsp processing is muted");
    else if (flag("bypass"))
        object_post(self, "dsp processing is bypassed");
    else
        object_post(self, "dsp processing is enabled");
    object_post(self, sys_getdspstate() != 0 ? "dsp is on" : "dsp is off");
}

t_max_err tarvomax_getvalueof(void* x, long* argc, t_atom** argv)
{
    auto* self = static_cast<t_object*>(x);
    if (argc == nullptr || argv == nullptr)
        return MAX_ERR_INVALID_PTR;
    const std::vector<t_symbol*> names = MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, true));
    std::vector<t_atom> flat;
    for (t_symbol* name : names)
    {
        HostAtoms got;
        const t_max_err error = object_attr_getvalueof(x, name, &got.argc, &got.argv);
        if (error != MAX_ERR_NONE)
        {
            object_error(self, "tarvomax_getvalueof : %s in object_attr_getvalueof (%s)", tarvomax_errorname(error),
                         name->s_name);
            return error;
        }
        for (long i = 0; i < got.argc; ++i)
        {
            if (got.argv[i].a_type != A_LONG && got.argv[i].a_type != A_FLOAT && got.argv[i].a_type != A_SYM)
            {
                object_error(self, "tarvomax_getvalueof : unknown atom type");
                return MAX_ERR_GENERIC;
            }
            flat.push_back(got.argv[i]);
        }
    }
    if (*argc > 0 && *argv != nullptr)
    {
        object_warn(self, "tarvomax_getvalueof : memory passed in");
        if (*argc < static_cast<long>(flat.size()))
        {
            object_error(self, "%d atoms allocated but %d atoms stored by the pattrstorage", static_cast<int>(*argc),
                         static_cast<int>(flat.size()));
            return MAX_ERR_GENERIC;
        }
    }
    else
    {
        *argv = reinterpret_cast<t_atom*>(sysmem_newptr(std::max<std::size_t>(1, flat.size()) * sizeof(t_atom)));
        if (*argv == nullptr)
            return MAX_ERR_OUT_OF_MEM;
    }
    std::copy(flat.begin(), flat.end(), *argv);
    *argc = static_cast<long>(flat.size());
    return MAX_ERR_NONE;
}

t_max_err tarvomax_setvalueof(void* x, long argc, t_atom* argv)
{
    auto* self = static_cast<t_object*>(x);
    const std::vector<t_symbol*> names = MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, true));
    std::vector<long> counts;
    long expected = 0;
    for (t_symbol* name : names)
    {
        HostAtoms got;
        object_attr_getvalueof(x, name, &got.argc, &got.argv);
        counts.push_back(got.argc);
        expected += got.argc;
    }
    if (argc != expected || (argc > 0 && argv == nullptr))
    {
        object_error(self, "setvalueof error (received %d atoms. %d atoms were expected)", static_cast<int>(argc),
                     static_cast<int>(expected));
        return MAX_ERR_GENERIC;
    }
    long next = 0;
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        for (long k = 0; k < counts[i]; ++k)
            if (argv[next + k].a_type != A_LONG && argv[next + k].a_type != A_FLOAT && argv[next + k].a_type != A_SYM)
            {
                object_error(self, "unknown atom type in tarvomax_setvalueof");
                return MAX_ERR_GENERIC;
            }
        const t_max_err error = object_attr_setvalueof(x, names[i], counts[i], argv + next);
        if (error != MAX_ERR_NONE)
            object_error(self, "%s in object_attr_setvalueof %s", tarvomax_errorname(error), names[i]->s_name);
        next += counts[i];
    }
    return MAX_ERR_NONE;
}

void tarvomax_preset(void* x)
{
    auto* self = static_cast<t_object*>(x);
    t_object* binbuf = gensym("_preset")->s_thing;
    if (binbuf == nullptr)
        return;
    long argc = 0;
    t_atom* argv = nullptr;
    if (tarvomax_getvalueof(x, &argc, &argv) != MAX_ERR_NONE)
    {
        sysmem_freeptr(argv);
        object_error(self, "error in tarvomax_preset");
        return;
    }
    std::vector<t_atom> line(3);
    atom_setobj(&line[0], x);
    atom_setsym(&line[1], object_classname(x));
    atom_setsym(&line[2], gensym("recallpreset"));
    line.insert(line.end(), argv, argv + argc);
    sysmem_freeptr(argv);
    if (static_cast<long>(line.size()) != argc + 3)
    {
        object_error(self, "error in tarvomax_preset");
        return;
    }
    binbuf_insert(binbuf, nullptr, static_cast<short>(line.size()), line.data());
}

void tarvomax_recallpreset(void* x, t_symbol*, long argc, t_atom* argv)
{
    tarvomax_setvalueof(x, argc, argv);
}

void tarvomax_dumpdict(void* x, t_symbol*, long argc, t_atom* argv)
{
    auto* self = static_cast<t_object*>(x);
    std::vector<t_symbol*> names;
    if (argc == 0)
        names = MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, true));
    for (long i = 0; i < argc; ++i)
    {
        if (argv[i].a_type != A_SYM)
        {
            tarvomax_reportinvalid(x, argc, argv, "invalid message : dumpdict");
            return;
        }
        names.push_back(atom_getsym(argv + i));
    }
    t_outlet* outlet = dumpOutlet(x);
    if (outlet == nullptr)
    {
        object_error(self, "no dump outlet");
        return;
    }
    t_dictionary* d = buildDictionary(x, names);
    t_symbol* name = symbol_unique();
    if (dictobj_register(d, &name) == nullptr)
    {
        object_error(self, "couldnt outlet dictionary");
        object_free(d);
        return;
    }
    t_atom a{};
    atom_setsym(&a, name);
    outlet_anything(outlet, _sym_dictionary, 1, &a);
    dictionary_clear(d);
    object_free(d);
}

void tarvomax_exportdict(void* x, t_symbol*, long argc, t_atom* argv)
{
    auto* self = static_cast<t_object*>(x);
    char fileName[4096] = {0};
    char fullPath[4096] = {0};
    if (argc == 1 && argv[0].a_type == A_SYM)
        std::snprintf(fullPath, sizeof fullPath, "%s", atom_getsym(argv)->s_name);
    else
    {
        short path = 0;
        t_fourcc type = 0;
        t_fourcc typelist = 0x4A534F4E; // 'JSON'
        if (saveasdialog_extended(fileName, &path, &type, &typelist, 1) != 0 || fileName[0] == '\0')
            return;
        path_topotentialname(path, fileName, fullPath, 0);
    }
    t_dictionary* d = buildDictionary(x, MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, true)));
    long numKeys = 0;
    t_symbol** keys = nullptr;
    const t_max_err error = dictionary_getkeys(d, &numKeys, &keys);
    if (error != MAX_ERR_NONE)
    {
        object_error(self, "couldnt get dict key : %s", tarvomax_errorname(error));
        object_free(d);
        return;
    }
    std::string text = "{\n";
    for (long i = 0; i < numKeys; ++i)
    {
        t_atom atom{};
        if (dictionary_getatom(d, keys[i], &atom) != MAX_ERR_NONE)
        {
            object_error(self, "entry %s is not atom ? ", keys[i]->s_name);
            continue;
        }
        std::string value;
        if (atomisatomarray(&atom) != 0)
        {
            long n = 0;
            t_atom* list = nullptr;
            atomarray_copyatoms(reinterpret_cast<t_atomarray*>(atom.a_w.w_obj), &n, &list);
            value.push_back('[');
            for (long k = 0; k < n; ++k)
            {
                if (k > 0)
                    value += ", ";
                value += jsonValue(list[k]);
            }
            value += "]";
            sysmem_freeptr(list);
        }
        else
            value = jsonValue(atom);
        text += std::string("    \"") + keys[i]->s_name + "\" : " + value + (i + 1 < numKeys ? ", \n" : "\n");
    }
    text += "}\n";
    dictionary_freekeys(d, numKeys, keys);
    object_free(d);
    std::FILE* file = std::fopen(fullPath, "w");
    if (file == nullptr)
    {
        object_error(self, "could not create %s", fullPath);
        return;
    }
    std::fputs(text.c_str(), file);
    std::fclose(file);
}

void tarvomax_readdict(void* x, t_symbol*, long argc, t_atom* argv)
{
    auto* self = static_cast<t_object*>(x);
    if (argc != 1 || argv[0].a_type != A_SYM)
    {
        tarvomax_reportinvalid(x, argc, argv, "invalid message : dictionary");
        return;
    }
    t_symbol* name = atom_getsym(argv);
    t_dictionary* d = dictobj_findregistered_retain(name);
    if (d == nullptr)
    {
        object_error(self, "unable to reference dictionary named %s", name->s_name);
        return;
    }
    long numKeys = 0;
    t_symbol** keys = nullptr;
    const t_max_err error = dictionary_getkeys(d, &numKeys, &keys);
    if (error != MAX_ERR_NONE)
    {
        object_error(self, "couldnt get dict key : %s", tarvomax_errorname(error));
        object_error(self, "error parsing dictionary named %s", name->s_name);
        dictobj_release(d);
        return;
    }
    for (long i = 0; i < numKeys; ++i)
    {
        t_atom atom{};
        if (dictionary_getatom(d, keys[i], &atom) != MAX_ERR_NONE)
        {
            object_error(self, "entry %s is not atom ? ", keys[i]->s_name);
            continue;
        }
        if (atomisatomarray(&atom) != 0)
        {
            long n = 0;
            t_atom* list = nullptr;
            atomarray_copyatoms(reinterpret_cast<t_atomarray*>(atom.a_w.w_obj), &n, &list);
            object_attr_setvalueof(x, keys[i], n, list);
            sysmem_freeptr(list);
        }
        else
            object_attr_setvalueof(x, keys[i], 1, &atom);
    }
    dictionary_freekeys(d, numKeys, keys);
    dictobj_release(d);
}
