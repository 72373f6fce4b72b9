#pragma once

#include <string>

namespace Quor
{
/// The identifiers of the family's objects. Only the rows this build ships are listed.
namespace MaxMspExternal
{
enum Type : int
{
    tarvoverbTilda = 68,
    tarvoverbTildaControl = 69,
    numberOfTypes = 152
};
} // namespace MaxMspExternal

/// What an object says of itself in its reference page: digest, description, related objects.
class MaxMspExternalDocumentation
{
public:
    virtual ~MaxMspExternalDocumentation() = default;
    virtual MaxMspExternal::Type getType() const = 0;
    virtual std::string getDescription() const = 0;
    virtual std::string getDigest() const = 0;
    /// Comma-separated names of related objects.
    virtual std::string getSeeAlso() const = 0;

    /// The texts of an object by its class name; the empty string for an unknown name.
    /// Any thread; allocates.
    static std::string descriptionOf(const std::string& externalName);
    static std::string digestOf(const std::string& externalName);
    static std::string seeAlsoOf(const std::string& externalName);
    /// The long text of a message shared by the family; for an unknown name a line on the
    /// error stream and the empty string.
    static std::string getMethodDescription(const std::string& name);
};

namespace External
{
class TarvoverbTilda : public MaxMspExternalDocumentation
{
public:
    MaxMspExternal::Type getType() const override { return MaxMspExternal::tarvoverbTilda; }
    std::string getDescription() const override;
    std::string getDigest() const override;
    std::string getSeeAlso() const override;
};

class TarvoverbTildaControl : public MaxMspExternalDocumentation
{
public:
    MaxMspExternal::Type getType() const override { return MaxMspExternal::tarvoverbTildaControl; }
    std::string getDescription() const override;
    std::string getDigest() const override;
    std::string getSeeAlso() const override;
};
} // namespace External
} // namespace Quor
