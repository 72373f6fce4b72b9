#pragma once

#include "RenderSettings.h"

namespace Quor
{
class TarvoVerb;
}

namespace tarvo::render
{
/// Reads the --preset file into `settings.presetState` and takes from it the counts, the sample
/// rate, the block size, the decay times and the air switch it was saved with, wherever the command line gave
/// none (a recording given with --in still sets the rate; the decay sets the automatic length). Checks the extension of --export-preset, so that a
/// misnamed file fails before the render rather than after. Does nothing more once read.
/// Throws `UsageError` naming the file and the library's reason. Allocates; reads the disk.
void preparePresets(RenderSettings& settings);

/// Replays the preset read by `preparePresets` into `verb`, which was built with the counts
/// that `settings` name. The messages the reverberator reports but does not answer ("/early/width",
/// "/early/shape") go to its setters; the counts, rate and block size were taken already.
/// Throws `UsageError` naming every message refused, with the reason. Allocates.
void loadPreset(Quor::TarvoVerb& verb, const RenderSettings& settings);

/// Saves the state of `verb` to --export-preset, if given, in the form its extension names,
/// replacing an existing file. Throws `UsageError` naming the file and the reason. Allocates.
void exportPreset(Quor::TarvoVerb& verb, const RenderSettings& settings);
} // namespace tarvo::render
