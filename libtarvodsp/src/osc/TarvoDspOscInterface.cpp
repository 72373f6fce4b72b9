#include "osc/TarvoDspOscInterface.h"

#include "common/TarvoDspException.h"
#include "osc/TarvoDspOscPresetFile.h"

#include <string_view>

namespace ondo
{
namespace
{
constexpr std::string_view serviceAddresses[] = {"/post", "/post/state", "/post/doc", "/post/version", "/set",
                                                 "/preset"};
} // namespace

OscInterface::OscInterface()
{
    for (const std::string_view address : serviceAddresses)
        OSCAddressCache::prepare(address);
}

bool OscInterface::processOscMessage(const OSCMessage& /*message*/, std::int32_t& /*context*/)
{
    return false;
}

OSCBundle OscInterface::getState() const
{
    return {};
}

OscDocumentation OscInterface::getOscDocumentation() const
{
    return {
        {"/post/version", "", "prints the object version in the Max window"},
        {"/dump", "", "send the current state of the object through the dump outlet"},
        {"/preset/load", "[string]", "loads a preset from file (.txt, .xml, .osc)"},
        {"/preset/export", "[string]", "exports a preset to file (.txt, .xml, .osc, .json)"},
    };
}

bool OscInterface::handleBaseMessages(const OSCMessage& message, std::int32_t& context)
{
    if (message.startsWith("/preset"))
    {
        // A file name that is not a string is not ours: the next handler may know it.
        if (!message.matchesSingle('s'))
            return false;
        const File file(message.getArgument(0).getString());
        if (message.matches("/preset/export"))
            return exportPreset(file);
        if (message.matches("/preset/load"))
            return importPreset(file, context);
        return false;
    }
    if (message.startsWith("/post"))
    {
        const bool noArguments = message.getNumArguments() == 0;
        if (noArguments && message.matches("/post/state"))
        {
            notifyInformation(getState().flattened().toTextLines());
            return true;
        }
        if (noArguments && message.matches("/post/doc"))
        {
            notifyInformation(getOscDocumentation().documentationLines(false));
            return true;
        }
        // The version line is the host's to print.
        return noArguments && message.matches("/post/version");
    }
    if (message.startsWith("/set") && message.size() > 1)
    {
        std::int32_t setting = setContext;
        return processOscMessage(message.withoutFirstParts(1), setting);
    }
    return false;
}

bool OscInterface::exportPreset(const File& file)
{
    OscPresetFile::classify(file);
    lastExportedPreset = file;
    lastPreset = file;
    String failure;
    if (OscPresetFile::write(getState(), file, &failure))
        return true;
    notifyProblem(failure);
    return false;
}

bool OscInterface::importPreset(const File& file, std::int32_t& context)
{
    if (!file.existsAsFile())
        throw exceptions::NoSuchFile(file.getFullPathName(), ONDO_SOURCE_LOCATION, false);
    presetLoadBegins();
    loadingPreset = true;
    OscPresetFile::classify(file);
    lastLoadedPreset = file;
    lastPreset = file;
    const bool understood = dispatchBundle(OscPresetFile::read(file), context);
    loadingPreset = false;
    presetLoadEnds();
    return understood;
}

bool OscInterface::dispatchBundle(const OSCBundle& bundle, std::int32_t& context)
{
    bool understood = true;
    for (const OSCBundle::Element& element : bundle.getElements())
    {
        if (element.isBundle())
        {
            understood = dispatchBundle(element.getBundle(), context) && understood;
            continue;
        }
        const OSCMessage& message = element.getMessage();
        if (!processOscMessage(message, context))
        {
            notifyProblem(message.toText());
            understood = false;
        }
    }
    return understood;
}

void OscInterface::addToPending(const OSCMessage& message)
{
    std::lock_guard<std::recursive_mutex> lock(pendingMutex);
    pending.add(message);
}

void OscInterface::addToPending(OSCMessage&& message)
{
    std::lock_guard<std::recursive_mutex> lock(pendingMutex);
    pending.add(std::move(message));
}

void OscInterface::addToPending(const OSCBundle& bundle)
{
    std::lock_guard<std::recursive_mutex> lock(pendingMutex);
    pending.addFlattened(bundle);
}

OSCBundle OscInterface::getPendingBundle(bool steal, bool blocking)
{
    OSCBundle result;
    std::unique_lock<std::recursive_mutex> lock(pendingMutex, std::defer_lock);
    if (blocking)
        lock.lock();
    else if (!lock.try_lock())
        return result;
    if (steal)
        result.swap(pending);
    else
        result = pending;
    return result;
}

bool OscInterface::processPending(std::int32_t& context, bool blocking)
{
    const OSCBundle taken = getPendingBundle(true, blocking);
    if (taken.empty())
        return true;
    return dispatchBundle(taken, context);
}

void OscInterface::prepareAddressCache() const
{
    getOscDocumentation().prepareAddressCache();
}
} // namespace ondo
