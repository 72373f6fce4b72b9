#include "osc/TarvoDspOscAddress.h"

#include "common/TarvoDspException.h"
#include "osc/TarvoDspOscPattern.h"
#include "text/TarvoDspUtf8.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>

namespace ondo
{
namespace
{
bool isAllowed(std::uint16_t c, bool pattern)
{
    if (c < 32 || c > 126)
        return false;
    const std::string_view forbidden = pattern ? " #/" : " #*,/?[]{}";
    return forbidden.find(static_cast<char>(c)) == std::string_view::npos;
}

bool isAllowedPart(std::string_view part, bool pattern)
{
    const char* position = part.data();
    const char* end = position + part.size();
    while (position != end)
        if (!isAllowed(Utf8::read(position, end), pattern))
            return false;
    return true;
}
} // namespace

OSCAddress::OSCAddress(std::string_view address) : OSCAddress(address, false) {}

OSCAddress OSCAddress::fromPattern(std::string_view address)
{
    return OSCAddress(address, true);
}

OSCAddress::OSCAddress(std::string_view address, bool pattern)
{
    std::size_t start = 0;
    while (start <= address.size())
    {
        const std::size_t slash = std::min(address.find('/', start), address.size());
        const std::string_view piece = address.substr(start, slash - start);
        if (!piece.empty())
        {
            if (!isAllowedPart(piece, pattern))
                throw Exception("OSC format error: encountered characters not allowed in address string : " +
                                    String(address),
                                ONDO_SOURCE_LOCATION, false);
            parts.emplace_back(piece);
        }
        start = slash + 1;
    }
    rebuildText();
    hasPattern = pattern && StringHelper::containsAny(text, "*?{}[]");
}

void OSCAddress::rebuildText()
{
    text.clear();
    for (const String& p : parts)
    {
        text.push_back('/');
        text.append(p);
    }
    if (text.empty())
        text.push_back('/');
}

const String& OSCAddress::part(std::size_t i) const
{
    static const String none;
    return i < parts.size() ? parts[i] : none;
}

bool OSCAddress::matches(const OSCAddress& address) const
{
    if (!hasPattern)
        return text == address.text;
    if (parts.size() != address.parts.size())
        return false;
    for (std::size_t i = 0; i < parts.size(); ++i)
        if (!OSCPattern::match(parts[i], address.parts[i]))
            return false;
    return true;
}

bool OSCAddress::startsWith(const OSCAddress& prefix) const
{
    if (hasPattern)
    {
        if (parts.size() < prefix.parts.size())
            return false;
        for (std::size_t i = 0; i < prefix.parts.size(); ++i)
            if (!OSCPattern::match(parts[i], prefix.parts[i]))
                return false;
        return true;
    }
    const std::size_t common = std::min(parts.size(), prefix.parts.size());
    return std::equal(parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(common), prefix.parts.begin());
}

void OSCAddress::removeFirst(std::size_t n)
{
    parts.erase(parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(std::min(n, parts.size())));
    rebuildText();
}

namespace
{
/// An insert-only open-addressing table of immutable entries. A slot goes once from null to
/// its entry by compare-and-swap; readers load slots with acquire, so an entry is seen only
/// whole. Entries live until the program ends.
class AddressTable
{
public:
    struct Entry
    {
        explicit Entry(std::string_view key) : text(key), address(key) {}
        const String text;
        const OSCAddress address;
    };

    const Entry* find(std::string_view text) const
    {
        const std::size_t start = hash(text);
        for (std::size_t probe = 0; probe < capacity; ++probe)
        {
            const Entry* entry = slots[(start + probe) & (capacity - 1)].load(std::memory_order_acquire);
            if (entry == nullptr)
                return nullptr;
            if (entry->text == text)
                return entry;
        }
        return nullptr;
    }

    /// The entry of `text`, inserted if need be; null when the table is full.
    const Entry* insert(std::string_view text)
    {
        if (const Entry* existing = find(text))
            return existing;
        auto fresh = std::make_unique<Entry>(text);
        const std::size_t start = hash(text);
        for (std::size_t probe = 0; probe < capacity; ++probe)
        {
            auto& slot = slots[(start + probe) & (capacity - 1)];
            const Entry* seen = nullptr;
            if (slot.compare_exchange_strong(seen, fresh.get(), std::memory_order_acq_rel, std::memory_order_acquire))
                return fresh.release();
            if (seen->text == text)
                return seen; // another thread inserted it first
        }
        return nullptr;
    }

private:
    static constexpr std::size_t capacity = 4096;

    static std::size_t hash(std::string_view text)
    {
        std::uint64_t h = 14695981039346656037ull; // FNV-1a
        for (const char c : text)
            h = (h ^ static_cast<unsigned char>(c)) * 1099511628211ull;
        return static_cast<std::size_t>(h);
    }

    std::array<std::atomic<const Entry*>, capacity> slots{};
};

AddressTable& table()
{
    static AddressTable instance;
    return instance;
}
} // namespace

const OSCAddress& OSCAddressCache::find(std::string_view text, OSCAddress& spare)
{
    if (const auto* entry = table().insert(text))
        return entry->address;
    spare = OSCAddress(text);
    return spare;
}

void OSCAddressCache::prepare(std::string_view text)
{
    table().insert(text);
}

bool OSCAddressCache::contains(std::string_view text)
{
    return table().find(text) != nullptr;
}
} // namespace ondo
