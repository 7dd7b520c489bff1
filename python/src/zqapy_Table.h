#ifndef zqapy_Table_h
#define zqapy_Table_h

#include "rfm_Table.h"
#include "zqapy_Session.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <vector>

// A table of an open file as Python uses it: its fields, and rows moved in
// columns (NumPy arrays) through the library's bulk path, never row by row.
class zqapy_Table : public zqapy_Object {
public:
  // The table at handle, or a new one of that layout (pairs of field name
  // and type name) and class version.
  static std::shared_ptr<zqapy_Table> Open(std::shared_ptr<zqapy_Session> const& session, int handle);
  static std::shared_ptr<zqapy_Table> Create(std::shared_ptr<zqapy_Session> const& session, std::string const& name,
                                             std::vector<std::pair<std::string, std::string>> const& fields,
                                             int version);
  ~zqapy_Table() override;

  // Names as zqapy_ToPython gives them: bytes that are not UTF-8 escaped.
  pybind11::str Name() const;
  int Handle() const;
  // (name, type name) in the order of the names, as rows lay them out.
  pybind11::list Fields() const;
  int Length() const;

  // Rows start to stop - 1 (stop clipped to the length) of the fields
  // named, as a dict of one-dimensional arrays: int32, float32, float64,
  // int32 for handles and objects (str) for strings. A field without data
  // in a row reads as fill (numbers) or "" (strings). With masked, also a
  // dict of bool arrays, True where the row's field holds no data.
  pybind11::tuple Read(std::vector<std::string> const& names, long start, long stop, bool masked, double fill);
  // Appends rows from columns: (name, values, presence or None) each, all
  // of one length; values of the field's own dtype (int32 for handles), a
  // sequence of str for strings; presence uint8, 0 where the row's field
  // holds no data. Fields no column names hold no data.
  void Append(pybind11::list const& columns);

  void Snap() override;
  void Flush() override;
  void Close() override;

private:
  zqapy_Table(std::shared_ptr<zqapy_Session> const& session, rfm_Table const& table);
  rfm_Table const& Table() const;
  rfm_FieldMetadata const& Field(std::string const& name) const;

  std::shared_ptr<zqapy_Session> m_Session;
  rfm_Table m_Table;
};

#endif
