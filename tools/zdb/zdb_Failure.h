#ifndef zdb_Failure_h
#define zdb_Failure_h

#include <exception>
#include <stdexcept>
#include <string>

// The two ways a subcommand ends early. A usage error (exit status 2) means
// the command line was wrong; a failure (exit status 1) means the work could
// not be done, with a message that names the file concerned.
class zdb_UsageError : public std::runtime_error {
public:
  explicit zdb_UsageError(std::string const& message) : std::runtime_error(message) {}
};

class zdb_Failure : public std::runtime_error {
public:
  explicit zdb_Failure(std::string const& message) : std::runtime_error(message) {}
};

// The exit statuses of every subcommand.
constexpr int kZdbSuccess = 0;
constexpr int kZdbFailed = 1;
constexpr int kZdbUsage = 2;

// Runs body, which works on the file name; a failure of the library on the
// way becomes a zdb_Failure that names the file.
template <class Body>
auto zdb_OnFile(std::string const& name, Body body) -> decltype(body()) {
  try {
    return body();
  } catch (zdb_UsageError const&) {
    throw;
  } catch (zdb_Failure const&) {
    throw;
  } catch (std::exception const& e) {
    throw zdb_Failure(name + ": " + e.what());
  }
}

#endif
