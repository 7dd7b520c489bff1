#ifndef rfm_DestructorFlush_h
#define rfm_DestructorFlush_h

#include <cstdio>
#include <exception>

// Runs the flush that a destructor owes its file. A destructor cannot
// raise, so a failure is told on standard error: a program that ends a
// database by letting it go learns there that its last changes did not
// reach the file. While an exception is already on its way to the caller
// (a write failed, say on a full disk, and the objects are unwinding), the
// caller hears of the failure from that exception, and the flush's own
// failure, most often the same one again, is not told a second time.
template <class Flush>
void rfm_FlushInDestructor(Flush const& flush) noexcept {
  try {
    flush();
  } catch (std::exception const& e) {
    if (std::uncaught_exceptions() == 0) std::fprintf(stderr, "%s\n", e.what());
  }
}

#endif
