#pragma once

// The tarvoverb~ object for Max: a skin that turns the host's calls into calls of the
// host-neutral core (host/core) and the core's reports into the host's console.

#include "ext.h"
#include "ext_obex.h"
#include "z_dsp.h"

#include "TarvoverbState.h"

/// The instance: the host's signal header, the documentation attributes, and the state the
/// core works on, in this order.
struct TarvoverbTilda
{
    t_pxobject header;
    t_symbol* classdescription;
    t_symbol* classdigest;
    t_symbol* externalversion;
    t_symbol* classseealso;
    tarvo::host::ObjectState state;
    bool dspReady; ///< the host's signal set-up was made, so the destructor undoes it
};

/// The class, once registered.
extern t_class* tarvoverb_class;
