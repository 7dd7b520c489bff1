#ifndef zqapy_Session_h
#define zqapy_Session_h

#include "rfm_Database.h"
#include "rfm_Type.h"

#include <pybind11/pybind11.h>

#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
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

// Runs call, turning the library's exceptions into zqapy_Error naming the
// file fileName; Python's own errors pass unchanged.
template <class Call>
auto zqapy_Guard(std::string const& fileName, Call&& call) -> decltype(call()) {
  try {
    return call();
  } catch (zqapy_Error const&) {
    throw;
  } catch (pybind11::error_already_set const&) {
    throw;
  } catch (pybind11::builtin_exception const&) {
    throw;
  } catch (std::exception const& e) {
    throw zqapy_Error(fileName, e.what());
  }
}

// The one lock around every call into the library: its objects (and the
// strings they share, whose counts are not atomic) are used by one thread
// at a time. It is recursive because closing a file ends objects that take
// it again.
std::recursive_mutex& zqapy_LibraryLock();

// Holds the library's lock for a scope. Taken by a thread that holds
// Python's lock, it lets Python's go while it waits, so that the two are
// always taken in one order, the library's first: a thread holding the
// library's lock may wait for Python's (NumPy and pybind11 let Python's go
// and take it back inside many calls), but no thread ever waits for the
// library's while holding Python's.
class zqapy_Locked {
public:
  zqapy_Locked();
  ~zqapy_Locked();
  zqapy_Locked(zqapy_Locked const&) = delete;
  zqapy_Locked& operator=(zqapy_Locked const&) = delete;
};

// Runs work with Python's lock released, for transfers of numbers: other
// Python threads run meanwhile. The caller holds the library's lock; work
// must touch no Python object.
template <class Work>
void zqapy_WithoutPython(Work&& work) {
  pybind11::gil_scoped_release release;
  work();
}

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
  // Keeps object among the session's open objects; answers it.
  template <class Object>
  std::shared_ptr<Object> Track(std::shared_ptr<Object> const& object) {
    Remember(object);
    return object;
  }
  // The type of the object at handle when it is one of kinds; raises
  // "handle H names no <what>" otherwise, also for a handle that names no
  // object at all (which the database would take for damage).
  rfm_Type ObjectType(int handle, std::vector<rfm_Type> const& kinds, char const* what) const;

  // The database's snap, then, when the file moved on, every open object's.
  bool Snap();
  // Every open object's flush, then the database's; nothing for a reader.
  void Flush();
  // Flushes a writer, then lets go of every object and of the database.
  // Closing twice does nothing.
  void Close();

  // zqapy_Guard for this file.
  template <class Call>
  auto Guard(Call&& call) const -> decltype(call()) {
    return zqapy_Guard(m_Name, std::forward<Call>(call));
  }

  // Closes every session still open, before the library ends; errors go
  // to standard error.
  static void CloseAll();

private:
  void Remember(std::shared_ptr<zqapy_Object> const& object);
  template <class Action>
  void ForEachObject(Action&& action);

  rfm_Database m_Database;
  std::string m_Name;
  std::vector<std::weak_ptr<zqapy_Object>> m_Objects;
};

#endif
