#include "MaxXmlDocumentation.h"

#include "TarvoMaxServices.h"
#include "z_dsp.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

namespace
{
t_dictionary* methodsDictionary(t_class* c, bool create)
{
    auto* description = static_cast<t_object*>(class_attr_get(c, gensym("classdescription")));
    if (description == nullptr)
        return nullptr;
    auto* d = reinterpret_cast<t_dictionary*>(object_attr_getobj(description, gensym("methods")));
    if (d == nullptr && create)
    {
        d = dictionary_new();
        object_addattr_format(description, "methods", gensym("object"), 0, "o", d);
    }
    return d;
}

std::string symbolText(const std::vector<t_atom>& atoms)
{
    std::string text;
    for (const t_atom& a : atoms)
    {
        if (!text.empty())
            text += ' ';
        char number[64];
        if (a.a_type == A_SYM)
            text += atom_getsym(&a)->s_name;
        else if (a.a_type == A_LONG)
        {
            std::snprintf(number, sizeof number, "%lld", static_cast<long long>(atom_getlong(&a)));
            text += number;
        }
        else if (a.a_type == A_FLOAT)
        {
            std::snprintf(number, sizeof number, "%g", atom_getfloat(&a));
            text += number;
        }
    }
    return text;
}

/// Text for an XML attribute value.
std::string escaped(const std::string& text)
{
    std::string out;
    for (char ch : text)
        switch (ch)
        {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += ch;
        }
    return out;
}

/// Every occurrence of the object's name marked as an object name.
std::string markedUp(const std::string& text, const std::string& name)
{
    std::string out;
    std::size_t from = 0;
    for (std::size_t at = text.find(name); !name.empty() && at != std::string::npos; at = text.find(name, from))
    {
        out += text.substr(from, at - from) + "<o>" + name + "</o>";
        from = at + name.size();
    }
    return out + text.substr(from);
}

const char* typeName(t_symbol* type)
{
    if (type == _sym_long)
        return "int";
    if (type == _sym_float32 || type == _sym_float64)
        return "float";
    if (type == _sym_symbol)
        return "symbol";
    return "unknown";
}

const char* atomTypeName(const std::vector<t_atom>& atoms)
{
    if (atoms.empty())
        return "unknown";
    switch (atoms[0].a_type)
    {
        case A_LONG: return "int";
        case A_FLOAT: return "float";
        case A_SYM: return "symbol";
        default: return "unknown";
    }
}
} // namespace

MaxXmlDocumentation::MaxXmlDocumentation(void* object, std::string dir, std::string xsl)
    : x(object), directory(std::move(dir)), stylesheet(std::move(xsl))
{
    className = object_classname(x)->s_name;
    version = symbolText(MaxAttribute::property(static_cast<t_object*>(object_attr_get(x, gensym("externalversion"))), "label"));
}

void MaxXmlDocumentation::addMethodDocumentation(t_class* c, const char* name, const char* text)
{
    t_dictionary* d = methodsDictionary(c, true);
    if (d == nullptr)
        return;
    t_atom atoms[2];
    atom_setsym(&atoms[0], gensym(text));
    atom_setlong(&atoms[1], 0);
    dictionary_appendobject(d, gensym(name), reinterpret_cast<t_object*>(atomarray_new(2, atoms)));
}

void MaxXmlDocumentation::addArgumentDocumentation(t_class* c, const char* name, const char* argumentName,
                                                   const char* argumentType)
{
    t_dictionary* d = methodsDictionary(c, false);
    t_object* array = nullptr;
    if (d == nullptr || dictionary_getobject(d, gensym(name), &array) != MAX_ERR_NONE)
        return;
    t_atom atoms[2];
    atom_setsym(&atoms[0], gensym(argumentName));
    atom_setsym(&atoms[1], gensym(argumentType));
    atomarray_appendatoms(reinterpret_cast<t_atomarray*>(array), 2, atoms);
}

