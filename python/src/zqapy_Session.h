#ifndef zqapy_Session_h
#define zqapy_Session_h

#include "rfm_Database.h"

#include <pybind11/pybind11.h>

#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

// An error of the library as Python sees it: the library's message and the
// name of the file it concerns (the message is prefixed with the name when
// it does not already hold it).
class zqapy_Error : public std::runtime_error {
public:
  zqapy_Error(std::string const& fileName, std::string const& message);
  std::string const& FileName() const { return m_FileName; }

private:
  std::string m_FileName;
};

// The one lock around every call into the library: its objects (and the
// strings they share, whose counts are not atomic) are used by one thread
// at a time. Python's lock is released only around transfers of numbers,
// which hold this one; a thread holding it never waits for Python's. It is
// recursive because closing a file ends objects that take it again.
std::recursive_mutex& zqapy_LibraryLock();

// Runs work with Python's lock released and the library's held, in that
// order, so that the library's lock is let go before Python's is taken
// back: no thread ever holds the library's lock while it waits for
// Python's. work must touch no Python object.
template <class Work>
void zqapy_WithoutPython(Work&& work);

// Runs an action when its scope ends, however it ends: the values of the
// library's types that a call made are let go under the library's lock
// (their counts are not atomic), also when the call raises.
template <class Action>
class zqapy_Finally {
public:
  explicit zqapy_Finally(Action action) : m_Action(std::move(action)) {}
  zqapy_Finally(zqapy_Finally const&) = delete;
  zqapy_Finally& operator=(zqapy_Finally const&) = delete;
  ~zqapy_Finally() {
    std::lock_guard<std::recursive_mutex> lock(zqapy_LibraryLock());
    m_Action();
  }

private:
  Action m_Action;
};

// An object taken from an open file (table, array, tagged stream): the
// file's snap, flush and close reach it through its session.
class zqapy_Object {
public:
  virtual ~zqapy_Object() = default;
  virtual void Snap() = 0;
  virtual void Flush() = 0;
  // Lets go of the library's object; every later use raises.
  virtual void Close() = 0;
};

// What an open file and every object taken from it share: the database,
// the file's name for errors, and the objects opened from it (held weakly:
// Python owns them), which snap, flush and close with it.
//
// Invariant: after Close the database handle is null and every object
// tracked has let go of its library object.
class zqapy_Session {
public:
  zqapy_Session(rfm_Database const& database, std::string const& name);
  ~zqapy_Session();

  // Raises when the file has been closed.
  rfm_Database const& Database() const;
  std::string const& Name() const { return m_Name; }
  bool IsOpen() const { return !m_Database.IsNull(); }
  void Track(std::shared_ptr<zqapy_Object> const& object);

  // The database's snap, then, when the file moved on, every open object's.
  bool Snap();
  // Every open object's flush, then the database's; nothing for a reader.
  void Flush();
  // Flushes a writer, then lets go of every object and of the database.
  // Closing twice does nothing.
  void Close();

  // Runs call, turning the library's exceptions into zqapy_Error naming
  // this file; Python's own errors pass unchanged.
  template <class Call>
  auto Guard(Call&& call) const -> decltype(call()) {
    try {
      return call();
    } catch (zqapy_Error const&) {
      throw;
    } catch (pybind11::error_already_set const&) {
      throw;
    } catch (pybind11::builtin_exception const&) {
      throw;
    } catch (std::exception const& e) {
      throw zqapy_Error(m_Name, e.what());
    }
  }

  // Closes every session still open, before the library ends; errors go
  // to standard error.
  static void CloseAll();

private:
  template <class Action>
  void ForEachObject(Action&& action);

  rfm_Database m_Database;
  std::string m_Name;
  std::vector<std::weak_ptr<zqapy_Object>> m_Objects;
};

template <class Work>
void zqapy_WithoutPython(Work&& work) {
  pybind11::gil_scoped_release release;
  std::lock_guard<std::recursive_mutex> lock(zqapy_LibraryLock());
  work();
}

#endif
