#ifndef zqapy_Strings_h
#define zqapy_Strings_h

#include "cow_String.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <string>
#include <vector>

// Strings between the library (bytes, UTF-8 by convention) and Python.
// Bytes that are not UTF-8 read as lone surrogates ("surrogateescape") and
// write back as the same bytes, so that no stored string is lost or
// refused either way.
pybind11::str zqapy_ToPython(cow_String const& text);
pybind11::str zqapy_ToPython(std::string const& text);
cow_String zqapy_FromPython(pybind11::handle text);
// A library text for a message: Python's repr of what zqapy_ToPython
// gives, quoted and always valid UTF-8.
std::string zqapy_Quoted(cow_String const& text);

// An array of objects of that shape, every element None (a new array's
// elements are null pointers, which not every reader of it expects).
pybind11::array zqapy_ObjectArray(std::vector<pybind11::ssize_t> const& shape);
// Stores texts[0..count) as str objects at elements first.. of values, a
// one-dimensional array of objects.
void zqapy_StoreStrings(pybind11::array& values, pybind11::ssize_t first, cow_String const* texts,
                        pybind11::ssize_t count);
// The str elements of a sequence as library strings; None, when allowed,
// reads as the empty string.
std::vector<cow_String> zqapy_TakeStrings(pybind11::sequence const& texts);

#endif
