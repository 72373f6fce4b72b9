#pragma once

#include "files/TarvoDspFile.h"
#include "osc/TarvoDspOscBundle.h"
#include "text/TarvoDspXmlElement.h"

#include <memory>
#include <vector>

namespace ondo
{
/// The four file forms of a preset, a processor's state bundle on disk: `.txt` (one message a
/// line), `.osc` (one OSC packet), `.xml` (the address parts as nested elements) and `.coll`
/// (numbered lines, as the host's collection object stores them). The extension picks the
/// form, in any case. Control thread; reading and writing allocate and touch the disk.
class OscPresetFile
{
public:
    enum class Form
    {
        text = 0,
        binary = 1,
        xml = 2,
        coll = 3
    };

    OscPresetFile() = delete;

    /// The form named by the extension of `file`; throws `ondo::Exception` "unexpected file
    /// extension for file " and the quoted path for any other.
    static Form classify(const File& file);

    /// Writes `state` to `file` in its form, replacing an existing file. False when it could
    /// not be written (the reason, when known, goes to `failure`).
    static bool write(const OSCBundle& state, const File& file, String* failure = nullptr);
    /// Reads the messages of `file`. Throws `exceptions::NoSuchFile` for a missing file,
    /// `exceptions::UnsupportedFile` for one that cannot be opened, and `ondo::Exception` for
    /// a malformed one.
    static OSCBundle read(const File& file);

    /// The text forms as lines, for what writes and reads them.
    static std::vector<String> toCollLines(const OSCBundle& state);
    /// One line of a `.txt` or `.coll` preset: the message it holds, if any.
    static bool parseTextLine(String line, OSCMessage& message);
    static bool parseCollLine(String line, OSCMessage& message);
    /// The `.xml` tree of a state, and back.
    static std::unique_ptr<XmlElement> toXml(const OSCBundle& state);
    static OSCBundle fromXml(const XmlElement& root);
};
} // namespace ondo
