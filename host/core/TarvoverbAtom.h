#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::host
{
/// One value of a message as every host hands it: a whole number, a real number or a word.
/// `symbol` views text the host keeps alive (its symbol table) for the call.
struct Atom
{
    enum class Type
    {
        Long,
        Float,
        Symbol,
        Other
    };
    Type type = Type::Other;
    double number = 0.0;
    std::string_view symbol;

    static Atom fromLong(long long value) { return {Type::Long, static_cast<double>(value), {}}; }
    static Atom fromFloat(double value) { return {Type::Float, value, {}}; }
    static Atom fromSymbol(std::string_view text) { return {Type::Symbol, 0.0, text}; }

    bool isNumber() const { return type == Type::Long || type == Type::Float; }
    /// A number as float32; anything else counts as 0.
    float plainNumber() const { return isNumber() ? static_cast<float>(number) : 0.0f; }
    /// A number truncated to an integer, saturated at +-2^62; anything else, NaN too, counts as 0.
    long long integer() const
    {
        constexpr double limit = 4611686018427387904.0;
        if (!isNumber() || !(number == number))
            return 0;
        return static_cast<long long>(number < -limit ? -limit : number > limit ? limit : number);
    }
};

using Atoms = std::span<const Atom>;

/// Argument pattern test: one letter an atom, `i` or `l` a long, `f` a float, `s` a symbol,
/// `n` a long or a float; any other letter fails. With `exact` the lengths must agree,
/// otherwise the pattern may be shorter than the list. The empty pattern matches.
bool matchesPattern(std::string_view pattern, Atoms atoms, bool exact);

/// The atoms on one line, each followed by a blank: longs in decimal, floats as "%f",
/// symbols as they are; other types are skipped.
std::string renderAtoms(Atoms atoms);

/// A word list read as atoms, as a host's parser would: whole numbers become longs, other
/// numbers floats, the rest symbols. The views point into `words`.
std::vector<Atom> atomsFromWords(const std::vector<std::string>& words);
} // namespace tarvo::host
