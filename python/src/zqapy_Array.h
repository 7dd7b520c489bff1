#ifndef zqapy_Array_h
#define zqapy_Array_h

#include "rfm_Array.h"
#include "zqapy_Session.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <optional>
#include <string>
#include <variant>

// An array of an open file as Python uses it: rows of FieldCount elements
// of one type, read into and written from two-dimensional NumPy arrays
// (int32, float32, float64, or objects holding str).
class zqapy_Array : public zqapy_Object {
public:
  static std::shared_ptr<zqapy_Array> Open(std::shared_ptr<zqapy_Session> const& session, int handle);
  // A new array of elements of type (a type name) with fields per row.
  static std::shared_ptr<zqapy_Array> Create(std::shared_ptr<zqapy_Session> const& session, std::string const& type,
                                             int fields);
  ~zqapy_Array() override;

  int Handle() const;
  std::string Type() const;
  int Fields() const;
  int Length() const;
  // Rows start to stop - 1, stop clipped to the length, as a rows x fields
  // array.
  pybind11::array Read(long start, long stop);
  // Appends the rows of values: a contiguous rows x fields array of the
  // element type, or for strings a sequence of rows x fields str in row
  // order.
  void Append(pybind11::object const& values);

  void Snap() override;
  void Flush() override;
  void Close() override;

private:
  using Any = std::variant<rfm_Array<int, rfm_TypeInt>, rfm_Array<float, rfm_TypeFloat>,
                           rfm_Array<double, rfm_TypeDouble>, rfm_Array<cow_String, rfm_TypeString>>;

  zqapy_Array(std::shared_ptr<zqapy_Session> const& session, Any const& array);
  // The open array; raises when closed.
  Any const& Current() const;
  // Runs action on the open array, whatever its type; raises when closed.
  template <class Action>
  auto Visit(Action&& action) const;

  std::shared_ptr<zqapy_Session> m_Session;
  // Empty once closed.
  std::optional<Any> m_Array;
};

#endif
