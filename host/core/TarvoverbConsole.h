#pragma once

#include <string>

namespace tarvo::host
{
/// Where the core's reports go: each host binding routes them to its console, tagged with
/// the object. Called on the control thread.
class Console
{
public:
    virtual ~Console() = default;
    virtual void post(const std::string& text) = 0;
    virtual void warn(const std::string& text) = 0;
    virtual void error(const std::string& text) = 0;
    /// Something that should not happen.
    virtual void bug(const std::string& text) = 0;
};
} // namespace tarvo::host
