#pragma once

#include "text/TarvoDspString.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace ondo
{
/// An OSC address: its parts, the whole text ("/" for the root, never a trailing '/'), and
/// whether it holds wildcards. Two flavours: strict for the addresses the system declares
/// (no wildcard may appear) and pattern for those that arrive from outside.
/// Any thread; construction and copies allocate.
class OSCAddress
{
public:
    /// The root address "/".
    OSCAddress() = default;
    /// Strict: parts may hold the characters 32 to 126 except blank and #*,/?[]{}. Empty parts
    /// are dropped, so "foo/bar" and "/foo/bar/" are both "/foo/bar". Throws `ondo::Exception`
    /// on a forbidden character.
    explicit OSCAddress(std::string_view text);
    /// Pattern: parts may also hold the wildcards *,?[]{}; throws on blank, '#' or other
    /// characters outside 32 to 126.
    static OSCAddress fromPattern(std::string_view text);

    std::size_t size() const { return parts.size(); }
    /// Part `i`, or an empty text when there is none.
    const String& part(std::size_t i) const;
    const std::vector<String>& getParts() const { return parts; }
    const String& getText() const { return text; }
    bool isPattern() const { return hasPattern; }
    bool isRoot() const { return parts.empty(); }

    /// The whole address: with wildcards here, part by part against `address` taken
    /// literally (same number of parts); without, the texts must be identical. Real-time safe.
    bool matches(const OSCAddress& address) const;
    /// With wildcards here: at least as many parts as `prefix`, each of the prefix's parts
    /// matched by the part here. Without: the parts both have are equal, so an address
    /// shorter than its prefix passes, as does any address against the root. Real-time safe.
    bool startsWith(const OSCAddress& prefix) const;

    /// Drops the first `n` parts (all of them leaves the root). Wildcards are not looked for
    /// again.
    void removeFirst(std::size_t n = 1);

    bool operator==(const OSCAddress& other) const { return text == other.text; }

private:
    OSCAddress(std::string_view text, bool pattern);
    void rebuildText();

    std::vector<String> parts;
    String text = "/";
    bool hasPattern = false;
};

/// Parsed addresses by their text, so that handlers can test a message against an address
/// given as a literal without parsing it each time. Entries are inserted on first use and
/// never removed; lookups and inserts are lock-free, so any thread may use it, but an insert
/// allocates: `prepare` the addresses a handler tests before audio starts. The table holds a
/// few thousand addresses; beyond that `find` parses into `spare` instead of caching.
class OSCAddressCache
{
public:
    OSCAddressCache() = delete;

    /// The strict address of `text`, from the table when it is there (real-time safe),
    /// otherwise parsed and inserted (allocates), or parsed into `spare` when the table is full.
    static const OSCAddress& find(std::string_view text, OSCAddress& spare);
    /// Inserts `text` unless it is there. Control thread; allocates.
    static void prepare(std::string_view text);
    /// True when `text` is in the table. Real-time safe.
    static bool contains(std::string_view text);
};
} // namespace ondo
