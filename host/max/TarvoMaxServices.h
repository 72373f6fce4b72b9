#pragma once

// Services every object of the family gets without writing them again: listing, dumping,
// posting and resetting attributes, the host's preset protocols, and dictionary import and
// export. They address attributes by name through the host's attribute interface, so they
// know nothing of the class. Main or scheduler thread; they allocate.

#include "ext.h"
#include "ext_obex.h"

#include "TarvoverbAtom.h"

#include <string>
#include <vector>

/// Attribute helpers over the host's attribute interface.
namespace MaxAttribute
{
/// The object's attribute names: alphabetical when `sorted`, otherwise by the property
/// "order" (those without an order last, alphabetical).
std::vector<t_symbol*> attributeNames(void* x, bool sorted);
/// Keeps the names a user can see and set and that hold at least one value.
std::vector<t_symbol*> filterAttributes(void* x, const std::vector<t_symbol*>& names);
/// An attribute's values; false on a host error, reported.
bool values(void* x, t_symbol* name, std::vector<t_atom>& atoms);
/// A property of an attribute object; empty when it has none.
std::vector<t_atom> property(t_object* attribute, const char* key);
/// Resets one attribute to its property "default".
void reset(void* x, t_symbol* name, bool force, bool verbose);
} // namespace MaxAttribute

/// The host's error code as text.
const char* tarvomax_errorname(t_max_err error);
/// Atoms as the core reads them (symbols view the host's symbol table).
std::vector<tarvo::host::Atom> tarvomax_atoms(long argc, const t_atom* argv);
/// `text`, then the atoms on one line, through `object_error`.
void tarvomax_reportinvalid(void* x, long argc, const t_atom* argv, const char* text);

void tarvomax_dump(void* x, t_symbol* s, long argc, t_atom* argv);
void tarvomax_postattributes(void* x, t_symbol* s, long argc, t_atom* argv);
void tarvomax_reset(void* x, t_symbol* s, long argc, t_atom* argv);
/// Every visible attribute back to its default, quietly, sparing those marked "dontreset".
void tarvomax_resetall(void* x);
void tarvomax_version(void* x);
void tarvomax_postdspstatus(void* x);
t_max_err tarvomax_getvalueof(void* x, long* argc, t_atom** argv);
t_max_err tarvomax_setvalueof(void* x, long argc, t_atom* argv);
void tarvomax_preset(void* x);
void tarvomax_recallpreset(void* x, t_symbol* s, long argc, t_atom* argv);
void tarvomax_dumpdict(void* x, t_symbol* s, long argc, t_atom* argv);
void tarvomax_exportdict(void* x, t_symbol* s, long argc, t_atom* argv);
void tarvomax_readdict(void* x, t_symbol* s, long argc, t_atom* argv);