void MaxXmlDocumentation::write()
{
    auto* self = static_cast<t_object*>(x);
    const std::string path = directory + "/" + className + ".maxref.xml";
    const auto classText = [&](const char* attribute) {
        return symbolText(MaxAttribute::property(static_cast<t_object*>(object_attr_get(x, gensym(attribute))), "label"));
    };
    const auto assistText = [&](long io, long index) {
        char text[512] = {0};
        object_method_imp(x, gensym("assist"), nullptr, reinterpret_cast<void*>(static_cast<t_ptr_int>(io)),
                          reinterpret_cast<void*>(static_cast<t_ptr_int>(index)), text, nullptr, nullptr, nullptr,
                          nullptr);
        return std::string(text);
    };

    std::ostringstream out;
    out << "<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"yes\"?>\n\n";
    out << "<?xml-stylesheet href=\"" << stylesheet << "\" type=\"text/xsl\"?>\n\n";
    out << "<c74object name=\"" << escaped(className) << "\">\n";
    out << "\t<digest>" << markedUp(classText("classdigest"), className) << "</digest>\n";
    out << "\t<description>" << classText("classdescription") << "</description>\n";

    out << "\t<!--METADATA-->\n\t<metadatalist>\n";
    out << "\t\t<metadata name=\"author\">tarvoverb developers</metadata>\n";
    out << "\t\t<metadata name=\"copyright\">tarvoverb developers</metadata>\n";
    out << "\t\t<metadata name=\"version\">" << escaped(version) << "</metadata>\n";
    out << "\t</metadatalist>\n";

    const auto* header = static_cast<const t_pxobject*>(x);
    out << "\t<!--INLETS-->\n\t<inletlist>\n";
    for (long i = 0; i < header->z_count; ++i)
    {
        const std::string text = escaped(assistText(ASSIST_INLET, i));
        out << "\t\t<inlet id=\"" << i << "\" name=\"" << text << "\">\n\t\t\t<digest>" << text
            << "</digest>\n\t\t\t<description>" << text << "</description>\n\t\t</inlet>\n";
    }
    out << "\t</inletlist>\n";
    std::vector<t_atom> speakers;
    MaxAttribute::values(x, gensym("numspeakers"), speakers);
    const long outlets = speakers.empty() ? 0 : static_cast<long>(atom_getlong(&speakers[0])) + 1;
    out << "\t<!--OUTLETS-->\n\t<outletlist>\n";
    for (long i = 0; i < outlets; ++i)
    {
        std::string text = escaped(assistText(ASSIST_OUTLET, i));
        if (text.empty())
            text = "dumpout";
        out << "\t\t<outlet id=\"" << i << "\" name=\"" << text << "\">\n\t\t\t<digest>" << text
            << "</digest>\n\t\t\t<description>" << text << "</description>\n\t\t</outlet>\n";
    }
    out << "\t</outletlist>\n";

    out << "\t<!--ARGUMENTS-->\n\t<objarglist>\n";
    for (const char* name : {"numsources", "numspeakers", "numinternals"})
    {
        const std::string label =
            symbolText(MaxAttribute::property(static_cast<t_object*>(object_attr_get(x, gensym(name))), "label"));
        out << "\t\t<objarg name=\"" << name << "\" type=\"int\" optional=\"1\">\n\t\t\t<digest>" << escaped(label)
            << "</digest>\n\t\t\t<description>" << escaped(label) << " (@" << name
            << " in the box)</description>\n\t\t</objarg>\n";
    }
    out << "\t</objarglist>\n";

    out << "\t<!--ATTRIBUTES-->\n\t<attributelist>\n";
    for (t_symbol* name : MaxAttribute::filterAttributes(x, MaxAttribute::attributeNames(x, false)))
    {
        auto* attribute = static_cast<t_object*>(object_attr_get(x, name));
        auto* type = static_cast<t_symbol*>(
            object_method_imp(attribute, gensym("gettype"), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                              nullptr, nullptr));
        const bool settable = object_attr_usercanset(x, name) != 0;
        out << "\t\t<attribute name=\"" << escaped(name->s_name) << "\" get=\"1\" set=\"" << (settable ? 1 : 0)
            << "\" type=\"" << typeName(type) << "\" size=\"1\">\n";
        std::vector<t_atom> digest = MaxAttribute::property(attribute, "digest");
        if (digest.empty())
            digest = MaxAttribute::property(attribute, "label");
        out << "\t\t\t<digest>" << symbolText(digest) << "</digest>\n";
        out << "\t\t\t<description>" << symbolText(MaxAttribute::property(attribute, "description"))
            << "</description>\n";
        out << "\t\t\t<attributelist>\n";
        long count = 0;
        t_symbol** keys = nullptr;
        if (object_attr_getnames(attribute, &count, &keys) == MAX_ERR_NONE)
        {
            for (long k = 0; k < count; ++k)
            {
                const std::string key = keys[k]->s_name;
                if (key == "digest" || key == "description" || key == "enumvals")
                    continue;
                const std::vector<t_atom> value = MaxAttribute::property(attribute, key.c_str());
                out << "\t\t\t\t<attribute name=\"" << escaped(key) << "\" get=\"1\" set=\"1\" type=\""
                    << atomTypeName(value) << "\" size=\"1\" value=\"" << escaped(symbolText(value)) << "\" />\n";
            }
            sysmem_freeptr(keys);
        }
        out << "\t\t\t</attributelist>\n\t\t</attribute>\n";
    }
    out << "\t</attributelist>\n";

    out << "\t<!--MESSAGES-->\n\t<methodlist>\n";
    if (t_dictionary* methods = methodsDictionary(object_class(x), false))
    {
        long count = 0;
        t_symbol** keys = nullptr;
        if (dictionary_getkeys(methods, &count, &keys) == MAX_ERR_NONE)
        {
            for (long k = 0; k < count; ++k)
            {
                t_object* array = nullptr;
                if (dictionary_getobject(methods, keys[k], &array) != MAX_ERR_NONE)
                    continue;
                long n = 0;
                t_atom* atoms = nullptr;
                atomarray_copyatoms(reinterpret_cast<t_atomarray*>(array), &n, &atoms);
                const std::string text = n > 0 ? symbolText({atoms[0]}) : std::string();
                out << "\t\t<method name=\"" << escaped(keys[k]->s_name) << "\">\n\t\t\t<arglist>\n";
                for (long a = 2; a + 1 < n; a += 2)
                    out << "\t\t\t\t<arg name=\"" << escaped(symbolText({atoms[a]})) << "\" type=\""
                        << escaped(symbolText({atoms[a + 1]})) << "\" optional=\"0\" id=\"0\" />\n";
                out << "\t\t\t</arglist>\n\t\t\t<digest>" << escaped(keys[k]->s_name) << "</digest>\n\t\t\t<description>"
                    << text << "</description>\n\t\t</method>\n";
                sysmem_freeptr(atoms);
            }
            dictionary_freekeys(methods, count, keys);
        }
    }
    out << "\t</methodlist>\n";

    out << "\t<!--SEEALSO-->\n\t<seealsolist>\n";
    std::istringstream seeAlso(classText("classseealso"));
    for (std::string name; std::getline(seeAlso, name, ',');)
        if (!name.empty())
            out << "\t\t<seealso name=\"" << escaped(name) << "\"/>\n";
    out << "\t</seealsolist>\n";
    out << "\t<!--EXAMPLE-->\n\t<examplelist>\n\t</examplelist>\n";
    out << "\t<!--MENU ITEMS-->\n\t<misc name=\"Menu\">\n\t</misc>\n";
    out << "</c74object>\n";

    std::ofstream file(path);
    if (!file)
    {
        object_error(self, "could not create %s", path.c_str());
        return;
    }
    file << out.str();
    file.close();
    object_post(self, "documentation generated in %s", path.c_str());
}
