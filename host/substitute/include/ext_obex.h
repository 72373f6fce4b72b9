// Attributes, dictionaries of boxes and the obex: the substitute's declarations.
#pragma once

#include "ext.h"

BEGIN_USING_C_LINKAGE

/// Attribute flags.
enum e_max_attrflags
{
    ATTR_FLAGS_NONE = 0x0000000,
    ATTR_GET_OPAQUE = 0x00000001,
    ATTR_SET_OPAQUE = 0x00000002,
    ATTR_GET_OPAQUE_USER = 0x00000100,
    ATTR_SET_OPAQUE_USER = 0x00000200
};

t_max_err class_addattr(t_class* c, t_object* attr);
t_object* attr_offset_new(C74_CONST char* name, C74_CONST t_symbol* type, long flags, C74_CONST method mget,
                          C74_CONST method mset, long offset);
t_object* attr_offset_array_new(C74_CONST char* name, t_symbol* type, long size, long flags, method mget,
                                method mset, long offsetcount, long offset);
void* class_attr_get(t_class* x, t_symbol* attrname);
t_max_err attr_addfilter_clip(void* x, double min, double max, long usemin, long usemax);
t_max_err class_attr_addattr_parse(t_class* c, C74_CONST char* attrname, C74_CONST char* attrname2, t_symbol* type,
                                   long flags, C74_CONST char* parsestr);
t_max_err class_attr_addattr_format(t_class* c, C74_CONST char* attrname, C74_CONST char* attrname2,
                                    C74_CONST t_symbol* type, long flags, C74_CONST char* fmt, ...);
t_max_err object_addattr_format(t_object* x, C74_CONST char* attrname, t_symbol* type, long flags,
                                C74_CONST char* fmt, ...);

void* object_attr_get(void* x, t_symbol* attrname);
t_max_err object_attr_getnames(void* x, long* argc, t_symbol*** argv);
t_object* object_attr_getobj(void* x, t_symbol* s);
t_max_err object_attr_getvalueof(void* x, t_symbol* s, long* argc, t_atom** argv);
t_max_err object_attr_setvalueof(void* x, t_symbol* s, long argc, t_atom* argv);
t_max_err object_attr_setlong(void* x, t_symbol* s, t_atom_long c);
t_max_err object_attr_setfloat(void* x, t_symbol* s, t_atom_float c);
long object_attr_usercanset(void* x, t_symbol* s);

t_dictionary* object_dictionaryarg(long ac, t_atom* av);
void attr_dictionary_check(void* x, t_dictionary* d);
void attr_dictionary_process(void* x, t_dictionary* d);
t_max_err object_obex_store(void* x, t_symbol* key, t_object* val);
t_max_err object_obex_lookup(void* x, t_symbol* key, t_object** val);

END_USING_C_LINKAGE
