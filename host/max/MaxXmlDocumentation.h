#pragma once

#include "ext.h"
#include "ext_obex.h"

#include <string>

/// Writes an object's reference page (`<name>.maxref.xml`, the host's documentation format)
/// from what its class holds at run time: attributes with their properties, documented
/// messages, inlets, outlets and the documentation attributes. Main thread; allocates.
class MaxXmlDocumentation
{
public:
    MaxXmlDocumentation(void* object, std::string directory, std::string stylesheet);

    /// Writes the file and posts where; reports a file that cannot be created.
    void write();

    /// Documents a message of `c`: the text goes into the dictionary "methods" hung on the
    /// class attribute `classdescription`. Class set-up only.
    static void addMethodDocumentation(t_class* c, const char* name, const char* text);
    /// Appends an argument (name and type) to a documented message.
    static void addArgumentDocumentation(t_class* c, const char* name, const char* argumentName,
                                         const char* argumentType);

private:
    void* x;
    std::string directory;
    std::string stylesheet;
    std::string className;
    std::string version;
};
