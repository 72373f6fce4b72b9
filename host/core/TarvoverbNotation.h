#pragma once

#include "TarvoverbAtom.h"
#include "TarvoverbConsole.h"
#include "math/TarvoDspPoint3Array.h"

#include <cstdint>

namespace tarvo::host
{
/// The position notations of the "source", "speaker" and "speakers" messages, read from
/// atoms. Warnings and errors go to `console` with the object's own texts; every function
/// leaves its output untouched when it fails. Control thread; allocates.

/// "[format] numbers" applied on top of `point` (a source keeps what the notation does not
/// name). No format word: "ade" with a warning. The format "quor3" takes 3, 2 or 1 numbers.
bool parseSourceCoordinates(Atoms atoms, ondo::Point3& point, Console& console);

/// "index [format] numbers" for one speaker, starting from the origin. `index` comes back
/// from 0. Failures are reported, the last report naming the whole message.
bool parseSpeaker(Atoms atoms, std::int32_t numSpeakers, std::int32_t& index, ondo::Point3& point,
                  Console& console);

/// "[format] numbers" for every speaker of `positions`, each starting from the origin;
/// nothing changes unless all parse.
bool parseSpeakers(Atoms atoms, ondo::Point3Array& positions, Console& console);

/// The error helper: `text`, then the atoms on one line.
void reportInvalidMessage(Console& console, const std::string& text, Atoms atoms);
} // namespace tarvo::host
