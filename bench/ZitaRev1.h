#pragma once

// Faust's own interfaces, then the class that faust generated from zita_rev1.dsp at build time.
#include <faust/dsp/dsp.h>
#include <faust/gui/UI.h>
#include <faust/gui/meta.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wpedantic"
#include "ZitaRev1.gen.h"
#pragma GCC diagnostic pop
