#include "zqapy_Session.h"

#include <algorithm>
#include <cstdio>

namespace {

// Every session not yet destroyed; changed under the library lock.
std::vector<zqapy_Session*>& Sessions() {
  static std::vector<zqapy_Session*> sessions;
  return sessions;
}

std::string WithName(std::string const& fileName, std::string const& message) {
  if (fileName.empty() || message.find(fileName) != std::string::npos) return message;
  return fileName + ": " + message;
}

}  // namespace

zqapy_Error::zqapy_Error(std::string const& fileName, std::string const& message)
    : std::runtime_error(WithName(fileName, message)), m_FileName(fileName) {}

std::recursive_mutex& zqapy_LibraryLock() {
  static std::recursive_mutex lock;
  return lock;
}

zqapy_Locked::zqapy_Locked() {
  std::recursive_mutex& lock = zqapy_LibraryLock();
  if (lock.try_lock()) return;
  if (PyGILState_Check()) {
    pybind11::gil_scoped_release release;
    lock.lock();
  } else {
    lock.lock();
  }
}

zqapy_Locked::~zqapy_Locked() { zqapy_LibraryLock().unlock(); }

zqapy_Session::zqapy_Session(rfm_Database const& database, std::string const& name)
    : m_Database(database), m_Name(name) {
  zqapy_Locked lock;
  Sessions().push_back(this);
}

zqapy_Session::~zqapy_Session() {
  zqapy_Locked lock;
  std::vector<zqapy_Session*>& sessions = Sessions();
  sessions.erase(std::remove(sessions.begin(), sessions.end(), this), sessions.end());
  // The database goes here, under the lock, rather than after it.
  m_Database = rfm_Database();
}

rfm_Database const& zqapy_Session::Database() const {
  if (m_Database.IsNull()) throw zqapy_Error(m_Name, "the file is closed");
  return m_Database;
}

void zqapy_Session::Remember(std::shared_ptr<zqapy_Object> const& object) {
  m_Objects.erase(std::remove_if(m_Objects.begin(), m_Objects.end(),
                                 [](std::weak_ptr<zqapy_Object> const& each) { return each.expired(); }),
                  m_Objects.end());
  m_Objects.push_back(object);
}

rfm_Type zqapy_Session::ObjectType(int handle, std::vector<rfm_Type> const& kinds, char const* what) const {
  rfm_Database const& database = Database();
  cow_List<rfm_Handle> const handles = database.ObjectHandles();
  for (int i = 0; i < handles.Length(); ++i) {
    if (handles[i].Value() != handle) continue;
    rfm_Type const type = database.HandleType(handles[i]);
    if (std::find(kinds.begin(), kinds.end(), type) != kinds.end()) return type;
    break;
  }
  throw zqapy_Error(m_Name, "handle " + std::to_string(handle) + " names no " + what);
}

template <class Action>
void zqapy_Session::ForEachObject(Action&& action) {
  for (std::weak_ptr<zqapy_Object> const& each : m_Objects) {
    if (std::shared_ptr<zqapy_Object> object = each.lock()) action(*object);
  }
}

bool zqapy_Session::Snap() {
  return Guard([&] {
    if (!Database().Snap()) return false;
    ForEachObject([](zqapy_Object& object) { object.Snap(); });
    return true;
  });
}

void zqapy_Session::Flush() {
  Guard([&] {
    if (Database().ReadOnly()) return;
    ForEachObject([](zqapy_Object& object) { object.Flush(); });
    m_Database.Flush();
  });
}

void zqapy_Session::Close() {
  if (m_Database.IsNull()) return;
  // A failing flush still closes: the error is raised once everything has
  // been let go.
  std::exception_ptr failure;
  try {
    Flush();
  } catch (...) {
    failure = std::current_exception();
  }
  ForEachObject([](zqapy_Object& object) { object.Close(); });
  m_Objects.clear();
  try {
    Guard([&] { m_Database = rfm_Database(); });
  } catch (...) {
    if (!failure) failure = std::current_exception();
  }
  if (failure) std::rethrow_exception(failure);
}

void zqapy_Session::CloseAll() {
  zqapy_Locked lock;
  // A copy: closing does not destroy sessions, but stays clear of the list.
  std::vector<zqapy_Session*> const sessions = Sessions();
  for (zqapy_Session* session : sessions) {
    try {
      session->Close();
    } catch (std::exception const& e) {
      // The process is ending: there is no caller left to raise to.
      std::fprintf(stderr, "zqaromcore: %s\n", e.what());
    }
  }
}
