// The part of the Max C API that tarvoverb~ uses, declared with the public SDK's names, types
// and signatures, so that the object compiles unchanged on a machine without the SDK. The
// operations are implemented by the substitute runtime (host/substitute/src).
#pragma once

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#define C74_EXPORT __declspec(dllexport)
#else
#define C74_EXPORT __attribute__((visibility("default")))
#endif
#define C74_CONST const

#ifdef __cplusplus
#define BEGIN_USING_C_LINKAGE extern "C" {
#define END_USING_C_LINKAGE }
#else
#define BEGIN_USING_C_LINKAGE
#define END_USING_C_LINKAGE
#endif

BEGIN_USING_C_LINKAGE

typedef int16_t t_int16;
typedef int32_t t_int32;
typedef uint32_t t_uint32;
typedef int64_t t_int64;
typedef uint8_t t_uint8;
typedef t_uint32 t_fourcc;
typedef intptr_t t_ptr_int;
typedef uintptr_t t_ptr_uint;
typedef t_ptr_uint t_ptr_size;
typedef t_ptr_int t_atom_long;
typedef double t_atom_float;
typedef t_atom_long t_max_err;
typedef char* t_ptr;
typedef t_uint8 t_bool;
typedef t_ptr_uint t_getbytes_size;

/// Host error codes.
enum e_max_errorcodes
{
    MAX_ERR_NONE = 0,
    MAX_ERR_GENERIC = -1,
    MAX_ERR_INVALID_PTR = -2,
    MAX_ERR_DUPLICATE = -3,
    MAX_ERR_OUT_OF_MEM = -4
};

/// Atom types and the argument types of a method's signature.
enum e_max_atomtypes
{
    A_NOTHING = 0,
    A_LONG,
    A_FLOAT,
    A_SYM,
    A_OBJ,
    A_DEFLONG,
    A_DEFFLOAT,
    A_DEFSYM,
    A_GIMME,
    A_CANT,
    A_SEMI,
    A_COMMA,
    A_DOLLAR,
    A_DOLLSYM,
    A_GIMMEBACK,
    A_DEFER = 0x41,
    A_USURP = 0x42,
    A_DEFER_LOW = 0x43,
    A_USURP_LOW = 0x44
};

enum
{
    ASSIST_INLET = 1,
    ASSIST_OUTLET
};

typedef void* (*method)(void*);

struct object;
typedef struct symbol
{
    char* s_name;
    struct object* s_thing;
} t_symbol;

typedef struct messlist t_messlist;

/// The head of every object; the host owns its fields.
typedef struct object
{
    struct messlist* o_messlist;
    void* o_inlet;
    void* o_outlet;
} t_object;

/// A class as the host keeps it; objects only set `c_flags`.
typedef struct maxclass
{
    struct symbol* c_sym;
    method c_freefun;
    t_getbytes_size c_size;
    long c_flags;
} t_class;

enum e_max_class_flags
{
    CLASS_FLAG_BOX = 0x00000001L,
    CLASS_FLAG_POLYGLOT = 0x00000002L,
    CLASS_FLAG_NEWDICTIONARY = 0x00000004L
};

union word
{
    t_atom_long w_long;
    t_atom_float w_float;
    struct symbol* w_sym;
    struct object* w_obj;
};

typedef struct atom
{
    short a_type;
    union word a_w;
} t_atom;

typedef void t_outlet;
typedef void t_binbuf;
typedef struct _dictionary t_dictionary;
typedef struct _atomarray t_atomarray;

#define CLASS_BOX gensym("box")

// Symbols
t_symbol* gensym(C74_CONST char* s);
t_symbol* gensym_tr(const char* s);
char* str_tr(const char* s);
t_symbol* symbol_unique(void);
t_max_err symbolarray_sort(long ac, t_symbol** av);

// Classes and objects
t_class* class_new(C74_CONST char* name, C74_CONST method mnew, C74_CONST method mfree, long size,
                   C74_CONST method mmenu, short type, ...);
t_max_err class_addmethod(t_class* c, C74_CONST method m, C74_CONST char* name, ...);
t_max_err class_register(t_symbol* name_space, t_class* c);
void* object_alloc(t_class* c);
t_max_err object_free(void* x);
t_class* object_class(void* x);
t_symbol* object_classname(void* x);
void* object_method_imp(void* x, void* sym, void* p1, void* p2, void* p3, void* p4, void* p5, void* p6,
                        void* p7, void* p8);
t_max_err object_notify(void* x, t_symbol* s, void* data);

