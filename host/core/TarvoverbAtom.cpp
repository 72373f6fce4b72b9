#include "TarvoverbAtom.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tarvo::host
{
bool matchesPattern(std::string_view pattern, Atoms atoms, bool exact)
{
    if (exact ? pattern.size() != atoms.size() : pattern.size() > atoms.size())
        return false;
    for (std::size_t i = 0; i < pattern.size(); ++i)
    {
        const Atom::Type type = atoms[i].type;
        switch (pattern[i])
        {
            case 'i':
            case 'l':
                if (type != Atom::Type::Long)
                    return false;
                break;
            case 'f':
                if (type != Atom::Type::Float)
                    return false;
                break;
            case 's':
                if (type != Atom::Type::Symbol)
                    return false;
                break;
            case 'n':
                if (!atoms[i].isNumber())
                    return false;
                break;
            default: return false;
        }
    }
    return true;
}

std::string renderAtoms(Atoms atoms)
{
    std::string line;
    char number[64];
    for (const Atom& atom : atoms)
    {
        switch (atom.type)
        {
            case Atom::Type::Long:
                std::snprintf(number, sizeof number, "%lld ", static_cast<long long>(atom.number));
                line += number;
                break;
            case Atom::Type::Float:
                std::snprintf(number, sizeof number, "%f ", atom.number);
                line += number;
                break;
            case Atom::Type::Symbol:
                line += atom.symbol;
                line += ' ';
                break;
            case Atom::Type::Other: break;
        }
    }
    return line;
}

std::vector<Atom> atomsFromWords(const std::vector<std::string>& words)
{
    std::vector<Atom> atoms;
    atoms.reserve(words.size());
    for (const std::string& word : words)
    {
        const char* begin = word.c_str();
        char* end = nullptr;
        const double value = std::strtod(begin, &end);
        if (end != begin && *end == '\0' && std::isfinite(value))
        {
            const bool whole = word.find_first_of(".eE") == std::string::npos && value == std::floor(value);
            atoms.push_back(whole ? Atom::fromLong(static_cast<long long>(value)) : Atom::fromFloat(value));
        }
        else
            atoms.push_back(Atom::fromSymbol(word));
    }
    return atoms;
}
} // namespace tarvo::host
