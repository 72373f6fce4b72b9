// Signal objects: the substitute's declarations.
#pragma once

#include "ext.h"

BEGIN_USING_C_LINKAGE

/// Signals are not to share memory between inlets and outlets.
#define Z_NO_INPLACE 1

/// The head of a signal object.
typedef struct t_pxobject
{
    struct object z_ob;
    long z_in;
    void* z_proxy;
    long z_disabled; ///< non-zero while the host has muted this object
    short z_count;
    short z_misc; ///< flags such as Z_NO_INPLACE
} t_pxobject;

typedef double t_double;
typedef void (*t_perfroutine64)(t_object* x, t_object* dsp64, double** ins, long numins, double** outs, long numouts,
                                long sampleframes, long flags, void* userparam);

void class_dspinit(t_class* c);
void z_dsp_setup(t_pxobject* x, long nsignals);
void z_dsp_free(t_pxobject* x);
int sys_getdspstate(void);

END_USING_C_LINKAGE