// Outlets and the console
void* outlet_new(void* x, C74_CONST char* s);
void* outlet_anything(t_outlet* x, t_symbol* s, short ac, t_atom* av);
void* outlet_list(t_outlet* x, t_symbol* s, short ac, t_atom* av);
void object_post(t_object* x, C74_CONST char* s, ...);
void object_warn(t_object* x, C74_CONST char* s, ...);
void object_error(t_object* x, C74_CONST char* s, ...);
void object_bug(t_object* x, C74_CONST char* s, ...);

// Atoms
t_atom_long atom_getlong(const t_atom* a);
t_atom_float atom_getfloat(const t_atom* a);
t_symbol* atom_getsym(const t_atom* a);
t_max_err atom_setlong(t_atom* a, t_atom_long b);
t_max_err atom_setfloat(t_atom* a, double b);
t_max_err atom_setsym(t_atom* a, t_symbol* b);
t_max_err atom_setobj(t_atom* a, void* b);
t_max_err atom_getfloat_array(long ac, t_atom* av, long count, float* vals);

// Dictionaries and atom arrays
t_dictionary* dictionary_new(void);
t_max_err dictionary_clear(t_dictionary* d);
long dictionary_hasentry(C74_CONST t_dictionary* d, t_symbol* key);
t_max_err dictionary_getatom(C74_CONST t_dictionary* d, t_symbol* key, t_atom* value);
t_max_err dictionary_getobject(C74_CONST t_dictionary* d, t_symbol* key, t_object** value);
t_max_err dictionary_getkeys(C74_CONST t_dictionary* d, long* numkeys, t_symbol*** keys);
t_max_err dictionary_getkeys_ordered(C74_CONST t_dictionary* d, long* numkeys, t_symbol*** keys);
void dictionary_freekeys(t_dictionary* d, long numkeys, t_symbol** keys);
t_max_err dictionary_appendlong(t_dictionary* d, t_symbol* key, t_atom_long value);
t_max_err dictionary_appendfloat(t_dictionary* d, t_symbol* key, double value);
t_max_err dictionary_appendsym(t_dictionary* d, t_symbol* key, t_symbol* value);
t_max_err dictionary_appendatoms(t_dictionary* d, t_symbol* key, long argc, t_atom* argv);
t_max_err dictionary_appendobject(t_dictionary* d, t_symbol* key, t_object* value);
t_atomarray* atomarray_new(long ac, t_atom* av);
t_atom_long atomarray_getsize(t_atomarray* x);
t_max_err atomarray_getindex(t_atomarray* x, long index, t_atom* av);
t_max_err atomarray_copyatoms(t_atomarray* x, long* ac, t_atom** av);
void atomarray_appendatoms(t_atomarray* x, long ac, t_atom* av);
long atomisatomarray(t_atom* a);

// Memory, files and presets
t_ptr sysmem_newptr(t_ptr_size size);
void sysmem_freeptr(void* ptr);
void binbuf_insert(t_binbuf* x, t_symbol* s, short argc, t_atom* argv);
short path_topotentialname(C74_CONST short path, C74_CONST char* file, char* name, short check);
short saveasdialog_extended(char* name, short* vol, t_fourcc* type, t_fourcc* typelist, short numtypes);

/// The symbols every object shares, looked up once.
typedef struct _common_symbols_table
{
    t_symbol* s_attr_modified;
    t_symbol* s_dictionary;
    t_symbol* s_dumpout;
    t_symbol* s_float32;
    t_symbol* s_float64;
    t_symbol* s_long;
    t_symbol* s_symbol;
    t_symbol* s_atom;
    t_symbol* s_list;
    t_symbol* s_signal;
    t_symbol* s_box;
    t_symbol* s_nothing;
} t_common_symbols_table;

t_common_symbols_table* common_symbols_gettable(void);
extern t_common_symbols_table* _common_symbols;
void common_symbols_init(void);

#define _sym_attr_modified (_common_symbols->s_attr_modified)
#define _sym_dictionary (_common_symbols->s_dictionary)
#define _sym_dumpout (_common_symbols->s_dumpout)
#define _sym_float32 (_common_symbols->s_float32)
#define _sym_float64 (_common_symbols->s_float64)
#define _sym_long (_common_symbols->s_long)
#define _sym_symbol (_common_symbols->s_symbol)
#define _sym_atom (_common_symbols->s_atom)
#define _sym_list (_common_symbols->s_list)
#define _sym_signal (_common_symbols->s_signal)
#define _sym_box (_common_symbols->s_box)
#define _sym_nothing (_common_symbols->s_nothing)

/// The entry point the host calls when it loads the external.
void C74_EXPORT ext_main(void* r);

END_USING_C_LINKAGE

#include "ext_obex.h"
