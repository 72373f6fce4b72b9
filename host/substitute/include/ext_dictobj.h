// Named dictionaries shared between objects: the substitute's declarations.
#pragma once

#include "ext.h"

BEGIN_USING_C_LINKAGE
t_dictionary* dictobj_register(t_dictionary* d, t_symbol** name);
t_dictionary* dictobj_findregistered_retain(t_symbol* name);
t_max_err dictobj_release(t_dictionary* d);
END_USING_C_LINKAGE
