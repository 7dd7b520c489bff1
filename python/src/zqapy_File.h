#ifndef zqapy_File_h
#define zqapy_File_h

#include "zqapy_Array.h"
#include "zqapy_Session.h"
#include "zqapy_Stream.h"
#include "zqapy_Table.h"

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// A database file opened from Python: what it is, what it holds (objects,
// tables, the object layer's classes), the objects it opens and makes,
// and the writer's flush and the reader's snap.
class zqapy_File {
public:
  // mode: "r" to read (a path or a "zbxrdb://" URL), "r+" to change an
  // existing file, "a" to change it or create it when missing, "w" to
  // create it (replacing any file of that name), "x" to create it where
  // no file is. A created file is plain, or compressed; magic (its first
  // four characters) and description go into it.
  zqapy_File(std::string const& name, std::string const& mode, bool compressed, std::string const& magic,
             std::string const& description);

  std::string const& Name() const { return m_Session->Name(); }
  // "plain", "compressed" or "remote".
  std::string const& Kind() const { return m_Kind; }
  pybind11::str Description() const;
  bool ReadOnly() const;
  int FlushCount() const;
  bool IsOpen() const;

  // Names and texts read from the file are str as zqapy_ToPython gives
  // them: bytes that are not UTF-8 escaped, never refused.
  //
  // Every object in handle order: (handle, kind, size in bytes, a table's
  // name or "").
  pybind11::list Objects() const;
  // Every table in handle order: (handle, name, [(field, type)], rows).
  pybind11::list Tables() const;
  // The object layer's classes in catalogue order: (name, class id,
  // version or -1, base class id, table handle, rows); empty for a file
  // without objects.
  pybind11::list Classes() const;
  // The reference members of the table at handle: (member, oid field,
  // class id field).
  pybind11::list References(int handle) const;

  std::shared_ptr<zqapy_Table> Table(int handle) const { return zqapy_Table::Open(m_Session, handle); }
  std::shared_ptr<zqapy_Table> CreateTable(std::string const& name,
                                           std::vector<std::pair<std::string, std::string>> const& fields,
                                           int version) const {
    return zqapy_Table::Create(m_Session, name, fields, version);
  }
  std::shared_ptr<zqapy_Array> Array(int handle) const { return zqapy_Array::Open(m_Session, handle); }
  std::shared_ptr<zqapy_Array> CreateArray(std::string const& type, int fields) const {
    return zqapy_Array::Create(m_Session, type, fields);
  }
  std::shared_ptr<zqapy_Stream> Stream(int handle) const { return zqapy_Stream::Open(m_Session, handle); }
  std::shared_ptr<zqapy_Stream> CreateStream() const { return zqapy_Stream::Create(m_Session); }

  bool Snap();
  void Flush();
  void Close();

private:
  std::shared_ptr<zqapy_Session> m_Session;
  std::string m_Kind;
};

#endif
