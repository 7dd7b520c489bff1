#ifndef rfm_TestAssertion_h
#define rfm_TestAssertion_h

#include "cow_String.h"
#include "nex_PrimException.h"

#include <string>

// The condition of the assertion that body raises, or "no exception".
template <class Body>
std::string AssertionOf(Body body) {
  try {
    body();
  } catch (nex_PrimException<cow_String, 3> const& e) {
    return e.what();
  }
  return "no exception";
}

#endif
