// The shared symbol table's pointer, compiled into the object as an external compiles the
// SDK's own copy of it.
#include "ext.h"

t_common_symbols_table* _common_symbols = nullptr;

void common_symbols_init(void)
{
    _common_symbols = common_symbols_gettable();
}
