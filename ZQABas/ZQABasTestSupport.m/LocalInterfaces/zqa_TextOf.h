#ifndef zqa_TextOf_h
#define zqa_TextOf_h

#include <gtest/gtest.h>

#include <string>

// The text of the exception of type E that body raises, or "" with a
// test failure when it raises none.
template <class E, class Body>
std::string zqa_TextOf(Body body) {
  try {
    body();
  } catch (E const& e) {
    return e.what();
  }
  ADD_FAILURE() << "the expected exception was not raised";
  return "";
}

#endif
